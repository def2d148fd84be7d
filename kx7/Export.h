// kx7text - marks what the shared library exports; everything else is hidden.
#ifndef KX7_EXPORT_H
#define KX7_EXPORT_H

#define KX7_API __attribute__((visibility("default")))

#endif
