#include "run/command_line.h"

#include "sandbox.h"

namespace fwup {

TEST(CommandLine, KnowsItsOptionsInAnyCaseAndNothingElse) {
    const char* const rows =
        "0|1 -S|2 -v|3 -?|5 -NoMfw|6 -crc|7 -FORCE|7 -F|8 -s -Force|8 -force -S|9 -ncsiEnable|"
        "10 -ncsiDisable|11 -iscsiCfgUpdate|12 -dir|13 -iscsicfgversion|14 -vtncsi|"
        "4 |4 s|4 -forced|4 -iscsicfg|4 -s -f|4 -f -s|4 -s -s|4 -v -s|4 -s |4 -s -force -v|4 -v -v -v";
    for (const std::string& row : split(rows, '|')) {
        const Texts words = split(row + (row.back() == ' ' ? " " : ""), ' ');
        std::vector<const char*> argv;
        for (const std::string& word : words) {
            argv.push_back(word.c_str());
        }
        argv.push_back(nullptr);
        EXPECT_EQ(std::to_string(processCmdLine(static_cast<int>(words.size()), argv.data())),
                  words[0])
            << row;
    }
    const char* const nothing[] = {nullptr};
    EXPECT_EQ(processCmdLine(0, nothing), 0);
}

}  // namespace fwup
