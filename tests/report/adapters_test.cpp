// Adapters from logs: what several logs of a server tell together, and what is
// assumed where none does.
#include "adapters.h"

#include <gtest/gtest.h>

#include "log_text.h"

namespace report {
namespace {

const std::string head = "\n No. Device MAC \n ---\n";

std::string listed(const std::vector<std::string>& rows) {
    std::string text = head;
    for (const std::string& row : rows) {
        text += " 1 " + row + "\n";
    }
    return title() + "No duplicate MACs found. Okay\n" + listing(text + "Quit\n");
}

const std::string onePort = listed({"3C01 020000000001"});
const std::string stampOutcome =
    "*** Successfully completed vpd-v0 update on device 020000000001 ***\n\n";
const std::string bootLine = "   1  bc1   boot code  ";

std::string directoryRun(const std::string& lines) {
    return onePort + directory(lines) + execute("rm 020000000001") + execute("rm q");
}

std::string tableRun(const std::string& boot) {
    return onePort + table(boot) + execute("rm 020000000001") + execute("rm q");
}

// The first adapter that the logs give; null when they are refused.
Json adapterOf(const std::vector<std::string>& logs) {
    Server server;
    for (const std::string& log : logs) {
        std::string trouble;
        if (!takeRun(server, readText(log), trouble)) {
            EXPECT_FALSE(trouble.empty());
            return nullptr;
        }
    }
    return toAdapters(server)["adapters"][0];
}

TEST(Adapters, TakeFromEachLogWhatItTells) {
    const Json both = adapterOf({directoryRun(bootLine + "7.10.4\n"), tableRun("7.10.4")});
    EXPECT_EQ(3, both["bus"]);
    EXPECT_EQ((Json{{"version", "7.10.4"}, {"line", bootLine}}), both["components"]["bc"]);
    const Json update =
        adapterOf({onePort + table("7.10.4") + visit(stampOutcome, bootLine + "7.10.4\n") +
                   comparing(1) + execute(flashCommand(true)) + finish(true)});
    EXPECT_EQ("7.10a.2.1b", update["vpd"]["V0"]);
    EXPECT_EQ("0002", update["subsystem"]);
    EXPECT_EQ("2.1.6", update["ports"][0]["driver"]);
    EXPECT_EQ("7.10.4", update["components"]["bc"]["version"]) << "as the run found it";
}

TEST(Adapters, LaterLogsCountMore) {
    const Json newer = adapterOf({directoryRun(bootLine + "7.10.4\n"), tableRun("7.12.5")});
    EXPECT_EQ((Json{{"version", "7.12.5"}, {"line", bootLine}}), newer["components"]["bc"]);
    const Json gone =
        adapterOf({directoryRun(bootLine + "7.1\n  2 ump UMP  5.0\n"), tableRun("7.1")});
    EXPECT_EQ(1U, gone["components"].size());
    const Json unread = adapterOf({directoryRun(bootLine + "7.1\n"), tableRun("NA")});
    EXPECT_EQ(1U, unread["components"].size()) << "a row of NA alone tells nothing";
}

struct Line {
    const char* what;
    std::string lines;
    const char* name;  // null when no component is to be found
    const char* version;
    std::string line;
};

TEST(Adapters, ReadDirectoriesAsTheToolDoes) {
    const Line table[] = {
        {"version behind a letter", " 1 bc1 v7.1\n", "bc", "7.1", " 1 bc1 v"},
        {"the earlier needle", " 1 x NCSI_E 1\n 2 x  MFW1 2\n 3 x mfw1 3\n", "mfw1", "3",
         " 3 x mfw1 "},
        {"a line for two", " 1 bc1 UMP 4\n", "bc", "4", " 1 bc1 UMP "},
        {"a word within a word", " 1 xbc1x 4\n", nullptr, nullptr, ""},
        {"no version", " 1 bc1 \n", nullptr, nullptr, ""},
        {"too long a line", " 1 bc1 " + std::string(300, 'x') + " 7\n", nullptr, nullptr, ""},
    };
    for (const Line& row : table) {
        const Json components = adapterOf({directoryRun(row.lines)})["components"];
        if (row.name == nullptr) {
            EXPECT_TRUE(components.empty()) << row.what;
            continue;
        }
        ASSERT_TRUE(components.contains(row.name)) << row.what;
        EXPECT_EQ(row.version, components[row.name]["version"]) << row.what;
        EXPECT_EQ(row.line, components[row.name]["line"]) << row.what;
        EXPECT_FALSE(components.contains("ump")) << row.what;
    }
}

TEST(Adapters, SayWhatIsAssumed) {
    const std::string cut = directoryRun(bootLine + "7.1\n");
    const Json bare = adapterOf({cut.substr(0, cut.find("bc1"))});
    EXPECT_TRUE(bare["components"].empty()) << "half a directory tells nothing";
    const Json none = adapterOf({directoryRun(bootLine + "7.1\n")});
    for (const char* word : {"vendor", "subsystem", "bus", "stamp"}) {
        EXPECT_NE(std::string::npos, none["comment"].get<std::string>().find(word)) << word;
    }
    EXPECT_TRUE(none["ports"][0].contains("comment"));
}

TEST(Adapters, RefuseWhatCannotBeOneServer) {
    EXPECT_TRUE(
        adapterOf({title() + "Error! Unable to build Veltrasia II device list.\n"}).is_null());
    EXPECT_TRUE(adapterOf({listed({})}).is_null());
    EXPECT_TRUE(adapterOf({listed({"3C01 02000000001"})}).is_null()) << "eleven digits";
    EXPECT_TRUE(adapterOf({onePort, listed({"3C01 020000000002"})}).is_null());
    EXPECT_TRUE(adapterOf({onePort, listed({"3C02 020000000001"})}).is_null()) << "the MAC alone";
    const Json grown = adapterOf({onePort, listed({"3C02 020000000003", "3C01 020000000001"})});
    EXPECT_EQ("3C02", grown["device"]);
}

}  // namespace
}  // namespace report
