// kx7text tests - a single-byte character set made up to have every kind of mapping, and what is asked of every set.
#ifndef KX7_TESTS_SUPPORT_SAMPLESINGLEBYTE_H
#define KX7_TESTS_SUPPORT_SAMPLESINGLEBYTE_H

#include <vector>

#include "tests/model/SingleByteModel.h"
#include "tests/support/Probe.h"

namespace kx7test {

/** Letters as they are, bytes that trade places, units in far pages, bytes and units without a mapping. */
inline BytePairs samplePairs()
{
    BytePairs pairs;
    for (unsigned char byte = 0x01; byte < 0x7F; ++byte)
        if (byte != 0x1A && byte != 0x1C && byte != '?')
            pairs.emplace_back(byte, byte);
    pairs.emplace_back(0x1A, char16_t{0x1C});
    pairs.emplace_back(0x1C, char16_t{0x1A});
    pairs.emplace_back(0x81, char16_t{0x81});
    pairs.emplace_back(0xFF, char16_t{0xA0});
    pairs.emplace_back(0xA0, char16_t{0xFF});
    pairs.emplace_back(0x80, char16_t{0x20AC});
    pairs.emplace_back(0x90, char16_t{0x2000});
    pairs.emplace_back(0x91, char16_t{0x20FF});
    pairs.emplace_back(0x92, char16_t{0xFFFD});
    pairs.emplace_back(0xFE, char16_t{0xFFFF});
    return pairs;
}

/** Pairs in the stored form: byte and unit in turn, ended by 0, 0. */
inline std::vector<unsigned short> listOf(BytePairs const& pairs)
{
    std::vector<unsigned short> list;
    for (auto const& [byte, unit] : pairs) {
        list.push_back(byte);
        list.push_back(unit);
    }
    list.push_back(0);
    list.push_back(0);
    return list;
}

/** Every kind of byte of that set. */
inline std::vector<std::string> sampleByteFragments()
{
    return {"A",
            "\x1A",
            "\x80",
            "\xFF",
            "\xFE",
            "\x92",
            "\x82",
            "\x7F",
            "?",
            "\x82\x83",
            "\x82"
            "B"};
}

/** Every kind of unit. */
inline std::vector<std::u16string> sampleUnitFragments()
{
    using Units = std::u16string;
    return {Units{'A'},    Units{0x1C},   Units{0x20AC},         Units{0x20AD},         Units{0xA0}, Units{0x4E00},
            Units{0xFFFD}, Units{0xFFFE}, Units{0xD83D, 0xDE00}, Units{0xDC00, 0xD800}, Units{'?'},  Units{0xFFFF}};
}

/** Every byte and every unit, with every operation, as the model has it. */
inline void compareEveryByteAndUnit(Probe& probe)
{
    for (ILLCHAR_OPTYPE const op : OPERATIONS) {
        for (unsigned int byte = 1; byte <= 0xFF; ++byte)
            probe.compareDecode({std::string(1, static_cast<char>(byte)), 1, op, -1});
        for (unsigned int unit = 1; unit <= 0xFFFF && !probe.gaveUp(); ++unit)
            probe.compareEncode({std::u16string(1, static_cast<char16_t>(unit)), 6, op}, FLAG_ARGUMENTS[unit % 3]);
    }
}

}  // namespace kx7test

#endif
