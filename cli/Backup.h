// kx7text - kx7conv: the second name that the old file keeps when another one takes its place.
#ifndef KX7_CLI_BACKUP_H
#define KX7_CLI_BACKUP_H

#include <string>
#include <system_error>

#include "Folder.h"

namespace kx7conv {

/** The backup of one file. There is a file under the first name at any time. */
class Backup {
public:
    /** Of the file `old`, which has that name in the folder. */
    Backup(FolderPointer const& folder, std::string const& name, std::string const& suffix, FileId const& old);

    /** Removes an older backup that this one has replaced. */
    ~Backup();

    Backup(Backup const&) = delete;
    Backup& operator=(Backup const&) = delete;

    /** The second name. */
    std::string const& name() const { return m_backup; }

    /** Gives the file its second name. FileError::REPLACED: the name is that of another file by now. */
    std::error_code make();

    /** The file stays after all: makes the names what they were before make(). */
    void undo();

private:
    bool isOld(std::string const& name) const;
    std::error_code replaceOlder();
    bool exchange();

    FolderPointer const m_folder;
    std::string const m_name;
    std::string const m_backup;
    FileId const m_old;
    bool m_isNew = false;        ///< it has been made, where there was none
    bool m_isExchanged = false;  ///< it has been made in place of an older one
    std::string m_other;         ///< the temporary name, of the older backup in the end; empty: none
};

}  // namespace kx7conv

#endif
