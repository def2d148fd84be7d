// kx7text - kx7conv: input files, standard output and messages, straight on the system calls.
#include "Io.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kx7 {

namespace {

/** Runs a system call until no signal interrupts it. */
template <class Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

OutputError outputError()
{
    return OutputError(errno, std::generic_category(), "(stdout)");
}

}  // namespace

Input::Input(std::string const& path) : m_name(path), m_file(STDIN_FILENO)
{
    if (path == "-") {
        m_name = "(stdin)";
        return;
    }
    m_file = uninterrupted([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); });
    if (m_file == -1)
        throw InputError(errno, std::generic_category(), m_name);
}

Input::~Input()
{
    if (m_file != STDIN_FILENO)
        close(m_file);
}

size_t Input::read(unsigned char* buffer, size_t size)
{
    ssize_t const got = uninterrupted([&] { return ::read(m_file, buffer, size); });
    if (got == -1)
        throw InputError(errno, std::generic_category(), m_name);
    return static_cast<size_t>(got);
}

void writeOutput(void const* data, size_t size)
{
    auto const* rest = static_cast<unsigned char const*>(data);
    while (size != 0) {
        ssize_t const put = uninterrupted([&] { return write(STDOUT_FILENO, rest, size); });
        if (put == -1)
            throw outputError();
        rest += put;
        size -= static_cast<size_t>(put);
    }
}

void closeOutput()
{
    // Not tried again after EINTR: the descriptor is closed by then.
    if (close(STDOUT_FILENO) == -1 && errno != EINTR)
        throw outputError();
}

void report(std::string const& message)
{
    std::string line = "kx7conv: " + message;
    // A file's name or an argument may hold anything, a line feed for one.
    for (char& c : line)
        if ((c >= 0 && c < ' ') || c == '\x7F')
            c = '?';
    line += '\n';
    uninterrupted([&] { return write(STDERR_FILENO, line.data(), line.size()); });
}

}  // namespace kx7
