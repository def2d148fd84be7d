// kx7text - kx7conv: paths and names of files, as text.
#ifndef KX7_CLI_PATHS_H
#define KX7_CLI_PATHS_H

#include <string>

namespace kx7conv {

/** The folder of a path, "." where it names none. */
std::string folderOf(std::string const& path);

/** What a path names in its folder; empty if it ends with a slash. */
std::string nameOf(std::string const& path);

/** The last name of a path, whether a slash follows it or not. */
std::string baseName(std::string const& path);

/** The path of a name in a folder; the name itself if `folder` is empty. */
std::string joined(std::string const& folder, std::string const& name);

/** A path to an open file, for what takes one: attributes of a file not open for reading, a name for one without. */
std::string procPath(int file);

/** The name of the file whose backup has that name. Empty: it is no name of a backup. */
std::string originalOf(std::string const& backup, std::string const& suffix);

/** A name for an unfinished file, another one each time. */
std::string temporaryName();

/** Whether a name is like those of temporaryName(). */
bool isTemporaryName(char const* name);

}  // namespace kx7conv

#endif
