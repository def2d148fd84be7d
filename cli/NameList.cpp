// kx7text - kx7conv: the names in a list of files.
#include "NameList.h"

#include <climits>
#include <cstring>
#include <unistd.h>

#include "Options.h"

namespace kx7conv {

namespace {

constexpr size_t PIECE_SIZE = 16 * 1024;
constexpr size_t LONGEST_NAME = PATH_MAX - 1;  // the system counts the terminator

bool isSameStream(struct stat const& a, struct stat const& b)
{
    // What is opened again under another name is read from its beginning if it is a file, else from where the first is.
    return !S_ISREG(a.st_mode) && a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

NameList::NameList(std::string const& path, bool isZeroSeparated)
    : m_path(path), m_separator(isZeroSeparated ? '\0' : '\n'), m_status(), m_piece(PIECE_SIZE)
{
}

bool NameList::next(std::string& name)
{
    if (!m_isOpened) {
        m_isOpened = true;
        m_input = std::make_unique<Input>(m_path);
        m_status = m_input->status();
    }
    while (m_input) {
        Entry const entry = readEntry(name);
        ++m_entries;
        if (entry.isLast)
            m_input.reset();
        checkName(name, entry);
        if (!name.empty())
            return true;
    }
    return false;
}

bool NameList::isReadBy(Input const& input) const
{
    return m_input && isSameStream(m_status, input.status());
}

/** Reads to the next separator or the end. A name that is too long is not kept. */
NameList::Entry NameList::readEntry(std::string& name)
{
    Entry entry;
    name.clear();
    for (;;) {
        if (m_next == m_pieceSize && !fill()) {
            entry.isLast = true;
            return entry;
        }
        unsigned char const* const begin = m_piece.data() + m_next;
        size_t const left = m_pieceSize - m_next;
        auto const* const end = static_cast<unsigned char const*>(memchr(begin, m_separator, left));
        size_t const size = end ? static_cast<size_t>(end - begin) : left;
        entry.hasZero = entry.hasZero || memchr(begin, '\0', size);
        entry.isTooLong = entry.isTooLong || name.size() + size > LONGEST_NAME;
        if (!entry.isTooLong)
            name.append(reinterpret_cast<char const*>(begin), size);
        m_next += size + (end ? 1 : 0);
        if (end)
            return entry;
    }
}

/** Reads on. False: the list has ended. */
bool NameList::fill()
{
    std::unique_ptr<Input> input = std::move(m_input);  // given up if it cannot be read
    m_next = 0;
    m_pieceSize = input->read(m_piece.data(), m_piece.size());
    m_input = std::move(input);
    return m_pieceSize != 0;
}

void NameList::checkName(std::string const& name, Entry const& entry) const
{
    auto const refuse = [this](std::string const& reason) {
        throw UsageError(inputName(m_path) + ":" + std::to_string(m_entries) + ": " + reason);
    };
    if (entry.hasZero)
        refuse("a zero byte in a name; -0 is for names that end with one");
    if (entry.isTooLong)
        refuse("a name of more than " + std::to_string(LONGEST_NAME) + " bytes");
    if (name == "-" && m_path == "-")
        refuse("'-' is standard input, which the list comes from");
}

}  // namespace kx7conv
