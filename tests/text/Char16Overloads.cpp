// kx7text tests - what KX7UString takes of char16_t, and +=, in every language standard.
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

#include "tests/text/TextOf.h"

namespace {

kx7test::Checks checks;

unsigned short const UNITS[] = {'x', 'y', 'z', 0};

void construct()
{
    EXPECT_TEXT("abc", KX7UString(u"abc"));
    EXPECT_TEXT("abc", KX7UString{u"abc"});
    EXPECT_TEXT("", KX7UString(u""));
    EXPECT_TEXT("", KX7UString(static_cast<char16_t const*>(nullptr)));
    EXPECT_TEXT("ab", KX7UString(u"abc", 2));
    EXPECT_TEXT("", KX7UString(u"abc", 0));
    char16_t const withZero[] = {u'a', 0, u'b'};
    EXPECT_TEXT("a", KX7UString(withZero, 3));
    EXPECT_TEXT("3", KX7UString(withZero, withZero + 3).length());
    EXPECT_TEXT("aaa", KX7UString(u'a', 3));
    EXPECT_TEXT("", KX7UString(u'\0', 3));
    std::u16string const standard(300, u'x');
    EXPECT_TEXT("300", KX7UString(standard.c_str()).length());
    char16_t writable[] = u"rw";
    EXPECT_TEXT("rw", KX7UString(writable));
}

void assign()
{
    KX7UString s("old");
    s.c_str();
    EXPECT_TEXT("new", s = u"new");
    EXPECT_TEXT("new", std::string(s.c_str(KX7CS_UTF8)).c_str());
    EXPECT_TEXT("a", s = u'a');
    EXPECT_TEXT("", s = u'\0');
    EXPECT_TEXT("", s = static_cast<char16_t const*>(nullptr));
    EXPECT_TEXT("uuu", s.resize(3, u'u'));
    EXPECT_TEXT("u", s.resize(1, u'v'));
    EXPECT_TEXT("a|b|c|", KX7UString("a;b;c").split(u';'));
}

void combine()
{
    KX7UString const s("s");
    EXPECT_TEXT("sabc", s + u"abc");
    EXPECT_TEXT("abcs", u"abc" + s);
    EXPECT_TEXT("sa", s + u'a');
    EXPECT_TEXT("as", u'a' + s);
    EXPECT_TEXT("s", s + u'\0' + static_cast<char16_t const*>(nullptr));
    EXPECT_TEXT("abcsd", u"abc" + s + u'd');
}

void compare()
{
    KX7UString const s("b");
    EXPECT_TEXT("true", s == u"b" && u"b" == s && !(s == u"c") && !(u"c" == s));
    EXPECT_TEXT("true", s != u"c" && u"c" != s && !(s != u"b") && !(u"b" != s));
    EXPECT_TEXT("true", s < u"c" && u"a" < s && !(s < u"b") && !(u"b" < s));
    EXPECT_TEXT("true", s > u"a" && u"c" > s && !(s > u"b") && !(u"b" > s));
    EXPECT_TEXT("true", s <= u"b" && u"b" <= s && !(s <= u"a") && !(u"c" <= s));
    EXPECT_TEXT("true", s >= u"b" && u"b" >= s && !(s >= u"c") && !(u"a" >= s));
    EXPECT_TEXT("true", KX7UString() == static_cast<char16_t const*>(nullptr));
}

void add()
{
    KX7UString s;
    KX7UString const other("o");
    EXPECT_TEXT("", s += other.left(0));
    EXPECT_TEXT("o", s += other);
    EXPECT_TEXT("oc", s += 'c');
    EXPECT_TEXT("ocx", s += UNITS[0]);
    EXPECT_TEXT("ocxab", s += "ab");
    EXPECT_TEXT("ocxabxyz", s += UNITS);
    EXPECT_TEXT("ocxabxyzw", s += u"w");
    EXPECT_TEXT("ocxabxyzwv", s += u'v');
    EXPECT_TEXT("ocxabxyzwv", s += static_cast<char const*>(nullptr));
    EXPECT_TEXT("ocxabxyzwv", s += '\0');
    s = "ab";
    EXPECT_TEXT("abab", s += s);
    EXPECT_TEXT("ababbab", s += s.data() + 1);
    EXPECT_TEXT("ababbabababbab", s += s.c_str());
    EXPECT_TEXT("true", &(s += other) == &s);
    EXPECT_TEXT("ababbabababbabo", std::string(s.c_str(KX7CS_UTF8)).c_str());

    // From the inline storage to the heap.
    KX7UString grown(u'x', 257);
    grown += grown;
    EXPECT_TEXT("514", grown.length());

    struct Derived : KX7UString {
    } derived;
    derived += "d";
    derived += derived;
    EXPECT_TEXT("dd", derived);
    EXPECT_TEXT("true", derived == u"dd");
}

/** Whether `left` += `right` compiles. */
template <class Left, class Right>
auto adds(int) -> decltype(static_cast<void>(std::declval<Left>() += std::declval<Right>()), std::true_type());
template <class Left, class Right>
std::false_type adds(...);

static_assert(decltype(adds<KX7UString&, char const*>(0))::value, "");
static_assert(!decltype(adds<KX7UString const&, char const*>(0))::value, "a constant");
static_assert(!decltype(adds<KX7UString&, int>(0))::value, "one of the characters");
static_assert(!decltype(adds<KX7UString&, std::nullptr_t>(0))::value, "one of the pointers");

}  // namespace

int main()
{
    construct();
    assign();
    combine();
    compare();
    add();
    return checks.result();
}
