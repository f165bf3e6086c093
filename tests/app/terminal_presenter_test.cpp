#include "app/terminal_presenter.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

#include "support/made_up_game.h"

namespace tallyrink {
namespace {

struct Coached {
    std::unique_ptr<GameSession> session = test::loadedGame(test::madeUpRules(), 5);
    std::ostringstream out;
    cli::TerminalPresenter presenter{out, {.pace = 0}};

    std::unique_ptr<Game> game(int humanSide, std::uint64_t seed = 9) {
        GameOptions options;
        options.seed = seed;
        options.noDisplay = false;
        options.coach[static_cast<std::size_t>(humanSide)] = CoachKind::Human;
        return std::make_unique<Game>(*session, options, &presenter);
    }
};

TEST(TerminalCoaching, TheUserCallsPlaysUntilInputEndsThenTheComputerFinishes) {
    Coached c;
    auto game = c.game(kHome);
    std::istringstream in("2\n\n9\n1\n");
    cli::coachGame(*game, c.presenter, in, c.out);
    std::string text = c.out.str();
    EXPECT_TRUE(game->state().GameEndedFlag);
    EXPECT_NE(text.find("select how to proceed:"), std::string::npos) << text;
    EXPECT_NE(text.find("The computer coaches the rest of the game."), std::string::npos) << text;
    EXPECT_NE(text.find("-- 3rd period --"), std::string::npos) << text;
}

TEST(TerminalCoaching, AKeyTheBoxDoesNotOfferIsRefusedAndAskedAgain) {
    Coached c;
    auto game = c.game(kVisitor);
    std::istringstream in("x\n1\nq\n");
    cli::coachGame(*game, c.presenter, in, c.out);
    std::string text = c.out.str();
    EXPECT_NE(text.find("Invalid Choice!"), std::string::npos) << text;
    EXPECT_TRUE(game->state().GameEndedFlag);
    // Both coaches were computers after "q", so nothing more was asked.
    EXPECT_EQ(game->coach(kVisitor), CoachKind::Computer);
}

// A penalty shot for the user's side waits for his one call; then it is
// taken by the man who was fouled and the game goes on.
TEST(TerminalCoaching, APenaltyShotWaitsForTheUsersShootCall) {
    Coached c;
    auto game = c.game(kVisitor);
    game->InitGame();
    GameState& e = game->editState();
    const int fouled = e.onIce[kVisitor].slot[1];
    e.PlayZone = Zone::PenaltyShot;
    e.PuckTeam = kVisitor;
    e.find.Carrier = fouled;
    RecordedGame recorded(*game);
    std::istringstream in("1\nq\n");
    cli::coachRecordedGame(recorded, c.presenter, in, c.out, false);
    std::string text = c.out.str();
    EXPECT_NE(text.find("1-Shoot"), std::string::npos) << text;
    EXPECT_NE(text.find("will take the penalty shot"), std::string::npos) << text;
    const PlayerRecord& p = c.session->side(kVisitor).player(fouled);
    // A shootout at the end counts his attempts there too.
    const int attempts = statLine(p, StatLineIndex::Game).PenaltyShotAttempts;
    if (game->state().ShootoutUsed[kVisitor][static_cast<std::size_t>(fouled)])
        EXPECT_GE(attempts, 2) << text;
    else
        EXPECT_EQ(attempts, 1) << text;
    EXPECT_TRUE(game->state().GameEndedFlag);
}

TEST(TerminalCoaching, SaveStopsAtTheCallAndLeavesTheQuestionStanding) {
    Coached c;
    auto game = c.game(kHome);
    RecordedGame recorded(*game);
    recorded.start();
    std::istringstream in("1\ns\n1\n");
    EXPECT_EQ(cli::coachRecordedGame(recorded, c.presenter, in, c.out, true), cli::CoachingEnd::SaveAsked);
    EXPECT_FALSE(game->state().GameEndedFlag);
    EXPECT_NE(c.out.str().find("s: save the game and stop"), std::string::npos);
    EXPECT_NE(c.presenter.takePending().ask, cli::TerminalPresenter::Ask::None);
    std::string rest;
    std::getline(in, rest);
    EXPECT_EQ(rest, "1");  // nothing read past the "s"

    // Ctrl-C: the next decision saves without waiting for an answer.
    c.presenter.AskPlayCall(*game, kHome);
    std::istringstream none("");
    EXPECT_EQ(cli::coachRecordedGame(recorded, c.presenter, none, c.out, true, [] { return true; }),
              cli::CoachingEnd::SaveAsked);
    // Without saving on offer "s" is no choice (asked in open play, where
    // a faceoff's "go on" would take any key).
    game->editState().PlayZone = Zone::NeutralZone;
    game->editState().PuckTeam = kHome;
    c.presenter.AskPlayCall(*game, kHome);
    std::istringstream plain("s\nq\n");
    EXPECT_EQ(cli::coachRecordedGame(recorded, c.presenter, plain, c.out, false), cli::CoachingEnd::GameOver);
    EXPECT_NE(c.out.str().find("Invalid Choice!"), std::string::npos);
}

// A coach who always takes the first choice reaches the offensive zone,
// where the open men are offered first, each with where he stands and the
// grades of his shot and of a pass to him, then the four plays.
TEST(TerminalCoaching, TheOffensiveZoneMenuOffersTheOpenMenWithTheirGrades) {
    // A game where the user makes the first choice every time reaches the
    // offensive zone only now and then: a few games give enough menus.
    int menus = 0;
    for (std::uint64_t seed : {9u, 10u, 11u}) {
        Coached c;
        auto game = c.game(kVisitor, seed);
        std::string script;
        for (int i = 0; i < 300; ++i) script += "1\n";
        std::istringstream in(script + "q\n");
        cli::coachGame(*game, c.presenter, in, c.out);
        std::string text = c.out.str();
        static const std::regex row(
            R"(1-[^ ].* \((Puck|Behind|Screen|In|Mid|Out), shot \d+, pass \d+\).*7-Shoot  8-Pass  9-Dump  0-Retreat)");
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            if (line.find("7-Shoot") == std::string::npos) continue;
            ++menus;
            EXPECT_TRUE(std::regex_search(line, row)) << line;
            // The carrier is always among the men shown.
            EXPECT_NE(line.find("(Puck,"), std::string::npos) << line;
        }
        EXPECT_TRUE(game->state().GameEndedFlag);
    }
    EXPECT_GT(menus, 5);
}

// At a stoppage the coach sends out other lines and the game tells it; in
// play, or after his side iced the puck, he is refused.
TEST(TerminalCoaching, TheCoachChangesLinesAtAStoppageOnly) {
    Coached c;
    auto game = c.game(kHome);
    std::istringstream in("l 3 2\nl 7\nq\n");
    cli::coachGame(*game, c.presenter, in, c.out);
    std::string text = c.out.str();
    EXPECT_NE(text.find("forward unit 3 of 4, defense pair 2 of 3"), std::string::npos) << text;
    EXPECT_NE(text.find("There is no forward unit 7: choose 1 to 4"), std::string::npos) << text;

    auto refused = c.game(kHome);
    refused->InitGame();
    GameState& s = refused->editState();
    s.PlayZone = Zone::NeutralZone;
    EXPECT_EQ(refused->HumanLineChange(kHome, 2, 1), "You may not make a line change in this situation!");
    s.PuckTeam = kVisitor;
    s.PlayZone = Zone::OffenseZone;
    EXPECT_EQ(refused->HumanGoaliePull(kHome, true),
              "You may not replace the goalie during an offensive zone play in progress!");
    // The home side iced it: the draw is in its end and the rules keep its men on.
    s.PlayZone = faceoffZone(FaceoffSpot::Defense, kHome, 1);
    s.LastPlayResult = Result::Clear;
    EXPECT_EQ(refused->HumanLineChange(kHome, 2, 1), "You may not change lines after icing!");
    EXPECT_EQ(refused->HumanLineChange(kVisitor, 2, 1), "");
    EXPECT_EQ(refused->linesOnIce(kVisitor).forwards, 2);
    EXPECT_EQ(refused->linesOnIce(kHome).forwards, 1);
}

TEST(TerminalCoaching, ScoreboardShowsClockScoreShotsAndStrength) {
    Coached c;
    auto game = c.game(kHome);
    game->InitGame();
    std::string board = cli::TerminalPresenter::scoreboard(*game);
    EXPECT_NE(board.find("1st 20:00"), std::string::npos) << board;
    EXPECT_NE(board.find("5-on-5"), std::string::npos) << board;
    EXPECT_NE(board.find("(0 SOG)"), std::string::npos) << board;
}

}  // namespace
}  // namespace tallyrink
