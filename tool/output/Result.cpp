#include "tool/output/Result.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

using Json = nlohmann::ordered_json;

Json ToJson(Value const& value) {
    struct Visitor {
        Json operator()(std::monostate) const { return nullptr; }
        Json operator()(bool flag) const { return flag; }
        Json operator()(std::int64_t number) const { return number; }
        Json operator()(double number) const {
            return std::isfinite(number) ? Json(FewestDigits(number)) : Json(nullptr);
        }
        Json operator()(std::string const& text) const { return text; }
    };
    return std::visit(Visitor{}, value);
}

std::string KeyWithUnit(std::string const& key, Unit unit) {
    return unit == Unit::None ? key : key + "_" + UnitName(unit).code;
}

Json GridToJson(Grid const& grid) {
    Json rows = Json::array();
    for (std::vector<Value> const& row : grid.rows) {
        Json object = Json::object();
        for (std::size_t i = 0; i < grid.columns.size(); ++i) {
            object[KeyWithUnit(grid.columns[i].key, grid.columns[i].unit)] = ToJson(row.at(i));
        }
        rows.push_back(std::move(object));
    }
    return rows;
}

void AddToJson(Section const& section, Json& object) {
    for (Field const& field : section.fields) {
        if (section.unitForm == Section::UnitForm::BesideValue) {
            object[field.key] = {{"value", ToJson(field.value)}, {"unit", UnitName(field.unit).code}};
            if (field.canBeUnsure) {
                object[field.key]["unsure"] = field.unsure != nullptr ? Json(field.unsure->code) : Json(nullptr);
            }
        } else {
            object[KeyWithUnit(field.key, field.unit)] = ToJson(field.value);
        }
    }
    for (Grid const& grid : section.grids) {
        object[grid.key] = GridToJson(grid);
    }
}

bool HasNoValue(Grid const& grid) {
    auto const isMissing = [](Value const& value) { return std::holds_alternative<std::monostate>(value); };
    // The first column holds the row's number, not a value.
    return std::all_of(grid.rows.begin(), grid.rows.end(), [&](std::vector<Value> const& row) {
        return std::all_of(row.begin() + (row.empty() ? 0 : 1), row.end(), isMissing);
    });
}

// Two blanks between columns, none at the end of a line.
std::string Line(std::vector<std::string> const& cells, std::vector<std::size_t> const& widths) {
    std::string line = "  ";
    for (std::size_t i = 0; i < cells.size(); ++i) {
        line += PadRight(cells[i], i + 1 < cells.size() ? widths[i] + 2 : 0);
    }
    return line + "\n";
}

std::string GridText(Grid const& grid) {
    std::vector<std::vector<std::string>> lines(1);
    for (Column const& column : grid.columns) {
        lines[0].push_back(column.label);
    }
    for (std::vector<Value> const& row : grid.rows) {
        std::vector<std::string>& cells = lines.emplace_back();
        for (std::size_t i = 0; i < grid.columns.size(); ++i) {
            cells.push_back(FormatValue(row.at(i), grid.columns[i].unit));
        }
    }
    std::vector<std::size_t> widths(grid.columns.size(), 0);
    for (std::vector<std::string> const& cells : lines) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            widths[i] = std::max(widths[i], DisplayWidth(cells[i]));
        }
    }
    std::string text;
    for (std::vector<std::string> const& cells : lines) {
        text += Line(cells, widths);
    }
    return text;
}

std::string SectionText(Section const& section) {
    if (!section.available) {
        return section.title + ": " + kNotAvailable + "\n";
    }
    std::string text = section.title.empty() ? "" : section.title + "\n";
    std::size_t width = 0;
    for (Field const& field : section.fields) {
        width = std::max(width, DisplayWidth(field.label));
    }
    for (Grid const& grid : section.grids) {
        width = std::max(width, HasNoValue(grid) ? DisplayWidth(grid.label) : 0);
    }
    for (Field const& field : section.fields) {
        std::string const doubt = field.unsure != nullptr ? std::string(" (") + field.unsure->text + ")" : "";
        text += Line({field.label, FormatValue(field.value, field.unit) + doubt}, {width, 0});
    }
    for (Grid const& grid : section.grids) {
        text += HasNoValue(grid) ? Line({grid.label, kNotAvailable}, {width, 0}) : GridText(grid);
    }
    return text;
}

}  // namespace

Value IntValue(int value) {
    return value == -1 ? Value{} : Value{std::int64_t{value}};
}

Value TextValue(std::string const& text) {
    return text.empty() ? Value{} : Value{text};
}

Value ToValue(std::optional<double> const& reading) {
    return reading ? Value{*reading} : Value{};
}

std::string FormatValue(Value const& value, Unit unit) {
    struct Visitor {
        Unit unit;

        std::string operator()(std::monostate) const { return kNotAvailable; }
        std::string operator()(bool flag) const { return flag ? "yes" : "no"; }
        std::string operator()(std::int64_t number) const { return WithUnit(number, unit); }
        std::string operator()(double number) const { return WithUnit(number, unit); }
        std::string operator()(std::string const& text) const { return text.empty() ? kNotAvailable : text; }
    };
    return std::visit(Visitor{unit}, value);
}

void Result::SetDone(std::string command, std::string sentence) {
    command_ = std::move(command);
    sentence_ = std::move(sentence);
}

void Result::SetOutcome(std::string command, std::string sentence, Outcome outcome) {
    SetDone(std::move(command), std::move(sentence));
    outcome_ = std::move(outcome);
}

std::string Result::Text() const {
    std::string text;
    if (!sentence_.empty()) {
        text += sentence_ + "\n";
    }
    for (Section const& section : sections_) {
        text += SectionText(section);
    }
    for (std::string const& remark : remarks_) {
        text += remark + "\n";
    }
    return text;
}

std::string Result::Json(bool indented) const {
    tool::Json root = tool::Json::object();
    if (!command_.empty()) {
        root["command"] = command_;
        root["done"] = !outcome_ || outcome_->done;
        if (outcome_) {
            root["confirmed"] = outcome_->confirmed ? tool::Json(*outcome_->confirmed) : tool::Json(nullptr);
            root["problems"] = outcome_->problems;
        }
    }
    for (Section const& section : sections_) {
        if (section.key.empty()) {
            AddToJson(section, root);
        } else if (!section.available) {
            root[section.key] = nullptr;
        } else {
            tool::Json object = tool::Json::object();
            AddToJson(section, object);
            root[section.key] = std::move(object);
        }
    }
    // Bytes that are no UTF-8 become replacement characters; by default the JSON library would throw.
    return root.dump(indented ? 2 : -1, ' ', false, tool::Json::error_handler_t::replace) + "\n";
}

}  // namespace gputune::tool
