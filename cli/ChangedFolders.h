// kx7text - kx7conv: folders in which files appear, which are synced.
#ifndef KX7_CLI_CHANGEDFOLDERS_H
#define KX7_CLI_CHANGEDFOLDERS_H

#include <list>
#include <mutex>
#include <string>

#include "Folder.h"

namespace kx7conv {

/** The folders of the outputs in work and some before them; each is synced after its last file. */
class ChangedFolders {
public:
    /**
     * A file is going to appear in a folder. Returns that folder, as it was opened first. A folder in which none did
     * for some time is synced; `failure` says if that fails.
     */
    FolderPointer enter(FolderPointer const& folder, std::string const& name, std::string& failure);

    /** It has appeared or, if not `isChanged`, has not. */
    void leave(FolderPointer const& folder, bool isChanged);

    /** Syncs the others, when all files have appeared. Throws OutputError. */
    void finish();

private:
    struct Entry {
        FolderPointer folder;
        std::string name;  ///< in messages
        unsigned int files = 0;
        bool isChanged = false;
    };

    std::mutex m_mutex;
    std::list<Entry> m_entries;  ///< the last one used first
};

}  // namespace kx7conv

#endif
