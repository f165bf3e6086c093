#pragma once

// How close the replay runs to the real season: league totals, each team's
// goals and points, and the players' lines, real next to replay, with the
// correlation and the error of each statistic. A season still being played
// is compared with the real figures pro-rated to the games each team has
// played, so the report reads the same at any point of the season.

#include <string>
#include <vector>

#include "league/records.h"

namespace tallyrink {

class League;
class EraTable;

inline constexpr int kReplayReportMinGames = 20;  // real games a player needs to be compared

// One figure, real next to replay.
struct RealReplay {
    double real = 0;
    double replay = 0;
    [[nodiscard]] double ratio() const { return real != 0 ? replay / real : 0; }
};

struct LeagueComparison {
    int teamGamesReal = 0;  // games of all teams together
    int teamGamesReplay = 0;
    // Per team-game.
    RealReplay goals, shots, pim, powerPlayGoals, hits;
    RealReplay savePct;  // saves / shots against
    // The real power plays aren't in the league's files: the real side
    // comes from the era's power-play percentage of the league's season,
    // the chances from it and the real power-play goals. 0 when unknown.
    RealReplay powerPlayPct;  // goals / chances
    RealReplay powerPlays;    // per team-game
    // Share of games decided past regulation: one loser a game is charged
    // with an overtime loss, so leagues without ties count them all.
    RealReplay pastRegulation;
};

struct TeamComparison {
    int team = 0;
    std::string code;
    int gamesReal = 0;
    int gamesReplay = 0;
    RealReplay goalsFor, goalsAgainst, points;  // real pro-rated to the replay's games
};

enum class PlayerStat { GP, G, A, P, PIM, SOG, TOI, Count };
std::string_view playerStatName(PlayerStat s);

struct PlayerComparison {
    std::string name;
    std::string code;  // the team of the row
    bool goalie = false;
    double fraction = 1;  // share of the real season the team has played
    std::array<RealReplay, static_cast<std::size_t>(PlayerStat::Count)> stat{};  // real pro-rated; TOI a game
};

struct StatAgreement {
    PlayerStat stat{};
    int players = 0;
    double correlation = 0;  // Pearson, real against replay
    double meanError = 0;    // replay less real, on average
    double meanAbsError = 0;
};

struct ReplayReport {
    LeagueComparison league;
    std::vector<TeamComparison> teams;
    std::vector<PlayerComparison> players;  // skaters with enough real games
    std::vector<StatAgreement> agreement;
    bool seasonComplete = false;
};

// With no era table the real power plays stay unknown.
ReplayReport buildReplayReport(const League& league, const std::vector<PlayerRecord>& players,
                               const EraTable* era = nullptr);

double pearson(const std::vector<double>& x, const std::vector<double>& y);

std::string replayReportText(const ReplayReport& r);
std::string replayReportCsv(const ReplayReport& r);
std::string replayReportHtml(const ReplayReport& r, std::string_view leagueName);

}  // namespace tallyrink
