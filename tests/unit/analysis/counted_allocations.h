// counted_allocations.h: the test program's own operator new, which counts and fails on request; defined in
// work_count_test.cpp.
#pragma once

#include <cstddef>

namespace AnalysisTest
{

/// Of all allocations through operator new since the program began; tests look at differences.
struct Allocations {
    std::size_t count = 0;
    std::size_t bytes = 0;
    std::size_t live = 0;          // blocks not yet given back
    std::size_t largest = 0;       // bytes, since it was last set to 0
    std::size_t failAfter = 0;     // so many more succeed and the next one fails; 0: none fails
    std::size_t failFromSize = 0;  // blocks of at least so many bytes fail; 0: none fails
};

Allocations& allocations();

}  // namespace AnalysisTest
