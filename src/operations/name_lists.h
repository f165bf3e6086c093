#pragma once

// Built-in word lists of the made-up league generator. The surnames are
// invented, so that with any first name they make up nobody real; cities,
// nicknames and arenas are put together from parts.

#include <span>
#include <string_view>

namespace tallyrink::names {

std::span<const std::string_view> firstNames();
std::span<const std::string_view> oldTimeFirstNames();  // added to the pool of seasons before 1960
std::span<const std::string_view> surnames();
std::span<const std::string_view> cityStems();
std::span<const std::string_view> cityEndings();  // a leading blank makes a second word
std::span<const std::string_view> nicknames();
std::span<const std::string_view> nicknameQualifiers();
std::span<const std::string_view> arenaWords();
std::span<const std::string_view> arenaKinds();
std::span<const std::string_view> divisionNames();
std::span<const std::string_view> conferenceNames();

}  // namespace tallyrink::names
