// kx7text - kx7conv: how many inputs are open at once.
#ifndef KX7_CLI_OPENFILES_H
#define KX7_CLI_OPENFILES_H

#include <condition_variable>
#include <mutex>

namespace kx7conv {

/** Bounds the inputs that are open at once, with their outputs, by the descriptors that the process may have. */
class OpenFiles {
public:
    /** An input that is open, or about to be. */
    class Place {
    public:
        /** Waits until there is a place. */
        explicit Place(OpenFiles& files) : m_files(files) { files.enter(); }
        ~Place() { m_files.leave(); }
        Place(Place const&) = delete;
        Place& operator=(Place const&) = delete;

    private:
        OpenFiles& m_files;
    };

    /** `most`: that are wanted. There are fewer where there are no descriptors for so many, but always one. */
    explicit OpenFiles(unsigned int most);

private:
    void enter();
    void leave();

    std::mutex m_mutex;
    std::condition_variable m_left;
    unsigned int m_free;
};

}  // namespace kx7conv

#endif
