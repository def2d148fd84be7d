// kx7text - objects that are constructed ahead of ordinary static ones (internal).
#ifndef KX7_BASE_EARLY_H
#define KX7_BASE_EARLY_H

// So that a program linked with the static library may convert in its own static initialisers. Within a file the order
// of definition holds.
#define KX7_EARLY __attribute__((init_priority(101)))

#endif
