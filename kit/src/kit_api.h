// kit_api.h: what stands behind the handles of tavellkit.h, and the frame around each of its functions.
#ifndef TAVELL_KIT_KIT_API_H
#define TAVELL_KIT_KIT_API_H

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <tavellkit.h>

#include "certificate.h"
#include "findings.h"
#include "floating_point.h"
#include "network.h"
#include "result_file.h"
#include "solution.h"

struct tvkFindings {
    kit::Findings list;
    /// Code of a finding for which there was no memory; null when there is none. It stands behind the others.
    const char* unrecorded = nullptr;
};

namespace kit
{

/// Names as C texts, and their positions. Filled when first asked for.
struct NameIndex {
    std::vector<const char*> texts;
    std::unordered_map<std::string_view, std::size_t> positions;
};

}  // namespace kit

struct tvkNetwork {
    /// A network of its own. isRead: as a reader returned it.
    tvkNetwork(std::shared_ptr<kit::Network> own, bool isRead)
        : m_own(std::move(own)), m_network(m_own), m_isRead(isRead)
    {
    }
    /// A network that others hold too, as a reader returned it.
    explicit tvkNetwork(std::shared_ptr<const kit::Network> shared)
        : m_network(std::move(shared)), m_isRead(true)
    {
    }

    const kit::Network& get() const { return *m_network; }
    /// Whether it is as a reader returned it.
    bool isRead() const { return m_isRead; }

    /// The network to be kept by a result; the next change is then made to a copy.
    std::shared_ptr<const kit::Network> share() const;
    /// The network in a form that every check of the reader has passed: as it was read, or written and read
    /// again after changes. Null, and findings, when it does not pass; flawed then as for readNetworkText.
    std::shared_ptr<const kit::Network> checked(kit::Findings& findings,
                                                std::optional<kit::Network>* flawed = nullptr) const;
    /// Takes a changed network.
    void replace(kit::Network network);
    /// The network to be changed in its values. Checks are done anew afterwards.
    kit::Network& edit();
    /// Appends nodes or elements. One after the other, each costs the same however many there are.
    void append(std::vector<kit::Node> nodes);
    void append(std::vector<kit::Element> elements);

    const kit::NameIndex& nodeNames() const;
    const kit::NameIndex& elementNames() const;
    /// Kinds of the elements and their names, by position.
    const std::vector<const kit::ElementKind*>& elementKinds() const;
    const std::vector<const char*>& elementTypes() const;

private:
    void forgetNames();

    std::shared_ptr<kit::Network> m_own;  // that which may be changed in place; null when there is none
    std::shared_ptr<const kit::Network> m_network;
    bool m_isRead;
    mutable std::atomic<bool> m_isShared{false};
    mutable std::mutex m_mutex;  // guards what follows
    mutable std::shared_ptr<const kit::Network> m_checked;
    mutable std::unique_ptr<kit::NameIndex> m_nodeNames;
    mutable std::unique_ptr<kit::NameIndex> m_elementNames;
    // of as many elements as there were when they were last asked for: an element keeps its kind
    mutable std::vector<const kit::ElementKind*> m_elementKinds;
    mutable std::vector<const char*> m_elementTypes;
};

struct tvkResult {
    tvkResult(std::shared_ptr<const kit::Network> givenNetwork,
              std::shared_ptr<const kit::Solution> givenSolution)
        : network(std::move(givenNetwork)), solution(std::move(givenSolution))
    {
    }

    std::shared_ptr<const kit::Network> network;
    std::shared_ptr<const kit::Solution> solution;
    std::string scenario;                         // that was solved; "" for none
    std::shared_ptr<const kit::ResultFile> file;  // that it was read from; null when it was solved

    const kit::Certificate& certificate() const;
    /// Null for an unknown quantity and when there are no values.
    const std::vector<double>* nodeValues(std::string_view quantity) const;
    const std::vector<double>* elementValues(std::string_view quantity) const;

private:
    const std::vector<double>* lossValues(std::string_view quantity) const;

    mutable std::mutex m_mutex;  // guards what follows
    mutable std::optional<kit::Certificate> m_certificate;
    mutable std::map<std::string, std::vector<double>, std::less<>> m_derived;
};

namespace kit
{

/// A C progress function as that of the kit.
struct ProgressBridge {
    tvkProgress function;
    void* user;
    bool isStopped = false;  // by the function

    Progress progress()
    {
        if (function == nullptr) return {};
        return {[](void* self, int step) {
                    auto& bridge = *static_cast<ProgressBridge*>(self);
                    const bool isWanted = bridge.function(bridge.user, step) != 0;
                    bridge.isStopped = bridge.isStopped || isWanted;
                    return isWanted;
                },
                this};
    }
};

/// Ends a call with a finding of the code bad_option.
struct Refusal {
    Place place;
    std::string message;
    std::string remedy;
};

/// Throws a Refusal about an argument of the call.
[[noreturn]] void refuse(std::string message, std::string remedy = {});

/// Refuses a null argument by its name.
template <class T> const T& required(const T* argument, const char* name)
{
    if (argument == nullptr) refuse(std::string("the argument \"") + name + "\" is null", "pass it");
    return *argument;
}
template <class T> T& required(T* argument, const char* name)
{
    if (argument == nullptr) refuse(std::string("the argument \"") + name + "\" is null", "pass it");
    return *argument;
}

/// Adds a finding without ever throwing.
void record(tvkFindings* findings, Code code, const char* what) noexcept;
void recordRefusal(tvkFindings* findings, Refusal& refusal) noexcept;

/// Runs the body of a C function, body(Findings&) -> tvkStatus: every exception ends here.
template <class Body> tvkStatus guarded(tvkFindings* findings, Body&& body) noexcept
{
    const UsualFloatingPoint settings;
    try {
        Findings unheard;
        return body(findings == nullptr ? unheard : findings->list);
    } catch (Refusal& refusal) {
        recordRefusal(findings, refusal);
        return TVK_BAD_INPUT;
    } catch (const std::bad_alloc&) {
        record(findings, Code::out_of_memory, "memory ran out");
    } catch (const std::length_error&) {
        record(findings, Code::out_of_memory, "a list would be larger than memory");
    } catch (const std::exception& error) {
        record(findings, Code::internal_error, error.what());
    } catch (...) {
        record(findings, Code::internal_error, "an unknown exception");
    }
    return TVK_INTERNAL;
}

/// Runs the body of a C function that has a plain value as its result; fallback when it fails.
template <class T, class Body> T guardedValue(T fallback, Body&& body) noexcept
{
    const UsualFloatingPoint settings;
    try {
        return body();
    } catch (...) {
        return fallback;
    }
}

/// A copy of a text for a C caller, to be freed with tvkFreeText.
char* newText(std::string_view text);

/// Writes a text through the pointer that a caller gave; TVK_OK.
tvkStatus giveText(char** target, std::string_view text);

/// The network of a reader as a new handle; TVK_BAD_INPUT when there is none.
tvkStatus giveNetwork(tvkNetwork** target, std::optional<Network> network);

}  // namespace kit

#endif
