#pragma once

// Records on disk are packed little-endian byte images. Each record type is
// described by a table of fields (name, offset, member); reading and writing
// walk that table, so the in-memory struct keeps natural alignment and the
// byte layout is stated once, next to a compile-time check that the fields
// tile the record exactly.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "league/fixed_text.h"

namespace tallyrink::codec {

template <class T>
struct Wire;

// Size (and slot, where longer) of a record: visible wherever the record is.
template <class R>
struct Layout;

// The record's field table. Only the file that instantiates a record's codec
// needs it: the tables are large to compile.
template <class R>
struct FieldTable;

template <class R>
concept Record = requires {
    { Layout<R>::size } -> std::convertible_to<std::size_t>;
};

template <>
struct Wire<std::uint8_t> {
    static constexpr std::size_t width = 1;
    static void get(const std::uint8_t* p, std::uint8_t& v) { v = p[0]; }
    static void put(std::uint8_t* p, std::uint8_t v) { p[0] = v; }
};

template <>
struct Wire<std::int16_t> {
    static constexpr std::size_t width = 2;
    static void get(const std::uint8_t* p, std::int16_t& v) {
        v = static_cast<std::int16_t>(static_cast<std::uint16_t>(p[0] | (p[1] << 8)));
    }
    static void put(std::uint8_t* p, std::int16_t v) {
        auto u = static_cast<std::uint16_t>(v);
        p[0] = static_cast<std::uint8_t>(u);
        p[1] = static_cast<std::uint8_t>(u >> 8);
    }
};

template <>
struct Wire<std::int32_t> {
    static constexpr std::size_t width = 4;
    static void get(const std::uint8_t* p, std::int32_t& v) {
        std::uint32_t u =
            std::uint32_t{p[0]} | std::uint32_t{p[1]} << 8 | std::uint32_t{p[2]} << 16 | std::uint32_t{p[3]} << 24;
        v = static_cast<std::int32_t>(u);
    }
    static void put(std::uint8_t* p, std::int32_t v) {
        auto u = static_cast<std::uint32_t>(v);
        for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(u >> (8 * i));
    }
};

template <>
struct Wire<double> {
    static constexpr std::size_t width = 8;
    static void get(const std::uint8_t* p, double& v) {
        std::uint64_t u = 0;
        for (int i = 7; i >= 0; --i) u = (u << 8) | p[i];
        v = std::bit_cast<double>(u);
    }
    static void put(std::uint8_t* p, double v) {
        auto u = std::bit_cast<std::uint64_t>(v);
        for (int i = 0; i < 8; ++i) p[i] = static_cast<std::uint8_t>(u >> (8 * i));
    }
};

template <std::size_t N>
struct Wire<FixedText<N>> {
    static constexpr std::size_t width = N;
    static void get(const std::uint8_t* p, FixedText<N>& v) { std::memcpy(v.raw.data(), p, N); }
    static void put(std::uint8_t* p, const FixedText<N>& v) { std::memcpy(p, v.raw.data(), N); }
};

template <class T, std::size_t N>
struct Wire<std::array<T, N>> {
    static constexpr std::size_t width = N * Wire<T>::width;
    static void get(const std::uint8_t* p, std::array<T, N>& v) {
        for (std::size_t i = 0; i < N; ++i) Wire<T>::get(p + i * Wire<T>::width, v[i]);
    }
    static void put(std::uint8_t* p, const std::array<T, N>& v) {
        for (std::size_t i = 0; i < N; ++i) Wire<T>::put(p + i * Wire<T>::width, v[i]);
    }
};

template <class R, class T>
struct Field {
    std::string_view name;
    std::size_t offset;
    T R::*member;
    static constexpr std::size_t width = Wire<T>::width;
};

template <class R, class T>
Field(std::string_view, std::size_t, T R::*) -> Field<R, T>;

// A record shorter than its slot leaves the rest of the slot as it was; the
// struct carries those bytes in `SlotTail` so a whole-file rewrite keeps them.
template <class R>
constexpr std::size_t tailWidth() {
    if constexpr (requires { Layout<R>::slot; })
        return Layout<R>::slot - Layout<R>::size;
    else
        return 0;
}

template <class R>
constexpr std::size_t slotWidth() {
    return Layout<R>::size + tailWidth<R>();
}

// The field walk: each value put together byte by byte, right on any host.
template <Record R>
void decodeFields(const std::uint8_t* p, R& r) {
    std::apply(
        [&](const auto&... f) {
            (Wire<std::remove_cvref_t<decltype(r.*(f.member))>>::get(p + f.offset, r.*(f.member)), ...);
        },
        FieldTable<R>::fields);
}

template <Record R>
void encodeFields(const R& r, std::uint8_t* p) {
    std::apply(
        [&](const auto&... f) {
            (Wire<std::remove_cvref_t<decltype(r.*(f.member))>>::put(p + f.offset, r.*(f.member)), ...);
        },
        FieldTable<R>::fields);
}

// On a little-endian host with IEEE doubles a value's bytes in memory are its
// bytes on the wire, so a record is copied as a list of stretches that lie
// together both in the file and in the struct: a few dozen copies in place
// of hundreds of byte shuffles.
inline constexpr bool kWireIsMemory =
    std::endian::native == std::endian::little && std::numeric_limits<double>::is_iec559;

struct Run {
    std::uint32_t wire;    // offset in the record's bytes
    std::uint32_t memory;  // offset in the struct
    std::uint32_t length;
};

template <class T>
struct SameImage : std::false_type {};
template <>
struct SameImage<std::uint8_t> : std::true_type {};
template <>
struct SameImage<std::int16_t> : std::true_type {};
template <>
struct SameImage<std::int32_t> : std::true_type {};
template <>
struct SameImage<double> : std::true_type {};
template <std::size_t N>
struct SameImage<FixedText<N>> : std::bool_constant<sizeof(FixedText<N>) == N> {};
template <class T, std::size_t N>
struct SameImage<std::array<T, N>>
    : std::bool_constant<SameImage<T>::value && sizeof(std::array<T, N>) == N * sizeof(T)> {};

inline void addRun(std::vector<Run>& runs, std::size_t wire, std::size_t memory, std::size_t length) {
    if (!runs.empty() && runs.back().wire + runs.back().length == wire &&
        runs.back().memory + runs.back().length == memory) {
        runs.back().length += static_cast<std::uint32_t>(length);
        return;
    }
    runs.push_back(
        {static_cast<std::uint32_t>(wire), static_cast<std::uint32_t>(memory), static_cast<std::uint32_t>(length)});
}

template <Record R>
void appendRuns(std::vector<Run>& runs, std::size_t wire, std::size_t memory);

template <class T>
void appendValueRuns(std::vector<Run>& runs, std::size_t wire, std::size_t memory) {
    if constexpr (SameImage<T>::value) {
        static_assert(sizeof(T) == Wire<T>::width);
        addRun(runs, wire, memory, Wire<T>::width);
    } else if constexpr (Record<T>) {
        appendRuns<T>(runs, wire, memory);
    } else {
        // An array of records.
        using E = typename T::value_type;
        for (std::size_t i = 0; i < std::tuple_size_v<T>; ++i)
            appendValueRuns<E>(runs, wire + i * Wire<E>::width, memory + i * sizeof(E));
    }
}

template <Record R>
void appendRuns(std::vector<Run>& runs, std::size_t wire, std::size_t memory) {
    static_assert(std::is_trivially_copyable_v<R>);
    auto probe = std::make_unique<R>();
    const auto* base = reinterpret_cast<const unsigned char*>(probe.get());
    std::apply(
        [&](const auto&... f) {
            (appendValueRuns<std::remove_cvref_t<decltype(probe.get()->*(f.member))>>(
                 runs, wire + f.offset,
                 memory + static_cast<std::size_t>(reinterpret_cast<const unsigned char*>(&(probe.get()->*(f.member))) -
                                                   base)),
             ...);
        },
        FieldTable<R>::fields);
}

// The record's stretches, worked out at the first use.
template <Record R>
const std::vector<Run>& runsOf() {
    static const std::vector<Run> runs = [] {
        std::vector<Run> out;
        appendRuns<R>(out, 0, 0);
        return out;
    }();
    return runs;
}

// A long stretch, out of line: inlined where the record is small, the
// compiler would take its copy for one past the record's end.
[[gnu::noinline]] inline void copyLongRun(unsigned char* to, const unsigned char* from, std::size_t length) {
    std::memcpy(to, from, length);
}

// Most stretches are short: up to 32 bytes they are copied inline, as two
// copies of a fixed width that meet or overlap in the middle, rather than
// through a call. The record and its bytes never overlap each other.
inline void copyRun(unsigned char* to, const unsigned char* from, std::size_t length) {
    auto ends = [&](auto width) {
        constexpr std::size_t w = decltype(width)::value;
        std::memcpy(to, from, w);
        std::memcpy(to + length - w, from + length - w, w);
    };
    if (length >= 16) {
        if (length <= 32)
            ends(std::integral_constant<std::size_t, 16>{});
        else
            copyLongRun(to, from, length);
    } else if (length >= 8) {
        ends(std::integral_constant<std::size_t, 8>{});
    } else if (length >= 4) {
        ends(std::integral_constant<std::size_t, 4>{});
    } else if (length >= 2) {
        ends(std::integral_constant<std::size_t, 2>{});
    } else if (length == 1) {
        *to = *from;
    }
}

template <Record R>
void decode(const std::uint8_t* p, R& r) {
    if constexpr (kWireIsMemory) {
        auto* out = reinterpret_cast<unsigned char*>(&r);
        for (const Run& run : runsOf<R>()) copyRun(out + run.memory, p + run.wire, run.length);
    } else {
        decodeFields(p, r);
    }
}

template <Record R>
void encode(const R& r, std::uint8_t* p) {
    if constexpr (kWireIsMemory) {
        const auto* in = reinterpret_cast<const unsigned char*>(&r);
        for (const Run& run : runsOf<R>()) copyRun(p + run.wire, in + run.memory, run.length);
    } else {
        encodeFields(r, p);
    }
}

// Encodes the record but for the byte ranges `skip` of its image (in order,
// apart from each other), whose bytes at `p` are left as they are.
template <Record R>
void encodeOutside(const R& r, std::uint8_t* p, std::span<const std::pair<std::size_t, std::size_t>> skip) {
    if constexpr (kWireIsMemory) {
        const auto* in = reinterpret_cast<const unsigned char*>(&r);
        for (const Run& run : runsOf<R>()) {
            std::size_t from = run.wire, end = run.wire + run.length;
            auto copy = [&](std::size_t to) { copyRun(p + from, in + run.memory + (from - run.wire), to - from); };
            for (const auto& [lo, hi] : skip) {
                if (hi <= from || lo >= end) continue;
                if (lo > from) copy(lo);
                from = std::max(from, hi);
                if (from >= end) break;
            }
            if (from < end) copy(end);
        }
    } else {
        std::vector<std::uint8_t> all(Layout<R>::size);
        encodeFields(r, all.data());
        std::size_t from = 0;
        for (const auto& [lo, hi] : skip) {
            if (lo > from) std::memcpy(p + from, all.data() + from, std::min(lo, all.size()) - from);
            from = std::max(from, hi);
        }
        if (from < all.size()) std::memcpy(p + from, all.data() + from, all.size() - from);
    }
}

template <Record R>
struct Wire<R> {
    static constexpr std::size_t width = Layout<R>::size;
    static void get(const std::uint8_t* p, R& v) { decode(p, v); }
    static void put(std::uint8_t* p, const R& v) { encode(v, p); }
};

// Decodes a whole slot into a record in place. Bytes missing at the end (a
// short last record of a file) read as zero, as they would from a
// never-written slot.
template <Record R>
void decodeSlot(std::span<const std::uint8_t> bytes, R& r) {
    if (bytes.size() >= slotWidth<R>()) {
        decode(bytes.data(), r);
        if constexpr (tailWidth<R>() > 0)
            std::memcpy(r.SlotTail.data(), bytes.data() + Layout<R>::size, tailWidth<R>());
        return;
    }
    std::array<std::uint8_t, slotWidth<R>()> buf{};
    if (!bytes.empty()) std::memcpy(buf.data(), bytes.data(), bytes.size());
    decode(buf.data(), r);
    if constexpr (tailWidth<R>() > 0) std::memcpy(r.SlotTail.data(), buf.data() + Layout<R>::size, tailWidth<R>());
}

// Where a member lies in the record's bytes: a reader that needs a few
// fields of many records decodes just those.
template <Record R, class T>
std::size_t offsetOf(T R::*member) {
    std::size_t at = Layout<R>::size;
    std::apply(
        [&](const auto&... f) {
            (
                [&] {
                    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(f.member)>, T R::*>)
                        if (f.member == member) at = f.offset;
                }(),
                ...);
        },
        FieldTable<R>::fields);
    return at;
}

// Decodes the value at `offset` of a slot's bytes; what a short slot lacks
// reads as zero.
template <class T>
void decodeAt(std::span<const std::uint8_t> bytes, std::size_t offset, T& v) {
    constexpr std::size_t width = Wire<T>::width;
    if (bytes.size() >= offset + width) {
        Wire<T>::get(bytes.data() + offset, v);
        return;
    }
    std::array<std::uint8_t, width> buf{};
    if (bytes.size() > offset) std::memcpy(buf.data(), bytes.data() + offset, bytes.size() - offset);
    Wire<T>::get(buf.data(), v);
}

// The member at `offset` (from offsetOf) of a slot's bytes.
template <Record R, class T>
void decodeMember(std::span<const std::uint8_t> bytes, std::size_t offset, R& r, T R::*member) {
    decodeAt(bytes, offset, r.*member);
}

template <Record R>
R fromSlot(std::span<const std::uint8_t> bytes) {
    R r{};
    decodeSlot(bytes, r);
    return r;
}

// Encodes a whole slot, the record and the tail it keeps, into the
// slotWidth<R>() bytes at `out`.
template <Record R>
void putSlot(const R& r, std::uint8_t* out) {
    encode(r, out);
    if constexpr (tailWidth<R>() > 0) std::memcpy(out + Layout<R>::size, r.SlotTail.data(), tailWidth<R>());
}

template <Record R>
std::vector<std::uint8_t> toSlot(const R& r) {
    std::vector<std::uint8_t> buf(slotWidth<R>());
    putSlot(r, buf.data());
    return buf;
}

// The slot's bytes held by value: comparing a record with what was read
// needs no heap buffer.
template <Record R>
std::array<std::uint8_t, slotWidth<R>()> slotArray(const R& r) {
    std::array<std::uint8_t, slotWidth<R>()> buf{};
    putSlot(r, buf.data());
    return buf;
}

// The record part of a slot only, for a write that leaves the slot's tail on
// disk as it is.
template <Record R>
std::vector<std::uint8_t> recordBytes(const R& r) {
    std::vector<std::uint8_t> buf(Layout<R>::size);
    encode(r, buf.data());
    return buf;
}

// True when the fields follow one another without gap or overlap and end at
// the record's size: a mistyped offset or width fails to compile.
template <Record R>
constexpr bool tilesExactly() {
    std::size_t pos = 0;
    bool ok = true;
    std::apply([&](const auto&... f) { ((ok = ok && f.offset == pos, pos = f.offset + f.width), ...); },
               FieldTable<R>::fields);
    return ok && pos == Layout<R>::size;
}

struct FieldInfo {
    std::string_view name;
    std::size_t offset;
    std::size_t width;
};

template <Record R>
std::vector<FieldInfo> fieldInfo() {
    std::vector<FieldInfo> out;
    std::apply([&](const auto&... f) { (out.push_back({f.name, f.offset, f.width}), ...); }, FieldTable<R>::fields);
    return out;
}

template <Record R>
const FieldInfo* findField(std::string_view name) {
    static const auto table = fieldInfo<R>();
    for (const auto& f : table)
        if (f.name == name) return &f;
    return nullptr;
}

}  // namespace tallyrink::codec

// A record's codec is instantiated once, in the .cpp that holds its field
// table: the field walks are large, and every file that reads the record
// would otherwise compile them again. The header of the record declares it
// with TALLYRINK_EXTERN_RECORD_CODEC, its .cpp defines it with
// TALLYRINK_INSTANTIATE_RECORD_CODEC; both stand in namespace tallyrink::codec.
#define TALLYRINK_RECORD_CODEC_FUNCTIONS(prefix, R)                        \
    prefix template void decode<R>(const std::uint8_t*, R&);               \
    prefix template void encode<R>(const R&, std::uint8_t*);               \
    prefix template void decodeFields<R>(const std::uint8_t*, R&);         \
    prefix template void encodeFields<R>(const R&, std::uint8_t*);         \
    prefix template void decodeSlot<R>(std::span<const std::uint8_t>, R&); \
    prefix template R fromSlot<R>(std::span<const std::uint8_t>);          \
    prefix template void putSlot<R>(const R&, std::uint8_t*);              \
    prefix template std::vector<std::uint8_t> toSlot<R>(const R&);         \
    prefix template std::vector<FieldInfo> fieldInfo<R>();
#define TALLYRINK_EXTERN_RECORD_CODEC(R) TALLYRINK_RECORD_CODEC_FUNCTIONS(extern, R)
#define TALLYRINK_INSTANTIATE_RECORD_CODEC(R) TALLYRINK_RECORD_CODEC_FUNCTIONS(, R)
