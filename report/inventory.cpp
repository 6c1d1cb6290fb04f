#include "inventory.h"

#include <array>

#include "inventory/component_table.h"
#include "inventory/firmware_inventory.h"
#include "inventory/version_word.h"

namespace report {

constexpr size_t portLimit = 4096;
constexpr size_t lineLimitOfDirectory = 64;

using Needles = std::array<const char*, fwup::needlesPerComponent>;

struct Sought {
    const char* name;
    Needles needles;
};

// What the tool looks for, and the blocks that it reads in a mode of their own.
static std::vector<Sought> listSought() {
    std::vector<Sought> sought;
    for (const fwup::Component& component : fwup::components) {
        Needles needles = {};
        for (size_t i = 0; i < needles.size(); i++) {
            needles[i] = component.needles[i];
        }
        sought.push_back({component.name, needles});
    }
    for (const fwup::IscsiBlock& block : fwup::iscsiBlocks) {
        sought.push_back({block.name, {block.needles[0], block.needles[1]}});
    }
    return sought;
}

// The place of the first needle that the line holds; their number for none.
static size_t rankOf(const Sought& sought, std::string_view line) {
    for (size_t i = 0; i < sought.needles.size(); i++) {
        const char* needle = sought.needles[i];
        if (needle != nullptr && line.find(needle) != std::string_view::npos) {
            return i;
        }
    }
    return sought.needles.size();
}

static const std::vector<Sought>& allSought() {
    static const std::vector<Sought> sought = listSought();
    return sought;
}

// As the tool sees it: with its line feed, and nothing behind a zero byte.
static std::string seenByTool(std::string_view line) {
    return std::string(line.substr(0, line.find('\0'))) + "\n";
}

void takeListed(Listing& listing, std::string_view line) {
    fwup::DeviceRow row;
    const bool fits = line.size() + 1 < fwup::tableLineSize && listing.ports.size() < portLimit;
    if (fits && fwup::readTableLine(&listing.state, seenByTool(line).c_str(), &row)) {
        listing.ports.push_back({row.mac, row.didStr});
    }
}

void takeListed(Directory& directory, std::string_view line) {
    if (line.size() + 1 >= fwup::inventoryLineSize ||
        directory.lines.size() >= lineLimitOfDirectory) {
        return;
    }
    const std::string text = seenByTool(line);
    for (const Sought& sought : allSought()) {
        if (rankOf(sought, text) < sought.needles.size()) {
            directory.lines.push_back(text);
            return;
        }
    }
}

// The index of the line that the tool takes; the number of lines for none.
static size_t selectLine(const Sought& sought, const std::vector<std::string>& lines) {
    size_t best = sought.needles.size();
    size_t selected = lines.size();
    for (size_t i = 0; i < lines.size(); i++) {
        const size_t rank = rankOf(sought, lines[i]);
        if (rank < best) {
            best = rank;
            selected = i;
        }
    }
    return selected;
}

std::vector<ListedComponent> componentsOf(const Directory& directory) {
    const std::vector<std::string>& lines = directory.lines;
    std::vector<const char*> owners(lines.size(), nullptr);
    for (const Sought& sought : allSought()) {
        const size_t selected = selectLine(sought, lines);
        if (selected < lines.size() && owners[selected] == nullptr) {
            owners[selected] = sought.name;
        }
    }
    std::vector<ListedComponent> components;
    for (size_t i = 0; i < lines.size(); i++) {
        size_t length = 0;
        const char* line = lines[i].c_str();
        const char* word = fwup::findVersionWord(line, &length);
        if (owners[i] != nullptr && word != nullptr) {
            components.push_back({owners[i], std::string(line, word), std::string(word, length)});
        }
    }
    return components;
}

}  // namespace report
