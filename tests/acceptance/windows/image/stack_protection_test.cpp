// A vendor's library that writes past the end of what it was given on the stack: the process ends before the damage is
// acted upon, and says why.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "ChildProcess.h"
#include "boards.h"
#include "intel_board.h"
#include "nvidia_board.h"

namespace gputune::test {
namespace {

constexpr DWORD kStackBufferOverrun = 0xC0000409;

Bytes Overrun(std::size_t size) {
    return Bytes(size, 0x41);
}

// The mark of a child that lives on.
void Mark() {
    std::ofstream("lives-on") << "yes";
}

void ExpectEndByOverrun() {
    EXPECT_EQ(RunAsChild(), kStackBufferOverrun);
    EXPECT_FALSE(std::filesystem::exists("lives-on"));
}

TEST(StackProtection, OverrunByAmdsLibraryEndsTheProcess) {
    if (!IsChild()) {
        ExpectEndByOverrun();
        return;
    }
    Machine machine = OverdriveNBoard();
    // A number of 4 bytes.
    machine.Write("ADL2_Overdrive_Caps", 4, Overrun(64));
    machine.Init();
    Mark();
}

TEST(StackProtection, OverrunByIntelsLibraryEndsTheProcess) {
    if (!IsChild()) {
        ExpectEndByOverrun();
        return;
    }
    Machine machine = IntelBoard();
    ASSERT_TRUE(machine.Init());
    // Behind the last of the record's 808 bytes.
    machine.Write("ctlPowerTelemetryGet", 1, Overrun(64), 808);
    machine.Api().FetchHwmValues();
    Mark();
}

TEST(StackProtection, OverrunByNvidiasLibraryEndsTheProcess) {
    if (!IsChild()) {
        ExpectEndByOverrun();
        return;
    }
    Machine machine = NvidiaBoard(1);
    ASSERT_TRUE(machine.Init());
    // A record of 68 bytes: version, count, three sensors of 20.
    // As far as the word that is looked at, which in the 64-bit library lies behind more.
    machine.Write("NvAPI_GPU_GetThermalSettings", 2, Overrun(256), 68);
    machine.Api().FetchHwmValues();
    Mark();
}

}  // namespace
}  // namespace gputune::test
