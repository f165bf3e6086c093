#include "league/league.h"

#include <algorithm>

#include "league/files.h"

namespace tallyrink {

int expectedTeamCount(int year) {
    if (year >= 2000) return 30;
    if (year >= 1992) return 24;
    if (year >= 1980) return 20;
    if (year >= 1970) return 18;
    if (year >= 1967) return 12;
    return 6;
}

bool convertOldGamePlanFile(const fs::path& leagueDir, int highestActiveTeam) {
    fs::path path = findFile(leagueDir, kGamePlanFile);
    auto length = fileLength(path);
    // A league of the old form holds 15,000-byte plans: its file is too short
    // for 32,000-byte slots of all active teams (with room for a short tail).
    double newFormFloor = 0.8 * 30000.0 * highestActiveTeam;
    if (length <= 10000 || static_cast<double>(length) >= newFormFloor) return false;
    auto slots = RandomFile(path, kOldGamePlanSlot).readSlots(kMaxTeams);
    RandomFile(path, kGamePlanSlot).rewrite(slots);
    return true;
}

League::League() : League(fs::path()) {}

League::League(fs::path dir) : dir_(std::move(dir)), teams_(kMaxTeams), gamePlans_(kMaxTeams) {}

bool League::DivisionUsed(int division) const {
    return division >= 1 && division <= kDivisions && divisionUsed_[static_cast<std::size_t>(division)];
}

int League::highestActiveTeam() const {
    for (int t = kMaxTeams; t >= 1; --t)
        if (isActive(t)) return t;
    return 0;
}

int League::gamesPlayed(int t) const {
    if (!isTeamNumber(t)) return 0;
    const auto& tr = team(t);
    return tr.Wins + tr.Losses + tr.Ties + tr.OvertimeLosses;
}

void League::LoadTeams() {
    readTeamTable();
    convertOldGamePlanFile(dir_, highestActiveTeam());
}

void League::readTeamTable() {
    RandomFile file(findFile(dir_, kTeamFile), kTeamSlot);
    teams_ = readRecords<TeamRecord>(file, kMaxTeams);
    countTeams();
}

void League::countTeams() {
    activeTeamCount_ = 0;
    divisionUsed_.fill(false);
    for (int t = 1; t <= kMaxTeams; ++t) {
        if (!isActive(t)) continue;
        ++activeTeamCount_;
        divisionUsed_[static_cast<std::size_t>(DivisionOfTeam(t))] = true;
    }
    expectedTeamCount_ = expectedTeamCount(team(1).TeamYear);
}

void League::loadActivePlayers() {
    rows_.clear();
    for (auto& row : readPlayerRows(findFile(dir_, kPlayerFile))) {
        int id = row.player.TeamId;
        if (isTeamNumber(id) || id == kFreeAgent) rows_.push_back(std::move(row));
    }
}

void League::clear() {
    rows_.clear();
    std::fill(teams_.begin(), teams_.end(), TeamRecord{});
    std::fill(gamePlans_.begin(), gamePlans_.end(), GamePlanRecord{});
    activeTeamCount_ = 0;
    expectedTeamCount_ = expectedTeamCount(0);
    divisionUsed_.fill(false);
}

std::vector<PlayerRow> readPlayerRows(const fs::path& file) {
    RandomFile players(file, kPlayerSlot);
    std::size_t count = std::min(players.count(kPlayerRounding), kPlayerTableRows);
    auto slots = players.readSlots(count);
    std::vector<PlayerRow> rows(count);
    for (std::size_t r = 0; r < count; ++r) {
        rows[r].player = codec::fromSlot<PlayerRecord>(slots[r]);
        rows[r].recordNumber = static_cast<std::int32_t>(r + 1);
    }
    return rows;
}

}  // namespace tallyrink
