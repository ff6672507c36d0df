// flat_world.h: a system built through the flat functions, all that a host can see of it, and operations on it that
// run out of memory at every allocation in turn.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "tavell/TavellFlat.h"

namespace faults
{

/// A system object; given back when it goes out of scope.
class World
{
public:
    World() : m_system(vcCreateTavell()) {}
    ~World() { vcITavellRelease(m_system); }
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    vcITavell* system() const { return m_system; }
    vcICircuit* circuit(int position = 0) const { return vcITavellGetCircuit(m_system, position); }
    vcINode* node(int position, int circuitPosition = 0) const
    {
        return vcICircuitGetNode(circuit(circuitPosition), position);
    }
    vcIElement* element(int position, int circuitPosition = 0) const
    {
        return vcICircuitGetElement(circuit(circuitPosition), position);
    }

private:
    vcITavell* m_system;
};

/// Everything that a host can ask of a system, bit for bit: objects in their order, properties, flags, look-ups by id
/// and by pointer, export settings, results, feedback, export text.
std::string observed(const World& world);

/// The same of one circuit without its results, feedback and exports.
std::string observedModel(vcICircuit* circuit);
std::string observedResults(vcICircuit* circuit);
std::string observedFeedback(vcICircuit* circuit);

/// The first line in which two texts differ; "" when they are the same.
std::string firstDifference(const std::string& text, const std::string& other);

/// Adds a circuit: a row of three pipes from a pressure of 300 kPa to one of 200 kPa, two metres apart, its first node
/// at (x, y, 0), with a pump of another branch between the inner nodes.
vcICircuit* addRow(const World& world, double x, double y);

/// An operation of a host on a world that setUp makes; operate must not allocate on its own account.
struct Case {
    std::string name;
    std::function<void(const World&)> setUp;
    std::function<long(const World&)> operate;
};

/// Runs the operation on fresh worlds, its first, second, third ... allocation failing, until none is left to fail, in both
/// modes. Whenever the operation fails, std::bad_alloc reaches the caller, the world looks as before, a second try does
/// what an undisturbed one does, and nothing is left when the world is gone.
void failAtEveryAllocation(const Case& tested);

}  // namespace faults
