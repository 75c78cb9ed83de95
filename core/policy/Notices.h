#pragma once

#include <string>
#include <vector>

namespace mervo {

/// What the caller is told besides the result of a call. One sentence each; neither changes what runs.
struct Notices {
    std::vector<std::string> remarks; ///< arguments without effect, and what the answer left out
    std::vector<std::string> warnings; ///< what could not be read or written around the call

    bool empty() const { return remarks.empty() && warnings.empty(); }
};

} // namespace mervo
