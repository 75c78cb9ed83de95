#pragma once

namespace mervo::cli {

/// Holds SIGINT, SIGTERM and SIGHUP back while a call is in the gate, so that none of them ends the process between an
/// act and its row. A second SIGINT or SIGTERM ends the tool (platform/stop.h), and the row says so. A signal that the
/// caller has set to be ignored stays ignored. One at a time.
class HeldSignals {
public:
    HeldSignals();
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    /// Ends the process by the signal that was held back, if there was one.
    ~HeldSignals();

    /// The row is written: signals act at once from here on. After one that was held back the output has a few
    /// seconds, since its reader may not read.
    void letGo() noexcept;
};

} // namespace mervo::cli
