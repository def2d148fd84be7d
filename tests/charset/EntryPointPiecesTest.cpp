// kx7text tests - long texts through the two-step functions, which work in pieces, against one pass over the whole.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "kx7/charset/KX7CharSet.h"
#include "tests/charset/EntryPointReference.h"
#include "tests/support/CharSets.h"
#include "tests/support/Guarded.h"

using kx7test::CharSetRow;
using kx7test::charSetRows;
using kx7test::FILL;
using kx7test::Guarded;
using kx7test::Outcome;
using kx7test::referenceThroughUTF16;

namespace {

/** Units that the functions convert at a time; the tests are hardest around its multiples. */
constexpr size_t PIECE = 2048;

/** What may go wrong where one piece meets the next, as UTF-8. */
struct Element {
    char const* what;
    std::string bytes;
};
Element const ELEMENTS[] = {
    {"letter", "b"},
    {"two bytes", "\xC3\xA9"},
    {"three bytes", "\xE4\xB8\xAD"},
    {"pair", "\xF0\x9F\x98\x80"},
    {"high surrogate", "\xED\xA0\xBD"},
    {"low surrogate", "\xED\xB8\x80"},
    {"overlong zero", "\xC0\x80"},
    {"malformed", "\xC3"},
    {"cut", "\xF0\x9F\x98"},
    {"stray bytes", "\x80\xBF\x80"},
    {"above the last code point", "\xF8\x88\x80\x80"},
};

unsigned int callLocalToUTF8(char* dest, std::string const& text, unsigned int capacity, CharSetRow const& row)
{
    return LocalToUTF8(reinterpret_cast<unsigned char*>(dest), text.c_str(), static_cast<int>(capacity), row.charSet);
}

unsigned int callUTF8ToLocal(char* dest, std::string const& text, unsigned int capacity, CharSetRow const& row)
{
    return UTF8ToLocal(dest, reinterpret_cast<unsigned char const*>(text.c_str()), static_cast<int>(capacity),
                       row.charSet);
}

/** Calls both functions with `text` as their source. */
void checkBoth(CharSetRow const& row, std::string const& text, unsigned int capacity, std::string const& what)
{
    static Guarded<char> memory(1 << 17);
    unsigned int const terminator = row.converter->getNullCharSize();
    std::string const padded = text + std::string(8, '\0');  // ends text of any unit size
    ASSERT_LE(capacity, 1u << 17);
    ASSERT_GE(capacity, 4u);
    char* const dest = memory.data() + (1 << 17) - capacity;

    Outcome expected = referenceThroughUTF16(g_oConverterUTF8, padded.c_str(), *row.converter, capacity, terminator);
    memset(dest, FILL, capacity);
    ASSERT_EQ(callUTF8ToLocal(dest, padded, capacity, row), expected.result) << row.name << ", " << what;
    ASSERT_EQ(memcmp(dest, expected.dest.data(), capacity), 0) << row.name << ", " << what;

    expected = referenceThroughUTF16(*row.converter, padded.c_str(), g_oConverterUTF8, capacity, 1);
    memset(dest, FILL, capacity);
    ASSERT_EQ(callLocalToUTF8(dest, padded, capacity, row), expected.result) << row.name << ", " << what;
    ASSERT_EQ(memcmp(dest, expected.dest.data(), capacity), 0) << row.name << ", " << what;
}

}  // namespace

TEST(EntryPointPieces, TwoElementsOverAPieceBoundary)
{
    for (CharSetRow const& row : charSetRows()) {
        for (size_t const boundary : {PIECE, 2 * PIECE}) {
            for (size_t before = 0; before < 5; ++before) {
                std::string const lead(boundary - before, 'a');
                for (Element const& first : ELEMENTS) {
                    for (Element const& second : ELEMENTS) {
                        std::string const text = lead + first.bytes + second.bytes + "end";
                        checkBoth(row, text, 16384,
                                  std::to_string(boundary - before) + " letters, " + first.what + ", " + second.what);
                        if (HasFatalFailure())
                            return;
                    }
                }
            }
        }
    }
}

TEST(EntryPointPieces, ThreeElementsOverAPieceBoundaryOfUTF8)
{
    CharSetRow const row = {"UTF8", KX7CS_UTF8, &g_oConverterUTF8};
    for (size_t before = 0; before < 5; ++before) {
        std::string const lead(PIECE - before, 'a');
        for (Element const& first : ELEMENTS) {
            for (Element const& second : ELEMENTS) {
                for (Element const& third : ELEMENTS) {
                    checkBoth(row, lead + first.bytes + second.bytes + third.bytes, 8192,
                              std::to_string(before) + " before, " + first.what + ", " + second.what + ", " +
                                  third.what);
                    if (HasFatalFailure())
                        return;
                }
            }
        }
    }
}

TEST(EntryPointPieces, ASurrogatePairInTwoEncodedHalvesBecomesOneCharacter)
{
    for (size_t before = 0; before < 4; ++before) {
        std::string const lead(PIECE - before, 'a');
        std::string const text = lead + "\xED\xA0\xBD\xED\xB8\x80!";
        std::vector<unsigned char> dest(8192);
        EXPECT_EQ(LocalToUTF8(dest.data(), text.c_str(), 8192, KX7CS_UTF8), lead.size() + 5);
        EXPECT_EQ(reinterpret_cast<char*>(dest.data()), lead + "\xF0\x9F\x98\x80!");
    }
}

TEST(EntryPointPieces, ALoneHighSurrogateAtTheEndOfAPieceIsReplacedOnce)
{
    for (char const* const rest : {"", "\x80\x80", "x", "\x80x", "\xED\xA0\xBD"}) {
        for (size_t before = 0; before < 4; ++before) {
            std::string const lead(PIECE - before, 'a');
            std::string const text = lead + "\xED\xA0\xBD" + rest;
            std::string expected = lead + '?';
            if (strchr(rest, 'x'))
                expected += 'x';
            if (*rest == '\xED')
                expected += '?';
            std::vector<unsigned char> dest(8192);
            EXPECT_EQ(LocalToUTF8(dest.data(), text.c_str(), 8192, KX7CS_UTF8), expected.size());
            EXPECT_EQ(reinterpret_cast<char*>(dest.data()), expected);
        }
    }
}

TEST(EntryPointPieces, EveryCapacityAroundWhatAPieceTakes)
{
    for (char const* const tail : {u8"\u4E2D\U0001F600\u00E9x\U0001F600", "\xED\xA0\xBD\xED\xB8\x80z"}) {
        for (size_t before = 0; before < 3; ++before) {
            std::string const text = std::string(PIECE - before, 'a') + tail;
            for (CharSetRow const& row : charSetRows()) {
                for (unsigned int capacity = PIECE - 4; capacity < PIECE + 24; ++capacity) {
                    checkBoth(row, text, capacity, std::to_string(before) + " before, in " + std::to_string(capacity));
                    if (HasFatalFailure())
                        return;
                }
            }
        }
    }
}

TEST(EntryPointPieces, ManyPiecesWithoutASingleCharacterOfOneByte)
{
    for (Element const& element : ELEMENTS) {
        std::string text;
        while (text.size() < 5 * PIECE * element.bytes.size())
            text += element.bytes;
        for (CharSetRow const& row : charSetRows()) {
            checkBoth(row, text, 1 << 17, element.what);
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(EntryPointPieces, RandomLongTexts)
{
    std::mt19937 random(7);
    auto const below = [&random](size_t n) { return static_cast<size_t>(random() % n); };
    size_t const elements = sizeof ELEMENTS / sizeof *ELEMENTS;
    size_t const overlongZero = 6;
    ASSERT_STREQ(ELEMENTS[overlongZero].what, "overlong zero");
    for (CharSetRow const& row : charSetRows()) {
        for (int round = 0; round < 40; ++round) {
            size_t const length = PIECE * below(7) + below(2 * PIECE);
            size_t const plain = 1 + below(200);
            std::string text;
            while (text.size() <= length) {
                if (below(plain) != 0) {
                    text += static_cast<char>(' ' + below(95));
                    continue;
                }
                size_t const which = below(elements);
                // A zero ends the text: a rare one only, or no long text would be left.
                if (which != overlongZero || below(100) == 0)
                    text += ELEMENTS[which].bytes;
            }
            auto const needed = static_cast<unsigned int>(3 * text.size() + 8);
            for (unsigned int const capacity : {needed, static_cast<unsigned int>(4 + below(needed - 4))}) {
                checkBoth(row, text, capacity, "round " + std::to_string(round) + " in " + std::to_string(capacity));
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(EntryPointPieces, RandomBytes)
{
    std::mt19937 random(11);
    for (CharSetRow const& row : charSetRows()) {
        for (int round = 0; round < 20; ++round) {
            std::string text(3 * PIECE + random() % PIECE, 'x');
            for (char& c : text)
                c = static_cast<char>(1 + random() % 255);
            checkBoth(row, text, static_cast<unsigned int>(3 * text.size() + 8), "round " + std::to_string(round));
            if (HasFatalFailure())
                return;
        }
    }
}

TEST(EntryPointPieces, NothingIsReadAfterALongSource)
{
    for (size_t length = PIECE - 3; length < PIECE + 4; ++length) {
        for (Element const& element : ELEMENTS) {
            std::string const text = std::string(length, 'a') + element.bytes;
            Guarded<char> const source(text.c_str(), text.size() + 1);
            for (CharSetRow const& row : charSetRows()) {
                if (row.converter->getNullCharSize() != 1)
                    continue;
                std::string dest(3 * text.size() + 8, '\0');
                Outcome const expected = referenceThroughUTF16(*row.converter, text.c_str(), g_oConverterUTF8,
                                                               static_cast<unsigned int>(dest.size()), 1);
                EXPECT_EQ(LocalToUTF8(reinterpret_cast<unsigned char*>(&dest[0]), source.data(),
                                      static_cast<int>(dest.size()), row.charSet),
                          expected.result)
                    << row.name << ", " << element.what;
            }
            std::string dest(3 * text.size() + 8, '\0');
            Outcome const expected = referenceThroughUTF16(g_oConverterUTF8, text.c_str(), g_oConverterWCP1252,
                                                           static_cast<unsigned int>(dest.size()), 1);
            EXPECT_EQ(UTF8ToLocal(&dest[0], reinterpret_cast<unsigned char const*>(source.data()),
                                  static_cast<int>(dest.size()), KX7CS_WCP1252),
                      expected.result)
                << element.what;
        }
    }
}
