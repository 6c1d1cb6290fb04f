#include "support.h"

#include <algorithm>

namespace e2e {

// Where the next line that ends a command begins and how long it is, its line
// end apart; a length of 0 means none.
struct Outcome {
    size_t from = std::string::npos;
    size_t length = 0;
};

static Outcome nextOutcome(const std::string& text, size_t at, const std::string& before,
                           const std::string& after) {
    Outcome outcome;
    outcome.from = text.find(before, at);
    if (outcome.from != std::string::npos) {
        const size_t last = text.find(after, outcome.from + before.size());
        outcome.length = text.find('\n', last) - outcome.from;
    }
    return outcome;
}

static Outcome nextReturn(const std::string& text, size_t at) {
    return nextOutcome(text, at, "Command \"", "\" returned code: ");
}

static Outcome nextSkip(const std::string& text, size_t at) {
    return nextOutcome(text, at, "Skipping command: \"", "\"");
}

static Texts outcomesIn(const std::string& text) {
    Texts outcomes;
    for (size_t at = 0; at < text.size();) {
        const Outcome back = nextReturn(text, at);
        const Outcome skip = nextSkip(text, at);
        const Outcome& next = skip.from < back.from ? skip : back;
        if (next.length == 0) {
            break;
        }
        outcomes.push_back(text.substr(next.from, next.length));
        at = next.from + next.length;
    }
    return outcomes;
}

Result checkedRun(const Texts& arguments, const Texts& left) {
    Result result = run(arguments);
    EXPECT_EQ(result.log.substr(0, header.size()), header);
    EXPECT_EQ(result.files, left);
    const Texts outcomes = outcomesIn(result.log);
    EXPECT_EQ(outcomesIn(result.console), outcomes);
    EXPECT_EQ(outcomes.size(), result.commands.size());
    for (size_t i = 0; i < std::min(outcomes.size(), result.commands.size()); i++) {
        EXPECT_NE(outcomes[i].find('"' + result.commands[i] + '"'), std::string::npos);
    }
    return result;
}

std::string spoken(const Result& result) {
    static const std::string lineEnd = "\n \n";
    std::string text = result.console;
    for (Outcome next; (next = nextReturn(text, 0)).length != 0;) {
        text.erase(next.from, next.length + lineEnd.size());
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
