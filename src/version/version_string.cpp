#include "version/version_string.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace fwup {

static const char* const trimmed = "\t\n \r";

static bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

static bool isLowerCaseLetter(char c) {
    return c >= 'a' && c <= 'z';
}

// What `atoi` does, but with a defined result for a number out of range.
static int32_t toNumber(const char* text) {
    const long long value = strtoll(text, nullptr, 10);
    return static_cast<int32_t>(std::clamp<long long>(value, INT32_MIN, INT32_MAX));
}

static bool parseDigits(const char* token, int32_t* number) {
    if (onlyDigits(token) == 0) {
        return false;
    }
    *number = toNumber(token);
    return true;
}

// Digits and a final letter; cuts the letter off the token.
static bool parseLettered(char* token, int32_t* number, char* letter) {
    char* last = token + strlen(token) - 1;
    if (!isLowerCaseLetter(*last)) {
        return false;
    }
    *letter = *last;
    *last = '\0';
    return parseDigits(token, number);
}

static bool parseField(int index, char* token, _build_version_t* out) {
    switch (index) {
        case 0: return parseDigits(token, &out->v0);
        case 1: return parseLettered(token, &out->v1D, &out->v1C);
        case 2: out->v2 = toNumber(token); return true;
        case 3: return parseLettered(token, &out->v3D, &out->v3C);
        default: return false;
    }
}

int isVersionString(const char* text, _build_version_t* out) {
    if (text == nullptr || out == nullptr) {
        return 0;
    }
    char work[64] = {};
    memcpy(work, text, strnlen(text, sizeof work - 1));
    for (char& c : work) {
        c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    }
    int count = 0;
    char* rest = nullptr;
    for (char* token = strtok_r(work, ".", &rest); token != nullptr;
         token = strtok_r(nullptr, ".", &rest)) {
        if (!parseField(count, token, out)) {
            return 0;
        }
        count++;
    }
    return count == 4 ? 1 : 0;
}

static int compare(int32_t a, int32_t b) {
    return (a > b) - (a < b);
}

int cmp_versions(const _build_version_t* a, const _build_version_t* b) {
    if (a == nullptr || b == nullptr) {
        return -2;
    }
    const int fields[] = {compare(a->v0, b->v0), compare(a->v1D, b->v1D), compare(a->v1C, b->v1C),
                          compare(a->v2, b->v2), compare(a->v3D, b->v3D), compare(a->v3C, b->v3C)};
    for (const int difference : fields) {
        if (difference != 0) {
            return difference;
        }
    }
    return 0;
}

int need_to_force_update(const char* onCard, const char* build) {
    _build_version_t card = {};
    _build_version_t current = {};
    if (isVersionString(onCard, &card) == 0 || isVersionString(build, &current) == 0) {
        return 1;
    }
    return cmp_versions(&card, &current) == -1 ? 1 : 0;
}

int onlyDigits(const char* s) {
    if (s == nullptr || *s == '\0') {
        return 0;
    }
    for (; *s != '\0'; s++) {
        if (!isDigit(*s)) {
            return 0;
        }
    }
    return 1;
}

void trim_left(char* s) {
    if (s == nullptr) {
        return;
    }
    const size_t skipped = strspn(s, trimmed);
    if (skipped > 0) {
        memmove(s, s + skipped, strlen(s + skipped) + 1);
    }
}

void trim_right(char* s) {
    if (s == nullptr) {
        return;
    }
    size_t length = strlen(s);
    while (length > 0 && strchr(trimmed, s[length - 1]) != nullptr) {
        s[--length] = '\0';
    }
}

}  // namespace fwup
