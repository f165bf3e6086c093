#include "operations/season_data.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <set>

#include "league/files.h"
#include "operations/csv_table.h"

namespace tallyrink {

namespace {

namespace chr = std::chrono;

// Column lookups done once per file, so that a missing column is reported
// before any row is read.
class Rows {
public:
    Rows(const std::filesystem::path& folder, std::string_view file) : table_(CsvTable::read(findFile(folder, file))) {}

    [[nodiscard]] std::size_t count() const { return table_.rows(); }
    [[nodiscard]] std::size_t col(std::string_view name) const { return table_.column(name); }
    [[nodiscard]] bool has(std::string_view name) const { return table_.hasColumn(name); }
    [[nodiscard]] const std::vector<std::string>& header() const { return table_.header(); }
    [[nodiscard]] const std::string& name() const { return table_.name(); }
    [[nodiscard]] const std::string& text(std::size_t row, std::size_t col) const { return table_.text(row, col); }
    [[nodiscard]] int number(std::size_t row, std::size_t col) const {
        return static_cast<int>(table_.number(row, col));
    }
    [[nodiscard]] CalendarDate date(std::size_t row, std::size_t col, std::string_view column) const;
    [[noreturn]] void fail(std::size_t row, const std::string& what) const {
        throw FileError(fmt::format("{}, line {}: {}", table_.name(), table_.line(row), what));
    }

private:
    CsvTable table_;
};

// Digits only: std::stoi would take "1x" for 1.
bool digitsOf(std::string_view s, int& out) {
    if (s.empty()) return false;
    auto [ptr, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
    return ec == std::errc() && ptr == s.data() + s.size() && s.find_first_not_of("0123456789") == s.npos;
}

CalendarDate Rows::date(std::size_t row, std::size_t col, std::string_view column) const {
    std::string_view s = text(row, col);
    CalendarDate d;
    bool ok = s.size() == 10 && s[4] == '-' && s[7] == '-' && digitsOf(s.substr(0, 4), d.year) &&
              digitsOf(s.substr(5, 2), d.month) && digitsOf(s.substr(8, 2), d.day);
    if (ok) {
        auto ymd =
            chr::year{d.year} / chr::month{static_cast<unsigned>(d.month)} / chr::day{static_cast<unsigned>(d.day)};
        ok = ymd.ok();
    }
    if (!ok)
        throw FileError(fmt::format("{}, line {}, column \"{}\": \"{}\" is not a date (YYYY-MM-DD)", table_.name(),
                                    table_.line(row), column, s));
    return d;
}

// The age column is named after the day the age was taken on, such as
// "age_feb1_2018"; the first column whose name starts with "age" is it.
std::size_t ageColumn(const Rows& rows, std::string_view file) {
    const auto& header = rows.header();
    for (std::size_t i = 0; i < header.size(); ++i)
        if (header[i].starts_with("age") || header[i].starts_with("Age")) return i;
    throw FileError(fmt::format("{}: missing column \"age\"", file));
}

class TeamSet {
public:
    explicit TeamSet(const std::vector<TeamFacts>& teams) {
        for (const auto& t : teams) codes_.insert(t.code);
    }
    void require(const Rows& rows, std::size_t row, const std::string& code) const {
        if (!codes_.contains(code)) rows.fail(row, fmt::format("unknown team \"{}\"", code));
    }

private:
    std::set<std::string> codes_;
};

std::vector<TeamFacts> readTeams(const std::filesystem::path& folder) {
    Rows r(folder, "teams.csv");
    auto cTeam = r.col("team"), cName = r.col("name"), cConf = r.col("conf"), cDiv = r.col("div");
    auto cGp = r.col("GP"), cW = r.col("W"), cL = r.col("L"), cOtl = r.col("OTL"), cSoW = r.col("SoW");
    auto cGf = r.col("GF"), cGa = r.col("GA"), cPim = r.col("PIM"), cBench = r.col("BenchMinor");
    auto cPpg = r.col("PPG"), cShgf = r.col("SHGF"), cShots = r.col("shots_for"), cHits = r.col("hits");
    auto cGive = r.col("giveaways"), cTake = r.col("takeaways");
    std::vector<TeamFacts> teams;
    std::set<std::string> seen;
    for (std::size_t i = 0; i < r.count(); ++i) {
        TeamFacts t;
        t.code = r.text(i, cTeam);
        if (t.code.empty()) r.fail(i, "no team code");
        if (!seen.insert(t.code).second) r.fail(i, fmt::format("team \"{}\" listed twice", t.code));
        t.name = r.text(i, cName);
        t.conference = r.text(i, cConf);
        t.division = r.text(i, cDiv);
        t.gp = r.number(i, cGp);
        t.wins = r.number(i, cW);
        t.losses = r.number(i, cL);
        t.overtimeLosses = r.number(i, cOtl);
        t.shootoutWins = r.number(i, cSoW);
        t.goalsFor = r.number(i, cGf);
        t.goalsAgainst = r.number(i, cGa);
        t.pim = r.number(i, cPim);
        t.benchMinutes = r.number(i, cBench);
        t.ppg = r.number(i, cPpg);
        t.shgFor = r.number(i, cShgf);
        t.shotsFor = r.number(i, cShots);
        t.hits = r.number(i, cHits);
        t.giveaways = r.number(i, cGive);
        t.takeaways = r.number(i, cTake);
        teams.push_back(std::move(t));
    }
    if (teams.empty()) throw FileError(fmt::format("{}: no teams", findFile(folder, "teams.csv").string()));
    return teams;
}

// City and nickname: from team_names.csv when the folder has it, else the
// full name split before its last word.
bool readTeamNames(const std::filesystem::path& folder, std::vector<TeamFacts>& teams) {
    for (auto& t : teams) {
        auto cut = t.name.rfind(' ');
        t.city = cut == std::string::npos ? t.name : t.name.substr(0, cut);
        t.nickname = cut == std::string::npos ? t.name : t.name.substr(cut + 1);
    }
    std::error_code ec;
    if (!std::filesystem::is_regular_file(findFile(folder, "team_names.csv"), ec)) return false;
    Rows r(folder, "team_names.csv");
    auto cTeam = r.col("team"), cCity = r.col("city"), cNick = r.col("nickname");
    for (std::size_t i = 0; i < r.count(); ++i) {
        const auto& code = r.text(i, cTeam);
        auto it = std::find_if(teams.begin(), teams.end(), [&](const TeamFacts& t) { return t.code == code; });
        if (it == teams.end()) r.fail(i, fmt::format("unknown team \"{}\"", code));
        it->city = r.text(i, cCity);
        it->nickname = r.text(i, cNick);
    }
    return true;
}

struct BioColumns {
    std::size_t first, last, shoots, height, weight, age;
    explicit BioColumns(const Rows& r)
        : first(r.col("firstName")),
          last(r.col("lastName")),
          shoots(r.col("shootCatch")),
          height(r.col("height_in")),
          weight(r.col("weight_lb")),
          age(ageColumn(r, r.name())) {}
    PlayerBio read(const Rows& r, std::size_t i) const {
        PlayerBio b;
        b.firstName = r.text(i, first);
        b.lastName = r.text(i, last);
        b.shoots = r.text(i, shoots);
        b.heightInches = r.number(i, height);
        b.weightPounds = r.number(i, weight);
        b.age = r.number(i, age);
        return b;
    }
};

std::vector<ScoringStint> readScoring(const std::filesystem::path& folder, const TeamSet& teams) {
    Rows r(folder, "skaters_official.csv");
    BioColumns bio(r);
    auto cId = r.col("playerID"), cPos = r.col("pos"), cStint = r.col("stint"), cTeam = r.col("team");
    auto cGp = r.col("GP"), cG = r.col("G"), cA = r.col("A"), cPim = r.col("PIM"), cPm = r.col("PlusMinus");
    auto cPpg = r.col("PPG"), cPpa = r.col("PPA"), cShg = r.col("SHG"), cSha = r.col("SHA"), cGwg = r.col("GWG");
    auto cSog = r.col("SOG");
    std::vector<ScoringStint> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        ScoringStint s;
        s.playerId = r.text(i, cId);
        if (s.playerId.empty()) r.fail(i, "no playerID");
        s.stint = r.number(i, cStint);
        s.team = r.text(i, cTeam);
        teams.require(r, i, s.team);
        s.bio = bio.read(r, i);
        const auto& pos = r.text(i, cPos);
        if (pos.size() != 1 || std::string_view("CLRDG").find(pos[0]) == std::string_view::npos)
            r.fail(i, fmt::format("position \"{}\" is none of C, L, R, D, G", pos));
        s.bio.position = pos[0];
        s.gp = r.number(i, cGp);
        s.goals = r.number(i, cG);
        s.assists = r.number(i, cA);
        s.pim = r.number(i, cPim);
        s.plusMinus = r.number(i, cPm);
        s.ppg = r.number(i, cPpg);
        s.ppa = r.number(i, cPpa);
        s.shg = r.number(i, cShg);
        s.sha = r.number(i, cSha);
        s.gwg = r.number(i, cGwg);
        s.sog = r.number(i, cSog);
        out.push_back(std::move(s));
    }
    return out;
}

std::vector<GoalieStint> readGoalies(const std::filesystem::path& folder, const TeamSet& teams) {
    Rows r(folder, "goalies_official.csv");
    BioColumns bio(r);
    auto cId = r.col("playerID"), cStint = r.col("stint"), cTeam = r.col("team"), cGp = r.col("GP");
    auto cMin = r.col("Min"), cW = r.col("W"), cL = r.col("L"), cOtl = r.col("OTL"), cEng = r.col("ENG");
    auto cSho = r.col("SHO"), cGa = r.col("GA"), cSa = r.col("SA"), cSv = r.col("Saves");
    std::vector<GoalieStint> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        GoalieStint g;
        g.playerId = r.text(i, cId);
        if (g.playerId.empty()) r.fail(i, "no playerID");
        g.stint = r.number(i, cStint);
        g.team = r.text(i, cTeam);
        teams.require(r, i, g.team);
        g.bio = bio.read(r, i);
        g.bio.position = 'G';
        g.gp = r.number(i, cGp);
        g.minutes = r.number(i, cMin);
        g.wins = r.number(i, cW);
        g.losses = r.number(i, cL);
        g.overtimeLosses = r.number(i, cOtl);
        g.emptyNetAgainst = r.number(i, cEng);
        g.shutouts = r.number(i, cSho);
        g.goalsAgainst = r.number(i, cGa);
        g.shotsAgainst = r.number(i, cSa);
        g.saves = r.number(i, cSv);
        out.push_back(std::move(g));
    }
    return out;
}

std::vector<GameFacts> readGames(const std::filesystem::path& folder, const TeamSet& teams) {
    Rows r(folder, "schedule_results.csv");
    auto cId = r.col("game_id"), cDate = r.col("date"), cAway = r.col("away"), cHome = r.col("home");
    auto cAg = r.col("away_goals"), cHg = r.col("home_goals"), cDec = r.col("decided_in");
    bool hasStart = r.has("start_utc"), hasVenue = r.has("venue");
    std::vector<GameFacts> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        GameFacts g;
        g.id = r.text(i, cId);
        g.date = r.date(i, cDate, "date");
        if (hasStart) g.start = r.text(i, r.col("start_utc"));
        if (hasVenue) g.venue = r.text(i, r.col("venue"));
        g.visitor = r.text(i, cAway);
        g.home = r.text(i, cHome);
        teams.require(r, i, g.visitor);
        teams.require(r, i, g.home);
        if (g.visitor == g.home) r.fail(i, fmt::format("team \"{}\" plays itself", g.home));
        g.visitorGoals = r.number(i, cAg);
        g.homeGoals = r.number(i, cHg);
        g.decidedIn = r.text(i, cDec);
        if (g.decidedIn != "REG" && g.decidedIn != "OT" && g.decidedIn != "SO")
            r.fail(i, fmt::format("decided_in \"{}\" is none of REG, OT, SO", g.decidedIn));
        if (g.visitorGoals == g.homeGoals) r.fail(i, "a game without a winner");
        out.push_back(std::move(g));
    }
    return out;
}

std::vector<GoalieGame> readGoalieGames(const std::filesystem::path& folder, const TeamSet& teams) {
    Rows r(folder, "goalie_games.csv");
    auto cGame = r.col("game_id"), cDate = r.col("date"), cId = r.col("playerID"), cTeam = r.col("team");
    auto cToi = r.col("toi_sec");
    std::vector<GoalieGame> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        GoalieGame g;
        g.gameId = r.text(i, cGame);
        g.date = r.date(i, cDate, "date");
        g.playerId = r.text(i, cId);
        g.team = r.text(i, cTeam);
        teams.require(r, i, g.team);
        g.toiSeconds = r.number(i, cToi);
        out.push_back(std::move(g));
    }
    return out;
}

std::map<std::string, TrackingTotals> readTracking(const std::filesystem::path& folder) {
    Rows r(folder, "skaters_tracking_by_situation.csv");
    auto cId = r.col("playerID"), cSit = r.col("situation"), cToi = r.col("toi_sec"), cShifts = r.col("shifts");
    auto cMiss = r.col("missedShots"), cPen = r.col("penalties"), cPim = r.col("PIM");
    auto cTake = r.col("takeaways"), cGive = r.col("giveaways"), cHit = r.col("hits"), cBlk = r.col("blocks");
    auto cFow = r.col("FOW"), cFol = r.col("FOL");
    std::map<std::string, TrackingTotals> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        auto& t = out[r.text(i, cId)];
        const auto& situation = r.text(i, cSit);
        if (situation == "all") {
            t.toiSeconds = r.number(i, cToi);
            t.shifts = r.number(i, cShifts);
            t.missedShots = r.number(i, cMiss);
            t.penalties = r.number(i, cPen);
            t.pim = r.number(i, cPim);
            t.takeaways = r.number(i, cTake);
            t.giveaways = r.number(i, cGive);
            t.hits = r.number(i, cHit);
            t.blocks = r.number(i, cBlk);
            t.faceoffsWon = r.number(i, cFow);
            t.faceoffsLost = r.number(i, cFol);
        } else if (situation == "5on4") {
            t.powerPlaySeconds = r.number(i, cToi);
        } else if (situation == "4on5") {
            t.shortHandedSeconds = r.number(i, cToi);
        }
    }
    return out;
}

std::map<std::string, OfficialTotals> readTotals(const std::filesystem::path& folder) {
    Rows r(folder, "skaters_hockeyref_totals.csv");
    auto cId = r.col("playerID"), cToi = r.col("TOI_min"), cBlk = r.col("BLK"), cHit = r.col("HIT");
    auto cFow = r.col("FOW"), cFol = r.col("FOL");
    std::map<std::string, OfficialTotals> out;
    for (std::size_t i = 0; i < r.count(); ++i) {
        auto& t = out[r.text(i, cId)];
        t.toiMinutes = r.number(i, cToi);
        t.blocks = r.number(i, cBlk);
        t.hits = r.number(i, cHit);
        t.faceoffsWon = r.number(i, cFow);
        t.faceoffsLost = r.number(i, cFol);
    }
    return out;
}

std::map<std::string, std::string> readCoaches(const std::filesystem::path& folder, const TeamSet& teams) {
    Rows r(folder, "team_games.csv");
    auto cDate = r.col("date"), cTeam = r.col("team"), cCoach = r.col("head_coach");
    std::map<std::string, std::pair<CalendarDate, std::string>> last;
    for (std::size_t i = 0; i < r.count(); ++i) {
        const auto& team = r.text(i, cTeam);
        teams.require(r, i, team);
        auto date = r.date(i, cDate, "date");
        auto& entry = last[team];
        if (entry.second.empty() || !(date < entry.first)) entry = {date, r.text(i, cCoach)};
    }
    std::map<std::string, std::string> out;
    for (auto& [team, entry] : last) out[team] = entry.second;
    return out;
}

}  // namespace

long CalendarDate::serial() const {
    auto ymd = chr::year{year} / chr::month{static_cast<unsigned>(month)} / chr::day{static_cast<unsigned>(day)};
    return static_cast<long>(chr::sys_days{ymd}.time_since_epoch().count());
}

CalendarDate CalendarDate::fromSerial(long serial) {
    chr::year_month_day ymd{chr::sys_days{chr::days{serial}}};
    return {static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
            static_cast<int>(static_cast<unsigned>(ymd.day()))};
}

const TeamFacts* SeasonData::team(const std::string& code) const {
    for (const auto& t : teams)
        if (t.code == code) return &t;
    return nullptr;
}

SeasonData readSeasonData(const std::filesystem::path& folder) {
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec))
        throw FileError(fmt::format("{}: no such season folder", folder.string()));
    SeasonData d;
    d.folder = folder;
    d.teams = readTeams(folder);
    d.teamNamesFile = readTeamNames(folder, d.teams);
    TeamSet teams(d.teams);
    d.scoring = readScoring(folder, teams);
    d.goalies = readGoalies(folder, teams);
    d.games = readGames(folder, teams);
    d.goalieGames = readGoalieGames(folder, teams);
    d.tracking = readTracking(folder);
    d.totals = readTotals(folder);
    d.coaches = readCoaches(folder, teams);
    return d;
}

}  // namespace tallyrink
