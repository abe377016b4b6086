// adapters: which adapters --adapter can select.
#include "tool/commands/Commands.h"
#include "tool/system/Utf8.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

// The names of Intel's adapters or NVIDIA's GPUs, in order, from the log of the initialisation. A name may be empty.
std::vector<std::string> LoggedNames(Session const& session) {
    std::vector<std::string> names;
    bool isHighWord = false;
    for (LogEntry const& entry : session.LogSince(0)) {
        if (entry.tag == "[IGCLHelper::IGCLHelper()] Adapter ID") {
            // For each adapter the log has two of these entries, and then its name.
            if (!isHighWord) {
                names.emplace_back();
            }
            isHighWord = !isHighWord;
        } else if (entry.tag == "[IGCLHelper::IGCLHelper()] Intel Adapter Name" && !names.empty()) {
            names.back() = entry.message;
        } else if (entry.tag.starts_with("[NVAPIHelper::NVAPIHelper()] GPU full name #")) {
            names.push_back(entry.message);
        }
    }
    for (std::string& name : names) {
        name = Utf8FromAnsi(name.c_str(), name.size());
    }
    return names;
}

struct Adapter {
    int index;
    bool isSelectable = true;
    AdapterIdentity identity{};
};

std::vector<Adapter> ListAdapters(Session const& session) {
    std::vector<Adapter> adapters;
    for (int const index : session.AdapterIndices()) {
        adapters.push_back({.index = index});
    }
    std::vector<std::string> const names = LoggedNames(session);
    // NVIDIA's interface lists every GPU, but the library works with the first one only.
    if (session.Vendor() == GPUTUNE_VENDOR_NVIDIA) {
        while (adapters.size() < names.size()) {
            adapters.push_back({.index = static_cast<int>(adapters.size()), .isSelectable = false});
        }
    }
    for (std::size_t i = 0; i < adapters.size(); ++i) {
        if (i < names.size()) {
            adapters[i].identity.name = names[i];
        }
        if (session.Vendor() == GPUTUNE_VENDOR_AMD && adapters[i].index == session.FirstAdapter()) {
            adapters[i].identity = AdapterIdentity(session.Api().GetVGAInfo());
        }
    }
    return adapters;
}

int RunAdapters(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    Grid grid{.key = "adapters",
              .label = "Adapters",
              .columns = {{"index", "Index"},
                          {"active", "Active"},
                          {"selectable", "Selectable"},
                          {"name", "Name"},
                          {"subsystem_id", "Subsystem id"},
                          {"bus_number", "Bus number"}},
              .rows = {}};
    for (Adapter const& adapter : ListAdapters(session)) {
        AdapterIdentity const& identity = adapter.identity;
        grid.rows.push_back({std::int64_t{adapter.index}, adapter.index == session.Api().GetActiveAdapterIndex(),
                             adapter.isSelectable, TextValue(identity.name), TextValue(identity.subsystemIdText),
                             IntValue(identity.busNumber)});
    }
    bool const isAmd = session.Vendor() == GPUTUNE_VENDOR_AMD;
    bool const hasMore = grid.rows.size() > 1;
    Result result;
    result.Add({.title = options.json ? "" : "Adapters", .grids = {std::move(grid)}});
    if (isAmd && hasMore) {
        result.AddRemark("AMD's interface tells the identity of the first adapter only.");
    }
    Print(options, result);
    return kExitSuccess;
}

}  // namespace

void AddAdaptersCommand(CLI::App& app, Context& context) {
    AddCommand(app, context,
               {"adapters", "List the adapters that --adapter can select",
                "Examples:\n"
                "  gputunectl adapters\n"
                "  gputunectl --adapter 1 sensors"},
               RunAdapters);
}

}  // namespace gputune::tool
