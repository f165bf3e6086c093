#pragma once

// Reads a league built from a real season back from its folder and compares
// it with the season's own totals, so that an import proves itself: what
// the files hold must add up to what the data says.

#include <filesystem>
#include <string>
#include <vector>

#include "operations/season_data.h"

namespace tallyrink {

struct SeasonCheck {
    std::string name;
    std::string detail;  // the figures compared, or the teams that differ
    bool ok{};
};

std::vector<SeasonCheck> checkLeague(const std::filesystem::path& dir, const SeasonData& data);

// 7552 as "7,552".
std::string thousands(long long n);

}  // namespace tallyrink
