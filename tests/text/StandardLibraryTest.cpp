// kx7text tests - KX7UString and the standard library.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <unordered_map>
#include <unordered_set>

#include "kx7/text/KX7UStringStd.h"

using namespace kx7::literals;  // NOLINT

namespace {

std::u16string const WITH_ZERO(u"a\0\xD83D\xDE00\xD800z", 6);

TEST(StandardLibrary, UnitsThereAndBack)
{
    KX7UString const string = kx7::toKX7UString(WITH_ZERO);
    EXPECT_EQ(string.length(), WITH_ZERO.size());
    EXPECT_EQ(kx7::toU16String(string), WITH_ZERO);
    EXPECT_EQ(kx7::toU16String(kx7::toKX7UString(std::u16string_view(WITH_ZERO).substr(2))), WITH_ZERO.substr(2));
    EXPECT_TRUE(kx7::toKX7UString(std::u16string_view()).empty());
    EXPECT_TRUE(kx7::toU16String(KX7UString()).empty());
    std::u16string const longText(100000, u'\x4E00');
    EXPECT_EQ(kx7::toU16String(kx7::toKX7UString(longText)), longText);
}

TEST(StandardLibrary, LengthsThatNoStringHasThrow)
{
    // Twice these lengths is 0 and more in as many bits as a pointer has.
    constexpr size_t HALF = SIZE_MAX / 2 + 1;
    for (size_t const length : {HALF / 2, HALF, HALF + 1, SIZE_MAX - 1, SIZE_MAX})
        EXPECT_THROW(kx7::toKX7UString(WITH_ZERO.data(), length), std::length_error) << length;
}

TEST(StandardLibrary, Bytes)
{
    // The constructors would cut this text: they take a four-byte sequence for one unit.
    kx7::DecodedString const decoded = kx7::toKX7UString("\xF0\x9F\x98\x80!", KX7CS_UTF8);
    EXPECT_TRUE(decoded.isLossless());
    EXPECT_EQ(kx7::toU16String(decoded.text), u"\xD83D\xDE00!");
    kx7::DecodedString const bad = kx7::toKX7UString("ab\xFFz", KX7CS_UTF8, {kx7::ErrorPolicy::REPLACE});
    EXPECT_EQ(bad.errorCount, 1U);
    EXPECT_EQ(bad.first.byteOffset, 2U);
    EXPECT_EQ(kx7::toU16String(bad.text), u"ab\xFFFDz");
    kx7::Bytes const bytes = kx7::toBytes(kx7::toKX7UString(std::u16string(u"a\0\xE9", 3)), KX7CS_WCP1252);
    EXPECT_EQ(bytes.text, std::string("a\0\xE9", 3));
    EXPECT_EQ(kx7::toBytes(u"\x4E00"_kx7, KX7CS_WCP1252).status, kx7::Status::UNREPRESENTABLE);
}

TEST(StandardLibrary, HashAgreesWithEquality)
{
    std::hash<KX7UString> const hash;
    EXPECT_EQ(hash(u"abc"_kx7), hash(KX7UString("abc", KX7CS_UTF8)));
    // Equality ends at a 0 unit.
    ASSERT_TRUE(u"a\0b"_kx7 == u"a\0c"_kx7 && u"a\0b"_kx7 == u"a"_kx7);
    EXPECT_EQ(hash(u"a\0b"_kx7), hash(u"a"_kx7));
    std::unordered_map<KX7UString, int> map = {{u"one"_kx7, 1}, {u"two"_kx7, 2}};
    EXPECT_EQ(map.at(u"two"_kx7), 2);
    EXPECT_EQ(map.count(u"three"_kx7), 0U);
    std::unordered_set<std::size_t> values;
    for (unsigned int unit = 1; unit < 0x10000; ++unit)
        values.insert(hash(KX7UString(static_cast<unsigned short>(unit))));
    EXPECT_EQ(values.size(), 0xFFFFU);
}

TEST(StandardLibrary, Literal)
{
    EXPECT_EQ((u"a\0b"_kx7).length(), 3U);
    EXPECT_TRUE((u""_kx7).empty());
}

#ifdef __cpp_lib_format
TEST(StandardLibrary, Format)
{
    EXPECT_EQ(std::format("[{:>4}] {}", u"\xE9"_kx7, u"\xD83D\xDE00\xD800"_kx7),
              "[   \xC3\xA9] \xF0\x9F\x98\x80\xEF\xBF\xBD");
}
#endif

}  // namespace
