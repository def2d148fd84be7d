// kx7text - kx7conv: input files, standard output and messages, straight on the system calls.
#ifndef KX7_CLI_IO_H
#define KX7_CLI_IO_H

#include <cstddef>
#include <string>
#include <system_error>

namespace kx7 {

/** An input that cannot be opened or read; what() is "name: reason". */
struct InputError : std::system_error {
    using system_error::system_error;
};

/** Standard output that cannot be written or closed; what() is "(stdout): reason". */
struct OutputError : std::system_error {
    using system_error::system_error;
};

/** A file, or standard input. */
class Input {
public:
    /** Opens `path`; "-" is standard input. Throws InputError. */
    explicit Input(std::string const& path);
    ~Input();

    Input(Input const&) = delete;
    Input& operator=(Input const&) = delete;

    /** Reads what is there, waiting only while there is nothing. Returns 0 at the end. Throws InputError. */
    size_t read(unsigned char* buffer, size_t size);

    /** The name in messages. */
    std::string const& name() const { return m_name; }

private:
    std::string m_name;
    int m_file;
};

/** Writes all of `data` to standard output. Throws OutputError. */
void writeOutput(void const* data, size_t size);

/** Closes standard output: what a file system refuses late shows here. Throws OutputError. */
void closeOutput();

/** Writes "kx7conv: ", the message and a line feed to standard error as one line with one write. */
void report(std::string const& message);

}  // namespace kx7

#endif
