#pragma once

// Arithmetic shared by the rating passes: how a worked-out value becomes a
// stored byte, and the real line and era figures as the passes read them.
// For the rating sources only.

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "league/era.h"
#include "league/random.h"
#include "league/records.h"

namespace tallyrink::rating_math {

inline double safeDiv(double a, double b) { return b != 0 ? a / b : 0; }

// A rating byte: rounded as a stored value rounds (halves to even) and
// kept inside the field's range.
inline std::uint8_t store(double v, int lo, int hi) {
    if (!std::isfinite(v)) return static_cast<std::uint8_t>(lo);
    return static_cast<std::uint8_t>(std::clamp(roundHalfEven(v), double(lo), double(hi)));
}

// Int(x + 0.5), the rounding some passes name for themselves.
inline double roundUp(double x) { return std::floor(x + 0.5); }

// The real line as the passes read it. Negative counts can only be
// garbage and count as none.
struct Real {
    double gp, goals, assists, pim, toi, toiSH, sog, fow, fol, hits, blocks, takeaways, goalsAllowed, saves,
        penaltyShotAttempts;
};

inline double count(double v) { return v > 0 ? v : 0; }

inline Real realOf(const PlayerRecord& p) {
    const StatLine& r = statLine(p, StatLineIndex::Real);
    return {count(r.GP),           count(r.Goals),       count(r.Assists),
            count(r.Pim),          count(r.Toi),         count(r.ToiSH),
            count(r.Sog),          count(r.FaceoffsWon), count(r.FaceoffsLost),
            count(r.Hits),         count(r.Blocks),      count(r.Takeaways),
            count(r.GoalsAllowed), count(r.Saves),       count(r.PenaltyShotAttempts)};
}

// A player of a college team counts as a college player unless his record says otherwise.
inline bool isCollegePlayer(const PlayerRecord& p, bool collegeTeam) {
    const char type = p.PlayerType.raw[0];
    return type == 'C' || (type != 'P' && collegeTeam);
}

inline EraLevel levelOf(bool college) { return college ? EraLevel::College : EraLevel::Professional; }

// The era figures of a year, or of `fallback` outside `first`..`last`.
inline EraFigures eraFigures(const EraTable& era, int year, int first, int last, int fallback, bool college) {
    int y = year >= first && year <= last ? year : fallback;
    return figuresOf(era.yearOr(y, fallback), levelOf(college));
}

}  // namespace tallyrink::rating_math
