// flat_prototypes.h: every flat function with its type, written out by hand in the order of the interfaces and slots.
//
// A size index or count and a bool are ints; sizes that are returned are size_t; everything else is as in the interface.
// TAVELL_FLAT_FUNCTIONS(X) expands X(name, type) for each function.
#pragma once

#include "tavell/TavellFlat.h"

// clang-format off
#define TAVELL_FLAT_FUNCTIONS(X) \
    X(vcCreateTavell, vcITavell*()) \
    X(vcGetBuildDetails, void(bool, int*, int*, int*, int*, int*, int*, int*, int*, int*, int*, \
                              int*, int*, int*, int*, int*, int*, int*, int*, int*)) \
    \
    X(vcITavellRelease, void(vcITavell*)) \
    X(vcITavellCreateCircuit, vcICircuit*(vcITavell*)) \
    X(vcITavellGetNoCircuits, size_t(vcITavell*)) \
    X(vcITavellGetCircuit, vcICircuit*(vcITavell*, int)) \
    X(vcITavellReleaseCircuit, int(vcITavell*, vcICircuit*)) \
    X(vcITavellReleaseAllCircuits, void(vcITavell*)) \
    X(vcITavellSolve, void(vcITavell*, int, int, bool (*)())) \
    X(vcITavellMergeCircuits, void(vcITavell*)) \
    X(vcITavellValidateCircuits, void(vcITavell*)) \
    X(vcITavellFindParentCircuitFromNode, vcICircuit*(vcITavell*, vcINode*)) \
    X(vcITavellFindParentCircuitFromElement, vcICircuit*(vcITavell*, vcIElement*)) \
    \
    X(vcICircuitGetFluid, vcIFluid*(vcICircuit*)) \
    X(vcICircuitGetConstFluid, const vcIFluid*(vcICircuit*)) \
    X(vcICircuitGetGravity, void(vcICircuit*, double*, double*, double*)) \
    X(vcICircuitSetGravity, void(vcICircuit*, double, double, double)) \
    X(vcICircuitCreateNode, vcINode*(vcICircuit*)) \
    X(vcICircuitReleaseNode, int(vcICircuit*, vcINode*)) \
    X(vcICircuitCreateEmptyElement, vcIElement*(vcICircuit*)) \
    X(vcICircuitCreateElement, \
      vcIElement*(vcICircuit*, vcINode*, vcINode*, double, double, double, int, double)) \
    X(vcICircuitCreateNonRoundElement, \
      vcIElement*(vcICircuit*, vcINode*, vcINode*, double, double, double, int, double)) \
    X(vcICircuitCreatePump, vcIElement*(vcICircuit*, vcINode*, vcINode*, const double*, const double*, int, \
                                        double, int, double)) \
    X(vcICircuitCreateLoss, vcIElement*(vcICircuit*, vcINode*, vcINode*, const double*, const double*, int, \
                                        double, int, double)) \
    X(vcICircuitReleaseElement, int(vcICircuit*, vcIElement*)) \
    X(vcICircuitIsValid, int(vcICircuit*)) \
    X(vcICircuitIsSuitableForAnalysis, int(vcICircuit*)) \
    X(vcICircuitValidate, int(vcICircuit*)) \
    X(vcICircuitSolve, int(vcICircuit*, int, bool (*)())) \
    X(vcICircuitGetResults, vcIResultsSet*(vcICircuit*, int)) \
    X(vcICircuitGetResultsExporterOptions, vcIResultsExporterOptions*(vcICircuit*)) \
    X(vcICircuitExportResults, const char*(vcICircuit*)) \
    X(vcICircuitGetFeedback, vcIFeedbackCollection*(vcICircuit*)) \
    X(vcICircuitGetNoElements, size_t(vcICircuit*)) \
    X(vcICircuitGetElement, vcIElement*(vcICircuit*, int)) \
    X(vcICircuitGetNoNodes, size_t(vcICircuit*)) \
    X(vcICircuitGetNode, vcINode*(vcICircuit*, int)) \
    X(vcICircuitGetElementNode, vcINode*(vcICircuit*, vcIElement*, int)) \
    X(vcICircuitGetNodeById, vcINode*(vcICircuit*, int)) \
    X(vcICircuitGetEntity, vcIEntity*(vcICircuit*)) \
    X(vcICircuitGetEntityConst, const vcIEntity*(vcICircuit*)) \
    X(vcICircuitSetSolveLogFile, void(vcICircuit*, const char*)) \
    X(vcICircuitGetDisconnectedElements, int(vcICircuit*, vcIElement**, int, int*)) \
    X(vcICircuitGetCheckNodeIdTaken, int(vcICircuit*)) \
    X(vcICircuitSetCheckNodeIdTaken, void(vcICircuit*, int)) \
    X(vcICircuitGetCheckDuplicateElementAtNodes, int(vcICircuit*)) \
    X(vcICircuitSetCheckDuplicateElementAtNodes, void(vcICircuit*, int)) \
    \
    X(vcINodeGetId, int(vcINode*)) \
    X(vcINodeGetLocation, void(vcINode*, double*, double*, double*)) \
    X(vcINodeSetLocation, void(vcINode*, double, double, double)) \
    X(vcINodeSetType, void(vcINode*, int)) \
    X(vcINodeGetType, int(vcINode*)) \
    X(vcINodeSetConstraint, void(vcINode*, int, double)) \
    X(vcINodeGetConstraint, int(vcINode*)) \
    X(vcINodeGetEntity, vcIEntity*(vcINode*)) \
    X(vcINodeGetEntityConst, const vcIEntity*(vcINode*)) \
    \
    X(vcIElementGetId, int(vcIElement*)) \
    X(vcIElementGetType, int(vcIElement*)) \
    X(vcIElementSetType, void(vcIElement*, int)) \
    X(vcIElementGetStartNodeId, int(vcIElement*)) \
    X(vcIElementGetEndNodeId, int(vcIElement*)) \
    X(vcIElementSwapNodes, void(vcIElement*)) \
    X(vcIElementUpdateCurveData, int(vcIElement*, int, const double*, const double*, int, double)) \
    X(vcIElementGetCurveData, int(vcIElement*, double*, double*, double*, int, int*)) \
    X(vcIElementGetEntity, vcIEntity*(vcIElement*)) \
    X(vcIElementGetEntityConst, const vcIEntity*(vcIElement*)) \
    \
    X(vcIEntitySetMeta, void(vcIEntity*, const char*)) \
    X(vcIEntityGetMeta, const char*(vcIEntity*)) \
    X(vcIEntitySetProperty, int(vcIEntity*, int, double)) \
    X(vcIEntitySetPropertyByName, int(vcIEntity*, const char*, double)) \
    X(vcIEntityHasProperty, int(vcIEntity*, int)) \
    X(vcIEntityGetProperty, int(vcIEntity*, int, double*)) \
    X(vcIEntityRemoveProperty, int(vcIEntity*, int)) \
    X(vcIEntityGetProperties, vcIPropertySet*(vcIEntity*)) \
    X(vcIEntityGetWriteableProperties, vcIPropertySet*(vcIEntity*)) \
    \
    X(vcIPropertySetGetMeta, const char*(vcIPropertySet*)) \
    X(vcIPropertySetGetSize, int(vcIPropertySet*)) \
    X(vcIPropertySetGetProp, int(vcIPropertySet*, int)) \
    X(vcIPropertySetGetValue, double(vcIPropertySet*, int)) \
    X(vcIPropertySetGetName, const char*(vcIPropertySet*, int)) \
    X(vcIPropertySetGetStringValue, const char*(vcIPropertySet*, int)) \
    X(vcIPropertySetGetIndex, int(vcIPropertySet*, int)) \
    X(vcIPropertySetSetStringPropertyByName, int(vcIPropertySet*, const char*, const char*)) \
    \
    X(vcIFluidGetEntity, vcIEntity*(vcIFluid*)) \
    X(vcIFluidGetEntityConst, const vcIEntity*(vcIFluid*)) \
    X(vcIFluidGetUIName, const char*(vcIFluid*)) \
    X(vcIFluidSetUIName, void(vcIFluid*, const char*)) \
    \
    X(vcIFeedbackCollectionGetSize, size_t(vcIFeedbackCollection*)) \
    X(vcIFeedbackCollectionGetFeedback, vcIFeedback*(vcIFeedbackCollection*, int)) \
    \
    X(vcIFeedbackGetId, int(vcIFeedback*)) \
    X(vcIFeedbackGetValueSize, size_t(vcIFeedback*)) \
    X(vcIFeedbackGetValues, const double*(vcIFeedback*)) \
    \
    X(vcIResultsSetGetSize, size_t(vcIResultsSet*)) \
    X(vcIResultsSetGetIds, const int*(vcIResultsSet*)) \
    X(vcIResultsSetGetValues, const double*(vcIResultsSet*)) \
    X(vcIResultsSetGetL10NValues, const double*(vcIResultsSet*, double, double)) \
    X(vcIResultsSetIsNodal, int(vcIResultsSet*)) \
    \
    X(vcIResultsExporterOptionsSetFormat, void(vcIResultsExporterOptions*, int)) \
    X(vcIResultsExporterOptionsGetFormat, int(vcIResultsExporterOptions*)) \
    X(vcIResultsExporterOptionsSetNodeLabel, void(vcIResultsExporterOptions*, const char*)) \
    X(vcIResultsExporterOptionsGetNodeLabel, const char*(vcIResultsExporterOptions*)) \
    X(vcIResultsExporterOptionsSetElementLabel, void(vcIResultsExporterOptions*, const char*)) \
    X(vcIResultsExporterOptionsGetElementLabel, const char*(vcIResultsExporterOptions*)) \
    X(vcIResultsExporterOptionsSetResultLabel, void(vcIResultsExporterOptions*, int, const char*)) \
    X(vcIResultsExporterOptionsGetResultLabel, const char*(vcIResultsExporterOptions*, int)) \
    X(vcIResultsExporterOptionsSetL10n, void(vcIResultsExporterOptions*, int, double, double)) \
    X(vcIResultsExporterOptionsGetL10n, void(vcIResultsExporterOptions*, int, double*, double*)) \
    X(vcIResultsExporterOptionsSetPrecision, void(vcIResultsExporterOptions*, int)) \
    X(vcIResultsExporterOptionsGetPrecision, int(vcIResultsExporterOptions*))
// clang-format on
