#include "sim/standin/CallLog.h"

#include <algorithm>

namespace gputune::sim {

bool CallLog::Get(int index, GputuneSimCall& out) const {
    if (index < 0 || index >= Count()) {
        return false;
    }
    LoggedCall const& call = calls_[static_cast<std::size_t>(index)];
    out = {};
    out.EntryPoint = call.entryPoint;
    std::size_t const args = std::min<std::size_t>(call.args.size(), GPUTUNE_SIM_MAX_ARGS);
    out.ArgCount = static_cast<int>(args);
    std::copy_n(call.args.begin(), args, out.Args);
    std::size_t const size = std::min<std::size_t>(call.record.size(), GPUTUNE_SIM_MAX_RECORD);
    out.RecordSize = static_cast<int>(size);
    std::copy_n(call.record.begin(), size, out.Record);
    return true;
}

}  // namespace gputune::sim
