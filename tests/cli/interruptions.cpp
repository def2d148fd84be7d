// kx7text - preloaded into kx7conv by its tests: open, read and write are interrupted by a signal every second time,
// and read and write handle a few bytes at a time.
//
// A hardened build gives inline bodies to the functions that are replaced here.
#undef _FORTIFY_SOURCE

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

unsigned int calls = 0;

bool isInterrupted()
{
    if (++calls % 2 == 0)
        return false;
    errno = EINTR;
    return true;
}

size_t few(size_t count)
{
    return std::min(count, size_t{1} + calls / 2 % 7);
}

int openInterrupted(int folder, char const* path, int flags, mode_t mode = 0)
{
    return isInterrupted() ? -1 : static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

mode_t modeOf(int flags, va_list arguments)
{
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

int open(char const* path, int flags, ...)
{
    return openInterrupted(AT_FDCWD, path, flags);
}

int open64(char const* path, int flags, ...)
{
    return openInterrupted(AT_FDCWD, path, flags | O_LARGEFILE);
}

int openat(int folder, char const* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return openInterrupted(folder, path, flags, mode);
}

int openat64(int folder, char const* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = modeOf(flags, arguments);
    va_end(arguments);
    return openInterrupted(folder, path, flags | O_LARGEFILE, mode);
}

/** What a hardened build calls where the flags are not constant. */
int __openat_2(int folder, char const* path, int flags)
{
    return openInterrupted(folder, path, flags);
}

int __openat64_2(int folder, char const* path, int flags)
{
    return openInterrupted(folder, path, flags | O_LARGEFILE);
}

ssize_t read(int file, void* buffer, size_t count)
{
    return isInterrupted() ? -1 : syscall(SYS_read, file, buffer, few(count));
}

ssize_t write(int file, void const* buffer, size_t count)
{
    if (isInterrupted())
        return -1;
    // Messages come in one piece.
    return syscall(SYS_write, file, buffer, file == STDERR_FILENO ? count : few(count));
}

}  // extern "C"
