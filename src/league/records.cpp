#include "league/record_fields.h"

namespace tallyrink::codec {

static_assert(tilesExactly<StatLine>());
static_assert(tilesExactly<TeamStatLine>());
static_assert(tilesExactly<PlayerRecord>());
static_assert(tilesExactly<TeamRecord>());
static_assert(tilesExactly<GamePlanRecord>());
static_assert(tilesExactly<GameRecord>());

#define TALLYRINK_RECORD_CODEC(R)                                 \
    template void decode<R>(const std::uint8_t*, R&);             \
    template void encode<R>(const R&, std::uint8_t*);             \
    template R fromSlot<R>(std::span<const std::uint8_t>);        \
    template std::vector<std::uint8_t> toSlot<R>(const R&);       \
    template std::vector<FieldInfo> fieldInfo<R>();
TALLYRINK_RECORD_CODEC(StatLine)
TALLYRINK_RECORD_CODEC(TeamStatLine)
TALLYRINK_RECORD_CODEC(PlayerRecord)
TALLYRINK_RECORD_CODEC(TeamRecord)
TALLYRINK_RECORD_CODEC(GamePlanRecord)
TALLYRINK_RECORD_CODEC(GameRecord)
#undef TALLYRINK_RECORD_CODEC

}  // namespace tallyrink::codec
