#include "cases.h"

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
    if (c.contains("edits")) {
        editAdapters(c["edits"]);
    }
    writeFiles(c.value("files", Json::object()));
    const std::string directory = c.value("directory", "");
    if (directory == "read-only") {
        makeReadOnly(packageDirectory);
    } else if (directory == "full") {
        fillUp(packageDirectory);
    }
}

static Texts wordsOf(const std::string& line) {
    std::istringstream words(line);
    return Texts(std::istream_iterator<std::string>(words), {});
}

static void expectCommands(const Result& result, const Json& expected) {
    for (const auto& [word, commands] : expected.items()) {
        EXPECT_EQ(Json(commandsWith(result, word)), commands) << "with \"" << word << "\"";
    }
}

static void expectState(const Result& /*result*/, const Json& expected) {
    const Json adapters = readAdapters();
    for (const auto& [place, value] : expected.items()) {
        EXPECT_EQ(adapters.value(Json::json_pointer(place), Json()), value) << place;
    }
}

static void expectNone(const std::string& text, const Json& parts) {
    for (const std::string part : parts) {
        EXPECT_EQ(text.find(part), std::string::npos) << part;
    }
}

// Console and log as they are, compared with the transcript of that name.
static void expectTranscript(const Result& result, const Json& name) {
    const std::string path = "/golden/" + name.get<std::string>() + ".txt";
    const std::string text = result.console + "--- exit status " + std::to_string(result.status) +
                             "\n--- " + result.logPath + "\n" + result.log;
    if (getenv("REWRITE_GOLDEN") != nullptr) {
        writeFile(path, text);
        GTEST_SKIP() << "written, not compared: " << path;
    }
    const std::string golden = readFile(path);
    const auto [mine, its] = std::mismatch(text.begin(), text.end(), golden.begin(), golden.end());
    EXPECT_TRUE(text == golden) << path << " differs. The run goes on with:\n"
                                << std::string(mine, text.end()).substr(0, 300)
                                << "\nbut the transcript with:\n"
                                << std::string(its, golden.end()).substr(0, 300);
}

using Check = void (*)(const Result& result, const Json& expected);

static const std::map<std::string, Check> checks = {
    {"status", [](auto& result, auto& code) { EXPECT_EQ(Json(result.status), code); }},
    {"says", [](auto& result, auto& text) { EXPECT_EQ(Json(spoken(result)), text); }},
    {"shows", [](auto& result, auto& parts) { EXPECT_TRUE(hasInOrder(spoken(result), parts)); }},
    {"prints", [](auto& result, auto& parts) { EXPECT_TRUE(hasInOrder(result.console, parts)); }},
    {"logs", [](auto& result, auto& parts) { EXPECT_TRUE(hasInOrder(result.log, parts)); }},
    {"hides", [](auto& result, auto& parts) { expectNone(result.console, parts); }},
    {"omits", [](auto& result, auto& parts) { expectNone(result.log, parts); }},
    {"commands", expectCommands},
    {"after", expectState},
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
    if (c.contains("then")) {
        SCOPED_TRACE("then");
        runCase(c["then"]);
    }
}

struct Case : testing::Test {
    explicit Case(Json description) : c(std::move(description)) {
    }
    void TestBody() override {
        EXPECT_EQ(c.dump().find("${"), std::string::npos) << "a text that is nowhere";
        makePackage(c.value("fleet", "one"));
        runCase(c);
    }
    const Json c;
};

static void registerCase(const std::string& file, const std::string& name, const Json& c) {
    testing::RegisterTest(file.c_str(), name.c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [c] { return new Case(c); });
}

void registerCases() {
    const std::string directory = "/cases/";
    const Json texts = Json::parse(readFile(directory + "texts.json"));
    for (const char* file : {"golden", "run", "update", "yb", "maintenance"}) {
        for (Json c : Json::parse(readFile(directory + file + ".json"))) {
            const Json variants = c.value("with", Json::parse("[{}]"));
            c.erase("with");
            for (size_t i = 0; i < variants.size(); i++) {
                std::string name = c["name"];
                replaceAll(name, " ", "_");
                name += variants.size() == 1 ? "" : "/" + std::to_string(i);
                registerCase(file, name, fillIn(fillIn(c, variants[i]), texts));
            }
        }
    }
}

}  // namespace e2e
