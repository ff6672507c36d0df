// message.h: one diagnostic of a solve.
#pragma once

#include <cstdint>
#include <vector>

namespace lcn
{

/// A six-digit diagnostic code and its numeric parameters, in the order recorded.
struct Message {
    std::uint32_t id;
    std::vector<double> parameters;
};

}  // namespace lcn
