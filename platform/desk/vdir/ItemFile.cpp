#include "platform/desk/vdir/ItemFile.h"

#include "platform/files.h"

#include <chrono>
#include <sys/stat.h>

namespace mervo::desk {
namespace {

constexpr std::int64_t kNanoseconds = 1'000'000'000;
constexpr int kTries = 3;

} // namespace

bool ItemStamp::isSettled() const
{
    constexpr std::chrono::seconds kGrain(3);
    const auto settled = std::chrono::system_clock::now().time_since_epoch() - kGrain;
    return modified < std::chrono::duration_cast<std::chrono::nanoseconds>(settled).count();
}

std::optional<ItemStamp> itemStamp(const std::filesystem::path& file)
{
    struct stat found { };
    if (::lstat(file.c_str(), &found) != 0)
        return std::nullopt;
    return ItemStamp{
        found.st_ino, found.st_size, std::int64_t{found.st_mtim.tv_sec} * kNanoseconds + found.st_mtim.tv_nsec};
}

std::optional<ItemBytes> readItem(const std::filesystem::path& file, std::string& why)
{
    for (int tries = 0; tries < kTries; ++tries) {
        std::error_code error;
        const auto before = itemStamp(file);
        auto bytes = platform::readFile(file, kLongestItem, &error);
        if (!before || !bytes) {
            why = error.message();
            return std::nullopt;
        }
        if (itemStamp(file) == before)
            return ItemBytes{*std::move(bytes), *before};
    }
    why = "another program writes it all the time";
    return std::nullopt;
}

std::uint64_t itemFingerprint(std::string_view bytes)
{
    std::uint64_t value = 0xCBF29CE484222325U; // FNV-1a
    for (const char c : bytes)
        value = (value ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
    return value;
}

} // namespace mervo::desk
