#include "support/league_fixture.h"

#include <fmt/core.h>

#include <array>
#include <string_view>

#include "league/files.h"

namespace tallyrink::testing {

namespace {

struct FixtureCity {
    std::string_view city;
    std::string_view code;
};

constexpr std::array<FixtureCity, 10> kCities = {{
    {"Halden", "HAL"},
    {"Brisk", "BRI"},
    {"Corran", "COR"},
    {"Dunmore", "DUN"},
    {"Eastvale", "EAS"},
    {"Fairholm", "FAI"},
    {"Glenrock", "GLE"},
    {"Kestrel", "KES"},
    {"Larkfield", "LAR"},
    {"Moorgate", "MOO"},
}};

enum class Role { Goalie, Defense, Forward };

Role roleOfSlot(int slot) {
    if (slot < 2) return Role::Goalie;
    if (slot < 8) return Role::Defense;
    return Role::Forward;
}

}  // namespace

LeagueFixture LeagueFixture::make(const LeagueFixtureOptions& options) {
    LeagueFixture lg;
    lg.withGamePlans = options.withGamePlans;
    lg.teams.resize(kMaxTeams);
    for (int t = 1; t <= options.teams; ++t) {
        auto& team = lg.team(t);
        team.TeamActive = 1;
        auto idx = static_cast<std::size_t>(t - 1);
        if (idx < kCities.size()) {
            team.City.assign(kCities[idx].city);
            team.Abbrev.assign(kCities[idx].code);
        } else {
            team.City.assign(fmt::format("City{}", t));
            team.Abbrev.assign(fmt::format("C{:02}", t % 100));
        }
        team.Nickname.assign("Skaters");
        team.TeamYear = options.teamYear;
        team.TeamType.assign("P");
        team.Wins = static_cast<std::int16_t>(options.gamesPlayed / 2);
        team.Losses = static_cast<std::int16_t>(options.gamesPlayed - options.gamesPlayed / 2);
    }
    for (int t = 1; t <= options.teams; ++t) {
        for (int slot = 0; slot < options.playersPerTeam; ++slot) {
            int n = lg.playerCount() + 1;
            int r =
                lg.addPlayer(t, fmt::format("First{}", n), fmt::format("Last{}", n), roleOfSlot(slot) == Role::Goalie);
            auto& p = lg.player(r);
            if (roleOfSlot(slot) == Role::Defense) p.PositionFlags[3] = 1;
            if (roleOfSlot(slot) == Role::Forward) p.PositionFlags[static_cast<std::size_t>(slot % 3)] = 1;
            p.PlayerYear = options.teamYear;
            statLine(p, StatLineIndex::Replay).GP = static_cast<std::uint8_t>(options.gamesPlayed);
        }
    }
    for (int k = 0; k < options.freeAgents; ++k) {
        int n = lg.playerCount() + 1;
        lg.player(lg.addPlayer(kFreeAgent, fmt::format("First{}", n), fmt::format("Last{}", n))).PlayerYear =
            options.teamYear;
    }
    return lg;
}

int LeagueFixture::addPlayer(int teamId, const std::string& first, const std::string& last, bool goalie) {
    PlayerRecord p{};
    int r = playerCount() + 1;
    p.PlayerId = static_cast<std::int16_t>(r);
    p.TeamId = static_cast<std::int16_t>(teamId);
    p.FirstName.assign(first);
    p.LastName.assign(last);
    p.ShortName.assign(last);
    p.Age = 25;
    if (goalie) p.PositionFlags[4] = 1;
    players.push_back(p);
    if (isTeamNumber(teamId) && team(teamId).TeamActive == 1) {
        for (auto& slot : team(teamId).Roster) {
            if (slot == 0) {
                slot = static_cast<std::int16_t>(r);
                break;
            }
        }
    }
    return r;
}

int LeagueFixture::addTradedRow(int playerNumber, int formerTeam, int replayGames) {
    PlayerRecord p = player(playerNumber);
    int r = playerCount() + 1;
    p.PlayerId = static_cast<std::int16_t>(r);
    p.TeamId = static_cast<std::int16_t>(kFormerTeamBase + formerTeam);
    statLine(p, StatLineIndex::Replay) = StatLine{};
    statLine(p, StatLineIndex::Replay).GP = static_cast<std::uint8_t>(replayGames);
    players.push_back(p);
    return r;
}

void LeagueFixture::write(const std::filesystem::path& dir) const {
    rewriteRecords(RandomFile(dir / "HKTEAMS", 1500), teams);
    rewriteRecords(RandomFile(dir / "HKPLAYER", 1500), players);
    if (!withGamePlans) return;
    std::vector<GamePlanRecord> plans;
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (teams[static_cast<std::size_t>(t - 1)].TeamActive != 1) continue;
        plans.resize(static_cast<std::size_t>(t));
        plans.back().GamePlanTeam = static_cast<std::int16_t>(t);
    }
    rewriteRecords(RandomFile(dir / "HKgameplan", 32000), plans);
}

}  // namespace tallyrink::testing
