// kx7text tests - sizes of strings that are so long that 32 bits may not hold the number of their bytes.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

/** Shorter texts have no more bytes than a converter can count, at most eight a unit. */
constexpr unsigned int PART = 0xFFFFFFFF / 8;
constexpr unsigned int LENGTH = PART + 10;

/** The greatest number of characters whose bytes the UTF-32 converter can count. */
constexpr unsigned int MOST_UTF32 = 0xFFFFFFFF / 4;

/** Memory that the machine can spare, in KiB; 0 where it does not say. */
unsigned long spareMemory()
{
    std::ifstream in("/proc/meminfo");
    for (std::string line; std::getline(in, line);) {
        unsigned long size = 0;
        if (sscanf(line.c_str(), "MemAvailable: %lu", &size) == 1)
            return size;
    }
    return 0;
}

struct CountRow {
    char const* what;
    KX7CharSet charSet;
    unsigned int bytesOfA;  ///< bytes of one letter
};
CountRow const COUNTED[] = {
    {"single bytes", KX7CS_WCP1252, 1},
    {"UTF-8", KX7CS_UTF8, 1},
    {"UTF-16", KX7CS_UTF16, 2},
    {"UTF-16 with escapes", KX7CS_UTF16ESC, 1},
    {"UTF-32", KX7CS_UTF32, 4},
    {"pairs of bytes", KX7CS_WCP932, 1},
    {"Shift_JIS-2004", KX7CS_SJIS0213, 1},
    {"EUC-KR", KX7CS_EUC_KR, 1},
    {"EUC-JP", KX7CS_EUC_JP, 1},
    {"GB 18030", KX7CS_GB18030, 1},
};

}  // namespace

TEST(StringLength, OfALongTextEndsWhereItsConverterEndsTheCount)
{
#ifdef KX7_SANITIZED
    GTEST_SKIP() << "a text of a gibibyte, which a sanitizer would look at for minutes";
#endif
    if (spareMemory() < 3UL << 20)
        GTEST_SKIP() << "a text of a gibibyte, and the machine has less than three to spare";
    KX7UString s(unitOf('a'), LENGTH);
    auto const writeAndCount = [&s](unsigned int at, unsigned short unit, CountRow const& row) {
        unsigned short const before = s.at(at);
        s.at(at) = unit;
        unsigned int const bytes = s.length(row.charSet);
        s.at(at) = before;
        return bytes;
    };
    for (CountRow const& row : COUNTED)
        EXPECT_EQ(writeAndCount(5, 0, row), 5 * row.bytesOfA) << row.what << ", a 0 unit early";

    CountRow const& bytes = COUNTED[0];
    for (unsigned int const at : {PART, PART + 3})
        EXPECT_EQ(writeAndCount(at, 0, bytes), at) << "a 0 unit where 32 bits may end";

    CountRow const& gb18030 = COUNTED[9];
    ASSERT_EQ(gb18030.charSet, KX7CS_GB18030);
    EXPECT_EQ(writeAndCount(5, 0xD800, gb18030), 5u) << "this set ends at a high surrogate without a partner, too";

    // A supplementary character there, in the sets that have it.
    s.at(PART - 1) = 0xD83D;
    s.at(PART) = 0xDE00;
    EXPECT_EQ(s.numChars(), LENGTH - 1);
    EXPECT_EQ(s.length(KX7CS_UTF8), LENGTH + 2);

    s.at(5) = 0;
    EXPECT_EQ(s.numChars(), 5u);
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "aaaaa");
    EXPECT_EQ(s.length(), LENGTH) << "the length in units is that of the whole text";
}

TEST(StringLength, CharactersAreCountedWhereTheirBytesInUtf32AreTooMany)
{
#ifdef KX7_SANITIZED
    GTEST_SKIP() << "a text of two gibibytes, which a sanitizer would look at for minutes";
#endif
    if (MOST_UTF32 > PTRDIFF_MAX / sizeof(unsigned short) - 10)
        GTEST_SKIP() << "no string is as long here";
    if (spareMemory() < 4UL << 20)
        GTEST_SKIP() << "a text of two gibibytes, and the machine has less than four to spare";
    KX7UString s(unitOf('a'), MOST_UTF32 + 10);
    s.at(5) = 0xD800;
    s.at(6) = 0xD83D;
    s.at(7) = 0xDE00;
    s.at(MOST_UTF32 + 9) = 0xD800;
    EXPECT_EQ(s.numChars(), MOST_UTF32 + 8) << "a pair counts once, a high surrogate at the end not at all";
    EXPECT_THROW(s.length(KX7CS_UTF32), std::length_error);
    s.at(MOST_UTF32 + 2) = 0;
    EXPECT_EQ(s.numChars(), MOST_UTF32 + 1) << "the 0 unit ends the count";
    s.at(MOST_UTF32 + 1) = 0;
    EXPECT_EQ(s.numChars(), MOST_UTF32) << "whose bytes the converter can count";
}
