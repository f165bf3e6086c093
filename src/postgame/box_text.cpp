#include "postgame/box_text.h"

#include "league/names.h"

#include <fmt/core.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "league/files.h"
#include "league/schedule.h"
#include "league/text.h"
#include "postgame/padded_text.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

constexpr const char* kSkaterHeader =
    "G A P +/-  PIM P#   S SC Ms Hit Gv Tk Bs  FW FL    F%    TOI Shft   Avg     PP    SH     EV";
constexpr int kNameWidth = 22;

// One cell of a player's row: what it shows, worked out only when printed.
struct Cell {
    enum class Kind : std::uint8_t { Number, Signed, Clock, Share, Fraction, Text };
    Kind kind = Kind::Number;
    int a = 0;
    int b = 0;  // Share: won a of a + b; Fraction: a of b
    std::string_view text{};
};

Cell number(int v) { return {Cell::Kind::Number, v}; }
Cell clock(int seconds) { return {Cell::Kind::Clock, seconds}; }

// The cell's text in `buf`: numbers as "{}", signed as "{:+}", clocks as
// mmss, shares as "{:.1f}" percent and fractions as "{:.3f}", blank without
// a whole. A box prints some thousand cells, so all but the odd negative
// clock skip fmt: to_chars rounds a fixed precision exactly, as fmt does.
std::string_view cellText(const Cell& c, std::array<char, 32>& buf) {
    char* first = buf.data();
    char* last = buf.data() + buf.size();
    switch (c.kind) {
        case Cell::Kind::Number:
            return {first, std::to_chars(first, last, c.a).ptr};
        case Cell::Kind::Signed: {
            if (c.a >= 0) *first++ = '+';
            return {buf.data(), std::to_chars(first, last, c.a).ptr};
        }
        case Cell::Kind::Clock: {
            if (c.a < 0) return {first, fmt::format_to_n(first, buf.size(), "{}:{:02}", c.a / 60, c.a % 60).out};
            char* end = std::to_chars(first, last, c.a / 60).ptr;
            int seconds = c.a % 60;
            *end++ = ':';
            *end++ = static_cast<char>('0' + seconds / 10);
            *end++ = static_cast<char>('0' + seconds % 10);
            return {first, end};
        }
        case Cell::Kind::Share:
            if (c.a + c.b == 0) return {};
            return {first, std::to_chars(first, last, 100.0 * c.a / (c.a + c.b), std::chars_format::fixed, 1).ptr};
        case Cell::Kind::Fraction:
            if (c.b <= 0) return {};
            return {first, std::to_chars(first, last, double(c.a) / c.b, std::chars_format::fixed, 3).ptr};
        case Cell::Kind::Text:
            return c.text;
    }
    return {};
}

std::string cellString(const Cell& c) {
    std::array<char, 32> buf;
    return std::string(cellText(c, buf));
}

std::string mmss(int seconds) { return cellString(clock(seconds)); }

int plusMinus(const BoxLine& b) { return int{b.PlusMinus} - kPlusMinusBias; }

bool played(const BoxFile& box, std::size_t at) {
    return box.r1.BoxPlayerId[at] != 0 && (box.r1.BoxLines[at].GP > 0 || box.r1.BoxToi[at] > 0);
}

bool sideHasIceTime(const BoxFile& box, std::size_t at) {
    std::size_t first = at - at % kRosterSlots;
    for (std::size_t k = first; k < first + kRosterSlots; ++k)
        if (box.r1.BoxToi[k] > 0) return true;
    return false;
}

// Skaters are listed when they played, or when the game kept no ice time,
// when dressed; goalies when they played or started.
bool listed(const BoxFile& box, const BoxNames& names, std::size_t at, bool goalie) {
    if (box.r1.BoxPlayerId[at] == 0) return false;
    if (!goalie) return played(box, at) || (!sideHasIceTime(box, at) && box.r1.BoxSlotFlag[at] == 1);
    auto slot = static_cast<int>(at % kRosterSlots);
    return played(box, at) || box.r1.BoxStarterGoalie[at / kRosterSlots] == slot + 1 || box.r1.BoxLines[at].Saves > 0 ||
           (names.position[at] != "G" && box.r1.BoxSlotFlag[at] == 1);
}

bool isGoalieEntry(const BoxFile& box, const BoxNames& names, std::size_t at) {
    return names.position[at] == "G" || box.r1.BoxLines[at].Saves > 0 || box.r1.BoxLines[at].GoalsAllowed > 0;
}

int periodsShown(const BoxFile& box) { return std::clamp<int>(box.r1.BoxPeriod, 3, kPeriodSlots); }

std::string periodHeading(int p) {
    if (p <= 3) return std::to_string(p);
    return p == 4 ? "OT" : fmt::format("OT{}", p - 3);
}

std::string_view decisionOf(const BoxLine& b) {
    if (b.GoalieWins) return "W";
    if (b.GoalieOvertimeLosses) return "OTL";
    if (b.GoalieLosses) return "L";
    if (b.GoalieTies) return "T";
    return "";
}

std::string faceoffPct(int won, int lost) { return cellString({Cell::Kind::Share, won, lost}); }

std::string headline(const BoxFile& box, const BoxNames& names) {
    const BoxRecord1& r = box.r1;
    std::string how = r.BoxShootoutState ? " (SO)" : r.BoxOvertimePlayed ? " (OT)" : "";
    std::string date;
    if (r.BoxMonth > 0)
        date = fmt::format("  {} {}, {}", monthName(calendarMonth(r.BoxMonth)), int{r.BoxDay}, int{r.BoxYear});
    return fmt::format("{} {}, {} {}{}{}", names.team[0], int{r.BoxScore[0]}, names.team[1], int{r.BoxScore[1]}, how,
                       date);
}

struct TeamRow {
    std::string label;
    std::array<std::string, 2> value;
};

std::vector<TeamRow> teamRows(const BoxFile& box) {
    const BoxRecord1& r = box.r1;
    std::vector<TeamRow> rows;
    std::array<int, 2> lost{}, pim{}, attempts{};
    for (int side : {0, 1})
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            const BoxLine& b = r.BoxLines[BoxFile::at(side, slot)];
            lost[std::size_t(side)] += b.FaceoffsLost;
            pim[std::size_t(side)] += b.Pim;
        }
    for (std::size_t i : {0u, 1u}) attempts[i] = r.BoxShots[i] + r.BoxMissedShots[i] + r.BoxBlocks[1 - i];
    auto both = [&](const std::string& label, auto f) {
        rows.push_back({label, {f(std::size_t{0}), f(std::size_t{1})}});
    };
    both("SOG", [&](std::size_t i) { return std::to_string(r.BoxShots[i]); });
    both("FOW", [&](std::size_t i) { return std::to_string(r.BoxFaceoffsWon[i]); });
    both("FO%", [&](std::size_t i) { return faceoffPct(r.BoxFaceoffsWon[i], lost[i]); });
    both("Hits", [&](std::size_t i) { return std::to_string(r.BoxHits[i]); });
    both("Blocks", [&](std::size_t i) { return std::to_string(r.BoxBlocks[i]); });
    both("Missed Net", [&](std::size_t i) { return std::to_string(r.BoxMissedShots[i]); });
    both("Shot Attempts", [&](std::size_t i) { return std::to_string(attempts[i]); });
    both("Scoring Chances", [&](std::size_t i) { return std::to_string(r.BoxChances[i]); });
    both("PIM", [&](std::size_t i) { return std::to_string(pim[i]); });
    both("PP", [&](std::size_t i) { return fmt::format("{}/{}", r.BoxPowerPlayGoals[i], r.BoxPowerPlays[i]); });
    both("TOA", [&](std::size_t i) { return mmss(r.BoxTimeOfAttack[i]); });
    return rows;
}

// Cells are ASCII: a right-aligned cell is its blanks and its text. The
// row's cells are laid out in place and added to it at once.
// Blanks and cell texts go in as whole words of fixed size, the place moved
// on by their true length: a copy of a few bytes that isn't a call.
template <std::size_t N>
void appendCells(std::string& row, const std::array<Cell, N>& cells, const std::array<int, N>& widths) {
    constexpr std::size_t kCellRoom = 32;  // cellText's room
    constexpr std::size_t kPadRoom = 8;    // more than any width
    constexpr std::array<char, kPadRoom> blanks{' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '};
    std::array<char, kCellRoom> buf{};
    // Each cell takes at most its blanks and its text, and is written whole past them.
    std::array<char, N*(kPadRoom + kCellRoom) + kPadRoom + kCellRoom> line;
    char* at = line.data();
    for (std::size_t k = 0; k < N; ++k) {
        std::string_view text = cellText(cells[k], buf);
        auto width = static_cast<std::size_t>(widths[k]);
        std::size_t pad = std::min(width > text.size() ? width - text.size() : 0, kPadRoom);
        std::memcpy(at, blanks.data(), kPadRoom);
        at += pad;
        if (text.data() == buf.data())
            std::memcpy(at, buf.data(), kCellRoom);
        else if (!text.empty())
            std::memcpy(at, text.data(), text.size());
        at += text.size();
    }
    row.append(line.data(), at);
}

std::array<Cell, 22> skaterCells(const BoxFile& box, std::size_t at) {
    const BoxLine& b = box.r1.BoxLines[at];
    int toi = box.r1.BoxToi[at];
    int shifts = box.r1.BoxLineTime[at];
    int pp = box.r1.BoxToiPP[at];
    int sh = box.r1.BoxToiSH[at];
    int penalties = box.r1.BoxPenaltyCounts[0][at] + box.r1.BoxPenaltyCounts[1][at];
    return {number(b.Goals),
            number(b.Assists),
            number(b.Goals + b.Assists),
            Cell{Cell::Kind::Signed, plusMinus(b)},
            number(b.Pim),
            number(penalties),
            number(b.Sog),
            number(box.r1.BoxChancesOf[at]),
            number(b.MissedShots),
            number(b.Hits),
            number(b.Giveaways),
            number(b.Takeaways),
            number(b.Blocks),
            number(b.FaceoffsWon),
            number(b.FaceoffsLost),
            Cell{Cell::Kind::Share, b.FaceoffsWon, b.FaceoffsLost},
            clock(toi),
            number(shifts),
            shifts > 0 ? clock(toi / shifts) : Cell{Cell::Kind::Text},
            clock(pp),
            clock(sh),
            clock(std::max(0, toi - pp - sh))};
}

constexpr std::array<int, 22> kSkaterWidths{1, 2, 2, 4, 5, 3, 4, 3, 3, 4, 3, 3, 3, 4, 3, 6, 7, 5, 6, 7, 6, 7};
static_assert(std::ranges::max(kSkaterWidths) <= 8, "appendCells pads up to 8");
// Room for a skater's row as it mostly comes out: one allocation, not one at each doubling.
constexpr std::size_t kSkaterRow = 160;

std::array<Cell, 6> goalieCells(const BoxFile& box, std::size_t at) {
    const BoxLine& b = box.r1.BoxLines[at];
    int shots = b.Saves + b.GoalsAllowed;
    return {number(shots),
            number(b.GoalsAllowed),
            number(b.Saves),
            Cell{Cell::Kind::Fraction, b.Saves, shots},
            clock(box.r1.BoxToi[at]),
            Cell{Cell::Kind::Text, 0, 0, decisionOf(b)}};
}

const std::array<const char*, 6> kGoalieHeads{"SA", "GA", "SV", "SV%", "TOI", "Dec"};
constexpr std::array<int, 6> kGoalieWidths{4, 4, 4, 6, 7, 5};
static_assert(std::ranges::max(kGoalieWidths) <= 8, "appendCells pads up to 8");

// Appends the first `count` of `texts` (no more than it holds): each line's
// string is made where it ends up, not in a list of its own and copied.
void appendLines(std::vector<std::string>& out, const auto& texts, int count) {
    for (int i = 0; i < count && i < static_cast<int>(texts.size()); ++i) out.push_back(texts[std::size_t(i)].str());
}

std::vector<std::string> nonBlank(const auto& texts, int count) {
    std::vector<std::string> out;
    appendLines(out, texts, count);
    return out;
}

std::vector<std::string> eventNames(const BoxFile& box, const BoxNames& names, bool ejections) {
    std::vector<std::string> out;
    for (std::size_t at = 0; at < kBoxSlots; ++at) {
        bool hit = ejections ? box.r1.BoxSuspendedInGame[0][at] != 0 : box.r1.BoxInjuredInGame[at] != 0;
        if (!hit) continue;
        std::string_view injury = ejections ? std::string_view() : injuryName(box.r1.BoxInjuryType[at]);
        out.push_back(injury.empty() || box.r1.BoxInjuredInGame[at] != kHurtInGame
                          ? names.player[at]
                          : fmt::format("{} ({})", names.player[at], injury));
    }
    return out;
}

std::string joined(const std::vector<std::string>& v) {
    std::string out;
    for (const auto& s : v) {
        if (!out.empty()) out += ", ";
        out += s;
    }
    return out.empty() ? "none" : out;
}

}  // namespace

std::string boxPlayerName(const PlayerRecord& p) {
    std::string name;
    boxPlayerName(p, name);
    return name;
}

void boxPlayerName(const PlayerRecord& p, std::string& name) {
    std::string_view first = p.FirstName.view();
    std::string_view last = p.LastName.view();
    name.clear();
    if (!first.empty()) {
        name += first.front();
        name += ". ";
    }
    name += last;
}

std::string positionCode(const PlayerRecord& p) {
    if (isGoalie(p)) return "G";
    if (isDefenseman(p)) return "D";
    return "F";
}

std::vector<std::string> notableLines(const BoxFile& box, const BoxNames& names) {
    std::vector<std::string> out;
    for (std::size_t at = 0; at < kBoxSlots; ++at) {
        if (!played(box, at)) continue;
        const BoxLine& b = box.r1.BoxLines[at];
        std::string line;
        auto add = [&](bool when, int n, const char* what) {
            if (when) line += fmt::format(" {}{}", n, what);
        };
        if (b.Goals == 3) line += " hat trick,";
        add(b.Goals >= 4, b.Goals, " goals,");
        add(b.Assists >= 3, b.Assists, " assists,");
        add(b.Takeaways >= 5, b.Takeaways, " takeaways,");
        add(b.Blocks >= 5, b.Blocks, " blocks,");
        add(b.Hits >= 10, b.Hits, " hits,");
        add(b.FaceoffsWon >= 15, b.FaceoffsWon, " faceoffs won,");
        add(b.Pim >= 10, b.Pim, " PIM,");
        add(b.Saves >= 30, b.Saves, " saves,");
        add(b.Goals + b.Assists >= 4, b.Goals + b.Assists, " points,");
        if (line.empty()) continue;
        line.pop_back();
        out.push_back(fmt::format("{} ({}){}", names.player[at], box.r1.BoxTeamCode[at / kRosterSlots].str(), line));
    }
    return out;
}

std::vector<std::string> boxScoreText(const BoxFile& box, const BoxNames& names) {
    const BoxRecord1& r = box.r1;
    std::vector<std::string> out;
    out.push_back("BOXSCORE");
    out.push_back(headline(box, names));
    if (r.BoxPlayoffFlag) out.push_back("Playoff Game: ");
    if (r.BoxHomeFlag.str() == "N") out.push_back("Neutral Ice");
    if (!r.BoxRink.blank()) out.push_back(r.BoxRink.str());
    out.push_back("");

    int periods = periodsShown(box);
    bool shootout = r.BoxShootoutState != 0;
    // A number right-aligned in `width`, as "{:>width}" puts it.
    auto appendNumber = [](std::string& out, int v, std::size_t width) {
        std::array<char, 16> digits;
        appendRight(out, {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), v).ptr}, width);
    };
    std::string head(8, ' ');
    for (int p = 1; p <= periods; ++p) appendRight(head, periodHeading(p), 5);
    if (shootout) head += "  SO";
    head += "     F";
    out.push_back(head);
    for (std::size_t i : {0u, 1u}) {
        std::string row;
        appendLeft(row, r.BoxTeamCode[i].str(), 8);
        for (int p = 0; p < periods; ++p) appendNumber(row, r.BoxPeriodGoals[i][std::size_t(p)], 5);
        if (shootout) appendNumber(row, r.BoxShootoutScore[i], 4);
        appendNumber(row, r.BoxScore[i], 6);
        out.push_back(row);
    }
    out.push_back("");

    out.push_back("Scoring Summary");
    out.push_back("Per Time Str Team");
    appendLines(out, box.r2.ScoringText, box.r2.ScoringCount);
    if (box.r2.ScoringCount == 0) out.push_back("No scoring");
    out.push_back("");
    out.push_back("Penalty Summary");
    out.push_back("Per Time Team");
    appendLines(out, box.r2.PenaltyText, box.r2.PenaltyCount);
    if (box.r2.PenaltyCount == 0) out.push_back("No penalties");
    out.push_back("");
    if (shootout) {
        out.push_back("Shootout: ");
        out.push_back(fmt::format("{:<22}{:<22}{}", "Shooter", "Goaltender", "Result"));
        for (const auto& t : r.BoxShootoutText)
            if (!t.blank()) out.push_back(t.str());
        out.push_back("");
    }

    auto teamLine = [](std::string_view label, std::string_view visitor, std::string_view home) {
        std::string line;
        appendLeft(line, label, 16, label.size());
        appendRight(line, visitor, 8);
        appendRight(line, home, 8);
        return line;
    };
    out.push_back(teamLine("", r.BoxTeamCode[0].view(), r.BoxTeamCode[1].view()));
    for (const TeamRow& row : teamRows(box)) out.push_back(teamLine(row.label, row.value[0], row.value[1]));
    out.push_back("Ejections: " + joined(eventNames(box, names, true)));
    out.push_back("Injuries: " + joined(eventNames(box, names, false)));

    for (int side : {0, 1}) {
        out.push_back("");
        std::string heading;
        appendLeft(heading, names.team[std::size_t(side)], kNameWidth, kNameWidth - 1);
        out.push_back(heading + kSkaterHeader);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t at = BoxFile::at(side, slot);
            if (isGoalieEntry(box, names, at) || !listed(box, names, at, false)) continue;
            std::string row;
            row.reserve(kSkaterRow);
            appendLeft(row, names.player[at], kNameWidth, kNameWidth - 1);
            appendCells(row, skaterCells(box, at), kSkaterWidths);
            out.push_back(std::move(row));
        }
        std::string gh;
        appendLeft(gh, "Goaltenders", kNameWidth, kNameWidth);
        for (std::size_t c = 0; c < kGoalieHeads.size(); ++c)
            appendRight(gh, kGoalieHeads[c], static_cast<std::size_t>(kGoalieWidths[c]));
        out.push_back(gh);
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t at = BoxFile::at(side, slot);
            if (!isGoalieEntry(box, names, at) || !listed(box, names, at, true)) continue;
            std::string row;
            appendLeft(row, names.player[at], kNameWidth, kNameWidth - 1);
            appendCells(row, goalieCells(box, at), kGoalieWidths);
            out.push_back(std::move(row));
        }
    }

    std::vector<std::pair<int, std::string>> stars;
    for (std::size_t at = 0; at < kBoxSlots; ++at)
        if (r.BoxStars[at] >= 1 && r.BoxStars[at] <= 3)
            stars.emplace_back(r.BoxStars[at],
                               fmt::format("{} ({})", names.player[at], r.BoxTeamCode[at / kRosterSlots].str()));
    std::sort(stars.begin(), stars.end());
    if (!stars.empty()) {
        out.push_back("");
        out.push_back("Three Stars");
        for (const auto& [n, s] : stars) out.push_back(fmt::format("{}. {}", n, s));
    }
    auto notable = notableLines(box, names);
    if (!notable.empty()) {
        out.push_back("");
        for (const auto& s : notable) out.push_back(s);
    }
    for (auto& line : out) line.erase(line.find_last_not_of(' ') + 1);
    return out;
}

std::string boxScoreHtml(const BoxFile& box, const BoxNames& names) {
    const BoxRecord1& r = box.r1;
    std::string h;
    auto esc = [](const std::string& s) { return htmlEscaped(s); };
    h += "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\">\n";
    h += fmt::format("<title>{}</title>\n", esc(headline(box, names)));
    h += "<style>\nbody{font-family:Helvetica,Arial,sans-serif;margin:2em;color:#111}\n"
         "h1{font-size:1.4em;margin-bottom:.2em}h2{font-size:1.1em;border-bottom:2px solid #333;margin-top:1.5em}\n"
         "table{border-collapse:collapse;margin:.5em 0}th,td{padding:2px 8px;text-align:right}\n"
         "th{background:#223;color:#fff}tr:nth-child(even) td{background:#eef}\n"
         "td.l,th.l{text-align:left}.final td{font-weight:bold}\n</style></head><body>\n";
    h += fmt::format("<h1>{}</h1>\n", esc(headline(box, names)));
    if (!r.BoxRink.blank()) h += fmt::format("<p>{}</p>\n", esc(r.BoxRink.str()));
    if (r.BoxHomeFlag.str() == "N") h += "<p>Neutral Ice</p>\n";

    int periods = periodsShown(box);
    bool shootout = r.BoxShootoutState != 0;
    h += "<table class=\"linescore\"><tr><th class=\"l\"></th>";
    for (int p = 1; p <= periods; ++p) h += fmt::format("<th>{}</th>", periodHeading(p));
    if (shootout) h += "<th>SO</th>";
    h += "<th>F</th></tr>\n";
    for (std::size_t i : {0u, 1u}) {
        h += fmt::format("<tr><td class=\"l\">{}</td>", esc(names.team[i]));
        for (int p = 0; p < periods; ++p) h += fmt::format("<td>{}</td>", r.BoxPeriodGoals[i][std::size_t(p)]);
        if (shootout) h += fmt::format("<td>{}</td>", r.BoxShootoutScore[i]);
        h += fmt::format("<td><b>{}</b></td></tr>\n", r.BoxScore[i]);
    }
    h += "</table>\n";

    auto list = [&](const char* title, const std::vector<std::string>& lines, const char* none) {
        h += fmt::format("<h2>{}</h2>\n<pre>", title);
        if (lines.empty()) h += none;
        for (const auto& s : lines) h += esc(s) + "\n";
        h += "</pre>\n";
    };
    list("Scoring Summary", nonBlank(box.r2.ScoringText, box.r2.ScoringCount), "No scoring");
    list("Penalty Summary", nonBlank(box.r2.PenaltyText, box.r2.PenaltyCount), "No penalties");
    if (shootout) {
        std::vector<std::string> so;
        for (const auto& t : r.BoxShootoutText)
            if (!t.blank()) so.push_back(t.str());
        list("Shootout", so, "");
    }

    h += fmt::format("<h2>Team Totals</h2>\n<table><tr><th class=\"l\"></th><th>{}</th><th>{}</th></tr>\n",
                     esc(r.BoxTeamCode[0].str()), esc(r.BoxTeamCode[1].str()));
    for (const TeamRow& row : teamRows(box))
        h += fmt::format("<tr><td class=\"l\">{}</td><td>{}</td><td>{}</td></tr>\n", row.label, row.value[0],
                         row.value[1]);
    h += "</table>\n";
    h += fmt::format("<p>Ejections: {}<br>Injuries: {}</p>\n", esc(joined(eventNames(box, names, true))),
                     esc(joined(eventNames(box, names, false))));

    std::vector<std::string> heads;
    {
        std::string hd = kSkaterHeader;
        std::size_t pos = 0;
        while (pos < hd.size()) {
            auto start = hd.find_first_not_of(' ', pos);
            if (start == std::string::npos) break;
            auto end = hd.find(' ', start);
            heads.push_back(hd.substr(start, end - start));
            pos = end;
        }
    }
    for (int side : {0, 1}) {
        h += fmt::format("<h2>{}</h2>\n<table><tr><th class=\"l\">Skater</th>", esc(names.team[std::size_t(side)]));
        for (const auto& c : heads) h += fmt::format("<th>{}</th>", esc(c));
        h += "</tr>\n";
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t at = BoxFile::at(side, slot);
            if (isGoalieEntry(box, names, at) || !listed(box, names, at, false)) continue;
            h += fmt::format("<tr><td class=\"l\">{}</td>", esc(names.player[at]));
            for (const Cell& c : skaterCells(box, at)) h += fmt::format("<td>{}</td>", esc(cellString(c)));
            h += "</tr>\n";
        }
        h += "</table>\n<table><tr><th class=\"l\">Goaltender</th>";
        for (const char* c : kGoalieHeads) h += fmt::format("<th>{}</th>", c);
        h += "</tr>\n";
        for (int slot = 0; slot < kRosterSlots; ++slot) {
            std::size_t at = BoxFile::at(side, slot);
            if (!isGoalieEntry(box, names, at) || !listed(box, names, at, true)) continue;
            h += fmt::format("<tr><td class=\"l\">{}</td>", esc(names.player[at]));
            for (const Cell& c : goalieCells(box, at)) h += fmt::format("<td>{}</td>", esc(cellString(c)));
            h += "</tr>\n";
        }
        h += "</table>\n";
    }
    auto notable = notableLines(box, names);
    if (!notable.empty()) list("Notable", notable, "");
    h += "</body></html>\n";
    return h;
}

BoxNames boxNamesFromLeague(const BoxFile& box, const std::filesystem::path& leagueDir) {
    BoxNames names;
    RandomFile players(findFile(leagueDir, kPlayerFile), 1500);
    RandomFile teams(findFile(leagueDir, kTeamFile), 1500);
    for (std::size_t at = 0; at < kBoxSlots; ++at) {
        int id = box.r1.BoxPlayerId[at];
        if (id <= 0) continue;
        auto p = readRecord<PlayerRecord>(players, static_cast<std::size_t>(id));
        names.player[at] = boxPlayerName(p);
        names.position[at] = positionCode(p);
    }
    for (std::size_t i : {0u, 1u}) {
        int t = box.r1.BoxTeam[i];
        if (t <= 0) {
            names.team[i] = box.r1.BoxTeamCode[i].str();
            continue;
        }
        auto rec = readRecord<TeamRecord>(teams, static_cast<std::size_t>(t));
        names.team[i] = fmt::format("{} {}", rec.City.str(), rec.Nickname.str());
    }
    return names;
}

}  // namespace tallyrink
