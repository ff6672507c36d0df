#include "feedback_text.h"

#include <cmath>
#include <limits>
#include <unordered_map>

#include <tavell/Constants.h>
#include <tavell/IElement.h>
#include <tavell/IEntity.h>
#include <tavell/IFeedback.h>
#include <tavell/IFeedbackCollection.h>
#include <tavell/INode.h>

#include "number_text.h"
#include "problems.h"

namespace
{

using Velcor::Tavell::ICircuit;
using Velcor::Tavell::IFeedback;
using Velcor::Tavell::IFeedbackCollection;

/// Names by the numbers that the feedback carries.
struct Names {
    std::unordered_map<int, std::string> nodes;
    std::unordered_map<int, std::string> elements;
    std::vector<std::string> pumps;  // in order, between quotes
};

Names collectNames(ICircuit& circuit)
{
    Names names;
    for (std::size_t i = 0; i < circuit.GetNoNodes(); ++i)
        names.nodes.emplace(circuit.GetNode(i)->GetId(), circuit.GetNode(i)->GetEntity()->GetMeta());
    for (std::size_t i = 0; i < circuit.GetNoElements(); ++i) {
        auto* element = circuit.GetElement(i);
        const char* name = element->GetEntity()->GetMeta();
        names.elements.emplace(element->GetId(), name);
        if (element->GetType() == TAVELL_PUMP) names.pumps.push_back(inQuotes(name));
    }
    return names;
}

/// A message's values; those that it lacks read as not a number.
class Values
{
public:
    explicit Values(IFeedback& message) : m_values(message.GetValues()), m_count(message.GetValueSize()) {}

    double at(std::size_t index) const
    {
        return index < m_count ? m_values[index] : std::numeric_limits<double>::quiet_NaN();
    }

    std::string text(std::size_t index) const { return std::isnan(at(index)) ? "?" : shortNumber(at(index)); }

    /// What a number calls: its name between quotes, or the number itself.
    std::string name(std::size_t index, const std::unordered_map<int, std::string>& names) const
    {
        const double value = at(index);
        if (std::fabs(value) <= std::numeric_limits<int>::max()) {
            const auto found = names.find(static_cast<int>(value));
            if (found != names.end()) return inQuotes(found->second);
        }
        return "number " + text(index);
    }

private:
    const double* m_values;
    std::size_t m_count;
};

/// The message does not say which pump it is about.
std::string pumpCurveText(const std::vector<std::string>& pumps)
{
    std::string whose = pumps.size() == 1 ? "pump" : "one of the pumps";
    for (std::size_t i = 0; i < pumps.size(); ++i)
        whose += (i == 0 ? " " : ", ") + pumps[i];
    return "the curve of " + whose +
           " does not fall to zero pressure rise; correct its points, it has to fall to zero at a larger "
           "flow";
}

std::string curveText(const Values& values, const Names& names)
{
    // Element number 0 comes from the search for the flow at which a pump's pressure rise ends.
    if (values.at(0) == 0.0) return pumpCurveText(names.pumps);
    return "the curve of element " + values.name(0, names.elements) + " (from node " +
           values.name(1, names.nodes) + " to node " + values.name(2, names.nodes) +
           ") cannot be used; give at least 4 points of strictly increasing flow";
}

std::string feedbackText(int id, const Values& values, const Names& names)
{
    switch (id) {
    case TAVELL_FEEDBACK_MASS_ERROR:
        return "the mass flows do not balance: relative error " + values.text(1);
    case TAVELL_FEEDBACK_NODE_MISSING:
        return "an element names node " + values.name(0, names.nodes) + ", which does not exist";
    case TAVELL_FEEDBACK_ELEMENT_MISSING:
        return "element " + values.name(0, names.elements) + " does not exist";
    case TAVELL_FEEDBACK_TEMPERATURE_ERROR:
        return "the temperatures did not settle: relative error " + values.text(1);
    case TAVELL_FEEDBACK_MINOR_LOSS_ERROR:
        return "the minor losses did not settle: relative change " + values.text(1);
    case TAVELL_FEEDBACK_FLOW_UPDATE_ERROR:
        return "the flow update needed too many steps: error " + values.text(1);
    case TAVELL_FEEDBACK_PRESSURE_ERROR:
        return "the pressures do not fit the losses of the elements: relative error " + values.text(1);
    case TAVELL_FEEDBACK_ITERATION_LIMIT:
        return "the iteration limit was reached";
    case TAVELL_FEEDBACK_TEMPERATURE_NO_PRESSURE:
        return "node " + values.name(0, names.nodes) + " has a given temperature but no given pressure";
    case TAVELL_FEEDBACK_CONTRADICTING_ELEMENT:
        return "element " + values.name(0, names.elements) + " between nodes " + values.name(1, names.nodes) +
               " and " + values.name(2, names.nodes) + " contradicts the direction of the circuit";
    case TAVELL_FEEDBACK_PRESSURE_SOLUTION:
        return "the equations of the pressures have no solution (reason " + values.text(0) +
               "); check that flow can reach every part of the network";
    case TAVELL_FEEDBACK_NO_INTERNAL_NODES:
        return "every node has a given pressure; leave at least one node without";
    case TAVELL_FEEDBACK_CURVE_ERROR:
        return curveText(values, names);
    case TAVELL_FEEDBACK_UNBALANCED_PART:
        return "the part of the network around node " + values.name(0, names.nodes) +
               " has no given pressure, and its given flows leave " + values.text(1) +
               " kg/s; balance them or give it a pressure";
    case TAVELL_FEEDBACK_PART_WITHOUT_PRESSURE:
        return "the part of the network around node " + values.name(0, names.nodes) +
               " has no given pressure; its pressures are relative to an arbitrary one";
    case TAVELL_FEEDBACK_PART_CLOSED_BY:
        return "element " + values.name(0, names.elements) + " closes that part off, with no flow";
    case TAVELL_FEEDBACK_PART_FED_BY:
        return "element " + values.name(0, names.elements) + " joins that part, with a given flow";
    case TAVELL_FEEDBACK_CANCELLED:
        return "the solve was cancelled";
    default:
        return "feedback " + std::to_string(id) + " of the library";
    }
}

}  // namespace

std::vector<std::string> feedbackTexts(ICircuit& circuit)
{
    IFeedbackCollection* feedback = circuit.GetFeedback();
    if (feedback->GetSize() == 0) return {};
    const Names names = collectNames(circuit);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < feedback->GetSize(); ++i) {
        IFeedback* message = feedback->GetFeedback(i);
        texts.push_back(feedbackText(message->GetId(), Values(*message), names));
    }
    return texts;
}
