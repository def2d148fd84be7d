// kx7text tests - texts of more bytes or units than 32 bits count: counts end at the largest number there is, and
// strings throw. None was shortened silently.
#include <gtest/gtest.h>

#include <stdexcept>

#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/HugeText.h"

using kx7test::HugeText;

namespace {

constexpr uint64_t FOUR_GIB = uint64_t{1} << 32;
constexpr unsigned int MOST = 0xFFFFFFFF;

#define SKIP_WITHOUT(huge)                                                                                             \
    if (!(huge).data())                                                                                                \
    GTEST_SKIP() << "this machine gives no text so many addresses, or is too slow for it"

template <class Call>
std::string lengthErrorOf(Call call)
{
    try {
        call();
    }
    catch (std::length_error const& e) {
        return e.what();
    }
    return "no length_error";
}

constexpr char const* TOO_LONG = "exceed maximum string length";

unsigned short const* unitsIn(HugeText& text)
{
    return reinterpret_cast<unsigned short const*>(text.data());
}

}  // namespace

TEST(HugeText, StringsOfMoreThan4GiBThrow)
{
    HugeText text(FOUR_GIB + 4, "a");
    SKIP_WITHOUT(text.terminate(1));
    char const* const s = text.data();
    EXPECT_EQ(lengthErrorOf([s] { KX7UString const made(s, KX7CS_WCP1252); }), TOO_LONG);
    KX7UString string("text", KX7CS_UTF8);
    EXPECT_EQ(lengthErrorOf([&] { string = s; }), TOO_LONG);
    EXPECT_EQ(lengthErrorOf([&] { s + string; }), TOO_LONG);
    EXPECT_STREQ(string.c_str(KX7CS_UTF8), "text");
}

TEST(HugeText, TheGreatestCountOfAStringEndsThereAndThrows)
{
    HugeText text(MOST, "a");
    SKIP_WITHOUT(text);
    char const* const s = text.data();
    for (KX7CharSet const cs : {KX7CS_WCP1252, KX7CS_UTF32})
        EXPECT_EQ(lengthErrorOf([s, cs] { KX7UString const made(s, MOST, cs); }), TOO_LONG) << cs;
}

TEST(HugeText, UnitsOfBytesAreCountedUpToTheGreatestNumber)
{
    HugeText text(FOUR_GIB + 4, "a");
    SKIP_WITHOUT(text.terminate(1));
    EXPECT_EQ(GetNumUnits(text.data(), KX7CS_WCP1252), MOST);
    EXPECT_EQ(GetNumUnits(text.data(), KX7CS_UTF8), MOST);
    EXPECT_EQ(GetNumUnits(text.data(), KX7CS_WCP932), MOST);
    EXPECT_EQ(g_oConverterWCP1252.getNumUnits(text.data(), MOST - 1), MOST - 1);
}

TEST(HugeText, UnitsOfWideTextAreCountedUpToTheGreatestNumber)
{
    HugeText text(2 * FOUR_GIB + 8, "a");
    SKIP_WITHOUT(text.terminate(2));
    EXPECT_EQ(KX7CharSetWStrlen(unitsIn(text)), MOST);
    EXPECT_EQ(g_oConverterUTF16.getNumUnits(text.data(), MOST), MOST);
    EXPECT_EQ(g_oConverterUTF16.getNumUnits(text.data(), MOST - 1), MOST / 2);
    EXPECT_EQ(lengthErrorOf([&] { KX7UString const made(unitsIn(text)); }), TOO_LONG);
}

TEST(HugeText, BytesOfEscapesAreCountedUpToTheGreatestNumber)
{
    // U+2020, of three bytes in UTF-8 and six as an escape.
    constexpr uint64_t UNITS = FOUR_GIB / 6 + 1;
    HugeText text(2 * UNITS + 2, " ");
    SKIP_WITHOUT(text.terminate(2));
    EXPECT_EQ(GetNumBytes(unitsIn(text), KX7CS_UTF16ESC), MOST);
    EXPECT_EQ(GetNumBytes(unitsIn(text), KX7CS_UTF8), 3 * UNITS);
}

TEST(HugeText, BytesOfUnitsAreCountedUpToTheGreatestNumber)
{
    constexpr uint64_t UNITS = FOUR_GIB / 3 + 1;
    HugeText text(2 * UNITS + 2, " ");
    SKIP_WITHOUT(text.terminate(2));
    EXPECT_EQ(GetNumBytes(unitsIn(text), KX7CS_UTF8), MOST);
    EXPECT_EQ(GetNumBytes(unitsIn(text), KX7CS_UTF16), 2 * UNITS);
}
