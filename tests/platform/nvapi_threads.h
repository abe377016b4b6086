// What tests of NVAPI and many threads share.
#pragma once

#include <atomic>

#include "AllAtOnce.h"
#include "Files.h"
#include "nvidia/Nvapi.h"

namespace gputune::test {

constexpr int kThreads = 16;

// The status of a call: even threads and odd ones call different functions.
inline int Ask(nvidia::Nvapi& nvapi, int number) {
    char text[64];
    return number % 2 == 0 ? nvapi.NvAPI_Initialize() : nvapi.NvAPI_GetInterfaceVersionString(text);
}

}  // namespace gputune::test
