// flat.cpp: the flat functions: argument conversions and one call through the interface table each, nothing
// else.
// No handle is checked and nothing is caught, so they fail exactly as the interfaces do.
#include "tavell/TavellFlat.h"

#include "tavell/ICircuit.h"
#include "tavell/IElement.h"
#include "tavell/IEntity.h"
#include "tavell/IFeedback.h"
#include "tavell/IFeedbackCollection.h"
#include "tavell/IFluid.h"
#include "tavell/INode.h"
#include "tavell/IPropertySet.h"
#include "tavell/IResultsExporterOptions.h"
#include "tavell/IResultsSet.h"
#include "tavell/ITavell.h"

using namespace Velcor::Tavell;

namespace
{

/// Position as the interfaces take it: widened with its sign, so that -1 becomes the largest size and is out
/// of range.
std::size_t toSize(int index)
{
    return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(index));
}

}  // namespace

extern "C" {

void vcITavellRelease(ITavell* system)
{
    system->Release();
}

ICircuit* vcITavellCreateCircuit(ITavell* system)
{
    return system->CreateCircuit();
}

size_t vcITavellGetNoCircuits(ITavell* system)
{
    return system->GetNoCircuits();
}

ICircuit* vcITavellGetCircuit(ITavell* system, int index)
{
    return system->GetCircuit(toSize(index));
}

int vcITavellReleaseCircuit(ITavell* system, ICircuit* circuit)
{
    return system->ReleaseCircuit(circuit) ? 1 : 0;
}

void vcITavellReleaseAllCircuits(ITavell* system)
{
    system->ReleaseAllCircuits();
}

void vcITavellSolve(ITavell* system, int energy, int validateFirst, bool (*cancel)())
{
    system->Solve(energy != 0, validateFirst != 0, cancel);
}

void vcITavellMergeCircuits(ITavell* system)
{
    system->MergeCircuits();
}

void vcITavellValidateCircuits(ITavell* system)
{
    system->ValidateCircuits();
}

ICircuit* vcITavellFindParentCircuitFromNode(ITavell* system, INode* node)
{
    return system->FindParentCircuitFromNode(node);
}

ICircuit* vcITavellFindParentCircuitFromElement(ITavell* system, IElement* element)
{
    return system->FindParentCircuitFromElement(element);
}

IFluid* vcICircuitGetFluid(ICircuit* circuit)
{
    return circuit->GetFluid();
}

const IFluid* vcICircuitGetConstFluid(ICircuit* circuit)
{
    return circuit->GetConstFluid();
}

void vcICircuitGetGravity(ICircuit* circuit, double* x, double* y, double* z)
{
    circuit->GetGravity(x, y, z);
}

void vcICircuitSetGravity(ICircuit* circuit, double x, double y, double z)
{
    circuit->SetGravity(x, y, z);
}

INode* vcICircuitCreateNode(ICircuit* circuit)
{
    return circuit->CreateNode();
}

int vcICircuitReleaseNode(ICircuit* circuit, INode* node)
{
    return circuit->ReleaseNode(node) ? 1 : 0;
}

IElement* vcICircuitCreateEmptyElement(ICircuit* circuit)
{
    return circuit->CreateEmptyElement();
}

IElement* vcICircuitCreateElement(ICircuit* circuit, INode* start, INode* end, double diameter, double area,
                                  double k, int energyType, double energyValue)
{
    return circuit->CreateElement(start, end, diameter, area, k, energyType, energyValue);
}

IElement* vcICircuitCreateNonRoundElement(ICircuit* circuit, INode* start, INode* end, double wettedPerimeter,
                                          double area, double k, int energyType, double energyValue)
{
    return circuit->CreateNonRoundElement(start, end, wettedPerimeter, area, k, energyType, energyValue);
}

IElement* vcICircuitCreatePump(ICircuit* circuit, INode* start, INode* end, const double* flowRates,
                               const double* pressures, int count, double referenceDensity, int energyType,
                               double energyValue)
{
    return circuit->CreatePump(start, end, flowRates, pressures, count, referenceDensity, energyType,
                               energyValue);
}

IElement* vcICircuitCreateLoss(ICircuit* circuit, INode* start, INode* end, const double* flowRates,
                               const double* pressures, int count, double referenceDensity, int energyType,
                               double energyValue)
{
    return circuit->CreateLoss(start, end, flowRates, pressures, count, referenceDensity, energyType,
                               energyValue);
}

int vcICircuitReleaseElement(ICircuit* circuit, IElement* element)
{
    return circuit->ReleaseElement(element) ? 1 : 0;
}

int vcICircuitIsValid(ICircuit* circuit)
{
    return circuit->IsValid();
}

int vcICircuitIsSuitableForAnalysis(ICircuit* circuit)
{
    return circuit->IsSuitableForAnalysis() ? 1 : 0;
}

int vcICircuitValidate(ICircuit* circuit)
{
    return circuit->Validate() ? 1 : 0;
}

int vcICircuitSolve(ICircuit* circuit, int energy, bool (*cancel)())
{
    return circuit->Solve(energy != 0, cancel) ? 1 : 0;
}

IResultsSet* vcICircuitGetResults(ICircuit* circuit, int key)
{
    return circuit->GetResults(key);
}

IResultsExporterOptions* vcICircuitGetResultsExporterOptions(ICircuit* circuit)
{
    return circuit->GetResultsExporterOptions();
}

const char* vcICircuitExportResults(ICircuit* circuit)
{
    return circuit->ExportResults();
}

IFeedbackCollection* vcICircuitGetFeedback(ICircuit* circuit)
{
    return circuit->GetFeedback();
}

size_t vcICircuitGetNoElements(ICircuit* circuit)
{
    return circuit->GetNoElements();
}

IElement* vcICircuitGetElement(ICircuit* circuit, int index)
{
    return circuit->GetElement(toSize(index));
}

size_t vcICircuitGetNoNodes(ICircuit* circuit)
{
    return circuit->GetNoNodes();
}

INode* vcICircuitGetNode(ICircuit* circuit, int index)
{
    return circuit->GetNode(toSize(index));
}

INode* vcICircuitGetElementNode(ICircuit* circuit, IElement* element, int which)
{
    return circuit->GetElementNode(element, toSize(which));
}

INode* vcICircuitGetNodeById(ICircuit* circuit, int id)
{
    return circuit->GetNodeById(id);
}

IEntity* vcICircuitGetEntity(ICircuit* circuit)
{
    return circuit->GetEntity();
}

const IEntity* vcICircuitGetEntityConst(ICircuit* circuit)
{
    return circuit->GetEntityConst();
}

void vcICircuitSetSolveLogFile(ICircuit* circuit, const char* path)
{
    circuit->SetSolveLogFile(path);
}

int vcICircuitGetDisconnectedElements(ICircuit* circuit, IElement** out, int capacity, int* count)
{
    return circuit->GetDisconnectedElements(out, capacity, count) ? 1 : 0;
}

int vcICircuitGetCheckNodeIdTaken(ICircuit* circuit)
{
    return circuit->GetCheckNodeIdTaken() ? 1 : 0;
}

void vcICircuitSetCheckNodeIdTaken(ICircuit* circuit, int check)
{
    circuit->SetCheckNodeIdTaken(check != 0);
}

int vcICircuitGetCheckDuplicateElementAtNodes(ICircuit* circuit)
{
    return circuit->GetCheckDuplicateElementAtNodes() ? 1 : 0;
}

void vcICircuitSetCheckDuplicateElementAtNodes(ICircuit* circuit, int check)
{
    circuit->SetCheckDuplicateElementAtNodes(check != 0);
}

int vcINodeGetId(INode* node)
{
    return node->GetId();
}

void vcINodeGetLocation(INode* node, double* x, double* y, double* z)
{
    node->GetLocation(x, y, z);
}

void vcINodeSetLocation(INode* node, double x, double y, double z)
{
    node->SetLocation(x, y, z);
}

void vcINodeSetType(INode* node, int type)
{
    node->SetType(type);
}

int vcINodeGetType(INode* node)
{
    return node->GetType();
}

void vcINodeSetConstraint(INode* node, int constraint, double value)
{
    node->SetConstraint(constraint, value);
}

int vcINodeGetConstraint(INode* node)
{
    return node->GetConstraint();
}

IEntity* vcINodeGetEntity(INode* node)
{
    return node->GetEntity();
}

const IEntity* vcINodeGetEntityConst(INode* node)
{
    return node->GetEntityConst();
}

int vcIElementGetId(IElement* element)
{
    return element->GetId();
}

int vcIElementGetType(IElement* element)
{
    return element->GetType();
}

void vcIElementSetType(IElement* element, int type)
{
    element->SetType(type);
}

int vcIElementGetStartNodeId(IElement* element)
{
    return element->GetStartNodeId();
}

int vcIElementGetEndNodeId(IElement* element)
{
    return element->GetEndNodeId();
}

void vcIElementSwapNodes(IElement* element)
{
    element->SwapNodes();
}

int vcIElementUpdateCurveData(IElement* element, int type, const double* flowRates, const double* pressures,
                              int count, double referenceDensity)
{
    return element->UpdateCurveData(type, flowRates, pressures, count, referenceDensity) ? 1 : 0;
}

int vcIElementGetCurveData(IElement* element, double* referenceDensity, double* flowRates, double* pressures,
                           int capacity, int* count)
{
    return element->GetCurveData(referenceDensity, flowRates, pressures, capacity, count) ? 1 : 0;
}

IEntity* vcIElementGetEntity(IElement* element)
{
    return element->GetEntity();
}

const IEntity* vcIElementGetEntityConst(IElement* element)
{
    return element->GetEntityConst();
}

void vcIEntitySetMeta(IEntity* entity, const char* meta)
{
    entity->SetMeta(meta);
}

const char* vcIEntityGetMeta(IEntity* entity)
{
    return entity->GetMeta();
}

int vcIEntitySetProperty(IEntity* entity, int id, double value)
{
    return entity->SetProperty(id, value) ? 1 : 0;
}

int vcIEntitySetPropertyByName(IEntity* entity, const char* name, double value)
{
    return entity->SetPropertyByName(name, value) ? 1 : 0;
}

int vcIEntityHasProperty(IEntity* entity, int id)
{
    return entity->HasProperty(id) ? 1 : 0;
}

int vcIEntityGetProperty(IEntity* entity, int id, double* value)
{
    return entity->GetProperty(id, value) ? 1 : 0;
}

int vcIEntityRemoveProperty(IEntity* entity, int id)
{
    return entity->RemoveProperty(id) ? 1 : 0;
}

IPropertySet* vcIEntityGetProperties(IEntity* entity)
{
    return entity->GetProperties();
}

IPropertySet* vcIEntityGetWriteableProperties(IEntity* entity)
{
    return entity->GetWriteableProperties();
}

const char* vcIPropertySetGetMeta(IPropertySet* properties)
{
    return properties->GetMeta();
}

int vcIPropertySetGetSize(IPropertySet* properties)
{
    return properties->GetSize();
}

int vcIPropertySetGetProp(IPropertySet* properties, int index)
{
    return properties->GetProp(toSize(index));
}

double vcIPropertySetGetValue(IPropertySet* properties, int index)
{
    return properties->GetValue(toSize(index));
}

const char* vcIPropertySetGetName(IPropertySet* properties, int index)
{
    return properties->GetName(toSize(index));
}

const char* vcIPropertySetGetStringValue(IPropertySet* properties, int index)
{
    return properties->GetStringValue(toSize(index));
}

int vcIPropertySetGetIndex(IPropertySet* properties, int id)
{
    return properties->GetIndex(id);
}

int vcIPropertySetSetStringPropertyByName(IPropertySet* properties, const char* name, const char* value)
{
    return properties->SetStringPropertyByName(name, value) ? 1 : 0;
}

IEntity* vcIFluidGetEntity(IFluid* fluid)
{
    return fluid->GetEntity();
}

const IEntity* vcIFluidGetEntityConst(IFluid* fluid)
{
    return fluid->GetEntityConst();
}

const char* vcIFluidGetUIName(IFluid* fluid)
{
    return fluid->GetUIName();
}

void vcIFluidSetUIName(IFluid* fluid, const char* name)
{
    fluid->SetUIName(name);
}

size_t vcIFeedbackCollectionGetSize(IFeedbackCollection* feedback)
{
    return feedback->GetSize();
}

IFeedback* vcIFeedbackCollectionGetFeedback(IFeedbackCollection* feedback, int index)
{
    return feedback->GetFeedback(toSize(index));
}

int vcIFeedbackGetId(IFeedback* message)
{
    return message->GetId();
}

size_t vcIFeedbackGetValueSize(IFeedback* message)
{
    return message->GetValueSize();
}

const double* vcIFeedbackGetValues(IFeedback* message)
{
    return message->GetValues();
}

size_t vcIResultsSetGetSize(IResultsSet* results)
{
    return results->GetSize();
}

const int* vcIResultsSetGetIds(IResultsSet* results)
{
    return results->GetIds();
}

const double* vcIResultsSetGetValues(IResultsSet* results)
{
    return results->GetValues();
}

const double* vcIResultsSetGetL10NValues(IResultsSet* results, double scale, double offset)
{
    return results->GetL10NValues(scale, offset);
}

int vcIResultsSetIsNodal(IResultsSet* results)
{
    return results->IsNodal() ? 1 : 0;
}

void vcIResultsExporterOptionsSetFormat(IResultsExporterOptions* options, int format)
{
    options->SetFormat(format);
}

int vcIResultsExporterOptionsGetFormat(IResultsExporterOptions* options)
{
    return options->GetFormat();
}

void vcIResultsExporterOptionsSetNodeLabel(IResultsExporterOptions* options, const char* label)
{
    options->SetNodeLabel(label);
}

const char* vcIResultsExporterOptionsGetNodeLabel(IResultsExporterOptions* options)
{
    return options->GetNodeLabel();
}

void vcIResultsExporterOptionsSetElementLabel(IResultsExporterOptions* options, const char* label)
{
    options->SetElementLabel(label);
}

const char* vcIResultsExporterOptionsGetElementLabel(IResultsExporterOptions* options)
{
    return options->GetElementLabel();
}

void vcIResultsExporterOptionsSetResultLabel(IResultsExporterOptions* options, int key, const char* label)
{
    options->SetResultLabel(key, label);
}

const char* vcIResultsExporterOptionsGetResultLabel(IResultsExporterOptions* options, int key)
{
    return options->GetResultLabel(key);
}

void vcIResultsExporterOptionsSetL10n(IResultsExporterOptions* options, int key, double scale, double offset)
{
    options->SetL10n(key, scale, offset);
}

void vcIResultsExporterOptionsGetL10n(IResultsExporterOptions* options, int key, double* scale,
                                      double* offset)
{
    options->GetL10n(key, *scale, *offset);
}

void vcIResultsExporterOptionsSetPrecision(IResultsExporterOptions* options, int digits)
{
    options->SetPrecision(digits);
}

int vcIResultsExporterOptionsGetPrecision(IResultsExporterOptions* options)
{
    return options->GetPrecision();
}

}  // extern "C"
