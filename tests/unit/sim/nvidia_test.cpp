// NVIDIA boards: their files, and the driver behind the stand-in.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "board_text.h"
#include "sim/board/BoardFile.h"
#include "sim/nvidia/NvidiaDriver.h"
#include "sim/standin/copy_text.h"

namespace {

using namespace gputune::nvidia;
using namespace gputune::sim;

std::string NvidiaBoardText(std::string const& more = "") {
    return R"({
    "format": 1,
    "captions": ["NVIDIA GeForce RTX 3060"],
    "vendor": "nvidia",
    "version": "Version 1",
    "gpus": [
        { "name": "First", "sensors": [{ "quantity": "hotspot-temperature" }, { "target": 8, "value": -7 }] },
        { "name": "Second", "sensors": [], "model": { "ambientTemperature": 35 } }
    ],
    "model": { "ambientTemperature": 20 })" +
           more + "}";
}

TEST(SimNvidiaBoard, GpusAndSensorsAreRead) {
    Board const board = ReadBoardText(NvidiaBoardText(R"(, "hooks": true)"), "some.json");
    EXPECT_EQ(board.vendor, Vendor::Nvidia);
    EXPECT_EQ(board.library, "nvapi");
    EXPECT_EQ(board.nvidia.version, "Version 1");
    EXPECT_TRUE(board.nvidia.hooks);
    ASSERT_EQ(board.nvidia.gpus.size(), 2u);
    NvidiaGpu const& first = board.nvidia.gpus[0];
    EXPECT_EQ(first.name, "First");
    ASSERT_EQ(first.sensors.size(), 2u);
    EXPECT_EQ(first.sensors[0].quantity, &Readings::hotspotTemperature);
    EXPECT_EQ(first.sensors[0].target, 1);
    EXPECT_EQ(first.sensors[0].value, std::nullopt);
    EXPECT_EQ(first.sensors[1].target, 8);
    EXPECT_EQ(first.sensors[1].value, -7);
    EXPECT_EQ(first.model.ambientTemperature, 20);
    EXPECT_EQ(board.nvidia.gpus[1].model.ambientTemperature, 35);
}

TEST(SimNvidiaBoard, ErrorsNameTheKeyAndWhatWasExpected) {
    auto const errorWith = [](std::string const& from, std::string const& to) {
        return ErrorOf(Replaced(NvidiaBoardText(), from, to));
    };
    EXPECT_EQ(errorWith(R"("name": "First", )", ""), "some.json: gpus[0].name: this key is missing");
    EXPECT_EQ(errorWith("Second", std::string(64, 'x')).substr(0, 77),
              "some.json: gpus[1].name: expected a string of at most 63 bytes without NUL, f");
    EXPECT_EQ(errorWith("hotspot-temperature", "load"),
              "some.json: gpus[0].sensors[0].quantity: expected one of \"temperature\", \"hotspot-temperature\", "
              "\"memory-temperature\", found \"load\"");
    EXPECT_EQ(errorWith(R"("value": -7)", R"("value": 1, "quantity": "temperature")"),
              "some.json: gpus[0].sensors[1].quantity: expected either \"quantity\" or \"value\", found "
              "\"temperature\"");
    EXPECT_EQ(errorWith(R"("sensors": [],)", R"("sensors": [{}, {}, {}, {}],)"),
              "some.json: gpus[1].sensors[3]: expected no more than 3 sensors, found an object");
}

TEST(SimNvidiaBoard, FaultMustFitItsEntryPoint) {
    auto const faultError = [](std::string const& fault) {
        return ErrorOf(NvidiaBoardText(R"(, "faults": [)" + fault + "]"));
    };
    EXPECT_EQ(faultError(R"({ "entryPoint": "nvapi_QueryInterface", "missing": true })"), "");
    EXPECT_EQ(faultError(R"({ "entryPoint": "AfterCallHook", "missing": true })"), "");
    EXPECT_EQ(faultError(R"({ "entryPoint": "NvAPI_GPU_GetThermalSettings", "garbage": "one-too-many" })"), "");
    EXPECT_EQ(faultError(R"({ "entryPoint": "nvapi_QueryInterface", "result": 5 })"),
              "some.json: faults[0].result: expected no result for nvapi_QueryInterface, found 5");
    EXPECT_EQ(faultError(R"({ "entryPoint": "NvAPI_Initialize", "garbage": "extreme-values" })"),
              "some.json: faults[0].garbage: expected a kind of garbage that NvAPI_Initialize can hand out, found "
              "\"extreme-values\"");
}

Board TwoGpus() {
    return ReadBoardText(NvidiaBoardText(), "some.json");
}

TEST(SimNvidiaDriver, GpusAreFoundByTheirHandles) {
    NvidiaDriver const driver(TwoGpus());
    auto const gpus = driver.Gpus();
    ASSERT_EQ(gpus.size(), 2u);
    ASSERT_NE(driver.Find(gpus[1]), nullptr);
    EXPECT_EQ(driver.Find(gpus[1])->name, "Second");
    EXPECT_EQ(driver.Find(nullptr), nullptr);
}

TEST(SimNvidiaDriver, SensorsAreToldTogetherOrOneByOne) {
    NvidiaDriver driver(TwoGpus());
    auto const gpu = driver.Gpus()[0];
    NV_GPU_THERMAL_SETTINGS settings{};
    settings.version = 0x00020044;
    ASSERT_EQ(driver.GetThermalSettings(gpu, 0, 15, settings), kNvapiOk);
    EXPECT_EQ(settings.count, 2u);
    EXPECT_EQ(settings.sensor[1].currentTemp, -7);
    EXPECT_EQ(settings.sensor[1].target, 8);
    ASSERT_EQ(driver.GetThermalSettings(gpu, 0, 1, settings), kNvapiOk);
    EXPECT_EQ(settings.count, 1u);
    EXPECT_EQ(settings.sensor[0].target, 8);
    EXPECT_EQ(driver.GetThermalSettings(gpu, 0, 2, settings), kNvapiInvalidArgument);
    EXPECT_EQ(driver.GetThermalSettings(nullptr, 0, 15, settings), kNvapiNoGpuHandle);
    settings.version = 0x00010044;
    EXPECT_EQ(driver.GetThermalSettings(gpu, 0, 15, settings), kNvapiWrongVersion);
}

TEST(SimNvidiaDriver, TemperatureFollowsTheModelOfItsGpu) {
    Board board = TwoGpus();
    board.nvidia.gpus[0].model.load = {{.seconds = 10, .percent = 0}, {.seconds = 1000, .percent = 100}};
    board.nvidia.gpus[1].model.load = {{.seconds = 1, .percent = 0}};
    board.nvidia.gpus[1].sensors.resize(1);
    NvidiaDriver driver(board);
    std::array<int, 2> temperatures{};
    for (std::size_t i = 0; i < temperatures.size(); ++i) {
        NV_GPU_THERMAL_SETTINGS settings{};
        settings.version = 0x00020044;
        ASSERT_EQ(driver.GetThermalSettings(driver.Gpus()[i], 300, 15, settings), kNvapiOk);
        temperatures[i] = settings.sensor[0].currentTemp;
    }
    EXPECT_GT(temperatures[0], 65);
    EXPECT_GT(temperatures[1], 35);
    EXPECT_LT(temperatures[1], 50);
}

TEST(SimNvidiaDriver, TextsKeepTheirTerminator) {
    std::array<char, 64> text{};
    text.fill('!');
    CopyText("short", text);
    EXPECT_EQ(std::string(text.data()), "short");
    CopyText(std::string(100, 'x'), text);
    EXPECT_EQ(std::string(text.data()), std::string(63, 'x'));
}

}  // namespace
