// CreateTavell.h: the entry points of the C++ interface.
#ifndef TAVELL_CREATETAVELL_H
#define TAVELL_CREATETAVELL_H

#include "Export.h"

namespace Velcor::Tavell
{

class ITavell;

/// A new, empty system object, to be given back with ITavell::Release. The flag has no effect.
TAVELL_API ITavell* CreateTavell(bool flag);

/// Writes -1 into detail1, "no details available", and leaves the other outputs alone; preset them. The flag
/// has no effect.
TAVELL_API void GetBuildDetails(bool flag, int& detail1, int& detail2, int& detail3, int& detail4,
                                int& detail5, int& detail6, int& detail7, int& detail8, int& detail9,
                                int& detail10, int& detail11, int& detail12, int& detail13, int& detail14,
                                int& detail15, int& detail16, int& detail17, int& detail18, int& detail19);

}  // namespace Velcor::Tavell

#endif
