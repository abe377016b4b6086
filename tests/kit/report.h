// The report, in JSON and as text. docs/test-kit.md says what is in it, schema/test-kit.schema.json in which form.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cases.h"

namespace gputune::kit {

struct Sum {
    int passed = 0;
    int failed = 0;
    int skipped = 0;
};
Sum SumOf(std::vector<Result> const& results);

// What is in the report of a case: of one that did not pass also what it printed, shortened.
nlohmann::ordered_json CaseFacts(Result const& result);

// The JSON with a line for each case, as people compare two of them.
std::string JsonText(nlohmann::ordered_json const& report);
// What a person reads first.
std::string PlainText(nlohmann::ordered_json const& report);

}  // namespace gputune::kit
