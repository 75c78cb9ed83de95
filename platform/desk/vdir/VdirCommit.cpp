#include "platform/desk/vdir/VdirCommit.h"

#include "platform/descriptor.h"
#include "platform/desk/vdir/CommitJournal.h"
#include "platform/files.h"
#include "platform/lock.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <fmt/format.h>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <time.h>
#include <unistd.h>
#include <utility>

namespace mervo::desk {
namespace {

using Kind = StagedOperation::Kind;
using std::filesystem::path;

constexpr std::chrono::seconds kWaitForLock(10);
constexpr std::size_t kLongestJournal = 256 * 1024 * 1024;
constexpr mode_t kPermissions = 07777;

path workFolder(const path& root)
{
    return root / ".mervo";
}

path journalFile(const path& root)
{
    return workFolder(root) / "journal";
}

/// The journal of a commit that is one rename. A power cut leaves such a one whole in any case, so that this file need
/// not outlive it: it is there for a kill between the rename and the look at what was taken out.
path stepFile(const path& root)
{
    return workFolder(root) / "step";
}

path stageFolder(const path& root)
{
    return workFolder(root) / "stage";
}

[[noreturn]] void refuse(const path& file, const std::string& why)
{
    throw VdirError(fmt::format("Nothing was changed: “{}” cannot be written ({}).", file.string(), why));
}

platform::FileLock lock(const path& root)
{
    std::error_code why;
    const path file = workFolder(root) / "lock";
    auto held = platform::FileLock::acquire(file, kWaitForLock, why);
    if (!held && why == std::errc::timed_out) {
        throw VdirError(fmt::format("Nothing was changed: process {} changes “{}” and does not come to an end.",
            platform::FileLock::lastHolder(file), root.string()));
    }
    if (!held)
        refuse(file, why.message());
    return *std::move(held);
}

void syncFolder(const path& folder)
{
    const platform::Descriptor entry(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (entry.open())
        ::fsync(entry.get());
}

void sync(const path& file, int (*how)(int))
{
    const platform::Descriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    if (!open.open() || how(open.get()) != 0)
        refuse(file, std::generic_category().message(errno));
}

bool undoAll(const std::vector<StagedOperation>& operations)
{
    bool isUndone = true;
    std::set<path> folders;
    for (auto operation = operations.rbegin(); operation != operations.rend(); ++operation) {
        isUndone = undo(*operation) && isUndone;
        folders.insert(operation->target.parent_path());
    }
    for (const path& folder : folders)
        syncFolder(folder);
    return isUndone;
}

/// Without a journal, what is staged is either not yet in its place, or replaced for good. Under the lock.
void clearStage(const path& root) noexcept
{
    std::error_code ignored;
    if (::access(journalFile(root).c_str(), F_OK) == 0 || ::access(stepFile(root).c_str(), F_OK) == 0)
        return;
    std::filesystem::remove_all(stageFolder(root), ignored);
    for (std::filesystem::directory_iterator at(workFolder(root), ignored), end; at != end; at.increment(ignored)) {
        const std::string name = at->path().filename().string();
        if (name.starts_with("journal.") || name.starts_with("step."))
            ::unlink(at->path().c_str()); // a temporary one of a process that was killed
    }
}

void drop(const path& journal)
{
    if (::unlink(journal.c_str()) != 0 && errno != ENOENT)
        refuse(journal, std::generic_category().message(errno));
    syncFolder(journal.parent_path());
}

/// Takes back what a journal says.
void takeBackBy(const path& root, const path& journal)
{
    std::error_code why;
    const auto bytes = platform::readFile(journal, kLongestJournal, &why);
    if (!bytes && why == std::errc::no_such_file_or_directory)
        return;
    const auto operations = bytes ? readJournal(root, stageFolder(root), *bytes) : std::nullopt;
    const bool isTorn = bytes && !operations && journal == stepFile(root); // by a power cut
    if (!isTorn && (!operations || !undoAll(*operations))) {
        throw VdirError(fmt::format("What another process left half done in “{}” cannot be taken back; look at the "
                                    "folder “{}” and remove it.",
            root.string(), workFolder(root).string()));
    }
    drop(journal);
}

/// Under the lock.
void takeBack(const path& root)
{
    takeBackBy(root, stepFile(root));
    takeBackBy(root, journalFile(root));
    clearStage(root);
}

path behindLink(const path& file)
{
    std::error_code error;
    if (!std::filesystem::is_symlink(file, error))
        return file;
    path real = std::filesystem::canonical(file, error);
    return error ? file : real;
}

/// The clock that file systems take their times from goes in ticks.
bool isOfThisTick(const platform::FileStamp& stamp)
{
    constexpr std::int64_t kSecond = 1'000'000'000;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME_COARSE, &now);
    return stamp.changed >= now.tv_sec * kSecond + now.tv_nsec;
}

path normal(const path& root)
{
    const path clean = root.lexically_normal();
    return clean.has_filename() ? clean : clean.parent_path();
}

} // namespace

VdirCommit::VdirCommit(path root)
    : root_(normal(root))
{
}

VdirCommit::Change& VdirCommit::add(Kind kind, const path& target)
{
    Change& change = changes_.emplace_back();
    change.operation.kind = kind;
    change.operation.target = behindLink(target.lexically_normal());
    change.operation.staged = stageFolder(root_) / fmt::to_string(changes_.size());
    return change;
}

void VdirCommit::create(const path& file, std::string bytes)
{
    add(Kind::create, file).bytes = std::move(bytes);
}

void VdirCommit::replace(const path& file, std::string_view old, std::string bytes)
{
    Change& change = add(Kind::replace, file);
    change.bytes = std::move(bytes);
    change.expected = {old.size(), itemFingerprint(old)};
}

void VdirCommit::remove(const path& file, std::string_view old)
{
    add(Kind::remove, file).expected = {old.size(), itemFingerprint(old)};
}

void VdirCommit::makeFolder(const path& folder, std::map<std::string, std::string> files)
{
    add(Kind::makeFolder, folder).files = std::move(files);
}

void VdirCommit::removeFolder(const path& folder, const std::map<std::string, std::string>& files)
{
    Change& change = add(Kind::removeFolder, folder);
    for (const auto& [name, bytes] : files)
        change.contents[name] = {bytes.size(), itemFingerprint(bytes)};
}

void VdirCommit::stage(Change& change)
{
    const StagedOperation& operation = change.operation;
    const auto write = [](const path& file, const std::string& bytes) {
        if (const auto error = platform::replaceFile(file, bytes, platform::Keep::whileRunning))
            refuse(file, error.message());
    };
    if (operation.kind == Kind::makeFolder) {
        if (::mkdir(operation.staged.c_str(), 0700) != 0)
            refuse(operation.staged, std::generic_category().message(errno));
        for (const auto& [name, bytes] : change.files)
            write(operation.staged / name, bytes);
    } else if (operation.kind == Kind::create || operation.kind == Kind::replace) {
        write(operation.staged, change.bytes);
        struct stat old { };
        if (operation.kind == Kind::replace && ::stat(operation.target.c_str(), &old) == 0)
            ::chmod(operation.staged.c_str(), old.st_mode & kPermissions);
    }
    change.operation.made = itemStamp(operation.staged).value_or(ItemStamp{});
}

/// What is one rename needs no journal to be there or not after a power cut.
bool VdirCommit::isOneStep() const
{
    const auto isFile = [](const Change& change) {
        return change.operation.kind != Kind::makeFolder && change.operation.kind != Kind::removeFolder;
    };
    return changes_.size() == 1 && isFile(changes_.front());
}

/// Above some number, one sync of the file system costs less than one for each file.
void VdirCommit::syncStaged() const
{
    constexpr std::size_t kFew = 8;
    const auto holdsFiles = [](const Change& change) { return change.operation.kind == Kind::makeFolder; };
    if (changes_.size() > kFew || std::ranges::any_of(changes_, holdsFiles))
        return sync(stageFolder(root_), ::syncfs);
    for (const Change& change : changes_) {
        if (change.operation.kind == Kind::create || change.operation.kind == Kind::replace)
            sync(change.operation.staged, ::fsync);
    }
    sync(stageFolder(root_), ::fsync);
}

void VdirCommit::applyAll()
{
    std::vector<StagedOperation> operations;
    for (const Change& change : changes_)
        operations.push_back(change.operation);
    const path journal = isOneStep() ? stepFile(root_) : journalFile(root_);
    const auto keep = isOneStep() ? platform::Keep::whileRunning : platform::Keep::throughPowerCut;
    if (const auto error = platform::replaceFile(journal, writeJournal(root_, operations), keep))
        refuse(journal, error.message());
    try {
        for (const Change& change : changes_)
            apply(change.operation, change.expected, change.contents);
    } catch (const VdirError&) {
        takeBack(root_);
        throw;
    }
    if (isOneStep())
        ::unlink(journal.c_str()); // reaches the disk with the rename, most often in one write
    std::set<path> folders;
    for (const Change& change : changes_)
        folders.insert(change.operation.target.parent_path());
    for (const path& folder : folders)
        syncFolder(folder);
    drop(journal);
}

void VdirCommit::commit()
{
    struct Forget { // nothing stays staged, however this ends
        std::vector<Change>& changes;
        ~Forget() { changes.clear(); }
    } const forget{changes_};
    if (changes_.empty())
        return;
    for (const path& folder : {root_, workFolder(root_)}) {
        if (const auto error = platform::createPrivateFolder(folder))
            refuse(folder, error.message());
    }
    const platform::FileLock held = lock(root_);
    takeBack(root_);
    struct Clear {
        const path& root;
        ~Clear() { clearStage(root); }
    };
    {
        if (const auto error = platform::createPrivateFolder(stageFolder(root_)))
            refuse(stageFolder(root_), error.message());
        const Clear clear{root_};
        for (Change& change : changes_)
            stage(change);
        syncStaged();
        applyAll();
    }
}

std::optional<platform::FileStamp> commitStamp(const path& root)
{
    constexpr std::chrono::milliseconds kPause(1);
    constexpr int kMostPauses = 10; // the longest tick, of a clock of 100 Hz
    const path folder = workFolder(normal(root));
    auto stamp = platform::fileStamp(folder);
    for (int pause = 0; stamp && isOfThisTick(*stamp) && pause < kMostPauses; ++pause) {
        std::this_thread::sleep_for(kPause);
        stamp = platform::fileStamp(folder);
    }
    return stamp;
}

std::optional<platform::FileLock> holdVdir(const path& root)
{
    const path clean = normal(root);
    if (::access(workFolder(clean).c_str(), W_OK) != 0)
        return std::nullopt;
    platform::FileLock held = lock(clean);
    takeBack(clean);
    return held;
}

void settleVdir(const path& root)
{
    const path clean = normal(root);
    if (::access(journalFile(clean).c_str(), F_OK) == 0 || ::access(stepFile(clean).c_str(), F_OK) == 0)
        holdVdir(clean);
}

} // namespace mervo::desk
