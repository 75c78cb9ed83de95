#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace mervo::mcp {

/// Cuts a stream of bytes into lines, whatever pieces it arrives in.
///
/// A line ends with a line feed; a carriage return before it, a byte order mark and lines of blanks alone are dropped.
/// A line longer than `longest` bytes is reported once and thrown away as it arrives, so that memory stays bounded;
/// the lines after it are read as usual.
class LineReader {
public:
    struct Sink {
        std::function<void(std::string_view)> line; ///< valid during the call only
        std::function<void()> tooLong;
    };

    /// Room for every call that the gate takes: 16 MiB of arguments, which JSON may write at six bytes for one.
    static constexpr std::size_t kLongest = std::size_t{100} * 1024 * 1024;

    explicit LineReader(Sink sink, std::size_t longest = kLongest);

    void feed(std::string_view bytes);
    /// The input has ended: what is left without an end of line is a line too.
    void finish();

private:
    void keep(std::string_view piece);
    void endLine(std::string_view last);
    void deliver(std::string_view line) const;

    Sink sink_;
    std::size_t longest_;
    std::string begun_; ///< the start of a line whose end has not arrived
    bool skipping_ = false; ///< inside a line that is too long
};

} // namespace mervo::mcp
