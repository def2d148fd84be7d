// kx7text - kx7conv: the run over all inputs, by one thread or several.
#include "Conversion.h"

#include <algorithm>
#include <cinttypes>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "LiteralTranscoder.h"
#include "Paths.h"
#include "Transcoder.h"
#include "kx7/convert.h"

namespace kx7conv {

namespace {

/** Large enough that system calls do not count, small enough that a block stays in the second-level cache. */
constexpr size_t BLOCK_SIZE = 128 * 1024;

/** All threads' blocks together; what is converted of them takes twice as much. */
constexpr size_t ALL_BLOCKS = 1024 * 1024;

/** Longer than any character in any set. */
constexpr size_t SMALLEST_BLOCK = 4 * 1024;

std::u16string utf16(unsigned int codePoint)
{
    if (codePoint > 0xFFFF)
        return {static_cast<char16_t>((codePoint >> 10) + 0xD7C0), static_cast<char16_t>((codePoint & 0x3FF) + 0xDC00)};
    return std::u16string(codePoint != 0, static_cast<char16_t>(codePoint));
}

std::string place(uint64_t lineFeeds, uint64_t offset)
{
    char text[96];
    snprintf(text, sizeof text, "%" PRIu64 ": byte %" PRIu64 " (0x%" PRIX64 "): ", lineFeeds + 1, offset, offset);
    return text;
}

std::string counted(uint64_t count)
{
    return std::to_string(count) + (count == 1 ? " error" : " errors");
}

/** The message about what a file has not got from the one that it replaced. */
std::string notKept(std::string const& name, Output const& output)
{
    return name + ": not kept: " + output.lost();
}

}  // namespace

Conversion::Conversion(Options const& options, CharSet const& from, CharSet const& to, std::atomic<int>& status)
    : m_options(options), m_from(from), m_to(to), m_status(status),
      m_mark(options.byteOrderMark == ByteOrderMark::ADD ? to.encoded(u"\uFEFF") : std::string()),
      // A line or a literal text is continued by its next block only.
      m_threads(options.literal || options.lineBuffered ? 1 : options.jobs),
      m_blockSize(std::clamp(ALL_BLOCKS / m_threads, SMALLEST_BLOCK, BLOCK_SIZE)), m_openFiles(m_threads),
      m_files(options), m_targets(options), m_messages(options.progress)
{
    if (options.byteOrderMark == ByteOrderMark::ADD && m_mark.empty())
        throw UsageError(std::string("--bom add: ") + to.name + " has no byte order mark");
    if (options.substitute != 0 && to.encoded(utf16(options.substitute)).empty())
        throw UsageError(std::string("--substitute: not in ") + to.name);
}

std::unique_ptr<BlockConverter> Conversion::makeConverter() const
{
    size_t const outputSize = 2 * m_blockSize;
    if (m_options.literal)
        return std::make_unique<LiteralTranscoder>(m_from, m_to, m_options.onError, outputSize);
    Rules rules;
    rules.onError = m_options.check ? OnError::SKIP : m_options.onError;
    rules.substitute = m_options.substitute;
    rules.faultsWanted = m_options.check ? m_options.maxErrors : rules.onError == OnError::STOP || m_options.failOnLoss;
    rules.countsLines = rules.faultsWanted != 0;
    rules.dropsByteOrderMark = m_options.byteOrderMark != ByteOrderMark::KEEP;
    rules.lineBuffered = m_options.lineBuffered;
    rules.writesNothing = m_options.check;
    return std::make_unique<Transcoder>(m_from, m_to, rules, outputSize);
}

void Conversion::run()
{
    bool const isShared = !m_options.check && !m_options.inPlace && m_options.outputFolder.empty();
    if (isShared)
        openSharedOutput();
    m_targets.check(m_sharedOutput.get(), m_sharedPlace);
    if (isShared)
        m_sharedOutput->write(m_mark.data(), m_mark.size());
    std::vector<std::thread> threads;
    try {
        while (threads.size() + 1 < m_threads)
            threads.emplace_back([this] { work(); });
    }
    catch (std::system_error const&) {
        // Fewer do as well.
    }
    work();
    for (std::thread& thread : threads)
        thread.join();
    m_messages.clear();
    m_turns.rethrow();

    if (isShared) {
        m_totals.bytesWritten += m_sharedOutput->written();
        if (m_options.output.empty() || m_status == EXIT_FINE)
            m_sharedOutput->finish();
        if (!m_sharedOutput->lost().empty())
            report(notKept(m_options.output, *m_sharedOutput));
        if (m_sharedOutput->appearsAtFinish() && m_status == EXIT_FINE && !m_sharedPlace.folder->sync())
            throw OutputError(errno, std::generic_category(), m_options.output);
    }
    m_folders.finish();
}

void Conversion::openSharedOutput()
{
    if (m_options.output.empty()) {
        m_sharedOutput = std::make_shared<Output>();
        return;
    }
    if (!resolve(m_options.output, m_sharedPlace))
        throw OutputError(errno, std::generic_category(), m_options.output);
    Output::Target target;
    target.name = m_options.output;
    target.place = m_sharedPlace;
    m_sharedOutput = std::make_shared<Output>(target);
}

/** What each thread does. */
void Conversion::work()
{
    try {
        std::unique_ptr<BlockConverter> const converter = makeConverter();
        Block block;
        block.bytes.resize(m_blockSize);
        while (take(block)) {
            BlockResult const result = convert(block, *converter);
            m_turns.await(block.ticket);
            accept(block, *converter, result);
            if (block.isLast && !m_turns.isAborted())
                finishInput(*block.job);
            m_turns.end();
            if (block.isLast)
                conclude(*block.job);
        }
    }
    catch (...) {
        m_turns.abort();
    }
}

/** Reads the next block. False: there are no more. */
bool Conversion::take(Block& block)
{
    std::lock_guard<std::mutex> const lock(m_readMutex);
    if (m_turns.isAborted())
        return false;
    block.failure.clear();
    block.size = 0;
    block.isFirst = false;
    block.isLast = false;
    if (!m_current && !openNext(block))
        return false;
    block.ticket = m_tickets++;
    if (block.isLast)
        return true;

    Job& job = *m_current;
    block.job = m_current;
    block.isFirst = job.bytesTaken == 0;
    try {
        bool isEmpty = true;
        while (!block.isLast && isEmpty) {
            std::copy(m_held.begin(), m_held.end(), block.bytes.begin());
            size_t const held = m_held.size();
            m_held.clear();
            if (job.isStopped) {
                block.isLast = true;
                break;
            }
            size_t const got = job.input->read(block.bytes.data() + held, block.bytes.size() - held);
            block.isLast = got == 0;
            block.size = held + got;
            size_t whole = block.size;
            if (m_threads > 1 && !block.isLast) {
                // The rest stays in the block too: that a sequence is illegal may show after it only.
                char const* const bytes = reinterpret_cast<char const*>(block.bytes.data());
                whole = kx7::wholeCharacters({bytes, block.size}, m_from.number).size();
                m_held.assign(block.bytes.data() + whole, block.bytes.data() + block.size);
            }
            isEmpty = whole == 0;
            job.bytesTaken += whole;
        }
    }
    catch (InputError const& error) {
        fail(block, error.what(), EXIT_IO);
        block.size = 0;
    }
    if (block.isLast) {
        m_current.reset();
        m_held.clear();
    }
    return true;
}

/** Makes the next input the current one; if it cannot be opened, its only block says so. False: there are no more. */
bool Conversion::openNext(Block& block)
{
    auto const job = std::make_shared<Job>();
    // Every input before it is read to its end, so that no thread that holds a permit waits for this one.
    job->permit.emplace(m_openFiles);
    job->number = m_jobs++;
    block.job = job;
    File file;
    try {
        if (!m_files.next(file))
            return false;
        job->name = inputName(file.path);
        m_targets.resolveInput(file);
        job->input = std::make_unique<Input>(file);
        m_files.check(*job->input);
        job->output = openOutput(file, *job);
        m_current = job;
    }
    catch (UsageError const& error) {
        fail(block, error.what(), EXIT_USAGE);
    }
    catch (std::system_error const& error) {
        fail(block, error.what(), EXIT_IO);
    }
    return true;
}

std::shared_ptr<Output> Conversion::openOutput(File const& file, Job& job)
{
    if (m_options.check)
        return nullptr;
    if (m_sharedOutput) {
        m_targets.checkInput(file, *job.input, *m_sharedOutput);
        m_sharedOutput->limitPermissions(job.input->mostPermissions());
        return m_sharedOutput;
    }
    // Reading tells what is wrong with a folder.
    if (m_options.inPlace && S_ISDIR(job.input->status().st_mode))
        return nullptr;
    Output::Target target = m_targets.target(file, *job.input);
    std::string failure;
    job.folder = m_folders.enter(target.place.folder, folderOf(target.name), failure);
    target.place.folder = job.folder;
    if (!failure.empty()) {
        raise(EXIT_IO);
        m_messages.post(job.number, failure);
    }
    try {
        auto output = std::make_shared<Output>(target);
        if (!m_options.inPlace)
            output->limitPermissions(job.input->mostPermissions());
        output->write(m_mark.data(), m_mark.size());
        return output;
    }
    catch (...) {
        m_folders.leave(job.folder, false);
        throw;
    }
}

/** The input of the block ends, and this is why. */
void Conversion::fail(Block& block, std::string const& reason, int status)
{
    block.failure = reason;
    block.failureStatus = status;
    block.isLast = true;
}

/** Converts a block, and writes out of it in its turn if there is no space left for more. */
BlockResult Conversion::convert(Block& block, BlockConverter& converter)
{
    Job& job = *block.job;
    try {
        if (!job.isStopped && block.failure.empty())
            return converter.convert(block.bytes.data(), block.size, block.isFirst, block.isLast, [&] {
                m_turns.await(block.ticket);
                if (job.isStopped || m_turns.isAborted())
                    throw Cancelled();
                commit(job, converter);
            });
    }
    catch (Cancelled const&) {
        converter.clear();
    }
    return {0, 0, false};
}

/** Takes what a block has become. The turn is this thread's. */
void Conversion::accept(Block& block, BlockConverter& converter, BlockResult const& result)
{
    Job& job = *block.job;
    if (!job.isStopped && !m_turns.isAborted()) {
        // A line that goes on in the next block waits for it, with the one converter that there is then.
        bool const keepsOutput = m_options.lineBuffered && !block.isLast && !result.stopped;
        if (!keepsOutput) {
            commit(job, converter);
            converter.clear();
        }
        job.offset += result.used;
        job.lineFeeds += result.lineFeeds;
        m_totals.bytesRead += result.used;
        if (result.stopped)
            job.isStopped = true;
        m_messages.progress(job.name, job.offset, job.input ? static_cast<uint64_t>(job.input->status().st_size) : 0);
    }
    else {
        converter.clear();
    }
    if (m_threads == 1 && !block.isLast && !job.isStopped) {
        m_held.assign(block.bytes.data() + result.used, block.bytes.data() + block.size);
        job.bytesTaken -= m_held.size();
    }
    if (!block.failure.empty() && !m_turns.isAborted()) {
        job.isFailed = true;
        raise(block.failureStatus);
        m_messages.post(job.number, block.failure);
    }
}

/** The last block of the input is accepted: counts it, and says how many errors there were. */
void Conversion::finishInput(Job& job)
{
    bool const reportsCount = m_options.check || m_options.failOnLoss;
    if (reportsCount && job.faults != 0) {
        m_messages.post(job.number, job.name + ": " + counted(job.faults));
        job.isFailed = true;
        raise(EXIT_BAD_DATA);
    }
    ++m_totals.files;
    m_totals.failedFiles += job.isFailed;
    m_totals.faults += job.faults;
    if (job.output && job.output != m_sharedOutput)
        m_totals.bytesWritten += job.output->written();
}

/** Writes the output and the messages that the converter holds. The turn is this thread's. */
void Conversion::commit(Job& job, BlockConverter const& converter)
{
    if (job.output) {
        try {
            job.output->write(converter.output(), converter.outputSize());
        }
        catch (OutputError const& error) {
            if (job.output == m_sharedOutput) {
                m_turns.abort();
                return;
            }
            raise(EXIT_IO);
            m_messages.post(job.number, error.what());
            job.isFailed = true;
            job.isStopped = true;
            return;
        }
    }
    uint64_t const wanted = m_options.check ? m_options.maxErrors : 1;
    uint64_t index = job.faults;
    for (Fault const& fault : converter.faults()) {
        if (index++ >= wanted)
            break;
        std::string const where =
            fault.offset == NO_OFFSET ? " " : place(job.lineFeeds + fault.lineFeeds, job.offset + fault.offset);
        m_messages.post(job.number, job.name + ":" + where + fault.reason);
    }
    job.faults += converter.faultCount();
    if (converter.faultCount() != 0 && !m_options.check && m_options.onError == OnError::STOP) {
        job.isFailed = true;
        raise(EXIT_BAD_DATA);
    }
}

/** The input is converted: what it became takes its place. */
void Conversion::conclude(Job& job)
{
    if (job.output && job.output != m_sharedOutput && !m_turns.isAborted()) {
        bool isChanged = false;
        try {
            if (!job.isFailed) {
                job.output->finish();
                isChanged = true;
                if (!job.output->lost().empty())
                    m_messages.post(job.number, notKept(job.name, *job.output));
            }
        }
        catch (OutputError const& error) {
            raise(EXIT_IO);
            m_messages.post(job.number, error.what());
        }
        job.output.reset();
        m_folders.leave(job.folder, isChanged);
    }
    // The block keeps the job until it is used again.
    job.input.reset();
    job.permit.reset();
    m_messages.finish(job.number);
}

void Conversion::raise(int status)
{
    int known = m_status;
    while (known < status && !m_status.compare_exchange_weak(known, status)) {
    }
}

}  // namespace kx7conv
