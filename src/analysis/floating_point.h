// floating_point.h: the floating-point settings of the host, set aside for as long as a solve takes.
#pragma once

#include <cfenv>

namespace Velcor::Tavell
{

/// While it lives the thread computes as a new program does: rounding to nearest, with subnormal numbers,
/// without traps. What a solve answers is then the same to the bit in every host, and no host is ended by a
/// signal. Afterwards the thread has its settings and exception flags of before, whatever was raised.
class UsualFloatingPoint
{
public:
    UsualFloatingPoint()
    {
        std::fegetenv(&m_host);
        std::fesetenv(FE_DFL_ENV);
    }
    ~UsualFloatingPoint() { std::fesetenv(&m_host); }
    UsualFloatingPoint(const UsualFloatingPoint&) = delete;
    UsualFloatingPoint& operator=(const UsualFloatingPoint&) = delete;

private:
    std::fenv_t m_host{};
};

}  // namespace Velcor::Tavell
