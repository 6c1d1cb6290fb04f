// Runs that are described as data, in cases/*.json.
//
// A file is a list of cases. A case makes a package and runs the program once:
//   "name"       what it is about
//   "fleet"      the ready fleet to use (default: "one")
//   "edits"      places of adapters.json to set, by JSON pointer
//   "files"      to write first: a text, {"link": TARGET}, or null to remove;
//                a full path may lie outside the package
//   "directory"  "read-only" or "full", for the package directory
//   "run"        the arguments, separated by blanks (default: none)
// and then expects, besides what holds of every run:
//   "status"     the exit status; no case is without it
//   "says"       the whole console but for the outcomes of commands
//   "shows"      parts of that, in this order
//   "prints"     parts of the console as it is, in this order
//   "hides"      what is nowhere on the console
//   "logs"       parts of the log, in this order
//   "omits"      what is nowhere in the log
//   "commands"   for a word, all commands that contain it, in order
//   "left"       the files left in the package directory (default: none)
//   "after"      places of adapters.json and their values after the run
//   "holds"      files, by their full path, and what is in them after the run
//   "transcript" the file in tests/golden that holds what it says, and its log
//   "then"       a further run in the same package, with the same keys
// "${NAME}" stands for a text of texts.json, or for one of the case's own: with
// a list "with" of such sets of texts the case is run once for each.
// "${version}" is the program's.
//
// A text of several lines is a list of them, without anything between: in
// texts.json, for "says", and for each part of "shows", "prints" and "logs".
// So a line of a file holds one command or one message, and what needs no line
// of its own shares one up to column 100.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "support.h"

namespace e2e {

namespace fs = std::filesystem;

static void replaceAll(std::string& text, const std::string& old, const std::string& now) {
    for (size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += now.size()) {
        text.replace(at, old.size(), now);
    }
}

// Later texts may use earlier ones. A value of another kind stands for a whole
// "${NAME}"; a number may also stand within a text.
static Json fillIn(const Json& pattern, const Json& texts) {
    std::string filled = pattern.dump();
    for (auto text = texts.rbegin(); text != texts.rend(); ++text) {
        const std::string name = "${" + text.key() + "}";
        const std::string value = text.value().dump();
        replaceAll(filled, '"' + name + '"', value);
        if (text.value().is_string()) {
            replaceAll(filled, name, value.substr(1, value.size() - 2));
        } else if (text.value().is_number()) {
            replaceAll(filled, name, value);
        }
    }
    return Json::parse(filled);
}

// The pieces of a text that stands on several lines; a text is its own piece.
static std::string joined(const Json& text) {
    if (text.is_string()) {
        return text;
    }
    std::string whole;
    for (const std::string piece : text) {
        whole += piece;
    }
    return whole;
}

static Texts allJoined(const Json& texts) {
    Texts parts;
    for (const Json& text : texts) {
        parts.push_back(joined(text));
    }
    return parts;
}

static void writeFiles(const Json& files) {
    for (const auto& [name, content] : files.items()) {
        const fs::path path = fs::path(packageDirectory) / name;
        fs::remove(path);
        if (content.is_object()) {
            fs::create_symlink(content["link"].get<std::string>(), path);
        } else if (content.is_string()) {
            writeFile(path, content);
        }
    }
}

static void arrange(const Json& c) {
    editAdapters(c.value("edits", Json::object()));
    writeFiles(c.value("files", Json::object()));
    if (c.contains("directory")) {
        (c["directory"] == "full" ? fillUp : makeReadOnly)(packageDirectory);
    }
}

static Texts wordsOf(const std::string& line) {
    std::istringstream words(line);
    return Texts(std::istream_iterator<std::string>(words), {});
}

static void expectCommands(const Result& result, const Json& expected) {
    for (const auto& [word, commands] : expected.items()) {
        EXPECT_EQ(commandsWith(result, word), commands.get<Texts>())
            << "commands with \"" << word << "\"";
    }
}

static void expectNone(const std::string& text, const Json& parts) {
    for (const std::string part : parts) {
        EXPECT_EQ(text.find(part), std::string::npos) << part;
    }
}

// The title ends with the version, which a transcript doesn't know.
static const std::string anyTitle = "Tool, Version ${version}\n";
static const std::string thisTitle = "Tool, Version " ZENTRIX_VERSION "\n";

// What was said and the log, compared with the transcript of that name.
static void expectTranscript(const Result& result, const Json& name) {
    const std::string path = "/golden/" + name.get<std::string>() + ".txt";
    std::string text = spoken(result) + "--- exit status " + std::to_string(result.status) +
                       "\n--- " + result.logPath + "\n" + result.log;
    if (getenv("REWRITE_GOLDEN") != nullptr) {
        replaceAll(text, thisTitle, anyTitle);
        writeFile(path, text);
        GTEST_SKIP() << "written, not compared: " << path;
    }
    std::string golden = readFile(path);
    replaceAll(golden, anyTitle, thisTitle);
    const auto [mine, its] = std::mismatch(text.begin(), text.end(), golden.begin(), golden.end());
    EXPECT_TRUE(text == golden) << path << " differs. The run goes on with:\n"
                                << std::string(mine, text.end()).substr(0, 300)
                                << "\nbut the transcript with:\n"
                                << std::string(its, golden.end()).substr(0, 300);
}

using Check = void (*)(const Result& result, const Json& expected);

static const std::map<std::string, Check> checks = {
    {"status", [](auto& run, auto& code) { EXPECT_EQ(run.status, code.template get<int>()); }},
    {"says", [](auto& run, auto& text) { EXPECT_EQ(spoken(run), joined(text)); }},
    {"shows", [](auto& run, auto& all) { EXPECT_TRUE(hasInOrder(spoken(run), allJoined(all))); }},
    {"prints", [](auto& run, auto& all) { EXPECT_TRUE(hasInOrder(run.console, allJoined(all))); }},
    {"logs", [](auto& run, auto& all) { EXPECT_TRUE(hasInOrder(run.log, allJoined(all))); }},
    {"hides", [](auto& run, auto& parts) { expectNone(run.console, parts); }},
    {"omits", [](auto& run, auto& parts) { expectNone(run.log, parts); }},
    {"commands", expectCommands},
    {"after",
     [](auto&, auto& all) {
         for (const auto& [place, value] : all.items()) {
             EXPECT_EQ(readAdapters().value(Json::json_pointer(place), Json()), value) << place;
         }
     }},
    {"holds",
     [](auto&, auto& all) {
         for (const auto& [path, content] : all.items()) {
             EXPECT_EQ(readFile(path), content.template get<std::string>()) << path;
         }
     }},
    {"transcript", expectTranscript},
};

static void runCase(const Json& c) {
    static const std::set<std::string> settings = {"name",      "fleet", "edits", "files",
                                                   "directory", "run",   "left",  "then"};
    arrange(c);
    const Result result = checkedRun(wordsOf(c.value("run", "")), c.value("left", Texts()));
    EXPECT_TRUE(c.contains("status")) << "a case without a status";
    for (const auto& [key, expected] : c.items()) {
        const auto check = checks.find(key);
        if (check != checks.end()) {
            check->second(result, expected);
        } else {
            EXPECT_EQ(settings.count(key), 1U) << "unknown key: " << key;
        }
    }
    if (c.contains("then") && !testing::Test::HasFailure()) {
        SCOPED_TRACE("then");
        runCase(c["then"]);
    }
}

struct Case : testing::Test {
    explicit Case(Json description) : c(std::move(description)) {
    }
    void TestBody() override {
        EXPECT_EQ(c.dump().find("${"), std::string::npos) << "a text that is nowhere";
        const auto needs = [this](const char* what) {
            return c.dump().find(what) != std::string::npos;
        };
        if (needs("\"directory\"") && !canMount()) {
            GTEST_SKIP() << "nothing can be mounted here";
        }
        if (needs("/dev/full") && !fs::exists("/dev/full")) {
            GTEST_SKIP() << "no devices can be made here";
        }
        makePackage(c.value("fleet", "one"));
        runCase(c);
    }
    const Json c;
};

static const std::string directory = "/cases/";

// Registered under its place in the file, for the report when it fails.
static void registerCase(const std::string& file, const Json& c, const std::string& name) {
    static const std::string tree = "tests/e2e";
    const std::string text = readFile(directory + file + ".json");
    const auto place = text.begin() + static_cast<std::ptrdiff_t>(text.find(c["name"].dump()));
    const auto line = 1 + std::count(text.begin(), place, '\n');
    testing::RegisterTest(file.c_str(), name.c_str(), nullptr, nullptr,
                          (tree + directory + file + ".json").c_str(), static_cast<int>(line),
                          [c] { return new Case(c); });
}

// Adds every case to the tests. Throws when a file can't be read.
static void registerCases() {
    Json texts = {{"version", ZENTRIX_VERSION}};
    const Json shared = Json::parse(readFile(directory + "texts.json"));
    for (const auto& [name, text] : shared.items()) {
        texts[name] = joined(text);
    }
    for (const char* file : {"golden", "run", "update", "yb", "maintenance"}) {
        for (Json c : Json::parse(readFile(directory + file + ".json"))) {
            const Json variants = c.value("with", Json::parse("[{}]"));
            c.erase("with");
            for (size_t i = 0; i < variants.size(); i++) {
                std::string name = c["name"];
                // Nothing in it may mean anything to GoogleTest or the shell.
                std::replace_if(
                    name.begin(), name.end(),
                    [](char letter) { return letter == ' ' || letter == ','; }, '_');
                name += variants.size() == 1 ? "" : "/" + std::to_string(i);
                registerCase(file, fillIn(fillIn(c, variants[i]), texts), name);
            }
        }
    }
}

}  // namespace e2e

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!e2e::isSandboxed()) {
        return 1;
    }
    e2e::registerCases();
    e2e::explainFailures();
    return RUN_ALL_TESTS();
}
