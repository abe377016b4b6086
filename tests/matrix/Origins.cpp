#include "Origins.h"

#include <algorithm>
#include <cstring>
#include <sstream>

#include "ScriptedCore.h"
#include "vendor_outputs.h"

namespace gputune::matrix {

namespace {

using test::VendorOutput;

// How many settings the records of Overdrive8 hold.
constexpr int kSettings = 39;

int const* Words(test::Word word) {
    return reinterpret_cast<int const*>(word);
}

// Where the words of an output are remembered.
struct Place {
    std::string source;
    int skipped;  // words at the output's beginning that are no values
};

Place PlaceOf(char const* entryPoint) {
    std::string_view const name = entryPoint;
    if (name == "ADL2_Overdrive8_Init_SettingX2_Get") {
        return {kOd8Ranges, 0};
    }
    if (name == "ADL2_Overdrive8_Init_Setting_Get") {
        return {kOd8Ranges, 2};
    }
    if (name == "ADL2_Overdrive8_Current_SettingX2_Get") {
        return {kOd8Current, 0};
    }
    if (name == "ADL2_Overdrive8_Current_Setting_Get") {
        return {kOd8Current, 1};
    }
    return {entryPoint, 0};
}

// Whether what it reads may be sent later. Only that is remembered.
bool CanBecomeSetting(std::string_view entryPoint) {
    return (entryPoint.starts_with("ADL2_Overdrive") && !entryPoint.ends_with("_Set")) ||
           entryPoint == "ctlFanGetProperties" || entryPoint == "ctlOverclockGetProperties";
}

}  // namespace

void Readings::Add(std::string const& source, std::size_t word, int value) {
    std::vector<std::set<int>>& words = values_[source];
    if (words.size() <= word) {
        words.resize(word + 1);
    }
    words[word].insert(value);
}

std::set<int> const& Readings::At(std::string const& source, std::size_t word) const {
    static std::set<int> const nothing;
    auto const found = values_.find(source);
    return found == values_.end() || found->second.size() <= word ? nothing : found->second[word];
}

std::size_t Readings::Words(std::string const& source) const {
    auto const found = values_.find(source);
    return found == values_.end() ? 0 : found->second.size();
}

double Sending::DoubleArgument(std::size_t word) const {
    double value = 0;
    std::memcpy(&value, words_ + word, sizeof value);
    return value;
}

bool Sending::IsBy(std::string_view operation) const {
    return !step_.IsInitialisation() && operation == step_.operation->name;
}

ModeValues const* Sending::Mode() const {
    return IsBy("SetPerformanceOC") ? &kOverclockMode : IsBy("SetPerformanceSilent") ? &kSilentMode : nullptr;
}

void Sending::Expect(bool isExplained, char const* field, int position, double value) {
    if (isExplained) {
        return;
    }
    std::ostringstream text;
    text.precision(17);
    text << (unexplained_.empty() ? "" : ", ") << field << " " << position << " = " << value;
    unexplained_ += text.str();
}

void Origins::Begin(Step const& step) {
    step_ = &step;
    unexplained_.clear();
}

void Origins::Called(char const* entryPoint, test::Word const* words) {
    // The client writes the size of a record into it before the call; the call may overwrite it.
    recordBytes_ = 0;
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        if (output.size == test::kSizeInRecord && words[output.argument] != 0) {
            recordBytes_ = *Words(words[output.argument]);
        }
    }
    Sending sending(entryPoint, words, *step_, readings_);
    std::string_view const name = entryPoint;
    if (name.starts_with("ADL2_")) {
        JudgeAmd(sending);
    } else if (name.starts_with("ctl")) {
        JudgeIntel(sending);
    }
    if (!sending.Unexplained().empty()) {
        unexplained_ += std::string(entryPoint) + " is sent without an origin: " + sending.Unexplained() + "; ";
    }
}

void Origins::Succeeded(char const* entryPoint, test::Word const* words, int listBytes) {
    if (!CanBecomeSetting(entryPoint)) {
        return;
    }
    bool hasList = false;
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        hasList = hasList || output.kind == VendorOutput::Kind::List;
    }
    Place const place = PlaceOf(entryPoint);
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        bool const isList = output.kind == VendorOutput::Kind::List;
        if (words[output.argument] == 0 || output.kind == VendorOutput::Kind::Handles || isList != hasList) {
            continue;
        }
        int const* written = Words(words[output.argument]);
        int bytes = output.size == test::kSizeInRecord ? recordBytes_ : output.size;
        if (isList) {
            std::memcpy(&written, Words(words[output.argument]), sizeof written);
            int const records = std::min({*Words(words[output.argument - 1]), listBytes / output.size, kSettings});
            bytes = written == nullptr ? 0 : std::max(0, records) * output.size;
        }
        for (int word = place.skipped; word < bytes / 4; ++word) {
            readings_.Add(place.source, static_cast<std::size_t>(word - place.skipped), written[word]);
        }
    }
}

void Origins::Missing(std::string const& entryPoint) {
    // The older of the two entry points for the current settings is used where the newer one is missing. When both are,
    // the library goes on with a table of zeros.
    if (entryPoint == "ADL2_Overdrive8_Current_Setting_Get") {
        for (int setting = 0; setting < kSettings; ++setting) {
            readings_.Add(kOd8Current, static_cast<std::size_t>(setting), 0);
        }
    }
}

}  // namespace gputune::matrix
