// The table of lines against the texts in the tool's own sources.
#include "lines.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

namespace report {
namespace {

std::string readFile(const std::filesystem::path& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

std::string replaced(const std::string& text, const char* pattern, const char* by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

// Commands, rows and what the console alone shows.
const std::set<std::string> noLines = {
    "About to execute: \"7\"",
    "7 7 cfg -show vpdyb >>7",
    "7 7 cfg -show vpdv0 >7",
    "YB fix is being applied Fix for 7",
    "Updating 7 failed, adapter is down\t---> Update failed",
    "Updating 7 failed, firmware corrupted\t---> Update failed",
    "Build Version is 7",
    "Another run is under way in this directory, or its flash utility still works. Waiting for it to end (Ctrl-C gives up).",
    "7 version for 7 is 7",
    "7:7:7",
    "7 [OPTION]",
    "The options are:",
};

// Every text that the tool may write to a log, with samples put in.
std::vector<std::string> programTexts() {
    const char* tree = getenv("ZENTRIX_TREE");
    std::vector<std::string> texts;
    const std::regex literal(R"re("((?:[^"\\]|\\.)*)")re");
    for (const auto& file : std::filesystem::recursive_directory_iterator(
             std::filesystem::path(tree == nullptr ? "." : tree) / "src")) {
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

// Those of the table's heading and of the iSCSI versions are put together of columns and labels.
TEST(Lines, AreTheProgramsTexts) {
    std::set<std::string> written = {"ADAPTER MAC    \t<headings>\t\tBUS:DEVICE:FUNC",
                                     "-------------------\t<rules>\t\t---",
                                     "ISB_CFG<block> version for <MAC> is <version>"};
    for (const std::string& text : programTexts()) {
        const ToolLine line = readToolLine(text);
        written.insert(line.line.text);
        const std::string plain(trimmed(text));
        const bool isText = text.back() == '\n' && plain.find(' ') != std::string::npos;
        EXPECT_TRUE(!line.text.empty() || !isText || noLines.count(plain) == 1) << text;
    }
    for (size_t i = 0; i < lineCount; i++) {
        EXPECT_EQ(written.count(lines[i].text), 1U) << lines[i].text;
    }
}

}  // namespace
}  // namespace report
