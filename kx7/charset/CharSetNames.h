// kx7text - the names of the character sets (internal).
#ifndef KX7_CHARSET_CHARSETNAMES_H
#define KX7_CHARSET_CHARSETNAMES_H

#include <cstring>

#include "kx7/base/CharSet.h"

namespace kx7 {

struct CharSetName {
    char const* name;
    KX7CharSet charSet;
};

/** Every character set that the library names. Constants, so that a name needs no memory. */
constexpr CharSetName CHAR_SET_NAMES[] = {
#define KX7_NAME(charSet)                                                                                              \
    CharSetName                                                                                                        \
    {                                                                                                                  \
#charSet, charSet                                                                                              \
    }
    KX7_NAME(KX7CS_ISO_8859_1),     KX7_NAME(KX7CS_ISO_8859_2),
    KX7_NAME(KX7CS_ISO_8859_3),     KX7_NAME(KX7CS_ISO_8859_4),
    KX7_NAME(KX7CS_ISO_8859_5),     KX7_NAME(KX7CS_ISO_8859_6),
    KX7_NAME(KX7CS_ISO_8859_7),     KX7_NAME(KX7CS_ISO_8859_8),
    KX7_NAME(KX7CS_ISO_8859_9),     KX7_NAME(KX7CS_ISO_8859_10),
    KX7_NAME(KX7CS_ISO_8859_11),    KX7_NAME(KX7CS_ISO_8859_13),
    KX7_NAME(KX7CS_ISO_8859_14),    KX7_NAME(KX7CS_ISO_8859_15),
    KX7_NAME(KX7CS_ISO_8859_16),    KX7_NAME(KX7CS_ISO_2022JP),
    KX7_NAME(KX7CS_ISO_2022JP_1),   KX7_NAME(KX7CS_ISO_2022JP_2),
    KX7_NAME(KX7CS_ISO_2022JP_3),   KX7_NAME(KX7CS_ISO_2022JP_2004),
    KX7_NAME(KX7CS_ISO_2022KR),     KX7_NAME(KX7CS_ISO_2022CN),
    KX7_NAME(KX7CS_ISO_2022CN_EXT), KX7_NAME(KX7CS_ISO_2022TW),
    KX7_NAME(KX7CS_WCP1250),        KX7_NAME(KX7CS_WCP1251),
    KX7_NAME(KX7CS_WCP1252),        KX7_NAME(KX7CS_WCP1253),
    KX7_NAME(KX7CS_WCP1254),        KX7_NAME(KX7CS_WCP1255),
    KX7_NAME(KX7CS_WCP1256),        KX7_NAME(KX7CS_WCP1257),
    KX7_NAME(KX7CS_WCP1258),        KX7_NAME(KX7CS_WCP874),
    KX7_NAME(KX7CS_WCP932),         KX7_NAME(KX7CS_WCP936),
    KX7_NAME(KX7CS_WCP949),         KX7_NAME(KX7CS_WCP950),
    KX7_NAME(KX7CS_KOI8R),          KX7_NAME(KX7CS_GB18030),
    KX7_NAME(KX7CS_BIG5),           KX7_NAME(KX7CS_SHIFTJIS),
    KX7_NAME(KX7CS_SJIS0213),       KX7_NAME(KX7CS_EUC_JP),
    KX7_NAME(KX7CS_EUC_CN),         KX7_NAME(KX7CS_EUC_KR),
    KX7_NAME(KX7CS_EUC_TW),         KX7_NAME(KX7CS_UTF8),
    KX7_NAME(KX7CS_UTF16),          KX7_NAME(KX7CS_UTF16BE),
    KX7_NAME(KX7CS_UTF16ESC),       KX7_NAME(KX7CS_UTF32),
    KX7_NAME(KX7CS_UTF32BE),        KX7_NAME(KX7CS_OS_DEFAULT),
#undef KX7_NAME
};

/** The name of a character set; null where it has none. */
inline CharSetName const* nameOf(KX7CharSet charSet)
{
    for (CharSetName const& entry : CHAR_SET_NAMES)
        if (entry.charSet == charSet)
            return &entry;
    return nullptr;
}

/** The character set that has exactly this name; null where none has. */
inline CharSetName const* charSetOf(char const* name)
{
    for (CharSetName const& entry : CHAR_SET_NAMES)
        if (strcmp(entry.name, name) == 0)
            return &entry;
    return nullptr;
}

}  // namespace kx7

#endif
