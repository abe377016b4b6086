// Overdrive8: the predefined overclock and silent modes, from the profile file to the driver.
#include "../overdrive8_traffic.h"

namespace gputune::test {
namespace {

enum class Mode { Overclock, Silent };

std::string Tag(Mode mode) {
    return mode == Mode::Overclock ? "[OD8Helper::SetPerformanceOC()]" : "[OD8Helper::SetPerformanceSilent()]";
}

bool Apply(Machine& machine, Mode mode) {
    return mode == Mode::Overclock ? machine.Api().SetPerformanceOC() : machine.Api().SetPerformanceSilent();
}

// The log without what reading the file says, but for the identifier that was looked up.
Lines TakeModeLog(Machine& machine) {
    Lines lines;
    for (std::string const& line : machine.TakeLog()) {
        bool const ofTheFile = line.starts_with("[IVideoAdapter::GetExternalPerformanceParameter]") ||
                               line.starts_with("[PrintPredefinedPerformanceParameter()]");
        if (!ofTheFile || line.find("given hwid") != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

// 0B361002 is 188092418.
Lines const kLookup = {
    "[OD8Helper::GetVGASubDeviceID()] UDID ... PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A",
    "[OD8Helper::GetVGASubDeviceID()] hwid ... 0x0B361002",
    "[IVideoAdapter::GetExternalPerformanceParameter] given hwid ... 188092418",
};
std::string const kPowerTag = "[OD8Helper::SetPowerLimit(int,int)]";
std::string const kUserTag = "[OD8Helper::SetPerformanceUser(int,int,int,int)]";
std::string const kRead = "Current_SettingX2_Get 5";
std::string const kSame = " 1=13 2=23 3=33 4=43 5=53 6=63 7=73";
Lines const kPowerSet = Entries(kPowerTag, {"Success"});
Lines const kClocksSet = Entries(kUserTag, {"ADL2_Overdrive8_Setting_Set OK"});

struct Values {
    std::string gpu;  // attributes
    std::string mem;
    std::string power;
};

std::string Profile(std::string const& board, Mode mode, Values const& values) {
    std::string const suffix = mode == Mode::Overclock ? "OC" : "Silent";
    std::string const other = mode == Mode::Overclock ? "Silent" : "OC";
    std::string text = "<?xml version=\"1.0\"?>\n<Config>\n  <Board " + board + ">\n";
    for (auto const& [name, attributes] :
         {std::pair("Gpu", values.gpu), std::pair("Mem", values.mem), std::pair("Power", values.power)}) {
        text += "    <Value Name=\"" + (name + suffix) + "\" " + attributes + "/>\n";
        // The other mode's values have no part in this one.
        text += "    <Value Name=\"" + (name + other) + "\" Normal=\"777\" Given=\"777\"/>\n";
    }
    return text + "  </Board>\n</Config>\n";
}

struct Row {
    Values values;
    int power;
    int gpuClock;
    int memClock;
};

// On a board with clock limits, memory clock and power limit: defaults 65 (setting 6), 85 (setting 8), power -20 to 20.
void Check(Mode mode, std::vector<Row> const& rows) {
    Machine machine = Overdrive8Board(kLimits | kMemory | kPower).Started();
    BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 1}}));
    for (Row const& row : rows) {
        SCOPED_TRACE(row.values.gpu + ", " + row.values.mem + ", " + row.values.power);
        machine.WriteProfile(Profile("Id=\"0B361002\"", mode, row.values));
        EXPECT_TRUE(Apply(machine, mode));
        std::string const gpu = std::to_string(row.gpuClock);
        std::string const mem = std::to_string(row.memClock);
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup + kPowerSet +
                                            Entries(Tag(mode), {"GpuClock=" + gpu + ", MemClock=" + mem}) + kClocksSet);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=" + std::to_string(row.power), kRead,
                                                  "Setting_Set 5: 0=" + gpu + kSame + " 8=" + mem}));
    }
    machine.RemoveProfile();
}

TEST(Overdrive8OverclockMode, AppliesFactorsOrGivenClocks) {
    Check(Mode::Overclock,
          {
              // 65 x 1.05 = 68.25, 85 x 1.1 = 93.5
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="15.9")"}, 15, 68, 93},
              {{R"(Normal="1.05" Given="0")", R"(Normal="1.1" Given="0.0")", R"(Normal="-7.9")"}, -7, 68, 93},
              {{R"(Normal="1.05" Given="1450.7")", R"(Normal="1.1")", R"(Normal="5")"}, 5, 1450, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1" Given="950.9")", R"(Normal="5")"}, 5, 68, 950},
              // Anything but exactly 0 is given.
              {{R"(Normal="1.05" Given="0.4")", R"(Normal="1.1" Given="-0.4")", R"(Normal="5")"}, 5, 0, 0},
              {{R"(Normal="1.05" Given="-30.5")", R"(Normal="1.1")", R"(Normal="5")"}, 5, -30, 93},
              {{R"(Normal="-1.05")", R"(Normal="0")", R"(Normal="5")"}, 5, -68, 0},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="20")"}, 20, 68, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="20.5")"}, 20, 68, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="1000")"}, 20, 68, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="-20")"}, -20, 68, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="-20.5")"}, -20, 68, 93},
              {{R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="-1e9")"}, -20, 68, 93},
          });
}

TEST(Overdrive8SilentMode, AppliesFactorsAndNoGivenClocks) {
    Check(Mode::Silent,
          {
              // 65 x 0.9 = 58.5, 85 x 0.75 = 63.75
              {{R"(Normal="0.9")", R"(Normal="0.75")", R"(Normal="-10.9")"}, -10, 58, 63},
              {{R"(Normal="0.9" Given="1450")", R"(Normal="0.75" Given="950")", R"(Normal="-10")"}, -10, 58, 63},
              {{R"(Normal="0.9")", R"(Normal="0.75")", R"(Normal="-50")"}, -20, 58, 63},
              {{R"(Normal="0.9")", R"(Normal="0.75")", R"(Normal="50")"}, 20, 58, 63},
              {{R"(Normal="0")", R"(Normal="0")", R"(Normal="7")"}, 7, 0, 0},
          });
}

Values const kOrdinary = {R"(Normal="1.05")", R"(Normal="1.1")", R"(Normal="15")"};

// The board's ranges with these defaults.
std::vector<SettingRange> WithDefaults(int curveTop, int gpuMaximum, int memoryClock) {
    std::vector<SettingRange> ranges = Overdrive8Ranges();
    ranges[setting::kCurveTop].standard = curveTop;
    ranges[setting::kGpuMaximum].standard = gpuMaximum;
    ranges[setting::kMemoryClock].standard = memoryClock;
    return ranges;
}

TEST(Overdrive8Modes, StartFromTheTopOfTheCurveElseTheMaximum) {
    Machine machine = Overdrive8Board(kLimits | kCurve | kMemory | kPower);
    struct Base {
        int curveTop;
        int maximum;
        int memory;
        std::string requests;
        std::string planned;
    };
    Base const bases[] = {
        {2100, 1800, 1000, " 0=2625 1=13 2=23 3=33 4=43 5=53 6=2625 7=73 8=1500", "GpuClock=2625, MemClock=1500"},
        {0, 1800, 1000, " 0=2250 1=13 2=23 3=33 4=43 5=53 6=2250 7=73 8=1500", "GpuClock=2250, MemClock=1500"},
        {-100, 1800, 1000, " 0=-125 1=13 2=23 3=33 4=43 5=53 6=-125 7=73 8=1500", "GpuClock=-125, MemClock=1500"},
        {0, 0, 0, " 0=0 1=13 2=23 3=33 4=43 5=53 6=0 7=73 8=0", "GpuClock=0, MemClock=0"},
    };
    Values const values = {R"(Normal="1.25")", R"(Normal="1.5")", R"(Normal="15")"};
    ASSERT_TRUE(machine.InitAndForget());
    for (Base const& base : bases) {
        SCOPED_TRACE(base.planned);
        BecomeBoardWith(machine, kLimits | kCurve | kMemory | kPower,
                        WithDefaults(base.curveTop, base.maximum, base.memory));
        for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
            machine.WriteProfile(Profile("Default=\"1\"", mode, values));
            EXPECT_TRUE(Apply(machine, mode));
            EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup + kPowerSet +
                                                Entries(Tag(mode), {base.planned}) + kClocksSet);
            EXPECT_EQ(TakeAmdTraffic(machine),
                      Lines({kRead, "Setting_Set 5: 9=15", kRead, "Setting_Set 5:" + base.requests}));
        }
    }
    machine.RemoveProfile();
}

// Nothing is sent: neither the clocks nor the power limit, whichever of them it is that is no number.
TEST(Overdrive8Modes, ThatAreNoNumbersAreNotSent) {
    std::string const one = R"(Normal="1")";
    std::vector<Values> const plans = {
        {R"(Normal="nan")", one, one},   {R"(Normal="inf")", one, one}, {R"(Normal="1e30")", one, one},
        {R"(Normal="-1e30")", one, one}, {one, R"(Normal="nan")", one}, {one, R"(Normal="1e30")", one},
        {one, one, R"(Normal="nan")"},
    };
    std::vector<Values> const given = {
        {R"(Normal="1" Given="nan")", one, one},
        {R"(Normal="1" Given="2147483648")", one, one},
        {one, R"(Normal="1" Given="inf")", one},
        {one, R"(Normal="1" Given="-1e30")", one},
    };
    Machine machine = Overdrive8Board(kLimits | kMemory | kPower).Started();
    auto const expectRefused = [&](Mode mode, Values const& values) {
        SCOPED_TRACE(values.gpu + ", " + values.mem + ", " + values.power);
        machine.WriteProfile(Profile("Id=\"0B361002\"", mode, values));
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup +
                                            Entries(Tag(mode), {"predefined performance parameter out of range"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines());
    };
    for (Values const& values : plans) {
        expectRefused(Mode::Overclock, values);
        expectRefused(Mode::Silent, values);
    }
    for (Values const& values : given) {
        expectRefused(Mode::Overclock, values);
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, WithoutTheCurrentSettingsAreNotSent) {
    Machine machine =
        Overdrive8Board(kLimits | kMemory | kPower).Result("ADL2_Overdrive8_Current_SettingX2_Get", -1).Started();
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Id=\"0B361002\"", mode, {R"(Normal="1")", R"(Normal="1")", R"(Normal="5")"}));
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup + kCurrentFailed +
                                            Entries(Tag(mode), {"GpuClock=65, MemClock=85"}) + kCurrentFailed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead}));
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, WithoutTheRangesAreNotSent) {
    Machine machine = Overdrive8Board(kLimits | kMemory | kPower);
    machine.Reports(RangeCount{setting::kPower});  // the first that is not there
    ASSERT_TRUE(machine.InitAndForget());
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Id=\"0B361002\"", mode, {R"(Normal="1")", R"(Normal="1")", R"(Normal="5")"}));
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup +
                                            Entries(Tag(mode), {"no ranges of clocks and power limit"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines());
    }
    machine.RemoveProfile();
}

// 1000 x 0.7 in single precision is 700, 10 x 0.7 is 7; 1800 x 1.05 is a little less than 1890, 1000 x 1.05 is 1050.
TEST(Overdrive8Modes, MultiplyInSinglePrecision) {
    Machine machine = Overdrive8Board(0).Started();
    struct Product {
        int gpu;
        int mem;
        std::string factor;
        int gpuClock;
        int memClock;
    };
    for (Product const& product : {Product{1000, 10, "0.7", 700, 7}, Product{1800, 1000, "1.05", 1889, 1050}}) {
        BecomeBoardWith(machine, kLimits | kMemory, WithDefaults(product.gpu, 5, product.mem));
        std::string const normal = "Normal=\"" + product.factor + "\"";
        for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
            machine.WriteProfile(Profile("Default=\"1\"", mode, {normal, normal, R"(Normal="0")"}));
            EXPECT_TRUE(Apply(machine, mode));
            SettingRequest const request = machine.Sent<SettingRequest>();
            EXPECT_EQ(request.settings[setting::kGpuMaximum].value, product.gpuClock);
            EXPECT_EQ(request.settings[setting::kMemoryClock].value, product.memClock);
        }
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, SetClocksAlsoWhenThePowerLimitStaysAsItIs) {
    Machine machine = Overdrive8Board(kLimits | kMemory).Started();
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Id=\"0x0B361002\"", mode, kOrdinary));
        BecomeBoardWith(machine, kLimits | kMemory);
        EXPECT_TRUE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup +
                                            Entries(kPowerTag, {"Power limit not supported"}) +
                                            Entries(Tag(mode), {"GpuClock=68, MemClock=93"}) + kClocksSet);

        // In effect already.
        BecomeBoardWith(machine, kLimits | kMemory | kPower);
        BecomeCurrent(machine, With(Overdrive8Current(), {{setting::kPower, 15}}));
        EXPECT_TRUE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine),
                  Entries(Tag(mode), {"begin"}) + kLookup +
                      Lines{"[OD8Helper::SetPowerLimit(int,int) ... Current value is already the given value"} +
                      Entries(Tag(mode), {"GpuClock=68, MemClock=93"}) + kClocksSet);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, kRead, "Setting_Set 5: 0=68" + kSame + " 8=93"}));
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, SetClocksAlsoWhenTheDriverRefusesThePowerLimit) {
    std::string const set = "ADL2_Overdrive8_Setting_Set";
    Machine machine = Overdrive8Board(kLimits | kMemory | kPower);
    machine.Result(set, -1).Then(set).Then(set).Result(set, -1).Then(set);  // every other call
    ASSERT_TRUE(machine.InitAndForget());
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Id=\"0x0B361002\"", mode, kOrdinary));
        EXPECT_TRUE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) + kLookup + Entries(kPowerTag, {"Failed"}) +
                                            Entries(Tag(mode), {"GpuClock=68, MemClock=93"}) + kClocksSet);
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, FailWhereTheClocksCannotBeSet) {
    Machine machine = Overdrive8Board(kPower).Started();
    BecomeCurrent(machine, With(Overdrive8Current(),
                                {{setting::kGpuMaximum, 68}, {setting::kMemoryClock, 93}, {setting::kPower, 1}}));
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Id=\"0B361002\"", mode, kOrdinary));
        Lines const upToThere =
            Entries(Tag(mode), {"begin"}) + kLookup + kPowerSet + Entries(Tag(mode), {"GpuClock=68, MemClock=93"});
        BecomeBoardWith(machine, kPower);
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine),
                  upToThere + Entries(kUserTag, {"ADL_OD8_GFXCLK_LIMITS & ADL_OD8_GFXCLK_CURVE not supported"}));

        // Clocks in effect already: false, although the power limit was changed.
        BecomeBoardWith(machine, kPower | kLimits | kMemory);
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine),
                  upToThere + Entries(kUserTag + "2", {"current gpu/mem clock are same as the given value"}));
        EXPECT_EQ(TakeAmdTraffic(machine), Lines({kRead, "Setting_Set 5: 9=15", kRead}));
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, WithoutAProfileChangeNothing) {
    Machine machine = Overdrive8Board(kPower | kLimits).Started();
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.RemoveProfile();
        Lines const failed = Entries(Tag(mode), {"begin"}) + kLookup +
                             Entries(Tag(mode), {"Get predefined performance parameter failed"});
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), failed);

        machine.WriteProfile(Profile("Id=\"0B361003\"", mode, kOrdinary));  // another board
        EXPECT_FALSE(Apply(machine, mode));
        EXPECT_EQ(TakeModeLog(machine), failed);
        EXPECT_EQ(TakeAmdTraffic(machine), Lines());
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, ReadTheProfileAgainEachTime) {
    Machine machine = Overdrive8Board(kLimits).Started();
    for (auto const& [factor, clock] : {std::pair("2", 130), std::pair("3", 195)}) {
        machine.WriteProfile(Profile("Default=\"1\"", Mode::Overclock,
                                     {"Normal=\"" + std::string(factor) + "\"", "Normal=\"1\"", "Normal=\"0\""}));
        EXPECT_TRUE(machine.Api().SetPerformanceOC());
        EXPECT_EQ(machine.Sent<SettingRequest>().settings[setting::kGpuMaximum].value, clock);
    }
    machine.RemoveProfile();
}

Machine BoardNamed(std::string const& udid) {
    Machine machine = BoardListedAs({{.udid = udid, .name = "Radeon RX 6800"}});
    OrderCurrent(machine, Overdrive8Current());
    return machine;
}

TEST(Overdrive8Modes, OfABoardWithoutAnIdentifierAreTheDefaultEntrys) {
    Machine machine = BoardNamed("PCI").Started();
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Default=\"1\"", mode, kOrdinary));
        EXPECT_FALSE(Apply(machine, mode));  // the board has no features
        EXPECT_EQ(TakeModeLog(machine),
                  Entries(Tag(mode), {"begin"}) +
                      Lines({"[OD8Helper::GetVGASubDeviceID()] UDID ... PCI",
                             "[OD8Helper::GetVGASubDeviceID()] ... unknown hwid",
                             "[IVideoAdapter::GetExternalPerformanceParameter] given hwid ... 0"}) +
                      Entries(kPowerTag, {"Power limit not supported"}) +
                      Entries(Tag(mode), {"GpuClock=0, MemClock=0"}) +
                      Entries(kUserTag, {"ADL_OD8_GFXCLK_LIMITS & ADL_OD8_GFXCLK_CURVE not supported"}));
    }
    machine.RemoveProfile();
}

TEST(Overdrive8Modes, OfABoardWhoseIdentifierCannotBeConvertedAreRefused) {
    Machine machine = BoardNamed("A&SUBSYS_9B361002").Started();
    for (Mode const mode : {Mode::Overclock, Mode::Silent}) {
        machine.WriteProfile(Profile("Default=\"1\"", mode, kOrdinary));
        EXPECT_FALSE(Apply(machine, mode));
        std::string const exported = mode == Mode::Overclock ? "[SetPerformanceOC()]" : "[SetPerformanceSilent()]";
        EXPECT_EQ(TakeModeLog(machine), Entries(Tag(mode), {"begin"}) +
                                            Lines({"[OD8Helper::GetVGASubDeviceID()] UDID ... A&SUBSYS_9B361002",
                                                   "[OD8Helper::GetVGASubDeviceID()] hwid ... 0x9B361002"}) +
                                            Entries(exported, {"stol argument out of range"}));
    }
    machine.RemoveProfile();
}

}  // namespace
}  // namespace gputune::test
