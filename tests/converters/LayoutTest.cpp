// kx7text tests - the layouts of the exported classes, as the public headers alone give them.
#include <gtest/gtest.h>

#include <type_traits>

#include "kx7/kx7.h"

namespace {

template <class T, class = void>
struct IsDefined : std::false_type {
};
template <class T>
struct IsDefined<T, std::void_t<decltype(sizeof(T))>> : std::true_type {
};

// What kernels look up is not defined where a caller compiles, so no table that is added there can change a layout.
static_assert(!IsDefined<kx7::KernelTables>::value);
static_assert(!IsDefined<kx7::SingleByteTables>::value && !IsDefined<kx7::MultibyteTables>::value);

struct Layout {
    char const* name;
    size_t size;
    size_t pointers;  ///< pointers in it, or what is as large
    size_t others;    ///< bytes beside them, with what fills up
};

constexpr size_t MUTEX = sizeof(pthread_mutex_t);
/** What every converter begins with: the table of virtual functions, and the character set with what fills up. */
constexpr size_t BASE = 2;

Layout const LAYOUTS[] = {
    {"KX7CharSetConverter", sizeof(KX7CharSetConverter), BASE, 0},
    {"KX7CharSetConverterUTF8", sizeof(KX7CharSetConverterUTF8), BASE, 0},
    {"KX7CharSetConverterUTF16", sizeof(KX7CharSetConverterUTF16), BASE, 0},
    {"KX7CharSetConverterUTF16Esc", sizeof(KX7CharSetConverterUTF16Esc), BASE, 0},
    {"KX7CharSetConverterUTF32", sizeof(KX7CharSetConverterUTF32), BASE, 0},
    {"KX7CharSetConverterSBCS", sizeof(KX7CharSetConverterSBCS), BASE + 5, MUTEX},
    {"KX7CharSetConverterMBCS", sizeof(KX7CharSetConverterMBCS), BASE + 5, MUTEX},
    {"KX7CharSetConverterMBCSEx", sizeof(KX7CharSetConverterMBCSEx), BASE + 5, MUTEX},
    {"KX7CharSetConverterDBCS", sizeof(KX7CharSetConverterDBCS), BASE + 6, MUTEX},
    {"KX7CharSetConverterDBCSEx", sizeof(KX7CharSetConverterDBCSEx), BASE + 6, MUTEX},
    {"KX7CharSetConverterEUC_CN_KR", sizeof(KX7CharSetConverterEUC_CN_KR), BASE + 5, MUTEX},
    {"KX7CharSetConverterEUC_JP", sizeof(KX7CharSetConverterEUC_JP), BASE + 11, 2 * MUTEX},
    {"KX7CharSetConverterGB18030", sizeof(KX7CharSetConverterGB18030), BASE + 7, 2 * MUTEX},
    {"LookupTable<unsigned char>", sizeof(LookupTable<unsigned char>), 256, 0},
    {"LookupTable<unsigned short>", sizeof(LookupTable<unsigned short>), 256, 0},
    {"LookupTable<unsigned int>", sizeof(LookupTable<unsigned int>), 256, 0},
    {"LookupTableEx<unsigned short>", sizeof(LookupTableEx<unsigned short>), size_t{17} * 256, 0},
};

/** The names that only members of a derived class may say. */
struct SingleByte : KX7CharSetConverterSBCS {
    using KX7CharSetConverterSBCS::KX7CharSetConverterSBCS;
    size_t offsetOfKernelTables() const { return offsetOf(&m_pKernelTables); }

private:
    size_t offsetOf(void const* member) const
    {
        return static_cast<size_t>(static_cast<char const*>(member) - reinterpret_cast<char const*>(this));
    }
};

TEST(Layout, ConvertersAndTablesHaveTheSizesOfTheirPublishedMembers)
{
    for (Layout const& layout : LAYOUTS)
        EXPECT_EQ(layout.size, layout.pointers * sizeof(void*) + layout.others) << layout.name;
}

TEST(Layout, WhatKernelsLookUpIsOnePointerAtTheEnd)
{
    SingleByte const converter("none", static_cast<KX7CharSet>(1));
    EXPECT_EQ(converter.offsetOfKernelTables(), sizeof(KX7CharSetConverterSBCS) - sizeof(void*));
}

}  // namespace
