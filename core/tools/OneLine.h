#pragma once

#include <string>
#include <string_view>

namespace mervo {

/// A text as part of one line of output, whoever wrote it: a mark takes the place of each line end in it.
std::string onOneLine(std::string_view text, std::string_view mark);

} // namespace mervo
