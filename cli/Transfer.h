// kx7text - kx7conv: reads and writes that wait.
#ifndef KX7_CLI_TRANSFER_H
#define KX7_CLI_TRANSFER_H

#include <cstddef>
#include <sys/types.h>

namespace kx7conv {

/**
 * As read(2), but signals do not interrupt it, and it waits for bytes on a descriptor that does not block as well:
 * another process may have set that on a pipe or terminal that both have.
 */
ssize_t readWaiting(int file, void* buffer, size_t size);

/** As write(2), in the same way. It may write a part only. */
ssize_t writeWaiting(int file, void const* data, size_t size);

}  // namespace kx7conv

#endif
