#include "engine/team_load.h"

#include <fmt/core.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "engine/record_upgrades.h"
#include "league/file_images.h"
#include "league/files.h"
#include "league/folder_names.h"
#include "league/league.h"
#include "league/schedule.h"
#include "league/session.h"
#include "team/default_coach.h"
#include "team/lineup_tools.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

const StatLine& realOf(const PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }

bool endsWithNoCase(const std::string& text, std::string_view tail) {
    if (text.size() < tail.size()) return false;
    return std::equal(tail.begin(), tail.end(), text.end() - static_cast<std::ptrdiff_t>(tail.size()),
                      [](char a, char b) { return std::toupper((unsigned char)a) == std::toupper((unsigned char)b); });
}

template <class R>
bool sameBytes(const R& a, const R& b) {
    return codec::slotArray(a) == codec::slotArray(b);
}

// The bytes of slot r: the run's image where it lies (short where the file
// ends), else read from the disk into `buffer`. The records are decoded
// straight into the side's tables: a copy returned by value would be
// cleared, filled and then copied again.
std::span<const std::uint8_t> slotVia(FileImages* images, const fs::path& path, std::size_t slot, std::size_t r,
                                      std::vector<std::uint8_t>& buffer) {
    if (images) return images->slotBytes(path, slot, r);
    buffer = RandomFile(path, slot).readSlot(r);
    return buffer;
}

template <class R>
bool sameBytes(const R& record, std::span<const std::uint8_t> bytes) {
    const auto mine = codec::slotArray(record);
    return std::equal(mine.begin(), mine.end(), bytes.begin(), bytes.end());
}

// A slot's bytes as read: what the file lacks at its end reads as zero.
template <std::size_t N>
void copySlot(std::array<std::uint8_t, N>& to, std::span<const std::uint8_t> from) {
    std::size_t n = std::min(N, from.size());
    if (n > 0) std::memcpy(to.data(), from.data(), n);
    std::fill(to.begin() + static_cast<std::ptrdiff_t>(n), to.end(), std::uint8_t{0});
}

constexpr std::array<std::uint8_t, codec::slotWidth<PlayerRecord>()> kEmptyPlayerSlot{};

SideTables::SlotsAsRead& slotsOf(SideTables& s) {
    if (!s.slotsAsRead) {
        s.slotsAsRead.reset(new SideTables::SlotsAsRead);  // left unset: each load writes what it reads
        s.slotsAsRead->planHeld = false;
        s.slotsAsRead->held.fill(false);
    }
    return *s.slotsAsRead;
}

}  // namespace

std::span<const std::uint8_t> SideTables::planAsRead() const {
    if (!slotsAsRead || !slotsAsRead->planHeld) return {};
    if (slotsAsRead->sharedPlan) return *slotsAsRead->sharedPlan;
    return slotsAsRead->plan;
}

std::span<const std::uint8_t> SideTables::playerAsRead(int slot) const {
    auto i = static_cast<std::size_t>(slot);
    if (!slotsAsRead || !slotsAsRead->held.at(i)) return kEmptyPlayerSlot;
    return slotsAsRead->players[i];
}

void SideTables::setPlanAsRead(std::span<const std::uint8_t> bytes) {
    SlotsAsRead& read = slotsOf(*this);
    read.sharedPlan.reset();
    copySlot(read.plan, bytes);
    read.planHeld = true;
}

void SideTables::setPlanAsRead(std::shared_ptr<const PlanSlot> bytes) {
    SlotsAsRead& read = slotsOf(*this);
    read.sharedPlan = std::move(bytes);
    read.planHeld = true;
}

void SideTables::setPlayerAsRead(int slot, std::span<const std::uint8_t> bytes) {
    auto i = static_cast<std::size_t>(slot);
    SlotsAsRead& read = slotsOf(*this);
    copySlot(read.players.at(i), bytes);
    read.held[i] = true;
}

void SideTables::forgetPlayerAsRead(int slot) {
    if (slotsAsRead) slotsAsRead->held.at(static_cast<std::size_t>(slot)) = false;
}

std::pair<int, int> dayAfter(int seasonMonth, int day) {
    ++day;
    if (day > scheduleMonthLength(calendarMonth(seasonMonth))) {
        day = 1;
        seasonMonth = seasonMonth % 12 + 1;
    }
    return {seasonMonth, day};
}

ScheduleTeamRows::ScheduleTeamRows(const Schedule& schedule) : start_(kMaxTeams + 1, 0) {
    const std::vector<GameRecord>& rows = schedule.rows();
    // Counted first, then placed: one array for all the teams.
    auto teamsOf = [](const GameRecord& g) {
        int visitor = isTeamNumber(g.VisitorTeam) ? g.VisitorTeam : 0;
        int home = isTeamNumber(g.HomeTeam) && g.HomeTeam != g.VisitorTeam ? g.HomeTeam : 0;
        return std::pair{visitor, home};
    };
    for (const GameRecord& g : rows) {
        auto [visitor, home] = teamsOf(g);
        if (visitor) ++start_[static_cast<std::size_t>(visitor)];
        if (home) ++start_[static_cast<std::size_t>(home)];
    }
    for (std::size_t t = 1; t < start_.size(); ++t) start_[t] += start_[t - 1];
    rows_.resize(start_.back());
    // Placed from the end back, each team's rows come out in order and its
    // start is left where its rows begin.
    for (std::size_t r = rows.size(); r-- > 0;) {
        auto [visitor, home] = teamsOf(rows[r]);
        for (int t : {visitor, home})
            if (t) rows_[--start_[static_cast<std::size_t>(t)]] = static_cast<std::uint32_t>(r);
    }
}

std::span<const std::uint32_t> ScheduleTeamRows::of(int team) const {
    if (!isTeamNumber(team)) return {};
    auto t = static_cast<std::size_t>(team);
    std::uint32_t end = t == kMaxTeams ? static_cast<std::uint32_t>(rows_.size()) : start_[t + 1];
    return std::span(rows_).subspan(start_[t], end - start_[t]);
}

GameSession::GameSession(LeagueContext league, GeneralManagerHooks* generalManager)
    : league_(std::move(league)), manager_(generalManager ? generalManager : &defaultManager_) {}

GameSession GameSession::forSession(const Session& session, GeneralManagerHooks* generalManager) {
    return GameSession({session.LeagueDir(), session.rules(), &session.era(), &session.schedule()}, generalManager);
}

const EraRecord& GameSession::eraRow(int year, int fallback) const { return league_.era->yearOr(year, fallback); }

int GameSession::eraGamesOf(int year) const {
    if (!EraTable::contains(year)) return 82;
    int games = league_.era->year(year).Games;
    return games > 0 ? games : 82;
}

LeaguePlayerIndex LeaguePlayerIndex::read(const std::filesystem::path& leagueDir) {
    LeaguePlayerIndex index;
    for (const auto& row : readPlayerRows(findFile(leagueDir, kPlayerFile))) {
        const PlayerRecord& p = row.player;
        if (!isTeamNumber(p.TeamId)) continue;
        index.realFights += p.Fights[0];
        if (p.PlayerYear == 2020 && realOf(p).GP > 56) ++index.players2020;
        index.recordsOfTeam[static_cast<std::size_t>(p.TeamId)].push_back(row.recordNumber);
    }
    return index;
}

const LeaguePlayerIndex& GameSession::playerIndex() const {
    if (league_.players != nullptr) return *league_.players;
    if (!ownIndex_) ownIndex_ = LeaguePlayerIndex::read(league_.leagueDir);
    return *ownIndex_;
}

void GameSession::loadGame(int visitor, int home, int calendarMonth, int day, Random& rng) {
    GameActive = true;
    GameMonth = seasonMonth(calendarMonth);
    GameDay = day;
    HkLoadTeam(kVisitor, visitor, rng);
    HkLoadTeam(kHome, home, rng);
}

void GameSession::HkLoadTeam(int sideIndex, int team, Random& rng) {
    if (!isTeamNumber(team)) return;
    const bool asBuilt = asBuilt_.at(static_cast<std::size_t>(sideIndex));
    SideTables& s = side(sideIndex);
    if (!asBuilt) clearForLoad(s);
    s.TeamId = team;
    s.DressedToday.fill(0);
    manager_->beforeLoad(*this, sideIndex);
    readTeam(s);
    scanSchedule(s);
    if (!GameActive) setLeagueDay(s);
    readPlan(s);
    repairRoster(s);
    readPlayers(sideIndex, !asBuilt, rng);
    leagueFixes(s);
    randomAbsences(s, rng);
    capsAndLines(s);
    computeRates(s, rng);
    firstTimePlan(s);
    remainingStamps(s);
    availability(s);
    coach(sideIndex);
    lastFixes(s);
    completeLineup(sideIndex);
    noteUnrated(sideIndex);
}

// Games of the team in the schedule; a team with fewer than ten plays the
// era's season.
void GameSession::scanSchedule(SideTables& s) {
    int count = 0;
    if (league_.schedule) {
        auto note = [&](const GameRecord& g) {
            if (statusOf(g) == kDeleted) return;
            ++count;
            s.scheduleOpen = s.scheduleOpen || isOpen(g);
        };
        const std::vector<GameRecord>& rows = league_.schedule->rows();
        if (league_.scheduleRows) {
            for (std::uint32_t r : league_.scheduleRows->of(s.TeamId)) note(rows[r]);
        } else {
            // The team first: it plays in few of the rows, and the status is asked out of line.
            for (const GameRecord& g : rows)
                if (g.VisitorTeam == s.TeamId || g.HomeTeam == s.TeamId) note(g);
        }
    }
    s.SeasonGames = count < 10 ? eraGamesOf(s.team.TeamYear) : count;
}

// The date availability is judged by outside a game: the team's next game,
// or the day after its last one when it has played them all.
void GameSession::setLeagueDay(const SideTables& s) {
    GameMonth = 2;
    GameDay = 1;
    int next = 0, last = 0;
    if (league_.schedule) {
        for (const GameRecord& g : league_.schedule->rows()) {
            if ((g.VisitorTeam != s.TeamId && g.HomeTeam != s.TeamId) || statusOf(g) == kDeleted) continue;
            int key = dateKey(g.Month, g.Day);
            if (isOpen(g) && (next == 0 || key < next)) next = key;
            if (statusOf(g) == kPlayed && key > last) last = key;
        }
    }
    if (next > 0) {
        GameMonth = next / 100;
        GameDay = next % 100;
    } else if (last > 0) {
        std::tie(GameMonth, GameDay) = dayAfter(last / 100, last % 100);
    } else if (league_.rules.IsPlayoffFolder == 1) {
        // A playoff module without games yet starts in April.
        GameMonth = 8;
        GameDay = 1;
    }
}

fs::path GameSession::leagueFile(std::string_view name) const {
    return league_.names ? league_.names->find(name) : findFile(league_.leagueDir, name);
}

// What a load doesn't write whole goes back to a clearing's values. The team,
// the plan and their copies as read are read whole; each roster slot is read
// or cleared by readPlayers.
void GameSession::clearForLoad(SideTables& s) {
    s.TeamId = 0;
    s.rates.fill(PlayerRates{});
    s.ShiftLimit.fill(0);
    s.MaxEnergy.fill(0);
    s.SeasonGamesOfPlayer.fill(0);
    s.DressedToday.fill(0);
    for (auto& name : s.DisplayName) name.clear();
    for (auto& name : s.ShortNameOf) name.clear();
    s.lines = LineTables{};
    s.SeasonGames = 0;
    s.scheduleOpen = false;
    s.absentToday.clear();
    s.notes.clear();
}

void GameSession::readTeam(SideTables& s) {
    std::vector<std::uint8_t> buffer;
    codec::decodeSlot(
        slotVia(league_.files, leagueFile(kTeamFile), kTeamSlot, static_cast<std::size_t>(s.TeamId), buffer), s.team);
    s.teamAsRead = s.team;
    upgradeTeamRecord(s.team);
}

void GameSession::keepPlansCurrent(const fs::path& plans) {
    FileImages& images = *league_.files;
    if (keptPlans_.empty()) keptPlans_.resize(kMaxTeams + 1);
    FileImages::Written written = plansWatched_ ? images.takeWritten(plans) : FileImages::Written{true, {}};
    if (written.whole) {
        for (auto& plan : keptPlans_) plan.reset();
        images.watch(plans);
        plansWatched_ = true;
        return;
    }
    for (auto range : written.ranges) {
        auto [first, last] = FileImages::Written::slotsOf(range, kGamePlanSlot);
        for (std::size_t t = first; t <= std::min<std::size_t>(last, kMaxTeams); ++t) keptPlans_[t].reset();
    }
}

void GameSession::readPlan(SideTables& s) {
    std::vector<std::uint8_t> buffer;
    auto path = leagueFile(kGamePlanFile);
    auto team = static_cast<std::size_t>(s.TeamId);
    if (league_.files) keepPlansCurrent(path);
    auto bytes = slotVia(league_.files, path, kGamePlanSlot, team, buffer);
    if (league_.files) {
        auto& kept = keptPlans_[team];
        if (!kept) {
            kept = std::make_unique<KeptPlan>();
            codec::decodeSlot(bytes, kept->plan);
            auto asRead = std::make_shared<SideTables::PlanSlot>();
            copySlot(*asRead, bytes);
            kept->bytes = std::move(asRead);
        }
        s.plan = kept->plan;
        s.setPlanAsRead(kept->bytes);
    } else {
        codec::decodeSlot(bytes, s.plan);
        s.setPlanAsRead(bytes);
    }
    s.plan.GamePlanTeam = static_cast<std::int16_t>(s.TeamId);
    upgradeGamePlan(s.plan, s.team.TeamYear);
}

// A team that hasn't played yet takes back players whose records name it
// but whom no roster slot names.
void GameSession::repairRoster(SideTables& s) {
    auto& roster = s.team.Roster;
    for (std::size_t slot = 0; slot < roster.size(); ++slot) {
        if (roster[slot] > kMaxRosterPlayerId || roster[slot] < 0) {
            s.notes.push_back(fmt::format("Roster slot {} named player {}, past the last player number: cleared",
                                          slot + 1, roster[slot]));
            roster[slot] = 0;
        }
    }
    const TeamRecord& t = s.team;
    if (t.Wins + t.Losses + t.Ties + t.OvertimeLosses > 0) return;
    const auto& records = playerIndex().recordsOfTeam[static_cast<std::size_t>(s.TeamId)];
    for (std::int32_t record : records) {
        if (record > kMaxRosterPlayerId) continue;
        auto id = static_cast<std::int16_t>(record);
        if (std::find(roster.begin(), roster.end(), id) != roster.end()) continue;
        const PlayerRecord p = readRecordVia<PlayerRecord>(league_.files, leagueFile(kPlayerFile), kPlayerSlot,
                                                           static_cast<std::size_t>(record));
        auto empty = std::find(roster.begin(), roster.end(), std::int16_t{0});
        std::string name = p.FirstName.str() + " " + p.LastName.str();
        if (empty == roster.end()) {
            s.notes.push_back(fmt::format("{} belongs to this team but the roster is full: left off", name));
            continue;
        }
        *empty = id;
        s.notes.push_back(fmt::format("{} belongs to this team but was on no roster slot: added", name));
    }
}

void GameSession::readPlayers(int sideIndex, bool clearEmpty, Random& rng) {
    SideTables& s = side(sideIndex);
    RandomFile players(leagueFile(kPlayerFile), kPlayerSlot);
    // From the run's image when there is one, else through one open file.
    std::optional<SlotReader> file;
    const std::vector<std::uint8_t>* image = nullptr;
    if (league_.files)
        image = &league_.files->bytes(players.path());
    else
        file.emplace(players);
    std::vector<std::uint8_t> buffer;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        std::int16_t id = s.team.Roster[i];
        PlayerRecord& p = s.GameRoster[i];
        if (id <= 0) {
            if (clearEmpty) p = PlayerRecord{};
            s.forgetPlayerAsRead(slot);
            continue;
        }
        std::span<const std::uint8_t> bytes;
        if (file) {
            file->readSlot(static_cast<std::size_t>(id), buffer);
            bytes = buffer;
        } else {
            bytes = FileImages::slotIn(*image, kPlayerSlot, static_cast<std::size_t>(id));
        }
        codec::decodeSlot(bytes, p);
        s.setPlayerAsRead(slot, bytes);
        if (p.PlayerId == 0) {
            s.notes.push_back(
                fmt::format("Roster slot {} named player {}, whose record is empty: the slot is freed", slot + 1, id));
            continue;
        }
        // The record number is the key: a record that names another
        // number is taken for the one it stands at.
        p.PlayerId = id;
        upgradePlayerRecord(p, s.team);
        // Less than a minute a game is no real time on ice.
        StatLine& real = statLine(p, StatLineIndex::Real);
        if (real.Toi > 0 && real.Toi / 60 < real.GP) real.Toi = 0;
        if (p.FormStamp != kFormStamp || statLine(p, StatLineIndex::Replay).GP == 0) {
            int form = 0;
            if (rng.rand(2) == 1) form = rng.rand(3) - rng.rand(3);
            if (rng.rand(4) == 1) form += rng.rand(3) - rng.rand(3);
            if (rng.rand(10) == 1) form += rng.rand(3) - rng.rand(3);
            p.FormBias = static_cast<std::int16_t>(std::clamp(form, -10, 10));
            p.FormStamp = kFormStamp;
        }
        manager_->afterPlayerRead(*this, sideIndex, slot);
        // A player sat down by the general manager is being rested.
        if (!GameActive && p.InactiveFlag != 99) ++p.GamesSinceReset;
    }
    // Each last name trimmed once, not once for every teammate it is held
    // against, and held against the men on the team only: first by a word of
    // its length and first letters, as two names that differ there differ
    // and nearly every pair does.
    BySlot<std::string_view> lastNames{};
    BySlot<std::uint64_t> keys{};
    BySlot<int> teamSlots{};
    std::size_t onTeam = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        std::string_view last = s.player(slot).LastName.view();
        std::uint64_t key = 0;
        std::memcpy(&key, last.data(), std::min<std::size_t>(last.size(), 7));
        lastNames[i] = last;
        keys[i] = key << 8 | (last.size() & 0xFF);
        if (s.onTeam(slot)) teamSlots[onTeam++] = slot;
    }
    BySlot<std::uint64_t> teamKeys{};
    for (std::size_t k = 0; k < onTeam; ++k) teamKeys[k] = keys[static_cast<std::size_t>(teamSlots[k])];
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        const PlayerRecord& p = s.player(slot);
        if (p.PlayerId == 0) continue;
        auto i = static_cast<std::size_t>(slot);
        std::string_view last = lastNames[i];
        bool shared = false;
        for (std::size_t k = 0; k < onTeam && !shared; ++k)
            shared = teamKeys[k] == keys[i] && teamSlots[k] != slot &&
                     lastNames[static_cast<std::size_t>(teamSlots[k])] == last;
        // Assigned in place: the names of the side's last load leave their room.
        std::string& name = s.DisplayName[i];
        name.clear();
        if (shared) name.append(p.FirstName.view()).append(" ");
        name.append(last);
        s.ShortNameOf[i].assign(p.ShortName.view());
    }
}

void GameSession::leagueFixes(SideTables& s) {
    GamePlanRecord& plan = s.plan;
    if (plan.DefenseRosterCountStamp == kDefenseRosterCountStamp) return;
    plan.DefenseRosterCountStamp = kDefenseRosterCountStamp;
    int year = s.team.TeamYear;
    plan.DefenseRosterCount = static_cast<std::uint8_t>(defaultDefenseRosterCount(year));
    if (year < 1920 || year > 1980) return;
    // An early team that dressed few defensemen: by how many real games its
    // defensemen played against a full season for each.
    int skaterGames = 0, defenseGames = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot) || isGoalie(s.player(slot))) continue;
        skaterGames += realOf(s.player(slot)).GP;
        if (isDefenseman(s.player(slot))) defenseGames += realOf(s.player(slot)).GP;
    }
    int games = eraGamesOf(year);
    if (skaterGames <= games * 12) return;
    double x = double(defenseGames) / games;
    if (x < 5.3) plan.DefenseRosterCount = 1;
    if (x < 4.3) plan.DefenseRosterCount = 0;
}

// With the injury rule at 2, players sit out in the measure of the real
// games they missed.
void GameSession::randomAbsences(SideTables& s, Random& rng) {
    if (league_.rules.InjuryCheck != 2 || GameActive) return;
    int available = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (s.onTeam(slot) && s.DressedToday[static_cast<std::size_t>(slot)] == 0) ++available;
    int absent = 0;
    for (int tries = 0; tries < 30; ++tries) {
        if (available - absent <= 8 + rng.rand(3)) break;
        int slot = rng.rand(kRosterSlots) - 1;
        const PlayerRecord& p = s.player(slot);
        int year = p.PlayerYear <= 1920 ? 2008 : p.PlayerYear;
        const EraRecord& era = eraRow(year, 2008);
        int games = std::max<int>(collegeTeam(s) ? era.CollegeGames : era.Games, 15);
        bool draw = rng.rand(games) > realOf(p).GP;
        auto i = static_cast<std::size_t>(slot);
        if (s.onTeam(slot) && s.DressedToday[i] == 0 && draw) {
            s.DressedToday[i] = 1;
            s.absentToday.push_back(s.DisplayName[i]);
            ++absent;
        }
    }
}

void GameSession::capsAndLines(SideTables& s) {
    // A man traded in the season is a row of each of his teams, each with
    // the dates he belonged to it: outside them he doesn't dress. A side
    // left without two goalies by it, one to relieve the other, keeps its
    // goalies all the same.
    BySlot<bool> outOfDates{};
    if (GameActive && GameType == 'L' && league_.rules.Transactioncheck == 1) {
        int goaliesLeft = 0;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            if (!s.onTeam(slot)) continue;
            const PlayerRecord& p = s.player(slot);
            outOfDates[static_cast<std::size_t>(slot)] = !withinAvailability(p, GameMonth, GameDay);
            if (isGoalie(p) && !outOfDates[static_cast<std::size_t>(slot)] &&
                s.DressedToday[static_cast<std::size_t>(slot)] == 0 && p.InactiveFlag != 99 &&
                p.InjuryReturnMonth == 0 && p.SuspensionGamesLeft == 0)
                ++goaliesLeft;
        }
        if (goaliesLeft < 2)
            for (int slot = 0; slot < kRosterSlots; ++slot)
                if (s.onTeam(slot) && isGoalie(s.player(slot))) outOfDates[static_cast<std::size_t>(slot)] = false;
    }
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        PlayerRecord& p = s.player(slot);
        // In a game the dressed roster is the one the records hold (after the
        // general manager's say): the inactive, hurt and suspended are out.
        if (GameActive && s.onTeam(slot) &&
            (p.InactiveFlag == 99 || p.InjuryReturnMonth > 0 || p.SuspensionGamesLeft > 0))
            s.DressedToday[i] = 1;
        if (outOfDates[i]) s.DressedToday[i] = 1;
        if (s.onTeam(slot)) {
            if (!(GameActive && s.DressedToday[i] != 0)) loadStoredLines(p, slot, s.lines);
            continue;
        }
        if (p.PlayerId > 0)
            s.notes.push_back(
                fmt::format("{} is on the roster but belongs to another team: he won't dress", s.DisplayName[i]));
        s.DressedToday[i] = 1;
        clearDepth(p);
    }
}

RateContext GameSession::rateContext(const SideTables& s, const PlayerRecord& p) const {
    RateContext ctx;
    ctx.year = p.PlayerYear != 0 ? p.PlayerYear : s.team.TeamYear;
    ctx.college = p.PlayerType.view() == "C";
    ctx.era = figuresOf(eraRow(ctx.year, 2008), ctx.college ? EraLevel::College : EraLevel::Professional);
    ctx.gamesForScale = eraRow(ctx.year >= 1920 && ctx.year <= 2050 ? ctx.year : 2012, 2012).Games;
    ctx.leagueFightData =
        playerIndex().realFights >= 50 && !endsWithNoCase(league_.leagueDir.filename().string(), "PROJECTION");
    ctx.steerFights = GameActive && GameType == 'L' && !PlayoffGame && league_.rules.AlternateRealityCheck != 1;
    // Until the ratings are generated, fights follow the penalty record.
    if (p.RatingSportsmanship == 0) {
        if (isGoalie(p) && p.RatingGoalie == 0) ctx.sportsmanship = 10;
        if (!isGoalie(p) && p.RatingOffense == 0 && p.RatingDefense == 0) {
            const StatLine& real = realOf(p);
            double minutes = real.GP * realAverageMinutes(p, ctx) + 0.1;
            ctx.sportsmanship = sportsmanshipFromPenalties(real.Pim / minutes * 60, ctx.era.pimPerGame);
        }
    }
    return ctx;
}

void GameSession::computeRates(SideTables& s, Random& rng) {
    playerIndex();
    // Each man's context once for all the work below: none of it changes
    // what the context is made of (the flag set here isn't).
    BySlot<RateContext> contexts{};
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (s.onTeam(slot)) contexts[static_cast<std::size_t>(slot)] = rateContext(s, s.player(slot));
    // Enforcers first: the fight and shift work reads the flag.
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        PlayerRecord& p = s.player(slot);
        const StatLine& real = realOf(p);
        if (!s.onTeam(slot) || real.GP < 1 || p.EnforcerStamp == kEnforcerStamp) continue;
        p.EnforcerStamp = kEnforcerStamp;
        const RateContext& ctx = contexts[static_cast<std::size_t>(slot)];
        double am = realAverageMinutes(p, ctx);
        double hits60 = real.Hits / (real.GP * am + 0.1) * 60;
        p.Enforcer = enforcerByRecord(p, am, hits60, ctx.era.pimPerGame) ? 1 : 0;
    }
    for (RateSet set : kRateSets)
        for (int slot = 0; slot < kRosterSlots; ++slot)
            if (s.onTeam(slot))
                computeSetRates(set, s.player(slot), contexts[static_cast<std::size_t>(slot)], rng,
                                s.rates[static_cast<std::size_t>(slot)]);

    ShiftContext shift;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        const PlayerRecord& p = s.player(slot);
        if (!s.onTeam(slot) || isGoalie(p)) continue;
        if (isDefenseman(p)) shift.defenseGames += realOf(p).GP;
        if (s.DressedToday[static_cast<std::size_t>(slot)] == 0 && p.InactiveFlag != 99) ++shift.dressedSkaters;
    }
    shift.teamGames = s.team.Wins + s.team.Losses + s.team.Ties + s.team.OvertimeLosses;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        s.ShiftLimit[i] = 100;
        s.MaxEnergy[i] = 100;
        if (!s.onTeam(slot)) continue;
        const PlayerRecord& p = s.player(slot);
        int year = p.PlayerYear >= 1920 && p.PlayerYear <= 2100 ? p.PlayerYear : 2019;
        shift.eraGames = eraGamesOf(year);
        ShiftResult r = computeShift(p, s.rates[i][RateSet::Real].AverageMinutes, shift);
        s.ShiftLimit[i] = r.ShiftLimit;
        s.MaxEnergy[i] = r.MaxEnergy;
    }
}

// A plan seen for the first time: a forward who plays big minutes on the
// first line and on no other even line also takes a turn on the fourth.
void GameSession::firstTimePlan(SideTables& s) {
    if (s.plan.GamePlanTextStamp == kGamePlanTextStamp) return;
    s.plan.GamePlanTextStamp = kGamePlanTextStamp;
    s.plan.GamePlanText.assign("");
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        const PlayerRecord& p = s.player(slot);
        if (!s.onTeam(slot) || !isForward(p)) continue;
        if (s.rates[static_cast<std::size_t>(slot)][RateSet::Real].AverageMinutes < 24) continue;
        if (s.lines.lineRole(1, slot) == ForwardRole::None) continue;
        if (s.lines.onLine(2, slot) || s.lines.onLine(3, slot) || s.lines.onLine(4, slot)) continue;
        ForwardRole role = ForwardRole::None;
        if (hasFlag(p, Flag::LeftWing)) role = ForwardRole::LeftWing;
        if (hasFlag(p, Flag::RightWing)) role = ForwardRole::RightWing;
        if (hasFlag(p, Flag::Center)) role = ForwardRole::Center;
        if (role == ForwardRole::None) continue;
        for (int other = 0; other < kRosterSlots; ++other)
            if (s.lines.lineRole(4, other) == role) s.lines.setLineRole(4, other, ForwardRole::None);
        s.lines.setLineRole(4, slot, role);
    }
}

void GameSession::remainingStamps(SideTables& s) {
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot)) continue;
        PlayerRecord& p = s.player(slot);
        double am = s.rates[static_cast<std::size_t>(slot)][RateSet::Real].AverageMinutes;
        if (p.PreferenceStamp != kPreferenceStamp) {
            p.PreferenceStamp = kPreferenceStamp;
            p.PullWhenFatigueBelow = 80;
            p.Preference679 = p.NeverUseOnPowerPlay = p.NeverUseAsExtraAttacker = p.Preference67c = 0;
            p.DoubleShiftWhenBehindLate = p.NeverUseOnPenaltyKill = p.NeverUseLateInGameWithLead = 0;
            p.Preference680 = p.NeverUseOnFaceoffs = p.PreferredSide = 0;
            p.GoalieTargetStarts = p.GoaliePullAfterGoalsAllowed = p.GoalieNeverPullInGamesStarted = 0;
            if (isGoalie(p)) p.GoalieTargetStarts = realOf(p).GP;
            if (isDefenseman(p) && am >= 22) p.Preference680 = 1;
            if (isForward(p) && am >= 20) p.Preference67c = 1;
        }
        // No table of historical ratings ships with the program: the stamp
        // only records that the look-up ran.
        if (p.PlayerType.view() != "C" && p.PlayerYear <= 2013) p.SportsmanshipStamp = kSportsmanshipStamp;
    }
    TeamRecord& t = s.team;
    if (t.OvertimeLosses > 100 || t.Ties > 100) t.Wins = t.Losses = t.Ties = t.OvertimeLosses = 0;
    if (t.Wins == 0 && t.Losses == 0 && t.Ties == 0 && t.OvertimeLosses == 0) {
        t.TeamFor[0].Goals = 0;
        t.TeamAgainst[0].Goals = 0;
    }
    if (t.Arena.view().size() <= 1) t.Arena = {};
}

void GameSession::availability(SideTables& s) {
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot)) continue;
        auto i = static_cast<std::size_t>(slot);
        PlayerRecord& p = s.player(slot);
        int year = p.PlayerYear >= 1900 && p.PlayerYear <= 2050 ? p.PlayerYear : 2008;
        const EraRecord& era = eraRow(year, 2008);
        int games = collegeTeam(s) ? era.CollegeGames : era.Games;
        s.SeasonGamesOfPlayer[i] = seasonGamesOfPlayer(p, games);
        p.RatingDurability = durabilityOf(realOf(p).GP, s.SeasonGamesOfPlayer[i]);
        p.GoalieRestGames =
            isGoalie(p) ? goalieRestGames(realOf(p).GP, s.SeasonGamesOfPlayer[i], p.GoalieTargetStarts) : 0;
    }
}

LineupTeam GameSession::lineupTeam(int sideIndex) {
    SideTables& s = side(sideIndex);
    LineupTeam t;
    t.roster = &s.GameRoster;
    t.lines = &s.lines;
    if (GameActive) t.candidate = BuildFitList(s.GameRoster, s.TeamId, s.DressedToday);
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        if (!GameActive) t.candidate[i] = s.onTeam(slot);
        const PlayerRecord& p = s.player(slot);
        t.minutes[i] = s.rates[i][RateSet::Real].AverageMinutes;
        // The era's save percentage rates a goalie without ratings of his
        // own and nobody else: the rest of the roster skips the look-up.
        double savePct = 0;
        if (isGoalie(p) && hasStandInRatings(p)) {
            int year = p.PlayerYear != 0 ? p.PlayerYear : s.team.TeamYear;
            savePct =
                figuresOf(eraRow(year, 2008), p.PlayerType.view() == "C" ? EraLevel::College : EraLevel::Professional)
                    .savePct;
        }
        t.ratings[i] = lineupRatings(p, t.minutes[i], savePct);
    }
    return t;
}

std::vector<std::string> GameSession::remakeDepthAndLines(int sideIndex) {
    SideTables& s = side(sideIndex);
    for (auto& p : s.GameRoster) clearDepth(p);
    s.lines.clear();
    LineupTeam team = lineupTeam(sideIndex);
    HkAutofillDepth(team);
    HkAutofillLines(team);
    return completeLines(team, s.DisplayName);
}

// The third hook, then a plan never set up gets the default coach, and its
// depth charts and lines are made anew from the roster.
void GameSession::coach(int sideIndex) {
    manager_->afterTables(*this, sideIndex);
    SideTables& s = side(sideIndex);
    if (s.plan.GamePlanStamp != kGamePlanStamp) {
        applyDefaultCoach(s.plan, s.team.TeamYear);
        auto filled = remakeDepthAndLines(sideIndex);
        s.notes.push_back(
            "New game plan: the default coach set the strategy, and the depth charts and lines were "
            "made from the roster");
        s.notes.insert(s.notes.end(), filled.begin(), filled.end());
        return;
    }
    LineupTeam team = lineupTeam(sideIndex);
    if (depthChartEmpty(team)) {
        HkAutofillDepth(team);
        s.notes.push_back("The team had no depth charts: they were made from the roster");
    }
    // Roles already held stay; only empty places are filled.
    FillForwards(team);
    FillDefense(team);
    bool noExtra = true, noShootout = true;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!team.candidate[static_cast<std::size_t>(slot)]) continue;
        noExtra = noExtra && s.player(slot).DepthExtraAttacker == 0;
        noShootout = noShootout && s.player(slot).DepthShootout == 0;
    }
    if (noExtra) FillExtraAttacker(team);
    if (noShootout) FillShootout(team);
}

void GameSession::lastFixes(SideTables& s) {
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot)) continue;
        PlayerRecord& p = s.player(slot);
        SalaryContext ctx;
        int year = p.PlayerYear >= 1910 && p.PlayerYear <= 2050 ? p.PlayerYear : 2010;
        ctx.era =
            figuresOf(eraRow(year, 2010), p.PlayerType.view() == "C" ? EraLevel::College : EraLevel::Professional);
        bool known = EraTable::contains(p.PlayerYear) && league_.era->year(p.PlayerYear).Games > 0;
        ctx.eraGames = known ? league_.era->year(p.PlayerYear).Games : eraRow(2009, 2009).Games;
        ctx.scaleGames = p.PlayerYear >= 1900 && p.PlayerYear <= 2099;
        ctx.shortSeasonCount = p.PlayerYear == 2020 && playerIndex().players2020 <= 200;
        p.Salary = ComputeSalary(p, s.rates[static_cast<std::size_t>(slot)], ctx);
        rescaleHitRating(p);
    }
    GamePlanRecord& plan = s.plan;
    if (plan.FaceoffOptionStamp != kFaceoffOptionStamp) {
        plan.FaceoffOptionStamp = kFaceoffOptionStamp;
        plan.FaceoffOption = 0;
        int best = -1, most = 99;
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            if (!s.onTeam(slot)) continue;
            const StatLine& real = realOf(s.player(slot));
            if (real.FaceoffsWon + real.FaceoffsLost > most) {
                best = slot;
                most = real.FaceoffsWon + real.FaceoffsLost;
            }
        }
        if (best >= 0) {
            const PlayerRecord& p = s.player(best);
            bool center = hasFlag(p, Flag::Center) && s.lines.lineRole(1, best) == ForwardRole::Center &&
                          p.DepthEven[static_cast<std::size_t>(EvenDepth::Center)] >= 9;
            plan.FaceoffOption = center ? 0 : 1;
        }
    }
}

// What the fills couldn't do by the book: short lines filled from other
// positions, no goalie, too few skaters.
void GameSession::completeLineup(int sideIndex) {
    SideTables& s = side(sideIndex);
    LineupTeam team = lineupTeam(sideIndex);
    auto notes = completeLines(team, s.DisplayName);
    s.notes.insert(s.notes.end(), notes.begin(), notes.end());

    LineupTeam fit = team;
    fit.candidate = BuildFitList(s.GameRoster, s.TeamId, s.DressedToday);
    bool emergency = false;
    int goalie = chooseGoalie(fit, kNoSlot, &emergency);
    if (goalie == kNoSlot) {
        s.notes.push_back("Nobody on the roster is fit to play");
        return;
    }
    if (emergency)
        s.notes.push_back(fmt::format("No goalie is fit to play: {} would play in goal",
                                      s.DisplayName[static_cast<std::size_t>(goalie)]));
    int skaters = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (fit.candidate[static_cast<std::size_t>(slot)] && slot != goalie && !isGoalie(s.player(slot))) ++skaters;
    if (skaters < 5)
        s.notes.push_back(fmt::format("Only {} skaters are fit to play: a full five can't be put on the ice", skaters));
    if (!s.absentToday.empty()) {
        std::string names;
        for (const auto& n : s.absentToday) names += (names.empty() ? "" : ", ") + n;
        s.notes.push_back("Sitting out today for the real games they missed: " + names);
    }
}

void GameSession::noteUnrated(int sideIndex) {
    SideTables& s = side(sideIndex);
    // The candidates as lineupTeam names them; whether a man's ratings are
    // stand-ins needs nothing else of it.
    BySlot<bool> candidate{};
    if (GameActive) candidate = BuildFitList(s.GameRoster, s.TeamId, s.DressedToday);
    int unrated = 0;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        bool counted = GameActive ? candidate[static_cast<std::size_t>(slot)] : s.onTeam(slot);
        if (counted && hasStandInRatings(s.player(slot))) ++unrated;
    }
    if (unrated > 0)
        s.notes.push_back(
            fmt::format("{} player{} no stored ratings: depth charts and lines read stand-ins from the "
                        "real statistics until the ratings are generated",
                        unrated, unrated == 1 ? " has" : "s have"));
}

bool GameSession::loadChangedRecords(int sideIndex) const {
    const SideTables& s = side(sideIndex);
    if (!isTeamNumber(s.TeamId)) return false;
    TeamRecord team = s.team;
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (s.player(slot).PlayerId == 0) team.Roster[static_cast<std::size_t>(slot)] = 0;
    if (!sameBytes(team, s.teamAsRead) || !sameBytes(s.plan, s.planAsRead())) return true;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot)) continue;
        auto i = static_cast<std::size_t>(slot);
        PlayerRecord p = s.GameRoster[i];
        if (!GameActive) storeLiveLines(s.lines, slot, p);
        const auto read = codec::fromSlot<PlayerRecord>(s.playerAsRead(slot));
        p.GamesSinceReset = read.GamesSinceReset;
        // Form is drawn afresh at every load until the player has a replay
        // game; a new draw alone is nothing to save.
        if (read.FormStamp == kFormStamp && statLine(read, StatLineIndex::Replay).GP == 0) p.FormBias = read.FormBias;
        if (!sameBytes(p, read)) return true;
    }
    return false;
}

void GameSession::SaveTeam(int sideIndex) {
    SideTables& s = side(sideIndex);
    if (!isTeamNumber(s.TeamId)) return;
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        if (s.player(slot).PlayerId == 0) s.team.Roster[i] = 0;
        if (!GameActive && s.onTeam(slot)) storeLiveLines(s.lines, slot, s.player(slot));
    }
    auto team = static_cast<std::size_t>(s.TeamId);
    // The run's images, when it keeps them, follow each write.
    auto save = [&](const RandomFile& file, std::size_t r, const auto& rec) {
        // The record part only: the slot's tail on disk stays as it was.
        const auto bytes = codec::recordBytes(rec);
        file.writeSlot(r, bytes);
        if (league_.files) league_.files->writeAt(file.path(), static_cast<std::uint64_t>(r - 1) * file.slot(), bytes);
    };
    save(RandomFile(leagueFile(kTeamFile), kTeamSlot), team, s.team);
    save(RandomFile(leagueFile(kGamePlanFile), kGamePlanSlot), team, s.plan);
    RandomFile players(leagueFile(kPlayerFile), kPlayerSlot);
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        if (!s.onTeam(slot)) continue;
        const PlayerRecord& p = s.player(slot);
        save(players, static_cast<std::size_t>(p.PlayerId), p);
        s.setPlayerAsRead(slot, codec::slotArray(p));
    }
    s.teamAsRead = s.team;
    s.setPlanAsRead(codec::slotArray(s.plan));
}

}  // namespace tallyrink
