// kx7text tests - characters, their classes and their case.
#include <gtest/gtest.h>

#include <type_traits>

#include "kx7/text/KX7UChar.h"

static_assert(KX7UChar::UTF16_MAX == 0xFFFF, "last code unit");
static_assert(KX7UChar::UTF32_MAX == 0x10FFFF, "last code point");
static_assert(!std::is_polymorphic<KX7UChar>::value, "no virtual operations");
static_assert(sizeof(KX7UChar) == 4, "the value alone");
static_assert(!std::is_convertible<unsigned int, KX7UChar>::value, "from a value only when asked to");

TEST(Char, OfASurrogatePairHasItsCodePoint)
{
    struct {
        unsigned short high, low;
        unsigned int value;
    } const rows[] = {
        {0xD800, 0xDC00, 0x10000},  {0xDBFF, 0xDFFF, 0x10FFFF},
        {0xD83D, 0xDE00, 0x1F600},  {0xD800, 0xDFFF, 0x103FF},
        {0xDBFF, 0xDC00, 0x10FC00}, {0xDC00, 0xD800, 0},
        {0x0041, 0xDC00, 0},        {0xD800, 0x0041, 0},
        {0xD800, 0xD800, 0},        {0xDC00, 0xDC00, 0},
        {0xD7FF, 0xDC00, 0},        {0xD800, 0xDBFF, 0},
        {0xD800, 0xE000, 0},        {0, 0, 0},
    };
    for (auto const& row : rows)
        EXPECT_EQ(KX7UChar(row.high, row.low).value(), row.value) << std::hex << row.high << ' ' << row.low;
    for (unsigned int high = 0xD800; high <= 0xDBFF; high += 31)
        for (unsigned int low = 0xDC00; low <= 0xDFFF; low += 17)
            ASSERT_EQ(KX7UChar(static_cast<unsigned short>(high), static_cast<unsigned short>(low)).value(),
                      (high - 0xD800) * 0x400 + (low - 0xDC00) + 0x10000);
}

TEST(Char, IsCopiedByItsValue)
{
    KX7UChar a(0x1F600);
    KX7UChar b;
    EXPECT_EQ(b.value(), 0u);
    EXPECT_EQ(&(b = a), &b);
    EXPECT_EQ(b.value(), 0x1F600u);
    KX7UChar const& same = a;
    a = same;
    EXPECT_EQ(a.value(), 0x1F600u);
}

TEST(Char, BeyondTheBMPHasTheSurrogateClassAndIsNothingElse)
{
    for (unsigned int const value : {0x10000u, 0x10041u, 0x1F600u, 0x20000u, 0x10FFFFu}) {
        KX7UChar const c(value);
        EXPECT_EQ(c.getCharClass(), 0x1000) << std::hex << value;
        EXPECT_FALSE(c.isWhiteSpace() || c.isDigit() || c.isLetter() || c.isPunctuation() || c.isNonChar())
            << std::hex << value;
    }
    EXPECT_EQ(KX7UChar(0xD83D, 0xDE00).getCharClass(), 0x1000);
}

TEST(Char, AboveTheLastCodePointIsClassifiedByItsLow16Bits)
{
    EXPECT_EQ(KX7UChar(0x110041).getCharClass(), 0x0044);
    EXPECT_TRUE(KX7UChar(0x110041).isLetter());
    EXPECT_TRUE(KX7UChar(0xFFFF0020).isWhiteSpace());
    EXPECT_TRUE(KX7UChar(0x110039).isDigit());
    EXPECT_TRUE(KX7UChar(0x200021).isPunctuation());
    EXPECT_TRUE(KX7UChar(0x110000).isNonChar());
    EXPECT_FALSE(KX7UChar(0x110041).isNonChar());
}

TEST(Char, PredicatesAreTheBitsOfTheClassForEveryUnit)
{
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        KX7UChar const c(unit);
        unsigned int const bits = KX7UChar::getCharClass(static_cast<unsigned short>(unit));
        ASSERT_EQ(c.getCharClass(), bits) << std::hex << unit;
        ASSERT_EQ(c.isWhiteSpace(), (bits & 0x0001) != 0) << std::hex << unit;
        ASSERT_EQ(c.isDigit(), (bits & 0x0002) != 0) << std::hex << unit;
        ASSERT_EQ(c.isLetter(), (bits & 0x0004) != 0) << std::hex << unit;
        ASSERT_EQ(c.isPunctuation(), (bits & 0x0010) != 0) << std::hex << unit;
        ASSERT_EQ(c.isNonChar(), bits == 0) << std::hex << unit;
    }
}

namespace {

struct ClassRow {
    char const* what;
    unsigned int first, last;
    unsigned int charClass;
};
ClassRow const CLASSES[] = {
    {"the zero unit", 0x0000, 0x0000, 0},
    {"controls", 0x0001, 0x0008, 0},
    {"tab to carriage return", 0x0009, 0x000D, 0x0001},
    {"controls", 0x000E, 0x001F, 0},
    {"blank", 0x0020, 0x0020, 0x0001},
    {"punctuation", 0x0021, 0x0023, 0x0010},
    {"dollar, a symbol", 0x0024, 0x0024, 0x0800},
    {"punctuation", 0x0025, 0x002A, 0x0010},
    {"plus, a symbol", 0x002B, 0x002B, 0x0800},
    {"punctuation", 0x002C, 0x002F, 0x0010},
    {"digits", 0x0030, 0x0039, 0x0002},
    {"upper case", 0x0041, 0x005A, 0x0044},
    {"lower case", 0x0061, 0x007A, 0x0084},
    {"delete", 0x007F, 0x007F, 0},
    {"next line", 0x0085, 0x0085, 0x0001},
    {"no-break space", 0x00A0, 0x00A0, 0x0001},
    {"soft hyphen, a format character", 0x00AD, 0x00AD, 0},
    {"superscript digits", 0x00B2, 0x00B3, 0x0002},
    {"superscript one", 0x00B9, 0x00B9, 0x0002},
    {"one half, without a digit value", 0x00BD, 0x00BD, 0x0800},
    {"title case", 0x01C5, 0x01C5, 0x0104},
    {"title case", 0x01C8, 0x01C8, 0x0104},
    {"title case", 0x01CB, 0x01CB, 0x0104},
    {"title case", 0x01F2, 0x01F2, 0x0104},
    {"modifier letters", 0x02B0, 0x02B8, 0x0204},
    {"combining marks", 0x0300, 0x0345, 0x0008},
    {"combining marks", 0x0483, 0x0486, 0x0008},
    {"Hebrew mark", 0x0591, 0x0591, 0x0028},
    {"Hebrew letters", 0x05D0, 0x05EA, 0x0024},
    {"Arabic letter", 0x0627, 0x0627, 0x0024},
    {"Arabic mark", 0x064B, 0x064B, 0x0028},
    {"line and paragraph separator", 0x2028, 0x2029, 0x0001},
    {"zero width space, a format character", 0x200B, 0x200B, 0},
    {"euro", 0x20AC, 0x20AC, 0x0800},
    {"Roman numeral", 0x2160, 0x2160, 0x0800},
    {"radicals, by rule", 0x2E80, 0x2E99, 0x0404},
    {"between the radicals", 0x2E9A, 0x2E9A, 0},
    {"radicals, by rule", 0x2E9B, 0x2EF3, 0x0404},
    {"after the radicals", 0x2EF4, 0x2EF4, 0},
    {"Kangxi radicals, by rule", 0x2F00, 0x2FD5, 0x0404},
    {"after the Kangxi radicals", 0x2FD6, 0x2FD6, 0},
    {"ideographic space", 0x3000, 0x3000, 0x8001},
    {"ideographic punctuation", 0x3001, 0x3003, 0x0410},
    {"ideographic iteration mark", 0x3005, 0x3005, 0x0604},
    {"kana", 0x3041, 0x3094, 0x0404},
    {"extension A, by rule", 0x3400, 0x4DB5, 0x0404},
    {"extension A, of later versions", 0x4DB6, 0x4DBF, 0x0404},
    {"hexagram", 0x4DC0, 0x4DC0, 0x0800},
    {"ideographs, by rule", 0x4E00, 0x9FA5, 0x0404},
    {"ideographs, of later versions", 0x9FA6, 0x9FFF, 0x0404},
    {"Yi, by rule", 0xA000, 0xA48C, 0x0404},
    {"after Yi", 0xA48D, 0xA48F, 0},
    {"Hangul, by rule", 0xAC00, 0xD7A3, 0x0404},
    {"after Hangul", 0xD7A4, 0xD7AF, 0},
    {"surrogates", 0xD800, 0xDFFF, 0x1000},
    {"private use", 0xE000, 0xF8FF, 0x0800},
    {"compatibility ideographs, by rule", 0xF900, 0xFA2D, 0x0404},
    {"after the compatibility ideographs", 0xFADA, 0xFAFF, 0},
    {"byte-order mark, a format character", 0xFEFF, 0xFEFF, 0},
    {"full-width exclamation mark", 0xFF01, 0xFF01, 0x8010},
    {"full-width digits", 0xFF10, 0xFF19, 0x8002},
    {"full-width upper case", 0xFF21, 0xFF3A, 0x8044},
    {"full-width lower case", 0xFF41, 0xFF5A, 0x8084},
    {"full-width tilde", 0xFF5E, 0xFF5E, 0x8800},
    {"half-width full stop", 0xFF61, 0xFF61, 0x4010},
    {"half-width katakana", 0xFF71, 0xFF9D, 0x4404},
    {"half-width Hangul", 0xFFA1, 0xFFBE, 0x4404},
    {"half-width arrow, the end of the table", 0xFFEE, 0xFFEE, 0x4800},
    {"after the table", 0xFFEF, 0xFFFF, 0},
};

}  // namespace

TEST(CharClass, IsWhatTheUnitIs)
{
    for (ClassRow const& row : CLASSES)
        for (unsigned int unit = row.first; unit <= row.last; ++unit)
            ASSERT_EQ(KX7UChar::getCharClass(static_cast<unsigned short>(unit)), row.charClass)
                << row.what << ", U+" << std::hex << unit;
}

TEST(CharClass, HasEveryBitOnSomeUnitAndNoOther)
{
    unsigned int seen = 0;
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit)
        seen |= KX7UChar::getCharClass(static_cast<unsigned short>(unit));
    EXPECT_EQ(seen, 0xDFFFu) << "0x2000 has no meaning";
}

TEST(CharClass, CaseBitsGoWithTheLetterBitAndExcludeEachOther)
{
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        unsigned int const bits = KX7UChar::getCharClass(static_cast<unsigned short>(unit));
        unsigned int const kind = bits & 0x03C0;
        ASSERT_EQ(kind & (kind - 1), 0u) << std::hex << unit;
        ASSERT_TRUE(kind == 0 || (bits & 0x0004) != 0) << std::hex << unit;
    }
}

namespace {

struct CaseRow {
    char const* what;
    unsigned short unit, upper, lower;
};
CaseRow const CASES[] = {
    {"zero", 0, 0, 0},
    {"control", 0x1F, 0x1F, 0x1F},
    {"at sign", 0x40, 0x40, 0x40},
    {"A", 0x41, 0x41, 0x61},
    {"Z", 0x5A, 0x5A, 0x7A},
    {"bracket", 0x5B, 0x5B, 0x5B},
    {"grave accent", 0x60, 0x60, 0x60},
    {"a", 0x61, 0x41, 0x61},
    {"z", 0x7A, 0x5A, 0x7A},
    {"brace", 0x7B, 0x7B, 0x7B},
    {"tilde", 0x7E, 0x7E, 0x7E},
    {"delete goes through the table and stays", 0x7F, 0x7F, 0x7F},
    {"micro sign leaves Latin-1", 0xB5, 0x39C, 0xB5},
    {"A with grave", 0xC0, 0xC0, 0xE0},
    {"O with diaeresis", 0xD6, 0xD6, 0xF6},
    {"multiplication sign", 0xD7, 0xD7, 0xD7},
    {"sharp s has no simple upper case", 0xDF, 0xDF, 0xDF},
    {"a with grave", 0xE0, 0xC0, 0xE0},
    {"division sign", 0xF7, 0xF7, 0xF7},
    {"y with diaeresis", 0xFF, 0x178, 0xFF},
    {"Y with diaeresis", 0x178, 0x178, 0xFF},
    {"I with dot", 0x130, 0x130, 0x69},
    {"dotless i", 0x131, 0x49, 0x131},
    {"long s", 0x17F, 0x53, 0x17F},
    {"DZ in title case", 0x1C5, 0x1C4, 0x1C6},
    {"alternating pair, upper", 0x100, 0x100, 0x101},
    {"alternating pair, lower", 0x101, 0x100, 0x101},
    {"final sigma", 0x3C2, 0x3A3, 0x3C2},
    {"Cyrillic", 0x44F, 0x42F, 0x44F},
    {"Georgian lower case", 0x10D0, 0x1C90, 0x10D0},
    {"Kelvin sign", 0x212A, 0x212A, 0x6B},
    {"ideograph", 0x4E00, 0x4E00, 0x4E00},
    {"high surrogate", 0xD801, 0xD801, 0xD801},
    {"low surrogate", 0xDC28, 0xDC28, 0xDC28},
    {"full-width a", 0xFF41, 0xFF21, 0xFF41},
    {"full-width Z", 0xFF3A, 0xFF3A, 0xFF5A},
    {"the last unit", 0xFFFF, 0xFFFF, 0xFFFF},
};

}  // namespace

TEST(CharCase, IsTheSimpleMapping)
{
    for (CaseRow const& row : CASES) {
        EXPECT_EQ(KX7UChar::toUpperCase(row.unit), row.upper) << row.what;
        EXPECT_EQ(KX7UChar::toLowerCase(row.unit), row.lower) << row.what;
    }
}

TEST(CharCase, MappingTwiceChangesNothingMore)
{
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        auto const c = static_cast<unsigned short>(unit);
        unsigned short const upper = KX7UChar::toUpperCase(c);
        unsigned short const lower = KX7UChar::toLowerCase(c);
        ASSERT_EQ(KX7UChar::toUpperCase(upper), upper) << std::hex << unit;
        ASSERT_EQ(KX7UChar::toLowerCase(lower), lower) << std::hex << unit;
        ASSERT_TRUE(unit == 0 || (upper != 0 && lower != 0)) << std::hex << unit;
    }
}
