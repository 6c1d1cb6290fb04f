#include "schema.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <string>

#include "component.h"
#include "exit_code.h"
#include "faults.h"
#include "text.h"

namespace emulator {

namespace {

const std::string& textOf(const Json& value) {
    return value.get_ref<const std::string&>();
}

bool isWord(const Json& value) {
    return value.is_string() && !textOf(value).empty() &&
           textOf(value).find_first_of(" \t\r\n") == std::string::npos;
}

bool isMac(const Json& value) {
    return value.is_string() && isHex(textOf(value), 12, 12);
}

bool isNumber(const Json& value) {
    return value.is_number_unsigned() && value.get<uint64_t>() <= UINT32_MAX;
}

// True when the value is one of the texts, up to a null pointer.
bool isOneOf(const Json& value, const char* const* texts) {
    while (*texts != nullptr && value != *texts) {
        ++texts;
    }
    return *texts != nullptr;
}

bool isVerb(const Json& value) {
    static const char* const verbs[] = {"list", "dir", "delete", "upgrade",
                                        "show", "set", "crc",    nullptr};
    return isOneOf(value, verbs);
}

bool isFunction(const Json& value) {
    static const char* const functions[] = {
        "KVmapiInitialize",          "KVmapiUninitialize",     "KVmapiGetNumPhyNic",
        "KVmapiGetAllPhyNic",        "KVmapiGetPhyNic",        "KVmapiGetNumPhyNicEx",
        "KVmapiGetAllPhyNicHandles", "KVmapiConfigNicPartMAC", nullptr};
    return isOneOf(value, functions);
}

bool isOutput(const Json& value) {
    static const char* const outputs[] = {"whole", "half", "empty", "garbage", nullptr};
    return isOneOf(value, outputs);
}

struct Form {
    bool (*fits)(const Json&);
    const char* described;
};

constexpr Form text = {[](const Json& v) { return v.is_string(); }, "a text"};
constexpr Form textOrNull = {[](const Json& v) { return v.is_string() || v.is_null(); },
                             "a text or null"};
constexpr Form word = {isWord, "a text without blanks"};
constexpr Form pciId = {[](const Json& v) { return v.is_string() && isHex(textOf(v), 1, 4); },
                        "a text of one to four hexadecimal digits"};
constexpr Form mac = {isMac, "a text of twelve hexadecimal digits"};
constexpr Form macList = {
    [](const Json& v) { return v.is_array() && std::all_of(v.begin(), v.end(), isMac); },
    "a list of texts of twelve hexadecimal digits"};
constexpr Form number = {isNumber, "a number from 0 to 4294967295"};
constexpr Form exitCode = {[](const Json& v) { return isNumber(v) && v.get<uint32_t>() <= 255; },
                           "a number from 0 to 255"};
constexpr Form flag = {[](const Json& v) { return v.is_boolean(); }, "true or false"};
constexpr Form object = {[](const Json& v) { return v.is_object(); }, "an object"};
constexpr Form list = {[](const Json& v) { return v.is_array(); }, "a list"};
constexpr Form signal = {[](const Json& v) { return signalNumber(v) != 0; },
                         "a signal's number or its name, such as \"SIGKILL\""};
constexpr Form output = {isOutput, "\"whole\", \"half\", \"empty\" or \"garbage\""};
constexpr Form verb = {isVerb, "list, dir, delete, upgrade, show, set or crc"};
constexpr Form function = {isFunction, "the name of a library function"};

struct Rule {
    const char* key;
    const Form& form;
    bool required = false;
};

constexpr Rule documentRules[] = {{"adapters", list, true}, {"faults", list}};
constexpr Rule adapterRules[] = {
    {"vendor", pciId, true},      {"device", pciId, true}, {"subsystemVendor", pciId, true},
    {"subsystem", pciId, true},   {"bus", number, true},   {"ports", list, true},
    {"components", object, true}, {"vpd", object}};
constexpr Rule portRules[] = {
    {"mac", mac, true},         {"device", number},   {"function", number}, {"driver", textOrNull},
    {"partitionMacs", macList}, {"libraryMac", text}, {"listed", flag},     {"reported", flag}};
constexpr Rule componentRules[] = {
    {"version", word, true}, {"name", word}, {"type", text}, {"line", text}, {"enabled", flag}};
constexpr Rule vpdRules[] = {{"V0", text}, {"YB", text}};
constexpr Rule commandFaultRules[] = {
    {"command", object, true}, {"times", number},        {"delay", number},
    {"groupSignal", signal},   {"leaderSignal", signal}, {"exit", exitCode},
    {"signal", signal},        {"output", output},       {"text", text},
    {"remove", flag},          {"sticks", flag}};
constexpr Rule commandRules[] = {
    {"mac", mac}, {"verb", verb}, {"component", word}, {"nth", number}};
constexpr Rule callFaultRules[] = {{"call", object, true},
                                   {"times", number},
                                   {"status", number},
                                   {"count", number},
                                   {"sticks", flag}};
constexpr Rule callRules[] = {{"function", function}, {"nth", number}};

[[noreturn]] void refuse(const std::string& where, const std::string& why) {
    throw Failure(exitFleet, "adapters.json: " + where + ": " + why);
}

template <size_t Count>
void checkObject(const Json& value, const Rule (&rules)[Count], const std::string& where) {
    if (!value.is_object()) {
        refuse(where, "must be an object");
    }
    for (const auto& member : value.items()) {
        const std::string& key = member.key();
        const Rule* rule = std::find_if(std::begin(rules), std::end(rules),
                                        [&key](const Rule& r) { return key == r.key; });
        if (key == "comment") {
            continue;
        }
        if (rule == std::end(rules)) {
            refuse(where, format("unknown key \"%s\"", key.c_str()));
        }
        if (!rule->form.fits(member.value())) {
            refuse(where, format("\"%s\" must be %s", key.c_str(), rule->form.described));
        }
    }
    for (const Rule& rule : rules) {
        if (rule.required && !value.contains(rule.key)) {
            refuse(where, format("\"%s\" is missing", rule.key));
        }
    }
}

void checkComponents(const Json& components, const std::string& where) {
    for (const auto& [name, component] : components.items()) {
        if (componentNamed(name) == nullptr) {
            refuse(where, format("unknown component \"%s\"", name.c_str()));
        }
        if (component.is_object()) {
            checkObject(component, componentRules, format("%s.%s", where.c_str(), name.c_str()));
        } else if (!isWord(component)) {
            refuse(where, format("\"%s\" must be a version or an object", name.c_str()));
        }
    }
}

void checkAdapter(const Json& adapter, const std::string& where) {
    checkObject(adapter, adapterRules, where);
    for (size_t i = 0; i < adapter["ports"].size(); ++i) {
        checkObject(adapter["ports"][i], portRules, where + format(".ports[%zu]", i));
    }
    checkComponents(adapter["components"], where + ".components");
    if (adapter.contains("vpd")) {
        checkObject(adapter["vpd"], vpdRules, where + ".vpd");
    }
}

void checkFault(const Json& fault, const std::string& where) {
    if (fault.is_object() && fault.contains("call")) {
        checkObject(fault, callFaultRules, where);
        checkObject(fault["call"], callRules, where + ".call");
    } else {
        checkObject(fault, commandFaultRules, where);
        checkObject(fault["command"], commandRules, where + ".command");
    }
}

}  // namespace

void checkDocument(const Json& document) {
    checkObject(document, documentRules, "the whole");
    for (size_t i = 0; i < document["adapters"].size(); ++i) {
        checkAdapter(document["adapters"][i], format("adapters[%zu]", i));
    }
    const size_t faults = document.contains("faults") ? document["faults"].size() : 0;
    for (size_t i = 0; i < faults; ++i) {
        checkFault(document["faults"][i], format("faults[%zu]", i));
    }
}

}  // namespace emulator
