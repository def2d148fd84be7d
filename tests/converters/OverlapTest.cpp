// kx7text tests - the two-step conversions where source and destination overlap: the result is that of separate memory.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"
#include "kx7/convert.h"
#include "kx7/converters/Engine.h"
#include "tests/converters/Foreign.h"
#include "tests/support/AllSets.h"
#include "tests/support/Heap.h"
#include "tests/support/Hex.h"
#include "tests/support/KernelSets.h"
#include "tests/support/OneIn.h"

using namespace kx7test;

namespace {

using kx7::Transit;

Transit const PLAIN{false, ILLCHAR_REPLACE};
Transit const ESCAPING{false, ILLCHAR_ESCAPE};
Transit const UNESCAPING{true, ILLCHAR_REPLACE};

/** A conversion, and the characters that its texts are made of. */
struct Conversion {
    char const* name;
    KX7CharSetConverter& from;
    KX7CharSetConverter& to;
    std::vector<std::string> characters;
    Transit transit;
};

std::vector<Conversion> const& conversions()
{
    static std::vector<Conversion> const all = {
        {"1252 to UTF-8, twice as long", g_oConverterWCP1252, g_oConverterUTF8, {"\xE9"}, PLAIN},
        {"1252 to UTF-8, up to three times as long", g_oConverterWCP1252, g_oConverterUTF8, {"a", "\x80"}, PLAIN},
        {"1251 to UTF-8", g_oConverterWCP1251, g_oConverterUTF8, {"\xC1", " "}, PLAIN},
        {"932 to UTF-8", g_oConverterWCP932, g_oConverterUTF8, {"\x82\xA0", "\xB1", "a"}, PLAIN},
        {"950 to UTF-8", g_oConverterWCP950, g_oConverterUTF8, {"\xA4\x40"}, PLAIN},
        {"950 to UTF-8, malformed", g_oConverterWCP950, g_oConverterUTF8, {"\xFF", "\xA4", "x"}, PLAIN},
        {"GB 18030 to UTF-8, shorter", g_oConverterGB18030, g_oConverterUTF8, {"\x81\x30\x81\x30"}, PLAIN},
        {"escapes to UTF-8", g_oConverterUTF16Esc, g_oConverterUTF8, {"U+20AC", "U", "\xE9"}, PLAIN},
        {"1252 to UTF-8, unescaped", g_oConverterWCP1252, g_oConverterUTF8, {"\xE9", "U+00E9", "U"}, UNESCAPING},
        {"UTF-8 to UTF-8", g_oConverterUTF8, g_oConverterUTF8, {"\xE2\x82\xAC", "a"}, PLAIN},
        {"UTF-8 to UTF-8, malformed", g_oConverterUTF8, g_oConverterUTF8, {"\xFF", "\xC3", "a"}, PLAIN},
        {"UTF-8 to 1252, half as long", g_oConverterUTF8, g_oConverterWCP1252, {"\xC3\xA9"}, PLAIN},
        {"UTF-8 to 1252, ASCII", g_oConverterUTF8, g_oConverterWCP1252, {"a"}, PLAIN},
        {"UTF-8 to 1251, mixed", g_oConverterUTF8, g_oConverterWCP1251, {"\xD1\x84", "a", "\xE4\xB8\xAD"}, PLAIN},
        {"UTF-8 to 1252, escaped", g_oConverterUTF8, g_oConverterWCP1252, {"\xE4\xB8\xAD", "\xC3\xA9"}, ESCAPING},
        {"UTF-8 to 932", g_oConverterUTF8, g_oConverterWCP932, {"\xE3\x81\x82", "a"}, PLAIN},
        {"UTF-8 to GB 18030, twice as long", g_oConverterUTF8, g_oConverterGB18030, {"\xC2\x81"}, PLAIN},
        {"UTF-8 to UTF-16", g_oConverterUTF8, g_oConverterUTF16, {"a", "\xC3\xA9"}, PLAIN},
        {"UTF-8 to UTF-32", g_oConverterUTF8, g_oConverterUTF32, {"a", "\xF0\x9F\x98\x80"}, PLAIN},
        {"UTF-8 to escapes", g_oConverterUTF8, g_oConverterUTF16Esc, {"\xC3\xA9", "a"}, PLAIN},
        // Text without zero bytes: it ends after as many units as it has bytes before the first of them.
        {"UTF-32 to UTF-8, shorter", g_oConverterUTF32, g_oConverterUTF8, {"\x61\xE9\x10\x7F", "zzzz"}, PLAIN},
        {"UTF-32 to UTF-32", g_oConverterUTF32, g_oConverterUTF32, {"\x61\xE9\x10\x7F"}, PLAIN},
    };
    return all;
}

/** `length` bytes, or a few less so as to end with a character, without their terminator. */
std::string textOf(Conversion const& c, size_t length)
{
    std::string text;
    for (size_t i = 0;; ++i) {
        std::string const& character = c.characters[(i / 7 + i) % c.characters.size()];
        if (text.size() + character.size() > length)
            return text;
        text += character;
    }
}

std::string terminated(Conversion const& c, std::string const& text)
{
    return text + std::string(c.from.getNullCharSize(), '\0');
}

unsigned int convert(Conversion const& c, void* dest, void const* source, unsigned int capacity)
{
    return kx7::convertThroughUTF16(c.from, static_cast<char const*>(source), c.to, dest,
                                    capacity - c.to.getNullCharSize(), c.transit);
}

/** The bytes written, the terminator included, where source and destination are separate. */
std::string apart(Conversion const& c, std::string const& text, size_t capacity)
{
    std::string result(capacity, '\0');
    result.resize(convert(c, result.data(), terminated(c, text).c_str(), static_cast<unsigned int>(capacity)) +
                  c.to.getNullCharSize());
    return result;
}

/**
 * The text, and the destination `distance` bytes after it, in one buffer. The destination has place for what is
 * written; its capacity may be said to be more.
 */
testing::AssertionResult isAsApart(Conversion const& c, std::string const& text, std::string const& expected,
                                   ptrdiff_t distance, unsigned int capacity, bool hasMemory)
{
    constexpr size_t FENCE = 64;
    size_t const before = distance < 0 ? static_cast<size_t>(-distance) : 0;
    size_t const after = distance > 0 ? static_cast<size_t>(distance) : 0;
    std::string const whole = terminated(c, text);
    std::string buffer(FENCE + before + after + whole.size() + expected.size() + FENCE, '\x7F');
    size_t const source = FENCE + before;
    size_t const dest = FENCE + after;
    buffer.replace(source, whole.size(), whole);
    std::string const original = buffer;
    std::string converted = buffer;
    converted.replace(dest, expected.size(), expected);
    bool const overlap = source < dest + expected.size() && dest < source + whole.size();

    HeapWatch watch(HeapWatch::NOTHROW);
    if (!hasMemory)
        watch.failAt(1, true);
    unsigned int const written = convert(c, buffer.data() + dest, buffer.data() + source, capacity);
    auto const failed = [&](char const* what) {
        return testing::AssertionFailure()
               << c.name << ", " << text.size() << " bytes to " << expected.size() << ", destination at " << distance
               << ", capacity " << capacity << (hasMemory ? "" : ", without memory") << ": " << what;
    };
    constexpr size_t PIECE_THAT_IS_ALWAYS_TAKEN = 1700;
    if (watch.freed() != (hasMemory ? watch.made() : 0))
        return failed("memory is not given back");
    if (watch.made() != 0 && (!overlap || text.size() <= PIECE_THAT_IS_ALWAYS_TAKEN))
        return failed("the heap is asked without need");
    if (watch.made() > 1)
        return failed("the heap is asked twice");
    if (!hasMemory && watch.made() != 0)
        return written == 0 && buffer == original ? testing::AssertionSuccess() : failed("something is written");
    if (written != expected.size() - c.to.getNullCharSize())
        return failed("another length");
    return buffer == converted ? testing::AssertionSuccess() : failed("another result, or something else is changed");
}

/** Distances at which the ranges begin to touch, and some between; of texts of so many bytes without terminators. */
std::vector<ptrdiff_t> distances(size_t length, size_t written)
{
    auto const n = static_cast<ptrdiff_t>(length);
    auto const w = static_cast<ptrdiff_t>(written);
    std::vector<ptrdiff_t> all = {-w - 1, -w,    -w + 1, -w / 2, -n,    -2048, -64,   -1,     0,        1,    7,
                                  n / 3,  n / 2, n - 1,  n,      n + 1, n + 3, n + 4, n + 40, n + 7000, 2048, 6200};
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    return all;
}

std::vector<kx7::InstructionSet> plainAndBest()
{
    return {kx7::InstructionSet::PLAIN, kx7::detectInstructionSet()};
}

}  // namespace

TEST(Overlap, EveryConversionAtEveryDistance)
{
    OneIn isTaken(7);
    for (kx7::InstructionSet const set : plainAndBest()) {
        Using const kernels(set);
        for (Conversion const& c : conversions())
            for (size_t const length : {1u, 16u, 100u, 239u, 241u, 300u, 1024u, 1700u, 1793u, 2047u, 2048u, 2049u,
                                        2077u, 4096u, 6143u, 6200u, 20000u, 100000u}) {
                std::string const text = textOf(c, length);
                if (text.empty())
                    continue;
                std::string const expected = apart(c, text, 6 * text.size() + 8);
                for (ptrdiff_t const distance : distances(text.size(), expected.size()))
                    for (unsigned int const capacity :
                         {static_cast<unsigned int>(expected.size()), 0x7FFFFFFFu, 0xFFFFFFFFu})
                        for (bool const hasMemory : {true, false}) {
                            if (!isTaken())
                                continue;
                            ASSERT_TRUE(isAsApart(c, text, expected, distance, capacity, hasMemory)) << nameOf(set);
                        }
            }
    }
}

TEST(Overlap, WhereTheResultIsTruncated)
{
    for (Conversion const& c : conversions())
        for (size_t const length : {100u, 3000u, 9000u}) {
            std::string const text = textOf(c, length);
            std::string const whole = apart(c, text, 6 * text.size() + 8);
            for (size_t const capacity : {whole.size() / 3, whole.size() - 5}) {
                std::string const expected = apart(c, text, capacity);
                for (ptrdiff_t const distance : distances(text.size(), expected.size()))
                    for (bool const hasMemory : {true, false})
                        ASSERT_TRUE(
                            isAsApart(c, text, expected, distance, static_cast<unsigned int>(capacity), hasMemory));
            }
        }
}

TEST(Overlap, AtRandomDistancesAndCapacities)
{
    std::mt19937 random(7);
    for (int round = 0; round < 4000; ++round) {
        Conversion const& c = conversions()[random() % conversions().size()];
        size_t const length = random() % 4 == 0 ? random() % 9000 : random() % 300;
        std::string const text = textOf(c, length);
        if (text.empty())
            continue;
        auto const most = static_cast<unsigned int>(6 * text.size() + 8);
        unsigned int const capacity = random() % 3 == 0 ? 8 + static_cast<unsigned int>(random() % most) : most;
        std::string const expected = apart(c, text, capacity);
        size_t const span = text.size() + expected.size() + 8;
        ptrdiff_t const distance =
            static_cast<ptrdiff_t>(random() % span) - static_cast<ptrdiff_t>(expected.size() + 4);
        ASSERT_TRUE(isAsApart(c, text, expected, distance, capacity, random() % 4 != 0)) << "round " << round;
    }
}

/** The same conversion by an entry point, with source and destination at any distance in one buffer. */
template <class Function>
void expectTheSame(Function const& function, std::string const& text, std::string const& what)
{
    std::vector<char> expected(6 * text.size() + 8);
    unsigned int const written = function(expected.data(), text.c_str(), static_cast<int>(expected.size()));
    for (ptrdiff_t const distance : distances(text.size(), written + size_t{1})) {
        size_t const source = distance < 0 ? static_cast<size_t>(-distance) : 0;
        size_t const dest = distance > 0 ? static_cast<size_t>(distance) : 0;
        std::vector<char> buffer(source + dest + expected.size());
        memcpy(buffer.data() + source, text.c_str(), text.size() + 1);
        ASSERT_EQ(function(buffer.data() + dest, buffer.data() + source, 0x7FFFFFFF), written)
            << what << ", " << text.size() << " bytes, destination at " << distance;
        ASSERT_EQ(memcmp(buffer.data() + dest, expected.data(), written + size_t{1}), 0)
            << what << ", " << text.size() << " bytes, destination at " << distance;
    }
}

// The entry points themselves, which try short texts without UTF-16 first.
TEST(Overlap, OfTheEntryPoints)
{
    for (kx7::InstructionSet const set : plainAndBest()) {
        Using const kernels(set);
        for (MultibyteSet const& row : allSets()) {
            if (row.isWide || &row.converter == &g_oConverterUTF8)
                continue;
            KX7CharSet charSet = KX7CS_OS_DEFAULT;
            for (kx7::CharSetInfo const& info : kx7::charSets())
                if (info.charSet != KX7CS_OS_DEFAULT && &kx7::converterOf(info.charSet) == &row.converter)
                    charSet = info.charSet;
            for (size_t const length : {3u, 40u, 200u, 260u, 2100u, 5000u}) {
                std::string text;
                for (size_t i = 0; text.size() < length; ++i)
                    text += row.byteFragments[i % row.byteFragments.size()].c_str();
                std::vector<unsigned char> utf8(6 * text.size() + 8);
                LocalToUTF8(utf8.data(), text.c_str(), static_cast<int>(utf8.size()), charSet);
                std::string const what = std::string(row.name) + " with " + nameOf(set);
                expectTheSame(
                    [charSet](char* dst, char const* src, int bytes) {
                        return LocalToUTF8(reinterpret_cast<unsigned char*>(dst), src, bytes, charSet);
                    },
                    text, what + " to UTF-8");
                expectTheSame(
                    [charSet](char* dst, char const* src, int bytes) {
                        return UTF8ToLocal(dst, reinterpret_cast<unsigned char const*>(src), bytes, charSet);
                    },
                    reinterpret_cast<char const*>(utf8.data()), what + " from UTF-8");
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

// Where the source begins before the destination, the byte before that may tell that they are apart.
TEST(Overlap, NothingOfThePageBeforeTheDestinationIsRead)
{
    size_t const page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    char* const memory =
        static_cast<char*>(mmap(nullptr, 3 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(static_cast<void*>(memory), MAP_FAILED);
    ASSERT_EQ(mprotect(memory + page, page, PROT_NONE), 0);
    for (Conversion const& c : conversions()) {
        std::string const text = textOf(c, page / 8);
        std::string const expected = apart(c, text, page);
        std::string const whole = terminated(c, text);
        memcpy(memory + page - whole.size(), whole.data(), whole.size());
        ASSERT_EQ(convert(c, memory + 2 * page, memory + page - whole.size(), static_cast<unsigned int>(page)),
                  expected.size() - c.to.getNullCharSize())
            << c.name;
        ASSERT_EQ(memcmp(memory + 2 * page, expected.data(), expected.size()), 0) << c.name;
    }
    munmap(memory, 3 * page);
}

// Such a converter is given the whole text, which is on the heap then in any case.
TEST(Overlap, WithAConverterOfACaller)
{
    DerivedUtf8 derived;
    std::string const text(5000, '\xE9');
    Conversion const c = {"1252 to a caller's", g_oConverterWCP1252, derived, {"\xE9"}, PLAIN};
    std::string const converted = apart(c, text, 20000);
    std::string buffer = text;
    buffer.resize(20000);
    ASSERT_EQ(convert(c, buffer.data(), buffer.data(), 20000) + 1, converted.size());
    EXPECT_EQ(memcmp(buffer.data(), converted.data(), converted.size()), 0);
    buffer = text;
    buffer.resize(20000);
    HeapWatch watch(HeapWatch::NOTHROW);
    watch.failAt(1);
    EXPECT_EQ(convert(c, buffer.data(), buffer.data(), 20000), 0u);
    EXPECT_EQ(buffer.substr(0, text.size()), text);
}
