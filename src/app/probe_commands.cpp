// A look at the chance table of one schedule game: the game is loaded and
// set up in a few typical states (a faceoff won, the neutral zone, the
// offensive zone with a carrier, the set-up shooter, a power play, a rush),
// and each state's chances are printed call by call, as the analysis grid
// of a game screen shows them. Nothing is played and nothing is written.

#include <fmt/core.h>

#include <memory>
#include <optional>

#include "app/cli.h"
#include "engine/game.h"
#include "engine/team_load.h"
#include "league/session.h"

namespace tallyrink::cli {

namespace {

struct ProbeOptions {
    std::size_t game = 0;
    std::optional<std::uint64_t> seed;
};

struct Situation {
    const char* title;
    Zone zone;
    int visitorSkaters;
    int homeSkaters;
    bool fromFaceoff;
    RushType rush;
    std::vector<Call> calls;
};

std::string percent(double x) { return fmt::format("{:.1f}", x * 100); }

void printGrid(Game& game, const Situation& sit, const std::array<std::string, 2>& code) {
    const GameState& s = game.state();
    const SideTables& puck = game.session().side(s.PuckTeam);
    std::string carrier = "nobody";
    if (s.find.Carrier != kNoSlot) {
        carrier = puck.DisplayName[static_cast<std::size_t>(s.find.Carrier)];
        if (s.find.CarrierPos != kNoPos) {
            static constexpr std::array<const char*, 6> kPos{"LW", "C", "RW", "LD", "RD", "G"};
            carrier += fmt::format(" ({}", kPos[static_cast<std::size_t>(s.find.CarrierPos)]);
            int spot = s.find.Spot[static_cast<std::size_t>(s.find.CarrierPos)];
            if (spot != kSpotNone) carrier += fmt::format(", {}", spotText(spot));
            carrier += ")";
        }
    }
    fmt::print("\n{} - {} with the puck, {} on {}; carrier {}\n", sit.title, code[static_cast<std::size_t>(s.PuckTeam)],
               s.Skaters[static_cast<std::size_t>(s.PuckTeam)], s.Skaters[static_cast<std::size_t>(s.OtherTeam())],
               carrier);
    fmt::print("{:<11}{:>6}{:>5}{:>5}{:>5}{:>5}{:>6}{:>6}{:>6}{:>6}{:>6}{:>6}{:>5}{:>6}  {:>6} {:>5}\n", "Call",
               "Entry", "PenO", "PenP", "PenB", "Fght", "Pass", "Goal", "Save", "Block", "Miss", "Clear", "Offs", "TO",
               "Goal%", "Class");
    for (Call call : sit.calls) {
        game.editState().PlayCall = call;
        PlayChances c = game.ProbeOnly();
        int turnover = std::max(0, 1000 - c.banded());
        fmt::print("{:<11}{:>6}{:>5}{:>5}{:>5}{:>5}{:>6}{:>6}{:>6}{:>6}{:>6}{:>6}{:>5}{:>6}  {:>6} {:>5}\n", text(call),
                   c.EntryChance, c.PenaltyOppChance, c.PenaltyOwnChance, c.PenaltyBothChance, c.FightChance,
                   c.PassChance, c.GoalChance, c.SaveChance, c.BlockChance, c.MissChance, c.ClearChance,
                   c.OffsideChance, turnover, percent(c.GoalPct), c.ShotClass);
    }
}

void probeGame(const GlobalOptions& options, const ProbeOptions& o) {
    auto session = startSession(options);
    const Schedule& schedule = session->schedule();
    if (o.game < 1 || o.game > schedule.size())
        throw CommandError(
            fmt::format("There is no game {} in the schedule (it has {} games)", o.game, schedule.size()));
    const GameRecord& row = schedule.row(o.game);
    if (row.VisitorTeam < 1 || row.HomeTeam < 1 || row.VisitorTeam == row.HomeTeam)
        throw CommandError(fmt::format("Game {} of the schedule has been deleted", o.game));

    std::uint64_t seed = o.seed.value_or(Random::freshSeed());
    GameSession gs = GameSession::forSession(*session);
    Random draws(seed);
    gs.loadGame(row.VisitorTeam, row.HomeTeam, row.Month, row.Day, draws);
    std::array<std::string, 2> code;
    for (int side : {kVisitor, kHome}) code[static_cast<std::size_t>(side)] = gs.side(side).team.Abbrev.str();
    fmt::print("Game {}: {} at {} (seed {}); chances out of 1000, TO the turnover left over\n", o.game, code[0],
               code[1], seed);

    GameOptions gameOptions;
    gameOptions.seed = seed;
    gameOptions.calibration = seasonCalibration(session->league(), session->era(), session->rules(), draws);
    Game game(gs, gameOptions);
    game.InitGame();

    const std::vector<Call> breakout{Call::Balanced, Call::Safe, Call::Aggressive, Call::Clear, Call::Shoot};
    const std::vector<Call> neutral{Call::Balanced,  Call::Safe,      Call::Aggressive,
                                    Call::DumpChase, Call::SkatePass, Call::Clear};
    const std::vector<Call> offense{Call::PlayShoot, Call::PlayTo, Call::Shoot, Call::Pass, Call::Clear, Call::Retreat};
    const std::vector<Call> shooter{Call::Shoot, Call::Pass, Call::Penetrate, Call::Clear};
    const std::vector<Call> rush{Call::Rush, Call::Pass, Call::Clear};
    const std::vector<Situation> situations{
        {"Faceoff won in the other end", Zone::DefenseZone, 5, 5, true, RushType::None, {Call::Balanced}},
        {"Breakout from the own end", Zone::DefenseZone, 5, 5, false, RushType::None, breakout},
        {"Neutral zone", Zone::NeutralZone, 5, 5, false, RushType::None, neutral},
        {"Offensive zone", Zone::OffenseZone, 5, 5, false, RushType::None, offense},
        {"Set-up shooter", Zone::OffenseShooter, 5, 5, false, RushType::None, shooter},
        {"Power play, neutral zone", Zone::NeutralZone, 5, 4, false, RushType::None, neutral},
        {"Power play, offensive zone", Zone::OffenseZone, 5, 4, false, RushType::None, offense},
        {"Short-handed breakout", Zone::DefenseZone, 4, 5, false, RushType::None, breakout},
        {"Rush 2-1", Zone::Rush, 5, 5, false, RushType::TwoOne, rush},
        {"Breakaway 1-0", Zone::Rush, 5, 5, false, RushType::OneZero, rush},
    };
    for (const Situation& sit : situations) {
        game.setManpower(sit.visitorSkaters, sit.homeSkaters);
        GameState& s = game.editState();
        s.PuckTeam = kVisitor;
        s.StepPuckTeam = kVisitor;
        s.PlayZone = sit.zone;
        s.entryFromFaceoff = sit.fromFaceoff;
        s.OffensiveDraw = sit.fromFaceoff;
        s.PlayRating = 5.7;
        s.find.rush = sit.rush;
        s.find.Carrier = kNoSlot;
        s.find.Spot = {};
        s.find.ListCarrier = kNoSlot;
        if (sit.zone == Zone::OffenseZone) game.HkSetPlayCallList();
        game.FindCarrier();
        game.FindDefender();
        // As a play leaves them: the carrier of the offensive zone at the
        // point or the half-wall, the set-up shooter in the slot.
        if (s.find.CarrierPos != kNoPos && sit.zone == Zone::OffenseZone)
            s.find.Spot[static_cast<std::size_t>(s.find.CarrierPos)] = kSpotOut;
        if (s.find.CarrierPos != kNoPos && sit.zone == Zone::OffenseShooter)
            s.find.Spot[static_cast<std::size_t>(s.find.CarrierPos)] = kSpotIn;
        printGrid(game, sit, code);
    }
}

}  // namespace

void addProbeCommands(CLI::App& app, GlobalOptions& options) {
    auto o = std::make_shared<ProbeOptions>();
    auto* cmd = app.add_subcommand(
        "probe", "Show the chance table of a schedule game in a few typical states; nothing is played or written");
    cmd->add_option("game", o->game, "Row of the schedule, from 1")->required();
    cmd->add_option("--seed", o->seed, "Seed of the load and of the carriers picked");
    cmd->callback([&options, o] { probeGame(options, *o); });
}

}  // namespace tallyrink::cli
