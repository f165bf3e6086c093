#include "engine/record_upgrades.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "league/random.h"
#include "league/text.h"
#include "team/positions.h"

namespace tallyrink {

namespace {

template <class T>
void capAt(T& v, T limit) {
    if (v > limit) v = limit;
}

// Days of a month by its season-month code, as the availability dates cap
// them: February 29, the 30-day months 30.
void capDay(std::uint8_t& day, std::uint8_t monthCode) {
    if (monthCode == 6) capAt<std::uint8_t>(day, 29);
    if (monthCode == 1 || monthCode == 3 || monthCode == 8 || monthCode == 10) capAt<std::uint8_t>(day, 30);
}

bool stamp(std::uint8_t& field, std::uint8_t value) {
    if (field == value) return false;
    field = value;
    return true;
}

void clearGoalTypes(TeamRecord& t) {
    t.Majors = t.Minors = t.Reserved652 = t.Misconducts = t.GameMisconducts = t.Reserved658 = 0;
    t.Reserved65a = {};
    t.Reserved65c = {};
    t.GoalsFiveOnFive = {};
    t.GoalsFiveOnFour = t.GoalsFiveOnThree = t.GoalsFourOnFour = t.GoalsFourOnThree = t.GoalsThreeOnThree = {};
    t.GoalsThreeOnFour = t.GoalsThreeOnFive = t.GoalsFourOnFive = t.GoalsEmptyNet = t.GoalsPenaltyShot = {};
}

void fillIfBlank(FixedText<40>& field, const std::string& value) {
    if (field.blank() && !value.empty()) field.assign(value);
}

void fillIfBlank(FixedText<50>& field, const std::string& value) {
    if (field.blank() && !value.empty()) field.assign(value);
}

// "rink.jpg" -> "rink-h.jpg"
std::string horizontalName(const std::string& file) {
    auto dot = file.rfind('.');
    if (dot == std::string::npos) return file + "-h";
    return file.substr(0, dot) + "-h" + file.substr(dot);
}

}  // namespace

bool endsWithExtension(std::string_view name, std::initializer_list<const char*> extensions) {
    auto dot = name.rfind('.');
    if (dot == std::string_view::npos) return false;
    // The extension upper-cased, blanks dropped, at most 8 letters: every
    // player of every load asks, so it is built in place.
    std::array<char, 8> ext{};
    std::size_t n = 0;
    for (char c : name.substr(dot + 1)) {
        if (n == ext.size()) break;
        if (c != ' ') ext[n++] = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    std::string_view got(ext.data(), n);
    for (const char* e : extensions)
        if (got == e) return true;
    return false;
}

std::uint8_t timeZoneOfCity(const std::string& city) {
    static constexpr std::array<std::string_view, 11> central = {
        "Chicago", "Milwaukee",     "Minnesota", "Kansas City", "San Antonio", "Dallas",
        "Houston", "Oklahoma City", "Memphis",   "New Orleans", "Winnepeg"};
    static constexpr std::array<std::string_view, 4> mountain = {"Denver", "Utah", "Edmonton", "Calgary"};
    static constexpr std::array<std::string_view, 12> pacific = {
        "Golden State", "San Francisco", "Oakland",   "Sacramento", "Los Angeles", "Seattle",
        "Portland",     "Phoenix",       "San Diego", "San Jose",   "Vancouver",   "Anaheim"};
    auto in = [&city](const auto& list) { return std::find(list.begin(), list.end(), city) != list.end(); };
    if (in(central)) return 1;
    if (in(mountain)) return 2;
    if (in(pacific)) return 3;
    return 0;
}

void upgradeTeamRecord(TeamRecord& t) {
    std::string city = t.City.str();
    std::string abbrev = t.Abbrev.str();
    if (abbrev.find_first_of("/\\*!@?#=") != std::string::npos)
        t.Abbrev.assign(city.substr(0, 1));
    else if (abbrev.empty())
        t.Abbrev.assign(upperPrefix(city, 3));

    if (stamp(t.AnthemStamp, kAnthemStamp)) {
        static constexpr std::array<std::string_view, 9> canadian = {
            "Canada", "Toronto", "Montreal", "Ottawa", "Winnipeg", "Alberta", "Vancouver", "Calgary", "Edmonton"};
        t.Anthem = std::find(canadian.begin(), canadian.end(), city) != canadian.end() ? 1 : 0;
    }
    int games = t.Wins + t.Losses + t.Ties + t.OvertimeLosses;
    if (t.FightsCount[0] > 200 && double(t.FightsCount[0]) / (games + 1) > 3) t.FightsCount[0] = 0;

    if (stamp(t.AkaStamp, kAkaStamp)) t.AkaAbbrev = {};
    if (stamp(t.ChancesStamp, kTeamChancesStamp)) t.ScoringChancesFor = t.ScoringChancesAgainst = 0;
    if (stamp(t.EmailStamp, kEmailStamp)) t.CoachEmail = {};
    if (stamp(t.CoachNameStamp, kCoachNameStamp) && !t.CoachShort.blank()) t.CoachName.assign(t.CoachShort.str());
    if (stamp(t.ColorStamp, kColorStamp)) {
        t.TimeZone = timeZoneOfCity(city);
        for (std::int32_t* c : {&t.ForeColor, &t.BackColor, &t.RoadForeColor, &t.RoadBackColor, &t.ThirdColor})
            *c &= 0xFFFFFF;
    }
    if (stamp(t.StreakStamp, kStreakStamp)) t.Streak = 0;
    if (t.GoalsFiveOnFive[0] > 3000) t.GoalTypeStamp = 0;
    if (stamp(t.GoalTypeStamp, kGoalTypeStamp)) clearGoalTypes(t);

    if (t.Nickname.blank()) t.Nickname.assign(city);
    if (stamp(t.RoadColorStamp, kRoadColorStamp) || t.RoadForeColor == t.RoadBackColor) {
        t.RoadForeColor = t.ForeColor;
        t.RoadBackColor = t.BackColor;
    }

    if (stamp(t.ArenaStamp, kArenaStamp)) fillIfBlank(t.ArenaFile, "Arena.jpg");
    stamp(t.RealRecordStamp, kRealRecordStamp);
    if (t.RealWins > 120 || t.RealLosses > 120 || t.RealTies > 120 || t.RealOvertimeLosses > 120)
        t.RealWins = t.RealLosses = t.RealTies = t.RealOvertimeLosses = 0;
    if (stamp(t.UniformStamp, kTeamUniformStamp)) {
        fillIfBlank(t.UniformFile[0], "Uni-Road-" + city + ".jpg");
        fillIfBlank(t.UniformFile[1], "Uni-Home-" + city + ".jpg");
    }
    if (stamp(t.CoachPhotoStamp, kCoachPhotoStamp) && !t.CoachName.blank())
        fillIfBlank(t.CoachPhotoFile, t.CoachName.str() + ".jpg");
    if (stamp(t.LogoStamp, kLogoStamp)) fillIfBlank(t.LogoFile, city + "1.jpg");
    if (!endsWithExtension(t.LogoFile.str(), {"BMP", "JPG"})) t.LogoFile.assign(city + ".jpg");
    if (stamp(t.RinkStamp, kRinkStamp) && !t.RinkFile.blank())
        fillIfBlank(t.RinkFileHorizontal, horizontalName(t.RinkFile.str()));
}

void upgradeGamePlan(GamePlanRecord& plan, int teamYear) {
    if (stamp(plan.ZoneLineStamp, kZoneLineStamp))
        plan.OffZoneFWD = plan.OffZoneDEF = plan.DefZoneFWD = plan.DefZoneDEF = 0;
    if (stamp(plan.LineCountStamp, kLineCountStamp)) plan.LineCountChoice = teamYear < 2015 ? 2 : 1;
    bool noUsage = plan.LineUsage[0] == 0 && plan.PairUsage[0] == 0 && plan.PowerPlayUsage[0] == 0 &&
                   plan.PenaltyKillUsage[0] == 0;
    if (stamp(plan.UsageStamp, kUsageStamp) || noUsage) {
        plan.LineUsage = {13, 11, 9, 7};
        plan.PairUsage = {13, 11, 9};
        plan.PowerPlayUsage = {15, 10};
        plan.PenaltyKillUsage = {15, 10};
    }
    if (stamp(plan.DailyPreferenceStamp, kDailyPreferenceStamp)) plan.DailyLinePreference = {};
    if (stamp(plan.ShadowStamp, kShadowStamp)) {
        plan.ShadowWord = {};
        plan.ShadowTarget = {};
        plan.ShadowPlayer = {};
    }
    if (stamp(plan.UseDailyLinesStamp, kUseDailyLinesStamp)) plan.UseDailyLines = 0;
    if (stamp(plan.ActivateStamp, kActivateStamp)) plan.ActivateAdditionalPlayers = 1;
    if (stamp(plan.PullStamp, kPlanPullStamp)) {
        plan.PullTrailingByOne = 80;
        plan.PullTrailingByTwo = 100;
    }
    if (plan.RotateLines > 1) {
        plan.RotateLines = 1;
        plan.FillFromDepth = 0;
    }
    if (stamp(plan.YankGoalieStamp, kYankGoalieStamp)) plan.YankGoalie = {};
    if (plan.ZoneEntry == 0) plan.ZoneEntry = 3;
    if (stamp(plan.LineStrategyStamp, kLineStrategyStamp)) {
        plan.LineOption = {};
        plan.LineWord = {};
        for (int set = 1; set <= kLineSets; ++set)
            plan.LineStrategy[static_cast<std::size_t>(set - 1)] = set >= 11 && set <= 16 ? 0 : 4;
    }
    for (int set = 11; set <= 16; ++set) {
        auto& v = plan.LineStrategy[static_cast<std::size_t>(set - 1)];
        if (v > 3) v = 1;
    }
}

void capRatings(PlayerRecord& p) {
    for (std::uint8_t* r :
         {&p.RatingFaceoff, &p.RatingPassing, &p.RatingShotIn, &p.RatingShotOut, &p.RatingSkate, &p.RatingPenaltyShot,
          &p.RatingSportsmanship, &p.RatingBlock, &p.RatingHit, &p.RatingTakeaway, &p.RatingDurability})
        capAt<std::uint8_t>(*r, 10);
    capAt<std::uint8_t>(p.RatingPenaltyKill, 3);
    for (std::uint8_t* r : {&p.RatingGoalie, &p.RatingOffense, &p.RatingDefense}) capAt<std::uint8_t>(*r, 100);
}

void upgradePlayerRecord(PlayerRecord& p, const TeamRecord& team) {
    if (p.InactiveFlag != 0 && p.InactiveFlag != 99) p.InactiveFlag = 0;
    if (p.InactiveFlag == 99 && p.AlwaysActiveWhenAvailable == 1) p.InactiveFlag = 0;
    std::string_view type = p.PlayerType.view();
    if (type != "C" && type != "P") p.PlayerType.assign(team.TeamType.view() == "C" ? "C" : "P");
    if (p.PlayerType.view() == "C" && p.StrengthOfSchedule == 0) p.StrengthOfSchedule = team.StrengthOfSchedule;
    if (!endsWithExtension(p.PhotoFile.view(), {"WMF", "BMP", "JPG"})) p.PhotoFile.assign(team.LogoFile.view());
    capAt<std::uint8_t>(p.ConsecutiveGames, 99);
    if (p.PlayerYear < 1900) p.PlayerYear = team.TeamYear;
    StatLine& replay = statLine(p, StatLineIndex::Replay);
    if (replay.GP == 0) replay.Assists = replay.Giveaways = 0;
    if (p.GamesSinceReset > 99) p.GamesSinceReset = 0;
    if (p.ShortName.view().size() <= 2) p.ShortName.assign(p.LastName.view());
    capRatings(p);
    capDay(p.AvailStartDay, p.AvailStartMonth);
    capDay(p.AvailEndDay, p.AvailEndMonth);
    if (p.GoaliePullAfterGoalsAllowed > 8) p.GoaliePullAfterGoalsAllowed = 0;

    if (stamp(p.DurabilityStamp, kDurabilityStamp)) {
        p.TotalRowFlag = 0;
        p.TotalRowTeams = {};
    }
    stamp(p.UniformStamp, kUniformStamp);
    stamp(p.NicknameStamp, kNicknameStamp);
    if (stamp(p.ZoneStamp, kZoneStamp) && !isDefenseman(p)) p.DepthPenaltyKill[2] = 0;
    if (stamp(p.OnIceStamp, kOnIceStamp)) {
        p.OnIceGoals = p.OnIceShots = p.OnIceMissed = p.OnIceBlocked = {};
    }
    if (stamp(p.SpotStamp, kSpotStamp)) {
        p.ShotsBySpot = {};
        p.GoalsBySpot = {};
    }
    if (stamp(p.PowerPlayShotStamp, kPowerPlayShotStamp)) p.PowerPlayShots = {};
    if (stamp(p.LastGameStamp, kLastGameStamp)) {
        p.LastGameGoals = p.LastGameAssists = p.LastGamePim = p.LastGameGoalsAllowed = p.LastGameSaves = 0;
        p.LastGameWon = 0;
        p.LastOpponent = {};
    }
    if (stamp(p.RealPenaltyStamp, kRealPenaltyStamp))
        p.RealMinors = p.RealMajors = p.RealMisconducts = p.RealGameMisconducts = p.RealMatchPenalties = 0;
    if (stamp(p.ChancesStamp, kPlayerChancesStamp)) p.ScoringChances = {};
    if (stamp(p.GoalieStatStamp, kGoalieStatStamp)) p.GoalsAgainstOnIce = {};
    if (stamp(p.PenaltyDrawnStamp, kPenaltyDrawnStamp)) {
        p.PenaltyShotsTaken = 0;
        p.GamesStarted = 0;
    }
    if (stamp(p.HiddenSalaryStamp, kHiddenSalaryStamp)) p.HiddenSalary = 0;
    // A player who started the season somewhere else is filled in by the
    // league reset; one found on a roster with nothing there started here.
    if (stamp(p.OriginalTeamStamp, kOriginalTeamStamp) && p.OriginalTeam.blank())
        p.OriginalTeam.assign(team.Abbrev.view());
    if (stamp(p.HatTrickStamp, kHatTrickStamp)) p.HatTricks = 0;
    if (stamp(p.PullStamp, kPlayerPullStamp)) p.GoaliePullAfterGoalsAllowed = 0;
    if (stamp(p.InjuryTypeStamp, kInjuryTypeStamp)) p.InjuryType = 0;
    if (stamp(p.ExtraLinesStamp, kExtraLinesStamp)) {
        p.ExtraLineRole = {p.LineRoleStored[19], p.LineRoleStored[20]};
        p.ExtraLineFlag = {p.LineFlagStored[19], p.LineFlagStored[20]};
    }
    // An unrated player plays his real-life shooting style.
    if (stamp(p.RatingsAdjustStamp, kRatingsAdjustStamp) || (p.RatingOffense == 0 && p.RatingDefense == 0)) {
        p.UsageSogAggressiveness = p.UsageOffensiveZone = p.UsageDeflect = p.UsagePenetrate = 3;
        p.Reserved394 = {3, 3, 3, 3};
    }
}

void rescaleHitRating(PlayerRecord& p) {
    if (!stamp(p.HitRatingStamp, kHitRatingStamp)) return;
    static constexpr std::array years = {1954, 1960, 1966, 1967, 1970, 1973, 1975, 1977,
                                         1983, 1985, 1988, 1993, 1998, 2003, 2008, 2009};
    if (std::find(years.begin(), years.end(), p.PlayerYear) == years.end() || p.RatingDefense == 0) return;
    double r = p.RatingHit;
    double x = p.RatingDefense / 10.0;
    bool wasTen = p.RatingHit == 10;
    if (r - x > 4) r = roundHalfEven(x + 4);
    if (r - x < -4) r = roundHalfEven(x - 4);
    r = roundHalfEven(r - x + (isDefenseman(p) ? 5 : 4.5));
    if (wasTen) r += 1;
    p.RatingHit = static_cast<std::uint8_t>(std::clamp(r, 0.0, 10.0));
}

}  // namespace tallyrink
