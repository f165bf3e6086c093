#include "league/team_directory.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace tallyrink {

namespace {

constexpr std::string_view kTeamsFile = "HKTEAMS";

std::string lower(std::string_view s) {
    std::string out(s);
    for (auto& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

std::string_view trim(std::string_view s) {
    auto b = s.find_first_not_of(" \t\r\n");
    if (b == std::string_view::npos) return {};
    auto e = s.find_last_not_of(" \t\r\n");
    return s.substr(b, e - b + 1);
}

std::string upperPrefix(std::string_view s, std::size_t n) {
    std::string out;
    for (char c : s) {
        if (out.size() == n) break;
        if (c != ' ') out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return out;
}

}  // namespace

TeamDirectory TeamDirectory::load(const fs::path& leagueDir) {
    RandomFile file(findFile(leagueDir, kTeamsFile), codec::slotWidth<TeamRecord>());
    // Slots past the end of the file read as never written: free.
    return fromRecords(readRecords<TeamRecord>(file, kMaxTeams));
}

TeamDirectory TeamDirectory::fromRecords(const std::vector<TeamRecord>& records) {
    TeamDirectory d;
    for (std::size_t i = 0; i < records.size() && i < static_cast<std::size_t>(kMaxTeams); ++i) {
        const auto& r = records[i];
        auto& t = d.teams_[i + 1];
        t.active = r.TeamActive == 1;
        t.city = r.City.str();
        t.nickname = r.Nickname.blank() ? t.city : r.Nickname.str();
        t.abbrev = r.Abbrev.blank() ? upperPrefix(t.city, 3) : r.Abbrev.str();
        t.year = r.TeamYear;
    }
    return d;
}

ActiveTeams TeamDirectory::activeTeams() const {
    ActiveTeams a;
    for (int t = 1; t <= kMaxTeams; ++t) a.set(static_cast<std::size_t>(t), team(t).active);
    return a;
}

std::vector<int> TeamDirectory::activeNumbers() const {
    std::vector<int> out;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (team(t).active) out.push_back(t);
    return out;
}

std::string TeamDirectory::fullName(int t) const {
    const auto& n = team(t);
    if (n.nickname.empty() || lower(n.nickname) == lower(n.city)) return n.city;
    if (n.city.empty()) return n.nickname;
    return n.city + " " + n.nickname;
}

std::string TeamDirectory::displayName(int t) const {
    const auto& n = team(t);
    if (n.city.empty()) return n.abbrev.empty() ? "Team " + std::to_string(t) : n.abbrev;
    for (int o = 1; o <= kMaxTeams; ++o) {
        if (o != t && team(o).active && lower(team(o).city) == lower(n.city)) return n.city + " (" + n.abbrev + ")";
    }
    return n.city;
}

TeamDirectory::Match TeamDirectory::find(std::string_view text) const {
    auto want = lower(trim(text));
    if (want.empty()) return {};
    int number = 0;
    auto [p, ec] = std::from_chars(want.data(), want.data() + want.size(), number);
    if (ec == std::errc() && p == want.data() + want.size()) return active(number) ? Match{number, false} : Match{};

    // A code or full name names one team; a city or nickname may be shared,
    // and then only a more exact name will do.
    for (auto key : {0, 1}) {
        std::vector<int> hits;
        for (int t = 1; t <= kMaxTeams; ++t) {
            if (!team(t).active) continue;
            const auto& n = team(t);
            bool hit = key == 0 ? (lower(n.abbrev) == want || lower(fullName(t)) == want)
                                : (lower(n.city) == want || lower(n.nickname) == want);
            if (hit) hits.push_back(t);
        }
        if (hits.size() == 1) return {hits.front(), false};
        if (hits.size() > 1) return {0, true};
    }
    return {};
}

}  // namespace tallyrink
