// kx7text tests - multibyte, UTF-16 and UTF-32 converters against their models: sequences, units and code points
// without exception, and every capacity and limit of texts that cross all branches.
#include <gtest/gtest.h>

#include <climits>

#include "tests/support/MultibyteSets.h"
#include "tests/support/OneIn.h"
#include "tests/support/Probe.h"
#include "tests/support/Texts.h"

using namespace kx7test;

namespace {

MultibyteSet const& setOf(KX7CharSetConverter const& converter)
{
    for (MultibyteSet const& set : multibyteSets())
        if (&set.converter == &converter)
            return set;
    abort();
}

std::string bytesOf(std::initializer_list<unsigned int> values)
{
    std::string bytes;
    for (unsigned int const value : values)
        bytes += static_cast<char>(value);
    return bytes;
}

/** All operations and some limits; capacities and flag arguments take turns. */
void compareSequence(Probe& probe, std::string const& bytes)
{
    static unsigned int turn = 0;
    unsigned int const capacities[] = {8, 1, 2, 8, 3};
    for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE})
        for (int const limit : {-1, 1, 2, 3}) {
            ++turn;
            probe.compareDecode({bytes, capacities[turn % 5], op, limit}, FLAG_ARGUMENTS[turn % 3]);
        }
}

std::u16string unitsOf(unsigned int codePoint)
{
    if (codePoint <= 0xFFFF)
        return std::u16string(1, static_cast<char16_t>(codePoint));
    return {static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)),
            static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF))};
}

}  // namespace

TEST(Multibyte, EverySequenceOfOneOrTwoBytes)
{
    for (MultibyteSet const& set : multibyteSets()) {
        if (set.isWide)
            continue;
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        for (unsigned int a = 1; a <= 0xFF && !probe.gaveUp(); ++a) {
            compareSequence(probe, bytesOf({a}));
            probe.compareNumUnits(bytesOf({a}), UNTIL_TERMINATOR);
            for (unsigned int b = 1; b <= 0xFF; ++b) {
                std::string const bytes = bytesOf({a, b});
                compareSequence(probe, bytes);
                probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
                probe.compareNumUnits(bytes, 1);
            }
        }
    }
}

TEST(Multibyte, EveryLeadWithEverySecondByteAndALetterAfter)
{
    for (MultibyteSet const& set : multibyteSets()) {
        if (set.isWide)
            continue;
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        unsigned int turn = 0;
        for (unsigned int a = 0x80; a <= 0xFF && !probe.gaveUp(); ++a)
            for (unsigned int b = 1; b <= 0xFF; ++b)
                for (unsigned int const c : {0x41u, 0xA1u, 0x81u}) {
                    ++turn;
                    probe.compareDecode({bytesOf({a, b, c}), 8, OPERATIONS[1 + turn % 3], static_cast<int>(turn % 4)},
                                        FLAG_ARGUMENTS[turn % 3]);
                    probe.compareNumUnits(bytesOf({a, b, c}), 3);
                }
    }
}

TEST(Multibyte, EUCJPSequencesOfThreeBytesOfEachClass)
{
    MultibyteSet const& set = setOf(g_oConverterEUCJP);
    Probe probe(set.converter, *set.model);
    unsigned int const bytes[] = {0x01, 0x20, 0x21, 0x41, 0x5C, 0x7E, 0x7F, 0x80, 0x8A, 0x8D, 0x8E,
                                  0x8F, 0x90, 0xA0, 0xA1, 0xB0, 0xDF, 0xE0, 0xF4, 0xFE, 0xFF};
    for (unsigned int a = 1; a <= 0xFF && !probe.gaveUp(); ++a)
        for (unsigned int const b : bytes)
            for (unsigned int const c : bytes) {
                compareSequence(probe, bytesOf({a, b, c}));
                for (unsigned int count = 0; count <= 4; ++count)
                    probe.compareNumUnits(bytesOf({a, b, c}), count);
            }
}

TEST(Multibyte, GB18030SequencesOfThreeAndFourBytesOfEachClass)
{
    MultibyteSet const& set = setOf(g_oConverterGB18030);
    Probe probe(set.converter, *set.model);
    unsigned int const bytes[] = {0x2F, 0x30, 0x39, 0x3A, 0x40, 0x7E, 0x7F, 0x80, 0x81, 0xFE, 0xFF};
    for (unsigned int a = 0x7F; a <= 0xFF && !probe.gaveUp(); ++a)
        for (unsigned int const b : bytes)
            for (unsigned int const c : bytes) {
                compareSequence(probe, bytesOf({a, b, c}));
                for (unsigned int const d : bytes) {
                    compareSequence(probe, bytesOf({a, b, c, d}));
                    for (unsigned int const count : {2u, 3u, 4u, 5u})
                        probe.compareNumUnits(bytesOf({a, b, c, d}), count);
                }
            }
}

TEST(Multibyte, EveryFourByteCodeOfGB18030)
{
    MultibyteSet const& set = setOf(g_oConverterGB18030);
    Probe probe(set.converter, *set.model);
    unsigned int codes = 0;
    unsigned int mapped = 0;
    for (unsigned int a = 0x81; a <= 0xFE; ++a)
        for (unsigned int b = 0x30; b <= 0x39; ++b)
            for (unsigned int c = 0x81; c <= 0xFE && !probe.gaveUp(); ++c)
                for (unsigned int d = 0x30; d <= 0x39; ++d) {
                    DecodeCall call{bytesOf({a, b, c, d}), 8, OPERATIONS[codes % 4], static_cast<int>(codes % 3) * 2};
                    Decoded const expected = set.model->toUTF16(call);
                    probe.decode(call, expected, FLAG_ARGUMENTS[codes % 3], "against the model");
                    ++codes;
                    mapped += expected.flag == Flag::CLEARED ? 1 : 0;
                }
    EXPECT_EQ(codes, 1587600u);
    EXPECT_EQ(mapped, 39420u + 0x100000u);
}

TEST(Multibyte, EveryUnitEncoded)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        for (unsigned int unit = 1; unit <= 0xFFFF && !probe.gaveUp(); ++unit) {
            std::u16string const alone(1, static_cast<char16_t>(unit));
            for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE}) {
                probe.compareEncode({alone, 24, op}, FLAG_ARGUMENTS[unit % 3]);
                probe.compareEncode({alone + u'z', 28, op}, FLAG_ARGUMENTS[(unit + 1) % 3]);
            }
            probe.compareEncode({alone, 1 + unit % 4, OPERATIONS[unit / 4 % 4]}, FLAG_ARGUMENTS[unit % 3]);
            probe.compareNumBytes(alone, UNTIL_TERMINATOR);
            probe.compareNumBytes(alone + u'z', 2);
        }
    }
}

TEST(Multibyte, EverySupplementaryCodePointEncoded)
{
    unsigned int const block = 128;
    OneIn isTaken(7);
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        for (unsigned int first = 0x10000; first <= 0x10FFFF && !probe.gaveUp(); first += block) {
            if (!isTaken())
                continue;
            std::u16string units;
            for (unsigned int c = first; c < first + block; ++c)
                units += unitsOf(c);
            for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE})
                probe.compareEncode({units, 12 * block, op}, FLAG_ARGUMENTS[first / block % 3]);
            probe.compareNumBytes(units, UNTIL_TERMINATOR);
        }
    }
}

TEST(Multibyte, EverySupplementaryCodePointStoppedAtOnItsOwn)
{
    for (KX7CharSetConverter* converter :
         std::initializer_list<KX7CharSetConverter*>{&g_oConverterGB18030, &g_oConverterSJIS2004, &g_oConverterUTF32}) {
        MultibyteSet const& set = setOf(*converter);
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        for (unsigned int c = 0x10000; c <= 0x10FFFF && !probe.gaveUp(); ++c)
            probe.compareEncode({unitsOf(c), 4, ILLCHAR_STOP}, FLAG_ARGUMENTS[c % 3]);
    }
}

TEST(Multibyte, EveryUnitDecodedFromUTF16)
{
    MultibyteSet const& set = setOf(g_oConverterUTF16);
    Probe probe(set.converter, *set.model);
    for (unsigned int unit = 1; unit <= 0xFFFF && !probe.gaveUp(); ++unit)
        probe.compareDecode({bytesOfValues(std::u16string(1, static_cast<char16_t>(unit))), 2, OPERATIONS[unit % 4], 2},
                            FLAG_ARGUMENTS[unit % 3]);
}

TEST(Multibyte, EveryUnitDecodedFromItsEscape)
{
    MultibyteSet const& set = setOf(g_oConverterUTF16Esc);
    Probe probe(set.converter, *set.model);
    for (unsigned int unit = 0; unit <= 0xFFFF && !probe.gaveUp(); ++unit) {
        probe.decode({escapeOf(unit), 2, OPERATIONS[unit % 4], -1},
                     {std::u16string(1, static_cast<char16_t>(unit)), Flag::CLEARED}, FLAG_ARGUMENTS[unit % 3]);
        probe.compareNumUnits(escapeOf(unit), UNTIL_TERMINATOR);
    }
    // Every byte in every place of an escape.
    for (size_t place = 0; place < 6; ++place)
        for (unsigned int byte = 1; byte <= 0xFF; ++byte) {
            std::string bytes = "U+0A9F";
            bytes[place] = static_cast<char>(byte);
            compareSequence(probe, bytes);
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
        }
}

TEST(Multibyte, EveryCodePointDecodedFromUTF32AndSomeBeyond)
{
    MultibyteSet const& set = setOf(g_oConverterUTF32);
    Probe probe(set.converter, *set.model);
    unsigned int const block = 128;
    for (unsigned int first = 1; first <= 0x120000 && !probe.gaveUp(); first += block) {
        std::u32string codePoints;
        for (unsigned int c = first; c < first + block; ++c)
            codePoints += static_cast<char32_t>(c);
        probe.compareDecode({bytesOfValues(codePoints), 2 * block, OPERATIONS[first / block % 4], -1},
                            FLAG_ARGUMENTS[first % 3]);
    }
}

TEST(Multibyte, EveryCapacityAndLimit)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        unsigned int turn = 0;
        std::string const last =
            set.isWide ? bytesOfValues(std::u16string(u"C\0", set.converter.getMinUnitSize() / 2)) : "C";
        for (std::string const& a : set.byteFragments)
            for (std::string const& b : set.byteFragments) {
                std::string const bytes = a + b + last;
                auto const length = static_cast<unsigned int>(bytes.size());
                for (ILLCHAR_OPTYPE const op : OPERATIONS)
                    for (unsigned int capacity = 0; capacity <= length + 1; ++capacity)
                        for (int limit = -1; limit <= static_cast<int>(length) + 1; ++limit)
                            probe.compareDecode({bytes, capacity, op, limit}, FLAG_ARGUMENTS[++turn % 3]);
                probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
                for (unsigned int count = 0; count <= length + 1; ++count)
                    probe.compareNumUnits(bytes, count);
            }
    }
}

TEST(Multibyte, EveryCapacityForEncoding)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        unsigned int turn = 0;
        unsigned int const escape = 6 * set.converter.getNullCharSize();
        for (std::u16string const& a : set.unitFragments)
            for (std::u16string const& b : set.unitFragments) {
                std::u16string const units = a + b + u"C";
                auto const length = static_cast<unsigned int>(units.size());
                for (ILLCHAR_OPTYPE const op : OPERATIONS)
                    for (unsigned int capacity = 0; capacity <= escape * length + 2; ++capacity)
                        probe.compareEncode({units, capacity, op}, FLAG_ARGUMENTS[++turn % 3]);
                probe.compareNumBytes(units, UNTIL_TERMINATOR);
                for (unsigned int count = 0; count <= length + 1; ++count)
                    probe.compareNumBytes(units, count);
            }
    }
}

TEST(Multibyte, NothingIsReadAfterTheCharacterThatFillsTheCapacityOrReachesTheLimit)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        for (size_t const letters : {size_t{0}, size_t{5}, PIECE_UNITS - 1, PIECE_UNITS, 2 * PIECE_UNITS - 2})
            for (std::string const& fragment : set.byteFragments) {
                std::string const bytes = (set.isWide ? std::string() : std::string(letters, 'x')) + fragment;
                Decoded const whole = set.model->toUTF16({bytes, INT_MAX, ILLCHAR_REPLACE, INT_MAX});
                if (whole.flag == Flag::SET)
                    continue;
                // Without a terminator: an escape that is truncated looks for its next byte.
                if (fragment[0] == 'U' && fragment.size() != 6)
                    continue;
                auto const capacity = static_cast<unsigned int>(whole.units.size());
                probe.decode({bytes, capacity, ILLCHAR_REPLACE, INT_MAX}, whole, FlagArgument::NONE, "capacity",
                             Terminator::ABSENT);
                int const limit = static_cast<int>(bytes.size() / set.converter.getMinUnitSize());
                probe.decode({bytes, capacity + 9, ILLCHAR_REPLACE, limit}, whole, FlagArgument::NONE, "limit",
                             Terminator::ABSENT);
            }
    }
}

TEST(Multibyte, EveryFragmentAcrossAPieceBoundary)
{
    OneIn isTaken(7);
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        unsigned int turn = 0;
        std::string const letter =
            set.isWide ? bytesOfValues(std::u16string(u"x\0", set.converter.getMinUnitSize() / 2)) : "x";
        std::string letters;
        while (letters.size() < 2 * PIECE_UNITS * letter.size())
            letters += letter;
        for (size_t const pieces : {1U, 2U})
            for (size_t before = 0; before < 8; ++before) {
                std::string const front =
                    letters.substr(0, (pieces * PIECE_UNITS - before) / letter.size() * letter.size());
                for (std::string const& a : set.byteFragments)
                    for (std::string const& b : set.byteFragments) {
                        ++turn;
                        if (!isTaken())
                            continue;
                        std::string const bytes = front + a + b + letter;
                        auto const length = static_cast<unsigned int>(bytes.size());
                        probe.compareDecode({bytes, length, OPERATIONS[turn % 4], INT_MAX}, FLAG_ARGUMENTS[turn % 3]);
                        if (turn % 3 == 0)
                            probe.compareDecode({bytes, length - 2, ILLCHAR_REPLACE,
                                                 static_cast<int>(front.size() / letter.size() + turn % 4)},
                                                FLAG_ARGUMENTS[turn % 3]);
                        if (probe.gaveUp())
                            return;
                    }
                std::u16string const unitFront(pieces * PIECE_UNITS - before, u'x');
                for (std::u16string const& a : set.unitFragments)
                    for (std::u16string const& b : set.unitFragments) {
                        ++turn;
                        if (!isTaken())
                            continue;
                        probe.compareEncode({unitFront + a + b + u"C",
                                             static_cast<unsigned int>(8 * PIECE_UNITS + turn % 2),
                                             OPERATIONS[turn % 4]},
                                            FLAG_ARGUMENTS[turn % 3]);
                    }
            }
    }
}

TEST(Multibyte, RandomTexts)
{
    for (MultibyteSet const& set : multibyteSets()) {
        SCOPED_TRACE(set.name);
        Probe probe(set.converter, *set.model);
        std::mt19937 random(18);
        unsigned int const unitSize = set.converter.getMinUnitSize();
        for (int i = 0; i < 40 && !probe.gaveUp(); ++i) {
            std::string bytes;
            if (set.isWide)
                while (bytes.size() < 6 * PIECE_UNITS)
                    bytes += set.byteFragments[random() % set.byteFragments.size()];
            else
                bytes = randomText(random, set.byteFragments, random() % (4 * PIECE_UNITS));
            if (!set.isWide && i % 4 == 0)
                for (char& c : bytes)
                    c = random() % 5 == 0 ? static_cast<char>(1 + random() % 255) : c;
            std::u16string const units = randomText(random, set.unitFragments, random() % (4 * PIECE_UNITS));
            auto const length = static_cast<unsigned int>(bytes.size());
            auto const unitCount = static_cast<unsigned int>(units.size());
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                auto const capacity = static_cast<unsigned int>(random() % (length + 1));
                int const limit = static_cast<int>(random() % (length / unitSize + 1));
                probe.compareDecode({bytes, length, op, INT_MAX}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareDecode({bytes, capacity, op, -1}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareDecode({bytes, length, op, limit}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareEncode({units, 24 * unitCount, op}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareEncode({units, static_cast<unsigned int>(random() % (3 * unitCount + 1)), op},
                                    FLAG_ARGUMENTS[random() % 3]);
            }
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
            probe.compareNumUnits(bytes, static_cast<unsigned int>(random() % (length + 1)));
            probe.compareNumBytes(units, UNTIL_TERMINATOR);
            probe.compareNumBytes(units, static_cast<unsigned int>(random() % (unitCount + 1)));
        }
    }
}
