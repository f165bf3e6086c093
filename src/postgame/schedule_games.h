#pragma once

// The schedule's games played and posted one after another without a
// screen, two computer coaches each: what autoplay does with a run of games.
//
// A run holds the league open and is the only writer of its folder, so what
// it reads at every game stays in memory between games: the folder's names,
// the player index, the images of the league files, the schedule itself.
// Each game's posting still goes to the disk through the journal before the
// next game starts.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "engine/chance_table.h"
#include "engine/team_load.h"
#include "league/file_images.h"
#include "league/folder_names.h"
#include "league/league.h"
#include "postgame/game_done.h"
#include "postgame/posting_journal.h"
#include "postgame/record_book.h"

namespace tallyrink {

struct ScheduleGamesOptions {
    std::filesystem::path leagueDir;
    RulesRecord rules{};
    const EraTable* era = nullptr;  // required
    std::uint64_t seed = 0;         // the game of row r plays from seed + r
    std::string dateText;           // the day of playing as the SCORES rows show it
    // Where the records across all leagues are kept; empty: nowhere.
    std::filesystem::path allTimeRecordsDir;
    // A season played out unattended keeps to its real figures the way a
    // game played by hand does: each league game calibrates to the league's
    // totals so far.
    bool calibrateToSeason = false;
};

class ScheduleGames {
public:
    // Finishes a posting an earlier run left cut short before anything is read.
    explicit ScheduleGames(ScheduleGamesOptions options);

    // Loads the teams of row `row` (1-based) of `schedule`, plays their game
    // to its end and posts it. The row in `schedule` becomes the posted row
    // as the file holds it. `schedule` must be the league's schedule as its
    // file stands, and the same object at every call of the run.
    PostingResult playAndPost(Schedule& schedule, std::size_t row);

private:
    SeasonCalibration calibrationSoFar(const GameRecord& r, Random& draws);
    // The run's decoded tables brought up to the files: only the slots the
    // run wrote since the last look are decoded again.
    void refreshTeams();
    void refreshPlayers();

    ScheduleGamesOptions options_;
    FolderNames names_;
    FileImages images_;
    RunWriter writer_;
    LeaguePlayerIndex index_;
    KeptRecordBooks books_;
    KeptTables tables_;
    // One session for the run: each load sets its side up afresh, and a
    // session is large enough that making one per game shows.
    std::unique_ptr<GameSession> session_;
    const Schedule* sessionSchedule_ = nullptr;
    // The schedule's rows by team: the run changes no row's teams.
    std::optional<ScheduleTeamRows> scheduleRows_;
    // The team table changes with every game posted; the players' replay
    // games only choose the year a team plays by, so a day-old copy serves.
    // Both are decoded from the images once and then kept up with the
    // writes the images note.
    League totals_;
    bool teamsRead_ = false;
    bool playersRead_ = false;
    int playersDate_ = -1;
};

}  // namespace tallyrink
