// What an update package is made of, as data and as a table.
//   package_describe write OPTION... <SUMS >package.json
//   package_describe show <package.json
// SUMS is what sha256sum says of the files in the current directory. The exit
// status is 0, or 1 when something can't be read, written or understood.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "exit_code.h"
#include "image.h"

namespace package {

using Json = nlohmann::ordered_json;

static const char formatName[] = "zentrix-package/1";
static const std::string imageEnd = ".bin";
static const size_t deviceLength = 4;

// What can't be told is empty.
struct Facts {
    std::string zentrix;  // its version
    std::string commit;
    bool changed = false;  // since that commit
    std::string build;
    std::string fleet;  // of a rehearsal package
    std::string glibc;
};

// ---- Writing.

static Json orNull(const std::string& text) {
    return text.empty() ? Json(nullptr) : Json(text);
}

// The version is null where the image isn't one for virtual adapters: a real
// one's is its maker's secret.
static Json imageVersion(const std::string& name) {
    try {
        return emulator::readImage(name).version;
    } catch (const emulator::Failure&) {
        return nullptr;
    }
}

static bool isImage(const std::string& name) {
    return name.size() > deviceLength + imageEnd.size() && name.find('/') == std::string::npos &&
           name.compare(name.size() - imageEnd.size(), imageEnd.size(), imageEnd) == 0;
}

static Json fileData(const std::string& name, const std::string& sum) {
    Json file = {{"file", name}};
    if (isImage(name)) {
        file["device"] = name.substr(0, deviceLength);
        file["component"] = name.substr(deviceLength, name.size() - deviceLength - imageEnd.size());
        file["version"] = imageVersion(name);
    }
    file["size"] = std::filesystem::file_size(name);
    file["sha256"] = sum;
    return file;
}

static Json packageData(const Facts& facts, std::istream& sums) {
    Json data = {{"format", formatName},
                 {"zentrix",
                  {{"version", facts.zentrix},
                   {"commit", orNull(facts.commit)},
                   {"uncommittedChanges", facts.changed}}},
                 {"buildVersion", facts.build},
                 {"rehearsal", orNull(facts.fleet)},
                 {"glibc", orNull(facts.glibc)},
                 {"program", nullptr},
                 {"utility", nullptr},
                 {"images", Json::array()},
                 {"others", Json::array()}};
    std::string sum;
    std::string name;
    while (sums >> sum >> name) {
        const Json file = fileData(name, sum);
        if (name == "zentrix") {
            data["program"] = file;
        } else if (name == "lnxfwvt2") {
            data["utility"] = file;
        } else {
            data[isImage(name) ? "images" : "others"].push_back(file);
        }
    }
    if (data["program"].is_null() || data["utility"].is_null()) {
        throw std::runtime_error("the sums lack zentrix or lnxfwvt2");
    }
    return data;
}

// ---- Showing. The data may be anybody's: nothing in it but plain ASCII
// reaches the terminal.

static std::string shown(const Json& value) {
    if (value.is_null()) {
        return "-";
    }
    std::string text = value.is_string() ? value.get<std::string>() : value.dump();
    std::replace_if(
        text.begin(), text.end(),
        [](unsigned char character) { return character < ' ' || character >= 0x7f; }, '?');
    return text;
}

using Row = std::array<std::string, 6>;

static const Row heading = {"FILE", "DEVICE", "COMPONENT", "VERSION", "SIZE", "SHA-256"};
static const std::array<const char*, 6> keys = {"file",    "device", "component",
                                                "version", "size",   "sha256"};

static Row rowOf(const Json& file) {
    Row row;
    for (size_t i = 0; i < row.size(); i++) {
        row[i] = file.contains(keys[i]) ? shown(file[keys[i]]) : "";
    }
    return row;
}

static void printTable(const std::vector<Row>& rows) {
    std::array<int, 5> widths = {};
    for (const Row& row : rows) {
        for (size_t i = 0; i < widths.size(); i++) {
            widths[i] = std::max(widths[i], static_cast<int>(row[i].size()));
        }
    }
    for (const Row& row : rows) {
        for (size_t i = 0; i + 1 < widths.size(); i++) {
            printf("%-*s  ", widths[i], row[i].c_str());
        }
        printf("%*s  %s\n", widths[4], row[4].c_str(), row[5].c_str());
    }
}

static void show(const Json& data) {
    const Json& zentrix = data.at("zentrix");
    printf("build %s\n", shown(data.at("buildVersion")).c_str());
    printf("zentrix %s, commit %s%s\n", shown(zentrix.at("version")).c_str(),
           shown(zentrix.at("commit")).c_str(),
           zentrix.at("uncommittedChanges") == true ? " with uncommitted changes" : "");
    printf("needs C library %s\n", shown(data.at("glibc")).c_str());
    if (!data.at("rehearsal").is_null()) {
        printf("rehearsal on virtual adapters: %s\n", shown(data.at("rehearsal")).c_str());
    }
    std::vector<Row> rows = {heading};
    for (const Json& image : data.at("images")) {
        rows.push_back(rowOf(image));
    }
    rows.push_back(rowOf(data.at("program")));
    rows.push_back(rowOf(data.at("utility")));
    for (const Json& other : data.at("others")) {
        rows.push_back(rowOf(other));
    }
    printf("\n");
    printTable(rows);
}

static void showFrom(std::istream& input) {
    const Json data = Json::parse(input);
    if (!data.is_object() || data.value("format", "") != formatName) {
        throw std::runtime_error(std::string("its format isn't ") + formatName);
    }
    show(data);
}

static int run(int argc, char** argv) {
    Facts facts;
    CLI::App app("Says what an update package is made of.", "package_describe");
    app.require_subcommand(1);
    CLI::App* write = app.add_subcommand("write", "package.json, from the sums of the files here");
    write->add_option("--zentrix", facts.zentrix, "its version")->required();
    write->add_option("--commit", facts.commit, "that it was packed from");
    write->add_flag("--changed", facts.changed, "with uncommitted changes");
    write->add_option("--build-version", facts.build)->required();
    write->add_option("--fleet", facts.fleet, "of a rehearsal package");
    write->add_option("--glibc", facts.glibc, "the oldest C library that will do");
    app.add_subcommand("show", "a package.json as a table");
    CLI11_PARSE(app, argc, argv);
    if (write->parsed()) {
        puts(packageData(facts, std::cin)
                 .dump(2, ' ', false, Json::error_handler_t::replace)
                 .c_str());
    } else {
        showFrom(std::cin);
    }
    if (fflush(stdout) != 0 || ferror(stdout) != 0) {
        throw std::runtime_error("the answer can't be written");
    }
    return 0;
}

}  // namespace package

int main(int argc, char** argv) {
    try {
        return package::run(argc, argv);
    } catch (const std::exception& error) {
        fprintf(stderr, "package_describe: %s\n", error.what());
        return 1;
    }
}
