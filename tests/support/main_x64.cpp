// The main function of 64-bit test programs.
#include <gtest/gtest.h>

#include "high_memory.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return gputune::test::RunInHighMemory([] { return RUN_ALL_TESTS(); });
}
