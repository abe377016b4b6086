// What the standard library's containers call to report an error. The runtime's own versions throw exceptions that hold
// strings, for which they bring along both string classes of the runtime in full, 90 KB: these take their place at link
// time. What is called but missing here pulls the runtime's in again, which the linker reports as "multiple definition"
// of all others.
#include <exception>
#include <new>
#include <string>  // declares what is defined here

namespace {

class FixedTextError : public std::exception {
public:
    // Refers to the text.
    explicit FixedTextError(char const* text) : text_(text) {}
    char const* what() const noexcept override { return text_; }

private:
    char const* text_;
};

}  // namespace

namespace std {

void __throw_bad_alloc() {
    throw bad_alloc();
}

void __throw_bad_array_new_length() {
    throw bad_array_new_length();
}

void __throw_length_error(char const* text) {
    throw FixedTextError(text);
}

void __throw_logic_error(char const* text) {
    throw FixedTextError(text);
}

// The text is a format, into which the runtime would write the position and the size.
void __throw_out_of_range_fmt(char const* text, ...) {
    throw FixedTextError(text);
}

}  // namespace std
