#include "temperature.h"

namespace lcn
{

TemperatureSolve solveTemperatures(const NodeArray&, const ElementArray&, lcnNET_var&)
{
    return {};
}

}  // namespace lcn
