#include "profile/performance_profile.h"

#include <memory>
#include <optional>
#include <string>

#include "log/DebugLog.h"
#include "platform/paths.h"
#include "profile/profile_reader.h"

namespace gputune::profile {

namespace {

constexpr log::Tag kReadTag{"[IVideoAdapter::GetExternalPerformanceParameter]"};
constexpr log::Tag kPrintTag{"[PrintPredefinedPerformanceParameter()]"};
constexpr wchar_t kFileBelowHost[] = L"\\Config\\ConfigModel.xml";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// By the wide path: a folder whose name the narrow encoding cannot express is found as well.
Lookup FindInFile(std::wstring const& path, std::uint32_t hwid) {
    std::unique_ptr<std::FILE, CloseFile> const file(platform::OpenForReading(path));
    std::optional<std::string> const document = ReadDocument(file.get());
    return document ? FindProfile(*document, hwid) : Lookup{Outcome::Unreadable};
}

void LogOutcome(Lookup const& lookup) {
    switch (lookup.outcome) {
        case Outcome::Unreadable:
            log::Entry(kReadTag / "open pred xml", "failed");
            break;
        case Outcome::NoRoot:
            log::Entry(kReadTag / "parse pred xml", "root element not found");
            break;
        case Outcome::NoEntries:
            log::Entry(kReadTag / "parse pred xml", "first child element not found");
            break;
        case Outcome::BoardEntry:
            log::Entry(kReadTag / "VGA HWID", "found");
            log::Entry(kReadTag / "config used", "ext. custom");
            PrintPredefinedPerformanceParameter(lookup.record);
            break;
        case Outcome::DefaultEntry:
            log::Entry(kReadTag / "VGA HWID", "not found");
            log::Entry(kReadTag / "config used", "ext. default");
            PrintPredefinedPerformanceParameter(lookup.record);
            break;
        case Outcome::NoMatch:
            log::Entry(kReadTag / "VGA HWID", "not found");
            log::Entry(kReadTag / "config used", "failed, default not exist");
            break;
    }
}

}  // namespace

PredefinedPerformanceParameter GetExternalPerformanceParameter(std::uint32_t hwid) {
    std::wstring const path = platform::HostDirectory() + kFileBelowHost;
    log::WideEntry(kReadTag / "pred config path", path);
    // Deliberate: the identifier is logged as a signed number.
    log::Entry(kReadTag / "given hwid", static_cast<int>(hwid));
    Lookup const lookup = FindInFile(path, hwid);
    LogOutcome(lookup);
    return lookup.record;
}

void PrintPredefinedPerformanceParameter(PredefinedPerformanceParameter const& parameter) {
    log::Entry(kPrintTag, "Valid: ", static_cast<int>(parameter.Valid));
    log::Entry(kPrintTag, "GpuOC: ", parameter.GpuOC);
    log::Entry(kPrintTag, "GpuOCGivenValue: ", parameter.GpuOCGivenValue);
    log::Entry(kPrintTag, "GpuSilent: ", parameter.GpuSilent);
    log::Entry(kPrintTag, "MemOC: ", parameter.MemOC);
    log::Entry(kPrintTag, "MemOCGivenValue: ", parameter.MemOCGivenValue);
    log::Entry(kPrintTag, "MemSilent: ", parameter.MemSilent);
    log::Entry(kPrintTag, "NewestVBIOS: ", parameter.NewestVBIOS);
    log::Entry(kPrintTag, "PowerOC: ", parameter.PowerOC);
    log::Entry(kPrintTag, "PowerSilent: ", parameter.PowerSilent);
    log::Entry(kPrintTag, "Watt: ", parameter.Watt);
}

}  // namespace gputune::profile
