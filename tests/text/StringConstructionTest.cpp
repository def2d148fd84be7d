// kx7text tests - every constructor of the string.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/text/KX7UString.h"
#include "tests/charset/ForeignConverter.h"
#include "tests/support/CharSets.h"
#include "tests/support/Guarded.h"
#include "tests/text/StringState.h"

using kx7test::CharSetRow;
using kx7test::charSetRows;
using kx7test::expectStorage;
using kx7test::expectString;
using kx7test::ForeignConverter;
using kx7test::Guarded;
using kx7test::Units;
using kx7test::unitsOf;

namespace {

void expectInline(KX7UString const& s, Units const& units, std::string const& what = "")
{
    expectString(s, units, what);
    expectStorage(s, 0, what);
}

unsigned short const* const NO_UNITS = nullptr;
char const* const NO_BYTES = nullptr;

/** What counted byte text has to become, where no character is truncated: toUTF16 with the capacity that is counted. */
Units decodedCounted(KX7CharSetConverter& converter, std::string const& bytes, int sourceLimit)
{
    std::string const text = bytes + std::string(8, '\0');
    unsigned int const capacity = converter.getNumUnits(text.data(), static_cast<unsigned int>(bytes.size()));
    Units units(capacity + 1);
    unsigned int const written =
        capacity == 0 ? 0
                      : converter.toUTF16(units.data(), text.data(), capacity, ILLCHAR_REPLACE, nullptr, sourceLimit);
    units.resize(written);
    return units;
}

}  // namespace

TEST(StringFromNothing, EveryEmptyArgumentGivesAnEmptyString)
{
    KX7PascalString const pascal = {0, {'x'}};
    auto const bstr = std::make_unique<KX7BSTR>();
    bstr->text[0] = 'x';
    unsigned short const units[] = {0, 'x', 0};
    KX7UString const filled("text", KX7CS_UTF8);

    expectInline(KX7UString(), {}, "default");
    expectInline(KX7UString('\0', KX7CS_WCP1252), {}, "zero char");
    expectInline(KX7UString('\0', 5, KX7CS_WCP1252), {}, "repeated zero char");
    expectInline(KX7UString('x', 0, KX7CS_WCP1252), {}, "char, no times");
    expectInline(KX7UString(static_cast<unsigned short>(0)), {}, "zero unit");
    expectInline(KX7UString(static_cast<unsigned short>(0), 7), {}, "repeated zero unit");
    expectInline(KX7UString(static_cast<unsigned short>(0), 700), {}, "zero unit repeated beyond the inline buffer");
    expectInline(KX7UString(static_cast<unsigned short>('x'), 0), {}, "unit, no times");
    expectInline(KX7UString(NO_BYTES, KX7CS_WCP1252), {}, "null bytes");
    expectInline(KX7UString(NO_BYTES), {}, "null bytes in the default character set");
    expectInline(KX7UString(NO_BYTES, 5, KX7CS_WCP1252), {}, "null bytes and a count");
    expectInline(KX7UString("", KX7CS_WCP1252), {}, "empty bytes");
    expectInline(KX7UString("", 5, KX7CS_WCP1252), {}, "empty bytes and a count");
    expectInline(KX7UString("abc", 0, KX7CS_WCP1252), {}, "bytes, count 0");
    expectInline(KX7UString(NO_UNITS), {}, "null units");
    expectInline(KX7UString(NO_UNITS, 5), {}, "null units and a count");
    expectInline(KX7UString(NO_UNITS, 0xFFFFFFFF), {}, "null units and the largest count");
    expectInline(KX7UString(units), {}, "empty units");
    expectInline(KX7UString(units + 1, 0u), {}, "units, count 0");
    expectInline(KX7UString(units, 3u), {}, "units that begin with a zero");
    expectInline(KX7UString(units, units), {}, "empty range");
    expectInline(KX7UString(NO_UNITS, NO_UNITS), {}, "null range");
    expectInline(KX7UString(pascal, KX7CS_WCP1252), {}, "Pascal string of length 0");
    expectInline(KX7UString(&pascal, KX7CS_WCP1252), {}, "pointer to a Pascal string of length 0");
    expectInline(KX7UString(static_cast<KX7PascalString const*>(nullptr), KX7CS_WCP1252), {}, "null Pascal string");
    expectInline(KX7UString(*bstr), {}, "BSTR of length 0");
    expectInline(KX7UString(bstr.get()), {}, "pointer to a BSTR of length 0");
    expectInline(KX7UString(static_cast<KX7BSTR const*>(nullptr)), {}, "null BSTR");
    expectInline(KX7UString(KX7UString()), {}, "copy of an empty string");
    expectInline(KX7UString(filled, 0, 0), {}, "part of no units");
    expectInline(KX7UString(filled, 4, 3), {}, "part at the end");
    expectInline(KX7UString(filled, 5, 3), {}, "part after the end");
    expectInline(KX7UString(filled, 0xFFFFFFFF, 0xFFFFFFFF), {}, "part far after the end");
}

TEST(StringFromChar, DecodesTheByte)
{
    expectInline(KX7UString('\x80', KX7CS_WCP1252), {0x20AC});
    expectInline(KX7UString('\xE0', KX7CS_WCP1251), {0x0430});
    expectInline(KX7UString('\xDB', KX7CS_WCP874), {0xFFFD}, "undefined byte");
    expectInline(KX7UString('A', KX7CS_UTF8), {'A'});
}

TEST(StringFromChar, OfASCIIIsEmptyForAZeroByteOnly)
{
    for (char c = 0; c != 0x7F; ++c) {
        Units const expected(c == 0 ? 0 : 1, static_cast<unsigned short>(c));
        expectInline(KX7UString(c, KX7CS_UTF8), expected, std::to_string(c));
        expectInline(KX7UString(c, 1, KX7CS_UTF8), expected, std::to_string(c));
    }
}

TEST(StringFromChar, IsEmptyWhereTheByteIsPartOfACharacter)
{
    for (char const c : {'\xC3', '\xE4', '\xF0', '\xFF', '\x80', '\xBF'})
        expectInline(KX7UString(c, KX7CS_UTF8), {}, std::to_string(c));
}

TEST(StringFromRepeatedChar, DecodesTheRunAsAWhole)
{
    expectInline(KX7UString('\x80', 3, KX7CS_WCP1252), {0x20AC, 0x20AC, 0x20AC});
    expectInline(KX7UString('x', 257, KX7CS_UTF8), Units(257, 'x'));
    KX7UString const large('x', 300, KX7CS_WCP1252);
    expectString(large, Units(300, 'x'));
    expectStorage(large, 300);
    expectInline(KX7UString('\xC3', 4, KX7CS_UTF8), {0xFFFD, 0xFFFD}, "counted in twos, replaced one by one");
    expectInline(KX7UString('\xC3', 3, KX7CS_UTF8), {0xFFFD}, "the last one is truncated");
    expectInline(KX7UString('\xC3', 1, KX7CS_UTF8), {}, "truncated from the start");
    expectInline(KX7UString('\x80', 5, KX7CS_UTF8), {}, "stray bytes");
}

TEST(StringFromUnit, KeepsAnyUnit)
{
    for (unsigned int const unit : {1u, 0x41u, 0xD800u, 0xDFFFu, 0xFFFEu, 0xFFFFu})
        expectInline(KX7UString(static_cast<unsigned short>(unit)), {static_cast<unsigned short>(unit)});
    expectInline(KX7UString(static_cast<unsigned short>(0xD83D), 3), {0xD83D, 0xD83D, 0xD83D});
}

TEST(StringFromBytes, DecodesUpToTheZeroByte)
{
    expectInline(KX7UString("caf\xE9", KX7CS_WCP1252), {'c', 'a', 'f', 0xE9});
    expectInline(KX7UString("a\xC3\xA9\xE4\xB8\xAD", KX7CS_UTF8), {'a', 0xE9, 0x4E2D});
    expectInline(KX7UString("a\0b", KX7CS_WCP1252), {'a'});
    expectInline(KX7UString("a\xDB", KX7CS_WCP874), {'a', 0xFFFD});
    expectInline(KX7UString(std::string(257, 'x').c_str(), KX7CS_UTF8), Units(257, 'x'));
    KX7UString const large(std::string(258, 'x').c_str(), KX7CS_UTF8);
    expectString(large, Units(258, 'x'));
    expectStorage(large, 258);
}

TEST(StringFromBytes, ACharSetWithoutConverterIsUTF8)
{
    expectInline(KX7UString("\xC3\xA9", KX7CS_ISO_2022JP), {0xE9});
    expectInline(KX7UString("\xC3\xA9", static_cast<KX7CharSet>(437)), {0xE9});
}

TEST(StringFromBytes, WithoutACharSetAreInTheOSDefault)
{
    char const* const text = "caf\xE9 \xA4";
    KX7PascalString pascal = {6, {'c', 'a', 'f', '\xE9', ' ', '\xA4'}};
    EXPECT_EQ(unitsOf(KX7UString(text)), unitsOf(KX7UString(text, KX7CS_OS_DEFAULT)));
    EXPECT_EQ(unitsOf(KX7UString(text)), decodedCounted(*g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT), text, -1));
    EXPECT_EQ(unitsOf(KX7UString(text, 6)), unitsOf(KX7UString(text)));
    EXPECT_EQ(unitsOf(KX7UString('\xE9')), unitsOf(KX7UString('\xE9', KX7CS_OS_DEFAULT)));
    EXPECT_EQ(unitsOf(KX7UString('\xE9', 2)), unitsOf(KX7UString('\xE9', 2, KX7CS_OS_DEFAULT)));
    EXPECT_EQ(unitsOf(KX7UString(pascal)), unitsOf(KX7UString(pascal, KX7CS_OS_DEFAULT)));
    EXPECT_EQ(unitsOf(KX7UString(&pascal)), unitsOf(KX7UString(pascal)));
}

TEST(StringFromBytes, TheCapacityIsWhatTheConverterCounts)
{
    expectInline(KX7UString("\xF0\x9F\x98\x80", KX7CS_UTF8), {0xFFFD}, "a pair finds space for one unit");
    expectInline(KX7UString("a\xF0\x9F\x98\x80"
                            "b",
                            KX7CS_UTF8),
                 {'a', 0xD83D, 0xDE00}, "the last letter is cut");
    expectInline(KX7UString("a\x80"
                            "b",
                            KX7CS_UTF8),
                 {'a'}, "counting ends at a stray byte");
    expectInline(KX7UString("\x80"
                            "b",
                            KX7CS_UTF8),
                 {}, "a stray byte at the start");
    expectInline(KX7UString("\xC3"
                            "Ab",
                            KX7CS_UTF8),
                 {0xFFFD, 'A'}, "a lead byte counts for two bytes");
    expectInline(KX7UString("ab\xE4", KX7CS_UTF8), {'a', 'b'}, "a sequence truncated by the end");
    expectInline(KX7UString("\xC0\x80"
                            "b",
                            KX7CS_UTF8),
                 {0, 'b'}, "an overlong zero is a unit");
}

TEST(StringFromCountedBytes, EndAtTheCountOrTheZeroByte)
{
    expectInline(KX7UString("abc", 2, KX7CS_WCP1252), {'a', 'b'});
    expectInline(KX7UString("abc", 3, KX7CS_WCP1252), {'a', 'b', 'c'});
    expectInline(KX7UString("abc", 10, KX7CS_WCP1252), {'a', 'b', 'c'});
    expectInline(KX7UString("a\0b", 3, KX7CS_WCP1252), {'a'});
    expectInline(KX7UString("abc", 0xFFFFFFFF, KX7CS_WCP1252), {'a', 'b', 'c'}, "the count that means to the end");
    expectInline(KX7UString("abc", 0xFFFFFFFE, KX7CS_WCP1252), {'a', 'b', 'c'});
    expectInline(KX7UString("\xC3\xA9\xC3\xA8", 3, KX7CS_UTF8), {0xE9}, "the second character is truncated");
    expectInline(KX7UString("\xC3\xA9\xC3\xA8", 1, KX7CS_UTF8), {}, "the first character is truncated");
    expectInline(KX7UString("\xF0\x9F\x98\x80zz", 4, KX7CS_UTF8), {0xFFFD}, "a pair finds space for one unit");
    expectInline(KX7UString("\xF0\x9F\x98\x80zz", 5, KX7CS_UTF8), {0xD83D, 0xDE00}, "the letter's space for the pair");
    KX7UString const large(std::string(400, 'x').c_str(), 300, KX7CS_UTF8);
    expectString(large, Units(300, 'x'));
    expectStorage(large, 300);
}

TEST(StringFromCountedBytes, NothingAfterTheCountIsRead)
{
    std::string bytes;
    for (int i = 0; i < 300; ++i)
        bytes.push_back(static_cast<char>(1 + i * 7 % 255));
    for (CharSetRow const& row : charSetRows()) {
        unsigned int const step = row.converter->getMinUnitSize();
        for (unsigned int start = 0; start < 40; start += step) {
            for (unsigned int n = 0; n <= 40; n += step) {
                std::string const text = bytes.substr(start, n);
                Guarded<char> const source(text.data(), n);
                EXPECT_EQ(unitsOf(KX7UString(source.data(), n, row.charSet)), decodedCounted(*row.converter, text, -1))
                    << row.name << ", " << start << ", " << n;
            }
        }
    }
}

TEST(StringFromCountedBytes, NothingAfterTheTerminatorIsRead)
{
    // A lead byte that the zero byte truncates, at the end of a page; the count goes on.
    for (CharSetRow const& row : charSetRows()) {
        size_t const zeros = row.converter->getNullCharSize();
        for (unsigned int lead = 1; lead <= 0xFF; ++lead) {
            std::string const text = zeros == 1 ? "ab" + std::string(1, static_cast<char>(lead)) : std::string();
            Guarded<char> const source((text + std::string(zeros, '\0')).data(), text.size() + zeros);
            auto const length = static_cast<unsigned int>(text.size());
            for (unsigned int const n :
                 {length + 1, length + 2, length + 3, length + 4, 5000U, 0x7FFFFFFFU, 0xFFFFFFF9U, 0xFFFFFFFEU})
                EXPECT_EQ(unitsOf(KX7UString(source.data(), n, row.charSet)),
                          decodedCounted(*row.converter, text + std::string(std::min(n - length, 8U), '\0'), -1))
                    << row.name << ", " << lead << ", " << n;
        }
    }
}

TEST(StringFromCountedBytes, ConvertersFromOutsideAreGivenNoMoreThanTheText)
{
    KX7CharSet const cs = static_cast<KX7CharSet>(72002);
    static ForeignConverter converter(cs);
    g_oCnvtMgr.insert(cs, &converter, true);
    Guarded<char> const source("abc", 4);
    for (unsigned int const n : {5U, 5000U, 0x7FFFFFFFU, 0xFFFFFFF9U, 0xFFFFFFFEU, 0xFFFFFFFFU})
        expectInline(KX7UString(source.data(), n, cs), {0x161, 0x162, 0x163}, std::to_string(n));
}

TEST(StringFromCountedBytes, ConvertersFromOutsideMeetATerminator)
{
    KX7CharSet const cs = static_cast<KX7CharSet>(72001);
    static ForeignConverter converter(cs, 4);
    g_oCnvtMgr.insert(cs, &converter, true);
    for (unsigned int n = 1; n < 20; ++n) {
        Guarded<char> const source(std::string(n, 'a').data(), n);
        expectInline(KX7UString(source.data(), n, cs), Units(n, 0x161));
    }
    EXPECT_EQ(converter.toCalls.back().text, std::string(19, 'a'));
    EXPECT_EQ(converter.toCalls.back().capacity, 19u);
    EXPECT_EQ(converter.toCalls.back().op, ILLCHAR_REPLACE);
    EXPECT_EQ(converter.toCalls.back().illegal, nullptr);
    EXPECT_EQ(converter.toCalls.back().sourceLimit, -1);

    converter.unitsTooMany = 3;  // now only the terminator ends the text
    for (unsigned int n = 1; n < 40; ++n) {
        Guarded<char> const source(std::string(n, 'a').data(), n);
        expectInline(KX7UString(source.data(), n, cs), Units(n, 0x161));
    }
    converter.unitsTooMany = 0;

    KX7UString("abc", cs);
    EXPECT_EQ(converter.toCalls.back().capacity, 3u);
    EXPECT_EQ(converter.toCalls.back().sourceLimit, -1);
    KX7PascalString const pascal = {2, {'a', 'b'}};
    KX7UString(pascal, cs);
    EXPECT_EQ(converter.toCalls.back().text, "ab");
    EXPECT_EQ(converter.toCalls.back().sourceLimit, 2) << "the length byte is the limit too";
    size_t const calls = converter.toCalls.size();
    KX7UString("", cs);
    EXPECT_EQ(converter.toCalls.size(), calls) << "no units, no conversion";
}

TEST(StringFromInt, IsItsDecimalText)
{
    for (int const i : {0, 1, -1, 7, -12, 10, 1234567890, INT_MAX, INT_MIN})
        expectInline(KX7UString(i), unitsOf(std::to_string(i).c_str()), std::to_string(i));
    expectInline(KX7UString(-12), {'-', '1', '2'});
    expectInline(KX7UString(0), {'0'});
}

TEST(StringFromUnits, EndAtTheZeroUnit)
{
    for (unsigned int const length : {1u, 2u, 256u, 257u, 258u, 259u, 2048u, 5000u}) {
        Units units(length, 0xD83D);
        units.push_back(0);
        Guarded<unsigned short> const source(units.data(), units.size());
        KX7UString const s(source.data());
        units.pop_back();
        expectString(s, units);
        expectStorage(s, length > 257 ? length : 0);
    }
}

TEST(StringFromCountedUnits, EndAtTheCountOrTheZeroUnitAndKeepTheCapacity)
{
    unsigned short const text[] = {'a', 'b', 0, 'c', 'd'};
    expectInline(KX7UString(text, 10u), {'a', 'b'});
    expectInline(KX7UString(text, 1u), {'a'});
    expectInline(KX7UString(text, 2u), {'a', 'b'});
    Guarded<unsigned short> const guarded(text, 3);
    expectInline(KX7UString(guarded.data(), 257u), {'a', 'b'}, "nothing after the zero is read");
    KX7UString const roomy(guarded.data(), 300u);
    expectString(roomy, {'a', 'b'});
    expectStorage(roomy, 300);
}

TEST(StringFromCountedUnits, NothingAfterTheCountIsRead)
{
    for (unsigned int const n : {1u, 2u, 8u, 257u, 258u, 1000u}) {
        Units const units(n, 'u');
        Guarded<unsigned short> const source(units.data(), n);
        expectString(KX7UString(source.data(), n), units);
        expectString(KX7UString(source.data(), source.data() + n), units);
    }
}

TEST(StringFromRange, CopiesZerosToo)
{
    unsigned short const text[] = {'a', 'b', 0, 'c'};
    expectInline(KX7UString(text, text + 4), {'a', 'b', 0, 'c'});
    expectInline(KX7UString(text + 2, text + 3), {0});
    Units units(400, 0);
    KX7UString const large(units.data(), units.data() + units.size());
    expectString(large, units);
    expectStorage(large, 400);
}

TEST(StringFromPascal, DecodesAsManyBytesAsTheLengthSays)
{
    KX7PascalString pascal = {3, {'a', '\x80', 'b', 'x', 'x'}};
    expectInline(KX7UString(pascal, KX7CS_WCP1252), {'a', 0x20AC, 'b'});
    expectInline(KX7UString(&pascal, KX7CS_WCP1252), {'a', 0x20AC, 'b'});
    pascal = {4, {'a', '\0', 'b', 'c'}};
    expectInline(KX7UString(pascal, KX7CS_WCP1252), {'a'}, "a zero byte ends it");
    pascal = {3, {'\xC3', '\xA9', '\xC3', '\xA8'}};
    expectInline(KX7UString(pascal, KX7CS_UTF8), {0xE9}, "the second character is truncated");
    pascal.length = 255;
    memset(pascal.text, 'p', sizeof pascal.text);
    expectInline(KX7UString(pascal, KX7CS_UTF8), Units(255, 'p'));
    memset(pascal.text, '\xF0', sizeof pascal.text);
    expectInline(KX7UString(pascal, KX7CS_UTF8), Units(63, 0xFFFD), "lead bytes count for four");
}

TEST(StringFromPascal, NothingAfterTheLengthIsRead)
{
    for (CharSetRow const& row : charSetRows()) {
        unsigned int const step = row.converter->getMinUnitSize();
        for (unsigned int n = step; n <= 252; n += step) {
            std::string text(1, static_cast<char>(n));
            for (unsigned int i = 0; i < n; ++i)
                text.push_back(static_cast<char>(1 + (i * 11 + n) % 255));
            Guarded<char> const source(text.data(), text.size());
            auto const* const pascal = reinterpret_cast<KX7PascalString const*>(source.data());
            Units const expected = decodedCounted(*row.converter, text.substr(1), static_cast<int>(n));
            EXPECT_EQ(unitsOf(KX7UString(pascal, row.charSet)), expected) << row.name << ", " << n;
            EXPECT_EQ(unitsOf(KX7UString(*pascal, row.charSet)), expected) << row.name << ", " << n;
        }
    }
}

TEST(StringFromBSTR, CopiesAsManyUnitsAsTheLengthSays)
{
    auto const bstr = std::make_unique<KX7BSTR>();
    for (unsigned int const n : {1u, 2u, 257u, 258u, 65535u}) {
        bstr->length = static_cast<unsigned short>(n);
        Units units;
        for (unsigned int i = 0; i < n; ++i) {
            bstr->text[i] = static_cast<unsigned short>(i % 5 == 1 ? 0 : 0xFFFF - i);
            units.push_back(bstr->text[i]);
        }
        KX7UString const s(*bstr);
        expectString(s, units);
        expectStorage(s, n > 257 ? n : 0);
        KX7UString const fromPointer(bstr.get());
        expectString(fromPointer, units);
        expectStorage(fromPointer, n > 257 ? n : 0);
    }
}

TEST(StringFromBSTR, NothingAfterTheLengthIsRead)
{
    for (unsigned short n = 1; n <= 300; ++n) {
        Units units(1, n);
        units.resize(1u + n, 'b');
        Guarded<unsigned short> const source(units.data(), units.size());
        expectString(KX7UString(reinterpret_cast<KX7BSTR const*>(source.data())), Units(n, 'b'));
    }
}

TEST(StringCopy, HasTheTextAndJustItsCapacity)
{
    for (unsigned int const n : {0u, 1u, 257u, 258u, 1000u}) {
        KX7UString const original(static_cast<unsigned short>('x'), n);
        KX7UString const copy(original);
        expectString(copy, Units(n, 'x'));
        expectStorage(copy, n > 257 ? n : 0);
        EXPECT_NE(copy.data(), original.data());
    }
    unsigned short const text[] = {'a', 0, 'b'};
    expectInline(KX7UString(KX7UString(text, text + 3)), {'a', 0, 'b'}, "zeros within");
    unsigned short const two[] = {'a', 'b', 0};
    KX7UString const roomy(two, 300u);
    expectInline(KX7UString(roomy), {'a', 'b'}, "spare capacity is not copied");
}

TEST(StringPart, IsCutDownToWhatIsThere)
{
    struct {
        unsigned int pos, n;
        char const* part;
    } const rows[] = {
        {0, 6, "string"},     {0, 0xFFFFFFFF, "string"},
        {0, 3, "str"},        {2, 3, "rin"},
        {2, 100, "ring"},     {5, 1, "g"},
        {5, 0xFFFFFFFF, "g"}, {6, 1, ""},
        {7, 1, ""},           {3, 0, ""},
        {1, 5, "tring"},      {1, 6, "tring"},
        {0xFFFFFFFF, 1, ""},  {1, 0xFFFFFFFF, "tring"},
    };
    KX7UString const whole("string", KX7CS_UTF8);
    for (auto const& row : rows)
        expectInline(KX7UString(whole, row.pos, row.n), unitsOf(row.part),
                     std::to_string(row.pos) + ", " + std::to_string(row.n));
    KX7UString const large(static_cast<unsigned short>('x'), 600);
    KX7UString const part(large, 100, 300);
    expectString(part, Units(300, 'x'));
    expectStorage(part, 300);
    KX7UString const all(large, 0, 600);
    expectString(all, Units(600, 'x'));
    expectStorage(all, 600);
    expectInline(KX7UString(large, 500, 600), Units(100, 'x'));
    unsigned short const zeros[] = {'a', 0, 'b', 0};
    expectInline(KX7UString(KX7UString(zeros, zeros + 4), 1, 2), {0, 'b'}, "zeros within");
}
