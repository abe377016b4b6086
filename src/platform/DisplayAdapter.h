// The display outputs as the display kernel knows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace gputune::platform {

// The adapter behind a display, which the display kernel opens by the display's name and closes at the end of this
// object's life.
class DisplayAdapter {
public:
    // By a GDI display device name, such as "\\.\DISPLAY1"; 32 characters of it count.
    explicit DisplayAdapter(std::wstring_view displayName);
    ~DisplayAdapter();
    DisplayAdapter(DisplayAdapter const&) = delete;
    DisplayAdapter& operator=(DisplayAdapter const&) = delete;

    // The video present source that the name stands for. Nothing when the kernel does not open that name.
    std::optional<std::uint32_t> VideoPresentSource() const { return source_; }

private:
    [[maybe_unused]] std::uint32_t adapter_ = 0;
    std::optional<std::uint32_t> source_;
};

}  // namespace gputune::platform
