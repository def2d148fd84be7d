// kx7text - the identifiers of character sets, for C++ and C.
#ifndef KX7_BASE_CHARSET_H
#define KX7_BASE_CHARSET_H

#include <stdint.h>

#ifndef __cplusplus
/** A character set: one of the values below. */
typedef int32_t KX7CharSet;
#endif

/**
 * A character set. The values are Windows code-page numbers, so a code page may be passed unchanged:
 * `static_cast<KX7CharSet>(1252)`. A value without a converter (the ISO-2022 sets, EUC-TW, the big-endian forms, any
 * number not listed) converts as UTF-8.
 */
enum KX7CharSet
#ifdef __cplusplus
    : int32_t
#endif
{
    KX7CS_ISO_8859_1 = 28591,       ///< Western European
    KX7CS_ISO_8859_2 = 28592,       ///< Central European
    KX7CS_ISO_8859_3 = 28593,       ///< Southern European: Esperanto, Maltese
    KX7CS_ISO_8859_4 = 28594,       ///< Northern European
    KX7CS_ISO_8859_5 = 28595,       ///< Cyrillic
    KX7CS_ISO_8859_6 = 28596,       ///< Arabic
    KX7CS_ISO_8859_7 = 28597,       ///< Greek
    KX7CS_ISO_8859_8 = 28598,       ///< Hebrew
    KX7CS_ISO_8859_9 = 28599,       ///< Turkish
    KX7CS_ISO_8859_10 = 28600,      ///< Nordic
    KX7CS_ISO_8859_11 = 28601,      ///< Thai
    KX7CS_ISO_8859_13 = 28603,      ///< Baltic
    KX7CS_ISO_8859_14 = 28604,      ///< Celtic
    KX7CS_ISO_8859_15 = 28605,      ///< Western European with the euro sign
    KX7CS_ISO_8859_16 = 28606,      ///< South-Eastern European: Romanian
    KX7CS_ISO_2022JP = 50220,       ///< no converter
    KX7CS_ISO_2022JP_1 = 50221,     ///< no converter
    KX7CS_ISO_2022JP_2 = 50222,     ///< no converter
    KX7CS_ISO_2022JP_3 = 50223,     ///< no converter
    KX7CS_ISO_2022JP_2004 = 50224,  ///< no converter
    KX7CS_ISO_2022KR = 50225,       ///< no converter
    KX7CS_ISO_2022CN = 50227,       ///< no converter
    KX7CS_ISO_2022CN_EXT = 50228,   ///< no converter
    KX7CS_ISO_2022TW = 50229,       ///< no converter
    KX7CS_WCP1250 = 1250,           ///< Windows, Central European
    KX7CS_WCP1251 = 1251,           ///< Windows, Cyrillic
    KX7CS_WCP1252 = 1252,           ///< Windows, Western European
    KX7CS_WCP1253 = 1253,           ///< Windows, Greek
    KX7CS_WCP1254 = 1254,           ///< Windows, Turkish
    KX7CS_WCP1255 = 1255,           ///< Windows, Hebrew
    KX7CS_WCP1256 = 1256,           ///< Windows, Arabic
    KX7CS_WCP1257 = 1257,           ///< Windows, Baltic
    KX7CS_WCP1258 = 1258,           ///< Windows, Vietnamese
    KX7CS_WCP874 = 874,             ///< Windows, Thai
    KX7CS_WCP932 = 932,             ///< Windows, Japanese
    KX7CS_WCP936 = 936,             ///< Windows, simplified Chinese (GBK)
    KX7CS_WCP949 = 949,             ///< Windows, Korean
    KX7CS_WCP950 = 950,             ///< Windows, traditional Chinese
    KX7CS_KOI8R = 20866,            ///< Russian
    KX7CS_GB18030 = 54936,          ///< Chinese, all of Unicode
    KX7CS_BIG5 = 30950,             ///< traditional Chinese
    KX7CS_SHIFTJIS = 30932,         ///< Japanese
    KX7CS_SJIS0213 = 30933,         ///< Shift_JIS-2004
    KX7CS_EUC_JP = 51932,           ///< Japanese
    KX7CS_EUC_CN = 51936,           ///< simplified Chinese (GB 2312)
    KX7CS_EUC_KR = 51949,           ///< Korean (KS X 1001)
    KX7CS_EUC_TW = 51950,           ///< no converter
    KX7CS_UTF8 = 65001,             ///< lenient on input
    KX7CS_UTF16 = 1200,             ///< host byte order, no byte-order mark
    KX7CS_UTF16BE = 1201,           ///< no converter
    KX7CS_UTF16ESC = 1202,          ///< ASCII with "U+XXXX" for every other code unit
    KX7CS_UTF32 = 12000,            ///< host byte order, no byte-order mark
    KX7CS_UTF32BE = 12001,          ///< no converter
    KX7CS_OS_DEFAULT = -2           ///< the encoding of the process environment, detected once at load
};

#endif
