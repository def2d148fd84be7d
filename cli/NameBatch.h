// kx7text - kx7conv: the names in a folder, in the order of their bytes, however many there are.
#ifndef KX7_CLI_NAMEBATCH_H
#define KX7_CLI_NAMEBATCH_H

#include <cstdint>
#include <string>
#include <vector>

#include "Folder.h"

namespace kx7conv {

/** The next names of a folder: those that follow the last one and fit into a fixed amount of memory. */
class NameBatch {
public:
    /** Reads the folder. False: errno says why not. */
    bool read(Folder const& folder);

    /** The next name and its type (DT_REG and the like). Null: the folder has no more, or not in memory. */
    char const* next(unsigned char& type);

    /** Whether the folder has names that follow those in memory. */
    bool hasMore() const { return m_hasMore; }

    /** Gives up the names in memory; read() gets them again. */
    void forget();

    /** The memory taken. */
    size_t size() const { return m_bytes.size() + m_offsets.size() * sizeof(uint32_t); }

private:
    void add(char const* name, unsigned char type);
    void halve();

    std::string m_bytes;  ///< of each name: its type, its bytes, a zero
    std::vector<uint32_t> m_offsets;
    size_t m_next = 0;
    std::string m_last;   ///< the last name that was handed out
    std::string m_bound;  ///< if there is more: the names in memory are up to this one
    bool m_hasMore = true;
};

}  // namespace kx7conv

#endif
