#include "league/team_directory.h"

#include <algorithm>
#include <cctype>
#include <charconv>

#include "league/text.h"

namespace tallyrink {

TeamDirectory TeamDirectory::load(const fs::path& leagueDir) {
    RandomFile file(findFile(leagueDir, kTeamFile), codec::slotWidth<TeamRecord>());
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
    if (n.nickname.empty() || lowered(n.nickname) == lowered(n.city)) return n.city;
    if (n.city.empty()) return n.nickname;
    return n.city + " " + n.nickname;
}

std::string TeamDirectory::displayName(int t) const {
    const auto& n = team(t);
    if (n.city.empty()) return n.abbrev.empty() ? "Team " + std::to_string(t) : n.abbrev;
    for (int o = 1; o <= kMaxTeams; ++o) {
        if (o != t && team(o).active && lowered(team(o).city) == lowered(n.city)) return n.city + " (" + n.abbrev + ")";
    }
    return n.city;
}

TeamDirectory::Match TeamDirectory::find(std::string_view text) const {
    auto want = lowered(trimmed(text));
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
            bool hit = key == 0 ? (lowered(n.abbrev) == want || lowered(fullName(t)) == want)
                                : (lowered(n.city) == want || lowered(n.nickname) == want);
            if (hit) hits.push_back(t);
        }
        if (hits.size() == 1) return {hits.front(), false};
        if (hits.size() > 1) return {0, true};
    }
    return {};
}

}  // namespace tallyrink
