// The records of the AMD Display Library that this backend reads or writes. They hold no pointer: they are the same in
// 32-bit and 64-bit processes. All fields are little-endian; "size" fields are in bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define ADL_CDECL __cdecl
#define ADL_STDCALL __stdcall
#else
// The logic's unit tests are 32-bit x86 too, so that calling conventions and layouts agree.
#define ADL_CDECL __attribute__((cdecl))
#define ADL_STDCALL __attribute__((stdcall))
#endif

namespace gputune::amd {

// Opaque to its clients.
using AdlContext = void*;

// How ADL asks its client for memory. The client owns the block and releases it with free.
using AdlMemoryAllocator = void*(ADL_STDCALL*)(int size);

constexpr int kAdlOk = 0;
constexpr int kAdlWarningNoData = -100;  // an enumeration has no more entries

struct AdapterInfo {
    int iSize;
    int iAdapterIndex;
    char strUDID[256];
    int iBusNumber;
    int iDeviceNumber;
    int iFunctionNumber;
    int iVendorID;
    char strAdapterName[256];
    char strDisplayName[256];
    int iPresent;
    int iExist;
    char strDriverPath[256];
    char strDriverPathExt[256];
    char strPNPString[256];
    int iOSDisplayIndex;
};
static_assert(sizeof(AdapterInfo) == 1572);
static_assert(offsetof(AdapterInfo, iAdapterIndex) == 4);
static_assert(offsetof(AdapterInfo, strUDID) == 8);
static_assert(offsetof(AdapterInfo, iBusNumber) == 264);
static_assert(offsetof(AdapterInfo, strAdapterName) == 280);
static_assert(offsetof(AdapterInfo, strDisplayName) == 536);

struct AdapterInfoX2 : AdapterInfo {
    int iInfoMask;
    int iInfoValue;
};
static_assert(sizeof(AdapterInfoX2) == 1580);

// Overdrive 5 -----------------------------------------------------------------------------------------------------

constexpr int kThermalDomainGpu = 1;
constexpr int kFanSpeedTypePercent = 1;
constexpr int kFanSpeedTypeRpm = 2;
constexpr int kFanFlagUserDefinedSpeed = 1;

struct ADLThermalControllerInfo {
    int iSize;
    int iThermalDomain;
    int iDomainIndex;
    int iFlags;
};
static_assert(sizeof(ADLThermalControllerInfo) == 16);
static_assert(offsetof(ADLThermalControllerInfo, iThermalDomain) == 4);

struct ADLFanSpeedValue {
    int iSize;
    int iSpeedType;
    int iFanSpeed;
    int iFlags;
};
static_assert(sizeof(ADLFanSpeedValue) == 16);
static_assert(offsetof(ADLFanSpeedValue, iFanSpeed) == 8);

// OverdriveN ------------------------------------------------------------------------------------------------------

// Values of the iMode fields.
constexpr int kOdnModeCurrent = 0;
constexpr int kOdnModeDefault = 1;
constexpr int kOdnModeAutomatic = 2;
constexpr int kOdnModeManual = 3;

constexpr int kOdnTemperatureType = 1;

struct ADLODNParameterRange {
    int iMode;
    int iMin;
    int iMax;
    int iStep;
    int iDefault;
};
static_assert(sizeof(ADLODNParameterRange) == 20);

struct ADLODNCapabilitiesX2 {
    int iMaximumNumberOfPerformanceLevels;
    int iFlags;
    ADLODNParameterRange sEngineClockRange;     // 10 kHz
    ADLODNParameterRange sMemoryClockRange;     // 10 kHz
    ADLODNParameterRange svddcRange;            // mV
    ADLODNParameterRange power;                 // percent relative to the default
    ADLODNParameterRange powerTuneTemperature;  // degrees Celsius
    ADLODNParameterRange fanTemperature;        // degrees Celsius
    ADLODNParameterRange fanSpeed;              // RPM
    ADLODNParameterRange minimumPerformanceClock;
    ADLODNParameterRange throttleNotification;
    ADLODNParameterRange autoSystemClock;
};
static_assert(sizeof(ADLODNCapabilitiesX2) == 208);
static_assert(offsetof(ADLODNCapabilitiesX2, sEngineClockRange) == 8);
static_assert(offsetof(ADLODNCapabilitiesX2, sMemoryClockRange) == 28);
static_assert(offsetof(ADLODNCapabilitiesX2, svddcRange) == 48);
static_assert(offsetof(ADLODNCapabilitiesX2, power) == 68);
static_assert(offsetof(ADLODNCapabilitiesX2, powerTuneTemperature) == 88);
static_assert(offsetof(ADLODNCapabilitiesX2, fanSpeed) == 128);

struct ADLODNPerformanceLevelX2 {
    int iClock;  // 10 kHz
    int iVddc;   // mV
    int iEnabled;
    int iControl;
};
static_assert(sizeof(ADLODNPerformanceLevelX2) == 16);

// The head of a level table; the levels follow it without a gap.
struct ADLODNPerformanceLevelsX2 {
    int iSize;
    int iMode;
    int iNumberOfPerformanceLevels;
};
static_assert(sizeof(ADLODNPerformanceLevelsX2) == 12);

struct ADLODNFanControl {
    int iMode;
    int iFanControlMode;
    int iCurrentFanSpeedMode;
    int iCurrentFanSpeed;  // RPM
    int iTargetFanSpeed;   // RPM
    int iTargetTemperature;
    int iMinPerformanceClock;
    int iMinFanLimit;  // RPM
};
static_assert(sizeof(ADLODNFanControl) == 32);
static_assert(offsetof(ADLODNFanControl, iCurrentFanSpeed) == 12);
static_assert(offsetof(ADLODNFanControl, iTargetFanSpeed) == 16);
static_assert(offsetof(ADLODNFanControl, iMinFanLimit) == 28);

struct ADLODNPowerLimitSetting {
    int iMode;
    int iTDPLimit;                 // percent
    int iMaxOperatingTemperature;  // degrees Celsius
};
static_assert(sizeof(ADLODNPowerLimitSetting) == 12);
static_assert(offsetof(ADLODNPowerLimitSetting, iTDPLimit) == 4);
static_assert(offsetof(ADLODNPowerLimitSetting, iMaxOperatingTemperature) == 8);

struct ADLODNPerformanceStatus {
    int iCoreClock;    // 10 kHz
    int iMemoryClock;  // 10 kHz
    int iDCEFClock;
    int iGFXClock;
    int iUVDClock;
    int iVCEClock;
    int iGPUActivityPercent;
    int iCurrentCorePerformanceLevel;
    int iCurrentMemoryPerformanceLevel;
    int iCurrentDCEFPerformanceLevel;
    int iCurrentGFXPerformanceLevel;
    int iUVDPerformanceLevel;
    int iVCEPerformanceLevel;
    int iCurrentBusSpeed;
    int iCurrentBusLanes;
    int iMaximumBusLanes;
    int iVDDC;
    int iVDDCI;
};
static_assert(sizeof(ADLODNPerformanceStatus) == 72);
static_assert(offsetof(ADLODNPerformanceStatus, iMemoryClock) == 4);
static_assert(offsetof(ADLODNPerformanceStatus, iGPUActivityPercent) == 24);

// Overdrive8 ------------------------------------------------------------------------------------------------------

// How many settings the records hold; a driver that knows more is read up to here.
constexpr int kOd8Count = 39;

struct ADLOD8SingleInitSetting {
    int featureID;
    int minValue;
    int maxValue;
    int defaultValue;
};
static_assert(sizeof(ADLOD8SingleInitSetting) == 16);

struct ADLOD8InitSetting {
    int count;
    int overdrive8Capabilities;
    ADLOD8SingleInitSetting od8SettingTable[kOd8Count];
};
static_assert(sizeof(ADLOD8InitSetting) == 632);
static_assert(offsetof(ADLOD8InitSetting, od8SettingTable) == 8);

struct ADLOD8CurrentSetting {
    int count;
    int Od8SettingTable[kOd8Count];
};
static_assert(sizeof(ADLOD8CurrentSetting) == 160);
static_assert(offsetof(ADLOD8CurrentSetting, Od8SettingTable) == 4);

struct ADLOD8SingleSetSetting {
    int value;
    int requested;
    int reset;
};
static_assert(sizeof(ADLOD8SingleSetSetting) == 12);

struct ADLOD8SetSetting {
    int count;
    ADLOD8SingleSetSetting od8SettingTable[kOd8Count];
};
static_assert(sizeof(ADLOD8SetSetting) == 472);
static_assert(offsetof(ADLOD8SetSetting, od8SettingTable) == 4);

constexpr int kPmLogSensorCount = 256;

struct ADLSingleSensorData {
    int supported;
    int value;
};
static_assert(sizeof(ADLSingleSensorData) == 8);

struct ADLPMLogDataOutput {
    int size;
    ADLSingleSensorData sensors[kPmLogSensorCount];
};
static_assert(sizeof(ADLPMLogDataOutput) == 2052);
static_assert(offsetof(ADLPMLogDataOutput, sensors) == 4);

struct ADLMemoryInfo {
    alignas(8) std::int64_t iMemorySize;  // bytes
    char strMemoryType[256];
    alignas(8) std::int64_t iMemoryBandwidth;
};
static_assert(sizeof(ADLMemoryInfo) == 272);
static_assert(offsetof(ADLMemoryInfo, iMemoryBandwidth) == 264);

}  // namespace gputune::amd
