// Circuit.cpp: a circuit as a container: building, look-ups, identifiers, invalidation.
#include "Circuit.h"

#include <array>
#include <cmath>
#include <ctime>
#include <utility>

#include "property_ids.h"

namespace Velcor::Tavell
{

namespace
{

/// Ends of an element must be at least this far apart [m], as the sum of the distances along the axes.
// kept: a literal of single precision, 9.9999998245167e-14; it decides which nodes coincide.
constexpr double kLeastDistance = static_cast<double>(1e-13F);

double distanceAlongAxes(const Location& a, const Location& b)
{
    return std::fabs(a.x - b.x) + std::fabs(a.y - b.y) + std::fabs(a.z - b.z);
}

/// The candidate, or the next number above it that is not taken.
std::uint32_t skipTaken(std::uint32_t candidate, const std::unordered_set<int>& taken)
{
    while (taken.count(static_cast<int>(candidate)) > 0)
        ++candidate;
    return candidate;
}

}  // namespace

Circuit::Circuit(ObjectRegistry& registry) : m_registry(registry)
{
    properties().useRoom(m_room);
    properties().setNumber(TAVELL_CIRCUIT_GRAVITY_X, 0.0);
    properties().setNumber(TAVELL_CIRCUIT_GRAVITY_Y, 0.0);
    properties().setNumber(TAVELL_CIRCUIT_GRAVITY_Z, -1.0);
    properties().setNumber(TAVELL_CIRCUIT_MINOR_LOSS, 1.0);
    properties().setNumber(TAVELL_CIRCUIT_FRICTION_FACTOR, TAVELL_FRICTION_SWAMEE_JAIN);
    properties().setNumber(TAVELL_CIRCUIT_CALCULATE_VISCOSITY, 0.0);
    m_fluid.Attach(this);
}

Circuit::~Circuit() = default;

IFluid* Circuit::GetFluid()
{
    return &m_fluid;
}

const IFluid* Circuit::GetConstFluid() const
{
    return &m_fluid;
}

void Circuit::GetGravity(double* x, double* y, double* z)
{
    const double gravity[] = {number(TAVELL_CIRCUIT_GRAVITY_X), number(TAVELL_CIRCUIT_GRAVITY_Y),
                              number(TAVELL_CIRCUIT_GRAVITY_Z)};
    *x = gravity[0];
    *y = gravity[1];
    *z = gravity[2];
}

void Circuit::SetGravity(double x, double y, double z)
{
    properties().reserve({TAVELL_CIRCUIT_GRAVITY_X, TAVELL_CIRCUIT_GRAVITY_Y, TAVELL_CIRCUIT_GRAVITY_Z});
    const bool xChanged = properties().setNumber(TAVELL_CIRCUIT_GRAVITY_X, x);
    const bool yChanged = properties().setNumber(TAVELL_CIRCUIT_GRAVITY_Y, y);
    const bool zChanged = properties().setNumber(TAVELL_CIRCUIT_GRAVITY_Z, z);
    if (xChanged || yChanged || zChanged) clearResults();
}

INode* Circuit::CreateNode()
{
    std::uint32_t id = m_nextNodeId;
    while (m_checkNodeIdTaken && m_index.firstNode(static_cast<int>(id)) != nullptr)
        ++id;
    Node& node = add(std::unique_ptr<Node>(new (m_registry.nodes) Node(*this, id)));
    m_nextNodeId = id + 1;
    return &node;
}

bool Circuit::ReleaseNode(INode* node)
{
    if (m_registry.circuitOf(node) != this) return false;
    remove(*static_cast<Node*>(node));
    return true;
}

IElement* Circuit::CreateEmptyElement()
{
    return &add(makeElement(TAVELL_PIPE, std::nullopt, {TAVELL_ENERGY_FLUX, 0.0}));
}

IElement* Circuit::CreateElement(INode* start, INode* end, double diameter, double area, double k,
                                 int energyType, double energyValue)
{
    // kept: a size that is no number passes; a solve then answers for it.
    if (diameter <= 0.0 || area <= 0.0) return nullptr;
    const std::optional<Ends> ends = connection(start, end);
    if (!ends) return nullptr;
    const double circumference = std::acos(-1.0) * diameter;
    return addPipe(*ends, {diameter, area, circumference}, k, {energyType, energyValue});
}

IElement* Circuit::CreateNonRoundElement(INode* start, INode* end, double wettedPerimeter, double area,
                                         double k, int energyType, double energyValue)
{
    if (wettedPerimeter <= 0.0 || area <= 0.0) return nullptr;
    const std::optional<Ends> ends = connection(start, end);
    if (!ends) return nullptr;
    const double hydraulicDiameter = 4.0 * area / wettedPerimeter;
    return addPipe(*ends, {hydraulicDiameter, area, wettedPerimeter}, k, {energyType, energyValue});
}

IElement* Circuit::CreatePump(INode* start, INode* end, const double* flowRates, const double* pressures,
                              int count, double referenceDensity, int energyType, double energyValue)
{
    return addCurveElement(TAVELL_PUMP, start, end, flowRates, pressures, count, referenceDensity,
                           {energyType, energyValue});
}

IElement* Circuit::CreateLoss(INode* start, INode* end, const double* flowRates, const double* pressures,
                              int count, double referenceDensity, int energyType, double energyValue)
{
    return addCurveElement(TAVELL_LOSS, start, end, flowRates, pressures, count, referenceDensity,
                           {energyType, energyValue});
}

bool Circuit::ReleaseElement(IElement* element)
{
    if (m_registry.circuitOf(element) != this) return false;
    remove(*static_cast<Element*>(element));
    return true;
}

IResultsExporterOptions* Circuit::GetResultsExporterOptions()
{
    return &m_exporterOptions;
}

IFeedbackCollection* Circuit::GetFeedback()
{
    return &m_feedback;
}

std::size_t Circuit::GetNoElements()
{
    return m_elements.size();
}

IElement* Circuit::GetElement(std::size_t index)
{
    return m_elements.at(index);
}

std::size_t Circuit::GetNoNodes()
{
    return m_nodes.size();
}

INode* Circuit::GetNode(std::size_t index)
{
    return m_nodes.at(index);
}

INode* Circuit::GetElementNode(IElement* element, std::size_t which)
{
    if (element == nullptr) return nullptr;
    return findNode(which == 0 ? element->GetStartNodeId() : element->GetEndNodeId());
}

INode* Circuit::GetNodeById(int id)
{
    return findNode(id);
}

IEntity* Circuit::GetEntity()
{
    return this;
}

const IEntity* Circuit::GetEntityConst() const
{
    return this;
}

// kept: the path has no effect. Hosts pass one, and no solve writes a log.
void Circuit::SetSolveLogFile(const char* /*path*/) {}

bool Circuit::GetCheckNodeIdTaken()
{
    return m_checkNodeIdTaken;
}

void Circuit::SetCheckNodeIdTaken(bool check)
{
    m_checkNodeIdTaken = check;
}

bool Circuit::GetCheckDuplicateElementAtNodes()
{
    return m_checkDuplicateElementAtNodes;
}

void Circuit::SetCheckDuplicateElementAtNodes(bool check)
{
    m_checkDuplicateElementAtNodes = check;
}

std::string Circuit::TimeStamp()
{
    const std::time_t now = std::time(nullptr);
    const std::tm* local = std::localtime(&now);
    if (local == nullptr) return {};
    std::array<char, 80> buffer{};
    const std::size_t length = std::strftime(buffer.data(), buffer.size(), "%Y-%m-%d.%X", local);
    return std::string(buffer.data(), length);
}

void Circuit::SetMeta(const char* meta)
{
    Entity::SetMeta(meta);
    clearResults();
}

bool Circuit::SetProperty(int id, double value)
{
    if (!isCircuitProperty(id)) return false;
    if (properties().setNumber(id, value)) clearResults();
    return true;
}

void Circuit::clearResults()
{
    ++m_revision;
    m_hasResults = false;
    m_results.clear();
}

int Circuit::takeNodeId(const std::unordered_set<int>& taken)
{
    const std::uint32_t id = skipTaken(m_nextNodeId, taken);
    m_nextNodeId = id + 1;
    return static_cast<int>(id);
}

int Circuit::takeElementId(const std::unordered_set<int>& taken)
{
    const std::uint32_t id = skipTaken(m_nextElementId, taken);
    m_nextElementId = id + 1;
    return static_cast<int>(id);
}

Circuit::Checkpoint Circuit::checkpoint()
{
    Checkpoint now{m_nodes.size(), m_elements.size(), m_nextNodeId, m_nextElementId, m_hasResults, {}};
    now.results.swap(m_results);
    return now;
}

bool Circuit::hasGrownSince(const Checkpoint& before) const
{
    return m_nodes.size() > before.nodes || m_elements.size() > before.elements;
}

void Circuit::rollBack(Checkpoint&& before)
{
    while (m_nodes.size() > before.nodes)
        remove(*m_nodes.last());
    while (m_elements.size() > before.elements)
        remove(*m_elements.last());
    m_nextNodeId = before.nextNodeId;
    m_nextElementId = before.nextElementId;
    m_hasResults = before.hasResults;
    m_results = std::move(before.results);
}

void Circuit::Update(Patterns::Observer::Subject* /*subject*/, int /*what*/)
{
    clearResults();
}

/// The ids of the nodes that a new element would join; none when the circuit refuses the connection. Pointers
/// that are no nodes of this system are refused before they are followed.
std::optional<Circuit::Ends> Circuit::connection(INode* start, INode* end) const
{
    const Circuit* startCircuit = m_registry.circuitOf(start);
    const Circuit* endCircuit = m_registry.circuitOf(end);
    if (startCircuit == nullptr || endCircuit == nullptr) return std::nullopt;

    const Node& startNode = *static_cast<Node*>(start);
    const Node& endNode = *static_cast<Node*>(end);
    const Ends ends{startNode.id(), endNode.id()};
    if (ends.start == ends.end) return std::nullopt;
    if (startCircuit != this || endCircuit != this) return std::nullopt;
    if (distanceAlongAxes(startNode.location(), endNode.location()) < kLeastDistance) return std::nullopt;
    // kept: an element in the opposite direction is no duplicate: two pipes side by side may be drawn either
    // way.
    if (m_checkDuplicateElementAtNodes && m_index.firstElement(ends.start, ends.end) != nullptr)
        return std::nullopt;
    return ends;
}

/// A new element that has only its id: the next one of the counter, which it takes when it is added.
std::unique_ptr<Element> Circuit::newElement()
{
    return std::unique_ptr<Element>(new (m_registry.elements) Element(*this, m_nextElementId));
}

/// A new element; without ends it has no start and end id.
std::unique_ptr<Element> Circuit::makeElement(int type, std::optional<Ends> ends, Energy energy)
{
    auto element = newElement();
    Properties& values = element->properties();
    if (ends) {
        values.setNumber(TAVELL_ELEMENT_START, ends->start);
        values.setNumber(TAVELL_ELEMENT_END, ends->end);
    }
    values.setNumber(TAVELL_ELEMENT_MODE, type);
    values.setNumber(TAVELL_ELEMENT_ENERGY_TYPE, energy.type);
    values.setNumber(TAVELL_ELEMENT_ENERGY_VALUE, energy.value);
    return element;
}

IElement* Circuit::addPipe(const Ends& ends, const Section& section, double k, Energy energy)
{
    auto element = newElement();
    Properties& values = element->properties();
    // In ascending order of id, so that no value has to move for another.
    values.setNumber(TAVELL_ELEMENT_START, ends.start);
    values.setNumber(TAVELL_ELEMENT_END, ends.end);
    values.setNumber(TAVELL_ELEMENT_DIAMETER, section.diameter);
    values.setNumber(TAVELL_ELEMENT_AREA, section.area);
    values.setNumber(TAVELL_ELEMENT_ROUGHNESS, 0.0);
    values.setNumber(TAVELL_ELEMENT_MODE, TAVELL_PIPE);
    values.setNumber(TAVELL_ELEMENT_K_SPECIFIED, k);
    values.setNumber(TAVELL_ELEMENT_ENERGY_TYPE, energy.type);
    values.setNumber(TAVELL_ELEMENT_ENERGY_VALUE, energy.value);
    values.setNumber(TAVELL_ELEMENT_WETTEDPERIMETER, section.wettedPerimeter);
    return &add(std::move(element));
}

IElement* Circuit::addCurveElement(int type, INode* start, INode* end, const double* flowRates,
                                   const double* pressures, int count, double referenceDensity, Energy energy)
{
    const std::optional<Ends> ends = connection(start, end);
    if (!ends || flowRates == nullptr || pressures == nullptr || count < kFewestCurvePoints) return nullptr;
    auto element = makeElement(type, *ends, energy);
    element->properties().setNumber(TAVELL_ELEMENT_REFERENCE_DENSITY, referenceDensity);
    element->storeCurve(flowRates, pressures, count);
    return &add(std::move(element));
}

Node& Circuit::add(std::unique_ptr<Node> node)
{
    node->Attach(this);
    Node& added = m_nodes.append(std::move(node));
    try {
        m_index.add(added);
    } catch (...) {
        m_nodes.release(added);
        throw;
    }
    added.properties().setListener(&added);
    clearResults();
    return added;
}

Element& Circuit::add(std::unique_ptr<Element> element)
{
    element->Attach(this);
    Element& added = m_elements.append(std::move(element));
    try {
        m_index.add(added);
    } catch (...) {
        m_elements.release(added);
        throw;
    }
    added.properties().setListener(&added);
    ++m_nextElementId;
    clearResults();
    return added;
}

void Circuit::remove(Node& node)
{
    node.Detach(this);
    m_index.remove(node);
    m_nodes.release(node);
    clearResults();
}

void Circuit::remove(Element& element)
{
    element.Detach(this);
    m_index.remove(element);
    m_elements.release(element);
    clearResults();
}

}  // namespace Velcor::Tavell
