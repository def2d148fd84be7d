// kx7text - kx7conv: the run over all inputs, by one thread or several.
#ifndef KX7_CLI_CONVERSION_H
#define KX7_CLI_CONVERSION_H

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

#include "BlockConverter.h"
#include "ChangedFolders.h"
#include "CharSet.h"
#include "Files.h"
#include "Io.h"
#include "Messages.h"
#include "OpenFiles.h"
#include "Options.h"
#include "Targets.h"
#include "Turns.h"

namespace kx7conv {

enum ExitStatus {
    EXIT_FINE = 0,
    EXIT_BAD_DATA = 1,  ///< illegal bytes or unrepresentable characters, unless their loss was asked for
    EXIT_USAGE = 2,     ///< options, names that are refused, or a character set that is unknown or has no converter
    EXIT_IO = 3         ///< an input that cannot be read, output that cannot be written
};

/** What a run did. */
struct Totals {
    uint64_t files = 0;
    uint64_t failedFiles = 0;
    uint64_t bytesRead = 0;
    uint64_t bytesWritten = 0;
    uint64_t faults = 0;
};

/**
 * Converts all inputs. Every thread takes the next block of the inputs in their order, converts it and waits for its
 * turn to write, so that outputs and messages do not depend on how many threads there are. A file that gets a place of
 * its own is synced out of turn, which is what takes long with many small ones.
 *
 * Blocks begin and end between characters: with one thread the conversion itself finds the end, with several the thread
 * that reads. Memory does not grow with the input: a thread whose space for output is full waits for its turn.
 */
class Conversion {
public:
    /** `status` is that of the inputs so far, at any time. */
    Conversion(Options const& options, CharSet const& from, CharSet const& to, std::atomic<int>& status);

    /** Throws OutputError for an output that all inputs share. */
    void run();

    Totals const& totals() const { return m_totals; }

private:
    /** An input on its way. What is not constant is changed by the thread whose turn it is. */
    struct Job {
        uint64_t number = 0;
        std::string name;
        std::optional<OpenFiles::Permit> permit;
        std::unique_ptr<Input> input;
        std::shared_ptr<Output> output;  ///< null: nothing is written
        FolderPointer folder;            ///< that the output appears in
        uint64_t bytesTaken = 0;         ///< by the thread that reads

        uint64_t offset = 0;  ///< bytes converted
        uint64_t lineFeeds = 0;
        uint64_t faults = 0;
        std::atomic<bool> isStopped{false};  ///< nothing more of it is converted
        bool isFailed = false;               ///< its output does not appear
    };

    struct Block {
        std::vector<unsigned char> bytes;
        size_t size = 0;
        bool isFirst = false;
        bool isLast = false;
        uint64_t ticket = 0;
        std::shared_ptr<Job> job;
        std::string failure;  ///< why the input ends here; empty: for no such reason
        int failureStatus = EXIT_IO;
    };

    /** Thrown by a drain to end the conversion of a block whose output is not wanted any more. */
    struct Cancelled {};

    void work();
    bool take(Block& block);
    bool openNext(Block& block);
    void openSharedOutput();
    std::shared_ptr<Output> openOutput(File const& file, Job& job);
    void fail(Block& block, std::string const& reason, int status);
    BlockResult convert(Block& block, BlockConverter& converter);
    void accept(Block& block, BlockConverter& converter, BlockResult const& result);
    void finishInput(Job& job);
    void commit(Job& job, BlockConverter const& converter);
    void conclude(Job& job);
    void raise(int status);
    std::unique_ptr<BlockConverter> makeConverter() const;

    Options const& m_options;
    CharSet const m_from;
    CharSet const m_to;
    std::atomic<int>& m_status;
    std::string const m_mark;  ///< the byte order mark that outputs begin with
    unsigned int const m_threads;
    size_t const m_blockSize;

    OpenFiles m_openFiles;
    std::mutex m_readMutex;  ///< guards the next six
    Files m_files;
    std::shared_ptr<Job> m_current;
    std::vector<unsigned char> m_held;  ///< bytes of the current input, the beginning of a character
    uint64_t m_tickets = 0;
    Targets m_targets;
    uint64_t m_jobs = 0;

    Turns m_turns;

    std::shared_ptr<Output> m_sharedOutput;
    Place m_sharedPlace;  ///< unless that is standard output
    ChangedFolders m_folders;
    Messages m_messages;
    Totals m_totals;  ///< changed by the thread whose turn it is
};

}  // namespace kx7conv

#endif
