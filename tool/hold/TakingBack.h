// Takes back what a hold has set.
#pragma once

#include <string>

#include "tool/board/Session.h"
#include "tool/hold/Protocol.h"

namespace gputune::tool {

// The settings as the board shows them now, without what could not be read just now.
BoardSettings ReadSettingsAnew(Session const& session);

// Fan first; then clocks and power limit, to what they were before, or to the defaults where that could not be read.
// Goes on after a failure. Returns sentences about what could not be taken back; empty when all was.
std::string TakeBackAll(Session const& session, TakeBack const& takeBack);

}  // namespace gputune::tool
