// owners.h: handles of the kit's C interface that release themselves.
#ifndef TAVELL_TESTS_KIT_OWNERS_H
#define TAVELL_TESTS_KIT_OWNERS_H

#include <memory>

#include <tavellkit.h>

struct NetworkReleaser {
    void operator()(tvkNetwork* network) const { tvkFreeNetwork(network); }
};
struct ResultReleaser {
    void operator()(tvkResult* result) const { tvkFreeResult(result); }
};
struct FindingsReleaser {
    void operator()(tvkFindings* findings) const { tvkFreeFindings(findings); }
};
using NetworkOwner = std::unique_ptr<tvkNetwork, NetworkReleaser>;
using ResultOwner = std::unique_ptr<tvkResult, ResultReleaser>;
using FindingsOwner = std::unique_ptr<tvkFindings, FindingsReleaser>;

#endif
