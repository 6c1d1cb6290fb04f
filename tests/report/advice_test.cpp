// The tables of lines and of advice against the manual page and the texts in
// the tool's own sources.
#include "advice.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace report {
namespace {

std::string readFile(const std::filesystem::path& path) {
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::filesystem::path tree() {
    const char* path = getenv("ZENTRIX_TREE");
    return path == nullptr ? "." : path;
}

std::string replaced(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

// --- The manual page

struct Entry {
    std::vector<std::string> texts;  // with "<>" where something is put in
    std::string prose;
};

// One line of the page as it reads: without macros, punctuation where it belongs.
std::string readable(std::string line) {
    line = replaced(line, R"(\\&|\\)", "");
    line = replaced(line, R"re(^\.Dq "?(.*?)"?( [.,;:])?$)re", "\"$1\"$2");
    line = replaced(line, R"(^\.Fl )", "-");
    line = replaced(line, R"(^\.[A-Z][a-z] )", "");
    return replaced(line, R"( ([.,;:])$)", "$1");
}

std::vector<Entry> pageEntries() {
    std::istringstream page(readFile(tree() / "docs/zentrix.8"));
    std::vector<Entry> entries;
    std::string line;
    while (std::getline(page, line) && line != ".Sh DIAGNOSTICS") {
    }
    while (std::getline(page, line) && line != ".Ss Texts of other programs") {
        if (line.rfind(".It Li ", 0) == 0) {
            if (entries.empty() || !entries.back().prose.empty()) {
                entries.emplace_back();
            }
            line = replaced(line, R"re(^\.It Li "?(.*?)"?$)re", "$1");
            entries.back().texts.push_back(replaced(replaced(line, "\"\"", "\""), "<[^>]*>", "<>"));
        } else if (line.rfind(".Bl", 0) != 0 && line.rfind(".El", 0) != 0 &&
                   line.rfind(".Ss", 0) != 0 && !entries.empty()) {
            entries.back().prose += readable(line) + " ";
        }
    }
    return entries;
}

const Entry* entryOf(const std::vector<Entry>& entries, const std::string& text) {
    for (const Entry& entry : entries) {
        for (const std::string& other : entry.texts) {
            if (other == text) {
                return &entry;
            }
        }
    }
    return nullptr;
}

std::string pageTextOf(LineKind kind) {
    const char* text = textOf(kind);
    if (kind == LineKind::noBuildVersion) {
        return "Error in opening file";  // on standard error alone
    }
    return text == nullptr ? "" : replaced(text, "<[^>]*>", "<>");
}

// What the page explains and no line of a log needs advice for.
const std::set<std::string> notInTheTable = {
    "Error! Unable to initialize log file.",
    "Error! Unable to write to log file.",
    "***** REBOOT REQUIRED *****",
    "Updating <> failed, adapter is down ---> Update failed",
    "Updating <> failed, firmware corrupted ---> Update failed",
    "Performing CRC check for device <> ---> failed (adapter is down)",
    "One or more errors occurred during the firmware update process. See <> for more information.",
    "---> Update failed",
    "---> failed",
    "Skipping command <>",
};

TEST(Advice, IsTheManualPages) {
    const std::vector<Entry> entries = pageEntries();
    ASSERT_GT(entries.size(), 20U);
    std::set<std::string> told = notInTheTable;
    for (size_t i = 0; i < adviceCount; i++) {
        const Advice& advice = advices[i];
        const std::string text = pageTextOf(advice.kind);
        if (text.empty()) {
            continue;
        }
        told.insert(text);
        const Entry* entry = entryOf(entries, text);
        ASSERT_NE(entry, nullptr) << text;
        for (const char* words : {advice.cause, advice.adapters, advice.next}) {
            EXPECT_NE(entry->prose.find(words), std::string::npos)
                << "\"" << words << "\"\nis not in\n"
                << entry->prose;
        }
    }
    for (const Entry& entry : entries) {
        for (const std::string& text : entry.texts) {
            EXPECT_EQ(told.erase(text), 1U) << text;
        }
    }
    EXPECT_TRUE(told.empty()) << *told.begin();
}

// --- The tool's sources

// Commands, rows and what the console alone shows.
const std::set<std::string> noLines = {
    "Skipping command 7",
    "About to execute: \"7\"",
    "7 7 cfg -show vpdyb >>7",
    "7 7 cfg -show vpdv0 >7",
    "YB fix is being applied Fix for 7",
    "Updating 7 failed, adapter is down\t---> Update failed",
    "Updating 7 failed, firmware corrupted\t---> Update failed",
    "Build Version is 7",
    "7 (7)\t7\t7\t7\t7\t7\t7\t7\t7\t7\t7\t7\t\t7:7:7",
    "7 version for 7 is 7",
    "7 [OPTION]",
    "The options are:",
    "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).",
};

// Every text that the tool may write to a log, with samples put in.
std::vector<std::string> programTexts() {
    std::vector<std::string> texts;
    const std::regex literal(R"re("((?:[^"\\]|\\.)*)")re");
    for (const auto& file : std::filesystem::recursive_directory_iterator(tree() / "src")) {
        if (file.path().extension() != ".cpp") {
            continue;
        }
        const std::string source = replaced(readFile(file.path()), R"(\n *//[^\n]*)", "\n");
        for (std::sregex_iterator at(source.begin(), source.end(), literal), end; at != end; ++at) {
            std::string text = replaced((*at)[1].str(), R"(\\n)", "\n");
            text = replaced(replaced(text, R"(\\t)", "\t"), R"(\\")", "\"");
            texts.push_back(replaced(text, "%[.0-9]*[sdu]", "7"));
        }
    }
    return texts;
}

TEST(ToolLines, AreTheProgramsTexts) {
    std::set<LineKind> written;
    std::vector<std::string> unknown;
    for (const std::string& text : programTexts()) {
        const ToolLine line = readToolLine(text);
        written.insert(line.kind);
        if (line.kind == LineKind::unknown && text.size() > 1 && text.back() == '\n' &&
            trimmed(text).find(' ') != std::string_view::npos &&
            noLines.count(std::string(trimmed(text))) == 0) {
            unknown.push_back(text);
        }
    }
    for (size_t i = 0; i < linePatternCount; i++) {
        const LineKind kind = linePatterns[i].kind;
        // These are put together of columns and labels.
        const bool composed = kind == LineKind::iscsiVersion || kind == LineKind::tableHead ||
                              kind == LineKind::tableRule;
        EXPECT_TRUE(written.count(kind) == 1 || composed)
            << linePatterns[i].text;
    }
    for (const std::string& text : unknown) {
        ADD_FAILURE() << text;
    }
}

}  // namespace
}  // namespace report
