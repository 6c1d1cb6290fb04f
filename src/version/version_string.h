// Version strings such as "7.12b.4.3a": four fields separated by dots, the
// second and the fourth ending in a letter. Pure: nothing is printed or read.
//
//   field 1: digits
//   field 2: digits, then one ASCII letter, in any case
//   field 3: any text; its value is what it begins with as a number, else 0
//   field 4: like field 2
//
// Runs of dots count as one, and dots at either end as none. Only the first 63
// characters are judged.
#pragma once

#include <cstdint>

namespace fwup {

struct _build_version_t {
    int32_t v0;
    int32_t v1D;
    char v1C;  // lower case
    int32_t v2;
    int32_t v3D;
    char v3C;  // lower case
};

// 1 when `text` is a version, whose fields are then in `out`; 0 otherwise and
// for a null pointer, with `out` undefined. Numbers saturate at the limits of
// 32 bits.
int isVersionString(const char* text, _build_version_t* out);

// -1 when `a` is older than `b`, 0 when equal, 1 when newer; -2 for a null.
int cmp_versions(const _build_version_t* a, const _build_version_t* b);

// 1 when the version on the card is older than the build's, or when either is
// no version; 0 otherwise.
int need_to_force_update(const char* onCard, const char* build);

// 1 when `s` is non-empty and all decimal digits; 0 otherwise and for null.
int onlyDigits(const char* s);

// Remove tabs, line feeds, blanks and carriage returns at one end, in place.
// A null does nothing.
void trim_left(char* s);
void trim_right(char* s);

}  // namespace fwup
