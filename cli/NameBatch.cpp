// kx7text - kx7conv: the names in a folder, in the order of their bytes, however many there are.
#include "NameBatch.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <memory>

namespace kx7conv {

namespace {

/** Larger takes more memory; smaller reads a folder of a million files more often than ten times. */
constexpr size_t LIMIT = 2 * 1024 * 1024;

}  // namespace

bool NameBatch::read(Folder const& folder)
{
    forget();
    // By another descriptor: how far it is read is a matter of the descriptor.
    int const file = folder.openEntry(".", O_RDONLY | O_DIRECTORY);
    std::unique_ptr<DIR, int (*)(DIR*)> const entries(file == -1 ? nullptr : fdopendir(file), closedir);
    if (!entries)
        return false;
    m_hasMore = false;
    errno = 0;
    while (dirent const* const entry = readdir(entries.get())) {
        char const* const name = entry->d_name;
        bool const isSpecial = name[0] == '.' && (name[1] == 0 || strcmp(name, "..") == 0);
        // m_last is empty at first, and no name is.
        if (!isSpecial && strcmp(name, m_last.c_str()) > 0)
            add(name, entry->d_type);
        errno = 0;
    }
    if (errno != 0)
        return false;
    std::sort(m_offsets.begin(), m_offsets.end(),
              [this](uint32_t a, uint32_t b) { return strcmp(m_bytes.data() + a + 1, m_bytes.data() + b + 1) < 0; });
    return true;
}

char const* NameBatch::next(unsigned char& type)
{
    if (m_next == m_offsets.size())
        return nullptr;
    char const* const entry = m_bytes.data() + m_offsets[m_next++];
    type = static_cast<unsigned char>(*entry);
    m_last = entry + 1;
    return entry + 1;
}

void NameBatch::forget()
{
    m_hasMore = m_hasMore || m_next != m_offsets.size();
    m_bytes = std::string();
    m_offsets = std::vector<uint32_t>();
    m_next = 0;
}

void NameBatch::add(char const* name, unsigned char type)
{
    if (m_hasMore && strcmp(name, m_bound.c_str()) > 0)
        return;
    if (size() + strlen(name) + 2 + sizeof(uint32_t) > LIMIT) {
        halve();
        add(name, type);
        return;
    }
    m_offsets.push_back(static_cast<uint32_t>(m_bytes.size()));
    m_bytes += static_cast<char>(type);
    m_bytes.append(name, strlen(name) + 1);
}

/** Keeps the lower half of the names. */
void NameBatch::halve()
{
    auto const middle = m_offsets.begin() + static_cast<std::ptrdiff_t>(m_offsets.size() / 2);
    auto const name = [this](uint32_t offset) { return m_bytes.data() + offset + 1; };
    std::nth_element(m_offsets.begin(), middle, m_offsets.end(),
                     [&](uint32_t a, uint32_t b) { return strcmp(name(a), name(b)) < 0; });
    m_bound = name(*middle);
    m_hasMore = true;
    m_offsets.erase(middle + 1, m_offsets.end());
    // In the order in which they are stored, each can move down to where the last one ended.
    std::sort(m_offsets.begin(), m_offsets.end());
    size_t end = 0;
    for (uint32_t& offset : m_offsets) {
        size_t const length = strlen(name(offset)) + 2;
        memmove(&m_bytes[end], &m_bytes[offset], length);
        offset = static_cast<uint32_t>(end);
        end += length;
    }
    m_bytes.resize(end);
}

}  // namespace kx7conv
