// kx7text - the character sets that are not published: their converters, and how they enter the registry.
#include "kx7/convert/WebSets.h"

#include "kx7/base/Early.h"
#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/convert.h"
#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/converters/KX7CharSetConverterWebDoubleByte.h"
#include "kx7/tables/ByteTypeTables.h"
#include "kx7/tables/WebLists.h"

#include "kx7/convert/WebObjects.inc"

void kx7::registerCharSets()
{
    for (KX7CharSet const charSet : web::ALL) {
        g_oCnvtMgr.insert(charSet, webConverterOf(charSet), true);
        g_oCnvtMgr.insertCharSetMap(charSet, KX7UString(charSetInfo(charSet)->name, KX7CS_UTF8));
    }
}

kx7::Served kx7::servedInLayer(KX7CharSet charSet)
{
    Served const registered = servedBy(charSet);
    bool const isFallback =
        registered.converter == &converterOf(KX7CS_UTF8) && charSet != KX7CS_UTF8 && charSet != KX7CS_OS_DEFAULT;
    if (!isFallback)
        return registered;
    KX7CharSetConverter* const own = webConverterOf(charSet);
    return {own, own ? engineOf(*own) : nullptr};
}
