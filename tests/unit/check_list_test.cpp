#include "inventory/check_list.h"

#include "fixture.h"

namespace fwup {

using CheckList = Fixture;

static void registerBus(int bus) {
    const Ports ports({makePort("", 1, bus)});
    EXPECT_EQ(RefineTheList(&ports.list), 1);
}

// How a bus answers before it is marked, to two attempts to mark it, and after.
static std::string mark(int bus) {
    std::string answers = IsUpdatedBefore(bus) ? "updated" : "new";
    answers += UpdateCheckList(bus) ? ", marked" : "";
    answers += UpdateCheckList(bus) ? ", marked again" : "";
    return answers + (IsUpdatedBefore(bus) ? ", updated" : ", new");
}

TEST_F(CheckList, MarksEachAdapterOnceAndNeverAnUnknownBus) {
    for (const int bus : {3, 3, -1}) {
        registerBus(bus);
    }
    EXPECT_EQ(checkList[1].bus, -1);
    EXPECT_EQ(mark(3), "new, marked, updated");
    EXPECT_EQ(mark(-1), "new, new");
    EXPECT_EQ(mark(4), "new, new");
    registerBus(3);
    EXPECT_EQ(mark(3), "updated, updated");
    // 255 more fill the table; what comes then has no place in it.
    for (int bus = 256; bus >= 0; bus--) {
        registerBus(bus);
    }
    EXPECT_EQ(mark(1), "new, marked, updated");
    EXPECT_EQ(mark(0), "new, new");
    EXPECT_EQ(mark(-1), "new, new");
}

}  // namespace fwup
