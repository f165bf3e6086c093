#include "reports/standings.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

#include "league/league.h"
#include "league/text.h"

namespace tallyrink {

namespace {

// Columns are counted from 1, as a printed page's are.
void padToColumn(std::string& line, std::size_t column) {
    if (line.size() + 1 < column) line.append(column - 1 - line.size(), ' ');
}

std::string cut(std::string_view s, std::size_t n) { return std::string(s.substr(0, std::min(n, s.size()))); }

bool hasTies(StandingsLayout l) { return l != StandingsLayout::OvertimeLosses; }
bool hasOvertimeLosses(StandingsLayout l) { return l != StandingsLayout::Ties; }

std::string recordColumns(const StandingsRecord& r, StandingsLayout l) {
    std::string s = fmt::format("{:>3}{:>3}", r.wins, r.losses);
    if (hasTies(l)) s += fmt::format("{:>3}", r.ties);
    if (hasOvertimeLosses(l)) s += fmt::format("{:>3}", r.overtimeLosses);
    return s;
}

std::string headerLine(StandingsLayout l, bool row) {
    std::string h;
    switch (l) {
        case StandingsLayout::Ties:
            h = " G  W  L  T  Pts ";
            break;
        case StandingsLayout::OvertimeLosses:
            h = " G  W  L OL  Pts ";
            break;
        case StandingsLayout::TiesAndOvertime:
            h = " G  W  L  T  OL  Pts ";
            break;
    }
    if (row) h += " ROW";
    h += l == StandingsLayout::Ties ? "   GF  GA Diff      Home           Road          Last 10"
                                    : "   GF  GA Diff        Home           Road          Last 10";
    return h;
}

std::string teamLine(const StandingsRow& t, const RulesRecord& rules, StandingsLayout l) {
    std::string line = cut(t.name, 13);
    padToColumn(line, 15);
    bool played = t.games() > 0;
    int gf = played ? t.goalsFor : 0;
    int ga = played ? t.goalsAgainst : 0;
    line += fmt::format("{:>3}{:>3}{:>3}", t.games(), t.total.wins, t.total.losses);
    if (hasTies(l)) line += fmt::format("{:>3}", t.total.ties);
    if (hasOvertimeLosses(l)) line += fmt::format("{:>3}", t.total.overtimeLosses);
    line += fmt::format("{:>5}", static_cast<int>(t.points));
    line += ' ';
    if (rules.ROWStandingsCheck != 0) line += fmt::format("{:<4}", cut(std::to_string(t.regulationOvertimeWins()), 4));
    line += ' ';
    line += fmt::format("{:>4}{:>4}{:>5}", gf, ga, gf - ga);
    line += "   " + recordColumns(t.home, l);
    line += "   " + recordColumns(t.road(), l);
    line += "   " + recordColumns(t.lastTen, l);
    return line;
}

std::string divisionName(const RulesRecord& rules, int d) {
    std::string name = trimmed(rules.DivisionName[static_cast<std::size_t>(d - 1)].str());
    return name.empty() ? defaultDivisionName(d) : name;
}

std::string conferenceName(const RulesRecord& rules, int c) {
    std::string name = c <= static_cast<int>(rules.ConferenceName.size())
                           ? trimmed(rules.ConferenceName[static_cast<std::size_t>(c - 1)].str())
                           : std::string{};
    return name.empty() ? defaultConferenceName(c) : name;
}

std::string title(const RulesRecord& rules, std::string_view what) {
    std::string league = trimmed(rules.LeagueName.str());
    return league.empty() ? std::string(what) : fmt::format("{} {}", league, what);
}

std::set<int> divisionsInUse(const std::vector<StandingsRow>& rows) {
    std::set<int> in;
    for (const auto& t : rows) in.insert(t.division);
    return in;
}

}  // namespace

StandingsLayout standingsLayout(const RulesRecord& rules) {
    if (rules.OnePointForOvertimeLossCheck == 0) return StandingsLayout::Ties;
    return rules.ShootOutList != 0 ? StandingsLayout::OvertimeLosses : StandingsLayout::TiesAndOvertime;
}

double standingsPoints(const RulesRecord& rules, const StandingsRecord& r, int extraTimeWins) {
    bool threePoint = rules.StandingsScoringList == 1;
    double points = threePoint ? 3.0 * r.wins - extraTimeWins : 2.0 * r.wins + r.ties;
    if (threePoint || rules.OnePointForOvertimeLossCheck != 0) points += r.overtimeLosses;
    return points;
}

int extraTimeWinsOf(const std::vector<GameRecord>& scores, int team) {
    int n = 0;
    for (const auto& g : scores) {
        if (g.ExtraMark < 1) continue;
        int v = g.ScoreOf[0];
        int h = g.ScoreOf[1];
        if ((g.VisitorTeam == team && v > h) || (g.HomeTeam == team && h > v)) ++n;
    }
    return n;
}

void sortByPoints(std::vector<StandingsRow>& rows) {
    // The exchange sort the league has always used: its order among equal
    // points is part of the standings (and of the playoff seeds).
    for (std::size_t i = 0; i < rows.size(); ++i)
        for (std::size_t j = i; j < rows.size(); ++j)
            if (rows[i].points < rows[j].points) std::swap(rows[i], rows[j]);
}

std::vector<StandingsRow> buildStandings(const League& league, const RulesRecord& rules,
                                         const std::vector<GameRecord>& scores) {
    std::vector<StandingsRow> rows;
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (!league.isActive(t)) continue;
        const TeamRecord& r = league.team(t);
        StandingsRow row;
        row.team = t;
        row.division = divisionOfTeam(t);
        row.name = r.City.str();
        // Two teams of one city go by their nicknames.
        for (int u = 1; u <= kMaxTeams; ++u)
            if (u != t && league.isActive(u) && league.team(u).City == r.City && !r.Nickname.blank())
                row.name = r.Nickname.str();
        row.code = r.Abbrev.str();
        row.total = {r.Wins, r.Losses, r.Ties, r.OvertimeLosses};
        row.home = {r.HomeWins, r.HomeLosses, r.HomeTies, r.HomeOvertimeLosses};
        for (int k = 1; k <= 10; ++k) {
            std::string last = r.LastResults[static_cast<std::size_t>(k)].str();
            if (last == "W") ++row.lastTen.wins;
            if (last == "L") ++row.lastTen.losses;
            if (last == "T") ++row.lastTen.ties;
            if (last == "O") ++row.lastTen.overtimeLosses;
        }
        row.shootoutWins = r.ShootoutWins;
        row.goalsFor = r.TeamFor[0].Goals;
        row.goalsAgainst = r.TeamAgainst[0].Goals;
        row.extraTimeWins = extraTimeWinsOf(scores, t);
        row.points = standingsPoints(rules, row.total, row.extraTimeWins);
        rows.push_back(std::move(row));
    }
    sortByPoints(rows);
    return rows;
}

std::string DisplayStandingsDivision(const std::vector<StandingsRow>& rows, const RulesRecord& rules) {
    StandingsLayout layout = standingsLayout(rules);
    bool byConference = rules.StandingsList == 1;
    std::string out = title(rules, "Standings") + "\n\n";
    for (int d : divisionsInUse(rows)) {
        std::string head = cut(byConference ? conferenceName(rules, d) : divisionName(rules, d), 13);
        padToColumn(head, 15);
        out += "\n" + head + headerLine(layout, rules.ROWStandingsCheck != 0) + "\n";
        for (const auto& t : rows)
            if (t.division == d) out += teamLine(t, rules, layout) + "\n";
    }
    return out;
}

std::string DisplayStandingsConference(const std::vector<StandingsRow>& rows, const RulesRecord& rules) {
    StandingsLayout layout = standingsLayout(rules);
    std::vector<StandingsRow> sorted = rows;
    std::set<int> divisions = divisionsInUse(rows);
    // Division winners head their conference.
    for (int d : divisions) {
        StandingsRow* leader = nullptr;
        for (auto& t : sorted)
            if (t.division == d && (leader == nullptr || t.points > leader->points ||
                                    (t.points == leader->points && t.team < leader->team)))
                leader = &t;
        if (leader != nullptr) leader->points += 1000;
    }
    sortByPoints(sorted);

    std::vector<int> inUse(divisions.begin(), divisions.end());
    int conferences = inUse.size() >= 2 ? 2 : 1;
    auto firstCount = static_cast<std::size_t>(static_cast<double>(inUse.size()) / 2 + 0.5);
    int lastOfFirst = inUse.empty() ? 0 : inUse[std::max<std::size_t>(firstCount, 1) - 1];

    std::string out = title(rules, "Conference Standings") + "\n\n";
    for (int c = 1; c <= conferences; ++c) {
        std::string head = cut(conferenceName(rules, c), 13);
        padToColumn(head, 15);
        padToColumn(head, 18);
        out += "\n" + head + headerLine(layout, rules.ROWStandingsCheck != 0) + "\n";
        int rank = 0;
        for (const auto& t : sorted) {
            bool first = t.division <= lastOfFirst;
            if ((c == 1) != first) continue;
            StandingsRow shown = t;
            shown.points = standingsPoints(rules, t.total, t.extraTimeWins);
            out += fmt::format("{:<2} ", ++rank) + teamLine(shown, rules, layout) + "\n";
        }
    }
    return out;
}

}  // namespace tallyrink
