/* host_kit.c: a host as it was written against the kit of version 0.1; exit status 0 when all is right. */
#include <tavellkit.h>

#include <stdio.h>
#include <string.h>

static const char* const kNetwork =
    "{\"tavell\": 1, \"fluid\": {\"name\": \"water\", \"temperature\": \"20 degC\"},"
    " \"nodes\": [{\"name\": \"tank\", \"at\": [0, 0, 0], \"inlet\": {\"pressure\": \"2 bar\"}},"
    "             {\"name\": \"tap\", \"at\": [10, 0, 0], \"outlet\": {\"mass_flow\": 0.5}}],"
    " \"elements\": [{\"name\": \"pipe\", \"type\": \"pipe\", \"from\": \"tank\", \"to\": \"tap\","
    "                 \"diameter\": 0.025, \"roughness\": 1e-5}]}";

int main(void)
{
    tvkFindings* const findings = tvkNewFindings();
    tvkNetwork* network = NULL;
    tvkResult* result = NULL;
    char* text = NULL;
    const double diameter = 0.02;
    int isRight = tvkReadNetworkText(kNetwork, strlen(kNetwork), "memory", &network, findings) == TVK_OK;
    isRight = isRight && tvkNodeCount(network) == 2 && strcmp(tvkElementType(network, 0), "pipe") == 0;
    isRight = isRight && tvkSetElementValues(network, "diameter", 1, NULL, &diameter, findings) == TVK_OK;
    isRight = isRight && tvkSolve(network, NULL, NULL, NULL, &result, findings) == TVK_OK;
    isRight = isRight && tvkElementResults(result, "mass_flow")[0] == 0.5 && tvkCertificateIsGood(result);
    isRight = isRight && tvkResultTables(result, "csv", NULL, &text, findings) == TVK_OK && text != NULL;
    tvkFreeText(text);
    text = NULL;
    if (!isRight && tvkFindingsText(findings, &text) == TVK_OK) puts(text);
    tvkFreeText(text);
    tvkFreeResult(result);
    tvkFreeNetwork(network);
    tvkFreeFindings(findings);
    return isRight ? 0 : 1;
}
