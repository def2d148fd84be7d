// kx7text - kx7conv: the inputs one after another, out of arguments, lists of names and folders.
#include "Files.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "Paths.h"

namespace kx7conv {

namespace {

/** Folders of a path that are open at once. */
constexpr size_t OPEN_LEVELS = 4;

/** Memory for names of all folders of a path; more are read again. */
constexpr size_t NAMES_SIZE = 3 * 1024 * 1024;

}  // namespace

Files::Files(Options const& options)
    : m_options(options),
      m_list(options.namesFrom.empty() ? nullptr : std::make_unique<NameList>(options.namesFrom, options.zeroSeparated))
{
    struct stat status;
    if (fstat(STDERR_FILENO, &status) == 0 && S_ISREG(status.st_mode))
        m_messages = FileId(status);
}

void Files::check(Input const& input) const
{
    if (m_messages && FileId(input.status()) == *m_messages)
        throw UsageError(input.name() + ": messages are written to it");
    if (m_list && m_list->isReadBy(input))
        throw UsageError(input.name() + ": the list of names comes from it");
}

bool Files::next(File& file)
{
    for (;;) {
        if (nextInFolder(file))
            return true;
        if (!nextName(file.path))
            return false;
        file.relative = baseName(file.path);
        file.folder.reset();
        file.isFound = false;
        file.tree = FileId();
        if (!m_options.recursive || file.path == "-")
            return true;
        FolderPointer const folder = Folder::open(AT_FDCWD, file.path, 0);
        if (!folder && errno == ENOTDIR)
            return true;
        if (!folder)
            throw InputError(errno, std::generic_category(), file.path);
        m_path = file.path;
        m_relative.clear();
        enter(folder);
    }
}

/** The next argument or, after them, the next name in the list. */
bool Files::nextName(std::string& name)
{
    if (m_nextArgument != m_options.files.size()) {
        name = m_options.files[m_nextArgument++];
        return true;
    }
    return m_list && m_list->next(name);
}

bool Files::nextInFolder(File& file)
{
    while (!m_levels.empty()) {
        Level& level = m_levels.back();
        unsigned char type = DT_UNKNOWN;
        char const* const next = level.names.next(type);
        if (!next && level.names.hasMore()) {
            if (!level.names.read(*level.folder)) {
                int const reason = errno;
                std::string const path = m_path;
                leave();
                throw InputError(reason, std::generic_category(), path);
            }
            size_t size = level.names.size();
            for (size_t i = m_levels.size() - 1; i != 0; --i)
                if ((size += m_levels[i - 1].names.size()) > NAMES_SIZE)
                    m_levels[i - 1].names.forget();
            continue;
        }
        if (!next) {
            leave();
            continue;
        }
        std::string const name = next;
        struct stat status;
        if (type == DT_UNKNOWN) {
            if (!level.folder->entryStatus(name, status))
                throw InputError(errno, std::generic_category(), joined(m_path, name));
            type = S_ISDIR(status.st_mode) ? DT_DIR : S_ISREG(status.st_mode) ? DT_REG : DT_UNKNOWN;
        }
        if (type == DT_DIR) {
            FolderPointer const folder = Folder::open(level.folder->get(), name, O_NOFOLLOW);
            if (!folder && (errno == ELOOP || errno == ENOTDIR))
                throw InputError(FileError::REPLACED, joined(m_path, name));
            if (!folder)
                throw InputError(errno, std::generic_category(), joined(m_path, name));
            m_path = joined(m_path, name);
            m_relative = joined(m_relative, name);
            enter(folder);
        }
        else if (type == DT_REG && !isTemporaryName(name.c_str()) && !isBackup(name)) {
            describe(name, file);
            return true;
        }
    }
    return false;
}

void Files::describe(std::string const& name, File& file) const
{
    file.path = joined(m_path, name);
    file.relative = joined(m_relative, name);
    file.folder = m_levels.back().folder;
    file.name = name;
    file.isFound = true;
    file.tree = m_levels.front().id;
    file.modes.clear();
    if (!m_options.outputFolder.empty())
        for (Level const& level : m_levels)
            file.modes.push_back(level.mode);
}

/** Whether a name is that of another file's backup, which may have been made only now. */
bool Files::isBackup(std::string const& name) const
{
    std::string const original = originalOf(name, m_options.inPlace ? m_options.backupSuffix : std::string());
    struct stat status;
    return !original.empty() && m_levels.back().folder->entryStatus(original, status) && S_ISREG(status.st_mode);
}

/** Begins with a folder, that m_path names; its names are read when they are asked for. */
void Files::enter(FolderPointer const& folder)
{
    Level level;
    level.folder = folder;
    level.id = folder->id();
    if (!m_options.outputFolder.empty())
        level.mode = folder->mostPermissions();
    level.pathLength = m_path.size();
    level.relativeLength = m_relative.size();
    m_levels.push_back(std::move(level));
    struct stat output;
    if (!m_options.outputFolder.empty() && stat(m_options.outputFolder.c_str(), &output) == 0 &&
        FileId(output) == folder->id()) {
        leave();  // what is written there is no input
        if (m_levels.empty())
            throw UsageError(inputName(m_path) + ": is the folder of the output");
    }
    else if (m_levels.size() > OPEN_LEVELS)
        m_levels[m_levels.size() - 1 - OPEN_LEVELS].folder.reset();
}

/** Goes on with the folder above. Throws InputError if that cannot be found again. */
void Files::leave()
{
    FolderPointer const below = m_levels.back().folder;
    m_levels.pop_back();
    if (m_levels.empty())
        return;
    Level& level = m_levels.back();
    m_path.resize(level.pathLength);
    m_relative.resize(level.relativeLength);
    if (level.folder)
        return;
    level.folder = Folder::open(below->get(), "..", 0);
    if (level.folder && level.folder->id() == level.id)
        return;
    std::error_code const reason =
        level.folder ? std::error_code(FileError::REPLACED) : std::error_code(errno, std::generic_category());
    m_levels.clear();
    throw InputError(reason, m_path);
}

}  // namespace kx7conv
