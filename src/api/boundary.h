// The boundary between hosts and the library: no call without an adapter, no exception to a host built by another
// compiler.
#pragma once

#include <exception>
#include <string_view>

#include "api/current_adapter.h"
#include "log/DebugLog.h"

namespace gputune::api {

// Run `operation` on the current adapter. Without one nothing happens; an exception ends here, with a log entry under
// the exported function's tag. True when the operation ran to its end.
template <class Operation>
bool OnAdapter(char const* exportTag, Operation&& operation) noexcept {
    IVideoAdapter* const adapter = CurrentAdapter();
    if (adapter == nullptr) {
        return false;
    }
    try {
        operation(*adapter);
        return true;
    } catch (std::exception const& error) {
        log::Entry(log::Tag{exportTag}, std::string_view(error.what()));
    } catch (...) {
        log::Entry(log::Tag{exportTag}, "unknown exception");
    }
    return false;
}

}  // namespace gputune::api
