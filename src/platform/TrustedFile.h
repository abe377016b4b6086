// Not used for "nvapi.dll"; required for files of the display driver's package (nvidia/driver_store.h).
//
// Whether the system trusts a file.
#pragma once

#include <string>

#include "platform/library.h"

namespace gputune::platform {

// A file whose signature was checked by the system (WinVerifyTrust): it is signed, unchanged since, and the signer's
// certificates lead to a root that this machine trusts. Nothing is fetched from the network, nothing shown. While the
// object lives nobody can write, replace or remove the file, so that what is loaded is what was checked.
class TrustedFile {
public:
    // `wintrust` is the system's trust library; without one no file is trusted.
    TrustedFile(LibraryHandle wintrust, std::wstring const& path);
    ~TrustedFile();
    TrustedFile(TrustedFile const&) = delete;
    TrustedFile& operator=(TrustedFile const&) = delete;

    bool IsTrusted() const { return trusted_; }

private:
    [[maybe_unused]] void* file_ = nullptr;
    bool trusted_ = false;
};

}  // namespace gputune::platform
