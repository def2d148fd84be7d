// kx7text - kx7conv: the second name that the old file keeps when another one takes its place.
#include "Backup.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace kx7conv {

namespace {

std::error_code systemError(int reason)
{
    return {reason, std::generic_category()};
}

}  // namespace

Backup::Backup(FolderPointer const& folder, std::string const& name, std::string const& suffix, FileId const& old)
    : m_folder(folder), m_name(name), m_backup(name + suffix), m_old(old)
{
}

Backup::~Backup()
{
    if (!m_other.empty())
        unlinkat(m_folder->get(), m_other.c_str(), 0);
}

bool Backup::isOld(std::string const& name) const
{
    struct stat status;
    return m_folder->entryStatus(name, status) && FileId(status) == m_old;
}

std::error_code Backup::make()
{
    int const folder = m_folder->get();
    if (linkat(folder, m_name.c_str(), folder, m_backup.c_str(), 0) == 0) {
        m_isNew = isOld(m_backup);
        if (m_isNew)
            return {};
        unlinkat(folder, m_backup.c_str(), 0);
        return FileError::REPLACED;
    }
    if (errno != EEXIST)
        return systemError(errno);
    struct stat status;
    if (m_folder->entryStatus(m_backup, status) && S_ISDIR(status.st_mode))
        return systemError(EISDIR);
    m_other = linkTemporary(*m_folder, m_name);
    if (m_other.empty())
        return systemError(errno);
    return isOld(m_other) ? replaceOlder() : FileError::REPLACED;
}

/** Exchanges the names, so that the older backup can be put back. */
std::error_code Backup::replaceOlder()
{
    int const folder = m_folder->get();
    m_isExchanged = exchange();
    struct stat status;
    if (m_isExchanged && m_folder->entryStatus(m_other, status) && S_ISDIR(status.st_mode)) {
        m_isExchanged = !exchange();
        return systemError(EISDIR);
    }
    // Not every file system can exchange names; on others the older backup goes at once.
    if (!m_isExchanged &&
        ((errno != EINVAL && errno != ENOSYS) || renameat(folder, m_other.c_str(), folder, m_backup.c_str()) == -1))
        return systemError(errno);
    return {};
}

bool Backup::exchange()
{
    return renameat2(m_folder->get(), m_other.c_str(), m_folder->get(), m_backup.c_str(), RENAME_EXCHANGE) == 0;
}

void Backup::undo()
{
    // Somebody else may have removed the first name: the second one is the only one then.
    if (!isOld(m_name) || !isOld(m_backup))
        return;
    if (m_isNew)
        unlinkat(m_folder->get(), m_backup.c_str(), 0);
    if (m_isExchanged && !exchange())
        m_other.clear();  // nothing is lost
}

}  // namespace kx7conv
