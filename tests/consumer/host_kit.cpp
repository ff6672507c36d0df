// A host of the kit: a network in a text, solved, its pressure at the tap printed.
#include <cmath>
#include <cstdio>

#include <tavell.hpp>

namespace
{

// Water of 1000 kg/m3 stands 10 m above a closed tap: 98 066.5 Pa, no flow.
const char kNetwork[] = R"({
  "tavell": 1,
  "fluid": {"name": "liquid", "density": 1000, "viscosity": 0.001},
  "nodes": [
    {"name": "tank", "at": [0, 0, 10], "inlet": {"pressure": 0}},
    {"name": "tee", "at": [0, 0, 1]},
    {"name": "tap", "at": [0, 0, 0], "outlet": {"mass_flow": 0}}
  ],
  "elements": [
    {"name": "riser", "type": "pipe", "from": "tank", "to": "tee", "diameter": "25 mm"},
    {"name": "branch", "type": "pipe", "from": "tee", "to": "tap", "diameter": "15 mm"}
  ]
})";

}  // namespace

int main()
{
    const auto network = tavell::Network::readText(kNetwork, "host.tavell.json");
    if (!network) {
        std::fputs(network.findings().text().c_str(), stderr);
        return 1;
    }
    const auto result = network->solve();
    if (!result) {
        std::fputs(result.findings().text().c_str(), stderr);
        return 1;
    }
    const double pressure = result->nodeValues("pressure")[network->findNode("tap")];
    std::printf("%s: %.1f Pa\n", tavell::version().c_str(), pressure);
    return std::fabs(pressure - 98066.5) < 1.0 ? 0 : 1;
}
