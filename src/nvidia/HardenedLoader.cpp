#include "nvidia/HardenedLoader.h"

#include <algorithm>
#include <limits>

#include "nvidia/driver_store.h"
#include "nvidia/file_names.h"
#include "platform/TrustedFile.h"
#include "platform/last_error.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/version.h"

namespace gputune::nvidia {

namespace {

using platform::kSearchSystemDirectory;
using platform::LibraryHandle;

// From this build on, drivers keep their libraries in their own package.
constexpr std::uint32_t kFirstBuildWithDriverPackages = 14308;

// Every way of the extended load to search somewhere else than in the system's directory.
constexpr std::uint32_t kSearchElsewhere = 0x1708;
static_assert((kSearchElsewhere & kSearchSystemDirectory) == 0);

// The system's own libraries that the vendor's library and the check of signatures come to need. Once they are
// loaded from the right place, files of the same names elsewhere are not. In this order.
constexpr wchar_t const* kSupportLibraries[] = {L"msasn1.dll", L"cryptnet.dll", L"drvstore.dll",
                                                L"devobj.dll", L"wldp.dll",     L"cryptbase.dll"};

// The system's protected media process, which loads nothing that it does not know.
constexpr wchar_t kProtectedHost[] = L"\\mfpmp.exe";

bool IsFullPath(std::wstring_view path) {
    auto const isSeparator = [](wchar_t character) { return character == L'\\' || character == L'/'; };
    auto const isLetter = [](wchar_t character) { return ToLower(character) >= L'a' && ToLower(character) <= L'z'; };
    return (!path.empty() && isSeparator(path[0])) ||
           (path.size() >= 3 && isLetter(path[0]) && path[1] == L':' && isSeparator(path[2]));
}

// 0 when the registry holds none, or something else than a number.
std::uint32_t BuildNumberInRegistry() {
    auto const answer =
        platform::ReadMachineTexts(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", L"CurrentBuildNumber");
    std::uint64_t number = 0;
    for (std::wstring const& text : answer.texts) {
        for (wchar_t const digit : text) {
            number = number * 10 + static_cast<std::uint64_t>(digit - L'0');
            if (digit < L'0' || digit > L'9' || number > std::numeric_limits<std::uint32_t>::max()) {
                return 0;
            }
        }
    }
    return static_cast<std::uint32_t>(number);
}

}  // namespace

LibraryHandle HardenedLoader::Load(std::wstring_view name, std::uint32_t flags) noexcept {
    try {
        return TryLoad(std::wstring(name), flags);
    } catch (...) {
        platform::SetLastError(platform::kErrorNotEnoughMemory);
        return nullptr;
    }
}

LibraryHandle HardenedLoader::TryLoad(std::wstring const& name, std::uint32_t flags) {
    platform::SetLastError(0);
    // A colon, because a drive and the streams of a file are no part of a bare name either.
    if (name.find_first_of(L"\\/:") != std::wstring::npos) {
        platform::SetLastError(platform::kErrorBadArguments);
        return nullptr;
    }
    if ((flags & kSearchSystemDirectory) == 0 && BeginsWith(name, L"nv") &&
        IsBuildAtLeast(kFirstBuildWithDriverPackages)) {
        std::wstring const path = FindInDriverStore(name);
        if (!path.empty()) {
            return LoadByFullPath(path, flags);
        }
        if (platform::LastError() != platform::kErrorModuleNotFound) {
            return nullptr;
        }
    }
    return LoadSupportLibraries() ? LoadFromSystemDirectory(name, flags) : nullptr;
}

LibraryHandle HardenedLoader::LoadByFullPath(std::wstring const& path, std::uint32_t flags) {
    if (!IsFullPath(path)) {
        platform::SetLastError(platform::kErrorBadArguments);
        return nullptr;
    }
    platform::TrustedFile const file(LoadFromSystemDirectory(L"wintrust.dll", 0), path);
    if (!file.IsTrusted()) {
        platform::SetLastError(platform::kErrorBadPathname);
        return nullptr;
    }
    return platform::LoadLibraryWithFlags(path.c_str(), flags & ~kSearchElsewhere);
}

LibraryHandle HardenedLoader::LoadFromSystemDirectory(std::wstring const& name, std::uint32_t flags) {
    if (IsWindows8OrLater()) {
        return platform::LoadLibraryWithFlags(name.c_str(), (flags & ~kSearchElsewhere) | kSearchSystemDirectory);
    }
    // That search came with Windows 8.
    std::wstring const directory = platform::SystemDirectory();
    if (directory.empty()) {
        return nullptr;
    }
    return platform::LoadLibraryWithFlags((directory + L"\\" + name).c_str(),
                                          flags & ~(kSearchElsewhere | kSearchSystemDirectory));
}

bool HardenedLoader::LoadSupportLibraries() {
    bool const noneIsLoaded = std::all_of(supportLibraries_.begin(), supportLibraries_.end(),
                                          [](LibraryHandle library) { return library == nullptr; });
    if (noneIsLoaded && !EndsWith(platform::HostExecutable(), kProtectedHost)) {
        supportFailed_ = false;
        for (std::size_t index = 0; index < supportLibraries_.size() && !supportFailed_; ++index) {
            supportLibraries_[index] = LoadFromSystemDirectory(kSupportLibraries[index], 0);
            if (supportLibraries_[index] == nullptr) {
                supportError_ = platform::LastError();
                // Not every Windows has all of them.
                supportFailed_ = supportError_ != platform::kErrorModuleNotFound;
            }
        }
    }
    // When the libraries were not loaded again, the earlier result holds.
    if (supportFailed_) {
        platform::SetLastError(supportError_);
    }
    return !supportFailed_;
}

bool HardenedLoader::IsBuildAtLeast(std::uint32_t build) {
    if (buildNumber_ == 0) {
        // Hosts without a compatibility manifest are told an old build, but the registry tells them the true one.
        buildNumber_ = platform::IsBuildAtLeast(build) ? build : BuildNumberInRegistry();
    }
    return buildNumber_ >= build;
}

bool HardenedLoader::IsWindows8OrLater() {
    if (!isWindows8OrLater_) {
        isWindows8OrLater_ = platform::IsWindowsAtLeast(6, 2);
    }
    return *isWindows8OrLater_;
}

}  // namespace gputune::nvidia
