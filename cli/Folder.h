// kx7text - kx7conv: open folders, and the files in them by name.
//
// A path is resolved once. From then on a file is a name in an open folder, so that nobody who renames folders or puts
// links in their place can lead a later step elsewhere.
#ifndef KX7_CLI_FOLDER_H
#define KX7_CLI_FOLDER_H

#include <memory>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace kx7conv {

/** A descriptor that is closed when its owner ends. */
class Descriptor {
public:
    explicit Descriptor(int file = -1) : m_file(file) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int get() const { return m_file; }
    void reset(int file = -1);
    /** Closes it and says whether that went well; errno says why not. */
    bool close();

private:
    int m_file;
};

/** What a file is, whatever its names are. */
struct FileId {
    dev_t device = 0;
    ino_t inode = 0;

    FileId() = default;
    explicit FileId(struct stat const& status) : device(status.st_dev), inode(status.st_ino) {}
    bool operator==(FileId const& other) const { return device == other.device && inode == other.inode; }
    bool operator!=(FileId const& other) const { return !(*this == other); }
    bool operator<(FileId const& other) const
    {
        return device != other.device ? device < other.device : inode < other.inode;
    }
};

/** Errors of files beside those of the system. */
enum class FileError {
    REPLACED = 1,  ///< the file is not the one that was there before
    NOT_REGULAR,   ///< a link, a device, a pipe, ...
    NO_PROC        ///< a file without a name cannot get one
};

std::error_code make_error_code(FileError error);

/** An open folder. All members may be called by several threads at once. */
class Folder {
public:
    /** Opens `path`, relative to the folder `at`; `flags`: O_NOFOLLOW or 0. Null: errno says why not. */
    static std::shared_ptr<Folder const> open(int at, std::string const& path, int flags);

    int get() const { return m_descriptor.get(); }
    FileId id() const { return FileId(m_status); }

    /** What a new folder for its files may permit at most. */
    mode_t mostPermissions() const;

    /** The status of an entry, of a link itself. False: errno says why not. */
    bool entryStatus(std::string const& name, struct stat& status) const;

    /** Opens an entry that is no link; the descriptor or -1. */
    int openEntry(std::string const& name, int flags, mode_t mode = 0) const;

    /** Syncs the entries, where that is possible: it takes permission to read. False: it failed. */
    bool sync() const;

private:
    Folder() = default;

    Descriptor m_descriptor;
    bool m_isReadable = true;
    struct stat m_status;
};

using FolderPointer = std::shared_ptr<Folder const>;

/** An input. */
struct File {
    std::string path;           ///< in messages, and to open it by unless there is a folder; "-": standard input
    std::string relative;       ///< where it belongs below --output-dir
    FolderPointer folder;       ///< it is opened by its name there, and links are not followed
    std::string name;           ///< in the folder
    bool isFound = false;       ///< found in a folder, where only regular files are inputs
    FileId tree;                ///< then: the folder that was named
    std::vector<mode_t> modes;  ///< that new folders permit: for the one that was named and those below it
};

/** Where a path leads. */
struct Place {
    FolderPointer folder;
    std::string name;      ///< in the folder; there need be no such entry
    bool isMagic = false;  ///< a link of procfs, which leads to an open file and not to a name
    int openFile = -1;     ///< that descriptor of this process, if it is one of them
};

/** Follows links: what is in the place is none, unless it has just been made. False: errno says why there is none. */
bool resolve(std::string path, Place& place);

/** Gives a file, by an absolute path or a name in the folder, a temporary name there. Empty: errno says why not. */
std::string linkTemporary(Folder const& folder, std::string const& from);

}  // namespace kx7conv

template <>
struct std::is_error_code_enum<kx7conv::FileError> : std::true_type {
};

#endif
