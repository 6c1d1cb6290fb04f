#include "verbs.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "component.h"
#include "image.h"
#include "text.h"

namespace emulator {

namespace {

Json& componentsOf(Session& session) {
    return (*session.port.adapter)["components"];
}

void say(Session& session, const std::string& text) {
    session.console.text += text;
}

// With colons: twelve bare digits can spell a component's marker, such as BC1.
std::string colonMac(const Port& port) {
    std::string mac = (*port.port)["mac"].get<std::string>();
    for (size_t i = mac.size() - 2; i > 0; i -= 2) {
        mac.insert(i, ":");
    }
    return mac;
}

void sayHeading(Session& session) {
    say(session, "\nAdapter " + colonMac(session.port) + ", device " +
                     (*session.port.adapter)["device"].get<std::string>() + "\n\n");
}

ExitCode showDirectory(Session& session) {
    sayHeading(session);
    say(session, " No.  Name       Type                  Address   State     Version\n");
    say(session, " ---  ---------  --------------------  --------  --------  ---------\n");
    unsigned number = 0;
    for (const auto& [name, entry] : componentsOf(session).items()) {
        const ComponentKind& kind = *componentNamed(name);
        ++number;
        const std::string version = componentText(entry, "version", "");
        const std::string line = componentText(entry, "line", "");
        if (!line.empty()) {
            say(session, line + version + "\n");
            continue;
        }
        // The version stays the last word of its line: readers take it from there.
        say(session, format(" %3u  %-9s  %-20s  %08x  %-8s  %s\n", number,
                            componentText(entry, "name", kind.listedAs).c_str(),
                            componentText(entry, "type", kind.type).c_str(), number * 0x8000,
                            componentEnabled(entry) ? "enabled" : "disabled", version.c_str()));
    }
    say(session, number == 0 ? " The firmware directory is empty.\n\n" : "\n");
    return exitDone;
}

void sayPorts(Session& session) {
    say(session, "Veltrasia II adapter utility (virtual adapters)\n\n");
    say(session, " No.  Device  MAC           Bus:Dev.Fn  Driver\n");
    say(session, " ---  ------  ------------  ----------  --------\n");
    unsigned number = 0;
    for (const Port& port : portsOf(session.fleet, "listed")) {
        const Json driver = port.port->value("driver", Json());
        say(session,
            format(" %3u  %-6s  %s  %3u:%02u.%u    %s\n", ++number,
                   (*port.adapter)["device"].get<std::string>().c_str(),
                   (*port.port)["mac"].get<std::string>().c_str(), port.adapter->value("bus", 0U),
                   port.port->value("device", 0U), port.port->value("function", 0U),
                   driver.is_string() ? driver.get<std::string>().c_str() : "none"));
    }
}

ExitCode listPorts(Session& session) {
    sayPorts(session);
    for (;;) {
        const std::string answer = ask(session.console, "\nType q to Quit: ", "q");
        if (sameText(answer, "q") || sameText(answer, "quit")) {
            return exitDone;
        }
    }
}

ExitCode deleteBlock(Session& session) {
    const std::string& name = session.command.component;
    if (name != "isb_cfg" && name != "isb_cfg2") {
        throw Failure(exitUsage, "only isb_cfg and isb_cfg2 can be deleted");
    }
    if (componentsOf(session).erase(name) == 0) {
        throw Failure(exitNoComponent, "the adapter has no " + name);
    }
    session.changed = true;
    say(session, "Deleted " + name + ".\n");
    return exitDone;
}

void writeBackup(Session& session) {
    std::string content = "Firmware of adapter " + colonMac(session.port) + "\n";
    for (const auto& [name, entry] : componentsOf(session).items()) {
        content += name + " " + componentText(entry, "version", "") + "\n";
    }
    FILE* file = fopen(session.command.backup.c_str(), "w");
    const bool written = file != nullptr && fputs(content.c_str(), file) >= 0;
    if ((file != nullptr && fclose(file) != 0) || !written) {
        throw Failure(exitOutput, session.command.backup + ": the backup can't be written");
    }
    say(session, "Saved the present versions in " + session.command.backup + ".\n");
}

// The component that decides whether this image suits the adapter and is newer;
// null when the image was made for something else.
Json* targetOf(Session& session, const Image& image) {
    const ImageKind& kind = *imageNamed(image.component);
    const ImageKind& asked = *imageNamed(session.command.component);
    Json& components = componentsOf(session);
    const bool fits = std::string(kind.option) == asked.option &&
                      sameText((*session.port.adapter)["device"].get<std::string>(), image.device);
    return fits && components.contains(kind.writes) ? &components[kind.writes] : nullptr;
}

ExitCode upgrade(Session& session) {
    const Command& command = session.command;
    const Image image = readImage(command.image);
    Json* target = targetOf(session, image);
    if (target == nullptr) {
        say(session, command.image + " holds " + image.component + " for device " + image.device +
                         ": not for this component of this adapter.\n");
        return exitWrongImage;
    }
    const std::string installed = componentText(*target, "version", "");
    if (!command.force && strverscmp(image.version.c_str(), installed.c_str()) <= 0) {
        say(session, command.component + " " + installed + " is installed, " + command.image +
                         " holds " + image.version + ": no upgrade needed.\n");
        return exitNotNewer;
    }
    if (!command.backup.empty()) {
        writeBackup(session);
    }
    setComponent(*target, "version", image.version);
    const char* other = imageNamed(image.component)->writesToo;
    if (other != nullptr && componentsOf(session).contains(other)) {
        setComponent(componentsOf(session)[other], "version", image.version);
    }
    session.changed = true;
    say(session, "Upgraded " + command.component + " from " + installed + " to " + image.version +
                     " with " + command.image + ".\n");
    return exitDone;
}

std::string vpdName(const Command& command) {
    return command.component == "vpdv0" ? "V0" : "YB";
}

ExitCode showField(Session& session) {
    const std::string name = vpdName(session.command);
    // No heading names the field: readers take the first line that does.
    sayHeading(session);
    say(session, "VPD (" + name + "): " + vpdField(*session.port.adapter, name) + "\n");
    return exitDone;
}

// Bytes in any spelling, "0x0F", "f" or "0xf", in the one that is read back.
std::string plainBytes(const std::string& value) {
    std::istringstream words(value);
    std::string word;
    std::string bytes;
    while (words >> word) {
        const std::string digits = word.compare(0, 2, "0x") == 0 ? word.substr(2) : word;
        if (!isHex(digits, 1, 2)) {
            throw Failure(exitUsage, word + " is no byte value");
        }
        bytes += format("%s0x%lx", bytes.empty() ? "" : " ", strtoul(digits.c_str(), nullptr, 16));
    }
    return bytes;
}

ExitCode setField(Session& session) {
    const Command& command = session.command;
    const std::string name = vpdName(command);
    const std::string value = name == "YB" ? plainBytes(command.value) : command.value;
    (*session.port.adapter)["vpd"][name] = value;
    session.changed = true;
    say(session, "Wrote " + name + ".\n");
    return exitDone;
}

ExitCode setSwitch(Session& session, const ComponentKind& kind) {
    Json& components = componentsOf(session);
    if (!components.contains(kind.name)) {
        throw Failure(exitNoComponent, std::string("the adapter has no ") + kind.name);
    }
    const bool enabled = session.command.value == "1";
    setComponent(components[kind.name], "enabled", enabled);
    session.changed = true;
    say(session, std::string(kind.name) + " is now " + (enabled ? "enabled" : "disabled") + ".\n");
    return exitDone;
}

ExitCode setValue(Session& session) {
    const ComponentKind* kind = componentSwitchedBy(session.command.component);
    return kind != nullptr ? setSwitch(session, *kind) : setField(session);
}

ExitCode checkCrc(Session& session) {
    sayHeading(session);
    const std::string answer =
        ask(session.console, "The check takes a while. Start it now (y/n)? ", "n");
    if (!sameText(answer, "y") && !sameText(answer, "yes")) {
        say(session, "Cancelled.\n");
        return exitCancelled;
    }
    for (const auto& [name, entry] : componentsOf(session).items()) {
        say(session, format(" %-9s  ok\n", name.c_str()));
    }
    if (!componentsOf(session).contains("bc")) {
        say(session, " The boot code is missing.\n");
        return exitCrc;
    }
    return exitDone;
}

const struct {
    const char* name;
    ExitCode (*action)(Session&);
} verbs[] = {
    {"list", listPorts}, {"dir", showDirectory}, {"delete", deleteBlock}, {"upgrade", upgrade},
    {"show", showField}, {"set", setValue},      {"crc", checkCrc},
};

}  // namespace

ExitCode carryOut(Session& session) {
    for (const auto& verb : verbs) {
        if (session.command.verb == verb.name) {
            return verb.action(session);
        }
    }
    throw Failure(exitUsage, "nothing to carry out");
}

}  // namespace emulator
