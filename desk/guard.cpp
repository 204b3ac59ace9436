// Linked into every program built for the desk. The library's command lines
// are real (killall, rm -rf, SIGTERM to every process), so such a program ends
// before main unless it stands in a camera root.

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

__attribute__((constructor)) static void refuse_outside_the_camera_root()
{
    struct stat marker;
    if (stat("/.camera-root", &marker) == 0 && S_ISREG(marker.st_mode))
        return;
    constexpr char REFUSAL[] = "not in a camera root: start it with desk/camera run\n";
    const ssize_t written = write(STDERR_FILENO, REFUSAL, sizeof REFUSAL - 1);
    (void)written;
    _exit(126);
}
