#include "failing_allocations.h"

#include <cstdlib>

#ifdef TAVELL_WRAPS_MALLOC
extern "C" {
void* __real_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void __real_free(void* block);          // NOLINT(bugprone-reserved-identifier)
}
#endif

namespace faults
{

namespace
{

struct State {
    std::size_t live = 0;
    std::size_t count = 0;
    std::size_t left = 0;  // allocations until one fails, that one included; 0: none fails
    Mode mode = Mode::kOnce;
    bool hasFailed = false;
};

State& state()
{
    static State all;
    return all;
}

bool isToFail()
{
    State& all = state();
    if (all.left == 0) return false;
    if (all.left > 1) {
        --all.left;
        return false;
    }
    if (all.mode == Mode::kOnce) all.left = 0;
    all.hasFailed = true;
    return true;
}

void* plainMalloc(std::size_t size)
{
#ifdef TAVELL_WRAPS_MALLOC
    return __real_malloc(size);
#else
    return std::malloc(size);
#endif
}

void plainFree(void* block)
{
#ifdef TAVELL_WRAPS_MALLOC
    __real_free(block);
#else
    std::free(block);
#endif
}

/// Counts a block; null stays null.
void* counted(void* block)
{
    if (block == nullptr) return nullptr;
    ++state().live;
    ++state().count;
    return block;
}

/// Null when this one is to fail.
void* allocate(std::size_t size)
{
    return isToFail() ? nullptr : counted(plainMalloc(size == 0 ? 1 : size));
}

void* allocateAligned(std::size_t size, std::align_val_t alignment)
{
    const auto step = static_cast<std::size_t>(alignment);
    return isToFail() ? nullptr : counted(std::aligned_alloc(step, (size + step) / step * step));
}

void* orThrow(void* block)
{
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void giveBack(void* block)
{
    if (block == nullptr) return;
    --state().live;
    plainFree(block);
}

}  // namespace

std::size_t liveBlocks()
{
    return state().live;
}

std::size_t allocationCount()
{
    return state().count;
}

bool hasFailed()
{
    return state().hasFailed;
}

Shortage::Shortage(std::size_t nth, Mode mode)
{
    state().hasFailed = false;
    state().mode = mode;
    state().left = nth;
}

Shortage::~Shortage()
{
    state().left = 0;
}

}  // namespace faults

using faults::allocate;
using faults::allocateAligned;
using faults::giveBack;
using faults::orThrow;

#ifdef TAVELL_WRAPS_MALLOC
extern "C" {
// NOLINTNEXTLINE(bugprone-reserved-identifier)
void* __wrap_malloc(std::size_t size)
{
    return allocate(size);
}
// NOLINTNEXTLINE(bugprone-reserved-identifier)
void __wrap_free(void* block)
{
    giveBack(block);
}
}
#endif

// NOLINTBEGIN(misc-new-delete-overloads)
void* operator new(std::size_t size)
{
    return orThrow(allocate(size));
}
void* operator new[](std::size_t size)
{
    return orThrow(allocate(size));
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return orThrow(allocateAligned(size, alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return orThrow(allocateAligned(size, alignment));
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    return allocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept
{
    return allocateAligned(size, alignment);
}
void operator delete(void* block) noexcept
{
    giveBack(block);
}
void operator delete[](void* block) noexcept
{
    giveBack(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept
{
    giveBack(block);
}
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept
{
    giveBack(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept
{
    giveBack(block);
}
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept
{
    giveBack(block);
}
void operator delete(void* block, std::align_val_t /*alignment*/, const std::nothrow_t& /*tag*/) noexcept
{
    giveBack(block);
}
void operator delete[](void* block, std::align_val_t /*alignment*/, const std::nothrow_t& /*tag*/) noexcept
{
    giveBack(block);
}
// NOLINTEND(misc-new-delete-overloads)
