// soak.cpp: the library in long use: the same small circuit made and released a million times, and one system edited
// and solved for hours. Resident memory goes to standard output as CSV; a broken invariant ends the program with 1.
//
//   soak rounds COUNT            circuits of eight pipes are built, edited, solved, read and released; memory stays flat
//   soak edit SECONDS [SEED]     one system of a few circuits is changed at random and solved; all that it answers is
//                                compared with a record of what was done, and solved circuits with the laws of flow
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

#include "support/networks.h"

namespace
{

using support::ICircuit;
using support::IElement;
using support::INode;
using support::ITavell;
using Velcor::Tavell::IEntity;
using Velcor::Tavell::IResultsSet;

constexpr long kMostGrowth = 512;  // [KiB] of resident memory, for which the system has reasons of its own

void require(bool isTrue, const std::string& fact)
{
    if (!isTrue) throw std::runtime_error(fact);
}

/// Resident memory of this process [KiB].
long residentKiB()
{
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

class Clock
{
public:
    double seconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

double valueOf(IEntity& entity, int id)
{
    double value = 0.0;
    require(entity.GetProperty(id, &value), "a property that was set is there");
    return value;
}

std::vector<double> valuesOf(ICircuit& circuit, int key)
{
    IResultsSet* const set = circuit.GetResults(key);
    require(set != nullptr, "a solved circuit has every quantity");
    return {set->GetValues(), set->GetValues() + set->GetSize()};
}

// ---- rounds

/// A ring of six pipes with an inlet and an outlet, whose demand changes from round to round.
double solveRing(double demand)
{
    constexpr int kRing = 6;
    ITavell* const system = Velcor::Tavell::CreateTavell(false);
    ICircuit* const circuit = system->CreateCircuit();
    std::vector<INode*> nodes;
    for (int i = 0; i < kRing + 2; ++i) {
        nodes.push_back(circuit->CreateNode());
        nodes.back()->SetLocation(10.0 * i, 5.0 * (i % 3), 0.0);
    }
    const auto join = [&](int a, int b) {
        return circuit->CreateElement(nodes[static_cast<std::size_t>(a)], nodes[static_cast<std::size_t>(b)],
                                      0.05, 0.0019635, 0.5, TAVELL_ENERGY_FLUX, 0.0);
    };
    for (int i = 0; i < kRing; ++i)
        join(i, (i + 1) % kRing);
    join(kRing, 0);
    IElement* const last = join(3, kRing + 1);
    nodes[kRing]->SetType(TAVELL_NODE_INLET);
    nodes[kRing]->SetConstraint(TAVELL_CONSTRAINT_PRESSURE, 5e5);
    nodes[kRing + 1]->SetType(TAVELL_NODE_OUTLET);
    nodes[kRing + 1]->SetConstraint(TAVELL_CONSTRAINT_MASS_FLOW, demand);
    require(circuit->Solve(false), "the ring is solved");

    last->GetEntity()->SetProperty(TAVELL_ELEMENT_DIAMETER, 0.04);
    INode* const superfluous = circuit->CreateNode();
    require(circuit->ReleaseNode(superfluous), "a node is released");
    require(circuit->GetResults(TAVELL_RESULT_PRESSURE) == nullptr, "a changed circuit has no results");
    require(circuit->Solve(true), "the changed ring is solved with temperatures");
    const double flow = valuesOf(*circuit, TAVELL_RESULT_MASS_FLOW).back();
    require(circuit->ExportResults()[0] != '\0', "results are exported");
    system->Release();
    return flow;
}

void soakRounds(long count)
{
    const long every = std::max(1L, count / 1000);
    const Clock clock;
    long early = 0;  // [KiB] after a tenth of the rounds
    std::printf("rounds,seconds,residentKiB\n");
    for (long round = 0; round <= count; ++round) {
        const double demand = 0.1 + 1e-3 * static_cast<double>(round % 1000);
        require(std::fabs(solveRing(demand) - demand) <= 1e-12, "the demand flows");
        if (round == count / 10) early = residentKiB();
        if (round % every == 0) std::printf("%ld,%.3f,%ld\n", round, clock.seconds(), residentKiB());
    }
    require(residentKiB() <= early + kMostGrowth, "memory does not grow with the rounds");
}

// ---- edit

/// A circuit beside the record of what was done to it.
struct Edited {
    ICircuit* circuit = nullptr;
    support::Description record;
    std::vector<INode*> nodes;        // as in the record
    std::vector<IElement*> elements;  // as in the record
    bool isSolved = false;
};

class Editor
{
public:
    explicit Editor(unsigned seed) : m_random(seed), m_system(Velcor::Tavell::CreateTavell(false)) {}
    Editor(const Editor&) = delete;
    Editor& operator=(const Editor&) = delete;
    ~Editor() { m_system->Release(); }

    void step();
    void checkEverything();

    long steps = 0, solves = 0, solved = 0;

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    double between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(m_random);
    }

    /// A node without a boundary condition: a flow that is given at a node with several pipes is that of one of them,
    /// which then has no law to meet.
    int innerNode(const Edited& edited);
    void addCircuit();
    void addNode(Edited& edited);
    void addPipe(Edited& edited);
    void releaseElement(Edited& edited);
    void releaseDeadEnd(Edited& edited);
    void changePipe(Edited& edited);
    void changeDemand(Edited& edited);
    void moveNode(Edited& edited);
    void solve(Edited& edited);
    static void checkStructure(const Edited& edited);
    static void checkLaws(const Edited& edited);
    static void changed(Edited& edited) { edited.isSolved = false; }

    std::mt19937 m_random;
    ITavell* m_system;
    std::vector<Edited> m_circuits;
};

int Editor::innerNode(const Edited& edited)
{
    int node = 0;
    do {
        node = below(static_cast<int>(edited.nodes.size()));
    } while (edited.record.nodes[static_cast<std::size_t>(node)].type != TAVELL_NODE_INTERNAL);
    return node;
}

/// Takes a random network over into a circuit of the one system, object by object.
void Editor::addCircuit()
{
    Edited made;
    made.record = support::randomNetwork(m_random, 4 + below(30), below(12), {TAVELL_PIPE});
    made.circuit = m_system->CreateCircuit();
    ICircuit& circuit = *made.circuit;
    circuit.SetCheckDuplicateElementAtNodes(false);
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_FRICTION_FACTOR, made.record.friction);
    circuit.GetEntity()->SetProperty(TAVELL_CIRCUIT_MINOR_LOSS, made.record.minorLoss);
    circuit.GetFluid()->GetEntity()->SetProperty(TAVELL_FLUID_DENSITY, made.record.density);
    circuit.GetFluid()->GetEntity()->SetProperty(TAVELL_FLUID_VISCOSITY, made.record.viscosity);
    for (const support::NodeData& data : made.record.nodes) {
        INode* const node = circuit.CreateNode();
        node->SetLocation(data.at[0], data.at[1], data.at[2]);
        node->SetType(data.type);
        node->SetConstraint(data.constraint, data.value);
        made.nodes.push_back(node);
    }
    for (const support::ElementData& data : made.record.elements) {
        const double area = data.area > 0.0 ? data.area : 0.78539816339744831 * data.diameter * data.diameter;
        IElement* const pipe = circuit.CreateElement(made.nodes[static_cast<std::size_t>(data.start)],
                                                     made.nodes[static_cast<std::size_t>(data.end)],
                                                     data.diameter, area, 0.0, TAVELL_ENERGY_FLUX, 0.0);
        require(pipe != nullptr, "a pipe is made");
        for (const auto& property : data.properties)
            pipe->GetEntity()->SetProperty(static_cast<int>(property[0]), property[1]);
        made.elements.push_back(pipe);
    }
    m_circuits.push_back(std::move(made));
}

/// A node out in the open, joined to one that is there.
void Editor::addNode(Edited& edited)
{
    const int at = innerNode(edited);
    support::NodeData data;
    data.at = {between(0.0, 100.0), between(0.0, 100.0), between(0.0, 20.0)};
    INode* const node = edited.circuit->CreateNode();
    node->SetLocation(data.at[0], data.at[1], data.at[2]);
    node->SetType(data.type);
    node->SetConstraint(data.constraint, data.value);
    edited.record.nodes.push_back(data);
    edited.nodes.push_back(node);
    support::ElementData pipe;
    pipe.start = at;
    pipe.end = static_cast<int>(edited.nodes.size()) - 1;
    edited.elements.push_back(edited.circuit->CreateElement(edited.nodes[static_cast<std::size_t>(at)], node,
                                                            pipe.diameter, 0.0078539816339744835, 0.0,
                                                            TAVELL_ENERGY_FLUX, 0.0));
    require(edited.elements.back() != nullptr, "a pipe to a new node is made");
    edited.record.elements.push_back(pipe);
    changed(edited);
}

void Editor::addPipe(Edited& edited)
{
    const int a = innerNode(edited);
    const int b = innerNode(edited);
    support::ElementData pipe;
    pipe.start = a;
    pipe.end = b;
    pipe.diameter = between(0.02, 0.2);
    IElement* const made = edited.circuit->CreateElement(
        edited.nodes[static_cast<std::size_t>(a)], edited.nodes[static_cast<std::size_t>(b)], pipe.diameter,
        0.78539816339744831 * pipe.diameter * pipe.diameter, 0.0, TAVELL_ENERGY_FLUX, 0.0);
    require((made == nullptr) == (a == b), "a pipe is refused between a node and itself only");
    if (made == nullptr) return;
    edited.elements.push_back(made);
    edited.record.elements.push_back(pipe);
    changed(edited);
}

void Editor::releaseElement(Edited& edited)
{
    if (edited.elements.size() <= 8) return;
    const auto which = static_cast<std::size_t>(below(static_cast<int>(edited.elements.size())));
    require(edited.circuit->ReleaseElement(edited.elements[which]), "an element is released");
    require(!edited.circuit->ReleaseElement(nullptr), "no element is not released");
    edited.elements.erase(edited.elements.begin() + static_cast<std::ptrdiff_t>(which));
    edited.record.elements.erase(edited.record.elements.begin() + static_cast<std::ptrdiff_t>(which));
    changed(edited);
}

/// The last node, if it is an inner one, and whatever ends there.
void Editor::releaseDeadEnd(Edited& edited)
{
    if (edited.nodes.size() <= 8 || edited.record.nodes.back().type != TAVELL_NODE_INTERNAL) return;
    const int last = static_cast<int>(edited.nodes.size()) - 1;
    for (std::size_t e = edited.elements.size(); e-- > 0;) {
        if (edited.record.elements[e].start != last && edited.record.elements[e].end != last) continue;
        require(edited.circuit->ReleaseElement(edited.elements[e]), "an element of a node is released");
        edited.elements.erase(edited.elements.begin() + static_cast<std::ptrdiff_t>(e));
        edited.record.elements.erase(edited.record.elements.begin() + static_cast<std::ptrdiff_t>(e));
    }
    require(edited.circuit->ReleaseNode(edited.nodes.back()), "a node is released");
    edited.nodes.pop_back();
    edited.record.nodes.pop_back();
    changed(edited);
}

void Editor::changePipe(Edited& edited)
{
    if (edited.elements.empty()) return;
    const auto which = static_cast<std::size_t>(below(static_cast<int>(edited.elements.size())));
    support::ElementData& data = edited.record.elements[which];
    data.diameter = between(0.02, 0.3);
    data.area = 0.78539816339744831 * data.diameter * data.diameter;
    IEntity* const entity = edited.elements[which]->GetEntity();
    require(entity->SetProperty(TAVELL_ELEMENT_DIAMETER, data.diameter) &&
                entity->SetProperty(TAVELL_ELEMENT_AREA, data.area),
            "a size is set");
    require(valueOf(*entity, TAVELL_ELEMENT_DIAMETER) == data.diameter, "a size is the one that was set");
    changed(edited);
}

void Editor::changeDemand(Edited& edited)
{
    for (std::size_t n = 0; n < edited.nodes.size(); ++n) {
        support::NodeData& data = edited.record.nodes[n];
        if (data.type != TAVELL_NODE_OUTLET || data.constraint != TAVELL_CONSTRAINT_MASS_FLOW) continue;
        if (below(3) != 0) continue;
        data.value = between(0.0, 4.0);
        edited.nodes[n]->SetConstraint(data.constraint, data.value);
        changed(edited);
    }
}

void Editor::moveNode(Edited& edited)
{
    const auto which = static_cast<std::size_t>(below(static_cast<int>(edited.nodes.size())));
    auto& at = edited.record.nodes[which].at;
    at = {between(0.0, 100.0), between(0.0, 100.0), between(0.0, 20.0)};
    edited.nodes[which]->SetLocation(at[0], at[1], at[2]);
    changed(edited);
}

void Editor::checkStructure(const Edited& edited)
{
    ICircuit& circuit = *edited.circuit;
    require(circuit.GetNoNodes() == edited.nodes.size(), "as many nodes as were made");
    require(circuit.GetNoElements() == edited.elements.size(), "as many elements as were made");
    for (std::size_t n = 0; n < edited.nodes.size(); ++n) {
        INode* const node = edited.nodes[n];
        require(circuit.GetNode(n) == node, "nodes stand in the order in which they were made");
        require(circuit.GetNodeById(node->GetId()) == node, "a node is found by its id");
        std::array<double, 3> at{};
        node->GetLocation(&at[0], &at[1], &at[2]);
        require(at == edited.record.nodes[n].at, "a node is where it was put");
    }
    for (std::size_t e = 0; e < edited.elements.size(); ++e) {
        IElement* const element = edited.elements[e];
        const support::ElementData& data = edited.record.elements[e];
        require(circuit.GetElement(e) == element, "elements stand in the order in which they were made");
        require(circuit.GetElementNode(element, 0) == edited.nodes[static_cast<std::size_t>(data.start)] &&
                    circuit.GetElementNode(element, 1) == edited.nodes[static_cast<std::size_t>(data.end)],
                "an element joins the nodes that it was made between");
    }
    require((circuit.GetResults(TAVELL_RESULT_PRESSURE) != nullptr) == edited.isSolved,
            "there are results from a solve to the next change");
}

/// Whether a fixed pressure is joined to each node. Without one pressures have no meaning.
std::vector<bool> nodesWithPressure(const support::Description& d)
{
    std::vector<bool> found(d.nodes.size(), false);
    for (std::size_t n = 0; n < d.nodes.size(); ++n)
        found[n] =
            d.nodes[n].type != TAVELL_NODE_INTERNAL && d.nodes[n].constraint == TAVELL_CONSTRAINT_PRESSURE;
    for (bool isGrowing = true; isGrowing;) {
        isGrowing = false;
        for (const support::ElementData& element : d.elements) {
            const auto start = static_cast<std::size_t>(element.start);
            const auto end = static_cast<std::size_t>(element.end);
            if (found[start] == found[end]) continue;
            found[start] = found[end] = true;
            isGrowing = true;
        }
    }
    return found;
}

/// Mass balance of every inner node and the head loss of every pipe, with a hundred times the slack that the criterion
/// leaves to one element of a few dozen.
void Editor::checkLaws(const Edited& edited)
{
    const support::Description& d = edited.record;
    const std::vector<double> flow = valuesOf(*edited.circuit, TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> pressure = valuesOf(*edited.circuit, TAVELL_RESULT_PRESSURE);
    const std::vector<bool> hasPressure = nodesWithPressure(d);
    std::vector<double> inflow(d.nodes.size(), 0.0);
    std::vector<int> ends(d.nodes.size(), 0);
    double total = 0.0;
    for (std::size_t e = 0; e < flow.size(); ++e) {
        const auto start = static_cast<std::size_t>(d.elements[e].start);
        const auto end = static_cast<std::size_t>(d.elements[e].end);
        require(std::isfinite(flow[e]), "a flow is a finite number");
        inflow[start] -= flow[e];
        inflow[end] += flow[e];
        ++ends[start];
        ++ends[end];
        total += std::fabs(flow[e]);
        if (!hasPressure[start]) continue;
        const double rise = 9.80665 * d.density * (d.nodes[end].at[2] - d.nodes[start].at[2]);
        const double drop = pressure[start] - pressure[end] - rise;
        const double loss = support::lossOf(d, d.elements[e], flow[e]);
        require(std::fabs(drop - loss) <=
                    1e-4 * (1e5 + std::fabs(pressure[start]) + std::fabs(pressure[end])),
                "the pressure drop of a pipe is the loss of its flow: " + std::to_string(drop) + " Pa, " +
                    std::to_string(loss) + " Pa");
    }
    const double average = total / static_cast<double>(flow.size());
    for (std::size_t n = 0; n < inflow.size(); ++n) {
        require(std::isfinite(pressure[n]), "a pressure is a finite number");
        if (ends[n] < 2 || d.nodes[n].type != TAVELL_NODE_INTERNAL) continue;
        require(std::fabs(inflow[n]) <= 1e-5 * average, "what flows into a node flows out of it");
    }
}

void Editor::solve(Edited& edited)
{
    ++solves;
    edited.isSolved = edited.circuit->Solve(below(4) == 0);
    if (!edited.isSolved) return;
    ++solved;
    checkLaws(edited);
    if (below(8) != 0) return;
    const std::vector<double> before = valuesOf(*edited.circuit, TAVELL_RESULT_PRESSURE);
    require(edited.circuit->Solve(false), "a solved circuit is solved again");
    require(before == valuesOf(*edited.circuit, TAVELL_RESULT_PRESSURE), "with the same answer, bit by bit");
}

void Editor::step()
{
    ++steps;
    if (m_circuits.empty() || (m_circuits.size() < 4 && below(400) == 0)) addCircuit();
    const auto which = static_cast<std::size_t>(below(static_cast<int>(m_circuits.size())));
    Edited& edited = m_circuits[which];
    const bool isLarge = edited.elements.size() > 120;
    switch (below(12)) {
    case 0:
        return isLarge ? releaseDeadEnd(edited) : addNode(edited);
    case 1:
        return isLarge ? releaseElement(edited) : addPipe(edited);
    case 2:
        return releaseElement(edited);
    case 3:
        return releaseDeadEnd(edited);
    case 4:
    case 5:
        return changePipe(edited);
    case 6:
        return changeDemand(edited);
    case 7:
        return moveNode(edited);
    case 8:
        return checkStructure(edited);
    case 9:
        if (m_circuits.size() > 1 && below(100) == 0) {
            require(m_system->ReleaseCircuit(edited.circuit), "a circuit is released");
            m_circuits.erase(m_circuits.begin() + static_cast<std::ptrdiff_t>(which));
        }
        return;
    default:
        return solve(edited);
    }
}

void Editor::checkEverything()
{
    require(m_system->GetNoCircuits() == m_circuits.size(), "as many circuits as were made");
    for (const Edited& edited : m_circuits)
        checkStructure(edited);
}

void soakEdit(double seconds, unsigned seed)
{
    Editor editor(seed);
    const Clock clock;
    const double every = std::max(1.0, seconds / 600.0);
    double next = 0.0;
    std::printf("steps,solves,solved,seconds,residentKiB\n");
    while (clock.seconds() < seconds) {
        for (int i = 0; i < 100; ++i)
            editor.step();
        if (clock.seconds() < next) continue;
        next += every;
        editor.checkEverything();
        std::printf("%ld,%ld,%ld,%.1f,%ld\n", editor.steps, editor.solves, editor.solved, clock.seconds(),
                    residentKiB());
        std::fflush(stdout);
    }
    editor.checkEverything();
}

int usage()
{
    std::fprintf(stderr, "usage: soak rounds COUNT\n       soak edit SECONDS [SEED]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 3) return usage();
    const std::string mode = argv[1];
    const double amount = std::atof(argv[2]);
    if (!(amount > 0.0)) return usage();
    try {
        if (mode == "rounds")
            soakRounds(static_cast<long>(amount));
        else if (mode == "edit")
            soakEdit(amount, argc > 3 ? static_cast<unsigned>(std::atoi(argv[3])) : 1U);
        else
            return usage();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "does not hold: %s\n", error.what());
        return 1;
    }
    return 0;
}
