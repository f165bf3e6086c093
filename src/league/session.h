#pragma once

// A run of the program from start-up to exit: the places, the set-up record,
// the recent leagues, the open league with its rules and schedule, and the
// era table. The parts that other areas own (records, phrases, speech) are
// reached through hooks, run at the points of start-up and league opening
// where they belong.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "league/database.h"
#include "league/era.h"
#include "league/league.h"
#include "league/places.h"
#include "league/random.h"
#include "league/recent_list.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "league/setup.h"

namespace tallyrink {

class Session;

// Each hook is optional; an unset one is skipped.
struct SessionHooks {
    std::function<void(Session&)> LoadRecords;     // when a league is opened
    std::function<void(Session&)> loadPhraseFile;  // at start-up, after the set-up
    std::function<void(Session&)> startSpeech;     // at start-up, after the phrases
    // Voices of the speech engine; unset: unknown, the voice choice is kept.
    std::function<std::optional<int>()> voiceCount;
};

struct SessionOptions {
    PlaceOptions places;
    // A league to work on in place of the last one opened, for this run
    // only: the recent list and the set-up file keep naming their own.
    std::optional<fs::path> league;
    // Seed of the program's generator; unset: from the clock.
    std::optional<std::uint64_t> seed;
};

class Session {
public:
    explicit Session(SessionOptions options, SessionHooks hooks = {});

    // Start-up, in order: places and data folders, the set-up and the recent
    // list, rules, teams, era, set-up again, phrases and speech, the player
    // table, the set-up a last time.
    void StartUp();

    // The drive again, the recent list (which names the league) and the set-up record.
    void HkLoadSetup();
    // Writes LeagueDir into the set-up record and the record to disk. Returns
    // false when the program folder can't be written.
    bool SaveSetup();
    // The open league's rules, upgraded to this edition (and saved when that
    // changed anything).
    void HkRulesLoad();
    // The era table of the program folder.
    void LoadEra();
    // The schedule file the rules name, and its games.
    void LoadSchedule();
    // The open league's game plan conversion and team table.
    void LoadTeams();
    // The player table as the main menu shows it.
    void loadPlayerTable();
    // The working copy of the database with combined rows.
    void LoadDataBase();

    // Makes `folder` the open league. Returns the message for the user when
    // the folder can't be entered; then nothing has changed.
    std::optional<std::string> OpenLeague(const fs::path& folder);

    // Ends the run: the set-up is written, the tables are cleared.
    void ExitProgram();

    [[nodiscard]] const Places& places() const { return places_; }
    [[nodiscard]] const fs::path& LeagueDir() const { return leagueDir_; }
    [[nodiscard]] const RecentList& recentList() const { return recent_; }
    [[nodiscard]] SetupRecord& setup() { return setup_; }
    [[nodiscard]] const SetupRecord& setup() const { return setup_; }
    [[nodiscard]] League& league() { return league_; }
    [[nodiscard]] const League& league() const { return league_; }
    [[nodiscard]] const RulesRecord& rules() const { return rules_; }
    [[nodiscard]] RulesRecord& rules() { return rules_; }
    [[nodiscard]] const EraTable& era() const { return era_; }
    [[nodiscard]] const Schedule& schedule() const { return schedule_; }
    [[nodiscard]] Schedule& schedule() { return schedule_; }
    // Name of the league's schedule file: the rules' choice, else the default.
    [[nodiscard]] std::string scheduleFileName() const;
    // Games of a team's season in the real league of `year`, by the era table.
    [[nodiscard]] int eraGames(int year) const;
    [[nodiscard]] Random& random() { return random_; }
    [[nodiscard]] SessionHooks& hooks() { return hooks_; }
    // The player photo folder of the open league.
    [[nodiscard]] fs::path photoFolder() const { return photoFolder_; }

private:
    void readRecentList();
    void readSetupRecord();
    void setPhotoFolder();
    void run(const std::function<void(Session&)>& hook);

    SessionOptions options_;
    SessionHooks hooks_;
    Random random_;
    Places places_;
    RecentList recent_;
    fs::path leagueDir_;
    fs::path photoFolder_;
    SetupRecord setup_{};
    RulesRecord rules_{};
    EraTable era_{};
    Schedule schedule_ = Schedule::fromRows({}, {});
    League league_;
};

}  // namespace tallyrink
