/* A host in C99: reads a network, changes it, solves it and reads arrays of results; every misuse that a C
 * program is likely to commit is refused and does not end the program. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include <tavellkit.h>

static int failures = 0;

#define CHECK(condition)                                                                                     \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            ++failures;                                                                                      \
            fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition);                                  \
        }                                                                                                    \
    } while (0)

static const char* const kNetwork =
    "{\"tavell\": 1, \"nodes\": ["
    "{\"name\": \"A\", \"at\": [0, 0, 0], \"inlet\": {\"pressure\": 200000}},"
    "{\"name\": \"B\", \"at\": [10, 0, 0]},"
    "{\"name\": \"C\", \"at\": [20, 0, 0], \"outlet\": {\"pressure\": 100000}}],"
    "\"elements\": ["
    "{\"name\": \"P1\", \"type\": \"pipe\", \"from\": \"A\", \"to\": \"B\", \"diameter\": 0.1},"
    "{\"name\": \"P2\", \"type\": \"pipe\", \"from\": \"B\", \"to\": \"C\", \"diameter\": 0.1}]}";

static int stopAtSecond(void* user, int iteration)
{
    *(int*)user = iteration;
    return iteration >= 2;
}

static tvkNetwork* readNetwork(void)
{
    tvkNetwork* network = NULL;
    CHECK(tvkReadNetworkText(kNetwork, strlen(kNetwork), "memory", &network, NULL) == TVK_OK);
    return network;
}

static void solvesAndReadsArrays(void)
{
    tvkNetwork* network = readNetwork();
    tvkResult* result = NULL;
    double copied[3] = {0.0, 0.0, 0.0};
    const double* pressure = NULL;
    const double* flow = NULL;
    CHECK(tvkNodeCount(network) == 3 && tvkElementCount(network) == 2);
    CHECK(strcmp(tvkNodeNames(network)[1], "B") == 0);
    CHECK(tvkSolve(network, NULL, NULL, NULL, &result, NULL) == TVK_OK);
    tvkFreeNetwork(network);
    pressure = tvkNodeResults(result, "pressure");
    flow = tvkElementResults(result, "mass_flow");
    CHECK(pressure != NULL && flow != NULL);
    /* Two equal pipes share the difference of 100 kPa. */
    if (pressure != NULL) CHECK(fabs(pressure[1] - 150000.0) < 10.0);
    if (flow != NULL) CHECK(flow[0] > 0.0 && fabs(flow[0] - flow[1]) < 1e-6 * flow[0]);
    CHECK(tvkCopyNodeResults(result, "pressure", copied, 3, NULL) == TVK_OK);
    CHECK(pressure != NULL && copied[2] == pressure[2]);
    CHECK(tvkCopyNodeResults(result, "pressure", copied, 2, NULL) == TVK_BAD_INPUT);
    CHECK(tvkElementResults(result, "colour") == NULL);
    CHECK(tvkCertificateIsGood(result) == 1);
    tvkFreeResult(result);
}

static void setsOnePropertyOfManyElements(void)
{
    tvkNetwork* network = readNetwork();
    const double diameters[2] = {0.05, 0.2};
    double read[2] = {0.0, 0.0};
    tvkResult* result = NULL;
    CHECK(tvkSetElementValues(network, "diameter", 2, NULL, diameters, NULL) == TVK_OK);
    CHECK(tvkGetElementValues(network, "diameter", 2, NULL, read, NULL) == TVK_OK);
    CHECK(read[0] == 0.05 && read[1] == 0.2);
    CHECK(tvkSolve(network, "{}", NULL, NULL, &result, NULL) == TVK_OK);
    /* Nearly all of the pressure is lost in the narrow pipe. */
    CHECK(result != NULL && tvkNodeResults(result, "pressure")[1] < 101000.0);
    tvkFreeResult(result);
    tvkFreeNetwork(network);
}

static void listsEverythingThatIsWrong(void)
{
    static const char* const kBad = "{\"tavell\": 1, \"colour\": 1, \"nodes\": 3, \"elements\": []}";
    tvkFindings* findings = tvkNewFindings();
    tvkNetwork* network = (tvkNetwork*)1;
    char* text = NULL;
    CHECK(tvkReadNetworkText(kBad, strlen(kBad), "bad.json", &network, findings) == TVK_BAD_INPUT);
    CHECK(network == NULL);
    CHECK(tvkFindingsCount(findings) >= 2);
    CHECK(tvkFindingsCountOf(findings, TVK_ERROR) == tvkFindingsCount(findings));
    CHECK(strcmp(tvkFindingFile(findings, 0), "bad.json") == 0 && tvkFindingLine(findings, 0) == 1);
    CHECK(tvkFindingMessage(findings, 0)[0] != '\0' && tvkFindingRemedy(findings, 0)[0] != '\0');
    CHECK(strcmp(tvkFindingMessage(findings, 1000), "") == 0);
    CHECK(tvkFindingsJson(findings, &text) == TVK_OK && text != NULL && text[0] == '[');
    tvkFreeText(text);
    CHECK(tvkFindingsText(findings, &text) == TVK_OK && strstr(text, "bad.json:1") != NULL);
    tvkFreeText(text);
    tvkClearFindings(findings);
    CHECK(tvkFindingsCount(findings) == 0);
    tvkFreeFindings(findings);
}

static void stopsWhenAskedTo(void)
{
    tvkNetwork* network = readNetwork();
    tvkResult* result = NULL;
    int last = 0;
    CHECK(tvkSolve(network, NULL, stopAtSecond, &last, &result, NULL) == TVK_CANCELLED);
    CHECK(last == 2);
    CHECK(tvkResultOutcome(result) == TVK_CANCELLED);
    tvkFreeResult(result);
    tvkFreeNetwork(network);
}

static void refusesNulls(void)
{
    tvkFindings* findings = tvkNewFindings();
    tvkNetwork* network = NULL;
    tvkResult* result = NULL;
    char* text = NULL;
    size_t count = 0;
    CHECK(tvkReadNetwork(NULL, &network, findings) == TVK_BAD_INPUT);
    CHECK(tvkReadNetwork("file.json", NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkReadNetworkText(NULL, 3, NULL, &network, findings) == TVK_BAD_INPUT);
    CHECK(tvkSolve(NULL, NULL, NULL, NULL, &result, findings) == TVK_BAD_INPUT);
    CHECK(tvkExamine(NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkDiagnose(NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkVerify(NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkWriteReport(NULL, "a.html", NULL, NULL, NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkWriteExport(NULL, NULL, "a.vtu", findings) == TVK_BAD_INPUT);
    CHECK(tvkNetworkText(NULL, &text, findings) == TVK_BAD_INPUT);
    CHECK(tvkFindNodes(NULL, 0, NULL, NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkSetNodeValues(NULL, "x", 0, NULL, NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkSmallestFailingPart(NULL, 1, NULL, NULL, NULL, 0, &count, NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkFluid(NULL, 300.0, nan(""), NULL, findings) == TVK_BAD_INPUT);
    CHECK(tvkWriteFile(NULL, NULL, 0, findings) == TVK_BAD_INPUT);
    CHECK(tvkFindingsCount(findings) == 15);
    CHECK(strcmp(tvkFindingCode(findings, 0), "bad-option") == 0);
    CHECK(tvkNodeCount(NULL) == 0 && tvkNodeNames(NULL) == NULL && tvkNodeResults(NULL, "pressure") == NULL);
    CHECK(tvkResultOutcome(NULL) == TVK_BAD_INPUT && tvkFindingsCount(NULL) == 0);
    CHECK(strcmp(tvkFindingCode(NULL, 0), "") == 0);
    tvkFreeNetwork(NULL);
    tvkFreeResult(NULL);
    tvkFreeFindings(NULL);
    tvkFreeText(NULL);
    tvkFreeFindings(findings);
}

int main(void)
{
    CHECK(tvkVersion()[0] != '\0');
    solvesAndReadsArrays();
    setsOnePropertyOfManyElements();
    listsEverythingThatIsWrong();
    stopsWhenAskedTo();
    refusesNulls();
    return failures == 0 ? 0 : 1;
}
