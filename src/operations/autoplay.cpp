#include "operations/autoplay.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace tallyrink {

namespace {

constexpr int kNoGameKey = 1232;

void setStatus(GameRecord& g, char c) { g.Status.raw[0] = c; }

bool bothComputer(const GameRecord& g) { return g.Coach[0].raw[0] == 'C' && g.Coach[1].raw[0] == 'C'; }

int keyOf(const GameRecord& g) { return dateKey(g.Month, g.Day); }

bool inScope(const GameRecord& g, MarkScope scope, const LeagueDate& date, int team) {
    switch (scope) {
        case MarkScope::Day:
            return g.Month == date.month && g.Day == date.day;
        case MarkScope::Through:
            return onOrBefore(g.Month, g.Day, date);
        case MarkScope::Month:
            return g.Month == date.month;
        case MarkScope::All:
            return true;
        case MarkScope::Team:
            return g.VisitorTeam == team || g.HomeTeam == team;
    }
    return false;
}

// The marked rows in the order PlayCommandChosen takes them, listed once
// for a run: a run's games change nothing but the status of their own rows,
// so each choice looks only at the rows left of the earliest date rather
// than at the whole schedule.
class MarkedRows {
public:
    explicit MarkedRows(const Schedule& schedule) {
        const auto& rows = schedule.rows();
        for (std::size_t i = 0; i < rows.size(); ++i)
            if (statusOf(rows[i]) == kMarked) order_.push_back({keyOf(rows[i]), i + 1});
        std::sort(order_.begin(), order_.end());
    }

    // As PlayCommandChosen: of the earliest date's rows, its first computer
    // game, else its first game.
    std::optional<std::size_t> next(const Schedule& schedule) {
        auto marked = [&](std::size_t k) { return statusOf(schedule.row(order_[k].second)) == kMarked; };
        while (first_ < order_.size() && !marked(first_)) ++first_;
        if (first_ == order_.size()) return std::nullopt;
        int key = order_[first_].first;
        if (key < kNoGameKey)
            for (std::size_t k = first_; k < order_.size() && order_[k].first == key; ++k)
                if (marked(k) && bothComputer(schedule.row(order_[k].second))) return order_[k].second;
        return order_[first_].second;
    }

private:
    std::vector<std::pair<int, std::size_t>> order_;  // date key and row, in that order
    std::size_t first_ = 0;                           // the rows before it are played
};

}  // namespace

bool onOrBefore(int month, int day, const LeagueDate& date) {
    if (month == date.month) return day <= date.day;
    if (date.month >= 8) return month >= 8 && month < date.month;
    return month < date.month || month >= 8;
}

int markGames(Schedule& schedule, MarkScope scope, const LeagueDate& date, int team) {
    int marked = 0;
    for (std::size_t r = 1; r <= schedule.size(); ++r) {
        GameRecord& g = schedule.row(r);
        if (statusOf(g) != kUnplayed || g.VisitorTeam == 0 || g.HomeTeam == 0) continue;
        if (!inScope(g, scope, date, team)) continue;
        setStatus(g, kMarked);
        ++marked;
    }
    return marked;
}

int unmarkGames(Schedule& schedule) {
    int n = 0;
    for (std::size_t r = 1; r <= schedule.size(); ++r) {
        GameRecord& g = schedule.row(r);
        if (statusOf(g) == kMarked) {
            setStatus(g, kUnplayed);
            ++n;
        }
    }
    return n;
}

std::optional<std::size_t> PlayCommandChosen(const Schedule& schedule) {
    // One look at each row, as the run asks before every game: the earliest
    // date of a human game, the first computer game of the earliest date and
    // the first game of the earliest date whoever coaches it.
    struct First {
        int key = kNoGameKey + 1;
        std::size_t row = 0;
        void offer(int k, std::size_t r) {
            if (k < key) {
                key = k;
                row = r;
            }
        }
    };
    int firstHumanKey = kNoGameKey;
    First computer, any;
    const auto& rows = schedule.rows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const GameRecord& g = rows[i];
        if (statusOf(g) != kMarked) continue;
        int key = keyOf(g);
        any.offer(key, i + 1);
        if (!bothComputer(g))
            firstHumanKey = std::min(firstHumanKey, key);
        else if (key < kNoGameKey)
            computer.offer(key, i + 1);
    }
    // A computer game goes first on a day that has human games too, but a
    // game of an earlier date, whoever coaches it, goes before it.
    if (computer.row != 0 && computer.key <= firstHumanKey && !(any.key < computer.key)) return computer.row;
    if (any.row != 0) return any.row;
    return std::nullopt;
}

AutoplayResult runAutoplay(Schedule& schedule, const ActiveTeams& active, GameRunner& runner,
                           const AutoplayHooks& hooks) {
    using Clock = std::chrono::steady_clock;
    AutoplayResult result;
    auto started = Clock::now();
    int total = 0;
    for (const auto& g : schedule.rows()) total += statusOf(g) == kMarked;
    if (total == 0) {
        result.end = AutoplayEnd::NothingMarked;
        return result;
    }
    // The marks go to the file first, so a run cut short by a crash is seen
    // for what it was; the rows are numbered as saved from here on.
    schedule.save(active);

    auto finish = [&](AutoplayEnd end) {
        result.end = end;
        result.seconds = std::chrono::duration<double>(Clock::now() - started).count();
        if (unmarkGames(schedule) > 0) schedule.save(active);
        return result;
    };

    MarkedRows marked(schedule);
    while (true) {
        if (hooks.stopRequested && hooks.stopRequested()) return finish(AutoplayEnd::Stopped);
        auto row = marked.next(schedule);
        if (!row) return finish(AutoplayEnd::Done);
        const GameRecord& g = schedule.row(*row);
        if (!bothComputer(g)) {
            result.humanRow = *row;
            return finish(AutoplayEnd::HumanGame);
        }
        LeagueDate date{g.Month, g.Day, seasonMonth(g.Month), calendarYearOf(schedule.seasonYear(), g.Month)};
        runner.playAndPost(schedule, *row);
        if (statusOf(schedule.row(*row)) == kMarked) {
            // A runner that didn't post must not make the run loop forever on
            // one game.
            throw std::logic_error(fmt::format("game {} was played but not posted", *row));
        }
        ++result.played;
        if (hooks.progress) {
            AutoplayProgress p;
            p.done = result.played;
            p.total = total;
            p.date = date;
            double seconds = std::chrono::duration<double>(Clock::now() - started).count();
            p.gamesPerSecond = seconds > 0 ? result.played / seconds : 0;
            p.secondsLeft = p.gamesPerSecond > 0 ? (total - result.played) / p.gamesPerSecond : 0;
            hooks.progress(p);
        }
    }
}

}  // namespace tallyrink
