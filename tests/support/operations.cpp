#include "operations.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

namespace gputune::test {

namespace {

Answer Success(bool result) {
    return {.bytes = {static_cast<unsigned char>(result ? 1 : 0)}, .breach = "", .success = result};
}

Answer Number(int result) {
    return {.bytes = BytesOf(result), .breach = ""};
}

// The padding after a Valid that stands first has no defined content.
template <class Record>
void ClearPaddingAfterValid(unsigned char* storage) {
    if constexpr (
        requires(Record record) { record.Valid; } && !requires(Record record) { record.Reserved; }) {
        static_assert(offsetof(Record, Valid) == 0 && alignof(Record) >= sizeof(int));
        std::memset(storage + 1, 0, sizeof(int) - 1);
    }
}

// Lets the call build its record in storage that was filled with kStorage.
template <class Record, class Call>
Answer Filled(Call&& call, std::string (*breach)(Record const&)) {
    alignas(Record) unsigned char storage[sizeof(Record)];
    std::memset(storage, kStorage, sizeof storage);
    Record const& record = *::new (static_cast<void*>(storage)) Record(call());
    ClearPaddingAfterValid<Record>(storage);
    return {.bytes = BytesOf(record), .breach = breach(record)};
}

// The byte of a bool in a record: reading a bool from a byte other than 0 and 1 is undefined behaviour.
template <class Record>
unsigned char ValidByte(Record const& record) {
    unsigned char byte = 0;
    std::memcpy(&byte, &record.Valid, 1);
    return byte;
}

template <class Record>
std::string ValidBreach(Record const& record) {
    return ValidByte(record) <= 1 ? "" : "Valid is neither true nor false";
}

std::string FanBreach(FanSetting const& setting) {
    if (ValidByte(setting) == 1 && setting.PointCount != 1 && setting.PointCount != 5) {
        return "PointCount is neither 1 nor 5";
    }
    return ValidBreach(setting);
}

std::string InfoBreach(VgaInfo const& info) {
    return std::memchr(info.AdapterName, 0, sizeof info.AdapterName) != nullptr ? "" : "AdapterName has no end";
}

std::string ReadingBreach(HwmValue const& value) {
    if (std::memchr(value.Name, 0, sizeof value.Name) == nullptr) {
        return "Name has no end";
    }
    if (std::any_of(std::begin(value.Reserved), std::end(value.Reserved), [](auto byte) { return byte != 0; })) {
        return "Reserved is not zero";
    }
    bool const hasName = value.Name[0] != '\0';
    return ValidByte(value) == (hasName ? 1 : 0) ? "" : "Valid without a name, or a name without Valid";
}

bool IsZero(HwmValue const& value) {
    Bytes const bytes = BytesOf(value);
    return std::all_of(bytes.begin(), bytes.end(), [](auto byte) { return byte == 0; });
}

// Without a backend every reading is all zero.
std::string KnownReadingBreach(HwmValue const& value) {
    bool const isPromised = ValidByte(value) == 1 || value.Value == -1.0 || IsZero(value);
    return isPromised ? ReadingBreach(value) : "a reading never stored is not -1; ";
}

std::string UnknownReadingBreach(HwmValue const& value) {
    return IsZero(value) ? "" : "no key, but a reading";
}

Answer Reading(Exports const& api, int key) {
    bool const known = key >= 0 && key < GPUTUNE_HWM_KEY_COUNT;
    return Filled<HwmValue>([&] { return api.GetHwmValue(key); }, known ? KnownReadingBreach : UnknownReadingBreach);
}

Answer Fetch(Exports const& api) {
    api.FetchHwmValues();
    Answer all{};
    for (int key = 0; key < GPUTUNE_HWM_KEY_COUNT; ++key) {
        Answer const reading = Reading(api, key);
        all.bytes.insert(all.bytes.end(), reading.bytes.begin(), reading.bytes.end());
        all.breach += reading.breach;
    }
    return all;
}

#define BOOL(name, count, ...)                                                                                           \
    {                                                                                                                    \
#name, count, true, [](Exports const& api, Arguments const& with) { (void)with; return Success(api.name(__VA_ARGS__)); } \
    }
#define INT(name)                                                                                \
    {                                                                                            \
#name, 0, false, [](Exports const& api, Arguments const&) { return Number(api.name()); } \
    }
#define RECORD(name, Record, breach)                                                                                \
    {                                                                                                               \
#name, 0, false,                                                                                            \
            [](Exports const& api, Arguments const&) { return Filled<Record>([&] { return api.name(); }, breach); } \
    }

// clang-format off
constexpr Operation kOperations[] = {
    BOOL(IsInitOk, 0),
    BOOL(SetActiveAdapterIndex, 1, with[0]),
    INT(GetActiveAdapterIndex),
    RECORD(GetVGAInfo, VgaInfo, InfoBreach),
    {"GetVendorInfo", 0, false, [](Exports const& api, Arguments const&) { return Answer{BytesOf(api.GetVendorInfo()), ""}; }},
    {"FetchHwmValues", 0, false, [](Exports const& api, Arguments const&) { return Fetch(api); }},
    {"GetHwmValue", 1, false, [](Exports const& api, Arguments const& with) { return Reading(api, with[0]); }},
    INT(GetFrameRate),
    BOOL(SetFanSpeed, 1, with[0]),
    BOOL(SetFanSpeedTable, 2, with[0] != 0 ? kCurve : nullptr, with[1]),
    RECORD(GetFanSetting, FanSetting, FanBreach),
    BOOL(SetPowerLimit, 2, with[0], with[1]),
    BOOL(SetPowerLimitDefault, 0),
    RECORD(GetPowerLimitSetting, PowerLimitSetting, ValidBreach),
    BOOL(SetPerformanceUser, 4, with[0], with[1], with[2], with[3]),
    BOOL(SetPerformanceOC, 0),
    BOOL(SetPerformanceDefault, 0),
    BOOL(SetPerformanceSilent, 0),
    RECORD(GetGpuClockSetting, ClockSetting, ValidBreach),
    RECORD(GetMemClockSetting, ClockSetting, ValidBreach),
    {"GetExternalPerformanceParameter", 1, false, [](Exports const& api, Arguments const& with) {
         return Filled<PredefinedPerformanceParameter>(
             [&] { return api.GetExternalPerformanceParameter(static_cast<std::uint32_t>(with[0])); }, ValidBreach);
     }},
};
// clang-format on

}  // namespace

std::span<Operation const> Operations() {
    return kOperations;
}

}  // namespace gputune::test
