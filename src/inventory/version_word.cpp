#include "inventory/version_word.h"

#include <cstring>

namespace fwup {

static const char* const whiteSpace = " \t\n\v\f\r";

const char* findVersionWord(const char* line, size_t* length) {
    const char* lastDelimiter = nullptr;
    for (const char* at = strpbrk(line, " -vXWI"); at != nullptr; at = strpbrk(at + 1, " -vXWI")) {
        lastDelimiter = at;
    }
    if (lastDelimiter == nullptr) {
        return nullptr;
    }
    const char* word = lastDelimiter + 1;
    word += strspn(word, whiteSpace);
    *length = strcspn(word, whiteSpace);
    return *length == 0 ? nullptr : word;
}

bool parseForVersion(char* line) {
    size_t length = 0;
    const char* word = findVersionWord(line, &length);
    if (word != nullptr) {
        memmove(line, word, length);
        line[length] = '\0';
    }
    return true;
}

}  // namespace fwup
