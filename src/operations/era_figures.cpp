#include "operations/era_figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace tallyrink {

namespace {

// One season of the real league: goals per team-game scored by players (the
// shootout's deciding goals left out), assists per goal, penalty minutes per
// team-game, power-play %, shots per team-game and save % (0 where the
// season didn't keep the figure).
struct EraRow {
    int year;
    double goals;
    double assistsPerGoal;
    double pim;
    double powerPlayPct;
    double shots;
    double savePct;
};

// clang-format off
constexpr EraRow kEraRows[] = {
    {1917, 4.750, 0.415, 14.6, 0, 0, 0},
    {1918, 4.111, 0.455, 14.13, 0, 0, 0},
    {1919, 4.792, 0.461, 10.19, 0, 0, 0},
    {1920, 4.240, 0.44, 10.15, 0, 0, 0},
    {1921, 3.958, 0.6, 6.07, 0, 0, 0},
    {1922, 3.260, 0.604, 8.51, 0, 0, 0},
    {1923, 2.656, 0.486, 8.1, 0, 0, 0},
    {1924, 2.506, 0.572, 10.49, 0, 0, 0},
    {1925, 2.306, 0.37, 10.21, 0, 0, 0},
    {1926, 1.998, 0.471, 10.45, 0, 0, 0},
    {1927, 1.900, 0.5, 11.12, 0, 0, 0},
    {1928, 1.459, 0.595, 10.26, 0, 0, 0},
    {1929, 2.957, 0.832, 11.58, 0, 0, 0},
    {1930, 2.395, 0.923, 11.3, 0, 0, 0},
    {1931, 2.492, 1.046, 10.48, 0, 0, 0},
    {1932, 2.275, 1.214, 10.19, 0, 0, 0},
    {1933, 2.410, 1.13, 8.01, 0, 0, 0},
    {1934, 2.516, 1.306, 7.46, 0, 0, 0},
    {1935, 2.164, 1.4, 8.76, 0, 0, 0},
    {1936, 2.464, 1.266, 7.0, 0, 0, 0},
    {1937, 2.531, 1.402, 7.22, 0, 0, 0},
    {1938, 2.533, 1.55, 6.5, 0, 0, 0},
    {1939, 2.494, 1.464, 7.35, 0, 0, 0},
    {1940, 2.679, 1.498, 6.76, 0, 0, 0},
    {1941, 3.116, 1.55, 8.18, 0, 0, 0},
    {1942, 3.610, 1.522, 7.23, 0, 0, 0},
    {1943, 4.083, 1.427, 6.35, 0, 0, 0},
    {1944, 3.677, 1.198, 6.36, 0, 0, 0},
    {1945, 3.343, 1.136, 5.94, 0, 0, 0},
    {1946, 3.161, 1.3, 8.65, 0, 0, 0},
    {1947, 2.928, 1.37, 10.12, 0, 0, 0},
    {1948, 2.717, 1.362, 10.14, 0, 0, 0},
    {1949, 2.733, 1.45, 9.49, 0, 0, 0},
    {1950, 2.712, 1.438, 10.16, 0, 0, 0},
    {1951, 2.595, 1.495, 9.42, 0, 0, 0},
    {1952, 2.395, 1.504, 9.63, 0, 0, 0},
    {1953, 2.402, 1.542, 12.14, 0, 0, 0},
    {1954, 2.521, 1.559, 11.89, 0, 0, 0},
    {1955, 2.533, 1.59, 13.07, 0, 0, 0},
    {1956, 2.690, 1.612, 11.93, 0, 0, 0},
    {1957, 2.798, 1.654, 12.14, 0, 0, 0},
    {1958, 2.898, 1.633, 11.52, 0, 0, 0},
    {1959, 2.948, 1.665, 11.68, 0, 0, 0},
    {1960, 3.002, 1.649, 11.39, 0, 0, 0},
    {1961, 3.010, 1.653, 10.81, 0, 0, 0},
    {1962, 2.974, 1.62, 11.26, 0, 0, 0},
    {1963, 2.776, 1.642, 12.79, 15.69, 0, 0},
    {1964, 2.876, 1.623, 14.24, 15.82, 0, 0},
    {1965, 3.040, 1.655, 11.89, 18.94, 0, 0},
    {1966, 2.981, 1.641, 10.76, 18.12, 0, 0},
    {1967, 2.788, 1.624, 10.13, 16.86, 0, 0},
    {1968, 2.980, 1.647, 11.33, 17.4, 0, 0},
    {1969, 2.905, 1.614, 12.62, 19.47, 0, 0},
    {1970, 3.122, 1.634, 13.9, 18.83, 0, 0},
    {1971, 3.066, 1.614, 12.22, 19.38, 0, 0},
    {1972, 3.276, 1.643, 12.15, 18.71, 0, 0},
    {1973, 3.196, 1.625, 12.21, 19.09, 0, 0},
    {1974, 3.425, 1.627, 14.19, 20.33, 0, 0},
    {1975, 3.412, 1.633, 14.62, 20.54, 0, 0},
    {1976, 3.322, 1.628, 13.01, 19.83, 0, 0},
    {1977, 3.297, 1.632, 13.75, 21.15, 0, 0},
    {1978, 3.498, 1.644, 14.5, 22.72, 0, 0},
    {1979, 3.513, 1.625, 15.14, 21.86, 0, 0},
    {1980, 3.843, 1.631, 20.74, 22.53, 0, 0},
    {1981, 4.013, 1.657, 19.91, 22.85, 0, 0},
    {1982, 3.865, 1.646, 16.72, 22.92, 30.54, 87.57},
    {1983, 3.945, 1.643, 18.18, 21.91, 30.6, 87.35},
    {1984, 3.887, 1.665, 18.61, 22.2, 30.5, 87.44},
    {1985, 3.968, 1.654, 21.64, 22.08, 0, 0},
    {1986, 3.670, 1.654, 22.62, 20.98, 30.0, 88.0},
    {1987, 3.712, 1.663, 26.42, 20.29, 30.44, 87.98},
    {1988, 3.742, 1.672, 25.2, 20.99, 0, 0},
    {1989, 3.684, 1.672, 24.0, 20.77, 0, 0},
    {1990, 3.455, 1.679, 23.88, 19.44, 29.75, 88.6},
    {1991, 3.479, 1.682, 24.88, 19.24, 30.43, 88.82},
    {1992, 3.626, 1.684, 22.64, 19.57, 30.92, 88.49},
    {1993, 3.242, 1.668, 20.88, 18.64, 30.23, 89.51},
    {1994, 2.986, 1.664, 19.63, 17.73, 29.26, 90.06},
    {1995, 3.143, 1.666, 20.07, 17.93, 30.18, 89.84},
    {1996, 2.916, 1.656, 18.68, 16.27, 29.72, 90.47},
    {1997, 2.638, 1.662, 19.0, 15.09, 0, 0},
    {1998, 2.633, 1.685, 16.05, 15.81, 0, 0},
    {1999, 2.747, 1.688, 14.03, 16.15, 27.9, 90.44},
    {2000, 2.757, 1.704, 15.2, 16.64, 27.62, 90.33},
    {2001, 2.619, 1.687, 15.21, 15.77, 27.5, 90.78},
    {2002, 2.654, 1.708, 14.57, 16.43, 28.29, 90.88},
    {2003, 2.568, 1.702, 14.91, 16.46, 27.98, 91.09},
    {2005, 3.026, 1.73, 16.03, 17.68, 29.91, 90.13},
    {2006, 2.879, 1.75, 14.07, 17.58, 29.5, 90.52},
    {2007, 2.720, 1.728, 13.96, 17.75, 28.98, 90.92},
    {2008, 2.848, 1.732, 13.88, 18.95, 0, 0},
    {2009, 2.765, 1.731, 12.8, 18.21, 30.23, 91.13},
    {2010, 2.732, 1.717, 12.25, 18.02, 30.3, 91.29},
    {2011, 2.661, 1.721, 11.21, 17.31, 0, 0},
    {2012, 2.654, 1.728, 11.59, 18.22, 29.05, 91.19},
    {2013, 2.672, 1.719, 10.93, 17.89, 29.95, 91.38},
    {2014, 2.662, 1.724, 9.68, 18.65, 29.8, 91.46},
    {2015, 2.669, 1.682, 9.73, 18.65, 29.59, 91.49},
    {2016, 2.725, 1.682, 9.2, 19.12, 30.1, 91.35},
    {2017, 2.930, 1.694, 8.64, 20.18, 31.81, 91.22},
};
// clang-format on

constexpr int kFirstYear = 1917;
constexpr int kLastYear = 2017;

int seasonGames(int year) {
    struct Span {
        int from;
        int games;
    };
    // Season lengths changed by span; a year takes the last span begun.
    constexpr std::array spans = {Span{0, 22},    Span{1918, 18}, Span{1919, 24}, Span{1924, 30}, Span{1925, 36},
                                  Span{1926, 44}, Span{1931, 48}, Span{1942, 50}, Span{1946, 60}, Span{1949, 70},
                                  Span{1967, 74}, Span{1968, 76}, Span{1970, 78}, Span{1974, 80}, Span{1992, 84},
                                  Span{1994, 48}, Span{1995, 82}, Span{2012, 48}, Span{2013, 82}};
    int games = spans.front().games;
    for (const auto& s : spans)
        if (year >= s.from) games = s.games;
    return games;
}

// Fights were never counted officially; these are estimates by period.
double fightsPerGame(int year) {
    struct Span {
        int from;
        double fights;
    };
    constexpr std::array spans = {Span{0, 0.3},     Span{1960, 0.35}, Span{1967, 0.5},  Span{1970, 0.8},
                                  Span{1975, 0.9},  Span{1980, 1.05}, Span{1985, 1.2},  Span{1990, 1.1},
                                  Span{1994, 0.85}, Span{1998, 0.7},  Span{2005, 0.55}, Span{2010, 0.5},
                                  Span{2013, 0.4},  Span{2015, 0.28}, Span{2017, 0.22}};
    double fights = spans.front().fights;
    for (const auto& s : spans)
        if (year >= s.from) fights = s.fights;
    return fights;
}

const EraRow& rowOf(int year) {
    year = std::clamp(year, kFirstYear, kLastYear);
    // The one season without games takes the season before it.
    auto it = std::find_if(std::begin(kEraRows), std::end(kEraRows), [&](const EraRow& r) { return r.year >= year; });
    if (it->year != year && it != std::begin(kEraRows)) --it;
    return *it;
}

// Save % of a season that didn't count shots: from the nearest counted
// seasons when there are some on both sides, otherwise from the shots a
// team of the period took.
double estimatedSavePct(const EraRow& row) {
    const EraRow* before = nullptr;
    const EraRow* after = nullptr;
    for (const auto& r : kEraRows) {
        if (r.savePct <= 0) continue;
        if (r.year < row.year) before = &r;
        if (r.year > row.year && after == nullptr) after = &r;
    }
    if (before != nullptr && after != nullptr) {
        double t = double(row.year - before->year) / double(after->year - before->year);
        return before->savePct + t * (after->savePct - before->savePct);
    }
    double shots = row.year >= 1967 ? 31.0 : row.year >= 1943 ? 29.0 : 27.0;
    return 100.0 * (1.0 - row.goals * 0.97 / shots);
}

bool within(double v, double lo, double hi) { return std::isfinite(v) && v >= lo && v <= hi; }

}  // namespace

EraFigures fallbackEra(int year) {
    const EraRow& row = rowOf(year);
    EraFigures e;
    e.games = seasonGames(std::clamp(year, kFirstYear, kLastYear));
    e.goalsPerTeamGame = row.goals;
    e.assistsPerGoal = row.assistsPerGoal;
    e.pimPerTeamGame = row.pim;
    // Before power plays were counted they succeeded about as often as in the first counted seasons.
    e.powerPlayPct = row.powerPlayPct > 0 ? row.powerPlayPct : 16.0;
    e.savePct = row.savePct > 0 ? row.savePct : estimatedSavePct(row);
    e.shotsPerTeamGame = row.shots;
    e.fightsPerGame = fightsPerGame(year);
    return e;
}

EraFigures sanitizedEra(const EraFigures& era, int year) {
    EraFigures fb = fallbackEra(year);
    EraFigures e = era;
    if (e.games < 10 || e.games > 120) e.games = fb.games;
    if (!within(e.goalsPerTeamGame, 0.5, 10)) e.goalsPerTeamGame = fb.goalsPerTeamGame;
    if (!within(e.assistsPerGoal, 0.1, 2)) e.assistsPerGoal = fb.assistsPerGoal;
    if (!within(e.pimPerTeamGame, 1, 60)) e.pimPerTeamGame = fb.pimPerTeamGame;
    if (!within(e.powerPlayPct, 1, 50)) e.powerPlayPct = fb.powerPlayPct;
    if (!within(e.savePct, 60, 99)) e.savePct = fb.savePct;
    if (!within(e.shotsPerTeamGame, 0, 70)) e.shotsPerTeamGame = 0;
    if (!within(e.fightsPerGame, 0, 5)) e.fightsPerGame = fb.fightsPerGame;
    return e;
}

DecisionShares decisionShares(int year) {
    // Regular-season overtime was played from 1983; the loser's point from
    // 1999; shootouts, and the end of ties, from 2005.
    DecisionShares d;
    if (year < 1983) {
        d.ties = 0.17;
    } else if (year < 1999) {
        d.ties = 0.13;
        d.overtimeMinutes = d.ties * 5.0 + 0.07 * 2.5;
    } else if (year < 2005) {
        d.ties = 0.12;
        d.overtimeLosses = 0.10;
        d.overtimeMinutes = d.ties * 5.0 + d.overtimeLosses * 2.5;
    } else {
        d.overtimeLosses = 0.23;
        d.shootouts = 0.08;
        d.overtimeMinutes = (d.overtimeLosses - d.shootouts) * 2.5 + d.shootouts * 5.0;
    }
    return d;
}

DressedSkaters dressedSkaters(int year) {
    DressedSkaters d;
    d.defence = year <= 1949 ? 4 : year <= 1974 ? 5 : 6;
    d.forwards = year <= 1949 ? 9 : year <= 1966 ? 10 : year <= 1977 ? 11 : 12;
    return d;
}

}  // namespace tallyrink
