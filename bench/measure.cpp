// Runs a command and prints, on standard error, its wall-clock seconds and the
// peak resident kilobytes of it and of all that it ran.
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

static double now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

int main(int argc, char** argv) {
    if (argc < 2) {
        fputs("usage: measure COMMAND [ARGUMENT...]\n", stderr);
        return 2;
    }
    const double start = now();
    pid_t child = 0;
    const int spawned = posix_spawn(&child, argv[1], nullptr, nullptr, argv + 1, environ);
    int status = 0;
    rusage usage = {};
    if (spawned != 0 || wait4(child, &status, 0, &usage) != child) {
        fprintf(stderr, "measure: %s\n", strerror(spawned != 0 ? spawned : errno));
        return 2;
    }
    fprintf(stderr, "%.6f %ld\n", now() - start, usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
