#include "platform/desk/cache/CacheFile.h"

#include "platform/desk/cache/CacheText.h"
#include "platform/desk/settings/Places.h"
#include "platform/files.h"

#include <cerrno>
#include <exception>
#include <fcntl.h>
#include <fmt/format.h>
#include <span>
#include <sys/stat.h>

namespace mervo::desk {
namespace {

constexpr std::string_view kMark = "mervo-cache 1\n";
constexpr std::size_t kHead = kMark.size() + 4 * sizeof(std::uint64_t) + 2 * sizeof(std::uint64_t);

/// What every file begins with.
std::string markOfProgram()
{
    std::string mark(kMark);
    put(mark, platform::fileStamp("/proc/self/exe").value_or(platform::FileStamp()));
    return mark;
}

bool readAt(const platform::Descriptor& file, std::uint64_t offset, std::span<char> into) noexcept
{
    return ::pread(file.get(), into.data(), into.size(), static_cast<off_t>(offset))
        == static_cast<ssize_t>(into.size());
}

} // namespace

CacheFile::CacheFile(std::string_view kind, const std::filesystem::path& root)
    : file_(cacheFolder() / kind
        / fmt::format("{}-{:016x}", ::program_invocation_short_name, cacheChecksum(root.lexically_normal().native())))
{
}

std::string_view CacheFile::open() noexcept
{
    try {
        opened_ = platform::Descriptor(::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
        struct stat status { };
        if (!opened_.open() || ::fstat(opened_.get(), &status) != 0 || !S_ISREG(status.st_mode))
            return {};
        length_ = static_cast<std::uint64_t>(status.st_size);
        bytes_.resize(kHead);
        const std::string mark = markOfProgram();
        if (length_ < kHead || length_ > kLongest || !readAt(opened_, 0, bytes_) || !bytes_.starts_with(mark))
            return {};
        CacheTaker head(std::string_view(bytes_).substr(mark.size()));
        const std::uint64_t checksum = head.number(), front = head.number();
        if (front > length_ - kHead)
            return {};
        bytes_.resize(front);
        return readAt(opened_, kHead, bytes_) && cacheChecksum(bytes_) == checksum ? bytes_ : std::string_view();
    } catch (const std::exception&) {
        return {};
    }
}

std::optional<std::string> CacheFile::piece(std::uint64_t offset, std::size_t length) const noexcept
{
    const std::uint64_t start = kHead + bytes_.size();
    if (start > length_ || offset > length_ - start || length > length_ - start - offset)
        return std::nullopt;
    try {
        std::string bytes(length, '\0');
        return readAt(opened_, start + offset, bytes) ? std::optional(std::move(bytes)) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

void CacheFile::write(std::string_view front, std::string_view rest) const noexcept
{
    try {
        if (front.size() + rest.size() > kLongest - kHead)
            return;
        std::string bytes = markOfProgram();
        bytes.reserve(kHead + front.size() + rest.size());
        put(bytes, cacheChecksum(front));
        put(bytes, front);
        bytes += rest;
        if (!platform::createPrivateFolder(file_.parent_path()))
            platform::replaceFile(file_, bytes, platform::Keep::whileRunning);
    } catch (const std::exception&) {
        return; // without a cache the next call reads the files
    }
}

} // namespace mervo::desk
