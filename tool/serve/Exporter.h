// The process that serves readings: it samples the board through a worker, answers over HTTP, and loads no vendor's
// library.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "tool/hold/WorkerHost.h"
#include "tool/serve/ListenAddress.h"
#include "tool/serve/Sampler.h"
#include "tool/system/DisplayDevices.h"

namespace gputune::tool {

struct ExporterSettings {
    ListenAddress address{};
    std::string token{};       // empty: none is asked for
    double interval = 1;       // seconds between samples
    std::string textFolder{};  // UTF-8; empty: no text file
};

class Exporter : private SamplerPort {
public:
    Exporter(GlobalOptions options, ExporterSettings settings);

    // Serves until the user ends it. Calls `begun` once it listens, with the real port. Throws ToolError when it cannot
    // listen.
    void Run(std::function<void(ListenAddress const&)> const& begun);

private:
    void StartWorker() override { worker_.Start(); }
    void EndWorker() override { worker_.End(); }
    void SendToWorker(std::string const& line) override { worker_.Send(line); }
    std::optional<bool> IsPowered(std::uint32_t vendor) override;

    WorkerHost worker_;
    ExporterSettings settings_;
    std::optional<DisplayDevices> devices_;  // not for a simulated board, which is none of the machine's
};

}  // namespace gputune::tool
