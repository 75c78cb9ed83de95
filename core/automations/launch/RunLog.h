#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace mervo {

/// The log of an automation's runs, to which the supervisor, the wrapper script and the programs of a run append. A
/// line that cannot be written is lost and nothing else.
class RunLog {
public:
    explicit RunLog(std::filesystem::path file)
        : file_(std::move(file))
    {
    }

    const std::filesystem::path& file() const { return file_; }

    /// The moment as it stands in lines: local time, "2026-03-01 08:15:42".
    static std::string now();

    void line(std::string_view text) const noexcept;
    /// "[<now>] <text>"
    void stamped(std::string_view text) const noexcept;
    /// The line that ends a run.
    void end(std::string_view name, int code) const noexcept;

    /// A log of more than 1 MiB becomes the older log, in the place of that.
    void rotate(const std::filesystem::path& older) const noexcept;

private:
    std::filesystem::path file_;
};

} // namespace mervo
