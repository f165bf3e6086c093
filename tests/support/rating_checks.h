#pragma once

#include <gtest/gtest.h>

#include <string>

#include "league/records.h"

namespace tallyrink::testing {

// The caps every stored rating keeps, whoever the player is.
inline void expectRatingCaps(const PlayerRecord& p) {
    const std::string who = p.LastName.str();
    EXPECT_LE(p.RatingFaceoff, 10) << who;
    EXPECT_LE(p.RatingPassing, 10) << who;
    EXPECT_LE(p.RatingShotIn, 10) << who;
    EXPECT_LE(p.RatingShotOut, 10) << who;
    EXPECT_LE(p.RatingSkate, 10) << who;
    EXPECT_LE(p.RatingPenaltyShot, 10) << who;
    EXPECT_LE(p.RatingSportsmanship, 10) << who;
    EXPECT_LE(p.RatingBlock, 10) << who;
    EXPECT_LE(p.RatingHit, 10) << who;
    EXPECT_LE(p.RatingTakeaway, 10) << who;
    EXPECT_LE(p.RatingPenaltyKill, 2) << who;
    EXPECT_LE(p.RatingDefense, 100) << who;
    EXPECT_GE(p.RatingDurability, 1) << who;
    EXPECT_LE(p.RatingDurability, 10) << who;
}

}  // namespace tallyrink::testing
