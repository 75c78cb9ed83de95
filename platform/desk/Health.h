#pragma once

#include <string>
#include <vector>

namespace mervo::desk {

/// One thing about the desk that works or does not.
struct Finding {
    std::string id; ///< stable: "desk.configuration", "desk.mail.Work"
    std::string label;
    bool ok = true;
    std::string detail;
    std::string remedy; ///< what to do; empty when it works
};

/// Looks at everything that the desk stands on. Creates and writes nothing, and never throws: what cannot be looked at
/// is a finding.
std::vector<Finding> examineDesk();

} // namespace mervo::desk
