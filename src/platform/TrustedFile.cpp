#include "platform/TrustedFile.h"

#include <windows.h>

#include <softpub.h>
#include <wintrust.h>

namespace gputune::platform {

namespace {

bool Verify(decltype(&::WinVerifyTrust) verify, WINTRUST_FILE_INFO& file) {
    GUID action = WINTRUST_ACTION_GENERIC_VERIFY_V2;
    WINTRUST_DATA data{};
    data.cbStruct = sizeof data;
    data.dwUIChoice = WTD_UI_NONE;
    data.fdwRevocationChecks = WTD_REVOKE_NONE;
    data.dwUnionChoice = WTD_CHOICE_FILE;
    data.pFile = &file;
    data.dwStateAction = WTD_STATEACTION_VERIFY;
    data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
    auto* const nobody = static_cast<HWND>(INVALID_HANDLE_VALUE);
    LONG const result = verify(nobody, &action, &data);
    data.dwStateAction = WTD_STATEACTION_CLOSE;
    verify(nobody, &action, &data);
    return result == ERROR_SUCCESS;
}

}  // namespace

TrustedFile::TrustedFile(LibraryHandle wintrust, std::wstring const& path) {
    auto* const verify = wintrust == nullptr
                             ? nullptr
                             : reinterpret_cast<decltype(&::WinVerifyTrust)>(FindSymbol(wintrust, "WinVerifyTrust"));
    if (verify == nullptr) {
        return;
    }
    HANDLE const handle = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return;
    }
    file_ = handle;
    WINTRUST_FILE_INFO file{};
    file.cbStruct = sizeof file;
    file.pcwszFilePath = path.c_str();
    file.hFile = handle;
    trusted_ = Verify(verify, file);
}

TrustedFile::~TrustedFile() {
    if (file_ != nullptr) {
        ::CloseHandle(file_);
    }
}

}  // namespace gputune::platform
