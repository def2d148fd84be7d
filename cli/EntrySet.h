// kx7text - kx7conv: a set of very many names of files.
#ifndef KX7_CLI_ENTRYSET_H
#define KX7_CLI_ENTRYSET_H

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "Folder.h"

namespace kx7conv {

/**
 * Names in folders, eight bytes for each: a hash whose key is another one in every run, so that nobody can choose names
 * that collide. Of a million names two collide once in 30 million runs.
 */
class EntrySet {
public:
    EntrySet();

    /** False: it is there already. Throws std::bad_alloc. */
    bool insert(FileId const& folder, std::string const& name);
    bool contains(FileId const& folder, std::string const& name) const;

private:
    uint64_t hash(FileId const& folder, std::string const& name) const;
    bool contains(uint64_t value) const;
    void merge();

    struct Free {
        void operator()(uint64_t* memory) const { free(memory); }
    };

    uint64_t m_key[2] = {};
    std::vector<uint64_t> m_recent;  ///< sorted, and few, so that one can be inserted
    std::unique_ptr<uint64_t[], Free> m_sorted;
    size_t m_size = 0;
};

}  // namespace kx7conv

#endif
