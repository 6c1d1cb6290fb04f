// What adapters.json may hold.
#pragma once

#include <nlohmann/json.hpp>

namespace emulator {

// Keeps the order of keys, so that a rewritten file reads like the original.
using Json = nlohmann::ordered_json;

// Throws Failure(exitFleet) that names the first place where `document` isn't
// as README.md describes it: a missing or unknown key, or a value's form.
// Everything else may rely on keys and types after that.
void checkDocument(const Json& document);

}  // namespace emulator
