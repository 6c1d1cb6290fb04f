#include "support.h"

namespace e2e {

Result checkedRun(const Texts& arguments, const Texts& left) {
    Result result = run(arguments);
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
                                               << text.substr(at);
        }
        at = found + part.size();
    }
    return testing::AssertionSuccess();
}

}  // namespace e2e
