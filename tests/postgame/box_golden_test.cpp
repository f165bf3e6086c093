// A seeded game of a made-up league, played and posted: its printed box
// score must match the checked-in text. When play changes on purpose,
// regenerate the text with
//     TALLYRINK_UPDATE_GOLDEN=1 ./build/tests/tallyrink_tests --gtest_filter='BoxGolden.*'
// and review the difference before committing it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include <fmt/core.h>

#include "engine/game.h"
#include "league/files.h"
#include "league/schedule.h"
#include "operations/blank_league.h"
#include "operations/era_figures.h"
#include "operations/new_league.h"
#include "postgame/box_text.h"
#include "postgame/game_summary.h"
#include "support/made_up_game.h"
#include "support/source_tree.h"
#include "support/temp_dir.h"

namespace tallyrink {
namespace {

using test::shippedEra;
using testing::TempDir;

std::string seededBoxScore(bool html) {
    TempDir dir;
    NewLeagueOptions options;
    options.teams = 4;
    options.year = 2017;
    options.seed = 12;
    GeneratedLeague league = generateLeague(options, eraTargets(shippedEra(), 2017));
    writeLeagueFolder(dir.path(), league.files);
    ActiveTeams active;
    std::vector<int> teams;
    for (int t = 1; t <= kMaxTeams; ++t)
        if (league.files.teams[std::size_t(t - 1)].TeamActive == 1) {
            teams.push_back(t);
            active.set(std::size_t(t));
        }
    saveNewSchedule(dir.path(), {newGameRecord(teams[2], teams[0], 11, 4, 2017)}, active);
    Schedule schedule = Schedule::load(dir.path());

    RulesRecord rules = defaultRules(2017);
    GameSession session({dir.path(), rules, &shippedEra(), &schedule});
    session.GameActive = true;
    Random draws(2024);
    session.loadGame(teams[2], teams[0], 11, 4, draws);
    clearGameEntries(session);
    GameOptions game;
    game.seed = 2024;
    Game g(session, game);
    g.playToEnd();
    auto box = test::postAndReadBox(session, g, dir.path());
    BoxNames names = boxNamesFromLeague(*box, dir.path());
    if (html) return boxScoreHtml(*box, names);
    std::string text;
    for (const auto& line : boxScoreText(*box, names)) text += line + "\n";
    // The text the box file keeps is the same box score, up to its last line.
    std::string kept;
    for (const auto& line : box->keptText()) kept += line + "\n";
    EXPECT_EQ(kept, text.substr(0, kept.size()));
    return text;
}

TEST(BoxGolden, ASeededGamesBoxScoreIsTheCheckedInText) {
    fs::path golden = test::sourceDir() / "tests/postgame/golden/seeded_box_score.txt";
    std::string text = seededBoxScore(false);
    if (std::getenv("TALLYRINK_UPDATE_GOLDEN") != nullptr) {
        writeFileAtomic(golden, text);
        GTEST_SKIP() << "rewrote " << golden;
    }
    auto bytes = readBytes(golden);
    ASSERT_FALSE(bytes.empty()) << golden << " is missing: run with TALLYRINK_UPDATE_GOLDEN=1";
    EXPECT_EQ(text, std::string(bytes.begin(), bytes.end()));
    EXPECT_EQ(text, seededBoxScore(false));  // the same seed gives the same game
}

// A player's name fills the first 22 columns of his row, cut to 21
// characters: counted in characters and columns, not bytes, for a name that
// isn't plain ASCII.
TEST(BoxGolden, NamesAreCutAndPaddedByCharacters) {
    BoxFile box;
    BoxNames names;
    const std::array<std::string, 4> players{"A. Short", "B. Averyveryverylongname", "D. Pastrňák",
                                             "E. Ääääääääääääääääääääää"};
    for (std::size_t k = 0; k < players.size(); ++k) {
        std::size_t at = BoxFile::at(0, static_cast<int>(k));
        box.r1.BoxPlayerId[at] = static_cast<std::int16_t>(k + 1);
        box.r1.BoxLines[at].GP = 1;
        box.r1.BoxToi[at] = 600;
        names.player[at] = players[k];
        names.position[at] = "F";
    }
    auto text = boxScoreText(box, names);
    for (const std::string& name : players) {
        std::string cell = fmt::format("{:<22.21}", name);
        auto row = std::find_if(text.begin(), text.end(),
                                [&](const std::string& line) { return line.compare(0, cell.size(), cell) == 0; });
        ASSERT_NE(row, text.end()) << name;
        EXPECT_NE((*row)[cell.size()], ' ') << name;  // the first cell starts there
    }
}

// Shares and save fractions on exact halves of their last digit (1 of 80
// is 1.25%, 13 of 16 is .8125) round as fmt rounds them, in both forms.
TEST(BoxGolden, PercentagesRoundAsFmtDoes) {
    struct Case {
        int won, lost, saves, allowed;
    };
    for (const Case& c : {Case{1, 79, 13, 3}, Case{1, 7, 1, 15}, Case{3, 77, 5, 11}, Case{0, 1, 0, 3}}) {
        BoxFile box;
        BoxNames names;
        std::size_t skater = BoxFile::at(0, 0), goalie = BoxFile::at(0, 1);
        for (std::size_t at : {skater, goalie}) {
            box.r1.BoxPlayerId[at] = static_cast<std::int16_t>(at + 1);
            box.r1.BoxLines[at].GP = 1;
            box.r1.BoxToi[at] = 600;
        }
        names.player[skater] = "A. Skater";
        names.position[skater] = "C";
        names.player[goalie] = "B. Goalie";
        names.position[goalie] = "G";
        box.r1.BoxLines[skater].FaceoffsWon = static_cast<std::int16_t>(c.won);
        box.r1.BoxLines[skater].FaceoffsLost = static_cast<std::int16_t>(c.lost);
        box.r1.BoxLines[goalie].Saves = static_cast<std::int16_t>(c.saves);
        box.r1.BoxLines[goalie].GoalsAllowed = static_cast<std::int16_t>(c.allowed);
        std::string share = fmt::format(" {:.1f} ", 100.0 * c.won / (c.won + c.lost));
        std::string fraction = fmt::format(" {:.3f} ", double(c.saves) / (c.saves + c.allowed));
        auto rowOf = [](const std::vector<std::string>& text, std::string_view name) {
            auto row =
                std::find_if(text.begin(), text.end(), [&](const std::string& line) { return line.starts_with(name); });
            return row == text.end() ? std::string() : *row;
        };
        auto text = boxScoreText(box, names);
        EXPECT_NE(rowOf(text, "A. Skater").find(share), std::string::npos) << share;
        EXPECT_NE(rowOf(text, "B. Goalie").find(fraction), std::string::npos) << fraction;
        std::string html = boxScoreHtml(box, names);
        EXPECT_NE(html.find("<td>" + share.substr(1, share.size() - 2) + "</td>"), std::string::npos) << share;
        EXPECT_NE(html.find("<td>" + fraction.substr(1, fraction.size() - 2) + "</td>"), std::string::npos);
    }
}

TEST(BoxGolden, TheWebPageHoldsTheSameGame) {
    std::string html = seededBoxScore(true);
    EXPECT_EQ(html.rfind("<!DOCTYPE html>", 0), 0u);
    EXPECT_NE(html.find("Scoring Summary"), std::string::npos);
    EXPECT_NE(html.find("Team Totals"), std::string::npos);
    EXPECT_NE(html.find("</html>"), std::string::npos);
}

}  // namespace
}  // namespace tallyrink
