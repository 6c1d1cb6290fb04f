#include <gtest/gtest.h>

#include "cases.h"
#include "support.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (!e2e::isSandboxed()) {
        return 1;
    }
    e2e::registerCases();
    e2e::explainFailures();
    return RUN_ALL_TESTS();
}
