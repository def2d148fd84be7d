// kx7text tests - the stored lists of the single-byte sets beside their converters.
#ifndef KX7_TESTS_INTERNAL_SINGLEBYTELISTS_H
#define KX7_TESTS_INTERNAL_SINGLEBYTELISTS_H

#include "kx7/charset/Converters.h"
#include "kx7/tables/MappingLists.h"
#include "tests/model/SingleByteModel.h"

namespace kx7test {

struct SingleByteList {
    char const* name;
    unsigned short const* list;
    unsigned int records;  ///< without the terminator
    KX7CharSetConverterSBCS& converter;
};

inline SingleByteList const SINGLE_BYTE_LISTS[] = {
    {"oCP1250map", oCP1250map, 255, g_oConverterWCP1250},
    {"oCP1251map", oCP1251map, 255, g_oConverterWCP1251},
    {"oCP1252map", oCP1252map, 255, g_oConverterWCP1252},
    {"oCP1253map", oCP1253map, 253, g_oConverterWCP1253},
    {"oCP1254map", oCP1254map, 255, g_oConverterWCP1254},
    {"oCP1255map", oCP1255map, 244, g_oConverterWCP1255},
    {"oCP1256map", oCP1256map, 255, g_oConverterWCP1256},
    {"oCP1257map", oCP1257map, 253, g_oConverterWCP1257},
    {"oCP1258map", oCP1258map, 255, g_oConverterWCP1258},
    {"oCP874map", oCP874map, 218, g_oConverterWCP874},
    {"o8859_1map", o8859_1map, 255, g_oConverterISO_8859_1},
    {"o8859_2map", o8859_2map, 255, g_oConverterISO_8859_2},
    {"o8859_3map", o8859_3map, 248, g_oConverterISO_8859_3},
    {"o8859_4map", o8859_4map, 255, g_oConverterISO_8859_4},
    {"o8859_5map", o8859_5map, 255, g_oConverterISO_8859_5},
    {"o8859_6map", o8859_6map, 210, g_oConverterISO_8859_6},
    {"o8859_7map", o8859_7map, 252, g_oConverterISO_8859_7},
    {"o8859_8map", o8859_8map, 219, g_oConverterISO_8859_8},
    {"o8859_9map", o8859_9map, 255, g_oConverterISO_8859_9},
    {"o8859_10map", o8859_10map, 255, g_oConverterISO_8859_10},
    {"o8859_11map", o8859_11map, 247, g_oConverterISO_8859_11},
    {"o8859_13map", o8859_13map, 255, g_oConverterISO_8859_13},
    {"o8859_14map", o8859_14map, 255, g_oConverterISO_8859_14},
    {"o8859_15map", o8859_15map, 255, g_oConverterISO_8859_15},
    {"o8859_16map", o8859_16map, 255, g_oConverterISO_8859_16},
    {"oKOI8Rmap", oKOI8Rmap, 255, g_oConverterKOI8R},
};

/** The records of a list. */
inline BytePairs pairsOf(unsigned short const* list)
{
    BytePairs pairs;
    for (; list[0] != 0 || list[1] != 0; list += 2)
        pairs.emplace_back(static_cast<unsigned char>(list[0]), static_cast<char16_t>(list[1]));
    return pairs;
}

}  // namespace kx7test

#endif
