// kx7text tests - the exported conversion functions at every capacity, with buffers that end at unreadable pages.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/KX7CharSet.h"
#include "tests/charset/EntryPointReference.h"
#include "tests/charset/ForeignConverter.h"
#include "tests/support/ByteOrder.h"
#include "tests/support/CharSets.h"
#include "tests/support/Guarded.h"

using kx7test::CharSetRow;
using kx7test::charSetRows;
using kx7test::FILL;
using kx7test::ForeignConverter;
using kx7test::Guarded;
using kx7test::inLargeBuffer;
using kx7test::Outcome;
using kx7test::referenceThroughUTF16;

namespace {

using Units = std::vector<unsigned short>;

unsigned char const* asUTF8(std::string const& text)
{
    return reinterpret_cast<unsigned char const*>(text.c_str());
}

std::string hex(std::string const& bytes)
{
    std::string out;
    for (char const c : bytes) {
        char digits[4];
        snprintf(digits, sizeof digits, "%02X ", static_cast<unsigned int>(static_cast<unsigned char>(c)));
        out += digits;
    }
    return out;
}

/** With as many zero bytes after it as fill its last unit, where units have `unitSize` bytes. */
std::string padded(std::string text, unsigned int unitSize)
{
    text.resize((text.size() + unitSize - 1) / unitSize * unitSize);
    return text;
}

/** A source in a page of its own: a read after the terminator faults. */
std::unique_ptr<Guarded<char> const> guardedText(std::string const& bytes, unsigned int terminator)
{
    std::string const text = padded(bytes, terminator) + std::string(terminator, '\0');
    return std::make_unique<Guarded<char> const>(text.data(), text.size());
}

/** Memory whose end faults; destinations of any capacity are cut from its end. */
class GuardedDest {
public:
    explicit GuardedDest(size_t most) : m_memory(most + FRONT), m_size(most + FRONT) {}

    /** Runs `call` on the last `capacity` bytes; what lies before them has to stay as it is. */
    template <class Call>
    Outcome run(size_t capacity, Call const& call)
    {
        char* const dest = m_memory.data() + m_size - capacity;
        memset(dest - FRONT, FILL, capacity + FRONT);
        unsigned int const result = call(dest);
        for (char const* p = dest - FRONT; p != dest; ++p)
            EXPECT_EQ(static_cast<unsigned char>(*p), FILL) << "written before the destination";
        return {result, std::string(dest, capacity)};
    }

private:
    static constexpr size_t FRONT = 16;
    Guarded<char> m_memory;
    size_t m_size;
};

template <class What>
void expectSame(Outcome const& actual, Outcome const& expected, What const& what)
{
    EXPECT_EQ(actual.result, expected.result) << what();
    if (actual.dest != expected.dest)
        ADD_FAILURE() << what() << "\nis        " << hex(actual.dest) << "\nshould be " << hex(expected.dest);
}

std::string const UTF8_TEXTS[] = {
    "",
    "plain ASCII",
    u8"\u00E9\u0416\u4E2D\u20AC",
    u8"\U0001F600",
    u8"a\U0001F600b\U0010FFFF",
    "\x80\xBF",  // nothing but stray continuation bytes: converts to nothing
    "\x80\xBF"
    "a"
    "\x80\x80"
    "b",
    "\xC3"
    "A"
    "\xE4\xB8"
    "B"
    "\xF0\x9F\x98"
    "C",
    "ends cut \xF0\x9F\x98",
    "ends cut \xE4",
    "\xC0\x80"
    "after an overlong zero",
    "a"
    "\xC0\x80"
    "b",
    "\xC1\xA1\xE0\x80\xA1\xF0\x80\x80\xA1",  // overlong letters
    "\xED\xA0\xBD\xED\xB8\x80",              // a pair in two encoded halves
    "\xED\xA0\xBD",
    "x\xED\xA0\xBD\xED\xA0\xBD\xED\xB8\x80\xED\xB8\x80",
    "\xF4\x90\x80\x80\xF8\x88\x80\x80\xFF\xBF\xBF\xBF\xFE",
};

/** Bytes 1 to 255 in rising order, and then in an order that puts every kind after every other. */
std::vector<std::string> localTexts()
{
    std::vector<std::string> texts = {"", "local", "plain ASCII."};
    std::string all;
    for (int byte = 1; byte < 256; ++byte)
        all.push_back(static_cast<char>(byte));
    all.push_back('\x81');  // a length that wide encodings can divide
    for (size_t i = 0; i < all.size(); i += 32)
        texts.push_back(all.substr(i, 32));
    texts.push_back(all);
    std::mt19937 random(20240517);
    for (int i = 0; i < 12; ++i) {
        std::string text;
        for (int k = 0; k < 24; ++k)
            text.push_back(static_cast<char>(1 + random() % 255));
        texts.push_back(text);
    }
    for (std::string text : UTF8_TEXTS) {
        text.resize((text.size() + 3) / 4 * 4, '\xA1');
        texts.push_back(text);
    }
    return texts;
}

std::vector<Units> unitTexts()
{
    std::vector<Units> texts = {
        {},
        {'p', 'l', 'a', 'i', 'n'},
        {0xE9, 0x416, 0x4E2D, 0x20AC, 0xFFFD, 0xFFFF},
        {0xD83D, 0xDE00},
        {'a', 0xD83D, 0xDE00, 'b'},
        {0xD83D},
        {'a', 0xD83D},
        {0xDE00},
        {0xD83D, 0xD83D, 0xDE00, 0xDE00},
        {0xD83D, 'x', 0xDE00, 'y'},
        {0xDBFF, 0xDFFF, 0xD800, 0xDC00},
    };
    Units every;
    for (unsigned int unit = 1; unit < 0x10000; unit += 0x11B)
        every.push_back(static_cast<unsigned short>(unit));
    texts.push_back(every);
    Units low;
    for (unsigned short unit = 1; unit < 0x200; ++unit)
        low.push_back(unit);
    texts.push_back(low);
    return texts;
}

/** The most a text of so many bytes or units can become, terminator and some more included. */
size_t capacityFor(size_t length)
{
    return 6 * length + 16;
}

}  // namespace

TEST(EntryPoints, LocalToUTF8AtEveryCapacity)
{
    for (CharSetRow const& row : charSetRows()) {
        for (std::string const& text : localTexts()) {
            auto const source = guardedText(text, row.converter->getNullCharSize());
            GuardedDest dest(capacityFor(text.size()));
            std::string whole(capacityFor(text.size()), '\0');
            unsigned int const needed = LocalToUTF8(reinterpret_cast<unsigned char*>(&whole[0]), source->data(),
                                                    static_cast<int>(whole.size()), row.charSet);
            for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
                Outcome expected{0, ""};
                if (capacity != 0)
                    expected = referenceThroughUTF16(*row.converter, source->data(), g_oConverterUTF8, capacity, 1);
                Outcome const actual = dest.run(capacity, [&](char* p) {
                    return LocalToUTF8(reinterpret_cast<unsigned char*>(p), source->data(), static_cast<int>(capacity),
                                       row.charSet);
                });
                expectSame(actual, expected,
                           [&] { return row.name + (": " + hex(text)) + " in " + std::to_string(capacity); });
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST(EntryPoints, UTF8ToLocalAtEveryCapacity)
{
    std::vector<std::string> texts(std::begin(UTF8_TEXTS), std::end(UTF8_TEXTS));
    for (std::string const& text : localTexts())
        texts.push_back(text);
    for (CharSetRow const& row : charSetRows()) {
        unsigned int const terminator = row.converter->getNullCharSize();
        for (std::string const& text : texts) {
            auto const source = guardedText(text, 1);
            auto const* const utf8 = reinterpret_cast<unsigned char const*>(source->data());
            GuardedDest dest(capacityFor(text.size()));
            std::string whole(capacityFor(text.size()), '\0');
            unsigned int const needed = UTF8ToLocal(&whole[0], utf8, static_cast<int>(whole.size()), row.charSet);
            for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
                Outcome expected{0, std::string(capacity, static_cast<char>(FILL))};
                if (capacity >= terminator)
                    expected =
                        referenceThroughUTF16(g_oConverterUTF8, source->data(), *row.converter, capacity, terminator);
                Outcome const actual = dest.run(
                    capacity, [&](char* p) { return UTF8ToLocal(p, utf8, static_cast<int>(capacity), row.charSet); });
                expectSame(actual, expected,
                           [&] { return row.name + (": " + hex(text)) + " in " + std::to_string(capacity); });
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST(EntryPoints, LocalToUTF16AtEveryCapacity)
{
    for (CharSetRow const& row : charSetRows()) {
        for (std::string const& text : localTexts()) {
            auto const source = guardedText(text, row.converter->getNullCharSize());
            GuardedDest dest(capacityFor(text.size()));
            Units whole(capacityFor(text.size()));
            unsigned int const needed =
                LocalToUTF16(whole.data(), source->data(), static_cast<int>(whole.size()), row.charSet);
            for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
                Outcome expected{0, ""};
                if (capacity != 0)
                    expected = inLargeBuffer(2 * capacity, [&](char* p) {
                        return row.converter->toUTF16(reinterpret_cast<unsigned short*>(p), source->data(),
                                                      capacity - 1, ILLCHAR_REPLACE, nullptr, -1);
                    });
                Outcome const actual = dest.run(2 * capacity, [&](char* p) {
                    return LocalToUTF16(reinterpret_cast<unsigned short*>(p), source->data(),
                                        static_cast<int>(capacity), row.charSet);
                });
                expectSame(actual, expected,
                           [&] { return row.name + (": " + hex(text)) + " in " + std::to_string(capacity); });
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST(EntryPoints, UTF16ToLocalAtEveryCapacity)
{
    for (CharSetRow const& row : charSetRows()) {
        unsigned int const terminator = row.converter->getNullCharSize();
        for (Units text : unitTexts()) {
            text.push_back(0);
            Guarded<unsigned short> source(text.data(), text.size());
            GuardedDest dest(capacityFor(text.size()));
            std::string whole(capacityFor(text.size()), '\0');
            unsigned int const needed =
                UTF16ToLocal(&whole[0], source.data(), static_cast<int>(whole.size()), row.charSet);
            for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
                Outcome expected{0, std::string(capacity, static_cast<char>(FILL))};
                if (capacity >= terminator)
                    expected = inLargeBuffer(capacity, [&](char* p) {
                        return row.converter->fromUTF16(p, source.data(), capacity - terminator, ILLCHAR_REPLACE,
                                                        nullptr);
                    });
                Outcome const actual = dest.run(capacity, [&](char* p) {
                    return UTF16ToLocal(p, source.data(), static_cast<int>(capacity), row.charSet);
                });
                expectSame(actual, expected, [&] { return row.name + (" in " + std::to_string(capacity)); });
                ASSERT_FALSE(HasFailure());
            }
        }
    }
}

TEST(EntryPoints, UTF8ToUTF16AtEveryCapacity)
{
    std::vector<std::string> texts(std::begin(UTF8_TEXTS), std::end(UTF8_TEXTS));
    for (std::string const& text : localTexts())
        texts.push_back(text);
    for (std::string const& text : texts) {
        auto const source = guardedText(text, 1);
        auto const* const utf8 = reinterpret_cast<unsigned char const*>(source->data());
        GuardedDest dest(capacityFor(text.size()));
        Units whole(capacityFor(text.size()));
        unsigned int const needed = UTF8ToUTF16(whole.data(), utf8, static_cast<unsigned int>(whole.size()));
        for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
            Outcome expected{0, ""};
            if (capacity != 0)
                expected = inLargeBuffer(2 * capacity, [&](char* p) {
                    return g_oConverterUTF8.toUTF16(reinterpret_cast<unsigned short*>(p), utf8, capacity - 1,
                                                    ILLCHAR_REPLACE, nullptr, -1);
                });
            Outcome const actual = dest.run(2 * capacity, [&](char* p) {
                return UTF8ToUTF16(reinterpret_cast<unsigned short*>(p), utf8, capacity);
            });
            expectSame(actual, expected, [&] { return hex(text) + " in " + std::to_string(capacity); });
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST(EntryPoints, UTF16ToUTF8AtEveryCapacity)
{
    for (Units text : unitTexts()) {
        text.push_back(0);
        Guarded<unsigned short> source(text.data(), text.size());
        GuardedDest dest(capacityFor(text.size()));
        std::string whole(capacityFor(text.size()), '\0');
        unsigned int const needed = UTF16ToUTF8(reinterpret_cast<unsigned char*>(&whole[0]), source.data(),
                                                static_cast<unsigned int>(whole.size()));
        for (unsigned int capacity = 0; capacity <= needed + 8; ++capacity) {
            Outcome expected{0, ""};
            if (capacity != 0)
                expected = inLargeBuffer(capacity, [&](char* p) {
                    return g_oConverterUTF8.fromUTF16(p, source.data(), capacity - 1, ILLCHAR_REPLACE, nullptr);
                });
            Outcome const actual = dest.run(capacity, [&](char* p) {
                return UTF16ToUTF8(reinterpret_cast<unsigned char*>(p), source.data(), capacity);
            });
            expectSame(actual, expected, [&] { return "in " + std::to_string(capacity); });
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST(EntryPoints, CountsReadNothingAfterTheTerminator)
{
    for (CharSetRow const& row : charSetRows()) {
        for (std::string const& text : localTexts()) {
            auto const source = guardedText(text, row.converter->getNullCharSize());
            std::string const whole = padded(text, row.converter->getNullCharSize()) + std::string(16, '\0');
            EXPECT_EQ(GetNumUnits(source->data(), row.charSet),
                      row.converter->getNumUnits(whole.c_str(), static_cast<unsigned int>(whole.size() - 16)))
                << row.name << ": " << hex(text);
        }
        for (Units text : unitTexts()) {
            auto const length = static_cast<unsigned int>(text.size());
            text.push_back(0);
            Guarded<unsigned short> source(text.data(), text.size());
            EXPECT_EQ(GetNumBytes(source.data(), row.charSet), row.converter->getNumBytes(text.data(), length))
                << row.name;
        }
    }
}

TEST(EntryPoints, CountsOfSimpleText)
{
    unsigned short const units[] = {'a', 0xE9, 0x20AC, 0xD83D, 0xDE00, 0};
    for (CharSetRow const& row : charSetRows()) {
        if (row.converter->getMaxUnitSize() == 1) {
            EXPECT_EQ(GetNumUnits("\x01\x80\xDB\xFF", row.charSet), 4u) << row.name;
            EXPECT_EQ(GetNumBytes(units, row.charSet), 5u) << row.name;
        }
    }
    EXPECT_EQ(GetNumUnits("a\xC3\xA9\xF0\x9F\x98\x80z", KX7CS_UTF8), 4u) << "four bytes count once";
    EXPECT_EQ(GetNumUnits("a\x80z", KX7CS_UTF8), 1u) << "counting ends at a stray byte";
    EXPECT_EQ(GetNumBytes(units, KX7CS_UTF8), 1u + 2 + 3 + 4);
}

TEST(EntryPoints, UnitSizes)
{
    for (CharSetRow const& row : charSetRows()) {
        EXPECT_EQ(GetMinUnitSize(row.charSet), row.converter->getMinUnitSize()) << row.name;
        EXPECT_EQ(GetMaxUnitSize(row.charSet), row.converter->getMaxUnitSize()) << row.name;
        EXPECT_EQ(GetNullCharSize(row.charSet), row.converter->getNullCharSize()) << row.name;
    }
    EXPECT_EQ(GetMinUnitSize(KX7CS_WCP1252), 1u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_WCP1252), 1u);
    EXPECT_EQ(GetNullCharSize(KX7CS_WCP1252), 1u);
    EXPECT_EQ(GetMinUnitSize(KX7CS_UTF8), 1u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_UTF8), 3u);
    EXPECT_EQ(GetNullCharSize(KX7CS_UTF8), 1u);
    EXPECT_EQ(GetMaxUnitSize(KX7CS_ISO_2022JP), 3u) << "a set without a converter is UTF-8";
}

TEST(EntryPoints, OSDefaultConvertsAsTheCharSetItStandsFor)
{
    KX7CharSetConverter& osDefault = *g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT);
    char const* const text = "caf\xE9 \xA4";
    unsigned char utf8[32];
    Outcome const expected = referenceThroughUTF16(osDefault, text, g_oConverterUTF8, sizeof utf8, 1);
    EXPECT_EQ(LocalToUTF8(utf8, text, sizeof utf8, KX7CS_OS_DEFAULT), expected.result);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), expected.dest.c_str());
    EXPECT_EQ(GetNumUnits(text, KX7CS_OS_DEFAULT), osDefault.getNumUnits(text, 0xFFFFFFFF));
    EXPECT_EQ(GetMaxUnitSize(KX7CS_OS_DEFAULT), osDefault.getMaxUnitSize());
}

TEST(EntryPoints, ACharSetWithoutConverterIsUTF8)
{
    unsigned char utf8[32];
    for (int const number : {50220, 51950, 1201, 12001, 0, 437}) {
        EXPECT_EQ(LocalToUTF8(utf8, "\xC3\xA9\xE9!", sizeof utf8, static_cast<KX7CharSet>(number)), 6u) << number;
        EXPECT_STREQ(reinterpret_cast<char*>(utf8), u8"\u00E9\uFFFD!") << number;
    }
}

TEST(EntryPoints, FirstStepsInBothDirections)
{
    unsigned char utf8[64];
    EXPECT_EQ(LocalToUTF8(utf8, "caf\xE9", sizeof utf8, KX7CS_WCP1252), 5u);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), "caf\xC3\xA9");
    char local[64];
    EXPECT_EQ(UTF8ToLocal(local, utf8, sizeof local, KX7CS_WCP1252), 4u);
    EXPECT_STREQ(local, "caf\xE9");
    unsigned short units[64];
    EXPECT_EQ(LocalToUTF16(units, "\x80", 64, KX7CS_WCP1252), 1u);
    EXPECT_EQ(units[0], 0x20AC);
    EXPECT_EQ(UTF16ToLocal(local, units, sizeof local, KX7CS_WCP1252), 1u);
    EXPECT_STREQ(local, "\x80");
    EXPECT_EQ(UTF8ToUTF16(units, asUTF8(u8"\U0001F600"), 64), 2u);
    EXPECT_EQ(units[0], 0xD83D);
    EXPECT_EQ(units[1], 0xDE00);
    EXPECT_EQ(units[2], 0);
    EXPECT_EQ(UTF16ToUTF8(utf8, units, sizeof utf8), 4u);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), u8"\U0001F600");
    EXPECT_EQ(UTF16ToLocal(local, units, sizeof local, KX7CS_WCP1251), 2u) << "each half is replaced";
    EXPECT_STREQ(local, "??");
}

TEST(EntryPoints, EmptySourceStoresTheTerminatorOnly)
{
    for (CharSetRow const& row : charSetRows()) {
        unsigned int const terminator = row.converter->getNullCharSize();
        std::string const fill(10, static_cast<char>(FILL));
        std::string const wideEmpty(4, '\0');
        auto const afterTerminator = [&](unsigned int bytes) { return std::string(bytes, '\0') + fill.substr(bytes); };
        Outcome outcome = inLargeBuffer(10, [&](char* p) {
            return LocalToUTF8(reinterpret_cast<unsigned char*>(p), wideEmpty.data(), 10, row.charSet);
        });
        EXPECT_EQ(outcome.result, 0u) << row.name;
        EXPECT_EQ(outcome.dest, afterTerminator(1)) << row.name;
        outcome = inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8(""), 10, row.charSet); });
        EXPECT_EQ(outcome.result, 0u) << row.name;
        EXPECT_EQ(outcome.dest, afterTerminator(terminator)) << row.name;
        outcome = inLargeBuffer(10, [&](char* p) {
            return LocalToUTF16(reinterpret_cast<unsigned short*>(p), wideEmpty.data(), 5, row.charSet);
        });
        EXPECT_EQ(outcome.result, 0u) << row.name;
        EXPECT_EQ(outcome.dest, afterTerminator(2)) << row.name;
        unsigned short const noUnits[] = {0};
        outcome = inLargeBuffer(10, [&](char* p) { return UTF16ToLocal(p, noUnits, 10, row.charSet); });
        EXPECT_EQ(outcome.result, 0u) << row.name;
        EXPECT_EQ(outcome.dest, afterTerminator(terminator)) << row.name;
    }
}

TEST(EntryPoints, LocalToUTF8OfAnEmptySourceTakesOneByte)
{
    unsigned char dest[10];
    memset(dest, FILL, sizeof dest);
    EXPECT_EQ(LocalToUTF8(dest, "", 10, KX7CS_WCP1252), 0u);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(dest[1], FILL);
}

TEST(EntryPoints, LocalToUTF8WithSizeZeroTouchesNothing)
{
    unsigned char dest[4];
    memset(dest, FILL, sizeof dest);
    EXPECT_EQ(LocalToUTF8(dest, "abc", 0, KX7CS_WCP1252), 0u);
    EXPECT_EQ(dest[0], FILL);
    EXPECT_EQ(LocalToUTF8(dest, "", 0, KX7CS_WCP1252), 0u);
    EXPECT_EQ(dest[0], FILL);
}

TEST(EntryPoints, LocalToUTF16WithSizeOneWritesTheTerminatorOnly)
{
    unsigned short dest[4] = {0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE};
    EXPECT_EQ(LocalToUTF16(dest, "abc", 1, KX7CS_WCP1252), 0u);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(dest[1], 0xEEEE);
}

TEST(EntryPoints, UTF16ToUTF8OfSizeFourStoresAtMostThreeBytes)
{
    struct {
        Units units;
        std::string bytes;
    } const rows[] = {
        {{'a', 'b', 'c', 'd', 0}, "abc"}, {{0x20AC, 'a', 0}, u8"\u20AC"}, {{0xE9, 0xE9, 0}, u8"\u00E9"},
        {{0xD83D, 0xDE00, 0}, ""},        {{'a', 'b', 0xE9, 0}, "ab"},
    };
    for (auto const& row : rows) {
        unsigned char dest[6];
        memset(dest, FILL, sizeof dest);
        EXPECT_EQ(UTF16ToUTF8(dest, row.units.data(), 4), row.bytes.size());
        EXPECT_STREQ(reinterpret_cast<char*>(dest), row.bytes.c_str());
        EXPECT_EQ(dest[4], FILL);
    }
}

TEST(EntryPoints, ASourceThatConvertsToNothingLeavesTheDestination)
{
    for (CharSetRow const& row : charSetRows()) {
        Outcome const outcome =
            inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8("\x80\x80\xBF"), 10, row.charSet); });
        EXPECT_EQ(outcome.result, 0u) << row.name;
        EXPECT_EQ(outcome.dest, std::string(10, static_cast<char>(FILL))) << row.name;
    }
    unsigned char dest[4];
    memset(dest, FILL, sizeof dest);
    EXPECT_EQ(LocalToUTF8(dest, "\x80", sizeof dest, KX7CS_UTF8), 0u);
    EXPECT_EQ(dest[0], FILL);
}

TEST(EntryPoints, ALeadingOverlongZeroEndsTheTextButStoresTheTerminator)
{
    unsigned char dest[4];
    memset(dest, FILL, sizeof dest);
    EXPECT_EQ(LocalToUTF8(dest,
                          "\xC0\x80"
                          "abc",
                          sizeof dest, KX7CS_UTF8),
              0u);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(dest[1], FILL);
    char local[4];
    memset(local, 'x', sizeof local);
    EXPECT_EQ(UTF8ToLocal(local,
                          asUTF8("a\xC0\x80"
                                 "abc"),
                          sizeof local, KX7CS_WCP1252),
              1u);
    EXPECT_STREQ(local, "a");
}

TEST(EntryPoints, NegativeSizesCountAsUnlimitedWhereTheyPass)
{
    unsigned short const units[] = {'a', 0xE9, 0};
    for (int const size : {-1, -2, -1000, INT_MIN + 1, INT_MIN}) {
        Outcome outcome = inLargeBuffer(
            8, [&](char* p) { return LocalToUTF8(reinterpret_cast<unsigned char*>(p), "a\xE9", size, KX7CS_WCP1252); });
        EXPECT_EQ(outcome.result, 3u) << size;
        EXPECT_STREQ(outcome.dest.c_str(), u8"a\u00E9") << size;
        outcome = inLargeBuffer(
            8, [&](char* p) { return LocalToUTF8(reinterpret_cast<unsigned char*>(p), "", size, KX7CS_WCP1252); });
        EXPECT_EQ(outcome.result, 0u) << size;
        EXPECT_EQ(outcome.dest[0], 0) << size;
        outcome = inLargeBuffer(8, [&](char* p) { return UTF8ToLocal(p, asUTF8(u8"a\u00E9"), size, KX7CS_WCP1252); });
        EXPECT_EQ(outcome.result, 2u) << size;
        EXPECT_STREQ(outcome.dest.c_str(), "a\xE9") << size;
        outcome = inLargeBuffer(8, [&](char* p) { return UTF16ToLocal(p, units, size, KX7CS_WCP1252); });
        EXPECT_EQ(outcome.result, 2u) << size;
        EXPECT_STREQ(outcome.dest.c_str(), "a\xE9") << size;
    }
}

TEST(EntryPoints, LocalToUTF16RefusesNegativeSizes)
{
    for (int const size : {0, -1, -2, INT_MIN}) {
        unsigned short dest[4] = {0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE};
        EXPECT_EQ(LocalToUTF16(dest, "a", size, KX7CS_WCP1252), 0u) << size;
        EXPECT_EQ(dest[0], 0xEEEE) << size;
    }
}

TEST(EntryPoints, UnsignedSizesReachAllTheWay)
{
    unsigned short units[4];
    EXPECT_EQ(UTF8ToUTF16(units, asUTF8("abc"), 0xFFFFFFFF), 3u);
    EXPECT_EQ(units[3], 0);
    unsigned char utf8[4];
    EXPECT_EQ(UTF16ToUTF8(utf8, units, 0xFFFFFFFF), 3u);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), "abc");
    EXPECT_EQ(LocalToUTF16(units, "abc", INT_MAX, KX7CS_WCP1252), 3u);
    EXPECT_EQ(LocalToUTF8(utf8, "abc", INT_MAX, KX7CS_WCP1252), 3u);
}

TEST(EntryPoints, NullArgumentsLeaveTheDestination)
{
    unsigned short const units[] = {'a', 0};
    for (CharSetRow const& row : charSetRows()) {
        KX7CharSet const cs = row.charSet;
        std::function<unsigned int(char*)> const nullSources[] = {
            [&](char* p) { return LocalToUTF8(reinterpret_cast<unsigned char*>(p), nullptr, 8, cs); },
            [&](char* p) { return UTF8ToLocal(p, nullptr, 8, cs); },
            [&](char* p) { return LocalToUTF16(reinterpret_cast<unsigned short*>(p), nullptr, 4, cs); },
            [&](char* p) { return UTF16ToLocal(p, nullptr, 8, cs); },
            [&](char* p) { return UTF8ToUTF16(reinterpret_cast<unsigned short*>(p), nullptr, 4); },
            [&](char* p) { return UTF16ToUTF8(reinterpret_cast<unsigned char*>(p), nullptr, 8); },
        };
        for (auto const& call : nullSources) {
            Outcome const outcome = inLargeBuffer(8, call);
            EXPECT_EQ(outcome.result, 0u) << row.name << ", function " << &call - nullSources;
            EXPECT_EQ(outcome.dest, std::string(8, static_cast<char>(FILL)))
                << row.name << ", function " << &call - nullSources;
        }
        EXPECT_EQ(LocalToUTF8(nullptr, "a\0\0\0", 8, cs), 0u) << row.name;
        EXPECT_EQ(UTF8ToLocal(nullptr, asUTF8("a"), 8, cs), 0u) << row.name;
        EXPECT_EQ(LocalToUTF16(nullptr, "a\0\0\0", 8, cs), 0u) << row.name;
        EXPECT_EQ(UTF16ToLocal(nullptr, units, 8, cs), 0u) << row.name;
        EXPECT_EQ(GetNumUnits(nullptr, cs), 0u) << row.name;
        EXPECT_EQ(GetNumBytes(nullptr, cs), 0u) << row.name;
        EXPECT_EQ(LocalToUTF8(nullptr, nullptr, 0, cs), 0u) << row.name;
        EXPECT_EQ(UTF8ToLocal(nullptr, nullptr, 0, cs), 0u) << row.name;
    }
    EXPECT_EQ(UTF8ToUTF16(nullptr, asUTF8("a"), 8), 0u);
    EXPECT_EQ(UTF16ToUTF8(nullptr, units, 8), 0u);
}

namespace {

/** A converter registered for a number of its own, with the terminator size given. */
ForeignConverter& foreign(unsigned int nullCharSize)
{
    static ForeignConverter one(static_cast<KX7CharSet>(71001), 1);
    static ForeignConverter two(static_cast<KX7CharSet>(71002), 2);
    static ForeignConverter four(static_cast<KX7CharSet>(71004), 4);
    ForeignConverter& converter = nullCharSize == 1 ? one : nullCharSize == 2 ? two : four;
    g_oCnvtMgr.insert(static_cast<KX7CharSet>(71000 + static_cast<int>(nullCharSize)), &converter, true);
    converter.toCalls.clear();
    converter.fromCalls.clear();
    return converter;
}

KX7CharSet foreignCharSet(unsigned int nullCharSize)
{
    return static_cast<KX7CharSet>(71000 + static_cast<int>(nullCharSize));
}

}  // namespace

TEST(EntryPoints, LocalToUTF8GivesTheConverterOneUnitPerByte)
{
    ForeignConverter& converter = foreign(1);
    unsigned char dest[4];
    EXPECT_EQ(LocalToUTF8(dest, "abcdef", sizeof dest, foreignCharSet(1)), 2u) << "three bytes hold one character";
    ASSERT_EQ(converter.toCalls.size(), 1u);
    EXPECT_EQ(converter.toCalls[0].text, "abcdef");
    EXPECT_EQ(converter.toCalls[0].capacity, 6u);
    EXPECT_EQ(converter.toCalls[0].op, ILLCHAR_REPLACE);
    EXPECT_EQ(converter.toCalls[0].illegal, nullptr);
    EXPECT_EQ(converter.toCalls[0].sourceLimit, -1);
}

TEST(EntryPoints, TwoStepConversionKeepsCapacityForTheTargetsTerminator)
{
    for (unsigned int const terminator : {1u, 2u, 4u}) {
        ForeignConverter& converter = foreign(terminator);
        char dest[10];
        EXPECT_EQ(UTF8ToLocal(dest, asUTF8("abc"), sizeof dest, foreignCharSet(terminator)), 3u);
        ASSERT_EQ(converter.fromCalls.size(), 1u);
        EXPECT_EQ(converter.fromCalls[0].text, (Units{'a', 'b', 'c'}));
        EXPECT_EQ(converter.fromCalls[0].capacity, 10 - terminator);
        EXPECT_EQ(converter.fromCalls[0].op, ILLCHAR_REPLACE);
        EXPECT_EQ(converter.fromCalls[0].illegal, nullptr);
    }
}

TEST(EntryPoints, DirectConversionKeepsCapacityForTheTerminator)
{
    unsigned short const units[] = {'a', 'b', 0};
    for (unsigned int const terminator : {1u, 2u, 4u}) {
        ForeignConverter& converter = foreign(terminator);
        char dest[10];
        EXPECT_EQ(UTF16ToLocal(dest, units, sizeof dest, foreignCharSet(terminator)), 2u);
        ASSERT_EQ(converter.fromCalls.size(), 1u);
        EXPECT_EQ(converter.fromCalls[0].capacity, 10 - terminator);
        EXPECT_EQ(converter.fromCalls[0].op, ILLCHAR_REPLACE);
        EXPECT_EQ(converter.fromCalls[0].illegal, nullptr);
        unsigned short back[7];
        EXPECT_EQ(LocalToUTF16(back, "ab", 7, foreignCharSet(terminator)), 2u);
        ASSERT_EQ(converter.toCalls.size(), 1u);
        EXPECT_EQ(converter.toCalls[0].capacity, 6u) << "one unit, whatever the terminator in bytes";
        EXPECT_EQ(converter.toCalls[0].op, ILLCHAR_REPLACE);
        EXPECT_EQ(converter.toCalls[0].illegal, nullptr);
        EXPECT_EQ(converter.toCalls[0].sourceLimit, -1);
    }
}

TEST(EntryPoints, ATerminatorThatDoesNotFitMeansNothingIsDone)
{
    unsigned short const units[] = {'a', 0};
    for (unsigned int const terminator : {1u, 2u, 4u}) {
        foreign(terminator);
        for (unsigned int capacity = 0; capacity < terminator; ++capacity) {
            auto const size = static_cast<int>(capacity);
            for (char const* const source : {"a", ""}) {
                Outcome const outcome = inLargeBuffer(
                    8, [&](char* p) { return UTF8ToLocal(p, asUTF8(source), size, foreignCharSet(terminator)); });
                EXPECT_EQ(outcome.result, 0u);
                EXPECT_EQ(outcome.dest, std::string(8, static_cast<char>(FILL))) << terminator << " in " << capacity;
            }
            Outcome const outcome =
                inLargeBuffer(8, [&](char* p) { return UTF16ToLocal(p, units, size, foreignCharSet(terminator)); });
            EXPECT_EQ(outcome.result, 0u);
            EXPECT_EQ(outcome.dest, std::string(8, static_cast<char>(FILL))) << terminator << " in " << capacity;
        }
    }
}

TEST(EntryPoints, UTF8ToLocalOfAnEmptySourceStoresAFullTerminator)
{
    for (unsigned int const terminator : {1u, 2u, 4u}) {
        ForeignConverter& converter = foreign(terminator);
        Outcome const outcome =
            inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8(""), 10, foreignCharSet(terminator)); });
        EXPECT_EQ(outcome.result, 0u);
        EXPECT_EQ(outcome.dest, std::string(terminator, '\0') + std::string(10 - terminator, static_cast<char>(FILL)));
        EXPECT_TRUE(converter.fromCalls.empty());
    }
}

TEST(EntryPoints, UTF8ToLocalKeepsTwoBytesForTheTerminatorOfUTF16)
{
    Outcome outcome = inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8(""), 10, KX7CS_UTF16); });
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.dest, std::string(2, '\0') + std::string(8, static_cast<char>(FILL)));
    outcome = inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8("a"), 1, KX7CS_UTF16); });
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.dest, std::string(10, static_cast<char>(FILL)));
    outcome = inLargeBuffer(10, [&](char* p) { return UTF8ToLocal(p, asUTF8("abc"), 6, KX7CS_UTF16); });
    EXPECT_EQ(outcome.result, 4u) << "two units and the terminator";
    char16_t const units[] = {u'a', u'b', 0};
    EXPECT_EQ(outcome.dest,
              std::string(reinterpret_cast<char const*>(units), 6) + std::string(4, static_cast<char>(FILL)));
    outcome = inLargeBuffer(12, [&](char* p) { return UTF8ToLocal(p, asUTF8("abc"), 12, KX7CS_UTF32); });
    EXPECT_EQ(outcome.result, 8u) << "two characters and the terminator";
}

TEST(EntryPoints, UTF16AsASourceConvertsToNothingWithoutALimit)
{
    unsigned short const units[] = {0x6162, 0x6364, 0};  // no zero byte at the front in either byte order
    auto const* const text = reinterpret_cast<char const*>(units);
    Outcome outcome = inLargeBuffer(
        10, [&](char* p) { return LocalToUTF8(reinterpret_cast<unsigned char*>(p), text, 10, KX7CS_UTF16); });
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.dest, std::string(10, static_cast<char>(FILL)));
    outcome = inLargeBuffer(
        10, [&](char* p) { return LocalToUTF16(reinterpret_cast<unsigned short*>(p), text, 5, KX7CS_UTF16); });
    EXPECT_EQ(outcome.result, 0u);
    EXPECT_EQ(outcome.dest, std::string(2, '\0') + std::string(8, static_cast<char>(FILL)));
}

TEST(EntryPoints, WideSourcesOfTheTwoStepFunctionGiveNoMoreUnitsThanBytesBeforeTheirFirstZeroByte)
{
    if (!isLittleEndian())
        GTEST_SKIP() << "every UTF-32 text begins with a zero byte";
    unsigned int const text[] = {'a', 'b', 'c', 0};
    unsigned char utf8[10];
    EXPECT_EQ(LocalToUTF8(utf8, reinterpret_cast<char const*>(text), sizeof utf8, KX7CS_UTF32), 1u);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), "a");
    unsigned int const wider[] = {0x1F601, 'b', 0};  // three bytes before the first zero
    EXPECT_EQ(LocalToUTF8(utf8, reinterpret_cast<char const*>(wider), sizeof utf8, KX7CS_UTF32), 5u);
    EXPECT_STREQ(reinterpret_cast<char*>(utf8), u8"\U0001F601b");
}

TEST(WStrlen, CountsUnitsBeforeTheFirstZero)
{
    EXPECT_EQ(KX7CharSetWStrlen(nullptr), 0u);
    for (unsigned int const length : {0u, 1u, 2u, 7u, 8u, 15u, 16u, 17u, 255u, 2048u, 5000u}) {
        Units text(length, 0xD83D);
        text.push_back(0);
        Guarded<unsigned short> guarded(text.data(), text.size());
        EXPECT_EQ(KX7CharSetWStrlen(guarded.data()), length);
        text.insert(text.end(), {'x', 0});
        EXPECT_EQ(KX7CharSetWStrlen(text.data()), length);
    }
    unsigned short const highByteOnly[] = {0x0100, 0xFF00, 0x00FF, 0};
    EXPECT_EQ(KX7CharSetWStrlen(highByteOnly), 3u);
}

TEST(WStrEqual, ComparesUnitByUnit)
{
    struct {
        char const* what;
        Units a, b;
        int equal;
    } const rows[] = {
        {"both empty", {}, {}, 1},
        {"same", {'a', 'b'}, {'a', 'b'}, 1},
        {"prefix", {'a', 'b'}, {'a', 'b', 'c'}, 0},
        {"last unit differs", {'a', 'b'}, {'a', 'c'}, 0},
        {"first unit differs", {'x', 'b'}, {'a', 'b'}, 0},
        {"empty and not", {}, {'a'}, 0},
        {"case", {'A'}, {'a'}, 0},
        {"precomposed and decomposed", {0xE9}, {'e', 0x301}, 0},
        {"high byte differs", {0x161}, {0x261}, 0},
        {"lone surrogates", {0xD800, 0xDC00, 0xD800}, {0xD800, 0xDC00, 0xD800}, 1},
        {"after the zero", {'a', 0, 'x'}, {'a', 0, 'y'}, 1},
    };
    for (auto const& row : rows) {
        Units a = row.a;
        Units b = row.b;
        a.push_back(0);
        b.push_back(0);
        Guarded<unsigned short> ga(a.data(), a.size());
        Guarded<unsigned short> gb(b.data(), b.size());
        EXPECT_EQ(KX7CharSetWStrEqual(ga.data(), gb.data()), row.equal) << row.what;
        EXPECT_EQ(KX7CharSetWStrEqual(gb.data(), ga.data()), row.equal) << row.what;
        EXPECT_EQ(KX7CharSetWStrEqual(ga.data(), ga.data()), 1) << row.what;
        EXPECT_EQ(KX7CharSetWStrEqual(ga.data(), nullptr), 0) << row.what;
        EXPECT_EQ(KX7CharSetWStrEqual(nullptr, gb.data()), 0) << row.what;
    }
}

TEST(WStrEqual, TwoNullsAreEqual)
{
    EXPECT_EQ(KX7CharSetWStrEqual(nullptr, nullptr), 1);
}
