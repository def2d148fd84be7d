// kx7text - kx7conv: who may do what with an output.
#include "Rights.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

#include "Paths.h"

namespace kx7conv {

namespace {

constexpr mode_t PERMISSIONS = 07777;
char const ACL[] = "system.posix_acl_access";

/** Calls `get` with a buffer that is large enough for what it gets. False: errno says what failed. */
template <class Get>
bool getAll(std::string& value, Get get)
{
    value.resize(512);
    for (;;) {
        ssize_t size = get(&value[0], value.size());
        if (size != -1) {
            value.resize(static_cast<size_t>(size));
            return true;
        }
        if (errno != ERANGE || (size = get(nullptr, 0)) == -1)
            return false;
        value.resize(static_cast<size_t>(size) + 1);
    }
}

/** The value of an attribute. False: errno says why there is none. */
bool getAttribute(std::string const& path, std::string const& name, std::string& value)
{
    return getAll(value, [&](char* buffer, size_t size) { return getxattr(path.c_str(), name.c_str(), buffer, size); });
}

bool setAttribute(std::string const& path, std::string const& name, std::string const& value)
{
    return setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
}

/** The names of a file's attributes. False: they cannot be told. */
bool listAttributes(std::string const& path, std::vector<std::string>& names)
{
    std::string all;
    if (!getAll(all, [&](char* buffer, size_t size) { return listxattr(path.c_str(), buffer, size); }))
        return errno == EOPNOTSUPP;
    for (char const* name = all.data(); name < all.data() + all.size(); name += strlen(name) + 1)
        names.emplace_back(name);
    return true;
}

/** An access control list as the kernel hands it out: little-endian, a version and entries. */
class AccessList {
public:
    /** Of the attribute's value. */
    explicit AccessList(std::string const& value) : m_value(value) {}

    /** The permissions of the entry of the owning group, which `group` replaces. */
    mode_t group() const { return permissions(find(GROUP_OBJECT)); }
    void setGroup(mode_t group)
    {
        if (size_t const at = find(GROUP_OBJECT))
            m_value[at + 2] = static_cast<char>(group);
    }

    /** What every single user and group that is named may do, and the mask allows. */
    mode_t named() const
    {
        size_t const mask = find(MASK);
        return common(USER) & common(GROUP) & (mask == 0 ? 7U : permissions(mask));
    }

    /** What every single group that is named may do. */
    mode_t namedGroups() const { return common(GROUP); }

    std::string const& value() const { return m_value; }

private:
    static constexpr size_t HEADER = 4;
    static constexpr size_t ENTRY = 8;
    static constexpr unsigned int USER = 0x02;
    static constexpr unsigned int GROUP_OBJECT = 0x04;
    static constexpr unsigned int GROUP = 0x08;
    static constexpr unsigned int MASK = 0x10;

    unsigned int tag(size_t at) const { return static_cast<unsigned char>(m_value[at]); }
    mode_t permissions(size_t at) const { return at == 0 ? 0 : static_cast<unsigned char>(m_value[at + 2]) & 7U; }
    /** Where the entry of a tag is, 0: nowhere. */
    size_t find(unsigned int wanted) const
    {
        for (size_t at = HEADER; at + ENTRY <= m_value.size(); at += ENTRY)
            if (tag(at) == wanted)
                return at;
        return 0;
    }

    /** The permissions that all entries of a tag have. */
    mode_t common(unsigned int wanted) const
    {
        mode_t common = 7;
        for (size_t at = HEADER; at + ENTRY <= m_value.size(); at += ENTRY)
            if (tag(at) == wanted)
                common &= permissions(at);
        return common;
    }

    std::string m_value;
};

mode_t groupOf(mode_t mode)
{
    return mode >> 3 & 7U;
}

mode_t withGroup(mode_t mode, mode_t group)
{
    return (mode & ~static_cast<mode_t>(S_IRWXG)) | (group & 7U) << 3;
}

/** The same permissions for the group and the others. */
mode_t withAll(mode_t mode, mode_t permissions)
{
    return withGroup((mode & ~static_cast<mode_t>(S_IRWXO)) | (permissions & 7U), permissions);
}

bool contains(std::vector<std::string> const& names, char const* name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

void add(std::string& list, std::string const& name)
{
    list += (list.empty() ? "" : ", ") + name;
}

/** Whether an attribute is a checksum of the file. */
bool describesText(std::string const& name)
{
    return name == "security.ima" || name == "security.evm";
}

}  // namespace

bool copyRights(int from, struct stat const& status, int to, bool keepsTimes, std::string& lost)
{
    struct stat now;
    if (fstat(to, &now) == -1)
        return false;
    // Not root's files only: a group that one belongs to may be given.
    if (now.st_uid != status.st_uid || now.st_gid != status.st_gid) {
        if (fchown(to, status.st_uid, status.st_gid) == -1)
            static_cast<void>(fchown(to, static_cast<uid_t>(-1), status.st_gid) == 0);
        if (fstat(to, &now) == -1)
            return false;
    }
    bool const ownerKept = now.st_uid == status.st_uid;
    bool const groupKept = now.st_gid == status.st_gid;
    if (!ownerKept)
        add(lost, "owner");
    if (!groupKept)
        add(lost, "group");
    // Attributes take permission to write.
    if ((now.st_mode & S_IWUSR) == 0) {
        now.st_mode = S_IRUSR | S_IWUSR;
        if (fchmod(to, now.st_mode) == -1)
            return false;
    }

    std::string const source = procPath(from);
    std::string const target = procPath(to);
    std::vector<std::string> names;
    std::vector<std::string> inherited;
    bool const isListed = listAttributes(source, names) && listAttributes(target, inherited);
    if (!isListed)
        add(lost, "extended attributes");

    // What the folder gives to new files would be added to the old file's rights.
    if (contains(inherited, ACL) && removexattr(target.c_str(), ACL) == -1 && errno != ENODATA)
        return false;

    for (std::string const& name : names) {
        std::string value;
        std::string present;
        if (name == ACL || describesText(name) || (name == "security.capability" && !ownerKept))
            continue;
        if (!getAttribute(source, name, value) ||
            ((!getAttribute(target, name, present) || present != value) && !setAttribute(target, name, value)))
            add(lost, name);
    }

    mode_t mode = status.st_mode & PERMISSIONS;
    if (!ownerKept)
        mode &= ~static_cast<mode_t>(S_ISUID);
    if (!groupKept)
        mode &= ~static_cast<mode_t>(S_ISGID);
    std::string value;
    if (!isListed) {
        mode = withAll(mode, groupOf(mode) & mode);
    }
    else if (!contains(names, ACL)) {
        // Members of one group now count as others, and others as members.
        if (!groupKept)
            mode = withAll(mode, groupOf(mode) & mode);
    }
    else if (getAttribute(source, ACL, value)) {
        AccessList list(value);
        mode_t const least = list.group() & groupOf(mode) & mode;
        if (!groupKept) {
            // A member of the new group may be shut out as one of a group that is named.
            list.setGroup(least & list.namedGroups());
            mode = (mode & ~static_cast<mode_t>(S_IRWXO)) | least;
        }
        if (!setAttribute(target, ACL, list.value())) {
            add(lost, "access control list");
            mode = withAll(mode, least & list.named());
        }
    }
    else {
        add(lost, "access control list");
        mode = withAll(mode, 0);
    }
    bool const isSet = names.empty() && inherited.empty() && (now.st_mode & PERMISSIONS) == mode;
    if (!isSet && fchmod(to, mode) == -1)
        return false;
    if (keepsTimes) {
        timespec const times[] = {status.st_atim, status.st_mtim};
        if (futimens(to, times) == -1)
            add(lost, "times");
    }
    return true;
}

mode_t mostPermissions(int source, struct stat const& status)
{
    bool const isFolder = S_ISDIR(status.st_mode);
    if (!isFolder && !S_ISREG(status.st_mode))
        return 0666;
    mode_t const mode = status.st_mode & (isFolder ? 0777 : 0666);
    if ((mode & (S_IRWXG | S_IRWXO)) == 0 || fgetxattr(source, ACL, nullptr, 0) <= 0)
        return mode;
    std::string value;
    if (!getAttribute(procPath(source), ACL, value))
        return withAll(mode, 0);
    // With an access control list the group's bits are its mask. Who is named in it counts as one of the new file's
    // group, or of the others.
    AccessList const list(value);
    mode_t const named = list.named();
    return withGroup((mode & ~static_cast<mode_t>(S_IRWXO)) | (mode & named & 7U),
                     groupOf(mode) & list.group() & named);
}

}  // namespace kx7conv
