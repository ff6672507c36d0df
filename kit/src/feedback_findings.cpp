#include "feedback_findings.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include <tavell/Constants.h>
#include <tavell/IElement.h>
#include <tavell/IFeedback.h>
#include <tavell/IFeedbackCollection.h>
#include <tavell/INode.h>

#include "element_kinds.h"
#include "number_text.h"

namespace kit
{

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IFeedback;
using Velcor::Tavell::IFeedbackCollection;

/// A message's values; those that it lacks read as not a number.
class Values
{
public:
    explicit Values(IFeedback& message) : m_values(message.GetValues()), m_count(message.GetValueSize()) {}

    double at(std::size_t index) const
    {
        return index < m_count ? m_values[index] : std::numeric_limits<double>::quiet_NaN();
    }

    std::string text(std::size_t index) const
    {
        if (std::isnan(at(index))) return "unknown";
        return std::isinf(at(index)) ? "infinite" : shortNumber(at(index));
    }

private:
    const double* m_values;
    std::size_t m_count;
};

/// Turns the messages of one solve into findings.
class FeedbackReader
{
public:
    FeedbackReader(const Network& network, const BuiltCircuit& built, bool hasConverged, Findings& findings)
        : m_network(network), m_hasConverged(hasConverged), m_findings(findings)
    {
        for (std::size_t i = 0; i < built.nodeOwners.size(); ++i)
            m_nodes.emplace(built.circuit->GetNode(i)->GetId(), built.nodeOwners[i]);
        for (std::size_t i = 0; i < built.elementOwners.size(); ++i)
            m_elements.emplace(built.circuit->GetElement(i)->GetId(), built.elementOwners[i]);
    }

    void read(int id, const Values& values)
    {
        switch (id) {
        case TAVELL_FEEDBACK_MASS_ERROR:
            if (!m_hasConverged)
                m_unmet.mass = values.at(1);
            else
                addMeasure(Code::mass_not_balanced, "the mass flows do not balance: relative error ", values);
            break;
        case TAVELL_FEEDBACK_TEMPERATURE_ERROR:
            addMeasure(Code::temperatures_not_settled, "the temperatures did not settle: relative error ",
                       values);
            break;
        case TAVELL_FEEDBACK_MINOR_LOSS_ERROR:
            addMeasure(Code::minor_losses_not_settled, "the minor losses did not settle: relative change ",
                       values);
            break;
        case TAVELL_FEEDBACK_FLOW_UPDATE_ERROR:
            addMeasure(Code::flow_update_repeated, "the flow update needed too many steps: error ", values);
            break;
        case TAVELL_FEEDBACK_PRESSURE_ERROR:
            if (!m_hasConverged)
                m_unmet.pressure = values.at(1);
            else
                addMeasure(Code::laws_not_met,
                           "the pressures do not fit the laws of the elements: relative error ", values);
            break;
        case TAVELL_FEEDBACK_ITERATION_LIMIT:
            m_unmet.isAtLimit = true;
            if (m_hasConverged)
                m_findings.add(Code::iteration_limit, file(), "the iteration limit was reached");
            break;
        case TAVELL_FEEDBACK_PRESSURE_SOLUTION:
            m_findings
                .add(Code::pressures_without_solution, file(),
                     "the equations of the pressures had no solution in an iteration: " +
                         reasonText(values.at(0)))
                .numbers.push_back({"reason", values.at(0), ""});
            break;
        case TAVELL_FEEDBACK_NO_INTERNAL_NODES:
            m_findings.add(Code::no_unknown_pressure, file(), "every node has a given pressure");
            break;
        case TAVELL_FEEDBACK_CURVE_ERROR:
            addCurveError(values);
            break;
        case TAVELL_FEEDBACK_UNBALANCED_PART:
            addUnbalanced(values);
            break;
        case TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE:
            m_heldNodes.add(nodeAt(values.at(0)));
            break;
        case TAVELL_FEEDBACK_PART_CLOSED_BY:
            if (isShutByItself(values.at(0))) m_closedBy.add(elementAt(values.at(0)));
            break;
        case TAVELL_FEEDBACK_PART_FED_BY:
            m_fedBy.add(elementAt(values.at(0)));
            break;
        case TAVELL_FEEDBACK_CANCELLED:
            break;  // the caller of the solve says so, with the iteration
        case TAVELL_FEEDBACK_NODE_MISSING:
            m_findings.add(Code::node_missing, file(),
                           "an element names node " + values.text(0) + ", which is not there");
            break;
        default:
            m_findings.add(Code::library_message, file(),
                           "the library recorded message " + std::to_string(id) + ", value " +
                               values.text(0));
            break;
        }
    }

    /// Adds what is said of several objects at once; how far the solve was from its criterion.
    UnmetMeasures finish()
    {
        addGroup(Code::part_without_pressure, m_heldNodes,
                 "the part of the network around this node has no given pressure",
                 " parts of the network have no given pressure, those around ");
        addGroup(Code::part_closed_by, m_closedBy, "it is shut and bounds the part without a pressure",
                 " elements are shut and bound the parts without a pressure: ");
        addGroup(Code::part_fed_by, m_fedBy, "its given flow bounds the part without a pressure",
                 " given flows bound the parts without a pressure, those of ");
        return m_unmet;
    }

private:
    /// Places of one kind of message, each object once.
    struct Group {
        std::vector<Place> places;
        std::unordered_set<std::string> objects;

        void add(Place place)
        {
            if (objects.insert(place.object).second) places.push_back(std::move(place));
        }
    };

    /// One finding for a group: at its object when there is one, with the list of them otherwise.
    void addGroup(Code code, const Group& group, const char* ofOne, const char* ofMany)
    {
        constexpr std::size_t kMostShown = 10;
        const std::size_t count = group.places.size();
        if (count == 1) m_findings.add(code, group.places.front(), ofOne);
        if (count <= 1) return;
        std::string names;
        for (std::size_t i = 0; i < std::min(count, kMostShown); ++i)
            names += (i == 0 ? "" : ", ") + group.places[i].object;
        if (count > kMostShown) names += " and " + std::to_string(count - kMostShown) + " more";
        Finding& finding = m_findings.add(code, file(), std::to_string(count) + ofMany + names);
        for (const Place& place : group.places)
            finding.objects.push_back(place.object);
        finding.numbers.push_back({"count", static_cast<double>(count), ""});
    }

    /// Why the equations of the pressures had no solution.
    static std::string reasonText(double reason)
    {
        if (reason == 1.0) return "a pivot is zero";
        if (reason == 2.0)
            return "their matrix is not positive definite, as a coefficient that is zero or no number, a "
                   "pump on a "
                   "rising curve or a part without a pressure makes it";
        if (reason == 3.0) return "a pivot is negative";
        if (reason == 4.0) return "there was no memory for their matrix";
        if (reason == 5.0 || reason == 6.0)
            return "an entry has no place in their matrix, which is a defect of the library";
        return "reason " + shortNumber(reason);
    }

    /// Whether an element of no flow is one that shuts: an open pipe at rest closes nothing.
    bool isShutByItself(double number) const
    {
        if (!(std::fabs(number) <= std::numeric_limits<int>::max())) return false;
        const auto found = m_elements.find(static_cast<int>(number));
        if (found == m_elements.end() || found->second.kind != Owner::Kind::element) return false;
        const Element& element = m_network.elements[found->second.position];
        const int type = element.kind->type;
        return element.hasCheckValve || type == TAVELL_NON_RETURN || type == TAVELL_CONTROL_VALVE ||
               element.property(TAVELL_ELEMENT_FIXED_MASS_FLOW).has_value();
    }

    Place file() const
    {
        Place place;
        place.file = m_network.file;
        return place;
    }

    Place placeOf(const Owner& owner) const
    {
        if (owner.kind == Owner::Kind::node) return nodePlace(m_network, owner.position);
        if (owner.kind == Owner::Kind::element) return elementPlace(m_network, owner.position);
        return file();
    }

    Place find(double number, const std::unordered_map<int, Owner>& owners) const
    {
        if (!(std::fabs(number) <= std::numeric_limits<int>::max())) return file();
        const auto found = owners.find(static_cast<int>(number));
        return found == owners.end() ? file() : placeOf(found->second);
    }

    Place nodeAt(double number) const { return find(number, m_nodes); }
    Place elementAt(double number) const { return find(number, m_elements); }

    void addMeasure(Code code, const std::string& text, const Values& values)
    {
        m_findings.add(code, file(), text + values.text(1) + ", allowed 1e-06")
            .numbers.push_back({"relative error", values.at(1), ""});
    }

    void addCurveError(const Values& values)
    {
        if (values.at(0) != 0.0) {
            m_findings.add(Code::curve_not_usable, elementAt(values.at(0)), "its curve cannot be used",
                           "give at least 4 points of strictly increasing flow");
            return;
        }
        // Element number 0 comes from the search for the flow at which a pump's rise ends.
        std::vector<std::size_t> pumps;
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            const Element& element = m_network.elements[i];
            if (element.kind->type == TAVELL_PUMP && !element.isClosed) pumps.push_back(i);
        }
        const bool isOne = pumps.size() == 1;
        Finding& finding = m_findings.add(
            Code::curve_not_usable, isOne ? elementPlace(m_network, pumps.front()) : file(),
            std::string("the cubic through the points of ") + (isOne ? "its curve" : "one of the pumps") +
                " does not fall to zero pressure rise",
            "check the points; where they are right, add one at the flow where the rise ends");
        for (const std::size_t pump : pumps)
            finding.objects.push_back(elementLabel(m_network, pump));
    }

    void addUnbalanced(const Values& values)
    {
        const Code code = m_hasConverged ? Code::part_was_unbalanced : Code::unbalanced_part;
        m_findings
            .add(
                code, nodeAt(values.at(0)),
                "the part of the network around this node has no given pressure, and its given flows leave " +
                    values.text(1) + " kg/s")
            .numbers.push_back({"net inflow", values.at(1), "kg/s"});
    }

    const Network& m_network;
    const bool m_hasConverged;
    Findings& m_findings;
    UnmetMeasures m_unmet;
    Group m_heldNodes;
    Group m_closedBy;
    Group m_fedBy;
    std::unordered_map<int, Owner> m_nodes;     // by the library's ids
    std::unordered_map<int, Owner> m_elements;  // by the library's ids
};

}  // namespace

UnmetMeasures addFeedback(const Network& network, const BuiltCircuit& built, bool hasConverged,
                          Findings& findings)
{
    IFeedbackCollection* feedback = built.circuit->GetFeedback();
    if (feedback->GetSize() == 0) return {};
    FeedbackReader reader(network, built, hasConverged, findings);
    for (std::size_t i = 0; i < feedback->GetSize(); ++i) {
        IFeedback* message = feedback->GetFeedback(i);
        reader.read(message->GetId(), Values(*message));
    }
    return reader.finish();
}

}  // namespace kit
