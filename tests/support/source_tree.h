#pragma once

// The checkout the tests were built from, and what it ships, so tests read
// the real data files rather than copies that could drift.

#include <filesystem>

#include "league/era.h"

namespace tallyrink::test {

std::filesystem::path sourceDir();
// data/ of the checkout.
std::filesystem::path shippedDataDir();
// data/HkEra, loaded once.
const EraTable& shippedEra();

}  // namespace tallyrink::test
