// kx7text - kx7conv: which file an input is written to, and what is refused because a text would be lost.
#include "Targets.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

#include "Files.h"
#include "Paths.h"

namespace kx7conv {

namespace {

/** What a folder made for another one permits: no more than that, but all to its owner, who has to fill it. */
mode_t folderMode(mode_t like)
{
    return S_IRWXU | (like & (S_IRWXG | S_IRWXO));
}

/** The folder that an open file is in; null: it has no name, or it cannot be told. */
FolderPointer folderOfOpenFile(int file, FileId const& id)
{
    char text[PATH_MAX];
    ssize_t const length = readlink(procPath(file).c_str(), text, sizeof text);
    if (length <= 0 || text[0] != '/')
        return nullptr;
    std::string const path(text, static_cast<size_t>(length));
    FolderPointer folder = Folder::open(AT_FDCWD, folderOf(path), 0);
    struct stat status;
    if (!folder || !folder->entryStatus(nameOf(path), status) || FileId(status) != id)
        return nullptr;
    return folder;
}

}  // namespace

Targets::Targets(Options const& options)
    : m_options(options), m_repeats(options.files.size() > 1 || !options.namesFrom.empty())
{
}

bool Targets::isInput(FileId const& file) const
{
    return m_inputs.contains(file, {});
}

void Targets::check(Output const* shared, Place const& place)
{
    bool const isToFile = shared && (shared->appearsAtFinish() || shared->existingFile());
    bool const isAsked = !m_options.backupSuffix.empty() || !m_options.outputFolder.empty();
    if (!isToFile && !isAsked)
        return;
    auto const look = [&](std::string const& input) {
        struct stat status;
        if ((input == "-" ? fstat(STDIN_FILENO, &status) : stat(input.c_str(), &status)) == -1)
            return;
        if (isAsked)
            m_inputs.insert(FileId(status), {});
        if (isToFile && !shared->appearsAtFinish() && FileId(status) == *shared->existingFile())
            throw UsageError(inputName(input) + ": is the output, too");
        FolderPointer const tree =
            S_ISDIR(status.st_mode) && m_options.recursive ? Folder::open(AT_FDCWD, input, 0) : nullptr;
        if (tree) {
            m_trees.push_back(tree->id());
            m_treeMode &= tree->mostPermissions();
        }
    };
    for (char const* const input : m_options.files)
        look(input);
    if (!m_options.namesFrom.empty())
        look(m_options.namesFrom);
    std::sort(m_trees.begin(), m_trees.end());
    if (isToFile && !m_trees.empty())
        checkTrees(*shared, place);
    if (!m_options.backupSuffix.empty())
        checkBackups();
}

/** An output in a folder that is converted would be an input of the next run, or of this one. */
void Targets::checkTrees(Output const& shared, Place const& place) const
{
    std::string const name = outputName(shared.appearsAtFinish() ? m_options.output : std::string());
    FolderPointer folder =
        shared.appearsAtFinish() ? place.folder : folderOfOpenFile(STDOUT_FILENO, *shared.existingFile());
    while (folder) {
        if (std::binary_search(m_trees.begin(), m_trees.end(), folder->id()))
            throw UsageError(name + ": is in a folder that is converted");
        FolderPointer const above = Folder::open(folder->get(), "..", 0);
        folder = above && above->id() != folder->id() ? above : nullptr;
    }
    if (!shared.existingFile() || shared.links() < 2)
        return;
    Options options = m_options;
    options.namesFrom.clear();
    Files files(options);
    for (File file;;) {
        try {
            if (!files.next(file))
                return;
        }
        catch (InputError const&) {
            continue;  // told when it is converted
        }
        struct stat status;
        if (file.isFound && file.folder->entryStatus(file.name, status) && FileId(status) == *shared.existingFile())
            throw UsageError(inputName(file.path) + ": is the output, too");
    }
}

/** The backups of all inputs that are named. */
void Targets::checkBackups() const
{
    for (std::string const path : m_options.files) {
        Place place;
        struct stat input;
        struct stat backup;
        if (path == "-" || !kx7conv::resolve(path, place) || !place.folder->entryStatus(place.name, input) ||
            !place.folder->entryStatus(place.name + m_options.backupSuffix, backup))
            continue;
        if (FileId(backup) != FileId(input) && isInput(FileId(backup)))
            throw UsageError(inputName(path) + ": the name of its backup is that of another input");
    }
}

void Targets::resolveInput(File& file) const
{
    if (!m_options.inPlace || file.folder || file.path == "-")
        return;
    Place place;
    if (!kx7conv::resolve(file.path, place))
        throw InputError(errno, std::generic_category(), file.path);
    if (place.isMagic)
        throw UsageError(inputName(file.path) + ": not a regular file, which -i needs");
    file.folder = place.folder;
    file.name = place.name;
    std::string const original = originalOf(file.name, m_options.backupSuffix);
    if (!original.empty() && m_targets.contains(place.folder->id(), original))
        throw UsageError(inputName(file.path) + ": has the name of another input's backup");
}

void Targets::checkInput(File const& file, Input const& input, Output const& shared) const
{
    // A file that is named may be replaced by what it becomes; one that is found was not meant.
    if (shared.existingFile() && (!shared.appearsAtFinish() || file.isFound) &&
        FileId(input.status()) == *shared.existingFile())
        throw UsageError(input.name() + ": is the output, too");
}

Output::Target Targets::target(File const& file, Input const& input)
{
    Output::Target target;
    std::string const& name = input.name();
    if (m_options.inPlace) {
        if (file.path == "-" || !S_ISREG(input.status().st_mode))
            throw UsageError(name + ": not a regular file, which -i needs");
        target.name = file.path;
        target.place.folder = file.folder;
        target.place.name = file.name;
        target.source = &input;
        target.backupSuffix = m_options.backupSuffix;
    }
    else {
        if (file.path == "-")
            throw UsageError(name + ": has no name, which --output-dir needs");
        target.name = m_options.outputFolder + "/" + file.relative;
        target.place.folder = folderFor(file);
        target.place.name = nameOf(file.relative);
        target.filesOnly = true;
    }
    Place const& place = target.place;
    if (m_repeats && m_targets.contains(place.folder->id(), place.name))
        throw UsageError(name + ": " + (m_options.inPlace ? "given twice" : "another input has the same output"));
    struct stat status;
    if (!m_options.inPlace && place.folder->entryStatus(place.name, status) &&
        FileId(status) != FileId(input.status()) && isInput(FileId(status)))
        throw UsageError(name + ": its output is another input");
    // Other inputs may not be known yet.
    if (!m_options.backupSuffix.empty() && (m_options.recursive || !m_options.namesFrom.empty()) &&
        place.folder->entryStatus(place.name + m_options.backupSuffix, status))
        throw UsageError(name + ": the name of its backup is taken, perhaps by another input");
    if (m_repeats)
        m_targets.insert(place.folder->id(), place.name);
    return target;
}

/** The folder of an output below the output folder, which is made if need be. */
FolderPointer Targets::folderFor(File const& file)
{
    // The folders of a list are known only now.
    if (!file.modes.empty())
        limitOutputFolder(file.modes.front());
    if (!m_outputFolder)
        m_outputFolder = makeOutputFolder();
    size_t const slash = file.relative.rfind('/');
    std::string const path = slash == std::string::npos ? std::string() : file.relative.substr(0, slash);
    if (!m_folder || path != m_path || file.tree != m_tree)
        m_folder = makeFolders(file, path);
    m_path = path;
    m_tree = file.tree;
    return m_folder;
}

/** Links below the output folder are not followed. */
FolderPointer Targets::makeFolders(File const& file, std::string const& path)
{
    FolderPointer folder = m_outputFolder;
    size_t begin = 0;
    for (size_t depth = 1; begin < path.size(); ++depth) {
        size_t const end = std::min(path.find('/', begin), path.size());
        std::string const name = path.substr(begin, end - begin);
        std::string const told = m_options.outputFolder + "/" + path.substr(0, end);
        mode_t const mode = folderMode(depth < file.modes.size() ? file.modes[depth] : 0);
        if (mkdirat(folder->get(), name.c_str(), mode) == -1 && errno != EEXIST)
            throw OutputError(errno, std::generic_category(), told);
        folder = Folder::open(folder->get(), name, O_NOFOLLOW);
        if (!folder)
            throw OutputError(errno, std::generic_category(), told);
        // The folders of a list are not among those that are known.
        if (folder->id() == file.tree || std::binary_search(m_trees.begin(), m_trees.end(), folder->id()))
            throw UsageError(inputName(file.path) + ": its output is in a folder that is converted");
        begin = end + 1;
    }
    return folder;
}

FolderPointer Targets::makeOutputFolder()
{
    std::string const& path = m_options.outputFolder;
    size_t const last = path.find_last_not_of('/');
    for (size_t slash = path.find('/', 1);; slash = path.find('/', slash + 1)) {
        std::string const folder = path.substr(0, slash);
        bool const isLast = slash == std::string::npos || slash > last;
        bool const isMade = mkdir(folder.c_str(), isLast ? folderMode(m_treeMode) : 0777) == 0;
        if (!isMade && errno != EEXIST)
            throw OutputError(errno, std::generic_category(), folder);
        m_isOutputFolderOurs = isLast && isMade;
        if (isLast)
            break;
    }
    FolderPointer folder = Folder::open(AT_FDCWD, path, 0);
    if (!folder)
        throw OutputError(errno, std::generic_category(), path);
    return folder;
}

/** The output folder permits no more than `most`: from now on, if it was made for other folders. */
void Targets::limitOutputFolder(mode_t most)
{
    mode_t const before = m_treeMode;
    m_treeMode &= most;
    if (m_treeMode == before || !m_outputFolder || !m_isOutputFolderOurs)
        return;
    struct stat status;
    mode_t const allowed = ~static_cast<mode_t>(0777) | folderMode(m_treeMode);
    if (!m_outputFolder->entryStatus(".", status) ||
        fchmodat(m_outputFolder->get(), ".", status.st_mode & allowed & 07777, 0) == -1)
        throw OutputError(errno, std::generic_category(), m_options.outputFolder);
}

}  // namespace kx7conv
