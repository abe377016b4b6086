#include "memory.h"

#include <cstdlib>
#include <new>

#include "Outside.h"
#include "machine_native.h"

namespace gputune::matrix {

namespace {

bool g_isWatched = false;
int g_allocations = 0;
int g_first = 0;
bool g_thenAll = false;

// Called before every malloc and calloc, also those of this program's operator new.
bool Refuse() {
    if (!g_isWatched) {
        return false;
    }
    ++g_allocations;
    return g_first != 0 && (g_thenAll ? g_allocations >= g_first : g_allocations == g_first);
}

class Watch {
public:
    Watch() { g_isWatched = true; }
    ~Watch() { g_isWatched = false; }
    Watch(Watch const&) = delete;
    Watch& operator=(Watch const&) = delete;
};

test::Exports const* g_real = nullptr;

template <auto Member, class Function>
struct Watched;

template <auto Member, class Result, class... Args>
struct Watched<Member, Result (*)(Args...)> {
    static Result Call(Args... args) {
        Watch const watch;
        return (g_real->*Member)(args...);
    }
};

}  // namespace

test::Exports const& WatchedExports(test::Exports const& real) {
    g_real = &real;
    test::RefuseAllocationsBy(Refuse);
    static test::Exports const watched = {
#define FLAT_FUNCTION(result, name, ...) Watched<&test::Exports::name, decltype(test::Exports::name)>::Call,
#include "api/flat_functions.inc"
    };
    return watched;
}

void CountAllocations() {
    g_allocations = 0;
}

int Allocations() {
    return g_allocations;
}

void RefuseMemory(int first, bool thenAll) {
    g_first = first;
    g_thenAll = thenAll;
}

}  // namespace gputune::matrix

void* operator new(std::size_t size) {
    void* const block = std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new(std::size_t size, std::nothrow_t const&) noexcept {
    return std::malloc(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete(void* block, std::nothrow_t const&) noexcept {
    std::free(block);
}
