#include "support/made_up_game.h"

#include <map>
#include <utility>

#include "league/files.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "postgame/game_done.h"
#include "postgame/game_summary.h"
#include "support/source_tree.h"

namespace tallyrink::test {

WrittenLeague writeMadeUpLeague(const std::filesystem::path& dir, int teams, std::uint64_t seed) {
    NewLeagueOptions options;
    options.teams = teams;
    options.year = 2017;
    options.seed = seed;
    GeneratedLeague made = generateLeague(options, eraTargets(shippedEra(), 2017));
    writeLeagueFolder(dir, made.files);
    WrittenLeague out;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (made.files.teams[static_cast<std::size_t>(t - 1)].TeamActive == 1) {
            out.teams.push_back(t);
            out.active.set(static_cast<std::size_t>(t));
        }
    return out;
}

const MadeUpLeague& madeUpLeague(int teams, std::uint64_t seed) {
    static std::map<std::pair<int, std::uint64_t>, std::unique_ptr<MadeUpLeague>> leagues;
    auto& league = leagues[{teams, seed}];
    if (!league) {
        league = std::make_unique<MadeUpLeague>();
        league->teams = writeMadeUpLeague(league->dir.path(), teams, seed).teams;
    }
    return *league;
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

std::unique_ptr<GameSession> loadedGame(const MadeUpLeague& league, const RulesRecord& rules, std::uint64_t seed,
                                        int visitor, int home) {
    auto session = std::make_unique<GameSession>(LeagueContext{league.dir.path(), rules, &shippedEra(), nullptr});
    Random draws(seed);
    session->loadGame(league.teams.at(static_cast<std::size_t>(visitor)),
                      league.teams.at(static_cast<std::size_t>(home)), 11, 10, draws);
    return session;
}

std::unique_ptr<GameSession> loadedGame(const RulesRecord& rules, std::uint64_t seed, int visitor, int home) {
    return loadedGame(madeUpLeague(), rules, seed, visitor, home);
}

std::unique_ptr<BoxFile> postAndReadBox(GameSession& session, const Game& game, const std::filesystem::path& dir) {
    FinishedGame finished = summarizeGame(game, 1, 11, 4, 2017);
    Random postDraws(5);
    PostingOptions posting;
    posting.rng = &postDraws;
    posting.dateText = "11/04/2017";
    PostingResult res = GameDone(session, finished, posting);
    return BoxRead(findFile(dir, res.boxFile));
}

}  // namespace tallyrink::test
