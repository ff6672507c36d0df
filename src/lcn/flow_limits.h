// flow_limits.h: control valves and non-return elements inside the network.
#pragma once

#include <vector>

#include "pressure_groups.h"
#include "records.h"

namespace lcn
{

/// Decides which control valves hold their limit and which non-return elements are shut. Both start as the
/// open resistances that they are; the set is changed only when the balance is nearly met and has had time to
/// react, so that each change is decided on a flow field that answers the last one.
/// The answer that a settled set stands for: no reverse flow, no flow above a limit, no shut element with a
/// pressure difference forward, no limited element that could carry less.
class FlowLimits
{
public:
    /// Finds the elements it decides on: types 9 and 10 without a flow end.
    void prepare(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var);

    /// One decision in iteration n: opens elements whose reason to be fixed has gone; when there were none,
    /// marks violators with FlowLimited for the next assembly, worst ratio first. One that would cut free
    /// nodes off from every fixed pressure is passed over unless no other is left.
    /// massError [-] is the previous iteration's; averageFlow [kg/s]. Returns true when the set changed.
    bool update(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var, int n,
                double massError, double averageFlow);

    /// Whether the last call of update could decide: the present flows have then been looked at.
    bool hasDecided() const { return m_limited.empty() || m_decided; }

    /// Marks every control valve and non-return element as limited, as reports show them.
    void finish(const ElementArray& elements) const;

private:
    struct Limited {
        int element;
        int releases;
    };
    struct Violation {
        int element;
        double ratio;
    };

    bool release(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                 double averageFlow);
    bool mark(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
              double averageFlow);

    void openSurplus(const NodeArray& nodes, const ElementArray& elements, const lcnNET_var& var,
                     int lastLink, double averageFlow);
    static void open(Limited& limited, lcnNET_elems& elem, double averageFlow);

    std::vector<int> m_valves;  // every control valve and non-return element
    std::vector<Limited> m_limited;
    bool m_decided = false;
    int m_lastChange = 0;  // iteration
};

}  // namespace lcn
