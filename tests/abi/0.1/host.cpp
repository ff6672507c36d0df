// host.cpp: a host as it was written against the headers of version 0.1. It takes every interface's table from its
// first entry to its last. Exit status 0 when all answers are right; otherwise the number of the first wrong one.
#include <tavell/Constants.h>
#include <tavell/CreateTavell.h>
#include <tavell/ICircuit.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/IFeedback.h>
#include <tavell/IFeedbackCollection.h>
#include <tavell/IFluid.h>
#include <tavell/INode.h>
#include <tavell/IPropertySet.h>
#include <tavell/IResultsExporterOptions.h>
#include <tavell/IResultsSet.h>
#include <tavell/ITavell.h>

#include <cmath>
#include <cstdio>
#include <cstring>

using namespace Velcor::Tavell;

namespace
{

constexpr int kPipes = 3;
constexpr double kPi = 3.14159265358979323846;
constexpr double kDiameter = 0.01;  // [m]
constexpr double kLength = 2.0;     // [m] of all pipes together
constexpr double kDensity = 900.0;  // [kg/m3]
constexpr double kViscosity = 0.1;  // [Pa s]
constexpr double kDrop = 5000.0;    // [Pa]

int asked = 0;
int firstWrong = 0;

void check(bool isRight)
{
    ++asked;
    if (!isRight && firstWrong == 0) firstWrong = asked;
}

int steps = 0;

bool countSteps()
{
    ++steps;
    return false;
}

/// Three laminar pipes in a row between two pressures: Q = pi D^4 dp / (128 mu L) (Hagen 1839, Poiseuille 1840).
ICircuit* buildLine(ITavell& system)
{
    ICircuit* const circuit = system.CreateCircuit();
    INode* nodes[kPipes + 1];
    for (int i = 0; i <= kPipes; ++i) {
        nodes[i] = circuit->CreateNode();
        nodes[i]->SetLocation(kLength * i / kPipes, 0.0, 0.0);
    }
    const double area = kPi * kDiameter * kDiameter / 4.0;
    for (int i = 0; i < kPipes; ++i)
        circuit->CreateElement(nodes[i], nodes[i + 1], kDiameter, area, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    INode* const start = nodes[0];
    INode* const end = nodes[kPipes];
    start->SetType(TAVELL_NODE_INLET);
    start->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 2.0 * kDrop);
    end->SetType(TAVELL_NODE_OUTLET);
    end->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, kDrop);
    IEntity* const fluid = circuit->GetFluid()->GetEntity();
    fluid->SetProperty(TAVELL_FLUID_DENSITY, kDensity);
    fluid->SetProperty(TAVELL_FLUID_VISCOSITY, kViscosity);
    return circuit;
}

void checkEntities(ICircuit& circuit)
{
    IElement* const pipe = circuit.GetElement(0);
    check(pipe->GetId() == 1 && pipe->GetStartNodeId() == 1 && pipe->GetEndNodeId() == 2);
    double reference = 0.0;
    double flow = 0.0;
    double pressure = 0.0;
    int count = 0;
    check(!pipe->GetCurveData(&reference, &flow, &pressure, 1, &count) && count == -1);
    IEntity* const entity = pipe->GetEntity();
    check(entity == pipe->GetEntityConst());
    check(entity->SetProperty(TAVELL_ELEMENT_ROUGHNESS, 1e-5) &&
          entity->HasProperty(TAVELL_ELEMENT_ROUGHNESS));
    double value = 0.0;
    check(entity->GetProperty(TAVELL_ELEMENT_ROUGHNESS, &value) && value == 1e-5);
    IPropertySet* const set = entity->GetWriteableProperties();
    const int at = set->GetIndex(TAVELL_ELEMENT_ROUGHNESS);
    check(at >= 0 && at < set->GetSize() && set->GetValue(static_cast<std::size_t>(at)) == 1e-5);
    check(entity->RemoveProperty(TAVELL_ELEMENT_ROUGHNESS) && set->GetIndex(TAVELL_ELEMENT_ROUGHNESS) < 0);
    entity->SetMeta("of the host");
    check(std::strcmp(entity->GetMeta(), "of the host") == 0);

    INode* const node = circuit.GetNode(kPipes);
    double x = 0.0;
    double y = 1.0;
    double z = 1.0;
    node->GetLocation(&x, &y, &z);
    check(x == kLength && y == 0.0 && z == 0.0);
    check(node->GetType() == TAVELL_NODE_OUTLET && node->GetConstraint() == TAVELL_CONSTRAINT_PRESSURE);
    check(node->GetEntity() == node->GetEntityConst());
    circuit.GetFluid()->SetUIName("oil");
    check(std::strcmp(circuit.GetFluid()->GetUIName(), "oil") == 0);
    circuit.SetCheckDuplicateElementAtNodes(false);
    check(!circuit.GetCheckDuplicateElementAtNodes() && circuit.GetCheckNodeIdTaken());
}

void checkResults(ICircuit& circuit)
{
    const double expected = kPi * std::pow(kDiameter, 4) * kDrop / (128.0 * kViscosity * kLength);  // [m3/s]
    IResultsSet* const flows = circuit.GetResults(TAVELL_RESULT_VOLUME_FLOW);
    check(flows != nullptr && flows->GetSize() == kPipes && flows->GetIds()[0] == 1 && !flows->IsNodal());
    if (flows == nullptr) return;
    check(std::fabs(flows->GetValues()[0] / expected - 1.0) < 1e-5);
    check(flows->GetL10NValues(2.0, 1.0)[0] == flows->GetValues()[0] * 2.0 + 1.0);

    IResultsExporterOptions* const options = circuit.GetResultsExporterOptions();
    options->SetNodeLabel("Point");
    options->SetPrecision(3);
    check(std::strcmp(options->GetNodeLabel(), "Point") == 0 && options->GetPrecision() == 3);
    check(std::strstr(circuit.ExportResults(), "Point") != nullptr);
}

void checkFeedback(ITavell& system)
{
    ICircuit* const circuit = system.CreateCircuit();
    INode* const start = circuit->CreateNode();
    INode* const end = circuit->CreateNode();
    end->SetLocation(1.0, 0.0, 0.0);
    circuit->CreateElement(start, end, kDiameter, 1e-4, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    check(!circuit->Solve(false));
    IFeedbackCollection* const feedback = circuit->GetFeedback();
    check(feedback->GetSize() > 0);
    if (feedback->GetSize() == 0) return;
    IFeedback* const first = feedback->GetFeedback(0);
    check(first->GetId() > 0 && (first->GetValueSize() == 0 || first->GetValues() != nullptr));
    check(system.ReleaseCircuit(circuit));
}

}  // namespace

int main()
{
    ITavell* const system = CreateTavell(false);
    ICircuit* const circuit = buildLine(*system);
    check(system->GetNoCircuits() == 1 && system->GetCircuit(0) == circuit);
    checkEntities(*circuit);
    check(circuit->Validate());
    check(circuit->Solve(false, countSteps) && steps > 0);
    checkResults(*circuit);
    checkFeedback(*system);
    check(system->FindParentCircuitFromElement(circuit->GetElement(0)) == circuit);
    system->Solve(true, true);
    check(circuit->GetResults(TAVELL_RESULT_NODE_TEMPERATURE) != nullptr);
    system->MergeCircuits();
    system->ReleaseAllCircuits();
    check(system->GetNoCircuits() == 0);
    system->Release();
    if (firstWrong != 0) std::printf("answer %d is wrong\n", firstWrong);
    return firstWrong;
}
