// kx7text - everything that the library offers.
#ifndef KX7_KX7_H
#define KX7_KX7_H

#include "kx7/charset/CharSetConverterManager.h"
#include "kx7/charset/Converters.h"
#include "kx7/charset/KX7CharSet.h"
#include "kx7/text/KX7UChar.h"
#include "kx7/text/KX7UCharTable.h"
#include "kx7/text/KX7UString.h"
#include "kx7/text/KX7UStringList.h"

#endif
