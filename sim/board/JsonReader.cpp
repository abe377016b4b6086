#include "sim/board/JsonReader.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

namespace gputune::sim {

namespace {

using nlohmann::json;

std::string Position(std::string const& text, std::size_t offset) {
    offset = std::min(offset, text.size());
    auto const end = text.begin() + static_cast<std::ptrdiff_t>(offset);
    auto const line = 1 + std::count(text.begin(), end, '\n');
    std::size_t const lineStart = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
    std::size_t const column = lineStart == std::string::npos ? offset + 1 : offset - lineStart;
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// A value as the error shows it: "expected a string, found 3". Long values are cut.
std::string Shown(json const& value) {
    constexpr std::size_t kMax = 40;
    if (value.is_object() || value.is_array()) {
        return value.is_object() ? "an object" : "an array";
    }
    std::string const text = value.dump();
    return text.size() <= kMax ? text : text.substr(0, kMax) + "...";
}

// The parser's message without its prefix, which has an error number and a position.
std::string Cause(json::exception const& error) {
    std::string const what = error.what();
    std::size_t const cause = what.find(": ");
    std::size_t const number = what.find("] ");
    return cause != std::string::npos    ? what.substr(cause + 2)
           : number != std::string::npos ? what.substr(number + 2)
                                         : what;
}

// How many letters to insert, delete, change or swap with their neighbour to turn one word into the other.
std::size_t EditDistance(std::string_view a, std::string_view b) {
    std::vector<std::vector<std::size_t>> distance(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                distance[i][j] = i + j;
                continue;
            }
            std::size_t const change = a[i - 1] == b[j - 1] ? 0 : 1;
            distance[i][j] =
                std::min({distance[i - 1][j] + 1, distance[i][j - 1] + 1, distance[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                distance[i][j] = std::min(distance[i][j], distance[i - 2][j - 2] + 1);
            }
        }
    }
    return distance[a.size()][b.size()];
}

// Whether one word is probably the other one mistyped: at most two mistakes, and one in a short word, so that "min" is
// not taken for "max".
bool IsNearly(std::string_view a, std::string_view b) {
    constexpr std::size_t kShort = 5;
    constexpr std::size_t kLongest = 64;
    return a.size() <= kLongest && EditDistance(a, b) <= (std::min(a.size(), b.size()) <= kShort ? 1 : 2);
}

}  // namespace

json ParseJson(std::string const& text, std::string const& source) {
    // The parser alone would silently take the last of several equal keys.
    std::vector<std::set<std::string>> open;
    auto const watch = [&](int, json::parse_event_t event, json& parsed) {
        if (event == json::parse_event_t::object_start) {
            open.emplace_back();
        } else if (event == json::parse_event_t::object_end) {
            open.pop_back();
        } else if (event == json::parse_event_t::key && !open.back().insert(parsed.get<std::string>()).second) {
            throw BoardFileError(source + ": the key \"" + parsed.get<std::string>() +
                                 "\" is given twice in the same object");
        }
        return true;
    };
    try {
        return json::parse(text, watch);
    } catch (json::parse_error const& error) {
        throw BoardFileError(source + ": " + Position(text, error.byte == 0 ? 0 : error.byte - 1) +
                             ": not valid JSON: " + Cause(error));
    } catch (json::out_of_range const& error) {
        // A number too large for a double.
        throw BoardFileError(source + ": " + Cause(error));
    }
}

void JsonValue::Fail(std::string const& expected) const {
    throw BoardFileError(*source_ + ": " + (path_.empty() ? "the file" : path_) + ": expected " + expected +
                         ", found " + Shown(*value_));
}

int JsonValue::Int(int min, int max) const {
    std::string expected = "an integer";
    if (min == max) {
        expected = std::to_string(min);
    } else if (min != INT_MIN || max != INT_MAX) {
        expected += max == INT_MAX ? " of at least " + std::to_string(min)
                                   : " from " + std::to_string(min) + " to " + std::to_string(max);
    }
    bool const tooLarge = value_->is_number_unsigned() && value_->get<std::uint64_t>() > INT_MAX;
    if (!value_->is_number_integer() || tooLarge) {
        Fail(expected);
    }
    auto const value = value_->get<std::int64_t>();
    if (value < min || value > max) {
        Fail(expected);
    }
    return static_cast<int>(value);
}

double JsonValue::Number(double min, double max) const {
    double const value = value_->is_number() ? value_->get<double>() : std::nan("");
    if (!(value >= min && value <= max)) {
        Fail("a number from " + json(min).dump() + " to " + json(max).dump());
    }
    return value;
}

bool JsonValue::IsNull() const {
    return value_->is_null();
}

bool JsonValue::Bool() const {
    if (!value_->is_boolean()) {
        Fail("true or false");
    }
    return value_->get<bool>();
}

std::string JsonValue::String(std::size_t maxBytes) const {
    if (!value_->is_string()) {
        Fail("a string");
    }
    std::string text = value_->get<std::string>();
    if (text.size() > maxBytes || text.find('\0') != std::string::npos) {
        Fail("a string of at most " + std::to_string(maxBytes) + " bytes without NUL");
    }
    return text;
}

int JsonValue::Mask() const {
    char const* const expected = "an integer from 0 to 4294967295, or its hexadecimal digits as in \"0x201f\"";
    std::uint64_t value = UINT64_MAX;
    if (value_->is_number_unsigned()) {
        value = value_->get<std::uint64_t>();
    } else if (value_->is_string()) {
        std::string const text = value_->get<std::string>();
        bool const hexadecimal = text.size() > 2 && text.size() <= 10 && text.starts_with("0x") &&
                                 text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string::npos;
        value = hexadecimal ? std::stoull(text.substr(2), nullptr, 16) : UINT64_MAX;
    }
    if (value > UINT32_MAX) {
        Fail(expected);
    }
    return static_cast<int>(static_cast<std::uint32_t>(value));
}

std::size_t JsonValue::Choice(std::initializer_list<char const*> names) const {
    std::string expected = "one of";
    std::size_t position = 0;
    for (char const* name : names) {
        if (value_->is_string() && value_->get<std::string>() == name) {
            return position;
        }
        expected += (position == 0 ? " \"" : ", \"") + std::string(name) + "\"";
        ++position;
    }
    Fail(expected);
}

void JsonValue::ForEach(std::function<void(JsonValue const&)> const& visit) const {
    if (!value_->is_array()) {
        Fail("an array");
    }
    for (std::size_t i = 0; i < value_->size(); ++i) {
        visit(JsonValue((*value_)[i], path_ + "[" + std::to_string(i) + "]", *source_));
    }
}

JsonObject::JsonObject(JsonValue value) : object_(std::move(value)) {
    if (!object_.value_->is_object()) {
        object_.Fail("an object");
    }
}

std::optional<JsonValue> JsonObject::Optional(char const* key) {
    known_.insert(key);
    auto const found = object_.value_->find(key);
    if (found == object_.value_->end()) {
        return std::nullopt;
    }
    return JsonValue(*found, PathTo(key), *object_.source_);
}

JsonValue JsonObject::Required(char const* key) {
    auto value = Optional(key);
    if (!value) {
        for (auto const& item : object_.value_->items()) {
            if (!known_.contains(item.key()) && IsNearly(item.key(), key)) {
                FailMistyped(item.key(), key);
            }
        }
        throw BoardFileError(*object_.source_ + ": " + PathTo(key) + ": this key is missing");
    }
    return *value;
}

void JsonObject::Finish() const {
    for (auto const& item : object_.value_->items()) {
        if (!known_.contains(item.key())) {
            FailUnknown(item.key());
        }
    }
}

void JsonObject::FailUnknown(std::string const& key) const {
    std::string expected;
    for (auto const& name : known_) {
        if (IsNearly(key, name)) {
            FailMistyped(key, name);
        }
        expected += (expected.empty() ? "" : ", ") + name;
    }
    throw BoardFileError(*object_.source_ + ": " + PathTo(key) + ": unknown key; known are " + expected);
}

void JsonObject::FailMistyped(std::string const& key, std::string const& meant) const {
    throw BoardFileError(*object_.source_ + ": " + (object_.path_.empty() ? "" : object_.path_ + ": ") +
                         "unknown key \"" + key + "\"; did you mean \"" + meant + "\"?");
}

std::string JsonObject::PathTo(std::string const& key) const {
    return object_.path_.empty() ? key : object_.path_ + "." + key;
}

}  // namespace gputune::sim
