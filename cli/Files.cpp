// kx7text - kx7conv: the inputs one after another, out of arguments, lists of names and folders.
#include "Files.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>

namespace kx7conv {

namespace {

std::string baseName(std::string const& path)
{
    size_t const last = path.find_last_not_of('/');
    size_t const end = last == std::string::npos ? 0 : last + 1;
    size_t const slash = end == 0 ? std::string::npos : path.rfind('/', end - 1);
    return slash == std::string::npos ? path.substr(0, end) : path.substr(slash + 1, end - slash - 1);
}

std::string joined(std::string const& folder, std::string const& name)
{
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

bool isFolder(std::string const& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

Files::Files(Options const& options)
    : m_options(options),
      m_list(options.namesFrom.empty() ? nullptr : std::make_unique<NameList>(options.namesFrom, options.zeroSeparated))
{
}

void Files::check(Input const& input) const
{
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
        if (!m_options.recursive || file.path == "-" || !isFolder(file.path))
            return true;
        enter({file.path, std::string()});
    }
}

/** The next argument or, behind them, the next name in the list. */
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
    while (!m_folders.empty()) {
        Folder& folder = m_folders.back();
        if (folder.next == folder.names.size()) {
            m_folders.pop_back();
            continue;
        }
        std::string const& name = folder.names[folder.next++];
        file = {joined(folder.file.path, name), joined(folder.file.relative, name)};
        struct stat status;
        if (lstat(file.path.c_str(), &status) == -1)
            throw InputError(errno, std::generic_category(), file.path);
        if (S_ISDIR(status.st_mode))
            enter(file);
        else if (S_ISREG(status.st_mode))
            return true;
    }
    return false;
}

void Files::enter(File const& folder)
{
    struct stat here;
    struct stat output;
    if (!m_options.outputFolder.empty() && stat(m_options.outputFolder.c_str(), &output) == 0 &&
        stat(folder.path.c_str(), &here) == 0 && here.st_dev == output.st_dev && here.st_ino == output.st_ino)
        return;  // what is written there is no input
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(opendir(folder.path.c_str()), closedir);
    if (!entries)
        throw InputError(errno, std::generic_category(), folder.path);
    Folder level = {folder, {}, 0};
    errno = 0;
    while (dirent const* const entry = readdir(entries.get())) {
        std::string const name = entry->d_name;
        if (name != "." && name != "..")
            level.names.push_back(name);
        errno = 0;
    }
    if (errno != 0)
        throw InputError(errno, std::generic_category(), folder.path);
    std::sort(level.names.begin(), level.names.end());
    m_folders.push_back(std::move(level));
}

}  // namespace kx7conv
