// A run as data, as docs/zentrix-report.schema.json describes it.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "summary.h"

namespace report {

using Json = nlohmann::ordered_json;

// The run of one log, whose path is plain text.
Json toData(const std::string& log, const Run& run, const Summary& summary);

// As text.
std::string dumpText(const Json& document);

// The whole document of these runs.
std::string dumpData(const Json& runs);

}  // namespace report
