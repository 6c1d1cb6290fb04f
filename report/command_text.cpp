#include "command_text.h"

#include "tool_line.h"

namespace report {

std::string_view wordOf(std::string_view command, size_t count) {
    for (;;) {
        const size_t end = command.find(' ');
        if (count == 0) {
            return command.substr(0, end);
        }
        if (end == std::string_view::npos) {
            return {};
        }
        command.remove_prefix(end + 1);
        count--;
    }
}

bool isLogged(std::string_view command) {
    const size_t at = command.rfind(" >>");
    if (at == std::string_view::npos) {
        return false;
    }
    const std::string_view target = command.substr(at + 3);
    return target.substr(target.rfind('/') + 1).rfind("kvlnfwup", 0) == 0;
}

bool isFlash(std::string_view command) {
    return wordOf(command, 2) == "upgrade";
}

bool findReturn(std::string_view line, Return& found) {
    // Most lines end in something else than a digit, which is quickly seen.
    if (line.empty() || line.back() < '0' || line.back() > '9') {
        return false;
    }
    const size_t code = line.rfind(returnedCode);
    if (code == std::string_view::npos ||
        !readNumber(line.substr(code + returnedCode.size()), found.code)) {
        return false;
    }
    const size_t begin = line.substr(0, code).rfind(commandResult);
    if (begin == std::string_view::npos) {
        return false;
    }
    found.line = line.substr(begin);
    found.command = line.substr(begin + commandResult.size(), code - begin - commandResult.size());
    return true;
}

}  // namespace report
