// src/runtime/throw.cpp: the errors of the standard library's containers. Without GoogleTest, with which the linker
// would take the compiler's functions of the same names.
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

int g_failures = 0;

template <class Error, class Action>
void ExpectThrown(char const* text, Action&& action) {
    try {
        action();
        std::printf("nothing thrown, but expected: %s\n", text);
    } catch (Error const& error) {
        if (std::strcmp(error.what(), text) == 0) {
            return;
        }
        std::printf("thrown: %s\nexpected: %s\n", error.what(), text);
    } catch (...) {
        std::printf("thrown as another type: %s\n", text);
    }
    ++g_failures;
}

// Not known to the optimiser.
std::size_t volatile g_all = static_cast<std::size_t>(-1);
char const* volatile g_noText = nullptr;

}  // namespace

int main() {
    std::vector<int> numbers;
    std::string text;
    ExpectThrown<std::exception>("vector::reserve", [&] { numbers.reserve(g_all); });
    ExpectThrown<std::exception>("basic_string::_M_create", [&] { text.reserve(g_all - 1); });
    ExpectThrown<std::exception>("basic_string: construction from null is not valid",
                                 [&] { text = std::string{g_noText}; });
    ExpectThrown<std::exception>("%s: __pos (which is %zu) > this->size() (which is %zu)",
                                 [&] { text = text.substr(g_all); });
    // More than half of the address space, and more than all of it.
    ExpectThrown<std::bad_alloc>("std::bad_alloc", [] {
        void* const block = std::allocator<char>().allocate(g_all);
        std::printf("%p\n", block);
    });
    ExpectThrown<std::bad_array_new_length>("std::bad_array_new_length", [] {
        void* const block = std::allocator<int>().allocate(g_all);
        std::printf("%p\n", block);
    });
    return g_failures == 0 ? 0 : 1;
}
