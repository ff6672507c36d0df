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

/// The flows that meet at a node. Sized for any node: kept between nodes so that its room is found once.
struct Junction {
    std::vector<Flow> in;
    std::vector<Flow> out;
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

void collectFlows(const ElementArray& elements, const lcnNET_nodes& node, Junction& junction)
{
    junction.in.clear();
    junction.out.clear();
    for (int b = 1; b <= node.no_branches; ++b) {
        const int entry = node.LocalElements[b];
        lcnNET_elems& elem = elements[std::abs(entry)];
        if (elem.LocalStartNode == elem.LocalEndNode) continue;
        const double inflow = entry > 0 ? elem.Massflow : -elem.Massflow;
        if (!(std::fabs(inflow) > kNoFlow)) continue;
        const double sign = elem.Massflow > 0.0 ? 1.0 : -1.0;
        const Flow flow{&elem, std::fabs(inflow), {sign * elem.Vx, sign * elem.Vy, sign * elem.Vz}};
        (inflow > 0.0 ? junction.in : junction.out).push_back(flow);
    }
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

void addBranchLosses(const Junction& junction)
{
    double total = 0.0;     // [kg/s]
    double velocity = 0.0;  // [m/s], flow-weighted
    Vector direction;       // flow-weighted: opposed inflows cancel, and leave every outflow across them
    bool hasDirection = false;
    for (const Flow& flow : junction.in) {
        if (!hasArea(*flow.elem)) continue;
        total += flow.massFlow;
        velocity += flow.massFlow * speed(flow);
        hasDirection = hasDirection || isKnown(flow.direction);
        direction.x += flow.massFlow * flow.direction.x;
        direction.y += flow.massFlow * flow.direction.y;
        direction.z += flow.massFlow * flow.direction.z;
    }
    if (!(total > 0.0)) return;
    velocity /= total;
    direction = {direction.x / total, direction.y / total, direction.z / total};
    for (const Flow& flow : junction.out) {
        if (!receivesLoss(*flow.elem)) continue;
        const bool known = hasDirection && isKnown(flow.direction);
        const double cosine = known ? std::clamp(dot(direction, flow.direction), -1.0, 1.0) : 1.0;
        flow.elem->k += branchLossOnOwnVelocity(speed(flow) / velocity, cosine);
    }
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
    Junction junction;
    for (int i = 1; i <= var.NodeTotal; ++i) {
        const lcnNET_nodes& node = nodes[i];
        if ((node.flag != kFreeNode && node.held == 0) || node.no_branches < 2) continue;
        collectFlows(elements, node, junction);
        const std::size_t in = junction.in.size();
        const std::size_t out = junction.out.size();
        if (in == 0 || out == 0) continue;
        if (in == 1 && out == 1)
            addInLineLosses(junction.in.front(), junction.out.front());
        else if (!(in + out == 3 && var.Minor == kNoThreeWayLosses))
            addBranchLosses(junction);
    }
}

}  // namespace lcn
