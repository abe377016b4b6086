#include "tool/serve/Exporter.h"

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <vector>

#include "tool/serve/DiskFiles.h"
#include "tool/serve/HttpServer.h"
#include "tool/serve/MetricsText.h"
#include "tool/serve/PageRoutes.h"
#include "tool/serve/ServedState.h"
#include "tool/system/Console.h"
#include "tool/system/Utf8.h"

namespace gputune::tool {

namespace {

// Of what Windows grants at the closing of the console.
constexpr unsigned long kExporterEndLimit = 4800;
constexpr unsigned long kExporterWorkerLimit = 2000;

Moment NowOnAllClocks() {
    using Seconds = std::chrono::duration<double>;
    return {.steady = SupervisorTime(),
            .wall = std::chrono::duration_cast<Seconds>(std::chrono::system_clock::now().time_since_epoch()).count(),
            .fine = std::chrono::duration_cast<Seconds>(std::chrono::steady_clock::now().time_since_epoch()).count()};
}

// Under which others in the network may ask for this machine.
std::vector<std::string> MachineNames() {
    std::vector<std::string> names;
    for (COMPUTER_NAME_FORMAT const format :
         {ComputerNameNetBIOS, ComputerNameDnsHostname, ComputerNameDnsFullyQualified}) {
        wchar_t name[256];
        auto length = static_cast<DWORD>(std::size(name));
        if (GetComputerNameExW(format, name, &length) && length > 0) {
            names.push_back(Utf8FromWide(std::wstring_view(name, length)));
        }
    }
    return names;
}

// Serves as long as it exists.
class Service {
public:
    explicit Service(ExporterSettings const& settings)
        : state_(settings.interval, NowOnAllClocks), server_(SetupFor(settings)) {
        if (!settings.textFolder.empty()) {
            textFile_.emplace(settings.textFolder, files_);
        }
    }

    ~Service() { state_.End(); }
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    ListenAddress const& Address() const { return server_.Address(); }

    void Publish(Snapshot const& snapshot) {
        state_.Publish(snapshot);
        if (textFile_) {
            std::string const text = MetricsText(AsOf(snapshot, NowOnAllClocks()), MetricsFormat::Prometheus);
            if (std::optional<std::string> const message = textFile_->Write(text)) {
                WriteError(*message + "\n");
            }
        }
    }

private:
    HttpServer::Setup SetupFor(ExporterSettings const& settings) {
        HttpServer::Setup setup{.rules = {.address = settings.address, .token = settings.token},
                                .routes = state_.Routes()};
        if (!settings.address.IsLoopback()) {
            setup.rules.names = MachineNames();
        }
        std::vector<HttpRoute> page = PageRoutes();
        std::move(page.begin(), page.end(), std::back_inserter(setup.routes));
        return setup;
    }

    DiskFiles files_;
    std::optional<TextFile> textFile_;
    ServedState state_;
    HttpServer server_;
};

}  // namespace

Exporter::Exporter(GlobalOptions options, ExporterSettings settings)
    : worker_(std::move(options)), settings_(std::move(settings)) {
    if (worker_.Options().boardFile.empty()) {
        devices_.emplace();
    }
}

void Exporter::Run(std::function<void(ListenAddress const&)> const& begun) {
    InterruptEvent const interrupt(kExporterEndLimit);
    Service service(settings_);
    begun(service.Address());
    Sampler sampler(settings_.interval, *this, NowOnAllClocks());
    std::uint64_t revision = 0;
    double nextMoment = 0;
    for (;;) {
        sampler.OnTime(NowOnAllClocks());
        // Followers hear something at every moment of sampling; when there is nothing new, soon after it.
        if (sampler.Current().revision != revision || SupervisorTime() >= nextMoment) {
            revision = sampler.Current().revision;
            nextMoment = SupervisorTime() + 1.5 * settings_.interval;
            service.Publish(sampler.Current());
        }
        unsigned long const wait = MillisecondsUntil(std::min(sampler.NextTime(), nextMoment));
        if (WaitForWorker(&interrupt, worker_.Handle(), wait) == Wake::Stop) {
            break;
        }
        worker_.Hear([&sampler](std::string const& line) { sampler.OnLine(line, NowOnAllClocks()); },
                     [&sampler] { sampler.OnGone(NowOnAllClocks()); });
    }
    worker_.Close(kExporterWorkerLimit);
}

std::optional<bool> Exporter::IsPowered(std::uint32_t vendor) {
    return devices_ ? AnyHasPower(devices_->Read(), vendor) : std::nullopt;
}

}  // namespace gputune::tool
