#include "postgame/record_book.h"

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

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

namespace {

// What a player category counts, worked out once from its name: posting asks
// for every category of every player of every game.
enum class PlayerStat : std::uint8_t {
    None,
    Saves,
    GoalsAllowed,
    Shutouts,
    GoalieWins,
    Toi,
    SaveStreak,
    ShutoutStreak,
    SavePct,
    GoalsAgainstAverage,
    Goals,
    Assists,
    Shots,
    Points,
    Pim,
    PlusMinus,
    FaceoffsWon,
    FaceoffsLost,
    Hits,
    Blocks,
    Takeaways,
    MissedNet,
    Shifts,
    Giveaways,
    GameWinningGoals,
    ToiPP,
    PPG,
    PPA,
    ToiSH,
    SHG,
    SHA,
    Fights,
    TotalPenalties,
    Minors,
    Majors,
    SuspensionGames,
    PenaltyShotGoals,
    FirstStars,
    TotalStars,
    PointStreak,
    GoalStreak,
    AssistStreak,
};
constexpr std::size_t kPlayerStats = static_cast<std::size_t>(PlayerStat::AssistStreak) + 1;

PlayerStat goalieStat(const std::string& n) {
    if (n == "SAVES") return PlayerStat::Saves;
    if (n == "GOALS ALLOWED") return PlayerStat::GoalsAllowed;
    if (n == "SHUTOUTS") return PlayerStat::Shutouts;
    if (n == "WINS") return PlayerStat::GoalieWins;
    if (n == "TIME ON ICE") return PlayerStat::Toi;
    if (n == "SAVE STREAK") return PlayerStat::SaveStreak;
    if (n == "SHUTOUT STREAK") return PlayerStat::ShutoutStreak;
    if (n == "SAVE%") return PlayerStat::SavePct;
    if (n == "GOALS ALLOWED PER GAME") return PlayerStat::GoalsAgainstAverage;
    return PlayerStat::None;  // shootout wins aren't counted by goalie
}

PlayerStat skaterStat(const std::string& n) {
    static const std::array<std::pair<std::string_view, PlayerStat>, 33> table{{
        {"GOALS", PlayerStat::Goals},
        {"ASSISTS", PlayerStat::Assists},
        {"SHOTS", PlayerStat::Shots},
        {"POINTS", PlayerStat::Points},
        {"PIM", PlayerStat::Pim},
        {"PLUS/MINUS", PlayerStat::PlusMinus},
        {"FACEOFFS WON", PlayerStat::FaceoffsWon},
        {"FACEOFFS LOST", PlayerStat::FaceoffsLost},
        {"HITS", PlayerStat::Hits},
        {"BLOCKS", PlayerStat::Blocks},
        {"TAKEAWAYS", PlayerStat::Takeaways},
        {"TIME ON ICE", PlayerStat::Toi},
        {"MISSED NET", PlayerStat::MissedNet},
        {"SHIFTS", PlayerStat::Shifts},
        {"GIVEAWAYS", PlayerStat::Giveaways},
        {"GAME WINNING GOALS", PlayerStat::GameWinningGoals},
        {"POWER PLAY TOI", PlayerStat::ToiPP},
        {"POWER PLAY GOALS", PlayerStat::PPG},
        {"POWER PLAY ASSISTS", PlayerStat::PPA},
        {"SHORTHAND TOI", PlayerStat::ToiSH},
        {"SHORTHAND GOALS", PlayerStat::SHG},
        {"SHORTHAND ASSISTS", PlayerStat::SHA},
        {"FIGHTS", PlayerStat::Fights},
        {"TOTAL PENALTIES", PlayerStat::TotalPenalties},
        {"MINOR PENALTIES", PlayerStat::Minors},
        {"MAJOR PENALTIES", PlayerStat::Majors},
        {"SUSPENSION GAMES", PlayerStat::SuspensionGames},
        {"PENALTY SHOT/SHOOTOUT GOALS", PlayerStat::PenaltyShotGoals},
        {"1ST STAR", PlayerStat::FirstStars},
        {"TOTAL STARS", PlayerStat::TotalStars},
        {"POINT STREAK", PlayerStat::PointStreak},
        {"GOAL STREAK", PlayerStat::GoalStreak},
        {"ASSIST STREAK", PlayerStat::AssistStreak},
    }};
    for (const auto& [name, stat] : table)
        if (n == name) return stat;
    return PlayerStat::None;  // no count is kept of penalty-shot streaks or penalties killed by player
}

bool seasonOnlyName(const std::string& name) {
    return name.ends_with("STREAK") || name == "SUSPENSION GAMES" || name == "1ST STAR" || name == "TOTAL STARS" ||
           name == "GOALS ALLOWED PER GAME" || name == "WINS" || name == "SHUTOUTS";
}

struct PlayerCategory {
    PlayerStat stat = PlayerStat::None;
    bool seasonOnly = false;
};

const PlayerCategory& playerCategory(int category) {
    static const auto table = [] {
        std::array<PlayerCategory, kFirstTeamCategory> t{};
        for (int c = 1; c < kFirstTeamCategory; ++c) {
            const std::string& n = upperName(c);
            auto& entry = t[static_cast<std::size_t>(c)];
            entry.seasonOnly = seasonOnlyName(n);
            if (!n.empty()) entry.stat = c >= kFirstGoalieCategory ? goalieStat(n) : skaterStat(n);
        }
        return t;
    }();
    return table[static_cast<std::size_t>(category)];
}

}  // namespace

bool seasonOnly(int category) {
    if (category >= 1 && category < kFirstTeamCategory) return playerCategory(category).seasonOnly;
    return seasonOnlyName(upperName(category));
}

namespace {

// A player's value of a category that applies to him and to the scope.
// Built into each place that asks for one stat, where the choice of kind falls away.
[[gnu::always_inline]] inline std::optional<int> valueOf(PlayerStat stat, bool season, const PlayerRecord& p,
                                                         int shootoutGoals) {
    const StatLine& s = statLine(p, season ? StatLineIndex::Replay : StatLineIndex::Game);
    std::size_t k = season ? 0 : 1;  // the replay and this game's entries of the counters
    int against = s.Saves + s.GoalsAllowed;

    switch (stat) {
        case PlayerStat::None:
            return std::nullopt;
        case PlayerStat::Saves:
            return s.Saves;
        case PlayerStat::GoalsAllowed:
            return s.GoalsAllowed;
        case PlayerStat::Shutouts:
            return s.Shutouts;
        case PlayerStat::GoalieWins:
            return s.GoalieWins;
        case PlayerStat::Toi:
            return minutes(s.Toi);
        case PlayerStat::SaveStreak:
            return p.SaveStreak;
        case PlayerStat::ShutoutStreak:
            return p.ShutoutStreak;
        case PlayerStat::SavePct: {
            bool enough = season ? s.GP >= kMinSaveGames : against >= kMinGameShots;
            if (!enough || against == 0) return std::nullopt;
            return static_cast<int>(std::lround(1000.0 * s.Saves / against));
        }
        case PlayerStat::GoalsAgainstAverage:
            if (s.GP < kMinSaveGames || s.Toi <= 0) return std::nullopt;
            return static_cast<int>(std::lround(100.0 * s.GoalsAllowed * 3600.0 / s.Toi));
        case PlayerStat::Goals:
            return s.Goals;
        case PlayerStat::Assists:
            return s.Assists;
        case PlayerStat::Shots:
            return s.Sog;
        case PlayerStat::Points:
            return s.Goals + s.Assists;
        case PlayerStat::Pim:
            return s.Pim;
        case PlayerStat::PlusMinus:
            return s.PlusMinus;
        case PlayerStat::FaceoffsWon:
            return s.FaceoffsWon;
        case PlayerStat::FaceoffsLost:
            return s.FaceoffsLost;
        case PlayerStat::Hits:
            return s.Hits;
        case PlayerStat::Blocks:
            return s.Blocks;
        case PlayerStat::Takeaways:
            return s.Takeaways;
        case PlayerStat::MissedNet:
            return s.MissedShots;
        case PlayerStat::Shifts:
            return s.Shifts;
        case PlayerStat::Giveaways:
            return s.Giveaways;
        case PlayerStat::GameWinningGoals:
            return s.GWG;
        case PlayerStat::ToiPP:
            return minutes(s.ToiPP);
        case PlayerStat::PPG:
            return s.PPG;
        case PlayerStat::PPA:
            return s.PPA;
        case PlayerStat::ToiSH:
            return minutes(s.ToiSH);
        case PlayerStat::SHG:
            return s.SHG;
        case PlayerStat::SHA:
            return s.SHA;
        case PlayerStat::Fights:
            return p.Fights[season ? 1 : 2];
        case PlayerStat::TotalPenalties:
            return p.Minors[k] + p.Majors[k];
        case PlayerStat::Minors:
            return p.Minors[k];
        case PlayerStat::Majors:
            return p.Majors[k];
        case PlayerStat::SuspensionGames:
            return p.SuspensionGamesServed;
        case PlayerStat::PenaltyShotGoals:
            return s.PenaltyShotGoals + (season ? p.ShootoutGoals : shootoutGoals);
        case PlayerStat::FirstStars:
            return p.FirstStars;
        case PlayerStat::TotalStars:
            return p.FirstStars + p.SecondStars + p.ThirdStars;
        case PlayerStat::PointStreak:
            return p.PointStreak;
        case PlayerStat::GoalStreak:
            return p.GoalStreak;
        case PlayerStat::AssistStreak:
            return p.AssistStreak;
    }
    return std::nullopt;
}

// Every stat of a player for one scope at once, each as valueOf gives it:
// the stat is known at each place, so none goes through the choice of kind.
using PlayerStatValues = std::array<std::optional<int>, kPlayerStats>;

template <std::size_t From, std::size_t... I>
void fillStatValues(bool season, const PlayerRecord& p, int shootoutGoals, PlayerStatValues& out,
                    std::index_sequence<I...>) {
    ((out[From + I] = valueOf(static_cast<PlayerStat>(From + I), season, p, shootoutGoals)), ...);
}

// The stats a goalie's categories count lie from Saves to the goals-against
// average; a skater's are the time on the ice and those from Goals on. Only
// those of his kind are worked out (playerCategories holds to it).
constexpr auto kFirstGoalieStat = static_cast<std::size_t>(PlayerStat::Saves);
constexpr auto kLastGoalieStat = static_cast<std::size_t>(PlayerStat::GoalsAgainstAverage);
constexpr auto kFirstSkaterStat = static_cast<std::size_t>(PlayerStat::Goals);
constexpr auto kSkaterTimeStat = static_cast<std::size_t>(PlayerStat::Toi);

bool statOfKind(PlayerStat stat, bool goalie) {
    auto i = static_cast<std::size_t>(stat);
    if (goalie) return i >= kFirstGoalieStat && i <= kLastGoalieStat;
    return i == kSkaterTimeStat || (i >= kFirstSkaterStat && i < kPlayerStats);
}

void statValues(bool season, bool goalie, const PlayerRecord& p, int shootoutGoals, PlayerStatValues& out) {
    if (goalie) {
        fillStatValues<kFirstGoalieStat>(season, p, shootoutGoals, out,
                                         std::make_index_sequence<kLastGoalieStat - kFirstGoalieStat + 1>{});
        return;
    }
    out[kSkaterTimeStat] = valueOf(PlayerStat::Toi, season, p, shootoutGoals);
    fillStatValues<kFirstSkaterStat>(season, p, shootoutGoals, out,
                                     std::make_index_sequence<kPlayerStats - kFirstSkaterStat>{});
}

// The categories a player's game posts into, by kind of player and scope:
// posting asks them for every player of every game.
struct PlayerCategoryStat {
    int category;
    PlayerStat stat;
};

const std::vector<PlayerCategoryStat>& playerCategories(bool goalie, RecordScope scope) {
    static const auto lists = [] {
        std::array<std::vector<PlayerCategoryStat>, 4> l;
        for (int c : namedCategories()) {
            if (c >= kFirstTeamCategory) continue;
            const PlayerCategory& kind = playerCategory(c);
            if (kind.stat == PlayerStat::None) continue;
            bool goalieCategory = c >= kFirstGoalieCategory;
            if (!statOfKind(kind.stat, goalieCategory))
                throw std::logic_error(fmt::format("Record category {} counts a stat of the other kind", c));
            l[goalieCategory ? 2 : 0].push_back({c, kind.stat});
            if (!kind.seasonOnly) l[goalieCategory ? 3 : 1].push_back({c, kind.stat});
        }
        return l;
    }();
    return lists[(goalie ? 2 : 0) + (scope == RecordScope::Game ? 1 : 0)];
}

}  // namespace

std::optional<int> playerRecordValue(int category, RecordScope scope, const PlayerRecord& p, int shootoutGoals) {
    if (category < 1 || category >= kFirstTeamCategory) return std::nullopt;
    const PlayerCategory& kind = playerCategory(category);
    if (upperName(category).empty()) return std::nullopt;
    if (isGoalie(p) != (category >= kFirstGoalieCategory)) return std::nullopt;
    bool season = scope == RecordScope::Season;
    if (!season && kind.seasonOnly) return std::nullopt;
    return valueOf(kind.stat, season, p, shootoutGoals);
}

// ---- The book -------------------------------------------------------------------

namespace {

// A team code as the places compare it (trimmed), in one word: its length
// and up to three characters.
std::uint32_t teamKey(std::string_view code) {
    std::uint32_t key = static_cast<std::uint32_t>(code.size());
    for (std::size_t i = 0; i < code.size() && i < 3; ++i)
        key |= static_cast<std::uint32_t>(static_cast<unsigned char>(code[i])) << (8 * (i + 1));
    return key;
}

// A team key's bit of a record's gate.
std::uint64_t teamBit(std::uint32_t key) { return std::uint64_t{1} << ((key * 0x9E3779B1u) >> 26); }

// A name trimmed as the places compare them, padded again to the width:
// two are equal just when the trimmed names are, as a trimmed name neither
// begins nor ends with a blank.
FixedText<20> placeName(std::string_view trimmed) {
    FixedText<20> n;
    n.assign(trimmed);
    return n;
}

}  // namespace

RecordBook::RecordBook()
    : entries_(kRecordsInFile + 1),
      places_(kRecordsInFile + 1),
      gates_(kRecordsInFile + 1),
      changed_(kRecordsInFile + 1, false) {
    // Empty entries, as noteEntry would find them.
    for (std::size_t r = 2; r < gates_.size(); ++r) gates_[r].lower = lowerIsBetter(static_cast<int>(r / 2));
}

RecordBook RecordBook::load(const std::filesystem::path& folder) {
    RandomFile file(findFile(folder, kRecordsFile), kRecordSlot);
    if (!std::filesystem::exists(file.path())) return RecordBook();
    return fromBytes(readBytes(file.path()));
}

RecordBook RecordBook::fromBytes(std::span<const std::uint8_t> bytes) {
    RecordBook book;
    book.raw_.assign(bytes.begin(), bytes.end());
    std::span<const std::uint8_t> all(book.raw_);
    for (int c : namedCategories()) {
        for (RecordScope scope : {RecordScope::Season, RecordScope::Game}) {
            std::size_t r = recordNumber(c, scope);
            std::size_t from = (r - 1) * kRecordSlot;
            if (from >= all.size()) continue;
            RecordEntry e = codec::fromSlot<RecordEntry>(all.subspan(from, std::min(kRecordSlot, all.size() - from)));
            // A foreign or broken entry counts as empty rather than as a record to beat.
            for (std::size_t k = 0; k < kRecordPlaces; ++k)
                if (e.RecordName[k].blank()) e.RecordValue[k] = 0;
            book.entries_[r] = e;
            book.noteEntry(r);
        }
    }
    return book;
}

void RecordBook::noteEntry(std::size_t r) {
    const RecordEntry& e = entries_[r];
    Places& p = places_[r];
    for (std::size_t k = 0; k < kRecordPlaces; ++k) {
        std::string_view name = e.RecordName[k].view();  // empty just when the name is blank
        p.held[k] = !name.empty();
        p.heldTeamKey[k] = p.held[k] ? teamKey(e.RecordTeam[k].view()) : kNoTeamKey;
        p.heldName[k] = p.held[k] ? placeName(name) : FixedText<20>{};
    }
    noteLast(r);
}

void RecordBook::noteLast(std::size_t r) {
    Places& p = places_[r];
    p.lastValue = entries_[r].RecordValue[kRecordPlaces - 1];
    Gate& g = gates_[r];
    constexpr std::size_t kGameParity = recordNumber(1, RecordScope::Game) % 2;
    auto openToNothing = [&] { return r % 2 == kGameParity && !g.lower && g.bar < 0; };
    gamesOpenToNothing_ -= openToNothing() ? 1 : 0;
    g.teams = 0;
    for (std::size_t k = 0; k < kRecordPlaces; ++k)
        if (p.held[k]) g.teams |= teamBit(p.heldTeamKey[k]);
    // Records 0 and 1 have no category: nothing asks them.
    int category = r >= 2 ? static_cast<int>(r / 2) : 1;
    g.lower = lowerIsBetter(category);
    // A fifth place nobody holds takes any value above nothing.
    g.bar = p.held[kRecordPlaces - 1] ? p.lastValue : 0;
    gamesOpenToNothing_ += openToNothing() ? 1 : 0;
}

bool RecordBook::turnedAway(int category, RecordScope scope, int value, const Holder& who) const {
    std::size_t r = recordNumber(category, scope);
    const Gate& g = gates_[r];
    if (!g.lower && value <= g.bar && (scope != RecordScope::Season || (g.teams & who.teamBit) == 0)) return true;
    const Places& p = places_[r];
    // His own season place moves whatever his value.
    if (scope == RecordScope::Season)
        for (std::size_t k = 0; k < kRecordPlaces; ++k)
            if (p.heldTeamKey[k] == who.teamKey && p.heldName[k] == who.placeName) return false;
    constexpr std::size_t last = kRecordPlaces - 1;
    // A fifth place nobody holds takes any value but nothing at all.
    return p.held[last] ? !better(category, value, p.lastValue) : !(lowerIsBetter(category) || value > 0);
}

const RecordEntry& RecordBook::entry(int category, RecordScope scope) const {
    return entries_.at(recordNumber(category, scope));
}

RecordBook::Holder RecordBook::holderOf(const RecordHolder& who) {
    Holder h{who, {}, 0, {}, false, 0};
    h.team.assign(who.team);
    h.teamKey = teamKey(h.team.view());
    h.teamBit = teamBit(h.teamKey);
    FixedText<20> name;
    name.assign(who.name);
    h.placeName = placeName(name.view());
    h.named = !name.blank();
    return h;
}

bool RecordBook::insert(int category, RecordScope scope, int value, const RecordHolder& who) {
    if (category < 1 || category > kRecordCategories || recordNames()[std::size_t(category)].empty()) return false;
    Holder h = holderOf(who);
    return insert(category, scope, value, h);
}

bool RecordBook::insert(int category, RecordScope scope, int value, Holder& who) {
    std::size_t r = recordNumber(category, scope);
    RecordEntry& e = entries_[r];
    // What is known of the places moves with them, as noteEntry would find it.
    Places& p = places_[r];
    constexpr std::size_t last = kRecordPlaces - 1;
    // A season total holds one place: his older figure of the season leaves
    // first.
    std::optional<std::size_t> own;
    if (scope == RecordScope::Season) {
        for (std::size_t k = 0; k < kRecordPlaces && !own; ++k)
            if (p.heldTeamKey[k] == who.teamKey && p.heldName[k] == who.placeName) own = k;
    }
    // A fifth place nobody holds takes any value but nothing at all.
    auto beats = [&](std::size_t k, bool isHeld) {
        if (!isHeld) return lowerIsBetter(category) || value > 0;
        return better(category, value, e.RecordValue[k]);
    };
    // Most values enter nowhere: the fifth place turns them away untouched.
    if (!own && !beats(last, p.held[last])) return false;

    if (!changed_[r]) {
        changed_[r] = true;
        changedList_.insert(std::lower_bound(changedList_.begin(), changedList_.end(), r), r);
    }
    if (own) {
        for (std::size_t j = *own; j + 1 < kRecordPlaces; ++j) {
            e.RecordValue[j] = e.RecordValue[j + 1];
            e.RecordName[j] = e.RecordName[j + 1];
            e.RecordTeam[j] = e.RecordTeam[j + 1];
            e.RecordOpponent[j] = e.RecordOpponent[j + 1];
            e.RecordDate[j] = e.RecordDate[j + 1];
            p.held[j] = p.held[j + 1];
            p.heldTeamKey[j] = p.heldTeamKey[j + 1];
            p.heldName[j] = p.heldName[j + 1];
        }
        e.RecordValue[last] = 0;
        e.RecordName[last] = {};
        e.RecordTeam[last] = {};
        e.RecordOpponent[last] = {};
        e.RecordDate[last] = {};
        p.held[last] = false;
        p.heldTeamKey[last] = kNoTeamKey;
        p.heldName[last] = {};
        if (!beats(last, false)) {
            noteLast(r);
            return false;
        }
    }
    e.RecordValue[last] = word(value);
    e.RecordName[last].assign(who.who.name);
    e.RecordTeam[last].assign(who.who.team);
    e.RecordOpponent[last].assign(who.who.opponent);
    e.RecordDate[last].assign(who.who.date);
    // His name and team as the entry now holds them: those the holder was made with.
    p.held[last] = who.named;
    p.heldTeamKey[last] = who.named ? who.teamKey : kNoTeamKey;
    p.heldName[last] = who.named ? who.placeName : FixedText<20>{};
    // Up the list while it beats the place above; a tie stays below the older entry.
    for (std::size_t k = last; k > 0; --k) {
        if (p.held[k - 1] && !better(category, e.RecordValue[k], e.RecordValue[k - 1])) break;
        std::swap(e.RecordValue[k], e.RecordValue[k - 1]);
        std::swap(e.RecordName[k], e.RecordName[k - 1]);
        std::swap(e.RecordTeam[k], e.RecordTeam[k - 1]);
        std::swap(e.RecordOpponent[k], e.RecordOpponent[k - 1]);
        std::swap(e.RecordDate[k], e.RecordDate[k - 1]);
        std::swap(p.held[k], p.held[k - 1]);
        std::swap(p.heldTeamKey[k], p.heldTeamKey[k - 1]);
        std::swap(p.heldName[k], p.heldName[k - 1]);
    }
    noteLast(r);
    return true;
}

namespace {

// A game value of nothing or less where more is better: most of a man's game
// (no goal, no penalty, no hit), and turned away by every place that holds
// more than nothing.
bool nothingOfMore(int category, RecordScope scope, int value) {
    return scope == RecordScope::Game && value <= 0 && !lowerIsBetter(category);
}

}  // namespace

PlayerRecordValues PlayerRecordValues::of(const GameSession& session, const FinishedGame& game) {
    PlayerRecordValues out;
    // Room for the forty men of a game and their sixty values each, so that
    // the lists seldom grow on the way.
    out.players.reserve(2 * kRosterSlots);
    out.values.reserve(4096);
    std::string date = dateOf(game);
    PlayerStatValues stats{};
    out.nothing_.reserve(64);
    for (int side : {kVisitor, kHome}) {
        const SideTables& t = session.side(side);
        const SideSummary& own = game.side[static_cast<std::size_t>(side)];
        const SideSummary& opp = game.side[static_cast<std::size_t>(1 - side)];
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const PlayerRecord& p = t.player(slot);
            if (!t.onTeam(slot) || statLine(p, StatLineIndex::Game).Toi <= 0) continue;
            int shootout = own.shootoutGoalsOf[static_cast<std::size_t>(slot)];
            bool goalie = isGoalie(p);
            for (RecordScope scope : {RecordScope::Season, RecordScope::Game}) {
                statValues(scope == RecordScope::Season, goalie, p, shootout, stats);
                for (const auto& [c, stat] : playerCategories(goalie, scope))
                    if (const auto& v = stats[static_cast<std::size_t>(stat)]) out.add(c, scope, *v);
            }
            std::string_view name = p.ShortName.view().empty() ? p.LastName.view() : p.ShortName.view();
            out.endPlayer({std::string(name), own.code, opp.code, date});
        }
    }
    return out;
}

void PlayerRecordValues::add(int category, RecordScope scope, int value) {
    Value v{static_cast<std::int16_t>(category), scope, value};
    if (nothingOfMore(category, scope, value))
        nothing_.push_back(v);
    else
        values.push_back(v);
}

void PlayerRecordValues::endPlayer(RecordHolder who) {
    std::size_t nothingFrom = values.size();
    values.insert(values.end(), nothing_.begin(), nothing_.end());
    nothing_.clear();
    players.push_back({std::move(who), values.size(), nothingFrom});
}

void RecordBook::postPlayers(const GameSession& session, const FinishedGame& game) {
    postPlayers(PlayerRecordValues::of(session, game));
}

void RecordBook::postPlayers(const PlayerRecordValues& values) {
    std::size_t from = 0;
    for (const PlayerRecordValues::Player& player : values.players) {
        Holder holder = holderOf(player.who);
        // Each value asks a record of its own: those passed over move no
        // other's turn.
        std::size_t end = gamesOpenToNothing_ > 0 ? player.end : std::min(player.end, player.nothingFrom);
        for (std::size_t k = from; k < end; ++k) {
            const PlayerRecordValues::Value& v = values.values[k];
            if (!turnedAway(v.category, v.scope, v.value, holder)) insert(v.category, v.scope, v.value, holder);
        }
        from = player.end;
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
        Holder holder = holderOf(who);
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
            // Most values are turned away at the gate, as the players' are.
            auto post = [&](int category, int value) {
                if (!turnedAway(category, scope, value, holder)) insert(category, scope, value, holder);
            };
            for (std::size_t k = 0; k + 1 < values.size(); ++k)
                if (values[k] >= 0) post(kFirstTeamCategory + static_cast<int>(k), values[k]);
            if (!season && game.winnerSide() == side)
                post(kFirstQuarterCategory - 1, game.finalScore(side) - game.finalScore(1 - side));
            for (int q = 0; q < kQuarters; ++q) {
                auto qi = static_cast<std::size_t>(q);
                post(kFirstQuarterCategory + q, season ? t.GoalsByPeriod[0][qi] : own.goalsByPeriod[qi]);
                post(kFirstOppQuarterCategory + q, season ? t.GoalsByPeriod[1][qi] : opp.goalsByPeriod[qi]);
            }
        }
    }
}

std::vector<FileChange> RecordBook::changes(const std::string& file, std::size_t joinWithin) const {
    const std::size_t kGap = std::max<std::size_t>(joinWithin, 1);
    std::vector<FileChange> out;
    auto write = [&](std::size_t first, std::size_t last) {
        // The last slot's unused end isn't written.
        std::size_t size = (last - first) * kRecordSlot + codec::Layout<RecordEntry>::size;
        std::size_t base = (first - 1) * kRecordSlot;
        // The bytes as read, and zeros past the file's end: copied, not cleared first.
        std::vector<std::uint8_t> bytes;
        bytes.reserve(size);
        if (base < raw_.size())
            bytes.assign(raw_.begin() + static_cast<std::ptrdiff_t>(base),
                         raw_.begin() + static_cast<std::ptrdiff_t>(std::min(raw_.size(), base + size)));
        bytes.resize(size, 0);
        for (std::size_t r = first; r <= last; ++r)
            if (changed_[r]) codec::encode(entries_[r], bytes.data() + (r - first) * kRecordSlot);
        out.push_back({file, false, base, std::move(bytes)});
    };
    std::size_t first = 0, last = 0;
    for (std::size_t r : changedList_) {
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

void RecordBook::written() {
    // The file as the changes leave it: each changed entry over its slot, and
    // zeros up to it where the file was shorter.
    for (std::size_t r : changedList_) {
        std::size_t base = (r - 1) * kRecordSlot;
        if (raw_.size() < base + codec::Layout<RecordEntry>::size)
            raw_.resize(base + codec::Layout<RecordEntry>::size, 0);
        codec::encode(entries_[r], raw_.data() + base);
    }
    for (std::size_t r : changedList_) {
        // As the file reads back: a place without a name holds no value.
        RecordEntry& e = entries_[r];
        bool cleared = false;
        for (std::size_t k = 0; k < kRecordPlaces; ++k) {
            if (!e.RecordName[k].blank() || e.RecordValue[k] == 0) continue;
            e.RecordValue[k] = 0;
            cleared = true;
        }
        // Insert noted the entry as it left it: only a cleared value is new.
        if (cleared) noteEntry(r);
        changed_[r] = false;
    }
    changedList_.clear();
}

// ---- The books of a run ------------------------------------------------------------

RecordBook& KeptRecordBooks::book(const std::filesystem::path& file, bool shared) {
    auto it = std::find_if(books_.begin(), books_.end(), [&](const Kept& k) { return k.file == file; });
    if (it != books_.end() && !shared) {
        it->asked = true;
        return it->book;
    }
    // Read into the same buffer at every game: a fresh one of this size is
    // mapped and faulted in anew each time.
    std::vector<std::uint8_t>& bytes = scratch_;
    int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 && errno != ENOENT)
        throw FileError(fmt::format("Cannot read {}: {}", file.string(), std::strerror(errno)));
    if (fd >= 0) {
        struct stat st {};
        bool ok = ::fstat(fd, &st) == 0;
        std::size_t got = 0;
        if (ok) {
            // Of the same size as last time (as it mostly is) nothing is
            // cleared first: the read writes over every byte.
            if (bytes.size() != static_cast<std::size_t>(st.st_size))
                bytes.resize(static_cast<std::size_t>(st.st_size));
            while (got < bytes.size()) {
                ssize_t n = ::read(fd, bytes.data() + got, bytes.size() - got);
                if (n < 0 && errno == EINTR) continue;
                if (n < 0) ok = false;
                if (n <= 0) break;
                got += static_cast<std::size_t>(n);
            }
        }
        int err = errno;
        ::close(fd);
        if (!ok) throw FileError(fmt::format("Cannot read {}: {}", file.string(), std::strerror(err)));
        bytes.resize(got);
    } else {
        bytes.clear();
    }
    if (it == books_.end()) {
        books_.push_back({file, RecordBook::fromBytes(bytes), false});
        it = std::prev(books_.end());
    } else if (!std::ranges::equal(bytes, it->book.bytes())) {
        it->book = RecordBook::fromBytes(bytes);
    }
    it->asked = true;
    return it->book;
}

void KeptRecordBooks::written() {
    for (Kept& k : books_) {
        if (!k.asked) continue;
        k.book.written();
        k.asked = false;
    }
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
