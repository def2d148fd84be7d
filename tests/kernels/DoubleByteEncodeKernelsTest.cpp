// kx7text tests - the kernels that encode multibyte sets against the plain engine: every one gives what the steps give.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "kx7/base/Utf16.h"
#include "kx7/converters/Engine.h"
#include "kx7/converters/KX7CharSetConverterDBCS.h"
#include "kx7/converters/KX7CharSetConverterDBCSEx.h"
#include "kx7/converters/KX7CharSetConverterEUC_CN_KR.h"
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"
#include "kx7/converters/KX7CharSetConverterGB18030.h"
#include "kx7/kernels/Kernels.h"
#include "tests/kernels/KernelComparison.h"
#include "tests/support/Guarded.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/OneIn.h"

using namespace kx7test;
using kx7::InstructionSet;

namespace {

class DoubleByteEncodeKernels : public kx7test::KernelTest {};

/** A converter, and its characters by how they are written. */
struct Subject {
    std::string name;
    KX7CharSetConverter* converter;
    std::array<std::vector<std::u16string>, 5> byLength;  ///< those of so many bytes, at 0 what is not mapped

    /** A character of `length` bytes, or of another length where there are none so long. */
    std::u16string const& random(std::mt19937& random, size_t length) const
    {
        while (byLength[length].empty())
            length = (length + 1) % byLength.size();
        return byLength[length][random() % byLength[length].size()];
    }
};

Subject subjectOf(std::string const& name, KX7CharSetConverter& converter)
{
    Using const plain(InstructionSet::PLAIN);
    kx7::Engine const& engine = *kx7::engineOf(converter);
    Subject subject{name, &converter, {}};
    auto const add = [&](std::u16string const& units) {
        unsigned char bytes[8];
        auto const* const source = reinterpret_cast<unsigned short const*>(units.data());
        kx7::Progress const p =
            engine.encode(converter, source, source + units.size(), bytes, bytes + sizeof bytes, true);
        subject.byLength[p.consumed == units.size() ? p.written : 0].push_back(units);
    };
    for (unsigned int unit = 1; unit <= 0xFFFF; ++unit)
        add(std::u16string(1, static_cast<char16_t>(unit)));
    for (unsigned int c = 0x10000; c <= 0x10FFFF; c += c < 0x30000 ? 7 : 0x1003)
        add({static_cast<char16_t>(kx7::highSurrogateOf(c)), static_cast<char16_t>(kx7::lowSurrogateOf(c))});
    return subject;
}

// Lists that the library's own sets do not have: single bytes above ASCII, codes whose low byte or both are 0 when
// written, halves of pairs, and what GB 18030 has in ranges.
constexpr unsigned short ODD_LIST[] = {
    0x41, 'A',    0x42,   'b',    0x8000, 'c',    0x7F80, 0x4E00, 0x80,   0x4E01, 0x8100, 0x4E02, 0x2121, 0x4E03,
    0xFF, 0x4E04, 0x3021, 0xD800, 0x3022, 0xDBFF, 0x3023, 0xDC00, 0x3024, 0xAC00, 0x3025, 0xD7A3, 0x80FF, 0x4E05,
    0xA1, 0x4E06, 0xDF,   0x4E07, 0x7F81, 0x7F,   0xB1,   0x7E,   0x3026, 0xA9,   0x9030, 0x3042, 0,      0};
constexpr unsigned short ODD_KANA[] = {0xA1, 0xFF61, 0xDF, 0xFF9F, 0x5C, 0xA5, 0, 0};
constexpr unsigned short ODD_0212[] = {0x222F, 0x2D8, 0x6D63, 0x9FA5, 0, 0};
constexpr sMBCSExTable ODD_EX_LIST[] = {{0x41, 0, 'A'},
                                        {0x8140, 0, 0x4E00},
                                        {0x8141, 0, 0xD800},
                                        {0x8142, 0, 0xDC00},
                                        {0x8143, 0, 0x2000B},
                                        {0xB1, 0, 0xFF71},
                                        {0, 0, 0}};

std::vector<Subject> const& subjects()
{
    static unsigned char const types[256] = {};
    static KX7CharSetConverterDBCS dbcs(ODD_LIST, types, KX7CS_WCP932);
    static KX7CharSetConverterDBCSEx dbcsEx(ODD_EX_LIST, types, KX7CS_SJIS0213);
    static KX7CharSetConverterEUC_CN_KR euc(ODD_LIST, KX7CS_EUC_KR);
    static KX7CharSetConverterEUC_JP eucJp(ODD_LIST, ODD_KANA, ODD_0212, KX7CS_EUC_JP);
    static KX7CharSetConverterGB18030 gb(ODD_LIST, KX7CS_GB18030);
    static KX7CharSetConverterGB18030 gbWithoutList("", KX7CS_GB18030);
    static std::vector<Subject> const all = [] {
        std::vector<Subject> found;
        for (MultibyteSet const& set : multibyteSets())
            if (!set.isWide && &set.converter != &g_oConverterUTF16Esc)
                found.push_back(subjectOf(set.name, set.converter));
        found.push_back(subjectOf("an odd double-byte list", dbcs));
        found.push_back(subjectOf("an odd extended list", dbcsEx));
        found.push_back(subjectOf("an odd EUC list", euc));
        found.push_back(subjectOf("odd EUC-JP lists", eucJp));
        found.push_back(subjectOf("an odd GBK list", gb));
        found.push_back(subjectOf("GB 18030 without a list", gbWithoutList));
        return found;
    }();
    return all;
}

/** How many characters of no, one, two, three, four bytes, of 100. */
unsigned int const MIXES[][5] = {{0, 100, 0, 0, 0}, {0, 0, 100, 0, 0},   {0, 15, 85, 0, 0},   {0, 70, 30, 0, 0},
                                 {0, 0, 0, 0, 100}, {0, 15, 0, 0, 85},   {0, 60, 5, 5, 30},   {0, 25, 25, 25, 25},
                                 {2, 20, 78, 0, 0}, {2, 30, 30, 10, 28}, {20, 20, 20, 20, 20}};

std::u16string randomText(Subject const& subject, std::mt19937& random, size_t units, unsigned int const (&mix)[5])
{
    std::discrete_distribution<size_t> length(std::begin(mix), std::end(mix));
    std::u16string text;
    while (text.size() < units)
        text += subject.random(random, length(random));
    return text;
}

TEST_F(DoubleByteEncodeKernels, EveryLengthAtEveryAlignment)
{
    // Counting takes every eighth alignment in turn, as that of bytes does.
    std::mt19937 random(21);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (size_t length = 0; length <= 300; ++length) {
            std::u16string const units = randomText(subject, random, length, MIXES[length % 8]).substr(0, length);
            std::string const what = subject.name + ", " + std::to_string(length) + " units";
            for (size_t shift = 0; shift <= 64; ++shift) {
                size_t const at = shift == 64 ? GuardedCalls::AT_END : shift;
                auto const whatAt = [&] { return what + " at " + std::to_string(shift); };
                expectAlike(whatAt, [&] { return calls.encode(units, units.size() * 4, at); });
                if (shift == 64 || shift % 8 == length % 8)
                    expectAlike(whatAt, [&] { return calls.countBytes(units, at); });
            }
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(DoubleByteEncodeKernels, EveryPatternAtEveryPositionOfABlockEdge)
{
    char16_t const units[] = {0,      u'A',   u'\\',  0x7E,   0x7F,   0x80,   0xA5,   0xE9,   0x3042, 0x4E00,
                              0xAC00, 0xFF71, 0xD7FF, 0xD800, 0xDBFF, 0xDC00, 0xDFFF, 0xE7C8, 0xFFFF};
    // The places around the ends of the blocks of 8, 16 and 32, and of two and four of the longest. The units stand for
    // all: kernels look codes up by the unit alone, and what else they ask of it is whether it is ASCII or a surrogate.
    std::vector<size_t> positions;
    for (size_t const edge : {8U, 16U, 24U, 32U, 64U, 128U})
        for (size_t position = edge - 3; position <= edge + 1; ++position)
            positions.push_back(position);
    positions.insert(positions.end(), {0, 1, 2, 3});
    OneIn isTaken(11);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (size_t length = 1; length <= 4; ++length) {
            if (subject.byLength[length].empty())
                continue;
            std::u16string const& filler = subject.byLength[length][subject.byLength[length].size() / 2];
            Among<std::u16string> const among(filler);
            for (size_t const position : positions) {
                std::string const what = subject.name + ", a pattern at " + std::to_string(position);
                for (char16_t const a : units)
                    for (char16_t const b : units) {
                        if (!isTaken())
                            continue;
                        std::u16string const text = among(position, {a, b}, 70);
                        expectAlike(what, [&] { return calls.encode(text, text.size() * 4, GuardedCalls::AT_END); });
                        expectAlike(what, [&] { return calls.countBytes(text); });
                    }
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteEncodeKernels, BrokenText)
{
    std::mt19937 random(22);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (auto const& mix : MIXES) {
            for (unsigned int const brokenInAThousand : {0U, 1U, 10U, 100U}) {
                std::u16string units = randomText(subject, random, 3000 + random() % 2000, mix);
                for (char16_t& unit : units)
                    if (random() % 1000 < brokenInAThousand)
                        unit = static_cast<char16_t>(1 + random() % 0xFFFF);
                auto const capacity = static_cast<unsigned int>(units.size() * 6);
                for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE})
                    expectAlike(subject.name + ", broken", [&] { return calls.encodeText(units, capacity, op); });
                expectAlike(subject.name + ", broken and counted", [&] { return calls.countBytes(units); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteEncodeKernels, EveryCapacityAroundABlockEdge)
{
    std::mt19937 random(23);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (auto const& mix : MIXES) {
            std::u16string const units = randomText(subject, random, 130, mix);
            for (size_t capacity = 0; capacity <= 300; ++capacity) {
                std::string const what = subject.name + ", capacity " + std::to_string(capacity);
                expectAlike(what, [&] { return calls.encode(units, capacity, GuardedCalls::AT_END); });
                for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE})
                    expectAlike(what, [&] { return calls.encodeText(units, static_cast<unsigned int>(capacity), op); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteEncodeKernels, NothingIsWrittenAfterTheTextWhateverTheCapacity)
{
    std::mt19937 random(24);
    for (Subject const& subject : subjects()) {
        for (InstructionSet const set : sets()) {
            Using const use(set);
            for (auto const& mix : MIXES) {
                for (size_t length = 0; length <= 300; length += 1 + length / 16) {
                    std::u16string const units = randomText(subject, random, length, mix);
                    auto const* const source = reinterpret_cast<unsigned short const*>(units.c_str());
                    std::vector<unsigned char> bytes(units.size() * 4 + 1);
                    unsigned int const n = subject.converter->fromUTF16(
                        bytes.data(), source, static_cast<unsigned int>(bytes.size() - 1), ILLCHAR_REPLACE, nullptr);
                    Guarded<unsigned char> exact(n + 1);
                    EXPECT_EQ(subject.converter->fromUTF16(exact.data(), source, 0xFFFFFFFE, ILLCHAR_REPLACE, nullptr),
                              n);
                }
            }
        }
    }
}

TEST_F(DoubleByteEncodeKernels, EveryCharacter)
{
    for (Subject const& subject : subjects()) {
        std::vector<std::u16string> texts(1);
        for (auto const& characters : subject.byLength)
            for (std::u16string const& character : characters) {
                if (texts.back().size() > 4000)
                    texts.emplace_back();
                texts.back() += character;
            }
        GuardedCalls calls(*subject.converter);
        for (std::u16string const& text : texts) {
            auto const capacity = static_cast<unsigned int>(text.size() * 4);
            expectAlike(subject.name, [&] { return calls.encodeText(text, capacity, ILLCHAR_REPLACE); });
            expectAlike(subject.name, [&] { return calls.countBytes(text); });
            if (HasFatalFailure())
                return;
        }
    }
}

TEST_F(DoubleByteEncodeKernels, EverySupplementaryCharacterOfGB18030)
{
    GuardedCalls calls(g_oConverterGB18030);
    for (unsigned int first = 0x10000; first <= 0x10FFFF; first += 0x1000) {
        std::u16string text;
        for (unsigned int c = first; c < first + 0x1000; ++c) {
            text += static_cast<char16_t>(kx7::highSurrogateOf(c));
            text += static_cast<char16_t>(kx7::lowSurrogateOf(c));
        }
        expectAlike(std::to_string(first), [&] { return calls.encode(text, 0x4000, GuardedCalls::AT_END); });
        if (HasFatalFailure())
            return;
    }
}

}  // namespace
