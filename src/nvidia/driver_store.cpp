#include "nvidia/driver_store.h"

#include <vector>

#include "nvidia/file_names.h"
#include "platform/last_error.h"
#include "platform/paths.h"
#include "platform/registry.h"

namespace gputune::nvidia {

namespace {

// Below this key each display adapter has one of four digits, which its driver's installation fills.
constexpr wchar_t kDisplayClass[] =
    L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";

// Below this key each installed driver package has one, named after its INF file.
constexpr wchar_t kInstalledPackages[] = L"SYSTEM\\DriverDatabase\\DriverInfFiles";

constexpr wchar_t kStore[] = L"\\DriverStore\\FileRepository\\";

// The driver's libraries as the system loads them; those for 32-bit processes first.
constexpr wchar_t const* kDriverLibraries[] = {L"UserModeDriverNameWow", L"OpenGLDriverNameWow", L"UserModeDriverName",
                                               L"OpenGLDriverName"};

// The further modules of the package, by their place in it.
constexpr wchar_t const* kModuleLists[] = {L"DriverSupportModulesWow", L"DriverSupportModules"};

bool IsAdapterKey(std::wstring_view name) {
    return name.size() == 4 && name.find_first_not_of(L"0123456789") == std::wstring_view::npos;
}

std::wstring_view FileNameOf(std::wstring_view path) {
    return path.substr(path.find_last_of(L"\\/") + 1);
}

// One search. It remembers the first failure that is not an absence: a search that could not read everything may have
// missed the file.
class Search {
public:
    Search(std::wstring const& name, std::wstring const& systemDirectory)
        : name_(name), store_(systemDirectory + kStore) {}

    std::wstring Run() {
        for (std::wstring const& key : TextsOf(platform::ReadMachineSubkeys(kDisplayClass))) {
            if (IsAdapterKey(key)) {
                std::wstring found = SearchAdapter(std::wstring(kDisplayClass) + L"\\" + key);
                if (!found.empty()) {
                    return found;
                }
            }
        }
        platform::SetLastError(error_);
        return {};
    }

private:
    std::wstring SearchAdapter(std::wstring const& adapter) {
        for (std::wstring const& directory : PackageDirectories(adapter)) {
            for (wchar_t const* list : kModuleLists) {
                for (std::wstring const& module : Texts(adapter, list)) {
                    bool const isFullPath = module.find(L':') != std::wstring::npos;
                    std::wstring path = isFullPath ? module : directory + module;
                    if (SameName(FileNameOf(module), name_) && Exists(path)) {
                        return path;
                    }
                }
            }
            if (Exists(directory + name_)) {
                return directory + name_;
            }
        }
        return {};
    }

    // Each ends with a separator and lies in the store.
    std::vector<std::wstring> PackageDirectories(std::wstring const& adapter) {
        std::vector<std::wstring> directories;
        for (std::wstring const& inf : Texts(adapter, L"InfPath")) {
            for (std::wstring const& package : Texts(std::wstring(kInstalledPackages) + L"\\" + inf, L"Active")) {
                directories.push_back(store_ + package + L"\\");
            }
        }
        for (wchar_t const* value : kDriverLibraries) {
            for (std::wstring const& library : Texts(adapter, value)) {
                directories.push_back(library.substr(0, library.size() - FileNameOf(library).size()));
            }
        }
        return directories;
    }

    bool Exists(std::wstring const& path) {
        // A package is a directory of the store itself; nothing leads out of it again.
        if (!BeginsWith(path, store_) || path.find(L"..") != std::wstring::npos) {
            return false;
        }
        return Succeeded(platform::FindFile(path));
    }

    std::vector<std::wstring> Texts(std::wstring const& key, wchar_t const* value) {
        return TextsOf(platform::ReadMachineTexts(key, value));
    }

    std::vector<std::wstring> TextsOf(platform::RegistryAnswer answer) {
        Succeeded(answer.error);
        return std::move(answer.texts);
    }

    bool Succeeded(std::uint32_t error) {
        bool const isAbsence = error == platform::kErrorFileNotFound || error == platform::kErrorPathNotFound ||
                               error == platform::kErrorInvalidName;
        if (error != 0 && !isAbsence && error_ == platform::kErrorModuleNotFound) {
            error_ = error;
        }
        return error == 0;
    }

    std::wstring const& name_;
    std::wstring store_;
    std::uint32_t error_ = platform::kErrorModuleNotFound;
};

}  // namespace

std::wstring FindInDriverStore(std::wstring const& name) {
    std::wstring const systemDirectory = platform::SystemDirectory();
    if (systemDirectory.empty()) {
        platform::SetLastError(platform::kErrorModuleNotFound);
        return {};
    }
    return Search(name, systemDirectory).Run();
}

}  // namespace gputune::nvidia
