/* tavellkit.h: networks from files, their solution, its certificate, reports and exports, for C99 and C++.
 *
 * Objects. A handle (tvkNetwork, tvkResult, tvkFindings) is opaque. A function that makes one writes it
 * through its pointer argument when it succeeds and writes null when it fails. Whoever received a handle
 * gives it back with the matching tvkFree function, which takes null too.
 *
 * Errors are values. A function that can fail returns a tvkStatus and appends what there is to say to
 * `findings`, which may be null everywhere. No function lets a C++ exception out. A null handle or a null
 * pointer that is no optional argument is refused with TVK_BAD_INPUT. A function that fails leaves its
 * objects as they were.
 *
 * Texts are UTF-8 and end with a zero byte. A `const char*` result belongs to the object that it was asked
 * of and is valid until that object is changed or freed. A text written through a `char**` argument belongs
 * to the caller, who gives it back with tvkFreeText.
 *
 * Units are SI: m, m2, m3/s, kg/s, Pa, m/s, K, W. Positions of nodes and elements count from 0 in the order
 * of the network. A quantity that is not defined for an object is NaN; a NaN that is set takes an optional
 * value away.
 *
 * Options are a JSON object as text, null or "" for none. An unknown key, a wrong type and a value out of
 * range are findings with the code "bad-option" and make the call fail with TVK_BAD_INPUT.
 *
 * Threads. Different handles may be used on different threads at the same time. One handle is used by one
 * thread at a time, except that functions that take it as const may run on several threads at once.
 * A handle belongs to no thread: it may be made on one, used on a second and freed on a third, when a lock or
 * the joining of a thread orders these calls. A progress function is called on the thread of the call that it
 * was given to, and stops that call alone. There is no state outside the handles: no answer depends on what
 * other threads do, on the locale or on what was called before. When several calls write the same path at the
 * same time, the file is that of one of them, whole. The variables TAVELL_* are read by each call that heeds
 * them; the environment may be changed between calls, while no thread is in the kit.
 */
#ifndef TAVELLKIT_H
#define TAVELLKIT_H

#include <stddef.h>

#if defined(TAVELLKIT_STATIC)
#define TVK_API
#elif defined(_WIN32)
#if defined(TAVELLKIT_BUILDING)
#define TVK_API __declspec(dllexport)
#else
#define TVK_API __declspec(dllimport)
#endif
#else
#define TVK_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct tvkNetwork tvkNetwork;
typedef struct tvkResult tvkResult;
typedef struct tvkFindings tvkFindings;

/** What became of a call. */
typedef enum tvkStatus {
    TVK_OK = 0,            /* done */
    TVK_NOT_CONVERGED = 1, /* a solve ended without a solution, or a check did not hold */
    TVK_BAD_INPUT = 2,     /* a file, a network, an option or an argument cannot be used */
    TVK_INTERNAL = 3,      /* memory ran out, or a defect of the kit */
    TVK_CANCELLED = 4      /* the progress function asked to stop */
} tvkStatus;

/** How much a finding weighs. */
typedef enum tvkSeverity { TVK_ERROR = 0, TVK_WARNING = 1, TVK_REMARK = 2 } tvkSeverity;

/** The position of what is not there. */
#define TVK_NO_POSITION ((size_t)-1)

/** Called once a step of a solve, on the thread of the call; step counts from 1. A step is an iteration or, in
 * networks of some hundred nodes and more, a round of the search for the values to start from. A result other
 * than 0 asks to stop. It must not throw and not jump out. */
typedef int (*tvkProgress)(void* user, int step);

/** The version of the kit, such as "0.1.0". Never null. */
TVK_API const char* tvkVersion(void);

/** Gives back a text that a function wrote through a char**. Null is allowed. */
TVK_API void tvkFreeText(char* text);

/* Findings: what is wrong, doubtful or worth knowing */

/** A new, empty list; null when memory ran out. */
TVK_API tvkFindings* tvkNewFindings(void);
TVK_API void tvkFreeFindings(tvkFindings* findings);
/** Takes everything out of a list. */
TVK_API void tvkClearFindings(tvkFindings* findings);
/** Appends the findings of another list. */
TVK_API tvkStatus tvkAppendFindings(tvkFindings* findings, const tvkFindings* others);

/** Number of findings that are kept: of one code the first 1000, further ones are counted in the text. 0 for
 * null. */
TVK_API size_t tvkFindingsCount(const tvkFindings* findings);
/** Number of findings of a tvkSeverity that were made, those that are not kept included. 0 for null. */
TVK_API size_t tvkFindingsCountOf(const tvkFindings* findings, int severity);
/** All findings as text, one line each: "FILE:LINE: POINTER (OBJECT): message; remedy [code]". */
TVK_API tvkStatus tvkFindingsText(const tvkFindings* findings, char** text);
/** All findings as a JSON array of objects with code, severity, file, line, column, pointer, object, objects,
 * message, remedy and numbers (each with name, value, unit). */
TVK_API tvkStatus tvkFindingsJson(const tvkFindings* findings, char** text);

/* One finding, by its position. Texts that do not apply are "", numbers 0; so is everything of a position
 * that is out of range. */

/** Stable name of what was found, such as "unknown-key"; docs/messages has a page for each. */
TVK_API const char* tvkFindingCode(const tvkFindings* findings, size_t position);
/** A tvkSeverity. */
TVK_API int tvkFindingSeverity(const tvkFindings* findings, size_t position);
/** One sentence: what is so, with the value; no full stop. */
TVK_API const char* tvkFindingMessage(const tvkFindings* findings, size_t position);
/** What to do about it. */
TVK_API const char* tvkFindingRemedy(const tvkFindings* findings, size_t position);
TVK_API const char* tvkFindingFile(const tvkFindings* findings, size_t position);
/** From 1; 0 when there is none. */
TVK_API size_t tvkFindingLine(const tvkFindings* findings, size_t position);
TVK_API size_t tvkFindingColumn(const tvkFindings* findings, size_t position);
/** JSON pointer (RFC 6901) into the file, or the section of a file of another format: "[PUMPS]". */
TVK_API const char* tvkFindingPointer(const tvkFindings* findings, size_t position);
/** Kind and name of the object: "node tap 3", "element pipe 7". */
TVK_API const char* tvkFindingObject(const tvkFindings* findings, size_t position);
/** All objects concerned, each with its kind in front. */
TVK_API size_t tvkFindingObjectCount(const tvkFindings* findings, size_t position);
TVK_API const char* tvkFindingObjectAt(const tvkFindings* findings, size_t position, size_t object);
/** The numbers of a finding: name such as "velocity", value, unit such as "m/s". */
TVK_API size_t tvkFindingNumberCount(const tvkFindings* findings, size_t position);
TVK_API const char* tvkFindingNumberName(const tvkFindings* findings, size_t position, size_t number);
TVK_API double tvkFindingNumberValue(const tvkFindings* findings, size_t position, size_t number);
TVK_API const char* tvkFindingNumberUnit(const tvkFindings* findings, size_t position, size_t number);

/* Networks: in and out */

/** An empty network: standard gravity along -z, the library's water, no nodes. */
TVK_API tvkStatus tvkNewNetwork(tvkNetwork** network, tvkFindings* findings);
TVK_API void tvkFreeNetwork(tvkNetwork* network);
/** A network of its own with the same content. */
TVK_API tvkStatus tvkCopyNetwork(const tvkNetwork* network, tvkNetwork** copy, tvkFindings* findings);

/** Reads a network by the ending of its name: "*.inp" is imported as by tvkImportInp without options,
 * "NODES.csv,ELEMENTS.csv" is a pair of tables, everything else is a network file (JSON). Everything that is
 * wrong is found, not the first thing only. */
TVK_API tvkStatus tvkReadNetwork(const char* path, tvkNetwork** network, tvkFindings* findings);
/** Reads a network as tvkReadNetwork does and examines it as tvkExamine does: also one that is not given out, as
 * far as its errors leave its nodes and elements their meaning, so that all there is to say is in one list.
 * options are those of tvkImportInp, for "*.inp"; may be null. */
TVK_API tvkStatus tvkReadAndExamine(const char* path, const char* options, tvkNetwork** network,
                                    tvkFindings* findings);
/** A network file that is in memory. name stands for the file in findings; it may be null. */
TVK_API tvkStatus tvkReadNetworkText(const char* text, size_t size, const char* name, tvkNetwork** network,
                                     tvkFindings* findings);
/** Reads an EPANET input file. What cannot be carried over is listed in findings (warnings and remarks) with
 * line, section and what was done; the network is made all the same unless there are errors. Options:
 * "time": [s] or "HH:MM", when demands and patterns are taken; "freeze_valves": true to keep pressure valves
 * as they stand. */
TVK_API tvkStatus tvkImportInp(const char* path, const char* options, tvkNetwork** network,
                               tvkFindings* findings);
/** Reads a pair of tables (docs/network-file.md). */
TVK_API tvkStatus tvkReadCsv(const char* nodesPath, const char* elementsPath, tvkNetwork** network,
                             tvkFindings* findings);

/** Writes the canonical network file, as a whole or not at all. */
TVK_API tvkStatus tvkWriteNetwork(const tvkNetwork* network, const char* path, tvkFindings* findings);
/** The canonical network file as text: stable order, shortest numbers that read back as the same. */
TVK_API tvkStatus tvkNetworkText(const tvkNetwork* network, char** text, tvkFindings* findings);
/** Writes the pair of tables. What they cannot hold is found as warnings. */
TVK_API tvkStatus tvkWriteCsv(const tvkNetwork* network, const char* nodesPath, const char* elementsPath,
                              tvkFindings* findings);
/** SHA-256 of everything that the answer depends on, 64 hexadecimal digits. */
TVK_API tvkStatus tvkNetworkHash(const tvkNetwork* network, char** text, tvkFindings* findings);

/** Number of scenarios, and their names in alphabetical order; null when out of range. */
TVK_API size_t tvkScenarioCount(const tvkNetwork* network);
TVK_API const char* tvkScenarioName(const tvkNetwork* network, size_t position);
/** The network with the patches of one of its scenarios. */
TVK_API tvkStatus tvkNetworkScenario(const tvkNetwork* network, const char* name, tvkNetwork** scenario,
                                     tvkFindings* findings);
/** Changes a network by a JSON object in the form of a scenario, for what has no function of its own: fluid,
 * settings, gravity, materials of elements ... {"settings": {"temperatures": true}, "nodes": {"tap":
 * {"outlet": {"mass_flow": 0.1}}}}. Objects are merged, null removes a key. */
TVK_API tvkStatus tvkPatchNetwork(tvkNetwork* network, const char* patch, tvkFindings* findings);

/* Networks: nodes and elements */

/** 0 for null. */
TVK_API size_t tvkNodeCount(const tvkNetwork* network);
TVK_API size_t tvkElementCount(const tvkNetwork* network);
/** All names, as many as there are nodes or elements; null when there are none. */
TVK_API const char* const* tvkNodeNames(const tvkNetwork* network);
TVK_API const char* const* tvkElementNames(const tvkNetwork* network);
/** Positions of many names at once. A name that there is none of gives TVK_NO_POSITION, a finding and
 * TVK_BAD_INPUT; the others are found all the same. */
TVK_API tvkStatus tvkFindNodes(const tvkNetwork* network, size_t count, const char* const* names,
                               size_t* positions, tvkFindings* findings);
TVK_API tvkStatus tvkFindElements(const tvkNetwork* network, size_t count, const char* const* names,
                                  size_t* positions, tvkFindings* findings);
/** Positions of the start and end nodes of all elements. */
TVK_API tvkStatus tvkElementEnds(const tvkNetwork* network, size_t* from, size_t* to, tvkFindings* findings);
/** The type of an element as in the network file: "pipe"; null when out of range. */
TVK_API const char* tvkElementType(const tvkNetwork* network, size_t position);
/** The types of all elements; null when there are none. */
TVK_API const char* const* tvkElementTypes(const tvkNetwork* network);

/** Appends nodes. coordinates: x, y, z [m] of the first node, then of the second ...; null for zeros. All or
 * none. */
TVK_API tvkStatus tvkAddNodes(tvkNetwork* network, size_t count, const char* const* names,
                              const double* coordinates, tvkFindings* findings);
/** Appends elements. types: as in the network file, "pipe", "pump" ...; from, to: positions of their nodes.
 * All or none. Their sizes are set with tvkSetElementValues, curves with tvkSetCurve. */
TVK_API tvkStatus tvkAddElements(tvkNetwork* network, size_t count, const char* const* names,
                                 const char* const* types, const size_t* from, const size_t* to,
                                 tvkFindings* findings);

/** Sets one property of many nodes, all or none. positions may be null for the first count nodes. Keys: "x",
 * "y", "z" [m]; of a boundary "inlet/pressure", "inlet/mass_flow", "inlet/volume_flow", "inlet/reynolds",
 * "inlet/velocity", "inlet/temperature", and the same with "outlet/". A flow replaces a flow that was given
 * otherwise; setting a value of an outlet at an inlet makes it an outlet. A boundary whose last value is
 * taken away with NaN is gone. Values are checked one by one here and as a whole when the network is used. */
TVK_API tvkStatus tvkSetNodeValues(tvkNetwork* network, const char* key, size_t count,
                                   const size_t* positions, const double* values, tvkFindings* findings);
/** The same the other way; NaN where nothing is given. */
TVK_API tvkStatus tvkGetNodeValues(const tvkNetwork* network, const char* key, size_t count,
                                   const size_t* positions, double* values, tvkFindings* findings);
/** Sets one property of many elements, all or none. positions may be null for the first count elements. Keys:
 * "diameter", "wetted_perimeter" [m], "area" [m2], "length" [m], "closed", "check_valve" (0 or 1),
 * "reference_density" [kg/m3] and the numbers of the element's type as in the network file ("roughness" [m],
 * "k", "kv" ...). A diameter makes a round section with its area; a wetted perimeter another one, whose area
 * is set next. */
TVK_API tvkStatus tvkSetElementValues(tvkNetwork* network, const char* key, size_t count,
                                      const size_t* positions, const double* values, tvkFindings* findings);
TVK_API tvkStatus tvkGetElementValues(const tvkNetwork* network, const char* key, size_t count,
                                      const size_t* positions, double* values, tvkFindings* findings);
/** Gives a pump or a loss its curve: volume flows [m3/s] in rising order and pressure rises or drops [Pa]. */
TVK_API tvkStatus tvkSetCurve(tvkNetwork* network, size_t element, size_t count, const double* volumeFlows,
                              const double* pressures, tvkFindings* findings);

/* Solving */

/** Solves a network. TVK_OK: it converged; TVK_NOT_CONVERGED and TVK_CANCELLED: it did not, and findings say
 * why. In these three cases *result is a result, otherwise null. progress may be null. The result keeps what
 * it needs of the network: the network may be changed or freed. Options: "scenario": a name; "temperatures":
 * true to solve temperatures too. */
TVK_API tvkStatus tvkSolve(const tvkNetwork* network, const char* options, tvkProgress progress, void* user,
                           tvkResult** result, tvkFindings* findings);
TVK_API void tvkFreeResult(tvkResult* result);

/** A tvkStatus: TVK_OK, TVK_NOT_CONVERGED or TVK_CANCELLED; TVK_BAD_INPUT for null. */
TVK_API int tvkResultOutcome(const tvkResult* result);
/** The steps of the solve, as tvkProgress counts them; 0 for null. */
TVK_API int tvkResultIterations(const tvkResult* result);
/** 1 when there are values: a solve that did not converge may have none. */
TVK_API int tvkResultHasValues(const tvkResult* result);
/** The network that was solved, with its scenario, as a network of its own. */
TVK_API tvkStatus tvkResultNetwork(const tvkResult* result, tvkNetwork** network, tvkFindings* findings);

/** One quantity of all nodes, as many as the network has: "pressure" [Pa] static, "head" [m], "temperature"
 * [K], "external_mass_flow" [kg/s] > 0 into the network, "mass_residual" [kg/s] that which does not balance.
 * The array belongs to the result. Null for an unknown quantity and when there are no values. */
TVK_API const double* tvkNodeResults(const tvkResult* result, const char* quantity);
/** One quantity of all elements: "mass_flow" [kg/s] > 0 from start to end, "volume_flow" [m3/s], "velocity"
 * [m/s], "reynolds", "pressure_difference" [Pa] end minus start, "temperature" [K]; the parts of that
 * difference "friction", "minor", "height", "pump" and "other" [Pa] (docs/certificate.md); "law_mismatch"
 * [Pa], NaN where it is not checked. */
TVK_API const double* tvkElementResults(const tvkResult* result, const char* quantity);
/** The same copied to memory of the caller with room for capacity numbers, which must be enough for all. */
TVK_API tvkStatus tvkCopyNodeResults(const tvkResult* result, const char* quantity, double* values,
                                     size_t capacity, tvkFindings* findings);
TVK_API tvkStatus tvkCopyElementResults(const tvkResult* result, const char* quantity, double* values,
                                        size_t capacity, tvkFindings* findings);

/** The certificate of a result (docs/certificate.md): the check of the returned numbers by themselves.
 * format: "text" or "json". */
TVK_API tvkStatus tvkCertificate(const tvkResult* result, const char* format, char** text,
                                 tvkFindings* findings);
/** 1 when the certificate's limits are met. */
TVK_API int tvkCertificateIsGood(const tvkResult* result);

/** Tables of a result. format: "text", "csv" or "json". units: a set such as "si", "metric" or "us", single
 * units such as "pressure=bar,length=ft", or both; null or "" for those of the network file, SI without. */
TVK_API tvkStatus tvkResultTables(const tvkResult* result, const char* format, const char* units, char** text,
                                  tvkFindings* findings);
/** The short exchange form of a result: comma-separated, elements then nodes, numbered from 1, SI units. */
TVK_API tvkStatus tvkResultExchangeCsv(const tvkResult* result, char** text, tvkFindings* findings);

/** The result file: network, numbers and certificate (docs/result-file.md). */
TVK_API tvkStatus tvkResultText(const tvkResult* result, char** text, tvkFindings* findings);
TVK_API tvkStatus tvkWriteResult(const tvkResult* result, const char* path, tvkFindings* findings);
TVK_API tvkStatus tvkReadResult(const char* path, tvkResult** result, tvkFindings* findings);

/* Studies: one network solved many times with other values */

/** What a number of a study belongs to. */
typedef enum tvkPart { TVK_NODE = 0, TVK_ELEMENT = 1, TVK_NETWORK = 2 } tvkPart;

/** A number that differs between the scenarios of a study. */
typedef struct tvkInput {
    int part; /* a tvkPart */
    /* Of a node or an element: as for tvkSetNodeValues and tvkSetElementValues. Of the network: a JSON pointer
     * (RFC 6901) into an object in the form of a scenario, in SI units: "/fluid/temperature", "/gravity/2",
     * "/settings/pressure_datum", "/elements/pump 1/curve/0/1", "/nodes/tap/outlet/mass_flow". */
    const char* key;
    size_t position; /* of the node or element; 0 for the network */
} tvkInput;

/** A number that is kept of each scenario. */
typedef struct tvkOutput {
    int part; /* a tvkPart */
    /* Of a node or an element: as for tvkNodeResults and tvkElementResults. With "min:", "max:", "max_abs:",
     * "sum:" or "mean:" in front that of all nodes or of all elements together; with "argmin:", "argmax:" or
     * "argmax_abs:" the position where that value is, the first of equal ones. What is NaN is passed over. Of
     * the network: "certificate", 1 when its limits are met, else 0, and "iterations". */
    const char* quantity;
    size_t position; /* of the node or element; 0 for all together and for the network */
} tvkOutput;

/** Solves a network many times, on several threads. values: one row of inputCount numbers for each scenario;
 * NaN leaves what the network has. Every scenario starts from the network as it is and is checked and solved
 * as by tvkSolve, without the scenarios that the network holds by name: its numbers do not depend on the others,
 * on the number of threads or on how many scenarios a call has. Of one scenario the inputs are set key by key, in the order in which the keys come first.
 *
 * results: one row of outputCount numbers for each scenario, NaN where there are none. outcomes: a tvkStatus
 * each. iterations: the steps of each solve. texts: the findings of each scenario that is not TVK_OK, as
 * tvkFindingsJson has them, each to be freed with tvkFreeText; null for the others and for those that were not
 * begun. outcomes, iterations and texts may be null.
 *
 * progress is called on the thread of the call with the number of scenarios that are done: first with 0, from
 * time to time, and at last with all of them. TVK_OK: all were tried, whatever came of each. TVK_CANCELLED:
 * progress asked to stop; what is done is there, the other outcomes are TVK_CANCELLED.
 *
 * Options: "threads": 1 to 1024, the number of processors without; "time_limit": [s] for each scenario, which
 * ends as TVK_CANCELLED when it takes longer; "scenario" and "temperatures" as for tvkSolve. */
TVK_API tvkStatus tvkSolveMany(const tvkNetwork* network, const char* options, size_t scenarios,
                               size_t inputCount, const tvkInput* inputs, const double* values,
                               size_t outputCount, const tvkOutput* outputs, double* results, int* outcomes,
                               int* iterations, char** texts, tvkProgress progress, void* user,
                               tvkFindings* findings);

/* Checking */

/** Examines a network before a solve. TVK_OK when that was done, whatever was found; TVK_BAD_INPUT for a
 * network that no file could hold, without nodes or pressures for example, which is looked at further only as
 * far as its parts have a meaning. */
TVK_API tvkStatus tvkExamine(const tvkNetwork* network, tvkFindings* findings);
/** Examines a result, converged or not. The findings of the solve itself come first; that it did not converge
 * is said once, with what to mend. What tvkExamine says of the network is not repeated. */
TVK_API tvkStatus tvkDiagnose(const tvkResult* result, tvkFindings* findings);
/** The smallest part found of a network that does not solve which still does not solve. Solves at most
 * mostSolves times. Writes positions of elements to the array with room for capacity, their whole number to
 * count (0: the network solves, or nothing smaller is known) and a sentence about them to why (may be null).
 */
TVK_API tvkStatus tvkSmallestFailingPart(const tvkNetwork* network, int mostSolves, tvkProgress progress,
                                         void* user, size_t* elements, size_t capacity, size_t* count,
                                         char** why, tvkFindings* findings);
/** Computes the certificate of a result anew and compares it with that of its file. TVK_OK: it holds;
 * TVK_NOT_CONVERGED: it does not, and findings say where. */
TVK_API tvkStatus tvkVerify(const tvkResult* result, tvkFindings* findings);

/* Reports, pictures, exports */

/** One self-contained HTML page, also of a result without values. Options: "units": as for tvkResultTables.
 * For a solve that did not converge the page names the smallest part that fails, up to 5000 elements; progress
 * (may be null) is called in that search as in a solve. TVK_CANCELLED, and no page, when it asks to stop. */
TVK_API tvkStatus tvkWriteReport(const tvkResult* result, const char* path, const char* options,
                                 tvkProgress progress, void* user, tvkFindings* findings);
/** A picture, by the ending of path: ".svg" or ".png". result may be null; the network is then drawn without
 * values; one of a network with other nodes or elements is refused. Options: "units"; "view": "plan", "elevation" or "isometric"; "quantity": what the network is
 * coloured by, "none", "pressure", "head", "velocity", "mass_flow", "volume_flow" or "temperature"; "width":
 * [pixel]; "scale": pixels of a PNG per pixel of the drawing. */
TVK_API tvkStatus tvkWritePicture(const tvkNetwork* network, const tvkResult* result, const char* path,
                                  const char* options, tvkFindings* findings);
/** A file for other tools, by the ending of path: ".vtu" (ParaView), ".geojson" (QGIS), ".graphml". result
 * may be null; one of a network with other nodes or elements, by name and ends, is refused. */
TVK_API tvkStatus tvkWriteExport(const tvkNetwork* network, const tvkResult* result, const char* path,
                                 tvkFindings* findings);

/* Fluids, units, files */

/** The table of known fluids. format: "text" or "json"; units as for tvkResultTables (for the text). */
TVK_API tvkStatus tvkFluids(const char* format, const char* units, char** text, tvkFindings* findings);
/** Properties of a known fluid at a temperature [K] and a mass fraction (NaN for the fluid's usual one):
 * values receives density [kg/m3], dynamic viscosity [Pa s], specific heat [J/(kg K)] and conductivity [W/(m
 * K)]. */
TVK_API tvkStatus tvkFluid(const char* name, double temperature, double concentration, double values[4],
                           tvkFindings* findings);
/** "25 mm" of the quantity "length" as 0.025; quantities as in "units" of the network file. */
TVK_API tvkStatus tvkParseQuantity(const char* text, const char* quantity, double* value,
                                   tvkFindings* findings);
/** Whether a text names units as tvkResultTables takes them; TVK_BAD_INPUT, and a finding, when it does not.
 */
TVK_API tvkStatus tvkCheckUnits(const char* units, tvkFindings* findings);
/** Replaces a file by a text as a whole; when that fails, the old file is as it was. */
TVK_API tvkStatus tvkWriteFile(const char* path, const char* text, size_t size, tvkFindings* findings);

#ifdef __cplusplus
}
#endif

#endif
