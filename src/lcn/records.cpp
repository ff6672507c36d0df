#include "records.h"

#include <cmath>

#include "constants.h"

double lcnNET_elems::volumeFlow() const
{
    return std::fabs(density) < lcn::kTiny ? 0.0 : Massflow / density;
}

lcnNET_var::lcnNET_var() = default;

void lcnNET_var::sizeWorkArrays()
{
    clearWorkArrays();  // so that every slot is zero, whatever an earlier solve left
    Control.resize(8);
    for (auto& list : FloatWork)
        list.resize(2);
    for (auto& list : IntWork)
        list.resize(2);
}

void lcnNET_var::clearWorkArrays()
{
    Control.resize(0);
    for (auto& list : FloatWork)
        list.resize(0);
    for (auto& list : IntWork)
        list.resize(0);
}

void lcnNET_var::AddMessage(std::uint32_t id)
{
    Messages.push_back({id, {}});
}

void lcnNET_var::AddMessage(std::uint32_t id, const std::vector<double>& parameters)
{
    Messages.push_back({id, parameters});
}

void lcnNET_var::AddMessage(std::uint32_t id, int number)
{
    Messages.push_back({id, {static_cast<double>(number)}});
}

void lcnNET_var::AddMessage(std::uint32_t id, int number, double value)
{
    Messages.push_back({id, {static_cast<double>(number), value}});
}

void lcnNET_var::AddMessage()
{
    AddMessage(701208);
}
