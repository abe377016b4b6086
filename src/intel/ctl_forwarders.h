// The forwarding exports, which are written in assembler (ctl_forwarders.cpp).
#pragma once

namespace gputune::intel {

// Look every entry point up again on its next call.
void ForgetForwardedEntries();

}  // namespace gputune::intel
