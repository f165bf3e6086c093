#include "engine/team_load.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "engine/record_upgrades.h"
#include "league/file_images.h"
#include "league/files.h"
#include "league/folder_names.h"
#include "support/league_fixture.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"
#include "team/positions.h"

namespace tallyrink {
namespace {

using test::shippedEra;

using testing::LeagueFixture;
using testing::TempDir;

GameSession sessionOn(const fs::path& dir, const Schedule* schedule = nullptr, RulesRecord rules = defaultRules(2018)) {
    return GameSession({dir, rules, &shippedEra(), schedule});
}

StatLine& real(PlayerRecord& p) { return statLine(p, StatLineIndex::Real); }

// Real lines that look like a season and call for no draws: every skater
// has shots, and sportsmanship 7 gives a fixed fight rate.
void giveRealLines(LeagueFixture& lg) {
    for (int r = 1; r <= lg.playerCount(); ++r) {
        PlayerRecord& p = lg.player(r);
        StatLine& s = real(p);
        s.GP = static_cast<std::uint8_t>(40 + r % 43);
        p.RatingSportsmanship = 7;
        if (isGoalie(p)) {
            s.Toi = s.GP * 3500;
            s.Saves = static_cast<std::int16_t>(s.GP * 27);
            s.GoalsAllowed = static_cast<std::int16_t>(s.GP * 3);
            continue;
        }
        s.Goals = static_cast<std::uint8_t>(r % 25);
        s.Assists = static_cast<std::int16_t>(r % 30 + 3);
        s.Sog = static_cast<std::int16_t>(s.Goals * 8 + 20);
        s.Pim = static_cast<std::int16_t>(r % 40);
        s.Hits = static_cast<std::int16_t>(r * 3 % 120);
        s.Toi = s.GP * (600 + (r * 37) % 700);
        s.ToiPP = s.GP * (r % 3) * 60;
        s.ToiSH = s.GP * (r % 2) * 60;
        s.FaceoffsWon = static_cast<std::int16_t>(hasFlag(p, Flag::Center) ? 300 + r : 0);
        s.FaceoffsLost = static_cast<std::int16_t>(hasFlag(p, Flag::Center) ? 280 : 0);
    }
}

// Everything of a side the play engine reads, to compare two loads.
void expectSameTables(const SideTables& a, const SideTables& b, bool sameRecords = true) {
    for (int slot = 0; slot < kRosterSlots; ++slot) {
        auto i = static_cast<std::size_t>(slot);
        SCOPED_TRACE(slot);
        for (RateSet set : kRateSets) {
            const SetRates& x = a.rates[i][set];
            const SetRates& y = b.rates[i][set];
            EXPECT_DOUBLE_EQ(x.AverageMinutes, y.AverageMinutes);
            EXPECT_EQ(x.EvenMinutes, y.EvenMinutes);
            EXPECT_DOUBLE_EQ(x.GoalsPer60, y.GoalsPer60);
            EXPECT_DOUBLE_EQ(x.AssistsPer60, y.AssistsPer60);
            EXPECT_DOUBLE_EQ(x.ShotsPer60, y.ShotsPer60);
            EXPECT_DOUBLE_EQ(x.NonFightPimPer60, y.NonFightPimPer60);
            EXPECT_DOUBLE_EQ(x.FightsPer1000, y.FightsPer1000);
        }
        EXPECT_DOUBLE_EQ(a.rates[i].ShootingPct, b.rates[i].ShootingPct);
        EXPECT_DOUBLE_EQ(a.rates[i].ShotStyleFactor, b.rates[i].ShotStyleFactor);
        EXPECT_EQ(a.ShiftLimit[i], b.ShiftLimit[i]);
        EXPECT_EQ(a.MaxEnergy[i], b.MaxEnergy[i]);
        EXPECT_EQ(a.SeasonGamesOfPlayer[i], b.SeasonGamesOfPlayer[i]);
        EXPECT_EQ(a.DressedToday[i], b.DressedToday[i]);
        EXPECT_EQ(a.DisplayName[i], b.DisplayName[i]);
        if (sameRecords) {
            PlayerRecord p = a.GameRoster[i];
            p.GamesSinceReset = b.GameRoster[i].GamesSinceReset;
            EXPECT_EQ(codec::toSlot(p), codec::toSlot(b.GameRoster[i]));
        }
    }
    EXPECT_EQ(a.lines.LineRoleLive, b.lines.LineRoleLive);
    EXPECT_EQ(a.lines.LineFlagLive, b.lines.LineFlagLive);
    EXPECT_EQ(a.SeasonGames, b.SeasonGames);
}

TEST(TeamLoad, SecondLoadGivesWhatTheFirstGave) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 22, .gamesPlayed = 10});
    giveRealLines(lg);
    lg.write(dir.path());

    // The first load upgrades every record and makes lines and depth
    // charts for the new plan; what it saves must load to the same tables.
    GameSession first = sessionOn(dir.path());
    Random a(5);
    first.HkLoadTeam(kVisitor, 1, a);
    EXPECT_TRUE(first.loadChangedRecords(kVisitor));
    first.SaveTeam(kVisitor);
    EXPECT_FALSE(first.loadChangedRecords(kVisitor));

    GameSession second = sessionOn(dir.path());
    Random b(99);  // other draws: nothing here depends on them
    second.HkLoadTeam(kVisitor, 1, b);
    EXPECT_FALSE(second.loadChangedRecords(kVisitor));
    expectSameTables(first.side(kVisitor), second.side(kVisitor));
    for (int slot = 0; slot < 22; ++slot)
        EXPECT_EQ(second.side(kVisitor).player(slot).GamesSinceReset,
                  first.side(kVisitor).player(slot).GamesSinceReset + 1);

    // Remade from the roster, the charts come out as the first load made them.
    SideTables& made = second.side(kVisitor);
    auto lines = made.lines;
    auto roster = made.GameRoster;
    made.lines.clear();
    for (auto& p : made.GameRoster) p.DepthEven = {};
    second.remakeDepthAndLines(kVisitor);
    EXPECT_EQ(made.lines.LineRoleLive, lines.LineRoleLive);
    EXPECT_EQ(made.lines.LineFlagLive, lines.LineFlagLive);
    for (std::size_t i = 0; i < roster.size(); ++i) EXPECT_EQ(made.GameRoster[i].DepthEven, roster[i].DepthEven);

    // Loading without a save in between changes nothing on disk.
    auto before = readBytes(dir / "HKPLAYER");
    GameSession third = sessionOn(dir.path());
    Random c(99);
    third.HkLoadTeam(kVisitor, 1, c);
    expectSameTables(second.side(kVisitor), third.side(kVisitor));
    EXPECT_EQ(readBytes(dir / "HKPLAYER"), before);
}

// A session keeps the charts and lines it made from a roster and gives them
// again while what the fills read is the same: each remake must come out as
// a session that never made any would make it.
TEST(TeamLoad, AKeptRemakeFollowsWhatTheFillsRead) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 22, .gamesPlayed = 10});
    giveRealLines(lg);
    lg.write(dir.path());
    GameSession run = sessionOn(dir.path());
    Random draws(5);
    run.HkLoadTeam(kVisitor, 1, draws);

    struct Made {
        LineTables lines;
        std::vector<std::vector<std::uint8_t>> players;
        std::vector<std::string> notes;
    };
    auto made = [](GameSession& session) {
        Made m;
        m.notes = session.remakeDepthAndLines(kVisitor);
        const SideTables& s = session.side(kVisitor);
        m.lines = s.lines;
        for (const PlayerRecord& p : s.GameRoster) m.players.push_back(codec::toSlot(p));
        return m;
    };
    auto expectAsFresh = [&](const char* step) {
        SCOPED_TRACE(step);
        GameSession fresh = sessionOn(dir.path());
        fresh.side(kVisitor) = run.side(kVisitor);
        Made kept = made(run), anew = made(fresh);
        EXPECT_EQ(kept.lines.LineRoleLive, anew.lines.LineRoleLive);
        EXPECT_EQ(kept.lines.LineFlagLive, anew.lines.LineFlagLive);
        EXPECT_EQ(kept.players, anew.players);
        EXPECT_EQ(kept.notes, anew.notes);
        return kept;
    };
    Made first = expectAsFresh("as loaded");
    SideTables& side = run.side(kVisitor);
    auto firstCenter = std::ranges::find_if(side.GameRoster, [](const PlayerRecord& p) {
        return hasFlag(p, Flag::Center) && p.DepthEven[static_cast<std::size_t>(EvenDepth::Center)] == 10;
    });
    ASSERT_NE(firstCenter, side.GameRoster.end());
    PlayerRecord center = *firstCenter;

    // The first centre gone from the team: the lines are made anew without him.
    firstCenter->TeamId = 2;
    Made without = expectAsFresh("without the first centre");
    EXPECT_NE(without.lines.LineRoleLive, first.lines.LineRoleLive);
    // Back, but no longer a centre.
    firstCenter->TeamId = center.TeamId;
    firstCenter->PositionFlags[static_cast<std::size_t>(Flag::Center)] = 0;
    firstCenter->PositionFlags[static_cast<std::size_t>(Flag::LeftWing)] = 1;
    expectAsFresh("a winger now");
    // As he was: the first lines again.
    *firstCenter = center;
    Made again = expectAsFresh("as he was");
    EXPECT_EQ(again.lines.LineRoleLive, first.lines.LineRoleLive);
    EXPECT_EQ(again.players, first.players);
}

// A run's session keeps the plans it decoded: a plan saved since (through
// the run's images) is read as saved, as a session on the disk reads it.
TEST(TeamLoad, ARunReadsAPlanSavedSinceItsLastLoad) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 22, .gamesPlayed = 10});
    giveRealLines(lg);
    lg.write(dir.path());

    FolderNames names(dir.path());
    FileImages images;
    GameSession run({dir.path(), defaultRules(2018), &shippedEra(), nullptr, nullptr, &names, &images});
    Random a(5);
    run.HkLoadTeam(kVisitor, 1, a);
    run.HkLoadTeam(kHome, 2, a);
    EXPECT_NE(GamePlanRecord{}.GamePlanStamp, kGamePlanStamp);
    // The load set the new plans up; saving one writes it through the images.
    run.side(kVisitor).plan.GamePlanText.assign("Saved");
    run.SaveTeam(kVisitor);

    Random b(6);
    run.HkLoadTeam(kHome, 1, b);
    GameSession disk = sessionOn(dir.path());
    Random c(6);
    disk.HkLoadTeam(kHome, 1, c);
    EXPECT_EQ(run.side(kHome).plan.GamePlanText.str(), "Saved");
    EXPECT_EQ(run.side(kHome).plan.GamePlanStamp, kGamePlanStamp);
    EXPECT_EQ(codec::toSlot(run.side(kHome).plan), codec::toSlot(disk.side(kHome).plan));
    EXPECT_TRUE(std::ranges::equal(run.side(kHome).planAsRead(), disk.side(kHome).planAsRead()));
    // The other team's plan, never saved, is read as it stands.
    Random d(7);
    run.HkLoadTeam(kVisitor, 2, d);
    GameSession other = sessionOn(dir.path());
    Random e(7);
    other.HkLoadTeam(kVisitor, 2, e);
    EXPECT_EQ(codec::toSlot(run.side(kVisitor).plan), codec::toSlot(other.side(kVisitor).plan));
}

// A side keeps nothing of what it held before a load: not the team loaded
// there earlier, and not what a caller wrote into it before the first load.
TEST(TeamLoad, LoadLeavesNothingOfWhatTheSideHeld) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 22, .gamesPlayed = 10});
    giveRealLines(lg);
    lg.player(30).InactiveFlag = 99;  // team 2 dresses a man fewer
    lg.write(dir.path());

    GameSession clean = sessionOn(dir.path());
    Random a(8);
    clean.HkLoadTeam(kVisitor, 2, a);

    GameSession reused = sessionOn(dir.path());
    Random first(3);
    reused.HkLoadTeam(kVisitor, 1, first);
    Random b(8);
    reused.HkLoadTeam(kVisitor, 2, b);

    GameSession written = sessionOn(dir.path());
    SideTables& early = written.side(kVisitor);
    early.ShiftLimit.fill(-1);
    early.DressedToday.fill(1);
    early.notes.emplace_back("left over");
    early.GameRoster[40].PlayerId = 777;
    early.GameRoster[40].TeamId = 2;
    early.setPlayerAsRead(41, std::vector<std::uint8_t>(20, 5));
    early.SeasonGamesOfPlayer.fill(3);
    early.scheduleOpen = true;
    Random c(8);
    written.HkLoadTeam(kVisitor, 2, c);

    for (const GameSession* other : {&reused, &written}) {
        const SideTables& got = other->side(kVisitor);
        expectSameTables(clean.side(kVisitor), got);
        EXPECT_EQ(got.notes, clean.side(kVisitor).notes);
        EXPECT_EQ(got.absentToday, clean.side(kVisitor).absentToday);
        EXPECT_EQ(got.TeamId, 2);
        EXPECT_EQ(got.scheduleOpen, clean.side(kVisitor).scheduleOpen);
        // What a save compares against and a saved game fingerprints.
        for (int slot = 0; slot < kRosterSlots; ++slot)
            EXPECT_TRUE(std::ranges::equal(got.playerAsRead(slot), clean.side(kVisitor).playerAsRead(slot))) << slot;
    }
}

TEST(TeamLoad, AnOldRecordIsUpgradedByEveryStamp) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 1, .playersPerTeam = 20});
    giveRealLines(lg);
    TeamRecord& t = lg.team(1);
    t.City.assign("Toronto");
    t.Abbrev.assign("T/X");
    t.Nickname = {};
    t.LogoFile.assign("logo.gif");
    t.ForeColor = 0x12345678;
    t.BackColor = 0x00ABCDEF;
    t.FightsCount[0] = 500;
    t.Majors = 12;
    t.GoalsFiveOnFive[0] = 44;
    t.Streak = 4;
    t.CoachShort.assign("Hap Day");
    t.RealWins = 130;
    t.Arena.assign("x");
    PlayerRecord& p = lg.player(9);  // a forward
    p.ShortName.assign("Ab");
    p.PlayerYear = 0;
    p.PhotoFile.assign("face.gif");
    p.InactiveFlag = 7;
    p.ConsecutiveGames = 120;
    p.GamesSinceReset = 150;
    p.AvailStartMonth = 6;
    p.AvailStartDay = 31;
    p.AvailEndMonth = 3;
    p.AvailEndDay = 31;
    p.RatingPassing = 12;
    p.RatingPenaltyShot = 14;
    p.RatingOffense = 150;
    p.RatingDefense = 120;
    p.UsageSogAggressiveness = 5;
    p.OnIceGoals = {3, 4};
    p.ShotsBySpot[0][2] = 7;
    p.PowerPlayShots = {2, 1};
    p.LastGameGoals = 3;
    p.LastOpponent.assign("Boston");
    p.RealMinors = 5;
    p.ScoringChances = {8, 1};
    p.PenaltyShotsTaken = 3;
    p.GamesStarted = 4;
    p.HiddenSalary = 1000;
    p.HatTricks = 2;
    p.InjuryType = 4;
    p.GoaliePullAfterGoalsAllowed = 9;
    p.TotalRowTeams.assign("ABC");
    p.LineRoleStored[19] = 2;                        // line 20
    p.LineFlagStored[20] = 1;                        // line 21
    statLine(p, StatLineIndex::Replay).Assists = 6;  // no replay games: cleared
    lg.write(dir.path());

    GameSession game = sessionOn(dir.path());
    Random rng(3);
    game.HkLoadTeam(kVisitor, 1, rng);
    game.SaveTeam(kVisitor);
    const SideTables& side = game.side(kVisitor);

    RandomFile teams(dir / "HKTEAMS", 1500);
    TeamRecord team = readRecord<TeamRecord>(teams, 1);
    EXPECT_EQ(team.Abbrev.str(), "T");
    EXPECT_EQ(team.Nickname.str(), "Toronto");
    EXPECT_EQ(team.LogoFile.str(), "Toronto.jpg");
    EXPECT_EQ(team.Anthem, 1);
    EXPECT_EQ(team.AnthemStamp, kAnthemStamp);
    EXPECT_EQ(team.FightsCount[0], 0);
    EXPECT_EQ(team.Majors, 0);
    EXPECT_EQ(team.GoalsFiveOnFive[0], 0);
    EXPECT_EQ(team.Streak, 0);
    EXPECT_EQ(team.CoachName.str(), "Hap Day");
    EXPECT_EQ(team.CoachPhotoFile.str(), "Hap Day.jpg");
    EXPECT_EQ(team.RoadForeColor, 0x345678);  // road colours follow the home colours, made plain RGB
    EXPECT_EQ(team.RoadBackColor, 0xABCDEF);
    EXPECT_EQ(team.TimeZone, 0);
    EXPECT_EQ(team.RealWins, 0);
    EXPECT_TRUE(team.Arena.blank());
    EXPECT_EQ(team.ArenaFile.str(), "Arena.jpg");
    EXPECT_EQ(team.UniformFile[1].str(), "Uni-Home-Toronto.jpg");
    for (auto [stamp, value] : {std::pair{team.AkaStamp, kAkaStamp},
                                {team.ChancesStamp, kTeamChancesStamp},
                                {team.EmailStamp, kEmailStamp},
                                {team.CoachNameStamp, kCoachNameStamp},
                                {team.ColorStamp, kColorStamp},
                                {team.StreakStamp, kStreakStamp},
                                {team.GoalTypeStamp, kGoalTypeStamp},
                                {team.RoadColorStamp, kRoadColorStamp},
                                {team.ArenaStamp, kArenaStamp},
                                {team.RealRecordStamp, kRealRecordStamp},
                                {team.UniformStamp, kTeamUniformStamp},
                                {team.CoachPhotoStamp, kCoachPhotoStamp},
                                {team.LogoStamp, kLogoStamp}})
        EXPECT_EQ(stamp, value);

    GamePlanRecord plan = readRecord<GamePlanRecord>(RandomFile(dir / "HKgameplan", 32000), 1);
    EXPECT_EQ(plan.GamePlanStamp, kGamePlanStamp);  // the default coach ran
    EXPECT_EQ(plan.LineUsage, (std::array<std::uint8_t, 4>{6, 5, 4, 3}));
    EXPECT_EQ(plan.LineCountChoice, 1);
    EXPECT_EQ(plan.ActivateAdditionalPlayers, 1);
    EXPECT_EQ(plan.PullTrailingByOne, 80);
    EXPECT_EQ(plan.DefenseRosterCount, 2);
    EXPECT_EQ(plan.ZoneEntry, 3);
    EXPECT_EQ(plan.LineStrategy[0], 4);
    EXPECT_EQ(plan.LineStrategy[12], 0);  // set 13: a penalty-kill set
    for (auto [stamp, value] : {std::pair{plan.ZoneLineStamp, kZoneLineStamp},
                                {plan.LineCountStamp, kLineCountStamp},
                                {plan.UsageStamp, kUsageStamp},
                                {plan.DailyPreferenceStamp, kDailyPreferenceStamp},
                                {plan.ShadowStamp, kShadowStamp},
                                {plan.UseDailyLinesStamp, kUseDailyLinesStamp},
                                {plan.ActivateStamp, kActivateStamp},
                                {plan.PullStamp, kPlanPullStamp},
                                {plan.DefenseRosterCountStamp, kDefenseRosterCountStamp},
                                {plan.YankGoalieStamp, kYankGoalieStamp},
                                {plan.GamePlanTextStamp, kGamePlanTextStamp},
                                {plan.LineStrategyStamp, kLineStrategyStamp},
                                {plan.FaceoffOptionStamp, kFaceoffOptionStamp}})
        EXPECT_EQ(stamp, value);

    PlayerRecord q = readRecord<PlayerRecord>(RandomFile(dir / "HKPLAYER", 1500), 9);
    EXPECT_EQ(q.ShortName.str(), "Last9");
    EXPECT_EQ(q.PlayerYear, 2018);
    EXPECT_EQ(q.PhotoFile.str(), "Toronto.jpg");  // the team's logo
    EXPECT_EQ(q.InactiveFlag, 0);
    EXPECT_EQ(q.ConsecutiveGames, 99);
    EXPECT_EQ(q.GamesSinceReset, 1);  // 150 is out of range: 0, then this load
    EXPECT_EQ(q.AvailStartDay, 29);   // February
    EXPECT_EQ(q.AvailEndDay, 30);     // November
    EXPECT_EQ(q.RatingPassing, 10);
    EXPECT_EQ(q.RatingPenaltyShot, 10);
    EXPECT_EQ(q.RatingOffense, 100);
    EXPECT_EQ(q.RatingDefense, 100);
    EXPECT_EQ(q.UsageSogAggressiveness, 3);
    EXPECT_EQ(q.OnIceGoals, (std::array<std::int16_t, 2>{0, 0}));
    EXPECT_EQ(q.ShotsBySpot[0][2], 0);
    EXPECT_EQ(q.PowerPlayShots[0], 0);
    EXPECT_EQ(q.LastGameGoals, 0);
    EXPECT_TRUE(q.LastOpponent.blank());
    EXPECT_EQ(q.RealMinors, 0);
    EXPECT_EQ(q.ScoringChances[0], 0);
    EXPECT_EQ(q.PenaltyShotsTaken, 0);
    EXPECT_EQ(q.GamesStarted, 0);
    EXPECT_EQ(q.HiddenSalary, 0);
    EXPECT_EQ(q.HatTricks, 0);
    EXPECT_EQ(q.InjuryType, 0);
    EXPECT_EQ(q.GoaliePullAfterGoalsAllowed, 0);
    EXPECT_TRUE(q.TotalRowTeams.blank());
    EXPECT_EQ(statLine(q, StatLineIndex::Replay).Assists, 0);
    EXPECT_EQ(q.OriginalTeam.str(), "T");
    EXPECT_EQ(q.PullWhenFatigueBelow, 80);
    EXPECT_GE(q.FormBias, -10);
    EXPECT_LE(q.FormBias, 10);
    EXPECT_GE(q.Salary, 250);
    EXPECT_GT(q.RatingDurability, 0);
    for (auto [stamp, value] : {std::pair{q.OriginalTeamStamp, kOriginalTeamStamp},
                                {q.FormStamp, kFormStamp},
                                {q.UniformStamp, kUniformStamp},
                                {q.SportsmanshipStamp, std::uint8_t{0}},  // a 2018 player: no look-up
                                {q.EnforcerStamp, kEnforcerStamp},
                                {q.DurabilityStamp, kDurabilityStamp},
                                {q.RatingsAdjustStamp, kRatingsAdjustStamp},
                                {q.ZoneStamp, kZoneStamp},
                                {q.ExtraLinesStamp, kExtraLinesStamp},
                                {q.OnIceStamp, kOnIceStamp},
                                {q.HitRatingStamp, kHitRatingStamp},
                                {q.SpotStamp, kSpotStamp},
                                {q.PowerPlayShotStamp, kPowerPlayShotStamp},
                                {q.NicknameStamp, kNicknameStamp},
                                {q.LastGameStamp, kLastGameStamp},
                                {q.RealPenaltyStamp, kRealPenaltyStamp},
                                {q.ChancesStamp, kPlayerChancesStamp},
                                {q.PreferenceStamp, kPreferenceStamp},
                                {q.GoalieStatStamp, kGoalieStatStamp},
                                {q.PenaltyDrawnStamp, kPenaltyDrawnStamp},
                                {q.PullStamp, kPlayerPullStamp},
                                {q.InjuryTypeStamp, kInjuryTypeStamp},
                                {q.HatTrickStamp, kHatTrickStamp},
                                {q.HiddenSalaryStamp, kHiddenSalaryStamp}})
        EXPECT_EQ(stamp, value);
    // The default coach of a new plan made the lines anew, so the copied
    // extra lines went with the rest.
    EXPECT_EQ(side.lines.lineRole(22, 8), ForwardRole::None);

    // A goalie's preferences: his target starts are his real games.
    PlayerRecord g = readRecord<PlayerRecord>(RandomFile(dir / "HKPLAYER", 1500), 1);
    EXPECT_EQ(g.GoalieTargetStarts, real(lg.player(1)).GP);
    EXPECT_GE(g.GoalieRestGames, 4);
}

// The extra lines are copied from lines 20 and 21 once, at their stamp.
TEST(TeamLoad, ExtraLinesComeFromTheFourOnFourLines) {
    PlayerRecord p;
    p.LineRoleStored[19] = 2;
    p.LineFlagStored[20] = 1;
    upgradePlayerRecord(p, TeamRecord{});
    EXPECT_EQ(p.ExtraLineRole, (std::array<std::uint8_t, 2>{2, 0}));
    EXPECT_EQ(p.ExtraLineFlag, (std::array<std::uint8_t, 2>{0, 1}));
    p.LineRoleStored[19] = 3;
    upgradePlayerRecord(p, TeamRecord{});
    EXPECT_EQ(p.ExtraLineRole[0], 2);  // stamped: not again
}

TEST(TeamLoad, FormIsDrawnOnceAReplayHasBegun) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 1, .playersPerTeam = 20, .gamesPlayed = 5});
    giveRealLines(lg);
    lg.player(3).FormStamp = kFormStamp;
    lg.player(3).FormBias = 7;
    lg.player(4).FormStamp = kFormStamp;
    lg.player(4).FormBias = 7;
    statLine(lg.player(4), StatLineIndex::Replay).GP = 0;  // no replay game yet: drawn again
    lg.write(dir.path());
    int redrawn = 0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        GameSession game = sessionOn(dir.path());
        Random rng(seed);
        game.HkLoadTeam(kVisitor, 1, rng);
        EXPECT_EQ(game.side(kVisitor).player(2).FormBias, 7);
        redrawn += game.side(kVisitor).player(3).FormBias != 7;
    }
    EXPECT_GT(redrawn, 0);
}

// A last name two teammates share is told apart by the first name; a man
// of another team on the roster doesn't count, nor do blanks around a name.
TEST(TeamLoad, DisplayNamesOfSharedLastNames) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 20, .gamesPlayed = 3});
    giveRealLines(lg);
    lg.player(1).FirstName.assign("Ann");
    lg.player(1).LastName.assign("Lind");
    lg.player(2).FirstName.assign("Bo");
    lg.player(2).LastName.assign("  Lind");
    lg.player(3).LastName.assign("Vik");
    lg.player(25).LastName.assign("Vik");  // team 2's
    lg.team(1).Roster[20] = 25;
    // Alike in length and first letters, but not the same name; and two the same.
    lg.player(4).LastName.assign("Lindqvisk");
    lg.player(5).LastName.assign("Lindqvist");
    lg.player(6).FirstName.assign("Cy");
    lg.player(6).LastName.assign("Lindqvistson");
    lg.player(7).FirstName.assign("Di");
    lg.player(7).LastName.assign("Lindqvistson");
    lg.write(dir.path());

    GameSession game = sessionOn(dir.path());
    Random rng(1);
    game.HkLoadTeam(kVisitor, 1, rng);
    const SideTables& side = game.side(kVisitor);
    EXPECT_EQ(side.DisplayName[0], "Ann Lind");
    EXPECT_EQ(side.DisplayName[1], "Bo Lind");
    EXPECT_EQ(side.DisplayName[2], "Vik");
    EXPECT_EQ(side.DisplayName[3], "Lindqvisk");
    EXPECT_EQ(side.DisplayName[4], "Lindqvist");
    EXPECT_EQ(side.DisplayName[5], "Cy Lindqvistson");
    EXPECT_EQ(side.DisplayName[6], "Di Lindqvistson");
}

TEST(TeamLoad, RosterEntriesThatDontHoldAPlayer) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 20, .gamesPlayed = 3});
    giveRealLines(lg);
    lg.team(1).Roster[20] = 31000;  // past the last player number
    lg.team(1).Roster[21] = 25;     // a player of team 2
    int empty = lg.addPlayer(0, "", "");
    lg.player(empty) = PlayerRecord{};  // a free record
    lg.team(1).Roster[22] = static_cast<std::int16_t>(empty);
    lg.player(25).DepthEven[0] = 9;
    lg.write(dir.path());
    auto other = readRecord<PlayerRecord>(RandomFile(dir / "HKPLAYER", 1500), 25);

    GameSession game = sessionOn(dir.path());
    Random rng(1);
    game.HkLoadTeam(kVisitor, 1, rng);
    const SideTables& side = game.side(kVisitor);
    EXPECT_EQ(side.team.Roster[20], 0);
    EXPECT_FALSE(side.onTeam(21));
    EXPECT_EQ(side.DressedToday[21], 1);
    EXPECT_EQ(side.player(21).DepthEven[0], 0);  // cleared in the table only
    EXPECT_EQ(side.notes.size() >= 3, true);
    game.SaveTeam(kVisitor);
    // The other team's player is that team's to save.
    auto after = readRecord<PlayerRecord>(RandomFile(dir / "HKPLAYER", 1500), 25);
    EXPECT_EQ(codec::toSlot(after), codec::toSlot(other));
    TeamRecord team = readRecord<TeamRecord>(RandomFile(dir / "HKTEAMS", 1500), 1);
    EXPECT_EQ(team.Roster[21], 25);
    EXPECT_EQ(team.Roster[22], 0);  // the free record's slot is freed
}

TEST(TeamLoad, TeamThatHasNotPlayedTakesBackItsPlayers) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 20});
    lg.team(1).Roster[5] = 0;  // player 6 names team 1 but is on no slot
    lg.team(2).Roster[5] = 0;  // player 26 likewise, but team 2 has played
    lg.team(2).Wins = 3;
    lg.write(dir.path());
    GameSession game = sessionOn(dir.path());
    Random rng(1);
    game.HkLoadTeam(kVisitor, 1, rng);
    game.HkLoadTeam(kHome, 2, rng);
    EXPECT_EQ(game.side(kVisitor).team.Roster[5], 6);
    EXPECT_EQ(game.side(kHome).team.Roster[5], 0);
}

TEST(TeamLoad, SavingNeverShortensAFile) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 20, .freeAgents = 30});
    giveRealLines(lg);
    lg.withGamePlans = false;  // no plan file: the save makes room for team 2's
    lg.write(dir.path());
    auto players = fileLength(dir / "HKPLAYER");
    GameSession game = sessionOn(dir.path());
    Random rng(1);
    game.HkLoadTeam(kVisitor, 2, rng);
    game.SaveTeam(kVisitor);
    EXPECT_EQ(fileLength(dir / "HKPLAYER"), players);
    EXPECT_EQ(fileLength(dir / "HKTEAMS"), 288u * 1500);
    EXPECT_EQ(fileLength(dir / "HKgameplan"), 32000u + 31337);
    EXPECT_EQ(readRecord<GamePlanRecord>(RandomFile(dir / "HKgameplan", 32000), 2).GamePlanTeam, 2);
}

TEST(TeamLoad, RandomAbsencesFollowRealGamesMissed) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 25});
    for (int r = 1; r <= 25; ++r) real(lg.player(r)).GP = 2;  // team 1 missed nearly every game
    lg.team(2).Roster.fill(0);
    for (int r = 26; r <= 33; ++r) lg.team(2).Roster[std::size_t(r - 26)] = std::int16_t(r);  // 8 players
    lg.team(2).Wins = 1;  // a team that has played keeps its roster as it stands
    lg.write(dir.path());
    RulesRecord rules = defaultRules(2018);
    rules.InjuryCheck = 2;
    GameSession game = sessionOn(dir.path(), nullptr, rules);
    Random rng(11);
    game.HkLoadTeam(kVisitor, 1, rng);
    int out = 0;
    for (auto d : game.side(kVisitor).DressedToday) out += d;
    EXPECT_EQ(out - 25, static_cast<int>(game.side(kVisitor).absentToday.size()));  // 25 empty slots are out
    EXPECT_GE(game.side(kVisitor).absentToday.size(), 1u);
    EXPECT_GE(25 - static_cast<int>(game.side(kVisitor).absentToday.size()), 9);

    game.HkLoadTeam(kHome, 2, rng);  // eight men: nobody sits
    EXPECT_TRUE(game.side(kHome).absentToday.empty());

    game.loadGame(1, 2, 11, 1, rng);  // in a game the general manager decides
    EXPECT_TRUE(game.side(kVisitor).absentToday.empty());
}

TEST(TeamLoad, LeagueDayAndSeasonGamesFromTheSchedule) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 3, .playersPerTeam = 20});
    lg.write(dir.path());
    std::vector<GameRecord> rows;
    for (int d = 1; d <= 12; ++d) rows.push_back(newGameRecord(1, 2, 10, d, 2018));
    rows.push_back(newGameRecord(3, 1, 1, 15, 2018));
    for (int d = 0; d < 5; ++d) rows[std::size_t(d)].Status.assign("P");
    Schedule schedule = Schedule::fromRows(dir.path(), rows);
    GameSession game = sessionOn(dir.path(), &schedule);
    Random rng(1);
    game.HkLoadTeam(kVisitor, 1, rng);
    EXPECT_EQ(game.side(kVisitor).SeasonGames, 13);
    EXPECT_EQ(game.GameMonth, 2);  // October 6, the first game left
    EXPECT_EQ(game.GameDay, 6);
    game.HkLoadTeam(kHome, 3, rng);
    EXPECT_EQ(game.side(kHome).SeasonGames, 82);  // one game: the era's season

    for (auto& r : rows) r.Status.assign("P");
    schedule = Schedule::fromRows(dir.path(), rows);
    game.HkLoadTeam(kVisitor, 1, rng);
    EXPECT_EQ(game.GameMonth, 5);  // the day after January 15
    EXPECT_EQ(game.GameDay, 16);

    EXPECT_EQ(dayAfter(6, 28), (std::pair{7, 1}));   // February
    EXPECT_EQ(dayAfter(3, 30), (std::pair{4, 1}));   // November
    EXPECT_EQ(dayAfter(4, 30), (std::pair{4, 31}));  // December
    EXPECT_EQ(dayAfter(12, 31), (std::pair{1, 1}));  // August to September
}

// A run's rows by team are those a scan of the schedule finds, and a load
// through them counts the games a scan counts, as the rows' statuses change.
TEST(TeamLoad, ARunsRowsByTeamAreThoseAScanFinds) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 4, .playersPerTeam = 20});
    lg.write(dir.path());
    std::vector<GameRecord> rows;
    for (int d = 0; d < 60; ++d)
        rows.push_back(newGameRecord(1 + d % 4, 1 + (d * 3 + 1) % 4, 10 + d / 28, 1 + d % 28, 2018));
    rows.push_back(newGameRecord(2, 2, 11, 5, 2018));  // a team against itself counts once
    rows.push_back(newGameRecord(0, 3, 11, 6, 2018));  // no visitor
    rows.push_back(newGameRecord(kMaxTeams, 1, 11, 7, 2018));
    rows[7].Status.assign("D");
    Schedule schedule = Schedule::fromRows(dir.path(), rows);
    ScheduleTeamRows byTeam(schedule);
    for (int t : {-1, 0, 1, 2, 3, 4, 5, kMaxTeams, kMaxTeams + 1}) {
        std::vector<std::uint32_t> scanned;
        for (std::size_t r = 0; r < rows.size(); ++r)
            if (isTeamNumber(t) && (rows[r].VisitorTeam == t || rows[r].HomeTeam == t))
                scanned.push_back(static_cast<std::uint32_t>(r));
        auto kept = byTeam.of(t);
        EXPECT_EQ(std::vector<std::uint32_t>(kept.begin(), kept.end()), scanned) << "team " << t;
    }

    LeagueContext scan{dir.path(), defaultRules(2018), &shippedEra(), &schedule};
    LeagueContext run = scan;
    run.scheduleRows = &byTeam;
    GameSession a(scan), b(run);
    for (int step = 0; step < 3; ++step) {
        // Played and open rows as a run leaves them: the teams stay, the statuses move.
        for (std::size_t r = 0; r < schedule.size(); r += 2)
            if (step > 0 && statusOf(schedule.row(r + 1)) != kDeleted) schedule.row(r + 1).Status.assign("P");
        if (step == 2)
            for (std::size_t r = 1; r <= schedule.size(); ++r)
                if (statusOf(schedule.row(r)) != kDeleted) schedule.row(r).Status.assign("P");
        for (int team = 1; team <= 4; ++team) {
            SCOPED_TRACE(::testing::Message() << "step " << step << " team " << team);
            Random x(3), y(3);
            a.HkLoadTeam(kVisitor, team, x);
            b.HkLoadTeam(kVisitor, team, y);
            EXPECT_EQ(b.side(kVisitor).SeasonGames, a.side(kVisitor).SeasonGames);
            EXPECT_EQ(b.side(kVisitor).scheduleOpen, a.side(kVisitor).scheduleOpen);
            EXPECT_EQ(b.GameMonth, a.GameMonth);
            EXPECT_EQ(b.GameDay, a.GameDay);
        }
    }
    EXPECT_FALSE(b.side(kVisitor).scheduleOpen);
}

TEST(TeamLoad, InAGameOnlyFitPlayersAreOnTheLines) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 2, .playersPerTeam = 22});
    giveRealLines(lg);
    lg.write(dir.path());
    {
        GameSession setup = sessionOn(dir.path());
        Random rng(1);
        setup.HkLoadTeam(kVisitor, 1, rng);
        setup.SaveTeam(kVisitor);
    }
    // The first-line center is scratched for the game.
    GameSession look = sessionOn(dir.path());
    Random rng(2);
    look.HkLoadTeam(kVisitor, 1, rng);
    int center = look.side(kVisitor).lines.holderOf(1, ForwardRole::Center);
    ASSERT_GE(center, 0);
    PlayerRecord p = look.side(kVisitor).player(center);
    p.InactiveFlag = 99;
    writeRecord(RandomFile(dir / "HKPLAYER", 1500), std::size_t(p.PlayerId), p);
    // The first-line left wing was traded away in October, the second-line
    // one came in November; every goalie was traded away too.
    int gone = look.side(kVisitor).lines.holderOf(1, ForwardRole::LeftWing);
    int came = look.side(kVisitor).lines.holderOf(2, ForwardRole::LeftWing);
    ASSERT_GE(gone, 0);
    ASSERT_GE(came, 0);
    auto window = [&](int slot, int startMonth, int startDay, int endMonth, int endDay) {
        PlayerRecord q = look.side(kVisitor).player(slot);
        q.AvailStartMonth = std::uint8_t(startMonth);
        q.AvailStartDay = std::uint8_t(startDay);
        q.AvailEndMonth = std::uint8_t(endMonth);
        q.AvailEndDay = std::uint8_t(endDay);
        writeRecord(RandomFile(dir / "HKPLAYER", 1500), std::size_t(q.PlayerId), q);
    };
    window(gone, 1, 1, 2, 20);  // season months: 2 is October
    window(came, 3, 3, 12, 31);
    std::vector<int> goalies;
    for (int slot = 0; slot < kRosterSlots; ++slot)
        if (look.side(kVisitor).onTeam(slot) && isGoalie(look.side(kVisitor).player(slot))) goalies.push_back(slot);
    ASSERT_FALSE(goalies.empty());
    for (int g : goalies) window(g, 1, 1, 2, 1);

    GameSession game = sessionOn(dir.path());
    game.loadGame(1, 2, 11, 3, rng);
    EXPECT_TRUE(game.GameActive);
    EXPECT_EQ(game.GameMonth, 3);
    const SideTables& side = game.side(kVisitor);
    int now = side.lines.holderOf(1, ForwardRole::Center);
    EXPECT_GE(now, 0);
    EXPECT_NE(now, center);
    for (int line = 1; line <= kLineSets; ++line) {
        EXPECT_FALSE(side.lines.onLine(line, center)) << line;
        EXPECT_FALSE(side.lines.onLine(line, gone)) << line;
    }
    // His first day counts; a side is never left without its goalies.
    EXPECT_EQ(side.DressedToday[std::size_t(came)], 0);
    EXPECT_EQ(side.DressedToday[std::size_t(gone)], 1);
    for (int g : goalies) EXPECT_EQ(side.DressedToday[std::size_t(g)], 0) << g;
}

}  // namespace
}  // namespace tallyrink

namespace tallyrink {
namespace {

// A short roster is told: who plays in goal without a goalie, who fills the
// defense when three defensemen can't make three pairs.
TEST(TeamLoad, ShortRosterIsReportedInTheNotes) {
    TempDir dir;
    auto lg = LeagueFixture::make({.teams = 1, .playersPerTeam = 14});
    giveRealLines(lg);
    lg.player(1).PositionFlags = {1, 0, 0, 0, 0};  // both goalies become wings
    lg.player(2).PositionFlags = {0, 0, 1, 0, 0};
    for (int r = 6; r <= 8; ++r) lg.player(r).PositionFlags = {0, 1, 0, 0, 0};  // three defensemen left
    lg.write(dir.path());
    GameSession game = sessionOn(dir.path());
    Random rng(4);
    game.HkLoadTeam(kVisitor, 1, rng);
    const auto& notes = game.side(kVisitor).notes;
    auto said = [&](const std::string& text) {
        return std::any_of(notes.begin(), notes.end(), [&](const std::string& n) { return n.find(text) != n.npos; });
    };
    EXPECT_TRUE(said("would play in goal"));
    EXPECT_TRUE(said("Even-strength pair 2, right defense"));
    EXPECT_TRUE(said("(a forward)"));
    EXPECT_TRUE(said("New game plan"));
}

}  // namespace
}  // namespace tallyrink
