// A reference as a text, to hand from process to process.
#pragma once

#include <string>

#include "Trial.h"

namespace gputune::matrix {

std::string Pack(Healthy const& healthy);
Healthy Unpack(std::string const& text);

}  // namespace gputune::matrix
