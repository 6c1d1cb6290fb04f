#include "support.h"

#include <algorithm>
#include <cstdio>

namespace e2e {

// What the runs of this test said, for the report if it fails.
static std::string told;

class Explanation : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        told.clear();
    }
    void OnTestEnd(const testing::TestInfo& test) override {
        if (test.result()->Failed()) {
            const std::string file = test.file();
            printf(
                "%s---- %s:%d: failed. To repeat only this:\n  GTEST_FILTER=%s.%s script/test %s -R e2e\n",
                told.c_str(), file.substr(file.rfind("tests/e2e/")).c_str(), test.line(),
                test.test_suite_name(), test.name(), ZENTRIX_PRESET);
        }
    }
};

void explainFailures() {
    testing::UnitTest::GetInstance()->listeners().Append(new Explanation);
}

Result watchedRun(const Texts& arguments, const std::function<void()>& prepare) {
    Result result = run(arguments, prepare);
    const std::string& log = result.log;
    told += "---- A run ended with " + std::to_string(result.status) + ". Its console:\n" +
            result.console + "\n---- The end of its log, " + result.logPath + ":\n" +
            log.substr(log.size() - std::min<size_t>(log.size(), 3000)) + "\n";
    return result;
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
