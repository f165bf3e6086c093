// `tallyrink rules`: the league's rules in readable form.
// `tallyrink era`: the era table of the program folder, and the commands that
// build it from season tables.

#include <fmt/format.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/cli.h"
#include "league/era.h"
#include "league/era_csv.h"
#include "league/files.h"
#include "league/places.h"
#include "league/records.h"
#include "league/rules.h"

namespace tallyrink::cli {

namespace {

namespace fs = std::filesystem;

// The folder of the program's own files: --program-dir, else the shipped data
// folder of the build or of the installation, else the current folder.
fs::path programFolder(const GlobalOptions& options) {
    return resolvePlaces(sessionOptions(options).places).ProgramDir;
}

std::optional<EraTable> loadEraIfPresent(const fs::path& programDir) {
    std::error_code ec;
    if (!fs::exists(findFile(programDir, kEraFileName), ec)) return std::nullopt;
    return LoadEra(programDir);
}

EraTable requireEra(const fs::path& programDir) {
    auto era = loadEraIfPresent(programDir);
    if (!era) throw CommandError(fmt::format("No era table: {} not found in {}", kEraFileName, programDir.string()));
    return *era;
}

// ---- rules -------------------------------------------------------------------

void section(const char* title) { fmt::print("\n{}\n", title); }

template <class... Args>
void row(std::string_view label, fmt::format_string<Args...> format, Args&&... args) {
    fmt::print("  {:<40}{}\n", label, fmt::format(format, std::forward<Args>(args)...));
}

std::string trimmed(const std::string& s) {
    const auto b = s.find_first_not_of(' ');
    return b == std::string::npos ? std::string() : s.substr(b);
}

const char* onOff(int v) { return v ? "on" : "off"; }
const char* yesNo(int v) { return v ? "yes" : "no"; }

std::string minutesText(int minutes) { return minutes == 1 ? "1 minute" : fmt::format("{} minutes", minutes); }

std::string limitText(int v, const char* none) { return v == 0 ? none : std::to_string(v); }

std::string overtimeText(const RulesRecord& r, bool playoff) {
    const int minutes = overtimeMinutes(r, playoff);
    if (minutes == 0) return "none";
    return fmt::format("{}, {}", minutesText(minutes), overtimeTypeCaption(overtimeType(r, playoff)));
}

std::string overtimeSkaters(int three, int four, int five) {
    std::vector<std::string> sides;
    if (three) sides.emplace_back("3 on 3");
    if (four) sides.emplace_back("4 on 4");
    if (five) sides.emplace_back("5 on 5");
    if (sides.empty()) return "as in regulation";
    return fmt::format("{}", fmt::join(sides, ", "));
}

std::string shootoutText(const RulesRecord& r, bool playoff) {
    const int rounds = shootoutRounds(r, playoff);
    if (overtimeMinutes(r, playoff) > 0 && overtimeType(r, playoff) == 1) return "none: overtime goes on until a goal";
    return rounds == 0 ? "none: a tie stands" : fmt::format("{} rounds", rounds);
}

std::string usageText(const std::uint8_t* steps, std::size_t n) {
    std::vector<std::string> parts;
    for (std::size_t i = 0; i < n; ++i)
        if (steps[i] != 0) parts.push_back(fmt::format("{}%", steps[i]));
    if (parts.empty()) return usageStepCaption(0) + " (none)";
    return fmt::format("{} of real use", fmt::join(parts, ", "));
}

const char* injuryText(int v) {
    switch (v) {
        case 0:
            return "none";
        case 1:
            return "at the rate of the real season";
        default:
            return "at the real rate, and players sit out their real games missed";
    }
}

void printGameShape(const RulesRecord& r) {
    section("Game shape");
    row("Periods", "{} of {}", periodsPerGame(r), minutesText(periodMinutes(r)));
    row("TV timeouts", "{}", onOff(r.TVTimeoutsCheck));
    row("Coach timeouts", "{}", r.TimeoutsAllowedCheck ? "allowed" : "not allowed");
    row("Offsides", "{}", r.Offsideslist ? "called" : "none");
    row("Two-line passes", "{}", r.TwoLinePasscheck ? "allowed" : "offside");
    row("Icing", "{}", r.Icinglist == 2 ? "none" : "called");
    row("Line changes after an icing", "{}", r.AllowLineChangesOnIcingCheck ? "allowed" : "not allowed");
    row("Delayed penalties", "{}", r.NoDelayedcheck ? "no" : "yes");
    row("Video review", "{}", onOff(r.VideoReviewcheck));
    row("Goalie may pass the puck", "{}", yesNo(!r.NoGoaliePasscheck));
    row("Goalie may freeze the puck", "{}", yesNo(!r.NoGoalieFreezecheck));
    row("Defensive-zone pass rule", "{}", onOff(r.DZonePasscheck));
    row("High-school rules", "{}", onOff(r.HighSchoolcheck));
    row("Home ice", "{}", r.AllGamesNeutralIceCheck ? "none: all games on neutral ice" : "counts");
}

void printOvertime(const RulesRecord& r) {
    section("Overtime and shootout");
    row("Overtime", "{}", overtimeText(r, false));
    if (overtimeMinutes(r, false) > 0)
        row("Skaters a side in overtime", "{}", overtimeSkaters(r.ThreeOption, r.Fouroption, r.Fiveoption));
    row("Shootout", "{}", shootoutText(r, false));
    row("Playoff overtime", "{}", overtimeText(r, true));
    if (overtimeMinutes(r, true) > 0)
        row("Playoff skaters a side in overtime", "{}",
            overtimeSkaters(r.PlayoffThreeOption, r.playofffourOption, r.playoffFiveoption));
    row("Playoff shootout", "{}", shootoutText(r, true));
    row("Shooters may shoot again", "{}", yesNo(r.ReuseShootersCheck));
}

void printPenalties(const RulesRecord& r) {
    section("Penalties");
    if (r.Minorcheck)
        row("Minors", "{}; a power-play goal ends them: {}; a substitute serves them: {}", minutesText(minorMinutes(r)),
            yesNo(r.MinorGoalcheck), yesNo(r.SubMinorcheck));
    else
        row("Minors", "off");
    row("Double minors", "{}", onOff(r.DoubleMinorcheck));
    if (r.Majorcheck)
        row("Majors", "{}; a goal ends them: {}; the man may be replaced: {}", minutesText(majorMinutes(r)),
            yesNo(r.MajorGoalcheck), yesNo(r.MajorSubcheck));
    else
        row("Majors", "off");
    row("Misconducts", "{} (length list {})", onOff(r.Misccheck), r.MiscConductLengthList);
    row("Misconduct with a major", "{}", onOff(r.GameMisconductCheck));
    row("Match penalties", "{}", onOff(r.MatchCheck));
    row("Suspensions", "{} (length list {}, sportsmanship cap {})", onOff(r.Suspcheck), r.SuspLengthlist,
        onOff(r.MaxSportscheck));
    if (r.PShotlist)
        row("Penalty shots", "on, taken by {}", r.PShotAnyoption ? "any team member" : "the fouled shooter");
    else
        row("Penalty shots", "off");
    row("Goalies serve their own penalties", "{}", yesNo(r.GoaliePenaltycheck));
    row("Substitutes on all penalties", "{}", yesNo(r.SubsOnAllPenaltiesCheck));
    row("Fighting", "{}", r.NoFightingCheck ? "none" : "allowed");
    row("Fight frequency", "{}", trimmed(fightFrequencyCaption(r.FightFrequencyList)));
    row("A third fight ejects", "{}", yesNo(r.ThreeFightMajorsCheck));
    row("Instigator minor", "{}", onOff(r.FightInstigatorCheck));
}

void printRosters(const RulesRecord& r) {
    section("Rosters");
    row("Skaters dressed", "{}", limitText(r.SkaterLimitlist, "no limit"));
    row("Goalies dressed", "{}", limitText(r.GoalieLimitlist, "no limit"));
    row("Roster limit from December 1", "{}", limitText(r.Dec1Limitlist, "none"));
    row("Limits in exhibition games", "{}", onOff(r.ExhibitionRosterLimitsCheck));
    row("Availability dates bind", "{}", yesNo(r.Transactioncheck));
    row("Injuries", "{}", injuryText(r.InjuryCheck));
    row("Goalies can be hurt", "{}", yesNo(r.GoalieInjcheck));
    row("Injuries last one game at most", "{}", yesNo(r.OneGameInjuryLimitCheck));
    row("Durability", "{}", universalDurabilityCaption(r.UniversalDurabilityList));
    row("Goalies play without rest", "{}", yesNo(r.GoalieConsecCheck));
    row("Computer GM may change rosters", "{}", yesNo(r.AllowComputerGeneralManagerRosterChangesCheck));
    row("Skater usage penalties", "{}", usageText(r.SkaterUsageList.data(), 3));
    row("Goalie usage penalties", "{}", usageText(r.GoalieUsageList.data(), 3));
    row("Usage penalties within a game", "skaters {}, goalies {}", onOff(r.SkaterGameUsagePenaltiesCheck),
        onOff(r.GoalieGameUsagePenaltiesCheck));
    row("Playoff skater usage penalties", "{} ({})", usageText(r.PlayoffUsageLists.data(), 3),
        onOff(r.PlayoffSkaterUsageCheck));
    row("Playoff goalie usage penalties", "{} ({})", usageText(r.PlayoffUsageLists.data() + 3, 3),
        onOff(r.PlayoffGoalieUsageCheck));
    row("Salaries", "list {}", r.SalaryValueList);
}

void printStandings(const RulesRecord& r) {
    section("Standings");
    row("Points", "{}", standingsScoringCaption(r.StandingsScoringList));
    row("A point for an overtime loss", "{}", yesNo(r.OnePointForOvertimeLossCheck));
    row("ROW column", "{}", r.ROWStandingsCheck ? "shown" : "hidden");
    row("Standings by", "{}", standingsListCaption(r.StandingsList));
}

// Divisions that hold active teams, or with no teams the first of each kind.
void printDivisions(const RulesRecord& r, const fs::path& dir) {
    section("Divisions and conferences");
    std::vector<bool> used(kDivisions + 1, false);
    const RandomFile teams(findFile(dir, "HKTEAMS"), codec::slotWidth<TeamRecord>());
    const auto count = std::min<std::size_t>(teams.count(kWholeSlots), kMaxTeams);
    bool any = false;
    if (count > 0) {
        const auto records = readRecords<TeamRecord>(teams, count);
        for (std::size_t t = 0; t < records.size(); ++t)
            if (records[t].TeamActive == 1) used[divisionOfTeam(static_cast<int>(t) + 1)] = any = true;
    }
    for (int d = 1; d <= kDivisions; ++d)
        if (used[d] || (!any && d <= 2)) row(fmt::format("Division {}", d), "{}", r.DivisionName[d - 1].str());
    if (!any) row("", "(no active teams)");
    for (std::size_t c = 0; c < r.ConferenceName.size(); ++c)
        if (c < 2 || r.ConferenceName[c].str() != defaultConferenceName(static_cast<int>(c) + 1))
            row(fmt::format("Conference {}", c + 1), "{}", r.ConferenceName[c].str());
}

void printEraFigures(const EraRecord& e) {
    const auto f = figuresOf(e, EraLevel::Professional);
    fmt::print(
        "{} games, {:.3f} goals a team, {:.3f} assists a goal, {:.2f} penalty minutes a game,\n"
        "  {:<40}power play {:.2f}%, save {:.2f}%, {:.2f} fighting majors a game\n",
        f.games, f.goalsPerTeam, f.assistsPerGoal, f.pimPerGame, "", f.powerPlayPct, f.savePct, f.fightsPerGame);
}

void printEra(const RulesRecord& r, int year, const fs::path& programDir) {
    section("Era");
    row("Game era", "{}", gameEraCaption(r.GameEraList));
    row("Alternate reality", "{}", onOff(r.AlternateRealityCheck));
    const auto era = loadEraIfPresent(programDir);
    if (!era) {
        row("Era figures", "no {} in {}", kEraFileName, programDir.string());
        return;
    }
    const int shown = gameEraYear(r) != 0 ? gameEraYear(r) : year;
    if (!EraTable::contains(shown)) return;
    fmt::print("  {:<40}", fmt::format("Figures of {}", shown));
    printEraFigures(era->year(shown));
}

void printScreenAndFiles(const RulesRecord& r) {
    section("Game screen and files");
    row("Computer changes lines", "{}", onOff(r.AutoLinesCheck));
    row("Computer lines up for faceoffs", "{}", onOff(r.AutolineFaceoffsCheck));
    row("Show computer home lines at faceoffs", "{}", yesNo(r.DisplayComputerHomeTeamLinesAtFaceoffCheck));
    row("Offensive-zone play calls", "{}", r.AllowOffensiveZonePlayCallsCheck ? "allowed" : "not allowed");
    row("Human coach calls every play", "{}", yesNo(r.NoComputerPlayCallsCheck));
    row("Pauses", "goals {}, injuries {}, fights {}, power plays {}, ejections {}, period ends {}",
        onOff(r.GoalPauseCheck), onOff(r.PauseInjuryCheck), onOff(r.PauseFightCheck), onOff(r.PausePowerPlayCheck),
        onOff(r.EjectionCheck), onOff(r.PauseEndOfQuarterCheck));
    row("No pauses in a blowout", "{}", yesNo(r.BlowoutSkipPauseCheck));
    row("Pause at the end of a tied game", "{}", yesNo(r.endOfGameCheck));
    row("Key-play pause", "{}",
        r.KeyPlayPauseTimeList ? fmt::format("{} seconds", r.KeyPlayPauseTimeList) : std::string("until clicked"));
    row("Score ticker", "{}", onOff(r.GameScoreTickerCheck));
    row("Hide real statistics", "{}", yesNo(r.HideRealStatsCheck));
    row("Highlights of all teams", "{}", yesNo(r.HighlightAllTeamsCheck));
    row("Save game films", "{}", yesNo(r.SaveGameFilmsCheck));
    row("All-time records", "{}", onOff(r.AllTimeRecordCheck));
    row("League photo folder", "{}", yesNo(r.PrivateLeaguePhotoFolderCheck));
    row("Schedule file", "{}", r.ScheduleFile.str());
    row("League logo", "{}", r.LeagueLogo.str());
    if (r.IsPlayoffFolder)
        row("Playoff module", "this folder; the season is {}", r.SeasonFolderPath.str());
    else
        row("Playoff module", "{}", r.HasPlayoffFolder ? "made" : "none");
}

void showRules(const GlobalOptions& options, bool fields) {
    const fs::path dir = leagueDir(options);
    const int year = leagueYear(dir);
    const RulesRecord rules = HkRulesLoad(dir, year);
    if (fields) {
        for (const auto& f : ruleFieldValues(rules)) fmt::print("{:>5}  {:<46}{}\n", f.offset, f.name, f.value);
        return;
    }
    const std::string name = rules.LeagueName.blank() ? "(unnamed league)" : rules.LeagueName.str();
    fmt::print("{}: rules of {}\n", name, dir.string());
    fmt::print("User {}; {}\n", rules.LeagueUserName.str(),
               year > 0 ? fmt::format("team 1 plays in {}", year) : std::string("no team 1 yet"));
    printGameShape(rules);
    printOvertime(rules);
    printPenalties(rules);
    printRosters(rules);
    printStandings(rules);
    printDivisions(rules, dir);
    printEra(rules, year, programFolder(options));
    printScreenAndFiles(rules);
}

// ---- era ---------------------------------------------------------------------

void showEraYear(const EraTable& era, int year, const fs::path& programDir) {
    const auto& e = era.year(year);
    const auto pro = figuresOf(e, EraLevel::Professional);
    const auto col = figuresOf(e, EraLevel::College);
    fmt::print("Era {} ({} in {})\n\n", year, kEraFileName, programDir.string());
    fmt::print("  {:<28}{:>14}{:>14}\n", "", "Professional", "College");
    fmt::print("  {:<28}{:>14}{:>14}\n", "Games", pro.games, col.games);
    fmt::print("  {:<28}{:>14.3f}{:>14.3f}\n", "Goals per team a game", pro.goalsPerTeam, col.goalsPerTeam);
    fmt::print("  {:<28}{:>14.3f}{:>14.3f}\n", "Assists per goal", pro.assistsPerGoal, col.assistsPerGoal);
    fmt::print("  {:<28}{:>14.2f}{:>14.2f}\n", "Penalty minutes a game", pro.pimPerGame, col.pimPerGame);
    fmt::print("  {:<28}{:>14.2f}{:>14.2f}\n", "Power play %", pro.powerPlayPct, col.powerPlayPct);
    fmt::print("  {:<28}{:>14.2f}{:>14.2f}\n", "Save %", pro.savePct, col.savePct);
    fmt::print("  {:<28}{:>14.1f}{:>14.1f}\n", "Shots per team a game", pro.shotsPerTeam(), col.shotsPerTeam());
    fmt::print("  {:<28}{:>14.2f}\n", "Fighting majors a game", pro.fightsPerGame);
}

void showEraTable(const EraTable& era, bool college) {
    const auto level = college ? EraLevel::College : EraLevel::Professional;
    fmt::print("{:>4} {:>5} {:>8} {:>7} {:>7} {:>6} {:>7} {:>6} {:>7}\n", "Year", "Games", "Goals/T", "Ast/G", "PIM/G",
               "PP%", "Save%", "Shots", "Fights");
    for (int y = EraTable::kFirstYear; y <= EraTable::kLastYear; ++y) {
        const auto f = figuresOf(era.year(y), level);
        fmt::print("{:>4} {:>5} {:>8.3f} {:>7.3f} {:>7.2f} {:>6.2f} {:>7.2f} {:>6.1f} {:>7.2f}\n", y, f.games,
                   f.goalsPerTeam, f.assistsPerGoal, f.pimPerGame, f.powerPlayPct, f.savePct, f.shotsPerTeam(),
                   f.fightsPerGame);
    }
}

std::string counted(std::size_t n, const char* one, const char* many) {
    return fmt::format("{} {}", n, n == 1 ? one : many);
}

[[noreturn]] void refuse(const std::vector<std::string>& problems, const fs::path& file) {
    for (const auto& p : problems) fmt::print(stderr, "{}\n", p);
    throw CommandError(
        fmt::format("{}: {}; nothing was written", file.string(), counted(problems.size(), "problem", "problems")));
}

void buildEra(const fs::path& from, const fs::path& out) {
    const auto build = buildEraFromSeasons(from);
    if (!build.problems.empty()) refuse(build.problems, from);
    writeEraFile(out, build.table);
    fmt::print("Wrote {}: seasons {} to {}, years {} to {}\n", out.string(), build.firstSeason, build.lastSeason,
               EraTable::kFirstYear, EraTable::kLastYear);
    if (!build.estimatedSavePct.empty())
        fmt::print("Save % worked out for {} seasons without one: {}\n", build.estimatedSavePct.size(),
                   fmt::join(build.estimatedSavePct, " "));
}

void importEra(const fs::path& csv, const fs::path& eraFile) {
    const auto file = readEraCsv(csv);
    if (!file.problems.empty()) refuse(file.problems, csv);
    auto table = readEraFile(eraFile);
    importEraCsv(table, file.rows);
    writeEraFile(eraFile, table);
    fmt::print("Imported {} from {} into {}\n", counted(file.rows.size(), "season", "seasons"), csv.string(),
               eraFile.string());
}

}  // namespace

// What the subcommands were given; shared with their callbacks, which keep it
// alive until the command has run.
struct RulesCommandOptions {
    bool fields = false;
    int year = 0;
    bool all = false;
    bool college = false;
    std::string from;
    std::string out;
    std::string csv;
    std::string eraFile;
};

void addRulesCommands(CLI::App& app, GlobalOptions& options) {
    auto opts = std::make_shared<RulesCommandOptions>();

    auto* rules = app.add_subcommand("rules", "Show the league's rules");
    rules->fallthrough();
    rules->add_flag("--fields", opts->fields, "List every field of the rules record with its offset and value");
    rules->callback([&options, opts] { showRules(options, opts->fields); });

    auto* era = app.add_subcommand("era", "Show the era figures of a year, or build the era table");
    era->add_option("YEAR", opts->year, "Year from 1900 to 2050 (default: the year of the league's team 1)");
    era->add_flag("--all", opts->all, "Show every year as a table");
    era->add_flag("--college", opts->college, "With --all: the college columns");
    era->require_subcommand(0, 1);
    era->fallthrough();

    auto* build = era->add_subcommand("build", "Build an era file from a league-by-season table");
    build->fallthrough();
    build->add_option("--from", opts->from, "League-by-season CSV file")->required();
    build->add_option("--out", opts->out, "Era file to write")->required();
    build->callback([opts] { buildEra(opts->from, opts->out); });

    auto* import = era->add_subcommand("import", "Import \"NHL ERA DATA.CSV\" into the era table");
    import->fallthrough();
    import->add_option("--csv", opts->csv, "File to import (default: \"NHL ERA DATA.CSV\" in the program folder)");
    import->add_option("--era", opts->eraFile, "Era file to change (default: HkEra in the program folder)");
    import->callback([&options, opts] {
        const fs::path dir = programFolder(options);
    importEra(opts->csv.empty() ? findFile(dir, kEraCsvFileName) : fs::path(opts->csv),
              opts->eraFile.empty() ? findFile(dir, kEraFileName) : fs::path(opts->eraFile));
});

era->callback([&options, opts, build, import] {
    if (build->parsed() || import->parsed()) return;
    const fs::path dir = programFolder(options);
    const EraTable table = requireEra(dir);
    if (opts->all) {
        showEraTable(table, opts->college);
        return;
    }
    int year = opts->year;
    if (year == 0) year = leagueYear(leagueDir(options));
    if (year == 0) throw CommandError("Give a year from 1900 to 2050, or --all");
    if (!EraTable::contains(year)) throw CommandError(fmt::format("{} is outside the era table (1900 to 2050)", year));
    showEraYear(table, year, dir);
});
}  // namespace tallyrink::cli

}  // namespace tallyrink::cli
