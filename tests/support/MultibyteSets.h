// kx7text tests - the converters that are neither UTF-8 nor single-byte, each with its model and texts for it.
#ifndef KX7_TESTS_SUPPORT_MULTIBYTESETS_H
#define KX7_TESTS_SUPPORT_MULTIBYTESETS_H

#include <memory>
#include <string>
#include <vector>

#include "kx7/charset/Converters.h"
#include "kx7/tables/GB18030Ranges.h"
#include "kx7/tables/MappingLists.h"
#include "tests/model/DoubleByteModel.h"
#include "tests/model/EucJpModel.h"
#include "tests/model/EucKrCnModel.h"
#include "tests/model/Gb18030Model.h"
#include "tests/model/ShiftJis2004Model.h"
#include "tests/model/Utf16EscModel.h"
#include "tests/model/Utf16Model.h"
#include "tests/model/Utf32Model.h"

namespace kx7test {

inline CodePairs codePairsOf(unsigned short const* list)
{
    CodePairs pairs;
    for (; list[0] != 0 || list[1] != 0; list += 2)
        pairs.emplace_back(list[0], list[1]);
    return pairs;
}

inline CodePairs codePairsOf(sMBCSExTable const* list)
{
    CodePairs pairs;
    for (; list->code != 0 || list->codePoint != 0; ++list)
        pairs.emplace_back(list->code, list->codePoint);
    return pairs;
}

inline CodeRuns codeRunsOf(kx7::GB18030Range const* ranges)
{
    CodeRuns runs;
    for (; ranges->last != 0; ++ranges)
        runs.push_back({ranges->first, ranges->last, ranges->value});
    return runs;
}

struct MultibyteSet {
    char const* name;
    KX7CharSetConverter& converter;
    std::shared_ptr<Model const> model;
    std::vector<std::string> byteFragments;     ///< each way to be well formed and each way not to be
    std::vector<std::u16string> unitFragments;  ///< the same
    bool isWide;                                ///< its bytes come in units of getNullCharSize()
};

namespace detail {

/** Units that differ in how the sets treat them; bounds, letters of each kind, pairs and halves of pairs. */
inline std::vector<std::u16string> unitFragments()
{
    using Units = std::u16string;
    return {Units{u'A'},   Units{0x7E},   Units{0x7F},           Units{0x80},           Units{0xA5},
            Units{0xE9},   Units{0x1C},   Units{u'\\'},          Units{0x20AC},         Units{0x3042},
            Units{0x4E00}, Units{0xAC00}, Units{0xE7C8},         Units{0xFF71},         Units{0xFFFD},
            Units{0xFFFF}, Units{0x0E01}, Units{0xD840, 0xDC0B}, Units{0xD83D, 0xDE00}, Units{0xDBFF, 0xDFFF},
            Units{0xD800}, Units{0xDC00}, Units{0xD800, 0xD800}};
}

/** A lead and trail byte of each kind, joined in ways that are right, wrong, and unmapped. */
inline std::vector<std::string> doubleByteFragments(std::string const& mapped, std::string const& unmapped)
{
    std::vector<std::string> fragments{"A", "\x1A", "\x5C", "\x7F", "\x80", "\xB1", "\xFD", "\xFF", mapped, unmapped};
    fragments.push_back(mapped.substr(0, 1));
    fragments.push_back(mapped.substr(0, 1) + " ");
    fragments.push_back(mapped.substr(0, 1) + "\xFF");
    fragments.push_back("\x81\x80");
    fragments.push_back("\x82");
    return fragments;
}

}  // namespace detail

inline std::vector<MultibyteSet> const& multibyteSets()
{
    using detail::doubleByteFragments;
    auto const doubleByte = [](DoubleBytes const& bytes, unsigned short const* list) {
        return std::make_shared<DoubleByteModel const>(bytes, codePairsOf(list));
    };
    std::vector<std::string> const gbFragments{"A",
                                               "\x80",
                                               "\xFF",
                                               "\xB0\xA1",
                                               "\xA2\xE3",
                                               "\x81\x80",
                                               "\x81",
                                               "\x81 ",
                                               "\x81\x7F",
                                               "\x81\x30",
                                               "\x81\x30\x20",
                                               "\x81\x30\x81",
                                               "\x81\x30\x81\x20",
                                               "\x81\x30\x81\x30",
                                               "\x84\x31\xA5\x30",
                                               "\x90\x30\x81\x30",
                                               "\xE3\x32\x9A\x36"};
    std::vector<std::string> const eucJpFragments{"A",        "\x7F",     "\x80\x8A", "\x80",     "\x8E\xB1",
                                                  "\x8E",     "\x8E\x41", "\x8E\xE0", "\x8F",     "\x8F\xB0\xA1",
                                                  "\xB0\xA1", "\xB0\x21", "\xB0",     "\xA9\xA1", "\xFF"};
    std::vector<std::string> const escapeFragments{"A",      "\x80",   "\xFF",   "U",      "U+",     "U+1",
                                                   "U+12",   "U+12A",  "U+20AC", "U+20ac", "U+D83D", "U+DE00",
                                                   "U+0041", "U+0000", "+",      "UU+20AC"};
    std::vector<std::string> utf16Fragments;
    for (std::u16string const& units : detail::unitFragments())
        utf16Fragments.push_back(bytesOfValues(units));
    std::vector<std::string> utf32Fragments;
    for (char32_t const c : {U'A', U'\x80', char32_t{0xD800}, char32_t{0xDC00}, char32_t{0xFFFF}, char32_t{0x10000},
                             char32_t{0x1D800}, char32_t{0x10FFFF}, char32_t{0x110000}, char32_t{0xFFFFFFFF}})
        utf32Fragments.push_back(bytesOfValues(std::u32string(1, c)));

    static std::vector<MultibyteSet> const sets{
        {"932", g_oConverterWCP932, doubleByte(SHIFT_JIS_BYTES, oCP932map), doubleByteFragments("\x82\xA0", "\x85\x40"),
         detail::unitFragments(), false},
        {"936", g_oConverterWCP936, doubleByte(CP936_BYTES, oCP936map), doubleByteFragments("\xB0\xA1", "\xB0\x7F"),
         detail::unitFragments(), false},
        {"949", g_oConverterWCP949, doubleByte(CP949_BYTES, oCP949map), doubleByteFragments("\xB0\xA1", "\x81\x41"),
         detail::unitFragments(), false},
        {"950", g_oConverterWCP950, doubleByte(CP950_BYTES, oCP950map), doubleByteFragments("\xA4\x40", "\xA4\x7F"),
         detail::unitFragments(), false},
        {"Big5", g_oConverterBig5, doubleByte(BIG5_BYTES, oBIG5map), doubleByteFragments("\xA4\x40", "\xA3\xFE"),
         detail::unitFragments(), false},
        {"Shift_JIS", g_oConverterSHIFTJIS, doubleByte(SHIFT_JIS_BYTES, oSHIFTJISmap),
         doubleByteFragments("\x82\xA0", "\x85\x40"), detail::unitFragments(), false},
        {"Shift_JIS-2004", g_oConverterSJIS2004,
         std::make_shared<ShiftJis2004Model const>(codePairsOf(oSJIS0213_2004map)),
         [] {
             std::vector<std::string> fragments = doubleByteFragments("\x82\xA0", "\x82\x45");
             fragments.push_back("\x87\xA0");
             return fragments;
         }(),
         detail::unitFragments(), false},
        {"EUC-KR", g_oConverterEUCKR, std::make_shared<EucKrCnModel const>(codePairsOf(oKSX1001map)),
         doubleByteFragments("\xB0\xA1", "\xC9\xA1"), detail::unitFragments(), false},
        {"EUC-CN", g_oConverterEUCCN, std::make_shared<EucKrCnModel const>(codePairsOf(oGB2312map)),
         doubleByteFragments("\xB0\xA1", "\xAA\xA1"), detail::unitFragments(), false},
        {"EUC-JP", g_oConverterEUCJP,
         std::make_shared<EucJpModel const>(codePairsOf(oJIS0208map), codePairsOf(oJIS0201map),
                                            codePairsOf(oJIS0212map)),
         eucJpFragments, detail::unitFragments(), false},
        {"GB 18030", g_oConverterGB18030,
         std::make_shared<Gb18030Model const>(codePairsOf(oGBKmap), codeRunsOf(oGB2UniRange), codeRunsOf(oUni2GBRange)),
         gbFragments, detail::unitFragments(), false},
        {"UTF-16", g_oConverterUTF16, std::make_shared<Utf16Model const>(), utf16Fragments, detail::unitFragments(),
         true},
        {"UTF-16 escape", g_oConverterUTF16Esc, std::make_shared<Utf16EscModel const>(), escapeFragments,
         detail::unitFragments(), false},
        {"UTF-32", g_oConverterUTF32, std::make_shared<Utf32Model const>(), utf32Fragments, detail::unitFragments(),
         true},
    };
    return sets;
}

}  // namespace kx7test

#endif
