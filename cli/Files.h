// kx7text - kx7conv: the inputs one after another, out of arguments, lists of names and folders.
#ifndef KX7_CLI_FILES_H
#define KX7_CLI_FILES_H

#include <memory>
#include <string>
#include <vector>

#include "Io.h"
#include "NameList.h"
#include "Options.h"

namespace kx7conv {

/** An input. */
struct File {
    std::string path;      ///< "-": standard input
    std::string relative;  ///< where it belongs below --output-dir
};

/** Finds the inputs while they are asked for: names in a list take no memory. */
class Files {
public:
    explicit Files(Options const& options);

    /**
     * The next input. False: there are no more. Throws InputError for a folder or list that cannot be read, UsageError
     * for a name in a list that is refused.
     */
    bool next(File& file);

    /** Throws UsageError for an input that the list of names is read from. */
    void check(Input const& input) const;

private:
    /** A folder whose entries are visited, in the order of the bytes of their names. */
    struct Folder {
        File file;
        std::vector<std::string> names;
        size_t next;
    };

    bool nextName(std::string& name);
    bool nextInFolder(File& file);
    void enter(File const& folder);

    Options const& m_options;
    size_t m_nextArgument = 0;
    std::unique_ptr<NameList> m_list;  ///< null: there is none
    std::vector<Folder> m_folders;
};

}  // namespace kx7conv

#endif
