#include "support/made_up_game.h"

#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "support/source_tree.h"

namespace tallyrink::test {

namespace {

void fill(MadeUpLeague& lg) {
    NewLeagueOptions options;
    options.teams = 6;
    options.year = 2017;
    options.seed = 31;
    GeneratedLeague made = generateLeague(options, eraTargets(shippedEra(), 2017));
    writeLeagueFolder(lg.dir.path(), made.files);
    for (int t = 1; t <= kMaxTeams; ++t)
        if (made.files.teams[static_cast<std::size_t>(t - 1)].TeamActive == 1) lg.teams.push_back(t);
}

}  // namespace

const MadeUpLeague& madeUpLeague() {
    static MadeUpLeague league;
    static const bool filled = (fill(league), true);
    (void)filled;
    return league;
}

RulesRecord madeUpRules() {
    RulesRecord r = defaultRules(2017);
    r.Periodslist = 2;
    r.Minuteslist = 19;
    r.OTLengthlist = 1;
    r.OTTypelist = 0;
    r.ShootOutList = 1;
    r.AllowOffensiveZonePlayCallsCheck = 1;
    return r;
}

std::unique_ptr<GameSession> loadedGame(const RulesRecord& rules, std::uint64_t seed, int visitor, int home) {
    const MadeUpLeague& lg = madeUpLeague();
    auto session = std::make_unique<GameSession>(LeagueContext{lg.dir.path(), rules, &shippedEra(), nullptr});
    Random draws(seed);
    session->loadGame(lg.teams.at(static_cast<std::size_t>(visitor)), lg.teams.at(static_cast<std::size_t>(home)), 11,
                      10, draws);
    return session;
}

}  // namespace tallyrink::test
