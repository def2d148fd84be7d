// kx7text tests - the kernels that decode multibyte sets against the plain engine: every one gives what the steps give.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include "kx7/converters/KX7CharSetConverterDBCS.h"
#include "kx7/converters/KX7CharSetConverterEUC_CN_KR.h"
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"
#include "kx7/tables/ByteTypeTables.h"
#include "tests/kernels/KernelComparison.h"
#include "tests/support/Hex.h"
#include "tests/support/MultibyteSets.h"
#include "tests/support/OneIn.h"

using namespace kx7test;

namespace {

class DoubleByteDecodeKernels : public kx7test::KernelTest {};

/** A converter, and its characters by how they are written. */
struct Subject {
    std::string name;
    KX7CharSetConverter* converter;
    std::vector<std::string> ascii;
    std::vector<std::string> others;  ///< of one byte
    std::vector<std::string> pairs;
    std::vector<std::string> longer;

    std::string const& random(std::mt19937& random, std::vector<std::string> const& kind) const
    {
        std::vector<std::string> const& from = kind.empty() ? ascii.empty() ? pairs : ascii : kind;
        return from[random() % from.size()];
    }
};

/** A four-byte sequence of GB 18030 by its place in the sequence of codes. */
std::string fourBytes(unsigned int place)
{
    std::string bytes(4, '\0');
    bytes[0] = static_cast<char>(0x81 + place / 12600);
    bytes[1] = static_cast<char>('0' + place / 1260 % 10);
    bytes[2] = static_cast<char>(0x81 + place / 10 % 126);
    bytes[3] = static_cast<char>('0' + place % 10);
    return bytes;
}

/** Leads three bytes in EUC-JP. */
constexpr unsigned int SINGLE_SHIFT_3 = 0x8F;

constexpr bool isHangul(unsigned int place)
{
    return place >= 22000 && place < 33000;
}

Subject subjectOf(std::string const& name, KX7CharSetConverter& converter)
{
    Using const plain(InstructionSet::PLAIN);
    kx7::Engine const& engine = *kx7::engineOf(converter);
    Subject subject{name, &converter, {}, {}, {}, {}};
    auto const isCharacter = [&](std::string const& bytes) {
        unsigned short units[8];
        auto const* const source = reinterpret_cast<unsigned char const*>(bytes.data());
        kx7::Progress const p = engine.decode(converter, source, source + bytes.size(), units, units + 8, true);
        return p.consumed == bytes.size();
    };
    for (unsigned int a = 1; a < 256; ++a) {
        std::string const one(1, static_cast<char>(a));
        if (isCharacter(one)) {
            (a < 0x80 ? subject.ascii : subject.others).push_back(one);
            continue;
        }
        for (unsigned int b = 0; b < 256; ++b) {
            std::string const two = one + static_cast<char>(b);
            if (isCharacter(two)) {
                subject.pairs.push_back(two);
                continue;
            }
            if (a != SINGLE_SHIFT_3)
                continue;
            for (unsigned int c = 0; c < 256; ++c) {
                std::string const three = two + static_cast<char>(c);
                if (isCharacter(three))
                    subject.longer.push_back(three);
            }
        }
    }
    for (std::string const bytes : {"\x81\x30\x81\x30", "\x81\x30\x84\x36", "\x82\x35\x8F\x33", "\x83\x36\xC7\x38",
                                    "\x84\x31\xA4\x37", "\x90\x30\x81\x30", "\x94\x39\xDA\x33", "\xE3\x32\x9A\x35"})
        if (isCharacter(bytes))
            subject.longer.push_back(bytes);
    // Hangul follow each other in one run of four-byte codes, where kernels go; a few others between them.
    for (unsigned int place = 0; name == "GB 18030" && place < 39420; place += isHangul(place) ? 13 : 499)
        subject.longer.push_back(fourBytes(place));
    return subject;
}

// What the library's own sets do not have: bytes that are no ASCII and yet characters, lead bytes below 0x80.
constexpr unsigned short ODD_LIST[] = {0x41, 'A',    0x42,   'b', 0x80,   0x4E01, 0x8141, 0x4E02, 0x8142, 0xFFFF,
                                       0xFF, 0x4E04, 0xFEFE, 1,   0x3021, 0x4E05, 0x5C41, 0x4E06, 0,      0};

/** Lead bytes that are ASCII. */
std::vector<unsigned char> const& lowLeads()
{
    static std::vector<unsigned char> const types = [] {
        std::vector<unsigned char> made(oCP936Type, oCP936Type + 256);
        made[0x5C] = kx7::LEAD_BYTE;
        return made;
    }();
    return types;
}

std::vector<Subject> const& subjects()
{
    static KX7CharSetConverterDBCS odd(ODD_LIST, oCP936Type, KX7CS_WCP936);
    static KX7CharSetConverterDBCS low(ODD_LIST, lowLeads().data(), KX7CS_WCP936);
    static KX7CharSetConverterEUC_CN_KR oddRows(ODD_LIST, KX7CS_EUC_KR);
    static KX7CharSetConverterEUC_JP oddJapanese(ODD_LIST, ODD_LIST, ODD_LIST, KX7CS_EUC_JP);
    static std::vector<Subject> const all = [] {
        std::vector<Subject> made;
        for (MultibyteSet const& set : multibyteSets())
            if (!set.isWide && std::string(set.name) != "UTF-16 escape")
                made.push_back(subjectOf(set.name, set.converter));
        made.push_back(subjectOf("an odd list", odd));
        made.push_back(subjectOf("an odd list with a low lead byte", low));
        made.push_back(subjectOf("an odd list in rows", oddRows));
        made.push_back(subjectOf("an odd list in Japanese rows", oddJapanese));
        return made;
    }();
    return all;
}

/**
 * The bytes where kinds of bytes begin and end in a set, and some that one set or another gives a meaning: each stands
 * for those between, which are characters, lead and trail as it does. Kernels know bytes by these kinds alone, from
 * tables; the unit they look up is the only thing that depends on more.
 */
std::vector<unsigned char> kindsOf(Subject const& subject)
{
    constexpr unsigned int PLACES = 4;
    std::array<unsigned int, 256> kinds = {};
    unsigned int bit = 1;
    for (auto const* const characters : {&subject.ascii, &subject.others, &subject.pairs, &subject.longer}) {
        for (std::string const& character : *characters)
            for (size_t i = 0; i < character.size(); ++i)
                kinds[static_cast<unsigned char>(character[i])] |= bit << i;
        bit <<= PLACES;
    }
    std::vector<unsigned char> found;
    for (unsigned int byte = 0; byte < 256; ++byte) {
        bool const isBound =
            byte == 0 || byte == 255 || kinds[byte] != kinds[byte - 1] || kinds[byte] != kinds[byte + 1];
        if (isBound || byte == 0x1A || byte == '0' || byte == 0x8E || byte == SINGLE_SHIFT_3 || byte == 0xE0)
            found.push_back(static_cast<unsigned char>(byte));
    }
    return found;
}

/** Characters of each kind, to stand around patterns. */
std::vector<std::string> fillersOf(Subject const& subject)
{
    std::vector<std::string> fillers = {"a", subject.pairs.front()};
    if (!subject.longer.empty())
        fillers.push_back(subject.longer.front());
    return fillers;
}

void expectPatternAlike(Subject const& subject, GuardedCalls& calls, Among<std::string> const& among, size_t position,
                        std::string const& pattern)
{
    std::string const text = among(position, pattern, 150);
    auto const what = [&] { return subject.name + ", " + hex(pattern) + " at " + std::to_string(position); };
    expectAlike(what, [&] { return calls.decode(text, text.size(), GuardedCalls::AT_END); });
    expectAlike(what, [&] { return calls.countUnits(text); });
}

/** The places around edges: where a sequence that the edge cuts begins, and the first after it. */
std::vector<size_t> placesAround(std::initializer_list<size_t> edges)
{
    std::vector<size_t> places;
    for (size_t const edge : edges)
        for (size_t place = edge - 3; place <= edge + 1; ++place)
            places.push_back(place);
    return places;
}

struct Mix {
    unsigned int ascii, others, pairs, longer;
};
constexpr Mix MIXES[] = {{1, 0, 0, 0}, {0, 0, 1, 0},  {0, 0, 0, 1},  {1, 0, 9, 0}, {1, 0, 0, 4},
                         {3, 1, 3, 0}, {30, 0, 1, 0}, {20, 0, 0, 3}, {9, 0, 4, 1}, {1, 9, 9, 1}};

/** Text in runs, as long as markup has them. */
std::string randomBytes(Subject const& subject, std::mt19937& random, size_t length, Mix const& mix)
{
    std::string text;
    std::discrete_distribution<int> kind({1.0 * mix.ascii, 1.0 * mix.others, 1.0 * mix.pairs, 1.0 * mix.longer});
    std::vector<std::string> const* const kinds[] = {&subject.ascii, &subject.others, &subject.pairs, &subject.longer};
    while (text.size() < length) {
        std::vector<std::string> const& characters = *kinds[kind(random)];
        for (auto n = random() % 4 == 0 ? 1 + random() % 24 : 1; n != 0; --n)
            text += subject.random(random, characters);
    }
    return text;
}

}  // namespace

TEST_F(DoubleByteDecodeKernels, EveryLengthAtEveryAlignment)
{
    // Counting takes every eighth alignment in turn: its kernels share how they load text, and ask for no address.
    std::mt19937 random(31);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (size_t length = 0; length <= 300; ++length) {
            std::string const bytes =
                randomBytes(subject, random, length, MIXES[length % std::size(MIXES)]).substr(0, length);
            for (size_t shift = 0; shift <= 64; ++shift) {
                size_t const at = shift == 64 ? GuardedCalls::AT_END : shift;
                auto const what = [&] {
                    return subject.name + ", " + std::to_string(length) + " at " + std::to_string(shift);
                };
                expectAlike(what, [&] { return calls.decode(bytes, bytes.size(), at); });
                if (shift == 64 || shift % 8 == length % 8)
                    expectAlike(what, [&] { return calls.countUnits(bytes, at); });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, EveryPairAtABlockEdge)
{
    // Each of the 65,536 pairs at one place around an edge, and every pair of kinds at every place of every edge. The
    // kernels that decode begin after 16 bytes or 17 and take 64, with AVX2 four times; those that count begin with
    // the text.
    std::vector<size_t> const places = placesAround({16, 64, 80, 144, 272});
    OneIn isTaken(11);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        std::vector<std::string> const fillers = fillersOf(subject);
        std::vector<unsigned char> const kinds = kindsOf(subject);
        for (size_t n = 0; n < fillers.size(); ++n) {
            Among<std::string> const among(fillers[n]);
            for (size_t pair = n; pair < 0x10000; pair += fillers.size()) {
                if (!isTaken())
                    continue;
                expectPatternAlike(subject, calls, among, 76 + pair % 8,
                                   {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF)});
                if (HasFatalFailure())
                    return;
            }
            for (size_t const position : places)
                for (unsigned char const a : kinds)
                    for (unsigned char const b : kinds) {
                        if (!isTaken())
                            continue;
                        expectPatternAlike(subject, calls, among, position,
                                           {static_cast<char>(a), static_cast<char>(b)});
                        if (HasFatalFailure())
                            return;
                    }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, EveryThreeByteSequenceOfEucJpAtABlockEdge)
{
    // As with pairs: each of them at one place, in the set itself, and all kinds around the first edges. Kernels leave
    // such sequences to the steps, so later edges would show nothing else.
    std::vector<size_t> const places = placesAround({16, 64, 80});
    OneIn isTaken(11);
    size_t checked = 0;
    for (Subject const& subject : subjects()) {
        if (!dynamic_cast<KX7CharSetConverterEUC_JP*>(subject.converter))
            continue;
        ++checked;
        GuardedCalls calls(*subject.converter);
        std::vector<std::string> const fillers = fillersOf(subject);
        std::vector<unsigned char> const kinds = kindsOf(subject);
        auto const sequence = [](size_t b, size_t c) {
            return std::string{static_cast<char>(SINGLE_SHIFT_3), static_cast<char>(b), static_cast<char>(c)};
        };
        for (size_t n = 0; n < fillers.size(); ++n) {
            Among<std::string> const among(fillers[n]);
            bool const isOdd = subject.name != "EUC-JP";
            for (size_t pair = n; pair < 0x10000 && !isOdd; pair += fillers.size()) {
                if (!isTaken())
                    continue;
                expectPatternAlike(subject, calls, among, 75 + pair % 8, sequence(pair >> 8, pair & 0xFF));
                if (HasFatalFailure())
                    return;
            }
            for (size_t const position : places)
                for (unsigned char const b : kinds)
                    for (unsigned char const c : kinds) {
                        if (!isTaken())
                            continue;
                        expectPatternAlike(subject, calls, among, position, sequence(b, c));
                        if (HasFatalFailure())
                            return;
                    }
        }
    }
    EXPECT_EQ(checked, 2u);
}

TEST_F(DoubleByteDecodeKernels, BrokenText)
{
    std::mt19937 random(32);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        kx7::Engine const& engine = *kx7::engineOf(*subject.converter);
        for (Mix const& mix : MIXES) {
            for (unsigned int const brokenInAThousand : {0U, 1U, 10U, 100U}) {
                for (int round = 0; round < 4; ++round) {
                    std::string bytes = randomBytes(subject, random, 1000 + random() % 3000, mix);
                    for (char& byte : bytes)
                        if (random() % 1000 < brokenInAThousand)
                            byte = static_cast<char>(1 + random() % 255);
                    for (ILLCHAR_OPTYPE const op : {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE})
                        expectAlike(subject.name, [&] {
                            return calls.decodeText(bytes, static_cast<unsigned int>(bytes.size()), op);
                        });
                    expectAlike(subject.name + " strictly", [&] {
                        std::vector<unsigned short> units(bytes.size());
                        auto const* const source = reinterpret_cast<unsigned char const*>(bytes.data());
                        kx7::Progress const p = engine.decodeStrict(*subject.converter, source, source + bytes.size(),
                                                                    units.data(), units.data() + units.size(), true);
                        return Outcome{p.consumed,
                                       p.written,
                                       p.stop,
                                       p.length,
                                       {reinterpret_cast<char const*>(units.data()), p.written * 2}};
                    });
                    for (unsigned int const limit : {UINT_MAX, 5000U})
                        expectAlike(subject.name + ", units", [&] { return calls.countTerminated(bytes, limit); });
                    if (HasFatalFailure())
                        return;
                }
            }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, BytesThatOverlap)
{
    // Sequences that begin within others, ranges at their ends, zero bytes: from few bytes of each kind.
    std::string const KINDS[] = {"\x81\x30",
                                 {"\x81\x30\x84\x39", 4},
                                 {"\x83\x36\xC7\x38 a\0", 7},
                                 "\x8F\x90\xE2\xE3\xE4\xFE\x30\x31\x32\x33\x35\x36\x39\x9A\x81",
                                 "\xE3\x32\x9A\x35\x36\x33\x9B",
                                 "\xA1\xB0 a",
                                 "\x81\xA1\x7F\x80\xFF\x40\x39"};
    std::mt19937 random(35);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (std::string const& kind : KINDS) {
            for (int round = 0; round < 400; ++round) {
                std::string bytes;
                for (size_t length = 60 + random() % 200; bytes.size() < length;)
                    bytes += kind[random() % kind.size()];
                size_t const capacity = round % 3 == 0 ? random() % bytes.size() : bytes.size();
                expectAlike(subject.name, [&] { return calls.decode(bytes, capacity, GuardedCalls::AT_END); });
                expectAlike(subject.name + ", units", [&] { return calls.countUnits(bytes); });
                expectAlike(subject.name + ", as text", [&] {
                    return calls.decodeText(bytes.c_str(), static_cast<unsigned int>(capacity), ILLCHAR_REPLACE);
                });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, ZeroBytesAreCharactersOfABoundedRange)
{
    std::mt19937 random(36);
    std::vector<KX7CharSetConverter*> converters = {&g_oConverterWCP1252, &g_oConverterISO_8859_1,
                                                    &g_oConverterWCP1251};
    for (Subject const& subject : subjects())
        converters.push_back(subject.converter);
    for (KX7CharSetConverter* const converter : converters) {
        kx7::Engine const& engine = *kx7::engineOf(*converter);
        for (int round = 0; round < 100; ++round) {
            std::string bytes;
            while (bytes.size() < 200)
                bytes.append(1 + random() % 40, random() % 2 == 0 ? 'A' : '\0');
            std::u16string const expected(bytes.begin(), bytes.end());
            for (InstructionSet const set : sets()) {
                Using const use(set);
                std::vector<unsigned short> units(bytes.size());
                auto const* const source = reinterpret_cast<unsigned char const*>(bytes.data());
                kx7::Progress const p = engine.decode(*converter, source, source + bytes.size(), units.data(),
                                                      units.data() + units.size(), true);
                ASSERT_EQ(p.consumed, bytes.size()) << nameOf(set);
                ASSERT_EQ(std::u16string(units.begin(), units.end()), expected) << nameOf(set);
                std::vector<unsigned char> back(bytes.size());
                kx7::Progress const q = engine.encode(*converter, units.data(), units.data() + units.size(),
                                                      back.data(), back.data() + back.size(), true);
                ASSERT_EQ(q.written, bytes.size()) << nameOf(set);
                ASSERT_EQ(std::string(back.begin(), back.end()), bytes) << nameOf(set);
            }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, EveryFourByteCode)
{
    // Each in company that kernels take, so that it is up to them whether they take it as well.
    Subject const* gb18030 = nullptr;
    for (Subject const& subject : subjects())
        if (subject.name == "GB 18030")
            gb18030 = &subject;
    ASSERT_NE(gb18030, nullptr);
    GuardedCalls calls(*gb18030->converter);
    std::string const hangul = fourBytes(30000) + fourBytes(30001) + ' ';
    auto const check = [&](unsigned int place) {
        std::string text = hangul + hangul + fourBytes(place) + fourBytes(place) + ' ' + fourBytes(place);
        while (text.size() < 140)
            text += hangul;
        expectAlike("four bytes " + std::to_string(place),
                    [&] { return calls.decode(text, 200, GuardedCalls::AT_END); });
        expectAlike("units of " + std::to_string(place), [&] { return calls.countUnits(text); });
    };
    for (unsigned int place = 0; place < 1587600 && !HasFatalFailure(); place += place < 40000 ? 1 : 37)
        check(place);
    for (unsigned int const around : {189000U, 189000U + 0x100000})
        for (unsigned int place = around - 50; place < around + 50 && !HasFatalFailure(); ++place)
            check(place);
}

TEST_F(DoubleByteDecodeKernels, EveryCapacityAndEveryLimit)
{
    std::mt19937 random(33);
    for (Subject const& subject : subjects()) {
        GuardedCalls calls(*subject.converter);
        for (Mix const& mix : MIXES) {
            std::string const bytes = randomBytes(subject, random, 260, mix);
            for (size_t capacity = 0; capacity <= 270; ++capacity) {
                expectAlike(subject.name + ", capacity " + std::to_string(capacity),
                            [&] { return calls.decode(bytes, capacity, GuardedCalls::AT_END); });
                expectAlike(subject.name + ", capacity " + std::to_string(capacity), [&] {
                    return calls.decodeText(bytes, static_cast<unsigned int>(capacity), ILLCHAR_REPLACE);
                });
                expectAlike(subject.name + ", limit " + std::to_string(capacity), [&] {
                    std::vector<unsigned short> units(bytes.size() + 1);
                    unsigned int const n =
                        subject.converter->toUTF16(units.data(), bytes.c_str(), static_cast<unsigned int>(bytes.size()),
                                                   ILLCHAR_REPLACE, nullptr, static_cast<int>(capacity));
                    return Outcome{0, n, {}, 0, {reinterpret_cast<char const*>(units.data()), n * 2}};
                });
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST_F(DoubleByteDecodeKernels, NothingIsWrittenAfterTheTextWhateverTheCapacity)
{
    constexpr unsigned short UNTOUCHED = 0xA5A5;
    std::mt19937 random(34);
    for (Subject const& subject : subjects()) {
        kx7::Engine const& engine = *kx7::engineOf(*subject.converter);
        for (InstructionSet const set : sets()) {
            Using const use(set);
            for (Mix const& mix : MIXES) {
                for (size_t length = 0; length <= 300; length += 1 + length / 32) {
                    std::string bytes = randomBytes(subject, random, length, mix);
                    if (length % 2 == 0)
                        bytes += "\xFF\xFF" + randomBytes(subject, random, 100, mix);
                    std::vector<unsigned short> units(2 * bytes.size() + 64, UNTOUCHED);
                    auto const* const source = reinterpret_cast<unsigned char const*>(bytes.data());
                    kx7::Progress const p = engine.decode(*subject.converter, source, source + bytes.size(),
                                                          units.data(), units.data() + units.size(), true);
                    for (size_t i = p.written; i < units.size(); ++i)
                        ASSERT_EQ(units[i], UNTOUCHED) << subject.name << ", " << nameOf(set);
                }
            }
        }
    }
}
