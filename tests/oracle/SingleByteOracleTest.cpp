// kx7text tests - single-byte character sets against the mappings that ICU and glibc publish.
#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <optional>

#include "tests/model/SingleByteModel.h"
#include "tests/support/Probe.h"
#include "tests/support/SampleSingleByte.h"
#include "tests/support/SingleByteSets.h"

using namespace kx7test;

namespace {

/** The pairs of an ICU converter that convert both ways without a fallback. */
BytePairs pairsOfICU(char const* name)
{
    UErrorCode error = U_ZERO_ERROR;
    UConverter* const converter = ucnv_open(name, &error);
    if (U_FAILURE(error))
        return {};
    ucnv_setFallback(converter, false);
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    EXPECT_TRUE(U_SUCCESS(error)) << name;

    std::vector<unsigned int> bytes(0x10000);
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
        char16_t const text[] = {static_cast<char16_t>(unit)};
        char byte = 0;
        error = U_ZERO_ERROR;
        if (ucnv_fromUChars(converter, &byte, 1, text, 1, &error) == 1 && U_SUCCESS(error))
            bytes[unit] = static_cast<unsigned char>(byte);
    }
    BytePairs pairs;
    for (unsigned int byte = 1; byte <= 0xFF; ++byte) {
        char const text[] = {static_cast<char>(byte)};
        char16_t unit = 0;
        error = U_ZERO_ERROR;
        if (ucnv_toUChars(converter, &unit, 1, text, 1, &error) == 1 && U_SUCCESS(error) && bytes[unit] == byte)
            pairs.emplace_back(static_cast<unsigned char>(byte), unit);
    }
    ucnv_close(converter);
    return pairs;
}

/** What glibc makes of one byte, if it makes one unit of it. */
std::optional<char16_t> unitOfIconv(iconv_t converter, unsigned int byte)
{
    char in[] = {static_cast<char>(byte)};
    char16_t unit = 0;
    char* source = in;
    char* dest = reinterpret_cast<char*>(&unit);
    size_t sourceLeft = 1;
    size_t destLeft = sizeof unit;
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    if (iconv(converter, &source, &sourceLeft, &dest, &destLeft) != 0 || destLeft != 0)
        return std::nullopt;
    return unit;
}

BytePairs pairsOfIconv(char const* name)
{
    iconv_t const converter = iconv_open("UTF-16LE", name);
    if (converter == reinterpret_cast<iconv_t>(-1))
        return {};
    BytePairs pairs;
    for (unsigned int byte = 1; byte <= 0xFF; ++byte)
        if (auto const unit = unitOfIconv(converter, byte))
            pairs.emplace_back(static_cast<unsigned char>(byte), *unit);
    iconv_close(converter);
    return pairs;
}

BytePairs publishedPairs(SingleByteSet const& set)
{
    return *set.publishedSource != '\0' ? pairsOfICU(set.publishedSource) : pairsOfIconv(set.name);
}

}  // namespace

TEST(SingleByteOracle, EveryByteAndUnitIsAsPublished)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS) {
        SCOPED_TRACE(set.name);
        BytePairs const pairs = publishedPairs(set);
        EXPECT_EQ(pairs.size(), set.mappedBytes);
        SingleByteModel const model(pairs);
        Probe probe(set.converter, model);
        compareEveryByteAndUnit(probe);
    }
}

TEST(SingleByteOracle, ISO8859AgreesWithGlibcToo)
{
    for (SingleByteSet const& set : SINGLE_BYTE_SETS) {
        if (std::string(set.name).rfind("ISO-8859", 0) != 0)
            continue;
        SCOPED_TRACE(set.name);
        SingleByteModel const model(pairsOfIconv(set.name));
        Probe probe(set.converter, model);
        compareEveryByteAndUnit(probe);
    }
}
