// kx7text tests - random operations on a list of strings, held against a vector of texts after each.
#include <gtest/gtest.h>

#include <random>

#include "kx7/text/KX7UStringList.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

constexpr int OPERATIONS = 100000;
constexpr size_t MOST_ELEMENTS = 24;

class Player {
public:
    explicit Player(unsigned int seed) : m_engine(seed) {}

    void play()
    {
        for (m_step = 0; m_step < OPERATIONS && !testing::Test::HasFailure(); ++m_step) {
            m_operation = random(15);
            step();
            check();
        }
    }

private:
    unsigned int random(size_t below) { return static_cast<unsigned int>(m_engine() % below); }

    std::u16string text()
    {
        std::u16string result;
        for (unsigned int n = random(30) == 0 ? 250 + random(20) : random(4); n != 0; --n)
            result += u";ab\0"[random(4)];
        return result;
    }

    Texts texts()
    {
        Texts result;
        for (unsigned int n = random(5); n != 0; --n)
            result.push_back(text());
        return result;
    }

    static KX7UStringList listOf(Texts const& texts)
    {
        KX7UStringList list;
        for (std::u16string const& each : texts)
            list.append(stringOf(each));
        return list;
    }

    unsigned int index() { return random(m_texts.size() + 2); }

    Texts::iterator at(unsigned int i) { return m_texts.begin() + static_cast<ptrdiff_t>(i); }

    static std::u16string join(Texts const& texts, std::u16string const& separator)
    {
        std::u16string result;
        for (std::u16string const& each : texts)
            result += (&each == &texts.front() ? std::u16string() : separator) + each;
        return result;
    }

    static Texts parts(std::u16string const& whole, std::u16string const& separator)
    {
        if (separator.empty())
            return {whole};
        Texts result;
        size_t start = 0;
        for (size_t at; (at = whole.find(separator, start)) != std::u16string::npos; start = at + separator.size())
            result.push_back(whole.substr(start, at - start));
        if (start < whole.size())
            result.push_back(whole.substr(start));
        return result;
    }

    void expectError(std::string const& error, bool fits)
    {
        EXPECT_EQ(error, fits ? "none" : INVALID_LIST_INDEX) << "step " << m_step;
    }

    void step()
    {
        std::u16string const t = text();
        unsigned int const i = index();
        bool const inside = i < m_texts.size();
        switch (m_operation) {
            case 0:
                m_list.append(stringOf(t));
                m_texts.push_back(t);
                break;
            case 1: {
                expectError(errorOf([&] { m_list.insert(i, stringOf(t)); }), i <= m_texts.size());
                if (i <= m_texts.size())
                    m_texts.insert(at(i), t);
                break;
            }
            case 2: {
                Texts const added = texts();
                m_list.append(listOf(added));
                m_texts.insert(m_texts.end(), added.begin(), added.end());
                break;
            }
            case 3: {
                Texts const added = texts();
                bool const fits = i <= m_texts.size() || added.empty();
                expectError(errorOf([&] { m_list.insert(i, listOf(added)); }), fits);
                if (fits && !added.empty())
                    m_texts.insert(at(i), added.begin(), added.end());
                break;
            }
            case 4:
            case 5:
            case 6: {
                expectError(errorOf([&] { m_list.erase(i); }), inside);
                if (inside)
                    m_texts.erase(at(i));
                break;
            }
            case 7:
                m_list.append(m_list);
                m_list.insert(i, m_list);
                break;
            case 8: {
                if (!inside)
                    break;
                unsigned int const to = random(m_texts.size() + 1);
                m_list.insert(to, m_list.at(i));
                std::u16string const copy = m_texts[i];
                m_texts.insert(at(to), copy);
                break;
            }
            case 9: {
                if (!inside || random(8) != 0)
                    break;
                m_list = m_list.at(i);
                m_texts = Texts{m_texts[i]};
                break;
            }
            case 10: {
                KX7UStringList copy(m_list);
                copy.append(stringOf(t));
                if (random(2) == 0) {
                    m_list = copy;
                    m_texts.push_back(t);
                }
                break;
            }
            case 11: {
                std::u16string const separator = random(5) == 0 ? u"" : random(2) == 0 ? u";" : u"ab";
                EXPECT_EQ(textOf(m_list.combine(stringOf(separator))), join(m_texts, separator)) << "step " << m_step;
                break;
            }
            case 12: {
                std::u16string const separator = random(5) == 0 ? u"" : random(2) == 0 ? u";" : u"ab";
                std::u16string const whole = join(m_texts, u"a");
                m_list = KX7UStringList(stringOf(whole), stringOf(separator));
                m_texts = parts(whole, separator);
                break;
            }
            case 13: {
                std::u16string const separator(1, u";a"[random(2)]);
                m_list = KX7UStringList(stringOf(t), static_cast<unsigned short>(separator[0]));
                m_texts = parts(t, separator);
                break;
            }
            case 14: {
                std::u16string got;
                expectError(errorOf([&] { got = textOf(m_list.at(i)); }), inside);
                if (inside)
                    (m_list.begin() + static_cast<ptrdiff_t>(i))->toUpper();
                if (inside)
                    for (char16_t& unit : m_texts[i])
                        unit = unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
                break;
            }
        }
        if (m_texts.size() > MOST_ELEMENTS) {
            m_list.clear();
            m_texts.clear();
        }
    }

    void check()
    {
        bool same = m_list.size() == m_texts.size();
        for (unsigned int i = 0; same && i < m_list.size(); ++i)
            same = textOf(m_list[i]) == m_texts[i] && m_list[i].data()[m_list[i].length()] == 0;
        ASSERT_TRUE(same) << "step " << m_step << ", operation " << m_operation;
    }

    std::mt19937 m_engine;
    KX7UStringList m_list;
    Texts m_texts;
    unsigned int m_operation = 0;
    int m_step = 0;
};

}  // namespace

TEST(ListModel, AgreesAfterEachOf100000RandomOperations)
{
    Player(8).play();
}
