// kx7text - kx7conv: folders in which files appear, which are synced.
#include "ChangedFolders.h"

#include <algorithm>

#include "Io.h"

namespace kx7conv {

namespace {

/** Each takes a descriptor. */
constexpr size_t MOST = 4;

OutputError failureOf(std::string const& name)
{
    return OutputError(errno, std::generic_category(), name);
}

}  // namespace

FolderPointer ChangedFolders::enter(FolderPointer const& folder, std::string const& name, std::string& failure)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    auto found = std::find_if(m_entries.begin(), m_entries.end(),
                              [&](Entry const& entry) { return entry.folder->id() == folder->id(); });
    if (found == m_entries.end()) {
        m_entries.push_front({folder, name, 0, false});
        found = m_entries.begin();
    }
    m_entries.splice(m_entries.begin(), m_entries, found);
    ++found->files;
    for (auto entry = m_entries.end(); m_entries.size() > MOST && entry != m_entries.begin();) {
        --entry;
        if (entry->files != 0)
            continue;
        if (entry->isChanged && !entry->folder->sync())
            failure = failureOf(entry->name).what();
        entry = m_entries.erase(entry);
    }
    return found->folder;
}

void ChangedFolders::leave(FolderPointer const& folder, bool isChanged)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    for (Entry& entry : m_entries) {
        if (entry.folder == folder) {
            --entry.files;
            entry.isChanged = entry.isChanged || isChanged;
        }
    }
}

void ChangedFolders::finish()
{
    for (Entry const& entry : m_entries)
        if (entry.isChanged && !entry.folder->sync())
            throw failureOf(entry.name);
    m_entries.clear();
}

}  // namespace kx7conv
