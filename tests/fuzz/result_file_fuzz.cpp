// Result files (JSON).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "token_mutator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    kit::Findings findings;
    const auto result = kit::readResultText(text, "fuzz.result.json", findings);
    fuzz::check(result.has_value() != findings.hasErrors(), "a result is read or its errors are said");
    fuzz::checkFindings(findings);
    if (!result) return 0;
    fuzz::checkRoundTrip(result->network);
    fuzz::checkResultRoundTrip(result->network, result->solution, result->certificate);
    fuzz::useResult(result->network, result->solution, result->certificate);
    kit::Findings found;
    const bool isVerified = kit::verifyResult(*result, found);
    fuzz::check(isVerified != found.hasErrors(), "a result is verified or its errors are said");
    fuzz::checkFindings(found);
    return 0;
}
