// Reads lines "A|B" and adds to each whether zentrix takes version A for older
// than version B, or one of them for none.
#include <cstdio>
#include <cstring>

#include "version/version_string.h"

int main() {
    char line[256];
    while (fgets(line, sizeof line, stdin) != nullptr) {
        line[strcspn(line, "\n")] = '\0';
        char text[sizeof line];
        snprintf(text, sizeof text, "%s", line);
        char* second = strchr(text, '|');
        *second = '\0';
        printf("%s %d\n", line, fwup::need_to_force_update(text, second + 1));
    }
    return 0;
}
