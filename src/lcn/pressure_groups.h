// pressure_groups.h: parts of a network that no fixed pressure reaches.
#pragma once

#include <set>
#include <utility>
#include <vector>

#include "records.h"

namespace lcn
{

/// Whether the flows at a node have to balance: at a free one, and where a pressure is held for a part without any.
inline bool hasBalance(const lcnNET_nodes& node)
{
    return node.flag == kFreeNode || node.held != 0;
}

/// Finds groups of two or more free nodes that no fixed-pressure node reaches through elements that can still
/// flow. Their pressures are known only up to a constant: the matrix would be singular. A group that nothing
/// flows into on balance is given one, by holding its first node's pressure; a group with a net inflow has no
/// solution. (A single free node whose elements are all fixed needs nothing: its own equation gives it a
/// pressure.)
class PressureGroups
{
public:
    /// Checks the network as it stands, holds and frees pressures, and notes for each group it finds: 701203
    /// (node number, net inflow) when the fixed flows of its boundary do not balance to 1e-9 of the largest;
    /// else 701204 (node number) and for each bounding element 701205 (zero flow) or 701206 (other), with its
    /// number.
    /// Reads flag, fix, FlowLimited, FixedFlow, Massflow, Pressure; writes flag, held, Pressbound and
    /// Masssource of held nodes.
    /// Returns true when the set of free nodes changed. Cost: proportional to the network.
    bool check(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

    /// Appends the messages of the last check's groups that are not recorded yet. A group that valves made on
    /// the way and undid again is no concern of the host, so this is called before the iteration and after
    /// it.
    void record(lcnNET_var& var);

private:
    struct Group {
        int firstNode = 0;
        double netInflow = 0.0;     // [kg/s]
        double largestFlow = 0.0;   // [kg/s]
        std::vector<int> boundary;  // bounding elements
    };

    void note(const Group& group, bool balanced, const NodeArray& nodes, const ElementArray& elements);

    std::vector<int> m_held;  // nodes whose pressure is held
    /// What is to be said of one group.
    struct Note {
        int firstNode;
        bool balanced;
        std::vector<Message> messages;
    };
    std::vector<Note> m_notes;                  // of the last check
    std::set<std::pair<int, bool>> m_recorded;  // first node and balance of groups that were recorded
};

}  // namespace lcn
