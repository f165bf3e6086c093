#pragma once

// Splitting a total among candidates: the way a made-up league turns a
// team's season totals into its players' lines, so that the parts always add
// up to the whole.

#include <cstdint>
#include <vector>

#include "league/random.h"

namespace tallyrink {

using Count = std::int64_t;

// Whole shares of `total` in proportion to `weights`; what the rounding
// leaves goes to the largest fractions, the first of equal fractions first.
// A cap, where given, is never passed: what a capped share can't take goes
// to the others. Candidates of weight 0 take a share only when no weighted
// one has room left. The shares add up to `total` unless every cap is full.
std::vector<Count> shareOut(Count total, const std::vector<double>& weights, const std::vector<Count>& caps = {});

// `total` units handed out one at a time, each to a candidate drawn in
// proportion to its weight, so the shares scatter around their expectation
// as counts of real events do. Caps and weight 0 as for shareOut.
std::vector<Count> drawCounts(Random& rng, Count total, const std::vector<double>& weights,
                              const std::vector<Count>& caps = {});

// A factor scattered around 1: exp of a normal draw of deviation `sigma`.
double spread(Random& rng, double sigma);

// A normal draw (mean 0, deviation 1).
double normal(Random& rng);

// A whole number from lo to hi, both included.
int between(Random& rng, int lo, int hi);

}  // namespace tallyrink
