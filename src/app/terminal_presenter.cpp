#include "app/terminal_presenter.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <sstream>
#include <thread>

#include "presentation/call_menu.h"

namespace tallyrink::cli {

std::string periodName(int period, int periods) {
    if (period > periods) return period == periods + 1 ? "OT" : fmt::format("OT{}", period - periods);
    switch (period) {
        case 1:
            return "1st";
        case 2:
            return "2nd";
        case 3:
            return "3rd";
        default:
            return fmt::format("{}th", period);
    }
}

std::string clockText(int seconds) { return fmt::format("{}:{:02}", seconds / 60, seconds % 60); }

void TerminalPresenter::ShowPlayLines(const Game& game, const std::vector<std::string>& lines) {
    if (quiet_) return;
    const GameState& s = game.state();
    for (const auto& line : lines) {
        // A goal's short line trails a rule of dashes for a wide screen; a
        // terminal row ends with the score.
        std::string_view text = line;
        if (text.ends_with("----------")) {
            text = text.substr(0, text.find_last_not_of('-') + 1);
            while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
        }
        out_ << fmt::format("  {:>4} {:>5}  {}\n", periodName(s.Period, game.periods()), clockText(s.Clock), text);
        out_.flush();
        if (options_.pace > 0) std::this_thread::sleep_for(std::chrono::duration<double>(options_.pace));
    }
}

void TerminalPresenter::ShowClock(const Game& game) {
    if (quiet_) return;
    const GameState& s = game.state();
    if (s.Period == shownPeriod_) return;
    shownPeriod_ = s.Period;
    std::string name = s.PlayZone == Zone::Shootout ? std::string("Shootout")
                       : s.Period > game.periods()  ? std::string("Overtime")
                                                    : periodName(s.Period, game.periods()) + " period";
    out_ << fmt::format("\n-- {} --   {}\n", name, scoreboard(game));
}

void TerminalPresenter::AskPlayCall(const Game&, int side) { pending_ = {Ask::PlayCall, side}; }

void TerminalPresenter::AskLineChange(const Game&, int side) { pending_ = {Ask::LineChange, side}; }

void TerminalPresenter::GameOver(const Game&) { over_ = true; }

TerminalPresenter::Pending TerminalPresenter::takePending() {
    Pending p = pending_;
    pending_ = {};
    return p;
}

std::string TerminalPresenter::scoreboard(const Game& game) {
    const GameState& s = game.state();
    auto code = [&](int side) { return game.session().side(side).team.Abbrev.str(); };
    std::string clock = s.PlayZone == Zone::Shootout ? std::string("-------") : clockText(s.Clock);
    std::string strength = fmt::format("{}-on-{}", game.strength(kVisitor), game.strength(kHome));
    return fmt::format("{} {}  |  {} {} ({} SOG)  {} {} ({} SOG)  |  {}", periodName(s.Period, game.periods()), clock,
                       code(kVisitor), s.Score[0], s.Shots[0], code(kHome), s.Score[1], s.Shots[1], strength);
}

namespace {

void showChoices(const Game& game, int side, const std::vector<CallChoice>& choices, bool lineChange, bool offerSave,
                 std::ostream& out) {
    std::string team = game.session().side(side).team.City.str();
    out << fmt::format("\n{}\n{}\n", TerminalPresenter::scoreboard(game), callBoxCaption(game));
    if (choices.empty()) {
        out << fmt::format("{}: press Enter to go on", team);
    } else {
        out << fmt::format("{}, select how to proceed:", team);
        for (const auto& c : choices) out << "  " << c.caption;
    }
    if (lineChange) {
        LineChoice on = game.linesOnIce(side);
        out << fmt::format("\n  On the ice: forward unit {} of {}", on.forwards, on.forwardUnits);
        if (on.pairs > 0) out << fmt::format(", defense pair {} of {}", on.pair, on.pairs);
        if (on.goaliePulled) out << ", goalie pulled";
        out << "\n  (l F [P]: send out forward unit F and pair P; g: goalie out or back; r: the computer's change)";
    }
    out << "\n  (Enter: the first choice; q: the computer coaches the rest";
    if (offerSave) out << "; s: save the game and stop";
    if (lineChange) out << "; lines stay as they are";
    out << ")\n> ";
    out.flush();
}

// A bench command typed at a prompt: "l F [P]", "g" or "r". Returns false
// when the answer is no bench command; otherwise tells the outcome.
bool benchCommand(RecordedGame& recorded, int side, const std::string& answer, std::ostream& out) {
    const Game& game = recorded.game();
    if (answer.empty()) return false;
    char c = static_cast<char>(std::tolower(static_cast<unsigned char>(answer[0])));
    if (answer.size() > 1 && answer[1] != ' ') return false;
    std::string refusal;
    std::size_t toldBefore = game.playTelling().textsBetweenPlays().size();
    if (c == 'l') {
        std::istringstream words(answer.substr(1));
        int forwards = 0;
        int pair = 0;
        if (!(words >> forwards)) {
            out << "Type l and a forward unit, and a defense pair if you like: l 2 1\n";
            return true;
        }
        words >> pair;
        refusal = recorded.lineChange(side, forwards, pair);
    } else if (c == 'g') {
        refusal = recorded.goaliePull(side, !game.linesOnIce(side).goaliePulled);
    } else if (c == 'r') {
        refusal = recorded.rollLines(side);
    } else {
        return false;
    }
    if (!refusal.empty()) {
        out << refusal << "\n";
        return true;
    }
    // What the bench did is told at once, before the play goes on.
    auto told = game.playTelling().textsBetweenPlays();
    if (told.size() <= toldBefore) out << "The lines stay as they are.\n";
    for (std::size_t i = std::min(toldBefore, told.size()); i < told.size(); ++i)
        if (told[i] != "..") out << "  " << told[i] << "\n";
    return true;
}

}  // namespace

void coachGame(Game& game, TerminalPresenter& presenter, std::istream& in, std::ostream& out) {
    RecordedGame recorded(game);
    recorded.start();
    coachRecordedGame(recorded, presenter, in, out, false);
}

CoachingEnd coachRecordedGame(RecordedGame& recorded, TerminalPresenter& presenter, std::istream& in, std::ostream& out,
                              bool offerSave, const std::function<bool()>& stopAsked) {
    const Game& game = recorded.game();
    while (!game.state().GameEndedFlag) {
        auto pending = presenter.takePending();
        if (pending.ask == TerminalPresenter::Ask::None) {
            // Nothing asked of the user: the driver has more to run. What it
            // asks next is the question of this round.
            recorded.drive();
            pending = presenter.takePending();
            if (game.state().GameEndedFlag) break;
            if (pending.ask == TerminalPresenter::Ask::None) {
                // The engine stopped with no question: let the computer finish.
                recorded.setCoach(kVisitor, CoachKind::Computer);
                recorded.setCoach(kHome, CoachKind::Computer);
                recorded.drive();
                break;
            }
        }
        int side = pending.side;
        presenter.ShowClock(game);
        auto choices = callChoices(game, side);
        bool lineChange = pending.ask == TerminalPresenter::Ask::LineChange;
        while (true) {
            showChoices(game, side, choices, lineChange, offerSave, out);
            std::string answer;
            auto interrupted = [&] { return offerSave && stopAsked && stopAsked(); };
            bool read = !interrupted() && std::getline(in, answer);
            if (interrupted()) {
                in.clear();
                out << "\n";
                answer.assign(1, 's');
            } else if (!read || answer == "q" || answer == "Q") {
                if (!in) out << "\n";
                out << "The computer coaches the rest of the game.\n";
                recorded.setCoach(kVisitor, CoachKind::Computer);
                recorded.setCoach(kHome, CoachKind::Computer);
                if (choices.empty())
                    recorded.proceed();
                else
                    recorded.drive();
                break;
            }
            answer.erase(0, answer.find_first_not_of(" \t"));
            if (offerSave && (answer == "s" || answer == "S")) {
                // The question stands for whoever picks the game up again.
                if (lineChange)
                    presenter.AskLineChange(game, side);
                else
                    presenter.AskPlayCall(game, side);
                return CoachingEnd::SaveAsked;
            }
            if (benchCommand(recorded, side, answer, out)) continue;
            if (choices.empty()) {
                recorded.proceed();
                break;
            }
            if (answer.empty()) answer = std::string(1, choices.front().key);
            const CallChoice* picked = nullptr;
            for (const auto& c : choices)
                if (answer.size() == 1 && answer[0] == c.key) picked = &c;
            if (picked == nullptr) {
                out << "Invalid Choice!\n";
                continue;
            }
            if (picked->call == Call::PlayTo)
                recorded.offense(picked->call, picked->target);
            else
                recorded.offense(picked->call);
            break;
        }
    }
    return CoachingEnd::GameOver;
}

}  // namespace tallyrink::cli
