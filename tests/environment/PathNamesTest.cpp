// kx7text tests - file names between UTF-8 and the default character set.
//
// Run once for each default character set: LANG says which, EXPECTED_CHARSET what must have come of it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "kx7/charset/KX7CharSet.h"
#include "tests/environment/PathNames.h"
#include "tests/support/Texts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

std::string toLocal(std::string const& name)
{
    Result const r = utf8ToLocalPath(name, name.size() * 8 + 8);
    return r.dest.substr(0, r.count);
}

std::string toUTF8(std::string const& name)
{
    Result const r = localPathToUTF8(name, name.size() * 8 + 8);
    return r.dest.substr(0, r.count);
}

std::string utf8Of(unsigned int unit)
{
    return escapedUTF8(std::u16string(1, static_cast<char16_t>(unit)), 9);
}

/** Names that come near an escape, malformed text, surrogates on their own, characters of every length. */
std::vector<std::string> names()
{
    std::vector<std::string> list = {
        "",
        "a",
        "name.txt",
        "aU+00E9b",
        "aU+00e9b",
        "U+12",
        "U+123",
        "U+1234",
        "U+12345",
        "UU+0041",
        "U+0055+0041",
        "U+0055U+0041",
        "U+U+0041",
        "U+004",
        "U+004G1",
        "u+0041",
        "U+D83DU+DE00",
        "U+D83Dx",
        "U+DE00",
        "U+0000a",
        "aU+0000b",
        "U+FFFF",
        "a\xE4\xB8\xAD"
        "b",
        "\xF0\x9F\x98\x80",
        "a\xED\xA0\x80"
        "bc",
        "\xED\xA0\x80\xED\xA0\x81x",
        "a\xED\xA0\x80",
        "\xED\xB0\x80z",
        "\xED\xA0\xBD\xED\xB8\x80",
        "caf\xC3\xA9\xE2\x82\xAC",
        "\xFF",
        "\x80",
        "\x80\x80",
        "\xC3",
        "a\xE9",
        "\x8E\xB1\xA4\xA2",
        "\x82\xA0\x82",
        "\xA4\xA2\xA4",
        "\x81\x30\x81\x30",
        "\x81\x30\x81",
        "\xC0\x80"
        "ab",
        "a\xC0\x80"
        "b",
    };
    std::string all;
    for (unsigned int byte = 1; byte < 256; ++byte)
        all += static_cast<char>(byte);
    list.push_back(all);
    return list;
}

}  // namespace

TEST(PathNames, TheDefaultCharSetIsTheOneOfThisRun)
{
    char const* const expected = getenv("EXPECTED_CHARSET");
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(static_cast<int>(defaultCharSet()), atoi(expected));
}

TEST(PathNames, AtEveryCapacityAreAsInOnePass)
{
    for (std::string const& name : names()) {
        for (size_t capacity = 0; capacity <= std::min(name.size() * 3 + 10, size_t{300}); ++capacity) {
            ASSERT_EQ(localPathToUTF8(name, capacity), referenceToUTF8(name, capacity)) << hex(name) << capacity;
            ASSERT_EQ(utf8ToLocalPath(name, capacity), referenceToLocal(name, capacity)) << hex(name) << capacity;
        }
    }
}

TEST(PathNames, OfNothingAndWithoutArguments)
{
    char dst[8] = {'x', 'y'};
    auto* const bytes = reinterpret_cast<unsigned char*>(dst);
    EXPECT_EQ(LocalPathToUTF8(nullptr, "a", 8), 0u);
    EXPECT_EQ(LocalPathToUTF8(bytes, nullptr, 8), 0u);
    EXPECT_EQ(LocalPathToUTF8(bytes, "a", 0), 0u);
    EXPECT_EQ(UTF8ToLocalPath(nullptr, bytes, 8), 0u);
    EXPECT_EQ(UTF8ToLocalPath(dst, nullptr, 8), 0u);
    unsigned char const name[] = "a";
    EXPECT_EQ(UTF8ToLocalPath(dst, name, 0), 0u);
    EXPECT_EQ(dst[0], 'x');
    unsigned char const empty[] = "";
    EXPECT_EQ(UTF8ToLocalPath(dst, empty, 8), 0u);
    EXPECT_EQ(dst[0], '\0');
    EXPECT_EQ(dst[1], 'y');
    dst[0] = 'x';
    EXPECT_EQ(LocalPathToUTF8(bytes, "", 8), 0u);
    EXPECT_EQ(dst[0], '\0');
    EXPECT_EQ(dst[1], 'y');
}

TEST(PathNames, WithEscapesAreDecoded)
{
    struct {
        char const* what;
        std::string local, utf8;
    } const rows[] = {
        {"an escape", "aU+00E9b",
         "a\xC3\xA9"
         "b"},
        {"lower-case digits are none", "aU+00e9b", "aU+00e9b"},
        {"fewer than six units", "U+12", "U+12"},
        {"five units", "U+123", "U+123"},
        {"exactly six", "U+0041", "A"},
        {"a decoded U begins no escape", "U+0055+0041", "U+0041"},
        {"one after the other", "U+0055U+0041", "UA"},
        {"a U before an escape", "UU+0041", "UA"},
        {"an escape that was literally part of the name", "U+4E2D", "\xE4\xB8\xAD"},
        {"a pair", "U+D83DU+DE00", "\xF0\x9F\x98\x80"},
        {"a zero ends the name", "aU+0000b", "a"},
    };
    for (auto const& row : rows)
        EXPECT_TRUE(sameText(toUTF8(row.local), row.utf8)) << row.what;
}

TEST(PathNames, GetEscapesForWhatTheSetHasNot)
{
    if (defaultCharSet() != KX7CS_ISO_8859_1)
        return;
    EXPECT_EQ(toLocal("a\xE4\xB8\xAD"
                      "b"),
              "aU+4E2Db");
    EXPECT_EQ(toUTF8("aU+4E2Db"), "a\xE4\xB8\xAD"
                                  "b");
    EXPECT_EQ(toLocal("\xF0\x9F\x98\x80"), "U+D83DU+DE00");
    EXPECT_EQ(toUTF8("U+D83DU+DE00"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(toUTF8("a\xE9"), "a\xC3\xA9");
    EXPECT_EQ(toLocal("a\xC3\xA9"), "a\xE9");
}

TEST(PathNames, InUTF8KeepWithinTheirCapacityAlsoWithEscapes)
{
    if (defaultCharSet() != KX7CS_UTF8)
        return;
    std::string const name = "\xED\xA0\x80"
                             "xA\xED\xA0\x80"
                             "yB";
    std::string const whole = "U+D800AU+D800B";
    EXPECT_EQ(toLocal(name), whole);
    size_t const lengths[] = {0, 0, 0, 0, 0, 0, 0, 6, 7, 7, 7, 7, 7, 7, 13, 14};
    for (size_t capacity = 1; capacity <= 15; ++capacity) {
        Result const r = utf8ToLocalPath(name, capacity);
        EXPECT_EQ(r.count, lengths[capacity]) << capacity;
        EXPECT_EQ(r.dest.substr(0, r.count + 1), whole.substr(0, r.count) + '\0') << capacity;
    }
}

TEST(PathNames, InUTF8EndAtAZeroUnitAfterAnEscapedHighSurrogate)
{
    if (defaultCharSet() != KX7CS_UTF8)
        return;
    EXPECT_EQ(toLocal("a\xED\xA0\x80\xC0\x80"
                      "x"),
              "aU+D800");
}

TEST(PathNames, GoThereAndBack)
{
    unsigned int oneWay = 0;
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
        if (unit >= 0xD800 && unit <= 0xDFFF)
            continue;
        std::string const name = "<" + utf8Of(unit) + ">";
        std::string const localName = toLocal(name);
        if (toUTF8(localName) == name)
            continue;
        // Some sets write two characters with one code, which is read as one of them.
        ++oneWay;
        ASSERT_EQ(localName.find("U+"), std::string::npos) << hex(name) << ' ' << hex(localName);
        std::u16string const text = {u'<', static_cast<char16_t>(unit), u'>'};
        Result const exact = encodedWhole(local(), text, 20, ILLCHAR_STOP);
        ASSERT_EQ(localName, exact.dest.substr(0, exact.count)) << hex(name);
        ASSERT_NE(decodedWhole(local(), localName), text) << hex(name);
    }
    bool const isSimple = GetMaxUnitSize(KX7CS_OS_DEFAULT) == 1 || defaultCharSet() == KX7CS_UTF8;
    EXPECT_TRUE(oneWay == 0 || !isSimple) << oneWay;
    EXPECT_LT(oneWay, 500u);
}

TEST(PathNames, BeyondTheBMPGoThereAndBack)
{
    for (unsigned int c = 0x10000; c <= 0x10FFFF; c += 251) {
        std::u16string const pair = {static_cast<char16_t>(0xD7C0 + (c >> 10)),
                                     static_cast<char16_t>(0xDC00 + (c & 0x3FF))};
        std::string const name = "a" + escapedUTF8(pair, 9) + "b";
        std::string const localName = toLocal(name);
        ASSERT_EQ(toUTF8(localName), name) << hex(localName);
        if (GetMaxUnitSize(KX7CS_OS_DEFAULT) == 1) {
            ASSERT_EQ(localName, "a" + escapeOf(pair[0]) + escapeOf(pair[1]) + "b");
        }
    }
}

TEST(PathNames, LongOnesAreAsInOnePassWhereverAPieceEnds)
{
    std::string const elements[] = {
        "U+00E9",
        "U+D83DU+DE00",
        "U+D83D",
        "U+U+0041",
        "UU+0041",
        "U+004",
        "U+0055+0041",
        "\xF0\x9F\x98\x80",
        "\xED\xA0\x80x",
        "\xE4\xB8\xAD",
        "\xED\xA0\xBD\xED\xB8\x80",
        "\xA4\xA2",
        "\x82\xA0",
        "\xFF",
    };
    for (std::string const& element : elements) {
        for (size_t before = PIECE_UNITS - 16; before <= PIECE_UNITS + 3; ++before) {
            for (char const* const rest : {"", "tail"}) {
                std::string const name = std::string(before, 'x') + element + element + rest;
                size_t const most = name.size() * 2 + 40;
                for (size_t const capacity : {most, before + 1, before + 3, before + 6, before + 7, before + 12}) {
                    ASSERT_EQ(localPathToUTF8(name, capacity), referenceToUTF8(name, capacity))
                        << hex(element) << ' ' << before << ' ' << capacity;
                    ASSERT_EQ(utf8ToLocalPath(name, capacity), referenceToLocal(name, capacity))
                        << hex(element) << ' ' << before << ' ' << capacity;
                }
            }
        }
    }
}

TEST(PathNames, OfManyPiecesAreAsInOnePass)
{
    std::mt19937 random(2);
    std::vector<std::string> fragments = utf8Fragments();
    std::vector<std::string> const more = names();
    fragments.insert(fragments.end(), more.begin() + 1, more.end());
    for (int round = 0; round < 60; ++round) {
        std::string const name = randomText(random, fragments, 500 + random() % 8000);
        size_t const most = name.size() * 3 + 40;
        for (size_t const capacity : {std::min(most, size_t{39000}), 1 + random() % name.size()}) {
            ASSERT_EQ(localPathToUTF8(name, capacity), referenceToUTF8(name, capacity)) << round << ' ' << capacity;
            ASSERT_EQ(utf8ToLocalPath(name, capacity), referenceToLocal(name, capacity)) << round << ' ' << capacity;
        }
    }
}

// Escapes can make names six times as long.
TEST(PathNames, AreConvertedInOneBufferAsInTwo)
{
    auto const toUTF8 = [](char* dst, char const* src, int dstBytes) {
        return LocalPathToUTF8(reinterpret_cast<unsigned char*>(dst), src, dstBytes);
    };
    auto const toLocal = [](char* dst, char const* src, int dstBytes) {
        return UTF8ToLocalPath(dst, reinterpret_cast<unsigned char const*>(src), dstBytes);
    };
    auto const check = [](auto const& function, std::string const& name) {
        int const most = static_cast<int>(6 * name.size() + 1);
        std::vector<char> apart(6 * name.size() + 1);
        unsigned int const count = function(apart.data(), name.c_str(), most);
        for (size_t const shift : {size_t{0}, size_t{1}, size_t{40}, size_t{2048}, name.size() - 1, name.size()})
            for (bool const isBefore : {true, false}) {
                std::vector<char> buffer(7 * name.size() + 2048 + 1);
                size_t const source = isBefore ? shift : 0;
                size_t const dest = isBefore ? 0 : shift;
                memcpy(&buffer[source], name.c_str(), name.size() + 1);
                ASSERT_EQ(function(&buffer[dest], &buffer[source], 0x7FFFFFFF), count)
                    << name.size() << " bytes, destination " << shift << (isBefore ? " before" : " after");
                ASSERT_EQ(memcmp(&buffer[dest], apart.data(), count + size_t{1}), 0)
                    << name.size() << " bytes, destination " << shift << (isBefore ? " before" : " after");
            }
    };
    std::string const elements[] = {"\xE9",         "U+00E9a",           "\xC3\xA9",
                                    "\xE4\xB8\xAD", "\xF0\x9F\x98\x80x", "\xED\xA0\x80y"};
    for (std::string const& element : elements)
        for (size_t const length : {100U, 2047U, 2048U, 2077U, 5000U, 100000U}) {
            std::string name;
            while (name.size() < length)
                name += element;
            check(toUTF8, name);
            check(toLocal, name);
            if (HasFatalFailure())
                return;
        }
}

TEST(PathNames, OfRandomBytesAreAsInOnePass)
{
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        std::string name;
        for (size_t n = random() % 40; n != 0; --n)
            name += random() % 3 == 0 ? "U+0D8A"[random() % 6] : static_cast<char>(1 + random() % 255);
        size_t const capacity = random() % 100;
        ASSERT_EQ(localPathToUTF8(name, capacity), referenceToUTF8(name, capacity)) << hex(name) << ' ' << capacity;
        ASSERT_EQ(utf8ToLocalPath(name, capacity), referenceToLocal(name, capacity)) << hex(name) << ' ' << capacity;
    }
}
