#include "operations/share_out.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <numeric>

namespace tallyrink {

namespace {

Count capOf(const std::vector<Count>& caps, std::size_t i) {
    return caps.empty() ? std::numeric_limits<Count>::max() : caps[i];
}

// Candidates that can still take a unit; the weighted ones when there are
// any, otherwise all with room, weighted alike.
std::vector<double> openWeights(const std::vector<double>& weights, const std::vector<Count>& caps,
                                const std::vector<Count>& given) {
    std::vector<double> w(weights.size(), 0.0);
    bool anyWeighted = false;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        if (given[i] >= capOf(caps, i)) continue;
        if (weights[i] > 0) {
            w[i] = weights[i];
            anyWeighted = true;
        }
    }
    if (anyWeighted) return w;
    for (std::size_t i = 0; i < weights.size(); ++i)
        if (given[i] < capOf(caps, i)) w[i] = 1.0;
    return w;
}

}  // namespace

std::vector<Count> shareOut(Count total, const std::vector<double>& weights, const std::vector<Count>& caps) {
    assert(caps.empty() || caps.size() == weights.size());
    std::vector<Count> given(weights.size(), 0);
    Count left = total;
    // Each pass either settles every share or fills at least one cap, so the
    // loop ends within one pass per candidate.
    while (left > 0) {
        std::vector<double> w = openWeights(weights, caps, given);
        double sum = std::accumulate(w.begin(), w.end(), 0.0);
        if (sum <= 0) break;
        bool capped = false;
        for (std::size_t i = 0; i < w.size(); ++i) {
            if (w[i] <= 0) continue;
            Count room = capOf(caps, i) - given[i];
            if (double(left) * w[i] / sum >= double(room)) {
                given[i] += room;
                left -= room;
                capped = true;
            }
        }
        if (capped) continue;
        std::vector<double> fraction(w.size(), -1.0);
        Count handed = 0;
        for (std::size_t i = 0; i < w.size(); ++i) {
            if (w[i] <= 0) continue;
            double exact = double(left) * w[i] / sum;
            Count whole = Count(std::floor(exact));
            given[i] += whole;
            handed += whole;
            fraction[i] = exact - double(whole);
        }
        left -= handed;
        std::vector<std::size_t> order(w.size());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(),
                         [&](std::size_t a, std::size_t b) { return fraction[a] > fraction[b]; });
        for (std::size_t k = 0; k < order.size() && left > 0; ++k) {
            std::size_t i = order[k];
            if (fraction[i] < 0 || given[i] >= capOf(caps, i)) continue;
            ++given[i];
            --left;
        }
    }
    return given;
}

std::vector<Count> drawCounts(Random& rng, Count total, const std::vector<double>& weights,
                              const std::vector<Count>& caps) {
    assert(caps.empty() || caps.size() == weights.size());
    std::vector<Count> given(weights.size(), 0);
    std::vector<double> w = openWeights(weights, caps, given);
    double sum = std::accumulate(w.begin(), w.end(), 0.0);
    for (Count unit = 0; unit < total && sum > 0; ++unit) {
        double r = rng.rnd() * sum;
        std::size_t pick = w.size();
        for (std::size_t i = 0; i < w.size(); ++i) {
            if (w[i] <= 0) continue;
            pick = i;
            if (r < w[i]) break;
            r -= w[i];
        }
        ++given[pick];
        if (given[pick] >= capOf(caps, pick)) {
            w = openWeights(weights, caps, given);
            sum = std::accumulate(w.begin(), w.end(), 0.0);
        }
    }
    return given;
}

double normal(Random& rng) {
    // Box-Muller on the game's own stream, so a seed fixes every draw.
    double u = 1.0 - rng.rnd();
    double v = rng.rnd();
    return std::sqrt(-2.0 * std::log(u)) * std::cos(6.283185307179586 * v);
}

double spread(Random& rng, double sigma) { return std::exp(sigma * normal(rng)); }

int between(Random& rng, int lo, int hi) { return hi <= lo ? lo : lo + rng.rand(hi - lo + 1) - 1; }

}  // namespace tallyrink
