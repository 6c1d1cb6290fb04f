#include "support.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace e2e {

struct WatchedRun {
    Texts arguments;
    Result result;
    bool failed = false;
};

static std::vector<WatchedRun> runsOfThisTest;

static void print(const WatchedRun& run) {
    const std::string& log = run.result.log;
    std::string command = "./zentrix";
    for (const std::string& argument : run.arguments) {
        command += " " + argument;
    }
    printf("---- %s ended with %d. Its console:\n%s\n", command.c_str(), run.result.status,
           run.result.console.c_str());
    printf("---- The end of its log, %s:\n%s\n", run.result.logPath.c_str(),
           log.substr(log.size() - std::min<size_t>(log.size(), 3000)).c_str());
}

// All that means something to GoogleTest or the shell matches as any character.
static std::string asFilter(std::string name) {
    for (char& c : name) {
        if (isalnum(static_cast<unsigned char>(c)) == 0 && c != '_' && c != '/') {
            c = '?';
        }
    }
    return name;
}

class Explanation : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        runsOfThisTest.clear();
    }
    void OnTestPartResult(const testing::TestPartResult& part) override {
        if (part.failed() && !runsOfThisTest.empty()) {
            runsOfThisTest.back().failed = true;
        }
    }
    void OnTestEnd(const testing::TestInfo& test) override {
        if (!test.result()->Failed()) {
            return;
        }
        for (const WatchedRun& run : runsOfThisTest) {
            if (run.failed) {
                print(run);
            }
        }
        const std::string file = test.file();
        printf(
            "---- %s:%d: failed. To repeat only this:\n  GTEST_FILTER=%s.%s script/test %s -R e2e\n",
            file.substr(file.rfind("tests/e2e/")).c_str(), test.line(), test.test_suite_name(),
            asFilter(test.name()).c_str(), ZENTRIX_PRESET);
    }
};

void explainFailures() {
    testing::UnitTest::GetInstance()->listeners().Append(new Explanation);
}

Result watchedRun(const Texts& arguments, const std::function<void()>& prepare) {
    runsOfThisTest.push_back({arguments, run(arguments, prepare)});
    return runsOfThisTest.back().result;
}

Result checkedRun(const Texts& arguments, const Texts& left) {
    Result result = watchedRun(arguments);
    EXPECT_EQ(result.log.substr(0, header.size()), header);
    EXPECT_EQ(result.files, left);
    size_t inLog = 0;
    size_t inConsole = 0;
    for (const std::string& command : result.commands) {
        const std::string outcome = takeOutcome(result.log, command, inLog);
        EXPECT_NE(outcome, "") << command;
        EXPECT_EQ(takeOutcome(result.console, command, inConsole), outcome);
    }
    return result;
}

std::string spoken(const Result& result) {
    static const std::string lineEnd = "\n \n";
    std::string text = result.console;
    for (const std::string& command : result.commands) {
        const size_t from = text.find("Command \"" + command + "\" returned code: ");
        if (from != std::string::npos) {
            text.erase(from, text.find(lineEnd, from) + lineEnd.size() - from);
        }
    }
    return text;
}

Texts commandsWith(const Result& result, const std::string& word) {
    static const std::string utility = "./lnxfwvt2 ";
    Texts found;
    for (std::string command : result.commands) {
        if (command.find(word) == std::string::npos) {
            continue;
        }
        command.erase(command.find_last_not_of(" \n") + 1);
        const size_t log = command.find(result.logPath);
        if (log != std::string::npos) {
            command.replace(log, result.logPath.size(), "LOG");
        }
        const bool own = command.compare(0, utility.size(), utility) == 0;
        found.push_back(own ? command.substr(utility.size()) : command);
    }
    return found;
}

testing::AssertionResult hasInOrder(const std::string& text, const Texts& parts) {
    size_t at = 0;
    for (const std::string& part : parts) {
        const size_t found = text.find(part, at);
        if (found == std::string::npos) {
            return testing::AssertionFailure() << "\"" << part << "\" is missing in or after:\n"
                                               << text.substr(at, 300);
        }
        at = found + part.size();
    }
    return testing::AssertionSuccess();
}

}  // namespace e2e
