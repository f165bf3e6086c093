#include "postgame/box_file.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <type_traits>

#include "league/files.h"
#include "postgame/padded_text.h"

namespace tallyrink {

namespace {

std::uint8_t byte(int v) { return static_cast<std::uint8_t>(std::clamp(v, 0, 255)); }
std::int16_t word(int v) { return static_cast<std::int16_t>(std::clamp(v, -32768, 32767)); }
std::uint8_t slotByte(int slot) { return slot == kNoSlot ? 0 : byte(slot + 1); }

std::string periodLabel(int period, int periods) {
    if (period <= periods) return std::to_string(period);
    return period == periods + 1 ? "OT" : fmt::format("OT{}", period - periods);
}

// "{}:{:02}" of the minutes and seconds.
std::string clockText(int seconds) {
    if (seconds < 0) return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
    std::array<char, 16> buf;
    char* end = std::to_chars(buf.data(), buf.data() + buf.size(), seconds / 60).ptr;
    *end++ = ':';
    *end++ = static_cast<char>('0' + seconds % 60 / 10);
    *end++ = static_cast<char>('0' + seconds % 10);
    return {buf.data(), end};
}

void appendNumber(std::string& out, int v) {
    std::array<char, 16> buf;
    out.append(buf.data(), std::to_chars(buf.data(), buf.data() + buf.size(), v).ptr);
}

std::string strengthText(const GoalSummary& g) {
    if (g.emptyNet) return "EN";
    if (g.strengthEdge > 0) return "PP";
    if (g.strengthEdge < 0) return "SH";
    return "EV";
}

const std::string& nameOf(const GameSession& s, int side, int slot) {
    static const std::string unknown = "(unknown)";
    if (slot == kNoSlot) return unknown;
    return s.side(side).DisplayName[static_cast<std::size_t>(slot)];
}

BoxLine boxLineOf(const StatLine& g) {
    BoxLine b;
    b.GP = g.GP;
    b.GS = g.GS;
    b.Goals = g.Goals;
    b.Assists = byte(g.Assists);
    b.PlusMinus = byte(g.PlusMinus + kPlusMinusBias);
    b.Pim = byte(g.Pim);
    b.Toi = word(g.Toi);
    b.ToiPP = word(g.ToiPP);
    b.ToiSH = word(g.ToiSH);
    b.Sog = byte(g.Sog);
    b.PPG = g.PPG;
    b.PPA = g.PPA;
    b.SHG = g.SHG;
    b.SHA = g.SHA;
    b.FaceoffsWon = byte(g.FaceoffsWon);
    b.FaceoffsLost = byte(g.FaceoffsLost);
    b.GWG = g.GWG;
    b.MissedShots = byte(g.MissedShots);
    b.PenaltyShotAttempts = g.PenaltyShotAttempts;
    b.PenaltyShotGoals = g.PenaltyShotGoals;
    b.Giveaways = byte(g.Giveaways);
    b.EmptyNetGoals = g.EmptyNetGoals;
    b.Hits = byte(g.Hits);
    b.Blocks = byte(g.Blocks);
    b.Takeaways = byte(g.Takeaways);
    b.GoalsAllowed = byte(g.GoalsAllowed);
    b.GoaliePenaltyShotsFaced = g.GoaliePenaltyShotsFaced;
    b.GoaliePenaltyShotGoals = g.GoaliePenaltyShotGoals;
    b.GoalieWins = g.GoalieWins;
    b.GoalieLosses = g.GoalieLosses;
    b.GoalieTies = g.GoalieTies;
    b.Saves = byte(g.Saves);
    b.Shutouts = g.Shutouts;
    b.GoalieOvertimeLosses = g.GoalieOvertimeLosses;
    return b;
}

template <std::size_t N, std::size_t M>
int fillText(std::array<FixedText<N>, M>& out, const std::vector<std::string>& lines) {
    std::size_t n = std::min(lines.size(), M);
    for (std::size_t i = 0; i < n; ++i) out[i].assign(lines[i]);
    return static_cast<int>(n);
}

void writeEvents(BoxRecord2& r2, const GameSession& session, const FinishedGame& game) {
    struct Event {
        int period, clock, side;
        std::string strength, kind, text;
    };
    std::vector<Event> events;
    for (const GoalSummary& g : game.goals)
        events.push_back({g.period, g.clock, g.side, strengthText(g), "GOAL", nameOf(session, g.side, g.scorer)});
    for (const PenaltySummary& p : game.penalties) {
        std::string text = nameOf(session, p.side, p.slot);
        text += ' ';
        appendNumber(text, p.minutes);
        text += " min ";
        text += p.name;
        events.push_back({p.period, p.clock, p.side, "", "PENALTY", std::move(text)});
    }
    std::stable_sort(events.begin(), events.end(), [](const Event& a, const Event& b) {
        return a.period != b.period ? a.period < b.period : a.clock > b.clock;
    });
    std::size_t n = std::min<std::size_t>(events.size(), kBoxEvents);
    r2.EventCount = static_cast<std::int16_t>(n);
    for (std::size_t i = 0; i < n; ++i) {
        const Event& e = events[i];
        r2.EventPeriod[i] = byte(e.period);
        r2.EventTime[i].assign(clockText(e.clock));
        r2.EventTeam[i].assign(game.side[static_cast<std::size_t>(e.side)].code);
        r2.EventStrength[i].assign(e.strength);
        r2.EventKind[i].assign(e.kind);
        if (i < kBoxEventTexts) r2.EventText[i].assign(e.text);
    }
}

}  // namespace

std::string boxFileName(std::size_t scoresRow) { return fmt::format("BOX{}.BOX", scoresRow); }

std::vector<std::string> scoringSummary(const GameSession& session, const FinishedGame& game) {
    std::vector<std::string> out;
    for (const GoalSummary& g : game.goals) {
        std::string helpers;
        for (int a : g.assists)
            if (a != kNoSlot) {
                if (!helpers.empty()) helpers += ", ";
                helpers += nameOf(session, g.side, a);
            }
        // "{:<3} {:>5} {:<3} {:<4} {} ({})"
        std::string line;
        appendLeft(line, periodLabel(g.period, game.periods), 3);
        line += ' ';
        appendRight(line, clockText(g.clock), 5);
        line += ' ';
        appendLeft(line, strengthText(g), 3);
        line += ' ';
        appendLeft(line, game.side[std::size_t(g.side)].code, 4);
        line += ' ';
        line += nameOf(session, g.side, g.scorer);
        if (helpers.empty()) {
            line += " (unassisted)";
        } else {
            line += " (";
            line += helpers;
            line += ')';
        }
        out.push_back(std::move(line));
    }
    return out;
}

std::vector<std::string> penaltySummary(const GameSession& session, const FinishedGame& game) {
    std::vector<std::string> out;
    for (const PenaltySummary& p : game.penalties) {
        // "{:<3} {:>5} {:<4} {} {} min {}"
        std::string line;
        appendLeft(line, periodLabel(p.period, game.periods), 3);
        line += ' ';
        appendRight(line, clockText(p.clock), 5);
        line += ' ';
        appendLeft(line, game.side[std::size_t(p.side)].code, 4);
        line += ' ';
        line += p.slot == kNoSlot ? std::string_view("Bench") : std::string_view(nameOf(session, p.side, p.slot));
        line += ' ';
        appendNumber(line, p.minutes);
        line += " min ";
        line += p.name;
        out.push_back(std::move(line));
    }
    return out;
}

std::vector<std::string> BoxFile::playLines() const {
    std::vector<std::string> out;
    int count = std::clamp<int>(plays[0].PlayLineCount, 0, 2 * kPlayLinesPerRecord);
    for (int i = 0; i < count; ++i) {
        const auto& rec = plays[static_cast<std::size_t>(i / kPlayLinesPerRecord)];
        out.push_back(rec.PlayLines[static_cast<std::size_t>(i % kPlayLinesPerRecord)].str());
    }
    return out;
}

std::vector<std::string> BoxFile::keptText() const {
    std::vector<std::string> out;
    int count = std::clamp<int>(r1.BoxTextCount, 0, kBoxTextLines);
    for (int i = 0; i < count; ++i) {
        const auto& raw = r1.BoxText[static_cast<std::size_t>(i)].raw;
        std::string line(raw.begin(), raw.end());
        line.erase(line.find_last_not_of(std::string_view(" \0", 2)) + 1);
        out.push_back(line);
    }
    return out;
}

std::unique_ptr<BoxFile> BoxWrite(const GameSession& session, const FinishedGame& game, const BoxFacts& facts) {
    auto box = std::make_unique<BoxFile>();
    BoxWrite(*box, session, game, facts);
    return box;
}

namespace {

// Zeroes the bytes of `r` from member `from` up to member `to` (the end of
// the record when null), `from` included and `to` not.
template <class R, class A, class B = char>
void zeroSpan(R& r, A& from, B* to = nullptr) {
    auto* base = reinterpret_cast<unsigned char*>(&r);
    auto* begin = reinterpret_cast<unsigned char*>(&from);
    auto* end = to != nullptr ? reinterpret_cast<unsigned char*>(to) : base + sizeof(R);
    std::memset(begin, 0, static_cast<std::size_t>(end - begin));
}

template <std::size_t N, std::size_t M>
void zeroLines(std::array<FixedText<N>, M>& lines, int count) {
    std::size_t n = static_cast<std::size_t>(std::clamp<int>(count, 0, static_cast<int>(M)));
    std::memset(static_cast<void*>(lines.data()), 0, n * sizeof(FixedText<N>));
}

}  // namespace

void blankBox(BoxFile& box) {
    static_assert(std::is_trivially_copyable_v<BoxFile> && std::is_standard_layout_v<BoxRecord1> &&
                  std::is_standard_layout_v<BoxRecord2> && std::is_standard_layout_v<BoxPlayRecord>);
    BoxRecord1& r1 = box.r1;
    zeroLines(r1.BoxText, r1.BoxTextCount);
    zeroSpan(r1, r1.BoxTeam, &r1.BoxText);
    zeroSpan(r1, r1.BoxTextCount);

    BoxRecord2& r2 = box.r2;
    int events = r2.EventCount;
    zeroLines(r2.ScoringText, r2.ScoringCount);
    zeroLines(r2.PenaltyText, r2.PenaltyCount);
    zeroLines(r2.EventTime, events);
    zeroLines(r2.EventTeam, events);
    zeroLines(r2.EventStrength, events);
    zeroLines(r2.EventKind, events);
    zeroLines(r2.EventText, events);
    r2.ScoringCount = 0;
    r2.PenaltyCount = 0;
    r2.EventCount = 0;
    r2.EventPeriod = {};
    zeroSpan(r2, r2.PeriodTable);

    int lines = box.plays[0].PlayLineCount;
    for (std::size_t k = 0; k < box.plays.size(); ++k) {
        BoxPlayRecord& rec = box.plays[k];
        zeroLines(rec.PlayLines, lines - static_cast<int>(k) * kPlayLinesPerRecord);
        rec.PlayLineCount = 0;
        zeroSpan(rec, rec.BoxStampC);
    }
}

void BoxWrite(BoxFile& boxFile, const GameSession& session, const FinishedGame& game, const BoxFacts& facts) {
    BoxFile* box = &boxFile;
    BoxRecord1& r1 = box->r1;
    BoxRecord2& r2 = box->r2;
    int winner = facts.winnerSide;
    for (int side : {kVisitor, kHome}) {
        auto i = static_cast<std::size_t>(side);
        const SideSummary& x = game.side[i];
        const SideTables& t = session.side(side);
        r1.BoxTeam[i] = byte(x.team);
        r1.BoxScore[i] = byte(game.finalScore(side));
        for (std::size_t p = 0; p < kPeriodSlots; ++p) {
            r1.BoxPeriodGoals[i][p] = byte(x.goalsByPeriod[p]);
            r2.PeriodTable[0][i * kPeriodSlots + p] = byte(x.shotsByPeriod[p]);
            r2.PeriodTable[1][i * kPeriodSlots + p] = byte(x.goalsByPeriod[p]);
        }
        r1.BoxTeamCode[i].assign(x.code);
        r1.BoxShots[i] = byte(x.shots);
        r1.BoxPowerPlays[i] = byte(x.powerPlays);
        r1.BoxPowerPlayGoals[i] = byte(x.powerPlayGoals);
        r1.BoxTimeOfAttack[i] = word(x.timeOfAttack);
        r1.BoxShootoutScore[i] = byte(x.shootoutScore);
        r1.BoxChances[i] = byte(x.chancesFor);
        r1.BoxStarterGoalie[i] = slotByte(x.startingGoalie);
        r1.BoxGoalieOfShutout[i] = slotByte(facts.shutoutGoalie[i]);
        const TeamRecord& tr = t.team;
        const std::array<int, 11> types{tr.GoalsFiveOnFive[1],  tr.GoalsFiveOnFour[1],  tr.GoalsFiveOnThree[1],
                                        tr.GoalsFourOnFour[1],  tr.GoalsFourOnThree[1], tr.GoalsThreeOnThree[1],
                                        tr.GoalsThreeOnFour[1], tr.GoalsThreeOnFive[1], tr.GoalsFourOnFive[1],
                                        tr.GoalsEmptyNet[1],    tr.GoalsPenaltyShot[1]};
        for (std::size_t k = 0; k < types.size(); ++k) r1.BoxGoalTypes[i * types.size() + k] = byte(types[k]);
        int assists = 0, faceoffs = 0, hits = 0, blocks = 0, missed = 0, dressed = 0;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t at = BoxFile::at(side, slot);
            const PlayerRecord& p = t.player(slot);
            if (!t.onTeam(slot)) continue;
            const StatLine& g = statLine(p, StatLineIndex::Game);
            r1.BoxPlayerId[at] = p.PlayerId;
            r1.BoxLines[at] = boxLineOf(g);
            r1.BoxToi[at] = g.Toi;
            r1.BoxToiPP[at] = g.ToiPP;
            r1.BoxToiSH[at] = g.ToiSH;
            r1.BoxLineTime[at] = g.Shifts;
            r1.BoxDressedToday[at] = byte(t.DressedToday[std::size_t(slot)]);
            // Dressed for the game: the box score lists him even without ice time.
            bool suited = p.InactiveFlag == 0 && t.DressedToday[std::size_t(slot)] == 0 && p.InjuryReturnMonth == 0;
            r1.BoxSlotFlag[at] = suited || g.GP > 0 ? 1 : 0;
            r1.BoxInjuryType[at] = p.InjuryType;
            r1.BoxInjuredInGame[at] = byte(x.injuredInGame[std::size_t(slot)]);
            r1.BoxShootoutGoalsOf[at] = byte(x.shootoutGoalsOf[std::size_t(slot)]);
            r1.BoxPenaltyShots[at] = g.PenaltyShotAttempts;
            r1.BoxChancesOf[at] = byte(p.ScoringChances[1]);
            r1.BoxPenaltyCounts[0][at] = byte(p.Minors[1]);
            r1.BoxPenaltyCounts[1][at] = byte(p.Majors[1]);
            r1.BoxPenaltyCounts[2][at] = p.Misconducts[1];
            r1.BoxSuspendedInGame[0][at] = x.newSuspension[std::size_t(slot)] ? 1 : 0;
            assists += g.Assists;
            faceoffs += g.FaceoffsWon;
            hits += g.Hits;
            blocks += g.Blocks;
            missed += g.MissedShots;
            if (g.GP > 0) ++dressed;
        }
        r1.BoxAssists[i] = byte(assists);
        r1.BoxFaceoffsWon[i] = byte(faceoffs);
        r1.BoxHits[i] = byte(hits);
        r1.BoxBlocks[i] = byte(blocks);
        r1.BoxMissedShots[i] = byte(missed);
        r1.BoxDressed[i] = byte(dressed);
    }
    r1.BoxPeriod = byte(game.lastPeriod);
    r1.BoxClock = game.clock;
    r1.BoxZone.assign("GAMEOVER");
    r1.BoxIsScheduled.assign(facts.scheduleRow > 0 ? "Y" : "N");
    r1.ScheduleRow = word(static_cast<int>(facts.scheduleRow));
    r1.BoxGameType.assign(game.exhibition ? "E" : "L");
    r1.BoxWinner = winner < 0 ? 0 : byte(winner + 1);
    r1.BoxLoser = winner < 0 ? 0 : byte(2 - winner);
    r1.BoxDay = byte(game.day);
    r1.BoxMonth = byte(game.calendarMonth > 0 ? seasonMonth(game.calendarMonth) : 0);
    r1.BoxYear = word(game.year);
    r1.BoxPlayoffFlag = game.playoff ? 1 : 0;
    r1.BoxRink.assign(session.side(kHome).team.Arena.str());
    r1.BoxHomeFlag.assign(game.neutralIce ? "N" : "Y");
    r1.BoxStamp1 = kBoxStamp;
    r1.BoxStampA = kBoxStamp;
    r1.BoxVersion = kBoxVersion;
    r1.BoxOvertimePlayed = game.overtimePlayed ? 1 : 0;
    r1.BoxShootoutRounds = byte(game.shootoutRounds);
    r1.BoxShootoutState = game.wentToShootout() ? 1 : 0;
    fillText(r1.BoxShootoutText, game.shootoutLines);
    auto decision = [&](int side, int slot) -> std::uint8_t {
        return side < 0 || slot == kNoSlot ? 0 : byte(static_cast<int>(BoxFile::at(side, slot)) + 1);
    };
    if (winner >= 0) {
        r1.BoxWinningGoalie = decision(winner, game.winningGoalie);
        r1.BoxLosingGoalie = decision(1 - winner, game.losingGoalie);
    }
    r1.BoxGameWinningScorer = decision(facts.gameWinningSide, facts.gameWinningSlot);
    for (int star = 0; star < 3; ++star) {
        auto [side, slot] = facts.stars[std::size_t(star)];
        if (side >= 0 && slot != kNoSlot) r1.BoxStars[BoxFile::at(side, slot)] = byte(star + 1);
    }
    r1.BoxLeagueStamp = word(facts.leagueStamp);
    r1.BoxTextCount = static_cast<std::int16_t>(fillText(r1.BoxText, facts.boxText));

    r2.ScoringCount = byte(fillText(r2.ScoringText, facts.scoringText));
    r2.PenaltyCount = byte(fillText(r2.PenaltyText, facts.penaltyText));
    writeEvents(r2, session, game);
    r2.BoxStampB = kBoxStamp;

    std::size_t lines = std::min<std::size_t>(game.playLines.size(), 2 * kPlayLinesPerRecord);
    for (std::size_t k = 0; k < lines; ++k)
        box->plays[k / kPlayLinesPerRecord].PlayLines[k % kPlayLinesPerRecord].assign(game.playLines[k]);
    box->plays[0].PlayLineCount = static_cast<std::int16_t>(lines);
    for (int side : {kVisitor, kHome}) {
        BoxPlayRecord& rec = box->plays[static_cast<std::size_t>(side)];
        rec.BoxStampC = kBoxStamp;
        for (int slot = 0; slot < kRosterSlots; ++slot)
            rec.BoxEnergyStart[std::size_t(slot)] = session.side(side).MaxEnergy[std::size_t(slot)];
    }
}

void putBoxBytes(const BoxFile& box, std::uint8_t* out) {
    // Each record straight into its slot of the image.
    constexpr std::size_t r1 = codec::slotWidth<BoxRecord1>(), r2 = codec::slotWidth<BoxRecord2>(),
                          play = codec::slotWidth<BoxPlayRecord>();
    static_assert(r1 + r2 + 2 * play == kBoxFileBytes);
    codec::putSlot(box.r1, out);
    codec::putSlot(box.r2, out + r1);
    codec::putSlot(box.plays[0], out + r1 + r2);
    codec::putSlot(box.plays[1], out + r1 + r2 + play);
}

namespace {

using Skip = std::pair<std::size_t, std::size_t>;

// Where a list of lines lies in its record's bytes.
template <class R>
Skip listSpan(std::string_view name) {
    const codec::FieldInfo* f = codec::findField<R>(name);
    return {f->offset, f->offset + f->width};
}

struct BoxLists {
    std::array<Skip, 1> r1{listSpan<BoxRecord1>("BoxText")};
    std::array<Skip, 7> r2{listSpan<BoxRecord2>("ScoringText"),   listSpan<BoxRecord2>("PenaltyText"),
                           listSpan<BoxRecord2>("EventTime"),     listSpan<BoxRecord2>("EventTeam"),
                           listSpan<BoxRecord2>("EventStrength"), listSpan<BoxRecord2>("EventKind"),
                           listSpan<BoxRecord2>("EventText")};
    std::array<Skip, 1> play{listSpan<BoxPlayRecord>("PlayLines")};
};

const BoxLists& boxLists() {
    static const BoxLists lists;
    return lists;
}

constexpr std::size_t kR1 = codec::slotWidth<BoxRecord1>(), kR2 = codec::slotWidth<BoxRecord2>(),
                      kPlay = codec::slotWidth<BoxPlayRecord>();

template <class R>
void putOutside(const R& r, std::uint8_t* out, std::span<const Skip> skip) {
    codec::encodeOutside(r, out, skip);
    if constexpr (codec::tailWidth<R>() > 0)
        std::memcpy(out + codec::Layout<R>::size, r.SlotTail.data(), codec::tailWidth<R>());
}

template <std::size_t N, std::size_t M>
std::span<const std::uint8_t> linesInUse(const std::array<FixedText<N>, M>& lines, int count) {
    auto n = static_cast<std::size_t>(std::clamp<int>(count, 0, static_cast<int>(M)));
    return {reinterpret_cast<const std::uint8_t*>(lines.data()), n * N};
}

}  // namespace

BoxImage::BoxImage() : bytes_(std::make_unique<std::uint8_t[]>(kBoxFileBytes)) {
    const BoxLists& l = boxLists();
    auto list = [](std::size_t record, const Skip& s, std::size_t lineSize) {
        return List{record + s.first, lineSize, 0};
    };
    lists_ = {list(0, l.r1[0], 150),          list(kR1, l.r2[0], 70),
              list(kR1, l.r2[1], 70),         list(kR1, l.r2[2], 5),
              list(kR1, l.r2[3], 3),          list(kR1, l.r2[4], 2),
              list(kR1, l.r2[5], 10),         list(kR1, l.r2[6], 60),
              list(kR1 + kR2, l.play[0], 80), list(kR1 + kR2 + kPlay, l.play[0], 80)};
}

std::span<const std::uint8_t> BoxImage::put(const BoxFile& box) {
    static_assert(kR1 + kR2 + 2 * kPlay == kBoxFileBytes);
    const BoxLists& l = boxLists();
    std::uint8_t* out = bytes_.get();
    putOutside(box.r1, out, l.r1);
    putOutside(box.r2, out + kR1, l.r2);
    putOutside(box.plays[0], out + kR1 + kR2, l.play);
    putOutside(box.plays[1], out + kR1 + kR2 + kPlay, l.play);
    const BoxRecord2& r2 = box.r2;
    int plays = box.plays[0].PlayLineCount;
    const std::array<std::span<const std::uint8_t>, 10> inUse{
        linesInUse(box.r1.BoxText, box.r1.BoxTextCount),
        linesInUse(r2.ScoringText, r2.ScoringCount),
        linesInUse(r2.PenaltyText, r2.PenaltyCount),
        linesInUse(r2.EventTime, r2.EventCount),
        linesInUse(r2.EventTeam, r2.EventCount),
        linesInUse(r2.EventStrength, r2.EventCount),
        linesInUse(r2.EventKind, r2.EventCount),
        linesInUse(r2.EventText, r2.EventCount),
        linesInUse(box.plays[0].PlayLines, plays),
        linesInUse(box.plays[1].PlayLines, plays - kPlayLinesPerRecord)};
    for (std::size_t k = 0; k < lists_.size(); ++k) {
        List& list = lists_[k];
        std::size_t n = inUse[k].size();
        if (n > 0) std::memcpy(out + list.at, inUse[k].data(), n);
        if (list.used > n) std::memset(out + list.at + n, 0, list.used - n);
        list.used = n;
    }
    return {out, kBoxFileBytes};
}

std::vector<std::uint8_t> boxBytes(const BoxFile& box) {
    std::vector<std::uint8_t> out(kBoxFileBytes);
    putBoxBytes(box, out.data());
    return out;
}

std::unique_ptr<BoxFile> BoxRead(const std::filesystem::path& path) {
    auto bytes = readBytes(path);
    if (bytes.size() < codec::Layout<BoxRecord1>::size)
        throw FileError(fmt::format("{} is not a box score: {} bytes, a first record needs {}", path.string(),
                                    bytes.size(), codec::Layout<BoxRecord1>::size));
    auto box = std::make_unique<BoxFile>();
    std::span<const std::uint8_t> all(bytes);
    auto slot = [&](std::size_t r) {
        std::size_t from = std::min(all.size(), r * kBoxSlot);
        return all.subspan(from, std::min(kBoxSlot, all.size() - from));
    };
    box->r1 = codec::fromSlot<BoxRecord1>(slot(0));
    box->r2 = codec::fromSlot<BoxRecord2>(slot(1));
    box->plays[0] = codec::fromSlot<BoxPlayRecord>(slot(2));
    box->plays[1] = codec::fromSlot<BoxPlayRecord>(slot(3));
    return box;
}

}  // namespace tallyrink
