// kx7text tests - lists of strings.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kx7/text/KX7UStringList.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;
using namespace std::string_literals;

static_assert(std::has_virtual_destructor<KX7UStringList>::value, "may be derived from");

namespace {

KX7UStringList listOf(Texts const& texts)
{
    KX7UStringList list;
    for (std::u16string const& text : texts)
        list.append(stringOf(text));
    return list;
}

void expectTexts(KX7UStringList const& list, Texts const& texts, std::string const& what = "")
{
    EXPECT_EQ(textsOf(list), texts) << what;
    EXPECT_EQ(list.size(), texts.size()) << what;
    for (unsigned int i = 0; i < list.size(); ++i)
        expectText(list.at(i), texts[i], what);
}

}  // namespace

TEST(StringList, IsEmptyOrOfOneString)
{
    expectTexts(KX7UStringList(), {});
    expectTexts(KX7UStringList(stringOf(u"a")), {u"a"});
    expectTexts(KX7UStringList(KX7UString()), {u""});
}

namespace {

struct SplitRow {
    char const* what;
    std::u16string text, separator;
    Texts parts;
    bool joinsBack;  ///< combining the parts gives the text
};
std::vector<SplitRow> const SPLITS = {
    {"three", u"a;b;c", u";", {u"a", u"b", u"c"}, true},
    {"leading, inner and trailing", u",a,,b,", u",", {u"", u"a", u"", u"b"}, false},
    {"leading", u";a", u";", {u"", u"a"}, true},
    {"trailing", u"a;", u";", {u"a"}, false},
    {"two trailing", u"a;;", u";", {u"a", u""}, false},
    {"none", u"a", u";", {u"a"}, true},
    {"nothing", u"", u";", {}, true},
    {"the separator alone", u";", u";", {u""}, false},
    {"three separators", u";;;", u";", {u"", u"", u""}, false},
    {"two units", u"axxbxx", u"xx", {u"a", u"b"}, false},
    {"overlapping", u"axxxb", u"xx", {u"a", u"xb"}, true},
    {"not whole", u"axb", u"xx", {u"axb"}, true},
    {"empty separator", u"axxbxx", u"", {u"axxbxx"}, true},
    {"empty separator, nothing", u"", u"", {u""}, true},
    {"longer separator", u"a", u"ab", {u"a"}, true},
    {"the text itself", u"abc", u"abc", {u""}, false},
    {"zero within a part", u"a\0b;c"s, u";", {u"a\0b"s, u"c"}, true},
    {"surrogates", u"\xD83D\xDE00;\xD83D", u";", {u"\xD83D\xDE00", u"\xD83D"}, true},
};

}  // namespace

TEST(StringListSplit, AtAString)
{
    for (SplitRow const& row : SPLITS) {
        KX7UStringList const list(stringOf(row.text), stringOf(row.separator));
        expectTexts(list, row.parts, row.what);
        EXPECT_EQ(textOf(list.combine(stringOf(row.separator))) == row.text, row.joinsBack) << row.what;
    }
}

TEST(StringListSplit, AtAUnit)
{
    for (SplitRow const& row : SPLITS) {
        if (row.separator.size() > 1)
            continue;
        expectTexts(KX7UStringList(stringOf(row.text), raw(row.separator)[0]), row.parts, row.what);
    }
}

TEST(StringListSplit, AtNothingGivesTheWholeString)
{
    unsigned short const zero = 0;
    expectTexts(KX7UStringList(stringOf(u"a\0b"s), zero), {u"a\0b"s});
    expectTexts(KX7UStringList(KX7UString(), zero), {u""});
    expectTexts(KX7UStringList(stringOf(u"ab"), KX7UString()), {u"ab"});
    expectTexts(KX7UStringList(KX7UString(), KX7UString()), {u""});
}

TEST(StringListSplit, AtItself)
{
    KX7UString const s = stringOf(u"abc");
    expectTexts(KX7UStringList(s, s), {u""});
    KX7UString const empty;
    expectTexts(KX7UStringList(empty, empty), {u""});
}

TEST(StringListSplit, OfLongParts)
{
    std::u16string const part(1000, u'x');
    KX7UStringList const list(stringOf(part + u";" + part), unitOf(';'));
    expectTexts(list, {part, part});
    EXPECT_EQ(list.at(0).capacity(), 1000u);
}

TEST(StringListSplit, AndCombineGiveTheTextBack)
{
    KX7UString const s = stringOf(u"a;b;c");
    KX7UString const separator = stringOf(u";");
    expectText(s.split(unitOf(';')).combine(separator), u"a;b;c");
    expectText(stringOf(u"a;").split(unitOf(';')).combine(separator), u"a");
}

TEST(StringListCombine, PutsTheSeparatorBetweenNeighbours)
{
    struct {
        char const* what;
        Texts texts;
        std::u16string separator, result;
    } const rows[] = {
        {"nothing", {}, u";", u""},
        {"one", {u"a"}, u";", u"a"},
        {"one empty", {u""}, u";", u""},
        {"two", {u"a", u"b"}, u", ", u"a, b"},
        {"empty ones", {u"", u"", u""}, u";", u";;"},
        {"without a separator", {u"a", u"b", u"c"}, u"", u"abc"},
        {"zeros", {u"a\0"s, u"b"}, u"\0"s, u"a\0\0b"s},
        {"long",
         {std::u16string(300, u'a'), std::u16string(300, u'b')},
         u"-",
         std::u16string(300, u'a') + u"-" + std::u16string(300, u'b')},
    };
    for (auto const& row : rows) {
        KX7UStringList const list = listOf(row.texts);
        KX7UString const s = list.combine(stringOf(row.separator));
        expectText(s, row.result, row.what);
        expectStorage(s, s.length() > 257 ? s.length() : 0, row.what);
        expectTexts(list, row.texts, row.what);
    }
}

TEST(StringListCombine, WithAnElementAsTheSeparator)
{
    KX7UStringList const list = listOf({u"a", u"b", u"c"});
    expectText(list.combine(list.at(1)), u"abbbc");
}

TEST(StringListCombine, BeyondTheMaximumLengthThrows)
{
    // A header that claims the length: what is too long is refused before a unit is read.
    KX7UStringList list = listOf({u"a", u"b"});
    KX7UString separator;
    KX7UString::Space* const space = separator.SetupSpace();
    space->length = 0xFFFFFFFD;
    EXPECT_EQ(errorOf([&] { list.combine(separator); }), STRING_TOO_LONG);
    space->length = 0;
    expectTexts(list, {u"a", u"b"});
}

TEST(StringList, CopiesEveryString)
{
    KX7UStringList const list = listOf({u"a", std::u16string(300, u'b')});
    KX7UStringList copy(list);
    expectTexts(copy, {u"a", std::u16string(300, u'b')});
    EXPECT_NE(copy.at(1).data(), list.at(1).data());
    copy.clear();
    expectTexts(copy, {});
    expectTexts(list, {u"a", std::u16string(300, u'b')});
}

TEST(StringListAt, ChecksTheIndex)
{
    KX7UStringList const list = listOf({u"a", u"b"});
    EXPECT_EQ(textOf(list.at(1)), u"b");
    EXPECT_EQ(&list.at(1), &list[1]);
    for (unsigned int const i : {2u, 3u, 0xFFFFFFFFu})
        EXPECT_EQ(errorOf([&] { list.at(i); }), INVALID_LIST_INDEX) << i;
    EXPECT_EQ(errorOf([] { KX7UStringList().at(0); }), INVALID_LIST_INDEX);
}

TEST(StringList, IsIteratedInBothDirections)
{
    KX7UStringList list = listOf({u"a", u"b", u"c"});
    KX7UStringList const& constant = list;
    std::u16string forth, back, constForth, constBack;
    for (KX7UStringList::iterator it = list.begin(); it != list.end(); ++it)
        forth += textOf(*it);
    for (KX7UStringList::const_iterator it = constant.begin(); it != constant.end(); ++it)
        constForth += textOf(*it);
    for (KX7UStringList::reverse_iterator it = list.rbegin(); it != list.rend(); ++it)
        back += textOf(*it);
    for (KX7UStringList::const_reverse_iterator it = constant.rbegin(); it != constant.rend(); ++it)
        constBack += textOf(*it);
    EXPECT_EQ(forth, u"abc");
    EXPECT_EQ(constForth, u"abc");
    EXPECT_EQ(back, u"cba");
    EXPECT_EQ(constBack, u"cba");
    for (KX7UString& s : list)
        s.toUpper();
    expectTexts(list, {u"A", u"B", u"C"});
    std::sort(list.rbegin(), list.rend());
    expectTexts(list, {u"C", u"B", u"A"});
}

TEST(StringListAssignment, OfAStringLeavesThatOne)
{
    KX7UStringList list = listOf({u"a", u"b"});
    EXPECT_EQ(&(list = stringOf(u"x")), &list);
    expectTexts(list, {u"x"});
    KX7UStringList empty;
    empty = KX7UString();
    expectTexts(empty, {u""});
}

TEST(StringListAssignment, OfAnOwnElement)
{
    for (unsigned int i = 0; i < 3; ++i) {
        Texts const texts = {u"a", std::u16string(300, u'b'), u"c"};
        KX7UStringList list = listOf(texts);
        list = list.at(i);
        expectTexts(list, {texts[i]});
    }
}

TEST(StringListAssignment, OfAList)
{
    KX7UStringList list = listOf({u"a", u"b"});
    KX7UStringList const other = listOf({u"x", u"y", u"z"});
    EXPECT_EQ(&(list = other), &list);
    expectTexts(list, {u"x", u"y", u"z"});
    expectTexts(other, {u"x", u"y", u"z"});
    KX7UStringList const& same = list;
    EXPECT_EQ(&(list = same), &list);
    expectTexts(list, {u"x", u"y", u"z"});
    list = KX7UStringList();
    expectTexts(list, {});
}

TEST(StringListAppend, AddsAtTheEnd)
{
    KX7UStringList list;
    EXPECT_EQ(&list.append(stringOf(u"a")), &list);
    list.append(KX7UString()).append(stringOf(u"c"));
    expectTexts(list, {u"a", u"", u"c"});
    EXPECT_EQ(&list.append(listOf({u"x", u"y"})), &list);
    expectTexts(list, {u"a", u"", u"c", u"x", u"y"});
    list.append(KX7UStringList());
    EXPECT_EQ(list.size(), 5u);
}

TEST(StringListAppend, OfItselfDoesNothing)
{
    KX7UStringList list = listOf({u"a", u"b"});
    EXPECT_EQ(&list.append(list), &list);
    expectTexts(list, {u"a", u"b"});
}

TEST(StringListAppend, OfAnOwnElement)
{
    KX7UStringList list = listOf({std::u16string(300, u'a')});
    Texts expected = {std::u16string(300, u'a')};
    for (int i = 0; i < 40; ++i) {
        list.append(list.at(0));
        expected.push_back(expected[0]);
    }
    expectTexts(list, expected);
}

TEST(StringListInsert, PutsAStringBeforeAnElement)
{
    for (unsigned int i = 0; i <= 3; ++i) {
        Texts texts = {u"a", std::u16string(300, u'b'), u"c"};
        KX7UStringList list = listOf(texts);
        EXPECT_EQ(&list.insert(i, stringOf(u"x")), &list);
        texts.insert(texts.begin() + i, u"x");
        expectTexts(list, texts);
    }
    KX7UStringList empty;
    empty.insert(0, stringOf(u"x"));
    expectTexts(empty, {u"x"});
}

TEST(StringListInsert, OfAnOwnElement)
{
    for (unsigned int i = 0; i <= 3; ++i) {
        for (unsigned int which = 0; which < 3; ++which) {
            Texts texts = {u"a", std::u16string(300, u'b'), u"c"};
            KX7UStringList list = listOf(texts);
            list.insert(i, list.at(which));
            std::u16string const text = texts[which];
            texts.insert(texts.begin() + i, text);
            expectTexts(list, texts, std::to_string(i) + " " + std::to_string(which));
        }
    }
}

TEST(StringListInsert, PutsAListBeforeAnElement)
{
    for (unsigned int i = 0; i <= 3; ++i) {
        for (unsigned int n = 0; n <= 4; ++n) {
            Texts texts = {u"a", std::u16string(300, u'b'), u"c"};
            Texts const all = {u"w", std::u16string(400, u'x'), u"", u"z"};
            Texts const some(all.begin(), all.begin() + n);
            KX7UStringList list = listOf(texts);
            EXPECT_EQ(&list.insert(i, listOf(some)), &list);
            texts.insert(texts.begin() + i, some.begin(), some.end());
            expectTexts(list, texts);
        }
    }
}

TEST(StringListInsert, OfItselfDoesNothing)
{
    KX7UStringList list = listOf({u"a", u"b"});
    for (unsigned int const i : {0u, 1u, 2u, 99u})
        EXPECT_EQ(&list.insert(i, list), &list) << i;
    expectTexts(list, {u"a", u"b"});
}

TEST(StringListInsert, BehindTheEndThrows)
{
    KX7UStringList list = listOf({u"a", u"b"});
    for (unsigned int const i : {3u, 0xFFFFFFFFu}) {
        EXPECT_EQ(errorOf([&] { list.insert(i, stringOf(u"x")); }), INVALID_LIST_INDEX) << i;
        EXPECT_EQ(errorOf([&] { list.insert(i, listOf({u"x", u"y"})); }), INVALID_LIST_INDEX) << i;
        EXPECT_EQ(errorOf([&] { list.insert(i, KX7UStringList()); }), "none") << "no element, no index";
    }
    expectTexts(list, {u"a", u"b"});
}

TEST(StringListErase, RemovesAnElement)
{
    for (unsigned int i = 0; i < 3; ++i) {
        Texts texts = {u"a", std::u16string(300, u'b'), u"c"};
        KX7UStringList list = listOf(texts);
        EXPECT_EQ(&list.erase(i), &list);
        texts.erase(texts.begin() + i);
        expectTexts(list, texts);
    }
}

TEST(StringListErase, BehindTheEndThrows)
{
    KX7UStringList list = listOf({u"a", u"b"});
    for (unsigned int const i : {2u, 3u, 0xFFFFFFFFu})
        EXPECT_EQ(errorOf([&] { list.erase(i); }), INVALID_LIST_INDEX) << i;
    expectTexts(list, {u"a", u"b"});
    list.erase(0).erase(0);
    EXPECT_EQ(errorOf([&] { list.erase(0); }), INVALID_LIST_INDEX);
}

TEST(StringListMaximum, IsWhatThirtyTwoBitsCanAddress)
{
    EXPECT_EQ(KX7UStringList().max_size(), 0xFFFFFFFF / sizeof(KX7UString));
}

#if SIZE_MAX > 0xFFFFFFFF
namespace {

/** Makes a list claim a size that no test could fill: what is too long is refused before an element is touched. */
class Claim {
public:
    Claim(KX7UStringList& list, unsigned int size) : m_fields(reinterpret_cast<char*>(&list) + sizeof(void*))
    {
        static_assert(sizeof(KX7UStringList) == 4 * sizeof(void*), "the virtual table and the vector's three pointers");
        memcpy(m_before, m_fields, sizeof m_before);
        auto const begin = uintptr_t{0x10000};
        uintptr_t const end = begin + uintptr_t{size} * sizeof(KX7UString);
        uintptr_t const claimed[] = {begin, end, end};
        memcpy(m_fields, claimed, sizeof claimed);
    }
    ~Claim() { memcpy(m_fields, m_before, sizeof m_before); }
    Claim(Claim const&) = delete;
    Claim& operator=(Claim const&) = delete;

private:
    char* m_fields;
    char m_before[3 * sizeof(void*)];
};

}  // namespace

TEST(StringListMaximum, IsALengthErrorBeforeAWrongIndex)
{
    KX7UStringList list;
    KX7UString const s = stringOf(u"x");
    KX7UStringList const two = listOf({u"x", u"y"});
    {
        Claim const full(list, list.max_size());
        EXPECT_EQ(list.size(), list.max_size());
        EXPECT_EQ(errorOf([&] { list.append(s); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.append(two); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.insert(0, s); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.insert(0xFFFFFFFF, s); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.insert(0xFFFFFFFF, two); }), LIST_TOO_LONG);
    }
    {
        Claim const almost(list, list.max_size() - 1);
        EXPECT_EQ(errorOf([&] { list.append(two); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.insert(0, two); }), LIST_TOO_LONG);
        EXPECT_EQ(errorOf([&] { list.insert(0xFFFFFFFF, s); }), INVALID_LIST_INDEX);
    }
    expectTexts(list, {});
}
#endif
