// kx7text - kx7conv: how many inputs are open at once.
#ifndef KX7_CLI_OPENFILES_H
#define KX7_CLI_OPENFILES_H

#include <condition_variable>
#include <mutex>

namespace kx7conv {

/** Bounds the inputs that are open at once, with their outputs, by the descriptors that the process may have. */
class OpenFiles {
public:
    /** The permission to have one input open, given back when its owner ends. */
    class Permit {
    public:
        /** Waits until there is one. */
        explicit Permit(OpenFiles& files) : m_files(files) { files.enter(); }
        ~Permit() { m_files.leave(); }
        Permit(Permit const&) = delete;
        Permit& operator=(Permit const&) = delete;

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
