// kx7text tests - threads that meet in the first lookup of a name, a class or a case.
//
// Each happens for the first time once, so every test here runs in a process of its own.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "kx7/charset/KX7CharSet.h"
#include "kx7/tables/CharProperties.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"

namespace {

constexpr size_t THREADS = 64;

/** Runs `work(0)`, `work(1)` and so on in threads of their own, which start it as nearly at once as can be had. */
void atOnce(std::function<void(size_t)> const& work)
{
    std::atomic<size_t> waiting{THREADS};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < THREADS; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0)
                std::this_thread::yield();
            work(i);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

using PropertyOf = unsigned short (*)(unsigned short unit);

/** Every unit's value as the threads find it, each beginning somewhere else; all alike, and as found later. */
void expectSettled(PropertyOf property)
{
    std::array<std::vector<unsigned short>, THREADS> values;
    atOnce([&](size_t i) {
        values[i].resize(0x10000);
        for (unsigned int k = 0; k < 0x10000; ++k) {
            unsigned int const unit = (k + 0x61 + static_cast<unsigned int>(i) * 0x400) & 0xFFFF;
            values[i][unit] = property(static_cast<unsigned short>(unit));
        }
    });
    for (unsigned int unit = 0; unit < 0x10000; ++unit) {
        for (std::vector<unsigned short> const& mine : values)
            ASSERT_EQ(mine[unit], property(static_cast<unsigned short>(unit))) << std::hex << unit;
    }
}

}  // namespace

TEST(TextFirstUse, OfTheUpperCases)
{
    expectSettled([](unsigned short unit) { return KX7UChar::toUpperCase(unit); });
    EXPECT_EQ(KX7UChar::toUpperCase(0xFF), 0x178);
}

TEST(TextFirstUse, OfTheLowerCases)
{
    expectSettled([](unsigned short unit) { return KX7UChar::toLowerCase(unit); });
    EXPECT_EQ(KX7UChar::toLowerCase(0x178), 0xFF);
}

TEST(TextFirstUse, OfTheClasses)
{
    expectSettled([](unsigned short unit) { return KX7UChar::getCharClass(unit); });
    EXPECT_EQ(KX7UChar::getCharClass(0x41), 0x44);
}

TEST(TextFirstUse, BuildsATableOnce)
{
    kx7::CharRange const ranges[] = {{0x41, 0xFF00, 7}, {0, 0, 0}};
    for (int round = 0; round < 20; ++round) {
        KX7UCharTable table(ranges, false);
        std::array<void const*, THREADS> built;
        std::array<unsigned short, THREADS> last;
        atOnce([&](size_t i) {
            last[i] = table.getValue(0xFF00);
            built[i] = table.load();
        });
        for (size_t i = 0; i < THREADS; ++i) {
            EXPECT_EQ(built[i], built[0]);
            EXPECT_EQ(last[i], 7);
        }
    }
}

TEST(TextFirstUse, OfTheNames)
{
    KX7CharSet const sets[] = {KX7CS_UTF8, KX7CS_WCP1252, KX7CS_ISO_2022JP, KX7CS_GB18030, KX7CS_OS_DEFAULT};
    char const* const names[] = {"KX7CS_UTF8", "KX7CS_WCP1252", "KX7CS_ISO_2022JP", "KX7CS_GB18030",
                                 "KX7CS_OS_DEFAULT"};
    std::array<std::array<char const*, 5>, THREADS> found;
    std::array<std::array<std::string, 5>, THREADS> texts;
    std::array<unsigned int, THREADS> right = {};
    atOnce([&](size_t i) {
        for (size_t k = 0; k < 5; ++k) {
            found[i][k] = KX7CharSetToString(sets[k]);
            texts[i][k] = found[i][k];
            right[i] += KX7CharSetFromString(names[k]) == sets[k];
        }
    });
    for (size_t i = 0; i < THREADS; ++i) {
        EXPECT_EQ(right[i], 5u);
        for (size_t k = 0; k < 5; ++k) {
            EXPECT_EQ(texts[i][k], names[k]);
            EXPECT_EQ(found[i][k], found[0][k]) << "one text for all";
        }
    }
}

TEST(TextFirstUse, OfStringsOfTheirOwn)
{
    std::array<std::string, THREADS> joined;
    atOnce([&](size_t i) {
        KX7UString s(" \xC3\xA9;b;c ", KX7CS_UTF8);
        s.trim().toUpper();
        KX7UString result = s.split(static_cast<unsigned short>(';')).combine(KX7UString("+", KX7CS_UTF8));
        joined[i] = result.c_str(KX7CS_UTF8);
    });
    for (std::string const& each : joined)
        EXPECT_EQ(each, "\xC3\x89+B+C");
}
