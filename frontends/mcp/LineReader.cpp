#include "frontends/mcp/LineReader.h"

#include <utility>

namespace mervo::mcp {

namespace {
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kKeptCapacity = 64 * 1024; // what a usual line needs; a larger buffer is given back
} // namespace

LineReader::LineReader(Sink sink, std::size_t longest)
    : sink_(std::move(sink))
    , longest_(longest)
{
}

void LineReader::feed(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t end = bytes.find('\n');
        if (end == std::string_view::npos) {
            keep(bytes);
            return;
        }
        endLine(bytes.substr(0, end));
        bytes.remove_prefix(end + 1);
    }
}

void LineReader::finish()
{
    endLine({});
}

void LineReader::keep(std::string_view piece)
{
    if (skipping_)
        return;
    if (begun_.size() + piece.size() > longest_) {
        skipping_ = true;
        begun_ = {};
        sink_.tooLong();
        return;
    }
    begun_.append(piece);
}

void LineReader::endLine(std::string_view last)
{
    if (begun_.empty() && !skipping_ && last.size() <= longest_) {
        deliver(last); // the usual case: the line lies whole in what was read
        return;
    }
    keep(last);
    if (!skipping_)
        deliver(begun_);
    skipping_ = false;
    if (begun_.capacity() > kKeptCapacity) {
        begun_ = {};
    } else {
        begun_.clear();
    }
}

void LineReader::deliver(std::string_view line) const
{
    if (line.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        line.remove_prefix(kByteOrderMark.size());
    if (!line.empty() && line.back() == '\r')
        line.remove_suffix(1);
    if (line.find_first_not_of(" \t\r") != std::string_view::npos)
        sink_.line(line);
}

} // namespace mervo::mcp
