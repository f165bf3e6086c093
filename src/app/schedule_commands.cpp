// The schedule on the command line: list games the way a person reads a
// schedule, add and remove games, and make a whole season's schedule.

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <memory>
#include <optional>

#include "app/cli.h"
#include "league/rules.h"
#include "league/schedule.h"
#include "league/team_directory.h"
#include "operations/csv_schedule.h"
#include "operations/schedule_generator.h"

namespace tallyrink::cli {

namespace {

// The league's schedule file. The league rules name it; until they can be
// read here every league uses the default.
// The schedule file the league's rules name.
std::string scheduleFileFor(const std::filesystem::path& leagueDir) {
    auto name = HkRulesLoad(leagueDir, leagueYear(leagueDir)).ScheduleFile.str();
    return name.empty() ? std::string(kDefaultScheduleFile) : name;
}

struct CalendarDate {
    int year = 0;
    int month = 0;
    int day = 0;
};

// "YYYY-MM-DD", a real calendar date.
CalendarDate parseDate(const std::string& text) {
    CalendarDate d;
    auto field = [&](std::size_t at, std::size_t len, int& out) {
        if (at + len > text.size()) return false;
        auto [p, ec] = std::from_chars(text.data() + at, text.data() + at + len, out);
        return ec == std::errc() && p == text.data() + at + len;
    };
    bool shaped = text.size() == 10 && text[4] == '-' && text[7] == '-' && field(0, 4, d.year) &&
                  field(5, 2, d.month) && field(8, 2, d.day);
    using namespace std::chrono;
    if (!shaped ||
        !year_month_day(year(d.year), month(static_cast<unsigned>(d.month)), day(static_cast<unsigned>(d.day))).ok())
        throw CommandError(fmt::format("\"{}\" is not a date: write it as YYYY-MM-DD, e.g. 2017-10-04", text));
    return d;
}

// The season a date belongs to starts in September of its year or the year before.
int seasonYearOf(const CalendarDate& d) { return d.month >= 9 ? d.year : d.year - 1; }

std::string seasonName(int seasonYear) { return fmt::format("{}-{:02}", seasonYear, (seasonYear + 1) % 100); }

std::string dateText(int year, int month, int day) {
    using namespace std::chrono;
    auto name = monthName(month);
    if (year > 0) {
        year_month_day ymd{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                           std::chrono::day(static_cast<unsigned>(day))};
        if (ymd.ok()) {
            static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
            auto wd = weekday(sys_days(ymd)).c_encoding();
            return fmt::format("{} {:04}-{:02}-{:02}", kDays[wd], year, month, day);
        }
    }
    if (name.empty()) return fmt::format("month {} day {}", month, day);
    return fmt::format("{} {}", name.substr(0, 3), day);
}

std::string gameDate(const Schedule& s, const GameRecord& g) {
    return dateText(calendarYearOf(s.seasonYear(), g.Month), g.Month, g.Day);
}

// Checks that a date lies in the season of the schedule (when the schedule
// knows its season) and gives the season year for a first game.
int checkSeason(const Schedule& s, const CalendarDate& d) {
    int want = seasonYearOf(d);
    if (s.size() > 0 && s.seasonYear() > 0 && s.seasonYear() != want)
        throw CommandError(fmt::format("The schedule is for the {} season; {:04}-{:02}-{:02} lies outside it",
                                       seasonName(s.seasonYear()), d.year, d.month, d.day));
    return want;
}

// --- listing ---

std::string resultText(const GameRecord& g) {
    switch (statusOf(g)) {
        case kPlayed: {
            auto score = fmt::format("{}-{}", g.ScoreOf[0], g.ScoreOf[1]);
            if (g.ExtraMark == 1) score += " (ot)";
            if (g.ExtraMark == 2) score += " (so)";
            return score;
        }
        case kMarked:
            return "Unplayed (marked to play)";
        default:
            return "Unplayed";
    }
}

std::string teamCell(const TeamDirectory& teams, const GameRecord& g, int side) {
    int t = side == 0 ? g.VisitorTeam : g.HomeTeam;
    auto name = teams.displayName(t);
    auto record = g.RecordText[static_cast<std::size_t>(side)].str();
    if (statusOf(g) == kPlayed && !record.empty()) name += " (" + record + ")";
    return name;
}

std::string starsCell(const GameRecord& g) {
    std::vector<std::string> names;
    for (const auto& s : g.StarName)
        if (!s.blank()) names.push_back(s.str());
    if (names.empty()) return {};
    std::string out;
    for (std::size_t i = 0; i < names.size(); ++i) out += (i ? ", " : "") + names[i];
    return out;
}

void printTable(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> width;
    for (const auto& r : rows) {
        width.resize(std::max(width.size(), r.size()), 0);
        for (std::size_t c = 0; c < r.size(); ++c) width[c] = std::max(width[c], r[c].size());
    }
    for (const auto& r : rows) {
        std::string line;
        for (std::size_t c = 0; c < r.size(); ++c) {
            bool numeric = c == 0;
            if (c + 1 == r.size())
                line += r[c];
            else if (numeric)
                line += fmt::format("{:>{}}  ", r[c], width[c]);
            else
                line += fmt::format("{:<{}}  ", r[c], width[c]);
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        fmt::print("{}\n", line);
    }
}

// Rows in date order (the file keeps the order the games were made in).
std::vector<std::size_t> rowsInDateOrder(const Schedule& s, auto keep) {
    std::vector<std::size_t> rows;
    for (std::size_t r = 1; r <= s.size(); ++r)
        if (statusOf(s.row(r)) != kDeleted && keep(s.row(r))) rows.push_back(r);
    std::stable_sort(rows.begin(), rows.end(), [&](std::size_t a, std::size_t b) {
        return dateKey(s.row(a).Month, s.row(a).Day) < dateKey(s.row(b).Month, s.row(b).Day);
    });
    return rows;
}

void printGames(const Schedule& s, const TeamDirectory& teams, const std::vector<std::size_t>& rows, bool withDate) {
    std::vector<std::vector<std::string>> table;
    std::vector<std::string> head{"Row"};
    if (withDate) head.emplace_back("Date");
    for (const char* h : {"Visitor", "", "Home", "Status", "Stars"}) head.emplace_back(h);
    table.push_back(head);
    for (auto r : rows) {
        const auto& g = s.row(r);
        std::vector<std::string> line{std::to_string(r)};
        if (withDate) line.push_back(gameDate(s, g));
        line.push_back(teamCell(teams, g, 0));
        line.emplace_back("@");
        line.push_back(teamCell(teams, g, 1));
        line.push_back(resultText(g));
        line.push_back(starsCell(g));
        table.push_back(line);
    }
    printTable(table);
}

std::size_t openGames(const Schedule& s) {
    return static_cast<std::size_t>(std::count_if(s.rows().begin(), s.rows().end(), isOpen));
}

struct ListOptions {
    std::string date;
    std::string team;
    bool all = false;
};

void listSchedule(const GlobalOptions& options, const ListOptions& o) {
    auto dir = leagueDir(options);
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    auto teams = TeamDirectory::load(dir);
    auto games = schedule.size() -
                 static_cast<std::size_t>(std::count_if(schedule.rows().begin(), schedule.rows().end(),
                                                        [](const GameRecord& g) { return statusOf(g) == kDeleted; }));
    if (games == 0) {
        fmt::print("The schedule has no games.\n");
        return;
    }
    if (!o.team.empty()) {
        int t = findTeam(teams, o.team);
        auto rows =
            rowsInDateOrder(schedule, [&](const GameRecord& g) { return g.VisitorTeam == t || g.HomeTeam == t; });
        fmt::print("Games Scheduled For {}: {}\n", teams.fullName(t), rows.size());
        if (!rows.empty()) printGames(schedule, teams, rows, true);
        return;
    }
    if (o.all) {
        fmt::print("Schedule {}: {} games, {} still to play\n", schedule.path().filename().string(), games,
                   openGames(schedule));
        printGames(schedule, teams, rowsInDateOrder(schedule, [](const GameRecord&) { return true; }), true);
        return;
    }
    int month = 0;
    int day = 0;
    if (!o.date.empty()) {
        auto d = parseDate(o.date);
        checkSeason(schedule, d);
        month = d.month;
        day = d.day;
    } else {
        auto today = schedule.leagueDate();
        if (!today) {
            fmt::print("All {} games of the schedule have been played.\n", games);
            return;
        }
        month = today->month;
        day = today->day;
    }
    auto rows = rowsInDateOrder(schedule, [&](const GameRecord& g) { return g.Month == month && g.Day == day; });
    auto when = dateText(calendarYearOf(schedule.seasonYear(), month), month, day);
    if (o.date.empty())
        fmt::print("League date: {} ({} game{} that day; {} of {} games still to play)\n", when, rows.size(),
                   rows.size() == 1 ? "" : "s", openGames(schedule), games);
    else
        fmt::print("Games on {}: {}\n", when, rows.size());
    if (!rows.empty()) printGames(schedule, teams, rows, false);
}

// --- changes ---

struct AddOptions {
    std::string visitor;
    std::string home;
    std::string date;
};

void addGame(const GlobalOptions& options, const AddOptions& o) {
    auto dir = leagueDir(options);
    auto teams = TeamDirectory::load(dir);
    int visitor = findTeam(teams, o.visitor);
    int home = findTeam(teams, o.home);
    if (visitor == home) throw CommandError(fmt::format("{} cannot play itself", teams.fullName(home)));
    auto d = parseDate(o.date);
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    int season = checkSeason(schedule, d);
    for (int t : {visitor, home})
        if (schedule.teamPlaysOn(t, d.month, d.day))
            throw CommandError(fmt::format("{} already plays on {}", teams.fullName(t), o.date));
    auto row = schedule.addGame(visitor, home, d.month, d.day, season);
    if (row == 0) throw CommandError(fmt::format("The schedule is full: it holds at most {} games", kMaxScheduleGames));
    schedule.save(teams.activeTeams());
    fmt::print("Added game {}: {} @ {} on {}.\n", row, teams.displayName(visitor), teams.displayName(home),
               gameDate(schedule, schedule.row(row)));
}

void removeGame(const GlobalOptions& options, std::size_t row, bool force) {
    auto dir = leagueDir(options);
    auto teams = TeamDirectory::load(dir);
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    if (row < 1 || row > schedule.size() || statusOf(schedule.row(row)) == kDeleted)
        throw CommandError(fmt::format("The schedule has no game {}", row));
    const auto g = schedule.row(row);
    if (statusOf(g) == kPlayed && !force)
        throw CommandError(fmt::format("Game {} has been played; add --force to remove it anyway", row));
    bool last = row == schedule.size();
    schedule.removeGame(row);
    // Saving in place would leave the old last slot behind the shorter
    // schedule, and the next load would count that game twice.
    schedule.save(teams.activeTeams(), ScheduleTail::Truncate);
    fmt::print("Removed game {}: {} @ {} on {}.{}\n", row, teams.displayName(g.VisitorTeam),
               teams.displayName(g.HomeTeam), gameDate(schedule, g),
               last ? "" : " The games after it have moved up a row.");
}

void eraseSchedule(const GlobalOptions& options, bool yes) {
    auto dir = leagueDir(options);
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    if (!yes)
        throw CommandError(
            fmt::format("This deletes all {} games from the schedule; add --yes to go ahead", schedule.size()));
    schedule.eraseAll();
    fmt::print("All games were deleted from {}.\n", schedule.path().filename().string());
}

void setCoaches(const GlobalOptions& options, const std::string& who, const std::string& team) {
    auto dir = leagueDir(options);
    auto teams = TeamDirectory::load(dir);
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    char coach = who == "human" ? 'H' : 'C';
    if (team.empty()) {
        schedule.setAllCoaches(coach);
        fmt::print("Every game still to play is now coached by the {}.\n", who);
    } else {
        int t = findTeam(teams, team);
        schedule.setTeamCoach(t, coach);
        fmt::print("{} is now coached by the {} in every game still to play.\n", teams.fullName(t), who);
    }
    schedule.save(teams.activeTeams());
}

void listFiles(const GlobalOptions& options) {
    auto dir = leagueDir(options);
    auto current = resolveScheduleFile(dir, scheduleFileFor(dir)).filename().string();
    auto files = scheduleFileList(dir);
    if (files.empty()) fmt::print("The league folder has no schedule files.\n");
    for (const auto& f : files) fmt::print("{} {}\n", f == current ? '*' : ' ', f);
}

// --- making a schedule ---

struct MakeOptions {
    int games = 0;
    int divisionGames = 0;
    std::string start;
    std::string csv;
    std::optional<std::uint64_t> seed;
    bool yes = false;
};

void guardOverwrite(const std::filesystem::path& dir, bool yes) {
    auto schedule = Schedule::load(dir, scheduleFileFor(dir));
    auto games = static_cast<std::size_t>(std::count_if(schedule.rows().begin(), schedule.rows().end(),
                                                        [](const GameRecord& g) { return statusOf(g) != kDeleted; }));
    if (games > 0 && !yes)
        throw CommandError(fmt::format("The league has a schedule of {} games ({} played); add --yes to replace it",
                                       games, games - openGames(schedule)));
}

void reportOutcome(const ScheduleOutcome& outcome) {
    if (!outcome.ok) {
        std::string text;
        for (const auto& m : outcome.messages) text += (text.empty() ? "" : " ") + m;
        throw CommandError(text);
    }
    for (const auto& m : outcome.messages) fmt::print("{}\n", m);
}

void makeSchedule(const GlobalOptions& options, const MakeOptions& o) {
    auto dir = leagueDir(options);
    auto file = scheduleFileFor(dir);
    if (!o.csv.empty()) {
        guardOverwrite(dir, o.yes);
        reportOutcome(importCsvSchedule(dir, o.csv, file));
        return;
    }
    if (o.games == 0 || o.start.empty()) throw CommandError("make-schedule needs --games and --start, or --csv FILE");
    auto start = parseDate(o.start);
    ScheduleRequest request;
    request.gamesPerTeam = o.games;
    request.divisionGames = o.divisionGames;
    request.startMonth = start.month;
    request.startDay = start.day;
    request.seasonYear = seasonYearOf(start);
    guardOverwrite(dir, o.yes);
    auto outcome = makeComputerSchedule(dir, request, file, o.seed.value_or(Random::freshSeed()));
    reportOutcome(outcome);
    auto schedule = Schedule::load(dir, file);
    auto rows = rowsInDateOrder(schedule, [](const GameRecord&) { return true; });
    if (!rows.empty())
        fmt::print("{} games written to {}, from {} to {}.\n", rows.size(), schedule.path().filename().string(),
                   gameDate(schedule, schedule.row(rows.front())), gameDate(schedule, schedule.row(rows.back())));
}

}  // namespace

void addScheduleCommands(CLI::App& app, GlobalOptions& options) {
    auto* sched = app.add_subcommand("schedule", "List the league's games (by default those of the league date)");
    auto list = std::make_shared<ListOptions>();
    auto* date = sched->add_option("--date", list->date, "Games of this date (YYYY-MM-DD)");
    auto* team = sched->add_option("--team", list->team, "All games of a team (number, code or city)");
    auto* all = sched->add_flag("--all", list->all, "Every game of the season");
    date->excludes(team)->excludes(all);
    team->excludes(all);
    sched->require_subcommand(0, 1);

    auto add = std::make_shared<AddOptions>();
    auto* addCmd = sched->add_subcommand("add", "Add a game at the end of the schedule");
    addCmd->add_option("--visitor", add->visitor, "Visiting team (number, code or city)")->required();
    addCmd->add_option("--home", add->home, "Home team (number, code or city)")->required();
    addCmd->add_option("--date", add->date, "Date of the game (YYYY-MM-DD)")->required();
    addCmd->callback([&options, add] { addGame(options, *add); });

    auto removeRow = std::make_shared<std::size_t>(0);
    auto removeForce = std::make_shared<bool>(false);
    auto* removeCmd = sched->add_subcommand("remove", "Remove a game by its row number");
    removeCmd->add_option("row", *removeRow, "Row number as listed")->required();
    removeCmd->add_flag("--force", *removeForce, "Remove a game that has been played");
    removeCmd->callback([&options, removeRow, removeForce] { removeGame(options, *removeRow, *removeForce); });

    auto eraseYes = std::make_shared<bool>(false);
    auto* eraseCmd = sched->add_subcommand("erase", "Delete all games from the schedule");
    eraseCmd->add_flag("--yes", *eraseYes, "Really delete them");
    eraseCmd->callback([&options, eraseYes] { eraseSchedule(options, *eraseYes); });

    auto coachWho = std::make_shared<std::string>();
    auto coachTeam = std::make_shared<std::string>();
    auto* coachCmd = sched->add_subcommand("coaches", "Set who coaches the games still to play");
    coachCmd->add_option("who", *coachWho, "computer or human")
        ->required()
        ->check(CLI::IsMember({"computer", "human"}));
    coachCmd->add_option("--team", *coachTeam, "Only this team's side (number, code or city)");
    coachCmd->callback([&options, coachWho, coachTeam] { setCoaches(options, *coachWho, *coachTeam); });

    auto* filesCmd = sched->add_subcommand("files", "List the schedule files of the league (* the one in use)");
    filesCmd->callback([&options] { listFiles(options); });

    auto exportFile = std::make_shared<std::string>();
    auto* exportCmd = sched->add_subcommand("export", "Write the schedule as a CSV file (month, day, visitor, home)");
    exportCmd->add_option("--csv", *exportFile, "CSV file to write")->required();
    exportCmd->callback([&options, exportFile] {
        auto dir = leagueDir(options);
        auto n = exportCsvSchedule(dir, *exportFile, scheduleFileFor(dir));
        fmt::print("Exported {} games to {}.\n", n, *exportFile);
    });

    sched->callback([&options, sched, list] {
        if (sched->get_subcommands().empty()) listSchedule(options, *list);
    });

    auto make = std::make_shared<MakeOptions>();
    auto* makeCmd = app.add_subcommand("make-schedule", "Make a new season schedule, or import one from a CSV file");
    auto* games = makeCmd->add_option("--games", make->games, "Games per team: even, 10 to 98");
    auto* divGames = makeCmd->add_option("--division-games", make->divisionGames,
                                         "Games against each division rival: 0 or even, up to 20");
    auto* start = makeCmd->add_option("--start", make->start, "First date of the season (YYYY-MM-DD)");
    auto* csv = makeCmd->add_option(
        "--csv", make->csv, "Import this CSV file instead: month (name, or 1 for September), day, visitor, home");
    makeCmd->add_option("--seed", make->seed, "Seed for a schedule that can be made again");
    makeCmd->add_flag("--yes", make->yes, "Replace the existing schedule");
    csv->excludes(games)->excludes(divGames)->excludes(start);
    makeCmd->callback([&options, make] { makeSchedule(options, *make); });
}

}  // namespace tallyrink::cli
