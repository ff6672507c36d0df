// host.h: what a program around the library does with a network: build it, read its results, through the flat functions.
#ifndef TAVELL_BENCH_HOST_H
#define TAVELL_BENCH_HOST_H

#include <array>
#include <cstddef>
#include <vector>

#include "networks.h"
#include "tavell/TavellFlat.h"

namespace bench
{

constexpr std::size_t kNodeQuantities = 3;
constexpr std::size_t kElementQuantities = 6;

/// Everything that a solve says of the objects of a circuit, in the circuit's order.
struct Results {
    std::vector<std::array<double, kNodeQuantities>> nodes;        // from TAVELL_RESULT_NODE_TEMPERATURE on
    std::vector<std::array<double, kElementQuantities>> elements;  // from TAVELL_RESULT_REYNOLDS on
};

double pressureOf(const Results& results, int node);     // [Pa]
double massFlowOf(const Results& results, int element);  // [kg/s], > 0 from start to end
double reynoldsOf(const Results& results, int element);  // [-], signed as the flow
double velocityOf(const Results& results, int element);  // [m/s], signed as the flow

/// Whether the Reynolds number is above 5000, from where on the library and EPANET have the same friction factor.
bool isTurbulent(const Results& results, int element);

/// Nodes first, in the order of the network, then the outlets of the demands; pipes first, then the stubs. Every
/// element has twelve properties. Level, without minor losses, friction of Swamee and Jain.
vcICircuit* buildCircuit(vcITavell* system, const Network& network);

/// Reads every result of every object. False when a result is missing or does not stand where its object does.
bool readResults(vcICircuit* circuit, Results& results);

}  // namespace bench

#endif
