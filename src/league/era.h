#pragma once

// The era table: the league-wide averages of each real season from 1900 to
// 2050, in the file HkEra of the program folder. The game engine scales its
// rates by the figures of the players' years, so a 1935 game plays like 1935.
// Year y is record y - 1899 of a Random(100) file, 92 bytes a record.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "league/codec.h"

namespace tallyrink {

struct EraRecord {
    std::int16_t Games{};   // games of a team's season; 0 an empty year
    double PowerPlayPct{};  // power-play success in per cent; 0 unknown
    double GoalsPerTeam{};  // goals per team per game, shootout deciders left out
    double PimPerGame{};    // penalty minutes per game, both teams together
    double AssistsPerGoal{};
    std::int16_t CollegeGames{};  // season length of the college teams
    double CollegePowerPlayPct{};
    double CollegeGoalsPerTeam{};
    double CollegePim{};
    double CollegeAssistsPerGoal{};
    double SavePct{};  // per cent
    double CollegeSavePct{};
    double FightsPerGame{};                  // fighting majors of both teams in a game, 0 to 20
    std::array<std::uint8_t, 8> SlotTail{};  // rest of the 100-byte slot, kept as it was
};

// The columns a team of one level plays by.
enum class EraLevel { Professional, College };

// One year's figures for one level, as the engine reads them.
struct EraFigures {
    int games{};
    double powerPlayPct{};
    double goalsPerTeam{};
    double pimPerGame{};
    double assistsPerGoal{};
    double savePct{};
    double fightsPerGame{};

    // Shots on goal per team per game that the goals and save percentage imply.
    [[nodiscard]] double shotsPerTeam() const { return savePct < 100 ? goalsPerTeam / (1 - savePct / 100) : 0; }
};

EraFigures figuresOf(const EraRecord& e, EraLevel level);

class EraTable {
public:
    static constexpr int kFirstYear = 1900;
    static constexpr int kLastYear = 2050;
    static constexpr std::size_t kYears = kLastYear - kFirstYear + 1;

    static constexpr bool contains(int year) { return year >= kFirstYear && year <= kLastYear; }

    // The record of a year from 1900 to 2050 (checked).
    [[nodiscard]] const EraRecord& year(int y) const;
    EraRecord& year(int y);

    // The year's record, or that of `fallbackYear` for a year outside the
    // table: each caller names the year that stands in for unknown ones.
    [[nodiscard]] const EraRecord& yearOr(int y, int fallbackYear) const;

    // Bytes found in the file past the last year, written back unchanged.
    std::vector<std::uint8_t> trailing;

private:
    std::array<EraRecord, kYears> years_{};
};

inline constexpr const char* kEraFileName = "HkEra";
inline constexpr std::size_t kEraSlot = 100;

// The table as it lies in `path`, without the fills. A missing file gives an
// empty table; a length that isn't a whole number of records throws FileError.
EraTable readEraFile(const std::filesystem::path& path);

// The fills of a loaded table: a year with no games takes the year before
// (the first years, with none before them, the first year that has games);
// empty college columns follow the professional ones; a year with no fights
// figure gets 0.3 a game up to 1969 and 0.5 after. Values that can't be
// figures (negative, not a number) count as empty.
void fillEraGaps(EraTable& table);

// HkEra of the program folder, filled.
EraTable LoadEra(const std::filesystem::path& programDir);

// Writes all 151 years to HkEra of the program folder (temporary file, then rename).
void SaveEra(const std::filesystem::path& programDir, const EraTable& table);
void writeEraFile(const std::filesystem::path& path, const EraTable& table);

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<EraRecord> {
    static constexpr std::size_t size = 92;
    static constexpr std::size_t slot = 100;
};

TALLYRINK_EXTERN_RECORD_CODEC(EraRecord)

}  // namespace tallyrink::codec
