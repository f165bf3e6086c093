#include "postgame/saved_game.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <span>

#include "league/files.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "postgame/game_summary.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
std::uint8_t byte(int v) { return static_cast<std::uint8_t>(std::clamp(v, 0, 255)); }
std::uint8_t slotByte(int slot) { return slot == kNoSlot ? 0 : byte(slot + 1); }

// ---- The resume block --------------------------------------------------------
//
// It follows the four box records, little-endian, padded with zeros to a
// whole box slot:
//
//   0  char[10] "TLYRESUME1"  (a new layout takes a new last digit)
//  10  u64      seed
//  18  u32      schedule row, 0 for none
//  22  i16 ×2   visitor, home
//  26  u8 ×2    calendar month, day
//  28  i16      year
//  30  char     game type ('L', 'E')
//  31  u8 ×3    playoff, no display, reserved
//  34  u8 ×2    coaches at the start (0 person, 1 computer)
//  36  u8 ×2    auto-lines
//  38  f64 ×5   calibration: shots, penalty, fight, shooting, power play
//  78  u64      teams fingerprint
//  86  u32      count of inputs
//  90  u8 ×3    each input: kind, a, b
constexpr std::string_view kResumeMagic = "TLYRESUME1";
constexpr std::size_t kResumeHeader = 90;

class ByteWriter {
public:
    void bytes(std::string_view s) { out_.insert(out_.end(), s.begin(), s.end()); }
    template <class T>
    void le(T v) {
        auto u = static_cast<std::uint64_t>(v);
        for (std::size_t i = 0; i < sizeof(T); ++i) out_.push_back(static_cast<std::uint8_t>(u >> (8 * i)));
    }
    void f64(double d) { le(std::bit_cast<std::uint64_t>(d)); }
    std::vector<std::uint8_t>& data() { return out_; }

private:
    std::vector<std::uint8_t> out_;
};

class ByteReader {
public:
    ByteReader(std::span<const std::uint8_t> in, const std::filesystem::path& file) : in_(in), file_(file) {}
    template <class T>
    T le() {
        need(sizeof(T));
        std::uint64_t u = 0;
        for (std::size_t i = 0; i < sizeof(T); ++i) u |= std::uint64_t{in_[pos_ + i]} << (8 * i);
        pos_ += sizeof(T);
        return static_cast<T>(u);
    }
    double f64() { return std::bit_cast<double>(le<std::uint64_t>()); }
    std::string text(std::size_t n) {
        need(n);
        std::string s(in_.begin() + static_cast<std::ptrdiff_t>(pos_),
                      in_.begin() + static_cast<std::ptrdiff_t>(pos_ + n));
        pos_ += n;
        return s;
    }

private:
    void need(std::size_t n) const {
        if (pos_ + n > in_.size())
            throw FileError(fmt::format("{}: the resume block is cut short: {} bytes, at least {} expected",
                                        file_.string(), in_.size(), pos_ + n));
    }
    std::span<const std::uint8_t> in_;
    const std::filesystem::path& file_;
    std::size_t pos_ = 0;
};

std::vector<std::uint8_t> resumeBlock(const SavedGameStart& s, const std::vector<GameInput>& inputs) {
    ByteWriter w;
    w.bytes(kResumeMagic);
    w.le<std::uint64_t>(s.seed);
    w.le<std::uint32_t>(static_cast<std::uint32_t>(s.scheduleRow));
    w.le<std::int16_t>(static_cast<std::int16_t>(s.visitor));
    w.le<std::int16_t>(static_cast<std::int16_t>(s.home));
    w.le<std::uint8_t>(byte(s.calendarMonth));
    w.le<std::uint8_t>(byte(s.day));
    w.le<std::int16_t>(static_cast<std::int16_t>(s.year));
    w.le<std::uint8_t>(static_cast<std::uint8_t>(s.gameType));
    w.le<std::uint8_t>(s.playoff ? 1 : 0);
    w.le<std::uint8_t>(s.noDisplay ? 1 : 0);
    w.le<std::uint8_t>(0);
    for (CoachKind c : s.coach) w.le<std::uint8_t>(c == CoachKind::Computer ? 1 : 0);
    for (bool a : s.autoLines) w.le<std::uint8_t>(a ? 1 : 0);
    for (double d : {s.calibration.Shots, s.calibration.Penalty, s.calibration.Fight, s.calibration.Shooting,
                     s.calibration.PowerPlay})
        w.f64(d);
    w.le<std::uint64_t>(s.teamsFingerprint);
    w.le<std::uint32_t>(static_cast<std::uint32_t>(inputs.size()));
    for (const GameInput& in : inputs) {
        w.le<std::uint8_t>(static_cast<std::uint8_t>(in.kind));
        w.le<std::uint8_t>(in.a);
        w.le<std::uint8_t>(in.b);
    }
    auto& out = w.data();
    out.resize((out.size() + kBoxSlot - 1) / kBoxSlot * kBoxSlot, 0);
    return out;
}

void readResumeBlock(std::span<const std::uint8_t> bytes, const std::filesystem::path& file, SavedGame& g) {
    ByteReader r(bytes, file);
    if (r.text(kResumeMagic.size()) != kResumeMagic)
        throw FileError(
            fmt::format("{} is a box file without a resume block: it can be shown but not resumed", file.string()));
    SavedGameStart& s = g.start;
    s.seed = r.le<std::uint64_t>();
    s.scheduleRow = r.le<std::uint32_t>();
    s.visitor = r.le<std::int16_t>();
    s.home = r.le<std::int16_t>();
    s.calendarMonth = r.le<std::uint8_t>();
    s.day = r.le<std::uint8_t>();
    s.year = r.le<std::int16_t>();
    s.gameType = r.le<std::uint8_t>() == 'E' ? 'E' : 'L';
    s.playoff = r.le<std::uint8_t>() != 0;
    s.noDisplay = r.le<std::uint8_t>() != 0;
    r.le<std::uint8_t>();
    for (CoachKind& c : s.coach) c = r.le<std::uint8_t>() != 0 ? CoachKind::Computer : CoachKind::Human;
    for (bool& a : s.autoLines) a = r.le<std::uint8_t>() != 0;
    s.calibration.Shots = r.f64();
    s.calibration.Penalty = r.f64();
    s.calibration.Fight = r.f64();
    s.calibration.Shooting = r.f64();
    s.calibration.PowerPlay = r.f64();
    s.teamsFingerprint = r.le<std::uint64_t>();
    std::uint32_t n = r.le<std::uint32_t>();
    if (n > (bytes.size() - kResumeHeader) / 3)
        throw FileError(fmt::format("{}: the resume block lists {} inputs but holds room for {}", file.string(), n,
                                    (bytes.size() - kResumeHeader) / 3));
    g.inputs.resize(n);
    for (GameInput& in : g.inputs) {
        auto kind = r.le<std::uint8_t>();
        if (kind < 1 || kind > static_cast<std::uint8_t>(GameInputKind::Roll))
            throw FileError(
                fmt::format("{}: the resume block holds an input of unknown kind {}", file.string(), int{kind}));
        in.kind = static_cast<GameInputKind>(kind);
        in.a = r.le<std::uint8_t>();
        in.b = r.le<std::uint8_t>();
    }
}

// FNV-1a: small, stable across runs and platforms.
void mix(std::uint64_t& h, std::span<const std::uint8_t> bytes) {
    for (std::uint8_t b : bytes) {
        h ^= b;
        h *= 0x100000001b3ULL;
    }
}

std::string clockDigits(int clock) {
    clock = std::max(clock, 0);
    int minutes = clock / 60;
    return minutes > 0 ? fmt::format("{}{:02}", minutes, clock % 60) : fmt::format("{}", clock % 60);
}

}  // namespace

// ---- Recorded inputs -----------------------------------------------------------

void RecordedGame::apply(const GameInput& in) {
    switch (in.kind) {
        case GameInputKind::Drive:
            game_.SetPlayBox();
            break;
        case GameInputKind::Offense:
            game_.OffenseCommand(static_cast<Call>(in.a));
            break;
        case GameInputKind::OffenseAt:
            game_.OffenseCommand(static_cast<Call>(in.a), in.b);
            break;
        case GameInputKind::Continue:
            game_.ContinueCommand();
            break;
        case GameInputKind::Coach:
            game_.setCoach(in.a, in.b != 0 ? CoachKind::Computer : CoachKind::Human);
            break;
        case GameInputKind::RunTo:
            game_.runTo(static_cast<AutoStop>(in.a));
            break;
        case GameInputKind::Lines:
            game_.HumanLineChange(in.a, in.b % 16, in.b / 16);
            break;
        case GameInputKind::Goalie:
            game_.HumanGoaliePull(in.a, in.b != 0);
            break;
        case GameInputKind::Roll:
            game_.RollLines(in.a);
            break;
    }
    inputs_.push_back(in);
}

void RecordedGame::start() {
    inputs_.clear();
    game_.InitGame();
    drive();
}

void RecordedGame::drive() { apply({GameInputKind::Drive, 0, 0}); }
void RecordedGame::offense(Call call) { apply({GameInputKind::Offense, static_cast<std::uint8_t>(call), 0}); }
void RecordedGame::offense(Call call, int targetPos) {
    apply({GameInputKind::OffenseAt, static_cast<std::uint8_t>(call), byte(targetPos)});
}
void RecordedGame::proceed() { apply({GameInputKind::Continue, 0, 0}); }
void RecordedGame::setCoach(int side, CoachKind kind) {
    apply({GameInputKind::Coach, byte(side), static_cast<std::uint8_t>(kind == CoachKind::Computer ? 1 : 0)});
}
void RecordedGame::runTo(AutoStop stop) { apply({GameInputKind::RunTo, static_cast<std::uint8_t>(stop), 0}); }

std::string RecordedGame::lineChange(int side, int forwards, int pair) {
    std::string refusal = game_.HumanLineChange(side, forwards, pair);
    if (refusal.empty()) inputs_.push_back({GameInputKind::Lines, byte(side), byte(forwards % 16 + 16 * (pair % 16))});
    return refusal;
}
std::string RecordedGame::goaliePull(int side, bool out) {
    std::string refusal = game_.HumanGoaliePull(side, out);
    if (refusal.empty()) inputs_.push_back({GameInputKind::Goalie, byte(side), static_cast<std::uint8_t>(out ? 1 : 0)});
    return refusal;
}
std::string RecordedGame::rollLines(int side) {
    std::string refusal = game_.RollLines(side);
    if (refusal.empty()) inputs_.push_back({GameInputKind::Roll, byte(side), 0});
    return refusal;
}

void RecordedGame::replay(const std::vector<GameInput>& inputs) {
    inputs_.clear();
    inputs_.reserve(inputs.size());
    game_.InitGame();
    for (const GameInput& in : inputs) apply(in);
}

// ---- Setting a game up -----------------------------------------------------------

GameOptions SavedGameStart::gameOptions() const {
    GameOptions o;
    o.seed = seed;
    o.coach = coach;
    o.noDisplay = noDisplay;
    o.autoLines = autoLines;
    o.calibration = calibration;
    return o;
}

Random loadGameForPlay(GameSession& session, const SavedGameStart& start) {
    Random loadDraws(start.seed);
    session.GameActive = true;
    session.GameType = start.gameType;
    session.loadGame(start.visitor, start.home, start.calendarMonth, start.day, loadDraws);
    clearGameEntries(session);
    return loadDraws;
}

std::uint64_t teamsFingerprint(const GameSession& session) {
    std::uint64_t h = 0xcbf29ce484222325ULL;
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        mix(h, codec::toSlot(t.teamAsRead));
        mix(h, t.planAsRead());
        for (int slot = 0; slot < kRosterSlots; ++slot) mix(h, t.playerAsRead(slot));
    }
    mix(h, codec::toSlot(session.league().rules));
    return h;
}

// ---- Writing ------------------------------------------------------------------------

std::string savedGameFileName(const Game& game, const SavedGameStart& start, const std::string& dateText) {
    const GameState& s = game.state();
    std::string date = dateText;
    std::replace(date.begin(), date.end(), '/', '-');  // a name can't hold a slash
    std::string when = start.gameType == 'E'
                           ? std::string("Ex")
                           : fmt::format("{}-{}", monthName(start.calendarMonth).substr(0, 3), start.day);
    auto code = [&](int side) { return game.session().side(side).team.Abbrev.str(); };
    return fmt::format("{} {} {}{} {}{} P{} {}{}", date, when, code(kVisitor), s.Score[0], code(kHome), s.Score[1],
                       s.Period, clockDigits(s.Clock), kSavedGameExtension);
}

std::unique_ptr<BoxFile> boxOfGameInProgress(const Game& game, const SavedGameStart& start) {
    const GameSession& session = game.session();
    FinishedGame summary = summarizeGame(game, start.scheduleRow, start.calendarMonth, start.day, start.year);
    BoxFacts facts;
    facts.scheduleRow = start.scheduleRow;
    facts.scoringText = scoringSummary(session, summary);
    facts.penaltyText = penaltySummary(session, summary);
    auto box = BoxWrite(session, summary, facts);

    // What a screen shows of the play in progress.
    const GameState& s = game.state();
    BoxRecord1& r1 = box->r1;
    r1.BoxZone.assign(text(s.PlayZone));
    r1.BoxPlayResult.assign(text(s.PlayResult));
    r1.BoxLastPlayResult.assign(text(s.LastPlayResult));
    r1.BoxPuckTeam = {byte(s.PuckTeam + 1), byte(s.PuckTeam + 1), byte(s.OtherTeam() + 1)};
    r1.BoxCarrier = slotByte(s.find.Carrier);
    r1.BoxMomentum = s.Momentum;
    r1.BoxPlayRating = s.PlayRating;
    int played = (std::min(s.Period, game.periods() + 1) - 1) * game.periodSeconds() +
                 (s.Period <= game.periods() ? game.periodSeconds() : game.overtimeSeconds()) - std::max(s.Clock, 0);
    r1.BoxGameSeconds = std::max(played, 0);
    r1.BoxStatusText.assign("Saved in play");
    for (int side : {kVisitor, kHome}) {
        r1.BoxGoaliePulled[at(side)] = s.GoaliePulled[at(side)] ? 1 : 0;
        for (std::size_t pos = 0; pos < kIcePositions; ++pos)
            r1.BoxOnIce[at(side)][pos] = slotByte(s.onIce[at(side)].slot[pos]);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t i = BoxFile::at(side, slot);
            r1.BoxEnergy[i] = byte(s.Energy[at(side)][at(slot)]);
            r1.BoxShiftSeconds[i] = static_cast<std::int32_t>(std::lround(s.ShiftSecs[at(side)][at(slot)]));
        }
        for (const BoxPenalty& p : s.pen.box[at(side)])
            if (p.server >= 0 && p.server < kRosterSlots) r1.BoxPenaltyBox[0][BoxFile::at(side, p.server)] = 1;
    }
    return box;
}

std::filesystem::path HkSaveGame(const std::filesystem::path& leagueDir, const RecordedGame& game,
                                 const SavedGameStart& start, const std::string& dateText) {
    if (game.game().state().GameEndedFlag) throw std::logic_error("a finished game is posted, not saved");
    auto box = boxOfGameInProgress(game.game(), start);
    std::vector<std::uint8_t> bytes = boxBytes(*box);
    std::vector<std::uint8_t> block = resumeBlock(start, game.inputs());
    bytes.insert(bytes.end(), block.begin(), block.end());
    std::filesystem::path path = leagueDir / savedGameFileName(game.game(), start, dateText);
    writeFileAtomic(path, bytes);
    return path;
}

// ---- Reading ------------------------------------------------------------------------

SavedGame readSavedGame(const std::filesystem::path& path) {
    SavedGame g;
    g.path = path;
    g.box = BoxRead(path);
    std::vector<std::uint8_t> bytes = readBytes(path);
    std::size_t boxSize = 4 * kBoxSlot;
    if (bytes.size() <= boxSize)
        throw FileError(fmt::format("{}: {} bytes, the four box records and a resume block need more than {}",
                                    path.string(), bytes.size(), boxSize));
    readResumeBlock(std::span<const std::uint8_t>(bytes).subspan(boxSize), path, g);
    return g;
}

std::vector<std::filesystem::path> savedGames(const std::filesystem::path& leagueDir) {
    std::vector<std::filesystem::path> out;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(leagueDir, ec)) {
        if (!entry.is_regular_file(ec)) continue;
        std::string ext = entry.path().extension().string();
        std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::toupper(c); });
        if (ext == kSavedGameExtension) out.push_back(entry.path());
    }
    std::sort(out.begin(), out.end());
    return out;
}

void ResumeGame(RecordedGame& game, const SavedGame& saved, const GameSession& session) {
    game.replay(saved.inputs);
    std::vector<std::uint8_t> now = boxBytes(*boxOfGameInProgress(game.game(), saved.start));
    std::vector<std::uint8_t> then = boxBytes(*saved.box);
    bool over = game.game().state().GameEndedFlag;
    if (now == then && !over) return;
    std::string name = saved.path.filename().string();
    if (teamsFingerprint(session) != saved.start.teamsFingerprint)
        throw ResumeMismatch(fmt::format(
            "The teams of the saved game \"{}\" have changed since it was saved (a game of theirs was posted, or "
            "a roster or the rules were edited), so it can't go on as it stood",
            name));
    throw ResumeMismatch(fmt::format(
        "The saved game \"{}\" doesn't play back to where it was saved: it was saved by a different edition of the "
        "program",
        name));
}

}  // namespace tallyrink
