// Team totals of a made-up season. League totals come first, from the era's
// figures; each is then shared among the teams by their drawn strengths, so
// the league adds up exactly and every "for" has its "against" elsewhere.

#include <algorithm>
#include <cmath>

#include "operations/new_league_parts.h"
#include "operations/share_out.h"

namespace tallyrink::newleague {

namespace {

// Event rates that the era table doesn't carry: what a modern season shows,
// which older seasons, never counted, are given too.
constexpr double kFaceoffsPerGame = 60.0;
constexpr double kHitsPerTeamGame = 21.0;
constexpr double kTakeawaysPerTeamGame = 7.3;
constexpr double kGiveawaysPerTeamGame = 9.0;
constexpr double kMissedPerShot = 0.38;
constexpr double kPowerPlaysPerMinor = 0.84;  // the rest are matched by a penalty of the other side
constexpr int kSecondsPerPowerPlay = 95;      // a minor, cut short by goals
constexpr double kPenaltyShotGoalShare = 0.33;

using Weights = std::vector<double>;

int round0(double x) { return int(std::lround(x)); }

template <class F>
Weights weightsOf(const std::vector<TeamSeason>& seasons, F f) {
    Weights w;
    w.reserve(seasons.size());
    for (const auto& s : seasons) w.push_back(f(s));
    return w;
}

template <class F>
std::vector<Count> capsOf(const std::vector<TeamSeason>& seasons, F f) {
    std::vector<Count> c;
    c.reserve(seasons.size());
    for (const auto& s : seasons) c.push_back(std::max<Count>(0, f(s)));
    return c;
}

template <class M>
void assign(std::vector<TeamSeason>& seasons, M member, const std::vector<Count>& shares) {
    for (std::size_t i = 0; i < seasons.size(); ++i) seasons[i].*member = int(shares[i]);
}

template <class F>
int sumOf(const std::vector<TeamSeason>& seasons, F f) {
    int sum = 0;
    for (const auto& s : seasons) sum += f(s);
    return sum;
}

void drawStrengths(Random& rng, std::vector<TeamSeason>& seasons, int year) {
    // Teams were further apart before the league grew to thirty teams.
    double sigma = year < 1995 ? 0.13 : 0.09;
    for (auto& s : seasons) {
        double overall = normal(rng);
        s.offence = std::exp(sigma * (0.75 * overall + 0.66 * normal(rng)));
        s.defence = std::exp(sigma * (-0.75 * overall + 0.66 * normal(rng)));
    }
}

void drawGoals(Random& rng, std::vector<TeamSeason>& seasons, const EraTargets& era, int teamGames) {
    Count goals = std::lround(era.goalsPerTeamGame * teamGames);
    assign(seasons, &TeamSeason::goalsFor,
           shareOut(goals, weightsOf(seasons, [&](auto& s) { return s.offence * spread(rng, 0.03); })));
    assign(seasons, &TeamSeason::goalsAgainst,
           shareOut(goals, weightsOf(seasons, [&](auto& s) { return s.defence * spread(rng, 0.03); })));
}

void drawRecords(Random& rng, std::vector<TeamSeason>& seasons, int year, int teamGames) {
    const int g = seasons.front().games;
    const int games = teamGames / 2;
    const DecisionShares shares = decisionShares(year);
    const int tieGames = round0(shares.ties * games);
    assign(seasons, &TeamSeason::ties,
           shareOut(2 * tieGames, weightsOf(seasons, [&](auto&) { return spread(rng, 0.25); }),
                    capsOf(seasons, [&](auto&) { return g; })));
    // Pythagorean expectation with a little luck on top.
    Weights pct = weightsOf(seasons, [&](const TeamSeason& s) {
        double f = double(std::max(1, s.goalsFor)), a = double(std::max(1, s.goalsAgainst));
        return std::clamp(f * f / (f * f + a * a) + 0.03 * normal(rng), 0.08, 0.92);
    });
    Weights winWeights(seasons.size());
    for (std::size_t i = 0; i < seasons.size(); ++i) winWeights[i] = pct[i] * (g - seasons[i].ties);
    assign(seasons, &TeamSeason::wins,
           shareOut(games - tieGames, winWeights, capsOf(seasons, [&](auto& s) { return g - s.ties; })));
    Weights otlWeights(seasons.size());
    for (std::size_t i = 0; i < seasons.size(); ++i) otlWeights[i] = (1.0 - pct[i]) * spread(rng, 0.2);
    assign(seasons, &TeamSeason::overtimeLosses,
           shareOut(round0(shares.overtimeLosses * games), otlWeights,
                    capsOf(seasons, [&](auto& s) { return g - s.ties - s.wins; })));
    for (auto& s : seasons) s.losses = g - s.wins - s.ties - s.overtimeLosses;
    assign(seasons, &TeamSeason::shootoutWins,
           shareOut(round0(shares.shootouts * games),
                    weightsOf(seasons, [&](auto& s) { return s.wins * spread(rng, 0.3); }),
                    capsOf(seasons, [&](auto& s) { return s.wins; })));
}

// Empty-net goals per team-game: what the era's goals, shots and saves leave
// over, or a usual share of the goals when it has no shots.
double emptyNetRate(const EraTargets& era) {
    double goals = era.goalsPerTeamGame;
    if (era.shotsPerTeamGame <= 0) return 0.035 * goals;
    return std::clamp(goals - era.shotsPerTeamGame * (1.0 - era.savePct / 100.0), 0.015 * goals, 0.06 * goals);
}

void drawGoaltending(Random& rng, std::vector<TeamSeason>& seasons, const EraTargets& era, int teamGames) {
    Count emptyNet = std::lround(emptyNetRate(era) * teamGames);
    assign(seasons, &TeamSeason::emptyNetGoalsFor,
           shareOut(emptyNet, weightsOf(seasons, [](auto& s) { return s.wins + 1.0; }),
                    capsOf(seasons, [](auto& s) { return s.goalsFor / 8 + 1; })));
    assign(seasons, &TeamSeason::emptyNetGoalsAgainst,
           shareOut(emptyNet, weightsOf(seasons, [](auto& s) { return s.losses + s.overtimeLosses + 1.0; }),
                    capsOf(seasons, [](auto& s) { return s.goalsAgainst / 8 + 1; })));
    int goalieGoals = sumOf(seasons, [](auto& s) { return s.goalsAgainst - s.emptyNetGoalsAgainst; });
    Count faced = std::lround(goalieGoals / (1.0 - era.savePct / 100.0));
    // A team that gives up many goals mostly gives up many shots as well.
    auto saves = shareOut(faced - goalieGoals,
                          weightsOf(seasons, [&](auto& s) { return std::pow(s.defence, 0.4) * spread(rng, 0.04); }));
    for (std::size_t i = 0; i < seasons.size(); ++i)
        seasons[i].shotsAgainst = seasons[i].goalsAgainst - seasons[i].emptyNetGoalsAgainst + int(saves[i]);
    Count shotsFor = faced + sumOf(seasons, [](auto& s) { return s.emptyNetGoalsAgainst; });
    int goalsFor = sumOf(seasons, [](auto& s) { return s.goalsFor; });
    auto extra = shareOut(shotsFor - goalsFor,
                          weightsOf(seasons, [&](auto& s) { return std::sqrt(s.offence) * spread(rng, 0.05); }));
    for (std::size_t i = 0; i < seasons.size(); ++i) seasons[i].shotsFor = seasons[i].goalsFor + int(extra[i]);
    for (auto& s : seasons) {
        double perGame = double(s.goalsAgainst - s.emptyNetGoalsAgainst) / s.games;
        int expected = round0(s.games * std::exp(-1.1 * perGame) * spread(rng, 0.3));
        s.shutouts = std::clamp(expected, 0, s.wins + s.ties);
    }
}

struct PenaltyTotals {
    Count fights = 0, otherMajors = 0, matches = 0, gameMisconducts = 0, misconducts = 0, minors = 0;
};

// The era's penalty minutes split into kinds: a fight is a major for one
// player of each side; minors carry most of a quiet era's minutes and
// misconducts much of a rough one's.
PenaltyTotals penaltyTotals(const EraTargets& era, int teamGames) {
    PenaltyTotals p;
    // The era counts fighting majors in a game, both teams together: a
    // fight sends one man of each side off, so a team takes part in half
    // as many fights a game.
    p.fights = std::lround(era.fightsPerGame / 2 * teamGames);
    p.otherMajors = std::lround(0.03 * teamGames);
    p.matches = std::lround(0.002 * teamGames);
    p.gameMisconducts = std::lround((0.015 + 0.04 * era.fightsPerGame) * teamGames);
    Count minutes = std::lround(era.pimPerTeamGame * teamGames);
    auto left = [&] { return minutes - 5 * (p.fights + p.otherMajors) - 10 * (p.gameMisconducts + p.matches); };
    // Fights can't take more than half of a season's minutes.
    while (left() < minutes / 2 && (p.gameMisconducts > 0 || p.fights > 0 || p.otherMajors > 0)) {
        if (p.gameMisconducts > 0) --p.gameMisconducts;
        if (p.otherMajors > 0) --p.otherMajors;
        if (p.fights > 0) --p.fights;
    }
    double minorShare = std::clamp(0.98 - 0.03 * (era.pimPerTeamGame - 12.0), 0.6, 0.98);
    p.minors = std::lround(minorShare * double(left()) / 2.0);
    p.misconducts = std::max<Count>(0, (left() - 2 * p.minors) / 10);
    p.minors += std::max<Count>(0, (left() - 2 * p.minors - 10 * p.misconducts) / 2);
    return p;
}

void drawPenalties(Random& rng, std::vector<TeamSeason>& seasons, const EraTargets& era, int teamGames) {
    PenaltyTotals p = penaltyTotals(era, teamGames);
    Weights tough = weightsOf(seasons, [&](auto&) { return spread(rng, 0.35); });
    Weights undisciplined = weightsOf(seasons, [&](auto&) { return spread(rng, 0.15); });
    Weights both(seasons.size());
    for (std::size_t i = 0; i < both.size(); ++i) both[i] = tough[i] * undisciplined[i];
    assign(seasons, &TeamSeason::fights, shareOut(p.fights, tough));
    auto other = shareOut(p.otherMajors, tough);
    for (std::size_t i = 0; i < seasons.size(); ++i) seasons[i].majors = seasons[i].fights + int(other[i]);
    assign(seasons, &TeamSeason::matchPenalties, shareOut(p.matches, tough));
    assign(seasons, &TeamSeason::gameMisconducts, shareOut(p.gameMisconducts, both));
    assign(seasons, &TeamSeason::misconducts, shareOut(p.misconducts, both));
    assign(seasons, &TeamSeason::minors, shareOut(p.minors, undisciplined));
}

void drawSpecialTeams(Random& rng, std::vector<TeamSeason>& seasons, const EraTargets& era, int year) {
    for (auto& s : seasons) s.timesShortHanded = round0(kPowerPlaysPerMinor * s.minors);
    int powerPlays = sumOf(seasons, [](auto& s) { return s.timesShortHanded; });
    assign(seasons, &TeamSeason::powerPlays, shareOut(powerPlays, weightsOf(seasons, [&](auto& s) {
                                                          return std::pow(s.offence, 0.3) * spread(rng, 0.08);
                                                      })));
    Count ppGoals = std::lround(era.powerPlayPct / 100.0 * powerPlays);
    assign(seasons, &TeamSeason::powerPlayGoalsFor,
           shareOut(ppGoals, weightsOf(seasons, [&](auto& s) { return s.powerPlays * s.offence * spread(rng, 0.1); }),
                    capsOf(seasons, [](auto& s) { return s.goalsFor / 2; })));
    assign(seasons, &TeamSeason::powerPlayGoalsAgainst,
           shareOut(ppGoals,
                    weightsOf(seasons, [&](auto& s) { return s.timesShortHanded * s.defence * spread(rng, 0.1); }),
                    capsOf(seasons, [](auto& s) { return s.goalsAgainst / 2; })));
    int goals = sumOf(seasons, [](auto& s) { return s.goalsFor; });
    Count shGoals = std::lround((year < 1995 ? 0.045 : 0.028) * goals);
    assign(seasons, &TeamSeason::shortHandedGoalsFor,
           shareOut(shGoals,
                    weightsOf(seasons, [&](auto& s) { return s.timesShortHanded * s.offence * spread(rng, 0.2); }),
                    capsOf(seasons, [](auto& s) {
                        return std::min(s.goalsFor / 8 + 1, s.goalsFor - s.powerPlayGoalsFor - s.emptyNetGoalsFor);
                    })));
    assign(seasons, &TeamSeason::shortHandedGoalsAgainst,
           shareOut(shGoals, weightsOf(seasons, [&](auto& s) { return s.powerPlays * spread(rng, 0.2); }),
                    capsOf(seasons, [](auto& s) {
                        return std::min(s.goalsAgainst / 8 + 1,
                                        s.goalsAgainst - s.powerPlayGoalsAgainst - s.emptyNetGoalsAgainst);
                    })));
}

void drawAssists(std::vector<TeamSeason>& seasons, const EraTargets& era) {
    int goals = sumOf(seasons, [](auto& s) { return s.goalsFor; });
    int ppGoals = sumOf(seasons, [](auto& s) { return s.powerPlayGoalsFor; });
    int shGoals = sumOf(seasons, [](auto& s) { return s.shortHandedGoalsFor; });
    int evenGoals = goals - ppGoals - shGoals;
    Count total = std::lround(era.assistsPerGoal * goals);
    // Power-play goals come off more passes than the average goal,
    // short-handed ones off fewer.
    Count pp = std::min<Count>(2 * ppGoals, std::lround(std::min(2.0, era.assistsPerGoal + 0.2) * ppGoals));
    Count sh = std::min<Count>(2 * shGoals, std::lround(std::max(0.3, era.assistsPerGoal - 0.7) * shGoals));
    Count even = std::clamp<Count>(total - pp - sh, 0, 2 * evenGoals);
    assign(seasons, &TeamSeason::powerPlayAssists,
           shareOut(pp, weightsOf(seasons, [](auto& s) { return double(s.powerPlayGoalsFor); }),
                    capsOf(seasons, [](auto& s) { return 2 * s.powerPlayGoalsFor; })));
    assign(seasons, &TeamSeason::shortHandedAssists,
           shareOut(sh, weightsOf(seasons, [](auto& s) { return double(s.shortHandedGoalsFor); }),
                    capsOf(seasons, [](auto& s) { return 2 * s.shortHandedGoalsFor; })));
    auto evenShares = shareOut(
        even,
        weightsOf(seasons, [](auto& s) { return double(s.goalsFor - s.powerPlayGoalsFor - s.shortHandedGoalsFor); }),
        capsOf(seasons, [](auto& s) { return 2 * (s.goalsFor - s.powerPlayGoalsFor - s.shortHandedGoalsFor); }));
    for (std::size_t i = 0; i < seasons.size(); ++i)
        seasons[i].assists = seasons[i].powerPlayAssists + seasons[i].shortHandedAssists + int(evenShares[i]);
}

void drawPlay(Random& rng, std::vector<TeamSeason>& seasons, int year, int teamGames) {
    Count faceoffs = std::lround(kFaceoffsPerGame * teamGames / 2.0);
    auto taken = shareOut(2 * faceoffs, weightsOf(seasons, [&](auto&) { return spread(rng, 0.03); }));
    Weights skill(seasons.size());
    for (std::size_t i = 0; i < skill.size(); ++i) skill[i] = double(taken[i]) * spread(rng, 0.04);
    auto won = shareOut(faceoffs, skill, std::vector<Count>(taken.begin(), taken.end()));
    for (std::size_t i = 0; i < seasons.size(); ++i) {
        seasons[i].faceoffsWon = int(won[i]);
        seasons[i].faceoffsLost = int(taken[i] - won[i]);
    }
    auto events = [&](double perTeamGame) {
        return shareOut(std::lround(perTeamGame * teamGames),
                        weightsOf(seasons, [&](auto&) { return spread(rng, 0.15); }));
    };
    // Blocking shots became an everyday job only in the 1990s.
    assign(seasons, &TeamSeason::hits, events(kHitsPerTeamGame));
    assign(seasons, &TeamSeason::blocks, events(year < 1990 ? 10.0 : 14.5));
    assign(seasons, &TeamSeason::takeaways, events(kTakeawaysPerTeamGame));
    assign(seasons, &TeamSeason::giveaways, events(kGiveawaysPerTeamGame));
    for (auto& s : seasons) s.missedShots = round0(kMissedPerShot * s.shotsFor * spread(rng, 0.06));
}

// Share of lost games in which the goalie was pulled late: rare in the early
// game, nearly always now.
double pulledGoalieShare(int year) { return year < 1950 ? 0.15 : year < 1980 ? 0.4 : year < 2005 ? 0.7 : 0.95; }

void drawClock(Random& rng, std::vector<TeamSeason>& seasons, int year) {
    const DecisionShares shares = decisionShares(year);
    for (auto& s : seasons) {
        s.seconds = 3600 * s.games + round0(shares.overtimeMinutes * 60.0 * s.games * spread(rng, 0.2));
        s.powerPlaySeconds = s.powerPlays * kSecondsPerPowerPlay;
        s.shortHandedSeconds = s.timesShortHanded * kSecondsPerPowerPlay;
        s.emptyNetSeconds = round0((s.losses + s.overtimeLosses) * pulledGoalieShare(year) * 65.0);
    }
}

void drawPenaltyShots(Random& rng, std::vector<TeamSeason>& seasons, int year, int teamGames) {
    Count shots = year >= 1935 ? std::lround(0.015 * teamGames) : 0;
    Count goals = std::lround(kPenaltyShotGoalShare * shots);
    assign(seasons, &TeamSeason::penaltyShots,
           shareOut(shots, weightsOf(seasons, [&](auto& s) { return s.offence * spread(rng, 0.5); })));
    assign(seasons, &TeamSeason::penaltyShotGoals,
           shareOut(goals, weightsOf(seasons, [](auto& s) { return double(s.penaltyShots); }),
                    capsOf(seasons, [](auto& s) { return std::min(s.penaltyShots, s.goalsFor); })));
    assign(seasons, &TeamSeason::penaltyShotsFaced,
           shareOut(shots, weightsOf(seasons, [&](auto& s) { return s.timesShortHanded * spread(rng, 0.5); })));
    assign(seasons, &TeamSeason::penaltyShotGoalsAllowed,
           shareOut(goals, weightsOf(seasons, [](auto& s) { return double(s.penaltyShotsFaced); }),
                    capsOf(seasons, [](auto& s) {
                        return std::min(s.penaltyShotsFaced, s.goalsAgainst - s.emptyNetGoalsAgainst);
                    })));
}

}  // namespace

std::vector<TeamSeason> drawTeamSeasons(Random& rng, const std::vector<int>& teamNumbers, const EraTargets& era,
                                        int year) {
    std::vector<TeamSeason> seasons(teamNumbers.size());
    for (std::size_t i = 0; i < seasons.size(); ++i) {
        seasons[i].team = teamNumbers[i];
        seasons[i].games = era.games;
    }
    if (seasons.empty()) return seasons;
    const int teamGames = int(seasons.size()) * era.games;
    drawStrengths(rng, seasons, year);
    drawGoals(rng, seasons, era, teamGames);
    drawRecords(rng, seasons, year, teamGames);
    drawGoaltending(rng, seasons, era, teamGames);
    drawPenalties(rng, seasons, era, teamGames);
    drawSpecialTeams(rng, seasons, era, year);
    drawAssists(seasons, era);
    drawPlay(rng, seasons, year, teamGames);
    drawClock(rng, seasons, year);
    drawPenaltyShots(rng, seasons, year, teamGames);
    return seasons;
}

}  // namespace tallyrink::newleague
