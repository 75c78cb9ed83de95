#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

/// bare-timer SECONDS PROGRAM [ARGUMENT...]: starts a program at the beginning of each of so many seconds, and nothing
/// more: what a scheduler cannot do without.
int main(int argc, char** argv)
{
    if (argc < 3)
        return 2;
    for (int left = std::atoi(argv[1]); left > 0; --left) {
        timespec time{};
        ::clock_gettime(CLOCK_REALTIME, &time);
        time = {time.tv_sec + 1, 0};
        while (::clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &time, nullptr) == EINTR) { }
        pid_t process = 0;
        if (::posix_spawn(&process, argv[2], nullptr, nullptr, argv + 2, environ) != 0)
            return 1;
        ::waitpid(process, nullptr, 0);
    }
    return 0;
}
