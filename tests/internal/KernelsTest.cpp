// kx7text tests - the vector kernels against the plain engine: every kernel gives what the steps alone give.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "kx7/charset/Converters.h"
#include "tests/internal/KernelBench.h"
#include "tests/support/Guarded.h"
#include "tests/support/SingleByteSets.h"

namespace {

using kx7::InstructionSet;
using kx7test::Bench;
using kx7test::CANARY;
using kx7test::expectAlike;
using kx7test::Guarded;
using kx7test::nameOf;
using kx7test::Outcome;
using kx7test::sets;
using kx7test::Using;

KX7CharSetConverter* const CONVERTERS[] = {&g_oConverterUTF8, &g_oConverterWCP1251, &g_oConverterWCP874,
                                           &g_oConverterISO_8859_1, &g_oConverterISO_8859_6};

/** Code points of one to four UTF-8 bytes, as many of each as `weights` say. */
std::u16string randomUnits(std::mt19937& random, size_t units, unsigned int const (&weights)[4])
{
    std::u16string text;
    std::discrete_distribution<int> kind(std::begin(weights), std::end(weights));
    while (text.size() < units) {
        switch (kind(random)) {
            case 0: text += static_cast<char16_t>(1 + random() % 0x7F); break;
            case 1: text += static_cast<char16_t>(0x400 + random() % 0x60); break;
            case 2: text += static_cast<char16_t>(0x3041 + random() % 0x5000); break;
            default:
                text += static_cast<char16_t>(0xD800 + random() % 0x400);
                text += static_cast<char16_t>(0xDC00 + random() % 0x400);
        }
    }
    return text;
}

std::string utf8Of(std::u16string const& units)
{
    std::vector<unsigned char> bytes(units.size() * 3 + 4);
    unsigned int const n = UTF16ToUTF8(bytes.data(), reinterpret_cast<unsigned short const*>(units.c_str()),
                                       static_cast<unsigned int>(bytes.size()));
    return {bytes.begin(), bytes.begin() + n};
}

unsigned int const MIXES[][4] = {{1, 0, 0, 0}, {1, 6, 0, 0},  {1, 0, 9, 0}, {1, 0, 0, 9}, {3, 1, 0, 0},
                                 {9, 0, 1, 0}, {30, 0, 0, 1}, {4, 4, 4, 4}, {0, 1, 0, 0}, {0, 0, 1, 1}};

TEST(Kernels, EveryLengthAtEveryAlignment)
{
    std::mt19937 random(11);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        Bench bench(*converter);
        for (size_t length = 0; length <= 300; ++length) {
            auto const& mix = MIXES[length % std::size(MIXES)];
            std::u16string const units = randomUnits(random, length, mix);
            std::string bytes = utf8Of(units).substr(0, length);
            for (size_t shift = 0; shift <= 64; ++shift) {
                size_t const at = shift == 64 ? Bench::NOWHERE : shift;
                expectAlike("decoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return bench.decode(bytes, bytes.size(), at); });
                expectAlike("encoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return bench.encode(units, units.size() * 3, at); });
                expectAlike("strictly decoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return bench.decodeStrict(bytes, bytes.size(), at); });
                if (HasFatalFailure())
                    return;
            }
            expectAlike("counting units of " + std::to_string(length), [&] { return bench.countUnits(bytes); });
            expectAlike("counting bytes of " + std::to_string(length), [&] { return bench.countBytes(units); });
            if (HasFatalFailure())
                return;
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

TEST(Kernels, EveryLengthOfTerminatedTextAtEveryAlignment)
{
    std::mt19937 random(15);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        Bench bench(*converter);
        for (size_t length = 0; length <= 300; ++length) {
            std::u16string const units = randomUnits(random, length, MIXES[length % std::size(MIXES)]);
            auto const room = static_cast<unsigned int>(units.size() * 4);
            std::string bytes = bench.encodeText(units, room, ILLCHAR_REPLACE).text;
            bytes.pop_back();
            // What the set maps comes back, whichever kernels convert it.
            Outcome const decoded = bench.decodeText(bytes, room, ILLCHAR_REPLACE);
            std::u16string expected = units;
            for (char16_t& unit : expected)
                if (converter != &g_oConverterUTF8 &&
                    bench.encodeText(std::u16string(1, unit), 1, ILLCHAR_STOP).written == 0)
                    unit = u'?';
            ASSERT_EQ(unitsOf(decoded), expected);
            for (size_t shift = 0; shift <= 64; ++shift) {
                size_t const at = shift == 64 ? Bench::NOWHERE : shift;
                expectAlike("decoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return bench.decodeText(bytes, room, ILLCHAR_REPLACE, at); });
                expectAlike("encoding " + std::to_string(length) + " at " + std::to_string(shift),
                            [&] { return bench.encodeText(units, room, ILLCHAR_REPLACE, at); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

/** Texts of one single-byte set, of every length: of its bytes from `first` on, broken or not. */
void expectSingleByteTextsAlike(KX7CharSetConverter& converter, std::string const& name, std::mt19937& random)
{
    Bench bench(converter);
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
                        bool const isMapped = bench.decodeText({byte}, 1, ILLCHAR_STOP).written == 1;
                        if (isMapped || random() % 1000 < brokenInAThousand)
                            bytes += byte;
                        else
                            bytes += ' ';
                    }
                }
                size_t const at = length % 65 == 64 ? Bench::NOWHERE : length % 65;
                std::string const what = name + ", " + std::to_string(length) + " from " + std::to_string(first);
                Outcome decoded;
                for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE})
                    expectAlike("decoding " + what, [&] {
                        return decoded = bench.decodeText(bytes, static_cast<unsigned int>(length), op, at);
                    });
                std::u16string units = unitsOf(decoded);
                for (char16_t& unit : units)
                    if (random() % 1000 < brokenInAThousand)
                        unit = static_cast<char16_t>(1 + random() % 0xFFFF);
                for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE})
                    expectAlike("encoding " + what, [&] {
                        return bench.encodeText(units, static_cast<unsigned int>(units.size()), op, at);
                    });
                if (testing::Test::HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(Kernels, SingleByteSetsInTheirOwnLetters)
{
    std::mt19937 random(16);
    for (kx7test::SingleByteSet const& set : kx7test::SINGLE_BYTE_SETS)
        expectSingleByteTextsAlike(set.converter, set.name, random);
}

TEST(Kernels, SingleByteSetsThatAreNotASCII)
{
    std::mt19937 random(17);
    // Letters elsewhere, one byte and one unit mapped one way only, and no line feed.
    std::vector<unsigned short> swapped;
    for (unsigned short byte = 1; byte < 0x100; ++byte)
        if (byte != '\n')
            swapped.insert(swapped.end(), {byte, static_cast<unsigned short>(byte ^ 0x20)});
    swapped.insert(swapped.end(), {0xFF, 0x2603, 0, 0});
    KX7CharSetConverterSBCS letters(swapped.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(letters, "letters swapped", random);

    // The same without a unit above U+00FF.
    std::vector<unsigned short> narrow(swapped.begin(), swapped.end() - 4);
    narrow.insert(narrow.end(), {0, 0});
    KX7CharSetConverterSBCS lettersAlone(narrow.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(lettersAlone, "letters swapped within ISO 8859-1", random);

    // Printable ASCII, controls elsewhere.
    std::vector<unsigned short> rotated;
    for (unsigned short byte = 1; byte < 0x100; ++byte)
        rotated.insert(rotated.end(), {byte, static_cast<unsigned short>(byte < 0x20   ? byte % 0x1F + 1
                                                                         : byte < 0x80 ? byte
                                                                                       : byte * 0x100)});
    rotated.insert(rotated.end(), {0, 0});
    KX7CharSetConverterSBCS controls(rotated.data(), KX7CS_WCP1252);
    expectSingleByteTextsAlike(controls, "controls rotated", random);
}

TEST(Kernels, EveryPatternAtEveryPositionOfABlockEdge)
{
    // The bytes and units where the classes begin and end.
    unsigned char const bytes[] = {0x00, 0x41, 0x7F, 0x80, 0x90, 0xA0, 0xBF, 0xC0, 0xC3,
                                   0xDF, 0xE0, 0xE2, 0xED, 0xEF, 0xF0, 0xF4, 0xF5, 0xFF};
    char16_t const units[] = {0,      0x41,   0x7F,   0x80,   0x7FF,  0x800, 0xD7FF,
                              0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE000, 0xFFFF};
    for (KX7CharSetConverter* const converter : {CONVERTERS[0], CONVERTERS[1]}) {
        Bench bench(*converter);
        for (std::string const filler : {"a", "\xD0\xB0", "\xE3\x81\x82", "\xF0\x9F\x98\x80"}) {
            for (size_t position = 24; position <= 72; ++position) {
                std::string front;
                while (front.size() + filler.size() <= position)
                    front += filler;
                front.append(position - front.size(), 'x');
                for (unsigned char const a : bytes)
                    for (unsigned char const b : bytes)
                        for (unsigned char const c : bytes) {
                            std::string text =
                                front + static_cast<char>(a) + static_cast<char>(b) + static_cast<char>(c);
                            for (int i = 0; i < 40; ++i)
                                text += filler;
                            expectAlike("a pattern at " + std::to_string(position),
                                        [&] { return bench.decode(text, text.size(), Bench::NOWHERE); });
                            expectAlike("a pattern, strictly, at " + std::to_string(position),
                                        [&] { return bench.decodeStrict(text, text.size(), Bench::NOWHERE); });
                            expectAlike("units of a pattern at " + std::to_string(position),
                                        [&] { return bench.countUnits(text); });
                        }
                if (HasFatalFailure())
                    return;
            }
        }
        for (std::u16string const filler : {u"a", u"\u0430", u"\u3042", u"\xD83D\xDE00"}) {
            for (size_t position = 8; position <= 72; ++position) {
                std::u16string front;
                while (front.size() + filler.size() <= position)
                    front += filler;
                front.append(position - front.size(), u'x');
                for (char16_t const a : units)
                    for (char16_t const b : units) {
                        std::u16string text = front + a + b;
                        for (int i = 0; i < 70; ++i)
                            text += filler;
                        expectAlike("a pattern at " + std::to_string(position),
                                    [&] { return bench.encode(text, text.size() * 3, Bench::NOWHERE); });
                        expectAlike("bytes of a pattern at " + std::to_string(position),
                                    [&] { return bench.countBytes(text); });
                    }
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(Kernels, BrokenText)
{
    std::mt19937 random(12);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        Bench bench(*converter);
        for (auto const& mix : MIXES) {
            for (unsigned int const brokenInAThousand : {0U, 1U, 10U, 100U}) {
                for (int round = 0; round < 8; ++round) {
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
                            return bench.decodeText(bytes, static_cast<unsigned int>(bytes.size()), op);
                        });
                        auto const room = static_cast<unsigned int>(units.size() * 6);
                        expectAlike("broken units", [&] { return bench.encodeText(units, room, op); });
                    }
                    expectAlike("broken bytes, strictly",
                                [&] { return bench.decodeStrict(bytes, bytes.size(), Bench::NOWHERE); });
                    expectAlike("units of broken bytes", [&] { return bench.countUnits(bytes); });
                    expectAlike("bytes of broken units", [&] { return bench.countBytes(units); });
                    if (HasFatalFailure())
                        return;
                }
            }
        }
    }
}

TEST(Kernels, EveryRoomAroundABlockEdge)
{
    std::mt19937 random(13);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        Bench bench(*converter);
        for (auto const& mix : MIXES) {
            std::u16string const units = randomUnits(random, 200, mix);
            std::string const bytes = utf8Of(units);
            for (size_t room = 0; room <= 300; ++room) {
                expectAlike("room " + std::to_string(room), [&] { return bench.decode(bytes, room, Bench::NOWHERE); });
                expectAlike("room " + std::to_string(room), [&] { return bench.encode(units, room, Bench::NOWHERE); });
                expectAlike("strictly, room " + std::to_string(room),
                            [&] { return bench.decodeStrict(bytes, room, Bench::NOWHERE); });
                expectAlike("room " + std::to_string(room),
                            [&] { return bench.decodeText(bytes, static_cast<unsigned int>(room), ILLCHAR_REPLACE); });
                expectAlike("room " + std::to_string(room),
                            [&] { return bench.encodeText(units, static_cast<unsigned int>(room), ILLCHAR_REPLACE); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(Kernels, NothingIsWrittenBehindTheTextWhateverTheRoom)
{
    std::mt19937 random(14);
    for (KX7CharSetConverter* const converter : CONVERTERS) {
        for (InstructionSet const set : sets()) {
            Using const use(set);
            for (auto const& mix : MIXES) {
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

TEST(Kernels, NothingBehindWhatAKernelReturnsIsTouchedThoughItStopsAtBrokenText)
{
    std::mt19937 random(15);
    for (InstructionSet const set : sets()) {
        kx7::Kernels const& kernels = kx7::kernelsOf(set);
        for (auto const& mix : MIXES) {
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

TEST(Kernels, LengthOfTextEndsAtTheFirstZeroOrTheBoundAndTouchesNoPageBehind)
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
