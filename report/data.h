// A run as data. docs/zentrix-report.1 describes the keys, and
// docs/zentrix-report.schema.json what they may hold.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "summary.h"

namespace report {

using Json = nlohmann::ordered_json;

// The run of one log. Bytes that are no UTF-8 stay in the texts until `dump`.
Json toData(const std::string& log, const Run& run, const Summary& summary);

// As text, always valid JSON in UTF-8.
std::string dumpText(const Json& document);

// The whole document of these runs.
std::string dumpData(const Json& runs);

}  // namespace report
