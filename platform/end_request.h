#pragma once

#include "platform/descriptor.h"

#include <chrono>

namespace mervo::platform {

/// Holds back the signals that ask this process to end (SIGTERM, SIGINT, SIGHUP), so that a long work can be brought to
/// an orderly end. Such a signal that the caller has set to be ignored stays ignored.
///
/// Meanwhile a limit on the size of files (SIGXFSZ) is an error of writing, as a full disk is.
///
/// One at a time, made before the process has other threads. Programs that are started meanwhile get their signals as
/// ever. Destroying it lets signals act again; one that nobody has asked for ends the process then.
class EndRequest {
public:
    EndRequest();
    EndRequest(const EndRequest&) = delete;
    EndRequest& operator=(const EndRequest&) = delete;
    ~EndRequest();

    /// The first signal that has come; 0 when none comes within the patience.
    int wait(std::chrono::milliseconds patience) noexcept;
    /// The same without waiting.
    int signal() noexcept { return wait(std::chrono::milliseconds(0)); }
    /// Readable once a signal has come, until `wait` has told of it.
    int descriptor() const noexcept { return arrived_.get(); }

private:
    Descriptor arrived_;
    void (*beforeLimit_)(int);
    int signal_ = 0;
};

} // namespace mervo::platform
