#include "flat_world.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>

namespace faults
{

namespace
{

constexpr int kLastResult = TAVELL_RESULT_EXTERNAL_MASS_FLOW;
constexpr std::size_t kMostAllocations = 100000;  // of an operation; then the test ends

std::string bitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return std::to_string(bits);
}

std::string quoted(const char* text)
{
    return text == nullptr ? "null" : '"' + std::string(text) + '"';
}

/// What ask() returns as text; a stored text that is no number makes some questions throw.
template <class Ask> std::string answerOf(Ask&& ask)
{
    try {
        return std::to_string(ask());
    } catch (const std::logic_error& error) {
        return error.what();
    }
}

std::string observedEntity(vcIEntity* entity)
{
    vcIPropertySet* const properties = vcIEntityGetProperties(entity);
    std::string text = quoted(vcIEntityGetMeta(entity));
    for (int i = 0; i < vcIPropertySetGetSize(properties); ++i) {
        const int id = vcIPropertySetGetProp(properties, i);
        text += ' ' + std::to_string(id) + '=' + vcIPropertySetGetStringValue(properties, i);
        text += ':' + answerOf([&] { return vcIPropertySetGetValue(properties, i); });
        text += vcIEntityHasProperty(entity, id) == 1 && vcIPropertySetGetIndex(properties, id) == i
                    ? ""
                    : " lost";
    }
    return text + '\n';
}

int positionOf(vcICircuit* circuit, const vcINode* node)
{
    const int count = static_cast<int>(vcICircuitGetNoNodes(circuit));
    int i = 0;
    while (i < count && vcICircuitGetNode(circuit, i) != node)
        ++i;
    return node == nullptr ? -1 : i;
}

std::string observedOptions(vcIResultsExporterOptions* options)
{
    std::string text = "export " + std::to_string(vcIResultsExporterOptionsGetFormat(options)) + ' ' +
                       std::to_string(vcIResultsExporterOptionsGetPrecision(options)) + ' ' +
                       quoted(vcIResultsExporterOptionsGetNodeLabel(options)) +
                       quoted(vcIResultsExporterOptionsGetElementLabel(options));
    for (int key = 0; key <= kLastResult; ++key) {
        double scale = -1.0;
        double offset = -1.0;
        vcIResultsExporterOptionsGetL10n(options, key, &scale, &offset);
        text += quoted(vcIResultsExporterOptionsGetResultLabel(options, key)) + bitsOf(scale) + ' ' +
                bitsOf(offset);
    }
    return text + '\n';
}

/// Whether a second element between the ends of each one is refused, as the look-up by ends says.
std::string observedDuplicates(vcICircuit* circuit)
{
    std::string text;
    const int count = static_cast<int>(vcICircuitGetNoElements(circuit));
    for (int i = 0; i < count; ++i) {
        vcIElement* const element = vcICircuitGetElement(circuit, i);
        vcINode* ends[2] = {nullptr, nullptr};
        try {
            for (const int which : {0, 1})
                ends[which] = vcICircuitGetElementNode(circuit, element, which);
            if (ends[0] == nullptr || ends[1] == nullptr || ends[0] == ends[1]) continue;
            vcIElement* const second =
                vcICircuitCreateElement(circuit, ends[0], ends[1], 0.1, 0.01, 0.0, TAVELL_ENERGY_FLUX, 0.0);
            text += second == nullptr ? 'r' : 'm';
            if (second != nullptr) vcICircuitReleaseElement(circuit, second);
        } catch (const std::logic_error&) {
            text += 't';
        }
    }
    return text + '\n';
}

}  // namespace

std::string observedModel(vcICircuit* circuit)
{
    std::string text = "circuit " + observedEntity(vcICircuitGetEntity(circuit));
    text += std::to_string(vcICircuitGetCheckNodeIdTaken(circuit)) +
            std::to_string(vcICircuitGetCheckDuplicateElementAtNodes(circuit)) +
            quoted(vcIFluidGetUIName(vcICircuitGetFluid(circuit))) +
            observedEntity(vcIFluidGetEntity(vcICircuitGetFluid(circuit)));
    const int nodes = static_cast<int>(vcICircuitGetNoNodes(circuit));
    for (int i = 0; i < nodes; ++i) {
        vcINode* const node = vcICircuitGetNode(circuit, i);
        text += "node " + observedEntity(vcINodeGetEntity(node));
        text += answerOf(
                    [&] { return positionOf(circuit, vcICircuitGetNodeById(circuit, vcINodeGetId(node))); }) +
                '\n';
    }
    const int elements = static_cast<int>(vcICircuitGetNoElements(circuit));
    for (int i = 0; i < elements; ++i) {
        vcIElement* const element = vcICircuitGetElement(circuit, i);
        text += "element " + observedEntity(vcIElementGetEntity(element));
        for (const int which : {0, 1})
            text += answerOf([&] {
                        return positionOf(circuit, vcICircuitGetElementNode(circuit, element, which));
                    }) +
                    ' ';
    }
    return text;
}

std::string observedResults(vcICircuit* circuit)
{
    std::string text;
    for (int key = 0; key <= kLastResult; ++key) {
        vcIResultsSet* const results = vcICircuitGetResults(circuit, key);
        if (results == nullptr) continue;
        text += "result " + std::to_string(key) + ' ' + std::to_string(vcIResultsSetIsNodal(results));
        for (std::size_t i = 0; i < vcIResultsSetGetSize(results); ++i)
            text += ' ' + std::to_string(vcIResultsSetGetIds(results)[i]) + ':' +
                    bitsOf(vcIResultsSetGetValues(results)[i]);
        text += '\n';
    }
    return text;
}

std::string observedFeedback(vcICircuit* circuit)
{
    vcIFeedbackCollection* const feedback = vcICircuitGetFeedback(circuit);
    std::string text;
    for (int i = 0; i < static_cast<int>(vcIFeedbackCollectionGetSize(feedback)); ++i) {
        vcIFeedback* const message = vcIFeedbackCollectionGetFeedback(feedback, i);
        text += "feedback " + std::to_string(vcIFeedbackGetId(message));
        for (std::size_t k = 0; k < vcIFeedbackGetValueSize(message); ++k)
            text += ' ' + bitsOf(vcIFeedbackGetValues(message)[k]);
        text += '\n';
    }
    return text;
}

std::string observed(const World& world)
{
    std::string text;
    for (int c = 0; c < static_cast<int>(vcITavellGetNoCircuits(world.system())); ++c) {
        vcICircuit* const circuit = world.circuit(c);
        text += observedModel(circuit);
        for (int i = 0; i < static_cast<int>(vcICircuitGetNoNodes(circuit)); ++i)
            text += vcITavellFindParentCircuitFromNode(world.system(), world.node(i, c)) == circuit
                        ? ""
                        : "lost node\n";
        for (int i = 0; i < static_cast<int>(vcICircuitGetNoElements(circuit)); ++i)
            text += vcITavellFindParentCircuitFromElement(world.system(), world.element(i, c)) == circuit
                        ? ""
                        : "lost element\n";
        text += observedResults(circuit) + observedFeedback(circuit);
        text += observedOptions(vcICircuitGetResultsExporterOptions(circuit));
        text += quoted(vcICircuitExportResults(circuit)) + observedDuplicates(circuit);
    }
    return text;
}

vcICircuit* addRow(const World& world, double x, double y)
{
    constexpr int kNodes = 4;
    constexpr std::array<double, 4> kFlows{0.0, 0.001, 0.002, 0.003};     // [m3/s]
    constexpr std::array<double, 4> kRises{2000.0, 1800.0, 1400.0, 0.0};  // [Pa]
    vcICircuit* const circuit = vcITavellCreateCircuit(world.system());
    std::array<vcINode*, kNodes> nodes{};
    for (int i = 0; i < kNodes; ++i) {
        vcINode*& node = nodes[static_cast<std::size_t>(i)];
        node = vcICircuitCreateNode(circuit);
        vcINodeSetLocation(node, x + 2.0 * i, y, 0.0);
        if (i > 0)
            vcICircuitCreateElement(circuit, nodes[static_cast<std::size_t>(i - 1)], node, 0.05, 0.002, 0.5,
                                    TAVELL_ENERGY_FLUX, 0.0);
    }
    vcICircuitCreatePump(circuit, nodes[2], nodes[1], kFlows.data(), kRises.data(), 4, 998.0,
                         TAVELL_ENERGY_FLUX, 0.0);
    vcINodeSetType(nodes.front(), TAVELL_NODE_INLET);
    vcINodeSetConstraint(nodes.front(), TAVELL_CONSTRAINT_PRESSURE, 300e3);
    vcINodeSetType(nodes.back(), TAVELL_NODE_OUTLET);
    vcINodeSetConstraint(nodes.back(), TAVELL_CONSTRAINT_PRESSURE, 200e3);
    return circuit;
}

namespace
{

/// A state of the world, made without any disturbance.
struct Undisturbed {
    std::string before, after;
    long answer = 0;

    explicit Undisturbed(const Case& tested)
    {
        {
            const World world;
            tested.setUp(world);
            before = observed(world);
        }
        const World world;
        tested.setUp(world);
        answer = tested.operate(world);
        after = observed(world);
    }
};

/// Fails the test, and shows the first line that differs, unless a state is as it should be.
bool isAsExpected(const std::string& state, const std::string& expected, const std::string& when)
{
    const std::string difference = firstDifference(state, expected);
    EXPECT_EQ(difference, "") << when;
    return difference.empty();
}

struct Trial {
    bool isHit = false;   // an allocation failed
    bool isGood = false;  // all was as it should be
};

/// One world, one failing allocation.
Trial tryOnce(const Case& tested, const Undisturbed& expected, std::size_t nth, Mode mode)
{
    const std::string when = "allocation " + std::to_string(nth) + ", " + nameOf(mode);
    const std::size_t live = liveBlocks();
    Trial trial;
    {
        const World world;
        tested.setUp(world);
        const Attempt made = attempt(nth, mode, [&] { return tested.operate(world); });
        trial.isHit = made.isHit;
        trial.isGood =
            !made.isOut || isAsExpected(observed(world), expected.before, when + ", after the failure");
        const long answer = made.isOut ? tested.operate(world) : made.answer;
        EXPECT_EQ(answer, expected.answer) << when;
        trial.isGood = isAsExpected(observed(world), expected.after, when + ", at the end") && trial.isGood &&
                       answer == expected.answer;
    }
    const std::size_t left = liveBlocks();
    if (trial.isGood) {
        EXPECT_EQ(left, live) << when;
        trial.isGood = left == live;
    }
    return trial;
}

}  // namespace

std::string firstDifference(const std::string& text, const std::string& other)
{
    std::size_t begin = 0;
    while (begin < text.size() || begin < other.size()) {
        const std::string line = text.substr(std::min(begin, text.size()), text.find('\n', begin) - begin);
        const std::string otherLine =
            other.substr(std::min(begin, other.size()), other.find('\n', begin) - begin);
        if (line != otherLine) return '[' + line + "] instead of [" + otherLine + ']';
        begin += line.size() + 1;
    }
    return "";
}

void failAtEveryAllocation(const Case& tested)
{
    const Undisturbed expected(tested);
    SCOPED_TRACE(tested.name);
    for (const Mode mode : kModes) {
        Trial trial{true, true};
        std::size_t nth = 1;
        for (; trial.isHit && trial.isGood && nth < kMostAllocations; ++nth)
            trial = tryOnce(tested, expected, nth, mode);
        EXPECT_LT(nth, kMostAllocations) << "the operation never ends";
    }
}

}  // namespace faults
