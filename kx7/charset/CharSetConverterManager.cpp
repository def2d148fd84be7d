// kx7text - the registry of converters, and every static object of the library.
//
// The converters and the registry are constructed in this one file because their order matters: the registry's
// constructor converts text.
#include "kx7/charset/CharSetConverterManager.h"

#include <atomic>

#include "kx7/charset/CharSetNames.h"
#include "kx7/charset/Converters.h"
#include "kx7/tables/MappingLists.h"

// Ahead of ordinary static objects, so that a program linked with the static library may convert in its own static
// initialisers. Within one priority the order below holds.
#define KX7_EARLY __attribute__((init_priority(101)))

KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1250(oCP1250map, KX7CS_WCP1250);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1251(oCP1251map, KX7CS_WCP1251);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1252(oCP1252map, KX7CS_WCP1252);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1253(oCP1253map, KX7CS_WCP1253);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1254(oCP1254map, KX7CS_WCP1254);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1255(oCP1255map, KX7CS_WCP1255);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1256(oCP1256map, KX7CS_WCP1256);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1257(oCP1257map, KX7CS_WCP1257);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP1258(oCP1258map, KX7CS_WCP1258);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterWCP874(oCP874map, KX7CS_WCP874);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_1(o8859_1map, KX7CS_ISO_8859_1);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_2(o8859_2map, KX7CS_ISO_8859_2);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_3(o8859_3map, KX7CS_ISO_8859_3);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_4(o8859_4map, KX7CS_ISO_8859_4);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_5(o8859_5map, KX7CS_ISO_8859_5);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_6(o8859_6map, KX7CS_ISO_8859_6);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_7(o8859_7map, KX7CS_ISO_8859_7);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_8(o8859_8map, KX7CS_ISO_8859_8);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_9(o8859_9map, KX7CS_ISO_8859_9);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_10(o8859_10map, KX7CS_ISO_8859_10);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_11(o8859_11map, KX7CS_ISO_8859_11);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_13(o8859_13map, KX7CS_ISO_8859_13);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_14(o8859_14map, KX7CS_ISO_8859_14);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_15(o8859_15map, KX7CS_ISO_8859_15);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterISO_8859_16(o8859_16map, KX7CS_ISO_8859_16);
KX7_EARLY KX7CharSetConverterSBCS g_oConverterKOI8R(oKOI8Rmap, KX7CS_KOI8R);
KX7_EARLY KX7CharSetConverterUTF8 g_oConverterUTF8(KX7CS_UTF8);

namespace {

// The two converters that most conversions ask for. Every writer stores the same pointer, so relaxed is enough.
std::atomic<KX7CharSetConverter*> cachedOsDefaultConverter{nullptr};
std::atomic<KX7CharSetConverter*> cachedUtf8Converter{nullptr};

}  // namespace

KX7_EARLY CharSetConverterManager g_oCnvtMgr;

KX7CharSetConverter* KX7CharSetConverter::getConverter(KX7CharSet charSet)
{
    std::atomic<KX7CharSetConverter*>* const cache = charSet == KX7CS_OS_DEFAULT ? &cachedOsDefaultConverter
                                                     : charSet == KX7CS_UTF8     ? &cachedUtf8Converter
                                                                                 : nullptr;
    if (!cache)
        return g_oCnvtMgr.getConverter(charSet);
    KX7CharSetConverter* converter = cache->load(std::memory_order_relaxed);
    if (!converter) {
        converter = g_oCnvtMgr.getConverter(charSet);
        cache->store(converter, std::memory_order_relaxed);
    }
    return converter;
}

// The names are strings, and strings are built by a converter: while this runs, KX7CS_UTF8 is served by load() from an
// empty map. Nothing may ask for KX7CS_OS_DEFAULT before osDefaultCharSet is set, since the answer would be cached.
CharSetConverterManager::CharSetConverterManager() : osDefaultCharSet(KX7CS_ISO_8859_1)
{
    struct {
        KX7CharSet charSet;
        KX7CharSetConverter* converter;
    } const converters[] = {
        {KX7CS_WCP1250, &g_oConverterWCP1250},
        {KX7CS_WCP1251, &g_oConverterWCP1251},
        {KX7CS_WCP1252, &g_oConverterWCP1252},
        {KX7CS_WCP1253, &g_oConverterWCP1253},
        {KX7CS_WCP1254, &g_oConverterWCP1254},
        {KX7CS_WCP1255, &g_oConverterWCP1255},
        {KX7CS_WCP1256, &g_oConverterWCP1256},
        {KX7CS_WCP1257, &g_oConverterWCP1257},
        {KX7CS_WCP1258, &g_oConverterWCP1258},
        {KX7CS_WCP874, &g_oConverterWCP874},
        {KX7CS_ISO_8859_1, &g_oConverterISO_8859_1},
        {KX7CS_ISO_8859_2, &g_oConverterISO_8859_2},
        {KX7CS_ISO_8859_3, &g_oConverterISO_8859_3},
        {KX7CS_ISO_8859_4, &g_oConverterISO_8859_4},
        {KX7CS_ISO_8859_5, &g_oConverterISO_8859_5},
        {KX7CS_ISO_8859_6, &g_oConverterISO_8859_6},
        {KX7CS_ISO_8859_7, &g_oConverterISO_8859_7},
        {KX7CS_ISO_8859_8, &g_oConverterISO_8859_8},
        {KX7CS_ISO_8859_9, &g_oConverterISO_8859_9},
        {KX7CS_ISO_8859_10, &g_oConverterISO_8859_10},
        {KX7CS_ISO_8859_11, &g_oConverterISO_8859_11},
        {KX7CS_ISO_8859_13, &g_oConverterISO_8859_13},
        {KX7CS_ISO_8859_14, &g_oConverterISO_8859_14},
        {KX7CS_ISO_8859_15, &g_oConverterISO_8859_15},
        {KX7CS_ISO_8859_16, &g_oConverterISO_8859_16},
        {KX7CS_KOI8R, &g_oConverterKOI8R},
        {KX7CS_UTF8, &g_oConverterUTF8},
    };
    for (auto const& entry : converters)
        insert(entry.charSet, entry.converter, true);
    for (kx7::CharSetName const& entry : kx7::CHAR_SET_NAMES)
        insertCharSetMap(entry.charSet, KX7UString(entry.name, KX7CS_UTF8));
}

CharSetConverterManager::~CharSetConverterManager()
{
    for (auto const& entry : converterMap)
        if (!entry.second.isStatic)
            delete entry.second.converter;
}

void CharSetConverterManager::insert(KX7CharSet cs, KX7CharSetConverter* converter, bool isStatic)
{
    converterMap.insert({cs, ConverterInfo{isStatic, converter}});
}

KX7CharSetConverter* CharSetConverterManager::load(KX7CharSet /*cs*/)
{
    return &g_oConverterUTF8;
}

KX7CharSetConverter* CharSetConverterManager::getConverter(KX7CharSet cs)
{
    auto const found = converterMap.find(cs == KX7CS_OS_DEFAULT ? osDefaultCharSet : cs);
    return found == converterMap.end() ? load(cs) : found->second.converter;
}

void CharSetConverterManager::insertCharSetMap(KX7CharSet cs, KX7UString const& name)
{
    nameToCharSetMap.insert({name, cs});
    charSetToNameMap.insert({cs, name});
}
