// docs/metrics.md has the list of metrics as the code has it.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "tool/serve/Metrics.h"

using namespace gputune::tool;

namespace {

std::string Row(Metric const& metric) {
    std::string row = "| `" + std::string(metric.name) + "` | " + MetricTypeName(metric.type);
    for (std::string const text : {metric.labels, metric.help, metric.source}) {
        row += text.empty() ? " |" : " | " + text;
    }
    return row + " |";
}

// The rows of the document's table of metrics.
std::vector<std::string> DocumentedRows() {
    std::ifstream file(GPUTUNE_DOCS "/metrics.md");
    std::vector<std::string> rows;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| `gputune_")) {
            rows.push_back(line);
        }
    }
    return rows;
}

TEST(MetricsDocumentTest, TableIsTheCodesList) {
    std::vector<std::string> rows;
    std::string table;
    for (Metric const& metric : Metrics()) {
        rows.push_back(Row(metric));
        table += rows.back() + "\n";
    }
    EXPECT_EQ(DocumentedRows(), rows) << "The table in docs/metrics.md has to be:\n" << table;
}

// Those in the prose, too.
TEST(MetricsDocumentTest, EveryNameInTheDocumentIsAMetrics) {
    std::ifstream file(GPUTUNE_DOCS "/metrics.md");
    std::stringstream text;
    text << file.rdbuf();
    std::string const document = text.str();
    std::size_t count = 0;
    for (std::size_t at = document.find("gputune_"); at != std::string::npos; at = document.find("gputune_", at + 1)) {
        std::size_t const end = document.find_first_not_of("abcdefghijklmnopqrstuvwxyz_", at);
        std::string const name = document.substr(at, end - at);
        auto const metrics = Metrics();
        EXPECT_TRUE(std::any_of(metrics.begin(), metrics.end(), [&](Metric const& metric) {
            return name == metric.name;
        })) << name;
        ++count;
    }
    EXPECT_GT(count, 30U);
}

}  // namespace
