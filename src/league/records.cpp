#include "league/record_fields.h"

namespace tallyrink::codec {

static_assert(tilesExactly<StatLine>());
static_assert(tilesExactly<TeamStatLine>());
static_assert(tilesExactly<PlayerRecord>());
static_assert(tilesExactly<TeamRecord>());
static_assert(tilesExactly<GamePlanRecord>());
static_assert(tilesExactly<GameRecord>());

TALLYRINK_INSTANTIATE_RECORD_CODEC(StatLine)
TALLYRINK_INSTANTIATE_RECORD_CODEC(TeamStatLine)
TALLYRINK_INSTANTIATE_RECORD_CODEC(PlayerRecord)
TALLYRINK_INSTANTIATE_RECORD_CODEC(TeamRecord)
TALLYRINK_INSTANTIATE_RECORD_CODEC(GamePlanRecord)
TALLYRINK_INSTANTIATE_RECORD_CODEC(GameRecord)

}  // namespace tallyrink::codec
