// The box score of a played game, by its row in SCORES: as text, or as a
// web page printed or written to a file. And the record book the games
// have filled.

#include <fmt/core.h>

#include <memory>
#include <string>

#include "app/cli.h"
#include "league/files.h"
#include "league/schedule.h"
#include "postgame/box_file.h"
#include "postgame/box_text.h"
#include "postgame/record_book.h"

namespace tallyrink::cli {

namespace {

struct BoxOptions {
    std::size_t row = 0;
    bool html = false;
    std::string output;
};

void showBox(const GlobalOptions& options, const BoxOptions& o) {
    fs::path dir = leagueDir(options);
    std::vector<GameRecord> scores = loadScores(dir);
    if (o.row < 1 || o.row > scores.size())
        throw CommandError(fmt::format("There is no game {} in SCORES (it has {} games)", o.row, scores.size()));
    std::string name = scores[o.row - 1].BoxFile.str();
    if (name.empty()) name = boxFileName(o.row);
    fs::path path = findFile(dir, name);
    if (!fs::exists(path)) throw CommandError(fmt::format("The box score {} of game {} is missing", name, o.row));
    std::unique_ptr<BoxFile> box = BoxRead(path);
    BoxNames names = boxNamesFromLeague(*box, dir);
    std::string text;
    if (o.html) {
        text = boxScoreHtml(*box, names);
    } else {
        for (const auto& line : boxScoreText(*box, names)) text += line + "\n";
    }
    if (o.output.empty()) {
        fmt::print("{}", text);
        return;
    }
    writeFileAtomic(o.output, text);
    fmt::print("Wrote {}\n", o.output);
}

struct RecordsOptions {
    bool season = false;
    bool game = false;
    bool teams = false;
    bool allTime = false;
};

void showRecords(const GlobalOptions& options, const RecordsOptions& o) {
    fs::path folder = leagueDir(options);
    std::string where = "League";
    if (o.allTime) {
        folder = startSession(options)->places().dataRoot();
        where = "All-time";
    }
    RecordBook book = RecordBook::load(folder);
    // Both scopes unless one is asked for.
    std::vector<std::pair<RecordScope, const char*>> scopes;
    if (o.season || !o.game) scopes.emplace_back(RecordScope::Season, "Season");
    if (o.game || !o.season) scopes.emplace_back(RecordScope::Game, "Single Game");
    bool any = false;
    for (auto [scope, caption] : scopes) {
        auto lines = recordBookText(book, scope, o.teams);
        if (lines.empty()) continue;
        any = true;
        fmt::print("{} Records: {} ({})\n\n", where, caption, o.teams ? "Teams" : "Players");
        for (const auto& line : lines) fmt::print("{}\n", line);
        fmt::print("\n");
    }
    if (!any) fmt::print("No records yet: they are set as games are posted\n");
}

}  // namespace

void addBoxCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<BoxOptions>();
    auto* cmd = app.add_subcommand("box", "Show the box score of a played game");
    cmd->add_option("row", o->row, "Row of the game in SCORES, from 1")->required();
    cmd->add_flag("--html", o->html, "A web page in place of text");
    cmd->add_option("-o,--output", o->output, "Write to this file in place of printing");
    cmd->callback([&options, o] { showBox(options, *o); });

    auto r = std::make_shared<RecordsOptions>();
    auto* rec = app.add_subcommand("records", "The top five of each record category, for seasons and single games");
    auto* season = rec->add_flag("--season", r->season, "Season records only");
    rec->add_flag("--game", r->game, "Single-game records only")->excludes(season);
    rec->add_flag("--teams", r->teams, "Team records in place of players'");
    rec->add_flag("--all-time", r->allTime, "The records kept across all leagues");
    rec->callback([&options, r] { showRecords(options, *r); });
}

}  // namespace tallyrink::cli
