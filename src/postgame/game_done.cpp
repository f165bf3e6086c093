#include "postgame/game_done.h"

#include <ctime>

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "league/file_images.h"
#include "league/files.h"
#include "league/names.h"
#include "league/schedule.h"
#include "postgame/box_text.h"
#include "postgame/record_book.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

constexpr std::size_t kPlayerSlot = 1500;
constexpr std::size_t kTeamSlot = 1500;
constexpr std::size_t kGameSlot = 200;

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == kVisitor ? kHome : kVisitor; }

template <class T>
void addTo(T& field, long long v) {
    // Most of a man's game line is zero, and a zero moves no total.
    if (v == 0) return;
    long long sum = static_cast<long long>(field) + v;
    sum = std::clamp<long long>(sum, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    field = static_cast<T>(sum);
}

template <codec::Record R>
FileChange slotChange(const std::string& name, std::size_t slot, std::size_t r, const R& rec) {
    // The rest of the slot stays as it is on disk.
    return {name, false, static_cast<std::uint64_t>(r - 1) * slot, codec::recordBytes(rec)};
}

// A player's record change, written into a kept room when there is one:
// every byte of the record is written over.
FileChange playerChange(std::vector<std::vector<std::uint8_t>>* rooms, const PlayerRecord& p) {
    std::vector<std::uint8_t> bytes;
    if (rooms && !rooms->empty()) {
        bytes = std::move(rooms->back());
        rooms->pop_back();
    }
    bytes.resize(codec::Layout<PlayerRecord>::size);
    codec::encode(p, bytes.data());
    return {std::string(kPlayerFile), false, static_cast<std::uint64_t>(p.PlayerId - 1) * kPlayerSlot,
            std::move(bytes)};
}

FileChange appendLines(FileImages* images, const fs::path& file, const std::string& name,
                       const std::vector<std::string>& lines) {
    std::string text;
    for (const auto& l : lines) text += l + "\n";
    return {name, false, fileLengthVia(images, file), std::vector<std::uint8_t>(text.begin(), text.end())};
}

std::string scheduleName(const RulesRecord& rules) {
    std::string n = rules.ScheduleFile.str();
    return n.empty() ? std::string(kDefaultScheduleFile) : n;
}

bool playedInGame(const PlayerRecord& p) { return statLine(p, StatLineIndex::Game).Toi > 0; }

// Penalty minutes of the side's players in this game.
int teamPim(const SideTables& t) {
    int pim = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (t.onTeam(slot)) pim += statLine(t.player(slot), StatLineIndex::Game).Pim;
    return pim;
}

// A whole-file table: the run's kept record while the image is as the
// run's last posting left it (the record is handed over, and kept again
// once the posting stands), else decoded from the file.
template <codec::Record R>
std::unique_ptr<R> readTable(FileImages* images, const fs::path& file, KeptTable<R>* kept) {
    if (images && kept && kept->record && images->stamp(file) == kept->stamp) return std::move(kept->record);
    if (kept) kept->record.reset();
    return std::make_unique<R>(readRecordVia<R>(images, file, kBoxSlot, 1));
}

// The table's whole-file bytes, written into the kept room when there is one.
template <codec::Record R>
std::vector<std::uint8_t> tableBytes(const R& record, KeptTable<R>* kept) {
    if (!kept) return codec::toSlot(record);
    std::vector<std::uint8_t> bytes = std::move(kept->spare);
    // Every byte of the slot is written over: its old bytes needn't be cleared.
    bytes.resize(codec::slotWidth<R>());
    codec::putSlot(record, bytes.data());
    return bytes;
}

template <class R>
void keepTable(KeptTable<R>& kept, FileImages& images, const fs::path& file, std::vector<std::uint8_t>&& bytes,
               std::unique_ptr<R> record) {
    kept.stamp = images.stamp(file);
    kept.record = std::move(record);
    kept.spare = std::move(bytes);
}

std::string monthAbbrev(int calendarMonth) { return std::string(monthName(calendarMonth)).substr(0, 3); }

// ---- Post-game injuries ----------------------------------------------------------

struct InjuryContext {
    const GameSession& session;
    const FinishedGame& game;
    Random& rng;
    std::string dayText;  // injuries told so far this game
};

int eraGamesFor(const GameSession& s, const PlayerRecord& p, const TeamRecord& team, bool college) {
    const EraRecord& era = s.eraRow(p.PlayerYear, team.TeamYear);
    int games = college ? era.CollegeGames : era.Games;
    return games > 0 ? games : 82;
}

int missedRealOf(const InjuryContext& c, int side, const PlayerRecord& p, int durability) {
    const SideTables& t = c.session.side(side);
    bool college = t.team.TeamType.str() == "C";
    double s = std::max(t.SeasonGames, 10);
    int eraGames = eraGamesFor(c.session, p, t.team, college);
    double r = s / eraGames;
    int universal = c.session.league().rules.UniversalDurabilityList;
    if (universal != 0) return static_cast<int>(roundHalfEven((10 - universal) * eraGames * r / 10));
    if (durability >= 0) return static_cast<int>(roundHalfEven((10 - durability) * eraGames * r / 10));
    return static_cast<int>(roundHalfEven((eraGames - statLine(p, StatLineIndex::Real).GP) * r));
}

int teamGames(const TeamRecord& t) { return std::max(1, t.Wins + t.Losses + t.Ties + t.OvertimeLosses); }

bool drawsInjury(InjuryContext& c, int side, const PlayerRecord& p) {
    Random& rng = c.rng;
    int missedReal = missedRealOf(c, side, p, -1);
    int behind = missedReal - (teamGames(c.session.side(side).team) - statLine(p, StatLineIndex::Replay).GP);
    if (behind < rng.rand(5)) return false;
    if (rng.rand(300) == 1) return true;
    if (rng.rand(100) == 1 && rng.rand(80) > 40) return true;
    if (rng.rand(100) == 1 && behind > (0.1 + 0.3 * rng.rnd()) * missedReal) return true;
    if (rng.rand(100) == 1 && behind > (0.3 + 0.4 * rng.rnd()) * missedReal) return true;
    return rng.rand(10) == 1 && behind > (0.6 + 0.4 * rng.rnd()) * missedReal;
}

// Games the player will miss; 0 when he isn't lost after all.
int injuryLength(InjuryContext& c, int side, int slot) {
    const SideTables& t = c.session.side(side);
    const PlayerRecord& p = t.player(slot);
    Random& rng = c.rng;
    bool goalie = isGoalie(p);
    int behind =
        missedRealOf(c, side, p, p.RatingDurability) - teamGames(t.team) + statLine(p, StatLineIndex::Replay).GP;
    behind = std::clamp(behind, 0, goalie ? 15 : 50);
    if (behind <= 0) return 0;
    int g = static_cast<int>(roundHalfEven((goalie ? 1.5 : 2.5) * behind)) + rng.rand(5);
    if (g < 1 || g > 3) {
        int h = static_cast<int>(g * 0.2);
        if (h >= 1) g = g + rng.rand(h) - rng.rand(h);
    }
    g = std::min(g, static_cast<int>(1.8 * behind));
    if (teamGames(t.team) > 20 + rng.rand(40) || rng.rand(5) == 1) g = static_cast<int>(roundHalfEven(g * rng.rnd()));
    g = std::max(g, 1);
    // A team that can't spare him keeps him.
    int goalies = 0, defense = 0, forwards = 0;
    for (int s = 0; s < kRosterSlots; ++s) {
        const PlayerRecord& q = t.player(s);
        if (s == slot || !t.onTeam(s) || q.InjuryReturnMonth != 0) continue;
        if (isGoalie(q))
            ++goalies;
        else if (q.PositionFlags[3] == 1)
            ++defense;
        else
            ++forwards;
    }
    bool isDefense = !goalie && p.PositionFlags[3] == 1;
    if ((goalie && goalies < 2) || (isDefense && defense < 6) || (!goalie && !isDefense && forwards < 12)) return 0;
    return g;
}

// Sets the return date of a man out for `g` games after this one, names his
// injury and tells it in the day's injury text and the injury history.
void recordInjury(GameSession& session, InjuryContext& c, int side, int slot, int g, PostingResult& res,
                  std::vector<std::string>& history) {
    const FinishedGame& game = c.game;
    Random& rng = c.rng;
    SideTables& t = session.side(side);
    PlayerRecord& p = t.player(slot);
    int month = seasonMonth(game.calendarMonth) + g / 30;
    int day = game.day + g % 30;
    if (day > 28) {
        day = 1;
        ++month;
    }
    if (month > 12) month -= 12;
    p.InjuryReturnMonth = static_cast<std::uint8_t>(month);
    p.InjuryReturnDay = static_cast<std::uint8_t>(day);
    int type = rng.rand(14);
    if (rng.rand(10) == 1) type = 50 + rng.rand(10);
    if (g > 20 + rng.rand(20)) type = 79 + rng.rand(22);
    if (p.InjuryType == 0) p.InjuryType = static_cast<std::uint8_t>(type);
    std::string back = fmt::format("{} {}", monthAbbrev(calendarMonth(month)), day);
    std::string text = fmt::format("{} {} out until {} ({})", t.team.Abbrev.str(), t.DisplayName[at(slot)], back,
                                   injuryName(p.InjuryType));
    c.dayText += text;
    res.injuries.push_back(text);
    history.push_back(fmt::format("{} {},{},{},{},{},{}", monthAbbrev(game.calendarMonth), game.day,
                                  t.team.Abbrev.str(), positionCode(p), t.DisplayName[at(slot)], back,
                                  injuryName(p.InjuryType)));
}

void postGameInjuries(GameSession& session, FinishedGame& game, Random& rng, std::array<int, 2> injuredCount,
                      PostingResult& res, std::vector<std::string>& history) {
    const RulesRecord& rules = session.league().rules;
    if (game.exhibition) return;
    InjuryContext c{session, game, rng, {}};
    // The men play put out past this game, first: the engine has judged how
    // long. They can't be drawn again below.
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session.side(side);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const SideSummary& x = game.side[at(side)];
            if (!t.onTeam(slot) || x.injuredInGame[at(slot)] != kHurtInGame || x.injuryGames[at(slot)] <= 0) continue;
            if (t.player(slot).InjuryReturnMonth != 0) continue;
            if (rules.OneGameInjuryLimitCheck == 1) {
                // The league lets no injury outlast the game it happened in.
                res.injuries.push_back(fmt::format("{} {} -game", t.team.Abbrev.str(), t.DisplayName[at(slot)]));
                continue;
            }
            recordInjury(session, c, side, slot, x.injuryGames[at(slot)], res, history);
            ++injuredCount[at(side)];
        }
    }
    if (rng.rand(3) != 1) return;
    if (rules.InjuryCheck != 1 || rules.OneGameInjuryLimitCheck == 1) return;
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session.side(side);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            PlayerRecord& p = t.player(slot);
            auto& hurt = game.side[at(side)].injuredInGame[at(slot)];
            if (!t.onTeam(slot) || hurt > 0 || p.InjuryReturnMonth != 0 || !playedInGame(p)) continue;
            if (injuredCount[at(side)] >= rng.rand(7) + 3) continue;
            if (!(rng.rand(10) == 1 || c.dayText.size() < 10)) continue;
            if (!drawsInjury(c, side, p)) continue;
            int g = injuryLength(c, side, slot);
            if (g <= 0) continue;
            hurt = kHurtInGame;
            ++injuredCount[at(side)];
            recordInjury(session, c, side, slot, g, res, history);
        }
    }
}

// ---- Players ---------------------------------------------------------------------

void raiseHighs(StatLine& h, const StatLine& g) {
    auto up = [](auto& high, auto v) {
        if (v > high) high = v;
    };
    up(h.Shifts, g.Shifts);
    up(h.Goals, g.Goals);
    up(h.Assists, g.Assists);
    up(h.Hits, g.Hits);
    up(h.MissedShots, g.MissedShots);
    up(h.Blocks, g.Blocks);
    up(h.Pim, g.Pim);
    up(h.PPG, g.PPG);
    up(h.Giveaways, g.Giveaways);
    up(h.Takeaways, g.Takeaways);
    up(h.Sog, g.Sog);
    up(h.FaceoffsWon, g.FaceoffsWon);
    up(h.FaceoffsLost, g.FaceoffsLost);
    up(h.GoalsAllowed, g.GoalsAllowed);
    up(h.Saves, g.Saves);
    up(h.Toi, static_cast<std::int32_t>(roundHalfEven(g.Toi / 60.0)));
}

void addHome(StatLine& home, const StatLine& g) {
    if (g.Toi > 0) addTo(home.GP, 1);
    addTo(home.Toi, g.Toi);
    addTo(home.Sog, g.Sog);
    addTo(home.Goals, g.Goals);
    addTo(home.Assists, g.Assists);
    addTo(home.Takeaways, g.Takeaways);
    addTo(home.Blocks, g.Blocks);
    addTo(home.Hits, g.Hits);
    addTo(home.Pim, g.Pim);
    addTo(home.PlusMinus, g.PlusMinus);
    addTo(home.GoalsAllowed, g.GoalsAllowed);
    addTo(home.Saves, g.Saves);
}

// The fields a team and its opponents count alike.
void addShared(TeamStatLine& t, const StatLine& g) {
    addTo(t.Goals, g.Goals);
    addTo(t.Assists, g.Assists);
    addTo(t.Pim, g.Pim);
    addTo(t.Toi, g.Toi);
    addTo(t.ToiPP, g.ToiPP);
    addTo(t.ToiSH, g.ToiSH);
    addTo(t.Shifts, g.Shifts);
    addTo(t.Sog, g.Sog);
    addTo(t.PPG, g.PPG);
    addTo(t.PPA, g.PPA);
    addTo(t.SHG, g.SHG);
    addTo(t.SHA, g.SHA);
    addTo(t.FaceoffsWon, g.FaceoffsWon);
    addTo(t.FaceoffsLost, g.FaceoffsLost);
    addTo(t.GWG, g.GWG);
    addTo(t.MissedShots, g.MissedShots);
    addTo(t.PenaltyShotAttempts, g.PenaltyShotAttempts);
    addTo(t.PenaltyShotGoals, g.PenaltyShotGoals);
    addTo(t.Giveaways, g.Giveaways);
    addTo(t.EmptyNetGoals, g.EmptyNetGoals);
    addTo(t.Hits, g.Hits);
    addTo(t.Blocks, g.Blocks);
    addTo(t.Takeaways, g.Takeaways);
}

// The goalie who alone of his side played, or kNoSlot.
int loneGoalie(const SideTables& t) {
    int found = kNoSlot;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        const PlayerRecord& p = t.player(slot);
        if (!t.onTeam(slot) || !isGoalie(p) || !playedInGame(p)) continue;
        if (found != kNoSlot) return kNoSlot;
        found = slot;
    }
    return found;
}

struct PlayerPostContext {
    const FinishedGame& game;
    bool playoff;
    int winner;  // -1 tie
    std::pair<int, int> gwg;
    std::array<int, 2> shutoutGoalie{kNoSlot, kNoSlot};
    std::array<int, 2> teamAssists{};
};

void postPlayer(GameSession& session, int side, int slot, PlayerPostContext& c) {
    SideTables& t = session.side(side);
    PlayerRecord& p = t.player(slot);
    StatLine& g = statLine(p, StatLineIndex::Game);
    StatLine& r = statLine(p, StatLineIndex::Replay);
    const FinishedGame& game = c.game;
    const SideSummary& own = game.side[at(side)];
    if (g.Toi > 0) g.GP = 1;

    c.teamAssists[at(side)] += g.Assists;
    p.LastGameGoals = g.Goals;
    p.LastGameAssists = static_cast<std::uint8_t>(std::clamp<int>(g.Assists, 0, 255));
    p.LastGamePim = static_cast<std::uint8_t>(std::clamp<int>(g.Pim, 0, 255));
    p.LastGameGoalsAllowed = static_cast<std::uint8_t>(std::clamp<int>(g.GoalsAllowed, 0, 255));
    p.LastGameSaves = static_cast<std::uint8_t>(std::clamp<int>(g.Saves, 0, 255));
    p.LastGameWon = isGoalie(p) && g.Toi >= 50 * 60 && g.Saves > 15 && g.GoalsAllowed == 0 && c.winner == side ? 1 : 0;
    p.LastOpponent.assign(game.side[at(other(side))].city);
    if (c.winner == side && c.gwg == std::pair{side, slot} && !game.wentToShootout()) {
        addTo(r.GWG, 1);
        g.GWG = 1;
    }
    addTo(p.ShootoutGoals, own.shootoutGoalsOf[at(slot)]);
    if (g.GP >= 1) {
        p.GoalStreak = g.Goals >= 1 ? static_cast<std::uint8_t>(std::min(p.GoalStreak + 1, 255)) : 0;
        p.AssistStreak = g.Assists >= 1 ? static_cast<std::uint8_t>(std::min(p.AssistStreak + 1, 255)) : 0;
        p.PointStreak = g.Goals + g.Assists >= 1 ? static_cast<std::uint8_t>(std::min(p.PointStreak + 1, 255)) : 0;
    }
    p.ConsecutiveGames = g.GP == 1 ? static_cast<std::uint8_t>(std::min(p.ConsecutiveGames + 1, 255)) : 0;
    if (p.SuspensionGamesLeft > 0 && !own.newSuspension[at(slot)]) --p.SuspensionGamesLeft;
    int month = seasonMonth(game.calendarMonth);
    if (p.InjuryReturnMonth != 0 && own.injuredInGame[at(slot)] == 0 &&
        (p.InjuryReturnMonth < month || (p.InjuryReturnMonth == month && p.InjuryReturnDay <= game.day))) {
        p.InjuryReturnMonth = 0;
        p.InjuryReturnDay = 0;
        p.InactiveFlag = 0;
    }
    if (!t.onTeam(slot)) return;

    // Games played in a row: a rested goalie starts afresh, so only a man
    // who starts game after game tires (the shot model reads it).
    if (!c.playoff) p.RosterGames[0] = g.GP >= 1 ? static_cast<std::int16_t>(std::min(p.RosterGames[0] + 1, 32767)) : 0;
    if (g.GS == 1) addTo(r.GS, 1);
    if (g.Toi > 0) addTo(r.GP, 1);
    addTo(r.Toi, g.Toi);
    addTo(r.ToiSH, g.ToiSH);
    addTo(r.ToiPP, g.ToiPP);
    if (game.side[at(other(side))].score == 0 && c.shutoutGoalie[at(side)] == slot) {
        addTo(r.Shutouts, 1);
        g.Shutouts = 1;
    }
    if (c.winner == side && slot == game.winningGoalie) {
        addTo(r.GoalieWins, 1);
        g.GoalieWins = 1;
    } else if (c.winner == other(side) && slot == game.losingGoalie) {
        if (game.overtimePlayed) {
            addTo(r.GoalieOvertimeLosses, 1);
            g.GoalieOvertimeLosses = 1;
        } else {
            addTo(r.GoalieLosses, 1);
            g.GoalieLosses = 1;
        }
    } else if (c.winner < 0 && slot == own.startingGoalie) {
        addTo(r.GoalieTies, 1);
        g.GoalieTies = 1;
    }
    p.HighPointsGame = static_cast<std::uint8_t>(std::max<int>(p.HighPointsGame, std::min(g.Goals + g.Assists, 255)));
    raiseHighs(statLine(p, StatLineIndex::Highs), g);
    if (side == kHome && !game.neutralIce) addHome(statLine(p, StatLineIndex::ReplayHome), g);

    TeamRecord& team = t.team;
    TeamRecord& opponent = session.side(other(side)).team;
    addTo(team.Majors, p.Majors[1]);
    addTo(team.Minors, p.Minors[1]);
    addTo(team.Misconducts, p.Misconducts[1]);
    addTo(team.GameMisconducts, p.GameMisconducts[1]);
    addTo(team.FightsCount[0], p.Fights[2]);
    addShared(team.TeamFor[0], g);
    addShared(team.TeamFor[1], g);
    addShared(opponent.TeamAgainst[0], g);
    addShared(opponent.TeamAgainst[1], g);
}

// ---- Three stars, leaders, top single games ---------------------------------------

double starScore(const PlayerRecord& p, bool won, int opponentGoals) {
    const StatLine& g = statLine(p, StatLineIndex::Game);
    if (g.Toi <= 0) return -999;
    double s = 2.0 * g.Goals + 0.75 * g.Assists - 0.1 * g.Pim + (won ? 0.75 : 0) + 0.1 * g.Saves - 0.9 * g.GoalsAllowed;
    if (opponentGoals == 0) s += (g.Saves > 10) + (g.Saves > 15) + (g.Saves > 20);
    if (won && g.Saves > 20) s += 0.5;
    return s;
}

std::string starText(const GameSession& session, int side, int slot) {
    const SideTables& t = session.side(side);
    const StatLine& g = statLine(t.player(slot), StatLineIndex::Game);
    std::string who = fmt::format("{} {}", t.DisplayName[at(slot)], t.team.Abbrev.str());
    if (isGoalie(t.player(slot))) return fmt::format("{} {} saves", who, g.Saves);
    if (g.Goals > 0 && g.Assists > 0) return fmt::format("{} {} G, {} A", who, g.Goals, g.Assists);
    if (g.Goals > 0) return fmt::format("{} {} G", who, g.Goals);
    return fmt::format("{} {} Pt", who, g.Goals + g.Assists);
}

struct LeaderValue {
    bool counts;
    int value;
};

LeaderValue leaderValue(int category, const PlayerRecord& p, int teamGamesPlayed) {
    const StatLine& r = statLine(p, StatLineIndex::Replay);
    switch (category) {
        case 0:
            return {true, r.Goals + r.Assists};
        case 1:
            return {true, r.Goals};
        case 2:
            return {true, r.Assists};
        case 3:
            return {true, r.GP >= 0.7 * teamGamesPlayed ? r.PlusMinus : -99};
        case 4: {
            int against = r.Saves + r.GoalsAllowed;
            bool qualifies = r.GP >= 0.4 * teamGamesPlayed && against >= 5 * r.GP && against > 0;
            return {isGoalie(p), qualifies ? static_cast<int>(roundHalfEven(10000.0 * r.Saves / against)) : 0};
        }
        case 5:
            return {isGoalie(p), r.Shutouts};
        case 6:
            return {true, r.Pim};
        case 7:
            return {true, p.Fights[1]};
        default:
            return {false, 0};
    }
}

int top40Value(int category, const PlayerRecord& p) {
    const StatLine& g = statLine(p, StatLineIndex::Game);
    switch (category) {
        case 0:
            return g.Goals + g.Assists;
        case 1:
            return g.Goals;
        case 2:
            return g.Assists;
        case 3:
            return g.Pim;
        case 4:
            return g.Saves;
        case 5:
            return p.ScoringChances[1];
        case 6:
            return g.Hits;
        case 7:
            return g.Blocks;
        case 8:
            return g.Takeaways;
        case 9:
            return g.Giveaways;
        default:
            return 0;
    }
}

}  // namespace

// ---- Public parts ------------------------------------------------------------------

void settleGoaliesOfRecord(FinishedGame& game) {
    int winner = game.winnerSide();
    if (winner < 0) return;
    if (game.winningGoalie == kNoSlot) game.winningGoalie = game.side[at(winner)].startingGoalie;
    if (game.losingGoalie == kNoSlot) game.losingGoalie = game.side[at(other(winner))].startingGoalie;
}

std::pair<int, int> gameWinningGoal(const FinishedGame& game) {
    int winner = game.winnerSide();
    if (winner < 0 || game.wentToShootout()) return {-1, kNoSlot};
    int needed = game.side[at(other(winner))].score + 1;
    int count = 0;
    for (const GoalSummary& g : game.goals)
        if (g.side == winner && ++count == needed) return {winner, g.scorer};
    return {-1, kNoSlot};
}

int standingsPoints(const TeamRecord& t) { return 2 * t.Wins + t.Ties + t.OvertimeLosses; }

std::string recordText(const TeamRecord& t) {
    return fmt::format("{}-{}-{}-{}", t.Wins, t.Losses, t.Ties, t.OvertimeLosses);
}

void postTeams(std::array<TeamRecord*, 2> teams, const FinishedGame& game, const RulesRecord& rules) {
    for (int side : {kVisitor, kHome}) {
        TeamRecord& t = *teams[at(side)];
        const SideSummary& own = game.side[at(side)];
        const SideSummary& opp = game.side[at(other(side))];
        for (std::size_t p = 0; p < kPeriodSlots; ++p) {
            addTo(t.GoalsByPeriod[0][p], own.goalsByPeriod[p]);
            addTo(t.GoalsByPeriod[1][p], opp.goalsByPeriod[p]);
        }
        addTo(t.ScoringChancesFor, own.chancesFor);
        addTo(t.ScoringChancesAgainst, opp.chancesFor);
        t.PowerPlays[1] = static_cast<std::int16_t>(own.powerPlays);
        t.PowerPlayGoals[1] = static_cast<std::int16_t>(own.powerPlayGoals);
        t.PenaltyKills[1] = static_cast<std::int16_t>(opp.powerPlays);
        t.PowerPlayGoalsAgainst[1] = static_cast<std::int16_t>(opp.powerPlayGoals);
        addTo(t.PowerPlays[0], own.powerPlays);
        addTo(t.PowerPlayGoals[0], own.powerPlayGoals);
        addTo(t.PenaltyKills[0], opp.powerPlays);
        addTo(t.PowerPlayGoalsAgainst[0], opp.powerPlayGoals);
        auto season = [](auto& pair) { addTo(pair[0], pair[1]); };
        season(t.GoalsFiveOnFive);
        season(t.GoalsFiveOnFour);
        season(t.GoalsFiveOnThree);
        season(t.GoalsFourOnFour);
        season(t.GoalsFourOnThree);
        season(t.GoalsThreeOnThree);
        season(t.GoalsThreeOnFour);
        season(t.GoalsThreeOnFive);
        season(t.GoalsFourOnFive);
        season(t.GoalsEmptyNet);
        season(t.GoalsPenaltyShot);
        addTo(t.TeamFor[0].GP, 1);
        addTo(t.TeamAgainst[0].GP, 1);
        t.TeamFor[1].GP = 1;
        t.TeamAgainst[1].GP = 1;
    }

    // Standings.
    int winner = game.winnerSide();
    if (winner >= 0) {
        int loser = other(winner);
        TeamRecord& w = *teams[at(winner)];
        TeamRecord& l = *teams[at(loser)];
        if (game.side[at(winner)].score == 0 || game.side[at(loser)].score == 0) {
            if (game.side[at(loser)].score == 0 && !game.wentToShootout()) addTo(w.Shutouts, 1);
        }
        if (game.wentToShootout()) {
            addTo(w.ShootoutWins, 1);
            addTo(w.TeamFor[0].Goals, 1);
            addTo(l.TeamAgainst[0].Goals, 1);
        }
        addTo(w.Wins, 1);
        bool otLoss = game.wentToShootout() || (game.overtimePlayed && rules.OnePointForOvertimeLossCheck == 1);
        if (otLoss)
            addTo(l.OvertimeLosses, 1);
        else
            addTo(l.Losses, 1);
        w.Streak = static_cast<std::int16_t>(w.Streak == 99 || w.Streak < 0 ? 1 : w.Streak + 1);
        l.Streak = static_cast<std::int16_t>(l.Streak == 99 || l.Streak > 0 ? -1 : l.Streak - 1);
        if (!game.neutralIce) {
            TeamRecord& home = *teams[at(kHome)];
            if (winner == kHome)
                addTo(home.HomeWins, 1);
            else if (otLoss && game.overtimePlayed)
                addTo(home.HomeOvertimeLosses, 1);
            else
                addTo(home.HomeLosses, 1);
        }
        if (divisionOfTeam(game.side[0].team) == divisionOfTeam(game.side[1].team)) {
            addTo(w.DivisionWins, 1);
            addTo(l.DivisionLosses, 1);
        }
    } else {
        for (TeamRecord* t : teams) {
            addTo(t->Ties, 1);
            t->Streak = 99;
        }
        if (!game.neutralIce) addTo(teams[at(kHome)]->HomeTies, 1);
    }
    for (int side : {kVisitor, kHome}) {
        TeamRecord& t = *teams[at(side)];
        for (std::size_t k = 10; k > 1; --k) t.LastResults[k] = t.LastResults[k - 1];
        const char* mark = winner < 0 ? "T" : winner == side ? "W" : game.overtimePlayed ? "O" : "L";
        t.LastResults[1].assign(mark);
    }
}

std::array<std::pair<int, int>, 3> threeStars(const GameSession& session, const FinishedGame& game) {
    std::array<std::pair<int, int>, 3> out{{{-1, kNoSlot}, {-1, kNoSlot}, {-1, kNoSlot}}};
    std::array<std::array<bool, kRosterSlots>, 2> taken{};
    int winner = game.winnerSide();
    for (auto& star : out) {
        double best = -998;
        for (int side : {kVisitor, kHome}) {
            const SideTables& t = session.side(side);
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                if (!t.onTeam(slot) || taken[at(side)][at(slot)]) continue;
                double s = starScore(t.player(slot), winner == side, game.side[at(other(side))].score);
                if (s >= best) {  // at equal scores the later row wins
                    best = s;
                    star = {side, slot};
                }
            }
        }
        if (star.first >= 0) taken[at(star.first)][at(star.second)] = true;
    }
    return out;
}

void postLeaders(LeadersRecord& leaders, const GameSession& session) {
    if (leaders.LeadersStamp != kLeadersStamp) leaders = LeadersRecord{};
    for (int category = 0; category < 8; ++category) {
        auto& table = leaders.Leaders[at(category)];
        // Once put in order, a table stays so until a player changes it.
        bool inOrder = false;
        // A bit for the low six bits of each number the table lists: most
        // men are listed nowhere, and a clear bit says so without a search.
        auto numberBit = [](int number) { return std::uint64_t{1} << (static_cast<unsigned>(number) & 63u); };
        std::uint64_t listedBits = 0;
        for (const LeaderEntry& x : table) listedBits |= numberBit(x.PlayerNumber);
        for (int side : {kVisitor, kHome}) {
            const SideTables& t = session.side(side);
            int games = teamGames(t.team);
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                const PlayerRecord& p = t.player(slot);
                if (!t.onTeam(slot) || statLine(p, StatLineIndex::Replay).GP == 0) continue;
                LeaderValue v = leaderValue(category, p, games);
                if (!v.counts) continue;
                auto value = static_cast<std::int16_t>(std::clamp(v.value, -32768, 32767));
                // The entry's words are made only for a player who goes in.
                auto entry = [&] {
                    LeaderEntry e;
                    e.Name.assign(fmt::format("{} {}", p.FirstName.view(), p.LastName.view()));
                    e.Team.assign(t.team.Abbrev.view());
                    e.Value = value;
                    e.PlayerNumber = p.PlayerId;
                    return e;
                };
                auto listed = (listedBits & numberBit(p.PlayerId)) == 0
                                  ? table.end()
                                  : std::find_if(table.begin(), table.end(),
                                                 [&](const LeaderEntry& x) { return x.PlayerNumber == p.PlayerId; });
                bool changed = true;
                if (listed != table.end()) {
                    *listed = entry();
                } else if (table.back().PlayerNumber == 0 || value > table.back().Value) {
                    table.back() = entry();
                    listedBits |= numberBit(p.PlayerId);
                } else {
                    changed = false;
                }
                if (inOrder && !changed) continue;
                // Higher first; empty entries last. A table in order stays as
                // it is, and most men change nothing.
                auto before = [](const LeaderEntry& a, const LeaderEntry& b) {
                    if ((a.PlayerNumber == 0) != (b.PlayerNumber == 0)) return b.PlayerNumber == 0;
                    return a.Value > b.Value;
                };
                if (!std::is_sorted(table.begin(), table.end(), before))
                    std::stable_sort(table.begin(), table.end(), before);
                inOrder = true;
            }
        }
    }
    leaders.LeadersStamp = kLeadersStamp;
}

bool postTop40(Top40Record& top, const GameSession& session, const FinishedGame& game, const std::string& boxFile) {
    bool changed = top.Top40Stamp != kTop40Stamp;
    if (changed) top = Top40Record{};
    for (int category = 0; category < 10; ++category) {
        for (int side : {kVisitor, kHome}) {
            const SideTables& t = session.side(side);
            for (int slot = 0; slot < kRosterSlots; ++slot) {
                const PlayerRecord& p = t.player(slot);
                if (!t.onTeam(slot)) continue;
                int v = top40Value(category, p);
                Top40Entry& lowest = top.Top[kTop40Ranks - 1][at(category)];
                if (v <= 0 || v <= lowest.Value) continue;
                changed = true;
                lowest.Value = v;
                lowest.Name.assign(t.DisplayName[at(slot)]);
                lowest.Text.assign(fmt::format("{} {} {} vs {}", monthAbbrev(game.calendarMonth), game.year,
                                               t.team.Abbrev.str(), game.side[at(other(side))].code));
                lowest.BoxFile.assign(boxFile);
                for (int r = kTop40Ranks - 1;
                     r > 0 && top.Top[at(r)][at(category)].Value > top.Top[at(r - 1)][at(category)].Value; --r)
                    std::swap(top.Top[at(r)][at(category)], top.Top[at(r - 1)][at(category)]);
            }
        }
    }
    top.Top40Stamp = kTop40Stamp;
    return changed;
}

bool recoverPosting(const fs::path& leagueDir, FileWriter* writer) {
    DiskWriter disk;
    return PostingJournal(leagueDir).recover(writer ? *writer : disk);
}

// ---- GameDone ----------------------------------------------------------------------

PostingResult GameDone(GameSession& session, FinishedGame& game, const PostingOptions& o) {
    DiskWriter disk;
    FileWriter& writer = o.writer ? *o.writer : disk;
    const fs::path& dir = session.league().leagueDir;
    const RulesRecord& rules = session.league().rules;
    // The run's names of the league folder, else the folder listed once for
    // this posting: a game's box is a new name, so a lookup of its own would
    // list the folder anyway.
    std::optional<FolderNames> ownNames;
    FolderNames& leagueNames = o.names ? *o.names : ownNames.emplace(dir);
    auto locate = [&](std::string_view name) -> const fs::path& { return leagueNames.find(name); };
    const PostingJournal journal(dir, &leagueNames, o.images);
    // The session was read from the files a pending posting would change.
    if (journal.recover(writer))
        throw FileError(
            fmt::format("An unfinished posting in {} was completed first: load the teams again", dir.string()));

    PostingResult res;
    std::vector<FileChange> changes;
    bool leagueGame = !game.exhibition;

    // The row.
    std::optional<Schedule> loaded;
    Schedule* schedule = o.schedule;
    if (leagueGame && schedule == nullptr) {
        loaded = Schedule::load(dir, scheduleName(rules));
        schedule = &*loaded;
    }
    if (leagueGame) {
        if (game.scheduleRow == 0) {
            for (std::size_t r = 1; r <= schedule->size(); ++r) {
                const GameRecord& row = schedule->row(r);
                if (row.Month == game.calendarMonth && row.Day == game.day && row.VisitorTeam == game.side[0].team &&
                    row.HomeTeam == game.side[1].team && statusOf(row) != kPlayed) {
                    game.scheduleRow = r;
                    break;
                }
            }
        } else if (game.scheduleRow > schedule->size()) {
            game.scheduleRow = 0;
        }
        if (game.scheduleRow > 0 && statusOf(schedule->row(game.scheduleRow)) == kPlayed)
            throw AlreadyPosted(fmt::format("Game {} of the schedule has already been played", game.scheduleRow));
    }
    res.scheduleRow = game.scheduleRow;
    std::size_t scoresCount = recordCount(fileLengthVia(o.images, locate(kScoresFile)), kGameSlot, kScoresRounding);
    res.boxFile = leagueGame ? boxFileName(scoresCount + 1) : "BOX-EX.box";

    // Goalies of record and the starters.
    settleGoaliesOfRecord(game);
    int winner = game.winnerSide();
    res.winnerSide = winner;
    for (int side : {kVisitor, kHome}) {
        int starter = game.side[at(side)].startingGoalie;
        if (starter == kNoSlot) continue;
        PlayerRecord& g = session.side(side).player(starter);
        g.GamesStarted = static_cast<std::uint8_t>(std::min(g.GamesStarted + 1, 255));
        statLine(g, StatLineIndex::Game).GS = 1;
    }
    auto gwg = gameWinningGoal(game);

    std::array<int, 2> injuredCount{};
    for (int side : {kVisitor, kHome}) {
        SideTables& t = session.side(side);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            if (!t.onTeam(slot)) continue;
            PlayerRecord& p = t.player(slot);
            const StatLine& g = statLine(p, StatLineIndex::Game);
            if (p.InjuryReturnMonth != 0) ++injuredCount[at(side)];
            if (g.Goals >= 3) p.HatTricks = static_cast<std::uint8_t>(std::min(p.HatTricks + 1, 255));
            if (isGoalie(p) && g.Toi > 3000 && g.Saves >= 10)
                p.ShutoutStreak =
                    g.GoalsAllowed > 0 ? 0 : static_cast<std::uint8_t>(std::min(p.ShutoutStreak + 1, 255));
        }
    }

    std::vector<std::string> history;
    if (o.rng != nullptr) postGameInjuries(session, game, *o.rng, injuredCount, res, history);

    // Highlights.
    std::string prefix = fmt::format("{} {}", game.day, monthAbbrev(game.calendarMonth));
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const PlayerRecord& p = t.player(slot);
            if (!t.onTeam(slot) || !playedInGame(p)) continue;
            const StatLine& g = statLine(p, StatLineIndex::Game);
            std::string text;
            if (p.InjuryReturnDay != 0 && game.side[at(side)].injuredInGame[at(slot)] == kHurtInGame)
                text += " Injured";
            if (game.side[at(side)].newSuspension[at(slot)]) text += " Ejected";
            if (g.Goals >= 2) text += fmt::format(" {} goals", g.Goals);
            if (g.Assists >= 2) text += fmt::format(" {} assists", g.Assists);
            if (g.Pim >= 15) text += fmt::format(" {} PIM", g.Pim);
            if (p.Fights[2] >= 2) text += fmt::format(" {} fights", p.Fights[2]);
            if (g.Goals + g.Assists >= 3) text += fmt::format(" {} points", g.Goals + g.Assists);
            if (g.Saves >= 25 && g.GoalsAllowed <= 1) text += fmt::format(" {} saves", g.Saves);
            if (text.empty()) continue;
            res.highlights.push_back(
                fmt::format("{} {} {}{}", prefix, t.DisplayName[at(slot)], t.team.Abbrev.str(), text));
        }
    }

    // Players, then teams and standings.
    PlayerPostContext pc{game, game.playoff, winner, gwg};
    for (int side : {kVisitor, kHome})
        if (game.side[at(other(side))].score == 0) pc.shutoutGoalie[at(side)] = loneGoalie(session.side(side));
    for (int side : {kVisitor, kHome}) {
        session.side(side).team.TeamFor[1] = TeamStatLine{};
        session.side(side).team.TeamAgainst[1] = TeamStatLine{};
    }
    for (int side : {kVisitor, kHome})
        for (int slot = 0; slot < kRosterSlots; ++slot)
            if (session.side(side).player(slot).PlayerId > 0) postPlayer(session, side, slot, pc);
    postTeams({&session.side(kVisitor).team, &session.side(kHome).team}, game, rules);
    // A bench penalty has no player to carry it through the posting: play put
    // it on the team's season line, and here on the game's and the opponent's.
    for (int side : {kVisitor, kHome}) {
        int bench = game.side[at(side)].penaltyMinutes - teamPim(session.side(side));
        if (bench <= 0) continue;
        addTo(session.side(side).team.TeamFor[1].Pim, bench);
        for (TeamStatLine& against : session.side(other(side)).team.TeamAgainst) addTo(against.Pim, bench);
    }

    auto stars = threeStars(session, game);
    for (std::size_t k = 0; k < 3; ++k) {
        auto [side, slot] = stars[k];
        if (side < 0) continue;
        PlayerRecord& p = session.side(side).player(slot);
        std::uint8_t& counter = k == 0 ? p.FirstStars : k == 1 ? p.SecondStars : p.ThirdStars;
        counter = static_cast<std::uint8_t>(std::min(counter + 1, 255));
        res.stars[k] = starText(session, side, slot);
    }

    // The record book of the league, and the one across leagues when the
    // league keeps it (not for playoff games). A missing all-time folder is
    // passed over rather than stop the posting.
    // Kept books that took this game's entries hold more than their files
    // until the posting stands.
    struct DropUnlessWritten {
        KeptRecordBooks* books;
        bool written = false;
        ~DropUnlessWritten() {
            if (books && !written) books->drop();
        }
    } keptBooks{o.books};
    if (leagueGame) {
        // Both books take the same values of the players: worked out at the first.
        std::optional<PlayerRecordValues> playerValues;
        auto post = [&](const fs::path& folder, const fs::path& file, const std::string& name) {
            // The league's own book has an image in a run; the book across
            // leagues is read from its folder.
            const bool imaged = o.images && folder == dir;
            std::optional<RecordBook> read;
            if (!o.books) read = imaged ? RecordBook::fromBytes(o.images->bytes(file)) : RecordBook::load(folder);
            // The journal keeps only what differs from the image of the league's book.
            else if (imaged)
                o.images->bytes(file);
            RecordBook& book = o.books ? o.books->book(file, folder != dir) : *read;
            if (!playerValues) playerValues = PlayerRecordValues::of(session, game);
            book.postPlayers(*playerValues);
            book.postTeams(session, game);
            // Changed slots side by side go in one change, the unused ends
            // between them as they were read. Against an image slots apart go
            // apart: the journal compares every byte of a change with it, and
            // the run's writer puts near changes in one write all the same. A
            // book without one (the book across leagues) is written as its
            // changes come, so near slots go together: one write, not one a slot.
            for (FileChange& c : book.changes(name, imaged ? 1 : kRecordsJoinedWithin)) changes.push_back(std::move(c));
        };
        const fs::path& leagueBook = locate(kRecordsFile);
        post(dir, leagueBook, leagueBook.filename().string());
        const fs::path& allTime = o.allTimeRecordsDir;
        std::error_code ec;
        if (rules.AllTimeRecordCheck == 1 && !game.playoff && !allTime.empty() && fs::is_directory(allTime, ec) &&
            !fs::equivalent(allTime, dir, ec)) {
            auto allTimeBook = findFile(allTime, kRecordsFile);
            post(allTime, allTimeBook, fs::absolute(allTimeBook).string());
        }
    }

    // The ticker.
    if (leagueGame) {
        TickerRecord tick;
        tick.LeagueStamp = 0;
        tick.Month = static_cast<std::uint8_t>(seasonMonth(game.calendarMonth));
        tick.Day = static_cast<std::uint8_t>(game.day);
        tick.Period = static_cast<std::uint8_t>(game.lastPeriod);
        tick.Clock = static_cast<std::int16_t>(game.clock);
        tick.Final.assign("Y");
        for (int side : {kVisitor, kHome}) {
            tick.Teams[at(side)] = static_cast<std::int16_t>(game.side[at(side)].team);
            tick.Scores[at(side)] = static_cast<std::uint8_t>(std::clamp(game.finalScore(side), 0, 255));
        }
        int w = winner < 0 ? kHome : winner;
        const SideSummary& ws = game.side[at(w)];
        const SideSummary& ls = game.side[at(other(w))];
        tick.Text.assign(winner < 0 ? fmt::format("{} and {} tie {}-{}", ws.city, ls.city, ws.score, ls.score)
                                    : fmt::format("{} beat {} {}-{}{}, shots {}-{}", ws.city, ls.city,
                                                  game.finalScore(w), game.finalScore(other(w)),
                                                  game.wentToShootout() ? " (SO)"
                                                  : game.overtimePlayed ? " (OT)"
                                                                        : "",
                                                  ws.shots, ls.shots));
        // Each ticker record leaves its slot's last bytes unwritten: a half slot counts.
        std::size_t ticks = recordCount(fileLengthVia(o.images, locate(kTickerFile)), kTickerSlot, kScoresRounding);
        changes.push_back(slotChange(kTickerFile, kTickerSlot, ticks + 1, tick));
    }
    if (!history.empty())
        changes.push_back(appendLines(o.images, locate(kInjuryHistoryFile), kInjuryHistoryFile, history));
    if (!res.highlights.empty())
        changes.push_back(appendLines(o.images, locate(kHighlightsFile), kHighlightsFile, res.highlights));

    // Teams and players (what SaveTeam would write).
    std::unique_ptr<LeadersRecord> leaders;
    std::unique_ptr<Top40Record> top;
    constexpr std::size_t kNoChange = static_cast<std::size_t>(-1);
    std::size_t leadersChange = 0, topChange = kNoChange;
    if (leagueGame) {
        for (int side : {kVisitor, kHome}) {
            SideTables& t = session.side(side);
            changes.push_back(slotChange(std::string(kTeamFile), kTeamSlot, at(t.TeamId), t.team));
            for (int slot = 0; slot < kRosterSlots; ++slot)
                if (t.onTeam(slot))
                    changes.push_back(playerChange(o.tables ? &o.tables->playerRooms : nullptr, t.player(slot)));
        }
        if (!game.playoff) {
            auto* kept = o.tables && o.images ? &o.tables->leaders : nullptr;
            leaders = readTable(o.images, locate(kLeadersFile), kept);
            postLeaders(*leaders, session);
            leadersChange = changes.size();
            changes.push_back({kLeadersFile, true, 0, tableBytes(*leaders, kept)});
        }
        auto* kept = o.tables && o.images ? &o.tables->top : nullptr;
        fs::path topFile = locate(kTop40File);
        // The kept table is the file's bytes as the run wrote them: a game
        // that changes none of it leaves the file be.
        bool asWritten = kept && kept->record && o.images->stamp(topFile) == kept->stamp;
        top = readTable(o.images, topFile, kept);
        if (postTop40(*top, session, game, res.boxFile) || !asWritten) {
            topChange = changes.size();
            changes.push_back({kTop40File, true, 0, tableBytes(*top, kept)});
        }
    }

    // The schedule row and SCORES.
    std::optional<GameRecord> postedRow;
    GameRecord row;
    if (leagueGame && game.scheduleRow > 0)
        row = schedule->row(game.scheduleRow);
    else
        row = newGameRecord(game.side[0].team, game.side[1].team, game.calendarMonth, game.day, game.year);
    row.ExtraMark = game.wentToShootout() ? 2 : game.overtimePlayed ? 1 : 0;
    std::array<int, 2> assists{};
    for (int side : {kVisitor, kHome}) {
        const SideSummary& x = game.side[at(side)];
        const SideTables& t = session.side(side);
        int pim = std::max(teamPim(t), x.penaltyMinutes);  // the bench's minutes count too
        for (int slot = 0; slot < kRosterSlots; ++slot)
            if (t.onTeam(slot)) assists[at(side)] += statLine(t.player(slot), StatLineIndex::Game).Assists;
        row.Shots[at(side)] = static_cast<std::uint8_t>(std::clamp(x.shots, 0, 255));
        row.Pim[at(side)] = static_cast<std::uint8_t>(std::clamp(pim, 0, 254));
        row.ScoreOf[at(side)] = static_cast<std::int16_t>(game.finalScore(side));
        row.RecordText[at(side)].assign(recordText(t.team));
    }
    for (std::size_t k = 0; k < 3; ++k) row.StarName[k].assign(res.stars[k]);
    row.Status.assign("P");
    row.RowLocked.assign("N");
    row.BoxFile.assign(res.boxFile);
    row.RowType.assign("L");
    if (leagueGame && game.scheduleRow > 0) {
        auto name = schedule->path().filename().string();
        changes.push_back(slotChange(name, kGameSlot, game.scheduleRow, row));
        // The row as the file will give it back.
        postedRow = codec::fromSlot<GameRecord>(changes.back().bytes);
    }
    if (leagueGame && !game.playoff) {
        GameRecord score = row;
        score.DateText.assign(o.dateText);
        score.ResultStamp = 99;
        score.ResultStamp2 = 99;
        for (int side : {kVisitor, kHome}) {
            const SideSummary& x = game.side[at(side)];
            score.TeamAssists[at(side)] = static_cast<std::uint8_t>(std::clamp(assists[at(side)], 0, 255));
            score.PowerPlays[at(side)] = score.PowerPlays2[at(side)] = static_cast<std::uint8_t>(x.powerPlays);
            score.PowerPlayGoals[at(side)] = score.PowerPlayGoals2[at(side)] =
                static_cast<std::uint8_t>(x.powerPlayGoals);
            score.TimeOfAttack[at(side)] = static_cast<std::int16_t>(x.timeOfAttack);
            const TeamRecord& tr = session.side(side).team;
            score.ShortHandGoals[at(side)] =
                static_cast<std::uint8_t>(tr.GoalsThreeOnFour[1] + tr.GoalsThreeOnFive[1] + tr.GoalsFourOnFive[1]);
            int fw = 0;
            for (int slot = 0; slot < kRosterSlots; ++slot)
                if (session.side(side).onTeam(slot))
                    fw += statLine(session.side(side).player(slot), StatLineIndex::Game).FaceoffsWon;
            score.FaceoffsWon[at(side)] = static_cast<std::uint8_t>(std::clamp(fw, 0, 255));
        }
        res.scoresRow = scoresCount + 1;
        changes.push_back(slotChange(std::string(kScoresFile), kGameSlot, res.scoresRow, score));
    }

    // The box.
    BoxFacts facts;
    facts.winnerSide = winner;
    facts.gameWinningSide = gwg.first;
    facts.gameWinningSlot = gwg.second;
    facts.shutoutGoalie = pc.shutoutGoalie;
    for (std::size_t k = 0; k < 3; ++k) facts.stars[k] = {stars[k].first, stars[k].second};
    facts.scheduleRow = game.scheduleRow;
    facts.scoringText = scoringSummary(session, game);
    facts.penaltyText = penaltySummary(session, game);
    // A run's box is kept between its games, blank, and made blank again
    // when this posting is done with it, however it ends.
    std::unique_ptr<BoxFile> ownBox;
    if (o.tables && !o.tables->box) o.tables->box = std::make_unique<BoxFile>();
    BoxFile* box = o.tables ? o.tables->box.get() : (ownBox = std::make_unique<BoxFile>()).get();
    struct Blanker {
        BoxFile* box;
        ~Blanker() {
            if (box != nullptr) blankBox(*box);
        }
    } blanker{o.tables ? box : nullptr};
    BoxWrite(*box, session, game, facts);
    std::unique_ptr<BoxNames> ownBoxNames;
    if (o.tables && !o.tables->boxNames) o.tables->boxNames = std::make_unique<BoxNames>();
    BoxNames& names = o.tables ? *o.tables->boxNames : *(ownBoxNames = std::make_unique<BoxNames>());
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        names.team[at(side)] = fmt::format("{} {}", t.team.City.str(), t.team.Nickname.str());
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const PlayerRecord& p = t.player(slot);
            boxPlayerName(p, names.player[BoxFile::at(side, slot)]);
            names.position[BoxFile::at(side, slot)] = positionCode(p);
        }
    }
    facts.boxText = boxScoreText(*box, names);
    box->r1.BoxTextCount = 0;
    for (std::size_t k = 0; k < facts.boxText.size() && k < kBoxTextLines; ++k) {
        box->r1.BoxText[k].assign(facts.boxText[k]);
        box->r1.BoxTextCount = static_cast<std::int16_t>(k + 1);
    }
    // An exhibition leaves the league as it was; its box is written only on
    // request. A league game's box is a new file that nothing names until the
    // journal stands (the schedule row and SCORES do), so it goes first and
    // outside the journal, which it would more than double: a failure before
    // the journal leaves it unnamed, and the game's next posting writes it
    // again under the same name.
    if (leagueGame) {
        if (o.tables) {
            if (!o.tables->boxImage) o.tables->boxImage = std::make_unique<BoxImage>();
            writer.replace(locate(res.boxFile), o.tables->boxImage->put(*box));
        } else {
            // Every byte is written by the records: a cleared buffer first would be cleared for nothing.
            auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(kBoxFileBytes);
            putBoxBytes(*box, bytes.get());
            writer.replace(locate(res.boxFile), std::span<const std::uint8_t>(bytes.get(), kBoxFileBytes));
        }
    }

    journal.commit(changes, writer);
    // The journal is done with the changes: the tables take their bytes rather than a copy.
    if (o.tables) {
        for (FileChange& c : changes)
            if (!c.whole && c.name == kPlayerFile) o.tables->playerRooms.push_back(std::move(c.bytes));
    }
    if (o.tables && o.images) {
        if (leaders)
            keepTable(o.tables->leaders, *o.images, locate(kLeadersFile), std::move(changes[leadersChange].bytes),
                      std::move(leaders));
        if (top && topChange == kNoChange)
            o.tables->top.record = std::move(top);  // the file and its mark are as they were
        else if (top)
            keepTable(o.tables->top, *o.images, locate(kTop40File), std::move(changes[topChange].bytes),
                      std::move(top));
    }
    if (o.books) o.books->written();
    keptBooks.written = true;
    if (postedRow && o.schedule) o.schedule->row(game.scheduleRow) = *postedRow;
    return res;
}

PostingResult postScheduleGame(GameSession& session, const Game& game, const Schedule& schedule, std::size_t row,
                               std::uint64_t seed, const std::string& dateText,
                               const std::filesystem::path& allTimeRecordsDir, FolderNames* names) {
    PostingOptions posting;
    posting.dateText = dateText;
    posting.allTimeRecordsDir = allTimeRecordsDir;
    posting.names = names;
    return postScheduleGame(session, game, schedule, row, seed, posting);
}

PostingResult postScheduleGame(GameSession& session, const Game& game, const Schedule& schedule, std::size_t row,
                               std::uint64_t seed, PostingOptions posting) {
    const GameRecord& r = schedule.row(row);
    FinishedGame finished = summarizeGame(game, row, r.Month, r.Day, calendarYearOf(schedule.seasonYear(), r.Month));
    Random postDraws(seed ^ 0x9e3779b97f4a7c15ULL);
    posting.rng = &postDraws;
    return GameDone(session, finished, posting);
}

std::string todayDateText() {
    std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char buf[16];
    std::strftime(buf, sizeof buf, "%m/%d/%Y", &local);
    return buf;
}

}  // namespace tallyrink
