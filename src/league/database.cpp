#include "league/database.h"

#include <algorithm>
#include <limits>
#include <string>
#include <tuple>
#include <unordered_map>

#include "league/files.h"
#include "league/record_fields.h"

namespace tallyrink {

namespace {

constexpr double kSecondsPerHour = 3600.0;
constexpr double kRealQualifyGoalie = 0.6;
constexpr double kRealQualifySkater = 0.7;
constexpr double kReplayQualifyGoalie = 0.4;
constexpr double kReplayQualifySkater = 0.7;

template <class T>
T saturatingSum(T a, T b) {
    long long sum = static_cast<long long>(a) + static_cast<long long>(b);
    sum = std::clamp<long long>(sum, std::numeric_limits<T>::min(), std::numeric_limits<T>::max());
    return static_cast<T>(sum);
}

// The team a row counts for: its team number, also for a former-team row;
// 0 for a free agent or any other row.
int teamOfRow(int teamId) {
    if (isTeamNumber(teamId)) return teamId;
    if (isFormerTeamRow(teamId)) return teamId - kFormerTeamBase;
    return 0;
}

StatLine& real(PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }
StatLine& replay(PlayerRecord& p) { return statLine(p, StatLineIndex::Replay); }
const StatLine& replay(const PlayerRecord& p) { return statLine(p, StatLineIndex::Replay); }

bool isGoalie(const PlayerRecord& p) { return p.PositionFlags[4] != 0; }

// The first n characters of a fixed text as it lies in the record, with
// never-written bytes shown as blanks.
template <std::size_t N>
std::string leftOf(const FixedText<N>& text, std::size_t n) {
    std::string out(text.raw.data(), std::min(n, N));
    std::replace(out.begin(), out.end(), '\0', ' ');
    out.resize(n, ' ');
    return out;
}

std::string nameKey(const PlayerRecord& p) {
    return p.FirstName.str() + '\n' + p.LastName.str() + '\n' + std::to_string(p.Age);
}

class ComboScan {
public:
    explicit ComboScan(League& league) : league_(league), rows_(league.PlayerTable()) {
        original_ = rows_.size();
        markRosters();
        for (int t = 1; t <= kMaxTeams; ++t) {
            maxGamesAnyTeam_ = std::max(maxGamesAnyTeam_, league_.gamesPlayed(t));
            if (league_.isActive(t)) maxGamesActiveTeam_ = std::max(maxGamesActiveTeam_, league_.gamesPlayed(t));
        }
        used_.assign(original_, false);
        for (std::size_t j = 0; j < original_; ++j) {
            int id = rows_[j].player.TeamId;
            if (teamOfRow(id) != 0 || id == kFreeAgent) byName_[nameKey(rows_[j].player)].push_back(j);
        }
    }

    int run() {
        for (std::size_t i = 0; i < original_; ++i) {
            rows_[i].player.TotalRowTeams.assign("");
            if (startsCombination(i)) combine(i);
        }
        return static_cast<int>(rows_.size() - original_);
    }

private:
    void markRosters() {
        rosterTeam_.assign(original_, 0);
        for (int t = 1; t <= kMaxTeams; ++t) {
            if (!league_.isActive(t)) continue;
            for (auto id : league_.team(t).Roster)
                if (id >= 1 && static_cast<std::size_t>(id) <= original_)
                    rosterTeam_[static_cast<std::size_t>(id - 1)] = t;
        }
    }

    // A row that may begin a combination: one of a team, not yet taken into
    // another, and not on its own team's roster (the current row of a player
    // is found as a partner of his earlier ones).
    bool startsCombination(std::size_t i) const {
        if (used_[i]) return false;
        int team = teamOfRow(rows_[i].player.TeamId);
        return team != 0 && rosterTeam_[i] != team;
    }

    bool isPartner(std::size_t i, std::size_t j) const {
        const auto& pi = rows_[i].player;
        const auto& pj = rows_[j].player;
        int teamI = teamOfRow(pi.TeamId);
        int teamJ = teamOfRow(pj.TeamId);  // 0 for a free agent
        if (teamJ == teamI) return false;
        // Two stints can't hold more games than the team they are checked against played.
        int games = replay(pi).GP + replay(pj).GP;
        if (pi.TotalRowFlag == 0 && games > league_.gamesPlayed(teamI)) return false;
        if (teamJ != 0 && games > league_.gamesPlayed(teamJ)) return false;
        return true;
    }

    std::string teamLetter(int team) const {
        if (team == 0) return "FA";
        auto code = league_.team(team).Abbrev.str();
        if (code.empty()) code = league_.team(team).City.str();
        return code.empty() ? std::string("?") : code.substr(0, 1);
    }

    void combine(std::size_t i) {
        auto it = byName_.find(nameKey(rows_[i].player));
        if (it == byName_.end()) return;
        std::size_t total = 0;
        bool started = false;
        std::string teams;
        std::vector<std::size_t> stints;
        for (std::size_t j : it->second) {
            if (j == i || used_[j] || !isPartner(i, j)) continue;
            if (!started) {
                if (rows_.size() >= kPlayerTableRows) return;
                PlayerRow combined;
                combined.player = rows_[i].player;
                combined.player.TeamId = kTotalRow;
                teams = teamLetter(teamOfRow(rows_[i].player.TeamId));
                combined.player.TotalRowTeams.assign(teams);
                rows_.push_back(std::move(combined));
                total = rows_.size() - 1;
                used_[i] = true;
                stints.push_back(i);
                started = true;
            }
            used_[j] = true;
            stints.push_back(j);
            teams += '-';
            teams += teamLetter(teamOfRow(rows_[j].player.TeamId));
            rows_[total].player.TotalRowTeams.assign(teams);
            addStint(replay(rows_[total].player), rows_[j].player);
        }
        if (started && replay(rows_[total].player).GP > maxGamesAnyTeam_ + 3) keepBestStint(total, stints);
    }

    void addStint(StatLine& sum, const PlayerRecord& stint) const {
        const auto& add = replay(stint);
        // The same stint twice over (a copied record) is counted once.
        bool sameStint = add.GP == sum.GP && add.Toi == sum.Toi && add.Sog == sum.Sog &&
                         add.PlusMinus == sum.PlusMinus && add.Saves == sum.Saves;
        if (sameStint || stint.TotalRowFlag == 1) return;
        if (sum.GP + add.GP > maxGamesActiveTeam_ + 1) return;
        addStatLine(sum, add);
    }

    // A total of far more games than any team played means the stints were
    // not one player's: the combined row shows his longest stint instead.
    void keepBestStint(std::size_t total, const std::vector<std::size_t>& stints) {
        std::size_t best = stints.front();
        for (std::size_t s : stints)
            if (replay(rows_[s].player).Toi > replay(rows_[best].player).Toi) best = s;
        auto teams = rows_[total].player.TotalRowTeams;
        rows_[total].player = rows_[best].player;
        rows_[total].player.TeamId = kTotalRow;
        rows_[total].player.TotalRowTeams = teams;
    }

    League& league_;
    std::vector<PlayerRow>& rows_;
    std::size_t original_ = 0;
    std::vector<int> rosterTeam_;
    std::vector<bool> used_;
    std::unordered_map<std::string, std::vector<std::size_t>> byName_;
    int maxGamesAnyTeam_ = 0;
    int maxGamesActiveTeam_ = 0;
};

RowRates ratesOf(const StatLine& line) {
    RowRates r;
    if (line.Toi > 0) r.Per60Factor = kSecondsPerHour / line.Toi;
    int faceoffs = line.FaceoffsWon + line.FaceoffsLost;
    if (faceoffs != 0) r.FaceoffShare = static_cast<double>(line.FaceoffsWon) / faceoffs;
    return r;
}

bool qualifies(int gamesPlayed, int gamesAvailable, double share) {
    return gamesAvailable > 0 && static_cast<double>(gamesPlayed) / gamesAvailable >= share;
}

std::string teamCode(const League& league, const PlayerRecord& p) {
    if (p.TeamId == kTotalRow) return leftOf(p.TotalRowTeams, 3);
    if (p.TeamId == kFreeAgent) return "FA ";
    return leftOf(league.team(p.TeamId).Abbrev, 3);
}

void fillDatabaseRow(const League& league, PlayerRow& row, const EraGames& eraGames) {
    auto& p = row.player;
    row.label = leftOf(p.ShortName, 12) + " " + teamCode(league, p);
    row.real = ratesOf(real(p));
    row.replay = ratesOf(replay(p));

    int team = p.TeamId == kTotalRow || p.TeamId == kFreeAgent ? 1 : p.TeamId;
    int year = p.PlayerYear >= 1900 ? p.PlayerYear : league.team(team).TeamYear;
    int seasonGames = eraGames ? eraGames(year) : kDefaultEraGames;
    bool goalie = isGoalie(p);
    row.RealQualified = qualifies(real(p).GP, seasonGames, goalie ? kRealQualifyGoalie : kRealQualifySkater);
    if (!row.RealQualified) row.real = {};

    if (p.TeamId != kFreeAgent) {
        // A combined row is measured against team 1's games.
        row.ReplayQualified =
            qualifies(replay(p).GP, league.gamesPlayed(team), goalie ? kReplayQualifyGoalie : kReplayQualifySkater);
        if (!row.ReplayQualified) row.replay = {};
    }
    if (goalie && real(p).Toi == 0) real(p).Toi = real(p).GP * static_cast<std::int32_t>(kSecondsPerHour);
}

}  // namespace

void addStatLine(StatLine& total, const StatLine& add) {
    std::apply(
        [&](const auto&... f) { ((total.*(f.member) = saturatingSum(total.*(f.member), add.*(f.member))), ...); },
        codec::FieldTable<StatLine>::fields);
}

int ComboPlayerScan(League& league) { return ComboScan(league).run(); }

void LoadDataBase(League& league, const EraGames& eraGames) {
    // The scan matches stints against the teams' games as the folder has them now.
    league.readTeamTable();
    auto& rows = league.PlayerTable();
    rows = readPlayerRows(findFile(league.dir(), kPlayerFile));
    ComboPlayerScan(league);

    // Two empty rows follow the last one, as readers of the working copy expect.
    std::vector<PlayerRecord> copy;
    copy.reserve(rows.size() + 2);
    for (const auto& row : rows) copy.push_back(row.player);
    copy.resize(rows.size() + 2);
    try {
        rewriteRecords(RandomFile(findFile(league.dir(), kLeadersWorkFile), kPlayerSlot), copy);
    } catch (const FileError&) {
        // A league on read-only media can still be viewed: the working copy
        // is only a scratch file, and the table below is built from the same rows.
    }

    league.clearPlayers();
    for (std::size_t r = 0; r < copy.size(); ++r) {
        int id = copy[r].TeamId;
        if (!isTeamNumber(id) && id != kTotalRow && id != kFreeAgent) continue;
        PlayerRow row;
        row.player = copy[r];
        row.recordNumber = static_cast<std::int32_t>(r + 1);
        rows.push_back(std::move(row));
    }
    league.readTeamTable();
    for (auto& row : rows) fillDatabaseRow(league, row, eraGames);
}

}  // namespace tallyrink
