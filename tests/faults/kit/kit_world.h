// kit_world.h: what a call of the kit is given and what it gives, and calls that run out of memory at every allocation.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <tavellkit.h>

namespace faults
{

/// Handles of one test; given back when it goes out of scope.
struct KitWorld {
    tvkNetwork* network = nullptr;  // what a call is given
    tvkResult* result = nullptr;
    tvkFindings* findings = nullptr;

    tvkNetwork* madeNetwork = nullptr;  // what it gives
    tvkResult* madeResult = nullptr;
    char* text = nullptr;
    std::vector<double> values;
    std::vector<std::size_t> positions;

    KitWorld();
    ~KitWorld();
    KitWorld(const KitWorld&) = delete;
    KitWorld& operator=(const KitWorld&) = delete;

    /// Gives back what a call gave.
    void forget();
    /// What the call was given, as far as calls may change it.
    std::string given() const;
    /// What the call gave.
    std::string made() const;
};

/// A call of the kit; it must not allocate on its own account.
struct KitCase {
    std::string name;
    std::function<void(KitWorld&)> setUp;
    std::function<tvkStatus(KitWorld&)> call;
    tvkStatus expected = TVK_OK;
    std::string file{};           // that the call writes; "" for none
    bool isFirstOfTwo = false;    // the file may be written when the call fails at the second one
    std::size_t eachUpTo = 2000;  // allocations that fail one after the other; beyond, steps grow
};

/// Runs the call on fresh worlds, its first, second, third ... allocation failing, in both modes. A call that fails says
/// TVK_INTERNAL and "out-of-memory", gives nothing, leaves what it was given and the file as they were, and does what an
/// undisturbed call does when it is repeated. Nothing is left when all is given back.
void failAtEveryAllocation(const KitCase& tested);

/// The networks of the tests.
std::string examplePath(const std::string& name);
tvkNetwork* readExample(const std::string& name);
tvkResult* solved(const tvkNetwork* network);

/// Bytes of a file; "(none)" when there is none.
std::string bytesOf(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);

}  // namespace faults
