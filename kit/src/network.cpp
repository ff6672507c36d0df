#include "network.h"

namespace kit
{

std::optional<double> Element::property(int id) const
{
    for (const auto& [property, value] : properties) {
        if (property == id) return value;
    }
    return std::nullopt;
}

void Element::setProperty(int id, double value)
{
    for (auto& [property, stored] : properties) {
        if (property != id) continue;
        stored = value;
        return;
    }
    properties.emplace_back(id, value);
}

}  // namespace kit
