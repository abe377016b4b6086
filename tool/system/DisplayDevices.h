// The machine's display devices and their power, from Windows' device manager. No device is asked or woken.
#pragma once

#include <memory>
#include <vector>

#include "tool/system/DevicePower.h"

namespace gputune::tool {

class DisplayDevices {
public:
    DisplayDevices();
    ~DisplayDevices();
    DisplayDevices(DisplayDevices const&) = delete;
    DisplayDevices& operator=(DisplayDevices const&) = delete;

    // As they are now; which there are is looked up again once a minute. None where Windows tells nothing.
    std::vector<DisplayDevice> Read();

private:
    struct Functions;

    void ForgetList();

    std::unique_ptr<Functions> functions_;  // null where the system lacks one of them
    void* list_ = nullptr;                  // HDEVINFO; null: none
    unsigned long long listedAt_ = 0;       // in milliseconds since the system's start
};

}  // namespace gputune::tool
