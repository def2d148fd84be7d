// kx7text - preloaded into kx7conv by its tests: system calls fail, as KX7CONV_FAULT says in the form "read 2 EIO": the
// second call of its kind; "read 0 EIO": each. Several are separated by commas. In place of an errno, KILL kills the
// program and STOP stops it until it is continued, both before the call is made. A close that fails has closed.
//
// KX7CONV_CALLS names a file that gets a line for each call: its kind. The kinds are those of the table below, whatever
// the call is called: openat is an "open", but "create" where it makes a file, "tmpfile" where that has no name, and
// "open-folder" where it opens a folder or only a place. Reads and writes of standard error do not count. A close of
// what was not written to is a "close-input".
//
// A hardened build gives inline bodies to the functions that are replaced here.
#undef _FORTIFY_SOURCE

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <type_traits>
#include <unistd.h>

namespace {

constexpr char const* KINDS[] = {
    "open",      "open-folder", "create",   "tmpfile",   "read",    "write",   "close",   "close-input",
    "fstat",     "stat",        "readlink", "link",      "rename",  "unlink",  "mkdir",   "fsync",
    "ftruncate", "fchmod",      "fchown",   "utimens",   "fadvise", "opendir", "readdir", "listxattr",
    "getxattr",  "setxattr",    "realpath", "getrandom", "poll",
};

struct Reason {
    char const* name;
    int number;
};

#define REASON(name)                                                                                                   \
    {                                                                                                                  \
#name, name                                                                                                    \
    }
constexpr Reason REASONS[] = {
    REASON(EACCES),       REASON(EAGAIN),  REASON(EBUSY),   REASON(EDQUOT),     REASON(EEXIST),  REASON(EFBIG),
    REASON(EINTR),        REASON(EINVAL),  REASON(EIO),     REASON(EISDIR),     REASON(ELOOP),   REASON(EMFILE),
    REASON(EMLINK),       REASON(ENFILE),  REASON(ENOENT),  REASON(ENOMEM),     REASON(ENOSPC),  REASON(ENOSYS),
    REASON(ENAMETOOLONG), REASON(ENOTDIR), REASON(ENXIO),   REASON(EOPNOTSUPP), REASON(EPERM),   REASON(EPIPE),
    REASON(EROFS),        REASON(ESTALE),  REASON(ETXTBSY), REASON(EXDEV),      REASON(ENODATA), REASON(ERANGE),
};
#undef REASON

/** Ends the program: a test that names a kind or a reason that there is none of would pass. */
[[noreturn]] void refuse(char const* text)
{
    dprintf(STDERR_FILENO, "faults: %s\n", text);
    _exit(99);
}

int numberOf(char const* reason)
{
    for (Reason const& known : REASONS)
        if (strcmp(known.name, reason) == 0)
            return known.number;
    refuse(reason);
}

void note(char const* kind)
{
    char const* const path = getenv("KX7CONV_CALLS");
    if (!path)
        return;
    auto const file =
        static_cast<int>(syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    char line[32];
    auto const length = static_cast<size_t>(snprintf(line, sizeof line, "%s\n", kind));
    if (syscall(SYS_write, file, line, length) != static_cast<long>(length))
        refuse(path);
    syscall(SYS_close, file);
}

size_t indexOf(char const* kind)
{
    for (size_t i = 0; i < sizeof KINDS / sizeof *KINDS; ++i)
        if (strcmp(KINDS[i], kind) == 0)
            return i;
    refuse(kind);
}

/** Counts a call and tells whether it fails; sets errno. */
bool fails(char const* kind)
{
    static std::atomic<unsigned int> s_calls[sizeof KINDS / sizeof *KINDS];
    size_t const index = indexOf(kind);
    unsigned int const call = ++s_calls[index];
    int const before = errno;
    note(kind);
    char const* const faults = getenv("KX7CONV_FAULT");
    for (char const* fault = faults; fault; fault = strchr(fault, ',')) {
        fault += *fault == ',';
        char name[16];
        char reason[16];
        unsigned int number = 0;
        if (sscanf(fault, " %15s %u %15[A-Z]", name, &number, reason) != 3)
            refuse(faults);
        if (indexOf(name) != index || (number != 0 && number != call))
            continue;
        if (strcmp(reason, "KILL") == 0 || strcmp(reason, "STOP") == 0) {
            raise(reason[0] == 'K' ? SIGKILL : SIGSTOP);
            continue;
        }
        errno = numberOf(reason);
        return true;
    }
    errno = before;
    return false;
}

char const* kindOfOpen(int flags)
{
    if ((flags & O_TMPFILE) == O_TMPFILE)
        return "tmpfile";
    if ((flags & (O_DIRECTORY | O_PATH)) != 0)
        return "open-folder";
    return (flags & O_CREAT) != 0 ? "create" : "open";
}

template <class Function>
Function* next(char const* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

template <class Result>
Result failure()
{
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return static_cast<Result>(-1);
}

}  // namespace

// Named by the linker's name alone, since the headers declare some with other types, and some under two names.
#define NAMED(result, name, parameters)                                                                                \
    extern "C" result faulty_##name parameters __asm__(#name);                                                         \
    result faulty_##name parameters

#define FAULTY(kind, result, name, parameters, arguments)                                                              \
    NAMED(result, name, parameters)                                                                                    \
    {                                                                                                                  \
        return fails(kind) ? failure<result>() : next<result parameters>(#name) arguments;                             \
    }

// The mode is passed on even where there is none.
#define FAULTY_OPEN(name)                                                                                              \
    NAMED(int, name, (char const* path, int flags, ...))                                                               \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        auto const mode = va_arg(arguments, mode_t);                                                                   \
        va_end(arguments);                                                                                             \
        return fails(kindOfOpen(flags)) ? -1 : next<int(char const*, int, ...)>(#name)(path, flags, mode);             \
    }

#define FAULTY_OPENAT(name)                                                                                            \
    NAMED(int, name, (int folder, char const* path, int flags, ...))                                                   \
    {                                                                                                                  \
        va_list arguments;                                                                                             \
        va_start(arguments, flags);                                                                                    \
        auto const mode = va_arg(arguments, mode_t);                                                                   \
        va_end(arguments);                                                                                             \
        return fails(kindOfOpen(flags)) ? -1                                                                           \
                                        : next<int(int, char const*, int, ...)>(#name)(folder, path, flags, mode);     \
    }

FAULTY_OPEN(open)
FAULTY_OPEN(open64)
FAULTY_OPENAT(openat)
FAULTY_OPENAT(openat64)
FAULTY(kindOfOpen(flags), int, __open_2, (char const* path, int flags), (path, flags))
FAULTY(kindOfOpen(flags), int, __open64_2, (char const* path, int flags), (path, flags))
FAULTY(kindOfOpen(flags), int, __openat_2, (int folder, char const* path, int flags), (folder, path, flags))
FAULTY(kindOfOpen(flags), int, __openat64_2, (int folder, char const* path, int flags), (folder, path, flags))

FAULTY("read", ssize_t, read, (int file, void* data, size_t size), (file, data, size))
FAULTY("read", ssize_t, __read_chk, (int file, void* data, size_t size, size_t capacity), (file, data, size, capacity))

namespace {

/** Whether something was written to a descriptor. */
std::atomic<bool> g_isWritten[1024];

}  // namespace

NAMED(ssize_t, write, (int file, void const* data, size_t size))
{
    if (file >= 0 && file < 1024)
        g_isWritten[file] = true;
    return file != STDERR_FILENO && fails("write") ? -1
                                                   : next<ssize_t(int, void const*, size_t)>("write")(file, data, size);
}

NAMED(int, close, (int file))
{
    bool const isWritten = file >= 0 && file < 1024 && g_isWritten[file].exchange(false);
    // Killed or stopped before it is closed.
    bool const isFailed = fails(isWritten ? "close" : "close-input");
    int const reason = errno;
    auto const result = static_cast<int>(syscall(SYS_close, file));
    if (!isFailed)
        return result;
    errno = reason;
    return -1;
}

FAULTY("fstat", int, fstat, (int file, void* status), (file, status))
FAULTY("fstat", int, fstat64, (int file, void* status), (file, status))
FAULTY("stat", int, stat, (char const* path, void* status), (path, status))
FAULTY("stat", int, stat64, (char const* path, void* status), (path, status))
FAULTY("stat", int, lstat, (char const* path, void* status), (path, status))
FAULTY("stat", int, lstat64, (char const* path, void* status), (path, status))
FAULTY("stat", int, fstatat, (int folder, char const* path, void* status, int flags), (folder, path, status, flags))
FAULTY("stat", int, fstatat64, (int folder, char const* path, void* status, int flags), (folder, path, status, flags))
FAULTY("stat", int, statx, (int folder, char const* path, int flags, unsigned int mask, void* status),
       (folder, path, flags, mask, status))

FAULTY("readlink", ssize_t, readlink, (char const* path, char* text, size_t size), (path, text, size))
FAULTY("readlink", ssize_t, __readlink_chk, (char const* path, char* text, size_t size, size_t capacity),
       (path, text, size, capacity))
FAULTY("readlink", ssize_t, readlinkat, (int folder, char const* path, char* text, size_t size),
       (folder, path, text, size))
FAULTY("readlink", ssize_t, __readlinkat_chk, (int folder, char const* path, char* text, size_t size, size_t capacity),
       (folder, path, text, size, capacity))
FAULTY("realpath", char*, realpath, (char const* path, char* text), (path, text))

FAULTY("link", int, link, (char const* from, char const* to), (from, to))
FAULTY("link", int, linkat, (int fromFolder, char const* from, int toFolder, char const* to, int flags),
       (fromFolder, from, toFolder, to, flags))
FAULTY("rename", int, rename, (char const* from, char const* to), (from, to))
FAULTY("rename", int, renameat, (int fromFolder, char const* from, int toFolder, char const* to),
       (fromFolder, from, toFolder, to))
FAULTY("rename", int, renameat2, (int fromFolder, char const* from, int toFolder, char const* to, unsigned int flags),
       (fromFolder, from, toFolder, to, flags))
FAULTY("unlink", int, unlink, (char const* path), (path))
FAULTY("unlink", int, unlinkat, (int folder, char const* path, int flags), (folder, path, flags))
FAULTY("mkdir", int, mkdir, (char const* path, mode_t mode), (path, mode))
FAULTY("mkdir", int, mkdirat, (int folder, char const* path, mode_t mode), (folder, path, mode))

FAULTY("fsync", int, fsync, (int file), (file))
FAULTY("fsync", int, fdatasync, (int file), (file))
FAULTY("ftruncate", int, ftruncate, (int file, off_t size), (file, size))
FAULTY("ftruncate", int, ftruncate64, (int file, off64_t size), (file, size))
FAULTY("fchmod", int, fchmod, (int file, mode_t mode), (file, mode))
FAULTY("fchmod", int, fchmodat, (int folder, char const* path, mode_t mode, int flags), (folder, path, mode, flags))
FAULTY("fchown", int, fchown, (int file, uid_t owner, gid_t group), (file, owner, group))
FAULTY("fchown", int, fchownat, (int folder, char const* path, uid_t owner, gid_t group, int flags),
       (folder, path, owner, group, flags))
FAULTY("utimens", int, futimens, (int file, void const* times), (file, times))
FAULTY("utimens", int, utimensat, (int folder, char const* path, void const* times, int flags),
       (folder, path, times, flags))
FAULTY("listxattr", ssize_t, listxattr, (char const* path, char* names, size_t size), (path, names, size))
FAULTY("listxattr", ssize_t, flistxattr, (int file, char* names, size_t size), (file, names, size))
FAULTY("getxattr", ssize_t, getxattr, (char const* path, char const* name, void* value, size_t size),
       (path, name, value, size))
FAULTY("getxattr", ssize_t, fgetxattr, (int file, char const* name, void* value, size_t size),
       (file, name, value, size))
FAULTY("setxattr", int, setxattr, (char const* path, char const* name, void const* value, size_t size, int flags),
       (path, name, value, size, flags))
FAULTY("setxattr", int, fsetxattr, (int file, char const* name, void const* value, size_t size, int flags),
       (file, name, value, size, flags))

FAULTY("opendir", DIR*, opendir, (char const* path), (path))
FAULTY("opendir", DIR*, fdopendir, (int file), (file))
FAULTY("readdir", void*, readdir, (DIR * folder), (folder))
FAULTY("readdir", void*, readdir64, (DIR * folder), (folder))
FAULTY("getrandom", ssize_t, getrandom, (void* data, size_t size, unsigned int flags), (data, size, flags))
FAULTY("poll", int, poll, (pollfd * files, nfds_t count, int timeout), (files, count, timeout))

// It returns the reason.
NAMED(int, posix_fadvise, (int file, off_t begin, off_t size, int advice))
{
    return fails("fadvise") ? errno : next<int(int, off_t, off_t, int)>("posix_fadvise")(file, begin, size, advice);
}

NAMED(int, posix_fadvise64, (int file, off64_t begin, off64_t size, int advice))
{
    return fails("fadvise") ? errno
                            : next<int(int, off64_t, off64_t, int)>("posix_fadvise64")(file, begin, size, advice);
}
