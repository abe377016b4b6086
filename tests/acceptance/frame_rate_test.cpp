// The frame rate that the driver measures. The display names here open nowhere, but for the tests that say which do.
#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>

#include "overdrive8_traffic.h"
#if !defined(_WIN32)
#include "machine_native.h"
#endif

namespace gputune::test {
namespace {

std::string const kTag = "[OD8Helper::GetFrameRate()]";
std::string const kList = "ADL2_Adapter_AdapterInfoX3_Get";
std::string const kMetrics = "ADL2_Adapter_FrameMetrics_Get";
constexpr int kNoSource = -1;  // all ones

Lines Names(Lines const& names) {
    return Entries(kTag + " dispDeviceName", names);
}

void ExpectMeasured(Machine& machine, int source) {
    EXPECT_EQ(DescribeAmdCall(machine.LastCall(kMetrics)), "Adapter_FrameMetrics_Get 5 #" + std::to_string(source));
}

TEST(FrameRate, WithoutAListAsksAboutNoSource) {
    Machine machine = Overdrive8Board(0);
    OrderDisplays(machine, 7, Bytes());
    machine.Reports(FrameRate{59.9F});
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetFrameRate(), 59);
    EXPECT_EQ(machine.TakeLog(), Lines({"[OD8Helper::GetFrameRate()] numAdapters ... 0",
                                        "[OD8Helper::GetFrameRate()] current fps ... 59.900002"}));
    EXPECT_EQ(TakeAmdTraffic(machine), Lines({"Adapter_AdapterInfoX3_Get 5", "Adapter_FrameMetrics_Get 5 #-1"}));
}

TEST(FrameRate, LooksAtEveryNameWhateverTheListCallReturned) {
    Machine machine = Overdrive8Board(0);
    OrderDisplays(machine, {"\\\\.\\NOWHERE1", "", "\\\\.\\NOWHERE2"});
    machine.Reports(FrameRate{144.0F});
    ASSERT_TRUE(machine.InitAndForget());
    for (int const result : {0, -1, 1}) {
        SCOPED_TRACE(result);
        machine.Result(kList, result);
        EXPECT_EQ(machine.Api().GetFrameRate(), 144);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"3"}) +
                                         Names({"\\\\.\\NOWHERE1", "", "\\\\.\\NOWHERE2"}) +
                                         Entries(kTag + " current fps", {"144.000000"}));
        ExpectMeasured(machine, kNoSource);
    }
}

TEST(FrameRate, ReadsNoRecordThatIsNotThere) {
    // Bytes, as lists break off anywhere.
    Bytes const two = DisplayList({"\\\\.\\NOWHERE1", "\\\\.\\NOWHERE2"});
    Bytes oneAndAPiece = two;
    oneAndAPiece.pop_back();
    struct Row {
        int count;
        Bytes list;
        Lines names;
    };
    Row const rows[] = {
        {2, two, {"\\\\.\\NOWHERE1", "\\\\.\\NOWHERE2"}},
        {1, two, {"\\\\.\\NOWHERE1"}},
        {0, two, {}},
        {-1, two, {}},
        {INT_MIN, two, {}},
        {3, two, {"\\\\.\\NOWHERE1", "\\\\.\\NOWHERE2"}},
        {INT_MAX, two, {"\\\\.\\NOWHERE1", "\\\\.\\NOWHERE2"}},
        {2, oneAndAPiece, {"\\\\.\\NOWHERE1"}},
        {5, Bytes(100), {}},
    };
    Machine machine = Overdrive8Board(0).Started();
    machine.Api().GetFrameRate();
    machine.TakeLog();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.count);
        OrderDisplays(machine.Then(kList), row.count, row.list);
        EXPECT_EQ(machine.Api().GetFrameRate(), 0);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {std::to_string(row.count)}) + Names(row.names) +
                                         Entries(kTag + " current fps", {"0.000000"}));
        ExpectMeasured(machine, kNoSource);
    }
}

TEST(FrameRate, ReadsANameToTheEndOfItsField) {
    std::string const full(256, 'd');
    Machine machine = Overdrive8Board(0);
    OrderDisplays(machine, {full});  // what stands behind it is no zero
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetFrameRate(), 0);
    EXPECT_EQ(machine.TakeLog(),
              Entries(kTag + " numAdapters", {"1"}) + Names({full}) + Entries(kTag + " current fps", {"0.000000"}));
}

TEST(FrameRate, IsTruncatedTowardZero) {
    struct Row {
        float measured;
        int result;
        std::string logged;
    };
    Row const rows[] = {
        {59.9F, 59, "59.900002"},
        {60.0F, 60, "60.000000"},
        {0.99F, 0, "0.990000"},
        {0.0F, 0, "0.000000"},
        {-0.5F, 0, "-0.500000"},
        {-59.9F, -59, "-59.900002"},
        {1e-40F, 0, "0.000000"},
        {2147483520.0F, 2147483520, "2147483520.000000"},  // the largest below 2^31
        {2147483648.0F, -1, "2147483648.000000"},
        {-3e9F, -1, "-3000000000.000000"},
        {std::numeric_limits<float>::max(), -1, "340282346638528859811704183484516925440.000000"},
        {std::numeric_limits<float>::infinity(), -1, "inf"},
        {-std::numeric_limits<float>::infinity(), -1, "-inf"},
    };
    Machine machine = Overdrive8Board(0).Started();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.logged);
        machine.Reports(FrameRate{row.measured});
        EXPECT_EQ(machine.Api().GetFrameRate(), row.result);
        EXPECT_EQ(machine.TakeLog(),
                  Entries(kTag + " numAdapters", {"0"}) + Entries(kTag + " current fps", {row.logged}));
    }
    machine.Reports(FrameRate{std::numeric_limits<float>::quiet_NaN()});
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
}

TEST(FrameRate, ThatCannotBeReadIsNotAvailable) {
    Machine machine = Overdrive8Board(0).Reports(FrameRate{59.9F}).Started();
    for (int const result : {-1, 1}) {
        machine.Result(kMetrics, result);
        EXPECT_EQ(machine.Api().GetFrameRate(), -1);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"0"}));
    }
}

TEST(FrameRate, WithoutTheListEntryPointAsksAboutNoSource) {
    Machine machine = Overdrive8Board(0).Hide(kList).Reports(FrameRate{30.0F}).Started();
    EXPECT_EQ(machine.Api().GetFrameRate(), 30);
    EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"0"}) + Entries(kTag + " current fps", {"30.000000"}));
    ExpectMeasured(machine, kNoSource);
}

TEST(FrameRate, WithoutTheMeasurementsEntryPointIsNotAvailable) {
    Machine machine = Overdrive8Board(0).Hide(kMetrics).Started();
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"0"}));
}

#if !defined(_WIN32)
TEST(FrameRate, IsThatOfTheFirstDisplayThatOpens) {
    struct Row {
        std::uint32_t source;
        std::vector<std::string> names;
        Lines looked;
        int asked;
    };
    Row const rows[] = {
        {3,
         {"\\\\.\\NOWHERE1", "\\\\.\\DISPLAY7", "\\\\.\\DISPLAY8", "\\\\.\\NOWHERE2"},
         {"\\\\.\\NOWHERE1", "\\\\.\\DISPLAY7"},
         3},
        {0, {"\\\\.\\DISPLAY7", "\\\\.\\DISPLAY8"}, {"\\\\.\\DISPLAY7"}, 0},
        {3, {"\\\\.\\DISPLAY8", "\\\\.\\DISPLAY7"}, {"\\\\.\\DISPLAY8"}, 12},
        {0xFFFFFFFE, {"\\\\.\\DISPLAY7"}, {"\\\\.\\DISPLAY7"}, -2},
    };
    SetDisplay(L"\\\\.\\DISPLAY8", 12);
    Machine machine = Overdrive8Board(0).Reports(FrameRate{75.5F}).Started();
    machine.Api().GetFrameRate();
    machine.TakeLog();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.asked);
        SetDisplay(L"\\\\.\\DISPLAY7", row.source);
        OrderDisplays(machine.Then(kList), row.names);
        EXPECT_EQ(machine.Api().GetFrameRate(), 75);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {std::to_string(row.names.size())}) +
                                         Names(row.looked) +
                                         Entries(kTag + " D3DKMTOpenAdapterFromGdiDisplayName", {"0"}) +
                                         Entries(kTag + " current fps", {"75.500000"}));
        ExpectMeasured(machine, row.asked);
    }
    // A display that opened does not help a measurement that fails.
    machine.Result(kMetrics, -1);
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeLog().back(), kTag + " D3DKMTOpenAdapterFromGdiDisplayName ... 0");
}
#endif

}  // namespace
}  // namespace gputune::test
