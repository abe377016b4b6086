#include "tool/hold/Journal.h"

#include "tool/hold/Json.h"

namespace gputune::tool {

namespace {

constexpr int kJournalVersion = 1;

}  // namespace

std::string ToText(Journal const& journal) {
    return OneLine({{"version", kJournalVersion},
                    {"board_file", journal.boardFile},
                    {"board_state", journal.boardState},
                    {"adapter", journal.adapter ? Json(*journal.adapter) : Json(nullptr)},
                    {"take_back", ToJson(journal.takeBack)}}) +
           "\n";
}

std::optional<Journal> ReadJournal(std::string_view text) {
    try {
        Json const json = Json::parse(text);
        if (json.at("version").get<int>() != kJournalVersion) {
            return std::nullopt;
        }
        Json const& adapter = json.at("adapter");
        return Journal{.boardFile = json.at("board_file").get<std::string>(),
                       .boardState = json.at("board_state").get<std::string>(),
                       .adapter = adapter.is_null() ? std::nullopt : std::optional(adapter.get<int>()),
                       .takeBack = TakeBackFrom(json.at("take_back"))};
    } catch (Json::exception const&) {
        return std::nullopt;
    }
}

}  // namespace gputune::tool
