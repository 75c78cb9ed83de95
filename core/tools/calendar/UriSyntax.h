#pragma once

#include <string_view>

namespace mervo {

/// Whether a text is a URI or a relative reference as RFC 3986, appendix A, writes them.
bool isUriReference(std::string_view text);

} // namespace mervo
