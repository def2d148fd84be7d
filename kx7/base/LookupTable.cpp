// kx7text - the instantiations of the sparse tables.
#include "kx7/base/LookupTable.h"

template class LookupTable<unsigned char>;
template class LookupTable<unsigned short>;
template class LookupTable<unsigned int>;
template class LookupTableEx<unsigned short>;

static_assert(sizeof(LookupTable<unsigned char>) == 256 * sizeof(void*), "a table is its page pointers");
static_assert(sizeof(LookupTableEx<unsigned short>) == size_t{17} * 256 * sizeof(void*), "17 planes of 256 pages");
