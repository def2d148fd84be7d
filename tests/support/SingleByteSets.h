// kx7text tests - the single-byte character sets of the library.
#ifndef KX7_TESTS_SUPPORT_SINGLEBYTESETS_H
#define KX7_TESTS_SUPPORT_SINGLEBYTESETS_H

#include "kx7/charset/Converters.h"

namespace kx7test {

struct SingleByteSet {
    char const* name;
    KX7CharSetConverterSBCS& converter;
    unsigned int mappedBytes;     ///< bytes that have a character, 0 not counted
    char const* publishedSource;  ///< the ICU converter of the published mapping, "" where ICU has none
};

inline SingleByteSet const SINGLE_BYTE_SETS[] = {
    {"CP1250", g_oConverterWCP1250, 255, "ibm-5346_P100-1998"},
    {"CP1251", g_oConverterWCP1251, 255, "ibm-5347_P100-1998"},
    {"CP1252", g_oConverterWCP1252, 255, "ibm-5348_P100-1997"},
    {"CP1253", g_oConverterWCP1253, 253, "ibm-5349_P100-1998"},
    {"CP1254", g_oConverterWCP1254, 255, "ibm-5350_P100-1998"},
    {"CP1255", g_oConverterWCP1255, 244, "ibm-9447_P100-2002"},
    {"CP1256", g_oConverterWCP1256, 255, "ibm-9448_X100-2005"},
    {"CP1257", g_oConverterWCP1257, 253, "ibm-9449_P100-2002"},
    {"CP1258", g_oConverterWCP1258, 255, "ibm-5354_P100-1998"},
    {"CP874", g_oConverterWCP874, 218, "ibm-874_P100-1995"},
    {"ISO-8859-1", g_oConverterISO_8859_1, 255, "ISO-8859-1"},
    {"ISO-8859-2", g_oConverterISO_8859_2, 255, "ibm-912_P100-1995"},
    {"ISO-8859-3", g_oConverterISO_8859_3, 248, "ibm-913_P100-2000"},
    {"ISO-8859-4", g_oConverterISO_8859_4, 255, "ibm-914_P100-1995"},
    {"ISO-8859-5", g_oConverterISO_8859_5, 255, "ibm-915_P100-1995"},
    {"ISO-8859-6", g_oConverterISO_8859_6, 210, "ibm-1089_P100-1995"},
    {"ISO-8859-7", g_oConverterISO_8859_7, 252, "ibm-9005_X110-2007"},
    {"ISO-8859-8", g_oConverterISO_8859_8, 219, "ibm-5012_P100-1999"},
    {"ISO-8859-9", g_oConverterISO_8859_9, 255, "ibm-920_P100-1995"},
    {"ISO-8859-10", g_oConverterISO_8859_10, 255, "iso-8859_10-1998"},
    {"ISO-8859-11", g_oConverterISO_8859_11, 247, "iso-8859_11-2001"},
    {"ISO-8859-13", g_oConverterISO_8859_13, 255, "ibm-921_P100-1995"},
    {"ISO-8859-14", g_oConverterISO_8859_14, 255, "iso-8859_14-1998"},
    {"ISO-8859-15", g_oConverterISO_8859_15, 255, "ibm-923_P100-1998"},
    {"ISO-8859-16", g_oConverterISO_8859_16, 255, ""},
    {"KOI8-R", g_oConverterKOI8R, 255, "ibm-878_P100-1996"},
};

}  // namespace kx7test

#endif
