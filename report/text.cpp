#include "text.h"

#include <charconv>

namespace report {

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

std::string plainText(std::string_view text) {
    std::string plain(text.substr(0, endsWith(text, "\r") ? text.size() - 1 : text.size()));
    for (char& c : plain) {
        if (c == '\r') {
            c = ' ';
        } else if ((c < ' ' && c != '\t') || c > '~') {
            c = '?';
        }
    }
    return plain;
}

bool readNumber(std::string_view text, int& number) {
    const char* end = text.data() + text.size();
    const std::from_chars_result result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

Pattern takeApart(std::string_view text) {
    Pattern pattern;
    for (;;) {
        const size_t open = text.find('<');
        pattern.parts[pattern.fields] = text.substr(0, open);
        if (open == std::string_view::npos) {
            return pattern;
        }
        pattern.fields++;
        text.remove_prefix(text.find('>') + 1);
    }
}

bool match(const Pattern& pattern, std::string_view line, std::string_view (&fields)[maxFields]) {
    const std::string_view first = pattern.parts[0];
    const std::string_view last = pattern.parts[pattern.fields];
    if (pattern.fields == 0) {
        return line == first;
    }
    if (line.size() < first.size() + last.size() || !startsWith(line, first) ||
        !endsWith(line, last)) {
        return false;
    }
    std::string_view rest = line.substr(0, line.size() - last.size());
    for (size_t i = pattern.fields - 1; i > 0; i--) {
        const size_t at = rest.rfind(pattern.parts[i]);
        if (at == std::string_view::npos || at < first.size()) {
            return false;
        }
        fields[i] = rest.substr(at + pattern.parts[i].size());
        rest = rest.substr(0, at);
    }
    fields[0] = rest.substr(first.size());
    return true;
}

// The next column, cut off the front of `rest`.
static std::string_view nextColumn(std::string_view& rest, char separator) {
    const size_t end = rest.find(separator);
    const std::string_view column = rest.substr(0, end);
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    return column;
}

bool readTableRow(std::string_view line, Port& row) {
    const std::string_view name = nextColumn(line, '\t');
    const size_t open = name.find(" (");
    if (open == std::string_view::npos || open == 0 || !endsWith(name, ")")) {
        return false;
    }
    row.mac = name.substr(0, open);
    row.label = name.substr(open + 2, name.size() - open - 3);
    for (std::string& version : row.versions) {
        version = nextColumn(line, '\t');
    }
    return nextColumn(line, '\t').empty() && readNumber(nextColumn(line, ':'), row.bus) &&
           readNumber(nextColumn(line, ':'), row.device) && readNumber(line, row.function);
}

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
