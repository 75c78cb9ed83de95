#include "platform/desk/mail/MaildirKeywords.h"

#include "platform/ascii.h"
#include "platform/desk/mail/MessageFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace mervo::desk {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

constexpr milliseconds kWait{2000}, kPause{10}; // for the lock, as long as Dovecot waits
constexpr std::time_t kStale = 10; // seconds; a lock that is older was left behind

fs::path keywordFile(const fs::path& maildir)
{
    return maildir / "dovecot-keywords";
}

[[noreturn]] void failWriting(const fs::path& file, const char* why)
{
    throw MailError(fmt::format("The keywords of mail in {} cannot be written: {}.", file.parent_path().string(), why));
}

/// The lock file, which becomes the new content when it is kept.
class KeywordLock {
public:
    explicit KeywordLock(const fs::path& file)
        : file_(file)
        , lock_(file.native() + ".lock")
    {
        const auto end = std::chrono::steady_clock::now() + kWait;
        while ((descriptor_ = open(lock_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) < 0) {
            if (errno != EEXIST)
                failWriting(file_, std::strerror(errno));
            removeStale();
            if (std::chrono::steady_clock::now() > end)
                failWriting(file_, "another program holds the lock of the file dovecot-keywords");
            std::this_thread::sleep_for(kPause);
        }
    }
    KeywordLock(const KeywordLock&) = delete;
    KeywordLock& operator=(const KeywordLock&) = delete;
    ~KeywordLock()
    {
        if (descriptor_ >= 0)
            close(descriptor_);
        if (!kept_)
            unlink(lock_.c_str());
    }

    void keep(std::string_view content)
    {
        const bool isWritten =
            write(descriptor_, content.data(), content.size()) == static_cast<ssize_t>(content.size())
            && fchmod(descriptor_, mode()) == 0 && fsync(descriptor_) == 0;
        if (!isWritten || rename(lock_.c_str(), file_.c_str()) != 0)
            failWriting(file_, std::strerror(errno));
        kept_ = true;
    }

private:
    /// Who may read the file: those who could, or for a new one those who may read the folder.
    mode_t mode() const
    {
        struct stat status { };
        if (stat(file_.c_str(), &status) == 0 || stat(file_.parent_path().c_str(), &status) == 0)
            return status.st_mode & 0666;
        return 0600;
    }

    void removeStale() const
    {
        struct stat status { };
        if (stat(lock_.c_str(), &status) == 0 && std::time(nullptr) - status.st_mtime > kStale)
            unlink(lock_.c_str());
    }

    fs::path file_, lock_;
    int descriptor_ = -1;
    bool kept_ = false;
};

} // namespace

MaildirKeywords MaildirKeywords::read(const fs::path& maildir)
{
    MaildirKeywords result;
    std::string content;
    try {
        content = readMessageFile(keywordFile(maildir));
    } catch (const MailError&) {
        return result;
    }
    std::string_view rest = content;
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        std::size_t number = kMost;
        const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
        const auto digits = static_cast<std::size_t>(end - line.data());
        if (error == std::errc() && number < kMost && digits + 1 < line.size() && line[digits] == ' ')
            result.keywords_[number] = line.substr(digits + 1);
    }
    return result;
}

char MaildirKeywords::letter(std::string_view keyword) const noexcept
{
    const auto found = std::find_if(keywords_.begin(), keywords_.end(),
        [&](const std::string& one) { return platform::ascii::equalsIgnoringCase(one, keyword); });
    return found == keywords_.end() ? '\0' : static_cast<char>('a' + (found - keywords_.begin()));
}

std::string_view MaildirKeywords::keyword(char letter) const noexcept
{
    return letter < 'a' || letter > 'z' ? std::string_view() : keywords_[static_cast<std::size_t>(letter - 'a')];
}

void MaildirKeywords::add(const fs::path& maildir, std::span<const std::string_view> wanted)
{
    const auto isKnown = [this](std::string_view keyword) { return letter(keyword) != 0; };
    if (std::all_of(wanted.begin(), wanted.end(), isKnown))
        return;
    KeywordLock lock(keywordFile(maildir));
    *this = read(maildir);
    for (const std::string_view keyword : wanted) {
        if (!isKnown(keyword))
            place(keyword, maildir);
    }
    std::string content;
    for (std::size_t i = 0; i < kMost; ++i) {
        if (!keywords_[i].empty())
            content += fmt::format("{} {}\n", i, keywords_[i]);
    }
    lock.keep(content);
}

void MaildirKeywords::place(std::string_view keyword, const fs::path& maildir)
{
    // Behind the last one: a letter that was used once may still stand in names of files.
    std::size_t free = kMost;
    while (free > 0 && keywords_[free - 1].empty())
        --free;
    if (free == kMost) {
        throw MailError(fmt::format(
            "The mail folder {} has {} keywords already, and no room for {}.", maildir.string(), kMost, keyword));
    }
    keywords_[free] = keyword;
}

} // namespace mervo::desk
