// kx7text - kx7conv: paths and names of files, as text.
#include "Paths.h"

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sys/random.h>
#include <unistd.h>

namespace kx7conv {

namespace {

char const TEMPORARY_PREFIX[] = ".kx7conv-";
constexpr size_t TEMPORARY_DIGITS = 16;

}  // namespace

std::string folderOf(std::string const& path)
{
    size_t const slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(std::string const& path)
{
    size_t const slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string baseName(std::string const& path)
{
    size_t const last = path.find_last_not_of('/');
    size_t const end = last == std::string::npos ? 0 : last + 1;
    size_t const slash = end == 0 ? std::string::npos : path.rfind('/', end - 1);
    return slash == std::string::npos ? path.substr(0, end) : path.substr(slash + 1, end - slash - 1);
}

std::string joined(std::string const& folder, std::string const& name)
{
    return folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
}

std::string procPath(int file)
{
    return "/proc/self/fd/" + std::to_string(file);
}

std::string originalOf(std::string const& backup, std::string const& suffix)
{
    size_t const size = backup.size();
    if (suffix.empty() || size <= suffix.size() || backup.compare(size - suffix.size(), size, suffix) != 0)
        return {};
    return backup.substr(0, size - suffix.size());
}

std::string temporaryName()
{
    uint64_t number = 0;
    if (getrandom(&number, sizeof number, 0) != static_cast<ssize_t>(sizeof number)) {
        // Taken names are tried again, so any will do.
        static std::atomic<uint32_t> s_count{0};
        number = static_cast<uint64_t>(getpid()) << 32 | s_count++;
    }
    char digits[TEMPORARY_DIGITS + 1];
    snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(number));
    return std::string(TEMPORARY_PREFIX) + digits;
}

bool isTemporaryName(char const* name)
{
    size_t const length = sizeof TEMPORARY_PREFIX - 1;
    if (strncmp(name, TEMPORARY_PREFIX, length) != 0)
        return false;
    name += length;
    return strspn(name, "0123456789abcdef") == TEMPORARY_DIGITS && name[TEMPORARY_DIGITS] == 0;
}

}  // namespace kx7conv
