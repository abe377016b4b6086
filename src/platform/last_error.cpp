#include "platform/last_error.h"

#include <windows.h>

namespace gputune::platform {

static_assert(kErrorFileNotFound == ERROR_FILE_NOT_FOUND);
static_assert(kErrorPathNotFound == ERROR_PATH_NOT_FOUND);
static_assert(kErrorNotEnoughMemory == ERROR_NOT_ENOUGH_MEMORY);
static_assert(kErrorInvalidName == ERROR_INVALID_NAME);
static_assert(kErrorModuleNotFound == ERROR_MOD_NOT_FOUND);
static_assert(kErrorBadArguments == ERROR_BAD_ARGUMENTS);
static_assert(kErrorBadPathname == ERROR_BAD_PATHNAME);

std::uint32_t LastError() {
    return ::GetLastError();
}

void SetLastError(std::uint32_t code) {
    ::SetLastError(code);
}

}  // namespace gputune::platform
