// kx7text - kx7conv: the inputs one after another, out of arguments, lists of names and folders.
#ifndef KX7_CLI_FILES_H
#define KX7_CLI_FILES_H

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Io.h"
#include "NameBatch.h"
#include "NameList.h"
#include "Options.h"

namespace kx7conv {

/** Finds the inputs while they are asked for: names in a list take no memory. */
class Files {
public:
    explicit Files(Options const& options);

    /**
     * The next input. False: there are no more. Throws InputError for a folder or list that cannot be read, UsageError
     * for a name in a list that is refused.
     */
    bool next(File& file);

    /** Throws UsageError for an input that the list of names is read from, or that messages are written to. */
    void check(Input const& input) const;

private:
    /** A folder whose entries are visited, in the order of the bytes of their names. */
    struct Level {
        FolderPointer folder;  ///< null: closed, since there are so many below it
        FileId id;
        mode_t mode = 0;
        NameBatch names;
        size_t pathLength = 0;      ///< the beginning of m_path that names it
        size_t relativeLength = 0;  ///< the same of m_relative
    };

    bool nextName(std::string& name);
    bool nextInFolder(File& file);
    void enter(FolderPointer const& folder);
    void leave();
    bool isBackup(std::string const& name) const;
    void describe(std::string const& name, File& file) const;

    Options const& m_options;
    size_t m_nextArgument = 0;
    std::unique_ptr<NameList> m_list;  ///< null: there is none
    std::optional<FileId> m_messages;  ///< the file that standard error is, if it is one
    std::vector<Level> m_levels;
    std::string m_path;      ///< of the folder that is visited
    std::string m_relative;  ///< the same below --output-dir
};

}  // namespace kx7conv

#endif
