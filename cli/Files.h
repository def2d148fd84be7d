// kx7text - kx7conv: the inputs one after another, out of arguments, lists of names and folders.
#ifndef KX7_CLI_FILES_H
#define KX7_CLI_FILES_H

#include <memory>
#include <string>
#include <vector>

#include "Io.h"
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

    /** The next input. False: there are no more. Throws InputError for a folder or list that cannot be read. */
    bool next(File& file);

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
    bool m_listOpened = false;
    std::unique_ptr<Input> m_list;
    std::string m_listed;     ///< read from the list
    size_t m_nextListed = 0;  ///< where the next name in it begins
    std::vector<Folder> m_folders;
};

}  // namespace kx7conv

#endif
