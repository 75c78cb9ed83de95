#include "platform/desk/notebook/NoteCache.h"

#include "platform/desk/cache/CacheText.h"

#include <exception>

namespace mervo::desk {
namespace {

constexpr std::size_t kMostLooks = 64; // at notes that were not asked for, to see whether they are gone

void putNote(std::string& to, std::string_view note, const NoteCache::Known& known)
{
    put(to, note);
    put(to, known.stamp);
    put(to, known.hash);
    put(to, known.name);
    put(to, known.length);
    put(to, known.checksum);
}

bool stands(std::string_view note, const NoteCache::Known& known)
{
    return known.isUsed || platform::fileStamp(note) == known.stamp;
}

} // namespace

NoteCache::NoteCache(const std::filesystem::path& root)
    : file_("notes", root)
{
}

void NoteCache::open()
{
    if (isOpen_)
        return;
    isOpen_ = true;
    try {
        read();
    } catch (const std::exception&) {
        known_.clear(); // a damaged one
    }
}

void NoteCache::read()
{
    CacheTaker from(file_.open());
    std::uint64_t offset = 0;
    while (!from.isDone()) {
        const std::string_view note = from.text();
        Known known;
        known.stamp = from.stamp();
        known.hash = from.number();
        known.name = from.text();
        known.length = from.number();
        known.checksum = from.number();
        known.offset = offset;
        offset += known.length;
        known_.insert_or_assign(note, known);
    }
}

const NoteCache::Known* NoteCache::find(std::string_view note, const platform::FileStamp& stamp)
{
    open();
    const auto found = known_.find(note);
    if (found == known_.end() || found->second.stamp != stamp)
        return nullptr;
    found->second.isUsed = true;
    return &found->second;
}

std::optional<std::string> NoteCache::text(const Known& known) const
{
    auto text = file_.piece(known.offset, known.length);
    return text && cacheChecksum(*text) == known.checksum ? std::move(text) : std::nullopt;
}

void NoteCache::keep(std::string_view note, const platform::FileStamp& stamp, std::uint64_t hash, std::string_view name,
    std::string_view text)
{
    drop(note);
    if (!stamp.isSettled() || freshTexts_.size() + text.size() > CacheFile::kLongest)
        return;
    Known fresh;
    fresh.stamp = stamp;
    fresh.hash = hash;
    fresh.name = name;
    fresh.length = text.size();
    fresh.checksum = cacheChecksum(text);
    putNote(freshFront_, note, fresh);
    freshTexts_ += text;
    isChanged_ = true;
}

void NoteCache::drop(std::string_view note)
{
    open();
    isChanged_ = known_.erase(note) > 0 || isChanged_;
}

bool NoteCache::hasGone() const
{
    std::size_t looks = 0;
    for (const auto& [note, known] : known_) {
        if (!known.isUsed && looks++ < kMostLooks && !stands(note, known))
            return true;
    }
    return false;
}

void NoteCache::write() noexcept
{
    try {
        if (!isChanged_ && !hasGone())
            return;
        std::string front, texts;
        for (const auto& [note, known] : known_) {
            const auto text = stands(note, known) ? file_.piece(known.offset, known.length) : std::nullopt;
            if (!text)
                continue;
            putNote(front, note, known);
            texts += *text;
        }
        file_.write(front + freshFront_, texts + freshTexts_);
    } catch (const std::exception&) {
        return; // without a cache the next call reads the notes
    }
}

} // namespace mervo::desk
