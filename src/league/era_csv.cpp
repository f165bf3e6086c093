#include "league/era_csv.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "league/files.h"
#include "league/text.h"

namespace tallyrink {

namespace {

std::optional<double> parseNumber(const std::string& text) {
    if (text.empty()) return std::nullopt;
    std::string_view v = text;
    if (v.front() == '+') v.remove_prefix(1);
    double out = 0;
    auto [end, ec] = std::from_chars(v.data(), v.data() + v.size(), out);
    if (ec != std::errc() || end != v.data() + v.size() || !std::isfinite(out)) return std::nullopt;
    return out;
}

bool isBlank(const std::string& line) { return line.find_first_not_of(" \t,") == std::string::npos; }

std::vector<std::string> readCsvLines(const fs::path& path) {
    std::error_code ec;
    if (!fs::exists(path, ec)) throw FileError(fmt::format("{} not found", path.string()));
    auto lines = readLines(path);
    if (!lines.empty() && lines.front().starts_with("\xEF\xBB\xBF")) lines.front().erase(0, 3);
    return lines;
}

// Collects the problems of one file, each naming where it lies.
class ProblemList {
public:
    explicit ProblemList(const fs::path& path) : file_(path.string()) {}

    void add(std::size_t line, std::size_t column, std::string_view name, std::string_view what) {
        problems_.push_back(fmt::format("{}:{}: column {} ({}): {}", file_, line, column, name, what));
    }
    void addLine(std::size_t line, std::string_view what) {
        problems_.push_back(fmt::format("{}:{}: {}", file_, line, what));
    }
    std::vector<std::string> take() { return std::move(problems_); }

private:
    std::string file_;
    std::vector<std::string> problems_;
};

std::string quoted(const std::string& v) { return v.empty() ? "empty" : fmt::format("\"{}\" is not a number", v); }

// ---- "NHL ERA DATA.CSV" ----------------------------------------------------

constexpr std::array<const char*, 10> kEraCsvColumns = {"year",
                                                        "league games",
                                                        "teams",
                                                        "passed over",
                                                        "passed over",
                                                        "passed over",
                                                        "goals per game",
                                                        "assists per game",
                                                        "penalty minutes per game",
                                                        "power-play percentage"};

}  // namespace

EraCsvFile readEraCsv(const fs::path& path) {
    const auto lines = readCsvLines(path);
    ProblemList problems(path);
    EraCsvFile out;
    std::set<int> seen;
    bool first = true;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::size_t lineNo = i + 1;
        if (isBlank(lines[i])) continue;
        const auto values = splitCsvLine(lines[i]);
        // The first line is a header of ten names, unless it already holds a season.
        if (std::exchange(first, false) && !parseNumber(values.front())) continue;
        if (values.size() != kEraCsvColumns.size()) {
            problems.addLine(lineNo, fmt::format("{} values expected, found {}", kEraCsvColumns.size(), values.size()));
            continue;
        }
        std::array<double, 10> v{};
        bool ok = true;
        for (std::size_t c = 0; c < values.size(); ++c) {
            if (c >= 3 && c <= 5) continue;
            auto n = parseNumber(values[c]);
            if (!n) {
                problems.add(lineNo, c + 1, kEraCsvColumns[c], quoted(values[c]));
                ok = false;
            } else if (*n < 0) {
                problems.add(lineNo, c + 1, kEraCsvColumns[c], fmt::format("{} is below 0", values[c]));
                ok = false;
            } else {
                v[c] = *n;
            }
        }
        if (!ok) continue;
        const double year = v[0];
        if (year != std::floor(year) || !EraTable::contains(static_cast<int>(year))) {
            problems.add(
                lineNo, 1, kEraCsvColumns[0],
                fmt::format("{} is not a year from {} to {}", values[0], EraTable::kFirstYear, EraTable::kLastYear));
            continue;
        }
        if (v[2] == 0) {
            problems.add(lineNo, 3, kEraCsvColumns[2], "a league needs at least one team");
            continue;
        }
        if (!seen.insert(static_cast<int>(year)).second) {
            problems.add(lineNo, 1, kEraCsvColumns[0], fmt::format("{} is given twice", values[0]));
            continue;
        }
        out.rows.push_back({static_cast<int>(year), v[1], v[2], v[6], v[7], v[8], v[9]});
    }
    out.problems = problems.take();
    return out;
}

void importEraCsv(EraTable& table, const std::vector<EraCsvRow>& rows) {
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        auto& e = table.year(y);
        e.Games = 0;
        e.GoalsPerTeam = 0;
        e.AssistsPerGoal = 0;
        e.PimPerGame = 0;
        e.PowerPlayPct = 0;
    }
    for (const auto& row : rows) {
        auto& e = table.year(row.year);
        // A hair over the quotient so that an exact one isn't floored below itself.
        const double games = row.leagueGames / (row.teams * 0.5) + 1e-9;
        e.Games = static_cast<std::int16_t>(std::min(std::floor(games), 32767.0));
        e.GoalsPerTeam = row.goalsPerGame / 2;
        e.AssistsPerGoal = row.goalsPerGame > 0 ? row.assistsPerGame / row.goalsPerGame : 0;
        e.PimPerGame = row.pimPerGame;
        e.PowerPlayPct = row.powerPlayPct;
    }
}

// ---- The league-by-season table ---------------------------------------------

namespace {

struct SeasonRow {
    int year{};
    int games{};
    double leagueGames{};
    double playerGoals{};
    double assistsPerGoal{};
    double pimPerGame{};
    std::optional<double> powerPlayPct;
    std::optional<double> savePct;
    std::optional<double> shotsPerTeam;
};

enum SeasonColumn : std::size_t {
    kYearStart,
    kGamesPerTeam,
    kLeagueGames,
    kPlayerGoals,
    kAssistsPerGoal,
    kPimPerGame,
    kPpPct,
    kSavePct,
    kShotsPerTeam,
    kSeasonColumns
};

constexpr std::array<const char*, kSeasonColumns> kSeasonColumnNames = {
    "year_start",   "games_per_team", "league_games", "player_goals_total", "assists_per_goal",
    "pim_per_game", "pp_pct",         "save_pct",     "shots_per_team_game"};

bool optionalColumn(std::size_t c) { return c == kPpPct || c == kSavePct || c == kShotsPerTeam; }

std::vector<SeasonRow> readSeasonRows(const fs::path& path, ProblemList& problems) {
    const auto lines = readCsvLines(path);
    std::vector<SeasonRow> rows;
    if (lines.empty()) {
        problems.addLine(1, "the file is empty");
        return rows;
    }
    const auto header = splitCsvLine(lines.front());
    std::array<std::size_t, kSeasonColumns> index{};
    bool headerOk = true;
    for (std::size_t c = 0; c < kSeasonColumns; ++c) {
        auto it = std::find(header.begin(), header.end(), kSeasonColumnNames[c]);
        if (it == header.end()) {
            problems.addLine(1, fmt::format("no column named {}", kSeasonColumnNames[c]));
            headerOk = false;
        } else {
            index[c] = static_cast<std::size_t>(it - header.begin());
        }
    }
    if (!headerOk) return rows;

    std::set<int> seen;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::size_t lineNo = i + 1;
        if (isBlank(lines[i])) continue;
        const auto values = splitCsvLine(lines[i]);
        if (values.size() != header.size()) {
            problems.addLine(lineNo, fmt::format("{} values expected, found {}", header.size(), values.size()));
            continue;
        }
        std::array<std::optional<double>, kSeasonColumns> v{};
        bool ok = true;
        for (std::size_t c = 0; c < kSeasonColumns; ++c) {
            const auto& text = values[index[c]];
            if (text.empty() && optionalColumn(c)) continue;
            v[c] = parseNumber(text);
            if (!v[c] || *v[c] < 0) {
                problems.add(lineNo, index[c] + 1, kSeasonColumnNames[c],
                             v[c] ? fmt::format("{} is below 0", text) : quoted(text));
                ok = false;
            }
        }
        if (!ok) continue;
        const double year = *v[kYearStart];
        if (year != std::floor(year) || !EraTable::contains(static_cast<int>(year))) {
            problems.add(lineNo, index[kYearStart] + 1, kSeasonColumnNames[kYearStart],
                         fmt::format("{} is not a year from {} to {}", values[index[kYearStart]], EraTable::kFirstYear,
                                     EraTable::kLastYear));
            continue;
        }
        const double games = *v[kGamesPerTeam];
        if (games < 1 || games > 32767 || games != std::floor(games)) {
            problems.add(lineNo, index[kGamesPerTeam] + 1, kSeasonColumnNames[kGamesPerTeam],
                         fmt::format("{} is not a season length", values[index[kGamesPerTeam]]));
            continue;
        }
        if (*v[kLeagueGames] == 0) {
            problems.add(lineNo, index[kLeagueGames] + 1, kSeasonColumnNames[kLeagueGames],
                         "a season needs at least one game");
            continue;
        }
        if (v[kSavePct] && *v[kSavePct] > 100) {
            problems.add(lineNo, index[kSavePct] + 1, kSeasonColumnNames[kSavePct],
                         fmt::format("{} is above 100", values[index[kSavePct]]));
            continue;
        }
        if (!seen.insert(static_cast<int>(year)).second) {
            problems.add(lineNo, index[kYearStart] + 1, kSeasonColumnNames[kYearStart],
                         fmt::format("{} is given twice", values[index[kYearStart]]));
            continue;
        }
        rows.push_back({static_cast<int>(year), static_cast<int>(games), *v[kLeagueGames], *v[kPlayerGoals],
                        *v[kAssistsPerGoal], *v[kPimPerGame], v[kPpPct], v[kSavePct], v[kShotsPerTeam]});
    }
    std::sort(rows.begin(), rows.end(), [](const SeasonRow& a, const SeasonRow& b) { return a.year < b.year; });
    return rows;
}

double goalsPerTeam(const SeasonRow& s) { return s.playerGoals / (2 * s.leagueGames); }

// Save percentages of the seasons that have none, by the rules told in the header.
std::map<int, double> estimateSavePct(const std::vector<SeasonRow>& seasons) {
    std::map<int, double> measured;
    for (const auto& s : seasons)
        if (s.savePct) measured[s.year] = *s.savePct;

    // Shots and empty-net offset of the first three measured seasons with shots.
    double shots = 0, offset = 0;
    int n = 0;
    for (const auto& s : seasons) {
        if (n == 3) break;
        if (!s.savePct || !s.shotsPerTeam || *s.shotsPerTeam <= 0) continue;
        shots += *s.shotsPerTeam;
        offset += *s.savePct - 100 * (1 - goalsPerTeam(s) / *s.shotsPerTeam);
        ++n;
    }

    std::map<int, double> out;
    for (const auto& s : seasons) {
        if (s.savePct) continue;
        auto next = measured.upper_bound(s.year);
        auto prev = next == measured.begin() ? measured.end() : std::prev(next);
        if (prev != measured.end() && next != measured.end()) {
            const double t = double(s.year - prev->first) / double(next->first - prev->first);
            out[s.year] = prev->second + t * (next->second - prev->second);
        } else if (next != measured.end() && n > 0) {
            out[s.year] = std::clamp(100 * (1 - goalsPerTeam(s) / (shots / n)) + offset / n, 0.0, 100.0);
        } else if (prev != measured.end()) {
            out[s.year] = prev->second;
        }
    }
    return out;
}

EraRecord eraOf(const SeasonRow& s, double savePct) {
    EraRecord e{};
    e.Games = static_cast<std::int16_t>(s.games);
    e.PowerPlayPct = s.powerPlayPct.value_or(0);
    e.GoalsPerTeam = goalsPerTeam(s);
    e.PimPerGame = s.pimPerGame;
    e.AssistsPerGoal = s.assistsPerGoal;
    e.SavePct = savePct;
    return e;
}

}  // namespace

SeasonEraBuild buildEraFromSeasons(const fs::path& csv) {
    ProblemList problems(csv);
    auto seasons = readSeasonRows(csv, problems);
    // Every goal counts against the save percentage here, empty-net goals
    // too, so that the goals of a team and its save percentage give back the
    // season's shots, the way the engine reads them (goals / (1 - save %)).
    for (auto& s : seasons)
        if (s.savePct && s.shotsPerTeam && *s.shotsPerTeam > 0)
            s.savePct = 100 * (1 - goalsPerTeam(s) / *s.shotsPerTeam);
    SeasonEraBuild out;
    out.problems = problems.take();
    if (!out.problems.empty()) return out;
    if (seasons.empty()) {
        out.problems.push_back(fmt::format("{}: no seasons", csv.string()));
        return out;
    }
    const auto estimated = estimateSavePct(seasons);
    for (const auto& s : seasons) {
        double save = s.savePct ? *s.savePct : 0;
        if (auto it = estimated.find(s.year); it != estimated.end()) {
            save = it->second;
            out.estimatedSavePct.push_back(s.year);
        }
        out.table.year(s.year) = eraOf(s, save);
    }
    out.firstSeason = seasons.front().year;
    out.lastSeason = seasons.back().year;
    for (int y = EraTable::kFirstYear; y < out.firstSeason; ++y) out.table.year(y) = out.table.year(out.firstSeason);
    return out;
}

}  // namespace tallyrink
