// Runs a command and prints, on standard error, its wall-clock seconds, the
// processor seconds of it alone, and the peak resident kilobytes of it and of
// all that it ran.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

static double now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// The processor time of an ended process that was not waited for yet, in
// seconds; below 0 when it can't be read. Its children's is not in it.
static double ownProcessorTime(pid_t process) {
    char path[32];
    snprintf(path, sizeof path, "/proc/%d/schedstat", static_cast<int>(process));
    FILE* file = fopen(path, "r");
    char nanoseconds[32] = "";
    const bool read = file != nullptr && fgets(nanoseconds, sizeof nanoseconds, file) != nullptr;
    if (file != nullptr) {
        fclose(file);
    }
    return read ? strtod(nanoseconds, nullptr) / 1e9 : -1;
}

int main(int argc, char** argv) {
    if (argc < 2) {
        fputs("usage: measure COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const double start = now();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[1], nullptr, nullptr, argv + 1, environ);
    siginfo_t ended = {};
    if (spawned != 0 || waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOWAIT) != 0) {
        fprintf(stderr, "measure: %s\n", strerror(spawned != 0 ? spawned : errno));
        return 2;
    }
    const double wall = now() - start;
    const double own = ownProcessorTime(child);
    int status = 0;
    rusage usage = {};
    if (own < 0 || wait4(child, &status, 0, &usage) != child) {
        fprintf(stderr, "measure: %s\n", strerror(errno));
        return 2;
    }
    fprintf(stderr, "%.6f %.6f %ld\n", wall, own, usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
