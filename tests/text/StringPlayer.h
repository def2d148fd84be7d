// kx7text tests - operations on strings, each held against a model after it.
#ifndef KX7_TESTS_TEXT_STRINGPLAYER_H
#define KX7_TESTS_TEXT_STRINGPLAYER_H

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <sstream>

#include "kx7/converters/KX7CharSetConverter.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "tests/support/AddressSpace.h"
#include "tests/text/StringTexts.h"

namespace kx7test {

using namespace std::string_literals;

inline constexpr unsigned int NPOS = KX7UString::npos;

inline constexpr KX7CharSet CACHE_SETS[] = {KX7CS_UTF8, KX7CS_WCP1252, KX7CS_UTF16, KX7CS_UTF32};

/** What a string is by its rules: the text, the capacity, and the text that the cache was made of. */
struct StringModel {
    std::u16string text;
    unsigned int capacity = 257;
    bool cached = false;
    KX7CharSet cachedSet = KX7CS_UTF8;
    std::u16string cachedText;

    unsigned int length() const { return static_cast<unsigned int>(text.size()); }

    /** space for `n` units; where it grows the text is lost. */
    void grow(size_t n)
    {
        if (n <= capacity)
            return;
        capacity = static_cast<unsigned int>(n);
        text.clear();
    }

    /** Another text in the same storage. */
    void set(std::u16string const& newText)
    {
        grow(newText.size());
        text = newText;
        cached = false;
    }

    /** Another text in storage of its own. */
    void assign(std::u16string const& newText)
    {
        capacity = std::max(257u, static_cast<unsigned int>(newText.size()));
        text = newText;
        cached = false;
    }

    void erase()
    {
        text.clear();
        cached = false;
    }

    bool replace(unsigned int pos, unsigned int n, std::u16string const& by, unsigned int spos, unsigned int sn)
    {
        if (pos > text.size() || spos > by.size())
            return false;
        std::u16string result = text;
        result.replace(pos, n, by.substr(spos, sn));
        if (result.empty())
            erase();
        else
            set(result);
        return true;
    }

    void resize(unsigned int n, char16_t unit)
    {
        if (n == text.size())
            return;
        if (n == 0)
            return erase();
        grow(n);
        text.resize(n, unit);
        cached = false;
    }
};

/** Plays operations that numbers choose on two strings and on their models. */
class StringPlayer {
public:
    /** @param random a number below its argument, which is not 0 */
    explicit StringPlayer(std::function<size_t(size_t)> random) : m_random(std::move(random)) {}

    /** Stops at the first difference, which is a failure of the test. */
    void play(int operations)
    {
        for (m_step = 0; m_step < operations && !testing::Test::HasFailure(); ++m_step) {
            m_which = random(2);
            act();
            check();
        }
    }

private:
    using Operation = void (*)(StringPlayer&);

    /** One operation, on the string and on the model. */
    void act();

    static Operation const OPERATION_TABLE[];

    unsigned int random(size_t below) { return static_cast<unsigned int>(m_random(below)); }

    KX7UString& s() { return m_strings[m_which]; }
    StringModel& m() { return m_models[m_which]; }
    KX7UString& other() { return m_strings[1 - m_which]; }
    StringModel& otherModel() { return m_models[1 - m_which]; }

    char16_t unit()
    {
        static char16_t const units[] = {u'a', u'a',    u'b',      u'B',   u' ',   u'\t',
                                         u';', u'\xE9', u'\x20AC', 0x3042, 0xD83D, 0xDE00};
        return random(40) == 0 ? u'\0' : units[random(std::size(units))];
    }

    std::u16string text()
    {
        static unsigned int const bounds[] = {4, 4, 4, 12, 12, 30, 300, 700};
        unsigned int n = random(bounds[random(std::size(bounds))]);
        if (random(20) == 0)
            n = 255 + random(5);
        std::u16string result;
        while (n-- != 0)
            result += unit();
        return result;
    }

    std::u16string textWithoutZeros()
    {
        std::u16string result = text();
        std::replace(result.begin(), result.end(), u'\0', u'z');
        return result;
    }

    /** Mostly an index of the text, sometimes its end or beyond. */
    unsigned int position()
    {
        unsigned int const kind = random(10);
        return kind == 0 ? NPOS : kind == 1 ? m().length() + random(3) : random(m().text.size() + 1);
    }

    unsigned int count()
    {
        if (random(5) != 0)
            return random(m().text.size() + 3);
        return random(2) == 0 ? NPOS : EDGES[random(std::size(EDGES))];
    }

    char byte() { return static_cast<char>('a' + random(26)); }

    std::string bytes()
    {
        std::string result(random(8) == 0 ? random(700) : random(12), 'x');
        for (char& c : result)
            c = byte();
        return result;
    }

    void check()
    {
        for (unsigned int i = 0; i < 2; ++i) {
            KX7UString const& string = m_strings[i];
            StringModel const& model = m_models[i];
            KX7UString::Space const& space = spaceOf(string);
            if (textOf(string) != model.text || string.capacity() != model.capacity ||
                space.heapOwned != (model.capacity > 257 ? 1u : 0u) || string.data()[string.length()] != 0 ||
                (space.narrowCache != nullptr) != model.cached)
                FAIL() << "step " << m_step << ", operation " << m_operation << ": "
                       << sameText(textOf(string), model.text).message() << "\n  capacity " << string.capacity()
                       << ", expected " << model.capacity << "; cache " << (space.narrowCache != nullptr)
                       << ", expected " << model.cached;
        }
    }

    template <class Value>
    void same(Value const& got, Value const& expected, char const* what)
    {
        if (got != expected)
            FAIL() << "step " << m_step << ", " << what << " of " << hex(m().text);
    }

    std::function<size_t(size_t)> m_random;
    KX7UString m_strings[2];
    StringModel m_models[2];
    unsigned int m_which = 0;
    size_t m_operation = 0;
    int m_step = 0;
};

inline StringPlayer::Operation const StringPlayer::OPERATION_TABLE[] = {
    // Assignments
    [](StringPlayer& p) {
        std::u16string const t = p.text();
        p.s().assign(stringOf(t));
        p.m().assign(t);
    },
    [](StringPlayer& p) {
        p.s() = p.other();
        p.m().assign(p.otherModel().text);
    },
    [](StringPlayer& p) {
        KX7UString const& same = p.s();
        p.s() = same;
    },
    [](StringPlayer& p) {
        std::u16string const t = p.text();
        p.s() = raw(t);
        std::u16string const whole = t.c_str();
        if (whole.empty())
            p.m().erase();
        else
            p.m().set(whole);
    },
    [](StringPlayer& p) {
        char16_t const u = p.unit();
        p.s() = static_cast<unsigned short>(u);
        if (u == 0)
            p.m().erase();
        else
            p.m().set(std::u16string(1, u));
    },
    [](StringPlayer& p) {
        char const c = p.byte();
        p.s() = c;
        p.m().text = std::u16string(1, static_cast<char16_t>(c));
    },
    [](StringPlayer& p) {
        std::string const b = p.bytes();
        p.s() = b.c_str();
        if (b.empty())
            p.m().erase();
        else
            p.m().set(std::u16string(b.begin(), b.end()));
    },
    [](StringPlayer& p) {
        std::string const b = p.bytes().substr(0, 255);
        KX7PascalString pascal = {static_cast<unsigned char>(b.size()), {}};
        memcpy(pascal.text, b.data(), b.size());
        p.s() = &pascal;
        if (b.empty())
            p.m().erase();
        else
            p.m().set(std::u16string(b.begin(), b.end()));
    },
    [](StringPlayer& p) {
        static auto const bstr = std::make_unique<KX7BSTR>();
        std::u16string const t = p.text();
        bstr->length = static_cast<unsigned short>(t.size());
        memcpy(bstr->text, t.data(), t.size() * 2);
        p.s() = *bstr;
        if (t.empty())
            p.m().erase();
        else
            p.m().set(t);
    },
    [](StringPlayer& p) {
        p.s().swap(p.other());
        std::u16string const mine = p.m().text;
        p.m().assign(p.otherModel().text);
        p.otherModel().assign(mine);
    },
    [](StringPlayer& p) {
        unsigned int const n = p.random(700);
        if (p.random(10) != 0)
            return;
        p.s().AssureSpace(n);
        p.m().grow(n);
    },
    // Editing
    [](StringPlayer& p) {
        if (p.random(5) != 0)
            return;
        p.s().erase();
        p.m().erase();
    },
    [](StringPlayer& p) {
        unsigned int const pos = p.position();
        unsigned int const n = p.count();
        std::string const error = errorOf([&] { p.s().erase(pos, n); });
        bool const fits = p.m().text.empty() || p.m().replace(pos, n, u"", 0, 0);
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "erase");
    },
    [](StringPlayer& p) {
        auto const command = static_cast<KX7UString::TrimCmd>(p.random(4));
        auto const target = static_cast<KX7UString::TrimTarget>(p.random(3));
        auto const isBlank = [target](char16_t u) {
            unsigned int const bits = KX7UChar::getCharClass(static_cast<unsigned short>(u));
            return target == KX7UString::TRIM_SPACE ? u == u' ' : (bits & 1) != 0 || (target == 2 && bits == 0);
        };
        p.s().trim(command, target);
        std::u16string& t = p.m().text;
        if (command & 1)
            t.erase(t.begin(), std::find_if_not(t.begin(), t.end(), isBlank));
        if (command & 2)
            t.erase(std::find_if_not(t.rbegin(), t.rend(), isBlank).base(), t.end());
        p.m().cached = false;
    },
    [](StringPlayer& p) {
        unsigned int const n = p.random(6) == 0 ? p.random(700) : p.random(20);
        char16_t const u = p.unit();
        p.s().resize(n, static_cast<unsigned short>(u));
        p.m().resize(n, u);
    },
    [](StringPlayer& p) {
        unsigned int const n = p.random(6) == 0 ? p.random(700) : p.random(20);
        char const c = p.byte();
        p.s().resize(n, c, CACHE_SETS[p.random(2)]);
        p.m().resize(n, static_cast<char16_t>(c));
    },
    [](StringPlayer& p) {
        bool const upper = p.random(2) == 0;
        bool const asciiOnly = p.random(2) == 0;
        if (upper)
            p.s().toUpper(asciiOnly);
        else
            p.s().toLower(asciiOnly);
        for (char16_t& u : p.m().text) {
            auto const c = static_cast<unsigned short>(u);
            if (!asciiOnly || c < 0x80)
                u = upper ? KX7UChar::toUpperCase(c) : KX7UChar::toLowerCase(c);
        }
    },
    [](StringPlayer& p) {
        std::u16string const by = p.text();
        unsigned int const pos = p.position();
        unsigned int const n = p.count();
        unsigned int const spos = p.random(by.size() + 2);
        unsigned int const sn = p.random(3) == 0 ? NPOS : p.random(by.size() + 2);
        std::string const error = errorOf([&] { p.s().replace(pos, n, stringOf(by), spos, sn); });
        bool const fits = p.m().replace(pos, n, by, spos, sn);
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "replace");
    },
    [](StringPlayer& p) {
        if (p.m().text.size() > 1500)
            return;
        unsigned int const pos = p.position();
        unsigned int const n = p.count();
        unsigned int const spos = p.position();
        unsigned int const sn = p.count();
        std::string const error = errorOf([&] { p.s().replace(pos, n, p.s(), spos, sn); });
        std::u16string const by = p.m().text;
        bool const fits = p.m().replace(pos, n, by, spos, sn);
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "replace by itself");
    },
    [](StringPlayer& p) {
        std::u16string const by = p.text();
        unsigned int const first = p.random(p.m().text.size() + 1);
        unsigned int const last = first + p.random(p.m().text.size() + 1 - first);
        p.s().replace(p.s().data() + first, p.s().data() + last, stringOf(by));
        p.m().replace(first, last - first, by, 0, NPOS);
    },
    [](StringPlayer& p) {
        unsigned int const i = p.position();
        char16_t const u = p.unit();
        std::string const error = errorOf([&] { p.s().at(i) = static_cast<unsigned short>(u); });
        bool const fits = i < p.m().text.size();
        if (fits)
            p.m().text[i] = u;
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "at");
    },
    // Reading
    [](StringPlayer& p) {
        unsigned int const n = p.count();
        std::u16string part = u"none";
        std::string const error = errorOf([&] { part = textOf(p.s().left(n)); });
        bool const fits = n <= p.m().text.size();
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "left");
        p.same(part, fits ? p.m().text.substr(0, n) : u"none"s, "left");
    },
    [](StringPlayer& p) {
        unsigned int const pos = p.position();
        unsigned int const n = p.count();
        std::u16string part = u"none";
        std::string const error = errorOf([&] { part = textOf(p.s().mid(pos, n)); });
        unsigned int const sum = n == NPOS ? p.m().length() : pos + n;
        bool const fits = sum <= p.m().text.size();
        p.same(error, std::string(fits ? "none" : INVALID_STRING_INDEX), "mid");
        std::u16string const rest = pos < p.m().text.size() ? p.m().text.substr(pos, n) : u"";
        p.same(part, fits ? rest : u"none"s, "mid");
    },
    [](StringPlayer& p) {
        char16_t const u = p.unit();
        unsigned int const pos = p.position();
        size_t const found = u == 0 ? std::u16string::npos : p.m().text.find(u, pos);
        p.same(p.s().find(static_cast<unsigned short>(u), pos), static_cast<unsigned int>(found), "find of a unit");
        bool const searches = pos < p.m().text.size() && u != 0;
        auto const last = static_cast<unsigned int>(p.m().text.rfind(u, pos));
        p.same(p.s().rfind(static_cast<unsigned short>(u), pos), searches ? last : p.m().length() - 1,
               "rfind of a unit");
    },
    [](StringPlayer& p) {
        std::u16string sought = p.textWithoutZeros().substr(0, 2);
        unsigned int const pos = p.position();
        bool const searches = !sought.empty();
        auto const first = static_cast<unsigned int>(p.m().text.find(sought, pos));
        auto const last = static_cast<unsigned int>(p.m().text.rfind(sought, pos));
        p.same(p.s().find(stringOf(sought), pos), searches ? first : NPOS, "find");
        p.same(p.s().rfind(stringOf(sought), pos), searches && !p.m().text.empty() ? last : NPOS, "rfind");
    },
    [](StringPlayer& p) {
        std::u16string const a = p.m().text.c_str();
        std::u16string const b = p.otherModel().text.c_str();
        unsigned int const n = p.random(2) == 0 ? NPOS : p.random(6);
        int const order = a.substr(0, n).compare(b.substr(0, n));
        p.same(p.s().compare(p.other(), n), order < 0 ? -1 : order > 0 ? 1 : 0, "compare");
        auto const upper = [n](std::u16string t) {
            for (char16_t& u : t)
                u = KX7UChar::toUpperCase(static_cast<unsigned short>(u));
            return t.substr(0, n);
        };
        int const noCase = upper(a).compare(upper(b));
        p.same(p.s().compareNoCase(p.other(), n), noCase < 0 ? -1 : noCase > 0 ? 1 : 0, "compareNoCase");
    },
    [](StringPlayer& p) {
        if (p.m().text.size() > 1500)
            return;
        KX7UString const sum = p.s() + p.other();
        p.same(textOf(sum), p.m().text + p.otherModel().text, "+");
        p.same(textOf(p.s() + 'x'), p.m().text + u"x", "+ char");
        p.same(textOf("xy" + p.s()), u"xy" + p.m().text, "bytes +");
    },
    [](StringPlayer& p) {
        KX7CharSet const cs = CACHE_SETS[p.random(std::size(CACHE_SETS))];
        if (p.m().text.empty()) {
            p.same(std::string(p.s().c_str(cs), 4), std::string(4, '\0'), "c_str");
            return;
        }
        if (!p.m().cached || p.m().cachedSet != cs) {
            p.m().cached = true;
            p.m().cachedSet = cs;
            p.m().cachedText = p.m().text;
        }
        // The capacity is what the converter counts, which is nothing for a high surrogate at the end.
        std::u16string const& t = p.m().cachedText;
        KX7CharSetConverter& converter = *KX7CharSetConverter::getConverter(cs);
        unsigned int const capacity = converter.getNumBytes(raw(t), static_cast<unsigned int>(t.size()));
        std::string expected(capacity + 4, '\0');
        expected.resize(converter.fromUTF16(&expected[0], raw(t), capacity, ILLCHAR_REPLACE, nullptr));
        expected.append(converter.getNullCharSize(), '\0');
        p.same(std::string(p.s().c_str(cs), expected.size()), expected, "c_str");
    },
    [](StringPlayer& p) {
        unsigned short units[20];
        unsigned int const n = p.random(20);
        std::u16string const expected = p.m().text.substr(0, n);
        unsigned int const copied = p.s().copy(units, n);
        p.same(std::u16string(units, units + copied), expected, "copy");
    },
    [](StringPlayer& p) {
        char16_t const separator = p.unit();
        std::u16string joined;
        KX7UStringList const list = p.s().split(static_cast<unsigned short>(separator));
        for (KX7UString const& part : list)
            joined += (&part == &list[0] ? u""s : std::u16string(1, separator)) + textOf(part);
        std::u16string expected = p.m().text;
        if (separator != 0 && !expected.empty() && expected.back() == separator)
            expected.pop_back();
        p.same(joined, expected, "split");
    },
    [](StringPlayer& p) {
        std::string const b = p.bytes();
        bool const line = p.random(2) == 0;
        std::istringstream in(b + " \n");
        if (line)
            getline(in, p.s(), '\n');
        else
            in >> p.s();
        if (b.empty() && !line)
            p.m().erase();
        else
            p.m().assign(std::u16string(b.begin(), b.end()) + (line ? u" " : u""));
    },
};

inline void StringPlayer::act()
{
    m_operation = random(std::size(OPERATION_TABLE));
    OPERATION_TABLE[m_operation](*this);
}

}  // namespace kx7test

#endif
