// What the stand-in's COM objects share: the captions and failures to return, and the requests received.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "sim/wmi/WmiStandIn.h"

namespace gputune::sim {

struct WmiFailure {
    HRESULT result = S_OK;
    DWORD lastError = 0;
};

struct WmiState {
    std::mutex lock;
    std::vector<WmiCaption> captions;
    std::array<std::optional<WmiFailure>, 6> failures;  // by WmiStep
    WmiRequests requests;
    std::atomic<int> liveObjects = 0;

    // The failure ordered for a step, if any; sets the thread's last error code, too.
    std::optional<HRESULT> Failure(WmiStep step) {
        std::optional<WmiFailure> failure;
        {
            std::lock_guard const guard(lock);
            failure = failures[static_cast<std::size_t>(step)];
        }
        if (!failure) {
            return std::nullopt;
        }
        ::SetLastError(failure->lastError);
        return failure->result;
    }

    // Calls record(WmiRequests&) under the lock.
    template <class Record>
    void Log(Record const& record) {
        std::lock_guard const guard(lock);
        record(requests);
    }
};

using SharedWmiState = std::shared_ptr<WmiState>;

}  // namespace gputune::sim
