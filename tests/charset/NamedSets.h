// kx7text tests - the named character sets as they are published: written by hand, so that what is generated from the
// rows of tools/tables is held against something else.
#ifndef KX7_TESTS_CHARSET_NAMEDSETS_H
#define KX7_TESTS_CHARSET_NAMEDSETS_H

#include "kx7/charset/KX7CharSet.h"

namespace kx7test {

struct NamedSet {
    char const* name;
    KX7CharSet charSet;
    int number;
};

#define KX7_NAMED(charSet, number)                                                                                     \
    NamedSet                                                                                                           \
    {                                                                                                                  \
#charSet, charSet, number                                                                                      \
    }
/** In the order of the registry's names. */
inline NamedSet const NAMED_SETS[] = {
    KX7_NAMED(KX7CS_ISO_8859_1, 28591),     KX7_NAMED(KX7CS_ISO_8859_2, 28592),
    KX7_NAMED(KX7CS_ISO_8859_3, 28593),     KX7_NAMED(KX7CS_ISO_8859_4, 28594),
    KX7_NAMED(KX7CS_ISO_8859_5, 28595),     KX7_NAMED(KX7CS_ISO_8859_6, 28596),
    KX7_NAMED(KX7CS_ISO_8859_7, 28597),     KX7_NAMED(KX7CS_ISO_8859_8, 28598),
    KX7_NAMED(KX7CS_ISO_8859_9, 28599),     KX7_NAMED(KX7CS_ISO_8859_10, 28600),
    KX7_NAMED(KX7CS_ISO_8859_11, 28601),    KX7_NAMED(KX7CS_ISO_8859_13, 28603),
    KX7_NAMED(KX7CS_ISO_8859_14, 28604),    KX7_NAMED(KX7CS_ISO_8859_15, 28605),
    KX7_NAMED(KX7CS_ISO_8859_16, 28606),    KX7_NAMED(KX7CS_ISO_2022JP, 50220),
    KX7_NAMED(KX7CS_ISO_2022JP_1, 50221),   KX7_NAMED(KX7CS_ISO_2022JP_2, 50222),
    KX7_NAMED(KX7CS_ISO_2022JP_3, 50223),   KX7_NAMED(KX7CS_ISO_2022JP_2004, 50224),
    KX7_NAMED(KX7CS_ISO_2022KR, 50225),     KX7_NAMED(KX7CS_ISO_2022CN, 50227),
    KX7_NAMED(KX7CS_ISO_2022CN_EXT, 50228), KX7_NAMED(KX7CS_ISO_2022TW, 50229),
    KX7_NAMED(KX7CS_WCP1250, 1250),         KX7_NAMED(KX7CS_WCP1251, 1251),
    KX7_NAMED(KX7CS_WCP1252, 1252),         KX7_NAMED(KX7CS_WCP1253, 1253),
    KX7_NAMED(KX7CS_WCP1254, 1254),         KX7_NAMED(KX7CS_WCP1255, 1255),
    KX7_NAMED(KX7CS_WCP1256, 1256),         KX7_NAMED(KX7CS_WCP1257, 1257),
    KX7_NAMED(KX7CS_WCP1258, 1258),         KX7_NAMED(KX7CS_WCP874, 874),
    KX7_NAMED(KX7CS_WCP932, 932),           KX7_NAMED(KX7CS_WCP936, 936),
    KX7_NAMED(KX7CS_WCP949, 949),           KX7_NAMED(KX7CS_WCP950, 950),
    KX7_NAMED(KX7CS_KOI8R, 20866),          KX7_NAMED(KX7CS_GB18030, 54936),
    KX7_NAMED(KX7CS_BIG5, 30950),           KX7_NAMED(KX7CS_SHIFTJIS, 30932),
    KX7_NAMED(KX7CS_SJIS0213, 30933),       KX7_NAMED(KX7CS_EUC_JP, 51932),
    KX7_NAMED(KX7CS_EUC_CN, 51936),         KX7_NAMED(KX7CS_EUC_KR, 51949),
    KX7_NAMED(KX7CS_EUC_TW, 51950),         KX7_NAMED(KX7CS_UTF8, 65001),
    KX7_NAMED(KX7CS_UTF16, 1200),           KX7_NAMED(KX7CS_UTF16BE, 1201),
    KX7_NAMED(KX7CS_UTF16ESC, 1202),        KX7_NAMED(KX7CS_UTF32, 12000),
    KX7_NAMED(KX7CS_UTF32BE, 12001),        KX7_NAMED(KX7CS_OS_DEFAULT, -2),
};
#undef KX7_NAMED

}  // namespace kx7test

#endif
