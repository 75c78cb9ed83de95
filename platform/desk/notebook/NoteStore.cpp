#include "platform/desk/notebook/NoteStore.h"

#include "platform/desk/notebook/HtmlText.h"
#include "platform/unicode.h"

#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <functional>
#include <set>
#include <sys/stat.h>
#include <utility>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kListed(1); // how long a list stands for the columns of one script's question
constexpr std::chrono::seconds kPatience(10); // with another process's change
constexpr int kMostNames = 10'000; // that are tried for a file

std::string stemOf(const fs::path& note)
{
    return onOneLine(note.stem().native());
}

[[noreturn]] void failToWrite(std::string_view what, const std::error_code& error)
{
    throw NoteError(fmt::format("{} cannot be written: {}. Nothing was changed.", what, error.message()));
}

std::string noteNamed(std::string_view name)
{
    return fmt::format("The note “{}”", name);
}

[[noreturn]] void failAsGone(const fs::path& note)
{
    throw NoteGone(fmt::format("{} is no longer there.", noteNamed(stemOf(note))));
}

bool isThere(const fs::path& path)
{
    struct stat status { };
    return ::lstat(path.c_str(), &status) == 0;
}

NoteKind kindOf(const fs::path& note)
{
    return noteKind(note.filename().native()).value_or(NoteKind::text);
}

std::size_t hashOf(std::string_view bytes)
{
    return std::hash<std::string_view>()(bytes);
}

/// Names in a folder, without regard to letter case: some file systems have none, and the owner's other devices may.
std::set<std::string> namesIn(const fs::path& folder)
{
    std::set<std::string> names;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error))
        names.insert(platform::foldCase(entry.path().filename().native()));
    return names;
}

/// Tries "Name.html", "Name 2.html" and so on until `take` does not answer that there is such a file. The path taken.
template <typename Take>
fs::path underFreeName(const fs::path& folder, const std::string& stem, const std::string& suffix, const Take& take)
{
    const std::set<std::string> used = namesIn(folder);
    for (int number = 1; number <= kMostNames; ++number) {
        const std::string name = number == 1 ? stem + suffix : fmt::format("{} {}{}", stem, number, suffix);
        if (used.contains(platform::foldCase(name)))
            continue;
        const std::error_code error = take(folder / name);
        if (error == std::errc::file_exists)
            continue;
        if (error)
            failToWrite(fmt::format("{}", (folder / name).string()), error);
        return folder / name;
    }
    failToWrite(folder.string(), std::make_error_code(std::errc::file_exists));
}

void makeFolder(const fs::path& folder)
{
    if (const auto error = platform::createPrivateFolder(folder))
        failToWrite(fmt::format("The folder {}", folder.string()), error);
}

/// To another file system: the copy keeps the time of the note, which goes last and only as it was copied.
std::error_code copyAndRemove(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    const auto stamp = platform::fileStamp(from);
    struct stat status { };
    if (!stamp || ::stat(from.c_str(), &status) != 0)
        return {errno, std::generic_category()};
    const auto bytes = platform::readFile(from, platform::kLongestFile, &error);
    if (!bytes)
        return error;
    if (const auto failed = platform::createFile(to, *bytes))
        return failed;
    const timespec times[] = {status.st_atim, status.st_mtim};
    ::utimensat(AT_FDCWD, to.c_str(), times, 0);
    if (platform::fileStamp(from) == stamp && fs::remove(from, error))
        return {};
    fs::remove(to);
    return error ? error : std::make_error_code(std::errc::operation_canceled);
}

/// A link is moved as one, and leads to the same file from its new place.
std::error_code moveLink(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    const fs::path target = fs::canonical(from, error);
    if (!error)
        fs::create_symlink(target, to, error);
    if (!error)
        fs::remove(from, error);
    return error;
}

std::error_code moveTo(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    if (fs::is_symlink(from, error))
        return moveLink(from, to);
    error = platform::renameWithoutReplacing(from, to);
    return error == std::errc::cross_device_link && fs::is_regular_file(from) ? copyAndRemove(from, to) : error;
}

} // namespace

NoteStore::NoteStore(NotesSettings settings, fs::path lock)
    : settings_(std::move(settings))
    , lock_(std::move(lock))
    , cache_(settings_.root)
{
}

NoteStore::~NoteStore()
{
    cache_.write();
}

std::vector<NoteAccount> NoteStore::accounts() const
{
    if (isFolderMissing(settings_)) {
        throw NoteError(fmt::format(
            "The folder of notes {} is not there; see \"path\" of [notes] in desk.toml.", settings_.root.string()));
    }
    return noteAccounts(settings_.root);
}

const std::vector<NoteFile>& NoteStore::notes(const fs::path& folder, Look look)
{
    const auto now = std::chrono::steady_clock::now();
    const auto known = listings_.find(folder.native());
    if (look == Look::asBefore && known != listings_.end() && now - known->second.when < kListed)
        return known->second.notes;
    return (listings_[folder.native()] = {notesIn(folder), now}).notes;
}

std::string NoteStore::bytesOf(const fs::path& note, platform::FileStamp& stamp) const
{
    std::error_code why;
    auto bytes = platform::readFile(note, platform::kLongestFile, &why, &stamp);
    if (bytes)
        return *std::move(bytes);
    if (why == std::errc::no_such_file_or_directory)
        failAsGone(note);
    throw NoteError(fmt::format("{} cannot be read: {}.", noteNamed(stemOf(note)), why.message()));
}

NoteStore::Reading& NoteStore::readAnew(const std::string& note)
{
    Reading reading;
    const std::string bytes = bytesOf(note, reading.stamp);
    reading.hash = hashOf(bytes);
    NoteContent content = contentOf(kindOf(note), bytes);
    reading.name = content.name.empty() ? stemOf(note) : std::move(content.name);
    reading.text = std::move(content.text);
    cache_.keep(note, reading.stamp, reading.hash, reading.name, *reading.text);
    return readings_[note] = std::move(reading);
}

/// What is known of a note whose file has this stamp.
NoteStore::Reading* NoteStore::known(const std::string& note, const platform::FileStamp& stamp)
{
    const auto found = readings_.find(note);
    if (found != readings_.end() && found->second.stamp == stamp)
        return &found->second;
    const NoteCache::Known* cached = cache_.find(note, stamp);
    if (cached == nullptr)
        return nullptr;
    Reading reading{.stamp = stamp, .hash = cached->hash, .name = std::string(cached->name), .text = {}};
    return &(readings_[note] = std::move(reading));
}

const std::string& NoteStore::read(
    const std::string& note, const std::optional<platform::FileStamp>& stamp, NotePart part)
{
    Reading* reading = stamp ? known(note, *stamp) : nullptr;
    if (reading != nullptr && part == NotePart::text && !reading->text) {
        const NoteCache::Known* cached = cache_.find(note, *stamp);
        reading->text = cached == nullptr ? std::nullopt : cache_.text(*cached);
        if (!reading->text)
            reading = nullptr;
    }
    if (reading == nullptr)
        reading = &readAnew(note);
    return part == NotePart::name ? reading->name : *reading->text;
}

const std::string& NoteStore::read(const fs::path& note, NotePart part)
{
    return read(note.native(), platform::fileStamp(note), part);
}

const std::string& NoteStore::readOfMany(const std::string& note, const platform::FileStamp& stamp, NotePart part)
{
    try {
        return read(note, stamp, part);
    } catch (const NoteError&) { // the doctor names it
        unread_ = part == NotePart::name ? stemOf(note) : std::string();
        return unread_;
    }
}

std::string NoteStore::body(const fs::path& note)
{
    Reading reading;
    const std::string bytes = bytesOf(note, reading.stamp);
    const auto known = readings_.find(note.native());
    if (known == readings_.end() || known->second.hash != hashOf(bytes))
        readAnew(note.native());
    handedOut_ = {note, bodyOf(kindOf(note), bytes)};
    return handedOut_.body;
}

/// The new bytes of a note whose bytes are these now.
std::string NoteStore::changed(const fs::path& note, std::string_view bytes, std::string_view html) const
{
    const NoteKind kind = kindOf(note);
    for (const std::string& before : {handedOut_.note == note ? handedOut_.body : std::string(), bodyOf(kind, bytes)}) {
        if (!before.empty() && html.starts_with(before)) {
            html.remove_prefix(before.size());
            return html.empty() ? std::string(bytes) : withMore(kind, bytes, html);
        }
    }
    const auto known = readings_.find(note.native());
    if (known != readings_.end() && known->second.hash != hashOf(bytes)) {
        throw NoteError(
            fmt::format("{} was changed by another program while this ran; nothing was written, so call again.",
                noteNamed(known->second.name)));
    }
    return withBody(kind, bytes, html);
}

platform::FileLock NoteStore::turn() const
{
    makeFolder(lock_.parent_path());
    std::error_code why;
    auto lock = platform::FileLock::acquire(lock_, kPatience, why);
    if (!lock)
        throw NoteError(fmt::format("The notes cannot be changed now: {} ({}).", why.message(), lock_.string()));
    return *std::move(lock);
}

void NoteStore::setBody(const fs::path& note, std::string_view html)
{
    const platform::FileLock held = turn();
    platform::FileStamp stamp; // from before: what is written while the note is read changes it
    const std::string bytes = bytesOf(note, stamp);
    const std::string result = changed(note, bytes, html);
    if (result.size() > platform::kLongestFile)
        throw NoteError(fmt::format("{} would be longer than 16 MiB; nothing was written.", noteNamed(stemOf(note))));
    if (result == bytes)
        return;
    if (const auto error = platform::replaceUnchanged(note, result, stamp)) {
        if (error == std::errc::operation_canceled) {
            throw NoteError(
                fmt::format("{} was changed by another program while this ran; nothing was written, so call "
                            "again.",
                    noteNamed(stemOf(note))));
        }
        failToWrite(noteNamed(stemOf(note)), error);
    }
    forget(note);
}

fs::path NoteStore::add(const fs::path& folder, std::string_view html)
{
    const bool isHtml = settings_.format == NoteFormat::html;
    const NoteKind kind = isHtml ? NoteKind::html : NoteKind::markdown;
    const std::string bytes = withBody(kind, isHtml ? kHtmlPreamble : std::string_view(), html);
    const std::string stem = fileNameOfTitle(contentOf(kind, bytes).name);
    const platform::FileLock held = turn();
    makeFolder(folder);
    fs::path note = underFreeName(folder, stem, isHtml ? ".html" : ".md",
        [&](const fs::path& file) { return platform::createFile(file, bytes); });
    forget(note);
    return note;
}

fs::path NoteStore::move(const fs::path& what, const fs::path& folder)
{
    if (what.parent_path() == folder)
        return what;
    const platform::FileLock held = turn();
    if (!isThere(what))
        failAsGone(what);
    makeFolder(folder);
    const bool isNote = noteKind(what.filename().native()).has_value();
    const std::string stem = (isNote ? what.stem() : what.filename()).native();
    fs::path moved = underFreeName(folder, stem, isNote ? what.extension().native() : std::string(),
        [&](const fs::path& file) { return moveTo(what, file); });
    forget(what);
    cache_.drop(what.native());
    return moved;
}

void NoteStore::remove(const fs::path& note, const NoteFolder& folder)
{
    if (!folder.isTrash) {
        move(note, folder.trash);
        return;
    }
    const platform::FileLock held = turn();
    std::error_code error;
    if (!fs::remove(note, error) && !error)
        failAsGone(note);
    if (error)
        throw NoteError(fmt::format("{} cannot be deleted: {}.", noteNamed(stemOf(note)), error.message()));
    forget(note);
    cache_.drop(note.native());
}

fs::path NoteStore::addFolder(const fs::path& parent, std::string_view name)
{
    const platform::FileLock held = turn();
    makeFolder(parent);
    fs::path folder = underFreeName(parent, fileNameOfTitle(name), "", [](const fs::path& path) {
        return ::mkdir(path.c_str(), 0700) == 0 ? std::error_code() : std::error_code(errno, std::generic_category());
    });
    forget(folder);
    return folder;
}

void NoteStore::forget(const fs::path& note)
{
    readings_.erase(note.native());
    listings_.clear();
    if (handedOut_.note == note)
        handedOut_ = {};
}

} // namespace mervo::desk
