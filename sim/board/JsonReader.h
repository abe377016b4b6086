// Checked access to a JSON document: whatever is not as expected becomes an error that names the file, the key as a
// path
// ("adapters[0].udid") and what was expected.
#pragma once

#include <climits>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

// The whole header takes the compiler longer than any file that reads a part of a board.
#include <nlohmann/json_fwd.hpp>

namespace gputune::sim {

class BoardFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The document of a text; source names it in errors. Throws BoardFileError with line and column for a syntax error.
nlohmann::json ParseJson(std::string const& text, std::string const& source);

// One value and where it stands. The document and the source's name must outlive it.
class JsonValue {
public:
    JsonValue(nlohmann::json const& value, std::string path, std::string const& source)
        : value_(&value), path_(std::move(path)), source_(&source) {}

    // Each throws BoardFileError when the value is of another type or outside the range.
    int Int(int min = INT_MIN, int max = INT_MAX) const;
    double Number(double min, double max) const;
    bool Bool() const;
    std::string String(std::size_t maxBytes) const;
    // An integer of 32 bits without sign, or the same as text in hexadecimal ("0x201f").
    int Mask() const;
    // The position of the text in a list of names.
    std::size_t Choice(std::initializer_list<char const*> names) const;
    bool IsNull() const;
    // Calls with each element of an array.
    void ForEach(std::function<void(JsonValue const&)> const& visit) const;

    [[noreturn]] void Fail(std::string const& expected) const;

private:
    friend class JsonObject;
    nlohmann::json const* value_;
    std::string path_;  // empty for the document itself
    std::string const* source_;
};

// An object whose keys are asked for one after the other; Finish complains about those that nobody asked for.
class JsonObject {
public:
    explicit JsonObject(JsonValue value);

    // Throws when the key is missing; then another one that is nearly the same, and that nobody asked for, is taken for
    // it mistyped.
    JsonValue Required(char const* key);
    std::optional<JsonValue> Optional(char const* key);

    // Optional entries: value stays as it is without the key.
    void Read(char const* key, int& value, int min = INT_MIN, int max = INT_MAX);
    void Read(char const* key, double& value, double min, double max);
    void Read(char const* key, bool& value);

    // Throws for the first unknown key; for one that is nearly a known one, names that.
    void Finish() const;

    JsonValue const& Value() const { return object_; }

private:
    [[noreturn]] void FailUnknown(std::string const& key) const;
    [[noreturn]] void FailMistyped(std::string const& key, std::string const& meant) const;
    std::string PathTo(std::string const& key) const;

    JsonValue object_;
    std::set<std::string> known_;
};

}  // namespace gputune::sim
