// cxx_host
//
// A host in C++: checks that the DLL it runs with is the one of the package it was built with, and prints the version.
#include <gputune.h>

#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// The product version in the DLL's version block; empty when there is none.
std::string LoadedVersion() {
    char path[MAX_PATH];
    if (!GetModuleFileNameA(GetModuleHandleA("gputune.dll"), path, MAX_PATH)) {
        return {};
    }
    std::vector<char> block(GetFileVersionInfoSizeA(path, nullptr));
    void* text = nullptr;
    UINT length = 0;
    if (block.empty() || !GetFileVersionInfoA(path, 0, static_cast<DWORD>(block.size()), block.data()) ||
        !VerQueryValueA(block.data(), "\\StringFileInfo\\040904B0\\ProductVersion", &text, &length)) {
        return {};
    }
    return static_cast<char const*>(text);
}

}  // namespace

int main() {
    FanTablePoint const curve[5]{{20, 30}, {30, 40}, {40, 50}, {50, 60}, {60, 70}};
    bool const refusesBeforeStart = GetVendorInfo() == 0 && !IsInitOk() && !SetFanSpeedTable(curve, 5) &&
                                    !GetFanSetting().Valid && GetHwmValue(GPUTUNE_HWM_GPU_LOAD).Value == 0.0;
    std::string const version = LoadedVersion();
    std::printf("refuses before the start: %d\npackage %s, library %s\n", refusesBeforeStart, PACKAGE_VERSION,
                version.c_str());
    return refusesBeforeStart && version == PACKAGE_VERSION ? 0 : 1;
}
