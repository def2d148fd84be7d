// kx7text tests - UTF-32: what each rule and each oddity gives, and its direct paths from and to UTF-8.
#include <gtest/gtest.h>

#include <climits>
#include <random>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf32Model.h"
#include "tests/support/ByteConverterRows.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

Utf32Model const model;
Tested const utf32{g_oConverterUTF32, model};

Flag const SET = Flag::SET;
Flag const CLEARED = Flag::CLEARED;

std::string bytes(std::u32string const& codePoints)
{
    return bytesOfValues(codePoints);
}

/** UTF32fromUTF8 of the beginning of a text. */
Utf32Model::Sequence sequence(std::string const& text)
{
    static PageEnd<unsigned char> memory;
    auto* const begin = const_cast<unsigned char*>(memory.hold(text, 1));
    unsigned char* position = begin;
    unsigned int const codePoint = g_oConverterUTF32.UTF32fromUTF8(&position);
    return {codePoint, static_cast<unsigned int>(position - begin)};
}

void expectSequence(std::string const& text, unsigned int codePoint, unsigned int length)
{
    Utf32Model::Sequence const found = sequence(text);
    EXPECT_EQ(found.codePoint, codePoint) << hex(text);
    EXPECT_EQ(found.length, length) << hex(text);
    Utf32Model::Sequence const modelled = Utf32Model::sequenceAt(Reader<char>(text), 0);
    EXPECT_EQ(modelled.codePoint, codePoint) << "the model of " << hex(text);
    EXPECT_EQ(modelled.length, length) << "the model of " << hex(text);
}

/** fromUTF8 as the model has it, with and without a flag, in memory of exactly what may be written. */
void compareFromUTF8(std::string const& text, unsigned int capacity)
{
    std::u32string const expected = Utf32Model::fromUTF8(text, capacity);
    static PageEnd<unsigned char> memory;
    for (bool const withFlag : {false, true}) {
        Fenced<unsigned int> dest;
        unsigned int* const out = dest.arm(expected.size());
        bool flag = true;
        unsigned int const count =
            g_oConverterUTF32.fromUTF8(out, memory.hold(text, 1), capacity, ILLCHAR_STOP, withFlag ? &flag : nullptr);
        ASSERT_EQ(count, expected.size() - 1) << hex(text) << " capacity " << capacity;
        ASSERT_EQ(std::u32string(out, out + expected.size()), expected) << hex(text) << " capacity " << capacity;
        ASSERT_TRUE(dest.intact()) << hex(text) << " capacity " << capacity;
        ASSERT_EQ(flag, !withFlag) << "it is cleared and never set";
    }
}

/** toUTF8 as the model has it; what it writes is all that may be written. */
void compareToUTF8(std::u32string const& codePoints, unsigned int capacity)
{
    Utf32Model::Utf8 const expected = Utf32Model::toUTF8(codePoints, capacity);
    static PageEnd<unsigned char> memory;
    for (bool const before : {false, true}) {
        Fenced<unsigned char> dest;
        unsigned char* const out = dest.arm(expected.bytes.size() + (expected.terminated ? 1 : 0));
        bool flag = before;
        unsigned int const count =
            g_oConverterUTF32.toUTF8(out, memory.hold(bytes(codePoints), 4), capacity, ILLCHAR_STOP, &flag);
        ASSERT_EQ(count, expected.bytes.size()) << hex(codePoints) << " capacity " << capacity;
        ASSERT_EQ(std::string(out, out + count), expected.bytes) << hex(codePoints) << " capacity " << capacity;
        ASSERT_TRUE(!expected.terminated || out[count] == 0) << hex(codePoints) << " capacity " << capacity;
        ASSERT_TRUE(dest.intact()) << hex(codePoints) << " capacity " << capacity;
        ASSERT_EQ(flag, expected.flag == SET) << hex(codePoints) << " capacity " << capacity;
    }
}

std::vector<std::u32string> const CODE_POINT_FRAGMENTS = {
    U"A",      {0x7F},     {0x80},     {0xE9},     {0x7FF},     {0x800},     {0x20AC},     {0xD7FF},     {0xD800},
    {0xDFFF},  {0xE000},   {0xFFFD},   {0xFFFE},   {0xFFFF},    {0x10000},   {0x1F600},    {0x10FFFF},   {0x1D800},
    {0x2DFFF}, {0x110000}, {0x1FFFFF}, {0x200000}, {0x3FFFFFF}, {0x4000000}, {0x7FFFFFFF}, {0x80000000}, {0xFFFFFFFF}};

}  // namespace

TEST(UTF32, SizesAreFour)
{
    utf32.hasSizes(4, 4, 4);
}

TEST(UTF32, DecodesPairs)
{
    utf32.decodes({
        {"a pair", bytes({0x1F600}), 8, ILLCHAR_STOP, -1, {0xD83D, 0xDE00}, CLEARED},
        {"bounds",
         bytes({0xFFFF, 0x10000, 0x10FFFF}),
         8,
         ILLCHAR_STOP,
         -1,
         {0xFFFF, 0xD800, 0xDC00, 0xDBFF, 0xDFFF},
         CLEARED},
        {"space for one unit", bytes({u'z', 0x1F600}), 2, ILLCHAR_REPLACE, -1, u"z", CLEARED},
        {"no space", bytes({0x1F600}), 0, ILLCHAR_REPLACE, -1, {}, CLEARED},
    });
}

TEST(UTF32, NothingIsIllegalWhenDecoding)
{
    for (ILLCHAR_OPTYPE const op : OPERATIONS)
        utf32.decodes({
            {"surrogates pass", bytes({0xD800, U'A', 0xDC00}), 8, op, -1, {0xD800, u'A', 0xDC00}, CLEARED},
            {"above U+10FFFF wraps",
             bytes({0x110000, 0xFFFFFFFF}),
             8,
             op,
             -1,
             {0xDC00, 0xDC00, 0xD7BF, 0xDFFF},
             CLEARED},
        });
}

TEST(UTF32, LimitCountsCodePointsAndZeroConvertsNothing)
{
    utf32.decodes({
        {"two", bytes({0x1F600, U'a', U'b'}), 8, ILLCHAR_STOP, 2, {0xD83D, 0xDE00, u'a'}, CLEARED},
        {"zero", bytes(U"abc"), 8, ILLCHAR_STOP, 0, {}, CLEARED},
        {"none", bytes(U"abc"), 8, ILLCHAR_STOP, -1, u"abc", CLEARED},
        {"none either", bytes(U"abc"), 8, ILLCHAR_STOP, INT_MIN, u"abc", CLEARED},
        {"far after", bytes(U"abc"), 8, ILLCHAR_STOP, INT_MAX, u"abc", CLEARED},
    });
}

TEST(UTF32, Encodes)
{
    utf32.encodes({
        {"letters", u"ab", 8, ILLCHAR_STOP, bytes(U"ab"), CLEARED},
        {"a pair", u"\U0001F600", 4, ILLCHAR_STOP, bytes({0x1F600}), CLEARED},
        {"seven bytes are one code point", u"ab", 7, ILLCHAR_STOP, bytes(U"a"), CLEARED},
        {"three are none", u"ab", 3, ILLCHAR_STOP, {}, CLEARED},
        {"low surrogate passes", {0xDC00, u'a'}, 16, ILLCHAR_STOP, bytes({0xDC00, U'a'}), CLEARED},
    });
}

TEST(UTF32, UnpairedHighSurrogate)
{
    utf32.encodes({
        {"replaced, the next unit stays", {0xD800, 0x41}, 16, ILLCHAR_REPLACE, bytes(U"?A"), SET},
        {"escaped", {0xD800, 0x41}, 28, ILLCHAR_ESCAPE, bytes(U"U+D800A"), SET},
        {"escape needs six code points", {u'z', 0xD800, 0x41}, 27, ILLCHAR_ESCAPE, bytes(U"z"), SET},
        {"stopped", {u'z', 0xD800, 0x41}, 28, ILLCHAR_STOP, bytes(U"z"), SET},
        {"before a pair", {0xD800, 0xD83D, 0xDE00}, 16, ILLCHAR_REPLACE, bytes({U'?', 0x1F600}), SET},
        {"at the end", {u'z', 0xD800}, 16, ILLCHAR_REPLACE, bytes(U"z?"), SET},
        {"without a name", {0xD800}, 16, UNNAMED_OPERATION, bytes(U"?"), SET},
    });
}

TEST(UTF32, Counts)
{
    utf32.countsUnits(bytes({U'a', 0x1F600}), UNTIL_TERMINATOR, 2);
    utf32.countsUnits(bytes(U"abc"), 11, 2);
    utf32.countsUnits(bytes(U"abc"), 3, 0);
    utf32.countsUnits(bytes({U'a', 0, U'b'}), 12, 1);
    utf32.countsUnits(bytes({0x01000000, 0x100}), UNTIL_TERMINATOR, 2);
    utf32.countsBytes(u"a\U0001F600", UNTIL_TERMINATOR, 8);
    utf32.countsBytes({0xD800, u'a'}, UNTIL_TERMINATOR, 8);
    utf32.countsBytes({0xDC00, u'a'}, 1, 4);
}

TEST(UTF32, CountOfAHighSurrogateAtTheEndIsNothing)
{
    utf32.countsBytes({u'a', 0xD800}, UNTIL_TERMINATOR, 4);
    utf32.countsBytes({u'a', 0xD83D, 0xDE00}, 2, 4);
    utf32.countsBytes({0xD800}, UNTIL_TERMINATOR, 0);
}

TEST(UTF32FromUTF8, OneSequence)
{
    expectSequence("\xC0\x80", 0xFFFD, 2);
    expectSequence("\xE0\x41", 0xFFFD, 1);
    expectSequence("\xEF\xBF\xBF", 0xFFFD, 3);
    expectSequence("\xEF\xBF\xBE", 0xFFFD, 3);
    expectSequence("\xEF\xBF\xBD", 0xFFFD, 3);
    expectSequence("\xF0\x9F\x98\x80", 0x1F600, 4);
    expectSequence("", 0, 1);
    expectSequence("\x7F", 0x7F, 1);
    expectSequence("\x80", 0xFFFD, 1);
    expectSequence("\xBF", 0xFFFD, 1);
    expectSequence("\xC3\xA9", 0xE9, 2);
    expectSequence("\xED\xA0\x80", 0xFFFD, 3);
    expectSequence("\xED\xBF\xBF", 0xFFFD, 3);
    expectSequence("\xF4\x90\x80\x80", 0x110000, 4);
    expectSequence("\xF8\x88\x80\x80\x80", 0x200000, 5);
    expectSequence("\xF8\x87\xBF\xBF\xBF", 0xFFFD, 5);
    expectSequence("\xFC\x84\x80\x80\x80\x80", 0x4000000, 6);
    expectSequence("\xFD\xBF\xBF\xBF\xBF\xBF", 0x7FFFFFFF, 6);
    expectSequence("\xFC\x83\xBF\xBF\xBF\xBF", 0xFFFD, 6);
    expectSequence("\xFE\x80", 0xFFFD, 1);
    expectSequence("\xFF\x80", 0xFFFD, 1);
    expectSequence("\xFD\xBF\xBF\xBF\xBF", 0xFFFD, 1);
    expectSequence("\xF0\x9F\x98", 0xFFFD, 1);
}

TEST(UTF32FromUTF8, EverySequenceOfTwoBytesAndEveryLeadWithBoundaryBytes)
{
    for (unsigned int a = 0; a <= 0xFF; ++a)
        for (unsigned int b = 1; b <= 0xFF; ++b) {
            std::string const text{static_cast<char>(a), static_cast<char>(b)};
            Utf32Model::Sequence const expected = Utf32Model::sequenceAt(Reader<char>(text), 0);
            expectSequence(text, expected.codePoint, expected.length);
        }
    std::string const boundaries = "\x41\x7F\x80\x87\x88\x8F\x90\x9F\xA0\xBE\xBF\xC0\xFF";
    for (unsigned int a = 0xC0; a <= 0xFF; ++a)
        for (char const b : boundaries)
            for (char const c : boundaries)
                for (char const d : boundaries)
                    for (size_t const more : {size_t{0}, size_t{1}, size_t{2}}) {
                        std::string const text = std::string{static_cast<char>(a), b, c, d} + std::string(more, '\xBF');
                        Utf32Model::Sequence const expected = Utf32Model::sequenceAt(Reader<char>(text), 0);
                        Utf32Model::Sequence const found = sequence(text);
                        ASSERT_EQ(found.codePoint, expected.codePoint) << hex(text);
                        ASSERT_EQ(found.length, expected.length) << hex(text);
                    }
}

TEST(UTF32FromUTF8, CapacityIsCountedInCodePoints)
{
    unsigned int dest[4] = {9, 9, 9, 9};
    EXPECT_EQ(g_oConverterUTF32.fromUTF8(dest, reinterpret_cast<unsigned char const*>("abc"), 2, ILLCHAR_STOP, nullptr),
              2u);
    EXPECT_EQ(dest[0], 'a');
    EXPECT_EQ(dest[1], 'b');
    EXPECT_EQ(dest[2], 0u);
    EXPECT_EQ(dest[3], 9u);
    for (unsigned int capacity = 0; capacity <= 6; ++capacity)
        compareFromUTF8("ab\xC3\xA9\xF0\x9F\x98\x80\x80", capacity);
    compareFromUTF8("abc", UINT_MAX);
    compareFromUTF8("", 3);
}

TEST(UTF32FromUTF8, EveryCapacityOfTextsThatCrossAllBranches)
{
    std::vector<std::string> fragments = utf8Fragments();
    fragments.push_back("\xFC\x84\x80\x80\x80\x80");
    fragments.push_back("\xF8\x88\x80\x80\x80");
    for (std::string const& a : fragments)
        for (std::string const& b : fragments)
            for (unsigned int capacity = 0; capacity <= a.size() + b.size() + 1; ++capacity)
                compareFromUTF8(a + b, capacity);
    std::mt19937 random(32);
    for (int i = 0; i < 50; ++i) {
        std::string const text = randomText(random, fragments, random() % (3 * PIECE_UNITS));
        compareFromUTF8(text, UINT_MAX);
        compareFromUTF8(text, static_cast<unsigned int>(random() % (text.size() + 1)));
    }
}

TEST(UTF32FromUTF8, NullSourceYieldsZeroAndClearsTheFlag)
{
    Fenced<unsigned int> dest;
    unsigned int* const out = dest.arm(4);
    auto const* const text = reinterpret_cast<unsigned char const*>("abc");
    for (bool const before : {false, true}) {
        bool flag = before;
        EXPECT_EQ(g_oConverterUTF32.fromUTF8(out, nullptr, 4, ILLCHAR_STOP, &flag), 0u);
        EXPECT_FALSE(flag);
        flag = before;
        EXPECT_EQ(g_oConverterUTF32.fromUTF8(nullptr, text, 4, ILLCHAR_STOP, &flag), 0u);
        EXPECT_FALSE(flag);
    }
    EXPECT_EQ(g_oConverterUTF32.fromUTF8(nullptr, nullptr, 4, ILLCHAR_STOP, nullptr), 0u);
    EXPECT_TRUE(dest.untouched());
}

TEST(UTF32ToUTF8, OneCodePoint)
{
    struct Row {
        unsigned int codePoint;
        std::string bytes;
        bool illegal;
    };
    Row const rows[] = {
        {0x1F600, "\xF0\x9F\x98\x80", false},
        {0xD800, "\xEF\xBF\xBD", true},
        {0xDFFF, "\xEF\xBF\xBD", true},
        {0x7F, "\x7F", false},
        {0x80, "\xC2\x80", false},
        {0x7FF, "\xDF\xBF", false},
        {0x800, "\xE0\xA0\x80", false},
        {0xFFFF, "\xEF\xBF\xBF", false},
        {0x1FFFFF, "\xF7\xBF\xBF\xBF", false},
        {0x200000, "\xF8\x88\x80\x80\x80", false},
        {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF", false},
        {0x4000000, "\xFC\x84\x80\x80\x80\x80", false},
        {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF", false},
        {0x80000000, "\xEF\xBF\xBD", true},
        {0xFFFFFFFF, "\xEF\xBF\xBD", true},
    };
    for (Row const& row : rows)
        for (ILLCHAR_OPTYPE const op : OPERATIONS) {
            unsigned int const source[] = {row.codePoint, 0};
            unsigned char dest[16];
            bool flag = !row.illegal;
            unsigned int const count = g_oConverterUTF32.toUTF8(dest, source, 8, op, &flag);
            EXPECT_EQ(std::string(dest, dest + count), row.bytes) << std::hex << row.codePoint;
            EXPECT_EQ(dest[count], 0) << std::hex << row.codePoint;
            EXPECT_EQ(flag, row.illegal) << std::hex << row.codePoint;
        }
}

TEST(UTF32ToUTF8, CodePointsWhoseLowBitsAreThoseOfASurrogateAreCharacters)
{
    expectSequence("\xF0\x9D\xA0\x80", 0x1D800, 4);
    expectSequence("\xF4\x8D\xBF\xBF", 0x10DFFF, 4);
    compareToUTF8({0x1D800, 0x10DFFF, 0x7FFFD800}, 16);
    EXPECT_EQ(Utf32Model::toUTF8({0x1D800}, 4).flag, CLEARED);
}

TEST(UTF32ToUTF8, CharacterIsWrittenWholeEvenPastTheCapacity)
{
    unsigned int const source[] = {0xE9, 0};
    Fenced<unsigned char> dest;
    unsigned char* const out = dest.arm(2);
    EXPECT_EQ(g_oConverterUTF32.toUTF8(out, source, 1, ILLCHAR_STOP, nullptr), 2u);
    EXPECT_EQ(std::string(out, out + 2), "\xC3\xA9");
    EXPECT_TRUE(dest.intact()) << "no terminator after it";
    compareToUTF8({0x7FFFFFFF, U'A'}, 1);
    EXPECT_EQ(Utf32Model::toUTF8({0x7FFFFFFF}, 1).bytes.size(), 6u) << "five bytes past the capacity";
}

TEST(UTF32ToUTF8, EveryCapacityOfTextsThatCrossAllBranches)
{
    for (std::u32string const& a : CODE_POINT_FRAGMENTS)
        for (std::u32string const& b : CODE_POINT_FRAGMENTS)
            for (unsigned int capacity = 0; capacity <= 14; ++capacity)
                compareToUTF8(a + b, capacity);
    std::mt19937 random(33);
    for (int i = 0; i < 50; ++i) {
        std::u32string const text = randomText(random, CODE_POINT_FRAGMENTS, random() % (3 * PIECE_UNITS));
        compareToUTF8(text, UINT_MAX);
        compareToUTF8(text, static_cast<unsigned int>(random() % (4 * text.size() + 1)));
    }
}

TEST(UTF32ToUTF8, NullArgumentsYieldZeroAndClearTheFlag)
{
    unsigned int const source[] = {U'a', 0};
    Fenced<unsigned char> dest;
    unsigned char* const out = dest.arm(4);
    for (bool const before : {false, true}) {
        bool flag = before;
        EXPECT_EQ(g_oConverterUTF32.toUTF8(out, nullptr, 4, ILLCHAR_STOP, &flag), 0u);
        EXPECT_FALSE(flag);
        flag = before;
        EXPECT_EQ(g_oConverterUTF32.toUTF8(nullptr, source, 4, ILLCHAR_STOP, &flag), 0u);
        EXPECT_FALSE(flag);
    }
    EXPECT_TRUE(dest.untouched());
}

TEST(UTF32, DirectPathsAgreeWithTheWayThroughUTF16ForEveryCodePoint)
{
    unsigned int const block = 64;
    for (unsigned int first = 1; first <= 0x10FFFF; first += block) {
        std::u32string codePoints;
        for (unsigned int c = first; c < first + block && c <= 0x10FFFF; ++c)
            if ((c < 0xD800 || c > 0xDFFF) && c != 0xFFFE && c != 0xFFFF)
                codePoints += static_cast<char32_t>(c);
        unsigned char utf8[4 * block + 1];
        bool flag = true;
        unsigned int const length = g_oConverterUTF32.toUTF8(utf8, codePoints.c_str(), 4 * block, ILLCHAR_STOP, &flag);
        unsigned short units[2 * block + 1];
        g_oConverterUTF8.toUTF16(units, utf8, 2 * block, ILLCHAR_STOP, nullptr, -1);
        char32_t back[block + 1];
        unsigned int const size = g_oConverterUTF32.fromUTF16(back, units, 4 * block, ILLCHAR_STOP, nullptr);
        ASSERT_EQ(std::u32string(back, back + size / 4), codePoints) << std::hex << first;
        ASSERT_FALSE(flag);
        unsigned int const count = g_oConverterUTF32.fromUTF8(back, utf8, block, ILLCHAR_STOP, &flag);
        ASSERT_EQ(std::u32string(back, back + count), codePoints) << std::hex << first;
        ASSERT_EQ(utf8[length], 0);
    }
}
