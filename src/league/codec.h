#pragma once

// Records on disk are packed little-endian byte images. Each record type is
// described by a table of fields (name, offset, member); reading and writing
// walk that table, so the in-memory struct keeps natural alignment and the
// byte layout is stated once, next to a compile-time check that the fields
// tile the record exactly.

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <tuple>
#include <type_traits>
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

// Types whose bytes in memory are their bytes on the wire: tables of them
// are copied whole instead of value by value.
template <class T>
inline constexpr bool kWireAsInMemory = false;
template <>
inline constexpr bool kWireAsInMemory<std::uint8_t> = true;
template <>
inline constexpr bool kWireAsInMemory<std::int16_t> = std::endian::native == std::endian::little;
template <>
inline constexpr bool kWireAsInMemory<std::int32_t> = std::endian::native == std::endian::little;
template <>
inline constexpr bool kWireAsInMemory<double> = std::endian::native == std::endian::little && sizeof(double) == 8;
template <std::size_t N>
inline constexpr bool kWireAsInMemory<FixedText<N>> = sizeof(FixedText<N>) == N;
template <class T, std::size_t N>
inline constexpr bool kWireAsInMemory<std::array<T, N>> = kWireAsInMemory<T> &&
                                                          sizeof(std::array<T, N>) == N * sizeof(T);

template <class T, std::size_t N>
struct Wire<std::array<T, N>> {
    static constexpr std::size_t width = N * Wire<T>::width;
    static void get(const std::uint8_t* p, std::array<T, N>& v) {
        if constexpr (kWireAsInMemory<std::array<T, N>>)
            std::memcpy(v.data(), p, width);
        else
            for (std::size_t i = 0; i < N; ++i) Wire<T>::get(p + i * Wire<T>::width, v[i]);
    }
    static void put(std::uint8_t* p, const std::array<T, N>& v) {
        if constexpr (kWireAsInMemory<std::array<T, N>>)
            std::memcpy(p, v.data(), width);
        else
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

template <Record R>
void decode(const std::uint8_t* p, R& r) {
    std::apply(
        [&](const auto&... f) {
            (Wire<std::remove_cvref_t<decltype(r.*(f.member))>>::get(p + f.offset, r.*(f.member)), ...);
        },
        FieldTable<R>::fields);
}

template <Record R>
void encode(const R& r, std::uint8_t* p) {
    std::apply(
        [&](const auto&... f) {
            (Wire<std::remove_cvref_t<decltype(r.*(f.member))>>::put(p + f.offset, r.*(f.member)), ...);
        },
        FieldTable<R>::fields);
}

template <Record R>
struct Wire<R> {
    static constexpr std::size_t width = Layout<R>::size;
    static void get(const std::uint8_t* p, R& v) { decode(p, v); }
    static void put(std::uint8_t* p, const R& v) { encode(v, p); }
};

// Decodes a whole slot. Bytes missing at the end (a short last record of a
// file) read as zero, as they would from a never-written slot.
template <Record R>
R fromSlot(std::span<const std::uint8_t> bytes) {
    if (bytes.size() >= slotWidth<R>()) {
        // A whole slot decodes where it lies.
        R r{};
        decode(bytes.data(), r);
        if constexpr (tailWidth<R>() > 0)
            std::memcpy(r.SlotTail.data(), bytes.data() + Layout<R>::size, tailWidth<R>());
        return r;
    }
    std::array<std::uint8_t, slotWidth<R>()> buf{};
    if (!bytes.empty()) std::memcpy(buf.data(), bytes.data(), std::min(bytes.size(), buf.size()));
    R r{};
    decode(buf.data(), r);
    if constexpr (tailWidth<R>() > 0) std::memcpy(r.SlotTail.data(), buf.data() + Layout<R>::size, tailWidth<R>());
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
#define TALLYRINK_RECORD_CODEC_FUNCTIONS(prefix, R)                \
    prefix template void decode<R>(const std::uint8_t*, R&);       \
    prefix template void encode<R>(const R&, std::uint8_t*);       \
    prefix template R fromSlot<R>(std::span<const std::uint8_t>);  \
    prefix template void putSlot<R>(const R&, std::uint8_t*);      \
    prefix template std::vector<std::uint8_t> toSlot<R>(const R&); \
    prefix template std::vector<FieldInfo> fieldInfo<R>();
#define TALLYRINK_EXTERN_RECORD_CODEC(R) TALLYRINK_RECORD_CODEC_FUNCTIONS(extern, R)
#define TALLYRINK_INSTANTIATE_RECORD_CODEC(R) TALLYRINK_RECORD_CODEC_FUNCTIONS(, R)
