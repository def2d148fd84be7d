// kx7text tests - case and classes of every code unit against ICU's Unicode data.
//
// Exact for the version that the tables are made of only: ICU 72 has Unicode 15.0.
#include <gtest/gtest.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include "kx7/text/KX7UChar.h"

namespace {

bool hasOurVersion()
{
    UVersionInfo version;
    u_getUnicodeVersion(version);
    return version[0] == 15 && version[1] == 0;
}

struct Block {
    unsigned int first, last;

    bool holds(unsigned int unit) const { return unit >= first && unit <= last; }
};

template <size_t N>
bool anyHolds(Block const (&blocks)[N], unsigned int unit)
{
    for (Block const& block : blocks)
        if (block.holds(unit))
            return true;
    return false;
}

Block const EAST_ASIAN_BY_RULE[] = {
    {0x2E80, 0x2E99}, {0x2E9B, 0x2EF3}, {0x2F00, 0x2FD5}, {0x3400, 0x4DB5},
    {0x4E00, 0x9FA5}, {0xA000, 0xA48C}, {0xAC00, 0xD7A3}, {0xF900, 0xFA2D},
};
Block const RIGHT_TO_LEFT_MARKS[] = {{0x0590, 0x08FF}, {0xFB1D, 0xFDFF}, {0xFE70, 0xFEFF}};

unsigned int categoryBits(UChar32 c)
{
    bool const isDigit = u_charDigitValue(c) >= 0 || u_getIntPropertyValue(c, UCHAR_NUMERIC_TYPE) == U_NT_DIGIT ||
                         u_getIntPropertyValue(c, UCHAR_NUMERIC_TYPE) == U_NT_DECIMAL;
    switch (u_charType(c)) {
        case U_UPPERCASE_LETTER: return 0x0044;
        case U_LOWERCASE_LETTER: return 0x0084;
        case U_TITLECASE_LETTER: return 0x0104;
        case U_MODIFIER_LETTER: return 0x0204;
        case U_OTHER_LETTER: return 0x0004;
        case U_NON_SPACING_MARK:
        case U_COMBINING_SPACING_MARK:
        case U_ENCLOSING_MARK: return 0x0008;
        case U_DECIMAL_DIGIT_NUMBER: return 0x0002;
        case U_OTHER_NUMBER: return isDigit ? 0x0002 : 0x0800;
        case U_SPACE_SEPARATOR:
        case U_LINE_SEPARATOR:
        case U_PARAGRAPH_SEPARATOR: return 0x0001;
        case U_DASH_PUNCTUATION:
        case U_START_PUNCTUATION:
        case U_END_PUNCTUATION:
        case U_CONNECTOR_PUNCTUATION:
        case U_OTHER_PUNCTUATION:
        case U_INITIAL_PUNCTUATION:
        case U_FINAL_PUNCTUATION: return 0x0010;
        case U_MATH_SYMBOL:
        case U_CURRENCY_SYMBOL:
        case U_MODIFIER_SYMBOL:
        case U_OTHER_SYMBOL:
        case U_LETTER_NUMBER:
        case U_PRIVATE_USE_CHAR: return 0x0800;
        default: break;
    }
    // Of the controls those that separate.
    return (c >= 0x09 && c <= 0x0D) || c == 0x85 ? 0x0001 : 0;
}

bool isEastAsianScript(UChar32 c)
{
    UErrorCode error = U_ZERO_ERROR;
    switch (uscript_getScript(c, &error)) {
        case USCRIPT_HAN:
        case USCRIPT_HIRAGANA:
        case USCRIPT_KATAKANA:
        case USCRIPT_BOPOMOFO:
        case USCRIPT_HANGUL:
        case USCRIPT_YI: return true;
        default: return false;
    }
}

unsigned int expectedClass(unsigned int unit)
{
    auto const c = static_cast<UChar32>(unit);
    // The radicals among these are symbols by their category; that the rule calls them letters is kept on purpose.
    if (anyHolds(EAST_ASIAN_BY_RULE, unit))
        return 0x0404;
    if (Block{0xD800, 0xDFFF}.holds(unit))
        return 0x1000;
    if (unit > 0xFFEE)  // where the table ends: U+FFFC and U+FFFD get no class
        return 0;
    unsigned int bits = categoryBits(c);
    if (bits == 0)
        return 0;
    UCharDirection const direction = u_charDirection(c);
    if (direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC ||
        (bits == 0x0008 && anyHolds(RIGHT_TO_LEFT_MARKS, unit)))
        bits |= 0x0020;
    if (isEastAsianScript(c) || Block{0x3001, 0x33FF}.holds(unit))
        bits |= 0x0400;
    if (Block{0xFF61, 0xFFEE}.holds(unit))
        bits |= 0x4000;
    if (unit == 0x3000 || Block{0xFF01, 0xFF5E}.holds(unit))
        bits |= 0x8000;
    return bits;
}

/** ICU's simple mapping, where it stays within the Basic Multilingual Plane. */
unsigned int mappedWithin(UChar32 mapped, unsigned int unit)
{
    return mapped <= 0xFFFF ? static_cast<unsigned int>(mapped) : unit;
}

}  // namespace

TEST(CaseOracle, EveryUnitHasTheSimpleMappings)
{
    if (!hasOurVersion())
        GTEST_SKIP() << "this ICU has another version of Unicode";
    unsigned int upper = 0;
    unsigned int lower = 0;
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        auto const c = static_cast<unsigned short>(unit);
        EXPECT_EQ(KX7UChar::toUpperCase(c), mappedWithin(u_toupper(c), unit)) << std::hex << unit;
        EXPECT_EQ(KX7UChar::toLowerCase(c), mappedWithin(u_tolower(c), unit)) << std::hex << unit;
        upper += KX7UChar::toUpperCase(c) != c;
        lower += KX7UChar::toLowerCase(c) != c;
    }
    EXPECT_GT(upper, 1000u);
    EXPECT_GT(lower, 1000u);
}

TEST(ClassOracle, EveryUnitHasTheBitsOfItsProperties)
{
    if (!hasOurVersion())
        GTEST_SKIP() << "this ICU has another version of Unicode";
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit)
        EXPECT_EQ(KX7UChar::getCharClass(static_cast<unsigned short>(unit)), expectedClass(unit))
            << "U+" << std::hex << unit << ", category " << std::dec
            << static_cast<int>(u_charType(static_cast<UChar32>(unit)));
}
