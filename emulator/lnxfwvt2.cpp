// The flash utility over the virtual adapters of adapters.json: reads the
// command line, carries the command out, and brings in the faults that the
// file asks for.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include "faults.h"
#include "verbs.h"

namespace emulator {

namespace {

Json eventOf(const Command& command) {
    return Json{{"mac", command.mac}, {"verb", command.verb}, {"component", command.component}};
}

void dieBy(int number) {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);  // a core file would litter the package
    signal(number, SIG_DFL);
    raise(number);
}

// Carries the command out in memory; what stands in its way goes to standard
// error and becomes the exit code.
int attempt(Session& session) {
    try {
        return carryOut(session);
    } catch (const Failure& failure) {
        fprintf(stderr, "lnxfwvt2: %s\n", failure.what());
        return failure.code;
    }
}

// Saves before anything is said: no success is reported that was lost.
int obey(Session& session) {
    const int code = attempt(session);
    if (session.changed) {
        saveFleet(session.fleet);
    }
    release(session.console);
    return code;
}

// A fault that ends the command with a signal or an exit code means that it was
// not carried out, except for the code that says "done, after a reboot".
bool isRefusal(const Json& fault) {
    return fault.contains("signal") ||
           fault.value("exit", int{exitRebootRequired}) != exitRebootRequired;
}

std::string faultyText(const Session& session, const Json& fault) {
    return fault.value("text", distorted(session.console.text, fault.value("output", "whole")));
}

int obeyFaulty(Session& session, const Json& fault, const char* program) {
    if (fault.contains("leaderSignal")) {
        kill(getpgrp(), signalNumber(fault["leaderSignal"]));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(fault.value("delay", 0U)));
    if (fault.contains("groupSignal")) {
        kill(0, signalNumber(fault["groupSignal"]));
    }
    const bool refused = isRefusal(fault);
    session.console.held = fault.contains("output") || fault.contains("text");
    if (refused) {
        session.command.backup.clear();
    }
    const int code = !refused || fault.contains("output") ? attempt(session) : int{exitDone};
    if (session.changed && !refused) {
        saveFleet(session.fleet);
    }
    session.console.text = faultyText(session, fault);
    release(session.console);
    if (fault.value("remove", false) && unlink(program) != 0) {
        perror(program);
    }
    if (fault.contains("signal")) {
        dieBy(signalNumber(fault["signal"]));
    }
    return fault.value("exit", code);
}

int carryOutLine(const std::vector<std::string>& arguments, const char* program) {
    const Command command = parseCommand(arguments);
    Session session = {command, loadFleet()};
    if (!command.mac.empty()) {
        session.port = findPort(session.fleet, command.mac);
    }
    watchForAnother(session.fleet);
    const Json* fault = dueFault(session.fleet, "command", eventOf(command));
    return fault == nullptr ? obey(session) : obeyFaulty(session, *fault, program);
}

int run(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments == std::vector<std::string>{"--help"}) {
        fputs(usageText, stdout);
        return exitDone;
    }
    if (arguments == std::vector<std::string>{"--reset-counters"}) {
        resetCounters(loadFleet());
        return exitDone;
    }
    return carryOutLine(arguments, argv[0]);
}

}  // namespace

}  // namespace emulator

int main(int argc, char** argv) {
    try {
        return emulator::run(argc, argv);
    } catch (const emulator::Failure& failure) {
        fprintf(stderr, "lnxfwvt2: %s\n", failure.what());
        return failure.code;
    } catch (const std::exception& error) {
        fprintf(stderr, "lnxfwvt2: %s\n", error.what());
        return 1;
    }
}
