// The result of a command, as text for people or as JSON for programs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tool/values/Numbers.h"

namespace gputune::tool {

// std::monostate: not available. Strings are UTF-8.
using Value = std::variant<std::monostate, bool, std::int64_t, double, std::string>;

// An int field of the library: -1 is "not available".
Value IntValue(int value);

// An empty text, and nothing, are "not available".
Value TextValue(std::string const& text);
Value ToValue(std::optional<double> const& reading);
// The value and its unit: "65.5 °C", "yes", "not available".
std::string FormatValue(Value const& value, Unit unit);

struct Field {
    std::string key;  // the JSON name, without its unit
    std::string label;
    Value value;
    Unit unit = Unit::None;
    // Why the value may be wrong; null when it is not unsure. JSON shows it beside the value (UnitForm::BesideValue) of
    // fields that can be unsure.
    bool canBeUnsure = false;
    Name const* unsure = nullptr;
};

struct Column {
    std::string key;
    std::string label;
    Unit unit = Unit::None;
};

// Values in rows and columns: in JSON an array of objects.
struct Grid {
    std::string key;
    std::string label;
    std::vector<Column> columns;
    std::vector<std::vector<Value>> rows;
};

struct Section {
    // How JSON tells the unit: in the key, or beside the value where the unit depends on the board, and the key must
    // not.
    //     "clock_mhz": 1500
    //     "clock": {"value": 1500, "unit": "mhz"}
    enum class UnitForm { InKey, BesideValue };

    std::string key{};    // empty: the fields belong to the JSON object itself
    std::string title{};  // empty: no title line
    bool available = true;
    UnitForm unitForm = UnitForm::InKey;
    std::vector<Field> fields{};
    std::vector<Grid> grids{};
};

// What became of a change.
struct Outcome {
    bool done = false;                    // sent, and nothing shows that it was not taken
    std::optional<bool> confirmed{};      // the board shows it; nothing: the board does not report it
    std::vector<std::string> problems{};  // why it is not done
};

class Result {
public:
    // Marks the result of a command that changed something: `command` is for JSON, `sentence` for people.
    void SetDone(std::string command, std::string sentence);
    // The same for a change of the board.
    void SetOutcome(std::string command, std::string sentence, Outcome outcome);
    void Add(Section section) { sections_.push_back(std::move(section)); }
    // A line below the sections, for people only.
    void AddRemark(std::string remark) { remarks_.push_back(std::move(remark)); }

    std::string Text() const;
    // One object; indented, or on one line.
    std::string Json(bool indented = true) const;

private:
    std::string command_;
    std::string sentence_;
    std::optional<Outcome> outcome_;
    std::vector<Section> sections_;
    std::vector<std::string> remarks_;
};

}  // namespace gputune::tool
