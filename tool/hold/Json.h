// Records as JSON, for the protocol and the journal.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>

#include "tool/hold/Protocol.h"

namespace gputune::tool {

using Json = nlohmann::ordered_json;

Json ToJson(std::optional<double> const& value);
std::optional<double> OptionalNumber(Json const& json);
Json ToJson(BoardSettings const& settings);
Json ToJson(TakeBack const& takeBack);
// Both throw nlohmann::json::exception when a key is missing or of another kind.
BoardSettings BoardSettingsFrom(Json const& json);
TakeBack TakeBackFrom(Json const& json);

// Without line feeds. Bytes that are no UTF-8 become replacement characters.
std::string OneLine(Json const& json);

}  // namespace gputune::tool
