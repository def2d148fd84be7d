// kx7text - which converter serves a character set, together with its engine (internal).
#ifndef KX7_CHARSET_SERVED_H
#define KX7_CHARSET_SERVED_H

#include "kx7/converters/Engine.h"

namespace kx7 {

/** A converter, and its engine if it has one. */
struct Served {
    KX7CharSetConverter* converter;
    Engine const* engine;
};

/** The converter that serves `charSet`. */
Served servedBy(KX7CharSet charSet);

}  // namespace kx7

#endif
