#include <gtest/gtest.h>

#include "expect_errors.h"

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    wavo::testing::InstallReportListener();
    return RUN_ALL_TESTS();
}
