// kx7text - marks what the shared library exports; everything else is hidden.
#ifndef KX7_BASE_EXPORT_H
#define KX7_BASE_EXPORT_H

/** Exported: a class with all of its members, a function or an object that callers use. */
#define KX7_API __attribute__((visibility("default")))

/** Not exported: a member of an exported class that only the library itself calls. */
#define KX7_LOCAL __attribute__((visibility("hidden")))

#endif
