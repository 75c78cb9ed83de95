#pragma once

#include <csignal>
#include <sys/resource.h>

namespace mervo::test {

/// For its lifetime no file of this process can grow beyond so many bytes: what a full disk does to a writer.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        previous_ = ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        ::signal(SIGXFSZ, previous_);
    }

private:
    rlimit before_{};
    void (*previous_)(int) = nullptr;
};

} // namespace mervo::test
