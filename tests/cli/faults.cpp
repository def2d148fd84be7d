// kx7text - preloaded into kx7conv by its tests: the N-th call of one system call fails, as KX7CONV_FAULT says in the
// form "read 2 EIO"; "rename 1 KILL" kills the program instead. Reads and writes of standard error do not count, nor do
// closes of what was only read.
//
// A hardened build gives inline bodies to the functions that are replaced here.
#undef _FORTIFY_SOURCE

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/** Whether this call is the one that fails; sets errno. */
bool fails(char const* call)
{
    static unsigned int s_calls = 0;
    char const* const fault = getenv("KX7CONV_FAULT");
    char name[16];
    char reason[16];
    unsigned int number = 0;
    if (!fault || sscanf(fault, "%15s %u %15s", name, &number, reason) != 3 || strcmp(name, call) != 0 ||
        ++s_calls != number)
        return false;
    if (strcmp(reason, "KILL") == 0)
        raise(SIGKILL);
    errno = strcmp(reason, "ENOSPC") == 0 ? ENOSPC : EIO;
    return true;
}

}  // namespace

extern "C" {

ssize_t read(int file, void* buffer, size_t count)
{
    return fails("read") ? -1 : syscall(SYS_read, file, buffer, count);
}

ssize_t write(int file, void const* buffer, size_t count)
{
    return file != STDERR_FILENO && fails("write") ? -1 : syscall(SYS_write, file, buffer, count);
}

int fsync(int file)
{
    return fails("fsync") ? -1 : static_cast<int>(syscall(SYS_fsync, file));
}

int renameat(int fromFolder, char const* from, int toFolder, char const* to) noexcept
{
    return fails("rename") ? -1 : static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
}

int close(int file)
{
    bool const isWritten = (fcntl(file, F_GETFL) & O_ACCMODE) != O_RDONLY;
    int const result = static_cast<int>(syscall(SYS_close, file));
    return isWritten && fails("close") ? -1 : result;
}

}  // extern "C"
