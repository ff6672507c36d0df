// fuzz_support.h: what every fuzz target does with a network that a reader accepted.
#ifndef TAVELL_TESTS_FUZZ_SUPPORT_H
#define TAVELL_TESTS_FUZZ_SUPPORT_H

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include <nlohmann/json.hpp>

#include "certificate.h"
#include "doctor.h"
#include "file_text.h"
#include "findings.h"
#include "geojson.h"
#include "graphml.h"
#include "network_file.h"
#include "network_writer.h"
#include "result_file.h"
#include "result_tables.h"
#include "solution.h"
#include "svg_picture.h"
#include "vtu.h"

namespace fuzz
{

constexpr std::size_t kLargestSolved = 40;  // nodes and elements; larger networks are read only
constexpr int kMostIterations = 30;

inline void check(bool isTrue, const char* fact)
{
    if (isTrue) return;
    std::fprintf(stderr, "does not hold: %s\n", fact);
    std::abort();
}

inline void checkSame(const std::string& a, const std::string& b, const char* fact)
{
    if (a != b) std::fprintf(stderr, "first:\n%s\nsecond:\n%s\n", a.c_str(), b.c_str());
    check(a == b, fact);
}

/// Findings can be said to people and to programs.
inline void checkFindings(const kit::Findings& findings)
{
    check(findings.text().empty() == findings.isEmpty(), "findings have a text");
    check(nlohmann::json::accept(findings.json()), "findings are JSON, whatever the input holds");
}

/// What is read can be written, and what is written reads as the same text and stands for the same solve.
inline void checkRoundTrip(const kit::Network& network)
{
    const std::string text = kit::networkText(network);
    kit::Findings findings;
    const auto again = kit::readNetworkText(text, "written", findings);
    if (!again) std::fprintf(stderr, "%s%s", text.c_str(), findings.text().c_str());
    check(again.has_value(), "a written network can be read");
    checkSame(text, kit::networkText(*again), "reading and writing again changes nothing");
    check(kit::networkHash(network) == kit::networkHash(*again), "reading again keeps the hash");
}

/// A result can be written, and what is written reads as the same text.
inline kit::ResultFile checkResultRoundTrip(const kit::Network& network, const kit::Solution& solution,
                                            const kit::Certificate& certificate)
{
    const std::string text = kit::resultFileText(network, solution, certificate);
    kit::Findings findings;
    auto again = kit::readResultText(text, "written", findings);
    if (!again) std::fprintf(stderr, "%s%s", text.c_str(), findings.text().c_str());
    check(again.has_value(), "a written result can be read");
    checkSame(text, kit::resultFileText(again->network, again->solution, again->certificate),
              "reading and writing a result again changes nothing");
    return std::move(*again);
}

/// A network has its exports and pictures, with or without results, whatever its sizes and its names.
inline void exportAll(const kit::Network& network, const kit::Solution* solution)
{
    check(nlohmann::json::accept(kit::geojsonText(network, solution)), "GeoJSON is JSON");
    for (const std::string& xml : {kit::vtuText(network, solution), kit::graphmlText(network, solution),
                                   kit::svgPicture(network, solution, {})}) {
        check(!xml.empty() && xml.back() == '\n', "an export ends with a line end");
    }
}

/// A result has its tables in every format, its exports, and what the doctor says of it.
inline void useResult(const kit::Network& network, const kit::Solution& solution,
                      const kit::Certificate& certificate)
{
    for (const kit::TableFormat format :
         {kit::TableFormat::text, kit::TableFormat::csv, kit::TableFormat::json}) {
        const std::string tables = kit::resultTables(network, solution, certificate, format, kit::UnitSet());
        check(format != kit::TableFormat::json || nlohmann::json::accept(tables), "a JSON table is JSON");
    }
    exportAll(network, solution.hasResults() ? &solution : nullptr);
    checkFindings(kit::diagnose(network, solution));
}

/// A small network is solved for a few iterations; whatever comes of it, it ends and says why, and a result
/// stands a check from its file.
inline void solve(const kit::Network& network)
{
    if (network.nodes.size() + network.elements.size() > kLargestSolved) return;
    checkFindings(kit::examine(network));
    kit::Progress progress;
    progress.isStopWanted = [](void*, int iteration) { return iteration > kMostIterations; };
    const kit::Solution solution = kit::solveNetwork(network, progress);
    check(solution.outcome == kit::Outcome::converged || !solution.findings.isEmpty(),
          "a solve that fails says why");
    checkFindings(solution.findings);
    const kit::Certificate certificate = kit::certify(network, solution);
    useResult(network, solution, certificate);
    const kit::ResultFile result = checkResultRoundTrip(network, solution, certificate);
    kit::Findings findings;
    const bool isVerified = kit::verifyResult(result, findings);
    if (isVerified != certificate.isGood) std::fprintf(stderr, "%s", findings.text().c_str());
    check(isVerified == certificate.isGood, "a result is verified when its certificate is good");
}

}  // namespace fuzz

#endif
