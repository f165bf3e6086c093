#include "postgame/record_book.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "league/files.h"
#include "team/positions.h"

namespace tallyrink::codec {

template <>
struct FieldTable<RecordEntry> {
    using R = RecordEntry;
    static constexpr auto fields = std::tuple{
        Field{"RecordValue", 0, &R::RecordValue}, Field{"RecordName", 10, &R::RecordName},
        Field{"RecordTeam", 110, &R::RecordTeam}, Field{"RecordOpponent", 125, &R::RecordOpponent},
        Field{"RecordDate", 140, &R::RecordDate},
    };
};

static_assert(tilesExactly<RecordEntry>());
TALLYRINK_INSTANTIATE_RECORD_CODEC(RecordEntry)

}  // namespace tallyrink::codec

namespace tallyrink {

namespace {

constexpr std::size_t kRecordsInFile = recordNumber(kRecordCategories, RecordScope::Game);  // 801

constexpr std::array<std::string_view, 35> kSkaterNames{"Goals",
                                                        "Assists",
                                                        "Shots",
                                                        "Points",
                                                        "PIM",
                                                        "Plus/Minus",
                                                        "Faceoffs Won",
                                                        "Faceoffs Lost",
                                                        "Hits",
                                                        "Blocks",
                                                        "Takeaways",
                                                        "Time On Ice",
                                                        "Missed Net",
                                                        "Shifts",
                                                        "Giveaways",
                                                        "Game Winning Goals",
                                                        "Power Play TOI",
                                                        "Power Play Goals",
                                                        "Power Play Assists",
                                                        "Shorthand TOI",
                                                        "Shorthand Goals",
                                                        "Shorthand Assists",
                                                        "Fights",
                                                        "Total Penalties",
                                                        "Minor Penalties",
                                                        "Major Penalties",
                                                        "Suspension Games",
                                                        "Penalty Shot/Shootout Goals",
                                                        "1st Star",
                                                        "Total Stars",
                                                        "Point Streak",
                                                        "Goal Streak",
                                                        "Assist Streak",
                                                        "Penalty Shot Streak",
                                                        "Penalties Killed"};

constexpr std::array<std::string_view, 10> kGoalieNames{
    "Saves",       "Goals Allowed", "Shutouts",       "Wins",  "Shootout Wins",
    "Time On Ice", "Save Streak",   "Shutout Streak", "Save%", "Goals Allowed Per Game"};

// Team categories: the kinds of the team totals, then the margin and the
// goals by period.
constexpr std::array<std::string_view, 17> kTeamNames{
    "Goals",  "Goals Against",    "Assists",         "Shots",        "Shots Against",
    "PIM",    "Power Play Goals", "Shorthand Goals", "Faceoffs Won", "Hits",
    "Blocks", "Takeaways",        "Giveaways",       "Missed Net",   "Empty Net Goals",
    "Wins",   "MARGIN OF VICTORY"};
constexpr int kQuarters = 7;
constexpr int kFirstQuarterCategory = kFirstTeamCategory + static_cast<int>(kTeamNames.size());
constexpr int kFirstOppQuarterCategory = kFirstQuarterCategory + kQuarters;

constexpr int kMinSaveGames = 10;  // a season's Save% and goals-against average need this many games
constexpr int kMinGameShots = 20;  // a game's Save% needs this many shots against

std::int16_t word(int v) { return static_cast<std::int16_t>(std::clamp(v, -32768, 32767)); }
int minutes(std::int32_t seconds) { return static_cast<int>(std::lround(seconds / 60.0)); }

std::string upper(std::string_view s) {
    std::string u(s);
    std::transform(u.begin(), u.end(), u.begin(), [](unsigned char c) { return std::toupper(c); });
    return u;
}

bool better(int category, int value, int than) { return lowerIsBetter(category) ? value < than : value > than; }

std::string dateOf(const FinishedGame& g) { return fmt::format("{}/{}/{}", g.calendarMonth, g.day, g.year); }

}  // namespace

const std::array<std::string_view, kRecordCategories + 1>& recordNames() {
    static const auto names = [] {
        std::array<std::string_view, kRecordCategories + 1> n{};
        for (std::size_t i = 0; i < kSkaterNames.size(); ++i) n[1 + i] = kSkaterNames[i];
        for (std::size_t i = 0; i < kGoalieNames.size(); ++i) n[kFirstGoalieCategory + i] = kGoalieNames[i];
        for (std::size_t i = 0; i < kTeamNames.size(); ++i) n[kFirstTeamCategory + i] = kTeamNames[i];
        static constexpr std::array<std::string_view, kQuarters> quarter{
            "POINTS BY QUARTER: 1", "POINTS BY QUARTER: 2", "POINTS BY QUARTER: 3", "POINTS BY QUARTER: 4",
            "POINTS BY QUARTER: 5", "POINTS BY QUARTER: 6", "POINTS BY QUARTER: 7"};
        static constexpr std::array<std::string_view, kQuarters> oppQuarter{
            "OPP POINTS BY QUARTER: 1", "OPP POINTS BY QUARTER: 2", "OPP POINTS BY QUARTER: 3",
            "OPP POINTS BY QUARTER: 4", "OPP POINTS BY QUARTER: 5", "OPP POINTS BY QUARTER: 6",
            "OPP POINTS BY QUARTER: 7"};
        for (int q = 0; q < kQuarters; ++q) {
            n[static_cast<std::size_t>(kFirstQuarterCategory + q)] = quarter[static_cast<std::size_t>(q)];
            n[static_cast<std::size_t>(kFirstOppQuarterCategory + q)] = oppQuarter[static_cast<std::size_t>(q)];
        }
        return n;
    }();
    return names;
}

bool lowerIsBetter(int category) { return category == kFirstGoalieCategory + 9; }

namespace {

// The names as the values are matched on them, worked out once.
const std::string& upperName(int category) {
    static const auto names = [] {
        std::array<std::string, kRecordCategories + 1> n;
        for (std::size_t i = 0; i < n.size(); ++i) n[i] = upper(recordNames()[i]);
        return n;
    }();
    return names.at(static_cast<std::size_t>(category));
}

// The categories that have a name, in order.
const std::vector<int>& namedCategories() {
    static const auto list = [] {
        std::vector<int> l;
        for (int c = 1; c <= kRecordCategories; ++c)
            if (!recordNames()[static_cast<std::size_t>(c)].empty()) l.push_back(c);
        return l;
    }();
    return list;
}

}  // namespace

bool seasonOnly(int category) {
    const std::string& name = upperName(category);
    return name.ends_with("STREAK") || name == "SUSPENSION GAMES" || name == "1ST STAR" || name == "TOTAL STARS" ||
           name == "GOALS ALLOWED PER GAME" || name == "WINS" || name == "SHUTOUTS";
}

std::optional<int> playerRecordValue(int category, RecordScope scope, const PlayerRecord& p, int shootoutGoals) {
    if (category < 1 || category >= kFirstTeamCategory) return std::nullopt;
    const std::string& n = upperName(category);
    if (n.empty()) return std::nullopt;
    bool goalie = isGoalie(p);
    if (goalie != (category >= kFirstGoalieCategory)) return std::nullopt;
    bool season = scope == RecordScope::Season;
    if (!season && seasonOnly(category)) return std::nullopt;
    const StatLine& s = statLine(p, season ? StatLineIndex::Replay : StatLineIndex::Game);
    std::size_t k = season ? 0 : 1;  // the replay and this game's entries of the counters

    if (goalie) {
        if (n == "SAVES") return s.Saves;
        if (n == "GOALS ALLOWED") return s.GoalsAllowed;
        if (n == "SHUTOUTS") return s.Shutouts;
        if (n == "WINS") return s.GoalieWins;
        if (n == "TIME ON ICE") return minutes(s.Toi);
        if (n == "SAVE STREAK") return p.SaveStreak;
        if (n == "SHUTOUT STREAK") return p.ShutoutStreak;
        int against = s.Saves + s.GoalsAllowed;
        if (n == "SAVE%") {
            bool enough = season ? s.GP >= kMinSaveGames : against >= kMinGameShots;
            if (!enough || against == 0) return std::nullopt;
            return static_cast<int>(std::lround(1000.0 * s.Saves / against));
        }
        if (n == "GOALS ALLOWED PER GAME") {
            if (s.GP < kMinSaveGames || s.Toi <= 0) return std::nullopt;
            return static_cast<int>(std::lround(100.0 * s.GoalsAllowed * 3600.0 / s.Toi));
        }
        return std::nullopt;  // shootout wins aren't counted by goalie
    }
    if (n == "GOALS") return s.Goals;
    if (n == "ASSISTS") return s.Assists;
    if (n == "SHOTS") return s.Sog;
    if (n == "POINTS") return s.Goals + s.Assists;
    if (n == "PIM") return s.Pim;
    if (n == "PLUS/MINUS") return s.PlusMinus;
    if (n == "FACEOFFS WON") return s.FaceoffsWon;
    if (n == "FACEOFFS LOST") return s.FaceoffsLost;
    if (n == "HITS") return s.Hits;
    if (n == "BLOCKS") return s.Blocks;
    if (n == "TAKEAWAYS") return s.Takeaways;
    if (n == "TIME ON ICE") return minutes(s.Toi);
    if (n == "MISSED NET") return s.MissedShots;
    if (n == "SHIFTS") return s.Shifts;
    if (n == "GIVEAWAYS") return s.Giveaways;
    if (n == "GAME WINNING GOALS") return s.GWG;
    if (n == "POWER PLAY TOI") return minutes(s.ToiPP);
    if (n == "POWER PLAY GOALS") return s.PPG;
    if (n == "POWER PLAY ASSISTS") return s.PPA;
    if (n == "SHORTHAND TOI") return minutes(s.ToiSH);
    if (n == "SHORTHAND GOALS") return s.SHG;
    if (n == "SHORTHAND ASSISTS") return s.SHA;
    if (n == "FIGHTS") return p.Fights[season ? 1 : 2];
    if (n == "TOTAL PENALTIES") return p.Minors[k] + p.Majors[k];
    if (n == "MINOR PENALTIES") return p.Minors[k];
    if (n == "MAJOR PENALTIES") return p.Majors[k];
    if (n == "SUSPENSION GAMES") return p.SuspensionGamesServed;
    if (n == "PENALTY SHOT/SHOOTOUT GOALS") return s.PenaltyShotGoals + (season ? p.ShootoutGoals : shootoutGoals);
    if (n == "1ST STAR") return p.FirstStars;
    if (n == "TOTAL STARS") return p.FirstStars + p.SecondStars + p.ThirdStars;
    if (n == "POINT STREAK") return p.PointStreak;
    if (n == "GOAL STREAK") return p.GoalStreak;
    if (n == "ASSIST STREAK") return p.AssistStreak;
    return std::nullopt;  // no count is kept of penalty-shot streaks or penalties killed by player
}

// ---- The book -------------------------------------------------------------------

RecordBook::RecordBook() : entries_(kRecordsInFile + 1), changed_(kRecordsInFile + 1, false) {}

RecordBook RecordBook::load(const std::filesystem::path& folder) {
    RecordBook book;
    RandomFile file(findFile(folder, kRecordsFile), kRecordSlot);
    if (!std::filesystem::exists(file.path())) return book;
    book.raw_ = readBytes(file.path());
    std::span<const std::uint8_t> all(book.raw_);
    for (int c : namedCategories()) {
        for (RecordScope scope : {RecordScope::Season, RecordScope::Game}) {
            std::size_t r = recordNumber(c, scope);
            std::size_t from = (r - 1) * kRecordSlot;
            if (from >= all.size()) continue;
            RecordEntry e = codec::fromSlot<RecordEntry>(all.subspan(from, std::min(kRecordSlot, all.size() - from)));
            // A foreign or broken entry counts as empty rather than as a record to beat.
            for (std::size_t k = 0; k < kRecordPlaces; ++k)
                if (e.RecordName[k].str().empty()) e.RecordValue[k] = 0;
            book.entries_[r] = e;
        }
    }
    return book;
}

const RecordEntry& RecordBook::entry(int category, RecordScope scope) const {
    return entries_.at(recordNumber(category, scope));
}

RecordEntry& RecordBook::at(int category, RecordScope scope) { return entries_.at(recordNumber(category, scope)); }

bool RecordBook::insert(int category, RecordScope scope, int value, const RecordHolder& who) {
    if (category < 1 || category > kRecordCategories || recordNames()[std::size_t(category)].empty()) return false;
    RecordEntry& e = at(category, scope);
    auto held = [&](std::size_t k) { return !e.RecordName[k].str().empty(); };
    auto drop = [&](std::size_t k) {
        for (std::size_t j = k; j + 1 < kRecordPlaces; ++j) {
            e.RecordValue[j] = e.RecordValue[j + 1];
            e.RecordName[j] = e.RecordName[j + 1];
            e.RecordTeam[j] = e.RecordTeam[j + 1];
            e.RecordOpponent[j] = e.RecordOpponent[j + 1];
            e.RecordDate[j] = e.RecordDate[j + 1];
        }
        std::size_t last = kRecordPlaces - 1;
        e.RecordValue[last] = 0;
        e.RecordName[last] = {};
        e.RecordTeam[last] = {};
        e.RecordOpponent[last] = {};
        e.RecordDate[last] = {};
    };
    constexpr std::size_t last = kRecordPlaces - 1;
    // A fifth place nobody holds takes any value but nothing at all.
    auto beats = [&](std::size_t k) {
        if (!held(k)) return lowerIsBetter(category) || value > 0;
        return better(category, value, e.RecordValue[k]);
    };
    FixedText<20> name;
    name.assign(who.name);
    FixedText<3> team;
    team.assign(who.team);
    if (scope == RecordScope::Season) {
        // A season total holds one place: his older figure of the season leaves first.
        for (std::size_t k = 0; k < kRecordPlaces; ++k)
            if (held(k) && e.RecordName[k].str() == name.str() && e.RecordTeam[k].str() == team.str()) {
                changed_[recordNumber(category, scope)] = true;
                drop(k);
                break;
            }
    }
    if (!beats(last)) return false;
    changed_[recordNumber(category, scope)] = true;
    e.RecordValue[last] = word(value);
    e.RecordName[last].assign(who.name);
    e.RecordTeam[last].assign(who.team);
    e.RecordOpponent[last].assign(who.opponent);
    e.RecordDate[last].assign(who.date);
    // Up the list while it beats the place above; a tie stays below the older entry.
    for (std::size_t k = last; k > 0; --k) {
        if (held(k - 1) && !better(category, e.RecordValue[k], e.RecordValue[k - 1])) break;
        std::swap(e.RecordValue[k], e.RecordValue[k - 1]);
        std::swap(e.RecordName[k], e.RecordName[k - 1]);
        std::swap(e.RecordTeam[k], e.RecordTeam[k - 1]);
        std::swap(e.RecordOpponent[k], e.RecordOpponent[k - 1]);
        std::swap(e.RecordDate[k], e.RecordDate[k - 1]);
    }
    return true;
}

void RecordBook::postPlayers(const GameSession& session, const FinishedGame& game) {
    std::string date = dateOf(game);
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        const SideSummary& own = game.side[static_cast<std::size_t>(side)];
        const SideSummary& opp = game.side[static_cast<std::size_t>(1 - side)];
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const PlayerRecord& p = t.player(slot);
            if (!t.onTeam(slot) || statLine(p, StatLineIndex::Game).Toi <= 0) continue;
            RecordHolder who{p.ShortName.str().empty() ? p.LastName.str() : p.ShortName.str(), own.code, opp.code,
                             date};
            int shootout = own.shootoutGoalsOf[static_cast<std::size_t>(slot)];
            for (RecordScope scope : {RecordScope::Season, RecordScope::Game})
                for (int c : namedCategories())
                    if (auto v = playerRecordValue(c, scope, p, shootout)) insert(c, scope, *v, who);
        }
    }
}

void RecordBook::postTeams(const GameSession& session, const FinishedGame& game) {
    std::string date = dateOf(game);
    for (int side : {kVisitor, kHome}) {
        auto i = static_cast<std::size_t>(side);
        const TeamRecord& t = session.side(side).team;
        const SideSummary& own = game.side[i];
        const SideSummary& opp = game.side[1 - i];
        // The season's year, not the game's: a season that runs into the new
        // year is still one holder.
        int year = t.TeamYear > 0 ? t.TeamYear : game.year;
        RecordHolder who{fmt::format("{} {}", year, own.city), own.code, opp.code, date};
        for (RecordScope scope : {RecordScope::Season, RecordScope::Game}) {
            bool season = scope == RecordScope::Season;
            const TeamStatLine& f = t.TeamFor[season ? 0 : 1];
            const TeamStatLine& a = t.TeamAgainst[season ? 0 : 1];
            const std::array<int, 17> values{f.Goals,
                                             a.Goals,
                                             f.Assists,
                                             f.Sog,
                                             a.Sog,
                                             f.Pim,
                                             f.PPG,
                                             f.SHG,
                                             f.FaceoffsWon,
                                             f.Hits,
                                             f.Blocks,
                                             f.Takeaways,
                                             f.Giveaways,
                                             f.MissedShots,
                                             f.EmptyNetGoals,
                                             season ? t.Wins : -1,
                                             -1};
            for (std::size_t k = 0; k + 1 < values.size(); ++k)
                if (values[k] >= 0) insert(kFirstTeamCategory + static_cast<int>(k), scope, values[k], who);
            if (!season && game.winnerSide() == side) {
                int margin = game.finalScore(side) - game.finalScore(1 - side);
                insert(kFirstQuarterCategory - 1, scope, margin, who);
            }
            for (int q = 0; q < kQuarters; ++q) {
                auto qi = static_cast<std::size_t>(q);
                int goalsFor = season ? t.GoalsByPeriod[0][qi] : own.goalsByPeriod[qi];
                int goalsAgainst = season ? t.GoalsByPeriod[1][qi] : opp.goalsByPeriod[qi];
                insert(kFirstQuarterCategory + q, scope, goalsFor, who);
                insert(kFirstOppQuarterCategory + q, scope, goalsAgainst, who);
            }
        }
    }
}

std::vector<FileChange> RecordBook::changes(const std::string& file) const {
    // A posting changes many categories at once: neighbouring changed slots
    // go in one write, the slots between them as they were read.
    constexpr std::size_t kGap = 8;
    std::vector<FileChange> out;
    auto write = [&](std::size_t first, std::size_t last) {
        std::vector<std::uint8_t> bytes((last - first + 1) * kRecordSlot, 0);
        std::size_t base = (first - 1) * kRecordSlot;
        if (base < raw_.size())
            std::copy(raw_.begin() + static_cast<std::ptrdiff_t>(base),
                      raw_.begin() + static_cast<std::ptrdiff_t>(std::min(raw_.size(), base + bytes.size())),
                      bytes.begin());
        for (std::size_t r = first; r <= last; ++r)
            if (changed_[r]) codec::encode(entries_[r], bytes.data() + (r - first) * kRecordSlot);
        // The last slot's unused end isn't written.
        bytes.resize(bytes.size() - kRecordSlot + codec::Layout<RecordEntry>::size);
        out.push_back({file, false, base, std::move(bytes)});
    };
    std::size_t first = 0, last = 0;
    for (std::size_t r = 2; r <= kRecordsInFile; ++r) {
        if (!changed_[r]) continue;
        if (first != 0 && r - last > kGap) {
            write(first, last);
            first = 0;
        }
        if (first == 0) first = r;
        last = r;
    }
    if (first != 0) write(first, last);
    return out;
}

std::vector<std::string> recordBookText(const RecordBook& book, RecordScope scope, bool teams) {
    std::vector<std::string> out;
    int from = teams ? kFirstTeamCategory : 1;
    int to = teams ? kRecordCategories : kFirstTeamCategory - 1;
    for (int c = from; c <= to; ++c) {
        std::string_view name = recordNames()[static_cast<std::size_t>(c)];
        if (name.empty()) continue;
        const RecordEntry& e = book.entry(c, scope);
        if (e.RecordName[0].str().empty()) continue;
        bool goalie = !teams && c >= kFirstGoalieCategory;
        out.push_back(fmt::format("{}{}", goalie ? "Goalies: " : "", name));
        for (std::size_t k = 0; k < kRecordPlaces; ++k) {
            if (e.RecordName[k].str().empty()) break;
            int v = e.RecordValue[k];
            std::string value = upper(name) == "SAVE%"                    ? fmt::format(".{:03}", v)
                                : upper(name) == "GOALS ALLOWED PER GAME" ? fmt::format("{}.{:02}", v / 100, v % 100)
                                                                          : std::to_string(v);
            out.push_back(fmt::format("  {}. {:<20} {:<3} {:>6}   vs {:<3} {}", k + 1, e.RecordName[k].str(),
                                      e.RecordTeam[k].str(), value, e.RecordOpponent[k].str(), e.RecordDate[k].str()));
        }
    }
    return out;
}

}  // namespace tallyrink
