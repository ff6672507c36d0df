// CreateTavell.cpp: the entry points, for C++ and for the flat functions.
#include "tavell/CreateTavell.h"

#include "Tavell.h"
#include "tavell/TavellFlat.h"

namespace
{

/// The one answer to GetBuildDetails in either form: -1 in the first output, the other eighteen stay as they
/// are.
// kept: hosts read -1 as "no details available" and preset the other outputs.
void writeNoBuildDetails(int& detail1)
{
    detail1 = -1;
}

}  // namespace

namespace Velcor::Tavell
{

ITavell* CreateTavell(bool /*flag*/)
{
    return new Tavell;
}

// clang-format off
void GetBuildDetails(bool /*flag*/, int& detail1, int& /*detail2*/, int& /*detail3*/, int& /*detail4*/,
                     int& /*detail5*/, int& /*detail6*/, int& /*detail7*/, int& /*detail8*/, int& /*detail9*/,
                     int& /*detail10*/, int& /*detail11*/, int& /*detail12*/, int& /*detail13*/, int& /*detail14*/,
                     int& /*detail15*/, int& /*detail16*/, int& /*detail17*/, int& /*detail18*/, int& /*detail19*/)
// clang-format on
{
    writeNoBuildDetails(detail1);
}

}  // namespace Velcor::Tavell

extern "C" {

vcITavell* vcCreateTavell()
{
    return Velcor::Tavell::CreateTavell(false);
}

// clang-format off
// NOLINTBEGIN(readability-non-const-parameter): the prototype is shared by all nineteen outputs.
void vcGetBuildDetails(bool /*flag*/, int* detail1, int* /*detail2*/, int* /*detail3*/, int* /*detail4*/,
                       int* /*detail5*/, int* /*detail6*/, int* /*detail7*/, int* /*detail8*/, int* /*detail9*/,
                       int* /*detail10*/, int* /*detail11*/, int* /*detail12*/, int* /*detail13*/, int* /*detail14*/,
                       int* /*detail15*/, int* /*detail16*/, int* /*detail17*/, int* /*detail18*/, int* /*detail19*/)
// NOLINTEND(readability-non-const-parameter)
// clang-format on
{
    writeNoBuildDetails(*detail1);
}

}  // extern "C"
