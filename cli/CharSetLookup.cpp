// kx7text - kx7conv: character sets by what the user calls them.
#include "CharSetLookup.h"

#include <algorithm>
#include <optional>

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/convert.h"
#include "kx7/converters/KX7CharSetConverter.h"

namespace kx7conv {

kx7::CharSetName const* findCharSet(std::string const& text)
{
    std::optional<KX7CharSet> const charSet = kx7::findCharSet(text);
    auto const* const found = std::find_if(std::begin(kx7::CHAR_SET_NAMES), std::end(kx7::CHAR_SET_NAMES),
                                           [&](kx7::CharSetName const& entry) { return charSet == entry.charSet; });
    return found == std::end(kx7::CHAR_SET_NAMES) ? nullptr : found;
}

bool hasConverter(KX7CharSet charSet)
{
    if (charSet == KX7CS_OS_DEFAULT)
        charSet = g_oCnvtMgr.getDefaultCharSet();
    return charSet == KX7CS_UTF8 ||
           KX7CharSetConverter::getConverter(charSet) != KX7CharSetConverter::getConverter(KX7CS_UTF8);
}

}  // namespace kx7conv
