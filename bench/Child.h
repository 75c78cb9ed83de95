#pragma once

#include "bench/Measure.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace mervo::bench {

/// A child with a pipe at each end. Its errors go where ours go. Ended and waited for with its owner.
class Child {
public:
    explicit Child(const Words& command);
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    ~Child();

    void send(std::string_view line);
    /// The next line that is no notification; throws when the child ends before it.
    std::string answer();
    /// Closes its input, reads the rest of its output, waits. The processor time that it took, in ns; throws when its
    /// status is not 0.
    std::int64_t finish();

    std::int64_t cpu() const; ///< ns until now
    std::int64_t statusKib(std::string_view key) const; ///< a line of /proc/<pid>/status ("VmRSS")

private:
    bool fill();

    pid_t pid_ = -1;
    int in_ = -1, out_ = -1;
    std::string buffer_;
};

} // namespace mervo::bench
