// kx7text - kx7conv: who may do what with an output.
#ifndef KX7_CLI_RIGHTS_H
#define KX7_CLI_RIGHTS_H

#include <string>
#include <sys/stat.h>

namespace kx7conv {

/**
 * Gives the file `to` what the file `from` has: owner, group, mode, access control list, other extended attributes
 * and, if `keepsTimes`, the times of `status`. Where one of them cannot be given, nobody gains a right by that.
 * `status`: that of `from`. `from` need not be open for reading.
 * `lost`: gets the names of what could not be kept.
 * False: the file's rights cannot be set at all; errno says why.
 */
bool copyRights(int from, struct stat const& status, int to, bool keepsTimes, std::string& lost);

/**
 * The permissions that what is made from an open file or folder may have at most: what its mode and its access control
 * list give to everybody of a kind; 0666 for a pipe.
 */
mode_t mostPermissions(int source, struct stat const& status);

}  // namespace kx7conv

#endif
