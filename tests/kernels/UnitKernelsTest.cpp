// kx7text tests - searching, comparing and changing the case of UTF-16 text: every set of kernels against plain loops.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/Guarded.h"
#include "tests/support/KernelSets.h"

namespace {

using kx7::InstructionSet;
using kx7::Kernels;
using kx7test::Guarded;
using kx7test::nameOf;
using kx7test::sets;
using kx7test::Using;
using Units = std::u16string;

class UnitKernels : public kx7test::KernelTest {};

constexpr size_t LONGEST = 300;
constexpr size_t PAGE = 4096 / sizeof(unsigned short);
constexpr unsigned int NPOS = KX7UString::npos;

unsigned short const* unitsOf(Units const& text)
{
    return reinterpret_cast<unsigned short const*>(text.data());
}

KX7UString stringOf(Units const& text)
{
    return {unitsOf(text), unitsOf(text) + text.size()};
}

/** Two readable pages between unreadable ones, and where texts of a length may begin in them. */
class Pages {
public:
    Pages() : m_units(2 * PAGE) { std::fill(begin(), begin() + 2 * PAGE, FILLER); }

    static constexpr unsigned short FILLER = 'x';
    static constexpr unsigned short OTHER = 'y';
    static constexpr unsigned short ZERO = 0;

    unsigned short* begin() { return m_units.data(); }

    /** The first 64 places, those around the middle, and the one against the end. */
    static std::vector<size_t> places(size_t length)
    {
        std::vector<size_t> all;
        for (size_t shift = 0; shift < 64; ++shift) {
            all.push_back(shift);
            if (shift <= length)
                all.push_back(PAGE - shift);
        }
        all.push_back(2 * PAGE - length);
        return all;
    }

private:
    Guarded<unsigned short> m_units;
};

TEST_F(UnitKernels, FindAtEveryLengthPlaceAndPosition)
{
    Pages pages;
    for (InstructionSet const set : sets()) {
        Kernels const& kernels = kx7::kernelsOf(set);
        for (size_t length = 0; length <= LONGEST; ++length) {
            for (size_t const place : Pages::places(length)) {
                unsigned short* const text = pages.begin() + place;
                // What stands after the text is not found.
                bool const isFollowed = place + length < 2 * PAGE;
                if (isFollowed)
                    text[length] = 0x2603;
                ASSERT_EQ(kernels.unitFind(text, length, 0x2603), length) << nameOf(set) << " at " << place;
                for (size_t position = length; position-- != 0;) {
                    text[position] = 0x2603;
                    ASSERT_EQ(kernels.unitFind(text, length, 0x2603), position) << nameOf(set) << " at " << place;
                    if (position + 9 < length)
                        text[position + 9] = Pages::FILLER;
                }
                std::fill(text, text + length + isFollowed, Pages::FILLER);
            }
        }
    }
}

TEST_F(UnitKernels, MatchEndsAtTheFirstDifferenceTheFirstZeroOrTheBound)
{
    Pages first;
    Pages second;
    for (InstructionSet const set : sets()) {
        Kernels const& kernels = kx7::kernelsOf(set);
        for (size_t length = 0; length <= LONGEST; ++length) {
            std::vector<size_t> const places = Pages::places(length + 1);
            for (size_t n = 0; n < places.size(); ++n) {
                for (size_t const other : {places[n], places[(n * 7 + length) % places.size()], places.back()}) {
                    unsigned short* const a = first.begin() + std::min(places[n], 2 * PAGE - length - 1);
                    unsigned short* const b = second.begin() + std::min(other, 2 * PAGE - length - 1);
                    a[length] = b[length] = 0;
                    size_t const most[] = {SIZE_MAX, length, length / 2};
                    for (size_t const bound : most)
                        ASSERT_EQ(kernels.unitMatch(a, b, bound), std::min(bound, length)) << nameOf(set);
                    for (size_t const at : {size_t{0}, length / 3, length - length / 8}) {
                        if (at >= length)
                            continue;
                        for (unsigned short const unit : {Pages::ZERO, Pages::OTHER}) {
                            a[at] = unit;
                            ASSERT_EQ(kernels.unitMatch(a, b, SIZE_MAX), at) << nameOf(set) << ' ' << length;
                            ASSERT_EQ(kernels.unitMatch(b, a, at + 1), at) << nameOf(set) << ' ' << length;
                            b[at] = unit;  // both now: it ends there if that is 0
                            ASSERT_EQ(kernels.unitMatch(a, b, SIZE_MAX), unit == 0 ? at : length) << nameOf(set);
                            a[at] = b[at] = Pages::FILLER;
                        }
                    }
                    a[length] = b[length] = Pages::FILLER;
                }
            }
        }
    }
}

TEST_F(UnitKernels, MatchTouchesNoPageAfterTheFirstDifference)
{
    for (InstructionSet const set : sets()) {
        Kernels const& kernels = kx7::kernelsOf(set);
        Guarded<unsigned short> a(LONGEST);
        Guarded<unsigned short> b(LONGEST);
        std::fill(a.data(), a.data() + LONGEST, Pages::FILLER);
        std::fill(b.data(), b.data() + LONGEST, Pages::FILLER);
        for (size_t start = 0; start <= LONGEST; ++start)
            for (size_t other = start; other <= std::min(start + 70, LONGEST); ++other)
                ASSERT_EQ(kernels.unitMatch(a.data() + start, b.data() + other, LONGEST - other), LONGEST - other)
                    << nameOf(set);
        // Without a bound the difference alone ends it, in the last unit that can be read.
        b[LONGEST - 1] = Pages::OTHER;
        for (size_t start = 0; start < LONGEST; ++start)
            ASSERT_EQ(kernels.unitMatch(a.data() + start, b.data() + start, SIZE_MAX), LONGEST - 1 - start)
                << nameOf(set);
    }
}

int plainCompare(Units const& a, Units const& b, size_t n, bool noCase)
{
    for (size_t i = 0; i != n; ++i) {
        unsigned short const x = a.c_str()[i];
        unsigned short const y = b.c_str()[i];
        if (x == 0 || y == 0)
            return x == y ? 0 : x == 0 ? -1 : 1;
        unsigned short const upperX = noCase && x != y ? KX7UChar::toUpperCase(x) : x;
        unsigned short const upperY = noCase && x != y ? KX7UChar::toUpperCase(y) : y;
        if (upperX != upperY)
            return upperX < upperY ? -1 : 1;
    }
    return 0;
}

unsigned int plainFind(Units const& text, Units const& sought, size_t pos)
{
    if (pos >= text.size() || sought.empty())
        return NPOS;
    for (size_t i = pos; i + sought.size() <= text.size(); ++i)
        if (text[i] == sought[0] && plainCompare(text.substr(i + 1), sought.substr(1), sought.size() - 1, false) == 0)
            return static_cast<unsigned int>(i);
    return NPOS;
}

/** Mostly one letter, so that texts are alike for long; some in the other case, and zeros. */
Units randomText(std::mt19937& random, size_t length)
{
    Units text(length, u'a');
    for (size_t n = random() % 4; length != 0 && n != 0; --n)
        text[random() % length] = u"A\u0430\u0410b\0"[random() % 5];
    return text;
}

TEST_F(UnitKernels, StringsAreComparedAndSearchedAsByPlainLoops)
{
    for (InstructionSet const set : sets()) {
        Using const use(set);
        std::mt19937 random(21);
        for (size_t length = 0; length <= LONGEST; ++length) {
            for (int round = 0; round < 30; ++round) {
                Units const a = randomText(random, length);
                Units const b = random() % 3 == 0 ? a : randomText(random, length - std::min(length, random() % 3));
                KX7UString const s = stringOf(a);
                KX7UString const t = stringOf(b);
                unsigned int const n = random() % 2 == 0 ? NPOS : static_cast<unsigned int>(random() % (length + 3));
                ASSERT_EQ(s.compare(t, n), plainCompare(a, b, n, false)) << nameOf(set) << ' ' << length;
                ASSERT_EQ(s.compareNoCase(t, n), plainCompare(a, b, n, true)) << nameOf(set) << ' ' << length;
                ASSERT_EQ(KX7CharSetWStrEqual(s.data(), t.data()), plainCompare(a, b, NPOS, false) == 0);

                size_t const pos = random() % (length + 1);
                size_t const part = random() % (length + 1);
                Units const sought = a.substr(part, 1 + random() % 40);
                ASSERT_EQ(s.find(stringOf(sought), static_cast<unsigned int>(pos)), plainFind(a, sought, pos))
                    << nameOf(set) << ' ' << length;
                size_t const unit = a.find(u'A', pos);
                ASSERT_EQ(s.find(static_cast<unsigned short>('A'), static_cast<unsigned int>(pos)),
                          unit == Units::npos ? NPOS : static_cast<unsigned int>(unit));
            }
        }
    }
}

template <class Map>
void expectCase(Units const& text, KX7UString& (KX7UString::*change)(bool), Map map)
{
    KX7UString all = stringOf(text);
    (all.*change)(false);
    KX7UString ascii = stringOf(text);
    (ascii.*change)(true);
    for (size_t i = 0; i != text.size(); ++i) {
        auto const index = static_cast<unsigned int>(i);
        ASSERT_EQ(all.at(index), map(text[i])) << i;
        ASSERT_EQ(ascii.at(index), text[i] < 0x80 ? map(text[i]) : text[i]) << i;
    }
}

TEST_F(UnitKernels, CaseOfEveryUnitAmongAsciiAndAmongOthersAtEveryLength)
{
    std::vector<Units> texts(2);
    for (unsigned int unit = 0; unit <= 0xFFFF; ++unit) {
        texts[0] += static_cast<char16_t>(unit);
        // One of them in a block of ASCII.
        texts[1] += static_cast<char16_t>(unit);
        for (char16_t c = 0; c != 40; ++c)
            texts[1] += static_cast<char16_t>((unit + c * 7) % 0x80);
    }
    for (size_t length = 0; length <= LONGEST; ++length)
        texts.push_back(texts[1].substr(41 * 0x60 + length, length));
    for (Units const& text : texts) {
        expectCase(text, &KX7UString::toUpper, KX7UChar::toUpperCase);
        expectCase(text, &KX7UString::toLower, KX7UChar::toLowerCase);
        if (HasFatalFailure())
            return;
    }
}

}  // namespace
