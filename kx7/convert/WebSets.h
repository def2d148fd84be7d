// kx7text - which converter serves a character set in the layer of kx7/convert.h (internal).
#ifndef KX7_CONVERT_WEBSETS_H
#define KX7_CONVERT_WEBSETS_H

#include "kx7/charset/Served.h"

namespace kx7 {

/**
 * What is registered for `charSet`, else this layer's own converter. Without an engine: the layer cannot convert the
 * set, since it has no converter or one of a class that is not the library's.
 */
Served servedInLayer(KX7CharSet charSet);

}  // namespace kx7

#endif
