// The state of a board as bytes: fields of fixed size, one after the other, the same in processes of both widths. A
// class names its fields once, in a function Exchange(archive) that calls archive(field, field...); StateWriter then
// appends them, and StateReader replaces them. Vectors keep their length, so that all states of one board have the same
// size.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace gputune::sim {

using StateBytes = std::vector<unsigned char>;

// Says what is wrong with a state.
class StateError : public std::runtime_error {
    using runtime_error::runtime_error;
};

template <class Self>
class StateArchive {
public:
    template <class... Fields>
    void operator()(Fields&... fields) {
        (Field(fields), ...);
    }

private:
    template <class T>
    void Field(T& field) {
        if constexpr (std::is_same_v<T, bool>) {
            auto number = static_cast<unsigned char>(field);
            Plain(number);
            field = number != 0;
        } else if constexpr (std::is_enum_v<T>) {
            auto number = static_cast<std::int32_t>(field);
            Plain(number);
            field = static_cast<T>(number);
        } else if constexpr (std::is_arithmetic_v<T>) {
            Plain(field);
        } else {
            field.Exchange(static_cast<Self&>(*this));
        }
    }
    template <class T>
    void Field(std::optional<T>& field) {
        bool has = field.has_value();
        T value = field.value_or(T());
        Field(has);
        Field(value);
        field = has ? std::optional<T>(value) : std::nullopt;
    }
    template <class T>
    void Field(std::vector<T>& field) {
        for (T& element : field) {
            Field(element);
        }
    }
    template <class T, std::size_t Size>
    void Field(std::array<T, Size>& field) {
        for (T& element : field) {
            Field(element);
        }
    }
    template <class T>
    void Plain(T& field) {
        static_cast<Self&>(*this).Bytes(reinterpret_cast<unsigned char*>(&field), sizeof(field));
    }
};

class StateWriter : public StateArchive<StateWriter> {
public:
    void Bytes(unsigned char const* field, std::size_t size) { bytes_.insert(bytes_.end(), field, field + size); }
    StateBytes const& Result() const { return bytes_; }

private:
    StateBytes bytes_;
};

// The bytes must outlive the reader. Throws StateError when there are too few.
class StateReader : public StateArchive<StateReader> {
public:
    explicit StateReader(StateBytes const& bytes) : bytes_(bytes) {}

    void Bytes(unsigned char* field, std::size_t size) {
        if (size > bytes_.size() - position_) {
            throw StateError("it is too short for this board");
        }
        std::memcpy(field, bytes_.data() + position_, size);
        position_ += size;
    }
    bool AtEnd() const { return position_ == bytes_.size(); }

private:
    StateBytes const& bytes_;
    std::size_t position_ = 0;
};

}  // namespace gputune::sim
