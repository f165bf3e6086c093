#include "operations/made_up_league.h"

#include <algorithm>

#include "league/rules.h"
#include "operations/era_figures.h"
#include "team/rating_tool.h"

namespace tallyrink {

namespace {

// Games against each division rival: about a third of the season within
// the division, as modern leagues play it; none when one division holds all.
int divisionGamesFor(const GeneratedLeague& league, int games) {
    if (league.teamsPerDivision.size() < 2) return 0;
    int rivals = *std::max_element(league.teamsPerDivision.begin(), league.teamsPerDivision.end()) - 1;
    if (rivals < 1) return 0;
    int dg = static_cast<int>(0.35 * games / rivals) / 2 * 2;
    return std::clamp(dg, 0, 20);
}

// The league's name and its division and conference names go into its
// rules; every other rule keeps the default of the league's year.
void applyNewLeagueRules(const std::filesystem::path& folder, const GeneratedLeague& league) {
    modifyRules(folder, league.year, [&](RulesRecord& r) {
        r.LeagueName.assign(league.leagueName);
        for (std::size_t d = 0; d < league.divisionNames.size() && d < r.DivisionName.size(); ++d)
            r.DivisionName[d].assign(league.divisionNames[d]);
        for (std::size_t c = 0; c < league.conferenceNames.size() && c < r.ConferenceName.size(); ++c)
            r.ConferenceName[c].assign(league.conferenceNames[c]);
    });
}

}  // namespace

MadeUpLeagueFolder makeMadeUpLeague(const std::filesystem::path& folder, const NewLeagueOptions& options,
                                    const EraTable& era, const HistoricalRatings* history) {
    MadeUpLeagueFolder out;
    out.league = generateLeague(options, eraTargets(era, options.year));
    writeLeagueFolder(folder, out.league.files);
    applyNewLeagueRules(folder, out.league);
    // The season from early October of its year, drawn from the league's
    // own seed so the same seed makes the same season.
    int games = std::clamp(out.league.era.games / 2 * 2, 10, 98);
    out.schedule =
        makeComputerSchedule(folder, games, divisionGamesFor(out.league, games), out.league.year, 10, 5, options.seed);
    for (const auto& t : rateLeague(folder, era, history)) out.rated += t.refusal ? 0 : t.players.size();
    return out;
}

}  // namespace tallyrink
