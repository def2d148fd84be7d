// kx7text - the registry of converters.
#ifndef KX7_CHARSET_CHARSETCONVERTERMANAGER_H
#define KX7_CHARSET_CHARSETCONVERTERMANAGER_H

#include <map>
#include <string>

#include "kx7/base/Export.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/converters/KX7CharSetConverter.h"
#include "kx7/text/KX7UString.h"

/** A converter as the registry holds it. */
struct ConverterInfo {
    bool isStatic;                   ///< false: the registry owns the converter and deletes it
    KX7CharSetConverter* converter;  ///< may be null only where a caller registered null
};

/**
 * Maps character sets to converters and to names. One instance serves the process, `g_oCnvtMgr`; it is built while
 * the library loads and only read afterwards, so lookups need no lock. A program that registers converters of its own
 * does so before other threads convert.
 */
class KX7_API CharSetConverterManager {
public:
    /** Registers the library's converters and names. */
    CharSetConverterManager();

    /** Deletes the converters that it owns. */
    ~CharSetConverterManager();

    CharSetConverterManager(CharSetConverterManager const&) = delete;
    CharSetConverterManager& operator=(CharSetConverterManager const&) = delete;

    /**
     * Registers `converter` for `cs` unless a converter is registered for it already; then nothing happens, and the
     * converter given is neither stored nor deleted. Null is stored and counts as no converter. KX7CS_OS_DEFAULT keeps
     * the converter that KX7CharSetConverter::getConverter first found for it.
     */
    void insert(KX7CharSet cs, KX7CharSetConverter* converter, bool isStatic);

    /** The converter for a character set that has none: UTF-8, whatever `cs` is. Creates and registers nothing. */
    KX7CharSetConverter* load(KX7CharSet cs);

    /** The converter of `cs`, with KX7CS_OS_DEFAULT resolved; the UTF-8 converter where none is registered. */
    KX7CharSetConverter* getConverter(KX7CharSet cs);

    /**
     * Enters a name in both directions, each unless it is there already. A name is text in ISO 8859-1 up to a 0 unit:
     * one with other characters is given with "?" for these and never found. What std::bad_alloc has kept out, the next
     * call enters.
     */
    void insertCharSetMap(KX7CharSet cs, KX7UString const& name);

    /** See KX7CharSetToString. */
    char const* charSetToString(KX7CharSet cs);

    /** See KX7CharSetFromString. */
    KX7CharSet charSetFromString(char const* name);

    /** Fills the table of codeset names of locales. The constructor does so. */
    void initLocaleMap();

    /**
     * Detects the character set of the process environment: the codeset of the environment variable LANG or, if that is
     * not set, of the process's LC_CTYPE locale; KX7CS_ISO_8859_1 where it is not known. The constructor keeps the
     * answer, so later changes have no effect.
     */
    KX7CharSet getDefaultCharSet();

private:
    std::map<KX7UString, KX7CharSet> localeMap;
    KX7CharSet osDefaultCharSet;
    std::map<KX7CharSet, ConverterInfo> converterMap;
    std::map<std::string, KX7CharSet> nameToCharSetMap;  // names that were entered beside the library's own
    std::map<KX7CharSet, std::string> charSetToNameMap;
};

/** The registry of the process. */
extern KX7_API CharSetConverterManager g_oCnvtMgr;

#endif
