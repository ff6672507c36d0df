// flat_layer_fuzz.cpp: an input is a sequence of calls of the flat functions. Each answer, and afterwards the state of
// the objects, is compared with the plain model of object_model.h.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "fuzz_input.h"
#include "object_model.h"

namespace
{

using fuzz::Input;
using fuzz::isSameNumber;
using fuzz::require;
using fuzz::reference::Circuit;
using fuzz::reference::Element;
using fuzz::reference::Entity;
using fuzz::reference::Failure;
using fuzz::reference::Node;
using fuzz::reference::System;

constexpr std::size_t kMostSystems = 2;
constexpr std::size_t kMostCircuits = 5;
constexpr std::size_t kMostNodes = 24;  // of a circuit, but for merges
constexpr std::size_t kMostElements = 32;
constexpr int kMostCalls = 1500;         // of an input
constexpr int kMostSteps = 45;           // of a solve: most small circuits need about 30
constexpr int kCallsBetweenChecks = 32;  // of everything
constexpr const char* kDetailCheck = "TAVELL_DETAIL_CHECK";
constexpr const char* kLetters = "0123456789+-.eExXpPinfaINFA ,\t";

constexpr std::array<const char*, 40> kTexts{
    "",         " ",         "1",       " 2",       "+3",         "-4",       "0x10",       "0x1p-3",
    "0x.8",     "0x",        "1e400",   "-1e400",   "1e-400",     "4.9e-324", "1e-310",     "nan",
    "-nan",     "inf",       "-INF",    "infinity", "abc",        "1abc",     "1,5",        "--1",
    "+-1",      "1e",        "1e+",     ".5",       "5.",         ".",        "1.9",        "-0",
    "0x1p2000", "0x1p-2000", "1,2,3,4", "1,x,3,4",  "0,1,2,3,4,", ",",        "2147483648", "0x1p+-3"};

/// The callback has no argument, so what it knows is here.
int stepsLeft = 0;      // until it asks to stop
bool wasAsked = false;  // to stop

bool countStep()
{
    wasAsked = wasAsked || --stepsLeft <= 0;
    return wasAsked;
}

template <class Call> auto answerOf(Call call, Failure& failure) -> decltype(call())
{
    failure = Failure::kNone;
    try {
        return call();
    } catch (const std::invalid_argument&) {
        failure = Failure::kInvalid;
    } catch (const std::out_of_range&) {
        failure = Failure::kOutOfRange;
    }
    return {};
}

template <class T> bool isEqual(const T& a, const T& b)
{
    return a == b;
}
bool isEqual(double a, double b)
{
    return isSameNumber(a, b);
}
bool isEqual(const std::vector<double>& a, const std::vector<double>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), isSameNumber);
}

void print(const Entity& entity, const char* kind)
{
    std::fprintf(stderr, "%s:", kind);
    for (const auto& [id, text] : entity.properties)
        std::fprintf(stderr, " %d=%s", id, text.text.c_str());
    std::fprintf(stderr, "\n");
}

/// What a failing check is about.
void print(const Circuit& circuit)
{
    print(circuit, "circuit");
    print(circuit.fluid, "fluid");
    for (const Node& node : circuit.nodes)
        print(node, "node");
    for (const Element& element : circuit.elements)
        print(element, "element");
}

/// Both answer the same, or both throw the same.
template <class Call, class ModelCall> Failure compare(Call call, ModelCall modelCall, const char* fact)
{
    Failure failure = Failure::kNone;
    Failure expectedFailure = Failure::kNone;
    const auto answer = answerOf(call, failure);
    const decltype(answer) expected = answerOf(modelCall, expectedFailure);
    if (failure != expectedFailure) std::fprintf(stderr, "one of the two throws\n");
    require(failure == expectedFailure, fact);
    if (failure == Failure::kNone) require(isEqual(answer, expected), fact);
    return failure;
}

/// The same for operations without an answer.
template <class Call, class ModelCall> Failure compareEffect(Call call, ModelCall modelCall, const char* fact)
{
    return compare(
        [&] {
            call();
            return 0;
        },
        [&] {
            modelCall();
            return 0;
        },
        fact);
}

std::string stringOf(const char* text)
{
    require(text != nullptr, "a text is never null");
    return text;
}

/// An entity of the library beside that of the model, and the circuit whose results its changes drop.
struct Subject {
    vcIEntity* handle = nullptr;
    Entity* model = nullptr;
    Circuit* circuit = nullptr;
};

/// A node that is handed to an operation; the model's is null for null and for a node of another system.
struct NodeChoice {
    vcINode* handle = nullptr;
    const Node* model = nullptr;
    const Circuit* circuit = nullptr;
};

struct ElementChoice {
    vcIElement* handle = nullptr;
    Element* model = nullptr;
    Circuit* circuit = nullptr;
};

class Session
{
public:
    explicit Session(Input& input) : m_input(input) { setDetailCheck(false); }
    ~Session()
    {
        for (System& system : m_systems)
            vcITavellRelease(system.handle);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    void run()
    {
        createSystem();
        for (int call = 1; call <= kMostCalls && !m_input.isEmpty(); ++call) {
            m_system = m_input.rarely(16) ? m_input.below(m_systems.size()) : m_system % m_systems.size();
            step();
            checkOutline();
            if (call % kCallsBetweenChecks == 0) checkEverything();
        }
        checkEverything();
    }

private:
    System& system() { return m_systems[m_system]; }

    void setDetailCheck(bool isOn)
    {
        m_isDetailed = isOn;
        if (isOn)
            ::setenv(kDetailCheck, "1", 1);
        else
            ::unsetenv(kDetailCheck);
    }

    void step()
    {
        constexpr unsigned kOperations = 40;
        const unsigned operation = m_input.byte() % kOperations;
        if (operation == 0) return changeSystems();
        if (operation == 1) return changeCircuits();
        if (operation == 2) return setDetailCheck(m_input.flag());
        if (operation == 3) return mergeCircuits();
        if (operation == 4) return validateCircuits();
        if (operation == 5) return solveCircuits();
        if (system().circuits.empty()) return createCircuit();
        Circuit& circuit = system().circuits[m_input.below(system().circuits.size())];
        if (operation < 10) return createNode(circuit);
        if (operation < 15) return createElement(circuit);
        if (operation < 21) return setProperty(circuit);
        if (operation < 27) return stepWithNode(circuit, operation);
        if (operation < 31) return stepWithElement(circuit, operation);
        stepWithCircuit(circuit, operation);
    }

    void stepWithNode(Circuit& circuit, unsigned operation)
    {
        switch (operation) {
        case 21:
            return releaseNode(circuit);
        case 22:
            return setText();
        case 23:
            return readProperty();
        case 24:
            return removeProperty();
        default:
            return changeNode(circuit);
        }
    }

    void stepWithElement(Circuit& circuit, unsigned operation)
    {
        switch (operation) {
        case 27:
            return releaseElement(circuit);
        case 28:
            return setMeta();
        default:
            return changeElement(circuit);
        }
    }

    void stepWithCircuit(Circuit& circuit, unsigned operation)
    {
        switch (operation) {
        case 31:
            return addLine(circuit);
        case 32:
            return changeCircuit(circuit);
        case 33:
            return lookUp(circuit);
        case 34:
            return askValidity(circuit);
        case 35:
            return setExporterOption(circuit);
        case 36:
            return exportResults(circuit);
        case 37:
            return readDisplayValues(circuit);
        default:
            return solve(circuit);
        }
    }

    // Systems and circuits

    void createSystem()
    {
        System made;
        made.handle = vcCreateTavell();
        require(made.handle != nullptr && vcITavellGetNoCircuits(made.handle) == 0, "a new system is empty");
        m_systems.push_back(made);
    }

    void changeSystems()
    {
        if (m_systems.size() < kMostSystems) return createSystem();
        if (!m_input.rarely(4)) return;
        vcITavellRelease(system().handle);
        m_systems.erase(m_systems.begin() + static_cast<std::ptrdiff_t>(m_system));
        m_system = 0;
    }

    void createCircuit()
    {
        Circuit made;
        made.handle = vcITavellCreateCircuit(system().handle);
        require(made.handle != nullptr, "a new circuit is never null");
        system().circuits.push_back(made);
        checkCircuit(system().circuits.back());
    }

    void changeCircuits()
    {
        std::vector<Circuit>& circuits = system().circuits;
        const unsigned choice = m_input.byte() % 16;
        if (choice < 8 && circuits.size() < kMostCircuits) return createCircuit();
        if (choice == 8) {
            require(vcITavellReleaseCircuit(system().handle, nullptr) == 0, "null is no circuit");
        } else if (choice == 9) {
            for (const System& other : m_systems)
                if (&other != &system() && !other.circuits.empty())
                    require(vcITavellReleaseCircuit(system().handle, other.circuits[0].handle) == 0,
                            "a circuit of another system is not in the list");
        } else if (choice == 10) {
            vcITavellReleaseAllCircuits(system().handle);
            circuits.clear();
        } else if (choice < 13 && !circuits.empty()) {
            const std::size_t position = m_input.below(circuits.size());
            require(vcITavellReleaseCircuit(system().handle, circuits[position].handle) == 1,
                    "a circuit can be released");
            circuits.erase(circuits.begin() + static_cast<std::ptrdiff_t>(position));
        }
    }

    /// What a merge moved has new handles.
    void takeHandles()
    {
        for (Circuit& circuit : system().circuits) {
            require(vcICircuitGetNoNodes(circuit.handle) == circuit.nodes.size(), "nodes after a merge");
            require(vcICircuitGetNoElements(circuit.handle) == circuit.elements.size(),
                    "elements after a merge");
            for (std::size_t i = 0; i < circuit.nodes.size(); ++i)
                if (circuit.nodes[i].handle == nullptr)
                    circuit.nodes[i].handle = vcICircuitGetNode(circuit.handle, static_cast<int>(i));
            for (std::size_t i = 0; i < circuit.elements.size(); ++i)
                if (circuit.elements[i].handle == nullptr)
                    circuit.elements[i].handle = vcICircuitGetElement(circuit.handle, static_cast<int>(i));
        }
    }

    void mergeCircuits()
    {
        compareEffect([&] { vcITavellMergeCircuits(system().handle); },
                      [&] { fuzz::reference::merge(system()); }, "merge");
        require(vcITavellGetNoCircuits(system().handle) == system().circuits.size(),
                "circuits after a merge");
        takeHandles();
        for (const Circuit& circuit : system().circuits)
            checkCircuit(circuit);
    }

    void validateCircuits()
    {
        compareEffect([&] { vcITavellValidateCircuits(system().handle); },
                      [&] {
                          for (Circuit& circuit : system().circuits)
                              fuzz::reference::validate(circuit, m_isDetailed);
                      },
                      "validate all");
        for (const Circuit& circuit : system().circuits)
            checkCircuit(circuit);
    }

    // Nodes and elements

    void createNode(Circuit& circuit)
    {
        if (circuit.nodes.size() >= kMostNodes) return;
        vcINode* handle = nullptr;
        const Failure failure =
            compare([&] { return (handle = vcICircuitCreateNode(circuit.handle)) != nullptr; },
                    [&] { return circuit.createNode().handle == nullptr; }, "a new node");
        if (failure != Failure::kNone) return;
        circuit.nodes.back().handle = handle;
        if (m_input.flag()) setLocation(circuit.nodes.back(), circuit);
        checkEntity(vcINodeGetEntity(handle), circuit.nodes.back());
    }

    /// Mostly of the circuit; also null, of another circuit, of another system.
    NodeChoice chooseNode(const Circuit& circuit)
    {
        if (m_input.rarely(24)) return {};
        const bool isForeign = m_input.rarely(16);
        const System& owner = isForeign ? m_systems[m_input.below(m_systems.size())] : system();
        if (owner.circuits.empty()) return {};
        const Circuit& holder = isForeign ? owner.circuits[m_input.below(owner.circuits.size())] : circuit;
        if (holder.nodes.empty()) return {};
        const Node& node = holder.nodes[m_input.below(holder.nodes.size())];
        if (&owner != &system()) return {node.handle, nullptr, nullptr};
        return {node.handle, &node, &holder};
    }

    ElementChoice chooseElement(Circuit& circuit)
    {
        if (m_input.rarely(24)) return {};
        const bool isForeign = m_input.rarely(16);
        System& owner = isForeign ? m_systems[m_input.below(m_systems.size())] : system();
        if (owner.circuits.empty()) return {};
        Circuit& holder = isForeign ? owner.circuits[m_input.below(owner.circuits.size())] : circuit;
        if (holder.elements.empty()) return {};
        Element& element = holder.elements[m_input.below(holder.elements.size())];
        return {element.handle, &element, &holder};
    }

    bool isOfThisSystem(const Circuit* circuit)
    {
        const std::vector<Circuit>& circuits = system().circuits;
        return std::any_of(circuits.begin(), circuits.end(), [=](const Circuit& c) { return &c == circuit; });
    }

    void createElement(Circuit& circuit)
    {
        if (circuit.elements.size() >= kMostElements) return;
        vcIElement* handle = nullptr;
        const unsigned form = m_input.byte() % 8;
        Failure failure = Failure::kNone;
        const std::size_t before = circuit.elements.size();
        if (form == 0) {
            failure = compare(
                [&] { return (handle = vcICircuitCreateEmptyElement(circuit.handle)) != nullptr; },
                [&] { return circuit.createElement(0, 2, 0.0).handle == nullptr; }, "a new empty element");
        } else if (form < 6) {
            failure = createPipe(circuit, form == 5, handle);
        } else {
            failure = createCurveElement(circuit, form == 6 ? TAVELL_PUMP : TAVELL_LOSS, handle);
        }
        if (failure != Failure::kNone || handle == nullptr) return;
        require(circuit.elements.size() == before + 1, "the model makes an element, too");
        circuit.elements.back().handle = handle;
        checkEntity(vcIElementGetEntity(handle), circuit.elements.back());
    }

    double size() { return m_input.rarely(4) ? m_input.number() : 0.01 * (1.0 + m_input.byte()); }

    /// The first size is a diameter, or the wetted perimeter of a pipe that is not round.
    Failure createPipe(Circuit& circuit, bool isNonRound, vcIElement*& handle)
    {
        const NodeChoice start = chooseNode(circuit);
        const NodeChoice end = chooseNode(circuit);
        const double first = size();
        const double area = size();
        const double k = m_input.number();
        const int energyType = m_input.whole();
        const double energyValue = m_input.number();
        const double diameter = isNonRound ? 4.0 * area / first : first;
        const double perimeter = isNonRound ? first : std::acos(-1.0) * first;
        return compare(
            [&] {
                const auto create = isNonRound ? vcICircuitCreateNonRoundElement : vcICircuitCreateElement;
                handle =
                    create(circuit.handle, start.handle, end.handle, first, area, k, energyType, energyValue);
                return handle != nullptr;
            },
            [&] {
                if (first <= 0.0 || area <= 0.0) return false;
                if (!circuit.mayJoin(start.model, start.circuit, end.model, end.circuit)) return false;
                circuit.createPipe(start.model->id(), end.model->id(), diameter, area, perimeter, k,
                                   energyType, energyValue);
                return true;
            },
            "a new pipe");
    }

    std::vector<double> curve()
    {
        std::vector<double> values(m_input.below(8));
        const bool isRising = m_input.flag();
        double last = 0.0;
        for (double& value : values)
            value = isRising ? (last += m_input.between(1e-4, 1.0)) : m_input.number();
        return values;
    }

    Failure createCurveElement(Circuit& circuit, int type, vcIElement*& handle)
    {
        const NodeChoice start = chooseNode(circuit);
        const NodeChoice end = chooseNode(circuit);
        const std::vector<double> flows = curve();
        std::vector<double> pressures = curve();
        pressures.resize(flows.size(), 1.0);
        const bool isNull = m_input.rarely(16);
        const double density = m_input.number();
        const int energyType = m_input.whole();
        const double energyValue = m_input.number();
        const double* const flowData = isNull ? nullptr : flows.data();
        return compare(
            [&] {
                const auto create = type == TAVELL_PUMP ? vcICircuitCreatePump : vcICircuitCreateLoss;
                handle = create(circuit.handle, start.handle, end.handle, flowData, pressures.data(),
                                static_cast<int>(flows.size()), density, energyType, energyValue);
                return handle != nullptr;
            },
            [&] {
                if (!circuit.mayJoin(start.model, start.circuit, end.model, end.circuit)) return false;
                if (isNull || flows.size() < 4) return false;
                const int startId = start.model->id();
                const int endId = end.model->id();
                Element& made = circuit.createElement(type, energyType, energyValue);
                made.setNumber(1001, startId);
                made.setNumber(1002, endId);
                storeCurve(made, flows, pressures, density);
                return true;
            },
            "a new pump or loss");
    }

    static void storeCurve(Element& element, const std::vector<double>& flows,
                           const std::vector<double>& pressures, double density)
    {
        element.setNumber(1009, density);
        element.setText(1010, fuzz::reference::curveText(flows));
        element.setText(1011, fuzz::reference::curveText(pressures));
    }

    void releaseNode(Circuit& circuit)
    {
        const NodeChoice choice = chooseNode(circuit);
        const bool isHeld = choice.circuit == &circuit;
        require(vcICircuitReleaseNode(circuit.handle, choice.handle) == (isHeld ? 1 : 0),
                "a node of the circuit, and no other, can be released");
        if (!isHeld) return;
        circuit.nodes.erase(circuit.nodes.begin() + (choice.model - circuit.nodes.data()));
        circuit.hasResults = false;
    }

    void releaseElement(Circuit& circuit)
    {
        const ElementChoice choice = chooseElement(circuit);
        const bool isHeld = choice.circuit == &circuit;
        require(vcICircuitReleaseElement(circuit.handle, choice.handle) == (isHeld ? 1 : 0),
                "an element of the circuit, and no other, can be released");
        if (!isHeld) return;
        circuit.elements.erase(circuit.elements.begin() + (choice.model - circuit.elements.data()));
        circuit.hasResults = false;
    }

    void setLocation(Node& node, Circuit& circuit)
    {
        std::array<double, 3> at{};
        for (double& coordinate : at)
            coordinate = m_input.rarely(12) ? m_input.number() : static_cast<double>(m_input.byte() % 6);
        vcINodeSetLocation(node.handle, at[0], at[1], at[2]);
        bool changed = false;
        for (const int axis : {0, 1, 2})
            changed = node.setNumber(2001 + axis, at[static_cast<std::size_t>(axis)]) || changed;
        if (changed) circuit.hasResults = false;
    }

    static void setNumber(Entity& entity, Circuit& circuit, int id, double value)
    {
        if (entity.setNumber(id, value)) circuit.hasResults = false;
    }

    void changeNode(Circuit& circuit)
    {
        if (circuit.nodes.empty()) return;
        Node& node = circuit.nodes[m_input.below(circuit.nodes.size())];
        switch (m_input.byte() % 4) {
        case 0:
            setLocation(node, circuit);
            break;
        case 1: {
            const int type = m_input.whole();
            vcINodeSetType(node.handle, type);
            setNumber(node, circuit, 2004, type);
            break;
        }
        case 2:
            setConstraint(node, circuit,
                          m_input.rarely(8) ? m_input.whole() : static_cast<int>(m_input.below(5)),
                          m_input.number());
            break;
        default:
            break;
        }
        readNode(node);
        checkEntity(vcINodeGetEntity(node.handle), node);
    }

    static void setConstraint(Node& node, Circuit& circuit, int constraint, double value)
    {
        vcINodeSetConstraint(node.handle, constraint, value);
        setNumber(node, circuit, 2010, constraint);
        constexpr std::array<int, 5> kValues{2006, 2007, 2005, 2008, 2011};
        if (constraint >= 0 && constraint < 5)
            setNumber(node, circuit, kValues[static_cast<std::size_t>(constraint)], value);
    }

    static void readNode(const Node& node)
    {
        compare([&] { return vcINodeGetId(node.handle); }, [&] { return node.id(); }, "node id");
        compare([&] { return vcINodeGetType(node.handle); }, [&] { return node.whole(2004); }, "node type");
        compare([&] { return vcINodeGetConstraint(node.handle); }, [&] { return node.whole(2010); },
                "node constraint");
        compare(
            [&] {
                double x = 0.0, y = 0.0, z = 0.0;
                vcINodeGetLocation(node.handle, &x, &y, &z);
                return std::vector<double>{x, y, z};
            },
            [&] {
                const auto at = node.location();
                return std::vector<double>(at.begin(), at.end());
            },
            "node location");
    }

    void changeElement(Circuit& circuit)
    {
        const ElementChoice choice = chooseElement(circuit);
        if (choice.model == nullptr) return;
        Element& element = *choice.model;
        Circuit& holder = *choice.circuit;
        switch (m_input.byte() % 4) {
        case 0: {
            const int type = m_input.whole();
            vcIElementSetType(element.handle, type);
            setNumber(element, holder, 1008, type);
            break;
        }
        case 1:
            compareEffect([&] { vcIElementSwapNodes(element.handle); },
                          [&] {
                              const int start = element.start();
                              const int end = element.end();
                              setNumber(element, holder, 1001, end);
                              setNumber(element, holder, 1002, start);
                          },
                          "swapped ends");
            break;
        case 2:
            updateCurve(element, holder);
            break;
        default:
            break;
        }
        readElement(element);
        checkEntity(vcIElementGetEntity(element.handle), element);
    }

    void updateCurve(Element& element, Circuit& circuit)
    {
        const int type = m_input.rarely(4) ? m_input.whole() : 1 + static_cast<int>(m_input.below(2));
        const std::vector<double> flows = curve();
        std::vector<double> pressures = curve();
        pressures.resize(flows.size(), 2.0);
        const bool isNull = m_input.rarely(8);
        const double density = m_input.number();
        const bool isTaken = (type == 1 || type == 2) && !isNull && flows.size() >= 4;
        require(vcIElementUpdateCurveData(element.handle, type, flows.data(),
                                          isNull ? nullptr : pressures.data(), static_cast<int>(flows.size()),
                                          density) == (isTaken ? 1 : 0),
                "a curve is taken or refused");
        if (!isTaken) return;
        element.setNumber(1008, type);
        storeCurve(element, flows, pressures, density);
        circuit.hasResults = false;
    }

    void readElement(const Element& element)
    {
        compare([&] { return vcIElementGetId(element.handle); }, [&] { return element.whole(1000); },
                "element id");
        compare([&] { return vcIElementGetType(element.handle); }, [&] { return element.whole(1008); },
                "element type");
        compare([&] { return vcIElementGetStartNodeId(element.handle); }, [&] { return element.start(); },
                "start");
        compare([&] { return vcIElementGetEndNodeId(element.handle); }, [&] { return element.end(); }, "end");
        const int capacity = static_cast<int>(m_input.below(10));
        compare([&] { return readCurve(element, capacity); },
                [&] { return expectedCurve(element, capacity); }, "the points of a curve");
    }

    static constexpr double kUntouched = 12345.0;

    /// The answer, the count, the reference density, the points; what is not written shows as it was.
    static std::vector<double> readCurve(const Element& element, int capacity)
    {
        std::vector<double> flows(static_cast<std::size_t>(capacity), kUntouched);
        std::vector<double> pressures(flows);
        double density = kUntouched;
        int count = 0;
        const int answer =
            vcIElementGetCurveData(element.handle, &density, capacity == 0 ? nullptr : flows.data(),
                                   capacity == 0 ? nullptr : pressures.data(), capacity, &count);
        std::vector<double> read{static_cast<double>(answer), static_cast<double>(count), density};
        read.insert(read.end(), flows.begin(), flows.end());
        read.insert(read.end(), pressures.begin(), pressures.end());
        return read;
    }

    static std::vector<double> expectedCurve(const Element& element, int capacity)
    {
        const auto places = static_cast<std::size_t>(capacity);
        std::vector<double> read(3 + 2 * places, kUntouched);
        read[0] = 0.0;
        read[1] = -1.0;
        if (element.whole(1008) == TAVELL_PIPE) return read;
        const std::vector<double> flows = fuzz::reference::curveNumbers(element.text(1010));
        read[1] = static_cast<double>(flows.size());
        if (places < flows.size()) return read;
        const std::vector<double> pressures = fuzz::reference::curveNumbers(element.text(1011));
        if (pressures.size() < flows.size()) return read;
        const double density = element.number(1009);
        read[0] = 1.0;
        if (element.has(1009)) read[2] = density;
        for (std::size_t i = 0; i < flows.size(); ++i) {
            read[3 + i] = flows[i];
            read[3 + places + i] = pressures[i];
        }
        return read;
    }

    // Properties

    Subject chooseSubject()
    {
        Circuit& circuit = system().circuits[m_input.below(system().circuits.size())];
        const unsigned choice = m_input.byte() % 16;
        if (choice == 0) return {vcICircuitGetEntity(circuit.handle), &circuit, &circuit};
        if (choice == 1)
            return {vcIFluidGetEntity(vcICircuitGetFluid(circuit.handle)), &circuit.fluid, &circuit};
        if (choice < 8 && !circuit.nodes.empty()) {
            Node& node = circuit.nodes[m_input.below(circuit.nodes.size())];
            return {vcINodeGetEntity(node.handle), &node, &circuit};
        }
        if (circuit.elements.empty()) return {vcICircuitGetEntity(circuit.handle), &circuit, &circuit};
        Element& element = circuit.elements[m_input.below(circuit.elements.size())];
        return {vcIElementGetEntity(element.handle), &element, &circuit};
    }

    /// Mostly one that the kind of object takes.
    int chooseId(fuzz::reference::Kind kind)
    {
        using fuzz::reference::Kind;
        if (m_input.rarely(8)) return m_input.flag() ? m_input.whole() : anyId();
        switch (kind) {
        case Kind::kElement:
            return 1000 + static_cast<int>(m_input.below(27));
        case Kind::kNode:
            return 2000 + static_cast<int>(m_input.below(12));
        case Kind::kCircuit:
            return 3000 + static_cast<int>(m_input.below(6));
        default:
            return 4000 + static_cast<int>(m_input.below(8));
        }
    }
    int anyId()
    {
        return fuzz::reference::kProperties[m_input.below(fuzz::reference::kProperties.size())].id;
    }

    /// A number, or an id: of any circuit's objects, of none, of what was released.
    double chooseValue(int id)
    {
        const bool isIdentifier = id <= 1002 || id == 2000;
        if (!isIdentifier || m_input.rarely(8)) return m_input.number();
        return static_cast<double>(m_input.below(kMostNodes)) + (m_input.rarely(16) ? 0.5 : 0.0);
    }

    static void applyNumber(const Subject& subject, int id, double value, bool answer)
    {
        Entity& entity = *subject.model;
        if (entity.kind == fuzz::reference::Kind::kFluid) {
            require(answer == entity.setNumber(id, value), "a fluid tells whether a number is another one");
            return;
        }
        require(answer == entity.takes(id), "an entity takes the numbers of its kind");
        if (answer) setNumber(entity, *subject.circuit, id, value);
    }

    void setProperty(Circuit&)
    {
        const Subject subject = chooseSubject();
        const int id = chooseId(subject.model->kind);
        const double value = chooseValue(id);
        if (m_input.rarely(4)) return setPropertyByName(subject, id, value);
        applyNumber(subject, id, value, vcIEntitySetProperty(subject.handle, id, value) == 1);
        checkEntity(subject.handle, *subject.model);
    }

    /// The name of an id, in some other letters; at times none.
    std::string chooseName(int id)
    {
        std::string name = m_input.rarely(16) ? std::string("no such name") : fuzz::reference::nameOf(id);
        if (m_input.flag())
            std::transform(name.begin(), name.end(), name.begin(), [](char c) {
                return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            });
        return name;
    }

    void setPropertyByName(const Subject& subject, int id, double value)
    {
        const std::string name = chooseName(id);
        const char* const text = m_input.rarely(16) ? nullptr : name.c_str();
        applyNumber(subject, fuzz::reference::idOf(text), value,
                    vcIEntitySetPropertyByName(subject.handle, text, value) == 1);
        checkEntity(subject.handle, *subject.model);
    }

    std::string chooseText()
    {
        if (m_input.flag()) return kTexts[m_input.below(kTexts.size())];
        return m_input.text(kLetters, 12);
    }

    void setText()
    {
        const Subject subject = chooseSubject();
        const std::string name = chooseName(m_input.rarely(4) ? anyId() : chooseId(subject.model->kind));
        const std::string value = chooseText();
        const bool isNull = m_input.rarely(16);
        const int id = fuzz::reference::idOf(name.c_str());
        const bool isTaken = id >= 0 && !isNull;
        require(vcIPropertySetSetStringPropertyByName(vcIEntityGetWriteableProperties(subject.handle),
                                                      name.c_str(),
                                                      isNull ? nullptr : value.c_str()) == (isTaken ? 1 : 0),
                "a text is stored under a known name");
        if (isTaken) subject.model->setText(id, value);
        checkEntity(subject.handle, *subject.model);
    }

    void removeProperty()
    {
        const Subject subject = chooseSubject();
        const int id = chooseId(subject.model->kind);
        require(vcIEntityRemoveProperty(subject.handle, id) ==
                    (subject.model->properties.erase(id) > 0 ? 1 : 0),
                "what is stored can be removed");
        checkEntity(subject.handle, *subject.model);
    }

    void readProperty()
    {
        const Subject subject = chooseSubject();
        const int id = chooseId(subject.model->kind);
        // kept by the library: an element's temperature reads as that of its fluid
        const bool isOfFluid = id == 1006 && subject.model->kind == fuzz::reference::Kind::kElement;
        const Entity& source = isOfFluid ? subject.circuit->fluid : *subject.model;
        const int sourceId = isOfFluid ? 4000 : id;
        compare(
            [&] {
                double value = kUntouched;
                const int answer = vcIEntityGetProperty(subject.handle, id, &value);
                return std::vector<double>{static_cast<double>(answer), value};
            },
            [&] {
                const bool isThere = source.has(sourceId);
                return std::vector<double>{isThere ? 1.0 : 0.0,
                                           isThere ? source.number(sourceId) : kUntouched};
            },
            "a property that is read");
        readPosition(subject, m_input.whole());
        require(vcIEntityHasProperty(subject.handle, id) == (subject.model->has(id) ? 1 : 0),
                "has a property");
        checkEntity(subject.handle, *subject.model);
    }

    static void readPosition(const Subject& subject, int position)
    {
        const auto& stored = subject.model->properties;
        if (position >= 0 && position < static_cast<int>(stored.size())) return;  // checkEntity reads those
        vcIPropertySet* const set = vcIEntityGetProperties(subject.handle);
        require(vcIPropertySetGetProp(set, position) == -1 && vcIPropertySetGetValue(set, position) == 0.0 &&
                    stringOf(vcIPropertySetGetName(set, position)).empty() &&
                    vcIPropertySetGetStringValue(set, position) == nullptr,
                "nothing is stored out of range");
    }

    void setMeta()
    {
        const Subject subject = chooseSubject();
        const std::string meta = m_input.text("ab\n\"", 2);
        const char* const text = m_input.rarely(8) ? nullptr : meta.c_str();
        const std::string stored = text == nullptr ? std::string() : meta;
        vcIEntitySetMeta(subject.handle, text);
        // a circuit and a fluid drop the results even when the text is the same
        const auto kind = subject.model->kind;
        const bool always = kind == fuzz::reference::Kind::kCircuit || kind == fuzz::reference::Kind::kFluid;
        if (always || stored != subject.model->meta) subject.circuit->hasResults = false;
        subject.model->meta = stored;
        checkEntity(subject.handle, *subject.model);
    }

    // Circuits

    void changeCircuit(Circuit& circuit)
    {
        switch (m_input.byte() % 6) {
        case 0:
            return setGravity(circuit);
        case 1:
            circuit.checksIds = m_input.rarely(2);
            return vcICircuitSetCheckNodeIdTaken(circuit.handle, circuit.checksIds ? -1 : 0);
        case 2:
            circuit.checksDuplicates = m_input.rarely(2);
            return vcICircuitSetCheckDuplicateElementAtNodes(circuit.handle,
                                                             circuit.checksDuplicates ? 2 : 0);
        case 3:
            return vcICircuitSetSolveLogFile(circuit.handle,
                                             m_input.flag() ? nullptr : "no such folder/solve.log");
        case 4: {
            circuit.fluidName = m_input.text("oil", 3);
            vcIFluidSetUIName(vcICircuitGetFluid(circuit.handle), circuit.fluidName.c_str());
            circuit.hasResults = false;
            return;
        }
        default:
            return readGravity(circuit);
        }
    }

    void setGravity(Circuit& circuit)
    {
        const std::array<double, 3> gravity{m_input.number(), m_input.number(), m_input.number()};
        vcICircuitSetGravity(circuit.handle, gravity[0], gravity[1], gravity[2]);
        for (const int axis : {0, 1, 2})
            setNumber(circuit, circuit, 3000 + axis, gravity[static_cast<std::size_t>(axis)]);
        checkEntity(vcICircuitGetEntity(circuit.handle), circuit);
    }

    static void readGravity(const Circuit& circuit)
    {
        compare(
            [&] {
                double x = 0.0, y = 0.0, z = 0.0;
                vcICircuitGetGravity(circuit.handle, &x, &y, &z);
                return std::vector<double>{x, y, z};
            },
            [&] {
                return std::vector<double>{circuit.number(3000), circuit.number(3001), circuit.number(3002)};
            },
            "gravity");
    }

    void lookUp(Circuit& circuit)
    {
        const auto handleAt = [](const Circuit& holder, int position) {
            return position < 0 ? nullptr : holder.nodes[static_cast<std::size_t>(position)].handle;
        };
        const int id = m_input.whole();
        compare([&] { return vcICircuitGetNodeById(circuit.handle, id); },
                [&] { return handleAt(circuit, circuit.findNode(id)); }, "node by id");
        const ElementChoice element = chooseElement(circuit);
        const int which = m_input.whole();
        compare([&] { return vcICircuitGetElementNode(circuit.handle, element.handle, which); },
                [&]() -> vcINode* {
                    if (element.model == nullptr) return nullptr;
                    return handleAt(circuit, circuit.findNode(which == 0 ? element.model->start()
                                                                         : element.model->end()));
                },
                "node of an element");
        vcICircuit* const elementHolder = isOfThisSystem(element.circuit) ? element.circuit->handle : nullptr;
        require(vcITavellFindParentCircuitFromElement(system().handle, element.handle) == elementHolder,
                "circuit of an element");
        const NodeChoice node = chooseNode(circuit);
        require(vcITavellFindParentCircuitFromNode(system().handle, node.handle) ==
                    (node.circuit == nullptr ? nullptr : node.circuit->handle),
                "circuit of a node");
        findDisconnected(circuit);
    }

    void findDisconnected(const Circuit& circuit)
    {
        const auto capacity = m_input.below(kMostElements + 1);
        std::vector<vcIElement*> found(capacity + 1, nullptr);
        std::vector<vcIElement*> expected(found);
        int count = -1;
        int expectedCount = -1;
        compare(
            [&] {
                return vcICircuitGetDisconnectedElements(circuit.handle, found.data(),
                                                         static_cast<int>(capacity), &count);
            },
            [&] {
                const auto reach = fuzz::reference::reachOf(circuit);
                expectedCount = static_cast<int>(reach.outOfReach.size());
                if (capacity < reach.outOfReach.size()) return 0;
                for (std::size_t i = 0; i < reach.outOfReach.size(); ++i)
                    expected[i] = circuit.elements[reach.outOfReach[i]].handle;
                return 1;
            },
            "elements out of reach");
        require(count == expectedCount && found == expected, "which elements are out of reach");
    }

    void askValidity(Circuit& circuit)
    {
        compare([&] { return vcICircuitIsValid(circuit.handle); },
                [&] { return fuzz::reference::validityOf(circuit, m_isDetailed); }, "validity");
        compare([&] { return vcICircuitIsSuitableForAnalysis(circuit.handle); },
                [&] { return fuzz::reference::isSuitable(circuit, m_isDetailed) ? 1 : 0; }, "suitable");
        if (m_input.flag()) return;
        compare([&] { return vcICircuitValidate(circuit.handle); },
                [&] { return fuzz::reference::validate(circuit, m_isDetailed) ? 1 : 0; }, "validate");
        checkCircuit(circuit);
    }

    /// Four nodes in a row, a pressure at both ends: what a solve has an answer to.
    void addLine(Circuit& circuit)
    {
        if (circuit.nodes.size() + 4 > kMostNodes || circuit.elements.size() + 3 > kMostElements) return;
        const double y = static_cast<double>(m_input.byte() % 4);
        std::size_t made = 0;
        for (; made < 4; ++made) {
            vcINode* handle = nullptr;
            const Failure failure =
                compare([&] { return (handle = vcICircuitCreateNode(circuit.handle)) != nullptr; },
                        [&] { return circuit.createNode().handle == nullptr; }, "a node of a line");
            if (failure != Failure::kNone) return;
            Node& node = circuit.nodes.back();
            node.handle = handle;
            vcINodeSetLocation(handle, 10.0 * static_cast<double>(made), y, 0.0);
            node.setNumber(2001, 10.0 * static_cast<double>(made));
            node.setNumber(2002, y);
            if (made % 3 != 0) continue;
            vcINodeSetType(handle, made == 0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
            node.setNumber(2004, made == 0 ? TAVELL_NODE_INLET : TAVELL_NODE_OUTLET);
            setConstraint(node, circuit, TAVELL_CONSTRAINT_PRESSURE, made == 0 ? 3e5 : 2e5);
        }
        for (std::size_t i = circuit.nodes.size() - 3; i < circuit.nodes.size(); ++i)
            addPipeOfLine(circuit, circuit.nodes[i - 1], circuit.nodes[i]);
    }

    static void addPipeOfLine(Circuit& circuit, const Node& start, const Node& end)
    {
        constexpr double kDiameter = 0.1;
        constexpr double kArea = 0.00785;
        vcIElement* handle = nullptr;
        compare(
            [&] {
                handle = vcICircuitCreateElement(circuit.handle, start.handle, end.handle, kDiameter, kArea,
                                                 0.0, TAVELL_ENERGY_FLUX, 0.0);
                return handle != nullptr;
            },
            [&] {
                if (!circuit.mayJoin(&start, &circuit, &end, &circuit)) return false;
                circuit.createPipe(start.id(), end.id(), kDiameter, kArea, std::acos(-1.0) * kDiameter, 0.0,
                                   TAVELL_ENERGY_FLUX, 0.0);
                return true;
            },
            "a pipe of a line");
        if (handle != nullptr) circuit.elements.back().handle = handle;
    }

    // Solving and results

    using Cancel = bool (*)();

    Cancel chooseCancel()
    {
        stepsLeft = m_input.rarely(4) ? static_cast<int>(m_input.below(8)) + 1 : kMostSteps;
        wasAsked = false;
        return m_input.rarely(64) ? nullptr : countStep;
    }

    void solve(Circuit& circuit)
    {
        const bool hasEnergy = m_input.rarely(4);
        const Cancel cancel = chooseCancel();
        Failure failure = Failure::kNone;
        bool isRefused = false;
        const bool isSolved = answerOf(
            [&] {
                isRefused = m_isDetailed && !fuzz::reference::isSuitable(circuit, true);
                return vcICircuitSolve(circuit.handle, hasEnergy ? 1 : 0, cancel) == 1;
            },
            failure);
        if (failure != Failure::kNone) {
            require(circuit.isUnreadable(), "a solve throws for texts that are no numbers only");
            return checkCircuit(circuit);
        }
        if (isRefused) {
            require(!isSolved, "a circuit that is not suitable is refused");
            return checkCircuit(circuit);
        }
        takeOutcome(circuit, isSolved);
        if (wasAsked) checkStopped(circuit, isSolved);
    }

    static void checkStopped(const Circuit& circuit, bool isSolved)
    {
        const auto isStop = [](const auto& message) { return message.id == TAVELL_FEEDBACK_CANCELLED; };
        require(!isSolved, "a solve that was stopped has no results");
        require(std::any_of(circuit.feedback.begin(), circuit.feedback.end(), isStop),
                "a stopped solve says so");
    }

    /// Takes over what a solve left, which the model cannot tell beforehand.
    static void takeOutcome(Circuit& circuit, bool isSolved)
    {
        circuit.hasResults = isSolved;
        circuit.feedback = feedbackOf(circuit);
        require(isSolved || circuit.nodes.empty() || !circuit.feedback.empty(), "a failed solve says why");
        checkResults(circuit);
    }

    void solveCircuits()
    {
        std::vector<Circuit>& circuits = system().circuits;
        if (std::any_of(circuits.begin(), circuits.end(), [](const Circuit& c) { return c.isUnreadable(); }))
            return;
        const bool validatesFirst = m_input.flag();
        const bool hasEnergy = m_input.rarely(4);
        vcITavellSolve(system().handle, hasEnergy ? 1 : 0, validatesFirst ? 1 : 0, chooseCancel());
        for (Circuit& circuit : circuits) {
            const bool isSkipped = validatesFirst && !fuzz::reference::validate(circuit, m_isDetailed);
            const bool isRefused = m_isDetailed && !fuzz::reference::isSuitable(circuit, true);
            if (!isSkipped && !isRefused)
                takeOutcome(circuit,
                            vcICircuitGetResults(circuit.handle, TAVELL_RESULT_MASS_FLOW) != nullptr);
            checkCircuit(circuit);
        }
    }

    static std::vector<fuzz::reference::Message> feedbackOf(const Circuit& circuit)
    {
        vcIFeedbackCollection* const collection = vcICircuitGetFeedback(circuit.handle);
        std::vector<fuzz::reference::Message> messages;
        const int count = static_cast<int>(vcIFeedbackCollectionGetSize(collection));
        for (const int position : {-1, count})
            require(vcIFeedbackCollectionGetFeedback(collection, position) == nullptr,
                    "no message out of range");
        for (int i = 0; i < count; ++i) {
            vcIFeedback* const message = vcIFeedbackCollectionGetFeedback(collection, i);
            const std::size_t values = vcIFeedbackGetValueSize(message);
            const double* const first = vcIFeedbackGetValues(message);
            require((first == nullptr) == (values == 0), "values of a message are null when there are none");
            messages.push_back({vcIFeedbackGetId(message), std::vector<double>(first, first + values)});
            require(messages.back().id >= 0 && messages.back().id <= TAVELL_FEEDBACK_CANCELLED,
                    "known messages");
        }
        return messages;
    }

    static void checkFeedback(const Circuit& circuit)
    {
        const auto found = feedbackOf(circuit);
        require(std::equal(
                    found.begin(), found.end(), circuit.feedback.begin(), circuit.feedback.end(),
                    [](const auto& a, const auto& b) { return a.id == b.id && isEqual(a.values, b.values); }),
                "messages stay until the next solve");
    }

    /// One set for each key, over all nodes or all elements, of finite numbers.
    static void checkResults(const Circuit& circuit)
    {
        for (const int key : {-1, 9})
            require(vcICircuitGetResults(circuit.handle, key) == nullptr, "an unknown key has no results");
        for (int key = 0; key < 9; ++key) {
            vcIResultsSet* const set = vcICircuitGetResults(circuit.handle, key);
            require((set != nullptr) == circuit.hasResults, "there are all results or none");
            if (set == nullptr) continue;
            const bool isNodal = key >= TAVELL_RESULT_NODE_TEMPERATURE;
            const std::size_t size = isNodal ? circuit.nodes.size() : circuit.elements.size();
            require(vcIResultsSetIsNodal(set) == (isNodal ? 1 : 0), "results are of nodes or of elements");
            require(vcIResultsSetGetSize(set) == size, "one value each");
            const double* const values = vcIResultsSetGetValues(set);
            require((values == nullptr) == (size == 0), "values are null when there are none");
            for (std::size_t i = 0; i < size; ++i) {
                if (!std::isfinite(values[i])) print(circuit);
                require(std::isfinite(values[i]), "results are finite");
            }
        }
    }

    void readDisplayValues(const Circuit& circuit)
    {
        const int key = static_cast<int>(m_input.below(9));
        const double scale = m_input.number();
        const double offset = m_input.number();
        vcIResultsSet* const set = vcICircuitGetResults(circuit.handle, key);
        if (set == nullptr) return;
        const double* const values = vcIResultsSetGetValues(set);
        const double* const shown = vcIResultsSetGetL10NValues(set, scale, offset);
        for (std::size_t i = 0; i < vcIResultsSetGetSize(set); ++i)
            require(isSameNumber(shown[i], values[i] * scale + offset), "display values");
        const bool isNodal = vcIResultsSetIsNodal(set) == 1;
        const int* const ids = vcIResultsSetGetIds(set);
        for (std::size_t i = 0; i < vcIResultsSetGetSize(set); ++i)
            require(ids != nullptr, isNodal ? "ids of nodes" : "ids of elements");
    }

    void setExporterOption(Circuit& circuit)
    {
        vcIResultsExporterOptions* const options = vcICircuitGetResultsExporterOptions(circuit.handle);
        fuzz::reference::ExporterOptions& model = circuit.options;
        const std::string text = m_input.text("m\",", 3);
        const int key = m_input.rarely(4) ? m_input.whole() : static_cast<int>(m_input.below(9));
        switch (m_input.byte() % 6) {
        case 0:
            vcIResultsExporterOptionsSetFormat(options, model.format = m_input.whole());
            break;
        case 1:
            vcIResultsExporterOptionsSetPrecision(options, model.precision = m_input.whole());
            break;
        case 2:
            vcIResultsExporterOptionsSetNodeLabel(options, (model.nodeLabel = text).c_str());
            break;
        case 3:
            vcIResultsExporterOptionsSetElementLabel(options, nullptr);
            model.elementLabel.clear();
            break;
        case 4:
            vcIResultsExporterOptionsSetResultLabel(options, key, (model.resultLabels[key] = text).c_str());
            break;
        default: {
            const double scale = m_input.number();
            const double offset = m_input.number();
            vcIResultsExporterOptionsSetL10n(options, key, scale, offset);
            model.units[key] = {scale, offset};
        }
        }
        checkExporterOptions(circuit, key);
    }

    static void checkExporterOptions(const Circuit& circuit, int key)
    {
        vcIResultsExporterOptions* const options = vcICircuitGetResultsExporterOptions(circuit.handle);
        const fuzz::reference::ExporterOptions& model = circuit.options;
        require(vcIResultsExporterOptionsGetFormat(options) == model.format, "format");
        require(vcIResultsExporterOptionsGetPrecision(options) == model.precision, "precision");
        require(vcIResultsExporterOptionsGetNodeLabel(options) == model.nodeLabel, "node label");
        require(vcIResultsExporterOptionsGetElementLabel(options) == model.elementLabel, "element label");
        require(vcIResultsExporterOptionsGetResultLabel(options, key) == model.resultLabel(key),
                "result label");
        double scale = kUntouched;
        double offset = kUntouched;
        vcIResultsExporterOptionsGetL10n(options, key, &scale, &offset);
        const auto unit = model.units.find(key);
        const bool isSet = unit != model.units.end();
        require(isSameNumber(scale, isSet ? unit->second.first : kUntouched) &&
                    isSameNumber(offset, isSet ? unit->second.second : kUntouched),
                "display unit");
    }

    void exportResults(Circuit& circuit)
    {
        if (circuit.hasResults) circuit.exported = expectedExport(circuit);
        require(vcICircuitExportResults(circuit.handle) == circuit.exported, "the exported text");
    }

    struct Column {
        int key;
        double scale, offset;
    };

    /// A key without a unit has that of the key before it.
    static std::string expectedExport(const Circuit& circuit)
    {
        std::vector<Column> columns;
        double scale = 1.0;
        double offset = 0.0;
        for (const int key : {0, 1, 2, 3, 6, 7}) {
            const auto unit = circuit.options.units.find(key);
            if (unit != circuit.options.units.end()) {
                scale = unit->second.first;
                offset = unit->second.second;
            }
            columns.push_back({key, scale, offset});
        }
        const std::vector<Column> ofElements(columns.begin(), columns.begin() + 4);
        return expectedTable(circuit, circuit.options.elementLabel, ofElements) +
               expectedTable(circuit, circuit.options.nodeLabel, {columns[5], columns[4]});
    }

    static std::string expectedTable(const Circuit& circuit, const std::string& idLabel,
                                     const std::vector<Column>& columns)
    {
        std::string text = '"' + idLabel;
        for (const Column& column : columns)
            text += "\",\"" + circuit.options.resultLabel(column.key);
        text += "\"\n";
        vcIResultsSet* const first = vcICircuitGetResults(circuit.handle, columns[0].key);
        const int wanted = circuit.options.precision;
        const int digits = wanted < 0 ? 6 : std::min(wanted, 767);  // more do not exist
        for (std::size_t row = 0; row < vcIResultsSetGetSize(first); ++row) {
            text += std::to_string(vcIResultsSetGetIds(first)[row]);
            for (const Column& column : columns) {
                const double value =
                    vcIResultsSetGetValues(vcICircuitGetResults(circuit.handle, column.key))[row];
                text += ',' + fuzz::reference::numberText(value * column.scale + column.offset, digits);
            }
            text += '\n';
        }
        return text;
    }

    // Comparison of the state

    static void checkEntity(vcIEntity* entity, const Entity& model)
    {
        vcIPropertySet* const set = vcIEntityGetProperties(entity);
        require(vcIPropertySetGetSize(set) == static_cast<int>(model.properties.size()),
                "number of properties");
        int position = 0;
        for (const auto& stored : model.properties) {
            const int id = stored.first;
            const fuzz::reference::Text& text = stored.second;
            require(vcIPropertySetGetProp(set, position) == id, "properties are in order of id");
            require(vcIPropertySetGetIndex(set, id) == position, "position of a property");
            compare([&] { return vcIPropertySetGetValue(set, position); },
                    [&] {
                        fuzz::reference::throwAs(text.failure);
                        return text.value;
                    },
                    "value of a property");
            ++position;
        }
        require(vcIEntityGetMeta(entity) == model.meta, "meta string");
    }

    static void checkTexts(vcIEntity* entity, const Entity& model)
    {
        vcIPropertySet* const set = vcIEntityGetProperties(entity);
        int position = 0;
        for (const auto& [id, text] : model.properties) {
            require(vcIPropertySetGetStringValue(set, position) == text.text, "text of a property");
            require(vcIPropertySetGetName(set, position) == fuzz::reference::nameOf(id),
                    "name of a property");
            ++position;
        }
        require(vcIPropertySetGetMeta(set) == model.meta, "meta string of the set");
    }

    static void checkOutline(const Circuit& circuit)
    {
        require(vcICircuitGetNoNodes(circuit.handle) == circuit.nodes.size(), "number of nodes");
        require(vcICircuitGetNoElements(circuit.handle) == circuit.elements.size(), "number of elements");
        for (std::size_t i = 0; i <= circuit.nodes.size(); ++i)
            require(vcICircuitGetNode(circuit.handle, static_cast<int>(i)) ==
                        (i < circuit.nodes.size() ? circuit.nodes[i].handle : nullptr),
                    "nodes are in order of creation");
        for (std::size_t i = 0; i <= circuit.elements.size(); ++i)
            require(vcICircuitGetElement(circuit.handle, static_cast<int>(i)) ==
                        (i < circuit.elements.size() ? circuit.elements[i].handle : nullptr),
                    "elements are in order of creation");
        require((vcICircuitGetResults(circuit.handle, 0) != nullptr) == circuit.hasResults,
                "a change drops the results and nothing else does");
        require((vcICircuitGetCheckNodeIdTaken(circuit.handle) == 1) == circuit.checksIds,
                "check of node ids");
        require((vcICircuitGetCheckDuplicateElementAtNodes(circuit.handle) == 1) == circuit.checksDuplicates,
                "check of duplicates");
    }

    void checkOutline()
    {
        for (const System& owner : m_systems) {
            require(vcITavellGetNoCircuits(owner.handle) == owner.circuits.size(), "number of circuits");
            const int count = static_cast<int>(owner.circuits.size());
            for (const int position : {-1, count})
                require(vcITavellGetCircuit(owner.handle, position) == nullptr, "no circuit out of range");
            for (int i = 0; i < count; ++i) {
                const Circuit& circuit = owner.circuits[static_cast<std::size_t>(i)];
                require(vcITavellGetCircuit(owner.handle, i) == circuit.handle,
                        "circuits are in order of creation");
                checkOutline(circuit);
            }
        }
    }

    static void checkCircuit(const Circuit& circuit)
    {
        checkOutline(circuit);
        checkEntity(vcICircuitGetEntity(circuit.handle), circuit);
        vcIFluid* const fluid = vcICircuitGetFluid(circuit.handle);
        checkEntity(vcIFluidGetEntity(fluid), circuit.fluid);
        require(vcIFluidGetUIName(fluid) == circuit.fluidName, "name of the fluid");
        for (const Node& node : circuit.nodes)
            checkEntity(vcINodeGetEntity(node.handle), node);
        for (const Element& element : circuit.elements)
            checkEntity(vcIElementGetEntity(element.handle), element);
        checkFeedback(circuit);
        checkResults(circuit);
    }

    /// Reading a text makes it, so some inputs go without.
    void checkEverything()
    {
        const bool readsTexts = m_input.flag();
        for (const System& owner : m_systems)
            for (const Circuit& circuit : owner.circuits) {
                checkCircuit(circuit);
                if (!readsTexts) continue;
                checkTexts(vcICircuitGetEntity(circuit.handle), circuit);
                checkTexts(vcIFluidGetEntity(vcICircuitGetFluid(circuit.handle)), circuit.fluid);
                for (const Node& node : circuit.nodes)
                    checkTexts(vcINodeGetEntity(node.handle), node);
                for (const Element& element : circuit.elements)
                    checkTexts(vcIElementGetEntity(element.handle), element);
            }
    }

    Input& m_input;
    std::vector<System> m_systems;
    std::size_t m_system = 0;
    bool m_isDetailed = false;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    for (const char* name : {"TAVELL_DEBUG_FILE", "TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY", kDetailCheck})
        ::unsetenv(name);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Session(input).run();
    return 0;
}
