// kx7text tests - the character set of a converter, by its address.
#ifndef KX7_TESTS_ENVIRONMENT_ALLCONVERTERS_H
#define KX7_TESTS_ENVIRONMENT_ALLCONVERTERS_H

#include "kx7/charset/Converters.h"

namespace kx7test {

/** The set that the library's converter object serves; 0 for any other object. */
inline KX7CharSet charSetOf(KX7CharSetConverter const* converter)
{
    struct {
        KX7CharSetConverter const* converter;
        KX7CharSet charSet;
    } const rows[] = {
        {&g_oConverterWCP1250, KX7CS_WCP1250},
        {&g_oConverterWCP1251, KX7CS_WCP1251},
        {&g_oConverterWCP1252, KX7CS_WCP1252},
        {&g_oConverterWCP1253, KX7CS_WCP1253},
        {&g_oConverterWCP1254, KX7CS_WCP1254},
        {&g_oConverterWCP1255, KX7CS_WCP1255},
        {&g_oConverterWCP1256, KX7CS_WCP1256},
        {&g_oConverterWCP1257, KX7CS_WCP1257},
        {&g_oConverterWCP1258, KX7CS_WCP1258},
        {&g_oConverterWCP874, KX7CS_WCP874},
        {&g_oConverterISO_8859_1, KX7CS_ISO_8859_1},
        {&g_oConverterISO_8859_2, KX7CS_ISO_8859_2},
        {&g_oConverterISO_8859_3, KX7CS_ISO_8859_3},
        {&g_oConverterISO_8859_4, KX7CS_ISO_8859_4},
        {&g_oConverterISO_8859_5, KX7CS_ISO_8859_5},
        {&g_oConverterISO_8859_6, KX7CS_ISO_8859_6},
        {&g_oConverterISO_8859_7, KX7CS_ISO_8859_7},
        {&g_oConverterISO_8859_8, KX7CS_ISO_8859_8},
        {&g_oConverterISO_8859_9, KX7CS_ISO_8859_9},
        {&g_oConverterISO_8859_10, KX7CS_ISO_8859_10},
        {&g_oConverterISO_8859_11, KX7CS_ISO_8859_11},
        {&g_oConverterISO_8859_13, KX7CS_ISO_8859_13},
        {&g_oConverterISO_8859_14, KX7CS_ISO_8859_14},
        {&g_oConverterISO_8859_15, KX7CS_ISO_8859_15},
        {&g_oConverterISO_8859_16, KX7CS_ISO_8859_16},
        {&g_oConverterKOI8R, KX7CS_KOI8R},
        {&g_oConverterWCP932, KX7CS_WCP932},
        {&g_oConverterWCP936, KX7CS_WCP936},
        {&g_oConverterWCP949, KX7CS_WCP949},
        {&g_oConverterWCP950, KX7CS_WCP950},
        {&g_oConverterGB18030, KX7CS_GB18030},
        {&g_oConverterBig5, KX7CS_BIG5},
        {&g_oConverterSHIFTJIS, KX7CS_SHIFTJIS},
        {&g_oConverterSJIS2004, KX7CS_SJIS0213},
        {&g_oConverterEUCKR, KX7CS_EUC_KR},
        {&g_oConverterEUCCN, KX7CS_EUC_CN},
        {&g_oConverterEUCJP, KX7CS_EUC_JP},
        {&g_oConverterUTF8, KX7CS_UTF8},
        {&g_oConverterUTF16, KX7CS_UTF16},
        {&g_oConverterUTF32, KX7CS_UTF32},
        {&g_oConverterUTF16Esc, KX7CS_UTF16ESC},
    };
    for (auto const& row : rows)
        if (row.converter == converter)
            return row.charSet;
    return static_cast<KX7CharSet>(0);
}

}  // namespace kx7test

#endif
