// kx7text - preloaded into kx7conv by its tests: right before the N-th call of a system call the program of
// KX7CONV_SWAP is run by the shell, as somebody else would who renames files meanwhile; "openat 3 rm x" is "rm x"
// before the third openat. KX7CONV_NO_TMPFILE: the file system has no files without a name. KX7CONV_NO_ACL: setting an
// access control list fails. KX7CONV_RANDOM: the bytes of getrandom are this for so many calls.
//
// A hardened build gives inline bodies to the functions that are replaced here.
#undef _FORTIFY_SOURCE

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

void swap(char const* call)
{
    static unsigned int s_calls = 0;
    char const* const swap = getenv("KX7CONV_SWAP");
    char name[16];
    unsigned int number = 0;
    int length = 0;
    if (!swap || sscanf(swap, "%15s %u %n", name, &number, &length) != 2 || strcmp(name, call) != 0 ||
        ++s_calls != number)
        return;
    std::string const command = swap + length;
    unsetenv("KX7CONV_SWAP");
    unsetenv("LD_PRELOAD");
    if (system(command.c_str()) != 0)
        abort();
}

int openSwapped(int folder, char const* path, int flags, mode_t mode)
{
    swap((flags & O_TMPFILE) == O_TMPFILE ? "tmpfile" : "openat");
    if ((flags & O_TMPFILE) == O_TMPFILE && getenv("KX7CONV_NO_TMPFILE")) {
        errno = EOPNOTSUPP;
        return -1;
    }
    return static_cast<int>(syscall(SYS_openat, folder, path, flags, mode));
}

}  // namespace

extern "C" {

int openat(int folder, char const* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openSwapped(folder, path, flags, mode);
}

int openat64(int folder, char const* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t const mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    return openSwapped(folder, path, flags | O_LARGEFILE, mode);
}

/** What a hardened build calls where the flags are not constant. */
int __openat_2(int folder, char const* path, int flags)
{
    return openSwapped(folder, path, flags, 0);
}

int __openat64_2(int folder, char const* path, int flags)
{
    return openSwapped(folder, path, flags | O_LARGEFILE, 0);
}

int fsync(int file)
{
    swap("fsync");
    return static_cast<int>(syscall(SYS_fsync, file));
}

int renameat(int fromFolder, char const* from, int toFolder, char const* to) noexcept
{
    swap("renameat");
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

int renameat2(int fromFolder, char const* from, int toFolder, char const* to, unsigned int flags) noexcept
{
    swap("renameat");
    return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}

int setxattr(char const* path, char const* name, void const* value, size_t size, int flags) noexcept
{
    if (getenv("KX7CONV_NO_ACL") && strcmp(name, "system.posix_acl_access") == 0) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_setxattr, path, name, value, size, flags));
}

ssize_t getrandom(void* buffer, size_t size, unsigned int flags) noexcept
{
    static unsigned int s_calls = 0;
    char const* const same = getenv("KX7CONV_RANDOM");
    if (same && s_calls++ < static_cast<unsigned int>(atoi(same))) {
        memset(buffer, 0, size);
        return static_cast<ssize_t>(size);
    }
    return syscall(SYS_getrandom, buffer, size, flags);
}

}  // extern "C"
