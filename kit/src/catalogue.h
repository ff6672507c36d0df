// catalogue.h: materials and fittings that every network knows by name, and what elements refer to by name.
#ifndef TAVELL_KIT_CATALOGUE_H
#define TAVELL_KIT_CATALOGUE_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "network.h"

namespace kit
{

const std::map<std::string, Material>& knownMaterials();
const std::map<std::string, Fitting>& knownFittings();

/// What a name stands for: the network's own entry, else that of the catalogue; null when there is none.
const Material* findMaterial(const Network& network, const std::string& name);
const Fitting* findFitting(const Network& network, const std::string& name);
/// The network's curve of a name; null when there is none.
const Curve* findCurve(const Network& network, const std::string& name);

/// Names that findMaterial, findFitting and findCurve know, for messages: those of the catalogue, and of the
/// network's own ones the first few hundred.
std::vector<std::string> materialNames(const Network& network);
std::vector<std::string> fittingNames(const Network& network);
std::vector<std::string> curveNames(const Network& network);

/// What holds for an element when its references are followed.
/// [m]; the element's own, else that of its material; nothing when neither is given.
std::optional<double> roughnessOf(const Network& network, const Element& element);
/// C; the element's own, else that of its material; nothing when neither is given.
std::optional<double> hazenWilliamsOf(const Network& network, const Element& element);
/// [-]; its own K and that of its fittings together, 0 when there are none.
double minorLossOf(const Network& network, const Element& element);
/// The points of its curve, its own or the one that it names; null for an unknown name.
const std::vector<CurvePoint>* curveOf(const Network& network, const Element& element);
/// [kg/m3], of its curve; nothing when none is given.
std::optional<double> referenceDensityOf(const Network& network, const Element& element);

}  // namespace kit

#endif
