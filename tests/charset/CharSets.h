// kx7text tests - the character sets that have a converter, and the object that serves each.
#ifndef KX7_TESTS_CHARSET_CHARSETS_H
#define KX7_TESTS_CHARSET_CHARSETS_H

#include <ostream>
#include <vector>

#include "kx7/charset/Converters.h"

namespace kx7test {

struct CharSetRow {
    char const* name;  ///< letters and digits only: it becomes part of test names
    KX7CharSet charSet;
    KX7CharSetConverter* converter;
};

inline std::ostream& operator<<(std::ostream& out, CharSetRow const& row)
{
    return out << row.name;
}

/** One row a converter. The tests that go over all character sets take them from here. */
inline std::vector<CharSetRow> const& charSetRows()
{
    static std::vector<CharSetRow> const rows = {
        {"WCP1250", KX7CS_WCP1250, &g_oConverterWCP1250},
        {"WCP1251", KX7CS_WCP1251, &g_oConverterWCP1251},
        {"WCP1252", KX7CS_WCP1252, &g_oConverterWCP1252},
        {"WCP1253", KX7CS_WCP1253, &g_oConverterWCP1253},
        {"WCP1254", KX7CS_WCP1254, &g_oConverterWCP1254},
        {"WCP1255", KX7CS_WCP1255, &g_oConverterWCP1255},
        {"WCP1256", KX7CS_WCP1256, &g_oConverterWCP1256},
        {"WCP1257", KX7CS_WCP1257, &g_oConverterWCP1257},
        {"WCP1258", KX7CS_WCP1258, &g_oConverterWCP1258},
        {"WCP874", KX7CS_WCP874, &g_oConverterWCP874},
        {"ISO88591", KX7CS_ISO_8859_1, &g_oConverterISO_8859_1},
        {"ISO88592", KX7CS_ISO_8859_2, &g_oConverterISO_8859_2},
        {"ISO88593", KX7CS_ISO_8859_3, &g_oConverterISO_8859_3},
        {"ISO88594", KX7CS_ISO_8859_4, &g_oConverterISO_8859_4},
        {"ISO88595", KX7CS_ISO_8859_5, &g_oConverterISO_8859_5},
        {"ISO88596", KX7CS_ISO_8859_6, &g_oConverterISO_8859_6},
        {"ISO88597", KX7CS_ISO_8859_7, &g_oConverterISO_8859_7},
        {"ISO88598", KX7CS_ISO_8859_8, &g_oConverterISO_8859_8},
        {"ISO88599", KX7CS_ISO_8859_9, &g_oConverterISO_8859_9},
        {"ISO885910", KX7CS_ISO_8859_10, &g_oConverterISO_8859_10},
        {"ISO885911", KX7CS_ISO_8859_11, &g_oConverterISO_8859_11},
        {"ISO885913", KX7CS_ISO_8859_13, &g_oConverterISO_8859_13},
        {"ISO885914", KX7CS_ISO_8859_14, &g_oConverterISO_8859_14},
        {"ISO885915", KX7CS_ISO_8859_15, &g_oConverterISO_8859_15},
        {"ISO885916", KX7CS_ISO_8859_16, &g_oConverterISO_8859_16},
        {"KOI8R", KX7CS_KOI8R, &g_oConverterKOI8R},
        {"WCP932", KX7CS_WCP932, &g_oConverterWCP932},
        {"WCP936", KX7CS_WCP936, &g_oConverterWCP936},
        {"WCP949", KX7CS_WCP949, &g_oConverterWCP949},
        {"WCP950", KX7CS_WCP950, &g_oConverterWCP950},
        {"GB18030", KX7CS_GB18030, &g_oConverterGB18030},
        {"BIG5", KX7CS_BIG5, &g_oConverterBig5},
        {"SHIFTJIS", KX7CS_SHIFTJIS, &g_oConverterSHIFTJIS},
        {"SJIS2004", KX7CS_SJIS0213, &g_oConverterSJIS2004},
        {"EUCKR", KX7CS_EUC_KR, &g_oConverterEUCKR},
        {"EUCCN", KX7CS_EUC_CN, &g_oConverterEUCCN},
        {"EUCJP", KX7CS_EUC_JP, &g_oConverterEUCJP},
        {"UTF8", KX7CS_UTF8, &g_oConverterUTF8},
        {"UTF16", KX7CS_UTF16, &g_oConverterUTF16},
        {"UTF32", KX7CS_UTF32, &g_oConverterUTF32},
        {"UTF16ESC", KX7CS_UTF16ESC, &g_oConverterUTF16Esc},
    };
    return rows;
}

}  // namespace kx7test

#endif
