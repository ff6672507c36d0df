#include "junction_losses.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "element_hydraulics.h"

namespace lcn
{

namespace
{

constexpr double kNoFlow = 1e-10;     // [kg/s]
constexpr double kStraight = 1e-12;   // [-] 1 - cosine of a deflection that counts as none
constexpr int kNoThreeWayLosses = 2;  // mode of the control record

struct Vector {
    double x = 0.0, y = 0.0, z = 0.0;
};

double dot(const Vector& a, const Vector& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// One flow at a node.
struct Flow {
    lcnNET_elems* elem;
    double massFlow;   // [kg/s] > 0
    Vector direction;  // along the flow; zero for an element of coincident ends
};

/// What meets at a node: numbers of flows, one of each side, and the supply that all inflows make.
struct Junction {
    int in = 0;
    int out = 0;
    Flow inflow{};                // the last one
    Flow outflow{};               // the last one
    double supplyFlow = 0.0;      // [kg/s] of the inflows with an area
    double supplyVelocity = 0.0;  // [m/s], flow-weighted
    Vector supplyDirection;     // flow-weighted: opposed inflows cancel, and leave every outflow across them
    bool hasDirection = false;  // of at least one inflow
};

bool hasArea(const lcnNET_elems& elem)
{
    return elem.Area > kTiny;
}

/// Whether an element can have a minor loss at all.
bool receivesLoss(const lcnNET_elems& elem)
{
    return hasLaw(elem.type) && !isCurve(elem.type) && hasArea(elem);
}

double speed(const Flow& flow)
{
    return flow.massFlow / (flow.elem->density * flow.elem->Area);
}

/// False for the direction of an element whose ends coincide.
bool isKnown(const Vector& direction)
{
    return dot(direction, direction) > kTiny;
}

/// Cosine of the deflection from one direction to another; straight on when one of them is unknown.
double deflection(const Vector& from, const Vector& to)
{
    return isKnown(from) && isKnown(to) ? std::clamp(dot(from, to), -1.0, 1.0) : 1.0;
}

/// Calls visit(flow, isInflow) for every flow at a node.
template <typename Visit>
void forEachFlow(const ElementArray& elements, const lcnNET_nodes& node, Visit visit)
{
    for (int b = 1; b <= node.no_branches; ++b) {
        const int entry = node.LocalElements[b];
        lcnNET_elems& elem = elements[std::abs(entry)];
        if (elem.LocalStartNode == elem.LocalEndNode) continue;
        const double inflow = entry > 0 ? elem.Massflow : -elem.Massflow;
        if (!(std::fabs(inflow) > kNoFlow)) continue;
        const double sign = elem.Massflow > 0.0 ? 1.0 : -1.0;
        visit(Flow{&elem, std::fabs(inflow), {sign * elem.Vx, sign * elem.Vy, sign * elem.Vz}}, inflow > 0.0);
    }
}

void addToSupply(const Flow& flow, Junction& junction)
{
    if (!hasArea(*flow.elem)) return;
    const double m = flow.massFlow;
    junction.supplyFlow += m;
    junction.supplyVelocity += m * speed(flow);
    junction.supplyDirection.x += m * flow.direction.x;
    junction.supplyDirection.y += m * flow.direction.y;
    junction.supplyDirection.z += m * flow.direction.z;
    junction.hasDirection = junction.hasDirection || isKnown(flow.direction);
}

Junction junctionAt(const ElementArray& elements, const lcnNET_nodes& node)
{
    Junction junction;
    forEachFlow(elements, node, [&](const Flow& flow, bool isInflow) {
        ++(isInflow ? junction.in : junction.out);
        (isInflow ? junction.inflow : junction.outflow) = flow;
        if (isInflow) addToSupply(flow, junction);
    });
    if (junction.supplyFlow > 0.0) {
        const double m = junction.supplyFlow;
        junction.supplyVelocity /= m;
        const Vector& sum = junction.supplyDirection;
        junction.supplyDirection = {sum.x / m, sum.y / m, sum.z / m};
    }
    return junction;
}

/// Area change on the element that the published coefficient refers to, bend on the narrower of the two.
void addInLineLosses(const Flow& in, const Flow& out)
{
    if (!receivesLoss(*in.elem) || !receivesLoss(*out.elem)) return;
    const double A1 = in.elem->Area;
    const double A2 = out.elem->Area;
    in.elem->k += expansionLoss(A1, A2);
    out.elem->k += contractionLoss(A1, A2);
    (A1 < A2 ? in : out).elem->k += bendLoss(deflection(in.direction, out.direction));
}

void addBranchLosses(const ElementArray& elements, const lcnNET_nodes& node, const Junction& junction)
{
    if (!(junction.supplyFlow > 0.0)) return;
    forEachFlow(elements, node, [&](const Flow& flow, bool isInflow) {
        if (isInflow || !receivesLoss(*flow.elem)) return;
        const bool known = junction.hasDirection && isKnown(flow.direction);
        const double cosine =
            known ? std::clamp(dot(junction.supplyDirection, flow.direction), -1.0, 1.0) : 1.0;
        flow.elem->k += branchLossOnOwnVelocity(speed(flow) / junction.supplyVelocity, cosine);
    });
}

}  // namespace

double expansionLoss(double A1, double A2)
{
    return A1 < A2 ? (1.0 - A1 / A2) * (1.0 - A1 / A2) : 0.0;
}

double contractionLoss(double A1, double A2)
{
    return A2 < A1 ? 0.5 * (1.0 - A2 / A1) : 0.0;
}

double bendLoss(double cosine)
{
    if (1.0 - cosine < kStraight) return 0.0;
    const double sin2 = (1.0 - cosine) / 2.0;  // sin^2(t/2)
    return 0.9457 * sin2 + 2.047 * sin2 * sin2;
}

double branchLoss(double r, double cosine)
{
    if (1.0 - cosine < kStraight) return (1.0 - r) * (1.0 - r);
    return std::fmax(0.0, r * r + 1.0 - 2.0 * r * std::cos(0.75 * std::acos(cosine)));
}

double branchLossOnOwnVelocity(double r, double cosine)
{
    const double loss = branchLoss(r, cosine);
    return loss < kLargestK * r * r ? loss / (r * r) : kLargestK;
}

void addJunctionLosses(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var)
{
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if ((node.flag != kFreeNode && node.held == 0) || node.no_branches < 2) continue;
        const Junction junction = junctionAt(elements, node);
        if (junction.in == 0 || junction.out == 0) continue;
        if (junction.in == 1 && junction.out == 1)
            addInLineLosses(junction.inflow, junction.outflow);
        else if (!(junction.in + junction.out == 3 && var.Minor == kNoThreeWayLosses))
            addBranchLosses(elements, node, junction);
    }
}

}  // namespace lcn
