// kx7text - the macros of kx7/base/Export.h, under their first path.
#include "kx7/base/Export.h"
