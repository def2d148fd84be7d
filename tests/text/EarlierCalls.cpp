// kx7text tests - calls that compiled before KX7UString took char16_t and had +=, and what they gave then.
//
// They give the same today: an overload that changes one of them does not belong into the headers. The file compiles
// and passes with the headers of that time, too.
#include <cstddef>
#include <sstream>
#include <string>
#include <type_traits>

#include "tests/text/TextOf.h"

namespace {

kx7test::Checks checks;

unsigned short const UNITS[] = {'x', 'y', 'z', 0};

enum Number { SEVEN = 7 };

/** Classes that convert to what strings take, and to char16_t. */
struct Dual {
    operator char const*() const { return "narrow"; }
    operator char16_t const*() const { return u"wide"; }
};
struct UnitLike {
    operator unsigned short() const { return 'u'; }
};
struct Char16Like {
    operator char16_t() const { return u'a'; }
};

void construct()
{
    EXPECT_TEXT("", KX7UString());
    EXPECT_TEXT("x", KX7UString('x'));
    EXPECT_TEXT("x", KX7UString('x', KX7CS_UTF8));
    EXPECT_TEXT("xxx", KX7UString('x', 3));
    EXPECT_TEXT("xxx", KX7UString('x', 3, KX7CS_UTF8));
    EXPECT_TEXT("x", KX7UString(UNITS[0]));
    EXPECT_TEXT("xxx", KX7UString(UNITS[0], 3));
    EXPECT_TEXT("ab", KX7UString("ab"));
    EXPECT_TEXT("ab", KX7UString("ab", KX7CS_UTF8));
    EXPECT_TEXT("a", KX7UString("ab", 1));
    EXPECT_TEXT("a", KX7UString("ab", 1, KX7CS_UTF8));
    EXPECT_TEXT("-12", KX7UString(-12));
    EXPECT_TEXT("0", KX7UString(0));
    EXPECT_TEXT("97", KX7UString(u'a'));
    EXPECT_TEXT("97", KX7UString(L'a'));
    EXPECT_TEXT("97", KX7UString{u'a'});
    EXPECT_TEXT("1", KX7UString(true));
    EXPECT_TEXT("7", KX7UString(static_cast<short>(7)));
    EXPECT_TEXT("7", KX7UString(SEVEN));
    EXPECT_TEXT("xyz", KX7UString(UNITS));
    EXPECT_TEXT("xy", KX7UString(UNITS, 2));
    EXPECT_TEXT("yz", KX7UString(UNITS + 1, UNITS + 3));
    EXPECT_TEXT("", KX7UString(nullptr, nullptr));
    EXPECT_TEXT("", KX7UString(static_cast<char const*>(nullptr)));
    EXPECT_TEXT("", KX7UString(static_cast<unsigned short const*>(nullptr)));
    EXPECT_TEXT("narrow", KX7UString(Dual()));
    EXPECT_TEXT("u", KX7UString(UnitLike()));
    EXPECT_TEXT("97", KX7UString(Char16Like()));
    EXPECT_TEXT("uu", KX7UString(UnitLike(), 2));
    KX7PascalString pascal = {2, {'a', 'b'}};
    EXPECT_TEXT("ab", KX7UString(pascal));
    EXPECT_TEXT("ab", KX7UString(&pascal, KX7CS_UTF8));
    static KX7BSTR bstr = {1, {'q'}};
    EXPECT_TEXT("q", KX7UString(bstr));
    EXPECT_TEXT("q", KX7UString(&bstr));
    KX7UString const s("abc");
    EXPECT_TEXT("b", KX7UString(s, 1, 1));
    KX7UString const fromChar16 = u'a';
    EXPECT_TEXT("97", fromChar16);
}

void assign()
{
    KX7UString s;
    KX7UString const other("other");
    EXPECT_TEXT("other", s = other);
    EXPECT_TEXT("ab", s = "ab");
    EXPECT_TEXT("c", s = 'c');
    EXPECT_TEXT("x", s = UNITS[0]);
    EXPECT_TEXT("xyz", s = UNITS);
    EXPECT_TEXT("97", s = KX7UString(u'a'));
    EXPECT_TEXT("narrow", s = Dual());
    EXPECT_TEXT("a", s = {"ab", 1});
    KX7PascalString pascal = {2, {'a', 'b'}};
    EXPECT_TEXT("ab", s = &pascal);
    EXPECT_TEXT("ab", s = pascal);
    EXPECT_TEXT("xxx", s.erase().resize(3, 'x'));
    EXPECT_TEXT("xxxzz", s.resize(5, UNITS[2]));
}

void combine()
{
    KX7UString const s("s");
    EXPECT_TEXT("sc", s + 'c');
    EXPECT_TEXT("sx", s + UNITS[0]);
    EXPECT_TEXT("sab", s + "ab");
    EXPECT_TEXT("sxyz", s + UNITS);
    EXPECT_TEXT("ss", s + s);
    EXPECT_TEXT("s97", s + KX7UString(u'a'));
    EXPECT_TEXT("snarrow", s + Dual());
    EXPECT_TEXT("cs", 'c' + s);
    EXPECT_TEXT("xs", UNITS[0] + s);
    EXPECT_TEXT("abs", "ab" + s);
    EXPECT_TEXT("xyzs", UNITS + s);
    KX7PascalString const pascal = {2, {'a', 'b'}};
    EXPECT_TEXT("sab", s + pascal);
    std::ostringstream out;
    out << s + "t";
    EXPECT_TEXT("st", out.str().c_str());
}

void compare()
{
    KX7UString const s("97");
    EXPECT_TEXT("true", s == 97);
    EXPECT_TEXT("true", s == u'a');
    EXPECT_TEXT("false", s == 'a');
    EXPECT_TEXT("true", s == "97");
    EXPECT_TEXT("true", "97" == s);
    EXPECT_TEXT("true", s < UNITS);
    EXPECT_TEXT("true", UNITS > s);
    EXPECT_TEXT("true", s != u'b');
    EXPECT_TEXT("false", s == Dual());
    EXPECT_TEXT("true", s.compare(u'a') == 0);
    EXPECT_TEXT("true", s == s && s <= s && s >= s && !(s != s) && !(s < s) && !(s > s));
}

void search()
{
    KX7UString const s("a;b;c");
    EXPECT_TEXT("1", s.find(u';'));
    EXPECT_TEXT("1", s.find(';'));
    EXPECT_TEXT("3", s.find(u';', 2));
    EXPECT_TEXT("3", s.rfind(u';', 4));
    EXPECT_TEXT("2", s.find("b;"));
    EXPECT_TEXT("a|b|c|", s.split(';'));
    EXPECT_TEXT("a|b|c|", s.split(static_cast<unsigned short>(';')));
    EXPECT_TEXT("a|c|", s.split(";b;"));
    EXPECT_TEXT("a|b|c|", KX7UStringList(s, u';'));
    EXPECT_TEXT("x;b;c", KX7UString(s).replace(0, 1, "x", 0));
    EXPECT_TEXT("x|97|", KX7UStringList("x").append(u'a'));
}

char const* taken(KX7UString const&)
{
    return "KX7UString";
}
char const* taken(std::u16string const&)
{
    return "std::u16string";
}
char const* takenAsText(KX7UString const& s)
{
    static std::string text;
    text = kx7test::textOf(s);
    return text.c_str();
}

void pass()
{
    EXPECT_TEXT("std::u16string", taken(u"x"));
    EXPECT_TEXT("std::u16string", taken({u"x"}));
    EXPECT_TEXT("std::u16string", taken({u"xyz", 2}));
    EXPECT_TEXT("std::u16string", taken(std::u16string()));
    EXPECT_TEXT("KX7UString", taken("x"));
    EXPECT_TEXT("x", takenAsText("x"));
    EXPECT_TEXT("x", takenAsText('x'));
    EXPECT_TEXT("5", takenAsText(5));
    EXPECT_TEXT("97", takenAsText(u'a'));
    EXPECT_TEXT("xyz", takenAsText(UNITS));
    EXPECT_TEXT("a", takenAsText({"ab", 1}));
}

}  // namespace

// Operators of programs' own, which must stay the ones that are called. Each says so by its result.

namespace adding {
char const* operator+=(KX7UString&, KX7UString const&)
{
    return "own +=";
}
char const* operator+=(KX7UString&, std::u16string const&)
{
    return "own += of u16string";
}
char const* operator+=(KX7UString&, char16_t)
{
    return "own += of char16_t";
}
char const* operator+(KX7UString const&, std::u16string const&)
{
    return "own + of u16string";
}
char const* operator+(std::u16string const&, KX7UString const&)
{
    return "own u16string +";
}
char const* operator+(KX7UString const&, char16_t)
{
    return "own + of char16_t";
}
void call()
{
    KX7UString s("s");
    KX7UString const other("o");
    EXPECT_TEXT("own +=", s += other);
    EXPECT_TEXT("own +=", s += "text");
    EXPECT_TEXT("own +=", s += UNITS);
    EXPECT_TEXT("own += of u16string", s += u"text");
    EXPECT_TEXT("own += of u16string", s += std::u16string());
    EXPECT_TEXT("own += of char16_t", s += u'a');
    EXPECT_TEXT("own + of u16string", s + u"text");
    EXPECT_TEXT("own + of u16string", s + std::u16string());
    EXPECT_TEXT("own u16string +", u"text" + s);
    EXPECT_TEXT("own + of char16_t", s + u'a');
}
}  // namespace adding

namespace addingByte {
char const* operator+=(KX7UString&, char)
{
    return "own += of a byte";
}
void call()
{
    KX7UString s("s");
    EXPECT_TEXT("own += of a byte", s += 'c');
}
}  // namespace addingByte

namespace comparing {
char const* operator==(KX7UString const&, std::u16string const&)
{
    return "own ==";
}
char const* operator==(std::u16string const&, KX7UString const&)
{
    return "own == the other way";
}
char const* operator<(KX7UString const&, char16_t const*)
{
    return "own <";
}
void call()
{
    KX7UString const s("s");
    EXPECT_TEXT("own ==", s == u"text");
    EXPECT_TEXT("own == the other way", u"text" == s);
    EXPECT_TEXT("own <", s < u"text");
}
}  // namespace comparing

// What did not compile then, and is left so: it would change what other calls mean.
static_assert(!std::is_convertible<char16_t const*, KX7UString>::value, "taken() would not know which to call");
static_assert(!std::is_constructible<KX7UString, unsigned int>::value, "one of int, unsigned short and char");
static_assert(!std::is_constructible<KX7UString, std::nullptr_t>::value, "one of four pointers");
static_assert(!std::is_assignable<KX7UString&, int>::value, "one of unsigned short and char");
static_assert(!std::is_assignable<KX7UString&, std::nullptr_t>::value, "one of three pointers");

int main()
{
    construct();
    assign();
    combine();
    compare();
    search();
    pass();
    adding::call();
    addingByte::call();
    comparing::call();
    return checks.result();
}
