/* TavellFlat.h: every operation of the interfaces as a C function, for C99 and C++.
 *
 * A handle is a plain pointer to an interface; in C it is opaque, in C++ it is the interface itself. Handles
 * are not checked. The full description of an operation (units, ownership, life time, failure) is in the
 * interface's header;
 * here a bool is an int (any non-zero argument is true, results are 0 or 1; vcGetBuildDetails and the
 * cancellation callback take and give a bool) and a position is an int (a negative one is out of range).
 * Strings and arrays that are returned belong to the object that returned them.
 *
 * Threads: different systems may be used on different threads at the same time, one system and everything
 * in it by one thread at a time; ITavell.h has the whole of it.
 *
 * A number stored as text that is no number makes the operation that reads it throw a C++ exception, which
 * ends a program that has no C++ frame to catch it. Texts get there only through
 * vcIPropertySetSetStringPropertyByName.
 */
#ifndef TAVELL_TAVELLFLAT_H
#define TAVELL_TAVELLFLAT_H

#include <stdbool.h>
#include <stddef.h>

#include "Constants.h"
#include "Export.h"

#ifdef __cplusplus
namespace Velcor
{
namespace Tavell
{
class ITavell;
class ICircuit;
class INode;
class IElement;
class IEntity;
class IPropertySet;
class IFluid;
class IFeedbackCollection;
class IFeedback;
class IResultsSet;
class IResultsExporterOptions;
}  // namespace Tavell
}  // namespace Velcor

typedef Velcor::Tavell::ITavell vcITavell;
typedef Velcor::Tavell::ICircuit vcICircuit;
typedef Velcor::Tavell::INode vcINode;
typedef Velcor::Tavell::IElement vcIElement;
typedef Velcor::Tavell::IEntity vcIEntity;
typedef Velcor::Tavell::IPropertySet vcIPropertySet;
typedef Velcor::Tavell::IFluid vcIFluid;
typedef Velcor::Tavell::IFeedbackCollection vcIFeedbackCollection;
typedef Velcor::Tavell::IFeedback vcIFeedback;
typedef Velcor::Tavell::IResultsSet vcIResultsSet;
typedef Velcor::Tavell::IResultsExporterOptions vcIResultsExporterOptions;

extern "C" {
#else
typedef struct vcITavell vcITavell;
typedef struct vcICircuit vcICircuit;
typedef struct vcINode vcINode;
typedef struct vcIElement vcIElement;
typedef struct vcIEntity vcIEntity;
typedef struct vcIPropertySet vcIPropertySet;
typedef struct vcIFluid vcIFluid;
typedef struct vcIFeedbackCollection vcIFeedbackCollection;
typedef struct vcIFeedback vcIFeedback;
typedef struct vcIResultsSet vcIResultsSet;
typedef struct vcIResultsExporterOptions vcIResultsExporterOptions;
#endif

/* Entry points */

/** A new, empty system object, to be given back with vcITavellRelease. */
TAVELL_API vcITavell* vcCreateTavell(void);

/** Writes -1, "no details available", through detail1 and leaves the other outputs alone. The flag has no effect. */
TAVELL_API void vcGetBuildDetails(bool flag, int* detail1, int* detail2, int* detail3, int* detail4,
                                  int* detail5, int* detail6, int* detail7, int* detail8, int* detail9,
                                  int* detail10, int* detail11, int* detail12, int* detail13, int* detail14,
                                  int* detail15, int* detail16, int* detail17, int* detail18, int* detail19);

/* ITavell: the system object */

/** Destroys the system object and everything in it. */
TAVELL_API void vcITavellRelease(vcITavell* system);

/** Appends a new, empty circuit. */
TAVELL_API vcICircuit* vcITavellCreateCircuit(vcITavell* system);

/** Number of circuits. */
TAVELL_API size_t vcITavellGetNoCircuits(vcITavell* system);

/** Circuit at a position from 0; null when out of range. */
TAVELL_API vcICircuit* vcITavellGetCircuit(vcITavell* system, int index);

/** Destroys a circuit; 0 when it is null or not in the list. */
TAVELL_API int vcITavellReleaseCircuit(vcITavell* system, vcICircuit* circuit);

/** Destroys every circuit. */
TAVELL_API void vcITavellReleaseAllCircuits(vcITavell* system);

/** Solves every circuit; outcomes are in their feedback and results. cancel may be null. */
TAVELL_API void vcITavellSolve(vcITavell* system, int energy, int validateFirst, bool (*cancel)(void));

/** Joins circuits that have a node at exactly the same location. */
TAVELL_API void vcITavellMergeCircuits(vcITavell* system);

/** Validates every circuit. */
TAVELL_API void vcITavellValidateCircuits(vcITavell* system);

/** Circuit that holds a node; null when none does. */
TAVELL_API vcICircuit* vcITavellFindParentCircuitFromNode(vcITavell* system, vcINode* node);

/** Circuit that holds an element; null when none does. */
TAVELL_API vcICircuit* vcITavellFindParentCircuitFromElement(vcITavell* system, vcIElement* element);

/* ICircuit: one flow network */

/** The fluid; never null. */
TAVELL_API vcIFluid* vcICircuitGetFluid(vcICircuit* circuit);

/** The same fluid, read only. */
TAVELL_API const vcIFluid* vcICircuitGetConstFluid(vcICircuit* circuit);

/** Direction of gravity [-]. */
TAVELL_API void vcICircuitGetGravity(vcICircuit* circuit, double* x, double* y, double* z);

/** Sets it; length 1 is 9.80665 m/s2, the zero vector none. */
TAVELL_API void vcICircuitSetGravity(vcICircuit* circuit, double x, double y, double z);

/** A new node at the origin; never null. */
TAVELL_API vcINode* vcICircuitCreateNode(vcICircuit* circuit);

/** Destroys a node; 0 when it is null or not in the circuit. */
TAVELL_API int vcICircuitReleaseNode(vcICircuit* circuit, vcINode* node);

/** A new pipe without nodes; never null. */
TAVELL_API vcIElement* vcICircuitCreateEmptyElement(vcICircuit* circuit);

/** A round pipe, diameter [m], area [m2], minor loss k [-]; null when refused. */
TAVELL_API vcIElement* vcICircuitCreateElement(vcICircuit* circuit, vcINode* start, vcINode* end,
                                               double diameter, double area, double k, int energyType,
                                               double energyValue);

/** A pipe of any cross-section, wetted perimeter [m], area [m2]; null when refused. */
TAVELL_API vcIElement* vcICircuitCreateNonRoundElement(vcICircuit* circuit, vcINode* start, vcINode* end,
                                                       double wettedPerimeter, double area, double k,
                                                       int energyType, double energyValue);

/** A pump: count >= 4 volume flows [m3/s] and pressure rises [Pa] at a reference density [kg/m3]; null when refused. */
TAVELL_API vcIElement* vcICircuitCreatePump(vcICircuit* circuit, vcINode* start, vcINode* end,
                                            const double* flowRates, const double* pressures, int count,
                                            double referenceDensity, int energyType, double energyValue);

/** A loss: count >= 4 volume flows [m3/s] and pressure drops [Pa]; null when refused. */
TAVELL_API vcIElement* vcICircuitCreateLoss(vcICircuit* circuit, vcINode* start, vcINode* end,
                                            const double* flowRates, const double* pressures, int count,
                                            double referenceDensity, int energyType, double energyValue);

/** Destroys an element; 0 when it is null or not in the circuit. */
TAVELL_API int vcICircuitReleaseElement(vcICircuit* circuit, vcIElement* element);

/** Validity state, TavellValidity. */
TAVELL_API int vcICircuitIsValid(vcICircuit* circuit);

/** 1 when the validity state is below 3. */
TAVELL_API int vcICircuitIsSuitableForAnalysis(vcICircuit* circuit);

/** Mends ids, then answers as IsSuitableForAnalysis. */
TAVELL_API int vcICircuitValidate(vcICircuit* circuit);

/** Solves; 1 when converged, else 0 with the reasons in the feedback. cancel may be null. */
TAVELL_API int vcICircuitSolve(vcICircuit* circuit, int energy, bool (*cancel)(void));

/** Results of a TavellResultKey; null without valid results. */
TAVELL_API vcIResultsSet* vcICircuitGetResults(vcICircuit* circuit, int key);

/** Settings of the export; never null. */
TAVELL_API vcIResultsExporterOptions* vcICircuitGetResultsExporterOptions(vcICircuit* circuit);

/** Results as comma-separated text; the last text when there are none. */
TAVELL_API const char* vcICircuitExportResults(vcICircuit* circuit);

/** Messages of the last solve; never null. */
TAVELL_API vcIFeedbackCollection* vcICircuitGetFeedback(vcICircuit* circuit);

/** Number of elements. */
TAVELL_API size_t vcICircuitGetNoElements(vcICircuit* circuit);

/** Element at a position from 0; null when out of range. */
TAVELL_API vcIElement* vcICircuitGetElement(vcICircuit* circuit, int index);

/** Number of nodes. */
TAVELL_API size_t vcICircuitGetNoNodes(vcICircuit* circuit);

/** Node at a position from 0; null when out of range. */
TAVELL_API vcINode* vcICircuitGetNode(vcICircuit* circuit, int index);

/** Node at the start (0) or end (other); null when there is none. */
TAVELL_API vcINode* vcICircuitGetElementNode(vcICircuit* circuit, vcIElement* element, int which);

/** Oldest node with this id; null when there is none. */
TAVELL_API vcINode* vcICircuitGetNodeById(vcICircuit* circuit, int id);

/** Entity of the circuit. */
TAVELL_API vcIEntity* vcICircuitGetEntity(vcICircuit* circuit);

/** The same entity, read only. */
TAVELL_API const vcIEntity* vcICircuitGetEntityConst(vcICircuit* circuit);

/** Accepts a path and does nothing. */
TAVELL_API void vcICircuitSetSolveLogFile(vcICircuit* circuit, const char* path);

/** Elements out of reach of the first node; 0 when capacity is below *count. */
TAVELL_API int vcICircuitGetDisconnectedElements(vcICircuit* circuit, vcIElement** out, int capacity,
                                                 int* count);

/** 1 when CreateNode skips ids in use. */
TAVELL_API int vcICircuitGetCheckNodeIdTaken(vcICircuit* circuit);

/** Switches that check. */
TAVELL_API void vcICircuitSetCheckNodeIdTaken(vcICircuit* circuit, int check);

/** 1 when a second element from start to end is refused. */
TAVELL_API int vcICircuitGetCheckDuplicateElementAtNodes(vcICircuit* circuit);

/** Switches that check. */
TAVELL_API void vcICircuitSetCheckDuplicateElementAtNodes(vcICircuit* circuit, int check);

/* INode: a junction or an end */

/** Node id; 0 when it has none. */
TAVELL_API int vcINodeGetId(vcINode* node);

/** Location [m]. */
TAVELL_API void vcINodeGetLocation(vcINode* node, double* x, double* y, double* z);

/** Sets the location [m]. */
TAVELL_API void vcINodeSetLocation(vcINode* node, double x, double y, double z);

/** Sets the TavellNodeType. */
TAVELL_API void vcINodeSetType(vcINode* node, int type);

/** TavellNodeType. */
TAVELL_API int vcINodeGetType(vcINode* node);

/** Sets the TavellNodeConstraint and its value. */
TAVELL_API void vcINodeSetConstraint(vcINode* node, int constraint, double value);

/** TavellNodeConstraint. */
TAVELL_API int vcINodeGetConstraint(vcINode* node);

/** Entity of the node. */
TAVELL_API vcIEntity* vcINodeGetEntity(vcINode* node);

/** The same entity, read only. */
TAVELL_API const vcIEntity* vcINodeGetEntityConst(vcINode* node);

/* IElement: a pipe, pump, valve, orifice or loss */

/** Element id; 0 when it has none. */
TAVELL_API int vcIElementGetId(vcIElement* element);

/** TavellElementType. */
TAVELL_API int vcIElementGetType(vcIElement* element);

/** Sets the TavellElementType. */
TAVELL_API void vcIElementSetType(vcIElement* element, int type);

/** Id of the start node; 0 when not set. */
TAVELL_API int vcIElementGetStartNodeId(vcIElement* element);

/** Id of the end node; 0 when not set. */
TAVELL_API int vcIElementGetEndNodeId(vcIElement* element);

/** Exchanges the end ids. */
TAVELL_API void vcIElementSwapNodes(vcIElement* element);

/** Makes it a pump (1) or loss (2) with a curve; 0 when refused. */
TAVELL_API int vcIElementUpdateCurveData(vcIElement* element, int type, const double* flowRates,
                                         const double* pressures, int count, double referenceDensity);

/** Reads the curve; 0 when capacity is below *count or (*count = -1) for a pipe. */
TAVELL_API int vcIElementGetCurveData(vcIElement* element, double* referenceDensity, double* flowRates,
                                      double* pressures, int capacity, int* count);

/** Entity of the element. */
TAVELL_API vcIEntity* vcIElementGetEntity(vcIElement* element);

/** The same entity, read only. */
TAVELL_API const vcIEntity* vcIElementGetEntityConst(vcIElement* element);

/* IEntity: properties and meta string of any object */

/** Sets the meta string; null counts as "". */
TAVELL_API void vcIEntitySetMeta(vcIEntity* entity, const char* meta);

/** The meta string. */
TAVELL_API const char* vcIEntityGetMeta(vcIEntity* entity);

/** Stores a number; 0 when the entity refuses the id (a fluid: when nothing changed). */
TAVELL_API int vcIEntitySetProperty(vcIEntity* entity, int id, double value);

/** The same by name, in any letter case. An unknown name counts as id -1, which only a fluid takes. */
TAVELL_API int vcIEntitySetPropertyByName(vcIEntity* entity, const char* name, double value);

/** 1 when a value is stored. */
TAVELL_API int vcIEntityHasProperty(vcIEntity* entity, int id);

/** Reads a number; 0, leaving *value alone, when none is stored. */
TAVELL_API int vcIEntityGetProperty(vcIEntity* entity, int id, double* value);

/** Removes a value; 0 when none is stored. */
TAVELL_API int vcIEntityRemoveProperty(vcIEntity* entity, int id);

/** The property set. */
TAVELL_API vcIPropertySet* vcIEntityGetProperties(vcIEntity* entity);

/** The same set. */
TAVELL_API vcIPropertySet* vcIEntityGetWriteableProperties(vcIEntity* entity);

/* IPropertySet: stored properties by position */

/** The meta string. */
TAVELL_API const char* vcIPropertySetGetMeta(vcIPropertySet* properties);

/** Number of properties. */
TAVELL_API int vcIPropertySetGetSize(vcIPropertySet* properties);

/** Id at a position from 0; -1 when out of range. */
TAVELL_API int vcIPropertySetGetProp(vcIPropertySet* properties, int index);

/** Value at a position; 0.0 when out of range. */
TAVELL_API double vcIPropertySetGetValue(vcIPropertySet* properties, int index);

/** Name at a position; "" when out of range. */
TAVELL_API const char* vcIPropertySetGetName(vcIPropertySet* properties, int index);

/** Stored text at a position; null when out of range. */
TAVELL_API const char* vcIPropertySetGetStringValue(vcIPropertySet* properties, int index);

/** Position of an id; -1 when not stored. */
TAVELL_API int vcIPropertySetGetIndex(vcIPropertySet* properties, int id);

/** Stores text; 0 for an unknown name or null value. */
TAVELL_API int vcIPropertySetSetStringPropertyByName(vcIPropertySet* properties, const char* name,
                                                     const char* value);

/* IFluid: the medium */

/** Entity of the fluid. */
TAVELL_API vcIEntity* vcIFluidGetEntity(vcIFluid* fluid);

/** The same entity, read only. */
TAVELL_API const vcIEntity* vcIFluidGetEntityConst(vcIFluid* fluid);

/** Display name. */
TAVELL_API const char* vcIFluidGetUIName(vcIFluid* fluid);

/** Sets it; null counts as "". */
TAVELL_API void vcIFluidSetUIName(vcIFluid* fluid, const char* name);

/* IFeedbackCollection: messages of the last solve */

/** Number of messages. */
TAVELL_API size_t vcIFeedbackCollectionGetSize(vcIFeedbackCollection* feedback);

/** Message at a position from 0; null when out of range. */
TAVELL_API vcIFeedback* vcIFeedbackCollectionGetFeedback(vcIFeedbackCollection* feedback, int index);

/* IFeedback: one message */

/** TavellFeedbackId. */
TAVELL_API int vcIFeedbackGetId(vcIFeedback* message);

/** Number of values. */
TAVELL_API size_t vcIFeedbackGetValueSize(vcIFeedback* message);

/** The values; null when there are none. */
TAVELL_API const double* vcIFeedbackGetValues(vcIFeedback* message);

/* IResultsSet: one result quantity */

/** Number of values. */
TAVELL_API size_t vcIResultsSetGetSize(vcIResultsSet* results);

/** Node or element ids; null when empty. */
TAVELL_API const int* vcIResultsSetGetIds(vcIResultsSet* results);

/** Values, SI; null when empty. */
TAVELL_API const double* vcIResultsSetGetValues(vcIResultsSet* results);

/** Values x scale + offset; null when empty. */
TAVELL_API const double* vcIResultsSetGetL10NValues(vcIResultsSet* results, double scale, double offset);

/** 1 for a node quantity. */
TAVELL_API int vcIResultsSetIsNodal(vcIResultsSet* results);

/* IResultsExporterOptions: settings of the export */

/** Format code, kept for the host. */
TAVELL_API void vcIResultsExporterOptionsSetFormat(vcIResultsExporterOptions* options, int format);

/** Format code. */
TAVELL_API int vcIResultsExporterOptionsGetFormat(vcIResultsExporterOptions* options);

/** Title of the node id column. */
TAVELL_API void vcIResultsExporterOptionsSetNodeLabel(vcIResultsExporterOptions* options, const char* label);

/** That title. */
TAVELL_API const char* vcIResultsExporterOptionsGetNodeLabel(vcIResultsExporterOptions* options);

/** Title of the element id column. */
TAVELL_API void vcIResultsExporterOptionsSetElementLabel(vcIResultsExporterOptions* options,
                                                         const char* label);

/** That title. */
TAVELL_API const char* vcIResultsExporterOptionsGetElementLabel(vcIResultsExporterOptions* options);

/** Title of a result column. */
TAVELL_API void vcIResultsExporterOptionsSetResultLabel(vcIResultsExporterOptions* options, int key,
                                                        const char* label);

/** That title; "" when not set. */
TAVELL_API const char* vcIResultsExporterOptionsGetResultLabel(vcIResultsExporterOptions* options, int key);

/** Display unit of a result key. */
TAVELL_API void vcIResultsExporterOptionsSetL10n(vcIResultsExporterOptions* options, int key, double scale,
                                                 double offset);

/** Reads it; untouched when not set. Both pointers must be valid. */
TAVELL_API void vcIResultsExporterOptionsGetL10n(vcIResultsExporterOptions* options, int key, double* scale,
                                                 double* offset);

/** Significant digits. */
TAVELL_API void vcIResultsExporterOptionsSetPrecision(vcIResultsExporterOptions* options, int digits);

/** Significant digits. */
TAVELL_API int vcIResultsExporterOptionsGetPrecision(vcIResultsExporterOptions* options);

#ifdef __cplusplus
}
#endif

#endif
