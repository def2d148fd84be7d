// kx7text tests - what a converter maps comes back, code points and codes alike, but for what is listed here.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "kx7/charset/Converters.h"
#include "tests/support/Hex.h"

using kx7test::hex;

namespace {

struct Converter {
    char const* name;
    KX7CharSetConverter& converter;
    unsigned int mapped;  ///< code points but U+0000 that have a code, by themselves
};

unsigned int const ALL_CODE_POINTS = 0x10FFFF - 0x800;

Converter const CONVERTERS[] = {
    {"932", g_oConverterWCP932, 9338},
    {"936", g_oConverterWCP936, 24069},
    {"949", g_oConverterWCP949, 10236},
    {"950", g_oConverterWCP950, 20202},
    {"Big5", g_oConverterBig5, 19839},
    {"Shift_JIS", g_oConverterSHIFTJIS, 9396},
    {"Shift_JIS-2004", g_oConverterSJIS2004, 11398},
    {"EUC-KR", g_oConverterEUCKR, 8224 + 0x7E},
    {"EUC-CN", g_oConverterEUCCN, 7445 + 0x7E},
    // Of JIS X 0201 the yen sign, the overline and the katakana are not there already; U+005C is in both.
    {"EUC-JP", g_oConverterEUCJP, 6879 - 1 + 0x7E + 2 + 63},
    {"GB 18030", g_oConverterGB18030, ALL_CODE_POINTS},
    {"UTF-16 escape", g_oConverterUTF16Esc, ALL_CODE_POINTS},
    {"UTF-16", g_oConverterUTF16, ALL_CODE_POINTS},
    {"UTF-32", g_oConverterUTF32, ALL_CODE_POINTS},
};

struct Exception {
    char const* name;
    bool (*covers)(std::string const& code);
    unsigned int count;
    char const* reason;
};

unsigned int byteAt(std::string const& code, size_t i)
{
    return static_cast<unsigned char>(code[i]);
}

bool hasTrail(std::string const& code, unsigned int first, unsigned int last)
{
    return code.size() == 2 && byteAt(code, 1) >= first && byteAt(code, 1) <= last;
}

/** Code points whose code does not decode to them. */
Exception const CODE_POINTS_THAT_DO_NOT_COME_BACK[] = {
    {"936", [](std::string const& code) { return hasTrail(code, 0x80, 0xA0); }, 4158,
     "trail bytes that the byte types do not accept"},
    {"950", [](std::string const& code) { return hasTrail(code, 0x81, 0xA0); }, 418,
     "trail bytes that the byte types do not accept"},
    {"949", [](std::string const& code) { return code.size() == 1 && byteAt(code, 0) > 0x80; }, 4,
     "single-byte meanings of lead bytes"},
    {"GB 18030", [](std::string const& code) { return code == "\xFF"; }, 1, "0xFF is a code of GBK but illegal"},
    {"GB 18030", [](std::string const& code) { return code.size() == 2; }, 81,
     "private-use characters of GBK whose codes GB 18030 maps otherwise"},
};

/** Codes whose character has another code. */
Exception const CODES_THAT_DO_NOT_COME_BACK[] = {
    {"EUC-JP", [](std::string const& code) { return code == "\xA1\xC0"; }, 1, "reverse solidus is one byte"},
    {"EUC-JP",
     [](std::string const& code) {
         unsigned int const cell = byteAt(code, code.size() - 1) & 0x7F;
         return code[0] == '\x80' && cell != 0x5C && cell != 0x7E;
     },
     248, "row 0 has what is one byte"},
    {"EUC-JP", [](std::string const& code) { return code.size() == 2 && byteAt(code, 1) < 0x80; }, 6879 + 2,
     "second bytes without their high bit"},
    {"GB 18030", [](std::string const& code) { return code == "\xA2\xE3"; }, 1, "the euro sign is one byte"},
    {"GB 18030", [](std::string const& code) { return code.size() == 4; }, 82, "GBK has a shorter code"},
};

std::string encoded(KX7CharSetConverter& converter, std::u16string const& units)
{
    char bytes[32];
    bool illegal = false;
    unsigned int const length =
        converter.fromUTF16(bytes, reinterpret_cast<unsigned short const*>(units.c_str()), 24, ILLCHAR_STOP, &illegal);
    return illegal ? std::string() : std::string(bytes, length);
}

std::u16string decoded(KX7CharSetConverter& converter, std::string const& code, ILLCHAR_OPTYPE op)
{
    std::string const bytes = code + std::string(4, '\0');
    unsigned short units[16];
    bool illegal = false;
    unsigned int const length = converter.toUTF16(units, bytes.data(), 15, op, &illegal, 15);
    return illegal && op == ILLCHAR_STOP ? std::u16string() : std::u16string(units, units + length);
}

std::u16string unitsOf(unsigned int codePoint)
{
    if (codePoint <= 0xFFFF)
        return std::u16string(1, static_cast<char16_t>(codePoint));
    return {static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)),
            static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF))};
}

/** Exceptions of a converter and how often each was met. */
class Exceptions {
public:
    template <size_t N>
    Exceptions(char const* name, Exception const (&all)[N]) : m_name(name), m_begin(all), m_end(all + N)
    {
    }

    bool covers(std::string const& code)
    {
        for (Exception const* each = m_begin; each != m_end; ++each)
            if (m_name == each->name && each->covers(code)) {
                ++m_met[each - m_begin];
                return true;
            }
        return false;
    }

    void expectAllMet() const
    {
        for (Exception const* each = m_begin; each != m_end; ++each) {
            unsigned int const expected = m_name == each->name ? each->count : 0;
            EXPECT_EQ(m_met[each - m_begin], expected) << m_name << ": " << each->reason;
        }
    }

private:
    std::string m_name;
    Exception const* m_begin;
    Exception const* m_end;
    unsigned int m_met[16] = {};
};

}  // namespace

TEST(RoundTrip, EveryCodePointThatIsMappedComesBack)
{
    for (Converter const& tested : CONVERTERS) {
        Exceptions exceptions(tested.name, CODE_POINTS_THAT_DO_NOT_COME_BACK);
        unsigned int mapped = 0;
        for (unsigned int c = 1; c <= 0x10FFFF; ++c) {
            if (c >= 0xD800 && c <= 0xDFFF)
                continue;
            std::u16string const units = unitsOf(c);
            std::string const code = encoded(tested.converter, units);
            if (code.empty())
                continue;
            ++mapped;
            if (decoded(tested.converter, code, ILLCHAR_STOP) == units)
                continue;
            ASSERT_TRUE(exceptions.covers(code)) << tested.name << ": " << hex(units) << " is " << hex(code);
        }
        EXPECT_EQ(mapped, tested.mapped) << tested.name;
        exceptions.expectAllMet();
    }
}

TEST(RoundTrip, EveryCodeThatIsMappedComesBack)
{
    for (Converter const& tested : CONVERTERS) {
        if (tested.converter.getNullCharSize() != 1 || &tested.converter == &g_oConverterUTF16Esc)
            continue;
        Exceptions exceptions(tested.name, CODES_THAT_DO_NOT_COME_BACK);
        auto const check = [&](std::string const& code) {
            std::u16string const units = decoded(tested.converter, code, ILLCHAR_STOP);
            if (units.empty() || (units.size() == 2 && (units[0] & 0xFC00) != 0xD800) || units.size() > 2)
                return;
            if (encoded(tested.converter, units) == code)
                return;
            ASSERT_TRUE(exceptions.covers(code)) << tested.name << ": " << hex(code) << " is " << hex(units);
        };
        for (unsigned int a = 1; a <= 0xFF; ++a) {
            check(std::string(1, static_cast<char>(a)));
            for (unsigned int b = 1; b <= 0xFF; ++b)
                check({static_cast<char>(a), static_cast<char>(b)});
        }
        if (&tested.converter == &g_oConverterGB18030)
            for (char a = '\x81'; a != '\xFF'; ++a)
                for (char b = '0'; b <= '9'; ++b)
                    for (char c = '\x81'; c != '\xFF'; ++c)
                        for (char d = '0'; d <= '9'; ++d)
                            check({a, b, c, d});
        ASSERT_FALSE(HasFatalFailure());
        exceptions.expectAllMet();
    }
}

TEST(RoundTrip, ReplacementCharacterStandsForNoMappedCodeButItsOwn)
{
    for (Converter const& tested : CONVERTERS) {
        // The escaped form widens the byte 0xFD to U+FFFD.
        if (tested.converter.getNullCharSize() != 1 || &tested.converter == &g_oConverterUTF16Esc)
            continue;
        std::string const own = encoded(tested.converter, u"\uFFFD");
        for (unsigned int a = 1; a <= 0xFF; ++a)
            for (unsigned int b = 1; b <= 0xFF; ++b) {
                std::string const code{static_cast<char>(a), static_cast<char>(b)};
                if (code == own)
                    continue;
                std::u16string const units = decoded(tested.converter, code, ILLCHAR_STOP);
                ASSERT_EQ(std::count(units.begin(), units.end(), u'\uFFFD'), 0) << tested.name << " " << hex(code);
                // Whatever does not stop is not replaced.
                bool const same = units.empty() || decoded(tested.converter, code, ILLCHAR_REPLACE) == units;
                ASSERT_TRUE(same) << tested.name << " " << hex(code);
            }
    }
}
