#include "platform/desk/mime/CarriedLines.h"

#include <algorithm>

namespace mervo::desk {
namespace {

constexpr std::size_t kLongestLine = 998; // octets

bool isCarriedLine(std::string_view line)
{
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line.size() <= kLongestLine && line != "." && !line.starts_with("From ")
        && line.find_first_of(std::string_view("\0\r", 2)) == std::string_view::npos;
}

} // namespace

bool isCarried(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        if (!isCarriedLine(text.substr(0, end)))
            return false;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return true;
}

bool isCarried(GMimeObject* object)
{
    const Owned<GMimeStream> memory(g_mime_stream_mem_new());
    g_mime_object_write_to_stream(object, nullptr, memory.get());
    const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory.get()));
    return isCarried({reinterpret_cast<const char*>(bytes->data), bytes->len});
}

} // namespace mervo::desk
