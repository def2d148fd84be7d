// kx7text tests - threads that meet in the first conversion of a process.
//
// A converter is used for the first time once, so every test here runs in a process of its own, and no test converts
// with the converter that it is about before its threads do.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/CharSets.h"

using kx7test::CharSetRow;
using kx7test::charSetRows;

namespace {

constexpr int THREADS = 64;

/**
 * Runs `work(0)`, `work(1)` and so on in threads of their own, which start it as nearly at once as can be had: threads
 * that wait spin, so that one is running on each processor when the last one arrives.
 */
template <class Work>
void atOnce(Work const& work)
{
    std::atomic<int> waiting{THREADS};
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            for (int spins = 0; waiting != 0; ++spins)
                if (spins % 1000 == 999)
                    std::this_thread::yield();
            work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

/** Every byte but zero, followed by a terminator of any size. */
std::string everyByte()
{
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte)
        bytes.push_back(static_cast<char>(byte));
    return bytes + std::string(9, '\0');
}

/** Units over the whole of the BMP, surrogates among them, and a pair. */
std::vector<unsigned short> manyUnits()
{
    std::vector<unsigned short> units;
    for (unsigned int unit = 1; unit < 0x10000; unit += unit < 0x800 ? 1 : 61)
        units.push_back(static_cast<unsigned short>(unit));
    units.insert(units.end(), {0xD83D, 0xDE00, 0});
    return units;
}

std::string const BYTES = everyByte();
std::vector<unsigned short> const UNITS = manyUnits();

/** What one thread converts into; made before it starts, so that the conversion is the first thing it does. */
struct Results {
    std::vector<unsigned short> units = std::vector<unsigned short>(BYTES.size() + 1);
    std::string bytes = std::string(UNITS.size() * 6 + 4, '\0');
    unsigned int unitCount = 0;
    unsigned int byteCount = 0;

    void decode(KX7CharSet cs)
    {
        unitCount = LocalToUTF16(units.data(), BYTES.data(), static_cast<int>(units.size()), cs);
    }
    void encode(KX7CharSet cs)
    {
        byteCount = UTF16ToLocal(&bytes[0], UNITS.data(), static_cast<int>(bytes.size()), cs);
    }
};
using AllResults = std::array<Results, THREADS>;

/** What every thread got is what one thread alone gets now. */
void expectSettled(AllResults const& all, CharSetRow const& row)
{
    Results now;
    now.decode(row.charSet);
    now.encode(row.charSet);
    EXPECT_NE(now.byteCount, 0u) << row.name;
    for (Results const& each : all) {
        std::string const thread = row.name + (", thread " + std::to_string(&each - all.data()));
        EXPECT_EQ(each.unitCount, now.unitCount) << thread;
        EXPECT_EQ(each.byteCount, now.byteCount) << thread;
        EXPECT_TRUE(each.units == now.units) << thread;
        EXPECT_TRUE(each.bytes == now.bytes) << thread;
    }
}

class FirstUse : public testing::TestWithParam<CharSetRow> {};

}  // namespace

TEST_P(FirstUse, OfAConverterByManyThreadsInBothDirections)
{
    CharSetRow const row = GetParam();
    AllResults all;
    atOnce([&](int i) {
        Results& mine = all[static_cast<size_t>(i)];
        if (i % 2 == 0)
            mine.decode(row.charSet);
        mine.encode(row.charSet);
        if (i % 2 != 0)
            mine.decode(row.charSet);
    });
    expectSettled(all, row);
}

INSTANTIATE_TEST_SUITE_P(AllCharSets, FirstUse, testing::ValuesIn(charSetRows()),
                         [](auto const& row) { return std::string(row.param.name); });

TEST(FirstUseOf, OneConverterInOneDirection)
{
    AllResults all;
    atOnce([&](int i) { all[static_cast<size_t>(i)].decode(KX7CS_WCP1252); });
    for (Results const& each : all) {
        ASSERT_EQ(each.unitCount, 255u);
        EXPECT_EQ(each.units[0x7F], 0x20AC);
        EXPECT_TRUE(each.units == all[0].units);
    }
}

TEST(FirstUseOf, ManyConvertersOneAfterTheOther)
{
    unsigned short const map[] = {0x41, 0x0061, 0x80, 0x20AC, 0x42, 0x4E00, 0, 0};
    unsigned short const source[] = {0x61, 0x20AC, 0x4E00, 0x42, 0};
    for (int round = 0; round < 50; ++round) {
        KX7CharSetConverterSBCS converter(map, KX7CS_WCP1252);
        std::array<std::array<unsigned short, 4>, THREADS> units = {};
        std::array<std::array<char, 5>, THREADS> bytes = {};
        atOnce([&](int i) {
            auto const mine = static_cast<size_t>(i);
            if (i % 2 == 0)
                converter.toUTF16(units[mine].data(),
                                  "\x80"
                                  "AB",
                                  3, ILLCHAR_REPLACE, nullptr, -1);
            converter.fromUTF16(bytes[mine].data(), source, 4, ILLCHAR_REPLACE, nullptr);
        });
        for (size_t i = 0; i < THREADS; ++i) {
            if (i % 2 == 0) {
                EXPECT_EQ(units[i], (std::array<unsigned short, 4>{0x20AC, 0x61, 0x4E00, 0}));
            }
            EXPECT_STREQ(bytes[i].data(), "A\x80"
                                          "B?");
        }
    }
}

TEST(FirstUseOf, AllConvertersByThreadsThatBeginAtDifferentOnes)
{
    std::vector<CharSetRow> const& rows = charSetRows();
    std::vector<AllResults> all(rows.size());
    atOnce([&](int i) {
        for (size_t k = 0; k < rows.size(); ++k) {
            size_t const which = (k + static_cast<size_t>(i) * 3) % rows.size();
            all[which][static_cast<size_t>(i)].decode(rows[which].charSet);
            all[which][static_cast<size_t>(i)].encode(rows[which].charSet);
        }
    });
    for (size_t k = 0; k < rows.size(); ++k)
        expectSettled(all[k], rows[k]);
}

TEST(FirstUseOf, TheTwoStepFunctions)
{
    std::array<std::string, THREADS> utf8;
    std::array<std::string, THREADS> back;
    atOnce([&](int i) {
        auto const mine = static_cast<size_t>(i);
        std::string buffer(64, '\0');
        auto* const bytes = reinterpret_cast<unsigned char*>(&buffer[0]);
        buffer.resize(LocalToUTF8(bytes, "\xD0\xD1", 64, KX7CS_ISO_8859_5));
        utf8[mine] = buffer;
        buffer.assign(64, '\0');
        buffer.resize(UTF8ToLocal(&buffer[0], reinterpret_cast<unsigned char const*>(u8"\u0105"), 64, KX7CS_WCP1250));
        back[mine] = buffer;
    });
    for (size_t i = 0; i < THREADS; ++i) {
        EXPECT_EQ(utf8[i], u8"\u0430\u0431");
        EXPECT_EQ(back[i], "\xB9");
    }
}

TEST(FirstUseOf, StringsInManyThreads)
{
    std::array<unsigned int, THREADS> lengths;
    atOnce([&](int i) {
        KX7UString const s("\xC1\xC2", i % 2 == 0 ? KX7CS_ISO_8859_5 : KX7CS_WCP1251);
        KX7UString const inDefault("abc");
        KX7UString copy(s);
        copy = inDefault;
        lengths[static_cast<size_t>(i)] = s.length() * 100 + copy.length();
    });
    for (unsigned int const length : lengths)
        EXPECT_EQ(length, 203u);
}

TEST(FirstUseOf, TheCachedConverters)
{
    struct Found {
        KX7CharSetConverter* osDefault[2];
        KX7CharSetConverter* utf8[2];
    };
    std::array<Found, THREADS> found;
    atOnce([&](int i) {
        Found& mine = found[static_cast<size_t>(i)];
        for (int k = 0; k < 2; ++k) {
            mine.osDefault[k] = KX7CharSetConverter::getConverter(KX7CS_OS_DEFAULT);
            mine.utf8[k] = KX7CharSetConverter::getConverter(KX7CS_UTF8);
        }
    });
    KX7CharSetConverter* const osDefault = g_oCnvtMgr.getConverter(KX7CS_OS_DEFAULT);
    for (Found const& each : found) {
        for (int k = 0; k < 2; ++k) {
            EXPECT_EQ(each.osDefault[k], osDefault);
            EXPECT_EQ(each.utf8[k], &g_oConverterUTF8);
        }
    }
}

TEST(FirstUseOf, EveryLookUpInManyThreads)
{
    std::array<int, THREADS> wrong = {};
    atOnce([&](int i) {
        for (int round = 0; round < 50; ++round) {
            for (CharSetRow const& row : charSetRows())
                wrong[static_cast<size_t>(i)] += KX7CharSetConverter::getConverter(row.charSet) != row.converter;
            wrong[static_cast<size_t>(i)] +=
                KX7CharSetConverter::getConverter(static_cast<KX7CharSet>(round)) != &g_oConverterUTF8;
        }
    });
    for (int const count : wrong)
        EXPECT_EQ(count, 0);
}
