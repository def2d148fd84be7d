// kx7text - the tables of kx7/base/LookupTable.h, under their first path.
#include "kx7/base/LookupTable.h"
