#include "inventory.h"

#include <map>

#include "inventory/firmware_inventory.h"
#include "inventory/version_word.h"

namespace report {

constexpr size_t portLimit = 4096;
constexpr size_t lineLimitOfDirectory = 256;

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
    if (line.size() + 1 < fwup::inventoryLineSize &&
        directory.lines.size() < lineLimitOfDirectory) {
        directory.lines.push_back(seenByTool(line));
    }
}

template <size_t count>
static const std::string* findLine(const Directory& directory,
                                   const char* const (&needles)[count]) {
    for (const char* needle : needles) {
        for (const std::string& line : directory.lines) {
            if (needle != nullptr && line.find(needle) != std::string::npos) {
                return &line;
            }
        }
    }
    return nullptr;
}

bool lists(const Directory& directory, const fwup::IscsiBlock& block) {
    return findLine(directory, block.needles) != nullptr;
}

std::vector<ListedComponent> componentsOf(const Directory& directory) {
    std::map<const std::string*, const char*> owners;  // in the order of the lines
    for (const fwup::Component& component : fwup::components) {
        owners.emplace(findLine(directory, component.needles), component.name);
    }
    for (const fwup::IscsiBlock& block : fwup::iscsiBlocks) {
        owners.emplace(findLine(directory, block.needles), block.name);
    }
    owners.erase(nullptr);
    std::vector<ListedComponent> components;
    for (const auto& [line, name] : owners) {
        size_t length = 0;
        const char* begin = line->c_str();
        if (const char* word = fwup::findVersionWord(begin, &length)) {
            components.push_back({name, std::string(begin, word), std::string(word, length)});
        }
    }
    return components;
}

}  // namespace report
