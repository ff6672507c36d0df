// Network files (JSON).
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "scenario.h"
#include "token_mutator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    kit::Findings findings;
    const auto network = kit::readNetworkText(text, "fuzz.tavell.json", findings);
    fuzz::check(network.has_value() != findings.hasErrors(), "a file is read or its errors are said");
    fuzz::checkFindings(findings);
    if (!network) return 0;
    fuzz::checkRoundTrip(*network);
    fuzz::solve(*network);
    for (const auto& [name, patch] : network->scenarios) {
        kit::Findings found;
        const auto variant = kit::withScenario(*network, name, found);
        fuzz::check(variant.has_value() != found.hasErrors(), "a scenario is made or its errors are said");
        if (variant) fuzz::checkRoundTrip(*variant);
    }
    return 0;
}
