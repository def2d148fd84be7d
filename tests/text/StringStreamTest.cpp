// kx7text tests - strings read from and written to streams.
#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>
#include <streambuf>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

auto const GOOD = std::ios_base::goodbit;
auto const END = std::ios_base::eofbit;
auto const FAILED = std::ios_base::eofbit | std::ios_base::failbit;
auto const FAIL = std::ios_base::failbit;

struct ReadRow {
    char const* what;
    std::string bytes;
    int width;
    std::u16string text;
    std::ios_base::iostate state;
    std::string rest;  ///< what the stream still holds
};

std::string restOf(std::istream& in)
{
    in.clear();
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

template <class Read>
void expectRead(ReadRow const& row, Read const& read)
{
    std::istringstream in(row.bytes);
    in.width(row.width);
    KX7UString s = stringOf(u"old");
    EXPECT_EQ(&read(in, s), &in) << row.what;
    expectText(s, row.text, row.what);
    EXPECT_EQ(in.rdstate(), row.state) << row.what;
    EXPECT_EQ(restOf(in), row.rest) << row.what;
}

std::istream& readWord(std::istream& in, KX7UString& s)
{
    return in >> s;
}

std::istream& readLine(std::istream& in, KX7UString& s)
{
    return getline(in, s, '\n');
}

}  // namespace

TEST(StringRead, AWord)
{
    ReadRow const rows[] = {
        {"between blanks", "  abc ", 0, u"abc", GOOD, " "},
        {"after any white space", " \t\n\v\f\rabc\n", 0, u"abc", GOOD, "\n"},
        {"to the end", "abc", 0, u"abc", END, ""},
        {"of nothing", "", 0, u"", FAILED, ""},
        {"of blanks alone", "  \n", 0, u"", FAILED, ""},
        {"with a width", "abcdef", 3, u"ab", GOOD, "cdef"},
        {"with a width after blanks", "  abcdef", 3, u"ab", GOOD, "cdef"},
        {"with a width of 1", "abc", 1, u"", FAIL, "abc"},
        {"with a width of 1 after blanks", " abc", 1, u"", FAIL, "abc"},
        {"with a width of one more than it has", "abc", 4, u"abc", GOOD, ""},
        {"with a large width", "abc def", 100, u"abc", GOOD, " def"},
        {"with a negative width", "abc def", -5, u"abc", GOOD, " def"},
        {"up to 0xFF, which counts as the end",
         "ab\xFF"
         "cd",
         0, u"ab", END,
         "\xFF"
         "cd"},
        {"from 0xFF",
         "\xFF"
         "cd",
         0, u"", FAILED,
         "\xFF"
         "cd"},
        {"0xFF after blanks", "  \xFF", 0, u"", FAILED, "\xFF"},
        {"up to a zero byte, with what follows taken", "a\0b c"s, 0, u"a", GOOD, " c"},
    };
    for (ReadRow const& row : rows)
        expectRead(row, readWord);
}

TEST(StringRead, ALine)
{
    ReadRow const rows[] = {
        {"up to the delimiter, which is consumed", "abc\ndef", 0, u"abc", GOOD, "def"},
        {"to the end", "abc", 0, u"abc", END, ""},
        {"with blanks", "  a b \nc", 0, u"  a b ", GOOD, "c"},
        {"of nothing", "", 0, u"", FAILED, ""},
        {"empty, which reads as a failure", "\nabc", 0, u"", FAIL, "abc"},
        {"with a width", "abcdef\n", 3, u"ab", GOOD, "cdef\n"},
        {"with a width of 1", "abc\n", 1, u"", FAIL, "abc\n"},
        {"with a large width", "abc\ndef", 100, u"abc", GOOD, "def"},
        {"with a carriage return", "abc\r\ndef", 0, u"abc\r", GOOD, "def"},
        {"up to 0xFF, which counts as the end",
         "ab\xFF"
         "cd\n",
         0, u"ab", END,
         "\xFF"
         "cd\n"},
        {"from 0xFF",
         "\xFF"
         "cd\n",
         0, u"", FAILED,
         "\xFF"
         "cd\n"},
    };
    for (ReadRow const& row : rows)
        expectRead(row, readLine);
}

TEST(StringRead, ALineWithoutADelimiterEndsAtACarriageReturn)
{
    auto const read = [](std::istream& in, KX7UString& s) -> std::istream& { return getline(in, s); };
    ReadRow const rows[] = {
        {"a line feed is a byte like any other", "ab\nc", 0, u"ab\nc", END, ""},
        {"up to the carriage return", "ab\rcd", 0, u"ab", GOOD, "cd"},
        {"empty", "\rab", 0, u"", FAIL, "ab"},
    };
    for (ReadRow const& row : rows)
        expectRead(row, read);
}

TEST(StringRead, ALineUpToAnyDelimiter)
{
    for (char const delimiter : {';', ' ', '\0', '\x80'}) {
        std::istringstream in("ab"s + delimiter + "cd");
        KX7UString s;
        getline(in, s, delimiter);
        expectText(s, u"ab");
        EXPECT_EQ(restOf(in), "cd");
    }
}

TEST(StringRead, TheDelimiter0xFFIsTheEndAllTheSame)
{
    std::istringstream in("ab\xFF"
                          "cd");
    KX7UString s;
    getline(in, s, '\xFF');
    expectText(s, u"ab");
    EXPECT_EQ(in.rdstate(), END);
}

TEST(StringRead, LineByLine)
{
    std::istringstream in("one\ntwo\nthree");
    Texts lines;
    for (KX7UString s; getline(in, s, '\n');)
        lines.push_back(textOf(s));
    EXPECT_EQ(lines, (Texts{u"one", u"two", u"three"}));
    EXPECT_EQ(in.rdstate(), FAILED);
}

TEST(StringRead, SetsTheWidthToZero)
{
    KX7UString s;
    std::istringstream words("abcdef");
    words.width(3);
    words >> s;
    EXPECT_EQ(words.width(), 0);
    words >> s;
    expectText(s, u"cdef");
    std::istringstream lines("abc\n");
    lines.width(3);
    getline(lines, s, '\n');
    EXPECT_EQ(lines.width(), 0);
    std::istringstream empty("");
    empty.width(3);
    getline(empty, s, '\n');
    EXPECT_EQ(empty.width(), 0);
}

TEST(StringRead, OfBlanksToTheEndLeavesTheWidth)
{
    for (char const* const bytes : {"", "   "}) {
        KX7UString s;
        std::istringstream in(bytes);
        in.width(3);
        in >> s;
        EXPECT_EQ(in.rdstate(), FAILED);
        EXPECT_EQ(in.width(), 3) << "the end came before the word";
    }
}

TEST(StringRead, OfAByteThatCountsAsTheEndResetsTheWidth)
{
    KX7UString s;
    std::istringstream in("  \xFF"
                          "a");
    in.width(5);
    in >> s;
    EXPECT_EQ(in.rdstate(), FAILED);
    EXPECT_EQ(in.width(), 0) << "the byte is no blank, so the word begins there";
}

TEST(StringRead, AddsToTheStateOfTheStream)
{
    std::istringstream in("abc def");
    in.setstate(std::ios_base::badbit);
    KX7UString s;
    in >> s;
    EXPECT_EQ(in.rdstate(), std::ios_base::badbit);
    expectText(s, u"abc");
}

TEST(StringRead, ThrowsWhereTheStreamIsToldTo)
{
    std::istringstream in("");
    in.exceptions(std::ios_base::failbit);
    KX7UString s = stringOf(u"old");
    EXPECT_THROW(in >> s, std::ios_base::failure);
    expectText(s, u"");
}

TEST(StringRead, OfALongText)
{
    std::string const bytes(100000, 'x');
    std::istringstream in(bytes + " " + bytes + "\n");
    KX7UString s;
    in >> s;
    expectText(s, std::u16string(100000, u'x'));
    expectStorage(s, 100000);
    getline(in, s, '\n');
    expectText(s, u" " + std::u16string(100000, u'x'));
    std::istringstream shorter("ab");
    shorter >> s;
    expectText(s, u"ab");
    expectStorage(s, 0, "as after assign()");
}

TEST(StringRead, OfBytesIsInTheDefaultSet)
{
    std::istringstream in("\xC3\xA9 \xE9");
    KX7UString s;
    in >> s;
    expectText(s, textOf(KX7UString("\xC3\xA9", 2, KX7CS_OS_DEFAULT)));
    in >> s;
    expectText(s, textOf(KX7UString("\xE9", 1, KX7CS_OS_DEFAULT)));
}

namespace {

/** A stream buffer that gives some bytes and then throws. */
class Throwing : public std::streambuf {
public:
    explicit Throwing(std::string const& bytes) : m_bytes(bytes)
    {
        setg(&m_bytes[0], &m_bytes[0], &m_bytes[0] + m_bytes.size());
    }

protected:
    int_type underflow() override { throw std::runtime_error("no more"); }

private:
    std::string m_bytes;
};

}  // namespace

TEST(StringRead, WhatTheBufferThrowsEndsTheReadingAndKeepsTheBytes)
{
    struct {
        char const* what;
        std::string bytes;
        std::u16string text;
        std::ios_base::iostate state;
    } const rows[] = {
        {"some bytes", "abc", u"abc", GOOD},
        {"no bytes", "", u"", FAIL},
    };
    for (auto const& row : rows) {
        KX7UString s = stringOf(u"old");
        Throwing words(row.bytes);
        std::istream in(&words);
        EXPECT_NO_THROW(in >> s) << row.what;
        expectText(s, row.text, row.what);
        EXPECT_EQ(in.rdstate(), row.state) << row.what;
        Throwing lines(row.bytes);
        std::istream lineIn(&lines);
        s = raw(u"old");
        EXPECT_NO_THROW(getline(lineIn, s, '\n')) << row.what;
        expectText(s, row.text, row.what);
        EXPECT_EQ(lineIn.rdstate(), row.state) << row.what;
    }
    Throwing blanks("   ");
    std::istream in(&blanks);
    KX7UString s = stringOf(u"old");
    EXPECT_NO_THROW(in >> s);
    expectText(s, u"");
    EXPECT_EQ(in.rdstate(), FAIL);
}

TEST(StringRead, WithoutABufferIsAFailure)
{
    std::istream in(nullptr);
    KX7UString s = stringOf(u"old");
    in >> s;
    expectText(s, u"");
    EXPECT_TRUE(in.fail());
}

TEST(StringWrite, IsABytesTextLikeAnyOther)
{
    std::ostringstream out;
    KX7UString const s = stringOf(u"abc");
    EXPECT_EQ(&(out << s), &out);
    out << std::setw(6) << std::setfill('.') << s << std::left << std::setw(5) << s << s;
    EXPECT_EQ(out.str(), "abc...abcabc..abc");
    EXPECT_EQ(out.width(), 0);
}

TEST(StringWrite, OfNothingWritesTheFillOnly)
{
    std::ostringstream out;
    out << KX7UString() << std::setw(3) << std::setfill('.') << KX7UString();
    EXPECT_EQ(out.str(), "...");
}

TEST(StringWrite, EndsAtAZeroWithin)
{
    std::ostringstream out;
    out << stringOf(u"ab\0cd"s);
    EXPECT_EQ(out.str(), "ab");
}

TEST(StringWrite, LeavesTheCache)
{
    KX7UString s = stringOf(u"\xE9");
    char const* const cached = s.c_str(KX7CS_WCP1252);
    std::ostringstream out;
    out << s;
    EXPECT_EQ(spaceOf(s).narrowCache, cached);
    EXPECT_EQ(spaceOf(s).narrowCacheCharSet, KX7CS_WCP1252);
    EXPECT_EQ(out.str(), KX7UString(s).c_str(KX7CS_OS_DEFAULT));
}

TEST(StringWrite, AndReadGiveTheTextBack)
{
    KX7UString const s = stringOf(std::u16string(5000, u'x'));
    std::stringstream stream;
    stream << s << ' ' << s;
    KX7UString first, second;
    stream >> first >> second;
    EXPECT_TRUE(first == s);
    EXPECT_TRUE(second == s);
}
