#include "app/terminal_presenter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/made_up_game.h"

namespace tallyrink {
namespace {

struct Coached {
    std::unique_ptr<GameSession> session = test::loadedGame(test::madeUpRules(), 5);
    std::ostringstream out;
    cli::TerminalPresenter presenter{out, {.pace = 0}};

    std::unique_ptr<Game> game(int humanSide) {
        GameOptions options;
        options.seed = 9;
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
    // Without saving on offer "s" is no choice.
    std::istringstream plain("s\nq\n");
    EXPECT_EQ(cli::coachRecordedGame(recorded, c.presenter, plain, c.out, false), cli::CoachingEnd::GameOver);
    EXPECT_NE(c.out.str().find("Invalid Choice!"), std::string::npos);
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
