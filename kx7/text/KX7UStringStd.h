// kx7text - kx7/convert/KX7UStringStd.h, under its first path.
#include "kx7/convert/KX7UStringStd.h"
