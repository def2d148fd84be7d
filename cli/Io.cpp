// kx7text - kx7conv: inputs, outputs and messages, directly on the system calls.
#include "Io.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

#include "Backup.h"
#include "Paths.h"
#include "Quoting.h"
#include "Rights.h"
#include "Transfer.h"
#include "Uninterrupted.h"

namespace kx7conv {

std::string inputName(std::string const& path)
{
    return path == "-" ? "(stdin)" : quoted(path);
}

std::string outputName(std::string const& path)
{
    return path.empty() ? "(stdout)" : quoted(path);
}

OutputError::OutputError(std::error_code error, std::string const& path, std::string const& backup)
    : system_error(error, outputName(path) + ": its backup " + quoted(backup))
{
}

Input::Input(std::string const& path) : Input(File{path, {}, nullptr, {}, false, {}, {}})
{
}

Input::Input(File const& file) : m_path(file.path), m_file(STDIN_FILENO), m_status()
{
    if (file.path != "-")
        open(file);
    if (fstat(m_file, &m_status) == -1)
        throw InputError(errno, std::generic_category(), m_path);
    if (file.isFound && !S_ISREG(m_status.st_mode))
        throw InputError(FileError::REPLACED, m_path);
    posix_fadvise(m_file, 0, 0, POSIX_FADV_SEQUENTIAL);
}

void Input::open(File const& file)
{
    // A pipe is waited for only where it is named.
    m_opened.reset(file.folder ? file.folder->openEntry(file.name, O_RDONLY | O_NONBLOCK) : uninterrupted([&] {
        return ::open(file.path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY);
    }));
    m_file = m_opened.get();
    if (m_file != -1)
        return;
    if (file.folder && errno == ELOOP)
        throw InputError(FileError::REPLACED, m_path);
    throw InputError(errno, std::generic_category(), m_path);
}

mode_t Input::mostPermissions() const
{
    return kx7conv::mostPermissions(m_file, m_status);
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
    m_hasFile = fstat(STDOUT_FILENO, &m_status) == 0 && S_ISREG(m_status.st_mode);
    m_file = FileId(m_status);
}

Output::Output(Target const& target)
    : m_name(target.name), m_target(target.place.name), m_backupSuffix(target.backupSuffix),
      m_isInPlace(target.source != nullptr)
{
    Place const& place = target.place;
    m_hasFile = place.folder->entryStatus(place.name, m_status);
    if (!m_hasFile && errno != ENOENT)
        fail();
    if (m_hasFile && (place.isMagic || !S_ISREG(m_status.st_mode))) {
        if (S_ISDIR(m_status.st_mode)) {
            errno = EISDIR;
            fail();
        }
        if (target.filesOnly)
            fail(FileError::NOT_REGULAR);
        openAsItIs(place);
        return;
    }
    m_file = FileId(m_status);
    if (target.source && (!m_hasFile || m_file != FileId(target.source->status())))
        fail(FileError::REPLACED);
    m_folder = place.folder;
    m_temporary.folder = place.folder;
    openTemporary();
}

Output::Temporary::~Temporary()
{
    if (!name.empty())
        unlinkat(folder->get(), name.c_str(), 0);
}

void Output::fail() const
{
    throw OutputError(errno, std::generic_category(), m_name);
}

void Output::fail(FileError error) const
{
    throw OutputError(error, m_name);
}

/** Opens what is no regular file, or gets on with what is open. */
void Output::openAsItIs(Place const& place)
{
    struct stat status;
    if (place.openFile != -1)
        m_descriptor.reset(fcntl(place.openFile, F_DUPFD_CLOEXEC, 0));
    else if (place.isMagic)
        m_descriptor.reset(uninterrupted(
            [&] { return openat(place.folder->get(), place.name.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY); }));
    else
        m_descriptor.reset(place.folder->openEntry(place.name, O_WRONLY));
    if (m_descriptor.get() == -1 && errno == ELOOP)
        fail(FileError::REPLACED);
    if (m_descriptor.get() == -1 || fstat(m_descriptor.get(), &status) == -1)
        fail();
    if (place.isMagic ? place.openFile == -1 && S_ISREG(status.st_mode) : FileId(status) != FileId(m_status))
        fail(place.isMagic ? FileError::NOT_REGULAR : FileError::REPLACED);
    m_hasFile = S_ISREG(status.st_mode);
    m_file = FileId(status);
}

/**
 * Opens a file in the folder of the target: one without a name where possible, so that a program killed leaves none.
 * What open() would permit there, by the umask or the folder's access control list, shows in a file made by it.
 */
void Output::openTemporary()
{
    struct stat status;
    m_descriptor.reset(
        uninterrupted([&] { return openat(m_folder->get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, m_mode); }));
    if (m_descriptor.get() == -1 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
        auto const create = [&](mode_t mode) {
            do {
                m_temporary.name = temporaryName();
                m_descriptor.reset(m_folder->openEntry(m_temporary.name, O_CREAT | O_EXCL | O_WRONLY, mode));
            } while (m_descriptor.get() == -1 && errno == EEXIST);
            if (m_descriptor.get() == -1) {
                m_temporary.name.clear();
                fail();
            }
        };
        create(m_mode);
        if (fstat(m_descriptor.get(), &status) == -1 || unlinkat(m_folder->get(), m_temporary.name.c_str(), 0) == -1)
            fail();
        m_mode = status.st_mode & 0777;
        create(S_IRUSR | S_IWUSR);
        return;
    }
    if (m_descriptor.get() == -1 || fstat(m_descriptor.get(), &status) == -1)
        fail();
    m_mode = status.st_mode & 0777;
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
    if (appearsAtFinish()) {
        setRights();
        if (uninterrupted([&] { return fsync(m_descriptor.get()); }) == -1)
            fail();
        if (m_temporary.name.empty())
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
    if (appearsAtFinish())
        replaceTarget();
}

/** Refuses to replace anything but a regular file and, in place, any but the one that was read. */
void Output::checkOld(struct stat const* old) const
{
    if (old ? !S_ISREG(old->st_mode) || (m_isInPlace && FileId(*old) != m_file) : m_isInPlace)
        fail(FileError::REPLACED);
}

/** The rights of the file that is replaced by now; without one, of a new file. */
void Output::setRights()
{
    struct stat status;
    Descriptor const old(m_folder->openEntry(m_target, O_PATH));
    if (old.get() == -1 && errno != ENOENT)
        fail();
    m_replaces = old.get() != -1;
    if (fstat(m_replaces ? old.get() : m_descriptor.get(), &status) == -1)
        fail();
    checkOld(m_replaces ? &status : nullptr);
    if (!m_replaces) {
        if ((status.st_mode & 0777) != m_mode && fchmod(m_descriptor.get(), m_mode) == -1)
            fail();
        return;
    }
    if (m_isInPlace) {
        // Reading has changed the time of the last access.
        status.st_atim = m_status.st_atim;
        status.st_mtim = m_status.st_mtim;
    }
    if (!copyRights(old.get(), status, m_descriptor.get(), m_isInPlace, m_lost))
        fail();
}

/**
 * Names the file without a name: like the target, where there is none yet. Only by its name can it take the place of
 * another file, so a program killed between that naming and the renaming leaves the old file and the complete new one.
 */
void Output::giveName()
{
    std::string const file = procPath(m_descriptor.get());
    bool const isNew =
        !m_replaces && linkat(AT_FDCWD, file.c_str(), m_folder->get(), m_target.c_str(), AT_SYMLINK_FOLLOW) == 0;
    m_temporary.name = isNew ? m_target : linkTemporary(*m_folder, file);
    if (!m_temporary.name.empty())
        return;
    int const reason = errno;
    if (reason == ENOENT && access(file.c_str(), F_OK) == -1)
        fail(FileError::NO_PROC);
    errno = reason;
    fail();
}

void Output::replaceTarget()
{
    if (m_temporary.name != m_target) {
        struct stat status;
        bool const isThere = m_folder->entryStatus(m_target, status);
        checkOld(isThere ? &status : nullptr);
        Backup backup(m_folder, m_target, m_backupSuffix, m_file);
        std::error_code const refused = m_backupSuffix.empty() ? std::error_code() : backup.make();
        if (refused == FileError::REPLACED)
            fail(FileError::REPLACED);
        if (refused)
            throw OutputError(refused, m_name, backup.name());
        if (renameat(m_folder->get(), m_temporary.name.c_str(), m_folder->get(), m_target.c_str()) == -1) {
            int const reason = errno;
            backup.undo();
            errno = reason;
            fail();
        }
    }
    m_temporary.name.clear();
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
