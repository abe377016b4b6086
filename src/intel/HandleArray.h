// The handles that an enumeration of the control library fills in: asked for the count first, then for the handles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace gputune::intel {

template <class Handle>
class HandleArray {
public:
    // More than any machine has; a larger count is garbage, and asking that many handles would take hours.
    static constexpr std::uint32_t kMostHandles = 1024;

    // Room for `count` handles, all null; false for too many and without memory. Behind them lies room for a device or
    // fan that appears between the two calls, in case the library writes more handles than it was asked for.
    bool Allocate(std::uint32_t count) {
        constexpr std::size_t kSpare = 64;
        // NOLINTNEXTLINE(bugprone-sizeof-expression): a handle is a pointer
        handles_.reset(count <= kMostHandles ? static_cast<Handle*>(std::calloc(count + kSpare, sizeof(Handle)))
                                             : nullptr);
        return handles_ != nullptr;
    }

    void Release() { handles_.reset(); }

    Handle* Data() { return handles_.get(); }

    // Null also while there are no handles. `position` is below the count.
    Handle operator[](std::uint32_t position) const { return handles_ == nullptr ? nullptr : handles_.get()[position]; }

private:
    struct Free {
        void operator()(Handle* handles) const { std::free(handles); }
    };
    std::unique_ptr<Handle, Free> handles_;
};

}  // namespace gputune::intel
