// kx7text tests - tables that find no memory, whichever allocation fails: nothing thrown, nothing lost, no lock kept.
//
// A program of its own, since it brings its own malloc: some tables are from calloc.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/convert.h"
#include "kx7/converters/Engine.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/CharProperties.h"
#include "kx7/tables/MappingLists.h"
#include "kx7/text/KX7UCharTable.h"
#include "tests/support/Heap.h"

namespace {

/** space for a text of 64 units with the longest escapes. */
constexpr unsigned int CAPACITY = 1024;

char16_t const UNITS[] = u"a\xA5\x20AC\x3042\x4E02\x4E2D\xAC00\xE9\xD840\xDC0B";

struct Text {
    char bytes[CAPACITY + 4];
    unsigned short units[CAPACITY + 1];
    unsigned int byteCount;
    unsigned int unitCount;
};

/** Every operation of a converter, with a text that uses each of its tables. */
Text convert(KX7CharSetConverter& converter, std::string const& source)
{
    Text text = {};
    text.unitCount = converter.toUTF16(text.units, source.c_str(), CAPACITY, ILLCHAR_REPLACE, nullptr, -1);
    auto const* const units = reinterpret_cast<unsigned short const*>(UNITS);
    text.byteCount = converter.fromUTF16(text.bytes, units, CAPACITY, ILLCHAR_REPLACE, nullptr);
    converter.getNumUnits(source.c_str(), 0xFFFFFFFF);
    converter.getNumBytes(units, 0xFFFFFFFF);
    return text;
}

bool same(Text const& a, Text const& b)
{
    return a.unitCount == b.unitCount && a.byteCount == b.byteCount &&
           std::equal(a.units, a.units + a.unitCount, b.units) && std::equal(a.bytes, a.bytes + a.byteCount, b.bytes);
}

/** Every unit of `text` that does not come from `expected` is U+FFFD. */
bool isPartOf(Text const& text, Text const& expected)
{
    return std::all_of(text.units, text.units + text.unitCount, [&](unsigned short unit) {
        return unit == 0xFFFD || std::count(expected.units, expected.units + expected.unitCount, unit) != 0;
    });
}

/** All converters are made in one place, so that the registry can be told of it once for each class. */
alignas(std::max_align_t) char place[1024];

template <class Converter, class... Arguments>
KX7CharSetConverter* makeHere(Arguments... arguments)
{
    static_assert(sizeof(Converter) <= sizeof place);
    return new (place) Converter(arguments...);
}

struct Destroy {
    void operator()(KX7CharSetConverter* converter) const { converter->~KX7CharSetConverter(); }
};
using Made = std::unique_ptr<KX7CharSetConverter, Destroy>;

struct Row {
    char const* name;
    KX7CharSet charSet;  ///< in the registry
    std::string source;
    KX7CharSetConverter* (*make)();
};

Row const ROWS[] = {
    {"single-byte", static_cast<KX7CharSet>(74000), "a\x80\xE9",
     [] { return makeHere<KX7CharSetConverterSBCS>(oCP1252map, KX7CS_WCP1252); }},
    {"code page 932", static_cast<KX7CharSet>(74001), "a\x82\xA0\xB1",
     [] { return makeHere<KX7CharSetConverterDBCS>(oCP932map, oCP932Type, KX7CS_WCP932); }},
    {"Shift_JIS-2004", static_cast<KX7CharSet>(74002), "a\x82\xA0\x87\xA0",
     [] { return makeHere<KX7CharSetConverterDBCSEx>(oSJIS0213_2004map, oCP932Type, KX7CS_SJIS0213); }},
    {"EUC-KR", static_cast<KX7CharSet>(74003), "a\xB0\xA1",
     [] { return makeHere<KX7CharSetConverterEUC_CN_KR>(oKSX1001map, KX7CS_EUC_KR); }},
    {"EUC-JP", static_cast<KX7CharSet>(74004), "a\xA4\xA2\x8E\xB1\x8F\xB0\xA1",
     [] { return makeHere<KX7CharSetConverterEUC_JP>(oJIS0208map, oJIS0201map, oJIS0212map, KX7CS_EUC_JP); }},
    {"GB 18030", static_cast<KX7CharSet>(74005), "a\xD6\xD0\x81\x30\x84\x36\x94\x39\xFC\x36",
     [] { return makeHere<KX7CharSetConverterGB18030>(oGBKmap, KX7CS_GB18030); }},
};

struct Outcome {
    bool failed;  ///< there was an allocation to fail
    bool threw;   ///< std::bad_alloc
    size_t failedPages;
};

/** Runs `run` with its `failing`-th allocation failing, and all after it if `failsOn`. */
Outcome withFailure(size_t failing, bool failsOn, std::function<void()> const& run)
{
    Outcome outcome = {};
    kx7test::HeapWatch watch;
    watch.failAt(failing, failsOn);
    try {
        run();
    }
    catch (std::bad_alloc const&) {
        outcome.threw = true;
    }
    outcome.failed = watch.hasFailed();
    outcome.failedPages = watch.failedPages();
    return outcome;
}

}  // namespace

TEST(LoadAllocation, WhicheverAllocationOfALoadFailsNothingIsThrownOrLeftBehind)
{
    for (Row const& row : ROWS) {
        Text const expected = convert(*Made(row.make()), row.source);
        EXPECT_GT(expected.unitCount, 1u) << row.name;
        int incomplete = 0;
        for (bool const failsOn : {false, true}) {
            size_t failing = 1;
            for (;; ++failing) {
                ASSERT_LT(failing, 2000u) << row.name;
                Made converter(row.make());
                size_t const liveBefore = kx7test::heap.liveBlocks;
                Text without = {};
                Outcome const outcome =
                    withFailure(failing, failsOn, [&] { without = convert(*converter, row.source); });
                Text const after = convert(*converter, row.source);
                Text const again = convert(*converter, row.source);
                EXPECT_FALSE(outcome.threw) << row.name << ", " << failing;
                EXPECT_GT(kx7test::heap.liveBlocks, liveBefore);
                converter.reset();
                EXPECT_EQ(kx7test::heap.liveBlocks, liveBefore) << row.name << ", " << failing << ": tables leaked";
                if (!outcome.failed) {
                    EXPECT_TRUE(same(without, expected)) << row.name;
                    break;
                }
                // No text is lost: what is not mapped has a substitute.
                EXPECT_GT(without.unitCount, 0u) << row.name << ", " << failing;
                EXPECT_GT(without.byteCount, 0u) << row.name << ", " << failing;
                // A table is asked for again; a page of a table that there is stays missing: kept on purpose.
                EXPECT_TRUE(outcome.failedPages != 0 || same(after, expected)) << row.name << ", " << failing;
                EXPECT_TRUE(isPartOf(after, expected)) << row.name << ", " << failing;
                EXPECT_TRUE(same(again, after)) << row.name << ", " << failing;
                incomplete += same(after, expected) ? 0 : 1;
            }
            EXPECT_GT(failing, 1u) << row.name << " allocates nothing";
            RecordProperty(std::string(row.name) + (failsOn ? ", from there on" : ", one"),
                           static_cast<int>(failing - 1));
        }
        EXPECT_GT(incomplete, 0) << row.name << ": no page was missed";
    }
}

// Short texts between UTF-8 and a set look their characters up elsewhere.
TEST(LoadAllocation, OfWhatShortTextsNeed)
{
    unsigned char dest[CAPACITY + 4];
    auto const* const utf8 = reinterpret_cast<unsigned char const*>("a\xE4\xB8\xAD\xEA\xB0\x80\xC3\xA9");
    for (Row const& row : ROWS) {
        auto const* const source = reinterpret_cast<unsigned char const*>(row.source.c_str());
        Made const converter(row.make());
        kx7::Engine const& engine = *kx7::engineOf(*converter);
        size_t decoded = 0;
        size_t encoded = 0;
        Outcome const outcome = withFailure(1, true, [&] {
            decoded = engine.toUTF8(*converter, source, dest, CAPACITY);
            encoded = engine.fromUTF8(*converter, utf8, dest, CAPACITY);
        });
        EXPECT_TRUE(outcome.failed && !outcome.threw) << row.name;
        EXPECT_EQ(decoded, kx7::NOT_DIRECT) << row.name;
        EXPECT_EQ(encoded, kx7::NOT_DIRECT) << row.name;
        EXPECT_NE(engine.fromUTF8(*converter, reinterpret_cast<unsigned char const*>("a"), dest, CAPACITY),
                  kx7::NOT_DIRECT);
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
    int incomplete = 0;
    for (size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        size_t const before = kx7test::heap.liveBlocks;
        Outcome outcome = {};
        {
            KX7UCharTable table(toUpperTable, true);
            outcome = withFailure(failing, false, [&] { table.load(); });
            EXPECT_FALSE(outcome.threw);
            bool complete = true;
            for (unsigned int unit = 0; unit < 0x300; ++unit) {
                unsigned short const value = table.getValue(static_cast<unsigned short>(unit));
                EXPECT_TRUE(value == expected[unit] || value == 0) << unit << ", " << failing;
                complete = complete && value == expected[unit];
            }
            // As with converters: the table is asked for again, a page is not.
            EXPECT_TRUE(complete || outcome.failedPages != 0) << failing;
            incomplete += complete ? 0 : 1;
        }
        EXPECT_EQ(kx7test::heap.liveBlocks, before) << failing;
        if (!outcome.failed)
            break;
    }
    EXPECT_GT(incomplete, 0) << "no page was missed";
}

TEST(LoadAllocation, OfARegistryThatIsAddedTo)
{
    for (size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        size_t const before = kx7test::heap.liveBlocks;
        bool done = false;
        {
            CharSetConverterManager registry;
            auto const cs = static_cast<KX7CharSet>(73002);
            Outcome const outcome =
                withFailure(failing, false, [&] { registry.insert(cs, &g_oConverterWCP1251, true); });
            EXPECT_EQ(registry.getConverter(cs),
                      outcome.threw ? static_cast<KX7CharSetConverter*>(&g_oConverterUTF8) : &g_oConverterWCP1251);
            EXPECT_EQ(registry.getConverter(KX7CS_WCP1252), &g_oConverterWCP1252);
            done = !outcome.failed;
        }
        EXPECT_EQ(kx7test::heap.liveBlocks, before) << failing;
        if (done)
            break;
    }
}

TEST(LoadAllocation, OfANameThatIsEntered)
{
    auto const cs = static_cast<KX7CharSet>(73003);
    std::string const name(300, 'n');  // more than a KX7UString keeps in itself
    for (size_t failing = 1;; ++failing) {
        ASSERT_LT(failing, 1000u);
        size_t const before = kx7test::heap.liveBlocks;
        bool done = false;
        {
            CharSetConverterManager registry;
            Outcome const outcome = withFailure(
                failing, false, [&] { registry.insertCharSetMap(cs, KX7UString(name.c_str(), KX7CS_UTF8)); });
            EXPECT_EQ(outcome.threw, outcome.failed) << failing;
            // Each direction is there or is not, and the next call enters what is missing.
            std::string const toName = registry.charSetToString(cs);
            EXPECT_TRUE(toName == name || (outcome.threw && toName == "KX7CS_OS_DEFAULT")) << failing;
            KX7CharSet const fromName = registry.charSetFromString(name.c_str());
            EXPECT_TRUE(fromName == cs || (outcome.threw && fromName == KX7CS_OS_DEFAULT)) << failing;
            registry.insertCharSetMap(cs, KX7UString(name.c_str(), KX7CS_UTF8));
            EXPECT_EQ(registry.charSetToString(cs), name) << failing;
            EXPECT_EQ(registry.charSetFromString(name.c_str()), cs) << failing;
            EXPECT_STREQ(registry.charSetToString(KX7CS_WCP1251), "KX7CS_WCP1251") << failing;
            done = !outcome.failed;
        }
        EXPECT_EQ(kx7test::heap.liveBlocks, before) << failing;
        if (done) {
            EXPECT_GT(failing, 4u) << "two strings in two maps";
            break;
        }
    }
}

namespace {

using kx7::ErrorPolicy;

/** What an operation of the layer made, in no memory of its own. */
struct Result {
    char bytes[4 * CAPACITY];
    size_t size;
    unsigned long long errorCount;

    template <class Unit>
    void add(Unit const* text, size_t count)
    {
        memcpy(bytes + size, text, count * sizeof(Unit));
        size += count * sizeof(Unit);
    }
    template <class Whole>
    void take(Whole const& whole)
    {
        add(whole.text.data(), whole.text.size());
        errorCount = whole.errorCount;
    }
    bool operator==(Result const& other) const
    {
        return size == other.size && errorCount == other.errorCount && memcmp(bytes, other.bytes, size) == 0;
    }
};

/** A stream that is given few units at a time and little capacity, and goes on after each error. */
template <class Unit, class Stream, class Source>
void convertInPieces(Stream& stream, Source rest, Result& result)
{
    bool done = false;
    while (!done) {
        Unit destination[Stream::MINIMUM_CAPACITY];
        size_t const count = std::min<size_t>(rest.size(), 3);
        bool const last = count == rest.size();
        kx7::StreamResult const step =
            stream.convert({rest.data(), count}, {destination, Stream::MINIMUM_CAPACITY}, last);
        result.add(destination, step.written);
        rest = rest.after(step.consumed);
        done = last && step.status == kx7::Status::DONE;
    }
    result.errorCount = stream.errorCount();
}

struct Operation {
    char const* name;
    bool makesStrings;  ///< and may throw
    size_t least;       ///< bytes of the result, whatever is not mapped; 0: it stops at errors
    void (*run)(KX7CharSet charSet, std::string const& source, Result& result);
};

kx7::Span<char16_t const> const UNITS_TEXT(UNITS, std::size(UNITS) - 1);
std::u16string_view const UNITS_VIEW(UNITS, std::size(UNITS) - 1);
std::string_view const UTF8_VIEW = "a\xC2\xA5\xE2\x82\xAC\xE3\x81\x82\xE4\xB8\xAD\xC3\xA9";

Operation const OPERATIONS[] = {
    {"decode", true, 4,
     [](KX7CharSet cs, std::string const& source, Result& result) {
         result.take(kx7::decode(source, cs, {ErrorPolicy::REPLACE}));
     }},
    {"decode, strict", true, 0,
     [](KX7CharSet cs, std::string const& source, Result& result) { result.take(kx7::decode(source, cs)); }},
    {"encode", true, 9,
     [](KX7CharSet cs, std::string const&, Result& result) {
         result.take(kx7::encode(UNITS_VIEW, cs, {ErrorPolicy::REPLACE}));
     }},
    {"encode, escapes", true, 9,
     [](KX7CharSet cs, std::string const&, Result& result) {
         result.take(kx7::encode(UNITS_VIEW, cs, {ErrorPolicy::ESCAPE}));
     }},
    {"transcode to UTF-8", true, 2,
     [](KX7CharSet cs, std::string const& source, Result& result) {
         result.take(kx7::transcode(source, cs, KX7CS_UTF8, {ErrorPolicy::REPLACE}));
     }},
    {"transcode from UTF-8", true, 6,
     [](KX7CharSet cs, std::string const&, Result& result) {
         result.take(kx7::transcode(UTF8_VIEW, KX7CS_UTF8, cs, {ErrorPolicy::REPLACE}));
     }},
    {"Decoder", false, 0,
     [](KX7CharSet cs, std::string const& source, Result& result) {
         kx7::Decoder stream(cs);
         convertInPieces<char16_t>(stream, kx7::Span<char const>(source), result);
     }},
    {"Encoder", false, 9,
     [](KX7CharSet cs, std::string const&, Result& result) {
         kx7::Encoder stream(cs, {ErrorPolicy::REPLACE});
         convertInPieces<char>(stream, UNITS_TEXT, result);
     }},
    {"Transcoder", false, 2,
     [](KX7CharSet cs, std::string const& source, Result& result) {
         kx7::Transcoder stream(cs, KX7CS_UTF8, {ErrorPolicy::REPLACE});
         convertInPieces<char>(stream, kx7::Span<char const>(source), result);
     }},
    {"Transcoder to the set", false, 6,
     [](KX7CharSet cs, std::string const&, Result& result) {
         kx7::Transcoder stream(KX7CS_UTF8, cs, {ErrorPolicy::REPLACE});
         convertInPieces<char>(stream, kx7::Span<char const>(UTF8_VIEW), result);
     }},
};

}  // namespace

TEST(LoadAllocation, OfWholeTextsAndStreams)
{
    for (Row const& row : ROWS) {
        g_oCnvtMgr.insert(row.charSet, Made(row.make()).get(), true);
        for (Operation const& operation : OPERATIONS) {
            auto const run = [&](Result& result) {
                result.size = 0;
                operation.run(row.charSet, row.source, result);
            };
            Result expected = {};
            {
                Made const converter(row.make());
                run(expected);
            }
            for (bool const failsOn : {false, true}) {
                bool failed = true;
                for (size_t failing = 1; failed; ++failing) {
                    SCOPED_TRACE(std::string(row.name) + ", " + operation.name + ", " + std::to_string(failing));
                    ASSERT_LT(failing, 2000u);
                    std::string const source = row.source;
                    size_t const liveBefore = kx7test::heap.liveBlocks;
                    Made converter(row.make());
                    Result without = {};
                    Outcome const outcome = withFailure(failing, failsOn, [&] { run(without); });
                    failed = outcome.failed;
                    Result after = {};
                    run(after);
                    converter.reset();
                    EXPECT_EQ(kx7test::heap.liveBlocks, liveBefore);
                    EXPECT_EQ(source, row.source);
                    EXPECT_TRUE(operation.makesStrings || !outcome.threw);
                    // What is not mapped is an error that is counted, and something stands for it.
                    if (!outcome.threw && !(without == expected)) {
                        EXPECT_GT(without.errorCount, operation.least == 0 ? 0 : expected.errorCount);
                        EXPECT_GE(without.size, operation.least);
                    }
                    EXPECT_TRUE(outcome.failedPages != 0 || after == expected);
                    EXPECT_TRUE(failed || (!outcome.threw && without == expected));
                }
            }
        }
    }
}

TEST(LoadAllocation, StreamsThatWereMadeWithoutMemoryGoOnWithIt)
{
    kx7::Options const options = {ErrorPolicy::REPLACE, U'_', kx7::Bom::ADD};
    for (Row const& row : ROWS) {
        g_oCnvtMgr.insert(row.charSet, Made(row.make()).get(), true);
        Result expected[3] = {};
        for (bool const withMemory : {true, false}) {
            SCOPED_TRACE(std::string(row.name) + (withMemory ? ", with memory" : ", without"));
            Made const converter(row.make());
            std::optional<kx7::Decoder> decoder;
            std::optional<kx7::Encoder> encoder;
            std::optional<kx7::Transcoder> transcoder;
            Outcome const outcome = withFailure(withMemory ? 2000 : 1, !withMemory, [&] {
                decoder.emplace(row.charSet, options);
                encoder.emplace(row.charSet, options);
                transcoder.emplace(KX7CS_UTF8, row.charSet, options);
            });
            EXPECT_EQ(outcome.failed, !withMemory);
            Result results[3] = {};
            convertInPieces<char16_t>(*decoder, kx7::Span<char const>(row.source), results[0]);
            convertInPieces<char>(*encoder, UNITS_TEXT, results[1]);
            convertInPieces<char>(*transcoder, kx7::Span<char const>(UTF8_VIEW), results[2]);
            for (size_t i = 0; i < 3; ++i) {
                if (withMemory)
                    expected[i] = results[i];
                EXPECT_TRUE(results[i] == expected[i]) << i;
            }
        }
    }
}
