#include "operations/csv_schedule.h"
#include "league/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <map>
#include <tuple>

namespace tallyrink {

namespace {

struct Item {
    std::string text;
    int line = 0;
    int column = 0;  // the item's place in its line, from 1
};

bool isNumber(std::string_view s) {
    return !s.empty() && std::all_of(s.begin(), s.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int toInt(std::string_view s) {
    int v = 0;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    return ec == std::errc() && p == s.data() + s.size() ? v : -1;
}

// The fields of one line; a spreadsheet pads short rows with empty cells.
std::vector<std::string> splitLine(std::string_view line) {
    auto fields = splitCsvLine(line);
    while (!fields.empty() && fields.back().empty()) fields.pop_back();
    return fields;
}

struct Items {
    std::vector<Item> items;
    int oddLine = 0;  // the first line that doesn't hold one game's four items
    std::size_t oddCount = 0;
};

Items readItems(std::string_view text) {
    Items out;
    int lineNo = 0;
    bool first = true;
    std::size_t pos = 0;
    while (pos <= text.size()) {
        auto end = text.find_first_of("\r\n", pos);
        if (end == std::string_view::npos) end = text.size();
        auto fields = splitLine(text.substr(pos, end - pos));
        ++lineNo;
        if (end < text.size() && text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n') ++end;
        pos = end + 1;
        if (fields.empty()) continue;
        // A heading line as a spreadsheet writes it.
        bool heading = first && lowered(fields.front()) == "month";
        first = false;
        if (heading) continue;
        if (fields.size() != 4 && out.oddLine == 0) {
            out.oddLine = lineNo;
            out.oddCount = fields.size();
        }
        for (std::size_t c = 0; c < fields.size(); ++c)
            out.items.push_back({fields[c], lineNo, static_cast<int>(c + 1)});
    }
    return out;
}

// Calendar month of a month item, or 0.
int parseMonth(std::string_view item) {
    auto want = lowered(trimmed(item));
    if (isNumber(want)) {
        int position = toInt(want);
        return position >= 1 && position <= 12 ? calendarMonth(position) : 0;
    }
    if (want.size() < 3) return 0;
    for (int position = 1; position <= 12; ++position) {
        auto name = lowered(monthName(calendarMonth(position)));
        if (name.starts_with(want)) return calendarMonth(position);
    }
    return 0;
}

class Parser {
public:
    Parser(const TeamDirectory& teams, int year, std::string_view label) : teams_(teams), year_(year), label_(label) {}

    CsvSchedule parse(std::string_view text) {
        CsvSchedule out;
        auto read = readItems(text);
        auto& items = read.items;
        if (items.empty()) return fail(out, fmt::format("{} holds no games.", label_));
        if (items.size() % 4 != 0) {
            auto where = read.oddLine != 0
                             ? fmt::format(" (line {} has {} items: month, day, visitor and home make a game)",
                                           read.oddLine, read.oddCount)
                             : std::string();
            return fail(out, fmt::format("{}: This file is not in the proper format!{}", label_, where));
        }
        // An old file may spell the first month out in full or with trimmings.
        auto& firstMonth = items.front().text;
        if (firstMonth.size() >= 3 && !isNumber(trimmed(firstMonth))) firstMonth = trimmed(firstMonth).substr(0, 3);

        for (std::size_t k = 0; k < items.size(); k += 4) {
            if (!readGame(out, items, k)) return out;
        }
        return out;
    }

private:
    CsvSchedule& fail(CsvSchedule& out, std::string message) {
        out.games.clear();
        out.error = std::move(message);
        return out;
    }

    bool failAt(CsvSchedule& out, const Item& item, const std::string& message) {
        fail(out, fmt::format("{}, line {}, column {}: {}", label_, item.line, item.column, message));
        return false;
    }

    bool readGame(CsvSchedule& out, const std::vector<Item>& items, std::size_t k) {
        const auto& monthItem = items[k];
        const auto& dayItem = items[k + 1];
        const auto& visitorItem = items[k + 2];
        const auto& homeItem = items[k + 3];
        auto game = k / 4 + 1;

        int month = parseMonth(monthItem.text);
        if (month == 0) return failAt(out, monthItem, fmt::format("Invalid month: {} Game: {}", monthItem.text, game));
        auto dayText = trimmed(dayItem.text);
        int day = isNumber(dayText) ? toInt(dayText) : -1;
        if (day < 1 || day > scheduleMonthLength(month))
            return failAt(out, dayItem, fmt::format("Invalid Day For {} : {}", monthName(month), dayItem.text));
        int visitor = team(out, visitorItem);
        if (visitor == 0) return false;
        int home = team(out, homeItem);
        if (home == 0) return false;
        if (visitor == home) return failAt(out, homeItem, fmt::format("A team cannot play itself: {}", homeItem.text));

        auto date = fmt::format("{} {}", monthName(month), day);
        for (auto [t, item] : {std::pair{visitor, &visitorItem}, std::pair{home, &homeItem}}) {
            auto seen = onDate_.find({month, day, t});
            if (seen == onDate_.end()) continue;
            const auto& other = out.games[seen->second];
            bool samePair = (other.VisitorTeam == visitor && other.HomeTeam == home) ||
                            (other.VisitorTeam == home && other.HomeTeam == visitor);
            if (samePair)
                return failAt(out, *item,
                              fmt::format("Duplicate game: {} @ {} on {}", visitorItem.text, homeItem.text, date));
            return failAt(out, *item, fmt::format("{} already plays on {}", item->text, date));
        }
        onDate_[{month, day, visitor}] = out.games.size();
        onDate_[{month, day, home}] = out.games.size();
        out.games.push_back(newGameRecord(visitor, home, month, day, year_));
        return true;
    }

    int team(CsvSchedule& out, const Item& item) {
        auto match = teams_.find(item.text);
        if (match.team != 0) return match.team;
        failAt(out, item,
               match.ambiguous ? fmt::format("Invalid Team: {} (more than one team has that name)", item.text)
                               : fmt::format("Invalid Team: {}", item.text));
        return 0;
    }

    const TeamDirectory& teams_;
    int year_;
    std::string label_;
    std::map<std::tuple<int, int, int>, std::size_t> onDate_;
};

// The season's year: that of team 1, else of the first team that has one.
int leagueYear(const TeamDirectory& teams) {
    if (teams.team(1).year > 1900) return teams.team(1).year;
    for (int t : teams.activeNumbers())
        if (teams.team(t).year > 1900) return teams.team(t).year;
    return teams.team(1).year;
}

std::string csvField(const std::string& s) {
    if (s.find_first_of(",\"") == std::string::npos) return s;
    std::string out = "\"";
    for (char c : s) {
        if (c == '"') out += '"';
        out += c;
    }
    return out + "\"";
}

}  // namespace

CsvSchedule parseCsvSchedule(std::string_view text, const TeamDirectory& teams, int year, std::string_view fileLabel) {
    return Parser(teams, year, fileLabel).parse(text);
}

ScheduleOutcome importCsvSchedule(const fs::path& leagueDir, const fs::path& csvFile, std::string_view scheduleFile) {
    std::error_code ec;
    if (!fs::is_regular_file(csvFile, ec)) return {false, {fmt::format("{} was not found.", csvFile.string())}, 0};
    auto bytes = readBytes(csvFile);
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    auto teams = TeamDirectory::load(leagueDir);
    auto parsed = parseCsvSchedule(text, teams, leagueYear(teams), csvFile.string());
    if (!parsed.error.empty()) return {false, {parsed.error}, 0};
    auto count = parsed.games.size();
    saveNewSchedule(leagueDir, std::move(parsed.games), teams.activeTeams(), scheduleFile);
    return {true, {fmt::format("Imported {} games!", count)}, count};
}

std::string csvScheduleText(const Schedule& schedule, const TeamDirectory& teams) {
    std::string out;
    for (const auto& g : schedule.rows()) {
        if (statusOf(g) == kDeleted) continue;
        out += fmt::format("{},{},{},{}\n", monthName(g.Month), g.Day, csvField(teams.fullName(g.VisitorTeam)),
                           csvField(teams.fullName(g.HomeTeam)));
    }
    return out;
}

std::size_t exportCsvSchedule(const fs::path& leagueDir, const fs::path& csvFile, std::string_view scheduleFile) {
    auto schedule = Schedule::load(leagueDir, scheduleFile);
    auto teams = TeamDirectory::load(leagueDir);
    writeFileAtomic(csvFile, csvScheduleText(schedule, teams));
    return static_cast<std::size_t>(std::count_if(schedule.rows().begin(), schedule.rows().end(),
                                                  [](const GameRecord& g) { return statusOf(g) != kDeleted; }));
}

}  // namespace tallyrink
