#include "operations/schedule_generator.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <climits>
#include <map>
#include <tuple>

#include "league/team_directory.h"

namespace tallyrink {

namespace {

// Day slots a team can be busy in. A greedy placement always finds a slot
// below 2 x games per team, so twice the longest season fits.
constexpr int kSlotCap = 256;
using SlotSet = std::bitset<kSlotCap>;

constexpr int kMaxAttempts = 25;
// After this many attempts, a league of several divisions may fill with
// games inside a division too.
constexpr int kLastResortAfter = 10;
// Room a league of one division gets for its filling games.
constexpr int kOneDivisionHorizon = 6;
constexpr int kTeamSwaps = 1000;
constexpr int kSlotSwaps = 10000;
constexpr int kMeetingWeight = 100;
constexpr int kBaseScore = 1'000'000;
constexpr int kDivisionWeight = 1000;
constexpr int kSpreadWeight = 10;
constexpr std::size_t kExchangeTriesPerGame = 1000;
// Exchanges stop early after this many tries per game without a gain.
constexpr std::size_t kExchangePatiencePerGame = 200;

constexpr std::size_t idx(int t) { return static_cast<std::size_t>(t); }

class Generator {
public:
    Generator(const std::vector<int>& teams, const ScheduleRequest& request, Random& random)
        : teams_(teams),
          games_(request.gamesPerTeam),
          divisionGames_(request.divisionGames),
          target_(request.gamesPerTeam / 2),
          random_(random),
          meetings_(idx(kMaxTeams + 1) * idx(kMaxTeams + 1), 0),
          hosted_(meetings_.size(), 0) {
        for (int t : teams_) active_.set(idx(t));
        for (int u = 1; u < kSlotCap; ++u) {
            within_[idx(u)] = within_[idx(u - 1)];
            within_[idx(u)].set(idx(u));
        }
        countDivisions();
    }

    GeneratedSchedule run(const ScheduleRequest& request) {
        int attempt = 0;
        do {
            ++attempt;
            runAttempt(attempt);
        } while (attempt < kMaxAttempts && homeAndAwayDiffer());
        complete();
        evenOutMeetings();
        divisionalAdded_ = divisionalAdded_ && divisionRivalsMeetMore();
        mixTeams();
        mixSlots();
        return result(request);
    }

private:
    // --- tables of one attempt ---

    int& meetings(int a, int b) { return meetings_[idx(a) * idx(kMaxTeams + 1) + idx(b)]; }
    int& hosted(int home, int visitor) { return hosted_[idx(home) * idx(kMaxTeams + 1) + idx(visitor)]; }

    void clear() {
        for (int t : teams_) busy_[idx(t)].reset();
        slotGames_.fill(0);
        home_.fill(0);
        away_.fill(0);
        std::fill(meetings_.begin(), meetings_.end(), 0);
        std::fill(hosted_.begin(), hosted_.end(), 0);
        placed_.clear();
        divisionalAdded_ = false;
    }

    void place(int slot, int home, int visitor) {
        ++slotGames_[idx(slot)];
        placed_.push_back({slot, home, visitor});
        busy_[idx(home)].set(idx(slot));
        busy_[idx(visitor)].set(idx(slot));
        ++home_[idx(home)];
        ++away_[idx(visitor)];
        ++meetings(home, visitor);
        ++meetings(visitor, home);
        ++hosted(home, visitor);
    }

    void unplace(std::size_t k) {
        auto g = placed_[k];
        --slotGames_[idx(g.slot)];
        busy_[idx(g.home)].reset(idx(g.slot));
        busy_[idx(g.visitor)].reset(idx(g.slot));
        --home_[idx(g.home)];
        --away_[idx(g.visitor)];
        --meetings(g.home, g.visitor);
        --meetings(g.visitor, g.home);
        --hosted(g.home, g.visitor);
        placed_.erase(placed_.begin() + static_cast<std::ptrdiff_t>(k));
    }

    void countDivisions() {
        std::map<int, int> sizes;
        for (int t : teams_) ++sizes[divisionOfTeam(t)];
        divisions_ = static_cast<int>(sizes.size());
        bool uneven =
            std::any_of(sizes.begin(), sizes.end(), [&](const auto& s) { return s.second != sizes.begin()->second; });
        extra_ = 0;
        if (divisionGames_ % 2 == 1) extra_ = 1;
        if (uneven || divisions_ == 1) extra_ = 2;
    }

    bool sameDivision(int a, int b) const { return divisionOfTeam(a) == divisionOfTeam(b); }

    // --- slots and opponents ---

    // The least used slot from `upper` down to 1 where neither team plays; of
    // equal ones the lowest. 0 when there is none.
    int pickSlot(int a, int b, int upper) const {
        upper = std::min(upper, kSlotCap - 1);
        SlotSet taken = busy_[idx(a)] | busy_[idx(b)];
        int best = 0;
        int bestCount = INT_MAX;
        for (int d = upper; d >= 1; --d) {
            if (!taken.test(idx(d)) && slotGames_[idx(d)] <= bestCount) {
                best = d;
                bestCount = slotGames_[idx(d)];
            }
        }
        return best;
    }

    bool freeSlotWithin(int a, int b, int upper) const {
        upper = std::min(upper, kSlotCap - 1);
        return (within_[idx(upper)] & ~(busy_[idx(a)] | busy_[idx(b)])).any();
    }

    // Opponents that have met least score highest; a small draw breaks ties,
    // and a pair with no common free slot scores nothing.
    int score(int i, int j, int upper) {
        if (!freeSlotWithin(i, j, upper)) return 0;
        return kBaseScore - kMeetingWeight * meetings(i, j) + random_.rand(9);
    }

    template <class Eligible>
    int bestOpponent(int i, int upper, Eligible eligible) {
        int best = 0;
        int pick = 0;
        for (int j : teams_) {
            if (j == i || !eligible(j)) continue;
            int s = score(i, j, upper);
            if (s > 0 && s >= best) {
                best = s;
                pick = j;
            }
        }
        return pick;
    }

    bool belowTarget(int t) const { return home_[idx(t)] < target_ && away_[idx(t)] < target_; }

    // --- the phases of one attempt ---

    void runAttempt(int attempt) {
        clear();
        divisionPhase();
        if (divisions_ >= 2) {
            crossDivisionPhase();
            for (int pass = 0; pass < 2; ++pass) {
                ++horizon_;
                fillPhase(false);
            }
        }
        if (divisions_ == 1 || attempt > kLastResortAfter) {
            if (divisions_ == 1) horizon_ = kOneDivisionHorizon;
            if (std::any_of(teams_.begin(), teams_.end(), [&](int t) { return home_[idx(t)] < target_; })) {
                divisionalAdded_ = true;
                fillPhase(true);
            }
        }
    }

    // Every pair of a division meets DG / 2 times at each rink. The placement
    // draws nothing, so starting it over would only repeat it: a game that
    // finds no slot is left out and made up when the schedule is completed.
    void divisionPhase() {
        for (int round = 0; round < divisionGames_ / 2; ++round) {
            for (int i : teams_) {
                for (int j : teams_) {
                    if (j == i || !sameDivision(i, j)) continue;
                    int d = pickSlot(i, j, games_ + 1 + extra_);
                    if (d != 0) place(d, i, j);
                }
            }
        }
    }

    // Home-and-home pairs with teams of other divisions.
    void crossDivisionPhase() {
        horizon_ = 0;
        for (int rep = 0; rep < games_; ++rep) {
            for (int i : teams_) {
                if (!belowTarget(i)) continue;
                int j = bestOpponent(i, games_ + horizon_ + 3 * extra_,
                                     [&](int c) { return !sameDivision(i, c) && belowTarget(c); });
                if (j == 0) continue;
                for (auto [h, v] : {std::pair{i, j}, std::pair{j, i}}) {
                    int d = pickSlot(i, j, games_ + horizon_ + extra_);
                    if (d != 0) place(d, h, v);
                }
            }
        }
    }

    // Single home games for teams still short of home games.
    void fillPhase(bool anyDivision) {
        for (int rep = 0; rep < games_; ++rep) {
            for (int i : teams_) {
                if (home_[idx(i)] >= target_) continue;
                int j = bestOpponent(i, games_ + horizon_ + 3 * extra_, [&](int c) {
                    return (anyDivision || !sameDivision(i, c)) && away_[idx(c)] < target_;
                });
                if (j == 0) continue;
                int d = pickSlot(i, j, games_ + horizon_ + extra_);
                if (d != 0) place(d, i, j);
            }
        }
    }

    bool homeAndAwayDiffer() const {
        return std::any_of(teams_.begin(), teams_.end(), [&](int t) { return home_[idx(t)] != away_[idx(t)]; });
    }

    // --- completion ---

    int lastSlotInUse() const {
        for (int d = kSlotCap - 1; d >= 1; --d)
            if (slotGames_[idx(d)] > 0) return d;
        return 0;
    }

    // A slot for a game added after the phases: the least used free one of
    // the season so far, else a new day at its end.
    int slotForAddedGame(int a, int b) const {
        int last = lastSlotInUse();
        int d = pickSlot(a, b, last);
        if (d == 0 && last + 1 < kSlotCap) d = last + 1;
        return d;
    }

    // The phases stop where their bounded slots run out, which can leave a
    // team short of home or road games. Each team gets exactly G / 2 of each:
    // a team short of home games is given a team short of road games, division
    // rivals still owed a meeting first, then the pair of other divisions
    // that met least, then the division rivals that met least. When one team
    // alone is left short of both, a game between two others is split into
    // two games against it, which leaves their counts as they were.
    void complete() {
        for (;;) {
            int bi = 0;
            int bj = 0;
            std::tuple<int, int, int> bestKey{INT_MAX, INT_MAX, INT_MAX};
            for (int i : teams_) {
                if (home_[idx(i)] >= target_) continue;
                for (int j : teams_) {
                    if (j == i || away_[idx(j)] >= target_) continue;
                    int m = meetings(i, j);
                    int kind = sameDivision(i, j) ? (m < divisionGames_ ? 0 : 2) : 1;
                    int need = (target_ - home_[idx(i)]) + (target_ - away_[idx(j)]);
                    std::tuple<int, int, int> key{kind, m, -need};
                    if (key < bestKey) {
                        bestKey = key;
                        bi = i;
                        bj = j;
                    }
                }
            }
            if (bi != 0) {
                int d = slotForAddedGame(bi, bj);
                if (d == 0) return;
                if (std::get<0>(bestKey) == 2 && divisions_ >= 2) divisionalAdded_ = true;
                place(d, bi, bj);
                continue;
            }
            auto shortTeam = std::find_if(teams_.begin(), teams_.end(),
                                          [&](int t) { return home_[idx(t)] < target_ || away_[idx(t)] < target_; });
            if (shortTeam == teams_.end()) return;
            if (!splitGameFor(*shortTeam)) return;
        }
    }

    bool splitGameFor(int t) {
        std::size_t pick = placed_.size();
        int fewest = INT_MAX;
        for (std::size_t k = 0; k < placed_.size(); ++k) {
            const auto& g = placed_[k];
            if (g.home == t || g.visitor == t) continue;
            int m = meetings(t, g.home) + meetings(t, g.visitor);
            if (m < fewest) {
                fewest = m;
                pick = k;
            }
        }
        if (pick == placed_.size()) return false;
        auto g = placed_[pick];
        unplace(pick);
        int d1 = slotForAddedGame(t, g.visitor);
        if (d1 == 0) return false;
        place(d1, t, g.visitor);
        int d2 = slotForAddedGame(g.home, t);
        if (d2 == 0) return false;
        place(d2, g.home, t);
        return true;
    }

    // --- spreading the meetings ---

    // How far a pair's meetings are from even: division rivals of a league of
    // several divisions are to meet exactly DG times; every other pair counts
    // the square of its meetings, so that the sum is least when meetings are
    // spread evenly; and a pair's games are to be split between both rinks.
    int pairCost(int a, int b, int meetingsDelta, int hostDelta) {
        int m = meetings(a, b) + meetingsDelta;
        int hostDiff = hosted(a, b) - hosted(b, a) + hostDelta;
        int c = hostDiff * hostDiff;
        if (divisions_ >= 2 && sameDivision(a, b))
            return c + kDivisionWeight * (m - divisionGames_) * (m - divisionGames_);
        return c + kSpreadWeight * m * m;
    }

    // Change in cost when home `h` stops hosting `v` (sign -1) or starts (+1).
    int costChange(int h, int v, int sign) { return pairCost(h, v, sign, sign) - pairCost(h, v, 0, 0); }

    // The phases pick opponents one team at a time, so late in the season the
    // only teams still needing games are paired again and again. Exchanging
    // the opponents of two games (a hosts b, c hosts d becomes a hosts d, c
    // hosts b) keeps every team's home and road count and evens the meetings
    // out; each exchange that lowers the cost, or leaves it as it is, and
    // finds free days for both new games is kept.
    void evenOutMeetings() {
        if (placed_.size() < 2) return;
        auto n = static_cast<int>(placed_.size());
        std::size_t budget = placed_.size() * kExchangeTriesPerGame;
        std::size_t patience = placed_.size() * kExchangePatiencePerGame;
        std::size_t sinceGain = 0;
        for (std::size_t t = 0; t < budget && sinceGain < patience; ++t, ++sinceGain) {
            auto k1 = idx(random_.rand(n) - 1);
            auto k2 = idx(random_.rand(n) - 1);
            auto g1 = placed_[k1];
            auto g2 = placed_[k2];
            if (g1.home == g2.home || g1.visitor == g2.visitor || g1.home == g2.visitor || g2.home == g1.visitor)
                continue;
            int delta = costChange(g1.home, g1.visitor, -1) + costChange(g2.home, g2.visitor, -1) +
                        costChange(g1.home, g2.visitor, +1) + costChange(g2.home, g1.visitor, +1);
            if (delta > 0) continue;
            if (exchangeOpponents(std::max(k1, k2), std::min(k1, k2)) && delta < 0) sinceGain = 0;
        }
        evenOutRinks();
    }

    int hostLead(int a, int b) { return hosted(a, b) - hosted(b, a); }

    std::size_t findGame(int home, int visitor) const {
        for (std::size_t k = 0; k < placed_.size(); ++k)
            if (placed_[k].home == home && placed_[k].visitor == visitor) return k;
        return placed_.size();
    }

    // The same two teams on the same day, the rinks exchanged.
    void flip(std::size_t k) {
        auto& g = placed_[k];
        --home_[idx(g.home)];
        --away_[idx(g.visitor)];
        --hosted(g.home, g.visitor);
        std::swap(g.home, g.visitor);
        ++home_[idx(g.home)];
        ++away_[idx(g.visitor)];
        ++hosted(g.home, g.visitor);
    }

    // Where a hosts b two games more than b hosts a, the rinks are exchanged
    // round a cycle a -> b -> ... -> a of pairs whose first team hosts more:
    // every team keeps its home and road count and its days, and the pairs'
    // games are split more evenly.
    void evenOutRinks() {
        bool changed = true;
        while (changed) {
            changed = false;
            for (int a : teams_) {
                for (int b : teams_) {
                    if (a == b || hostLead(a, b) < 2) continue;
                    auto path = leadPath(b, a);
                    if (path.empty()) continue;
                    flip(findGame(a, b));
                    for (std::size_t k = 0; k + 1 < path.size(); ++k) flip(findGame(path[k], path[k + 1]));
                    changed = true;
                }
            }
        }
    }

    // Teams from `from` to `to` along pairs whose first team hosts the second
    // more often, shortest first; empty when there is no such path.
    std::vector<int> leadPath(int from, int to) {
        std::array<int, kMaxTeams + 1> previous{};
        previous[idx(from)] = from;
        std::vector<int> queue{from};
        for (std::size_t q = 0; q < queue.size(); ++q) {
            int x = queue[q];
            for (int y : teams_) {
                if (previous[idx(y)] != 0 || hostLead(x, y) < 1) continue;
                previous[idx(y)] = x;
                if (y == to) {
                    std::vector<int> path{to};
                    while (path.back() != from) path.push_back(previous[idx(path.back())]);
                    std::reverse(path.begin(), path.end());
                    return path;
                }
                queue.push_back(y);
            }
        }
        return {};
    }

    // Replaces games k1 and k2 (k1 > k2) by the exchanged pair, on the same
    // days where the teams are free, else on the least used free days.
    bool exchangeOpponents(std::size_t k1, std::size_t k2) {
        auto g1 = placed_[k1];
        auto g2 = placed_[k2];
        unplace(k1);
        unplace(k2);
        SlotGame n1{0, g1.home, g2.visitor};
        SlotGame n2{0, g2.home, g1.visitor};
        auto freeOn = [&](const SlotGame& g, int d) {
            return !busy_[idx(g.home)].test(idx(d)) && !busy_[idx(g.visitor)].test(idx(d));
        };
        if (freeOn(n1, g1.slot) && freeOn(n2, g2.slot)) {
            n1.slot = g1.slot;
            n2.slot = g2.slot;
        } else if (freeOn(n1, g2.slot) && freeOn(n2, g1.slot)) {
            n1.slot = g2.slot;
            n2.slot = g1.slot;
        }
        if (n1.slot != 0) {
            place(n1.slot, n1.home, n1.visitor);
            place(n2.slot, n2.home, n2.visitor);
            return true;
        }
        int last = std::max({lastSlotInUse(), g1.slot, g2.slot});
        int d1 = pickSlot(n1.home, n1.visitor, last);
        if (d1 != 0) {
            place(d1, n1.home, n1.visitor);
            int d2 = pickSlot(n2.home, n2.visitor, last);
            if (d2 != 0) {
                place(d2, n2.home, n2.visitor);
                return true;
            }
            unplace(placed_.size() - 1);
        }
        place(g2.slot, g2.home, g2.visitor);
        place(g1.slot, g1.home, g1.visitor);
        return false;
    }

    // --- mixing: the slot order owes nothing to the order of the phases ---

    void mixTeams() {
        for (int n = 0; n < kTeamSwaps; ++n) {
            int a = random_.rand(kMaxTeams);
            int b = random_.rand(kMaxTeams);
            while (!sameDivision(a, b)) b = random_.rand(kMaxTeams);
            if (a == b || !active_.test(idx(a)) || !active_.test(idx(b))) continue;
            for (auto& g : placed_) {
                for (int* side : {&g.home, &g.visitor}) {
                    if (*side == a)
                        *side = b;
                    else if (*side == b)
                        *side = a;
                }
            }
        }
    }

    void mixSlots() {
        int span = games_ - 1;
        // at[p]: the slot whose games now lie at position p.
        std::vector<int> at(idx(kSlotCap));
        for (int d = 0; d < kSlotCap; ++d) at[idx(d)] = d;
        for (int n = 0; n < kSlotSwaps; ++n) std::swap(at[idx(random_.rand(span))], at[idx(random_.rand(span))]);
        std::vector<int> moved(idx(kSlotCap));
        for (int p = 0; p < kSlotCap; ++p) moved[idx(at[idx(p)])] = p;
        for (auto& g : placed_) g.slot = moved[idx(g.slot)];
    }

    // The phases note when they may add division games; whether the schedule
    // still has any beyond DG once the meetings are evened out is what the
    // user is told.
    bool divisionRivalsMeetMore() {
        for (int a : teams_)
            for (int b : teams_)
                if (a < b && sameDivision(a, b) && meetings(a, b) > divisionGames_) return true;
        return false;
    }

    GeneratedSchedule result(const ScheduleRequest& request) {
        GeneratedSchedule out;
        out.games = placed_;
        for (const auto& g : placed_) out.slots = std::max(out.slots, g.slot);
        auto dates = slotDates(request, out.slots);
        for (int k = 2; k <= out.slots; ++k)
            if (seasonMonth(dates[idx(k)].first) < seasonMonth(dates[idx(k - 1)].first)) out.runsPastSeasonEnd = true;
        for (const auto& g : placed_) {
            auto [month, day] = dates[idx(g.slot)];
            out.records.push_back(newGameRecord(g.visitor, g.home, month, day, request.seasonYear));
        }
        auto wanted = static_cast<int>(teams_.size()) * target_;
        out.missingGames = std::max(0, wanted - static_cast<int>(placed_.size()));
        out.divisionalGamesAdded = divisionalAdded_;
        out.unbalancedLeague = extra_ > 0;
        out.report.push_back(out.missingGames == 0 ? std::string("Schedule complete!")
                                                   : fmt::format("Schedule Missing {} Games!", out.missingGames));
        if (divisions_ >= 2 && divisionalAdded_)
            out.report.emplace_back("Additional divisional games were added to the schedule.");
        if (extra_ > 0) out.report.emplace_back("Unbalanced League.");
        return out;
    }

    const std::vector<int>& teams_;
    int games_;
    int divisionGames_;
    int target_;
    Random& random_;
    std::bitset<kMaxTeams + 1> active_;
    int divisions_ = 0;
    int extra_ = 0;
    int horizon_ = 0;
    bool divisionalAdded_ = false;
    std::array<SlotSet, kSlotCap> within_{};
    std::array<SlotSet, kMaxTeams + 1> busy_{};
    std::array<int, kSlotCap> slotGames_{};
    std::array<int, kMaxTeams + 1> home_{};
    std::array<int, kMaxTeams + 1> away_{};
    std::vector<int> meetings_;
    std::vector<int> hosted_;
    std::vector<SlotGame> placed_;
};

int largestDivision(const std::vector<int>& teams) {
    std::map<int, int> sizes;
    for (int t : teams) ++sizes[divisionOfTeam(t)];
    int most = 0;
    for (const auto& [d, n] : sizes) most = std::max(most, n);
    return most;
}

bool wrapsPastAugust(const std::vector<std::pair<int, int>>& dates) {
    for (std::size_t k = 2; k < dates.size(); ++k)
        if (seasonMonth(dates[k].first) < seasonMonth(dates[k - 1].first)) return true;
    return false;
}

}  // namespace

int slotStep(int gamesPerTeam) { return gamesPerTeam < 50 ? 3 : 2; }

std::vector<std::pair<int, int>> slotDates(const ScheduleRequest& request, int count) {
    std::vector<std::pair<int, int>> dates(idx(std::max(count, 0) + 1), {0, 0});
    if (count < 1) return dates;
    int month = request.startMonth;
    int day = std::min(request.startDay, scheduleMonthLength(month));
    int step = slotStep(request.gamesPerTeam);
    dates[1] = {month, day};
    for (int k = 2; k <= count; ++k) {
        for (int s = 0; s < step; ++s) {
            if (++day > scheduleMonthLength(month)) {
                day = 1;
                if (++month == 13) month = 1;
            }
        }
        dates[idx(k)] = {month, day};
    }
    return dates;
}

std::string checkScheduleRequest(const std::vector<int>& teams, const ScheduleRequest& request) {
    int g = request.gamesPerTeam;
    int dg = request.divisionGames;
    if (teams.size() < 2) return "A minimum of two teams is required to create a schedule!";
    if (g % 2 != 0 || g < 10 || g > 98) return "Schedules must be an even number of games between 10 and 98.";
    if (dg % 2 != 0 || dg < 0 || dg > 20)
        return "Divisional games must be zero or an even number between 2 and 20 games.";
    if (request.startMonth < 1 || request.startMonth > 12 || request.startDay < 1 || request.startDay > 31)
        return "The season needs a first date.";
    int rivals = largestDivision(teams) - 1;
    if (dg * rivals > g)
        return fmt::format(
            "{} games against each of {} division rivals make {} games, more than the {} each team plays.", dg, rivals,
            dg * rivals, g);
    auto total = teams.size() * static_cast<std::size_t>(g / 2);
    if (total > kMaxScheduleGames)
        return fmt::format("{} teams playing {} games each need {} games; a schedule holds at most {}.", teams.size(),
                           g, total, kMaxScheduleGames);
    if (wrapsPastAugust(slotDates(request, g + 10)))
        return fmt::format("A season of {} games from {} {} would run past the end of August.", g,
                           monthName(request.startMonth), request.startDay);
    return {};
}

GeneratedSchedule generateSchedule(const std::vector<int>& teams, const ScheduleRequest& request, Random& random) {
    Generator gen(teams, request, random);
    return gen.run(request);
}

ScheduleOutcome makeComputerSchedule(const fs::path& leagueDir, const ScheduleRequest& request,
                                     std::string_view scheduleFile, std::uint64_t seed) {
    auto directory = TeamDirectory::load(leagueDir);
    auto teams = directory.activeNumbers();
    if (auto refusal = checkScheduleRequest(teams, request); !refusal.empty()) return {false, {refusal}, 0};

    ScheduleRequest req = request;
    if (req.seasonYear == 0) {
        for (int t : teams) {
            if (directory.team(t).year > 1900) {
                req.seasonYear = directory.team(t).year;
                break;
            }
        }
    }
    Random random(seed);
    auto made = generateSchedule(teams, req, random);
    if (made.runsPastSeasonEnd)
        return {false,
                {fmt::format("A season of {} games from {} {} would run past the end of August.", req.gamesPerTeam,
                             monthName(req.startMonth), req.startDay)},
                0};
    saveNewSchedule(leagueDir, made.records, directory.activeTeams(), scheduleFile);
    return {true, made.report, made.records.size()};
}

ScheduleOutcome makeComputerSchedule(const fs::path& leagueDir, int gamesPerTeam, int divisionGames, int startYear,
                                     int startMonth, int startDay, std::uint64_t seed) {
    ScheduleRequest request;
    request.gamesPerTeam = gamesPerTeam;
    request.divisionGames = divisionGames;
    request.startMonth = startMonth;
    request.startDay = startDay;
    // A season starts in the autumn: a first date from January on belongs to
    // the season that began the year before.
    request.seasonYear = startYear > 0 && startMonth < 9 ? startYear - 1 : startYear;
    return makeComputerSchedule(leagueDir, request, kDefaultScheduleFile, seed);
}

}  // namespace tallyrink
