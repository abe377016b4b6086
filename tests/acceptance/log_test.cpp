// The diagnostic log: where it goes, what a line looks like, and that it never gets in the way. The machine is one
// without a supported board, whose initialisation logs four lines.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "boards.h"

namespace gputune::test {
namespace {

#if defined(_WIN32)
constexpr char kLineEnd[] = "\r\n";
#else
constexpr char kLineEnd[] = "\n";
#endif

constexpr char kOldText[] = "what an earlier process logged\n";

void WriteOldFile() {
    std::ofstream("debug.log", std::ios::binary) << kOldText;
}

// The bytes of debug.log; nothing when there is none.
std::optional<std::string> FileBytes() {
    std::ifstream file("debug.log", std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), {});
}

Machine UnsupportedMachine() {
    Machine machine(Machine::Library::None);
    machine.Captions({L"Some Graphics"});
    return machine;
}

std::string InitLog(std::string const& lineEnd) {
    return "[GetVendor()] >>>>>>> display devices" + lineEnd + "Some Graphics" + lineEnd +
           "[GetVendor()] <<<<<<< display devices" + lineEnd + "[GetVendor()] ... UNKNOWN" + lineEnd;
}

// What the library writes to standard output meanwhile. Captured text ends its lines with line feeds.
template <class Action>
std::string StandardOutputOf(Action&& action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

struct Mode {
    int number;
    bool file;
    bool console;
};

std::string NameOf(Mode const& mode) {
    return mode.number < 0 ? "Minus" + std::to_string(-mode.number) : std::to_string(mode.number);
}

// How the case is listed.
void PrintTo(Mode const& mode, std::ostream* out) {
    *out << NameOf(mode);
}

class LogMode : public testing::TestWithParam<Mode> {};

TEST_P(LogMode, OfTheFirstCallDecidesWhereTheLogGoes) {
    auto const [number, toFile, toConsole] = GetParam();
    WriteOldFile();
    Machine machine = UnsupportedMachine();

    bool initialized = true;
    std::string const printed = StandardOutputOf([&, mode = number] { initialized = machine.Init(mode); });

    EXPECT_FALSE(initialized);
    EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
    EXPECT_EQ(printed, toConsole ? InitLog("\n") : "");
    // Read while the library holds the file open: each line is there when the call returns.
    EXPECT_EQ(FileBytes(), toFile ? InitLog(kLineEnd) : kOldText);

    // Later calls neither open nor truncate a file.
    for (int const other : {1, 2, 3, 0}) {
        EXPECT_EQ(StandardOutputOf([&] { machine.Init(other); }), toConsole ? InitLog("\n") : "");
    }
    std::string const one = InitLog(kLineEnd);
    EXPECT_EQ(FileBytes(), toFile ? one + one + one + one + one : kOldText);
}

TEST(Log, WithoutAFileModeThereIsNoFile) {
    Machine machine = UnsupportedMachine();
    for (int const mode : {5, 2, 3, 1}) {
        machine.Init(mode);
        EXPECT_EQ(FileBytes(), std::nullopt);
    }
}

INSTANTIATE_TEST_SUITE_P(, LogMode,
                         testing::Values(Mode{0, false, false}, Mode{1, false, true}, Mode{2, true, false},
                                         Mode{3, true, true}, Mode{4, false, false}, Mode{5, false, false},
                                         Mode{-1, false, false}),
                         [](auto const& mode) { return NameOf(mode.param); });

TEST(Log, FileGrowsWithEveryCall) {
    Machine machine = OverdriveNBoard();
    ASSERT_TRUE(machine.Init());
    machine.TakeLog();
    std::size_t const before = FileBytes()->size();
    machine.Api().SetFanSpeedTable(nullptr, 0);
    std::string const tag = "[OD7Helper::SetFanSpeedTable(obj,int)] ... ";
    EXPECT_EQ(FileBytes()->substr(before), tag + "begin" + kLineEnd + tag + "*** NOT IMPLEMENT YET ***" + kLineEnd);
}

TEST(Log, EntryWithAnEmptyMessageEndsBehindTheSeparator) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.bus = -3}});
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().GetVGAInfo();
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD7Helper::GetVGASubDeviceID()] UDID ... ",
                                     "[OD7Helper::GetVGASubDeviceID()] ... unknown hwid",
                                     "[OD7Helper::GetAdapterName()] adapter name ... ",
                                     "[OD7Helper::GetBusNumber()] bus number ... -3",
                                 }));
}

TEST(Log, LongLinesAreWrittenWhole) {
    std::string const name(255, 'n');
    std::wstring const caption(4000, L'c');
    Machine machine = OverdriveNBoard();
    machine.Captions({L"Radeon RX", caption});
    OrderAdapters(machine, {{.udid = name, .name = name}});
    ASSERT_TRUE(machine.Init());
    Lines const init = machine.TakeLog();
    ASSERT_GT(init.size(), 3U);
    EXPECT_EQ(init[2], std::string(4000, 'c'));
    EXPECT_EQ(init[3], "[GetVendor()] <<<<<<< display devices");
    machine.Api().GetVGAInfo();
    EXPECT_EQ(machine.TakeLog()[2], "[OD7Helper::GetAdapterName()] adapter name ... " + name);
}

TEST(Log, PercentSignsInTextsAreText) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, {{.udid = "%s%n", .name = "%d %s %n"}});
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().GetVGAInfo();
    Lines const lines = machine.TakeLog();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "[OD7Helper::GetVGASubDeviceID()] UDID ... %s%n");
    EXPECT_EQ(lines[2], "[OD7Helper::GetAdapterName()] adapter name ... %d %s %n");
}

// A folder of the file's name stands in its way.
void ExpectResultsWithoutAFile(int logMode, bool printsLog) {
    std::filesystem::create_directory("debug.log");
    Machine machine = OverdriveNBoard();
    machine.Reports(Temperature{.millidegrees = 65500});

    std::string const printed = StandardOutputOf([&] {
        EXPECT_TRUE(machine.Init(logMode));
        EXPECT_TRUE(machine.Api().IsInitOk());
        machine.Api().FetchHwmValues();
        EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
    });
    EXPECT_EQ(machine.Api().GetHwmValue(2).Value, 65.5);
    EXPECT_EQ(machine.Api().GetVendorInfo(), (3ULL << 32) | 1);
    EXPECT_TRUE(std::filesystem::is_directory("debug.log"));
    EXPECT_TRUE(std::filesystem::is_empty("debug.log"));
    EXPECT_EQ(printed.find("[GetVendor()] ... AMD\n") != std::string::npos, printsLog);
    EXPECT_EQ(printed.ends_with("[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... set\n"),
              printsLog);
    std::filesystem::remove("debug.log");
}

TEST(Log, FileThatCannotBeOpenedChangesNoResult) {
    ExpectResultsWithoutAFile(GPUTUNE_LOG_FILE, false);
}

TEST(Log, FileThatCannotBeOpenedLeavesTheConsole) {
    ExpectResultsWithoutAFile(GPUTUNE_LOG_BOTH, true);
}

TEST(Log, ClosedStandardOutputChangesNoResult) {
#if defined(_WIN32)
    auto const Duplicate = [](int file) { return ::_dup(file); };
    auto const Close = [](int file) { return ::_close(file); };
    auto const Restore = [](int from, int to) { return ::_dup2(from, to); };
#else
    auto const Duplicate = [](int file) { return ::dup(file); };
    auto const Close = [](int file) { return ::close(file); };
    auto const Restore = [](int from, int to) { return ::dup2(from, to); };
#endif
    Machine machine = OverdriveNBoard();
    machine.Api();
    std::fflush(stdout);
    int const saved = Duplicate(1);
    ASSERT_GE(saved, 0);
    Close(1);
    bool const initialized = machine.Init(GPUTUNE_LOG_BOTH);
    bool const limited = machine.Api().SetPowerLimit(75, 0);
    Restore(saved, 1);
    std::clearerr(stdout);
    EXPECT_TRUE(initialized);
    EXPECT_TRUE(limited);
    // The file gets its lines all the same.
    Lines const lines = machine.TakeLog();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), "[OD7Helper::SetPowerLimit(int,int)] ADL2_OverdriveN_PowerLimit_Set ... set");
}

}  // namespace
}  // namespace gputune::test
