#pragma once

#include "core/permissions/PermissionSystem.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace mervo {

/// Asks the owner for every consent that the tools need, in one go, and shows what was given.
///
/// `autonomy-grants.json` in the home is an object from bundle id to boolean: what was known last of each application,
/// since the system answers for a running one only. A file that is missing or damaged is an empty one, and a failure to
/// write it is passed over. Both calls block, `probe` as long as the owner takes. Nothing here throws.
class PermissionBootstrap {
public:
    struct ScopeResult {
        std::string id; ///< "automation:com.apple.mail", "calendar", "reminders"
        std::string label; ///< what the owner reads
        std::optional<bool> granted; ///< nothing: not decided
        std::string detail; ///< the status in words
    };
    using Results = std::vector<ScopeResult>;

    explicit PermissionBootstrap(PermissionSystem system = PermissionSystem::real());

    /// Starts the applications that do not run, asks the owner for each scope, writes the file, and asks those that it
    /// started to quit.
    Results probe();
    /// Asks nobody, starts nothing and writes nothing.
    Results status();

    /// One line for each result.
    static std::string renderText(const Results& results);
    /// An array of objects with id, label, granted (left out where nothing is decided) and detail, on one line.
    static std::string renderJSON(const Results& results);

private:
    std::vector<std::string> launchClosed();
    void waitFor(const std::string& bundleId);
    void settleEventKit();
    void appendEventKit(Results& results) const;

    PermissionSystem system_;
};

} // namespace mervo
