// kx7text tests - tables that find no memory, whichever allocation fails: nothing thrown, nothing lost, no lock kept.
//
// A program of its own, since it brings its own malloc: some tables are from calloc.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/converters/Engine.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/CharProperties.h"
#include "kx7/tables/MappingLists.h"
#include "kx7/text/KX7UCharTable.h"

namespace {

struct Heap {
    size_t calls = 0;
    size_t live = 0;
    size_t failing = 0;  ///< 1: the next allocation fails, 2: the one behind it; 0: none
    bool failsOn = false;
};
// gtest has threads of its own in no test here.
Heap heap;

bool fails()
{
    ++heap.calls;
    if (heap.failing == 1) {
        heap.failing = heap.failsOn ? 1 : 0;
        errno = ENOMEM;
        return true;
    }
    if (heap.failing != 0)
        --heap.failing;
    return false;
}

void* counted(void* memory)
{
    heap.live += memory ? 1 : 0;
    return memory;
}

}  // namespace

extern "C" {
void* __libc_malloc(size_t);
void* __libc_calloc(size_t, size_t);
void __libc_free(void*);

void* malloc(size_t size) noexcept
{
    return fails() ? nullptr : counted(__libc_malloc(size));
}
void* calloc(size_t count, size_t size) noexcept
{
    return fails() ? nullptr : counted(__libc_calloc(count, size));
}
void free(void* memory) noexcept
{
    heap.live -= memory ? 1 : 0;
    __libc_free(memory);
}
}

namespace {

/** Room for a text of 64 units with the longest escapes. */
constexpr unsigned int ROOM = 1024;

struct Text {
    char bytes[ROOM + 4];
    unsigned short units[ROOM + 1];
    unsigned int byteCount;
    unsigned int unitCount;
};

/** Every operation of a converter, with a text that uses each of its tables. */
Text convert(KX7CharSetConverter& converter, std::string const& source)
{
    Text text = {};
    text.unitCount = converter.toUTF16(text.units, source.c_str(), ROOM, ILLCHAR_REPLACE, nullptr, -1);
    unsigned short const units[] = {'a', 0xA5, 0x20AC, 0x3042, 0x4E02, 0x4E2D, 0xAC00, 0xE9, 0xD840, 0xDC0B, 0};
    text.byteCount = converter.fromUTF16(text.bytes, units, ROOM, ILLCHAR_REPLACE, nullptr);
    converter.getNumUnits(source.c_str(), 0xFFFFFFFF);
    converter.getNumBytes(units, 0xFFFFFFFF);
    return text;
}

bool same(Text const& a, Text const& b)
{
    return a.unitCount == b.unitCount && a.byteCount == b.byteCount &&
           std::equal(a.units, a.units + a.unitCount, b.units) && std::equal(a.bytes, a.bytes + a.byteCount, b.bytes);
}

using Maker = std::unique_ptr<KX7CharSetConverter> (*)();

struct Row {
    char const* name;
    std::string source;
    bool triesAgain;  ///< a table that found no memory is asked for again by the next conversion
    Maker make;
};

Row const ROWS[] = {
    {"single-byte", "a\x80\xE9", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterSBCS>(oCP1252map, KX7CS_WCP1252);
     }},
    {"code page 932", "a\x82\xA0\xB1", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterDBCS>(oCP932map, oCP932Type, KX7CS_WCP932);
     }},
    {"Shift_JIS-2004", "a\x82\xA0\x87\xA0", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterDBCSEx>(oSJIS0213_2004map, oCP932Type, KX7CS_SJIS0213);
     }},
    {"EUC-KR", "a\xB0\xA1", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterEUC_CN_KR>(oKSX1001map, KX7CS_EUC_KR);
     }},
    {"EUC-JP", "a\xA4\xA2\x8E\xB1\x8F\xB0\xA1", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterEUC_JP>(oJIS0208map, oJIS0201map, oJIS0212map, KX7CS_EUC_JP);
     }},
    {"GB 18030", "a\xD6\xD0\x81\x30\x84\x36\x94\x39\xFC\x36", true,
     []() -> std::unique_ptr<KX7CharSetConverter> {
         return std::make_unique<KX7CharSetConverterGB18030>(oGBKmap, KX7CS_GB18030);
     }},
};

struct Outcome {
    bool failed;  ///< there was an allocation to fail
    bool threw;
};

/** Runs `run` with its `failing`-th allocation failing, and all behind it if `failsOn`. */
Outcome withFailure(size_t failing, bool failsOn, std::function<void()> const& run)
{
    Outcome outcome = {};
    size_t const before = heap.calls;
    heap.failing = failing;
    heap.failsOn = failsOn;
    try {
        run();
    }
    catch (...) {
        outcome.threw = true;
    }
    outcome.failed = heap.calls - before >= failing;
    heap.failing = 0;
    return outcome;
}

}  // namespace

TEST(LoadAllocation, WhicheverAllocationOfALoadFailsNothingIsThrownOrLeftBehind)
{
    for (Row const& row : ROWS) {
        std::unique_ptr<KX7CharSetConverter> const whole = row.make();
        Text const expected = convert(*whole, row.source);
        EXPECT_GT(expected.unitCount, 1u) << row.name;
        for (bool const failsOn : {false, true}) {
            size_t failing = 1;
            for (;; ++failing) {
                ASSERT_LT(failing, 2000u) << row.name;
                std::unique_ptr<KX7CharSetConverter> converter = row.make();
                size_t const liveBefore = heap.live;
                Text without = {};
                Text after = {};
                Outcome const outcome =
                    withFailure(failing, failsOn, [&] { without = convert(*converter, row.source); });
                after = convert(*converter, row.source);
                EXPECT_FALSE(outcome.threw) << row.name << ", " << failing;
                EXPECT_GE(heap.live, liveBefore);
                converter.reset();
                EXPECT_LT(heap.live, liveBefore) << row.name << ", " << failing << ": tables left behind";
                if (!outcome.failed) {
                    EXPECT_TRUE(same(without, expected)) << row.name;
                    break;
                }
                // No text is lost: what is not mapped has a substitute.
                EXPECT_GT(without.unitCount, 0u) << row.name << ", " << failing;
                EXPECT_GT(without.byteCount, 0u) << row.name << ", " << failing;
                if (failsOn) {
                    EXPECT_TRUE(after.unitCount > 0 && after.byteCount > 0) << row.name << ", " << failing;
                }
            }
            EXPECT_GT(failing, 1u) << row.name << " allocates nothing";
            RecordProperty(std::string(row.name) + (failsOn ? ", from there on" : ", one"),
                           static_cast<int>(failing - 1));
        }
    }
}

// Short texts between UTF-8 and a set look their characters up elsewhere.
TEST(LoadAllocation, OfWhatShortTextsNeed)
{
    unsigned char dest[ROOM + 4];
    auto const* const utf8 = reinterpret_cast<unsigned char const*>("a\xE4\xB8\xAD\xEA\xB0\x80\xC3\xA9");
    for (Row const& row : ROWS) {
        auto const* const source = reinterpret_cast<unsigned char const*>(row.source.c_str());
        std::unique_ptr<KX7CharSetConverter> const converter = row.make();
        kx7::Engine const& engine = *kx7::engineOf(*converter);
        size_t decoded = 0;
        size_t encoded = 0;
        Outcome const outcome = withFailure(1, true, [&] {
            decoded = engine.toUTF8(*converter, source, dest, ROOM);
            encoded = engine.fromUTF8(*converter, utf8, dest, ROOM);
        });
        EXPECT_TRUE(outcome.failed && !outcome.threw) << row.name;
        EXPECT_EQ(decoded, kx7::NOT_STRAIGHT) << row.name;
        EXPECT_EQ(encoded, kx7::NOT_STRAIGHT) << row.name;
        EXPECT_NE(engine.fromUTF8(*converter, reinterpret_cast<unsigned char const*>("a"), dest, ROOM),
                  kx7::NOT_STRAIGHT);
    }
}

TEST(LoadAllocation, OfACaseTable)
{
    unsigned short expected[0x300];
    {
        KX7UCharTable table(toUpperTable, true);
        for (unsigned int unit = 0; unit < 0x300; ++unit)
            expected[unit] = table.getValue(static_cast<unsigned short>(unit));
    }
    EXPECT_EQ(expected[size_t{'a'}], 'A');
    for (size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        size_t const before = heap.live;
        Outcome outcome = {};
        {
            KX7UCharTable table(toUpperTable, true);
            outcome = withFailure(failing, false, [&] { table.load(); });
            EXPECT_FALSE(outcome.threw);
            for (unsigned int unit = 0; unit < 0x300; ++unit) {
                unsigned short const value = table.getValue(static_cast<unsigned short>(unit));
                EXPECT_TRUE(value == expected[unit] || value == 0) << unit << ", " << failing;
            }
        }
        EXPECT_EQ(heap.live, before) << failing;
        if (!outcome.failed)
            break;
    }
}

TEST(LoadAllocation, OfARegistryThatIsAddedTo)
{
    for (size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        size_t const before = heap.live;
        bool done = false;
        {
            CharSetConverterManager registry;
            auto const cs = static_cast<KX7CharSet>(73002);
            Outcome const outcome = withFailure(failing, false, [&] { registry.insert(cs, &g_oConverterKOI8R, true); });
            EXPECT_EQ(registry.getConverter(cs),
                      outcome.threw ? static_cast<KX7CharSetConverter*>(&g_oConverterUTF8) : &g_oConverterKOI8R);
            EXPECT_EQ(registry.getConverter(KX7CS_WCP1252), &g_oConverterWCP1252);
            done = !outcome.failed;
        }
        EXPECT_EQ(heap.live, before) << failing;
        if (done)
            break;
    }
}
