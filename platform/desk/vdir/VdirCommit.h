#pragma once

#include "platform/desk/vdir/StagedOperation.h"
#include "platform/files.h"
#include "platform/lock.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mervo::desk {

/// Several changes of files below one root that happen together or not at all, also where the process is killed at any
/// moment and over a power cut.
///
/// A commit of one file is one rename, and needs but a note for the case that the process is killed.
///
/// What is new is written below `<root>/.mervo`, which no program takes for a collection, and synced. A journal there
/// then says what is about to happen; the files are exchanged by renames; the journal goes. Whoever finds a journal
/// whose writer has ended takes the steps back (`settleVdir`). A lock there keeps our own processes apart. Another
/// program's write since our read is found after the rename, in the file that was taken out, so that no moment is left
/// in which it could be lost.
///
/// A target is named once in a commit, and is a path below the root.
class VdirCommit {
public:
    explicit VdirCommit(std::filesystem::path root);

    /// A file that must not be there.
    void create(const std::filesystem::path& file, std::string bytes);
    /// A file that must hold `old`. Keeps its permissions. A link stays, and what it leads to is replaced.
    void replace(const std::filesystem::path& file, std::string_view old, std::string bytes);
    void remove(const std::filesystem::path& file, std::string_view old);
    /// A folder that must not be there, with files of these names and bytes. Before what is created in it.
    void makeFolder(const std::filesystem::path& folder, std::map<std::string, std::string> files);
    /// A folder that holds nothing but these files, with these bytes, and hidden ones.
    void removeFolder(const std::filesystem::path& folder, const std::map<std::string, std::string>& files);

    bool empty() const { return changes_.empty(); }
    /// Throws VdirError; then nothing has changed. Either way nothing is staged any more.
    void commit();

private:
    struct Change {
        StagedOperation operation;
        std::string bytes = {};
        ExpectedBytes expected = {};
        std::map<std::string, std::string> files = {};
        std::map<std::string, ExpectedBytes> contents = {};
    };
    Change& add(StagedOperation::Kind kind, const std::filesystem::path& target);
    void stage(Change& change);
    bool isOneStep() const;
    void syncStaged() const;
    void applyAll();

    std::filesystem::path root_;
    std::vector<Change> changes_;
};

/// Takes back what a killed process left half done below a root; before anything is read from it. Costs one look where
/// there is nothing. Waits for a commit that is under way. Throws VdirError when it cannot be finished.
void settleVdir(const std::filesystem::path& root);

/// The same, and keeps commits away as long as the lock lives. Nothing where this process must not write.
std::optional<platform::FileLock> holdVdir(const std::filesystem::path& root);

/// Another one after each commit below a root: who reads several files and finds it as before has read no part of a
/// commit alone, where the stamp was taken before settleVdir(). Nothing where there was none yet. Waits for the next
/// tick of the file system's clock (4 ms) where a commit has just ended, since another one within a tick leaves no
/// trace.
std::optional<platform::FileStamp> commitStamp(const std::filesystem::path& root);

} // namespace mervo::desk
