// result_file.h: a result as a file: the network, the numbers, the certificate and the findings
// (docs/result-file.md).
#ifndef TAVELL_KIT_RESULT_FILE_H
#define TAVELL_KIT_RESULT_FILE_H

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "certificate.h"
#include "findings.h"
#include "network.h"
#include "solution.h"

namespace kit
{

struct ResultFile {
    Network network;
    Solution solution;
    Certificate certificate;
};

/// The text of a result file; ends with a line end.
std::string resultFileText(const Network& network, const Solution& solution, const Certificate& certificate);

/// The result in a file or in a text; nothing, and findings, when it cannot be used.
std::optional<ResultFile> readResultFile(const std::string& path, Findings& findings);
std::optional<ResultFile> readResultText(const std::string& text, const std::string& file,
                                         Findings& findings);

/// Makes the check again from the numbers of a file. False, and findings, when the certificate differs, is
/// not good, or is that of another network.
bool verifyResult(const ResultFile& result, Findings& findings);

/// "converged", "not_converged", "cancelled".
std::string outcomeName(Outcome outcome);

/// A certificate as a JSON object, numbers that are not finite as null.
nlohmann::ordered_json certificateObject(const Certificate& certificate);

/// The fluid's values as a JSON object; SI units.
nlohmann::ordered_json fluidValuesObject(const FluidValues& fluid);

}  // namespace kit

#endif
