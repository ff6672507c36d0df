// inp_duty.cpp: fitted curves about the flows of the solved network.
#include <algorithm>
#include <cmath>
#include <string>

#include "inp_elements.h"
#include "solution.h"

namespace kit
{

namespace
{

constexpr int kMostSolves = 6;
constexpr double kSettled = 1e-4;  // [-] of the duty: head and slope fit there, so the error is of its square
/// [-], of the shut-off head: a cubic that fits so well everywhere needs no duty.
constexpr double kGoodFit = 1e-4;

bool needsDuty(const InpFittedElement& fitted, const Network& network)
{
    if (fitted.isExact() || network.elements[fitted.element].isClosed) return false;
    if (fitted.valve || fitted.pump->isPower()) return true;
    const PumpCurveFit fit = fitPump(*fitted.pump, fitted.dutyFlow);
    return fit.largestError > kGoodFit * fit.referenceHead;
}

/// The flow to fit about next: a curve that was left gets a wider step, but no wilder one than its fit can
/// bear.
double nextDuty(const InpFittedElement& fitted, double flow)
{
    constexpr double kLeastStep = 0.25, kMostStep = 4.0;
    const double towards = fitted.valve ? std::fabs(flow) : flow;
    return std::clamp(towards, kLeastStep * fitted.dutyFlow, kMostStep * fitted.dutyFlow);
}

}  // namespace

void refineDuties(std::vector<InpFittedElement>& fitted, double density, Network& network, Findings& findings)
{
    std::vector<InpFittedElement*> open;
    for (InpFittedElement& element : fitted) {
        if (needsDuty(element, network)) open.push_back(&element);
    }
    double change = 1.0;
    bool isSolved = true;
    for (int solve = 0; solve < kMostSolves && !open.empty() && change > kSettled && isSolved; ++solve) {
        const Solution solution = solveNetwork(network);
        isSolved = solution.outcome == Outcome::converged;
        change = 0.0;
        for (InpFittedElement* element : open) {
            const double flow = isSolved ? solution.volumeFlow[element->element] : element->dutyFlow;
            const double duty = nextDuty(*element, flow);
            change =
                std::max(change, std::fabs(flow) > 0.0 ? std::fabs(duty / element->dutyFlow - 1.0) : 0.0);
            element->dutyFlow = duty;
            fitElement(*element, density, network);
        }
    }
    if (isSolved && change <= kSettled) return;
    for (const InpFittedElement* element : open) {
        findings.add(Code::duty_not_found, element->place,
                     std::string("the curve was fitted about a guess: ") +
                         (isSolved ? "the flow did not settle" : "the network did not solve"));
    }
}

}  // namespace kit
