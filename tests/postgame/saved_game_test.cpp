#include "postgame/saved_game.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>

#include "league/files.h"
#include "presentation/call_menu.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::madeUpLeague;

// Keeps the question a game asked last, as a screen would.
class AskRecorder final : public NullPresenter {
public:
    void AskPlayCall(const Game&, int side) override { ask_ = {1, side}; }
    void AskLineChange(const Game&, int side) override { ask_ = {2, side}; }
    void ShowPause(const Game&) override {}
    void GameOver(const Game&) override {}
    std::pair<int, int> take() { return std::exchange(ask_, {0, 0}); }

private:
    std::pair<int, int> ask_{0, 0};
};

// Two people coaching: each answer is picked from the menu by the state
// alone, so a resumed game answers as the straight one did without drawing
// from the game.
void answer(RecordedGame& g, int side) {
    auto choices = callChoices(g.game(), side);
    if (choices.empty()) {
        g.proceed();
        return;
    }
    const GameState& s = g.game().state();
    const CallChoice& c = choices[static_cast<std::size_t>(s.steps * 7 + s.Clock + side) % choices.size()];
    if (c.call == Call::PlayTo)
        g.offense(c.call, c.target);
    else
        g.offense(c.call);
}

// Plays on until `stop` holds at a decision (or the game ends). Returns true
// when it stopped at a decision.
bool playUntil(RecordedGame& g, AskRecorder& p, const std::function<bool(const Game&)>& stop) {
    while (!g.game().state().GameEndedFlag) {
        auto [ask, side] = p.take();
        if (ask == 0) {
            g.drive();
            continue;
        }
        if (stop(g.game())) {
            // Leave the question standing for whoever goes on.
            if (ask == 1)
                p.AskPlayCall(g.game(), side);
            else
                p.AskLineChange(g.game(), side);
            return true;
        }
        answer(g, side);
    }
    return false;
}

bool never(const Game&) { return false; }

struct Played {
    std::vector<std::uint8_t> box;
    std::vector<std::uint8_t> rosters;
    std::array<int, 2> score{};
    int steps = 0;
    GameEnd end = GameEnd::None;
};

Played outcome(const Game& game, const SavedGameStart& start) {
    Played out;
    out.box = boxBytes(*boxOfGameInProgress(game, start));
    for (int side : {kVisitor, kHome})
        for (const PlayerRecord& p : game.session().side(side).GameRoster) {
            auto bytes = codec::toSlot(p);
            out.rosters.insert(out.rosters.end(), bytes.begin(), bytes.end());
        }
    out.score = game.finalScore();
    out.steps = game.state().steps;
    out.end = game.state().endedBy;
    return out;
}

// A game with both sides coached by the robot, on its own session.
struct Table {
    explicit Table(const SavedGameStart& start)
        : session(LeagueContext{madeUpLeague().dir.path(), test::madeUpRules(), &test::shippedEra(), nullptr}) {
        loadGameForPlay(session, start);
        game = std::make_unique<Game>(session, start.gameOptions(), &presenter);
        recorded = std::make_unique<RecordedGame>(*game);
    }
    GameSession session;
    AskRecorder presenter;
    std::unique_ptr<Game> game;
    std::unique_ptr<RecordedGame> recorded;
};

SavedGameStart startOf(std::uint64_t seed) {
    SavedGameStart s;
    s.seed = seed;
    s.scheduleRow = 7;
    s.visitor = madeUpLeague().teams.at(0);
    s.home = madeUpLeague().teams.at(1);
    s.calendarMonth = 11;
    s.day = 10;
    s.year = 2017;
    s.coach = {CoachKind::Human, CoachKind::Human};
    s.noDisplay = false;
    return s;
}

Played straight(const SavedGameStart& start) {
    Table t(start);
    t.recorded->start();
    playUntil(*t.recorded, t.presenter, never);
    return outcome(*t.game, start);
}

// Plays to the cut, saves, resumes the file on a fresh session and plays
// on; the result must be the straight game's to the byte.
void expectResumeMatches(const SavedGameStart& start, const std::function<bool(const Game&)>& cut,
                         const Played& expected) {
    testing::TempDir dir;
    std::filesystem::path file;
    {
        Table t(start);
        t.recorded->start();
        ASSERT_TRUE(playUntil(*t.recorded, t.presenter, cut)) << "the game ended before the cut";
        SavedGameStart saved = start;
        saved.teamsFingerprint = teamsFingerprint(t.session);
        file = HkSaveGame(dir.path(), *t.recorded, saved, "11/23/2026");
    }
    SavedGame saved = readSavedGame(file);
    Table t(saved.start);
    ResumeGame(*t.recorded, saved, t.session);
    EXPECT_EQ(t.recorded->inputs(), saved.inputs);
    playUntil(*t.recorded, t.presenter, never);
    Played got = outcome(*t.game, start);
    EXPECT_EQ(got.score, expected.score);
    EXPECT_EQ(got.steps, expected.steps);
    EXPECT_EQ(got.end, expected.end);
    EXPECT_TRUE(got.box == expected.box) << "the box of the resumed game differs";
    EXPECT_TRUE(got.rosters == expected.rosters) << "the players' lines of the resumed game differ";
}

bool penaltyRunning(const Game& g) {
    for (const auto& box : g.state().pen.box)
        for (const BoxPenalty& p : box)
            if (p.running && p.PenaltySeconds > 0) return true;
    return false;
}

TEST(SavedGame, ResumedGameEndsAsTheStraightGame) {
    SavedGameStart start = startOf(11);
    Played expected = straight(start);
    ASSERT_TRUE(expected.end != GameEnd::None);

    SCOPED_TRACE("early in the first period");
    expectResumeMatches(
        start, [](const Game& g) { return g.state().steps >= 25; }, expected);
    SCOPED_TRACE("during a penalty");
    expectResumeMatches(start, penaltyRunning, expected);
    SCOPED_TRACE("between periods");
    expectResumeMatches(
        start, [](const Game& g) { return g.state().Period == 2 && g.state().Clock == g.periodSeconds(); }, expected);
    SCOPED_TRACE("late in the third");
    expectResumeMatches(
        start, [](const Game& g) { return g.state().Period == 3 && g.state().Clock < 120; }, expected);
}

TEST(SavedGame, ResumesInOvertime) {
    // The first seed whose game reaches overtime.
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        SavedGameStart start = startOf(seed);
        Played expected = straight(start);
        if (expected.end != GameEnd::Overtime && expected.end != GameEnd::Shootout) continue;
        expectResumeMatches(
            start, [&](const Game& g) { return g.state().Period > g.periods(); }, expected);
        return;
    }
    GTEST_SKIP() << "no seed reached overtime";
}

TEST(SavedGame, ResumesInTheShootout) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SavedGameStart start = startOf(seed);
        Played expected = straight(start);
        if (expected.end != GameEnd::Shootout) continue;
        expectResumeMatches(
            start, [](const Game& g) { return g.state().PlayZone == Zone::Shootout; }, expected);
        return;
    }
    GTEST_SKIP() << "no seed reached a shootout";
}

class SavedFile : public ::testing::Test {
protected:
    void SetUp() override {
        start_ = startOf(5);
        Table t(start_);
        t.recorded->start();
        ASSERT_TRUE(playUntil(*t.recorded, t.presenter,
                              [](const Game& g) { return g.state().Period == 2 && g.state().Clock < 754; }));
        start_.teamsFingerprint = teamsFingerprint(t.session);
        file_ = HkSaveGame(dir_.path(), *t.recorded, start_, "11/23/2026");
        inputs_ = t.recorded->inputs();
        const GameState& s = t.game->state();
        clockText_ = fmt::format("P2 {}{:02}.HAL", s.Clock / 60, s.Clock % 60);
        score_ = s.Score;
    }
    testing::TempDir dir_;
    SavedGameStart start_;
    std::filesystem::path file_;
    std::vector<GameInput> inputs_;
    std::string clockText_;
    std::array<int, 2> score_{};
};

TEST_F(SavedFile, IsNamedByDateTeamsScoreAndClock) {
    std::string name = file_.filename().string();
    EXPECT_EQ(name.rfind("11-23-2026 Nov-10 ", 0), 0u) << name;
    EXPECT_TRUE(name.ends_with(clockText_)) << name;
    EXPECT_EQ(savedGames(dir_.path()), std::vector<std::filesystem::path>{file_});
}

TEST_F(SavedFile, BoxShowsTheGameAsItStood) {
    SavedGame g = readSavedGame(file_);
    EXPECT_EQ(g.box->r1.BoxPeriod, 2);
    EXPECT_EQ(g.box->r1.BoxScore[0], score_[0]);
    EXPECT_EQ(g.box->r1.BoxScore[1], score_[1]);
    EXPECT_NE(g.box->r1.BoxZone.str(), "GAMEOVER");
    EXPECT_EQ(g.inputs, inputs_);
    EXPECT_EQ(g.start.seed, start_.seed);
    EXPECT_EQ(g.start.scheduleRow, 7u);
    EXPECT_EQ(g.start.coach[0], CoachKind::Human);
}

TEST_F(SavedFile, ChangedTeamsOrInputsRefuseToResume) {
    {
        SavedGame g = readSavedGame(file_);
        g.start.teamsFingerprint ^= 1;
        g.inputs.pop_back();
        Table t(g.start);
        try {
            ResumeGame(*t.recorded, g, t.session);
            FAIL() << "resumed a game that isn't the saved one";
        } catch (const ResumeMismatch& e) {
            EXPECT_NE(std::string(e.what()).find("have changed"), std::string::npos) << e.what();
        }
    }
    SavedGame g = readSavedGame(file_);
    g.inputs.pop_back();
    Table t(g.start);
    EXPECT_THROW(ResumeGame(*t.recorded, g, t.session), ResumeMismatch);
}

TEST_F(SavedFile, BrokenFilesAreNamedNotCrashed) {
    auto bytes = readBytes(file_);
    auto cut = dir_.path() / "cut.HAL";
    writeFileAtomic(cut, std::span(bytes).first(4 * kBoxSlot + 40));
    EXPECT_THROW(readSavedGame(cut), FileError);

    auto plain = dir_.path() / "plain.HAL";
    writeFileAtomic(plain, std::span(bytes).first(4 * kBoxSlot));
    try {
        readSavedGame(plain);
        FAIL();
    } catch (const FileError& e) {
        EXPECT_NE(std::string(e.what()).find("plain.HAL"), std::string::npos);
    }

    auto foreign = bytes;
    foreign[4 * kBoxSlot + 93] = 77;  // an input of no known kind
    auto odd = dir_.path() / "odd.HAL";
    writeFileAtomic(odd, foreign);
    EXPECT_THROW(readSavedGame(odd), FileError);
}

}  // namespace
}  // namespace tallyrink
