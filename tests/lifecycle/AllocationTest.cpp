// kx7text tests - how often the library allocates, how much, and what is left when an allocation fails.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/CharSetNames.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UString.h"
#include "tests/charset/ForeignConverter.h"
#include "tests/support/Heap.h"
#include "tests/text/StringState.h"

using kx7test::expectStorage;
using kx7test::expectString;
using kx7test::ForeignConverter;
using kx7test::HeapWatch;
using kx7test::Units;
using kx7test::unitsOf;

namespace {

/** What a call did to the heap. */
struct Effect {
    size_t calls;
    size_t lastSize;
    ptrdiff_t blocks;
    ptrdiff_t bytes;
    bool threw;
};

/** Runs `call` with its `failing`-th allocation failing (0: none). */
template <class Call>
Effect effectOf(Call const& call, size_t failing = 0, bool failsOn = false)
{
    HeapWatch watch;
    if (failing != 0)
        watch.failAt(failing, failsOn);
    bool threw = false;
    try {
        call();
    }
    catch (std::bad_alloc const&) {
        threw = true;
    }
    return {watch.made(), watch.lastSize(), watch.blocks(), watch.bytes(), threw};
}

KX7UString repeated(char letter, unsigned int n)
{
    return KX7UString(static_cast<unsigned short>(letter), n);
}

/** Arguments for every constructor that makes a text of `n` units. */
class Arguments {
public:
    explicit Arguments(unsigned int n)
        : count(n), bytes(n, 'x'), units(n, 'x'), bstr(std::make_unique<KX7BSTR>()), string(repeated('x', n)),
          larger(repeated('x', n + 10))
    {
        units.push_back(0);
        bstr->length = static_cast<unsigned short>(n);
        for (unsigned int i = 0; i < n; ++i)
            bstr->text[i] = 'x';
    }

    unsigned int count;
    std::string bytes;
    Units units;
    std::unique_ptr<KX7BSTR> bstr;
    KX7UString string;
    KX7UString larger;
};

struct Constructor {
    char const* what;
    void (*construct)(Arguments const& a);
};
#define CONSTRUCTOR(...)                                                                                               \
    {                                                                                                                  \
#__VA_ARGS__, [](Arguments const& a) { expectLength(KX7UString(__VA_ARGS__), a.count); }                       \
    }

/** No gtest macro unless it fails: they allocate. */
void expectLength(KX7UString const& s, unsigned int n)
{
    if (s.length() != n)
        ADD_FAILURE() << s.length() << " units instead of " << n;
}

Constructor const CONSTRUCTORS[] = {
    CONSTRUCTOR(static_cast<unsigned short>('x'), a.count),
    CONSTRUCTOR(a.bytes.c_str(), KX7CS_WCP1252),
    CONSTRUCTOR(a.bytes.c_str(), KX7CS_UTF8),
    CONSTRUCTOR(a.bytes.data(), a.count, KX7CS_WCP1252),
    CONSTRUCTOR(a.bytes.data(), a.count, KX7CS_UTF8),
    CONSTRUCTOR(a.units.data()),
    CONSTRUCTOR(a.units.data(), a.count),
    CONSTRUCTOR(a.units.data(), a.units.data() + a.count),
    CONSTRUCTOR(*a.bstr),
    CONSTRUCTOR(a.bstr.get()),
    CONSTRUCTOR(a.string),
    CONSTRUCTOR(a.larger, 3, a.count),
    CONSTRUCTOR(a.string, 0, a.count),
};
#undef CONSTRUCTOR

/** A converter from outside, which has no way to be told where counted bytes end. */
KX7CharSet foreignCharSet()
{
    static ForeignConverter converter(static_cast<KX7CharSet>(73001));
    g_oCnvtMgr.insert(static_cast<KX7CharSet>(73001), &converter, true);
    converter.records = false;
    return static_cast<KX7CharSet>(73001);
}

/** The tables that the tests need: built before anything is counted. */
void loadTables()
{
    KX7UString("x", KX7CS_WCP1252);
}

}  // namespace

TEST(Allocation, StringsOfUpTo257UnitsNeverTouchTheHeap)
{
    loadTables();
    for (unsigned int const n : {0u, 1u, 257u}) {
        Arguments const a(n);
        for (Constructor const& row : CONSTRUCTORS) {
            Effect const effect = effectOf([&] { row.construct(a); });
            EXPECT_EQ(effect.calls, 0u) << row.what << ", " << n;
        }
        KX7UString target("old", KX7CS_UTF8);
        KX7UString other("other", KX7CS_UTF8);
        EXPECT_EQ(effectOf([&] { target.assign(a.string); }).calls, 0u);
        EXPECT_EQ(effectOf([&] { target.swap(other); }).calls, 0u);
        EXPECT_EQ(effectOf([&] { target.AssureSpace(257); }).calls, 0u);
    }
    KX7PascalString const pascal = {3, {'a', 'b', 'c'}};
    EXPECT_EQ(effectOf([&] { KX7UString(pascal, KX7CS_WCP1252); }).calls, 0u);
    EXPECT_EQ(effectOf([&] { KX7UString(&pascal, KX7CS_UTF8); }).calls, 0u);
    EXPECT_EQ(effectOf([&] { KX7UString('x', KX7CS_WCP1252); }).calls, 0u);
    EXPECT_EQ(effectOf([&] { KX7UString(static_cast<unsigned short>('x')); }).calls, 0u);
    EXPECT_EQ(effectOf([&] { KX7UString(-12345); }).calls, 0u);
    EXPECT_EQ(effectOf([&] { KX7UString(); }).calls, 0u);
}

TEST(Allocation, LongerStringsTakeOneAllocationOfTheExactSize)
{
    loadTables();
    for (unsigned int const n : {258u, 259u, 1000u, 10000u}) {
        Arguments const a(n);
        for (Constructor const& row : CONSTRUCTORS) {
            Effect const effect = effectOf([&] { row.construct(a); });
            EXPECT_EQ(effect.calls, 1u) << row.what << ", " << n;
            EXPECT_EQ(effect.lastSize, (n + 1) * 2) << row.what << ", " << n;
            EXPECT_EQ(effect.blocks, 0) << row.what << ", " << n;
        }
        KX7UString target("old", KX7CS_UTF8);
        Effect const assigned = effectOf([&] { target.assign(a.string); });
        EXPECT_EQ(assigned.calls, 1u);
        EXPECT_EQ(assigned.lastSize, (n + 1) * 2);
        EXPECT_EQ(assigned.blocks, 1);
        KX7UString grown("old", KX7CS_UTF8);
        Effect const assured = effectOf([&] { grown.AssureSpace(n); });
        EXPECT_EQ(assured.calls, 1u);
        EXPECT_EQ(assured.lastSize, (n + 1) * 2);
        EXPECT_EQ(assured.blocks, 1);
    }
}

TEST(Allocation, RepeatedCharsFreeTheirTemporary)
{
    loadTables();
    for (unsigned int const n : {1u, 257u, 258u, 5000u}) {
        Effect const effect = effectOf([&] { KX7UString('x', n, KX7CS_WCP1252); });
        EXPECT_EQ(effect.blocks, 0) << n;
        EXPECT_LE(effect.calls, n > 257 ? 2u : 1u) << n;
    }
}

TEST(Allocation, AssignReleasesTheStorageItDrops)
{
    for (unsigned int const before : {5u, 300u, 600u}) {
        for (unsigned int const after : {0u, 257u, 300u, 1000u}) {
            KX7UString const source = repeated('a', after);
            Effect const effect = effectOf([&] {
                KX7UString target = repeated('b', before);
                target.assign(source);
                target = source;
            });
            EXPECT_EQ(effect.blocks, 0) << before << " to " << after;
        }
    }
}

TEST(Allocation, AHeapBufferIsReleasedWhenItGrows)
{
    Effect const effect = effectOf([] {
        KX7UString s;
        for (unsigned int n = 258; n < 400; ++n)
            s.AssureSpace(n);
    });
    EXPECT_EQ(effect.calls, 142u);
    EXPECT_EQ(effect.blocks, 0);
}

TEST(Allocation, TenThousandAssignmentsAndSwapsLeaveTheProcessNoLarger)
{
    KX7UString a = repeated('a', 1000);
    KX7UString b = repeated('b', 2000);
    KX7UString const c = repeated('c', 1500);
    a.swap(b);
    Effect const effect = effectOf([&] {
        for (int i = 0; i < 10000; ++i) {
            a.assign(c);
            b = a;
            a = repeated('b', 2000);
            b.assign(repeated('a', 1000));
            a.swap(b);
            b.swap(a);
        }
    });
    EXPECT_EQ(effect.blocks, 0);
    EXPECT_EQ(effect.bytes, 0);
    expectString(a, Units(2000, 'b'));
    expectString(b, Units(1000, 'a'));
}

TEST(AllocationFailure, AConstructorThatThrowsLeavesNothingBehind)
{
    loadTables();
    Arguments const a(1000);
    for (Constructor const& row : CONSTRUCTORS) {
        Effect const effect = effectOf([&] { row.construct(a); }, 1);
        EXPECT_TRUE(effect.threw) << row.what;
        EXPECT_EQ(effect.blocks, 0) << row.what;
    }
}

TEST(AllocationFailure, OfRepeatedCharsLeavesNothingBehindWhicheverAllocationFails)
{
    loadTables();
    KX7CharSet const foreign = foreignCharSet();
    for (KX7CharSet const cs : {KX7CS_WCP1252, KX7CS_UTF8, foreign}) {
        size_t failing = 1;
        for (;; ++failing) {
            Effect const effect = effectOf([&] { KX7UString('x', 1000, cs); }, failing);
            if (!effect.threw)
                break;
            EXPECT_EQ(effect.blocks, 0) << cs << ", " << failing;
            ASSERT_LT(failing, 10u);
        }
        EXPECT_GE(failing, 3u) << "the temporary and the buffer at least";
    }
}

TEST(AllocationFailure, OfCountedBytesForAConverterFromOutsideLeavesNothingBehind)
{
    KX7CharSet const foreign = foreignCharSet();
    std::string const bytes(1000, 'x');
    EXPECT_TRUE(effectOf([&] { KX7UString(bytes.data(), 1000, foreign); }, 1).threw);
    Effect const effect = effectOf([&] { KX7UString(bytes.data(), 1000, foreign); }, 2);
    EXPECT_TRUE(effect.threw) << "a terminated copy of the bytes is needed";
    EXPECT_EQ(effect.blocks, 0);
    EXPECT_TRUE(effectOf([&] { KX7UString("xy", 2, foreign); }, 1).threw);
}

TEST(AllocationFailure, OfGrowthLeavesTheString)
{
    for (unsigned int const before : {0u, 5u, 257u, 300u}) {
        KX7UString s = repeated('x', before);
        unsigned short const* const data = s.data();
        Effect const effect = effectOf([&] { s.AssureSpace(1000); }, 1);
        EXPECT_TRUE(effect.threw) << before;
        EXPECT_EQ(effect.blocks, 0) << before;
        EXPECT_EQ(s.data(), data) << before;
        expectString(s, Units(before, 'x'));
        EXPECT_TRUE(effectOf([&] { s.assureSize(1000); }, 1).threw) << before;
        expectString(s, Units(before, 'x'));
    }
}

TEST(AllocationFailure, OfAssignmentLeavesTheString)
{
    KX7UString const source = repeated('a', 1000);
    for (unsigned int const before : {0u, 5u, 257u, 300u, 2000u}) {
        KX7UString s = repeated('x', before);
        Effect effect = effectOf([&] { s.assign(source); }, 1);
        EXPECT_TRUE(effect.threw) << before;
        EXPECT_EQ(effect.blocks, 0) << before;
        expectString(s, Units(before, 'x'));
        expectStorage(s, before > 257 ? before : 0);
        effect = effectOf([&] { s = source; }, 1);
        EXPECT_TRUE(effect.threw) << before;
        expectString(s, Units(before, 'x'));
        expectString(source, Units(1000, 'a'));
    }
}

TEST(AllocationFailure, OfSwapLosesNoText)
{
    for (unsigned int const left : {5u, 300u, 1000u}) {
        for (unsigned int const right : {5u, 300u, 1000u}) {
            size_t failing = 1;
            for (;; ++failing) {
                KX7UString a = repeated('a', left);
                KX7UString b = repeated('b', right);
                Effect const effect = effectOf([&] { a.swap(b); }, failing);
                if (!effect.threw) {
                    expectString(a, Units(right, 'b'));
                    expectString(b, Units(left, 'a'));
                    break;
                }
                EXPECT_EQ(effect.blocks, 0) << left << ", " << right << ", " << failing;
                expectString(a, Units(left, 'a'));
                expectString(b, Units(right, 'b'));
                ASSERT_LT(failing, 10u);
            }
            EXPECT_GE(failing, 1u + (left > 257) + (right > 257));
        }
    }
}

TEST(AllocationFailure, OfSetupSpaceLeavesAnEmptyInlineString)
{
    KX7UString s;
    EXPECT_TRUE(effectOf([&] { s.SetupSpace(1000); }, 1).threw);
    expectString(s, {});
    expectStorage(s, 0);
}

TEST(AllocationFailure, OfARegistryLeavesNothingBehindWhicheverAllocationFails)
{
    size_t failing = 1;
    for (;; ++failing) {
        Effect const effect = effectOf([] { CharSetConverterManager registry; }, failing);
        EXPECT_EQ(effect.blocks, 0) << failing;
        if (!effect.threw)
            break;
        ASSERT_LT(failing, 10000u);
    }
    EXPECT_GT(failing, 69u) << "every codeset of a locale and every converter needs one";
}

TEST(Allocation, NamesOfCharacterSetsNeedNone)
{
    for (kx7::CharSetName const& row : kx7::CHAR_SET_NAMES) {
        char const* name = nullptr;
        KX7CharSet charSet = KX7CS_UTF8;
        Effect const effect = effectOf(
            [&] {
                name = KX7CharSetToString(row.charSet);
                charSet = KX7CharSetFromString(row.name);
            },
            1, true);
        EXPECT_EQ(effect.calls, 0u) << row.name;
        EXPECT_FALSE(effect.threw) << row.name;
        EXPECT_STREQ(name, row.name);
        EXPECT_EQ(charSet, row.charSet) << row.name;
    }
}

TEST(Allocation, NamesThatWereEnteredNeedNoneEither)
{
    CharSetConverterManager registry;
    auto const mine = static_cast<KX7CharSet>(99999);
    std::string const longName(300, 'x');
    registry.insertCharSetMap(mine, KX7UString(longName.c_str(), KX7CS_UTF8));
    char const* name = nullptr;
    KX7CharSet found = KX7CS_UTF8;
    KX7CharSet notFound = KX7CS_UTF8;
    Effect const effect = effectOf(
        [&] {
            name = registry.charSetToString(mine);
            found = registry.charSetFromString(longName.c_str());
            notFound = registry.charSetFromString(longName.c_str() + 1);
        },
        1, true);
    EXPECT_EQ(effect.calls, 0u);
    EXPECT_EQ(name, longName);
    EXPECT_EQ(found, mine);
    EXPECT_EQ(notFound, KX7CS_OS_DEFAULT);
}

TEST(AllocationFailure, OfTheTwoStepFunctionsWithAConverterFromOutsideIsAResultOfZero)
{
    KX7CharSet const foreign = foreignCharSet();
    unsigned char utf8[8] = {0xEE};
    Effect const effect = effectOf([&] { EXPECT_EQ(LocalToUTF8(utf8, "ab", sizeof utf8, foreign), 0u); }, 1);
    EXPECT_FALSE(effect.threw);
    EXPECT_EQ(utf8[0], 0xEE);
    char local[8] = {'x'};
    unsigned char const source[] = "ab";
    EXPECT_FALSE(effectOf([&] { EXPECT_EQ(UTF8ToLocal(local, source, sizeof local, foreign), 0u); }, 1).threw);
    EXPECT_EQ(local[0], 'x');
    EXPECT_EQ(LocalToUTF8(utf8, "ab", sizeof utf8, foreign), 4u);
}

TEST(AllocationFailure, InAFirstConversionThrowsNothingAndTheNextOneBuildsTheTables)
{
    KX7CharSet const cs = KX7CS_ISO_8859_5;  // no other test here uses it
    unsigned short units[4] = {};
    unsigned int written = 0;
    Effect effect = effectOf([&] { written = LocalToUTF16(units, "\xD0\xD1", 4, cs); }, 1, true);
    EXPECT_FALSE(effect.threw);
    EXPECT_EQ(effect.blocks, 0);
    EXPECT_GE(effect.calls, 1u);
    EXPECT_EQ(written, 2u);
    EXPECT_EQ(units[0], 0xFFFD) << "without tables nothing is mapped";
    unsigned short const cyrillic[] = {0x430, 'a', 0};
    char bytes[4] = {};
    effect = effectOf([&] { written = UTF16ToLocal(bytes, cyrillic, 4, cs); }, 1, true);
    EXPECT_FALSE(effect.threw);
    EXPECT_STREQ(bytes, "??");
    KX7UString const s("\xD0\xD1", cs);
    expectString(s, {0x430, 0x431});
    EXPECT_EQ(UTF16ToLocal(bytes, cyrillic, 4, cs), 2u);
    EXPECT_STREQ(bytes, "\xD0"
                        "a");
}
