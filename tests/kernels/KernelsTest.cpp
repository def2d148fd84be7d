// kx7text tests - the vector kernels against the plain engine: every kernel gives what the steps alone give.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "kx7/base/Utf16.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "tests/kernels/KernelComparison.h"
#include "tests/support/Guarded.h"
#include "tests/support/OneIn.h"
#include "tests/support/SingleByteSets.h"

namespace {

using kx7::InstructionSet;
using kx7test::Among;
using kx7test::CANARY;
using kx7test::expectAlike;
using kx7test::Guarded;
using kx7test::GuardedCalls;
using kx7test::nameOf;
using kx7test::Outcome;
using kx7test::sets;
using kx7test::Using;

class Kernels : public kx7test::KernelTest {};

KX7CharSetConverter* const CONVERTERS[] = {&g_oConverterUTF8, &g_oConverterWCP1251, &g_oConverterWCP874,
                                           &g_oConverterISO_8859_1, &g_oConverterISO_8859_6};

struct Range {
    char32_t first, last;
};

/** What texts are made of. */
struct Mix {
    std::string name;
    std::vector<Range> ranges;  ///< of characters, each as likely as the others
    unsigned int ascii;         ///< of a hundred runs so many are ASCII
    unsigned int longest;       ///< of characters in a run
};

// By the bytes of UTF-8.
constexpr Range ONE{1, 0x7F}, TWO{0x80, 0x7FF}, CYRILLIC{0x400, 0x45F}, THREE{0x800, 0xD7FF},
    LAST_THREE{0xE000, 0xFFFF}, FOUR{0x10000, 0x10FFFF};

Mix const LENGTHS[] = {{"one byte", {ONE}, 0, 1},
                       {"two bytes", {CYRILLIC}, 0, 1},
                       {"two bytes of seven", {CYRILLIC}, 14, 1},
                       {"three bytes of ten", {THREE}, 10, 1},
                       {"four bytes of ten", {FOUR}, 10, 1},
                       {"two bytes of four", {TWO}, 75, 1},
                       {"three bytes among ASCII", {THREE}, 90, 1},
                       {"four bytes among ASCII", {FOUR}, 97, 1},
                       {"each length", {ONE, TWO, CYRILLIC, THREE, LAST_THREE, FOUR, FOUR}, 0, 1},
                       {"three or four bytes", {THREE, FOUR}, 0, 1}};

struct Script {
    char const* name;
    std::vector<Range> ranges;
};
Script const SCRIPTS[] = {{"Latin", {{'A', 'Z'}, {'a', 'z'}, {0xC0, 0xFF}, {0x100, 0x17F}, {0x1EA0, 0x1EF9}}},
                          {"Greek", {{0x384, 0x3CE}, {0x391, 0x3C9}}},
                          {"Cyrillic", {{0x410, 0x44F}, CYRILLIC}},
                          {"Hebrew", {{0x5D0, 0x5EA}, {0x5B0, 0x5C7}}},
                          {"Arabic", {{0x621, 0x652}, {0x660, 0x6D5}, {0xFE70, 0xFEFC}}},
                          {"Thai", {{0xE01, 0xE3A}, {0xE3F, 0xE5B}}},
                          {"Korean", {{0xAC00, 0xD7A3}, {0xAC00, 0xD7A3}, {0x3131, 0x318E}}},
                          {"Japanese", {{0x3041, 0x3093}, {0x30A1, 0x30FE}, {0x4E00, 0x9FA5}, {0xFF01, 0xFF9F}}},
                          {"Chinese", {{0x4E00, 0x9FFF}, {0x4E00, 0x9FFF}, {0x3001, 0x3011}, {0x20000, 0x2A6DF}}},
                          {"emoji", {{0x1F300, 0x1FAFF}, {0x2600, 0x27BF}, {0x200D, 0x200D}, {0xFE0F, 0xFE0F}}},
                          {"private use and compatibility", {LAST_THREE}}};

/** All of these, each script dense and as markup has it. */
std::vector<Mix> const& mixes()
{
    static std::vector<Mix> const all = [] {
        std::vector<Mix> made(std::begin(LENGTHS), std::end(LENGTHS));
        for (Script const& script : SCRIPTS) {
            made.push_back({script.name, script.ranges, 3, 1});
            made.push_back({script.name + std::string(" in markup"), script.ranges, 50, 40});
        }
        return made;
    }();
    return all;
}

std::u16string randomUnits(std::mt19937& random, size_t units, Mix const& mix)
{
    std::u16string text;
    while (text.size() < units) {
        bool const isASCII = random() % 100 < mix.ascii;
        for (auto left = 1 + random() % mix.longest; left != 0 && text.size() < units; --left) {
            Range const& range = isASCII ? ONE : mix.ranges[random() % mix.ranges.size()];
            auto const c = static_cast<unsigned int>(range.first + random() % (range.last - range.first + 1));
            if (c >= 0x10000)
                text += static_cast<char16_t>(kx7::highSurrogateOf(c));
            text += static_cast<char16_t>(c < 0x10000 ? c : kx7::lowSurrogateOf(c));
        }
    }
    return text;
}

Mix const& randomMix(std::mt19937& random)
{
    return mixes()[random() % mixes().size()];
}

std::string utf8Of(std::u16string const& units)
{
    std::vector<unsigned char> bytes(units.size() * 3 + 4);
    unsigned int const n = UTF16ToUTF8(bytes.data(), reinterpret_cast<unsigned short const*>(units.c_str()),
                                       static_cast<unsigned int>(bytes.size()));
    return {bytes.begin(), bytes.begin() + n};
}

TEST_F(Kernels, EveryLengthAtEveryAlignment)
{
    std::mt19937 random(11);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        GuardedCalls calls(*converter);
        for (size_t length = 0; length <= 300; ++length) {
            std::u16string units;
            std::string bytes;
            std::string name;
            for (size_t shift = 0; shift <= 64; ++shift) {
                // A text for some alignments, so that a length meets several mixes.
                if (shift % 22 == 0) {
                    Mix const& mix = randomMix(random);
                    name = mix.name;
                    units = randomUnits(random, length, mix);
                    bytes = utf8Of(units).substr(0, length);
                }
                size_t const at = shift == 64 ? GuardedCalls::AT_END : shift;
                auto const what = [&] { return name + ", " + std::to_string(length) + " at " + std::to_string(shift); };
                expectAlike(what, [&] { return calls.decode(bytes, bytes.size(), at); });
                expectAlike(what, [&] { return calls.encode(units, units.size() * 3, at); });
                expectAlike(what, [&] { return calls.decodeStrict(bytes, bytes.size(), at); });
                expectAlike(what, [&] { return calls.countUnits(bytes, at); });
                expectAlike(what, [&] { return calls.countBytes(units, at); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

/** The units that `outcome` holds, without the terminator. */
std::u16string unitsOf(Outcome const& outcome)
{
    std::u16string units(outcome.written, u'\0');
    memcpy(units.data(), outcome.text.data(), units.size() * 2);
    return units;
}

TEST_F(Kernels, EveryLengthOfTerminatedTextAtEveryAlignment)
{
    std::mt19937 random(15);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        GuardedCalls calls(*converter);
        for (size_t length = 0; length <= 300; ++length) {
            std::u16string const units = randomUnits(random, length, randomMix(random));
            auto const capacity = static_cast<unsigned int>(units.size() * 4);
            std::string bytes = calls.encodeText(units, capacity, ILLCHAR_REPLACE).text;
            bytes.pop_back();
            // What the set maps comes back, whichever kernels convert it.
            Outcome const decoded = calls.decodeText(bytes, capacity, ILLCHAR_REPLACE);
            std::u16string expected = units;
            for (char16_t& unit : expected)
                if (converter != &g_oConverterUTF8 &&
                    calls.encodeText(std::u16string(1, unit), 1, ILLCHAR_STOP).written == 0)
                    unit = u'?';
            ASSERT_EQ(unitsOf(decoded), expected);
            for (size_t shift = 0; shift <= 64; ++shift) {
                size_t const at = shift == 64 ? GuardedCalls::AT_END : shift;
                expectAlike("decoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return calls.decodeText(bytes, capacity, ILLCHAR_REPLACE, at); });
                expectAlike("encoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return calls.encodeText(units, capacity, ILLCHAR_REPLACE, at); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

/**
 * Texts of one single-byte set, of every length: of its bytes from `first` on, broken or not.
 * @param atAll at every alignment up to 300 bytes, each length of one kind of text; else one alignment a length
 */
void expectSingleByteTextsAlike(KX7CharSetConverter& converter, std::string const& name, bool atAll,
                                std::mt19937& random)
{
    GuardedCalls calls(converter);
    for (unsigned int const first : {0x20U, 0x80U, 0xC0U, 1U}) {
        for (unsigned int const brokenInAThousand : {0U, 3U, 50U}) {
            for (size_t length = 0; length <= 1500; length += length < 300 ? 1 : 97) {
                std::string bytes;
                while (bytes.size() < length) {
                    // Words of one half of the codes, as in a text of two scripts.
                    bool const isASCII = first < 0x80 || random() % 4 == 0;
                    for (auto letters = 1 + random() % 200; letters != 0 && bytes.size() < length; --letters) {
                        unsigned int const least = isASCII && first > 0x20 ? 0x20 : first;
                        unsigned int const most = isASCII && first != 1 ? 0x7E : 0xFF;
                        auto const byte = static_cast<char>(least + random() % (most - least + 1));
                        bool const isMapped = calls.decodeText({byte}, 1, ILLCHAR_STOP).written == 1;
                        if (isMapped || random() % 1000 < brokenInAThousand)
                            bytes += byte;
                        else
                            bytes += ' ';
                    }
                }
                auto const capacity = static_cast<unsigned int>(length);
                std::u16string units = unitsOf(calls.decodeText(bytes, capacity, ILLCHAR_REPLACE));
                for (char16_t& unit : units)
                    if (random() % 1000 < brokenInAThousand)
                        unit = static_cast<char16_t>(1 + random() % 0xFFFF);
                bool const isEverywhere = atAll && first == 0x80 && brokenInAThousand == 3 && length <= 300;
                size_t const begin = isEverywhere ? 0 : length % 65;
                size_t const end = isEverywhere ? 65 : begin + 1;
                for (size_t shift = begin; shift < end; ++shift) {
                    size_t const at = shift == 64 ? GuardedCalls::AT_END : shift;
                    auto const what = [&] {
                        return name + ", " + std::to_string(length) + " from " + std::to_string(first) + " at " +
                               std::to_string(shift);
                    };
                    for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE}) {
                        expectAlike(what, [&] { return calls.decodeText(bytes, capacity, op, at); });
                        expectAlike(what, [&] {
                            return calls.encodeText(units, static_cast<unsigned int>(units.size()), op, at);
                        });
                    }
                }
                if (testing::Test::HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(Kernels, SingleByteSetsInTheirOwnLetters)
{
    std::mt19937 random(16);
    // The sets differ in their tables and share the code. All alignments are tried with one of each way through it:
    // letters in rows, letters in no order, bytes left out, controls elsewhere, and ISO 8859-1, which needs no table.
    std::set<std::string> const everywhere = {"CP1251", "CP1256", "ISO-8859-6", "CP874", "ISO-8859-1"};
    for (kx7test::SingleByteSet const& set : kx7test::SINGLE_BYTE_SETS)
        expectSingleByteTextsAlike(set.converter, set.name, everywhere.count(set.name) != 0, random);
}

TEST_F(Kernels, SingleByteSetsThatAreNotASCII)
{
    std::mt19937 random(17);
    // Letters elsewhere, one byte and one unit mapped one way only, and no line feed.
    std::vector<unsigned short> swapped;
    for (unsigned short byte = 1; byte < 0x100; ++byte)
        if (byte != '\n')
            swapped.insert(swapped.end(), {byte, static_cast<unsigned short>(byte ^ 0x20)});
    swapped.insert(swapped.end(), {0xFF, 0x2603, 0, 0});
    KX7CharSetConverterSBCS letters(swapped.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(letters, "letters swapped", true, random);

    // The same without a unit above U+00FF.
    std::vector<unsigned short> narrow(swapped.begin(), swapped.end() - 4);
    narrow.insert(narrow.end(), {0, 0});
    KX7CharSetConverterSBCS lettersAlone(narrow.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(lettersAlone, "letters swapped within ISO 8859-1", true, random);

    // Printable ASCII, controls elsewhere.
    std::vector<unsigned short> rotated;
    for (unsigned short byte = 1; byte < 0x100; ++byte)
        rotated.insert(rotated.end(), {byte, static_cast<unsigned short>(byte < 0x20   ? byte % 0x1F + 1
                                                                         : byte < 0x80 ? byte
                                                                                       : byte * 0x100)});
    rotated.insert(rotated.end(), {0, 0});
    KX7CharSetConverterSBCS controls(rotated.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(controls, "controls rotated", true, random);
}

TEST_F(Kernels, EveryPatternAtEveryPositionOfABlockEdge)
{
    // The bytes and units where the classes begin and end. They stand for all: kernels compare bytes and units with
    // these bounds, and of what lies between two they only move bits.
    unsigned char const bytes[] = {0x00, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xC1, 0xC2,
                                   0xDF, 0xE0, 0xE2, 0xED, 0xEF, 0xF0, 0xF3, 0xF4, 0xF5, 0xFF};
    char16_t const units[] = {0,      0x41,   0x7F,   0x80,   0x7FF,  0x800, 0xD7FF,
                              0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
    // Around the ends of the blocks of 32 and 64, and of two blocks of 64, each with what comes before it.
    std::vector<size_t> byteEdges;
    std::vector<size_t> unitEdges;
    for (size_t position = 8; position <= 132; ++position) {
        bool const isSecond = position >= 122;
        if (isSecond || (position >= 24 && position <= 72))
            byteEdges.push_back(position);
        if (isSecond || position <= 72)
            unitEdges.push_back(position);
    }
    constexpr size_t AFTER = 100;
    kx7test::OneIn isTaken(11);
    for (KX7CharSetConverter* const converter : {CONVERTERS[0], CONVERTERS[1]}) {
        GuardedCalls calls(*converter);
        for (std::string const filler : {"a", "\xD0\xB0", "\xE3\x81\x82", "\xF0\x9F\x98\x80"}) {
            Among<std::string> const among(filler);
            for (size_t const position : byteEdges) {
                std::string const what = "a pattern at " + std::to_string(position) + " among " + filler;
                for (unsigned char const a : bytes)
                    for (unsigned char const b : bytes)
                        for (unsigned char const c : bytes) {
                            // Bytes of a single-byte set are converted each on its own.
                            if ((converter != &g_oConverterUTF8 && b != c) || !isTaken())
                                continue;
                            char const pattern[] = {static_cast<char>(a), static_cast<char>(b), static_cast<char>(c)};
                            std::string const text = among(position, {pattern, sizeof pattern}, AFTER);
                            expectAlike(what, [&] { return calls.decode(text, text.size(), GuardedCalls::AT_END); });
                            expectAlike(what,
                                        [&] { return calls.decodeStrict(text, text.size(), GuardedCalls::AT_END); });
                            expectAlike(what, [&] { return calls.countUnits(text); });
                        }
                if (HasFatalFailure())
                    return;
            }
        }
        for (std::u16string const filler : {u"a", u"\u0430", u"\u3042", u"\xD83D\xDE00"}) {
            Among<std::u16string> const among(filler);
            for (size_t const position : unitEdges) {
                std::string const what = "units of a pattern at " + std::to_string(position);
                for (char16_t const a : units)
                    for (char16_t const b : units) {
                        if (!isTaken())
                            continue;
                        std::u16string const text = among(position, {a, b}, AFTER);
                        expectAlike(what, [&] { return calls.encode(text, text.size() * 3, GuardedCalls::AT_END); });
                        expectAlike(what, [&] { return calls.countBytes(text); });
                    }
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(Kernels, BrokenText)
{
    std::mt19937 random(12);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        GuardedCalls calls(*converter);
        for (Mix const& mix : mixes()) {
            for (unsigned int const brokenInAThousand : {0U, 1U, 10U, 100U}) {
                for (int round = 0; round < 3; ++round) {
                    std::u16string units = randomUnits(random, 3000 + random() % 2000, mix);
                    std::string bytes = utf8Of(units);
                    for (char& byte : bytes)
                        if (random() % 1000 < brokenInAThousand)
                            byte = static_cast<char>(1 + random() % 255);
                    for (char16_t& unit : units)
                        if (random() % 1000 < brokenInAThousand)
                            unit = static_cast<char16_t>(1 + random() % 0xFFFF);
                    for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE}) {
                        expectAlike("broken bytes", [&] {
                            return calls.decodeText(bytes, static_cast<unsigned int>(bytes.size()), op);
                        });
                        auto const capacity = static_cast<unsigned int>(units.size() * 6);
                        expectAlike("broken units", [&] { return calls.encodeText(units, capacity, op); });
                    }
                    expectAlike("broken bytes, strictly",
                                [&] { return calls.decodeStrict(bytes, bytes.size(), GuardedCalls::AT_END); });
                    expectAlike("units of broken bytes", [&] { return calls.countUnits(bytes); });
                    expectAlike("bytes of broken units", [&] { return calls.countBytes(units); });
                    if (HasFatalFailure())
                        return;
                }
            }
        }
    }
}

TEST_F(Kernels, EveryCapacityAroundABlockEdge)
{
    std::mt19937 random(13);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        GuardedCalls calls(*converter);
        for (Mix const& mix : mixes()) {
            std::u16string const units = randomUnits(random, 200, mix);
            std::string const bytes = utf8Of(units);
            for (size_t capacity = 0; capacity <= 300; ++capacity) {
                expectAlike("capacity " + std::to_string(capacity),
                            [&] { return calls.decode(bytes, capacity, GuardedCalls::AT_END); });
                expectAlike("capacity " + std::to_string(capacity),
                            [&] { return calls.encode(units, capacity, GuardedCalls::AT_END); });
                expectAlike("strictly, capacity " + std::to_string(capacity),
                            [&] { return calls.decodeStrict(bytes, capacity, GuardedCalls::AT_END); });
                expectAlike("capacity " + std::to_string(capacity), [&] {
                    return calls.decodeText(bytes, static_cast<unsigned int>(capacity), ILLCHAR_REPLACE);
                });
                expectAlike("capacity " + std::to_string(capacity), [&] {
                    return calls.encodeText(units, static_cast<unsigned int>(capacity), ILLCHAR_REPLACE);
                });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(Kernels, NothingIsWrittenAfterTheTextWhateverTheCapacity)
{
    std::mt19937 random(14);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        for (InstructionSet const set : sets()) {
            Using const use(set);
            for (Mix const& mix : LENGTHS) {
                for (size_t length = 0; length <= 300; length += 1 + length / 32) {
                    std::u16string const units = randomUnits(random, length, mix);
                    auto const* const source = reinterpret_cast<unsigned short const*>(units.c_str());
                    std::vector<unsigned char> bytes(units.size() * 3 + 4);
                    unsigned int const n = converter->fromUTF16(
                        bytes.data(), source, static_cast<unsigned int>(bytes.size() - 1), ILLCHAR_REPLACE, nullptr);
                    Guarded<unsigned char> exactBytes(n + 1);
                    EXPECT_EQ(converter->fromUTF16(exactBytes.data(), source, 0xFFFFFFFE, ILLCHAR_REPLACE, nullptr), n);
                    std::vector<unsigned short> text(n + 1);
                    unsigned int const m =
                        converter->toUTF16(text.data(), bytes.data(), n, ILLCHAR_REPLACE, nullptr, -1);
                    Guarded<unsigned short> exactUnits(m + 1);
                    EXPECT_EQ(
                        converter->toUTF16(exactUnits.data(), bytes.data(), 0xFFFFFFFE, ILLCHAR_REPLACE, nullptr, -1),
                        m);
                }
            }
        }
    }
}

TEST_F(Kernels, NothingAfterWhatAKernelReturnsIsTouchedThoughItStopsAtBrokenText)
{
    std::mt19937 random(15);
    for (InstructionSet const set : sets()) {
        kx7::Kernels const& kernels = kx7::kernelsOf(set);
        for (Mix const& mix : LENGTHS) {
            for (size_t at = 0; at < 399; ++at) {
                std::u16string units = randomUnits(random, 400, mix);
                std::string bytes = utf8Of(units);
                bytes[at] = static_cast<char>(0xE3);
                bytes[at + 1] = 'x';
                units[at] = 0xD800;
                units[at + 1] = 'x';
                auto const* in = reinterpret_cast<unsigned char const*>(bytes.data());
                std::vector<unsigned short> text(bytes.size() + 64, 0xA5A5);
                unsigned short* out = text.data();
                kernels.decodeUTF8(in, in + bytes.size(), out, text.data() + text.size());
                EXPECT_LE(in, reinterpret_cast<unsigned char const*>(bytes.data()) + at);
                EXPECT_TRUE(std::all_of(out, text.data() + text.size(), [](unsigned short u) { return u == 0xA5A5; }))
                    << nameOf(set) << ", broken at " << at;
                auto const* unitsIn = reinterpret_cast<unsigned short const*>(units.data());
                std::vector<unsigned char> encoded(units.size() * 3 + 64, 0xFF);
                unsigned char* bytesOut = encoded.data();
                kernels.encodeUTF8(unitsIn, unitsIn + units.size(), bytesOut, encoded.data() + encoded.size());
                EXPECT_LE(unitsIn, reinterpret_cast<unsigned short const*>(units.data()) + at);
                EXPECT_TRUE(
                    std::all_of(bytesOut, encoded.data() + encoded.size(), [](unsigned char b) { return b == 0xFF; }))
                    << nameOf(set) << ", broken at " << at;
            }
        }
    }
}

TEST_F(Kernels, LengthOfTextEndsAtTheFirstZeroOrTheBoundAndTouchesNoPageAfter)
{
    for (InstructionSet const set : sets()) {
        kx7::Kernels const& kernels = kx7::kernelsOf(set);
        for (size_t length = 0; length <= 200; ++length) {
            std::vector<unsigned short> text(length + 1, 'a');
            text[length] = 0;
            Guarded<unsigned short> const memory(text.data(), text.size());
            for (size_t start = 0; start <= length; ++start)
                EXPECT_EQ(kernels.unitLength(memory.data() + start, SIZE_MAX), length - start) << nameOf(set);
            Guarded<unsigned short> const unended(text.data(), length);
            for (size_t start = 0; start <= length; ++start)
                EXPECT_EQ(kernels.unitLength(unended.data() + start, length - start), length - start) << nameOf(set);
            for (size_t most = 0; most <= length + 2; ++most)
                EXPECT_EQ(kernels.unitLength(memory.data(), most), std::min(most, length)) << nameOf(set);
        }
    }
}

}  // namespace
