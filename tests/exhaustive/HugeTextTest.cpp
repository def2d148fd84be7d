// kx7text tests - results of more bytes than 32 bits count.
#include <gtest/gtest.h>

#include "kx7/charset/Converters.h"
#include "tests/support/HugeText.h"

using kx7test::HugeText;

TEST(HugeText, BytesWrittenBeyondTheCapacityAreCountedUpToTheGreatestNumber)
{
    // Six bytes a character, the last of which goes beyond the capacity.
    constexpr uint64_t FOUR_GIB = uint64_t{1} << 32;
    constexpr unsigned int MOST = 0xFFFFFFFF;
    HugeText source(4 * (FOUR_GIB / 6 + 2), "\x40");
    HugeText dest(FOUR_GIB + 16);
    if (!source.terminate(4).data() || !dest.data())
        GTEST_SKIP() << "this machine gives no text so many addresses, or is too slow for it";
    EXPECT_EQ(g_oConverterUTF32.toUTF8(reinterpret_cast<unsigned char*>(dest.data()), source.data(), MOST,
                                       ILLCHAR_REPLACE, nullptr),
              MOST);
}
