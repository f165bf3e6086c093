#pragma once

// The steps of the made-up league generator, shared by its source files.

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "league/random.h"
#include "league/records.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"

namespace tallyrink::newleague {

// One entry of a list, drawn evenly.
template <class T>
const T& pick(Random& rng, std::span<const T> list) {
    return list[std::size_t(rng.rand(int(list.size())) - 1)];
}

struct TeamIdentity {
    std::string city;
    std::string nickname;
    std::string abbrev;
    std::string arena;
    std::int32_t foreColor = 0;
    std::int32_t backColor = 0;
    std::int32_t thirdColor = 0;
};

// Colours are stored as RGB Longs: red in the low byte.
constexpr std::int32_t rgb(int r, int g, int b) { return r | (g << 8) | (b << 16); }
inline constexpr std::int32_t kWhite = rgb(255, 255, 255);

// Invented cities, nicknames, unique three-letter codes, colours and arenas.
std::vector<TeamIdentity> drawTeamIdentities(Random& rng, int count);

// Each team's season totals, drawn so that the league's add up to the era's
// figures and each team's hang together with its drawn strength.
std::vector<TeamSeason> drawTeamSeasons(Random& rng, const std::vector<int>& teamNumbers, const EraTargets& era,
                                        int year);

// Full names already given in the league, so that nobody is named twice.
using NameBook = std::set<std::string>;

// A team's players, 23 to 26, with their real lines split from the team's
// season. `TeamId` and the identity fields are set; `PlayerId` is left to
// the caller, who numbers the whole league.
std::vector<PlayerRecord> drawTeamPlayers(Random& rng, const TeamSeason& season, const TeamIdentity& identity,
                                          const EraTargets& era, int year, NameBook& names);

}  // namespace tallyrink::newleague
