// kx7text - kx7conv: in which character sets an input is clean, and which of them is likeliest.
//
// All of the input must be clean. How likely a set is shows in the beginning: every character costs about as many bits
// as it would take to tell it from the others that may follow, so that the text read wrongly, as a mixture of scripts,
// symbols and rare ideographs, costs more a byte than read rightly.
#include "Guess.h"

#include <algorithm>
#include <list>
#include <string_view>

#include "kx7/convert.h"

namespace kx7conv {

namespace {

constexpr size_t BLOCK_SIZE = 64 * 1024;

/** Bytes from which the likelihood is taken. */
constexpr uint64_t SAMPLE_SIZE = 64 * 1024;

/** Where several sets read the text alike, in this order; the others after them in the registry's. */
constexpr KX7CharSet PREFERENCE[] = {
    // Hebrew reads as Cyrillic too, and Cyrillic not as Hebrew.
    KX7CS_UTF8,    KX7CS_WCP1252, KX7CS_WCP1255, KX7CS_ISO_8859_8, KX7CS_WCP1253, KX7CS_WCP1251,
    KX7CS_WCP1250, KX7CS_WCP1254, KX7CS_WCP1257, KX7CS_WCP1258,    KX7CS_WCP1256, KX7CS_WCP874,
    KX7CS_KOI8R,   KX7CS_WCP932,  KX7CS_WCP936,  KX7CS_WCP949,     KX7CS_WCP950,  KX7CS_EUC_JP,
    KX7CS_GB18030, KX7CS_EUC_CN,  KX7CS_EUC_KR,  KX7CS_SHIFTJIS,   KX7CS_BIG5,
};

enum class Script { NONE, LATIN, GREEK, CYRILLIC, HEBREW, ARABIC, THAI, KANA, IDEOGRAPH, HANGUL };

struct ScriptRange {
    unsigned int first;
    unsigned int last;
    Script script;
    int cost;
};

// Letters by script; the cost is that of a letter after one of its own script or after none.
constexpr ScriptRange SCRIPTS[] = {
    {0x0041, 0x005A, Script::LATIN, 5},      {0x0061, 0x007A, Script::LATIN, 4},
    {0x00C0, 0x00D6, Script::LATIN, 13},     {0x00D8, 0x00F6, Script::LATIN, 12},
    {0x00F8, 0x024F, Script::LATIN, 12},     {0x0300, 0x0323, Script::LATIN, 12},
    {0x0370, 0x03CF, Script::GREEK, 5},      {0x0400, 0x040F, Script::CYRILLIC, 10},
    {0x0410, 0x044F, Script::CYRILLIC, 5},   {0x0450, 0x04FF, Script::CYRILLIC, 9},
    {0x05D0, 0x05EA, Script::HEBREW, 5},     {0x0621, 0x0652, Script::ARABIC, 5},
    {0x0E01, 0x0E5B, Script::THAI, 6},       {0x1E00, 0x1EFF, Script::LATIN, 12},
    {0x3041, 0x3096, Script::KANA, 6},       {0x30A1, 0x30FE, Script::KANA, 8},
    {0x4E00, 0x9FFF, Script::IDEOGRAPH, 18}, {0xAC00, 0xD7A3, Script::HANGUL, 15},
};

struct Letters {
    KX7CharSet charSet;
    char16_t const* letters;
};

// The letters beside A to Z of the languages that a set of Latin letters is made for; capitals are as unusual as ever.
constexpr Letters LETTERS[] = {
    {KX7CS_WCP1252, u"àáâäåæçèéêëìíîïñòóôöøùúûüßœÿ"},
    {KX7CS_ISO_8859_1, u"àáâäåæçèéêëìíîïñòóôöøùúûüßÿ"},
    {KX7CS_ISO_8859_15, u"àáâäåæçèéêëìíîïñòóôöøùúûüßœÿšž"},
    {KX7CS_WCP1250, u"áâäąćčçďéęěëíîłńňóôöőŕřśšşťţúůüűýźžżăđß"},
    {KX7CS_ISO_8859_2, u"áâäąćčçďéęěëíîłńňóôöőŕřśšşťţúůüűýźžżăđß"},
    {KX7CS_ISO_8859_16, u"áâäąćčçéęëíîłńóôöőśšșțúüűźžżăđß"},
    {KX7CS_ISO_8859_3, u"ĉĝĥĵŝŭċġħż"},
    {KX7CS_ISO_8859_4, u"āąčēęėģīįķļņšūųžõäöüáâåæøđŋŧ"},
    {KX7CS_WCP1257, u"āąčćēęėģīįķłļńņóõäöüåśšūųžźżß"},
    {KX7CS_ISO_8859_13, u"āąčćēęėģīįķłļńņóõäöüåśšūųžźżß"},
    {KX7CS_ISO_8859_10, u"áâäåæéíóôöøúýþðđŋŧāčšž"},
    {KX7CS_WCP1254, u"çğıöşüâîû"},
    {KX7CS_ISO_8859_9, u"çğıöşüâîû"},
    {KX7CS_ISO_8859_14, u"ŵŷâêîôûáéíóú"},
    {KX7CS_WCP1258, u"ăâêôơưđàáéèùúíóò\u0300\u0301\u0303\u0309\u0323"},
};

/** More where there are more of them. */
constexpr int OWN_LETTER = 6;
constexpr int DIGIT_OR_SPACE = 4;
constexpr int PUNCTUATION = 6;
constexpr int SYMBOL = 13;
constexpr int WIDE_PUNCTUATION = 9;
constexpr int CONTROL = 24;
constexpr int UNUSUAL = 26;
constexpr int COMMON_IDEOGRAPH = 11;
constexpr int COMMON_HANGUL = 9;
constexpr int OTHER_SCRIPT = 8;
constexpr int CAPITAL_INSIDE = 7;
constexpr int FOREIGN_KANA = 8;

/** The character is among the first of its language's list: the frequent ideographs, or the syllables of KS X 1001. */
bool isCommon(unsigned short unit, Script script)
{
    struct Level {
        KX7CharSet charSet;
        unsigned int first;
        unsigned int last;
        Script script;
    };
    static constexpr Level LEVELS[] = {
        {KX7CS_WCP932, 0x889F, 0x9872, Script::IDEOGRAPH},
        {KX7CS_EUC_CN, 0xB0A1, 0xD7F9, Script::IDEOGRAPH},
        {KX7CS_WCP950, 0xA440, 0xC67E, Script::IDEOGRAPH},
        {KX7CS_EUC_KR, 0xB0A1, 0xC8FE, Script::HANGUL},
    };
    return std::any_of(std::begin(LEVELS), std::end(LEVELS), [&](Level const& level) {
        if (level.script != script)
            return false;
        unsigned short const text[] = {unit, 0};
        char bytes[4];
        bool const isPair = UTF16ToLocal(bytes, text, sizeof bytes, level.charSet) == 2;
        unsigned int const code =
            isPair ? static_cast<unsigned char>(bytes[0]) * 256U + static_cast<unsigned char>(bytes[1]) : 0;
        return code >= level.first && code <= level.last;
    });
}

bool isCapital(unsigned int unit)
{
    return (unit >= 'A' && unit <= 'Z') || (unit >= 0xC0 && unit <= 0xDE) || (unit >= 0x391 && unit <= 0x3AB) ||
           (unit >= 0x400 && unit <= 0x42F);
}

/** A set, and how the input reads in it so far. */
class Candidate {
public:
    Candidate(kx7::CharSetInfo const& name, size_t rank) : m_name(&name), m_decoder(name.charSet), m_rank(rank)
    {
        auto const* const own = std::find_if(std::begin(LETTERS), std::end(LETTERS), [&](Letters const& candidate) {
            return candidate.charSet == name.charSet;
        });
        if (own != std::end(LETTERS))
            m_letters = own->letters;
        constexpr KX7CharSet CHINESE_OR_KOREAN[] = {KX7CS_WCP936, KX7CS_EUC_CN, KX7CS_WCP950, KX7CS_BIG5,
                                                    KX7CS_WCP949, KX7CS_EUC_KR, KX7CS_GB18030};
        m_isForeignToKana = std::count(std::begin(CHINESE_OR_KOREAN), std::end(CHINESE_OR_KOREAN), name.charSet) != 0;
    }

    /** The next bytes of the input. False: they are not clean. */
    bool read(std::string_view bytes, bool isLast, bool isSample)
    {
        char16_t units[2048];
        for (;;) {
            kx7::StreamResult const result = m_decoder.convert(bytes, {units, std::size(units)}, isLast);
            bytes.remove_prefix(result.consumed);
            if (isSample)
                std::for_each(units, units + result.written, [this](char16_t unit) { add(unit); });
            if (result.status != kx7::Status::OUTPUT_FULL)
                return result.status == kx7::Status::DONE;
        }
    }

    bool operator<(Candidate const& other) const
    {
        return m_cost != other.m_cost ? m_cost < other.m_cost : m_rank < other.m_rank;
    }

    kx7::CharSetInfo const* name() const { return m_name; }

private:
    void add(unsigned short unit)
    {
        Script script = Script::NONE;
        int cost = SYMBOL;
        auto const* const range =
            std::find_if(std::begin(SCRIPTS), std::end(SCRIPTS), [&](ScriptRange const& candidate) {
                return unit >= candidate.first && unit <= candidate.last;
            });
        if (range != std::end(SCRIPTS)) {
            script = range->script;
            cost = range->cost;
            bool const isRare = script == Script::IDEOGRAPH || script == Script::HANGUL;
            if (isRare && isCommon(unit, script))
                cost = script == Script::HANGUL ? COMMON_HANGUL : COMMON_IDEOGRAPH;
            if (script == Script::LATIN && m_letters.find(unit) != std::u16string_view::npos)
                cost = OWN_LETTER + (m_letters.size() > 12) + (m_letters.size() > 32);
            if (script == Script::KANA && m_isForeignToKana)
                cost += FOREIGN_KANA;
            bool const isMixed = m_script != Script::NONE && m_script != script;
            bool const isJapanese = isMixed && (m_script == Script::KANA || script == Script::KANA) &&
                                    (m_script == Script::IDEOGRAPH || script == Script::IDEOGRAPH);
            if (isMixed && !isJapanese)
                cost += OTHER_SCRIPT;
            if (!isMixed && m_script != Script::NONE && isCapital(unit) && !isCapital(m_unit))
                cost += CAPITAL_INSIDE;
        }
        else if (unit == ' ' || unit == '\n' || unit == '\r' || unit == '\t' || (unit >= '0' && unit <= '9')) {
            cost = DIGIT_OR_SPACE;
        }
        else if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0)) {
            cost = CONTROL;
        }
        else if (unit < 0x7F) {
            cost = PUNCTUATION;
        }
        else if ((unit >= 0x3000 && unit <= 0x3011) || (unit >= 0x2010 && unit <= 0x2026) ||
                 (unit >= 0xFF01 && unit <= 0xFF5E) || unit == 0xAB || unit == 0xBB || unit == 0xA0 || unit == 0x20AC) {
            cost = WIDE_PUNCTUATION;
        }
        else if (unit == 0xFEFF && m_script == Script::NONE && m_cost == 0) {
            cost = 0;
        }
        else if (unit >= 0xD800) {
            cost = UNUSUAL;
        }
        m_cost += static_cast<uint64_t>(cost);
        m_script = script;
        m_unit = unit;
    }

    kx7::CharSetInfo const* m_name;
    kx7::Decoder m_decoder;
    size_t m_rank;
    std::u16string_view m_letters;
    bool m_isForeignToKana;
    uint64_t m_cost = 0;
    Script m_script = Script::NONE;  ///< of the last character
    unsigned int m_unit = 0;
};

std::list<Candidate> candidates()
{
    std::list<Candidate> result;
    for (kx7::CharSetInfo const& name : kx7::charSets()) {
        bool const isPublished =
            std::find(std::begin(kx7::web::ALL), std::end(kx7::web::ALL), name.charSet) == std::end(kx7::web::ALL);
        if (!isPublished || !kx7::hasConverter(name.charSet))
            continue;
        auto const* const preferred = std::find(std::begin(PREFERENCE), std::end(PREFERENCE), name.charSet);
        size_t const rank = static_cast<size_t>(preferred - PREFERENCE);
        result.emplace_back(name, rank != std::size(PREFERENCE) ? rank : rank + result.size());
    }
    return result;
}

}  // namespace

std::vector<kx7::CharSetInfo const*> guess(Input& input)
{
    std::list<Candidate> left = candidates();
    std::vector<unsigned char> block(BLOCK_SIZE);
    uint64_t read = 0;
    bool isLast = false;
    while (!isLast && !left.empty()) {
        size_t const got = input.read(block.data(), block.size());
        isLast = got == 0;
        std::string_view const bytes(reinterpret_cast<char const*>(block.data()), got);
        left.remove_if([&](Candidate& candidate) { return !candidate.read(bytes, isLast, read < SAMPLE_SIZE); });
        read += got;
    }
    left.sort();
    std::vector<kx7::CharSetInfo const*> result;
    for (Candidate const& candidate : left)
        result.push_back(candidate.name());
    return result;
}

}  // namespace kx7conv
