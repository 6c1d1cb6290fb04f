// The physical limit of a run: the same commands, through the same libc call,
// and nothing else. Takes a file of commands, each ended by a zero byte.
#include <cstdio>
#include <cstdlib>
#include <cstring>

static char* readAll(const char* path, size_t* size) {
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        return nullptr;
    }
    fseek(file, 0, SEEK_END);
    *size = static_cast<size_t>(ftell(file));
    rewind(file);
    char* text = static_cast<char*>(malloc(*size + 1));
    if (text != nullptr && fread(text, 1, *size, file) == *size) {
        text[*size] = '\0';
    }
    fclose(file);
    return text;
}

int main(int argc, char** argv) {
    size_t size = 0;
    char* commands = argc == 2 ? readAll(argv[1], &size) : nullptr;
    if (commands == nullptr) {
        fputs("usage: shell_loop FILE\n", stderr);
        return 2;
    }
    int failed = 0;
    for (const char* command = commands; command < commands + size;
         command += strlen(command) + 1) {
        failed += system(command) != 0;
    }
    free(commands);
    return failed == 0 ? 0 : 1;
}
