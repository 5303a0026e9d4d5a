#include "tests/lib/FailingAllocation.h"

#include <cstddef>
#include <new>

namespace {
thread_local bool failing = false;
}  // namespace

FailingAllocation::FailingAllocation() { failing = true; }

FailingAllocation::~FailingAllocation() { failing = false; }

// Stands in for the library's own in the whole test program, and differs from it only while a test wants it to.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    constexpr std::size_t chunk = 65536;
    if (failing && size == chunk) {
        return nullptr;
    }
    try {
        return ::operator new[](size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
