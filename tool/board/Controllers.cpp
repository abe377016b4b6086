#include "tool/board/Controllers.h"

#include <algorithm>

#include "gputune.h"
#include "tool/values/Names.h"

namespace gputune::tool {

namespace {

std::string RoleText(Controller const& controller) {
    switch (controller.role) {
        case Controller::Role::Taken:
            return std::string("decides for ") + VendorName(controller.vendor).text +
                   ": the first that names a Radeon RX, an Arc or an NVIDIA board";
        case Controller::Role::SameVendor:
            return "of the same vendor";
        case Controller::Role::OtherVendor:
            return std::string("left out: one vendor's boards are worked with, and this one is of ") +
                   VendorName(controller.vendor).text + ". Disable the one that decides in Device Manager to reach it";
        case Controller::Role::NotSupported:
            return "left out: no Radeon RX, Arc or NVIDIA board by its name";
    }
    return "";
}

}  // namespace

std::uint32_t VendorOfController(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    auto const has = [&name](char const* word) { return name.find(word) != std::string::npos; };
    if (has("RADEON")) {
        return has("RX") ? GPUTUNE_VENDOR_AMD : GPUTUNE_VENDOR_UNKNOWN;
    }
    return has("ARC") ? GPUTUNE_VENDOR_INTEL : has("NVIDIA") ? GPUTUNE_VENDOR_NVIDIA : GPUTUNE_VENDOR_UNKNOWN;
}

std::vector<Controller> ClassifyControllers(std::vector<std::string> const& names) {
    std::vector<Controller> controllers;
    std::uint32_t taken = GPUTUNE_VENDOR_UNKNOWN;
    for (std::string const& name : names) {
        std::uint32_t const vendor = VendorOfController(name);
        Controller::Role role = Controller::Role::NotSupported;
        if (vendor != GPUTUNE_VENDOR_UNKNOWN) {
            role = taken == GPUTUNE_VENDOR_UNKNOWN ? Controller::Role::Taken
                   : taken == vendor               ? Controller::Role::SameVendor
                                                   : Controller::Role::OtherVendor;
            taken = taken == GPUTUNE_VENDOR_UNKNOWN ? vendor : taken;
        }
        controllers.push_back({name, vendor, role});
    }
    return controllers;
}

std::vector<std::string> ControllerNames(LogEntries const& entries) {
    auto const marked = [](char const* mark) {
        return [mark](LogEntry const& entry) {
            return entry.line == std::string("[GetVendor()] ") + mark + " display devices";
        };
    };
    auto const start = std::find_if(entries.begin(), entries.end(), marked(">>>>>>>"));
    auto const end = std::find_if(start, entries.end(), marked("<<<<<<<"));
    std::vector<std::string> names;
    if (end != entries.end()) {
        std::transform(start + 1, end, std::back_inserter(names), [](LogEntry const& entry) { return entry.line; });
    }
    return names;
}

char const* RoleCode(Controller::Role role) {
    static constexpr char const* kCodes[] = {"taken", "same_vendor", "other_vendor", "not_supported"};
    return kCodes[static_cast<std::size_t>(role)];
}

std::string ExplainControllers(std::vector<Controller> const& controllers) {
    bool const isPlain = std::all_of(controllers.begin(), controllers.end(), [](Controller const& controller) {
        return controller.role == Controller::Role::Taken || controller.role == Controller::Role::SameVendor;
    });
    if (isPlain) {
        return "";
    }
    std::string text = "Windows names these display controllers, in this order:";
    for (Controller const& controller : controllers) {
        text += "\n  " + controller.name + ": " + RoleText(controller);
    }
    return text;
}

}  // namespace gputune::tool
