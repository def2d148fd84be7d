// kx7text - kx7conv: reads and writes that wait.
#include "Transfer.h"

#include <cerrno>
#include <poll.h>
#include <unistd.h>

namespace kx7conv {

namespace {

template <class Call>
ssize_t waiting(int file, short event, Call call)
{
    for (;;) {
        ssize_t const result = call();
        if (result != -1)
            return result;
        if (errno == EAGAIN) {
            pollfd wanted = {file, event, 0};
            if (poll(&wanted, 1, -1) == -1 && errno != EINTR)
                return -1;
        }
        else if (errno != EINTR) {
            return -1;
        }
    }
}

}  // namespace

ssize_t readWaiting(int file, void* buffer, size_t size)
{
    return waiting(file, POLLIN, [&] { return read(file, buffer, size); });
}

ssize_t writeWaiting(int file, void const* data, size_t size)
{
    return waiting(file, POLLOUT, [&] { return write(file, data, size); });
}

}  // namespace kx7conv
