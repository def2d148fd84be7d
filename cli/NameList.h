// kx7text - kx7conv: the names in a list of files.
#ifndef KX7_CLI_NAMELIST_H
#define KX7_CLI_NAMELIST_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Io.h"

namespace kx7conv {

/**
 * The names that --files-from finds in a file or in standard input, read as they are asked for. It takes a fixed amount
 * of memory, and time in proportion to the list, whatever is in it.
 */
class NameList {
public:
    /** `path`: "-": standard input. `isZeroSeparated`: names end with a zero byte, not with a line feed. */
    NameList(std::string const& path, bool isZeroSeparated);

    /**
     * The next name that is not empty. False: there are no more.
     * Throws InputError for a list that cannot be read, which ends it; what was read of a name is none.
     * Throws UsageError for a name that is refused; the next one follows it. These are names that no file can have
     * (with a zero byte in them, or longer than the system takes), and "-" where standard input is the list.
     */
    bool next(std::string& name);

    /** Whether reading this input would take names out of the list, as of a pipe under another name. */
    bool isReadBy(Input const& input) const;

private:
    struct Entry {
        bool hasZero = false;
        bool isTooLong = false;
        bool isLast = false;
    };

    Entry readEntry(std::string& name);
    bool fill();
    void checkName(std::string const& name, Entry const& entry) const;

    std::string const m_path;
    char const m_separator;
    std::unique_ptr<Input> m_input;  ///< null: not opened yet, or read to its end
    bool m_isOpened = false;
    struct stat m_status;
    uint64_t m_entries = 0;  ///< empty ones included
    std::vector<unsigned char> m_piece;
    size_t m_pieceSize = 0;
    size_t m_next = 0;  ///< in the piece
};

}  // namespace kx7conv

#endif
