#include "postgame/schedule_games.h"

#include "engine/game.h"
#include "league/files.h"
#include "postgame/game_summary.h"

namespace tallyrink {

namespace {

// Recovery runs before the members that read the folder are made.
const ScheduleGamesOptions& recovered(const ScheduleGamesOptions& options) {
    recoverPosting(options.leagueDir);
    return options;
}

}  // namespace

ScheduleGames::ScheduleGames(ScheduleGamesOptions options)
    : options_(recovered(options)),
      names_(options_.leagueDir),
      writer_(images_),
      index_(LeaguePlayerIndex::read(options_.leagueDir)),
      totals_(options_.leagueDir) {}

SeasonCalibration ScheduleGames::calibrationSoFar(const GameRecord& r, Random& draws) {
    // From the run's images, which every posting keeps step with.
    totals_.readTeamTable(images_.bytes(names_.find(kTeamFile)));
    int date = r.Month * 100 + r.Day;
    if (date != playersDate_) {
        totals_.PlayerTable() = playerRowsOf(images_.bytes(names_.find(kPlayerFile)));
        playersDate_ = date;
    }
    return seasonCalibration(totals_, *options_.era, options_.rules, draws);
}

PostingResult ScheduleGames::playAndPost(Schedule& schedule, std::size_t row) {
    const GameRecord r = schedule.row(row);
    std::uint64_t seed = options_.seed + row;
    if (!session_ || sessionSchedule_ != &schedule) {
        session_ = std::make_unique<GameSession>(
            LeagueContext{options_.leagueDir, options_.rules, options_.era, &schedule, &index_, &names_, &images_});
        sessionSchedule_ = &schedule;
    }
    GameSession& session = *session_;
    session.PlayoffGame = false;
    Random loadDraws(seed);
    session.GameActive = true;
    session.GameType = 'L';
    session.loadGame(r.VisitorTeam, r.HomeTeam, r.Month, r.Day, loadDraws);
    clearGameEntries(session);
    GameOptions gameOptions;
    gameOptions.seed = seed;
    if (options_.calibrateToSeason && !session.PlayoffGame) gameOptions.calibration = calibrationSoFar(r, loadDraws);
    Game play(session, gameOptions);
    play.playToEnd();

    PostingOptions posting;
    posting.dateText = options_.dateText;
    posting.allTimeRecordsDir = options_.allTimeRecordsDir;
    posting.names = &names_;
    posting.images = &images_;
    posting.writer = &writer_;
    posting.schedule = &schedule;
    return postScheduleGame(session, play, schedule, row, seed, posting);
}

}  // namespace tallyrink
