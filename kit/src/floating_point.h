// floating_point.h: the floating-point settings of the program, set aside for as long as a call takes.
#ifndef TAVELL_KIT_FLOATING_POINT_H
#define TAVELL_KIT_FLOATING_POINT_H

#include <cfenv>

namespace kit
{

/// While it lives the thread computes as a new program does: rounding to nearest, with subnormal numbers,
/// without traps. What a call says is then the same in every program. Afterwards the thread has its settings
/// and exception flags of before, whatever was raised.
class UsualFloatingPoint
{
public:
    UsualFloatingPoint()
    {
        std::fegetenv(&m_program);
        std::fesetenv(FE_DFL_ENV);
    }
    ~UsualFloatingPoint() { std::fesetenv(&m_program); }
    UsualFloatingPoint(const UsualFloatingPoint&) = delete;
    UsualFloatingPoint& operator=(const UsualFloatingPoint&) = delete;

private:
    std::fenv_t m_program{};
};

}  // namespace kit

#endif
