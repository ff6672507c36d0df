// Circuit.h: the container of one flow network and the state of its analysis.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "CircuitIndex.h"
#include "Element.h"
#include "Entity.h"
#include "Fluid.h"
#include "Node.h"
#include "ObjectRegistry.h"
#include "Observer.h"
#include "OrderedObjects.h"
#include "analysis/FeedbackCollection.h"
#include "analysis/ResultsExporterOptions.h"
#include "analysis/ResultsSet.h"
#include "tavell/ICircuit.h"

namespace Velcor::Tavell
{

/// Made by its system object. Owns its nodes, elements, fluid and everything that a solve leaves behind.
/// Every change that passes through the model drops the results; the circuit observes its nodes, elements and
/// fluid to that end.
class Circuit final : public ICircuit, public Entity, private Patterns::Observer::Observer
{
public:
    /// An empty circuit. The registry learns about its nodes and elements and must outlive it.
    explicit Circuit(ObjectRegistry& registry);

    // ICircuit, in table order. IsValid, IsSuitableForAnalysis, Validate, Solve, GetResults, ExportResults
    // and GetDisconnectedElements are defined in src/analysis.
    IFluid* GetFluid() override;
    const IFluid* GetConstFluid() const override;
    void GetGravity(double* x, double* y, double* z) override;
    void SetGravity(double x, double y, double z) override;
    INode* CreateNode() override;
    bool ReleaseNode(INode* node) override;
    IElement* CreateEmptyElement() override;
    IElement* CreateElement(INode* start, INode* end, double diameter, double area, double k, int energyType,
                            double energyValue) override;
    IElement* CreateNonRoundElement(INode* start, INode* end, double wettedPerimeter, double area, double k,
                                    int energyType, double energyValue) override;
    IElement* CreatePump(INode* start, INode* end, const double* flowRates, const double* pressures,
                         int count, double referenceDensity, int energyType, double energyValue) override;
    IElement* CreateLoss(INode* start, INode* end, const double* flowRates, const double* pressures,
                         int count, double referenceDensity, int energyType, double energyValue) override;
    bool ReleaseElement(IElement* element) override;
    int IsValid() override;
    bool IsSuitableForAnalysis() override;
    bool Validate() override;
    bool Solve(bool energy, bool (*cancel)() = nullptr) override;
    IResultsSet* GetResults(int key) override;
    IResultsExporterOptions* GetResultsExporterOptions() override;
    const char* ExportResults() override;
    IFeedbackCollection* GetFeedback() override;
    std::size_t GetNoElements() override;
    IElement* GetElement(std::size_t index) override;
    std::size_t GetNoNodes() override;
    INode* GetNode(std::size_t index) override;
    INode* GetElementNode(IElement* element, std::size_t which) override;
    INode* GetNodeById(int id) override;
    IEntity* GetEntity() override;
    const IEntity* GetEntityConst() const override;
    void SetSolveLogFile(const char* path) override;
    bool GetDisconnectedElements(IElement** out, int capacity, int* count) override;
    bool GetCheckNodeIdTaken() override;
    void SetCheckNodeIdTaken(bool check) override;
    bool GetCheckDuplicateElementAtNodes() override;
    void SetCheckDuplicateElementAtNodes(bool check) override;

    /// Local time as "%Y-%m-%d.%X". Follows the ICircuit operations in the table.
    virtual std::string TimeStamp();

    // Declared here and not above, where it would take the place of TimeStamp in the table.
    ~Circuit() override;

    void SetMeta(const char* meta) override;
    bool SetProperty(int id, double value) override;

    // The model, in order of creation.
    OrderedObjects<Node>& nodes() { return m_nodes; }
    const OrderedObjects<Node>& nodes() const { return m_nodes; }
    OrderedObjects<Element>& elements() { return m_elements; }
    const OrderedObjects<Element>& elements() const { return m_elements; }
    Fluid& fluid() { return m_fluid; }
    const Fluid& fluid() const { return m_fluid; }

    /// The oldest node with this id; null when there is none. Throws as requireReadable when it meets an
    /// older node whose id is no number.
    Node* findNode(int id) const { return m_index.firstNode(id); }

    // What the last solve left. Results are present and up to date, or there are none.
    bool hasResults() const { return m_hasResults; }
    void setHasResults(bool hasResults) { m_hasResults = hasResults; }
    std::map<int, ResultsSet>& results() { return m_results; }
    FeedbackCollection& feedback() { return m_feedback; }
    /// Drops the results: for a change of the model, and before a solve.
    void clearResults();
    /// Grows with every drop of the results: tells a solve that the model changed under it.
    std::uint64_t revision() const { return m_revision; }

    /// The next id of the counter of nodes or elements that is not in `taken`; it will not be given out
    /// again.
    int takeNodeId(const std::unordered_set<int>& taken);
    int takeElementId(const std::unordered_set<int>& taken);

    /// What additions to the circuit change, to be taken back when a later step fails.
    struct Checkpoint {
        std::size_t nodes;
        std::size_t elements;
        std::uint32_t nextNodeId;
        std::uint32_t nextElementId;
        bool hasResults;
        std::map<int, ResultsSet> results;
    };
    /// Keeps the results for rollBack: the circuit has none meanwhile.
    Checkpoint checkpoint();
    /// Whether nodes or elements were added since.
    bool hasGrownSince(const Checkpoint& before) const;
    /// Destroys the nodes and elements added since and restores counters and results.
    void rollBack(Checkpoint&& before);

    /// The look-up by identifiers, and its state from before, when changes are taken back.
    const CircuitIndex& index() const { return m_index; }
    void restoreIndex(CircuitIndex&& index) { m_index = std::move(index); }

    /// Called by a node or an element whose identifiers changed.
    void refile(Node& node) { m_index.refile(node); }
    void refile(Element& element) { m_index.refile(element); }

    /// Rank in order of creation, given by OrderedObjects.
    std::uint64_t sequence() const { return m_sequence; }
    void setSequence(std::uint64_t sequence) { m_sequence = sequence; }

private:
    /// Ids of the nodes that a new element joins.
    struct Ends {
        int start;
        int end;
    };
    /// Cross-section of a new pipe.
    struct Section {
        double diameter;         // [m], inner or hydraulic
        double area;             // [m2]
        double wettedPerimeter;  // [m]
    };
    /// Energy input of a new element.
    struct Energy {
        int type;  // TavellEnergyType
        double value;
    };

    void Update(Patterns::Observer::Subject* subject, int what) override;

    std::optional<Ends> connection(INode* start, INode* end) const;
    std::unique_ptr<Element> newElement();
    std::unique_ptr<Element> makeElement(int type, std::optional<Ends> ends, Energy energy);
    IElement* addPipe(const Ends& ends, const Section& section, double k, Energy energy);
    IElement* addCurveElement(int type, INode* start, INode* end, const double* flowRates,
                              const double* pressures, int count, double referenceDensity, Energy energy);
    Node& add(std::unique_ptr<Node> node);
    Element& add(std::unique_ptr<Element> element);
    void remove(Node& node);
    void remove(Element& element);

    static constexpr std::size_t kInitialProperties = 6;

    std::array<double, kInitialProperties> m_room;  // of the properties
    ObjectRegistry& m_registry;
    std::uint64_t m_sequence = 0;

    Fluid m_fluid;
    std::uint32_t m_nextElementId = 1;
    OrderedObjects<Element> m_elements;
    bool m_checkDuplicateElementAtNodes = true;
    std::uint32_t m_nextNodeId = 1;
    OrderedObjects<Node> m_nodes;
    bool m_checkNodeIdTaken = true;
    CircuitIndex m_index;

    bool m_hasResults = false;  // set by a solve that converged
    std::uint64_t m_revision = 0;
    std::map<int, ResultsSet> m_results;
    FeedbackCollection m_feedback;
    ResultsExporterOptions m_exporterOptions;
    std::string m_exportText;  // of the last export
};

}  // namespace Velcor::Tavell
