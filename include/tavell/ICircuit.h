// ICircuit.h: one flow network, from its parts to its results.
#ifndef TAVELL_ICIRCUIT_H
#define TAVELL_ICIRCUIT_H

#include <cstddef>

namespace Velcor::Tavell
{

class IElement;
class IEntity;
class IFeedbackCollection;
class IFluid;
class INode;
class IResultsExporterOptions;
class IResultsSet;

/// Nodes joined by elements, one fluid, a gravity vector, and the outcome of the last solve.
/// The circuit owns everything it hands out; pointers stay valid until the object is released, for results,
/// feedback items and export text until the next change, solve or export. SI units throughout.
/// Numbers stored as text that is no number make any operation that reads them throw std::invalid_argument
/// ("invalid stod argument") or std::out_of_range ("stod argument out of range"); the circuit stays as it
/// was.
class ICircuit
{
public:
    /// The circuit's fluid; a new circuit carries water at 21 degC. Never null.
    virtual IFluid* GetFluid() = 0;
    /// The same fluid, read only.
    virtual const IFluid* GetConstFluid() const = 0;

    /// Direction of gravity [-]; a new circuit has (0, 0, -1). Components that were removed read 0.0.
    virtual void GetGravity(double* x, double* y, double* z) = 0;
    /// Sets the direction of gravity. Its length scales gravity: 1 is 9.80665 m/s2, the zero vector is none.
    virtual void SetGravity(double x, double y, double z) = 0;

    /// A new node at the origin, of type 1, with the next free id. Never null.
    virtual INode* CreateNode() = 0;
    /// Destroys a node; elements keep its id. False when it is null or not in this circuit.
    virtual bool ReleaseNode(INode* node) = 0;

    /// A new pipe without nodes and geometry, to be completed through its properties. Never null.
    virtual IElement* CreateEmptyElement() = 0;

    /// A round pipe from start to end.
    /// diameter [m] and area [m2] > 0; k [-] minor loss coefficient; energyType and energyValue:
    /// TavellEnergyType.
    /// Null, and nothing changed, when a size is 0 or less (a NaN passes), an end is not in this circuit,
    /// both ends have the same id or location, or (duplicate check) an element from start to end exists.
    virtual IElement* CreateElement(INode* start, INode* end, double diameter, double area, double k,
                                    int energyType, double energyValue) = 0;
    /// A pipe of any cross-section; its diameter becomes the hydraulic one, 4 area / wettedPerimeter [m].
    /// Null as for CreateElement.
    virtual IElement* CreateNonRoundElement(INode* start, INode* end, double wettedPerimeter, double area,
                                            double k, int energyType, double energyValue) = 0;
    /// A pump from its curve: count >= 4 volume flows [m3/s] and pressure rises [Pa] measured with fluid of
    /// referenceDensity [kg/m3]. Points are kept to 6 significant digits. The flows have to increase
    /// strictly; a solve reports a curve whose flows do not.
    /// Null when the ends are refused as for CreateElement, an array is null or count is below 4.
    virtual IElement* CreatePump(INode* start, INode* end, const double* flowRates, const double* pressures,
                                 int count, double referenceDensity, int energyType, double energyValue) = 0;
    /// A loss from its curve of pressure drops [Pa] over volume flows [m3/s]; otherwise as CreatePump.
    virtual IElement* CreateLoss(INode* start, INode* end, const double* flowRates, const double* pressures,
                                 int count, double referenceDensity, int energyType, double energyValue) = 0;
    /// Destroys an element. False when it is null or not in this circuit.
    virtual bool ReleaseElement(IElement* element) = 0;

    /// Validity state, TavellValidity; changes nothing. The environment variable TAVELL_DETAIL_CHECK = 1 adds
    /// the checks of element ends and of connectivity; TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY, when set,
    /// takes the latter away.
    virtual int IsValid() = 0;
    /// True when IsValid() is below 3.
    virtual bool IsSuitableForAnalysis() = 0;
    /// Gives elements and nodes usable, unique ids where they lack them, then answers as
    /// IsSuitableForAnalysis.
    virtual bool Validate() = 0;
    /// Solves the circuit. True when it converged; its results can then be read. False otherwise, with the
    /// reasons in GetFeedback(); an empty circuit has none. With the environment variable TAVELL_DETAIL_CHECK
    /// = 1 a circuit that is not suitable for analysis is refused: false, and results and feedback stay as
    /// they were.
    /// energy: solve temperatures too. cancel: called once an iteration, and once a step of the search for
    /// starting values that a large network begins with, on the thread of the call, true asks to stop; may be
    /// null. It must not change
    /// the circuit: a solve during which the circuit changed leaves no results and returns false.
    virtual bool Solve(bool energy, bool (*cancel)() = nullptr) = 0;
    /// One result quantity, TavellResultKey; null for an unknown key or without valid results.
    virtual IResultsSet* GetResults(int key) = 0;
    /// The settings of ExportResults. Never null.
    virtual IResultsExporterOptions* GetResultsExporterOptions() = 0;
    /// Results as comma-separated text: an element table (keys 0, 1, 2, 3), then a node table (keys 7, 6),
    /// each with a header line. Without results the text of the last export, "" at first. Valid until the
    /// next export.
    virtual const char* ExportResults() = 0;
    /// What the last solve had to say; always the same object. Never null.
    virtual IFeedbackCollection* GetFeedback() = 0;

    /// Number of elements.
    virtual std::size_t GetNoElements() = 0;
    /// The element at position index in order of creation; null when index is not below GetNoElements().
    virtual IElement* GetElement(std::size_t index) = 0;
    /// Number of nodes.
    virtual std::size_t GetNoNodes() = 0;
    /// The node at position index in order of creation; null when index is not below GetNoNodes().
    virtual INode* GetNode(std::size_t index) = 0;
    /// The node at an element's start (which is 0) or end (any other value); null when the element is null or
    /// its end names no node of this circuit.
    virtual INode* GetElementNode(IElement* element, std::size_t which) = 0;
    /// The oldest node with this id; null when there is none.
    virtual INode* GetNodeById(int id) = 0;
    /// Properties and meta string of the circuit itself. Never null.
    virtual IEntity* GetEntity() = 0;
    /// The same entity, read only.
    virtual const IEntity* GetEntityConst() const = 0;
    /// Accepts a path and does nothing: no solve log is written.
    virtual void SetSolveLogFile(const char* path) = 0;

    /// The elements that cannot be reached from the first node, none with
    /// TAVELL_DONT_CHECK_CIRCUIT_CONNECTIVITY set. *count receives their number; true when they fit into
    /// capacity entries of out and were copied there, false when nothing was copied and a larger array is
    /// needed.
    virtual bool GetDisconnectedElements(IElement** out, int capacity, int* count) = 0;

    /// Whether CreateNode skips ids that are in use; on in a new circuit.
    virtual bool GetCheckNodeIdTaken() = 0;
    virtual void SetCheckNodeIdTaken(bool check) = 0;
    /// Whether a second element in the same direction between two nodes is refused; on in a new circuit.
    virtual bool GetCheckDuplicateElementAtNodes() = 0;
    virtual void SetCheckDuplicateElementAtNodes(bool check) = 0;
};

}  // namespace Velcor::Tavell

#endif
