#include "tool/output/ErrorJson.h"

#include <nlohmann/json.hpp>

namespace gputune::tool {

using Json = nlohmann::ordered_json;

std::string ErrorJson(ErrorDetails const& details, std::string const& message) {
    Json error = Json::object();
    error["code"] = details.code;
    error["message"] = message;
    error["range"] = nullptr;
    if (details.range) {
        error["range"] = {{"minimum", details.range->minimum},
                          {"maximum", details.range->maximum},
                          {"unit", UnitName(details.range->unit).code}};
    }
    error["expected_points"] = details.expectedPoints ? Json(*details.expectedPoints) : Json(nullptr);
    error["adapters"] = details.adapters.empty() ? Json(nullptr) : Json(details.adapters);
    error["controllers"] = details.controllers.empty() ? Json(nullptr) : Json(details.controllers);
    Json root = Json::object();
    root["error"] = std::move(error);
    // Bytes that are no UTF-8 become replacement characters.
    return root.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace gputune::tool
