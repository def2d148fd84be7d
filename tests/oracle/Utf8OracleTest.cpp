// kx7text tests - well-formed UTF-8 against ICU.
#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/Probe.h"

using namespace kx7test;

namespace {

std::string utf8OfICU(UConverter* converter, std::u16string const& units)
{
    std::string bytes(units.size() * 3, '\0');
    UErrorCode error = U_ZERO_ERROR;
    int32_t const length = ucnv_fromUChars(converter, bytes.data(), static_cast<int32_t>(bytes.size()), units.data(),
                                           static_cast<int32_t>(units.size()), &error);
    EXPECT_TRUE(U_SUCCESS(error)) << u_errorName(error);
    bytes.resize(static_cast<size_t>(length));
    return bytes;
}

}  // namespace

TEST(UTF8Oracle, EveryCodePointBothWays)
{
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open("UTF-8", &error);
    ASSERT_TRUE(U_SUCCESS(error));
    Utf8Model const model;
    Probe probe(g_oConverterUTF8, model);
    unsigned int const block = 64;
    for (unsigned int first = 0; first <= 0x10FFFF && !probe.gaveUp(); first += block) {
        std::u16string units;
        for (unsigned int c = first; c < first + block; ++c) {
            if (c == 0 || U_IS_SURROGATE(c))
                continue;
            if (c > 0xFFFF) {
                units += U16_LEAD(c);
                units += U16_TRAIL(c);
            }
            else {
                units += static_cast<char16_t>(c);
            }
        }
        std::string const bytes = utf8OfICU(converter, units);
        auto const byteCount = static_cast<unsigned int>(bytes.size());
        auto const unitCount = static_cast<unsigned int>(units.size());
        probe.encode({units, byteCount, ILLCHAR_STOP}, {bytes, Flag::CLEARED}, FlagArgument::TRUE_BEFORE, "as ICU");
        probe.decode({bytes, unitCount, ILLCHAR_STOP, -1}, {units, Flag::CLEARED}, FlagArgument::TRUE_BEFORE, "as ICU");
        EXPECT_EQ(
            g_oConverterUTF8.getNumBytes(reinterpret_cast<unsigned short const*>(units.c_str()), UNTIL_TERMINATOR),
            byteCount);
    }
    ucnv_close(converter);
}
