// kx7text tests - strings and lists when memory runs out, and that they leave none behind.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>

#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "tests/support/Heap.h"
#include "tests/text/StringTexts.h"

using namespace kx7test;

namespace {

unsigned short const X = 'x';
unsigned int const LONG = 1000;

KX7UString const& longString()
{
    static KX7UString const s(X, LONG);
    return s;
}

std::string const& longBytes()
{
    static std::string const bytes(LONG, 'b');
    return bytes;
}

KX7BSTR const& longBSTR()
{
    static std::unique_ptr<KX7BSTR> const b = [] {
        auto fresh = std::make_unique<KX7BSTR>();
        fresh->length = LONG;
        std::fill_n(fresh->text, LONG, X);
        return fresh;
    }();
    return *b;
}

KX7UStringList const& longList()
{
    static KX7UStringList const list = KX7UStringList(longString()).append(longString()).append(longString());
    return list;
}

enum class After {
    UNCHANGED,  ///< the text is the old one
    VALID       ///< the text may be empty
};

struct StringRow {
    char const* what;
    After after;
    void (*run)(KX7UString& s);
};
StringRow const STRING_ROWS[] = {
    {"assign", After::UNCHANGED, [](KX7UString& s) { s.assign(longString()); }},
    {"=", After::UNCHANGED, [](KX7UString& s) { s = longString(); }},
    {"= units", After::UNCHANGED, [](KX7UString& s) { s = longString().data(); }},
    {"= bytes", After::UNCHANGED, [](KX7UString& s) { s = longBytes().c_str(); }},
    {"= BSTR", After::UNCHANGED, [](KX7UString& s) { s = longBSTR(); }},
    {"AssureSpace", After::UNCHANGED, [](KX7UString& s) { s.AssureSpace(LONG); }},
    {"resize", After::UNCHANGED, [](KX7UString& s) { s.resize(LONG, X); }},
    {"resize with a byte", After::UNCHANGED, [](KX7UString& s) { s.resize(LONG, 'x'); }},
    {"replace", After::UNCHANGED, [](KX7UString& s) { s.replace(1, 1, longString(), 0); }},
    {"replace by itself", After::UNCHANGED, [](KX7UString& s) { s.replace(1, 0, s, 0); }},
    {"replace by pointers", After::UNCHANGED, [](KX7UString& s) { s.replace(s.data(), s.data() + 1, longString()); }},
    {"erase", After::UNCHANGED, [](KX7UString& s) { s.erase(1, 1); }},
    {"trim", After::UNCHANGED, [](KX7UString& s) { s.trim(); }},
    {"swap", After::UNCHANGED,
     [](KX7UString& s) {
         KX7UString other(X, LONG);
         s.swap(other);
     }},
    {"c_str", After::UNCHANGED, [](KX7UString& s) { s.c_str(KX7CS_UTF32); }},
    {"at_utf32", After::UNCHANGED, [](KX7UString& s) { s.at_utf32(0); }},
    {"left", After::UNCHANGED, [](KX7UString& s) { s.left(s.length()); }},
    {"mid", After::UNCHANGED, [](KX7UString& s) { s.mid(1); }},
    {"+ string", After::UNCHANGED, [](KX7UString& s) { s + longString(); }},
    {"+ bytes", After::UNCHANGED, [](KX7UString& s) { s + longBytes().c_str(); }},
    {"+ units", After::UNCHANGED, [](KX7UString& s) { s + longString().data(); }},
    {"+ char", After::UNCHANGED, [](KX7UString& s) { s + 'x'; }},
    {"+ unit", After::UNCHANGED, [](KX7UString& s) { s + X; }},
    {"bytes +", After::UNCHANGED, [](KX7UString& s) { longBytes().c_str() + s; }},
    {"== bytes", After::UNCHANGED, [](KX7UString& s) { EXPECT_FALSE(s == longBytes().c_str()); }},
    {"split", After::UNCHANGED, [](KX7UString& s) { s.split(static_cast<unsigned short>('a')); }},
    {"split at bytes", After::UNCHANGED, [](KX7UString& s) { s.split('a'); }},
    {">>", After::VALID,
     [](KX7UString& s) {
         std::istringstream in(longBytes());
         in >> s;
     }},
    {"getline", After::VALID,
     [](KX7UString& s) {
         std::istringstream in(longBytes());
         getline(in, s);
     }},
    {"<<", After::UNCHANGED,
     [](KX7UString& s) {
         std::ostringstream out;
         out << s;
     }},
};

/** Runs `run` with each of its allocations failing in turn; `check(threw)` follows every run. */
void failEach(char const* what, std::function<void()> const& prepare, std::function<void()> const& run,
              std::function<void(bool threw)> const& check)
{
    for (size_t failing = 1;; ++failing) {
        prepare();
        size_t const before = heap.liveBlocks;
        bool threw = false;
        heap.failing = failing;
        try {
            run();
        }
        catch (std::bad_alloc const&) {
            threw = true;
        }
        bool const failed = heap.failing == 0;
        heap.failing = 0;
        size_t const after = heap.liveBlocks;
        check(threw);
        if (threw) {
            EXPECT_LE(after, before) << what << ", " << failing;
        }
        if (!failed)
            return;
        ASSERT_LT(failing, 100u) << what;
    }
}

}  // namespace

TEST(StringAllocationFailure, LeavesTheStringAndTheCacheUsable)
{
    for (unsigned int const length : {3u, 300u}) {
        for (StringRow const& row : STRING_ROWS) {
            std::u16string const old = u"a" + std::u16string(length - 1, u'o');
            KX7UString warm = stringOf(old);  // tables, statics
            row.run(warm);
            KX7UString s;
            failEach(
                row.what,
                [&] {
                    s.assign(stringOf(old));
                    s.c_str(KX7CS_UTF16);
                },
                [&] { row.run(s); },
                [&](bool threw) {
                    if (!threw)
                        return;
                    if (row.after == After::UNCHANGED || !s.empty())
                        expectText(s, old, row.what);
                    else
                        expectText(s, u"", row.what);
                    std::string const bytes(s.c_str(KX7CS_UTF8));
                    EXPECT_EQ(bytes, std::string(old.begin(), old.begin() + s.length())) << row.what;
                    s = raw(u"again");
                    expectText(s, u"again", row.what);
                });
        }
    }
}

namespace {

struct ListRow {
    char const* what;
    void (*run)(KX7UStringList& list);
};
ListRow const LIST_ROWS[] = {
    {"append", [](KX7UStringList& list) { list.append(longString()); }},
    {"append of a list", [](KX7UStringList& list) { list.append(longList()); }},
    {"append of an element", [](KX7UStringList& list) { list.append(list.at(1)); }},
    {"insert", [](KX7UStringList& list) { list.insert(1, longString()); }},
    {"insert of an element", [](KX7UStringList& list) { list.insert(0, list.at(1)); }},
    {"insert of a list", [](KX7UStringList& list) { list.insert(1, longList()); }},
    {"insert of a list at the end", [](KX7UStringList& list) { list.insert(3, longList()); }},
    {"= string", [](KX7UStringList& list) { list = longString(); }},
    {"= element", [](KX7UStringList& list) { list = list.at(1); }},
    {"= list", [](KX7UStringList& list) { list = longList(); }},
    {"copy", [](KX7UStringList& list) { KX7UStringList const copy(list); }},
    {"combine", [](KX7UStringList& list) { list.combine(longString()); }},
    {"erase", [](KX7UStringList& list) { list.erase(0); }},
    {"split",
     [](KX7UStringList&) {
         static KX7UString const s = stringOf(std::u16string(300, u'a') + u";" + std::u16string(300, u'b') + u";c");
         KX7UStringList const list(s, static_cast<unsigned short>(';'));
     }},
};

}  // namespace

TEST(ListAllocationFailure, LeavesTheListAsItWas)
{
    Texts const old = {u"a", std::u16string(300, u'b'), std::u16string(500, u'c')};
    for (ListRow const& row : LIST_ROWS) {
        std::unique_ptr<KX7UStringList> list;
        auto const prepare = [&] {
            list = std::make_unique<KX7UStringList>();
            for (std::u16string const& text : old)
                list->append(stringOf(text));
        };
        prepare();
        row.run(*list);
        failEach(
            row.what, prepare, [&] { row.run(*list); },
            [&](bool threw) {
                if (!threw)
                    return;
                EXPECT_EQ(textsOf(*list), old) << row.what;
                list->append(stringOf(u"again"));
                EXPECT_EQ(list->size(), 4u) << row.what;
            });
    }
}

TEST(StringAllocation, IsGivenBack)
{
    auto const everything = [] {
        for (unsigned int const length : {3u, 300u}) {
            for (StringRow const& row : STRING_ROWS) {
                KX7UString s(X, length);
                s.c_str(KX7CS_UTF8);
                row.run(s);
            }
            for (ListRow const& row : LIST_ROWS) {
                KX7UStringList list(KX7UString(X, length));
                list.append(longList());
                row.run(list);
            }
        }
    };
    everything();
    size_t const blocks = heap.liveBlocks;
    size_t const bytes = heap.liveBytes;
    everything();
    EXPECT_EQ(heap.liveBlocks, blocks);
    EXPECT_EQ(heap.liveBytes, bytes);
}

TEST(StringAllocation, TenThousandAssignmentsSwapsAndLinesLeaveTheProcessNoLarger)
{
    KX7UString a(X, 2000);
    KX7UString b(X, 1500);
    std::string const text = longBytes() + "\n";
    std::istringstream in(text);
    size_t before = 0;
    for (int i = 0; i < 10000; ++i) {
        a = longString();
        b.assign(a);
        a.swap(b);
        a.c_str(KX7CS_UTF8);
        b = longBytes().c_str();
        b.resize(LONG + 1, X);
        in.clear();
        in.seekg(0);
        getline(in, a, '\n');
        if (i == 0)
            before = heap.liveBytes;
    }
    EXPECT_EQ(heap.liveBytes, before);
    expectText(a, std::u16string(LONG, u'b'));
}
