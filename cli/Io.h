// kx7text - kx7conv: inputs, outputs and messages, straight on the system calls.
#ifndef KX7_CLI_IO_H
#define KX7_CLI_IO_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <system_error>

namespace kx7conv {

/** The name of an input in messages, quoted. `path`: "-": standard input. */
std::string inputName(std::string const& path);

/** The name of an output in messages, quoted. `path`: empty: standard output. */
std::string outputName(std::string const& path);

/** An input that cannot be opened or read; what() is "name: reason". */
struct InputError : std::system_error {
    InputError(int error, std::error_category const& category, std::string const& path)
        : system_error(error, category, inputName(path))
    {
    }
};

/** An output that cannot be opened, written or closed; what() is "name: reason". */
struct OutputError : std::system_error {
    OutputError(int error, std::error_category const& category, std::string const& path)
        : system_error(error, category, outputName(path))
    {
    }
};

/** A descriptor that is closed when its owner ends. */
class Descriptor {
public:
    explicit Descriptor(int file = -1) : m_file(file) {}
    ~Descriptor() { reset(); }
    Descriptor(Descriptor const&) = delete;
    Descriptor& operator=(Descriptor const&) = delete;

    int get() const { return m_file; }
    void reset(int file = -1);
    /** Closes it and says whether that went well; errno says why not. */
    bool close();

private:
    int m_file;
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
    std::string name() const { return inputName(m_path); }

    /** What the file is; st_mode is 0 where that cannot be told. */
    struct stat const& status() const { return m_status; }

private:
    std::string m_path;
    int m_file;
    struct stat m_status;
};

/** Where text is written. */
class Output {
public:
    /** Standard output. */
    Output();

    /**
     * A file that appears under `path`, whole, when finish() is called, and not at all otherwise. What is there keeps
     * its mode and, where that is allowed, its owner; a new file gets `modeLike` as the umask leaves it. A link is
     * followed. What is no regular file, a device or a pipe, is written to as it is.
     * `backupSuffix`: not empty: the old file gets its name and that.
     * Throws OutputError.
     */
    Output(std::string const& path, std::string const& backupSuffix);
    ~Output();

    Output(Output const&) = delete;
    Output& operator=(Output const&) = delete;

    /** Writes all of `data`. Throws OutputError. */
    void write(void const* data, size_t size);

    /** Closes it; a file is brought to the disk and takes its place. What is refused late shows here. Throws
     * OutputError. */
    void finish();

    uint64_t written() const { return m_written; }

private:
    [[noreturn]] void fail() const;
    void openTemporary(struct stat const* old);
    void giveName();
    void replaceTarget();
    std::string temporaryName() const;

    Descriptor m_descriptor;
    std::string m_name;
    std::string m_target;     ///< empty: written to as it is
    std::string m_temporary;  ///< the name of the unfinished file; empty while it has none
    std::string m_backupSuffix;
    bool m_replaces = false;  ///< there is a file under the name of the target
    uint64_t m_written = 0;
};

/** The folder of a path, "." where it names none. */
std::string folderOf(std::string const& path);

/** The path of what `path` names once links are followed; it need not exist. */
std::string followLinks(std::string path);

/** Makes a folder and those above it. Throws OutputError. */
void makeFolders(std::string const& path);

/** Brings the entries of a folder to the disk. Throws OutputError. */
void syncFolder(std::string const& path);

/** The line of a message: "kx7conv: ", the message with what must not reach a terminal escaped, and a line feed. */
std::string messageLine(std::string const& message);

/** Writes to standard error with one write. */
void writeError(std::string const& text);

/** Writes a message to standard error as one line with one write. */
void report(std::string const& message);

}  // namespace kx7conv

#endif
