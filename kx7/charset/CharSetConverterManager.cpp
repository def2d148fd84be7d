// kx7text - the registry of converters, and the converters of the library.
//
// The converters and the registry are constructed in this one file because their order matters: the registry's
// constructor converts text.
#include "kx7/charset/CharSetConverterManager.h"

#include <algorithm>
#include <atomic>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "kx7/base/Early.h"
#include "kx7/charset/CharSetNames.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/Served.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/MappingLists.h"

#include "kx7/charset/ConverterObjects.inc"

namespace {

/** The registry's map once more, without a search: a slot for each character set that came first to it. */
struct Slot {
    KX7CharSet charSet;
    KX7CharSetConverter* converter;  ///< none: empty
    std::atomic<kx7::Engine const*> engine;
};

// In place of an engine: a converter can be registered before it is constructed, so that it is asked for its class when
// it is first used.
constexpr kx7::Engine NOT_ASKED{};

// Written where the registry of the process is, and as that without a lock.
Slot slots[1U << SLOT_BITS];

/** By Fibonacci's method. */
constexpr uint32_t slotIndexOf(KX7CharSet charSet)
{
    return static_cast<uint32_t>(charSet) * SLOT_FACTOR >> (32 - SLOT_BITS);
}

constexpr bool noSlotIsShared()
{
    bool isTaken[1U << SLOT_BITS] = {};
    isTaken[slotIndexOf(KX7CS_OS_DEFAULT)] = true;
    for (Registration const& registration : REGISTRATIONS) {
        bool& slot = isTaken[slotIndexOf(registration.charSet)];
        if (slot)
            return false;
        slot = true;
    }
    return true;
}
static_assert(noSlotIsShared(), "one of the library's converters would be found by the slow way only");

Slot& slotOf(KX7CharSet charSet)
{
    return slots[slotIndexOf(charSet)];
}

void fillSlot(KX7CharSet charSet, KX7CharSetConverter* converter)
{
    Slot& slot = slotOf(charSet);
    if (slot.converter || !converter)
        return;
    slot.charSet = charSet;
    slot.converter = converter;
    slot.engine = &NOT_ASKED;
}

// The converter of KX7CS_OS_DEFAULT where it has no slot, fixed when it is first asked for. Every thread that comes
// first stores the same.
std::atomic<KX7CharSetConverter*> osDefaultConverter;

/** For a character set without a slot. */
KX7CharSetConverter* registeredConverter(KX7CharSet charSet)
{
    if (charSet != KX7CS_OS_DEFAULT)
        return g_oCnvtMgr.getConverter(charSet);
    KX7CharSetConverter* converter = osDefaultConverter.load(std::memory_order_relaxed);
    if (!converter) {
        converter = g_oCnvtMgr.getConverter(charSet);
        osDefaultConverter.store(converter, std::memory_order_relaxed);
    }
    return converter;
}

}  // namespace

KX7_EARLY CharSetConverterManager g_oCnvtMgr;

KX7CharSetConverter* KX7CharSetConverter::getConverter(KX7CharSet charSet)
{
    // No other can be registered for it, and it is asked for most.
    if (charSet == KX7CS_UTF8)
        return &g_oConverterUTF8;
    Slot const& slot = slotOf(charSet);
    if (__builtin_expect(slot.charSet == charSet && slot.converter, true))
        return slot.converter;
    return registeredConverter(charSet);
}

kx7::Served kx7::servedBy(KX7CharSet charSet)
{
    Slot& slot = slotOf(charSet);
    if (__builtin_expect(slot.charSet == charSet && slot.converter, true)) {
        Engine const* engine = slot.engine.load(std::memory_order_relaxed);
        if (__builtin_expect(engine == &NOT_ASKED, false)) {
            engine = engineOf(*slot.converter);
            slot.engine.store(engine, std::memory_order_relaxed);
        }
        return {slot.converter, engine};
    }
    KX7CharSetConverter* const converter = registeredConverter(charSet);
    return {converter, engineOf(*converter)};
}

// The codesets are strings, and strings are built by a converter: while this runs, KX7CS_UTF8 is served by load() from
// an empty map.
CharSetConverterManager::CharSetConverterManager() : osDefaultCharSet(KX7CS_ISO_8859_1)
{
    initLocaleMap();
    osDefaultCharSet = getDefaultCharSet();

    for (Registration const& entry : REGISTRATIONS)
        insert(entry.charSet, entry.converter, true);
}

CharSetConverterManager::~CharSetConverterManager()
{
    for (auto const& entry : converterMap)
        if (!entry.second.isStatic)
            delete entry.second.converter;
}

void CharSetConverterManager::insert(KX7CharSet cs, KX7CharSetConverter* converter, bool isStatic)
{
    bool const isNew = converterMap.insert({cs, ConverterInfo{isStatic, converter}}).second;
    if (!isNew || this != &g_oCnvtMgr)
        return;
    // Kept on purpose: what is registered for KX7CS_OS_DEFAULT itself is never found.
    if (cs != KX7CS_OS_DEFAULT)
        fillSlot(cs, converter);
    // Nor, once KX7CS_OS_DEFAULT was asked for, what comes later for the character set that it stands for.
    if (cs == osDefaultCharSet && !osDefaultConverter.load(std::memory_order_relaxed))
        fillSlot(KX7CS_OS_DEFAULT, converter);
}

KX7CharSetConverter* CharSetConverterManager::load(KX7CharSet /*cs*/)
{
    return &g_oConverterUTF8;
}

KX7CharSetConverter* CharSetConverterManager::getConverter(KX7CharSet cs)
{
    auto const found = converterMap.find(cs == KX7CS_OS_DEFAULT ? osDefaultCharSet : cs);
    return found == converterMap.end() || !found->second.converter ? load(cs) : found->second.converter;
}

void CharSetConverterManager::insertCharSetMap(KX7CharSet cs, KX7UString const& name)
{
    std::string bytes;
    bool canBeFound = true;
    for (unsigned short const* unit = name.data(); *unit != 0; ++unit) {
        bool const hasByte = *unit <= 0xFF;
        bytes += hasByte ? static_cast<char>(*unit) : '?';
        canBeFound = canBeFound && hasByte;
    }
    if (canBeFound && !kx7::charSetOf(bytes.c_str()))
        nameToCharSetMap.insert({bytes, cs});
    if (!kx7::nameOf(cs))
        charSetToNameMap.insert({cs, bytes});
}

char const* CharSetConverterManager::charSetToString(KX7CharSet cs)
{
    if (kx7::CharSetName const* const own = kx7::nameOf(cs))
        return own->name;
    auto const found = charSetToNameMap.find(cs);
    return found == charSetToNameMap.end() ? "KX7CS_OS_DEFAULT" : found->second.c_str();
}

KX7CharSet CharSetConverterManager::charSetFromString(char const* name)
{
    if (!name || *name == 0)
        return KX7CS_OS_DEFAULT;
    if (kx7::CharSetName const* const own = kx7::charSetOf(name))
        return own->charSet;
    // One by one: a key to search for would need memory, and programs enter few names.
    for (auto const& entered : nameToCharSetMap)
        if (entered.first == name)
            return entered.second;
    return KX7CS_OS_DEFAULT;
}

void CharSetConverterManager::initLocaleMap()
{
    // Kept on purpose as it stands: "UJIS" is no EUC-JP here, and the sets of EUC-TW have no converter.
    struct {
        char const* codeset;
        KX7CharSet charSet;
    } const rows[] = {
        {"UTF8", KX7CS_UTF8},
        {"ISO88591", KX7CS_ISO_8859_1},
        {"ISO88592", KX7CS_ISO_8859_2},
        {"ISO88593", KX7CS_ISO_8859_3},
        {"ISO88594", KX7CS_ISO_8859_4},
        {"ISO88595", KX7CS_ISO_8859_5},
        {"ISO88596", KX7CS_ISO_8859_6},
        {"ISO88597", KX7CS_ISO_8859_7},
        {"ISO88598", KX7CS_ISO_8859_8},
        {"ISO88599", KX7CS_ISO_8859_9},
        {"ISO885910", KX7CS_ISO_8859_10},
        {"ISO885911", KX7CS_ISO_8859_11},
        {"ISO885913", KX7CS_ISO_8859_13},
        {"ISO885914", KX7CS_ISO_8859_14},
        {"ISO885915", KX7CS_ISO_8859_15},
        {"ISO885916", KX7CS_ISO_8859_16},
        {"JA", KX7CS_EUC_JP},
        {"EUCJP", KX7CS_EUC_JP},
        {"EUCKR", KX7CS_EUC_KR},
        {"EUCTW", KX7CS_EUC_TW},
        {"CN.EUC", KX7CS_EUC_CN},
        {"KR.EUC", KX7CS_EUC_KR},
        {"TW.EUC", KX7CS_EUC_TW},
        {"SJIS", KX7CS_WCP932},
        {"UJIS", KX7CS_WCP932},
        {"PCK", KX7CS_WCP932},
        {"GB18030", KX7CS_GB18030},
        {"BIG5", KX7CS_BIG5},
    };
    for (auto const& row : rows)
        localeMap.insert({KX7UString(row.codeset, KX7CS_UTF8), row.charSet});
}

KX7CharSet CharSetConverterManager::getDefaultCharSet()
{
    char const* locale = getenv("LANG");
    if (!locale)
        locale = setlocale(LC_CTYPE, nullptr);
    if (!locale)
        return KX7CS_ISO_8859_1;

    // "en_US.UTF-8@euro" names the codeset "UTF8"; "zh_CN.EUC" names "CN.EUC".
    KX7UString codeset(locale, KX7CS_UTF8);
    codeset.toUpper(true);
    KX7UString const eucSuffix(".EUC", KX7CS_UTF8);
    unsigned int const suffixAt = codeset.rfind(eucSuffix);
    bool const isEuc = suffixAt != KX7UString::npos && suffixAt == codeset.length() - eucSuffix.length();
    auto const eraseThrough = [&codeset](char delimiter) {
        unsigned int const at = codeset.find(static_cast<unsigned short>(delimiter));
        if (at != KX7UString::npos)
            codeset.erase(0, at + 1);
    };
    if (isEuc) {
        eraseThrough('_');
    }
    else {
        eraseThrough('.');
        unsigned int const modifierAt = codeset.find(static_cast<unsigned short>('@'));
        if (modifierAt != KX7UString::npos)
            codeset.erase(modifierAt, KX7UString::npos);
    }
    std::vector<unsigned short> key(codeset.data(), codeset.data() + codeset.length() + 1);
    key.erase(std::remove(key.begin(), key.end(), '-'), key.end());
    auto const found = localeMap.find(KX7UString(key.data()));
    return found == localeMap.end() ? KX7CS_ISO_8859_1 : found->second;
}
