#include "engine/narration.h"

#include <fmt/core.h>

#include "engine/game.h"

namespace tallyrink {

namespace {

std::size_t at(int i) { return static_cast<std::size_t>(i); }
int other(int side) { return side == 0 ? 1 : 0; }

std::string_view rushText(RushKind r) {
    switch (r) {
        case RushKind::OneZero:
            return "breakaway";
        case RushKind::TwoOne:
            return "two on one";
        case RushKind::ThreeOne:
            return "three on one";
        default:
            return "three on two";
    }
}

}  // namespace

std::string playName(const SideTables& side, int slot) {
    if (slot < 0 || slot >= kRosterSlots) return "nobody";
    const std::string& shortName = side.ShortNameOf[at(slot)];
    if (!shortName.empty()) return shortName;
    std::string last = side.player(slot).LastName.str();
    return last.empty() ? side.player(slot).ShortName.str() : last;
}

std::string ordinal(int n) {
    int tens = n % 100;
    const char* suffix = "th";
    if (tens < 11 || tens > 13) {
        switch (n % 10) {
            case 1:
                suffix = "st";
                break;
            case 2:
                suffix = "nd";
                break;
            case 3:
                suffix = "rd";
                break;
            default:
                break;
        }
    }
    return fmt::format("{}{}", n, suffix);
}

std::string Game::nameOf(int side, int slot) const { return playName(session_.side(side), slot); }

std::string Game::teamName(int side) const { return session_.side(side).team.Nickname.str(); }

void Game::DescribeOpening() {
    if (!telling()) return;
    for (int side : {kVisitor, kHome}) {
        std::string starters;
        for (int slot : s_.onIce[at(side)].slot) {
            if (slot == kNoSlot) continue;
            starters += (starters.empty() ? "" : ", ") + nameOf(side, slot);
        }
        tell(fmt::format("Starting for the {}: {}", teamName(side), starters));
    }
}

void Game::DescribeNewGoalie(int side) {
    if (!telling()) return;
    tell(fmt::format("{} now in goal for {}", nameOf(side, s_.goalie[at(side)]), teamName(side)));
}

void Game::DescribeCircleChange(int side, int out, int in) {
    if (!telling()) return;
    tell(fmt::format("{} is removed from the circle", nameOf(side, out)));
    tell(fmt::format("{} will take the draw", nameOf(side, in)));
}

void Game::DescribeTension() {
    if (!telling()) return;
    int v = narrationRng_.rand(10);
    bool periodStart = s_.Clock == 1200;
    if (v == 1)
        tell(periodStart ? "angry faces to start the period" : "angry faces for the faceoff");
    else if (v == 3 || v == 4)
        tell("chippy skaters take the ice");
    else
        tell(periodStart ? "tension on the ice to start the period" : "tension on the ice");
}

void Game::DescribeFaceoffResult(int winner) {
    if (!telling()) return;
    const EventState& ev = s_.events;
    tell(fmt::format("{} wins the faceoff against {}", nameOf(winner, ev.DrawMan[at(winner)]),
                     nameOf(other(winner), ev.DrawMan[at(other(winner))])));
}

void Game::DescribeShot() {
    if (!telling()) return;
    int side = s_.PuckTeam;
    std::string kind;
    switch (s_.events.Kind) {
        case ShotKind::OneTimer:
            kind = "One-timer";
            break;
        case ShotKind::Deflection:
            kind = "Deflection";
            break;
        case ShotKind::Long:
            kind = "Long shot";
            break;
        case ShotKind::Slap:
            kind = "Slap shot";
            break;
        case ShotKind::Weak:
            kind = "Weak shot";
            break;
        case ShotKind::Breakaway:
            kind = "Breakaway shot";
            break;
        case ShotKind::Rebound:
        case ShotKind::ReboundShot:
            kind = "Rebound shot";
            break;
        default:
            kind = "Wrist shot";
            break;
    }
    std::string line = fmt::format("{} by {}", kind, nameOf(side, s_.find.Carrier));
    switch (s_.PlayResult) {
        case Result::Save:
            line += fmt::format(", saved by {}", nameOf(other(side), netminder(other(side))));
            break;
        case Result::Miss:
            line += ", wide of the net";
            break;
        default:
            break;
    }
    tell(line);
}

void Game::DescribeBlock(int side, int blocker) {
    if (!telling()) return;
    tell(fmt::format("blocked by {}", nameOf(side, blocker)));
}

void Game::DescribeGoalLead() {
    if (!telling()) return;
    tell(fmt::format("GOAL! {} score", teamName(s_.PuckTeam)));
}

void Game::DescribeVideoReview() {
    if (!telling()) return;
    tell("the officials take a look at the video");
    tell("the goal is confirmed by video review");
}

void Game::DescribeGoalCredit(int scorer) {
    if (!telling()) return;
    int side = s_.PuckTeam;
    tell(fmt::format("scored by {}", nameOf(side, scorer)));
    if (scorer == kNoSlot) return;
    int goals = statLine(session_.side(side).player(scorer), StatLineIndex::Game).Goals + 1;
    if (goals >= 2 && goals <= 4) tell(fmt::format("his {} goal of the game", ordinal(goals)));
}

void Game::DescribeAssists() {
    if (!telling()) return;
    int side = s_.PuckTeam;
    const FindState& f = s_.find;
    if (f.Passer1 == kNoSlot) {
        tell("unassisted");
        return;
    }
    std::string names = nameOf(side, f.Passer1);
    if (f.Passer2 != kNoSlot) names += " and " + nameOf(side, f.Passer2);
    tell("assisted by " + names);
}

void Game::DescribeKnockedAway(int side, int defender) {
    if (!telling()) return;
    tell("knocked away by " + nameOf(side, defender));
}

void Game::DescribeReboundClear() {
    if (!telling()) return;
    tell(fmt::format("the {} clear the rebound", teamName(s_.PuckTeam)));
}

void Game::DescribeOutOfPlay() {
    if (!telling()) return;
    tell(narrationRng_.rand(2) == 1 ? "over the glass" : "the puck goes out of play");
}

void Game::DescribeClearSave() {
    if (!telling()) return;
    tell(narrationRng_.rand(4) == 1 ? "off the glass and on net" : "off the boards and on net");
    tell(fmt::format("{} stops it", nameOf(other(s_.PuckTeam), netminder(other(s_.PuckTeam)))));
}

void Game::DescribeGoaliePass() {
    if (!telling()) return;
    tell(fmt::format("{} moves the puck out", nameOf(s_.PuckTeam, s_.goalie[at(s_.PuckTeam)])));
}

void Game::DescribeFreeze() {
    if (!telling()) return;
    tell("the goalie covers the puck");
}

void Game::DescribeReboundShot(int shooter) {
    if (!telling()) return;
    tell("back to " + nameOf(s_.PuckTeam, shooter) + ", he shoots");
}

void Game::DescribeGoalieDrops() {
    if (!telling()) return;
    tell("the goalie drops it, loose puck in front!");
}

void Game::DescribeReboundMiss() {
    if (!telling()) return;
    tell("the rebound goes wide");
}

void Game::DescribeDump() {
    if (!telling()) return;
    tell(fmt::format("{} dumps it in", nameOf(s_.StepPuckTeam, s_.find.Carrier)));
}

void Game::DescribePass() {
    if (!telling()) return;
    tell(fmt::format("{} passes", nameOf(s_.PuckTeam, s_.find.Carrier)));
}

void Game::DescribeEntry() {
    if (!telling()) return;
    int side = s_.PuckTeam;
    int first = s_.find.NameFirst != kNoSlot ? s_.find.NameFirst : s_.find.Carrier;
    tell(fmt::format("{} carries it into the zone", nameOf(side, first)));
}

void Game::DescribeMoveUp() {
    if (!telling()) return;
    tell(fmt::format("the {} move it up quickly", teamName(s_.PuckTeam)));
}

void Game::DescribeRecover() {
    if (!telling()) return;
    tell("the clear is kept in at the line");
}

void Game::DescribeClear() {
    if (!telling()) return;
    tell(fmt::format("{} clears it", nameOf(s_.PuckTeam, s_.find.Carrier)));
}

void Game::DescribeIcing(int side) {
    if (!telling()) return;
    tell(fmt::format("icing on the {}", teamName(side)));
}

void Game::DescribeOffside() {
    if (!telling()) return;
    tell(fmt::format("offside against the {}", teamName(s_.PuckTeam)));
}

void Game::DescribeHit(int side, int hitter) {
    if (!telling()) return;
    tell(fmt::format("hit by {} on {}", nameOf(side, hitter), nameOf(other(side), s_.find.Carrier)));
}

void Game::DescribeTurnover() {
    if (!telling()) return;
    int side = s_.PuckTeam;
    switch (s_.events.turnover) {
        case TurnoverKind::Giveaway:
            tell(fmt::format("giveaway by {}", nameOf(side, s_.find.Carrier)));
            break;
        case TurnoverKind::Takeaway:
        case TurnoverKind::HitTakeaway:
            tell(fmt::format("takeaway by {}", nameOf(other(side), s_.find.TakeawayMan != kNoSlot ? s_.find.TakeawayMan
                                                                                                  : s_.find.Hitter)));
            break;
        default:
            tell(fmt::format("the {} lose the puck", teamName(side)));
            break;
    }
}

void Game::DescribeLoosePuck() {
    if (!telling()) return;
    tell(fmt::format("{} picks up the loose puck", nameOf(s_.PuckTeam, s_.find.Carrier)));
}

void Game::DescribeRush() {
    if (!telling()) return;
    tell(fmt::format("the {} break out, {}", teamName(s_.PuckTeam), rushText(s_.events.rushKind)));
}

void Game::DescribeRetreat() {
    if (!telling()) return;
    tell(fmt::format("the {} regroup", teamName(s_.PuckTeam)));
}

void Game::DescribeDelay() {
    if (!telling()) return;
    if (narrationRng_.rand(4) != 1) {
        tell("a pane of glass is broken: play is held up");
        return;
    }
    int v = narrationRng_.rand(10);
    const char* what = v <= 3 ? "a fan on the ice" : v <= 5 ? "the scoreboard" : v <= 7 ? "the horn" : "the lights";
    tell(fmt::format("play is held up: {}", what));
}

}  // namespace tallyrink
