// kx7text - kx7conv: open folders, and the files in them by name.
#include "Folder.h"

#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "Paths.h"
#include "Rights.h"
#include "Uninterrupted.h"

namespace kx7conv {

namespace {

class FileErrorCategory : public std::error_category {
public:
    char const* name() const noexcept override { return "kx7conv"; }
    std::string message(int code) const override
    {
        switch (static_cast<FileError>(code)) {
            case FileError::REPLACED: return "another file has taken its place";
            case FileError::NOT_REGULAR: return "Not a regular file";
            case FileError::NO_PROC: break;
        }
        return "needs /proc, which is not mounted";
    }
};

bool isProcfs(Folder const& folder)
{
    struct statfs status;
    return fstatfs(folder.get(), &status) == 0 && status.f_type == PROC_SUPER_MAGIC;
}

/** The number that a name in the folder of this process's descriptors is; -1: it is not there. */
int ownDescriptor(Folder const& folder, std::string const& name)
{
    for (char const* const own : {"/proc/self/fd", "/proc/thread-self/fd"}) {
        struct stat status;
        if (stat(own, &status) == 0 && FileId(status) == folder.id())
            return atoi(name.c_str());
    }
    return -1;
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

std::error_code make_error_code(FileError error)
{
    static FileErrorCategory const s_category;
    return {static_cast<int>(error), s_category};
}

FolderPointer Folder::open(int at, std::string const& path, int flags)
{
    std::shared_ptr<Folder> const folder(new Folder);
    flags |= O_DIRECTORY | O_CLOEXEC;
    folder->m_descriptor.reset(uninterrupted([&] { return openat(at, path.c_str(), flags | O_RDONLY); }));
    if (folder->get() == -1 && errno == EACCES) {
        // Without permission to read, names in it can still be used.
        folder->m_isReadable = false;
        folder->m_descriptor.reset(uninterrupted([&] { return openat(at, path.c_str(), flags | O_PATH); }));
    }
    if (folder->get() == -1 || fstat(folder->get(), &folder->m_status) == -1)
        return nullptr;
    return folder;
}

mode_t Folder::mostPermissions() const
{
    return kx7conv::mostPermissions(get(), m_status);
}

bool Folder::entryStatus(std::string const& name, struct stat& status) const
{
    return fstatat(get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

int Folder::openEntry(std::string const& name, int flags, mode_t mode) const
{
    flags |= O_NOFOLLOW | O_NOCTTY | O_CLOEXEC;
    return uninterrupted([&] { return openat(get(), name.c_str(), flags, mode); });
}

bool Folder::sync() const
{
    // EINVAL: the file system cannot, and needs it not.
    return !m_isReadable || uninterrupted([&] { return fsync(get()); }) == 0 || errno == EINVAL;
}

bool resolve(std::string path, Place& place)
{
    if (path.empty()) {
        errno = ENOENT;
        return false;
    }
    int const most = 40;  // as many as the kernel follows
    for (int i = 0; i <= most; ++i) {
        FolderPointer const folder = Folder::open(place.folder ? place.folder->get() : AT_FDCWD, folderOf(path), 0);
        if (!folder)
            return false;
        place.folder = folder;
        place.name = nameOf(path);
        if (place.name.empty())
            place.name = ".";
        char text[PATH_MAX];
        ssize_t const length = readlinkat(folder->get(), place.name.c_str(), text, sizeof text);
        if (length == -1)
            return errno == EINVAL || errno == ENOENT;
        if (isProcfs(*folder)) {
            place.isMagic = true;
            place.openFile = ownDescriptor(*folder, place.name);
            return true;
        }
        if (static_cast<size_t>(length) == sizeof text) {
            errno = ENAMETOOLONG;
            return false;
        }
        path.assign(text, static_cast<size_t>(length));
    }
    errno = ELOOP;
    return false;
}

std::string linkTemporary(Folder const& folder, std::string const& from)
{
    int const flags = from[0] == '/' ? AT_SYMLINK_FOLLOW : 0;
    do {
        std::string name = temporaryName();
        if (linkat(folder.get(), from.c_str(), folder.get(), name.c_str(), flags) == 0)
            return name;
    } while (errno == EEXIST);
    return {};
}

}  // namespace kx7conv
