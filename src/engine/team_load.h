#pragma once

// Team load: turns a team number into a working team at one side of a game
// session. The team record, its game plan and its 50 player records are
// read; records written by an earlier edition are upgraded by their stamps;
// bad values go back to their defaults; and the per-player tables the play
// engine reads (minutes, rates per 60, shooting, fights, shifts, energy,
// availability) are worked out from the real-life and replay lines.
//
// Every roster screen and every game goes through it, so a load that isn't
// followed by a game changes nothing but the one-time stamp work and the
// draws the rate work calls for. Nothing is written until SaveTeam.
//
// Sides are 0 (visitor) and 1 (home); roster slots are 0-based.

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "engine/player_rates.h"
#include "league/era.h"
#include "league/random.h"
#include "league/records.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "team/lines.h"

namespace tallyrink {

class Session;
class GameSession;
class FolderNames;
class FileImages;

inline constexpr int kVisitor = 0;
inline constexpr int kHome = 1;

// The computer general manager's say in a load: who dresses. It is asked
// before anything is read, after each player is read and after all tables
// stand. Until it is built the defaults do nothing, so the dressed roster
// is the one the records hold.
class GeneralManagerHooks {
public:
    virtual ~GeneralManagerHooks() = default;
    virtual void beforeLoad(GameSession& /*game*/, int /*side*/) {}
    virtual void afterPlayerRead(GameSession& /*game*/, int /*side*/, int /*slot*/) {}
    virtual void afterTables(GameSession& /*game*/, int /*side*/) {}
};

// One side of a game session: the team at hand and every table worked out
// for it. A load of a side that was used before clears it member by member
// (GameSession::clearForLoad): a member added here is cleared there too.
struct SideTables {
    // Given, so that a side made by value (as a session's are) isn't first
    // cleared whole and then cleared again member by member: every member
    // below has its own initial value.
    SideTables() {}  // NOLINT(modernize-use-equals-default)

    int TeamId = 0;  // TeamIdOfSide
    TeamRecord team{};
    GamePlanRecord plan{};
    BySlot<PlayerRecord> GameRoster{};
    BySlot<PlayerRates> rates{};  // AverageMinutes ... FightsPer1000 by set, ShootingPct, ShotStyleFactor
    BySlot<std::int32_t> ShiftLimit{};
    BySlot<std::uint8_t> MaxEnergy{};
    BySlot<std::int16_t> SeasonGamesOfPlayer{};
    BySlot<std::int16_t> DressedToday{};  // 1 out for this game
    BySlot<std::string> DisplayName{};
    BySlot<std::string> ShortNameOf{};
    LineTables lines;                      // LineRoleLive and LineFlagLive
    int SeasonGames = 0;                   // games of the team in the schedule, or the era's
    bool scheduleOpen = false;             // the team has a game still to play
    std::vector<std::string> absentToday;  // players sitting out for their real games missed
    // What the load filled in or repaired that a coach should know about.
    std::vector<std::string> notes;

    // The records as they were read (a save sets them anew), to tell whether
    // the load changed them and to fingerprint what a game was played with.
    // The plan and the players are kept as their slot bytes, held apart and
    // made at the first load, so that a new side isn't cleared of 100 KB a
    // load writes over at once.
    TeamRecord teamAsRead{};
    [[nodiscard]] std::span<const std::uint8_t> planAsRead() const;
    // Zero bytes for a slot that held nobody.
    [[nodiscard]] std::span<const std::uint8_t> playerAsRead(int slot) const;
    void setPlanAsRead(std::span<const std::uint8_t> bytes);
    using PlanSlot = std::array<std::uint8_t, codec::slotWidth<GamePlanRecord>()>;
    // The same bytes held by a run that read them, shared rather than copied.
    void setPlanAsRead(std::shared_ptr<const PlanSlot> bytes);
    void setPlayerAsRead(int slot, std::span<const std::uint8_t> bytes);
    void forgetPlayerAsRead(int slot);

    struct SlotsAsRead {
        std::array<std::uint8_t, codec::slotWidth<GamePlanRecord>()> plan;
        BySlot<std::array<std::uint8_t, codec::slotWidth<PlayerRecord>()>> players;
        bool planHeld;  // plan (or sharedPlan, when set) is set
        std::shared_ptr<const PlanSlot> sharedPlan;
        BySlot<bool> held;  // players[slot] is set; else the slot reads as zero bytes
    };
    // Null until the first load; a copy of the side copies it whole.
    struct SlotsAsReadPtr : std::unique_ptr<SlotsAsRead> {
        SlotsAsReadPtr() = default;
        SlotsAsReadPtr(SlotsAsReadPtr&&) noexcept = default;
        SlotsAsReadPtr& operator=(SlotsAsReadPtr&&) noexcept = default;
        SlotsAsReadPtr(const SlotsAsReadPtr& other)
            : std::unique_ptr<SlotsAsRead>(other ? new SlotsAsRead(*other) : nullptr) {}
        SlotsAsReadPtr& operator=(const SlotsAsReadPtr& other) {
            if (this != &other) reset(other ? new SlotsAsRead(*other) : nullptr);
            return *this;
        }
        ~SlotsAsReadPtr() = default;
    };
    SlotsAsReadPtr slotsAsRead;

    [[nodiscard]] bool onTeam(int slot) const {
        const PlayerRecord& p = GameRoster[static_cast<std::size_t>(slot)];
        return TeamId != 0 && p.PlayerId > 0 && p.TeamId == TeamId;
    }
    [[nodiscard]] PlayerRecord& player(int slot) { return GameRoster[static_cast<std::size_t>(slot)]; }
    [[nodiscard]] const PlayerRecord& player(int slot) const { return GameRoster[static_cast<std::size_t>(slot)]; }
    [[nodiscard]] const SetRates& rate(RateSet set, int slot) const {
        return rates[static_cast<std::size_t>(slot)][set];
    }
};

// What a team load reads besides the team's own records.
// What a team load needs from the whole player file. Nothing a game posts
// changes it, so a run of many games reads the file for it once.
struct LeaguePlayerIndex {
    int realFights = 0;   // real fights of all players on teams
    int players2020 = 0;  // players of 2020 with more than 56 real games
    // Record numbers of the players whose team id is t, by t (1 to 288).
    std::vector<std::vector<std::int32_t>> recordsOfTeam = std::vector<std::vector<std::int32_t>>(kMaxTeams + 1);

    static LeaguePlayerIndex read(const std::filesystem::path& leagueDir);
};

// A schedule's rows by team, for a run that keeps one schedule whose rows
// keep their teams (a posting changes a row's status and score only): a load
// then looks at its own team's few rows rather than the whole schedule.
class ScheduleTeamRows {
public:
    explicit ScheduleTeamRows(const Schedule& schedule);
    // The positions in rows() of the rows `team` plays in as visitor or
    // home, in order; nothing for a number that is no team's.
    [[nodiscard]] std::span<const std::uint32_t> of(int team) const;

private:
    std::vector<std::uint32_t> rows_;
    std::vector<std::uint32_t> start_;  // where team t's rows begin in rows_, by t; they end where t + 1's begin
};

struct LeagueContext {
    std::filesystem::path leagueDir;
    RulesRecord rules{};
    const EraTable* era = nullptr;       // required
    const Schedule* schedule = nullptr;  // null: the league has no schedule
    // Null: the session reads its own at the first load.
    const LeaguePlayerIndex* players = nullptr;
    // A run of many games that owns the folder: its names, listed once, and
    // the images of its files. Null: the disk is asked at each load.
    FolderNames* names = nullptr;
    FileImages* files = nullptr;
    // The rows of `schedule` by team, kept by a run; null: the rows are scanned.
    const ScheduleTeamRows* scheduleRows = nullptr;
};

class GameSession {
public:
    explicit GameSession(LeagueContext league, GeneralManagerHooks* generalManager = nullptr);
    // A session on the open league of a started program run.
    static GameSession forSession(const Session& session, GeneralManagerHooks* generalManager = nullptr);

    // Set by the caller before a game's loads.
    bool GameActive = false;
    char GameType = 'L';  // 'L' league, 'E' exhibition
    bool PlayoffGame = false;
    int GameMonth = 0;  // season month of the game or the league day
    int GameDay = 0;

    // Loads `team` at `side`. A team number outside 1 to 288 changes nothing.
    // Throws FileError when a league file can't be read.
    void HkLoadTeam(int side, int team, Random& rng);

    // Sets up a game between two teams on a date (calendar month) and loads
    // both sides, visitor first.
    void loadGame(int visitor, int home, int calendarMonth, int day, Random& rng);

    // Writes the side's team record, game plan and players back. Outside a
    // game the live line tables are first copied into the players' stored
    // roles. Rows of players who now belong to another team aren't written:
    // that team's load owns them.
    void SaveTeam(int side);

    // True when saving the side would change its files in more than what
    // every load changes (the count of loads, GamesSinceReset, and the form
    // of a player without a replay game, drawn anew each time): a stamp
    // fired, a bad value was reset, or lines and depth charts were filled in.
    [[nodiscard]] bool loadChangedRecords(int side) const;

    [[nodiscard]] SideTables& side(int s) {
        SideTables& tables = sides_.at(static_cast<std::size_t>(s));
        asBuilt_[static_cast<std::size_t>(s)] = false;
        return tables;
    }
    [[nodiscard]] const SideTables& side(int s) const { return sides_.at(static_cast<std::size_t>(s)); }
    [[nodiscard]] int TeamIdOfSide(int s) const { return side(s).TeamId; }
    [[nodiscard]] const LeagueContext& league() const { return league_; }

    // Makes the side's depth charts and lines anew from its roster, as a new
    // game plan gets them (for a team whose ratings have just been made, or
    // the league tools' "default lines"). Returns the notes of what had to be
    // filled in; SaveTeam keeps the result.
    std::vector<std::string> remakeDepthAndLines(int side);

    // The team as the lineup tools see it: candidates are the slots on the
    // team (in a game: those fit to play).
    [[nodiscard]] LineupTeam lineupTeam(int side);
    // The era row of a year, the year `fallback` standing in outside the table.
    [[nodiscard]] const EraRecord& eraRow(int year, int fallback) const;

private:
    void scanSchedule(SideTables& s);
    void setLeagueDay(const SideTables& s);
    void clearForLoad(SideTables& s);
    void readTeam(SideTables& s);
    void readPlan(SideTables& s);
    void repairRoster(SideTables& s);
    void readPlayers(int side, bool clearEmpty, Random& rng);
    void leagueFixes(SideTables& s);
    void randomAbsences(SideTables& s, Random& rng);
    void capsAndLines(SideTables& s);
    void computeRates(SideTables& s, Random& rng);
    void firstTimePlan(SideTables& s);
    void remainingStamps(SideTables& s);
    void availability(SideTables& s);
    void coach(int side);
    void enforcers(SideTables& s);
    void lastFixes(SideTables& s);
    void completeLineup(int side);
    void noteUnrated(int side);

    [[nodiscard]] std::filesystem::path leagueFile(std::string_view name) const;
    [[nodiscard]] RateContext rateContext(const SideTables& s, const PlayerRecord& p) const;
    [[nodiscard]] int eraGamesOf(int year) const;
    // The index of the context, or one read from the league at the first call.
    const LeaguePlayerIndex& playerIndex() const;
    [[nodiscard]] bool collegeTeam(const SideTables& s) const { return s.team.TeamType.view() == "C"; }

    LeagueContext league_;
    GeneralManagerHooks defaultManager_;
    GeneralManagerHooks* manager_;
    std::vector<SideTables> sides_ = std::vector<SideTables>(2);  // large: kept off the stack
    // A side nobody has loaded or written since the session was built is
    // still as a clearing would leave it, so its first load skips that pass.
    std::array<bool, 2> asBuilt_{true, true};
    mutable std::optional<LeaguePlayerIndex> ownIndex_;
    // A run's game plans as decoded from its image, by team: nothing a game
    // posts writes a plan, so each is decoded once and again only after a
    // write the image notes. Made at a team's first load.
    void keepPlansCurrent(const std::filesystem::path& plans);
    struct KeptPlan {
        GamePlanRecord plan;
        std::shared_ptr<const SideTables::PlanSlot> bytes;  // as read, for the sides' planAsRead
    };
    std::vector<std::unique_ptr<KeptPlan>> keptPlans_;
    bool plansWatched_ = false;
};

// The day after a date of the season (season month, day); the 13th month is
// the first.
std::pair<int, int> dayAfter(int seasonMonth, int day);

}  // namespace tallyrink
