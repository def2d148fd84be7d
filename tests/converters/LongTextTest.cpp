// kx7text tests - texts longer than what the library looks at in one go, and texts that memory ends after.
#include <gtest/gtest.h>

#include <climits>

#include "kx7/charset/Converters.h"
#include "tests/model/Utf8Model.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/Probe.h"
#include "tests/support/Rounds.h"
#include "tests/support/SampleSingleByte.h"
#include "tests/support/Texts.h"

using namespace kx7test;

namespace {

/** A converter with its model and texts that cross all of its branches. */
class LongTexts : public testing::Test {
protected:
    struct Subject {
        char const* name;
        KX7CharSetConverter& converter;
        Model const& model;
        std::vector<std::string> byteFragments;
        std::vector<std::u16string> unitFragments;
    };

    std::vector<Subject> subjects()
    {
        return {{"UTF-8", g_oConverterUTF8, m_utf8, utf8Fragments(), utf16Fragments()},
                {"single-byte", m_singleByte, m_singleByteModel, sampleByteFragments(), sampleUnitFragments()}};
    }

private:
    Utf8Model m_utf8;
    BytePairs m_pairs = samplePairs();
    std::vector<unsigned short> m_list = listOf(m_pairs);
    SingleByteModel m_singleByteModel{m_pairs};
    KX7CharSetConverterSBCS m_singleByte{m_list.data(), KX7CS_WCP1252};
};

}  // namespace

TEST_F(LongTexts, EveryFragmentAcrossAPieceBoundary)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        for (size_t const pieces : {size_t{1}, size_t{2}})
            for (size_t before = 0; before <= 6; ++before)
                for (std::string const& a : subject.byteFragments)
                    for (std::string const& b : subject.byteFragments) {
                        size_t const letters = pieces * PIECE_UNITS - before;
                        std::string const bytes = std::string(letters, 'x') + a + b + "C";
                        auto const length = static_cast<unsigned int>(bytes.size());
                        probe.compareDecode({bytes, length, ILLCHAR_STOP, -1}, FlagArgument::FALSE_BEFORE);
                        probe.compareDecode({bytes, length - 2, ILLCHAR_REPLACE, -1}, FlagArgument::TRUE_BEFORE);
                        probe.compareDecode({bytes, length, ILLCHAR_REPLACE, static_cast<int>(letters + 1)},
                                            FlagArgument::TRUE_BEFORE);
                        if (probe.gaveUp())
                            return;
                    }
    }
}

TEST_F(LongTexts, EveryUnitFragmentAcrossAPieceBoundary)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        for (size_t const pieces : {size_t{1}, size_t{2}})
            for (size_t before = 0; before <= 3; ++before)
                for (std::u16string const& a : subject.unitFragments)
                    for (std::u16string const& b : subject.unitFragments) {
                        std::u16string const units = std::u16string(pieces * PIECE_UNITS - before, u'x') + a + b + u"C";
                        for (ILLCHAR_OPTYPE const op : OPERATIONS)
                            probe.compareEncode({units, static_cast<unsigned int>(4 * units.size()), op},
                                                FlagArgument::FALSE_BEFORE);
                        probe.compareEncode({units, static_cast<unsigned int>(units.size() - 1), ILLCHAR_REPLACE},
                                            FlagArgument::TRUE_BEFORE);
                        if (probe.gaveUp())
                            return;
                    }
    }
}

TEST_F(LongTexts, RandomTextsDecode)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        Rounds rounds(300, 1);
        std::mt19937& random = rounds.random();
        while (rounds.next() && !probe.gaveUp()) {
            std::string const bytes = randomText(random, subject.byteFragments, random() % (4 * PIECE_UNITS));
            auto const length = static_cast<unsigned int>(bytes.size());
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                probe.compareDecode({bytes, length, op, -1}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareDecode({bytes, static_cast<unsigned int>(random() % (length + 1)), op, -1},
                                    FLAG_ARGUMENTS[random() % 3]);
                probe.compareDecode({bytes, edgeOr(random, length), op, static_cast<int>(random() % (length + 1))},
                                    FLAG_ARGUMENTS[random() % 3]);
                probe.compareDecode({bytes, length, op, static_cast<int>(edgeOr(random, length))},
                                    FLAG_ARGUMENTS[random() % 3]);
            }
            probe.compareNumUnits(bytes, UNTIL_TERMINATOR);
            probe.compareNumUnits(bytes, static_cast<unsigned int>(random() % (length + 1)));
        }
    }
}

TEST_F(LongTexts, RandomTextsEncode)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        Rounds rounds(300, 2);
        std::mt19937& random = rounds.random();
        while (rounds.next() && !probe.gaveUp()) {
            std::u16string const units = randomText(random, subject.unitFragments, random() % (4 * PIECE_UNITS));
            auto const length = static_cast<unsigned int>(units.size());
            for (ILLCHAR_OPTYPE const op : OPERATIONS) {
                probe.compareEncode({units, edgeOr(random, 6 * length), op}, FLAG_ARGUMENTS[random() % 3]);
                probe.compareEncode({units, static_cast<unsigned int>(random() % (3 * length + 1)), op},
                                    FLAG_ARGUMENTS[random() % 3]);
            }
            probe.compareNumBytes(units, UNTIL_TERMINATOR);
            probe.compareNumBytes(units, static_cast<unsigned int>(random() % (length + 1)));
        }
    }
}

TEST_F(LongTexts, NothingIsReadAfterTheCharacterThatFillsTheCapacity)
{
    // Without a terminator: the capacity is what says that the text is over.
    std::string const wholeCharacters[] = {"A", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xED\xA0\x80"};
    Utf8Model const model;
    Probe probe(g_oConverterUTF8, model);
    for (size_t const letters : {size_t{0}, size_t{5}, PIECE_UNITS - 1, PIECE_UNITS, 2 * PIECE_UNITS - 2})
        for (std::string const& a : wholeCharacters)
            for (std::string const& b : wholeCharacters) {
                std::string const bytes = std::string(letters, 'x') + a + b;
                Decoded const expected = model.toUTF16({bytes, INT_MAX, ILLCHAR_REPLACE, -1});
                auto const capacity = static_cast<unsigned int>(expected.units.size());
                probe.decode({bytes, capacity, ILLCHAR_REPLACE, -1}, expected, FlagArgument::NONE, "capacity",
                             Terminator::ABSENT);
            }
}

TEST_F(LongTexts, NothingIsReadAfterTheCharacterThatReachesTheLimit)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        std::vector<std::string> texts{"A", "AB", "\x80", "AB\x80"};
        if (subject.converter.getMaxUnitSize() == 3)
            texts = {"A",
                     "\xC3\xA9",
                     "\xE2\x82\xAC",
                     "\xF0\x9F\x98\x80",
                     "A\x80",
                     "\xC3"
                     "A"};
        for (size_t const letters : {size_t{0}, size_t{5}, PIECE_UNITS - 1, PIECE_UNITS, 2 * PIECE_UNITS - 2})
            for (std::string const& text : texts) {
                std::string const bytes = std::string(letters, 'x') + text;
                DecodeCall const call{bytes, 3 * PIECE_UNITS, ILLCHAR_REPLACE, static_cast<int>(bytes.size())};
                probe.decode(call, subject.model.toUTF16(call), FlagArgument::NONE, "limit", Terminator::ABSENT);
            }
    }
}

TEST_F(LongTexts, NothingIsReadAfterTheUnitThatFillsTheCapacity)
{
    for (Subject const& subject : subjects()) {
        SCOPED_TRACE(subject.name);
        Probe probe(subject.converter, subject.model);
        for (size_t const length : {size_t{1}, size_t{7}, PIECE_UNITS - 1, PIECE_UNITS, PIECE_UNITS + 1}) {
            std::u16string const letters(length, u'x');
            EncodeCall const call{letters, static_cast<unsigned int>(length), ILLCHAR_REPLACE};
            probe.encode(call, subject.model.fromUTF16(call), FlagArgument::NONE, "capacity", Terminator::ABSENT);
        }
    }
}
