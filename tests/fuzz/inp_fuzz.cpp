// EPANET files.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_support.h"
#include "inp_import.h"
#include "token_mutator.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t kLargestWithDuties = 2048;  // [byte]; every duty takes solves of the whole network
    kit::Findings losses;
    const auto text = kit::toUtf8({reinterpret_cast<const char*>(data), size}, kit::Encoding::utf8OrLatin1,
                                  "fuzz.inp", losses);
    fuzz::check(text.has_value() != losses.hasErrors(), "a text is read or its errors are said");
    if (!text) return 0;
    kit::InpOptions options;
    options.freezesPressureValves = size % 2 == 1;
    options.solvesForDuties = size % 4 < 2 && size <= kLargestWithDuties;
    const auto network = kit::importInpText(*text, "fuzz.inp", options, losses);
    fuzz::check(network.has_value() != losses.hasErrors(), "a file is imported or its errors are said");
    fuzz::checkFindings(losses);
    if (!network) return 0;
    fuzz::checkRoundTrip(*network);
    fuzz::solve(*network);
    return 0;
}
