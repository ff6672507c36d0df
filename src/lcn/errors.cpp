#include "errors.h"

#include "records.h"

namespace lcn
{

namespace
{

[[noreturn]] void fail(lcnNET_var& var, std::uint32_t id, const std::vector<double>& parameters,
                       const std::string& text)
{
    var.AddMessage(id, parameters);
    throw FatalException(text);
}

}  // namespace

void lcnErrmsg(lcnNET_var& var, int code, int a, int element, int b, int node)
{
    const auto text = [](int number) { return std::to_string(number); };
    const double A = a, E = element, B = b, N = node;

    switch (code) {
    case kNodeMissing:
        fail(var, 700650, {N}, "Node " + text(node) + " has not been specified in the network");
    case kElementMissing:
        fail(var, 700660, {E}, "Element " + text(element) + " has not been specified in the network");
    case kTemperatureWithoutPressure:
        fail(var, 700720, {N}, "Node " + text(node) + " has a specified temperature with no pressure");
    case kCurveError:
        // kept: a is the upstream node here and the "down stream" node of code 32; hosts match these texts.
        fail(var, 700820, {E, A, B, N},
             "Error in curve, element " + text(element) + " upstream node " + text(a) + ", downstream node " +
                 text(b) + " in Circuit with inlet node " + text(node));
    case kElementContradicts:
        fail(var, 702400, {E, A, B},
             "Error in circuit, element " + text(element) + " down stream node " + text(a) +
                 ", upstream node " + text(b));
    case kNoInternalNodes:
        fail(var, 701201, {}, "There are no internal nodes in the circuit definition");
    default:
        fail(var, 0, {}, "Unknown error code provided to lcnErrmsg, " + text(code));
    }
}

}  // namespace lcn
