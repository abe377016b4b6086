// How a hold is shown: lines of text or of JSON, or a dashboard.
#pragma once

#include <memory>
#include <string>

#include "tool/board/Session.h"
#include "tool/hold/Supervisor.h"

namespace gputune::tool {

// `change` is what the user is asked to agree to, as in ConfirmChange; empty: nothing is asked.
std::unique_ptr<HoldView> MakeHoldView(GlobalOptions const& options, std::string change, double interval);
// For `restore`, which has a result of its own.
std::unique_ptr<HoldView> MakeRestoreView(GlobalOptions const& options);

}  // namespace gputune::tool
