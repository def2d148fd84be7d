// kx7text - kx7conv: inputs, outputs and messages, directly on the system calls.
#ifndef KX7_CLI_IO_H
#define KX7_CLI_IO_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <system_error>

#include "Folder.h"

namespace kx7conv {

/** The name of an input in messages, quoted. `path`: "-": standard input. */
std::string inputName(std::string const& path);

/** The name of an output in messages, quoted. `path`: empty: standard output. */
std::string outputName(std::string const& path);

/** An input that cannot be opened or read; what() is "name: reason". */
struct InputError : std::system_error {
    InputError(std::error_code error, std::string const& path) : system_error(error, inputName(path)) {}
    InputError(int error, std::error_category const& category, std::string const& path)
        : InputError(std::error_code(error, category), path)
    {
    }
};

/** An output that cannot be opened, written or closed; what() is "name: reason". */
struct OutputError : std::system_error {
    OutputError(std::error_code error, std::string const& path) : system_error(error, outputName(path)) {}
    OutputError(int error, std::error_category const& category, std::string const& path)
        : OutputError(std::error_code(error, category), path)
    {
    }
    /** Of the backup of that name, which the output's old file is to have. */
    OutputError(std::error_code error, std::string const& path, std::string const& backup);
};

/** A file, or standard input. */
class Input {
public:
    /** Opens `path`; "-" is standard input. Throws InputError. */
    explicit Input(std::string const& path);
    /** Opens a file. Throws InputError. */
    explicit Input(File const& file);

    /** Reads what is there, waiting only while there is nothing. Returns 0 at the end. Throws InputError. */
    size_t read(unsigned char* buffer, size_t size);

    /** The name in messages. */
    std::string name() const { return inputName(m_path); }

    /** What the file is. */
    struct stat const& status() const { return m_status; }

    /** What a new file for its text may permit at most. */
    mode_t mostPermissions() const;

private:
    void open(File const& file);

    std::string m_path;
    Descriptor m_opened;  ///< none: standard input
    int m_file;
    struct stat m_status;
};

/** Where text is written. */
class Output {
public:
    /** Standard output. */
    Output();

    /** Where an output goes, and how. */
    struct Target {
        std::string name;  ///< the path in messages
        Place place;
        bool filesOnly = false;         ///< what is no regular file is refused, not written to
        Input const* source = nullptr;  ///< the file that is replaced, which has to be this one still
        std::string backupSuffix;       ///< not empty: the old file gets its name and that
    };

    /**
     * A file that appears under its name, whole, when finish() is called, and not at all otherwise. It gets the rights
     * and attributes of the file that it replaces (copyRights()); a new one is as open() would make it there, and
     * permits no more than limitPermissions() said. What is no regular file, a device, a pipe or a descriptor of this
     * process, is written to as it is. Throws OutputError.
     */
    explicit Output(Target const& target);

    /** Writes all of `data`. Throws OutputError. */
    void write(void const* data, size_t size);

    /** A new file permits no more than this. */
    void limitPermissions(mode_t most) { m_mode &= most; }

    /** Closes it; a file is synced and takes its place. What is refused late shows here. Throws
     * OutputError. */
    void finish();

    uint64_t written() const { return m_written; }

    /** Whether finish() gives a file its name, a new one or that of an old file; else what is open is written to. */
    bool appearsAtFinish() const { return m_folder != nullptr; }

    /** The regular file that is written to or, if appearsAtFinish(), the one that is to be replaced. Null: there is
     * none. */
    FileId const* existingFile() const { return m_hasFile ? &m_file : nullptr; }

    /** The number of names that existingFile() has. */
    nlink_t links() const { return m_status.st_nlink; }

    /** What the file that was replaced had and this one has not; empty: nothing. */
    std::string const& lost() const { return m_lost; }

private:
    /** The name of the unfinished file, which is removed with its owner. */
    struct Temporary {
        Temporary() = default;
        ~Temporary();
        Temporary(Temporary const&) = delete;
        Temporary& operator=(Temporary const&) = delete;

        FolderPointer folder;
        std::string name;  ///< empty: it has none, or not any more
    };

    [[noreturn]] void fail() const;
    [[noreturn]] void fail(FileError error) const;
    void openAsItIs(Place const& place);
    void openTemporary();
    void setRights();
    void giveName();
    void replaceTarget();
    void checkOld(struct stat const* old) const;

    Descriptor m_descriptor;
    std::string m_name;
    FolderPointer m_folder;  ///< null: written to as it is
    std::string m_target;    ///< the name in the folder
    Temporary m_temporary;
    std::string m_backupSuffix;
    bool m_isInPlace = false;  ///< only the file that was there at first is replaced
    bool m_replaces = false;   ///< there is a file under the name of the target
    bool m_hasFile = false;
    FileId m_file;
    struct stat m_status;  ///< of the file when it was opened
    mode_t m_mode = 0666;  ///< what a new file permits
    std::string m_lost;
    uint64_t m_written = 0;
};

/** The line of a message: "kx7conv: ", the message with what must not reach a terminal escaped, and a line feed. */
std::string messageLine(std::string const& message);

/** Writes to standard error with one write. */
void writeError(std::string const& text);

/** Writes a message to standard error as one line with one write. */
void report(std::string const& message);

}  // namespace kx7conv

#endif
