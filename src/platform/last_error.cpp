#include "platform/last_error.h"

#include <windows.h>

namespace gputune::platform {

std::uint32_t LastError() {
    return ::GetLastError();
}

}  // namespace gputune::platform
