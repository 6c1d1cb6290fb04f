// What the fuzz targets share: an input as the file or the lines that the tool
// would read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Ends the run with a report when the tool broke a promise.
inline void require(bool kept) {
    if (!kept) {
        abort();
    }
}

// The input as an open stream; null when it is empty, as fmemopen has it.
inline FILE* openInput(const uint8_t* data, size_t size) {
    return size == 0 ? nullptr : fmemopen(const_cast<uint8_t*>(data), size, "r");
}

inline void writeInput(const char* path, const uint8_t* data, size_t size) {
    FILE* file = fopen(path, "w");
    require(file != nullptr && fwrite(data, 1, size, file) == size && fclose(file) == 0);
}
