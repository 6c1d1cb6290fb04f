// No input may bring a target to the shell: linked with --wrap=system.
#include <cstdlib>

extern "C" int __wrap_system(const char* command);

int __wrap_system(const char*) {
    abort();
}
