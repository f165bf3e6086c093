#include "support/alloc_count.h"

#include <cstdlib>
#include <new>

namespace {

// The one piece of global state the counter can't avoid: operator new has no
// object to keep it in. Thread-local, so nothing is shared.
thread_local std::uint64_t allocations = 0;

void* allocate(std::size_t size) {
    ++allocations;
    if (size == 0) size = 1;
    if (void* p = std::malloc(size)) return p;
    throw std::bad_alloc();
}

void* allocateAligned(std::size_t size, std::align_val_t align) {
    ++allocations;
    auto a = static_cast<std::size_t>(align);
    std::size_t rounded = (size + a - 1) / a * a;
    if (rounded == 0) rounded = a;
    if (void* p = std::aligned_alloc(a, rounded)) return p;
    throw std::bad_alloc();
}

}  // namespace

namespace tallyrink::test {

std::uint64_t allocationsSoFar() { return allocations; }

}  // namespace tallyrink::test

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    ++allocations;
    return std::malloc(size == 0 ? 1 : size);
}
void* operator new(std::size_t size, std::align_val_t align) { return allocateAligned(size, align); }
void* operator new[](std::size_t size, std::align_val_t align) { return allocateAligned(size, align); }

void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete(void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { std::free(p); }
