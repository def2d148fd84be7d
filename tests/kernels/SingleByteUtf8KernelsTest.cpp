// kx7text tests - between UTF-8 and single-byte sets at once against the two steps through UTF-16.
#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "tests/kernels/KernelComparison.h"
#include "tests/support/OneIn.h"
#include "tests/support/SingleByteSets.h"

namespace {

using kx7test::expectAlike;
using kx7test::GuardedCalls;

class SingleByteUtf8Kernels : public kx7test::KernelTest {};

std::string utf8Of(char16_t const unit)
{
    if (unit < 0x80)
        return {static_cast<char>(unit)};
    if (unit < 0x800)
        return {static_cast<char>(0xC0 | unit >> 6), static_cast<char>(0x80 | (unit & 0x3F))};
    return {static_cast<char>(0xE0 | unit >> 12), static_cast<char>(0x80 | (unit >> 6 & 0x3F)),
            static_cast<char>(0x80 | (unit & 0x3F))};
}

/** Two windows of three bytes, a third with a few units, printable ASCII elsewhere, half of a surrogate pair. */
std::vector<unsigned short> farPairs()
{
    std::vector<unsigned short> pairs;
    for (unsigned short byte = 1; byte < 0x60; ++byte)
        pairs.insert(pairs.end(), {byte, static_cast<unsigned short>(byte < 0x20 ? byte : byte ^ 1)});
    for (unsigned short byte = 0x60; byte < 0xA0; ++byte)
        pairs.insert(pairs.end(), {byte, static_cast<unsigned short>(0x3040 + byte - 0x60)});
    for (unsigned short byte = 0xA0; byte < 0xD0; ++byte)
        pairs.insert(pairs.end(), {byte, static_cast<unsigned short>(0xFF00 + byte)});
    for (unsigned short byte = 0xD0; byte < 0xF0; ++byte)
        pairs.insert(pairs.end(), {byte, static_cast<unsigned short>(0x7F0 + byte - 0xD0)});
    pairs.insert(pairs.end(), {0xFD, 0xD83D, 0xFE, 0xDE00, 0xFF, 0xFFFD, 0, 0});
    return pairs;
}

struct Subject {
    std::string name;
    KX7CharSetConverter& converter;
    std::vector<char16_t> letters;  ///< of the bytes from 0x80 on, most often in one script
    std::vector<char16_t> ascii;
};

std::vector<Subject> const& subjects()
{
    static std::vector<unsigned short> const far = farPairs();
    static KX7CharSetConverterSBCS made(far.data(), KX7CS_WCP1252);
    static KX7CharSetConverterSBCS unloaded("none", KX7CS_WCP1252);
    static std::vector<Subject> const all = [] {
        std::vector<Subject> found;
        for (kx7test::SingleByteSet const& set : kx7test::SINGLE_BYTE_SETS)
            found.push_back({set.name, set.converter, {}, {}});
        found.push_back({"made up", made, {}, {}});
        found.push_back({"without a list", unloaded, {u'\u00E9'}, {u'a'}});
        for (Subject& subject : found)
            for (unsigned int byte = 1; byte < 0x100; ++byte) {
                unsigned char const text[] = {static_cast<unsigned char>(byte), 0};
                unsigned short units[2];
                if (subject.converter.toUTF16(units, text, 1, ILLCHAR_STOP, nullptr, -1) == 1)
                    (units[0] < 0x80 ? subject.ascii : subject.letters).push_back(static_cast<char16_t>(units[0]));
            }
        return found;
    }();
    return all;
}

/** Words of letters between ASCII: how many of a hundred characters are ASCII, and how long runs of either are. */
struct Mix {
    unsigned int ascii;
    unsigned int longest;
};
Mix const MIXES[] = {{100, 1}, {0, 1}, {50, 12}, {97, 1}, {50, 300}, {3, 1}};

template <class Random>
std::string randomText(Random& random, Subject const& subject, Mix const& mix, size_t size)
{
    std::string text;
    while (text.size() < size) {
        bool const isASCII = random() % 100 < mix.ascii;
        std::vector<char16_t> const& letters = isASCII ? subject.ascii : subject.letters;
        // Neighbours, so that most runs keep to one window.
        size_t const first = random() % letters.size();
        for (auto left = 1 + random() % mix.longest; left != 0 && text.size() < size; --left)
            text += utf8Of(letters[(first + random() % 40) % letters.size()]);
    }
    return text;
}

/** Some bytes become any other. */
template <class Random>
std::string broken(Random& random, std::string text, unsigned int inAThousand)
{
    for (char& byte : text)
        if (random() % 1000 < inAThousand)
            byte = static_cast<char>(1 + random() % 255);
    return text;
}

unsigned int capacityOf(std::string const& text)
{
    return static_cast<unsigned int>(text.size());
}

void expectBothWaysAlike(GuardedCalls& calls, std::string const& what, std::string const& text, unsigned int capacity,
                         size_t shift = GuardedCalls::AT_END)
{
    auto const described = [&] { return what + " at " + std::to_string(static_cast<ptrdiff_t>(shift)); };
    expectAlike([&] { return "from UTF-8, " + described(); }, [&] { return calls.fromUTF8(text, capacity, shift); });
    // The same bytes as text of the set: its letters in another order, and what it leaves undefined.
    expectAlike([&] { return "to UTF-8, " + described(); }, [&] { return calls.toUTF8(text, 3 * capacity, shift); });
}

/**
 * The sets differ in their tables and share the code: these have letters of two bytes, of three, none and both, and
 * what depends on every length, alignment and pattern is tried with them; the others take every eighth alignment in
 * turn.
 */
bool standsForAll(Subject const& subject)
{
    static std::set<std::string> const names = {"CP1252", "CP1251", "CP874", "ISO-8859-1", "made up"};
    return names.count(subject.name) != 0;
}

TEST_F(SingleByteUtf8Kernels, EveryLengthAtEveryAlignment)
{
    std::mt19937 random(21);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(subject.converter);
        bool const isWhole = standsForAll(subject);
        for (size_t length = 0; length <= 300; ++length) {
            std::string const text = randomText(random, subject, MIXES[length % std::size(MIXES)], length);
            std::string const what = subject.name + ", " + std::to_string(length);
            for (size_t shift = isWhole ? 0 : length % 8; shift < 64; shift += isWhole ? 1 : 8)
                expectBothWaysAlike(calls, what, text, capacityOf(text), shift);
            expectBothWaysAlike(calls, what, text, capacityOf(text));
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(SingleByteUtf8Kernels, BrokenText)
{
    std::mt19937 random(22);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(subject.converter);
        for (Mix const& mix : MIXES)
            for (unsigned int const inAThousand : {0U, 1U, 10U, 100U})
                for (int round = 0; round < 2; ++round) {
                    std::string const text =
                        broken(random, randomText(random, subject, mix, 1000 + random() % 12000), inAThousand);
                    std::string const what = subject.name + ", broken " + std::to_string(inAThousand);
                    expectBothWaysAlike(calls, what, text, capacityOf(text), random() % 64);
                    expectBothWaysAlike(calls, what, text, capacityOf(text));
                    for (kx7::Transit const transit :
                         {kx7::Transit{false, ILLCHAR_ESCAPE}, kx7::Transit{false, ILLCHAR_STOP},
                          kx7::Transit{true, ILLCHAR_REPLACE}}) {
                        expectAlike(what, [&] { return calls.fromUTF8(text, capacityOf(text), 0, transit); });
                        expectAlike(what, [&] { return calls.toUTF8(text, capacityOf(text), 0, transit); });
                    }
                    if (HasFatalFailure())
                        return;
                }
    }
}

TEST_F(SingleByteUtf8Kernels, EveryCapacityAroundABlockEdge)
{
    std::mt19937 random(23);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(subject.converter);
        for (Mix const& mix : MIXES) {
            std::string const text = randomText(random, subject, mix, 700);
            for (unsigned int capacity = 0; capacity <= 720; capacity += capacity < 300 ? 1 : 5)
                expectBothWaysAlike(calls, subject.name + ", capacity " + std::to_string(capacity), text, capacity);
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(SingleByteUtf8Kernels, EveryPatternAtEveryPositionOfABlockEdge)
{
    // The bytes where classes and windows begin and end.
    unsigned char const bytes[] = {0x01, 0x1A, 0x41, 0x7F, 0x80, 0x81, 0x82, 0x9F, 0xA0, 0xB8, 0xB9, 0xBF, 0xC0, 0xC1,
                                   0xC2, 0xC3, 0xD0, 0xD1, 0xDF, 0xE0, 0xE2, 0xED, 0xEF, 0xF0, 0xF4, 0xF8, 0xFF};
    kx7test::OneIn isTaken(7);
    for (Subject const& subject : subjects()) {
        if (!standsForAll(subject))
            continue;
        GuardedCalls calls(subject.converter);
        for (std::string const& filler : {std::string("a"), utf8Of(subject.letters[subject.letters.size() / 2])})
            for (size_t const edge : {size_t{32}, size_t{64}, size_t{256}}) {
                std::string const after = "aa" + filler + filler + "a" + filler;
                for (size_t position = edge - 3; position <= edge; ++position) {
                    std::string front;
                    while (front.size() + filler.size() <= position)
                        front += filler;
                    front.append(position - front.size(), 'a');
                    for (unsigned char const a : bytes)
                        for (unsigned char const b : bytes)
                            for (unsigned char const c : bytes) {
                                // All triples at one edge of two sets, of the others some.
                                bool const isWhole =
                                    edge == 64 && (subject.name == "CP1252" || subject.name == "CP874");
                                if ((!isWhole && c != bytes[(a + b) % std::size(bytes)]) || !isTaken())
                                    continue;
                                std::string text =
                                    front + static_cast<char>(a) + static_cast<char>(b) + static_cast<char>(c);
                                for (int i = 0; i < 40; ++i)
                                    text += after;
                                expectAlike(subject.name + ", a pattern at " + std::to_string(position),
                                            [&] { return calls.fromUTF8(text, capacityOf(text)); });
                            }
                    if (HasFatalFailure())
                        return;
                }
            }
    }
}

// Kernels find the end as they go and must not read the page after it.
TEST_F(SingleByteUtf8Kernels, TextsThatEndWherePagesDo)
{
    std::mt19937 random(24);
    constexpr size_t PAGE = 4096;
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(subject.converter);
        for (Mix const& mix : MIXES) {
            std::string const text = randomText(random, subject, mix, 3 * PAGE);
            for (size_t const pages : {size_t{1}, size_t{3}})
                for (size_t left = 0; left < 72; left += 1 + left / 2) {
                    std::string const front = text.substr(0, pages * PAGE - left - 1);
                    // From the first byte of a page, and up to the last of one.
                    expectBothWaysAlike(calls, subject.name, front, capacityOf(front), 0);
                    expectBothWaysAlike(calls, subject.name, front, capacityOf(front));
                }
            if (HasFatalFailure())
                return;
        }
    }
}

}  // namespace
