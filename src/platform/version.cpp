#include "platform/version.h"

#include <windows.h>

namespace gputune::platform {

namespace {

bool Verify(OSVERSIONINFOEXW& wanted, DWORD fields, DWORDLONG conditions) {
    wanted.dwOSVersionInfoSize = sizeof wanted;
    return ::VerifyVersionInfoW(&wanted, fields, conditions) != FALSE;
}

}  // namespace

bool IsWindowsAtLeast(std::uint32_t major, std::uint32_t minor) {
    OSVERSIONINFOEXW wanted{};
    wanted.dwMajorVersion = major;
    wanted.dwMinorVersion = minor;
    DWORDLONG const onlyMajor = ::VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL);
    return Verify(wanted, VER_MAJORVERSION | VER_MINORVERSION,
                  ::VerSetConditionMask(onlyMajor, VER_MINORVERSION, VER_GREATER_EQUAL));
}

bool IsBuildAtLeast(std::uint32_t build) {
    OSVERSIONINFOEXW wanted{};
    wanted.dwBuildNumber = build;
    return Verify(wanted, VER_BUILDNUMBER, ::VerSetConditionMask(0, VER_BUILDNUMBER, VER_GREATER_EQUAL));
}

}  // namespace gputune::platform
