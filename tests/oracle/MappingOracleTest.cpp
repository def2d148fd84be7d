// kx7text tests - character sets of bytes against the mappings that ICU, glibc and Python publish.
//
// A peer's mapping is the pairs that it converts both ways. Every code and every code point is asked of the converter
// too; where the two differ, the table of differences must say so, and must say how often.
#include <gtest/gtest.h>
#include <iconv.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <unordered_map>
#include <vector>

#include "kx7/charset/Converters.h"
#include "tests/support/SingleByteSets.h"

namespace {

/** No code, or no code point. */
constexpr unsigned int NONE = 0;

/** A published mapping: a code of one to four bytes as a number, high byte first. */
class Peer {
public:
    virtual ~Peer() = default;
    virtual bool works() const = 0;
    virtual unsigned int decode(std::string const& bytes) = 0;
    virtual unsigned int encode(unsigned int codePoint) = 0;
};

unsigned int codeOf(char const* bytes, size_t length)
{
    unsigned int code = 0;
    for (size_t i = 0; i < length; ++i)
        code = code << 8 | static_cast<unsigned char>(bytes[i]);
    return code;
}

std::string bytesOf(unsigned int code)
{
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        if (code >> shift != 0)
            bytes += static_cast<char>(code >> shift & 0xFF);
    return bytes;
}

/** The code point that one or two units are; NONE where they are more than one. */
template <class Unit>
unsigned int codePointOf(Unit const* units, size_t length)
{
    if (length == 1)
        return units[0];
    if (length == 2 && units[0] >= 0xD800 && units[0] <= 0xDBFF && units[1] >= 0xDC00 && units[1] <= 0xDFFF)
        return 0x10000 + ((units[0] - 0xD800U) << 10) + (units[1] - 0xDC00U);
    return NONE;
}

size_t unitsOf(unsigned int codePoint, char16_t* units)
{
    if (codePoint <= 0xFFFF) {
        units[0] = static_cast<char16_t>(codePoint);
        return 1;
    }
    units[0] = static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    units[1] = static_cast<char16_t>(0xDC00 + (codePoint & 0x3FF));
    return 2;
}

class IcuPeer : public Peer {
public:
    explicit IcuPeer(char const* name)
    {
        UErrorCode error = U_ZERO_ERROR;
        m_converter = ucnv_open(name, &error);
        if (!m_converter)
            return;
        ucnv_setFallback(m_converter, false);
        ucnv_setToUCallBack(m_converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
        ucnv_setFromUCallBack(m_converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    }
    ~IcuPeer() override
    {
        if (m_converter)
            ucnv_close(m_converter);
    }
    IcuPeer(IcuPeer const&) = delete;
    IcuPeer& operator=(IcuPeer const&) = delete;

    bool works() const override { return m_converter != nullptr; }

    unsigned int decode(std::string const& bytes) override
    {
        char16_t units[4];
        UErrorCode error = U_ZERO_ERROR;
        int32_t const length =
            ucnv_toUChars(m_converter, units, 4, bytes.data(), static_cast<int32_t>(bytes.size()), &error);
        if (U_FAILURE(error) || length <= 0)
            return NONE;
        return codePointOf(units, static_cast<size_t>(length));
    }

    unsigned int encode(unsigned int codePoint) override
    {
        char16_t units[2];
        auto const count = static_cast<int32_t>(unitsOf(codePoint, units));
        char bytes[8];
        UErrorCode error = U_ZERO_ERROR;
        int32_t const length = ucnv_fromUChars(m_converter, bytes, 8, units, count, &error);
        if (U_FAILURE(error) || length < 1 || length > 4)
            return NONE;
        return codeOf(bytes, static_cast<size_t>(length));
    }

private:
    UConverter* m_converter;
};

class IconvPeer : public Peer {
public:
    explicit IconvPeer(char const* name)
        : m_decoder(iconv_open("UTF-16LE", name)), m_encoder(iconv_open(name, "UTF-16LE"))
    {
    }
    ~IconvPeer() override
    {
        for (iconv_t const converter : {m_decoder, m_encoder})
            if (converter != NO_CONVERTER)
                iconv_close(converter);
    }
    IconvPeer(IconvPeer const&) = delete;
    IconvPeer& operator=(IconvPeer const&) = delete;

    bool works() const override { return m_decoder != NO_CONVERTER && m_encoder != NO_CONVERTER; }

    unsigned int decode(std::string const& bytes) override
    {
        char in[8];
        std::copy(bytes.begin(), bytes.end(), in);
        char16_t units[4];
        size_t const length = convert(m_decoder, in, bytes.size(), reinterpret_cast<char*>(units), sizeof units);
        return codePointOf(units, length / 2);
    }

    unsigned int encode(unsigned int codePoint) override
    {
        char16_t units[2];
        size_t const count = unitsOf(codePoint, units);
        char bytes[8];
        size_t const length = convert(m_encoder, reinterpret_cast<char*>(units), 2 * count, bytes, sizeof bytes);
        if (length < 1 || length > 4)
            return NONE;
        return codeOf(bytes, length);
    }

private:
    /** Bytes written; 0 where not all of it is converted as it is. */
    static size_t convert(iconv_t converter, char* in, size_t inBytes, char* out, size_t outBytes)
    {
        size_t const capacity = outBytes;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        if (iconv(converter, &in, &inBytes, &out, &outBytes) != 0 || inBytes != 0)
            return 0;
        // A base letter is held back until it is known what follows.
        if (iconv(converter, nullptr, nullptr, &out, &outBytes) != 0)
            return 0;
        return capacity - outBytes;
    }

    static inline iconv_t const NO_CONVERTER = reinterpret_cast<iconv_t>(-1);
    iconv_t m_decoder;
    iconv_t m_encoder;
};

/** A codec of Python, whose pairs tests/oracle/python_mapping.py prints. */
class PythonPeer : public Peer {
public:
    explicit PythonPeer(char const* name)
    {
        std::string const command = std::string("/usr/bin/python3 tests/oracle/python_mapping.py ") + name;
        FILE* const output = popen(command.c_str(), "r");
        unsigned int code = 0;
        unsigned int codePoint = 0;
        while (fscanf(output, "%x %x", &code, &codePoint) == 2) {
            m_codePoints[code] = codePoint;
            m_codes[codePoint] = code;
        }
        m_works = pclose(output) == 0;
    }

    bool works() const override { return m_works; }
    unsigned int decode(std::string const& bytes) override
    {
        return at(m_codePoints, codeOf(bytes.data(), bytes.size()));
    }
    unsigned int encode(unsigned int codePoint) override { return at(m_codes, codePoint); }

private:
    using Map = std::unordered_map<unsigned int, unsigned int>;

    static unsigned int at(Map const& map, unsigned int key)
    {
        auto const found = map.find(key);
        return found != map.end() ? found->second : NONE;
    }

    Map m_codePoints;
    Map m_codes;
    bool m_works = false;
};

enum class From { ICU, GLIBC, PYTHON };
enum class Way { DECODE, ENCODE };

struct Comparison {
    std::string name;
    KX7CharSetConverter& converter;
    From from;
    char const* published;
    bool hasFourBytes;
};

std::ostream& operator<<(std::ostream& out, Comparison const& comparison)
{
    return out << comparison.name;
}

std::vector<Comparison> comparisons()
{
    std::vector<Comparison> all = {
        {"932", g_oConverterWCP932, From::ICU, "ibm-942_P12A-1999", false},
        {"936", g_oConverterWCP936, From::ICU, "windows-936-2000", false},
        {"949", g_oConverterWCP949, From::ICU, "ibm-949_P110-1999", false},
        {"950", g_oConverterWCP950, From::ICU, "ibm-950_P110-1999", false},
        {"Big5", g_oConverterBig5, From::ICU, "windows-950-2000", false},
        {"Shift_JIS", g_oConverterSHIFTJIS, From::ICU, "ibm-943_P15A-2003", false},
        {"GB 18030", g_oConverterGB18030, From::ICU, "gb18030", true},
        {"Shift_JIS-2004 of glibc", g_oConverterSJIS2004, From::GLIBC, "SHIFT_JISX0213", false},
        {"EUC-KR of glibc", g_oConverterEUCKR, From::GLIBC, "EUC-KR", false},
        {"EUC-CN of glibc", g_oConverterEUCCN, From::GLIBC, "GB2312", false},
        {"EUC-JP of glibc", g_oConverterEUCJP, From::GLIBC, "EUC-JP", false},
        {"GB 18030 of glibc", g_oConverterGB18030, From::GLIBC, "GB18030", true},
        // Not among them: 932, 949, 950 and Big5, whose codecs hold the mappings of other systems.
        {"936 of Python", g_oConverterWCP936, From::PYTHON, "cp936", false},
        {"Shift_JIS of Python", g_oConverterSHIFTJIS, From::PYTHON, "shift_jis", false},
        {"Shift_JIS-2004 of Python", g_oConverterSJIS2004, From::PYTHON, "shift_jisx0213", false},
        {"EUC-KR of Python", g_oConverterEUCKR, From::PYTHON, "euc_kr", false},
        {"EUC-CN of Python", g_oConverterEUCCN, From::PYTHON, "gb2312", false},
        {"EUC-JP of Python", g_oConverterEUCJP, From::PYTHON, "euc_jp", false},
        {"GB 18030 of Python", g_oConverterGB18030, From::PYTHON, "gb18030", true},
    };
    for (kx7test::SingleByteSet const& set : kx7test::SINGLE_BYTE_SETS)
        if (*set.python != '\0')
            all.push_back({std::string(set.name) + " of Python", set.converter, From::PYTHON, set.python, false});
    return all;
}

std::vector<Comparison> const COMPARISONS = comparisons();

struct Difference {
    char const* comparison;
    Way way;
    bool (*covers)(unsigned int key);  ///< codes when decoding, code points when encoding
    unsigned int count;
    char const* reason;
};

bool isIn(unsigned int value, unsigned int first, unsigned int last)
{
    return value >= first && value <= last;
}

/** Private-use characters that GBK gives the two-byte codes which GB 18030 maps otherwise. */
bool isMovedByGB18030(unsigned int c)
{
    return c == 0xE76C || c == 0xE7C8 || isIn(c, 0xE7E7, 0xE7F3) || isIn(c, 0xE815, 0xE864);
}

/** Codes and code points that later editions of GB 18030 map otherwise. */
bool isOfLaterEditions(unsigned int key)
{
    unsigned int const codes[] = {0xFE51,     0xFE52,     0xFE53,     0xFE59,     0xFE61,     0xFE66,    0xFE67,
                                  0xFE6C,     0xFE6D,     0xFE76,     0xFE7E,     0xFE90,     0xFE91,    0xFEA0,
                                  0x95329031, 0x95329033, 0x95329730, 0x9536B937, 0x9630BA35, 0x9635B630};
    for (unsigned int const code : codes)
        if (key == code)
            return true;
    return isIn(key, 0xA6D9, 0xA6DF) || isIn(key, 0xA6EC, 0xA6ED) || key == 0xA6F3 ||
           isIn(key, 0x82359037, 0x82359134) || isIn(key, 0x84318236, 0x84318335);
}

bool isOfLaterEditionsEncoded(unsigned int c)
{
    unsigned int const supplementary[] = {0x20087, 0x20089, 0x200CC, 0x215D7, 0x2298F, 0x241FE};
    unsigned int const privateUse[] = {0xE816, 0xE817, 0xE818, 0xE81E, 0xE826, 0xE82B, 0xE82C,
                                       0xE831, 0xE832, 0xE83B, 0xE843, 0xE854, 0xE855, 0xE864};
    return std::count(std::begin(supplementary), std::end(supplementary), c) != 0 ||
           std::count(std::begin(privateUse), std::end(privateUse), c) != 0 || isIn(c, 0x9FB4, 0x9FBB) ||
           isIn(c, 0xFE10, 0xFE19) || isIn(c, 0xE78D, 0xE796);
}

bool isControlOf8Bits(unsigned int key)
{
    return isIn(key, 0x7F, 0x9F);
}

bool isDelete(unsigned int key)
{
    return key == 0x7F;
}

bool isFeminineOrdinal(unsigned int key)
{
    return key == 0xAA;
}

bool isPrivateUse(unsigned int c)
{
    return isIn(c, 0xE000, 0xF8FF);
}

// The rows of a comparison are looked at in turn.
Difference const DIFFERENCES[] = {
    {"936", Way::DECODE, [](unsigned int code) { return isIn(code & 0xFF, 0x80, 0xA0) && code > 0xFF; }, 4158,
     "trail bytes that the byte types do not accept"},
    {"950", Way::DECODE, [](unsigned int code) { return isIn(code & 0xFF, 0x81, 0xA0) && code > 0xFF; }, 418,
     "trail bytes that the byte types do not accept"},
    {"949", Way::DECODE, [](unsigned int code) { return isIn(code, 0x81, 0x84); }, 4,
     "single-byte meanings of lead bytes"},

    {"GB 18030", Way::DECODE, [](unsigned int code) { return code == 0x80; }, 1, "the euro sign of GBK"},
    {"GB 18030", Way::DECODE, [](unsigned int code) { return code == 0xA8BC || code == 0x8135F437; }, 2,
     "traded places in the edition of 2005"},
    {"GB 18030", Way::ENCODE, [](unsigned int c) { return c == 0x1E3F || c == 0xE7C7; }, 2,
     "traded places in the edition of 2005"},
    {"GB 18030", Way::ENCODE, [](unsigned int c) { return c == 0x20AC; }, 1, "GBK goes first: 0x80"},
    {"GB 18030", Way::ENCODE, isMovedByGB18030, 81, "GBK goes first: private-use characters keep two bytes"},
    {"GB 18030", Way::ENCODE, [](unsigned int c) { return c == 0xF8F5; }, 1, "GBK goes first: the byte 0xFF"},

    {"GB 18030 of glibc", Way::DECODE, [](unsigned int code) { return code == 0x80; }, 1, "the euro sign of GBK"},
    {"GB 18030 of glibc", Way::DECODE, [](unsigned int code) { return code == 0xA8BC || code == 0x8135F437; }, 2,
     "traded places in the edition of 2005"},
    {"GB 18030 of glibc", Way::DECODE, isOfLaterEditions, 48, "private-use characters given up since"},
    {"GB 18030 of glibc", Way::ENCODE, [](unsigned int c) { return c == 0x1E3F || c == 0xE7C7; }, 2,
     "traded places in the edition of 2005"},
    {"GB 18030 of glibc", Way::ENCODE, [](unsigned int c) { return c == 0x20AC; }, 1, "GBK goes first: 0x80"},
    {"GB 18030 of glibc", Way::ENCODE, isOfLaterEditionsEncoded, 48, "private-use characters given up since"},
    {"GB 18030 of glibc", Way::ENCODE, isMovedByGB18030, 81, "GBK goes first: private-use characters keep two bytes"},
    {"GB 18030 of glibc", Way::ENCODE, [](unsigned int c) { return c == 0xF8F5; }, 1, "GBK goes first: the byte 0xFF"},

    {"Shift_JIS-2004 of glibc", Way::DECODE, [](unsigned int code) { return code == 0x815F || code == 0x81B0; }, 2,
     "reverse solidus and tilde are not full-width"},
    {"Shift_JIS-2004 of glibc", Way::ENCODE, [](unsigned int c) { return c == 0x5C || c == 0x7E; }, 2,
     "reverse solidus and tilde are not full-width"},
    {"Shift_JIS-2004 of glibc", Way::ENCODE, [](unsigned int c) { return c == 0xFF3C || c == 0xFF5E; }, 2,
     "reverse solidus and tilde are not full-width"},

    {"EUC-KR of glibc", Way::DECODE, isControlOf8Bits, 33, "controls from 0x7F on"},
    {"EUC-KR of glibc", Way::ENCODE, isControlOf8Bits, 33, "controls from 0x7F on"},
    {"EUC-KR of glibc", Way::DECODE, [](unsigned int code) { return isIn(code, 0xA2E6, 0xA2E8); }, 3,
     "three characters added to KS X 1001 later"},
    {"EUC-KR of glibc", Way::ENCODE, [](unsigned int c) { return c == 0x20AC || c == 0xAE || c == 0x327E; }, 3,
     "three characters added to KS X 1001 later"},

    {"EUC-CN of glibc", Way::DECODE, [](unsigned int code) { return code == 0x7F; }, 1, "delete"},
    {"EUC-CN of glibc", Way::ENCODE, [](unsigned int c) { return c == 0x7F; }, 1, "delete"},

    {"EUC-JP of glibc", Way::DECODE, isControlOf8Bits, 31, "controls from 0x7F on, the shifts left out"},
    {"EUC-JP of glibc", Way::ENCODE, isControlOf8Bits, 31, "controls from 0x7F on, the shifts left out"},
    {"EUC-JP of glibc", Way::DECODE, [](unsigned int code) { return code >> 8 == 0x80; }, 252,
     "row 0 is JIS X 0201, and second bytes are not checked"},
    {"EUC-JP of glibc", Way::DECODE, [](unsigned int code) { return code >> 8 >= 0xA1 && (code & 0xFF) < 0x80; }, 6879,
     "second bytes are not checked"},
    {"EUC-JP of glibc", Way::DECODE, [](unsigned int code) { return code == 0xA1C0; }, 1,
     "reverse solidus is not full-width"},
    {"EUC-JP of glibc", Way::ENCODE, [](unsigned int c) { return c == 0xFF3C; }, 1,
     "reverse solidus is not full-width"},
    {"EUC-JP of glibc", Way::ENCODE, [](unsigned int c) { return c == 0xA5 || c == 0x203E; }, 2,
     "yen sign and overline travel through row 0"},

    {"936 of Python", Way::DECODE, [](unsigned int code) { return isIn(code & 0xFF, 0x80, 0xA0) && code > 0xFF; }, 3860,
     "trail bytes that the byte types do not accept"},
    {"936 of Python", Way::DECODE, [](unsigned int code) { return code == 0x80 || code == 0xFF; }, 2,
     "the euro sign, a private-use character"},
    {"936 of Python", Way::DECODE, [](unsigned int code) { return code >= 0xA140; }, 1851, "private-use characters"},
    {"936 of Python", Way::ENCODE, [](unsigned int c) { return c == 0x20AC; }, 1, "the euro sign"},
    {"936 of Python", Way::ENCODE, isPrivateUse, 2150, "private-use characters"},

    {"Shift_JIS of Python", Way::DECODE, [](unsigned int code) { return code == 0x1A || code == 0x1C || code == 0x7F; },
     3, "three controls trade places"},
    {"Shift_JIS of Python", Way::ENCODE, [](unsigned int c) { return c == 0x1A || c == 0x1C || c == 0x7F; }, 3,
     "three controls trade places"},
    {"Shift_JIS of Python", Way::DECODE,
     [](unsigned int code) {
         return isIn(code, 0x8160, 0x8161) || code == 0x817C || isIn(code, 0x8191, 0x8192) || code == 0x81CA;
     },
     6, "full-width signs, where Python has others"},
    {"Shift_JIS of Python", Way::ENCODE,
     [](unsigned int c) { return c == 0xA2 || c == 0xA3 || c == 0xAC || c == 0x2016 || c == 0x2212 || c == 0x301C; }, 6,
     "signs that are full-width here"},
    {"Shift_JIS of Python", Way::DECODE, [](unsigned int code) { return code >= 0x8740; }, 2327,
     "vendor characters and private-use characters"},
    {"Shift_JIS of Python", Way::ENCODE, [](unsigned int c) { return c > 0x7F; }, 2333,
     "vendor characters, private-use characters, full-width signs"},

    {"Shift_JIS-2004 of Python", Way::DECODE,
     [](unsigned int code) { return code == 0x815C || isIn(code, 0x81D4, 0x81D5) || code == 0xFC5A; }, 4,
     "characters that the edition of 2004 gives the codes"},
    {"Shift_JIS-2004 of Python", Way::DECODE, [](unsigned int code) { return isIn(code, 0x879F, 0xEFFC); }, 10,
     "characters that the edition of 2004 adds"},
    {"Shift_JIS-2004 of Python", Way::ENCODE,
     [](unsigned int c) {
         return c == 0x2014 || c == 0x2015 || isIn(c, 0x2985, 0x2986) || isIn(c, 0x9B1C, 0x9B1D) ||
                isIn(c, 0xFF5F, 0xFF60);
     },
     8, "characters that the edition of 2004 gives the codes"},
    {"Shift_JIS-2004 of Python", Way::ENCODE, [](unsigned int c) { return isIn(c, 0x4FF1, 0x7E6B) || c == 0x20B9F; },
     10, "characters that the edition of 2004 adds"},

    {"EUC-KR of Python", Way::DECODE, isDelete, 1, "delete"},
    {"EUC-KR of Python", Way::ENCODE, isDelete, 1, "delete"},
    {"EUC-KR of Python", Way::DECODE, [](unsigned int code) { return isIn(code, 0xA2E6, 0xA2E7); }, 2,
     "two characters added to KS X 1001 later"},
    {"EUC-KR of Python", Way::ENCODE, [](unsigned int c) { return c == 0x20AC || c == 0xAE; }, 2,
     "two characters added to KS X 1001 later"},
    {"EUC-KR of Python", Way::DECODE, [](unsigned int code) { return code == 0xA4D4; }, 1,
     "the filler, which Python takes for the begin of a longer sequence"},
    {"EUC-KR of Python", Way::ENCODE, [](unsigned int c) { return c == 0x3164; }, 1,
     "the filler, which Python takes for the begin of a longer sequence"},

    {"EUC-CN of Python", Way::DECODE, isDelete, 1, "delete"},
    {"EUC-CN of Python", Way::ENCODE, isDelete, 1, "delete"},

    {"EUC-JP of Python", Way::DECODE, isDelete, 1, "delete"},
    {"EUC-JP of Python", Way::ENCODE, isDelete, 1, "delete"},
    {"EUC-JP of Python", Way::DECODE, [](unsigned int code) { return code >> 8 == 0x80; }, 252,
     "row 0 is JIS X 0201, and second bytes are not checked"},
    {"EUC-JP of Python", Way::DECODE, [](unsigned int code) { return code >> 8 >= 0xA1 && (code & 0xFF) < 0x80; }, 6879,
     "second bytes are not checked"},
    {"EUC-JP of Python", Way::DECODE, [](unsigned int code) { return code == 0xA1C0; }, 1,
     "reverse solidus is not full-width"},
    {"EUC-JP of Python", Way::ENCODE, [](unsigned int c) { return c == 0xFF3C; }, 1,
     "reverse solidus is not full-width"},
    {"EUC-JP of Python", Way::ENCODE, [](unsigned int c) { return c == 0xA5 || c == 0x203E; }, 2,
     "yen sign and overline travel through row 0"},

    {"GB 18030 of Python", Way::DECODE, [](unsigned int code) { return code == 0x80; }, 1, "the euro sign of GBK"},
    {"GB 18030 of Python", Way::ENCODE, [](unsigned int c) { return c == 0x20AC; }, 1, "GBK goes first: 0x80"},
    {"GB 18030 of Python", Way::ENCODE, isMovedByGB18030, 81, "GBK goes first: private-use characters keep two bytes"},
    {"GB 18030 of Python", Way::ENCODE, [](unsigned int c) { return c == 0xF8F5; }, 1, "GBK goes first: the byte 0xFF"},

    {"CP1250 of Python", Way::DECODE, isControlOf8Bits, 5, "bytes without a character are controls"},
    {"CP1250 of Python", Way::ENCODE, isControlOf8Bits, 5, "bytes without a character are controls"},
    {"CP1251 of Python", Way::DECODE, isControlOf8Bits, 1, "bytes without a character are controls"},
    {"CP1251 of Python", Way::ENCODE, isControlOf8Bits, 1, "bytes without a character are controls"},
    {"CP1252 of Python", Way::DECODE, isControlOf8Bits, 5, "bytes without a character are controls"},
    {"CP1252 of Python", Way::ENCODE, isControlOf8Bits, 5, "bytes without a character are controls"},
    {"CP1253 of Python", Way::DECODE, isControlOf8Bits, 14, "bytes without a character are controls"},
    {"CP1253 of Python", Way::ENCODE, isControlOf8Bits, 14, "bytes without a character are controls"},
    {"CP1253 of Python", Way::DECODE, isFeminineOrdinal, 1, "0xAA maps to itself"},
    {"CP1253 of Python", Way::ENCODE, isFeminineOrdinal, 1, "0xAA maps to itself"},
    {"CP1254 of Python", Way::DECODE, isControlOf8Bits, 7, "bytes without a character are controls"},
    {"CP1254 of Python", Way::ENCODE, isControlOf8Bits, 7, "bytes without a character are controls"},
    {"CP1255 of Python", Way::DECODE, isControlOf8Bits, 12, "bytes without a character are controls"},
    {"CP1255 of Python", Way::ENCODE, isControlOf8Bits, 12, "bytes without a character are controls"},
    {"CP1257 of Python", Way::DECODE, isControlOf8Bits, 10, "bytes without a character are controls"},
    {"CP1257 of Python", Way::ENCODE, isControlOf8Bits, 10, "bytes without a character are controls"},
    {"CP1258 of Python", Way::DECODE, isControlOf8Bits, 9, "bytes without a character are controls"},
    {"CP1258 of Python", Way::ENCODE, isControlOf8Bits, 9, "bytes without a character are controls"},
};

class Comparer {
public:
    explicit Comparer(Comparison const& comparison) : m_comparison(comparison) {}

    void run()
    {
        std::unique_ptr<Peer> peer;
        if (m_comparison.from == From::ICU)
            peer = std::make_unique<IcuPeer>(m_comparison.published);
        else if (m_comparison.from == From::PYTHON)
            peer = std::make_unique<PythonPeer>(m_comparison.published);
        else
            peer = std::make_unique<IconvPeer>(m_comparison.published);
        ASSERT_TRUE(peer->works()) << m_comparison.published;

        std::unordered_map<unsigned int, unsigned int> codeOfPair;
        auto const decodeOne = [&](unsigned int code) {
            std::string const bytes = bytesOf(code);
            unsigned int published = peer->decode(bytes);
            if (published != NONE && peer->encode(published) != code)
                published = NONE;
            if (published != NONE)
                codeOfPair[published] = code;
            unsigned int const ours = decoded(bytes);
            if (ours != published)
                differs(Way::DECODE, code, published, ours);
        };
        for (unsigned int code = 1; code <= 0xFFFF; ++code)
            if (code < 0x100 || (code & 0xFF) != 0)
                decodeOne(code);
        if (m_comparison.hasFourBytes)
            for (unsigned int a = 0x81; a <= 0xFE; ++a)
                for (unsigned int b = 0x30; b <= 0x39; ++b)
                    for (unsigned int c = 0x81; c <= 0xFE; ++c)
                        for (unsigned int d = 0x30; d <= 0x39; ++d)
                            decodeOne(a << 24 | b << 16 | c << 8 | d);
        EXPECT_GT(codeOfPair.size(), 200u);
        for (unsigned int codePoint = 1; codePoint <= 0x10FFFF; ++codePoint) {
            auto const pair = codeOfPair.find(codePoint);
            unsigned int const published = pair != codeOfPair.end() ? pair->second : NONE;
            unsigned int const ours = encoded(codePoint);
            if (ours != published)
                differs(Way::ENCODE, codePoint, published, ours);
        }
        expectAllUsed();
    }

private:
    unsigned int decoded(std::string const& bytes)
    {
        unsigned short units[8];
        bool illegal = false;
        unsigned int const length = m_comparison.converter.toUTF16(units, bytes.c_str(), 7, ILLCHAR_STOP, &illegal, -1);
        if (illegal)
            return NONE;
        return codePointOf(units, length);
    }

    unsigned int encoded(unsigned int codePoint)
    {
        char16_t units[3];
        units[unitsOf(codePoint, units)] = 0;
        char bytes[12];
        bool illegal = false;
        unsigned int const length = m_comparison.converter.fromUTF16(
            bytes, reinterpret_cast<unsigned short const*>(units), 10, ILLCHAR_STOP, &illegal);
        if (illegal || length == 0)
            return NONE;
        return codeOf(bytes, length);
    }

    void differs(Way way, unsigned int key, unsigned int published, unsigned int ours)
    {
        for (Difference const& difference : DIFFERENCES)
            if (difference.way == way && std::string(difference.comparison) == m_comparison.name &&
                difference.covers(key)) {
                ++m_used[&difference];
                return;
            }
        if (++m_unlisted <= 20)
            ADD_FAILURE() << m_comparison.name << (way == Way::DECODE ? " decoding 0x" : " encoding U+") << std::hex
                          << key << ": published 0x" << published << ", ours 0x" << ours;
    }

    void expectAllUsed()
    {
        EXPECT_EQ(m_unlisted, 0u) << m_comparison.name << ": differences that are not listed";
        for (Difference const& difference : DIFFERENCES)
            if (std::string(difference.comparison) == m_comparison.name) {
                EXPECT_EQ(m_used[&difference], difference.count) << m_comparison.name << ": " << difference.reason;
            }
    }

    Comparison const& m_comparison;
    std::unordered_map<Difference const*, unsigned int> m_used;
    unsigned int m_unlisted = 0;
};

/** As much of a name as the name of a test may have. */
std::string nameOf(Comparison const& comparison)
{
    std::string name;
    for (char const c : comparison.name)
        if (isalnum(static_cast<unsigned char>(c)))
            name += c;
    return name;
}

class MappingOracle : public testing::TestWithParam<Comparison> {};

}  // namespace

TEST_P(MappingOracle, EveryCodeAndEveryCodePointIsAsPublishedButForWhatIsListed)
{
    Comparer(GetParam()).run();
}

INSTANTIATE_TEST_SUITE_P(AllSets, MappingOracle, testing::ValuesIn(COMPARISONS),
                         [](auto const& comparison) { return nameOf(comparison.param); });

TEST(MappingOracle, EveryListedDifferenceBelongsToAComparison)
{
    for (Difference const& difference : DIFFERENCES) {
        EXPECT_TRUE(std::any_of(std::begin(COMPARISONS), std::end(COMPARISONS), [&](Comparison const& comparison) {
            return comparison.name == difference.comparison;
        })) << difference.comparison;
        EXPECT_GT(difference.count, 0u) << difference.comparison;
    }
}

TEST(UnicodeOracle, UTF16AndUTF32OfEveryCodePointAreAsGlibcHasThem)
{
    iconv_t const toUTF32 = iconv_open("UTF-32LE", "UTF-16LE");
    iconv_t const toUTF16 = iconv_open("UTF-16LE", "UTF-32LE");
    ASSERT_NE(toUTF32, reinterpret_cast<iconv_t>(-1));
    ASSERT_NE(toUTF16, reinterpret_cast<iconv_t>(-1));
    unsigned int const block = 256;
    for (unsigned int first = 0; first <= 0x10FFFF; first += block) {
        if (first >= 0xD800 && first <= 0xDFFF)
            continue;
        char16_t units[2 * block + 1];
        size_t length = 0;
        for (unsigned int c = std::max(first, 1U); c < first + block; ++c)
            length += unitsOf(c, units + length);
        units[length] = 0;
        auto const published = [](iconv_t converter, void* text, size_t size) {
            std::string out(4 * size, '\0');
            char* in = static_cast<char*>(text);
            char* dest = &out[0];
            size_t left = out.size();
            EXPECT_EQ(iconv(converter, &in, &size, &dest, &left), 0u);
            out.resize(out.size() - left);
            return out;
        };
        std::string utf32 = published(toUTF32, units, 2 * length);
        auto const* const source = reinterpret_cast<unsigned short const*>(units);
        std::string ours(4 * block + 4, '\0');
        ours.resize(g_oConverterUTF32.fromUTF16(&ours[0], source, 4 * block, ILLCHAR_STOP, nullptr));
        ASSERT_EQ(ours, utf32) << std::hex << first;

        unsigned short back[2 * block + 1];
        std::string const utf32Text = utf32 + std::string(4, '\0');
        size_t const backLength =
            g_oConverterUTF32.toUTF16(back, utf32Text.data(), 2 * block, ILLCHAR_STOP, nullptr, -1);
        std::string const utf16 = published(toUTF16, &utf32[0], utf32.size());
        ASSERT_EQ(std::string(reinterpret_cast<char const*>(back), 2 * backLength), utf16) << std::hex << first;

        std::string copied(4 * block + 2, '\0');
        copied.resize(g_oConverterUTF16.fromUTF16(&copied[0], source, 4 * block, ILLCHAR_STOP, nullptr));
        ASSERT_EQ(copied, utf16) << std::hex << first;
    }
    iconv_close(toUTF32);
    iconv_close(toUTF16);
}
