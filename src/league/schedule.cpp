#include "league/schedule.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <system_error>

namespace tallyrink {

namespace {

constexpr std::size_t kGameSlot = codec::slotWidth<GameRecord>();
constexpr std::size_t kGameSize = codec::Layout<GameRecord>::size;

// An old league's schedule file, from before schedules had names of their own.
constexpr std::string_view kOldScheduleFile = "SKED";
// Below this a schedule file holds no game worth keeping.
constexpr std::uint64_t kNearlyEmpty = 50;

bool equalNoCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

bool endsWithNoCase(std::string_view s, std::string_view suffix) {
    return s.size() >= suffix.size() && equalNoCase(s.substr(s.size() - suffix.size()), suffix);
}

void setLetter(FixedText<1>& field, char c) { field.raw[0] = c; }

// Values that no screen could have written are given their defaults: a row
// with a status or coach letter of its own would otherwise be skipped by every
// list, or coached by nobody.
void repairRow(GameRecord& g) {
    char s = g.Status.raw[0];
    if (s != kUnplayed && s != kMarked && s != kPlayed && s != kDeleted) setLetter(g.Status, kUnplayed);
    for (auto& c : g.Coach)
        if (c.raw[0] != 'C' && c.raw[0] != 'H') setLetter(c, 'C');
    if (!isTeamNumber(g.VisitorTeam) || !isTeamNumber(g.HomeTeam)) {
        setLetter(g.Status, kDeleted);
        g.VisitorTeam = 0;
        g.HomeTeam = 0;
    }
}

bool keptAtSave(const GameRecord& g, const ActiveTeams& active) {
    return statusOf(g) != kDeleted && isTeamNumber(g.VisitorTeam) && isTeamNumber(g.HomeTeam) &&
           active.test(static_cast<std::size_t>(g.VisitorTeam)) && active.test(static_cast<std::size_t>(g.HomeTeam));
}

bool validDate(int month, int day) {
    return month >= 1 && month <= 12 && day >= 1 && day <= (month == 2 ? 29 : scheduleMonthLength(month));
}

}  // namespace

int scheduleMonthLength(int calendarMonth) {
    switch (calendarMonth) {
        case 2:
            return 28;
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        default:
            return 31;
    }
}

std::string_view monthName(int calendarMonth) {
    static constexpr std::array<std::string_view, 12> kNames{"January",   "February", "March",    "April",
                                                             "May",       "June",     "July",     "August",
                                                             "September", "October",  "November", "December"};
    if (calendarMonth < 1 || calendarMonth > 12) return {};
    return kNames[static_cast<std::size_t>(calendarMonth - 1)];
}

int calendarYearOf(int seasonYear, int calendarMonth) {
    if (seasonYear <= 0) return 0;
    return seasonMonth(calendarMonth) >= 5 ? seasonYear + 1 : seasonYear;
}

char statusOf(const GameRecord& g) { return g.Status.raw[0]; }

GameRecord newGameRecord(int visitor, int home, int month, int day, int year) {
    GameRecord g;
    for (auto& c : g.Coach) c.assign("C");
    g.Month = static_cast<std::uint8_t>(month);
    g.Day = static_cast<std::uint8_t>(day);
    g.Year = static_cast<std::int16_t>(year);
    g.DateText.assign("");
    for (auto& t : g.RecordText) t.assign("");
    g.Status.assign("U");
    g.BoxFile.assign("");
    g.VisitorTeam = static_cast<std::int16_t>(visitor);
    g.HomeTeam = static_cast<std::int16_t>(home);
    g.RowLocked.assign("N");
    for (auto& s : g.StarName) s.assign("");
    g.RowType.assign("L");
    return g;
}

std::vector<std::string> scheduleFileList(const fs::path& leagueDir) {
    std::vector<std::string> names;
    std::error_code ec;
    for (fs::directory_iterator it(leagueDir, ec), end; !ec && it != end; it.increment(ec)) {
        auto name = it->path().filename().string();
        if (endsWithNoCase(name, ".skd") && it->is_regular_file(ec)) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

fs::path resolveScheduleFile(const fs::path& leagueDir, std::string_view fileName) {
    fs::path path = findFile(leagueDir, fileName);
    if (equalNoCase(fileName, "SKED.SKD") && fileLength(path) < kNearlyEmpty) {
        fs::path old = findFile(leagueDir, kOldScheduleFile);
        std::error_code ec;
        if (fs::is_regular_file(old, ec) && fileLength(old) >= kNearlyEmpty) writeFileAtomic(path, readBytes(old));
    }
    return path;
}

Schedule Schedule::load(const fs::path& leagueDir, std::string_view fileName) {
    RandomFile file(resolveScheduleFile(leagueDir, fileName), kGameSlot);
    std::size_t count = file.count(kScheduleRounding);
    if (count > kMaxScheduleGames)
        throw FileError(fmt::format("{} holds {} games; a schedule holds at most {}", file.path().string(), count,
                                    kMaxScheduleGames));
    auto rows = readRecords<GameRecord>(file, count);
    // Only row 1 carries the season's year.
    if (!rows.empty())
        for (auto& g : rows) g.Year = rows.front().Year;
    for (auto& g : rows) repairRow(g);
    return Schedule(file.path(), std::move(rows));
}

Schedule Schedule::fromRows(const fs::path& leagueDir, std::vector<GameRecord> rows, std::string_view fileName) {
    return Schedule(findFile(leagueDir, fileName), std::move(rows));
}

void Schedule::save(const ActiveTeams& active, ScheduleTail tail) {
    std::vector<GameRecord> kept;
    kept.reserve(rows_.size());
    for (const auto& g : rows_)
        if (keptAtSave(g, active)) kept.push_back(g);

    if (tail == ScheduleTail::Truncate) {
        rewriteRecords(RandomFile(path_, kGameSlot), kept);
    } else {
        // Rows go over the old file's bytes: what lay behind the last row, and
        // the unused end of each slot, stays as it was.
        auto bytes = readBytes(path_);
        for (std::size_t k = 0; k < kept.size(); ++k) {
            auto slot = codec::toSlot(kept[k]);
            std::size_t at = k * kGameSlot;
            std::size_t n = kGameSize;
            if (bytes.size() < at + kGameSlot) {
                bytes.resize(at + kGameSlot, 0);
                n = kGameSlot;
            }
            std::copy_n(slot.begin(), n, bytes.begin() + static_cast<std::ptrdiff_t>(at));
        }
        writeFileAtomic(path_, bytes);
    }
    rows_ = std::move(kept);
}

std::optional<LeagueDate> Schedule::leagueDate() const {
    const GameRecord* first = nullptr;
    for (const auto& g : rows_) {
        if (!isOpen(g) || !validDate(g.Month, g.Day)) continue;
        if (!first || dateKey(g.Month, g.Day) < dateKey(first->Month, first->Day)) first = &g;
    }
    if (!first) return std::nullopt;
    LeagueDate d;
    d.month = first->Month;
    d.day = first->Day;
    d.seasonMonth = seasonMonth(d.month);
    d.year = calendarYearOf(seasonYear(), d.month);
    return d;
}

int Schedule::seasonYear() const { return rows_.empty() ? 0 : rows_.front().Year; }

std::size_t Schedule::addGame(int visitor, int home, int month, int day, int seasonYear) {
    if (!isTeamNumber(visitor) || !isTeamNumber(home) || visitor == home || !validDate(month, day)) return 0;
    if (rows_.size() >= kMaxScheduleGames) return 0;
    int year = rows_.empty() ? seasonYear : rows_.front().Year;
    rows_.push_back(newGameRecord(visitor, home, month, day, year));
    return rows_.size();
}

bool Schedule::removeGame(std::size_t r) {
    if (r < 1 || r > rows_.size()) return false;
    setLetter(rows_[r - 1].Status, kDeleted);
    return true;
}

bool Schedule::teamPlaysOn(int team, int month, int day) const {
    return std::any_of(rows_.begin(), rows_.end(), [&](const GameRecord& g) {
        return statusOf(g) != kDeleted && g.Month == month && g.Day == day &&
               (g.VisitorTeam == team || g.HomeTeam == team);
    });
}

void Schedule::eraseAll() {
    writeFileAtomic(path_, std::string_view{});
    rows_.clear();
}

void Schedule::setAllCoaches(char coach) {
    for (auto& g : rows_)
        if (isOpen(g))
            for (auto& c : g.Coach) setLetter(c, coach);
}

void Schedule::setTeamCoach(int team, char coach) {
    for (auto& g : rows_) {
        if (!isOpen(g)) continue;
        if (g.VisitorTeam == team) setLetter(g.Coach[0], coach);
        if (g.HomeTeam == team) setLetter(g.Coach[1], coach);
    }
}

void saveNewSchedule(const fs::path& leagueDir, std::vector<GameRecord> games, const ActiveTeams& active,
                     std::string_view fileName) {
    Schedule::fromRows(leagueDir, std::move(games), fileName).save(active, ScheduleTail::Truncate);
}

std::vector<GameRecord> loadScores(const fs::path& leagueDir) {
    RandomFile file(findFile(leagueDir, kScoresFile), kGameSlot);
    return readRecords<GameRecord>(file, file.count(kScoresRounding));
}

void saveScores(const fs::path& leagueDir, const std::vector<GameRecord>& scores) {
    rewriteRecords(RandomFile(findFile(leagueDir, kScoresFile), kGameSlot), scores);
}

}  // namespace tallyrink
