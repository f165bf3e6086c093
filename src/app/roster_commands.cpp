// A team's roster as a coach reads it: the players by position with their
// statistics and the rates the game engine will use, their ratings, the
// units that go on the ice in each manpower situation, the depth charts,
// and what the team load had to fill in.

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

#include "app/cli.h"
#include "engine/team_load.h"
#include "league/files.h"
#include "league/team_directory.h"
#include "team/lineup_tools.h"
#include "team/positions.h"

namespace tallyrink::cli {

namespace {

struct RosterOptions {
    std::string team;
    bool csv = false;
    bool replay = false;
    std::optional<std::uint64_t> seed;
};

// A table of the report: printed aligned as text, or as CSV with the title
// in the first header cell.
struct Table {
    std::string title;
    std::vector<std::string> header;
    std::vector<bool> leftAligned;  // by column; numbers are right-aligned
    std::vector<std::vector<std::string>> rows;
};

std::string csvCell(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string out = "\"";
    for (char c : text) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
}

void printCsv(const Table& t) {
    auto line = [](const std::vector<std::string>& cells) {
        std::string out;
        for (std::size_t c = 0; c < cells.size(); ++c) out += (c ? "," : "") + csvCell(cells[c]);
        fmt::print("{}\n", out);
    };
    std::vector<std::string> header = t.header;
    if (!header.empty()) header[0] = t.title;
    line(header);
    for (const auto& r : t.rows) line(r);
}

void printText(const Table& t, bool withTitle = true) {
    if (withTitle) fmt::print("{}\n", t.title);
    std::vector<std::size_t> width(t.header.size(), 0);
    auto measure = [&](const std::vector<std::string>& r) {
        for (std::size_t c = 0; c < r.size() && c < width.size(); ++c) width[c] = std::max(width[c], r[c].size());
    };
    measure(t.header);
    for (const auto& r : t.rows) measure(r);
    auto print = [&](const std::vector<std::string>& r) {
        std::string line = "  ";
        for (std::size_t c = 0; c < r.size() && c < width.size(); ++c) {
            bool left = c < t.leftAligned.size() && t.leftAligned[c];
            line += left ? fmt::format("{:<{}} ", r[c], width[c]) : fmt::format("{:>{}} ", r[c], width[c]);
        }
        while (!line.empty() && line.back() == ' ') line.pop_back();
        fmt::print("{}\n", line);
    };
    print(t.header);
    for (const auto& r : t.rows) print(r);
}

std::string fixed(double v, int decimals) { return fmt::format("{:.{}f}", v, decimals); }

std::string clock(double minutes) {
    long seconds = std::lround(minutes * 60);
    return fmt::format("{}:{:02}", seconds / 60, seconds % 60);
}

std::string tenths(int v) { return fmt::format("{}.{}", v / 10, v % 10); }

// ---- Players ------------------------------------------------------------------

struct View {
    const SideTables& side;
    RateSet set;
    LineupTeam fit;  // candidates: the players fit to play today
};

std::string fullName(const PlayerRecord& p) { return p.FirstName.str() + " " + p.LastName.str(); }

std::string statusOf(const View& v, int slot) {
    const PlayerRecord& p = v.side.player(slot);
    if (p.InjuryReturnMonth > 0) return "injured";
    if (p.SuspensionGamesLeft > 0) return "suspended";
    if (v.side.DressedToday[static_cast<std::size_t>(slot)] != 0) return "out today";
    if (p.InactiveFlag == 99) return "scratched";
    return "";
}

// The team's players of one kind, the most used first.
std::vector<int> playersWhere(const View& v, bool (*kind)(const PlayerRecord&)) {
    std::vector<int> slots;
    for (int s = 0; s < kRosterSlots; ++s)
        if (v.side.onTeam(s) && kind(v.side.player(s))) slots.push_back(s);
    std::stable_sort(slots.begin(), slots.end(), [&](int a, int b) {
        return v.side.rate(RateSet::Real, a).AverageMinutes > v.side.rate(RateSet::Real, b).AverageMinutes;
    });
    return slots;
}

Table skaterTable(const View& v, const std::string& title, bool (*kind)(const PlayerRecord&), bool csv) {
    Table t{title,
            {"Name", "Pos", "Age", "GP", "G", "A", "P", "+/-", "PIM", "TOI/GP", "G/60", "A/60", "S/60", "H/60",
             "PIM/60", "S%", "Status"},
            {true, true},
            {}};
    if (csv)
        for (const char* h : {"EvenMin", "PPMin", "SHMin", "SeasonShots", "NonFightPIM/60", "Fights/1000",
                              "ShotStyleFactor", "ShiftLimit", "MaxEnergy", "SeasonGames", "Salary"})
            t.header.emplace_back(h);
    t.leftAligned.resize(t.header.size(), false);
    t.leftAligned[16] = true;
    for (int s : playersWhere(v, kind)) {
        const PlayerRecord& p = v.side.player(s);
        const StatLine& line = statLine(p, statLineOf(v.set));
        const SetRates& r = v.side.rate(v.set, s);
        auto i = static_cast<std::size_t>(s);
        std::vector<std::string> row = {fullName(p),
                                        positionText(p),
                                        std::to_string(p.Age),
                                        std::to_string(line.GP),
                                        std::to_string(line.Goals),
                                        std::to_string(line.Assists),
                                        std::to_string(line.Goals + line.Assists),
                                        fmt::format("{:+}", line.PlusMinus),
                                        std::to_string(line.Pim),
                                        clock(r.AverageMinutes),
                                        fixed(r.GoalsPer60, 2),
                                        fixed(r.AssistsPer60, 2),
                                        fixed(r.ShotsPer60, 2),
                                        fixed(r.HitsPer60, 2),
                                        fixed(r.PimPer60, 2),
                                        fixed(v.side.rates[i].ShootingPct * 100, 1),
                                        statusOf(v, s)};
        if (csv) {
            for (std::string cell :
                 {std::to_string(r.EvenMinutes), std::to_string(r.PowerPlayMinutes), std::to_string(r.ShortHandMinutes),
                  fixed(r.SeasonShots, 1), fixed(r.NonFightPimPer60, 3), fixed(r.FightsPer1000, 3),
                  fixed(v.side.rates[i].ShotStyleFactor, 4), std::to_string(v.side.ShiftLimit[i]),
                  std::to_string(v.side.MaxEnergy[i]), std::to_string(v.side.SeasonGamesOfPlayer[i]),
                  std::to_string(p.Salary)})
                row.push_back(cell);
        }
        t.rows.push_back(row);
    }
    return t;
}

Table goalieTable(const View& v) {
    Table t{"Goalies",
            {"Name", "Age", "GP", "W", "L", "T", "OTL", "GA", "SV%", "GAA", "SO", "TOI/GP", "Status"},
            {true},
            {}};
    t.leftAligned.resize(t.header.size(), false);
    t.leftAligned.back() = true;
    for (int s : playersWhere(v, isGoalie)) {
        const PlayerRecord& p = v.side.player(s);
        const StatLine& line = statLine(p, statLineOf(v.set));
        double faced = double(line.Saves) + line.GoalsAllowed;
        double hours = line.Toi / 3600.0;
        t.rows.push_back({fullName(p), std::to_string(p.Age), std::to_string(line.GP), std::to_string(line.GoalieWins),
                          std::to_string(line.GoalieLosses), std::to_string(line.GoalieTies),
                          std::to_string(line.GoalieOvertimeLosses), std::to_string(line.GoalsAllowed),
                          faced > 0 ? fixed(line.Saves / faced, 3) : "",
                          hours > 0 ? fixed(line.GoalsAllowed / hours, 2) : "", std::to_string(line.Shutouts),
                          clock(v.side.rate(v.set, s).AverageMinutes), statusOf(v, s)});
    }
    return t;
}

Table ratingsTable(const View& v) {
    Table t{"Ratings",
            {"Name", "Pos", "Off", "Def", "Gl", "PK", "FO", "Pas", "SIn", "SOut", "Skt", "PS", "Spt", "Blk", "Hit",
             "TkA", "Dur"},
            {true, true},
            {}};
    t.leftAligned.resize(t.header.size(), false);
    for (auto kind : {isForward, isDefenseman, isGoalie}) {
        for (int s : playersWhere(v, kind)) {
            const PlayerRecord& p = v.side.player(s);
            t.rows.push_back(
                {fullName(p), positionText(p), tenths(p.RatingOffense), tenths(p.RatingDefense), tenths(p.RatingGoalie),
                 std::to_string(p.RatingPenaltyKill), std::to_string(p.RatingFaceoff), std::to_string(p.RatingPassing),
                 std::to_string(p.RatingShotIn), std::to_string(p.RatingShotOut), std::to_string(p.RatingSkate),
                 std::to_string(p.RatingPenaltyShot), std::to_string(p.RatingSportsmanship),
                 std::to_string(p.RatingBlock), std::to_string(p.RatingHit), std::to_string(p.RatingTakeaway),
                 std::to_string(p.RatingDurability)});
        }
    }
    return t;
}

// ---- Lines ----------------------------------------------------------------------

struct Situation {
    std::string name;
    int own;
    int opponent;
    int units;
};

const std::vector<Situation>& situations() {
    static const std::vector<Situation> list = {
        {"Power play (5-4)", 5, 4, 2},   {"Power play (5-3)", 5, 3, 2}, {"Penalty kill (4-5)", 4, 5, 2},
        {"Penalty kill (3-5)", 3, 5, 2}, {"4-on-4 (4-4)", 4, 4, 2},     {"4-on-3 (4-3)", 4, 3, 2},
        {"3-on-3 (3-3)", 3, 3, 2},
    };
    return list;
}

std::string onIceName(const View& v, const IcePlacement& ice, IcePos pos) {
    int s = ice.onIce[pos];
    if (s == kNoSlot) return "-";
    std::string name = v.side.DisplayName[static_cast<std::size_t>(s)];
    auto source = ice.source[static_cast<std::size_t>(pos)];
    if (source == IceSource::DepthChart || source == IceSource::Bench) name += "*";
    if (source == IceSource::EmergencyGoalie) name += " (a skater)";
    return name;
}

const char* codeOf(IcePos p) {
    static constexpr const char* codes[] = {"LW", "C", "RW", "LD", "RD", "G"};
    return codes[static_cast<std::size_t>(p)];
}

// Where a unit's players came from when the situation has no line of its own.
std::string standIn(const IcePlacement& ice, int forwardLine, int pairLine) {
    std::vector<std::string> from;
    if (ice.forwardLine != 0 && ice.forwardLine != forwardLine) from.push_back(lineCaption(ice.forwardLine));
    if (ice.pairLine != 0 && ice.pairLine != pairLine && ice.pairLine != ice.forwardLine)
        from.push_back(lineCaption(ice.pairLine));
    if (from.empty()) return "";
    std::string text = "from ";
    for (std::size_t i = 0; i < from.size(); ++i) text += (i ? " and " : "") + from[i];
    return text;
}

Table linesTable(const View& v) {
    Table t{"Lines", {"Situation", "Unit", "LW", "C", "RW", "LD", "RD", "G/XA", "Taken from"}, {}, {}};
    t.leftAligned.assign(t.header.size(), true);
    auto row = [&](const std::string& situation, const std::string& unit, const IcePlacement& ice,
                   const std::vector<IcePos>& shown, const std::string& from) {
        std::vector<std::string> cells = {situation, unit};
        for (std::size_t p = 0; p < kIcePositions; ++p) {
            auto pos = static_cast<IcePos>(p);
            bool show = std::find(shown.begin(), shown.end(), pos) != shown.end();
            cells.push_back(show ? onIceName(v, ice, pos) : "");
        }
        cells.push_back(from);
        t.rows.push_back(cells);
    };
    for (int u = 1; u <= 4; ++u) {
        IcePlacement ice = PutLinesOnIce(v.fit, {.own = 5, .opponent = 5, .unit = u, .pair = 1});
        row("Even strength (5-5)", fmt::format("Line {}", u), ice,
            {IcePos::LeftWing, IcePos::Center, IcePos::RightWing}, "");
    }
    for (int u = 1; u <= 3; ++u) {
        IcePlacement ice = PutLinesOnIce(v.fit, {.own = 5, .opponent = 5, .unit = 1, .pair = u});
        row("Even strength (5-5)", fmt::format("Pair {}", u), ice, {IcePos::LeftDefense, IcePos::RightDefense}, "");
    }
    IcePlacement first = PutLinesOnIce(v.fit, {});
    row("Even strength (5-5)", "Goalie", first, {IcePos::GoalieOrExtra}, "");
    for (const Situation& s : situations()) {
        LineRange range = situationLines(s.own, s.opponent);
        for (int u = 1; u <= s.units; ++u) {
            IcePlacement ice = PutLinesOnIce(v.fit, {.own = s.own, .opponent = s.opponent, .unit = u});
            PositionList places = requiredPositions(s.own, 2);
            std::vector<IcePos> shown(places.begin(), places.end());
            int line = std::min(range.first + u - 1, range.last);
            row(s.name, fmt::format("Unit {}", u), ice, shown, standIn(ice, line, line));
        }
    }
    Random draws(1);
    IcePlacement pulled = PutLinesOnIce(v.fit, {.goaliePulled = true}, &draws);
    std::vector<IcePos> all = {IcePos::LeftWing,    IcePos::Center,       IcePos::RightWing,
                               IcePos::LeftDefense, IcePos::RightDefense, IcePos::GoalieOrExtra};
    row("Extra attacker (6-5)", "Line 1", pulled, all, "");
    return t;
}

// ---- Depth charts ---------------------------------------------------------------

struct Chart {
    const char* name;
    std::uint8_t (*rank)(const PlayerRecord&);
};

const std::vector<Chart>& charts() {
    static const std::vector<Chart> list = {
        {"Even LW", [](const PlayerRecord& p) { return p.DepthEven[0]; }},
        {"Even C", [](const PlayerRecord& p) { return p.DepthEven[2]; }},
        {"Even RW", [](const PlayerRecord& p) { return p.DepthEven[1]; }},
        {"Defense", [](const PlayerRecord& p) { return p.DepthEven[3]; }},
        {"PP LW", [](const PlayerRecord& p) { return p.DepthPowerPlay[0]; }},
        {"PP C", [](const PlayerRecord& p) { return p.DepthPowerPlay[2]; }},
        {"PP RW", [](const PlayerRecord& p) { return p.DepthPowerPlay[1]; }},
        {"PP D", [](const PlayerRecord& p) { return p.DepthPowerPlay[3]; }},
        {"PK F left", [](const PlayerRecord& p) { return p.DepthPenaltyKill[0]; }},
        {"PK F right", [](const PlayerRecord& p) { return p.DepthPenaltyKill[1]; }},
        {"PK D", [](const PlayerRecord& p) { return p.DepthPenaltyKill[2]; }},
        {"Goalie", [](const PlayerRecord& p) { return p.DepthGoalie; }},
        {"Extra attacker", [](const PlayerRecord& p) { return p.DepthExtraAttacker; }},
        {"Shootout", [](const PlayerRecord& p) { return p.DepthShootout; }},
    };
    return list;
}

// Each chart in its order, first choice first.
Table depthTable(const View& v) {
    Table t{"Depth charts", {"Chart", "1", "2", "3", "4", "5", "6", "7", "8", "9", "10"}, {}, {}};
    t.leftAligned.assign(t.header.size(), true);
    for (const Chart& c : charts()) {
        std::vector<int> slots;
        for (int s = 0; s < kRosterSlots; ++s)
            if (v.side.onTeam(s) && c.rank(v.side.player(s)) > 0) slots.push_back(s);
        std::stable_sort(slots.begin(), slots.end(),
                         [&](int a, int b) { return c.rank(v.side.player(a)) > c.rank(v.side.player(b)); });
        std::vector<std::string> row = {c.name};
        for (int s : slots) row.push_back(v.side.DisplayName[static_cast<std::size_t>(s)]);
        row.resize(t.header.size());
        t.rows.push_back(row);
    }
    return t;
}

void printDepthText(const Table& t) {
    fmt::print("{}\n", t.title);
    std::size_t width = 0;
    for (const auto& r : t.rows) width = std::max(width, r[0].size());
    for (const auto& r : t.rows) {
        std::string names;
        for (std::size_t c = 1; c < r.size(); ++c)
            if (!r[c].empty()) names += (names.empty() ? "" : ", ") + r[c];
        fmt::print("  {:<{}}  {}\n", r[0] + ":", width + 1, names.empty() ? "-" : names);
    }
}

// ---- The command ----------------------------------------------------------------

void showRoster(const GlobalOptions& options, const RosterOptions& o) {
    auto session = startSession(options);
    auto teams = TeamDirectory::fromRecords([&] {
        std::vector<TeamRecord> records;
        for (int t = 1; t <= kMaxTeams; ++t) records.push_back(session->league().team(t));
        return records;
    }());
    int team = findTeam(teams, o.team);

    GameSession game = GameSession::forSession(*session);
    Random own(o.seed.value_or(0));
    Random& rng = o.seed ? own : session->random();
    game.HkLoadTeam(kVisitor, team, rng);
    SideTables& side = game.side(kVisitor);
    std::vector<std::string> notes = side.notes;
    if (game.loadChangedRecords(kVisitor)) {
        try {
            game.SaveTeam(kVisitor);
            notes.push_back("The load's upgrades and fills were saved to the league files");
        } catch (const FileError& e) {
            notes.push_back(fmt::format("The load's upgrades couldn't be saved: {}", e.what()));
        }
    }

    LineupTeam fit = game.lineupTeam(kVisitor);
    fit.candidate = BuildFitList(side.GameRoster, side.TeamId, side.DressedToday);
    View view{side, o.replay ? RateSet::Replay : RateSet::Real, fit};

    std::vector<Table> tables = {skaterTable(view, "Forwards", isForward, o.csv),
                                 skaterTable(view, "Defense", isDefenseman, o.csv),
                                 goalieTable(view),
                                 ratingsTable(view),
                                 linesTable(view),
                                 depthTable(view)};
    Table noteTable{"Notes", {"Notes"}, {true}, {}};
    for (const auto& n : notes) noteTable.rows.push_back({n});

    if (o.csv) {
        for (std::size_t i = 0; i < tables.size(); ++i) {
            printCsv(tables[i]);
            fmt::print("\n");
        }
        printCsv(noteTable);
        return;
    }
    const TeamRecord& t = side.team;
    int players = 0;
    for (int s = 0; s < kRosterSlots; ++s) players += side.onTeam(s);
    fmt::print("{} ({}), {} season: {} players; {} statistics\n\n", teams.fullName(team), t.Abbrev.str(), t.TeamYear,
               players, o.replay ? "replay" : "real");
    for (std::size_t i = 0; i < 4; ++i) {
        printText(tables[i]);
        fmt::print("\n");
    }
    fmt::print("Lines (* filled in from the depth chart or the bench)\n");
    std::string current;
    Table lines = tables[4];
    for (auto& row : lines.rows) {
        if (row[0] != current) {
            current = row[0];
            fmt::print("{}\n", current);
        }
        std::string text = "  " + fmt::format("{:<8}", row[1]);
        for (std::size_t c = 2; c < 2 + kIcePositions; ++c) {
            if (row[c].empty()) continue;
            const char* code = c == 7 && row[1] == "Line 1" && current.starts_with("Extra")
                                   ? "XA"
                                   : codeOf(static_cast<IcePos>(c - 2));
            text += fmt::format("  {} {:<14}", code, row[c]);
        }
        if (!row[8].empty()) text += "  (" + row[8] + ")";
        while (!text.empty() && text.back() == ' ') text.pop_back();
        fmt::print("{}\n", text);
    }
    fmt::print("\n");
    printDepthText(tables[5]);
    if (!notes.empty()) {
        fmt::print("\nNotes\n");
        for (const auto& n : notes) fmt::print("  - {}\n", n);
    }
}

}  // namespace

void addRosterCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<RosterOptions>();
    auto* cmd = app.add_subcommand("roster", "Show a team's players, rates, ratings, lines and depth charts");
    cmd->add_option("team", o->team, "Team (number, code or city)")->required();
    cmd->add_flag("--csv", o->csv, "Write the tables as CSV, one after another");
    cmd->add_flag("--replay", o->replay, "Show the replay's statistics and rates instead of the real season's");
    cmd->add_option("--seed", o->seed, "Seed of the load's draws, for output that can be had again");
    cmd->callback([&options, o] { showRoster(options, *o); });
}

}  // namespace tallyrink::cli
