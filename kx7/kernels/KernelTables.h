// kx7text - what the kernels of a converter look up, as the public headers know it (internal).
#ifndef KX7_KERNELS_KERNELTABLES_H
#define KX7_KERNELS_KERNELTABLES_H

namespace kx7 {

/**
 * Base of the tables that only kernels read: of SingleByteTables and MultibyteTables. The public headers declare it and
 * no more, and a converter holds one pointer to it, so that what kernels need never changes the layout of a published
 * class. Each converter class deletes its tables by their own type.
 */
struct KernelTables {
    KernelTables() = default;
    KernelTables(KernelTables const&) = delete;
    KernelTables& operator=(KernelTables const&) = delete;

protected:
    ~KernelTables() = default;
};

}  // namespace kx7

#endif
