// The frame rate that the driver measures. The display names here open nowhere, but for the tests that say which do.
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
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

Bytes Float(float value) {
    Bytes bytes(sizeof value);
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// Records of 1,572 bytes, eight less than those of the newer list.
Bytes Displays(std::vector<std::string> const& names) {
    Bytes list;
    for (std::string const& name : names) {
        Bytes record(1572);
        record = Patched(record, 0, Ints({1572, 40}));
        record = Patched(record, 536, Bytes(name.begin(), name.end()));
        list.insert(list.end(), record.begin(), record.end());
    }
    return list;
}

Lines Names(Lines const& names) {
    return Entries(kTag + " dispDeviceName", names);
}

// What the measurement was asked about.
int Source(Machine& machine) {
    Call const call = machine.LastCall(kMetrics);
    EXPECT_EQ(call.args.at(0), kContext);
    EXPECT_EQ(call.args.at(1), 5);
    EXPECT_EQ(call.Int(0), 0);  // the rate before the call
    return call.args.at(2);
}

TEST(FrameRate, WithoutAListAsksAboutNoSource) {
    Machine machine = Overdrive8Board(0);
    machine.Write(kList, 2, Ints({7}));
    machine.Write(kMetrics, 3, Float(59.9F));
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetFrameRate(), 59);
    EXPECT_EQ(machine.TakeLog(), Lines({"[OD8Helper::GetFrameRate()] numAdapters ... 0",
                                        "[OD8Helper::GetFrameRate()] current fps ... 59.900002"}));
    Call const list = machine.LastCall(kList);
    EXPECT_EQ(list.args.at(0), kContext);
    EXPECT_EQ(list.args.at(1), 5);
    EXPECT_EQ(Source(machine), kNoSource);
    EXPECT_EQ(machine.TakeCallNames(), Lines({kList, kMetrics}));
}

TEST(FrameRate, LooksAtEveryNameWhateverTheListCallReturned) {
    Machine machine = Overdrive8Board(0);
    machine.Write(kList, 2, Ints({3}));
    machine.Allocate(kList, 3, Displays({"\\\\.\\NOWHERE1", "", "\\\\.\\NOWHERE2"}));
    machine.Write(kMetrics, 3, Float(144.0F));
    ASSERT_TRUE(machine.InitAndForget());
    for (int const result : {0, -1, 1}) {
        SCOPED_TRACE(result);
        machine.Result(kList, result);
        EXPECT_EQ(machine.Api().GetFrameRate(), 144);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"3"}) +
                                         Names({"\\\\.\\NOWHERE1", "", "\\\\.\\NOWHERE2"}) +
                                         Entries(kTag + " current fps", {"144.000000"}));
        EXPECT_EQ(Source(machine), kNoSource);
    }
}

TEST(FrameRate, ReadsNoRecordThatIsNotThere) {
    Bytes const two = Displays({"\\\\.\\NOWHERE1", "\\\\.\\NOWHERE2"});
    Bytes oneAndAPiece = two;
    oneAndAPiece.resize(2 * 1572 - 1);
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
    Machine machine = Overdrive8Board(0);
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().GetFrameRate();
    machine.TakeLog();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.count);
        machine.Then(kList).Write(kList, 2, Ints({row.count})).Allocate(kList, 3, row.list);
        EXPECT_EQ(machine.Api().GetFrameRate(), 0);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {std::to_string(row.count)}) + Names(row.names) +
                                         Entries(kTag + " current fps", {"0.000000"}));
        EXPECT_EQ(Source(machine), kNoSource);
    }
}

TEST(FrameRate, ReadsANameToTheEndOfItsField) {
    std::string const full(256, 'd');
    Machine machine = Overdrive8Board(0);
    // What stands behind it is no zero.
    machine.Write(kList, 2, Ints({1})).Allocate(kList, 3, Patched(Displays({full}), 792, Text("behind")));
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
    Machine machine = Overdrive8Board(0);
    ASSERT_TRUE(machine.InitAndForget());
    for (Row const& row : rows) {
        SCOPED_TRACE(row.logged);
        machine.Write(kMetrics, 3, Float(row.measured));
        EXPECT_EQ(machine.Api().GetFrameRate(), row.result);
        EXPECT_EQ(machine.TakeLog(),
                  Entries(kTag + " numAdapters", {"0"}) + Entries(kTag + " current fps", {row.logged}));
    }
    machine.Write(kMetrics, 3, Float(std::numeric_limits<float>::quiet_NaN()));
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
}

TEST(FrameRate, ThatCannotBeReadIsNotAvailable) {
    Machine machine = Overdrive8Board(0);
    machine.Write(kMetrics, 3, Float(59.9F));
    ASSERT_TRUE(machine.InitAndForget());
    for (int const result : {-1, 1}) {
        machine.Result(kMetrics, result);
        EXPECT_EQ(machine.Api().GetFrameRate(), -1);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"0"}));
    }
}

TEST(FrameRate, WithoutTheListEntryPointAsksAboutNoSource) {
    Machine machine = Overdrive8Board(0);
    machine.Hide(kList);
    machine.Write(kMetrics, 3, Float(30.0F));
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetFrameRate(), 30);
    EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {"0"}) + Entries(kTag + " current fps", {"30.000000"}));
    EXPECT_EQ(Source(machine), kNoSource);
}

TEST(FrameRate, WithoutTheMeasurementsEntryPointIsNotAvailable) {
    Machine machine = Overdrive8Board(0);
    machine.Hide(kMetrics);
    ASSERT_TRUE(machine.InitAndForget());
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
    Machine machine = Overdrive8Board(0);
    machine.Write(kMetrics, 3, Float(75.5F));
    ASSERT_TRUE(machine.InitAndForget());
    machine.Api().GetFrameRate();
    machine.TakeLog();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.asked);
        SetDisplay(L"\\\\.\\DISPLAY7", row.source);
        machine.Then(kList)
            .Write(kList, 2, Ints({static_cast<int>(row.names.size())}))
            .Allocate(kList, 3, Displays(row.names));
        EXPECT_EQ(machine.Api().GetFrameRate(), 75);
        EXPECT_EQ(machine.TakeLog(), Entries(kTag + " numAdapters", {std::to_string(row.names.size())}) +
                                         Names(row.looked) +
                                         Entries(kTag + " D3DKMTOpenAdapterFromGdiDisplayName", {"0"}) +
                                         Entries(kTag + " current fps", {"75.500000"}));
        EXPECT_EQ(Source(machine), row.asked);
    }
    // A display that opened does not help a measurement that fails.
    machine.Result(kMetrics, -1);
    EXPECT_EQ(machine.Api().GetFrameRate(), -1);
    EXPECT_EQ(machine.TakeLog().back(), kTag + " D3DKMTOpenAdapterFromGdiDisplayName ... 0");
}
#endif

}  // namespace
}  // namespace gputune::test
