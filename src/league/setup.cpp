#include "league/setup.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "league/files.h"

namespace tallyrink::codec {

template <>
struct FieldTable<SetupRecord> {
    static constexpr auto fields = std::tuple{
        Field{"SetupLeagueDir", 0, &SetupRecord::SetupLeagueDir},
        Field{"SetupStamp", 70, &SetupRecord::SetupStamp},
        Field{"PBPscroll", 71, &SetupRecord::PBPscroll},
        Field{"ExportText", 73, &SetupRecord::ExportText},
        Field{"ViewDataOption", 103, &SetupRecord::ViewDataOption},
        Field{"KeyReportCurrent", 104, &SetupRecord::KeyReportCurrent},
        Field{"KeyReportName", 106, &SetupRecord::KeyReportName},
        Field{"KeyReportColumn", 2126, &SetupRecord::KeyReportColumn},
        Field{"SecondLayoutColumn", 7176, &SetupRecord::SecondLayoutColumn},
        Field{"SecondLayoutName", 11868, &SetupRecord::SecondLayoutName},
        Field{"Reserved12888", 12888, &SetupRecord::Reserved12888},
        Field{"LeaderOption", 12889, &SetupRecord::LeaderOption},
        Field{"Reserved12890", 12890, &SetupRecord::Reserved12890},
        Field{"PBPdelayscroll", 13014, &SetupRecord::PBPdelayscroll},
        Field{"Reserved13016", 13016, &SetupRecord::Reserved13016},
        Field{"ComputerCheck", 13071, &SetupRecord::ComputerCheck},
        Field{"Reserved13072", 13072, &SetupRecord::Reserved13072},
        Field{"TeamColorCheck", 13076, &SetupRecord::TeamColorCheck},
        Field{"Reserved13077", 13077, &SetupRecord::Reserved13077},
        Field{"FontBoldCheck", 13080, &SetupRecord::FontBoldCheck},
        Field{"Reserved13081", 13081, &SetupRecord::Reserved13081},
        Field{"SoundCheck", 13091, &SetupRecord::SoundCheck},
        Field{"ReportStyleList", 13092, &SetupRecord::ReportStyleList},
        Field{"Reserved13093", 13093, &SetupRecord::Reserved13093},
        Field{"MuteWhistleSoundEffectCheck", 13110, &SetupRecord::MuteWhistleSoundEffectCheck},
        Field{"GoalSoundEffectsOnlyCheck", 13111, &SetupRecord::GoalSoundEffectsOnlyCheck},
        Field{"Reserved13112", 13112, &SetupRecord::Reserved13112},
        Field{"PBPOption", 13113, &SetupRecord::PBPOption},
        Field{"DisplayGoalieRatingCheck", 13114, &SetupRecord::DisplayGoalieRatingCheck},
        Field{"Reserved13115", 13115, &SetupRecord::Reserved13115},
        Field{"PlayByPlayFile", 13159, &SetupRecord::PlayByPlayFile},
        Field{"Reserved13209", 13209, &SetupRecord::Reserved13209},
        Field{"DisplayUniformCheck", 13210, &SetupRecord::DisplayUniformCheck},
        Field{"Reserved13211", 13211, &SetupRecord::Reserved13211},
        Field{"ScrollingPbpCheck", 13212, &SetupRecord::ScrollingPbpCheck},
        Field{"Reserved13213", 13213, &SetupRecord::Reserved13213},
        Field{"EncyclopediaNumber", 13216, &SetupRecord::EncyclopediaNumber},
        Field{"EncyclopediaFile", 13217, &SetupRecord::EncyclopediaFile},
        Field{"Reserved13417", 13417, &SetupRecord::Reserved13417},
        Field{"NarratorStartingLineupsList", 13419, &SetupRecord::NarratorStartingLineupsList},
        Field{"NarratorChoice", 13420, &SetupRecord::NarratorChoice},
        Field{"NarratorScoringCheck", 13421, &SetupRecord::NarratorScoringCheck},
        Field{"NarratorQuarterScoresCheck", 13422, &SetupRecord::NarratorQuarterScoresCheck},
        Field{"NarratorFoulsCheck", 13423, &SetupRecord::NarratorFoulsCheck},
        Field{"NarratorMiscCheck", 13424, &SetupRecord::NarratorMiscCheck},
        Field{"NarratorFullPbpCheck", 13425, &SetupRecord::NarratorFullPbpCheck},
        Field{"NarratorScroll", 13426, &SetupRecord::NarratorScroll},
        Field{"Reserved13427", 13427, &SetupRecord::Reserved13427},
        Field{"DisplayShotVideoCheck", 13431, &SetupRecord::DisplayShotVideoCheck},
        Field{"VideoDelayListHuman", 13432, &SetupRecord::VideoDelayListHuman},
        Field{"ShotSpeedScroll", 13433, &SetupRecord::ShotSpeedScroll},
        Field{"Reserved13434", 13434, &SetupRecord::Reserved13434},
        Field{"VoiceList", 13437, &SetupRecord::VoiceList},
        Field{"Reserved13438", 13438, &SetupRecord::Reserved13438},
        Field{"ScreenLayoutList", 13440, &SetupRecord::ScreenLayoutList},
        Field{"Reserved13441", 13441, &SetupRecord::Reserved13441},
        Field{"HorizontalPlayerLabelsList", 13442, &SetupRecord::HorizontalPlayerLabelsList},
        Field{"Reserved13443", 13443, &SetupRecord::Reserved13443},
        Field{"FixedPlayerDisplayLocationsCheck", 13444, &SetupRecord::FixedPlayerDisplayLocationsCheck},
        Field{"Reserved13445", 13445, &SetupRecord::Reserved13445},
        Field{"UseGenericPhotosCheck", 13446, &SetupRecord::UseGenericPhotosCheck},
        Field{"Reserved13447", 13447, &SetupRecord::Reserved13447},
        Field{"DisplayBorderPhotosCheck", 13449, &SetupRecord::DisplayBorderPhotosCheck},
        Field{"Reserved13450", 13450, &SetupRecord::Reserved13450},
        Field{"PuckSizeList", 13457, &SetupRecord::PuckSizeList},
        Field{"Reserved13458", 13458, &SetupRecord::Reserved13458},
        Field{"NarratorMasterCheck", 13459, &SetupRecord::NarratorMasterCheck},
        Field{"Reserved13460", 13460, &SetupRecord::Reserved13460},
        Field{"VideoPauseScroll", 13461, &SetupRecord::VideoPauseScroll},
        Field{"Reserved13462", 13462, &SetupRecord::Reserved13462},
        Field{"VideoDelayListComputer", 13471, &SetupRecord::VideoDelayListComputer},
        Field{"Reserved13472", 13472, &SetupRecord::Reserved13472},
        Field{"DisplayUniformInsteadOfPhotoCheck", 13477, &SetupRecord::DisplayUniformInsteadOfPhotoCheck},
        Field{"Reserved13478", 13478, &SetupRecord::Reserved13478},
        Field{"DisplayPeriodRecapsCheck", 13479, &SetupRecord::DisplayPeriodRecapsCheck},
        Field{"Reserved13480", 13480, &SetupRecord::Reserved13480},
        Field{"DisplayPregameLineupsCheck", 13481, &SetupRecord::DisplayPregameLineupsCheck},
        Field{"Reserved13482", 13482, &SetupRecord::Reserved13482},
        Field{"GoalMusicList", 13483, &SetupRecord::GoalMusicList},
        Field{"Reserved13484", 13484, &SetupRecord::Reserved13484},
        Field{"PenaltyGuysLeavingIceCheck", 13493, &SetupRecord::PenaltyGuysLeavingIceCheck},
        Field{"FightDisplayCheck", 13494, &SetupRecord::FightDisplayCheck},
        Field{"FaceoffDisplaysCheck", 13495, &SetupRecord::FaceoffDisplaysCheck},
        Field{"TurnoverIconCheck", 13496, &SetupRecord::TurnoverIconCheck},
        Field{"GoalCelebrationCheck", 13497, &SetupRecord::GoalCelebrationCheck},
        Field{"Reserved13498", 13498, &SetupRecord::Reserved13498},
        Field{"PenaltyBoxPlayerImagesCheck", 13499, &SetupRecord::PenaltyBoxPlayerImagesCheck},
        Field{"Reserved13500", 13500, &SetupRecord::Reserved13500},
        Field{"PbpFontSize", 13501, &SetupRecord::PbpFontSize},
        Field{"Reserved13502", 13502, &SetupRecord::Reserved13502},
        Field{"AutomaticallyDisplayBoxAfterGameDoneCheck", 13503,
              &SetupRecord::AutomaticallyDisplayBoxAfterGameDoneCheck},
        Field{"Reserved13504", 13504, &SetupRecord::Reserved13504},
        Field{"SportsmanshipInFightsCheck", 13506, &SetupRecord::SportsmanshipInFightsCheck},
        Field{"Reserved13507", 13507, &SetupRecord::Reserved13507},
        Field{"NarratorVolScroll", 13527, &SetupRecord::NarratorVolScroll},
        Field{"SoundVolScroll", 13528, &SetupRecord::SoundVolScroll},
        Field{"GoalMusicVolScroll", 13529, &SetupRecord::GoalMusicVolScroll},
        Field{"Reserved13530", 13530, &SetupRecord::Reserved13530},
        Field{"BoxReportStyleList", 13531, &SetupRecord::BoxReportStyleList},
        Field{"Reserved13532", 13532, &SetupRecord::Reserved13532},
        Field{"AnthemsCheck", 13534, &SetupRecord::AnthemsCheck},
        Field{"Reserved13535", 13535, &SetupRecord::Reserved13535},
        Field{"IndicateScoringChangesCheck", 13536, &SetupRecord::IndicateScoringChangesCheck},
        Field{"Reserved13537", 13537, &SetupRecord::Reserved13537},
        Field{"BoxscoreTypeList", 13538, &SetupRecord::BoxscoreTypeList},
        Field{"BoxScoreSortList", 13539, &SetupRecord::BoxScoreSortList},
        Field{"Reserved13540", 13540, &SetupRecord::Reserved13540},
        Field{"OpeningChoice", 13542, &SetupRecord::OpeningChoice},
        Field{"Reserved13543", 13543, &SetupRecord::Reserved13543},
        Field{"CustomSoundFile", 13544, &SetupRecord::CustomSoundFile},
        Field{"BackgroundCrowdVolumeScroll", 22844, &SetupRecord::BackgroundCrowdVolumeScroll},
        Field{"Reserved22845", 22845, &SetupRecord::Reserved22845},
        Field{"NarratorShotsCheck", 22846, &SetupRecord::NarratorShotsCheck},
        Field{"NarratorTurnoversCheck", 22847, &SetupRecord::NarratorTurnoversCheck},
        Field{"NarratorFaceoffsCheck", 22848, &SetupRecord::NarratorFaceoffsCheck},
        Field{"LateNarratorStamp", 22849, &SetupRecord::LateNarratorStamp},
    };
};

static_assert(tilesExactly<SetupRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(SetupRecord)

}  // namespace tallyrink::codec

namespace tallyrink {

namespace {

std::vector<std::int16_t> idRange(std::int16_t first, std::int16_t last) {
    std::vector<std::int16_t> ids;
    for (auto id = first; id <= last; ++id) ids.push_back(id);
    return ids;
}

std::vector<std::int16_t> join(std::initializer_list<std::vector<std::int16_t>> parts) {
    std::vector<std::int16_t> ids;
    for (const auto& p : parts) ids.insert(ids.end(), p.begin(), p.end());
    return ids;
}

constexpr std::int16_t kDefaultPBPscroll = 5;
constexpr std::int16_t kDefaultPBPdelayscroll = 1;
constexpr std::uint8_t kDefaultVolume = 75;
constexpr std::uint8_t kDefaultGoalMusicVolume = 100;
constexpr std::uint8_t kMaxVolume = 100;

void fillFirstRunDefaults(SetupRecord& s, const SetupLoadContext& ctx) {
    s.SetupLeagueDir.assign(ctx.leagueDir);
    s.SetupStamp = kSetupStampFilled;
    s.PBPscroll = kDefaultPBPscroll;
    s.ViewDataOption = 1;
    s.PBPdelayscroll = kDefaultPBPdelayscroll;
    s.SoundCheck = 1;
    s.ReportStyleList = 1;
    s.MuteWhistleSoundEffectCheck = 0;
    s.GoalSoundEffectsOnlyCheck = 0;
    s.PlayByPlayFile.assign(kDefaultPlayByPlayFile);
    s.EncyclopediaNumber = 1;
    for (std::size_t n = 0; n < kEncyclopedias; ++n)
        s.EncyclopediaFile[n].assign(fmt::format("HKencyclopedia{}", n + 1));
    s.NarratorStartingLineupsList = 1;
    s.NarratorChoice = 1;
    s.NarratorScoringCheck = 0;
    s.NarratorQuarterScoresCheck = 1;
    s.NarratorFoulsCheck = 1;
    s.NarratorMiscCheck = 1;
    s.NarratorFullPbpCheck = 0;
    s.NarratorScroll = 10;
    s.NarratorMasterCheck = 1;
    s.GoalMusicList = 3;
    s.NarratorVolScroll = kDefaultVolume;
    s.SoundVolScroll = kDefaultVolume;
    s.GoalMusicVolScroll = kDefaultGoalMusicVolume;
    s.BoxReportStyleList = 0;
    s.AnthemsCheck = 1;
}

void fillLateNarratorDefaults(SetupRecord& s) {
    s.BackgroundCrowdVolumeScroll = kDefaultVolume;
    s.NarratorShotsCheck = 1;
    s.NarratorTurnoversCheck = 1;
    s.NarratorFaceoffsCheck = 1;
    s.LateNarratorStamp = kLateNarratorStampDone;
}

void clampVolume(std::uint8_t& v, std::uint8_t fallback) {
    if (v > kMaxVolume) v = fallback;
}

void clampColumn(std::int16_t& id) {
    if (id < 0 || id > kMaxUserColumnId) id = 0;
}

void rebuildBuiltInLayouts(SetupRecord& s) {
    const auto& reports = builtInKeyReports();
    for (std::size_t i = 0; i < reports.size(); ++i) {
        std::size_t report = i + 1;
        s.KeyReportName[report].assign(reports[i].name);
        for (std::size_t c = 0; c < kKeyReportColumns; ++c)
            s.KeyReportColumn[c][report] = c < reports[i].columns.size() ? reports[i].columns[c] : 0;
    }
    for (std::size_t i = 0; i < kSecondLayoutBuiltInNames.size(); ++i)
        s.SecondLayoutName[i + 1].assign(kSecondLayoutBuiltInNames[i]);
}

}  // namespace

std::string setupFileName(int editionYear) { return fmt::format("HockeySetup{}.dat", editionYear); }

const std::vector<BuiltInKeyReport>& builtInKeyReports() {
    using enum KeyReportRows;
    static const std::vector<BuiltInKeyReport> reports = {
        {"Basic", idRange(1, 13), NoGoalies},
        {"Expanded", join({idRange(1, 22), {24}}), NoGoalies},
        {"Ratings", idRange(101, 114), NoGoalies},
        {"Special Teams", {7, 25, 11, 26, 27, 12, 28}, NoGoalies},
        {"Penalties", join({{1, 7, 6}, idRange(29, 36)}), NoGoalies},
        {"Goalie", join({{1, 7}, idRange(37, 49)}), GoaliesOnly},
        {"Per Game", idRange(50, 60), NoGoalies},
        {"Per 60 Min", idRange(70, 78), NoGoalies},
        {"Home Games", idRange(79, 94), NoGoalies},
        {"Road Games", idRange(116, 131), NoGoalies},
        {"Scoring", {1, 2, 3, 4}, NoGoalies},
        {"High Games", idRange(132, 145), All},
        {"High Games - Goalie", {147, 148}, All},
        {"Goalie Rates", {114, 115}, GoaliesOnly},
        {"Salary", {265, 300}, All},
        {"R vs R - Skaters", idRange(310, 321), NoGoalies},
        {"R vs R - Goalies", idRange(330, 337), GoaliesOnly},
        {"Advanced Metrics", idRange(350, 358), NoGoalies},
    };
    return reports;
}

SetupRecord newSetupRecord(const SetupLoadContext& ctx) {
    SetupRecord s{};
    applySetupLoadRules(s, ctx);
    return s;
}

void applySetupLoadRules(SetupRecord& s, const SetupLoadContext& ctx) {
    if (s.SetupStamp != kSetupStampFilled) {
        // A record never filled holds nothing worth keeping: start from zero
        // bytes (the slot's spare tail stays as found) and the first-run defaults.
        auto tail = s.SlotTail;
        s = SetupRecord{};
        s.SlotTail = tail;
        fillFirstRunDefaults(s, ctx);
    }
    if (s.LateNarratorStamp != kLateNarratorStampDone) fillLateNarratorDefaults(s);

    if (s.PBPscroll < 0 || s.PBPscroll > 50) s.PBPscroll = kDefaultPBPscroll;
    if (s.PBPdelayscroll < 1 || s.PBPdelayscroll > 30) s.PBPdelayscroll = kDefaultPBPdelayscroll;
    if (s.ComputerCheck > 1) s.ComputerCheck = 0;
    if (ctx.voiceCount && s.VoiceList >= *ctx.voiceCount) s.VoiceList = 0;
    if (s.EncyclopediaNumber < 1 || s.EncyclopediaNumber > kEncyclopedias) s.EncyclopediaNumber = 1;
    for (std::size_t n = 0; n < kEncyclopedias; ++n)
        if (s.EncyclopediaFile[n].blank()) s.EncyclopediaFile[n].assign(fmt::format("HKencyclopedia{}", n + 1));
    if (s.PlayByPlayFile.blank()) s.PlayByPlayFile.assign(kDefaultPlayByPlayFile);
    clampVolume(s.NarratorVolScroll, kDefaultVolume);
    clampVolume(s.SoundVolScroll, kDefaultVolume);
    clampVolume(s.GoalMusicVolScroll, kDefaultGoalMusicVolume);
    clampVolume(s.BackgroundCrowdVolumeScroll, kDefaultVolume);

    // The user's layouts may only name catalogue ids up to 300; the built-in
    // ones (some of which go past 300) are rebuilt right after.
    for (auto& column : s.KeyReportColumn) std::for_each(column.begin(), column.end(), clampColumn);
    for (auto& column : s.SecondLayoutColumn) std::for_each(column.begin(), column.end(), clampColumn);
    rebuildBuiltInLayouts(s);
}

SetupRecord setupFromBytes(std::span<const std::uint8_t> bytes, const SetupLoadContext& ctx) {
    auto s = codec::fromSlot<SetupRecord>(bytes);
    applySetupLoadRules(s, ctx);
    return s;
}

SetupRecord loadSetupFile(const std::filesystem::path& file, const SetupLoadContext& ctx) {
    std::vector<std::uint8_t> bytes;
    try {
        bytes = readBytes(file);
    } catch (const FileError&) {
        // The set-up holds preferences only: an unreadable one is no reason
        // to stop, the defaults serve.
        bytes.clear();
    }
    return setupFromBytes(bytes, ctx);
}

void saveSetupFile(const std::filesystem::path& file, const SetupRecord& s) {
    auto bytes = readBytes(file);
    auto slot = codec::toSlot(s);
    if (bytes.size() < slot.size()) bytes.resize(slot.size());
    std::copy(slot.begin(), slot.end(), bytes.begin());
    writeFileAtomic(file, bytes);
}

}  // namespace tallyrink
