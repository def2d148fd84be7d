// kx7text tests - layout, storage primitives and growth of the string.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>

#include "kx7/text/KX7UString.h"
#include "tests/text/StringState.h"

using kx7test::expectStorage;
using kx7test::expectString;
using kx7test::spaceOf;
using kx7test::Units;
using kx7test::unitsOf;

using Space = KX7UString::Space;

static_assert(std::is_polymorphic<KX7UString>::value && std::has_virtual_destructor<KX7UString>::value,
              "the destructor is virtual");
static_assert(std::is_standard_layout<Space>::value, "offsets of the header are defined");
static_assert(offsetof(Space, heapOwned) == 0, "fields in order");
static_assert(offsetof(Space, heapOwned) < offsetof(Space, buffer), "fields in order");
static_assert(offsetof(Space, buffer) < offsetof(Space, length), "fields in order");
static_assert(offsetof(Space, length) + 4 == offsetof(Space, capacity), "fields in order");
static_assert(offsetof(Space, capacity) < offsetof(Space, narrowCache), "fields in order");
static_assert(offsetof(Space, narrowCache) < offsetof(Space, narrowCacheLength), "fields in order");
static_assert(offsetof(Space, narrowCacheLength) + 4 == offsetof(Space, narrowCacheCharSet), "fields in order");
static_assert(offsetof(Space, narrowCacheCharSet) + 4 == offsetof(Space, inlineBuffer), "fields in order");
static_assert(sizeof(Space::inlineBuffer) == 258 * 2, "257 units and the terminator");
static_assert(sizeof(KX7UString) == 2 * sizeof(void*) + sizeof(Space), "virtual functions, header pointer, header");
static_assert(sizeof(KX7PascalString) == 256, "length byte and 255 bytes");
static_assert(offsetof(KX7PascalString, text) == 1, "text after the length");
static_assert(sizeof(KX7BSTR) == 2 + 2 * 65535, "16-bit length and 65,535 units");
static_assert(offsetof(KX7BSTR, text) == 2, "text after the length");
static_assert(KX7UString::npos == 0xFFFFFFFF, "all bits set");

TEST(StringStorage, HeaderIsEmbeddedAndItsPointerFollowsTheVirtualTable)
{
    KX7UString s;
    auto const* const begin = reinterpret_cast<char const*>(&s);
    EXPECT_EQ(reinterpret_cast<char const*>(&spaceOf(s)), begin + 2 * sizeof(void*));
    EXPECT_EQ(s.SetupSpace(), &spaceOf(s));
}

TEST(StringStorage, ADefaultStringIsEmptyAndInline)
{
    KX7UString const s;
    expectString(s, {});
    expectStorage(s, 0);
    EXPECT_EQ(s.capacity(), 257u);
    EXPECT_EQ(s.data()[0], 0);
}

TEST(StringStorage, TwoHundredFiftySevenUnitsStayInline)
{
    KX7UString const s(static_cast<unsigned short>('x'), 257);
    expectString(s, Units(257, 'x'));
    expectStorage(s, 0);
}

TEST(StringStorage, TwoHundredFiftyEightUnitsGoToTheHeapInTheExactSize)
{
    for (unsigned int const n : {258u, 259u, 300u, 1000u, 4097u}) {
        KX7UString const s(static_cast<unsigned short>('x'), n);
        expectString(s, Units(n, 'x'));
        expectStorage(s, n);
    }
}

TEST(StringStorage, AssureSpaceKeepsTheTextWhereItFits)
{
    KX7UString s("text", KX7CS_UTF8);
    for (unsigned int const n : {0u, 1u, 4u, 256u, 257u}) {
        s.AssureSpace(n);
        expectString(s, unitsOf("text"));
        expectStorage(s, 0);
    }
    KX7UString large(static_cast<unsigned short>('x'), 300);
    unsigned short const* const before = large.data();
    for (unsigned int const n : {0u, 257u, 299u, 300u}) {
        large.assureSize(n);
        EXPECT_EQ(large.data(), before);
        expectString(large, Units(300, 'x'));
        expectStorage(large, 300);
    }
}

TEST(StringStorage, AssureSpaceDiscardsTheTextWhereItGrows)
{
    KX7UString s("text", KX7CS_UTF8);
    s.AssureSpace(258);
    expectString(s, {});
    expectStorage(s, 258);
    KX7UString heap(static_cast<unsigned short>('x'), 300);
    heap.AssureSpace(301);
    expectString(heap, {});
    expectStorage(heap, 301);
    KX7UString same(static_cast<unsigned short>('x'), 300);
    same.assureSize(5000);
    expectString(same, {});
    expectStorage(same, 5000);
}

TEST(StringStorage, AHeapBufferNeverShrinks)
{
    KX7UString s;
    s.AssureSpace(1000);
    for (unsigned int const n : {999u, 258u, 10u, 0u}) {
        s.AssureSpace(n);
        expectStorage(s, 1000);
    }
    s.AssureSpace(1001);
    expectStorage(s, 1001);
}

TEST(StringStorage, SetupSpaceResetsTheHeader)
{
    KX7UString s("text", KX7CS_UTF8);
    Space* const space = s.SetupSpace();
    EXPECT_EQ(space, &spaceOf(s));
    expectString(s, {});
    expectStorage(s, 0);
    EXPECT_EQ(space->inlineBuffer[0], 0);
}

TEST(StringStorage, SetupSpaceFreesNothing)
{
    KX7UString s(static_cast<unsigned short>('x'), 300);
    unsigned short* const buffer = spaceOf(s).buffer;
    s.SetupSpace();
    expectStorage(s, 0);
    EXPECT_EQ(buffer[299], 'x') << "still the caller's";
    delete[] buffer;
}

TEST(StringStorage, SetupSpaceWithASizeGrowsTheResetHeader)
{
    KX7UString s("text", KX7CS_UTF8);
    EXPECT_EQ(s.SetupSpace(257), &spaceOf(s));
    expectString(s, {});
    expectStorage(s, 0);
    EXPECT_EQ(s.SetupSpace(258), &spaceOf(s));
    expectString(s, {});
    expectStorage(s, 258);
}

namespace {

void useRawMemory(KX7UString* s, unsigned int capacityWithSetup)
{
    if (capacityWithSetup == 0)
        s->initForAlloc();
    else
        s->SetupSpace(capacityWithSetup);
    expectString(*s, {});
    expectStorage(*s, capacityWithSetup > 257 ? capacityWithSetup : 0);
    s->assign(KX7UString(static_cast<unsigned short>('y'), 258));
    expectString(*s, Units(258, 'y'));
    s->assign(KX7UString("inline", KX7CS_UTF8));
    expectString(*s, unitsOf("inline"));
    s->KX7UString::~KX7UString();
}

struct FreeMemory {
    void operator()(void* p) const { ::operator delete(p); }
};

}  // namespace

TEST(StringStorage, RawMemoryBecomesAString)
{
    for (unsigned int const capacity : {0u, 1u, 257u, 258u, 1000u}) {
        std::unique_ptr<void, FreeMemory> const memory(::operator new(sizeof(KX7UString)));
        memset(memory.get(), 0xEE, sizeof(KX7UString));
#ifdef KX7_SANITIZED  // what no constructor has seen is no object to UBSan
        KX7UString const object;
        memcpy(memory.get(), reinterpret_cast<char const*>(&object), sizeof(void*));
#endif
        useRawMemory(static_cast<KX7UString*>(memory.get()), capacity);
    }
}

TEST(StringStorage, ADeletedBaseReleasesTheHeap)
{
    struct Derived : KX7UString {
        using KX7UString::KX7UString;
        ~Derived() override { ++destroyed(); }
        static int& destroyed()
        {
            static int n = 0;
            return n;
        }
    };
    KX7UString* const s = new Derived(static_cast<unsigned short>('x'), 500);
    expectStorage(*s, 500);
    delete s;
    EXPECT_EQ(Derived::destroyed(), 1);
}

namespace {

template <class Call>
std::string lengthErrorOf(Call const& call)
{
    try {
        call();
    }
    catch (std::length_error const& e) {
        return e.what();
    }
    return "no length_error";
}

}  // namespace

TEST(StringStorage, TooManyUnitsAreALengthError)
{
    char const* const text = "exceed maximum string length";
    unsigned short const units[] = {'a', 0};
    EXPECT_EQ(lengthErrorOf([] { KX7UString().AssureSpace(0xFFFFFFFF); }), text);
    EXPECT_EQ(lengthErrorOf([] { KX7UString().assureSize(0xFFFFFFFF); }), text);
    EXPECT_EQ(lengthErrorOf([] { KX7UString(static_cast<unsigned short>('x'), 0xFFFFFFFF); }), text);
    EXPECT_EQ(lengthErrorOf([] { KX7UString('x', 0xFFFFFFFF, KX7CS_WCP1252); }), text);
    EXPECT_EQ(lengthErrorOf([&] { KX7UString s(units, 0xFFFFFFFF); }), text);
}

TEST(StringStorage, ALengthErrorLeavesTheString)
{
    KX7UString s("text", KX7CS_UTF8);
    EXPECT_EQ(lengthErrorOf([&] { s.AssureSpace(0xFFFFFFFF); }), "exceed maximum string length");
    expectString(s, unitsOf("text"));
    KX7UString large(static_cast<unsigned short>('x'), 300);
    EXPECT_EQ(lengthErrorOf([&] { large.AssureSpace(0xFFFFFFFF); }), "exceed maximum string length");
    expectString(large, Units(300, 'x'));
    expectStorage(large, 300);
}

#if SIZE_MAX == 0xFFFFFFFF
TEST(StringStorage, WhatTheAddressSpaceCannotHoldIsALengthError)
{
    for (unsigned int const n : {0x40000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu}) {
        EXPECT_EQ(lengthErrorOf([&] { KX7UString().AssureSpace(n); }), "exceed maximum string length") << n;
        EXPECT_EQ(lengthErrorOf([&] { KX7UString(static_cast<unsigned short>('x'), n); }),
                  "exceed maximum string length")
            << n;
    }
}
#else
TEST(StringStorage, ARangeOfMoreThanFourGiUnitsIsALengthError)
{
    // Address space only: the length is refused before a unit is read.
    size_t const bytes = (size_t{1} << 33) + 4096;
    void* const map = mmap(nullptr, bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(map, MAP_FAILED);
    auto const* const begin = static_cast<unsigned short const*>(map);
    for (size_t const n : {size_t{0xFFFFFFFF}, size_t{0x100000000}, size_t{0x100000002}}) {
        EXPECT_EQ(lengthErrorOf([&] { KX7UString(begin, begin + n); }), "exceed maximum string length") << n;
    }
    munmap(map, bytes);
}
#endif

TEST(StringAssign, LeavesTheStateThatTheNewTextNeeds)
{
    struct {
        char const* what;
        unsigned int before, after;
    } const rows[] = {
        {"inline to inline", 5, 257},       {"inline to heap", 5, 258},        {"heap to inline", 300, 257},
        {"heap to smaller heap", 600, 300}, {"heap to larger heap", 300, 600}, {"heap to empty", 300, 0},
        {"empty to heap", 0, 1000},         {"inline to empty", 5, 0},
    };
    for (auto const& row : rows) {
        KX7UString s(static_cast<unsigned short>('b'), row.before);
        KX7UString const source(static_cast<unsigned short>('a'), row.after);
        EXPECT_EQ(&s.assign(source), &s) << row.what;
        expectString(s, Units(row.after, 'a'), row.what);
        expectStorage(s, row.after > 257 ? row.after : 0, row.what);
        expectString(source, Units(row.after, 'a'), row.what);
        KX7UString byOperator(static_cast<unsigned short>('b'), row.before);
        EXPECT_EQ(&(byOperator = source), &byOperator) << row.what;
        expectString(byOperator, Units(row.after, 'a'), row.what);
        expectStorage(byOperator, row.after > 257 ? row.after : 0, row.what);
    }
}

TEST(StringAssign, TakesTheLengthOfTheSourceNotItsCapacity)
{
    KX7UString roomy;
    roomy.AssureSpace(1000);
    KX7UString s(static_cast<unsigned short>('b'), 300);
    s.assign(roomy);
    expectString(s, {});
    expectStorage(s, 0);
}

TEST(StringAssign, ToItselfChangesNothing)
{
    KX7UString s(static_cast<unsigned short>('x'), 300);
    unsigned short const* const data = s.data();
    KX7UString const& same = s;
    EXPECT_EQ(&s.assign(same), &s);
    s = same;
    EXPECT_EQ(s.data(), data);
    expectString(s, Units(300, 'x'));
    KX7UString roomy;
    roomy.AssureSpace(1000);
    KX7UString const& sameRoomy = roomy;
    roomy.assign(sameRoomy);
    expectStorage(roomy, 1000);
}

TEST(StringAssign, CarriesZerosWithinTheText)
{
    Units const units = {'a', 0, 'b', 0, 0, 'c'};
    KX7UString const source(units.data(), units.data() + units.size());
    KX7UString s(static_cast<unsigned short>('x'), 300);
    s = source;
    expectString(s, units);
}

TEST(StringSwap, ExchangesTextsAndFitsTheStorage)
{
    unsigned int const lengths[] = {0, 5, 257, 258, 300, 1000};
    for (unsigned int const a : lengths) {
        for (unsigned int const b : lengths) {
            KX7UString left(static_cast<unsigned short>('a'), a);
            KX7UString right(static_cast<unsigned short>('b'), b);
            left.swap(right);
            std::string const what = std::to_string(a) + " and " + std::to_string(b);
            expectString(left, Units(b, 'b'), what);
            expectStorage(left, b > 257 ? b : 0, what);
            expectString(right, Units(a, 'a'), what);
            expectStorage(right, a > 257 ? a : 0, what);
        }
    }
}

TEST(StringSwap, LeavesNoSpareCapacity)
{
    KX7UString roomy;
    roomy.AssureSpace(1000);
    KX7UString other("text", KX7CS_UTF8);
    roomy.swap(other);
    expectString(roomy, unitsOf("text"));
    expectStorage(roomy, 0);
    expectString(other, {});
    expectStorage(other, 0);
}

TEST(StringSwap, WithItselfChangesNothing)
{
    KX7UString s(static_cast<unsigned short>('x'), 300);
    unsigned short const* const data = s.data();
    s.swap(s);
    EXPECT_EQ(s.data(), data);
    expectString(s, Units(300, 'x'));
}
