// OverdriveN: the board's identity.
#include <gtest/gtest.h>

#include <string>

#include "boards.h"

namespace gputune::test {
namespace {

Machine BoardWith(std::vector<AdapterRecord> const& adapters) {
    Machine machine = OverdriveNBoard();
    OrderAdapters(machine, adapters);
    return machine;
}

Lines IdentityLog(std::string const& udid, std::string const& found) {
    return {"[OD7Helper::GetVGASubDeviceID()] UDID ... " + udid, found,
            "[OD7Helper::GetAdapterName()] adapter name ... Board", "[OD7Helper::GetBusNumber()] bus number ... 3"};
}

TEST(OverdriveNIdentity, ReportsSubsystemNameAndBus) {
    Machine machine = OverdriveNBoard().Started();

    VgaInfo const info = machine.Api().GetVGAInfo();

    EXPECT_EQ(info.SubsystemId, 188092418U);  // 0B361002
    EXPECT_STREQ(info.AdapterName, "Radeon RX 580 Series");
    EXPECT_EQ(info.BusNumber, 3);
    EXPECT_EQ(machine.TakeLog(), Lines({
                                     "[OD7Helper::GetVGASubDeviceID()] UDID ... "
                                     "PCI_VEN_1002&DEV_67DF&SUBSYS_0B361002&REV_E7_6&1A2B3C4D&0&00000008A",
                                     "[OD7Helper::GetVGASubDeviceID()] hwid ... 0x0B361002",
                                     "[OD7Helper::GetAdapterName()] adapter name ... Radeon RX 580 Series",
                                     "[OD7Helper::GetBusNumber()] bus number ... 3",
                                 }));
    EXPECT_EQ(machine.TakeCalls().size(), 0U);
}

struct IdentifierCase {
    char const* name;
    std::string udid;
    std::string line;
    std::uint32_t subsystem;
};

void PrintTo(IdentifierCase const& identifier, std::ostream* out) {
    *out << identifier.name;
}

constexpr char const* kUnknown = "[OD7Helper::GetVGASubDeviceID()] ... unknown hwid";

std::string Hwid(std::string const& digits) {
    return "[OD7Helper::GetVGASubDeviceID()] hwid ... 0x" + digits;
}

std::vector<IdentifierCase> const kIdentifiers = {
    {"NoMarker", "PCI_VEN_1002&DEV_67DF&REV_E7", kUnknown, 0},
    {"MarkerInLowerCaseIsNone", "PCI&subsys_0B361002", kUnknown, 0},
    {"SevenCharactersFollow", "PCI&SUBSYS_0B36100", kUnknown, 0},
    {"EightCharactersFollow", "PCI&SUBSYS_0B361002", Hwid("0B361002"), 0x0B361002},
    {"LowerCaseDigits", "PCI&SUBSYS_0b36100f&REV", Hwid("0b36100f"), 0x0B36100F},
    {"FirstMarkerCounts", "&SUBSYS_00000001&SUBSYS_00000002", Hwid("00000001"), 1},
    {"FirstMarkerCountsEvenWhenTooShortForDigits", "&SUBSYS_12&SUBSYS_00000002", Hwid("12&SUBSY"), 0x12},
    {"DigitsUpToAnotherCharacter", "&SUBSYS_12GH5678", Hwid("12GH5678"), 0x12},
    {"LargestSignedValue", "&SUBSYS_7FFFFFFF", Hwid("7FFFFFFF"), 0x7FFFFFFF},
};

class OverdriveNIdentifier : public testing::TestWithParam<IdentifierCase> {};

TEST_P(OverdriveNIdentifier, IsReadFromTheUdid) {
    Machine machine = BoardWith({{.udid = GetParam().udid, .name = "Board"}}).Started();
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, GetParam().subsystem);
    EXPECT_STREQ(info.AdapterName, "Board");
    EXPECT_EQ(info.BusNumber, 3);
    EXPECT_EQ(machine.TakeLog(), IdentityLog(GetParam().udid, GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(Of, OverdriveNIdentifier, testing::ValuesIn(kIdentifiers),
                         [](auto const& given) { return given.param.name; });

// The conversion is signed; what it cannot convert ends at the library's boundary.
std::vector<IdentifierCase> const kMalformed = {
    {"JustAboveTheSignedRange", "&SUBSYS_80000000", "[GetVGAInfo()] ... stol argument out of range", 0},
    {"NoDigit", "&SUBSYS_GHIJKLMN", "[GetVGAInfo()] ... invalid stol argument", 0},
};

class OverdriveNMalformedIdentifier : public testing::TestWithParam<IdentifierCase> {};

TEST_P(OverdriveNMalformedIdentifier, LeavesNameAndBusFilled) {
    Machine machine = BoardWith({{.udid = GetParam().udid, .name = "Board"}}).Started();
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 0U);
    EXPECT_STREQ(info.AdapterName, "Board");
    EXPECT_EQ(info.BusNumber, 3);
    Lines expected = IdentityLog(GetParam().udid, Hwid(GetParam().udid.substr(8, 8)));
    expected.push_back(GetParam().line);
    EXPECT_EQ(machine.TakeLog(), expected);
}

INSTANTIATE_TEST_SUITE_P(With, OverdriveNMalformedIdentifier, testing::ValuesIn(kMalformed),
                         [](auto const& given) { return given.param.name; });

TEST(OverdriveNIdentity, IsTheFirstAdaptersWhateverIsChosen) {
    Machine machine = BoardWith({{.index = 5, .udid = "&SUBSYS_00000005", .bus = 3, .name = "First"},
                                 {.index = 9, .udid = "&SUBSYS_00000009", .bus = 7, .name = "Second"}})
                          .Started();
    ASSERT_TRUE(machine.Api().SetActiveAdapterIndex(9));
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 5U);
    EXPECT_STREQ(info.AdapterName, "First");
    EXPECT_EQ(info.BusNumber, 3);
}

TEST(OverdriveNIdentity, IsTheFirstAdaptersEvenWhenThatIsNotActive) {
    Machine machine = BoardWith({{.index = 5, .udid = "&SUBSYS_00000005", .bus = -1, .name = "First"},
                                 {.index = 9, .udid = "&SUBSYS_00000009", .bus = 7, .name = "Second"}})
                          .Reports(ActiveStatus{0})
                          .Then("ADL2_Adapter_Active_Get")
                          .Reports(ActiveStatus{1})
                          .Started();
    EXPECT_EQ(machine.Api().GetActiveAdapterIndex(), 9);
    VgaInfo const info = machine.Api().GetVGAInfo();
    EXPECT_EQ(info.SubsystemId, 5U);
    EXPECT_EQ(info.BusNumber, -1);
    EXPECT_EQ(machine.TakeLog().back(), "[OD7Helper::GetBusNumber()] bus number ... -1");
}

TEST(OverdriveNIdentity, NameWithoutTerminatorIsCutAndTerminated) {
    std::string const full(256, 'N');
    // The name of the display follows in the record and must not be taken for a part of it.
    Machine machine = BoardWith({{.name = full, .displayName = "DISPLAY"}}).Started();

    VgaInfo const info = machine.Api().GetVGAInfo();

    EXPECT_EQ(std::string(info.AdapterName, 255), full.substr(0, 255));
    EXPECT_EQ(info.AdapterName[255], '\0');
    EXPECT_EQ(info.BusNumber, 3);
    Lines const log = machine.TakeLog();
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[2], "[OD7Helper::GetAdapterName()] adapter name ... " + full);
}

TEST(OverdriveNIdentity, LongestNameFits) {
    std::string const name(255, 'L');
    Machine machine = BoardWith({{.name = name}}).Started();
    EXPECT_EQ(std::string(machine.Api().GetVGAInfo().AdapterName), name);
}

constexpr int kFourDigits = 0x32303031;  // the characters "1002"

// The digits at the very end of an identifier that fills its 256 bytes count; the bus number behind it, here made of
// digits, does not.
TEST(OverdriveNIdentity, UdidWithoutTerminatorEndsWithItsField) {
    std::string const filler(240, 'u');
    std::string const complete = filler + "&SUBSYS_0B361002";
    Machine machine = BoardWith({{.udid = complete, .bus = kFourDigits}}).Started();
    EXPECT_EQ(machine.Api().GetVGAInfo().SubsystemId, 0x0B361002U);
    EXPECT_EQ(machine.TakeLog()[0], "[OD7Helper::GetVGASubDeviceID()] UDID ... " + complete);
}

TEST(OverdriveNIdentity, DigitsDoNotRunIntoTheNextField) {
    std::string const cut = std::string(244, 'u') + "&SUBSYS_0B36";
    Machine machine = BoardWith({{.udid = cut, .bus = kFourDigits}}).Started();
    EXPECT_EQ(machine.Api().GetVGAInfo().SubsystemId, 0U);
    Lines const log = machine.TakeLog();
    ASSERT_EQ(log.size(), 4U);
    EXPECT_EQ(log[0], "[OD7Helper::GetVGASubDeviceID()] UDID ... " + cut);
    EXPECT_EQ(log[1], kUnknown);
}

}  // namespace
}  // namespace gputune::test
