// failing_allocations.h: the test program's own operator new, which counts blocks and fails on request. Where the
// program is linked with malloc and free wrapped, so are theirs.
#pragma once

#include <cstddef>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define TAVELL_IS_SANITIZED true
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TAVELL_IS_SANITIZED true
#endif
#endif
#ifndef TAVELL_IS_SANITIZED
#define TAVELL_IS_SANITIZED false
#endif

namespace faults
{

/// Sanitized programs are many times slower and look for other things than counts: they take fewer steps.
constexpr bool kIsSanitized = TAVELL_IS_SANITIZED;

/// The allocation to fail after the nth: each one up to a number, then steps that grow by a part of what was tried.
constexpr std::size_t stepAfter(std::size_t nth, std::size_t eachUpTo, std::size_t part)
{
    const std::size_t each = kIsSanitized && eachUpTo > 50 ? 50 : eachUpTo;
    return nth < each ? nth + 1 : nth + 1 + nth / (kIsSanitized ? 3 : part);
}

/// Which allocations fail, from the chosen one on.
enum class Mode {
    kOnce,    // that one alone: a moment of shortage
    kForGood  // all later ones too: nothing that cleans up may need memory
};

constexpr Mode kModes[] = {Mode::kOnce, Mode::kForGood};

inline const char* nameOf(Mode mode)
{
    return mode == Mode::kOnce ? "once" : "for good";
}

/// Blocks not yet given back, of the whole program.
std::size_t liveBlocks();

/// Allocations since the program began.
std::size_t allocationCount();

/// While it lives, the nth allocation, from 1, fails; 0: none does.
class Shortage
{
public:
    Shortage(std::size_t nth, Mode mode);
    ~Shortage();
    Shortage(const Shortage&) = delete;
    Shortage& operator=(const Shortage&) = delete;
};

/// Whether an allocation failed during the last shortage.
bool hasFailed();

/// What came of an operation during a shortage.
struct Attempt {
    bool isHit = false;  // an allocation failed
    bool isOut = false;  // std::bad_alloc reached the caller
    long answer = 0;     // what the operation returned otherwise
};

/// Runs operate() -> long while the nth allocation fails. It must not allocate on its own account.
template <class Operate> Attempt attempt(std::size_t nth, Mode mode, Operate&& operate)
{
    Attempt result;
    {
        const Shortage shortage(nth, mode);
        try {
            result.answer = operate();
        } catch (const std::bad_alloc&) {
            result.isOut = true;
        }
    }
    result.isHit = hasFailed();
    return result;
}

}  // namespace faults
