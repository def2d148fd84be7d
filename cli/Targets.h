// kx7text - kx7conv: which file an input is written to, and what is refused because a text would be lost.
#ifndef KX7_CLI_TARGETS_H
#define KX7_CLI_TARGETS_H

#include <string>
#include <vector>

#include "EntrySet.h"
#include "Folder.h"
#include "Io.h"
#include "Options.h"

namespace kx7conv {

/** The places of outputs. */
class Targets {
public:
    explicit Targets(Options const& options);

    /**
     * Looks at what is known of the inputs before anything is written. `shared`: the output of all inputs, if there is
     * one, and `place`: where it is, unless it is standard output. Throws UsageError for an output or the name of a
     * backup that is an input, too.
     */
    void check(Output const* shared, Place const& place);

    /** In place: resolves an input that is named, which must not be another one's backup. Throws InputError and
     * UsageError. */
    void resolveInput(File& file) const;

    /** Throws UsageError for an input that is the output of all. */
    void checkInput(File const& file, Input const& input, Output const& shared) const;

    /** Where an input is written to, with -i or --output-dir. Throws UsageError and OutputError. */
    Output::Target target(File const& file, Input const& input);

private:
    bool isInput(FileId const& file) const;
    void checkBackups() const;
    void checkTrees(Output const& shared, Place const& place) const;
    FolderPointer folderFor(File const& file);
    FolderPointer makeFolders(File const& file, std::string const& path);
    FolderPointer makeOutputFolder();
    void limitOutputFolder(mode_t most);

    Options const& m_options;
    bool const m_repeats;         ///< an input may be named more than once
    EntrySet m_targets;           ///< a file is written once in a run
    EntrySet m_inputs;            ///< what the arguments name, by what it is: without names
    std::vector<FileId> m_trees;  ///< the folders among them, sorted
    mode_t m_treeMode = 0777;     ///< what all these permit, and those of a list so far
    FolderPointer m_outputFolder;
    bool m_isOutputFolderOurs = false;  ///< made in this run
    FolderPointer m_folder;             ///< of the last output
    FileId m_tree;                      ///< of its input
    std::string m_path;                 ///< its path below the output folder
};

}  // namespace kx7conv

#endif
