#pragma once

// The chances a step draws from: whole numbers out of 1000, banded in a
// fixed order so that the earlier entries win ties, and the shares that
// split a turnover.

namespace tallyrink {

struct PlayChances {
    int EntryChance = 0;
    int PenaltyOppChance = 0;
    int PenaltyOwnChance = 0;
    int PenaltyBothChance = 0;
    int FightChance = 0;
    int PassChance = 0;
    int GoalChance = 0;
    int SaveChance = 0;
    int BlockChance = 0;
    int MissChance = 0;
    int ClearChance = 0;
    int OffsideChance = 0;
    double TurnoverDefenseShare = 0;
    double TurnoverNeutralShare = 0;
    double TurnoverRushShare = 0;

    // The shot the table stands on: the chance that a shot on net goes in,
    // the class of the shot (0 none, 1 inside, 2 mid, 3 outside, 4 rush, 5 a
    // deflection), the depths it was chosen from, and the shares that split
    // the shots tried into on net, missed and blocked.
    double GoalPct = 0;
    int ShotClass = 0;
    double PctInside = 0;
    double PctMid = 0;
    double PctOutside = 0;
    double OnNetShare = 0;
    double MissShare = 0;
    // Shots tried before the endings were split out of them.
    int shotsTried = 0;

    // Shots tried: the total that goal, save, block and miss split.
    [[nodiscard]] int ShootChance() const { return GoalChance + SaveChance + BlockChance + MissChance; }
    // Everything but the turnover that takes the rest. The fight band lies
    // over the start of the pass band and so adds nothing.
    [[nodiscard]] int banded() const {
        return EntryChance + PenaltyOppChance + PenaltyOwnChance + PenaltyBothChance + PassChance + ShootChance() +
               ClearChance + OffsideChance;
    }
};

}  // namespace tallyrink
