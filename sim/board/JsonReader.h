// Checked access to a JSON document. An error names the file, the key with its path, as in adapters[0].udid, and what
// was expected.
#pragma once

#include <climits>
#include <functional>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

// Only the declarations: the whole header is slow to compile.
#include <nlohmann/json_fwd.hpp>

namespace gputune::sim {

class BoardFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Parses a text. source: the name of the file in errors. Throws BoardFileError with line and column for a syntax error.
nlohmann::json ParseJson(std::string const& text, std::string const& source);

// One value and its path in the document. The document and the source's name must outlive it.
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
    // The position of the text among the names.
    std::size_t Choice(std::initializer_list<char const*> names) const;
    bool IsNull() const;
    // Calls visit with each element of an array.
    void ForEach(std::function<void(JsonValue const&)> const& visit) const;
    // The results of read(JsonValue const&) for all elements of an array. `things` names the elements in the error
    // about too many of them.
    template <class Reader>
    auto List(Reader const& read, std::size_t most = SIZE_MAX, char const* things = "elements") const {
        std::vector<std::invoke_result_t<Reader, JsonValue const&>> list;
        ForEach([&](JsonValue const& element) {
            if (list.size() == most) {
                element.Fail("no more than " + std::to_string(most) + " " + things);
            }
            list.push_back(read(element));
        });
        return list;
    }

    [[noreturn]] void Fail(std::string const& expected) const;

private:
    friend class JsonObject;
    nlohmann::json const* value_;
    std::string path_;  // empty for the document itself
    std::string const* source_;
};

// An object whose keys are asked for one after the other; Finish throws when there is one that nobody asked for.
class JsonObject {
public:
    explicit JsonObject(JsonValue value);

    // Throws when the key is missing. The message names a similar key that nobody asked for, as it may be mistyped.
    JsonValue Required(char const* key);
    std::optional<JsonValue> Optional(char const* key);

    // Optional entries: value stays as it is without the key.
    void Read(char const* key, int& value, int min = INT_MIN, int max = INT_MAX) {
        ReadWith(key, value, [&](JsonValue const& entry) { return entry.Int(min, max); });
    }
    void Read(char const* key, double& value, double min, double max) {
        ReadWith(key, value, [&](JsonValue const& entry) { return entry.Number(min, max); });
    }
    void Read(char const* key, bool& value) { ReadWith(key, value, &JsonValue::Bool); }
    // The same with value = read(JsonValue const&).
    template <class Value, class Reader>
    void ReadWith(char const* key, Value& value, Reader const& read) {
        if (auto const entry = Optional(key)) {
            value = std::invoke(read, *entry);
        }
    }

    // Throws for the first unknown key; the message names a known one that is similar.
    void Finish() const;

private:
    [[noreturn]] void FailUnknown(std::string const& key) const;
    [[noreturn]] void FailMistyped(std::string const& key, std::string const& meant) const;
    std::string PathTo(std::string const& key) const;

    JsonValue object_;
    std::set<std::string> known_;
};

}  // namespace gputune::sim
