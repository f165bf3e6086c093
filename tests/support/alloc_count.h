#pragma once

// Counts the program's calls of operator new, for tests and benchmarks that
// hold a hot path to allocating nothing. Linking this file replaces the
// global operator new of the whole program; the count is per thread, so a
// test runner's own threads don't disturb a measurement.

#include <cstdint>

namespace tallyrink::test {

// Allocations made by this thread since it started.
std::uint64_t allocationsSoFar();

// Allocations made by this thread while `work` runs.
template <typename Work>
std::uint64_t allocationsDuring(Work&& work) {
    std::uint64_t before = allocationsSoFar();
    work();
    return allocationsSoFar() - before;
}

}  // namespace tallyrink::test
