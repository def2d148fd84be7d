// kx7text - kx7conv: inputs, outputs and messages, straight on the system calls.
#include "Io.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include "Quoting.h"
#include "Transfer.h"

namespace kx7conv {

namespace {

/** Runs a system call until no signal interrupts it. */
template <class Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

constexpr mode_t PERMISSIONS = 07777;

/** The permissions of a new file. */
mode_t newFileMode()
{
    static mode_t const mode = [] {
        mode_t const mask = umask(0);
        umask(mask);
        return static_cast<mode_t>(0666 & ~mask);
    }();
    return mode;
}

/** Unfinished files are new every time, also in a folder that several processes share. */
std::string uniqueSuffix()
{
    static std::atomic<unsigned int> s_count{0};
    return std::to_string(getpid()) + "-" + std::to_string(s_count++);
}

std::string procPath(int file)
{
    return "/proc/self/fd/" + std::to_string(file);
}

}  // namespace

void Descriptor::reset(int file)
{
    if (m_file != -1)
        ::close(m_file);
    m_file = file;
}

bool Descriptor::close()
{
    int const file = m_file;
    m_file = -1;
    // Not tried again after EINTR: the descriptor is closed by then.
    return ::close(file) == 0 || errno == EINTR;
}

std::string inputName(std::string const& path)
{
    return path == "-" ? "(stdin)" : quoted(path);
}

std::string outputName(std::string const& path)
{
    return path.empty() ? "(stdout)" : quoted(path);
}

Input::Input(std::string const& path) : m_path(path), m_file(STDIN_FILENO), m_status()
{
    if (path != "-") {
        m_file = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); });
        if (m_file == -1)
            throw InputError(errno, std::generic_category(), m_path);
    }
    if (fstat(m_file, &m_status) == -1)
        m_status.st_mode = 0;
    posix_fadvise(m_file, 0, 0, POSIX_FADV_SEQUENTIAL);
}

Input::~Input()
{
    if (m_file != STDIN_FILENO)
        close(m_file);
}

size_t Input::read(unsigned char* buffer, size_t size)
{
    ssize_t const got = readWaiting(m_file, buffer, size);
    if (got == -1)
        throw InputError(errno, std::generic_category(), m_path);
    return static_cast<size_t>(got);
}

Output::Output() : m_descriptor(STDOUT_FILENO)
{
}

Output::Output(std::string const& path, std::string const& backupSuffix) : m_name(path), m_backupSuffix(backupSuffix)
{
    struct stat old;
    m_replaces = stat(path.c_str(), &old) == 0;
    if (!m_replaces && errno != ENOENT)
        fail();
    if (m_replaces && !S_ISREG(old.st_mode)) {
        m_descriptor.reset(uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY); }));
        if (m_descriptor.get() == -1)
            fail();
        return;
    }
    m_target = followLinks(path);
    openTemporary(m_replaces ? &old : nullptr);
}

Output::~Output()
{
    if (!m_temporary.empty())
        unlink(m_temporary.c_str());
}

void Output::fail() const
{
    throw OutputError(errno, std::generic_category(), m_name);
}

std::string Output::temporaryName() const
{
    return folderOf(m_target) + "/.kx7conv-" + uniqueSuffix();
}

/** Opens a file in the folder of the target: one without a name where possible, so that a program killed leaves none.
 */
void Output::openTemporary(struct stat const* old)
{
    std::string const folder = folderOf(m_target);
    m_descriptor.reset(uninterrupted([&] { return open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600); }));
    if (m_descriptor.get() == -1 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        std::string const name = temporaryName();
        m_descriptor.reset(
            uninterrupted([&] { return open(name.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0600); }));
        if (m_descriptor.get() != -1)
            m_temporary = name;
    }
    if (m_descriptor.get() == -1)
        fail();

    mode_t mode = newFileMode();
    if (old) {
        mode = old->st_mode & PERMISSIONS;
        // Not root's files only: a group that one belongs to may be given. Else no right may pass to another owner.
        if (fchown(m_descriptor.get(), old->st_uid, old->st_gid) == -1) {
            bool const groupKept = fchown(m_descriptor.get(), static_cast<uid_t>(-1), old->st_gid) == 0;
            mode &= ~static_cast<mode_t>(groupKept ? S_ISUID : S_ISUID | S_ISGID);
        }
    }
    if (fchmod(m_descriptor.get(), mode) == -1)
        fail();
}

void Output::write(void const* data, size_t size)
{
    auto const* rest = static_cast<unsigned char const*>(data);
    while (size != 0) {
        ssize_t const put = writeWaiting(m_descriptor.get(), rest, size);
        if (put == -1)
            fail();
        rest += put;
        size -= static_cast<size_t>(put);
        m_written += static_cast<uint64_t>(put);
    }
}

void Output::finish()
{
    if (!m_target.empty()) {
        if (uninterrupted([&] { return fsync(m_descriptor.get()); }) == -1)
            fail();
        if (m_temporary.empty())
            giveName();
    }
    // Standard output that was closed, even if there was nothing to write.
    if ((fcntl(m_descriptor.get(), F_GETFL) & O_ACCMODE) == O_RDONLY) {
        errno = EBADF;
        fail();
    }
    // Ahead of the renaming: some file systems refuse late.
    if (!m_descriptor.close())
        fail();
    if (!m_target.empty())
        replaceTarget();
}

/**
 * Names the file without a name: like the target, where there is none yet. Only by its name can it take the place of
 * another file, so a program killed between that naming and the renaming leaves the old file and the complete new one.
 */
void Output::giveName()
{
    std::string const file = procPath(m_descriptor.get());
    auto const link = [&file](std::string const& name) {
        return linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    std::string name = m_target;
    if (m_replaces || !link(name)) {
        name = temporaryName();
        if (!link(name))
            fail();
    }
    m_temporary = name;
}

void Output::replaceTarget()
{
    if (m_replaces && !m_backupSuffix.empty()) {
        // A second name, so that at no time there is no file under the first.
        std::string const backup = m_target + m_backupSuffix;
        if (unlink(backup.c_str()) == -1 && errno != ENOENT)
            fail();
        if (link(m_target.c_str(), backup.c_str()) == -1)
            fail();
    }
    if (m_temporary != m_target && rename(m_temporary.c_str(), m_target.c_str()) == -1)
        fail();
    m_temporary.clear();
}

std::string folderOf(std::string const& path)
{
    size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string followLinks(std::string path)
{
    int const most = 40;  // as many as the kernel follows
    for (int i = 0; i < most; ++i) {
        char text[PATH_MAX];
        ssize_t const length = readlink(path.c_str(), text, sizeof text);
        if (length == -1 || static_cast<size_t>(length) == sizeof text)
            break;
        std::string const link(text, static_cast<size_t>(length));
        path = link[0] == '/' ? link : folderOf(path) + "/" + link;
    }
    return path;
}

void makeFolders(std::string const& path)
{
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        std::string const folder = path.substr(0, slash);
        if (mkdir(folder.c_str(), 0777) == -1 && errno != EEXIST)
            throw OutputError(errno, std::generic_category(), folder);
        if (slash == std::string::npos)
            return;
    }
}

void syncFolder(std::string const& path)
{
    Descriptor const folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // EINVAL: the file system cannot, and needs it not.
    if (folder.get() == -1 || (fsync(folder.get()) == -1 && errno != EINVAL))
        throw OutputError(errno, std::generic_category(), path);
}

std::string messageLine(std::string const& message)
{
    // Names are quoted by now; what is quoted from the arguments elsewhere may hold anything.
    return "kx7conv: " + escaped(message) + '\n';
}

void writeError(std::string const& text)
{
    // One write, but for what a descriptor that does not block leaves over.
    for (std::string_view rest = text; !rest.empty();) {
        ssize_t const put = writeWaiting(STDERR_FILENO, rest.data(), rest.size());
        if (put <= 0)
            return;
        rest.remove_prefix(static_cast<size_t>(put));
    }
}

void report(std::string const& message)
{
    writeError(messageLine(message));
}

}  // namespace kx7conv
