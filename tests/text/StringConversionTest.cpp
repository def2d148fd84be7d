// kx7text tests - the string in other character sets and containers, element access, assignment.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>

#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"
#include "tests/support/Memory.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

namespace {

/** The bytes of host-order wide text. */
template <class Char>
std::string bytesOf(std::basic_string<Char> const& text)
{
    return std::string(reinterpret_cast<char const*>(text.data()), text.size() * sizeof(Char));
}

struct EncodedRow {
    char const* what;
    std::u16string text;
    KX7CharSet charSet;
    std::string bytes;
    unsigned int terminator;
};
std::vector<EncodedRow> const ENCODED = {
    {"one byte a unit", u"caf\xE9", KX7CS_WCP1252, "caf\xE9", 1},
    {"UTF-8", u"\xE9\x20AC\xD83D\xDE00", KX7CS_UTF8, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 1},
    {"no such character", u"a\x4E00z", KX7CS_WCP1252, "a?z", 1},
    {"UTF-16", u"a\x4E00", KX7CS_UTF16, bytesOf(u"a\x4E00"s), 2},
    {"UTF-32", u"a\xD83D\xDE00", KX7CS_UTF32, bytesOf(U"a\x1F600"s), 4},
    {"escaped", u"a\x4E00", KX7CS_UTF16ESC, "aU+4E00", 1},
    {"two bytes", u"a\x3042", KX7CS_WCP932, "a\x82\xA0", 1},
    {"no converter, so UTF-8", u"\xE9", KX7CS_EUC_TW, "\xC3\xA9", 1},
};

KX7CharSet const SOME_SETS[] = {KX7CS_OS_DEFAULT, KX7CS_UTF8,     KX7CS_WCP1252, KX7CS_WCP932, KX7CS_UTF16,
                                KX7CS_UTF32,      KX7CS_UTF16ESC, KX7CS_GB18030, KX7CS_EUC_JP, KX7CS_UTF16BE};

}  // namespace

TEST(StringLengthIn, IsTheNumberOfBytes)
{
    for (EncodedRow const& row : ENCODED)
        EXPECT_EQ(stringOf(row.text).length(row.charSet), row.bytes.size()) << row.what;
    for (KX7CharSet const cs : SOME_SETS)
        EXPECT_EQ(KX7UString().length(cs), 0u) << cs;
}

TEST(StringLengthIn, CountsPastAZeroWithin)
{
    KX7UString const s = stringOf(u"a\0b"s);
    EXPECT_EQ(s.length(), 3u);
    EXPECT_EQ(s.length(KX7CS_UTF16), GetMinUnitSize(KX7CS_UTF16) * g_oConverterUTF16.getNumBytes(s.data(), 3) / 2);
}

TEST(StringNumChars, CountsAPairOnce)
{
    struct {
        char const* what;
        std::u16string text;
        unsigned int count;
    } const rows[] = {
        {"empty", u"", 0},
        {"letters", u"abc", 3},
        {"a letter and a pair", u"A\xD83D\xDE00", 2},
        {"two pairs", u"\xD83D\xDE00\xD83D\xDE01", 2},
        {"lone low surrogate", u"a\xDC00", 2},
        {"lone high surrogate within", u"\xD800z", 2},
        {"high surrogate at the end adds nothing", u"ab\xD800", 2},
    };
    for (auto const& row : rows) {
        EXPECT_EQ(stringOf(row.text).numChars(), row.count) << row.what;
    }
}

TEST(StringNumChars, ReusesTheUTF32Text)
{
    KX7UString s = stringOf(u"ab");
    s.c_str(KX7CS_UTF32);
    s.at(0) = 0xD83D;
    s.at(1) = 0xDE00;
    EXPECT_EQ(s.numChars(), 2u) << "of the text when it was converted";
    s.c_str(KX7CS_UTF8);
    EXPECT_EQ(s.numChars(), 1u);
}

TEST(StringCStr, IsTheTextWithItsTerminator)
{
    for (EncodedRow const& row : ENCODED) {
        KX7UString s = stringOf(row.text);
        char const* const text = s.c_str(row.charSet);
        EXPECT_TRUE(sameText(std::string(text, row.bytes.size() + row.terminator),
                             row.bytes + std::string(row.terminator, '\0')))
            << row.what;
        EXPECT_EQ(spaceOf(s).narrowCache, text) << row.what;
        EXPECT_EQ(spaceOf(s).narrowCacheLength, row.bytes.size()) << row.what;
        EXPECT_EQ(spaceOf(s).narrowCacheCharSet, row.charSet) << row.what;
        expectText(s, row.text, row.what);
    }
}

TEST(StringCStr, OfALongTextIsWhole)
{
    KX7UString s(static_cast<unsigned short>(0x20AC), 5000);
    std::string expected;
    for (int i = 0; i < 5000; ++i)
        expected += "\xE2\x82\xAC";
    EXPECT_TRUE(sameText(std::string(s.c_str(KX7CS_UTF8)), expected));
}

TEST(StringCStr, OfAnEmptyStringIsFourZeroBytesInEverySet)
{
    for (KX7CharSet const cs : SOME_SETS) {
        KX7UString s;
        char const* const text = s.c_str(cs);
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(std::string(text, 4), std::string(4, '\0')) << cs;
        EXPECT_EQ(spaceOf(s).narrowCache, nullptr) << cs;
    }
}

TEST(StringCStr, WithoutASetIsInTheDefault)
{
    KX7UString s = stringOf(u"abc");
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(spaceOf(s).narrowCacheCharSet, KX7CS_OS_DEFAULT);
}

TEST(StringCStr, IsKeptForOneSetAtATime)
{
    KX7UString s = stringOf(u"\xE9");
    char const* const first = s.c_str(KX7CS_WCP1252);
    EXPECT_EQ(s.c_str(KX7CS_WCP1252), first);
    EXPECT_STREQ(first, "\xE9");
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "\xC3\xA9");
    EXPECT_EQ(spaceOf(s).narrowCacheCharSet, KX7CS_UTF8);
    EXPECT_STREQ(s.c_str(KX7CS_WCP1252), "\xE9");
    EXPECT_EQ(spaceOf(s).narrowCacheCharSet, KX7CS_WCP1252);
}

TEST(StringCStr, HasNoSubstituteForAHighSurrogateAtTheEnd)
{
    for (KX7CharSet const cs : {KX7CS_UTF8, KX7CS_UTF32}) {
        KX7UString s = stringOf(u"a\xD800");
        s.c_str(cs);
        EXPECT_EQ(spaceOf(s).narrowCacheLength, GetMinUnitSize(cs)) << "it is not counted, so it has no space";
    }
    EXPECT_STREQ(stringOf(u"a\xD800z").c_str(KX7CS_UTF8), "a?z");
}

TEST(StringCStr, EndsAtAZeroWithin)
{
    KX7UString s = stringOf(u"ab\0cd"s);
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "ab");
    EXPECT_EQ(spaceOf(s).narrowCacheLength, 2u);
}

namespace {

struct CacheRow {
    char const* what;
    bool drops;
    void (*run)(KX7UString& s);
};
KX7PascalString const PASCAL = {3, {'n', 'e', 'w'}};
KX7BSTR const& bstr()
{
    static KX7BSTR const b = {3, {'n', 'e', 'w'}};
    return b;
}
CacheRow const CACHE_ROWS[] = {
    {"erase", true, [](KX7UString& s) { s.erase(); }},
    {"erase of a part", true, [](KX7UString& s) { s.erase(1, 1); }},
    {"erase of all units", true, [](KX7UString& s) { s.erase(0, KX7UString::npos); }},
    {"erase of no units", true, [](KX7UString& s) { s.erase(1, 0); }},
    {"trim that cuts", true, [](KX7UString& s) { s.trim(); }},
    {"trim that cuts nothing", true, [](KX7UString& s) { s.trim(KX7UString::TRIM_FRONT, KX7UString::TRIM_SPACE); }},
    {"resize", true, [](KX7UString& s) { s.resize(2, unitOf('x')); }},
    {"resize beyond the capacity", true, [](KX7UString& s) { s.resize(400, unitOf('x')); }},
    {"resize to nothing", true, [](KX7UString& s) { s.resize(0, unitOf('x')); }},
    {"resize to the length", false, [](KX7UString& s) { s.resize(s.length(), unitOf('x')); }},
    {"resize with a byte", true, [](KX7UString& s) { s.resize(9, 'x'); }},
    {"resize with a byte to the length", false, [](KX7UString& s) { s.resize(s.length(), 'x'); }},
    {"replace", true, [](KX7UString& s) { s.replace(1, 1, stringOf(u"XYZ"), 0); }},
    {"replace beyond the capacity", true, [](KX7UString& s) { s.replace(0, 1, KX7UString(unitOf('x'), 300), 0); }},
    {"replace of nothing by nothing", true, [](KX7UString& s) { s.replace(0, 0, KX7UString(), 0); }},
    {"replace by pointers", true, [](KX7UString& s) { s.replace(s.data(), s.data() + 1, stringOf(u"X")); }},
    {"replace that throws", false,
     [](KX7UString& s) { EXPECT_EQ(errorOf([&] { s.replace(99, 1, s, 0); }), INVALID_STRING_INDEX); }},
    {"assign", true, [](KX7UString& s) { s.assign(stringOf(u"new")); }},
    {"assign of itself", false, [](KX7UString& s) { s.assign(s); }},
    {"swap", true,
     [](KX7UString& s) {
         KX7UString other = stringOf(u"new");
         s.swap(other);
     }},
    {"= Pascal string", true, [](KX7UString& s) { s = &PASCAL; }},
    {"= BSTR", true, [](KX7UString& s) { s = bstr(); }},
    {"= units", true, [](KX7UString& s) { s = raw(u"new"); }},
    {"= no units", true, [](KX7UString& s) { s = raw(u""); }},
    {"= bytes", true, [](KX7UString& s) { s = "new"; }},
    {"= no bytes", true, [](KX7UString& s) { s = ""; }},
    {"= unit", true, [](KX7UString& s) { s = unitOf('n'); }},
    {"= unit 0", true, [](KX7UString& s) { s = unitOf('\0'); }},
    {"= char", false, [](KX7UString& s) { s = 'n'; }},
    {"= char 0", true, [](KX7UString& s) { s = '\0'; }},
    {"toUpper", false, [](KX7UString& s) { s.toUpper(); }},
    {"toLower", false, [](KX7UString& s) { s.toLower(true); }},
    {"a write through at()", false, [](KX7UString& s) { s.at(0) = 'n'; }},
    {"copy", false,
     [](KX7UString& s) {
         char bytes[16];
         s.copy(bytes, 8, KX7CS_UTF8);
     }},
    {"numChars", false, [](KX7UString& s) { EXPECT_EQ(s.numChars(), 6u); }},
    {"length", false, [](KX7UString& s) { EXPECT_EQ(s.length(KX7CS_UTF16), 12u); }},
    {">>", true,
     [](KX7UString& s) {
         std::istringstream in("new");
         in >> s;
     }},
    {">> of nothing", true,
     [](KX7UString& s) {
         std::istringstream in("");
         in >> s;
     }},
    {"getline", true,
     [](KX7UString& s) {
         std::istringstream in("new\n");
         getline(in, s, '\n');
     }},
    {"<<", false,
     [](KX7UString& s) {
         std::ostringstream out;
         out << s;
     }},
    {"+", false, [](KX7UString& s) { s + s; }},
};

}  // namespace

TEST(StringCache, IsDroppedByWhatChangesTheTextButForTheKeptExceptions)
{
    for (unsigned int const length : {0u, 300u}) {
        for (CacheRow const& row : CACHE_ROWS) {
            KX7UString s = stringOf(u"Abcd  ");
            if (length != 0)
                s.AssureSpace(length);
            s = raw(u"Abcd  ");
            char const* const before = s.c_str(KX7CS_WCP1252);
            row.run(s);
            EXPECT_EQ(spaceOf(s).narrowCache == nullptr, row.drops) << row.what;
            if (!row.drops) {
                EXPECT_EQ(s.c_str(KX7CS_WCP1252), before) << row.what;
                EXPECT_STREQ(before, "Abcd  ") << row.what;
            }
            else if (!s.empty()) {
                EXPECT_EQ(std::string(s.c_str(KX7CS_UTF16), s.length() * 2), bytesOf(textOf(s))) << row.what;
            }
        }
    }
}

TEST(StringCache, AnswersWithTheOldTextAfterAssignmentOfAChar)
{
    KX7UString s = stringOf(u"old");
    s.c_str(KX7CS_UTF8);
    s = 'x';
    expectText(s, u"x");
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "old");
    EXPECT_STREQ(s.c_str(KX7CS_WCP1252), "x");
}

TEST(StringCache, AnswersWithTheOldTextAfterCaseMappingAndWritesThroughAt)
{
    KX7UString s = stringOf(u"old");
    s.c_str(KX7CS_UTF8);
    s.toUpper();
    s.at(0) = 'X';
    expectText(s, u"XLD");
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "old");
    EXPECT_STREQ(s.c_str(KX7CS_WCP1252), "XLD");
    EXPECT_STREQ(s.c_str(KX7CS_UTF8), "XLD");
}

TEST(StringCache, IsNotCopied)
{
    KX7UString s = stringOf(u"text");
    s.c_str(KX7CS_UTF8);
    KX7UString const copy(s);
    EXPECT_EQ(spaceOf(copy).narrowCache, nullptr);
    KX7UString target;
    target.assign(s);
    EXPECT_EQ(spaceOf(target).narrowCache, nullptr);
    EXPECT_NE(spaceOf(s).narrowCache, nullptr);
}

TEST(StringCache, ItselfCanBeAssigned)
{
    for (unsigned int const n : {3u, 300u}) {
        KX7UString s(unitOf('x'), n);
        s = s.c_str();
        expectText(s, std::u16string(n, u'x'));
    }
}

namespace {

/** The bytes that copy() leaves in memory of `size` bytes and the terminator; canaries around them. */
std::string copied(KX7UString const& s, unsigned int size, KX7CharSet cs, unsigned int& result)
{
    Fenced<char> memory;
    size_t const whole = size + GetNullCharSize(cs);
    char* const dst = memory.arm(whole);
    result = s.copy(dst, size, cs);
    EXPECT_TRUE(memory.intact());
    return std::string(dst, whole);
}

}  // namespace

TEST(StringCopyToBytes, WritesTheTerminatorAfterTheSize)
{
    for (EncodedRow const& row : ENCODED) {
        unsigned int result = 0;
        auto const size = static_cast<unsigned int>(row.bytes.size());
        KX7UString const s = stringOf(row.text);
        std::string const dst = copied(s, size, row.charSet, result);
        EXPECT_EQ(result, size) << row.what;
        EXPECT_TRUE(sameText(dst, row.bytes + std::string(row.terminator, '\0'))) << row.what;
        EXPECT_EQ(spaceOf(s).narrowCache, nullptr) << row.what;
    }
}

TEST(StringCopyToBytes, CutsBetweenCharacters)
{
    KX7UString const s = stringOf(u"a\x20AC\xD83D\xDE00");
    unsigned int const lengths[] = {0, 1, 1, 1, 4, 4, 4, 4, 8, 8};
    for (unsigned int size = 1; size < 10; ++size) {
        unsigned int result = 0;
        std::string const dst = copied(s, size, KX7CS_UTF8, result);
        EXPECT_EQ(result, lengths[size]) << size;
        EXPECT_EQ(dst.substr(0, result + 1), "a\xE2\x82\xAC\xF0\x9F\x98\x80"s.substr(0, result) + '\0') << size;
    }
}

TEST(StringCopyToBytes, WritesNothingWithoutATextOrCapacity)
{
    char dst[8] = {'x', 'x'};
    KX7UString const s = stringOf(u"abc");
    EXPECT_EQ(s.copy(dst, 0, KX7CS_UTF8), 0u);
    EXPECT_EQ(s.copy(static_cast<char*>(nullptr), 5, KX7CS_UTF8), 0u);
    EXPECT_EQ(KX7UString().copy(dst, 5, KX7CS_UTF8), 0u);
    EXPECT_EQ(dst[0], 'x');
    EXPECT_EQ(s.copy(dst, 7), 3u);
    EXPECT_STREQ(dst, "abc");
}

TEST(StringCopyToUnits, WritesUnitsWithoutATerminator)
{
    KX7UString const s = stringOf(u"a\0\xD800"
                                  u"ef"s);
    for (unsigned int size = 1; size < 9; ++size) {
        Fenced<unsigned short> memory;
        unsigned short* const dst = memory.arm(size);
        unsigned int const expected = std::min(size, 5u);
        EXPECT_EQ(s.copy(dst, size), expected);
        EXPECT_TRUE(memory.intact());
        EXPECT_EQ(std::u16string(dst, dst + expected), textOf(s).substr(0, expected));
        if (size > 5) {
            EXPECT_EQ(dst[5], 0xA5A5) << "no terminator";
        }
    }
    unsigned short dst[2] = {7, 7};
    EXPECT_EQ(s.copy(dst, 0), 0u);
    EXPECT_EQ(s.copy(static_cast<unsigned short*>(nullptr), 5), 0u);
    EXPECT_EQ(KX7UString().copy(dst, 2), 0u);
    EXPECT_EQ(dst[0], 7);
}

TEST(StringCopyToPascal, CutsAt255BytesAfterAWholeCharacter)
{
    struct {
        char const* what;
        std::u16string text;
        KX7CharSet charSet;
        unsigned int length;
    } const rows[] = {
        {"short", u"abc", KX7CS_WCP1252, 3},
        {"exactly 255", std::u16string(255, u'x'), KX7CS_WCP1252, 255},
        {"256", std::u16string(256, u'x'), KX7CS_WCP1252, 255},
        {"300", std::u16string(300, u'\xE9'), KX7CS_WCP1252, 255},
        {"two bytes each", std::u16string(200, u'\xE9'), KX7CS_UTF8, 254},
        {"three bytes each", std::u16string(200, u'\x20AC'), KX7CS_UTF8, 255},
        {"UTF-16", std::u16string(200, u'x'), KX7CS_UTF16, 254},
        {"UTF-32", std::u16string(200, u'x'), KX7CS_UTF32, 252},
        {"empty", u"", KX7CS_UTF8, 0},
    };
    for (auto const& row : rows) {
        KX7UString s = stringOf(row.text);
        Fenced<char> memory;
        auto* const p = reinterpret_cast<KX7PascalString*>(memory.arm(sizeof(KX7PascalString)));
        EXPECT_EQ(s.copy(p, row.charSet), row.length) << row.what;
        EXPECT_EQ(p->length, row.length) << row.what;
        EXPECT_EQ(std::string(p->text, row.length), std::string(s.c_str(row.charSet), row.length)) << row.what;
        EXPECT_TRUE(row.length == 255 || p->text[row.length] == '\xA5') << row.what << ": no terminator";
        EXPECT_TRUE(memory.intact()) << row.what;
    }
    EXPECT_EQ(stringOf(u"a").copy(static_cast<KX7PascalString*>(nullptr), KX7CS_UTF8), 0u);
}

TEST(StringCopyToBSTR, TakesTheLengthModulo65536)
{
    struct {
        char const* what;
        unsigned int length, size, result, field, copied;
    } const rows[] = {
        {"fits", 5, 10, 5, 5, 5},
        {"fits exactly", 5, 5, 5, 5, 5},
        {"cut", 5, 3, 3, 3, 3},
        {"no space", 5, 0, 0, 0, 0},
        {"empty", 0, 10, 0, 0, 0},
        {"the longest", 65535, 65535, 65535, 65535, 65535},
        {"cut to the longest", 70000, 65535, 65535, 65535, 65535},
        {"capacity of 65,536 is none", 70000, 65536, 0, 0, 0},
        {"capacity of 65,539 is three", 70000, 65539, 3, 3, 3},
        {"65,536 units that fit are none", 65536, 70000, 65536, 0, 0},
        {"65,538 units that fit are two in the length field", 65538, 70000, 65538, 2, 65538},
    };
    for (auto const& row : rows) {
        KX7UString s(unitOf('x'), row.length);
        Fenced<unsigned short> memory;
        unsigned short* const dst = memory.arm(1 + row.copied);
        EXPECT_EQ(s.copy(reinterpret_cast<KX7BSTR*>(dst), row.size), row.result) << row.what;
        EXPECT_EQ(dst[0], row.field) << row.what;
        EXPECT_EQ(Units(dst + 1, dst + 1 + row.copied), Units(row.copied, 'x')) << row.what;
        EXPECT_TRUE(memory.intact()) << row.what << ": no terminator";
    }
    EXPECT_EQ(stringOf(u"a").copy(static_cast<KX7BSTR*>(nullptr), 9), 0u);
}

TEST(StringAt, GivesAReferenceToTheUnit)
{
    KX7UString s = stringOf(u"a\0c"s);
    KX7UString const& constant = s;
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(&s.at(i), s.data() + i);
        EXPECT_EQ(&constant.at(i), s.data() + i);
    }
    s.at(2) = 'z';
    expectText(s, u"a\0z"s);
    KX7UString large(unitOf('x'), 300);
    large.at(299) = 'y';
    EXPECT_EQ(large.data()[299], 'y');
}

TEST(StringAt, OfTheLengthOrMoreThrows)
{
    KX7UString s = stringOf(u"abc");
    KX7UString const& constant = s;
    for (unsigned int const i : {3u, 4u, 257u, 0xFFFFFFFFu}) {
        EXPECT_EQ(errorOf([&] { s.at(i); }), INVALID_STRING_INDEX) << i;
        EXPECT_EQ(errorOf([&] { constant.at(i); }), INVALID_STRING_INDEX) << i;
    }
    EXPECT_EQ(errorOf([] { KX7UString().at(0); }), INVALID_STRING_INDEX);
    expectText(s, u"abc");
}

TEST(StringAtUTF32, CountsInCharacters)
{
    KX7UString s = stringOf(u"A\xD83D\xDE00");
    EXPECT_EQ(s.at_utf32(0), 0x41u);
    EXPECT_EQ(s.at_utf32(1), 0x1F600u);
    EXPECT_EQ(errorOf([&] { s.at_utf32(2); }), INVALID_STRING_INDEX);
    EXPECT_EQ(errorOf([&] { s.at_utf32(0xFFFFFFFF); }), INVALID_STRING_INDEX);
    EXPECT_EQ(s.numChars(), 2u);
}

TEST(StringAtUTF32, IsAReferenceIntoTheCache)
{
    KX7UString s = stringOf(u"ab");
    unsigned int& first = s.at_utf32(0);
    EXPECT_EQ(reinterpret_cast<char*>(&first), s.c_str(KX7CS_UTF32));
    first = 0x1F600;
    expectText(s, u"ab");
    EXPECT_EQ(s.at_utf32(0), 0x1F600u);
    s.c_str(KX7CS_UTF8);
    EXPECT_EQ(s.at_utf32(0), 'a' + 0u);
}

TEST(StringAtUTF32, RefreshesTheCacheBeforeItThrows)
{
    KX7UString s = stringOf(u"ab");
    s.c_str(KX7CS_UTF8);
    EXPECT_EQ(errorOf([&] { s.at_utf32(2); }), INVALID_STRING_INDEX);
    EXPECT_EQ(spaceOf(s).narrowCacheCharSet, KX7CS_UTF32);
    EXPECT_EQ(spaceOf(s).narrowCacheLength, 8u);
    expectText(s, u"ab");
}

TEST(StringAtUTF32, OfAnEmptyStringThrowsWhateverWasCachedBefore)
{
    EXPECT_EQ(errorOf([] { KX7UString().at_utf32(0); }), INVALID_STRING_INDEX);
    KX7UString s = stringOf(u"abc");
    s.at_utf32(2);
    s.erase();
    EXPECT_EQ(errorOf([&] { s.at_utf32(0); }), INVALID_STRING_INDEX);
    s = raw(u"x");
    EXPECT_EQ(s.at_utf32(0), 'x' + 0u);
    EXPECT_EQ(errorOf([&] { s.at_utf32(1); }), INVALID_STRING_INDEX);
}

namespace {

/** Strings in every state of storage and cache, each run through `assign` on its own. */
void onEveryState(std::function<void(KX7UString& s, unsigned int capacity)> const& check)
{
    for (unsigned int const capacity : {257u, 300u, 5000u}) {
        for (unsigned int const length : {0u, 5u, 257u}) {
            for (bool const cached : {false, true}) {
                KX7UString s;
                s.AssureSpace(capacity);
                if (length != 0)
                    s.resize(length, unitOf('o'));
                if (cached)
                    s.c_str(KX7CS_UTF8);
                check(s, capacity);
            }
        }
    }
}

/** The text, the capacity of one that grows to what is needed and never shrinks, no cache. */
void expectAssigned(KX7UString const& s, std::u16string const& text, unsigned int capacity, char const* what)
{
    expectText(s, text, what);
    EXPECT_EQ(s.capacity(), std::max(capacity, static_cast<unsigned int>(text.size()))) << what;
    EXPECT_EQ(spaceOf(s).narrowCache, nullptr) << what;
}

}  // namespace

TEST(StringAssignment, OfUnits)
{
    for (size_t const n : {1U, 5U, 257U, 258U, 1000U}) {
        std::u16string const text(n, u'\x20AC');
        onEveryState([&](KX7UString& s, unsigned int capacity) {
            EXPECT_EQ(&(s = raw(text)), &s);
            expectAssigned(s, text, capacity, "units");
        });
    }
    onEveryState([&](KX7UString& s, unsigned int capacity) {
        s = raw(u"");
        expectAssigned(s, u"", capacity, "empty");
        s = raw(u"ab\0c"s);
        expectAssigned(s, u"ab", capacity, "up to the zero");
        EXPECT_EQ(&(s = static_cast<unsigned short const*>(nullptr)), &s);
        expectAssigned(s, u"", capacity, "null");
    });
}

TEST(StringAssignment, OfItsOwnUnits)
{
    KX7UString s = stringOf(u"abcdef");
    s = s.data() + 2;
    expectText(s, u"cdef");
    s = s.data();
    expectText(s, u"cdef");
    KX7UString large(unitOf('x'), 300);
    large = large.data() + 100;
    expectText(large, std::u16string(200, u'x'));
    EXPECT_EQ(large.capacity(), 300u);
}

TEST(StringAssignment, OfBytesIsInTheDefaultSet)
{
    for (size_t const n : {1U, 5U, 257U, 258U, 1000U}) {
        std::string const bytes(n, 'x');
        onEveryState([&](KX7UString& s, unsigned int capacity) {
            EXPECT_EQ(&(s = bytes.c_str()), &s);
            expectAssigned(s, std::u16string(n, u'x'), capacity, "bytes");
        });
    }
    onEveryState([&](KX7UString& s, unsigned int capacity) {
        s = "";
        expectAssigned(s, u"", capacity, "empty");
        s = "ab";
        expectAssigned(s, u"ab", capacity, "short");
        s = static_cast<char const*>(nullptr);
        expectAssigned(s, u"", capacity, "null");
    });
    KX7UString s;
    s = "\xC3\xA9";
    expectText(s, textOf(KX7UString("\xC3\xA9", KX7CS_OS_DEFAULT)));
}

TEST(StringAssignment, OfAUnit)
{
    onEveryState([&](KX7UString& s, unsigned int capacity) {
        for (unsigned short const unit : Units{0x41, 0x20AC, 0xD800, 0xFFFF}) {
            EXPECT_EQ(&(s = unit), &s);
            expectAssigned(s, std::u16string(1, static_cast<char16_t>(unit)), capacity, "unit");
        }
        s = static_cast<unsigned short>(0);
        expectAssigned(s, u"", capacity, "0");
    });
}

TEST(StringAssignment, OfAChar)
{
    onEveryState([&](KX7UString& s, unsigned int capacity) {
        char const* const cached = spaceOf(s).narrowCache;
        EXPECT_EQ(&(s = 'x'), &s);
        expectText(s, u"x");
        EXPECT_EQ(s.capacity(), capacity);
        EXPECT_EQ(spaceOf(s).narrowCache, cached);
        s = '\0';
        expectAssigned(s, u"", capacity, "0");
    });
}

TEST(StringAssignment, OfAPascalString)
{
    KX7PascalString longest = {255, {}};
    memset(longest.text, 'x', sizeof longest.text);
    onEveryState([&](KX7UString& s, unsigned int capacity) {
        EXPECT_EQ(&(s = &PASCAL), &s);
        expectAssigned(s, u"new", capacity, "Pascal");
        s = &longest;
        expectAssigned(s, std::u16string(255, u'x'), capacity, "longest");
        KX7PascalString const empty = {0, {'a'}};
        s = &empty;
        expectAssigned(s, u"", capacity, "length 0");
        s = &PASCAL;
        s = static_cast<KX7PascalString const*>(nullptr);
        expectAssigned(s, u"", capacity, "null");
        KX7PascalString const zero = {3, {'a', 0, 'b'}};
        s = &zero;
        expectAssigned(s, u"a", capacity, "a zero within");
    });
}

TEST(StringAssignment, OfABSTR)
{
    auto const b = std::make_unique<KX7BSTR>();
    std::fill_n(b->text, 65535, unitOf('x'));
    for (unsigned int const n : {0u, 1u, 257u, 258u, 1000u, 65535u}) {
        b->length = static_cast<unsigned short>(n);
        onEveryState([&](KX7UString& s, unsigned int capacity) {
            EXPECT_EQ(&(s = *b), &s);
            expectAssigned(s, std::u16string(n, u'x'), capacity, "BSTR");
        });
    }
    b->length = 3;
    b->text[1] = 0;
    KX7UString s;
    s = *b;
    expectText(s, u"x\0x"s);
}
