#include "version/version_string.h"

#include <climits>

#include "fixture.h"

namespace fwup {

static const std::string fillsUp = "7.12b.4" + std::string(53, 'x');  // 60 of 63 characters

TEST(VersionString, IsReadWhenItFitsTheGrammar) {
    const struct {
        std::string text;
        _build_version_t fields;
    } rows[] = {
        {"7.12b.4.3a", {7, 12, 'b', 4, 3, 'a'}},
        {"007.12B.4.3Z", {7, 12, 'b', 4, 3, 'z'}},
        {"..7..12b.4.3a.", {7, 12, 'b', 4, 3, 'a'}},
        {"7.12b.x.3a", {7, 12, 'b', 0, 3, 'a'}},
        {"7.12b. -9\xe9.3a", {7, 12, 'b', -9, 3, 'a'}},
        {"99999999999.2147483648b.-99999999999.3a", {INT_MAX, INT_MAX, 'b', INT_MIN, 3, 'a'}},
        {fillsUp + ".3a and more", {7, 12, 'b', 4, 3, 'a'}},
    };
    _build_version_t out = {};
    for (const auto& row : rows) {
        EXPECT_EQ(isVersionString(row.text.c_str(), &out), 1) << row.text;
        EXPECT_EQ(cmp_versions(&out, &row.fields), 0) << row.text;
    }
    const std::string others =
        "|.|7.12b.4|7.12b.4.3|7.12.4.3a|7.12bb.4.3a|7.12{.4.3a|7.b.4.3a|7.12b.4.3a.1| 7.12b.4.3a|7.12b.4.3a\n"
        "|-7.12b.4.3a|7.1 b.4.3a|7.12\xe9.4.3a|7.\xb2z.4.3a|7.12b.4.3a\x80|" +
        fillsUp + "x.3a";
    for (const std::string& text : split(others, '|')) {
        EXPECT_EQ(isVersionString(text.c_str(), &out), 0) << text;
    }
    EXPECT_EQ(isVersionString(nullptr, &out) + isVersionString("7.12b.4.3a", nullptr), 0);
    EXPECT_EQ(cmp_versions(&out, nullptr) + cmp_versions(nullptr, &out), -4);
}

TEST(VersionString, OlderAndUnreadableStampsForceAnUpdate) {
    const char* const older =
        "7.12b.4.3a<7.12b.4.3b|7.12b.4.4z<7.12b.4.12a|7.12b.-1.9z<7.12b.0.1a|7.12a.9.9z<7.12b.1.1a|"
        "7.4z.9.9z<7.12a.1.1a|6.99z.9.9z<7.1a.1.1a";
    for (const std::string& row : split(older, '|')) {
        const Texts pair = split(row, '<');
        EXPECT_EQ(need_to_force_update(pair[0].c_str(), pair[1].c_str()), 1) << row;
        EXPECT_EQ(need_to_force_update(pair[1].c_str(), pair[0].c_str()), 0) << row;
    }
    EXPECT_EQ(need_to_force_update("7.12b.4.3a", "7.12B.4.3A"), 0);
    for (const char* unreadable : {"2.3.4a", "", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(need_to_force_update(unreadable, "7.12b.4.3a"), 1);
        EXPECT_EQ(need_to_force_update("7.12b.4.3a", unreadable), 1);
    }
}

}  // namespace fwup
