// The profile file below the host's directory, and what its reading leaves in the log.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "log/DebugLog.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "profile/performance_profile.h"
#include "records/hex_long.h"

namespace gputune::profile {
namespace {

std::string const kRead = "[IVideoAdapter::GetExternalPerformanceParameter]";
std::string const kPrint = "[PrintPredefinedPerformanceParameter()] ... ";

std::string ReadAll(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A host directory with a profile file in it, and the log in the current directory.
class ProfileFile : public testing::Test {
protected:
    ProfileFile() {
        log::DebugLog::Get(2);
        logBefore_ = ReadAll("debug.log");
        std::filesystem::create_directories(Folder());
    }

    ~ProfileFile() override { std::filesystem::remove_all(Folder()); }

    static std::filesystem::path Folder() {
        return std::filesystem::path(platform::ToNarrow(platform::HostDirectory())) / "Config";
    }

    static void Write(std::string const& text) {
        std::ofstream(Folder() / "ConfigModel.xml", std::ios::binary) << text;
    }

    // The lines that this test has added to the log.
    std::string Log() const { return ReadAll("debug.log").substr(logBefore_.size()); }

    // The first two lines of every lookup.
    static std::string Begin(std::string const& hwid) {
        return kRead + " pred config path ... " + platform::ToNarrow(platform::HostDirectory()) +
               "\\Config\\ConfigModel.xml\n" + kRead + " given hwid ... " + hwid + "\n";
    }

private:
    std::string logBefore_;
};

TEST_F(ProfileFile, BoardEntryIsLoggedWholeAndReturned) {
    Write(
        "<Boards><Board Id=\"1F\">"
        "<Value Name=\"GpuOC\" Normal=\"1.5\" Given=\"1800\"/><Value Name=\"MemOC\" Normal=\"1.25\" Given=\"2100.5\"/>"
        "<Value Name=\"PowerOC\" Normal=\"20\"/><Value Name=\"GpuSilent\" Normal=\"0.75\"/>"
        "<Value Name=\"MemSilent\" Normal=\"0.5\"/><Value Name=\"PowerSilent\" Normal=\"-10\"/>"
        "<Value Name=\"Watt\" Normal=\"185\"/><Value Name=\"NewestVBIOS\" Normal=\"-42\"/>"
        "</Board></Boards>");
    PredefinedPerformanceParameter const record = GetExternalPerformanceParameter(31);
    EXPECT_TRUE(record.Valid);
    EXPECT_EQ(record.GpuOC, 1.5F);
    EXPECT_EQ(record.NewestVBIOS, -42);
    EXPECT_EQ(Log(), Begin("31") + kRead + " VGA HWID ... found\n" + kRead + " config used ... ext. custom\n" +  //
                         kPrint + "Valid: 1\n" +                                                                 //
                         kPrint + "GpuOC: 1.500000\n" +                                                          //
                         kPrint + "GpuOCGivenValue: 1800.000000\n" +                                             //
                         kPrint + "GpuSilent: 0.750000\n" +                                                      //
                         kPrint + "MemOC: 1.250000\n" +                                                          //
                         kPrint + "MemOCGivenValue: 2100.500000\n" +                                             //
                         kPrint + "MemSilent: 0.500000\n" +                                                      //
                         kPrint + "NewestVBIOS: -42\n" +                                                         //
                         kPrint + "PowerOC: 20.000000\n" +                                                       //
                         kPrint + "PowerSilent: -10.000000\n" +                                                  //
                         kPrint + "Watt: 185\n");
}

TEST_F(ProfileFile, DefaultEntryIsLoggedAsNotFoundAndReturned) {
    Write("<Boards><Board Default=\"1\"><Value Name=\"GpuOC\" Normal=\"1.5\" Given=\"1800\"/></Board></Boards>");
    PredefinedPerformanceParameter const record = GetExternalPerformanceParameter(31);
    EXPECT_TRUE(record.Valid);
    EXPECT_EQ(record.GpuOC, 1.5F);
    std::string const start = Begin("31") + kRead + " VGA HWID ... not found\n" + kRead +
                              " config used ... ext. default\n" + kPrint + "Valid: 1\n" + kPrint + "GpuOC: 1.500000\n" +
                              kPrint + "GpuOCGivenValue: 0.000000\n";
    EXPECT_EQ(Log().substr(0, start.size()), start);
}

TEST_F(ProfileFile, NeitherEntryIsLoggedAndNothingIsPrinted) {
    Write("<Boards><Board Id=\"20\"/><Board Default=\"0\"/></Boards>");
    EXPECT_FALSE(GetExternalPerformanceParameter(31).Valid);
    EXPECT_EQ(Log(), Begin("31") + kRead + " VGA HWID ... not found\n" + kRead +
                         " config used ... failed, default not exist\n");
}

TEST_F(ProfileFile, IdentifierIsLoggedAsASignedNumber) {
    Write("<Boards/>");
    GetExternalPerformanceParameter(0xFFFFFFFF);
    EXPECT_EQ(Log(), Begin("-1") + kRead + " parse pred xml ... first child element not found\n");
}

TEST_F(ProfileFile, MissingFileIsLoggedAsFailed) {
    EXPECT_FALSE(GetExternalPerformanceParameter(31).Valid);
    EXPECT_EQ(Log(), Begin("31") + kRead + " open pred xml ... failed\n");
}

TEST_F(ProfileFile, MalformedFileIsLoggedAsFailed) {
    Write("<Boards>");
    EXPECT_FALSE(GetExternalPerformanceParameter(31).Valid);
    EXPECT_EQ(Log(), Begin("31") + kRead + " open pred xml ... failed\n");
}

TEST_F(ProfileFile, DirectoryInItsPlaceIsLoggedAsFailed) {
    std::filesystem::create_directory(Folder() / "ConfigModel.xml");
    EXPECT_FALSE(GetExternalPerformanceParameter(31).Valid);
    EXPECT_EQ(Log(), Begin("31") + kRead + " open pred xml ... failed\n");
}

TEST_F(ProfileFile, MissingRootIsLogged) {
    Write("<!-- nothing -->");
    EXPECT_FALSE(GetExternalPerformanceParameter(31).Valid);
    EXPECT_EQ(Log(), Begin("31") + kRead + " parse pred xml ... root element not found\n");
}

TEST_F(ProfileFile, MalformedIdLeavesTheFunctionAndNoFurtherEntry) {
    Write("<Boards><Board Id=\"\"/></Boards>");
    EXPECT_THROW(GetExternalPerformanceParameter(31), HexLongError);
    EXPECT_EQ(Log(), Begin("31"));
    Write("<Boards><Board Id=\"80000000\"/></Boards>");
    EXPECT_THROW(GetExternalPerformanceParameter(31), HexLongError);
    EXPECT_EQ(Log(), Begin("31") + Begin("31"));
}

TEST_F(ProfileFile, EditsTakeEffectAtTheNextLookup) {
    Write("<Boards><Board Id=\"1F\"><Value Name=\"Watt\" Normal=\"1\"/></Board></Boards>");
    EXPECT_EQ(GetExternalPerformanceParameter(31).Watt, 1);
    Write("<Boards><Board Id=\"1F\"><Value Name=\"Watt\" Normal=\"2\"/></Board></Boards>");
    EXPECT_EQ(GetExternalPerformanceParameter(31).Watt, 2);
}

}  // namespace
}  // namespace gputune::profile
