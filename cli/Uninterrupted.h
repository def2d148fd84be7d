// kx7text - kx7conv: system calls that a signal interrupts are made again.
#ifndef KX7_CLI_UNINTERRUPTED_H
#define KX7_CLI_UNINTERRUPTED_H

#include <cerrno>

namespace kx7conv {

/** Repeats a system call while it fails with EINTR. */
template <class Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace kx7conv

#endif
