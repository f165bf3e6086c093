#include "postgame/schedule_games.h"

#include <algorithm>

#include "engine/game.h"
#include "league/files.h"
#include "league/record_fields.h"
#include "postgame/game_summary.h"

namespace tallyrink {

namespace {

// Recovery runs before the members that read the folder are made.
const ScheduleGamesOptions& recovered(const ScheduleGamesOptions& options) {
    recoverPosting(options.leagueDir);
    return options;
}

// The fields of a man the calibration reads: who he is, his team, the year
// he plays by and his replay line. The rest of the row is left as made.
void decodeCalibrationFields(std::span<const std::uint8_t> bytes, PlayerRecord& p) {
    static const std::size_t idAt = codec::offsetOf(&PlayerRecord::PlayerId);
    static const std::size_t teamAt = codec::offsetOf(&PlayerRecord::TeamId);
    static const std::size_t yearAt = codec::offsetOf(&PlayerRecord::PlayerYear);
    static const std::size_t statsAt = codec::offsetOf(&PlayerRecord::Stats);
    codec::decodeMember(bytes, idAt, p, &PlayerRecord::PlayerId);
    codec::decodeMember(bytes, teamAt, p, &PlayerRecord::TeamId);
    codec::decodeMember(bytes, yearAt, p, &PlayerRecord::PlayerYear);
    // The replay line alone, decoded as a whole record (block copies) rather
    // than walked with the rest of the lines.
    constexpr auto replay = static_cast<std::size_t>(StatLineIndex::Replay);
    codec::decodeAt(bytes, statsAt + replay * codec::Layout<StatLine>::size, statLine(p, StatLineIndex::Replay));
}

}  // namespace

ScheduleGames::ScheduleGames(ScheduleGamesOptions options)
    : options_(recovered(options)),
      names_(options_.leagueDir),
      writer_(images_),
      index_(LeaguePlayerIndex::read(options_.leagueDir)),
      totals_(options_.leagueDir) {}

void ScheduleGames::refreshTeams() {
    const auto& path = names_.find(kTeamFile);
    auto written = images_.takeWritten(path);
    if (!teamsRead_ || written.whole) {
        // The whole table, read as any league reads it.
        images_.watch(path);
        totals_.readTeamTable();
        teamsRead_ = true;
        return;
    }
    for (auto range : written.ranges) {
        auto [first, last] = FileImages::Written::slotsOf(range, kTeamSlot);
        for (std::size_t t = first; t <= std::min<std::size_t>(last, kMaxTeams); ++t)
            totals_.team(static_cast<int>(t)) = readRecordVia<TeamRecord>(&images_, path, kTeamSlot, t);
    }
}

void ScheduleGames::refreshPlayers() {
    const auto& path = names_.find(kPlayerFile);
    auto written = images_.takeWritten(path);
    auto& rows = totals_.PlayerTable();
    std::size_t count = std::min(recordCount(images_.length(path), kPlayerSlot, kPlayerRounding), kPlayerTableRows);
    if (!playersRead_ || written.whole || count != rows.size()) {
        images_.watch(path);
        rows.assign(count, PlayerRow{});
        const auto& image = images_.bytes(path);
        for (std::size_t r = 0; r < count; ++r) {
            decodeCalibrationFields(FileImages::slotIn(image, kPlayerSlot, r + 1), rows[r].player);
            rows[r].recordNumber = static_cast<std::int32_t>(r + 1);
        }
        playersRead_ = true;
        return;
    }
    // A man is written at his team's load and again at its posting, and his
    // team may play more than once between looks: each slot is decoded once.
    std::vector<std::size_t> slots;
    for (auto range : written.ranges) {
        auto [first, last] = FileImages::Written::slotsOf(range, kPlayerSlot);
        for (std::size_t r = first; r <= std::min(last, count); ++r) slots.push_back(r);
    }
    std::sort(slots.begin(), slots.end());
    slots.erase(std::unique(slots.begin(), slots.end()), slots.end());
    const auto& image = images_.bytes(path);
    for (std::size_t r : slots) decodeCalibrationFields(FileImages::slotIn(image, kPlayerSlot, r), rows[r - 1].player);
}

SeasonCalibration ScheduleGames::calibrationSoFar(const GameRecord& r, Random& draws) {
    refreshTeams();
    int date = r.Month * 100 + r.Day;
    if (date != playersDate_) {
        refreshPlayers();
        playersDate_ = date;
    }
    return seasonCalibration(totals_, *options_.era, options_.rules, draws);
}

PostingResult ScheduleGames::playAndPost(Schedule& schedule, std::size_t row) {
    const GameRecord r = schedule.row(row);
    std::uint64_t seed = options_.seed + row;
    if (!session_ || sessionSchedule_ != &schedule) {
        scheduleRows_.emplace(schedule);
        session_ = std::make_unique<GameSession>(LeagueContext{options_.leagueDir, options_.rules, options_.era,
                                                               &schedule, &index_, &names_, &images_, &*scheduleRows_});
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
    posting.books = &books_;
    posting.tables = &tables_;
    return postScheduleGame(session, play, schedule, row, seed, posting);
}

}  // namespace tallyrink
