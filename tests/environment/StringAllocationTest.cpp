// kx7text tests - strings and lists when memory runs out, and that nothing is leaked.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>

#include "kx7/convert.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"
#include "kx7/text/KX7UStringStd.h"
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
        HeapWatch watch;
        bool threw = false;
        watch.failAt(failing);
        try {
            run();
        }
        catch (std::bad_alloc const&) {
            threw = true;
        }
        bool const failed = watch.hasFailed();
        ptrdiff_t const blocks = watch.blocks();
        watch.stopFailing();
        check(threw);
        if (threw) {
            EXPECT_LE(blocks, 0) << what << ", " << failing;
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
    HeapWatch const watch;
    everything();
    EXPECT_EQ(watch.blocks(), 0);
    EXPECT_EQ(watch.bytes(), 0);
}

TEST(StringAllocation, TenThousandAssignmentsSwapsAndLinesLeaveTheProcessNoLarger)
{
    KX7UString a(X, 2000);
    KX7UString b(X, 1500);
    std::string const text = longBytes() + "\n";
    std::istringstream in(text);
    HeapWatch const watch;
    ptrdiff_t before = 0;
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
            before = watch.bytes();
    }
    EXPECT_EQ(watch.bytes(), before);
    expectText(a, std::u16string(LONG, u'b'));
}

namespace {

using kx7::ErrorPolicy;

// Sources and results of the layer. Errors become longer than they were, so that its strings have to grow.
std::u16string const U16_TEXT = u"\xE9" + std::u16string(LONG, u'\x4E00');
std::string const BROKEN(LONG, '\xFF');
std::string const TEXT_1252 = "\xE9" + longBytes();
std::string const TEXT_UTF8 = "\xC3\xA9" + longBytes();
std::u16string const TEXT_U16 = u"\xE9" + std::u16string(LONG, u'b');
KX7UString const TEXT_KX7 = stringOf(TEXT_U16);
unsigned int const GROWN = 2 * LONG;

bool isWhole(kx7::Outcome const& outcome)
{
    return outcome.isLossless();
}

bool holds(KX7UString const& s, std::u16string const& text)
{
    return s.length() == text.size() && std::equal(text.begin(), text.end(), s.data());
}

struct LayerRow {
    char const* what;
    size_t least;   ///< allocations that it takes
    bool (*run)();  ///< whether the result is right
};
LayerRow const LAYER_ROWS[] = {
    {"decode", 1,
     [] {
         kx7::Units const units = kx7::decode(TEXT_1252, KX7CS_WCP1252);
         return isWhole(units) && units.text == TEXT_U16;
     }},
    {"decode, two units for each byte", 2,
     [] {
         kx7::Units const units = kx7::decode(BROKEN, KX7CS_UTF8, {ErrorPolicy::REPLACE, U'\x1F600'});
         return units.errorCount == LONG && units.text.size() == GROWN && units.text.back() == u'\xDE00';
     }},
    {"encode", 1,
     [] {
         kx7::Bytes const bytes = kx7::encode(TEXT_U16, KX7CS_WCP1252);
         return isWhole(bytes) && bytes.text == TEXT_1252;
     }},
    {"encode, escapes", 2,
     [] {
         kx7::Bytes const bytes = kx7::encode(U16_TEXT, KX7CS_WCP1252, {ErrorPolicy::ESCAPE});
         return bytes.errorCount == LONG && bytes.text.size() == 1 + 6 * LONG &&
                bytes.text.compare(0, 7, "\xE9U+4E00") == 0;
     }},
    {"encode, UTF-32", 1, [] { return kx7::encode(TEXT_U16, KX7CS_UTF32).text.size() == 4 * TEXT_U16.size(); }},
    {"transcode", 1,
     [] {
         kx7::Bytes const bytes = kx7::transcode(TEXT_1252, KX7CS_WCP1252, KX7CS_UTF8);
         return isWhole(bytes) && bytes.text == TEXT_UTF8;
     }},
    {"transcode, four bytes for each", 2,
     [] {
         kx7::Bytes const bytes = kx7::transcode(BROKEN, KX7CS_UTF8, KX7CS_UTF8, {ErrorPolicy::REPLACE, U'\x1F600'});
         return bytes.errorCount == LONG && bytes.text.size() == 4 * LONG;
     }},
    {"toKX7UString of units", 1, [] { return holds(kx7::toKX7UString(TEXT_U16.data(), TEXT_U16.size()), TEXT_U16); }},
    {"toKX7UString of a string", 1, [] { return holds(kx7::toKX7UString(TEXT_U16), TEXT_U16); }},
    {"toKX7UString of a view", 1, [] { return holds(kx7::toKX7UString(std::u16string_view(TEXT_U16)), TEXT_U16); }},
    {"toKX7UString of bytes", 2,
     [] {
         kx7::DecodedString const decoded = kx7::toKX7UString(TEXT_1252, KX7CS_WCP1252);
         return isWhole(decoded) && holds(decoded.text, TEXT_U16);
     }},
    {"toU16String", 1, [] { return kx7::toU16String(TEXT_KX7) == TEXT_U16; }},
    {"toBytes", 2,
     [] {
         kx7::Bytes const bytes = kx7::toBytes(TEXT_KX7, KX7CS_WCP1252);
         return isWhole(bytes) && bytes.text == TEXT_1252;
     }},
    {"copy of a result", 2,
     [] {
         kx7::Units const units = kx7::decode(TEXT_1252, KX7CS_WCP1252);
         kx7::Units const copy = units;
         return copy.text == TEXT_U16;
     }},
    {"<<", 1,
     [] {
         // A stream keeps what its buffer throws to itself, and says that it is bad.
         static std::ostringstream out;
         out.str({});
         out.clear();
         out << TEXT_KX7;
         if (!out)
             throw std::bad_alloc();
         return std::equal(longBytes().rbegin(), longBytes().rend(), out.str().rbegin());
     }},
};

}  // namespace

TEST(LayerAllocationFailure, IsBadAllocAloneAndLeavesSourcesAndTheHeapAsTheyWere)
{
    std::u16string const textBefore = TEXT_U16;
    std::string const bytesBefore = TEXT_1252;
    for (LayerRow const& row : LAYER_ROWS) {
        EXPECT_TRUE(row.run()) << row.what;  // tables, statics
        for (bool const failsOn : {false, true}) {
            bool failed = true;
            size_t failing = 0;
            while (failed) {
                ++failing;
                ASSERT_LT(failing, 100u) << row.what;
                bool right = false;
                bool threw = false;
                HeapWatch watch;
                watch.failAt(failing, failsOn);
                try {
                    right = row.run();
                }
                catch (std::bad_alloc const&) {
                    threw = true;
                }
                failed = watch.hasFailed();
                ptrdiff_t const blocks = watch.blocks();
                watch.stopFailing();
                EXPECT_LE(blocks, 0) << row.what << ", " << failing;
                EXPECT_EQ(threw, failed) << row.what << ", " << failing;
                EXPECT_EQ(right, !failed) << row.what << ", " << failing;
                EXPECT_TRUE(row.run()) << row.what << ", after " << failing;
                EXPECT_TRUE(TEXT_U16 == textBefore && TEXT_1252 == bytesBefore && holds(TEXT_KX7, textBefore))
                    << row.what;
            }
            EXPECT_GT(failing, row.least) << row.what;
        }
    }
}

namespace {

/** A stream and its copy convert all of `source` into `dest`; how much they write. */
template <class Stream, class Source, class Unit>
size_t convertTwice(Stream stream, Source source, kx7::Span<Unit> dest)
{
    Stream copy = stream;
    size_t const first = stream.convert(source, dest, true).written;
    stream.reset();
    stream.setErrors(ErrorPolicy::SKIP);
    size_t const second = copy.convert(source, dest, true).written;
    return first == second ? first : 0;
}

struct QuietRow {
    char const* what;
    bool (*run)();
};
char16_t unitCapacity[8 * LONG];
char byteCapacity[8 * LONG];

QuietRow const QUIET_ROWS[] = {
    {"Decoder",
     [] {
         kx7::Decoder const decoder(KX7CS_WCP1252);
         return decoder.maxUnits(LONG) == LONG && convertTwice(decoder, kx7::Span<char const>(TEXT_1252),
                                                               kx7::Span<char16_t>(unitCapacity, GROWN)) == LONG + 1;
     }},
    {"Encoder",
     [] {
         kx7::Encoder const encoder(KX7CS_WCP1252, {ErrorPolicy::ESCAPE});
         return encoder.maxBytes(LONG) == 6 * LONG &&
                convertTwice(encoder, kx7::Span<char16_t const>(U16_TEXT), kx7::Span<char>(byteCapacity, 8 * LONG)) ==
                    1 + 6 * LONG;
     }},
    {"Transcoder",
     [] {
         kx7::Transcoder const transcoder(KX7CS_WCP1252, KX7CS_UTF8);
         return transcoder.maxBytes(1).has_value() && convertTwice(transcoder, kx7::Span<char const>(TEXT_1252),
                                                                   kx7::Span<char>(byteCapacity, 8 * LONG)) == LONG + 2;
     }},
    {"validation",
     [] {
         return kx7::validateUtf8(TEXT_UTF8) && !kx7::validateUtf8(BROKEN) && kx7::validateUtf16(TEXT_U16) &&
                kx7::validateUtf16(std::string_view("a\0", 2)) && kx7::validateUtf32(U"a") &&
                kx7::validateUtf32(std::string_view("a\0\0\0", 4)) && kx7::detectBom("\xEF\xBB\xBF");
     }},
    {"names",
     [] {
         bool found = kx7::findCharSet(TEXT_UTF8) == std::nullopt;
         for (kx7::CharSetLabel const& label : kx7::charSetLabels())
             found = found && kx7::findCharSet(label.label) && kx7::findCharSet(label.label, kx7::Labels::WHATWG_FIRST);
         for (kx7::CharSetInfo const& info : kx7::charSets())
             found = found && kx7::findCharSet(info.name) && kx7::charSetInfo(info.charSet) == &info;
         return found && kx7::hasConverter(KX7CS_UTF8) && kx7::charSetInfo(KX7CS_OS_DEFAULT);
     }},
    {"hash", [] { return std::hash<KX7UString>()(TEXT_KX7) != 0; }},
};

}  // namespace

TEST(LayerAllocation, WhatIsNoexceptTakesNoMemoryOnceTablesAreThere)
{
    for (QuietRow const& row : QUIET_ROWS) {
        EXPECT_TRUE(row.run()) << row.what;
        HeapWatch watch;
        watch.failAt(1, true);
        bool const right = row.run();
        size_t const made = watch.made();
        watch.stopFailing();
        EXPECT_EQ(made, 0u) << row.what;
        EXPECT_TRUE(right) << row.what;
    }
}
