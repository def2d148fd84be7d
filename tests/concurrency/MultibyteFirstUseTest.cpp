// kx7text tests - threads that meet in the first conversion of a multibyte converter.
//
// A converter is used for the first time once, so every test here runs in a process of its own.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "kx7/charset/Converters.h"

namespace {

constexpr size_t THREADS = 64;

struct Subject {
    char const* name;  ///< letters and digits only
    KX7CharSetConverter* converter;
    std::string code;      ///< of one character
    std::u16string units;  ///< of that character
};

std::ostream& operator<<(std::ostream& out, Subject const& subject)
{
    return out << subject.name;
}

std::vector<Subject> subjects()
{
    return {
        {"WCP932", &g_oConverterWCP932, "\x82\xA0", u"\u3042"},
        {"WCP936", &g_oConverterWCP936, "\xB0\xA1", u"\u554A"},
        {"WCP949", &g_oConverterWCP949, "\xB0\xA1", u"\uAC00"},
        {"WCP950", &g_oConverterWCP950, "\xA4\x40", u"\u4E00"},
        {"Big5", &g_oConverterBig5, "\xA4\x40", u"\u4E00"},
        {"ShiftJIS", &g_oConverterSHIFTJIS, "\x82\xA0", u"\u3042"},
        {"ShiftJIS2004", &g_oConverterSJIS2004, "\x87\xA0", u"\U0002000B"},
        {"EUCKR", &g_oConverterEUCKR, "\xB0\xA1", u"\uAC00"},
        {"EUCCN", &g_oConverterEUCCN, "\xB0\xA1", u"\u554A"},
        {"EUCJP", &g_oConverterEUCJP, "\x8E\xB1", u"\uFF71"},
        {"GB18030", &g_oConverterGB18030, "\x81\x30\x84\x36", u"\u00A5"},
        {"UTF16Escape", &g_oConverterUTF16Esc, "U+20AC", u"\u20AC"},
    };
}

/** What the operations of a converter gave in one thread. */
struct Results {
    std::u16string units;
    std::string bytes;
    unsigned int unitCount = 0;
    unsigned int byteCount = 0;
    bool illegal = false;
};

/** All four operations, each thread beginning with another one. */
Results convert(Subject const& subject, std::string const& text, std::u16string const& textUnits, size_t first)
{
    Results results;
    KX7CharSetConverter& converter = *subject.converter;
    auto const* const units = reinterpret_cast<unsigned short const*>(textUnits.c_str());
    for (size_t i = 0; i < 4; ++i) {
        bool illegal = false;
        switch ((first + i) % 4) {
            case 0: {
                std::vector<unsigned short> out(text.size() + 1);
                unsigned int const length = converter.toUTF16(
                    out.data(), text.c_str(), static_cast<unsigned int>(text.size()), ILLCHAR_STOP, &illegal, -1);
                results.units.assign(out.begin(), out.begin() + length);
                break;
            }
            case 1: {
                std::string out(6 * textUnits.size() + 4, '\0');
                out.resize(converter.fromUTF16(&out[0], units, static_cast<unsigned int>(6 * textUnits.size()),
                                               ILLCHAR_STOP, &illegal));
                results.bytes = out;
                break;
            }
            case 2: results.unitCount = converter.getNumUnits(text.c_str(), 0xFFFFFFFF); break;
            default: results.byteCount = converter.getNumBytes(units, 0xFFFFFFFF); break;
        }
        results.illegal = results.illegal || illegal;
    }
    return results;
}

class MultibyteFirstUse : public testing::TestWithParam<Subject> {};

}  // namespace

TEST_P(MultibyteFirstUse, ByManyThreadsInAllOperations)
{
    Subject const subject = GetParam();
    std::string text;
    std::u16string textUnits;
    for (int i = 0; i < 100; ++i) {
        text += subject.code + "A";
        textUnits += subject.units + u"A";
    }
    std::array<Results, THREADS> results;
    std::atomic<size_t> waiting{THREADS};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < THREADS; ++i)
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0)
                std::this_thread::yield();
            results[i] = convert(subject, text, textUnits, i);
        });
    for (std::thread& thread : threads)
        thread.join();
    for (Results const& each : results) {
        EXPECT_TRUE(each.units == textUnits);
        EXPECT_EQ(each.bytes, text);
        EXPECT_EQ(each.unitCount, textUnits.size());
        EXPECT_EQ(each.byteCount, text.size());
        EXPECT_FALSE(each.illegal);
    }
}

INSTANTIATE_TEST_SUITE_P(AllConverters, MultibyteFirstUse, testing::ValuesIn(subjects()),
                         [](auto const& subject) { return std::string(subject.param.name); });
