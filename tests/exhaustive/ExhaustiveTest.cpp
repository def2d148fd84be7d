// kx7text tests - sequences and code points without exception, each on its own, against the models: too many for every
// day.
#include <gtest/gtest.h>

#include "tests/support/AllSets.h"
#include "tests/support/Probe.h"

using namespace kx7test;

namespace {

constexpr ILLCHAR_OPTYPE MODES[] = {ILLCHAR_STOP, ILLCHAR_REPLACE, ILLCHAR_ESCAPE};

MultibyteSet const& setOf(KX7CharSetConverter const& converter)
{
    for (MultibyteSet const& set : allSets())
        if (&set.converter == &converter)
            return set;
    abort();
}

std::string nameOf(MultibyteSet const& set)
{
    std::string name(set.name);
    for (char& c : name)
        if (!isalnum(static_cast<unsigned char>(c)))
            c = '_';
    return name;
}

struct SetName {
    size_t index;
};

std::ostream& operator<<(std::ostream& out, SetName const& set)
{
    return out << allSets()[set.index].name;
}

std::vector<SetName> setNames()
{
    std::vector<SetName> names;
    for (size_t i = 0; i < allSets().size(); ++i)
        names.push_back({i});
    return names;
}

std::string suffixOf(testing::TestParamInfo<SetName> const& info)
{
    return nameOf(allSets()[info.param.index]);
}

class EverySet : public testing::TestWithParam<SetName> {};

/** All sequences of three bytes after the first one, in three modes. */
void compareThreeBytes(KX7CharSetConverter& converter, unsigned int firstLead, unsigned int lastLead)
{
    Probe probe(converter, *setOf(converter).model);
    unsigned int turn = 0;
    DecodeCall call{std::string(3, '\0'), 8, ILLCHAR_STOP, -1};
    for (unsigned int a = firstLead; a <= lastLead; ++a)
        for (unsigned int b = 1; b <= 0xFF && !probe.gaveUp(); ++b)
            for (unsigned int c = 1; c <= 0xFF; ++c) {
                ++turn;
                call.bytes[0] = static_cast<char>(a);
                call.bytes[1] = static_cast<char>(b);
                call.bytes[2] = static_cast<char>(c);
                call.capacity = 1 + turn % 5;
                for (ILLCHAR_OPTYPE const mode : MODES) {
                    call.op = mode;
                    probe.compareDecode(call, FLAG_ARGUMENTS[turn % 3]);
                }
            }
}

/** The lead bytes are shared out, so that both cores have some. */
class FirstOfThree : public testing::TestWithParam<unsigned int> {};
constexpr unsigned int LEADS_A_PART = 32;

class FirstOfFour : public testing::TestWithParam<unsigned int> {};

}  // namespace

TEST_P(EverySet, DecodesEverySequenceOfOneOrTwoBytesInThreeModes)
{
    MultibyteSet const& set = allSets()[GetParam().index];
    if (set.isWide)
        return;  // EveryUnitDecodedFromUTF16, EveryCodePointDecodedFromUTF32AndSomeBeyond
    Probe probe(set.converter, *set.model);
    for (unsigned int a = 1; a <= 0xFF && !probe.gaveUp(); ++a)
        for (unsigned int b = 0; b <= 0xFF; ++b) {
            std::string bytes(1, static_cast<char>(a));
            if (b != 0)
                bytes += static_cast<char>(b);
            for (ILLCHAR_OPTYPE const mode : MODES)
                for (unsigned int const capacity : {1U, 2U, 8U})
                    probe.compareDecode({bytes, capacity, mode, -1}, FLAG_ARGUMENTS[(a + b + capacity) % 3]);
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
        }
}

TEST_P(EverySet, EncodesEveryUnitInThreeModes)
{
    MultibyteSet const& set = allSets()[GetParam().index];
    Probe probe(set.converter, *set.model);
    for (unsigned int unit = 1; unit <= 0xFFFF && !probe.gaveUp(); ++unit) {
        std::u16string const units(1, static_cast<char16_t>(unit));
        for (ILLCHAR_OPTYPE const mode : MODES)
            for (unsigned int const capacity : {1U, 3U, 24U})
                probe.compareEncode({units, capacity, mode}, FLAG_ARGUMENTS[(unit + capacity) % 3]);
        probe.compareNumBytes(units, UNTIL_TERMINATOR);
    }
}

TEST_P(EverySet, EncodesEveryPairInThreeModes)
{
    MultibyteSet const& set = allSets()[GetParam().index];
    Probe probe(set.converter, *set.model);
    for (unsigned int high = 0xD800; high <= 0xDBFF && !probe.gaveUp(); ++high)
        for (unsigned int low = 0xDC00; low <= 0xDFFF; ++low) {
            std::u16string const units{static_cast<char16_t>(high), static_cast<char16_t>(low)};
            for (ILLCHAR_OPTYPE const mode : MODES)
                probe.compareEncode({units, 48, mode}, FLAG_ARGUMENTS[low % 3]);
        }
}

INSTANTIATE_TEST_SUITE_P(All, EverySet, testing::ValuesIn(setNames()), suffixOf);

TEST_P(FirstOfThree, DecodesEverySequenceOfEUCJPInThreeModes)
{
    unsigned int const first = std::max(1U, GetParam());
    compareThreeBytes(g_oConverterEUCJP, first, GetParam() + LEADS_A_PART - 1);
}

TEST_P(FirstOfThree, DecodesEverySequenceOfGB18030InThreeModes)
{
    unsigned int const first = std::max(1U, GetParam());
    compareThreeBytes(g_oConverterGB18030, first, GetParam() + LEADS_A_PART - 1);
}

INSTANTIATE_TEST_SUITE_P(Parts, FirstOfThree, testing::Range(0U, 0x100U, LEADS_A_PART));

TEST_P(FirstOfFour, DecodesEverySequenceOfUTF8)
{
    // A zero byte after the lead ends the text there. The modes take turns: UTF-8 has no use for them.
    Probe probe(g_oConverterUTF8, *setOf(g_oConverterUTF8).model);
    DecodeCall call{std::string(4, '\0'), 8, ILLCHAR_STOP, -1};
    call.bytes[0] = static_cast<char>(GetParam());
    for (unsigned int followers = 0; followers <= 0xFFFFFF && !probe.gaveUp(); ++followers) {
        call.bytes[1] = static_cast<char>(followers >> 16);
        call.bytes[2] = static_cast<char>(followers >> 8);
        call.bytes[3] = static_cast<char>(followers);
        call.op = MODES[followers % 3];
        call.capacity = 1 + followers % 5;
        probe.compareDecode(call, FLAG_ARGUMENTS[followers / 3 % 3]);
    }
}

INSTANTIATE_TEST_SUITE_P(Leads, FirstOfFour, testing::Range(0xF0U, 0x100U));
