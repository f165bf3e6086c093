#include "engine/play_state.h"

namespace tallyrink {

namespace {

constexpr std::array<std::string_view, kZoneCount> kZoneText = {
    "FACEOFF-CENTER-1",
    "FACEOFF-CENTER-2",
    "FACEOFF-DEFENSE-1-1",
    "FACEOFF-DEFENSE-1-2",
    "FACEOFF-DEFENSE-2-1",
    "FACEOFF-DEFENSE-2-2",
    "FACEOFF-NEUTRAL-1-1",
    "FACEOFF-NEUTRAL-1-2",
    "FACEOFF-NEUTRAL-2-1",
    "FACEOFF-NEUTRAL-2-2",
    "DEFENSE-ZONE",
    "NEUTRAL-ZONE",
    "OFFENSE-ZONE",
    "OFFENSE-SHOOTER",
    "RUSH",
    "DEFENSE-ZONE-RETREAT",
    "NEUTRAL-ZONE-RETREAT",
    "PENALTY-SHOT",
    "SHOOTOUT",
    "CONTINUE-BOX",
};

constexpr std::array<std::string_view, kCallCount> kCallText = {
    "",          "BALANCED", "SAFE",         "AGGRESSIVE", "CLEAR",    "DUMP/CHASE", "SKATE/PASS",
    "SHOOT",     "ADVANCE",  "PLAY-SHOOT",   "PLAY-TO",    "PASS",     "PASS-SAFE",  "RETREAT",
    "PENETRATE", "RUSH",     "DRAW FORWARD", "DRAW BACK",  "COMPUTER", "ENDPERIOD",
};

constexpr std::array<std::string_view, kResultCount> kResultText = {
    "",           "PENALTY",    "OFFENSE-ZONE", "OFFENSE-SHOOTER", "PASS",          "GOAL",
    "SAVE",       "BLOCK",      "MISS",         "CLEAR",           "OFFSIDES",      "TO",
    "TO-DEFENSE", "TO-NEUTRAL", "TO-RUSH",      "MOVE-UP",         "NO-PLAY",       "DELAY",
    "CLEAR-GOAL", "CLEAR-SAVE", "PENALTY-SHOT", "SHOOTOUT-GOAL",   "SHOOTOUT-MISS", "RETREAT",
    "END",
};

constexpr std::array<std::string_view, kAutoStopCount> kAutoStopText = {
    "NONE",
    "End 1st Period",
    "End 2nd Period",
    "End 3rd Period",
    "1st Period - 2 Minutes",
    "1st Period - 5 Minutes",
    "1st Period - 10 Minutes",
    "2nd Period - 2 Minutes",
    "2nd Period - 5 Minutes",
    "2nd Period - 10 Minutes",
    "3rd Period - 1 Minute",
    "3rd Period - 2 Minutes",
    "3rd Period - 5 Minutes",
    "3rd Period - 10 Minutes",
};

constexpr std::array<AutoStopPoint, kAutoStopCount> kAutoStopPoint = {{
    {0, 0},
    {1, 0},
    {2, 0},
    {3, 0},
    {1, 2},
    {1, 5},
    {1, 10},
    {2, 2},
    {2, 5},
    {2, 10},
    {3, 1},
    {3, 2},
    {3, 5},
    {3, 10},
}};

template <class E, std::size_t N>
std::optional<E> lookUp(const std::array<std::string_view, N>& table, std::string_view s) {
    for (std::size_t i = 0; i < N; ++i)
        if (table[i] == s) return static_cast<E>(i);
    return std::nullopt;
}

}  // namespace

std::string_view text(Zone z) { return kZoneText.at(static_cast<std::size_t>(z)); }
std::string_view text(Call c) { return kCallText.at(static_cast<std::size_t>(c)); }
std::string_view text(Result r) { return kResultText.at(static_cast<std::size_t>(r)); }

std::optional<Zone> zoneFromText(std::string_view s) { return lookUp<Zone>(kZoneText, s); }
std::optional<Call> callFromText(std::string_view s) {
    if (s.empty()) return std::nullopt;
    return lookUp<Call>(kCallText, s);
}
std::optional<Result> resultFromText(std::string_view s) {
    if (s.empty()) return std::nullopt;
    return lookUp<Result>(kResultText, s);
}

std::string_view text(AutoStop a) { return kAutoStopText.at(static_cast<std::size_t>(a)); }
std::optional<AutoStop> autoStopFromText(std::string_view s) { return lookUp<AutoStop>(kAutoStopText, s); }
AutoStopPoint pointOf(AutoStop a) { return kAutoStopPoint.at(static_cast<std::size_t>(a)); }

FaceoffSpot faceoffSpot(Zone z) {
    if (z <= Zone::FaceoffCenter2) return FaceoffSpot::Center;
    if (z <= Zone::FaceoffDefense22) return FaceoffSpot::Defense;
    return FaceoffSpot::Neutral;
}

int faceoffEndSide(Zone z) {
    switch (z) {
        case Zone::FaceoffDefense11:
        case Zone::FaceoffDefense12:
        case Zone::FaceoffNeutral11:
        case Zone::FaceoffNeutral12:
            return 0;
        case Zone::FaceoffDefense21:
        case Zone::FaceoffDefense22:
        case Zone::FaceoffNeutral21:
        case Zone::FaceoffNeutral22:
            return 1;
        default:
            return -1;
    }
}

Zone faceoffZone(FaceoffSpot spot, int endSide, int stage) {
    int first = 0;
    if (spot == FaceoffSpot::Defense) first = static_cast<int>(Zone::FaceoffDefense11) + (endSide == 1 ? 2 : 0);
    if (spot == FaceoffSpot::Neutral) first = static_cast<int>(Zone::FaceoffNeutral11) + (endSide == 1 ? 2 : 0);
    return static_cast<Zone>(first + (stage == 2 ? 1 : 0));
}

}  // namespace tallyrink
