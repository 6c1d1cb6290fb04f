// Counting lines without looking at them.
#pragma once

#include <cstddef>
#include <string_view>

namespace report {

size_t countLineFeeds(std::string_view bytes);

}  // namespace report
