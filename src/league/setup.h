#pragma once

// The set-up record: what belongs to the user rather than to a league (the
// display and sound choices of the game options, the report layouts) and the
// league that was open last. One record in the program folder, one file per
// edition of the program.

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "league/codec.h"
#include "league/fixed_text.h"

namespace tallyrink {

// The program's edition: it names the set-up file and the media stamps.
inline constexpr int kEditionYear = 2021;

// "HockeySetup2021.dat" for the edition 2021.
std::string setupFileName(int editionYear = kEditionYear);

inline constexpr std::size_t kKeyReports = 101;       // reports 0 to 100; 1 on are listed
inline constexpr std::size_t kKeyReportColumns = 25;  // columns 1 to 25 of a report
inline constexpr std::size_t kSecondLayouts = 51;     // layouts 0 to 50 of the second set
inline constexpr std::size_t kSecondLayoutColumns = 46;
inline constexpr std::size_t kCustomSounds = 310;
inline constexpr std::size_t kEncyclopedias = 10;
// The highest statistic id a user's layout may hold.
inline constexpr std::int16_t kMaxUserColumnId = 300;

// Layout of the record on disk: 22,850 bytes in a 30,000-byte slot. Offsets
// are given once, in setup.cpp's field table. Reserved fields fill the gaps
// between named ones; they stay 0 until a screen writes them and are carried
// through a load and save unchanged.
struct SetupRecord {
    FixedText<70> SetupLeagueDir{};                          // LeagueDir of the last run
    std::uint8_t SetupStamp{};                               // 1 once the record was first filled
    std::int16_t PBPscroll{};                                // speed of the play-by-play, 0 to 50; default 5
    FixedText<30> ExportText{};                              // last export folder
    std::uint8_t ViewDataOption{};                           // option of the data views; default 1
    std::int16_t KeyReportCurrent{};                         // key report last chosen in the data views
    std::array<FixedText<20>, kKeyReports> KeyReportName{};  // [report]: names of the key reports
    // [column - 1][report]: statistic ids of each key report's columns, 0 none.
    std::array<std::array<std::int16_t, kKeyReports>, kKeyReportColumns> KeyReportColumn{};
    // [column][layout]: statistic ids of the second set of layouts, 0 none.
    std::array<std::array<std::int16_t, kSecondLayouts>, kSecondLayoutColumns> SecondLayoutColumn{};
    std::array<FixedText<20>, kSecondLayouts> SecondLayoutName{};  // [layout]: names of the second set
    std::uint8_t Reserved12888{};
    std::uint8_t LeaderOption{};  // option of the leader board
    std::array<std::uint8_t, 124> Reserved12890{};
    std::int16_t PBPdelayscroll{};  // pause of the play-by-play, 1 to 30; default 1
    std::array<std::uint8_t, 55> Reserved13016{};
    std::uint8_t ComputerCheck{};  // 1: a game between two computer coaches runs without display
    std::array<std::uint8_t, 4> Reserved13072{};
    std::uint8_t TeamColorCheck{};  // play-by-play lines in team colours
    std::array<std::uint8_t, 3> Reserved13077{};
    std::uint8_t FontBoldCheck{};  // bold play-by-play
    std::array<std::uint8_t, 10> Reserved13081{};
    std::uint8_t SoundCheck{};       // sound on; default 1
    std::uint8_t ReportStyleList{};  // report style; default 1
    std::array<std::uint8_t, 17> Reserved13093{};
    std::uint8_t MuteWhistleSoundEffectCheck{};  // default 0
    std::uint8_t GoalSoundEffectsOnlyCheck{};    // default 0
    std::uint8_t Reserved13112{};
    std::uint8_t PBPOption{};  // layout of the play-by-play
    std::uint8_t DisplayGoalieRatingCheck{};
    std::array<std::uint8_t, 44> Reserved13115{};
    FixedText<50> PlayByPlayFile{};  // active phrase file; default "HkPbp.HKp"
    std::uint8_t Reserved13209{};
    std::uint8_t DisplayUniformCheck{};
    std::uint8_t Reserved13211{};
    std::uint8_t ScrollingPbpCheck{};
    std::array<std::uint8_t, 3> Reserved13213{};
    std::uint8_t EncyclopediaNumber{};                             // encyclopedia in use, 1 to 10; default 1
    std::array<FixedText<20>, kEncyclopedias> EncyclopediaFile{};  // default "HKencyclopedia" and the number
    std::array<std::uint8_t, 2> Reserved13417{};
    std::uint8_t NarratorStartingLineupsList{};  // default 1
    std::uint8_t NarratorChoice{};               // default 1
    std::uint8_t NarratorScoringCheck{};         // default 0
    std::uint8_t NarratorQuarterScoresCheck{};   // default 1
    std::uint8_t NarratorFoulsCheck{};           // default 1
    std::uint8_t NarratorMiscCheck{};            // default 1
    std::uint8_t NarratorFullPbpCheck{};         // default 0
    std::uint8_t NarratorScroll{};               // default 10
    std::array<std::uint8_t, 4> Reserved13427{};
    std::uint8_t DisplayShotVideoCheck{};
    std::uint8_t VideoDelayListHuman{};
    std::uint8_t ShotSpeedScroll{};
    std::array<std::uint8_t, 3> Reserved13434{};
    std::uint8_t VoiceList{};  // index into the voices; out of range is reset to 0
    std::array<std::uint8_t, 2> Reserved13438{};
    std::uint8_t ScreenLayoutList{};
    std::uint8_t Reserved13441{};
    std::uint8_t HorizontalPlayerLabelsList{};
    std::uint8_t Reserved13443{};
    std::uint8_t FixedPlayerDisplayLocationsCheck{};
    std::uint8_t Reserved13445{};
    std::uint8_t UseGenericPhotosCheck{};
    std::array<std::uint8_t, 2> Reserved13447{};
    std::uint8_t DisplayBorderPhotosCheck{};
    std::array<std::uint8_t, 7> Reserved13450{};
    std::uint8_t PuckSizeList{};  // list index plus 1
    std::uint8_t Reserved13458{};
    std::uint8_t NarratorMasterCheck{};  // default 1
    std::uint8_t Reserved13460{};
    std::uint8_t VideoPauseScroll{};
    std::array<std::uint8_t, 9> Reserved13462{};
    std::uint8_t VideoDelayListComputer{};
    std::array<std::uint8_t, 5> Reserved13472{};
    std::uint8_t DisplayUniformInsteadOfPhotoCheck{};
    std::uint8_t Reserved13478{};
    std::uint8_t DisplayPeriodRecapsCheck{};
    std::uint8_t Reserved13480{};
    std::uint8_t DisplayPregameLineupsCheck{};
    std::uint8_t Reserved13482{};
    std::uint8_t GoalMusicList{};  // default 3
    std::array<std::uint8_t, 9> Reserved13484{};
    std::uint8_t PenaltyGuysLeavingIceCheck{};
    std::uint8_t FightDisplayCheck{};
    std::uint8_t FaceoffDisplaysCheck{};
    std::uint8_t TurnoverIconCheck{};
    std::uint8_t GoalCelebrationCheck{};
    std::uint8_t Reserved13498{};
    std::uint8_t PenaltyBoxPlayerImagesCheck{};
    std::uint8_t Reserved13500{};
    std::uint8_t PbpFontSize{};
    std::uint8_t Reserved13502{};
    std::uint8_t AutomaticallyDisplayBoxAfterGameDoneCheck{};
    std::array<std::uint8_t, 2> Reserved13504{};
    std::uint8_t SportsmanshipInFightsCheck{};
    std::array<std::uint8_t, 20> Reserved13507{};
    std::uint8_t NarratorVolScroll{};   // default 75
    std::uint8_t SoundVolScroll{};      // default 75
    std::uint8_t GoalMusicVolScroll{};  // default 100
    std::uint8_t Reserved13530{};
    std::uint8_t BoxReportStyleList{};  // default 0
    std::array<std::uint8_t, 2> Reserved13532{};
    std::uint8_t AnthemsCheck{};  // default 1
    std::uint8_t Reserved13535{};
    std::uint8_t IndicateScoringChangesCheck{};
    std::uint8_t Reserved13537{};
    std::uint8_t BoxscoreTypeList{};
    std::uint8_t BoxScoreSortList{};
    std::array<std::uint8_t, 2> Reserved13540{};
    std::uint8_t OpeningChoice{};  // 7 when the opening check is on
    std::uint8_t Reserved13543{};
    std::array<FixedText<30>, kCustomSounds> CustomSoundFile{};  // file names of the custom sounds
    std::uint8_t BackgroundCrowdVolumeScroll{};                  // default 75
    std::uint8_t Reserved22845{};
    std::uint8_t NarratorShotsCheck{};      // default 1
    std::uint8_t NarratorTurnoversCheck{};  // default 1
    std::uint8_t NarratorFaceoffsCheck{};   // default 1
    // 99 once the crowd volume and the three narrator checks just above had
    // their defaults: a record filled before they existed holds 0 there.
    std::uint8_t LateNarratorStamp{};
    std::array<std::uint8_t, 30000 - 22850> SlotTail{};  // rest of the slot, kept as found
};

inline constexpr std::uint8_t kSetupStampFilled = 1;
inline constexpr std::uint8_t kLateNarratorStampDone = 99;

// Which rows a built-in key report lists.
enum class KeyReportRows { NoGoalies, GoaliesOnly, All };

struct BuiltInKeyReport {
    std::string_view name;
    std::vector<std::int16_t> columns;  // statistic ids in column order
    KeyReportRows rows;
};

// The key reports 1 to 18 that every load rebuilds; entry 0 is report 1.
const std::vector<BuiltInKeyReport>& builtInKeyReports();

// Names of the built-in layouts of the second set, slots 1 on.
inline constexpr std::array<std::string_view, 7> kSecondLayoutBuiltInNames = {
    "Basic", "Per Game", "Per 48 Minutes", "At Home", "On Road", "High Games", "Shooting"};

inline constexpr std::string_view kDefaultPlayByPlayFile = "HkPbp.HKp";

// What the load rules need from outside the record.
struct SetupLoadContext {
    std::string leagueDir;          // goes into a new record's SetupLeagueDir
    std::optional<int> voiceCount;  // voices of the speech engine; unknown leaves VoiceList alone
};

// A record with every default of a first run.
SetupRecord newSetupRecord(const SetupLoadContext& ctx);

// The rules of every load: a record never filled gets its defaults, later
// field groups get theirs by their stamps, values out of range are brought
// back and the built-in layouts are rebuilt.
void applySetupLoadRules(SetupRecord& s, const SetupLoadContext& ctx);

// Decodes the first slot of a set-up file's bytes (short input reads as zero)
// and applies the load rules. Any input gives a usable record.
SetupRecord setupFromBytes(std::span<const std::uint8_t> bytes, const SetupLoadContext& ctx);

// Reads the set-up file; a missing, short or foreign file gives defaults.
SetupRecord loadSetupFile(const std::filesystem::path& file, const SetupLoadContext& ctx);

// Writes the record as slot 1 of the file (whole-file rewrite); bytes past
// the slot in an existing file are kept. Throws FileError on failure.
void saveSetupFile(const std::filesystem::path& file, const SetupRecord& s);

}  // namespace tallyrink

namespace tallyrink::codec {

template <>
struct Layout<SetupRecord> {
    static constexpr std::size_t size = 22850;
    static constexpr std::size_t slot = 30000;
};

TALLYRINK_EXTERN_RECORD_CODEC(SetupRecord)

}  // namespace tallyrink::codec
