// Networks as a pair of tables. An input is the table of nodes, a line of minus signs and the table of elements.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>

#include "csv_pair.h"
#include "fuzz_support.h"
#include "token_mutator.h"

namespace
{

std::optional<kit::Network> read(const std::string& nodes, const std::string& elements,
                                 kit::Findings& findings)
{
    auto network = kit::readCsvTexts(nodes, "nodes.csv", elements, "elements.csv", findings);
    fuzz::check(network.has_value() != findings.hasErrors(), "a pair is read or its errors are said");
    fuzz::checkFindings(findings);
    return network;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const std::string kSeparator = "---\n";
    kit::Findings findings;
    const auto text = kit::toUtf8({reinterpret_cast<const char*>(data), size}, kit::Encoding::utf8OrLatin1,
                                  "fuzz.csv", findings);
    if (!text) return 0;
    const std::size_t end = text->find(kSeparator);
    if (end == std::string::npos) return 0;
    const auto network = read(text->substr(0, end), text->substr(end + kSeparator.size()), findings);
    if (!network) return 0;

    const std::string nodes = kit::nodesCsv(*network);
    const std::string elements = kit::elementsCsv(*network);
    kit::Findings found;
    const auto again = read(nodes, elements, found);
    if (!again) std::fprintf(stderr, "%s---\n%s%s", nodes.c_str(), elements.c_str(), found.text().c_str());
    fuzz::check(again.has_value(), "written tables can be read");
    fuzz::checkSame(nodes, kit::nodesCsv(*again), "reading and writing nodes again changes nothing");
    fuzz::checkSame(elements, kit::elementsCsv(*again), "reading and writing elements again changes nothing");
    fuzz::checkRoundTrip(*network);
    fuzz::solve(*network);
    return 0;
}
