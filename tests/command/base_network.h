// base_network.h: a sound network to which a test makes one change.
#ifndef TAVELL_TESTS_BASE_NETWORK_H
#define TAVELL_TESTS_BASE_NETWORK_H

#include <string>

#include <nlohmann/json.hpp>

namespace command_test
{

/// Three pipes of 10 m and 100 mm in a row, A to D, between 200 and 100 kPa.
inline nlohmann::json baseNetwork()
{
    return nlohmann::json::parse(R"({
        "tavell": 1,
        "nodes": [
            {"name": "A", "at": [0, 0, 0], "inlet": {"pressure": 200000}},
            {"name": "B", "at": [10, 0, 0]},
            {"name": "C", "at": [20, 0, 0]},
            {"name": "D", "at": [30, 0, 0], "outlet": {"pressure": 100000}}
        ],
        "elements": [
            {"name": "P1", "type": "pipe", "from": "A", "to": "B", "diameter": 0.1},
            {"name": "P2", "type": "pipe", "from": "B", "to": "C", "diameter": 0.1},
            {"name": "P3", "type": "pipe", "from": "C", "to": "D", "diameter": 0.1}
        ]
    })");
}

}  // namespace command_test

#endif
