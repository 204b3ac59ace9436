// Linked into every program built for the desk. The library's command lines are
// real (killall, rm -rf, SIGTERM to every process), so such a program ends before
// main unless it runs in a camera root.

#include <cstring>
#include <unistd.h>

// Before every other constructor.
__attribute__((constructor(101))) static void refuse_outside_the_camera_root()
{
    char mark[8] = "";
    if (readlink("/.camera-root", mark, sizeof mark - 1) > 0 && std::strcmp(mark, "desk") == 0)
        return;
    constexpr char REFUSAL[] = "not in a camera root: start it with desk/camera run\n";
    const ssize_t written = write(STDERR_FILENO, REFUSAL, sizeof REFUSAL - 1);
    (void)written;
    _exit(126);
}

// The sanitizers read their environment from the kernel's /proc, which a camera
// root does not have. Leak detection needs it too.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" const char *__asan_default_options()
{
    return "detect_leaks=0";
}
