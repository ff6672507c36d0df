// interface_tables.h: the interface tables as hosts compiled against them know them, written out by hand.
//
// Under the Itanium C++ ABI an object begins with the address of its table, a table is an array of function addresses
// in order of declaration, and a virtual operation takes its object as first argument; a virtual destructor takes two
// entries, the second of which frees the object too.
#pragma once

#include <cstddef>
#include <string>

#include "tavell/TavellFlat.h"

struct TavellTable {
    void (*Release)(vcITavell*);
    vcICircuit* (*CreateCircuit)(vcITavell*);
    std::size_t (*GetNoCircuits)(vcITavell*);
    vcICircuit* (*GetCircuit)(vcITavell*, std::size_t);
    bool (*ReleaseCircuit)(vcITavell*, vcICircuit*);
    void (*ReleaseAllCircuits)(vcITavell*);
    void (*Solve)(vcITavell*, bool, bool, bool (*)());
    void (*MergeCircuits)(vcITavell*);
    void (*ValidateCircuits)(vcITavell*);
    vcICircuit* (*FindParentCircuitFromNode)(vcITavell*, vcINode*);
    vcICircuit* (*FindParentCircuitFromElement)(vcITavell*, vcIElement*);
    void (*completeDestructor)(vcITavell*);
    void (*deletingDestructor)(vcITavell*);
};

struct CircuitTable {
    vcIFluid* (*GetFluid)(vcICircuit*);
    const vcIFluid* (*GetConstFluid)(const vcICircuit*);
    void (*GetGravity)(vcICircuit*, double*, double*, double*);
    void (*SetGravity)(vcICircuit*, double, double, double);
    vcINode* (*CreateNode)(vcICircuit*);
    bool (*ReleaseNode)(vcICircuit*, vcINode*);
    vcIElement* (*CreateEmptyElement)(vcICircuit*);
    vcIElement* (*CreateElement)(vcICircuit*, vcINode*, vcINode*, double, double, double, int, double);
    vcIElement* (*CreateNonRoundElement)(vcICircuit*, vcINode*, vcINode*, double, double, double, int,
                                         double);
    vcIElement* (*CreatePump)(vcICircuit*, vcINode*, vcINode*, const double*, const double*, int, double, int,
                              double);
    vcIElement* (*CreateLoss)(vcICircuit*, vcINode*, vcINode*, const double*, const double*, int, double, int,
                              double);
    bool (*ReleaseElement)(vcICircuit*, vcIElement*);
    int (*IsValid)(vcICircuit*);
    bool (*IsSuitableForAnalysis)(vcICircuit*);
    bool (*Validate)(vcICircuit*);
    bool (*Solve)(vcICircuit*, bool, bool (*)());
    vcIResultsSet* (*GetResults)(vcICircuit*, int);
    vcIResultsExporterOptions* (*GetResultsExporterOptions)(vcICircuit*);
    const char* (*ExportResults)(vcICircuit*);
    vcIFeedbackCollection* (*GetFeedback)(vcICircuit*);
    std::size_t (*GetNoElements)(vcICircuit*);
    vcIElement* (*GetElement)(vcICircuit*, std::size_t);
    std::size_t (*GetNoNodes)(vcICircuit*);
    vcINode* (*GetNode)(vcICircuit*, std::size_t);
    vcINode* (*GetElementNode)(vcICircuit*, vcIElement*, std::size_t);
    vcINode* (*GetNodeById)(vcICircuit*, int);
    vcIEntity* (*GetEntity)(vcICircuit*);
    const vcIEntity* (*GetEntityConst)(const vcICircuit*);
    void (*SetSolveLogFile)(vcICircuit*, const char*);
    bool (*GetDisconnectedElements)(vcICircuit*, vcIElement**, int, int*);
    bool (*GetCheckNodeIdTaken)(vcICircuit*);
    void (*SetCheckNodeIdTaken)(vcICircuit*, bool);
    bool (*GetCheckDuplicateElementAtNodes)(vcICircuit*);
    void (*SetCheckDuplicateElementAtNodes)(vcICircuit*, bool);
    std::string (*TimeStamp)(vcICircuit*);  // the circuit's own, after the 34 operations of the interface
};

struct NodeTable {
    int (*GetId)(vcINode*);
    void (*GetLocation)(vcINode*, double*, double*, double*);
    void (*SetLocation)(vcINode*, double, double, double);
    void (*SetType)(vcINode*, int);
    int (*GetType)(vcINode*);
    void (*SetConstraint)(vcINode*, int, double);
    int (*GetConstraint)(vcINode*);
    vcIEntity* (*GetEntity)(vcINode*);
    const vcIEntity* (*GetEntityConst)(const vcINode*);
};

struct ElementTable {
    int (*GetId)(vcIElement*);
    int (*GetType)(vcIElement*);
    void (*SetType)(vcIElement*, int);
    int (*GetStartNodeId)(vcIElement*);
    int (*GetEndNodeId)(vcIElement*);
    void (*SwapNodes)(vcIElement*);
    bool (*UpdateCurveData)(vcIElement*, int, const double*, const double*, int, double);
    bool (*GetCurveData)(vcIElement*, double*, double*, double*, int, int*);
    vcIEntity* (*GetEntity)(vcIElement*);
    const vcIEntity* (*GetEntityConst)(const vcIElement*);
};

struct EntityTable {
    void (*SetMeta)(vcIEntity*, const char*);
    const char* (*GetMeta)(vcIEntity*);
    bool (*SetProperty)(vcIEntity*, int, double);
    bool (*SetPropertyByName)(vcIEntity*, const char*, double);
    bool (*HasProperty)(vcIEntity*, int);
    bool (*GetProperty)(vcIEntity*, int, double*);
    bool (*RemoveProperty)(vcIEntity*, int);
    vcIPropertySet* (*GetProperties)(vcIEntity*);
    vcIPropertySet* (*GetWriteableProperties)(vcIEntity*);
};

struct PropertySetTable {
    const char* (*GetMeta)(vcIPropertySet*);
    int (*GetSize)(vcIPropertySet*);
    int (*GetProp)(vcIPropertySet*, std::size_t);
    double (*GetValue)(vcIPropertySet*, std::size_t);
    const char* (*GetName)(vcIPropertySet*, std::size_t);
    const char* (*GetStringValue)(vcIPropertySet*, std::size_t);
    int (*GetIndex)(vcIPropertySet*, int);
    bool (*SetStringPropertyByName)(vcIPropertySet*, const char*, const char*);
};

struct FluidTable {
    vcIEntity* (*GetEntity)(vcIFluid*);
    const vcIEntity* (*GetEntityConst)(const vcIFluid*);
    const char* (*GetUIName)(vcIFluid*);
    void (*SetUIName)(vcIFluid*, const char*);
    bool (*SetFluidProperty)(vcIFluid*, int,
                             float);  // the fluid's own, after the operations of the interface
};

struct FeedbackCollectionTable {
    std::size_t (*GetSize)(vcIFeedbackCollection*);
    vcIFeedback* (*GetFeedback)(vcIFeedbackCollection*, std::size_t);
};

struct FeedbackTable {
    int (*GetId)(vcIFeedback*);
    std::size_t (*GetValueSize)(vcIFeedback*);
    const double* (*GetValues)(vcIFeedback*);
};

struct ResultsSetTable {
    std::size_t (*GetSize)(vcIResultsSet*);
    const int* (*GetIds)(vcIResultsSet*);
    const double* (*GetValues)(vcIResultsSet*);
    const double* (*GetL10NValues)(vcIResultsSet*, double, double);
    bool (*IsNodal)(vcIResultsSet*);
};

struct ResultsExporterOptionsTable {
    void (*SetFormat)(vcIResultsExporterOptions*, int);
    int (*GetFormat)(vcIResultsExporterOptions*);
    void (*SetNodeLabel)(vcIResultsExporterOptions*, const char*);
    const char* (*GetNodeLabel)(vcIResultsExporterOptions*);
    void (*SetElementLabel)(vcIResultsExporterOptions*, const char*);
    const char* (*GetElementLabel)(vcIResultsExporterOptions*);
    void (*SetResultLabel)(vcIResultsExporterOptions*, int, const char*);
    const char* (*GetResultLabel)(vcIResultsExporterOptions*, int);
    void (*SetL10n)(vcIResultsExporterOptions*, int, double, double);
    void (*GetL10n)(vcIResultsExporterOptions*, int, double&, double&);
    void (*SetPrecision)(vcIResultsExporterOptions*, int);
    int (*GetPrecision)(vcIResultsExporterOptions*);
};

/// The table of a live object; Table is the one of the interface that the pointer is of.
template <typename Table, typename Interface> const Table& tableOf(Interface* object)
{
    return **reinterpret_cast<const Table* const*>(object);
}
