// tavell.hpp: tavellkit.h for C++17: objects that free themselves, texts and lists of the standard library.
//
// Header only; link tavell::tavellkit. Errors are values: what can fail returns an Answer, which holds a
// status, the findings and, when there is one, the value. Nothing here throws but std::bad_alloc of the
// standard library. Units are SI; tavellkit.h has the full description of every function, its options and its
// units.
#ifndef TAVELL_HPP
#define TAVELL_HPP

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavellkit.h"

namespace tavell
{

enum class Status {
    ok = TVK_OK,
    notConverged = TVK_NOT_CONVERGED,
    badInput = TVK_BAD_INPUT,
    internal = TVK_INTERNAL,
    cancelled = TVK_CANCELLED
};

enum class Severity { error = TVK_ERROR, warning = TVK_WARNING, remark = TVK_REMARK };

constexpr std::size_t kNoPosition = TVK_NO_POSITION;

/// Called once a step of a solve, an iteration or a round of the search for its start; true asks to stop. It must
/// not throw.
using Progress = std::function<bool(int step)>;

/// The version of the kit that the program runs with.
inline std::string version()
{
    return tvkVersion();
}

namespace detail
{

struct TextReleaser {
    void operator()(char* text) const { tvkFreeText(text); }
};
using Text = std::unique_ptr<char, TextReleaser>;

/// A text that a function of the kit writes through a char**.
template <class Call> std::string textOf(Call&& call)
{
    char* text = nullptr;
    call(&text);
    const Text owner(text);
    return text == nullptr ? std::string() : std::string(text);
}

inline int callProgress(void* user, int step)
{
    const Progress& progress = *static_cast<const Progress*>(user);
    return progress(step) ? 1 : 0;
}

inline tvkProgress functionOf(const Progress& progress)
{
    return progress ? &callProgress : nullptr;
}

inline void* userOf(const Progress& progress)
{
    return const_cast<Progress*>(&progress);
}

inline std::vector<const char*> pointersOf(const std::vector<std::string>& texts)
{
    std::vector<const char*> pointers;
    pointers.reserve(texts.size());
    for (const std::string& text : texts)
        pointers.push_back(text.c_str());
    return pointers;
}

}  // namespace detail

/// A number of a finding.
struct Number {
    std::string name;
    double value = 0.0;
    std::string unit;
};

/// One thing that is wrong, doubtful or worth knowing.
struct Finding {
    std::string code;
    Severity severity = Severity::error;
    std::string message;
    std::string remedy;
    std::string file;
    std::size_t line = 0;
    std::size_t column = 0;
    std::string pointer;
    std::string object;
    std::vector<std::string> objects;
    std::vector<Number> numbers;
};

/// A list of findings. Copies share it.
class Findings
{
public:
    Findings() : m_handle(tvkNewFindings(), tvkFreeFindings) {}

    std::size_t size() const { return tvkFindingsCount(handle()); }
    bool isEmpty() const { return size() == 0; }
    bool hasErrors() const { return countOf(Severity::error) > 0; }
    std::size_t countOf(Severity severity) const
    {
        return tvkFindingsCountOf(handle(), static_cast<int>(severity));
    }
    void clear() { tvkClearFindings(handle()); }
    void append(const Findings& others) { tvkAppendFindings(handle(), others.handle()); }
    Severity severity(std::size_t position) const
    {
        return static_cast<Severity>(tvkFindingSeverity(handle(), position));
    }

    Finding operator[](std::size_t position) const
    {
        const tvkFindings* list = handle();
        Finding finding;
        finding.code = tvkFindingCode(list, position);
        finding.severity = severity(position);
        finding.message = tvkFindingMessage(list, position);
        finding.remedy = tvkFindingRemedy(list, position);
        finding.file = tvkFindingFile(list, position);
        finding.line = tvkFindingLine(list, position);
        finding.column = tvkFindingColumn(list, position);
        finding.pointer = tvkFindingPointer(list, position);
        finding.object = tvkFindingObject(list, position);
        for (std::size_t i = 0; i < tvkFindingObjectCount(list, position); ++i)
            finding.objects.emplace_back(tvkFindingObjectAt(list, position, i));
        for (std::size_t i = 0; i < tvkFindingNumberCount(list, position); ++i)
            finding.numbers.push_back({tvkFindingNumberName(list, position, i),
                                       tvkFindingNumberValue(list, position, i),
                                       tvkFindingNumberUnit(list, position, i)});
        return finding;
    }
    std::vector<Finding> list() const
    {
        std::vector<Finding> findings;
        findings.reserve(size());
        for (std::size_t i = 0; i < size(); ++i)
            findings.push_back((*this)[i]);
        return findings;
    }

    /// One line per finding: "FILE:LINE: POINTER (OBJECT): message; remedy [code]".
    std::string text() const
    {
        return detail::textOf([&](char** text) { tvkFindingsText(handle(), text); });
    }
    /// A JSON array.
    std::string json() const
    {
        return detail::textOf([&](char** text) { tvkFindingsJson(handle(), text); });
    }

    tvkFindings* handle() const { return m_handle.get(); }

private:
    std::shared_ptr<tvkFindings> m_handle;
};

/// A value, or why there is none. True when the call returned TVK_OK.
template <class T> class Answer
{
public:
    Answer(Status status, std::optional<T> value, Findings findings)
        : m_status(status), m_value(std::move(value)), m_findings(std::move(findings))
    {
    }

    Status status() const { return m_status; }
    explicit operator bool() const { return m_status == Status::ok && m_value.has_value(); }
    /// Whether there is a value: a solve that did not converge has a Result too.
    bool hasValue() const { return m_value.has_value(); }
    const Findings& findings() const { return m_findings; }

    /// Only when there is a value.
    T& operator*() { return *m_value; }
    const T& operator*() const { return *m_value; }
    T* operator->() { return &*m_value; }
    const T* operator->() const { return &*m_value; }

private:
    Status m_status;
    std::optional<T> m_value;
    Findings m_findings;
};

/// What became of a call without a value. True when it returned TVK_OK.
template <> class Answer<void>
{
public:
    Answer(Status status, Findings findings) : m_status(status), m_findings(std::move(findings)) {}

    Status status() const { return m_status; }
    explicit operator bool() const { return m_status == Status::ok; }
    const Findings& findings() const { return m_findings; }

private:
    Status m_status;
    Findings m_findings;
};

namespace detail
{

/// Answers of the two kinds of calls: one that makes a text, one that does something.
template <class Call> Answer<std::string> textAnswer(Call&& call)
{
    Findings findings;
    char* text = nullptr;
    const auto status = static_cast<Status>(call(&text, findings.handle()));
    const Text owner(text);
    std::optional<std::string> value;
    if (text != nullptr) value.emplace(text);
    return {status, std::move(value), std::move(findings)};
}

template <class Call> Answer<void> plainAnswer(Call&& call)
{
    Findings findings;
    const auto status = static_cast<Status>(call(findings.handle()));
    return {status, std::move(findings)};
}

}  // namespace detail

class Result;

/// The elements of a part that does not solve.
struct FailingPart {
    std::vector<std::size_t> elements;  // positions; empty when nothing fails or nothing is known
    std::string why;
};

/// A number that differs between the scenarios of a study, as tvkInput has it.
struct Input {
    tvkPart part = TVK_NODE;
    std::string key;
    std::size_t position = 0;
};

/// A number that is kept of each scenario, as tvkOutput has it.
struct Output {
    tvkPart part = TVK_NODE;
    std::string quantity;
    std::size_t position = 0;
};

/// What became of the scenarios of a study.
struct Study {
    std::vector<double> results;     // one row of outputs for each scenario; NaN where there are none
    std::vector<Status> outcomes;    // of each scenario
    std::vector<int> iterations;     // steps of each solve
    std::vector<std::string> texts;  // findings as JSON of each that is not ok, else ""
};

/// A network of pipes. Movable; copies are made with copy().
class Network
{
public:
    using Handle = std::unique_ptr<tvkNetwork, void (*)(tvkNetwork*)>;

    /// Takes a handle, which is then freed by this object.
    explicit Network(tvkNetwork* handle) : m_handle(handle, tvkFreeNetwork) {}

    /// An empty network.
    static Answer<Network> create()
    {
        return make(
            [](tvkNetwork** network, tvkFindings* findings) { return tvkNewNetwork(network, findings); });
    }
    /// Reads a network file, an EPANET input file (*.inp) or a pair "NODES.csv,ELEMENTS.csv".
    static Answer<Network> read(const std::string& path)
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkReadNetwork(path.c_str(), network, findings);
        });
    }
    /// The same, and examined: also a network with errors, as far as its parts have a meaning.
    static Answer<Network> readAndExamine(const std::string& path, const std::string& options = "")
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkReadAndExamine(path.c_str(), options.c_str(), network, findings);
        });
    }
    static Answer<Network> readText(std::string_view text, const std::string& name = "")
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkReadNetworkText(text.data() == nullptr ? "" : text.data(), text.size(), name.c_str(),
                                      network, findings);
        });
    }
    static Answer<Network> importInp(const std::string& path, const std::string& options = "")
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkImportInp(path.c_str(), options.c_str(), network, findings);
        });
    }
    static Answer<Network> readCsv(const std::string& nodesPath, const std::string& elementsPath)
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkReadCsv(nodesPath.c_str(), elementsPath.c_str(), network, findings);
        });
    }
    Answer<Network> copy() const
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkCopyNetwork(handle(), network, findings);
        });
    }

    Answer<void> write(const std::string& path) const
    {
        return detail::plainAnswer(
            [&](tvkFindings* findings) { return tvkWriteNetwork(handle(), path.c_str(), findings); });
    }
    Answer<void> writeCsv(const std::string& nodesPath, const std::string& elementsPath) const
    {
        return detail::plainAnswer([&](tvkFindings* findings) {
            return tvkWriteCsv(handle(), nodesPath.c_str(), elementsPath.c_str(), findings);
        });
    }
    /// The canonical network file.
    Answer<std::string> text() const
    {
        return detail::textAnswer(
            [&](char** text, tvkFindings* findings) { return tvkNetworkText(handle(), text, findings); });
    }
    Answer<std::string> hash() const
    {
        return detail::textAnswer(
            [&](char** text, tvkFindings* findings) { return tvkNetworkHash(handle(), text, findings); });
    }

    std::vector<std::string> scenarios() const
    {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < tvkScenarioCount(handle()); ++i)
            names.emplace_back(tvkScenarioName(handle(), i));
        return names;
    }
    Answer<Network> scenario(const std::string& name) const
    {
        return make([&](tvkNetwork** network, tvkFindings* findings) {
            return tvkNetworkScenario(handle(), name.c_str(), network, findings);
        });
    }
    /// Changes the network by a JSON object in the form of a scenario.
    Answer<void> patch(const std::string& object)
    {
        return detail::plainAnswer(
            [&](tvkFindings* findings) { return tvkPatchNetwork(handle(), object.c_str(), findings); });
    }

    std::size_t nodeCount() const { return tvkNodeCount(handle()); }
    std::size_t elementCount() const { return tvkElementCount(handle()); }
    std::vector<std::string> nodeNames() const { return namesOf(tvkNodeNames(handle()), nodeCount()); }
    std::vector<std::string> elementNames() const
    {
        return namesOf(tvkElementNames(handle()), elementCount());
    }
    /// kNoPosition when there is none of that name.
    std::size_t findNode(const std::string& name) const
    {
        const char* const text = name.c_str();
        std::size_t position = kNoPosition;
        tvkFindNodes(handle(), 1, &text, &position, nullptr);
        return position;
    }
    std::size_t findElement(const std::string& name) const
    {
        const char* const text = name.c_str();
        std::size_t position = kNoPosition;
        tvkFindElements(handle(), 1, &text, &position, nullptr);
        return position;
    }
    std::string elementType(std::size_t position) const
    {
        const char* type = tvkElementType(handle(), position);
        return type == nullptr ? "" : type;
    }
    std::vector<std::string> elementTypes() const
    {
        return namesOf(tvkElementTypes(handle()), elementCount());
    }
    /// Positions of the start and end nodes of all elements.
    std::pair<std::vector<std::size_t>, std::vector<std::size_t>> ends() const
    {
        std::vector<std::size_t> from(elementCount());
        std::vector<std::size_t> to(elementCount());
        if (!from.empty()) tvkElementEnds(handle(), from.data(), to.data(), nullptr);
        return {std::move(from), std::move(to)};
    }

    /// coordinates: x, y, z of each node [m], or empty.
    Answer<void> addNodes(const std::vector<std::string>& names, const std::vector<double>& coordinates = {})
    {
        const bool isSized = coordinates.empty() || coordinates.size() == 3 * names.size();
        return sized(isSized, [&](tvkFindings* findings) {
            return tvkAddNodes(handle(), names.size(), detail::pointersOf(names).data(),
                               coordinates.empty() ? nullptr : coordinates.data(), findings);
        });
    }
    Answer<void> addElements(const std::vector<std::string>& names, const std::vector<std::string>& types,
                             const std::vector<std::size_t>& from, const std::vector<std::size_t>& to)
    {
        const std::size_t count = names.size();
        const bool isSized = types.size() == count && from.size() == count && to.size() == count;
        return sized(isSized, [&](tvkFindings* findings) {
            return tvkAddElements(handle(), count, detail::pointersOf(names).data(),
                                  detail::pointersOf(types).data(), from.data(), to.data(), findings);
        });
    }
    /// One value for each position; without positions for all nodes from the first.
    Answer<void> setNodeValues(const std::string& key, const std::vector<double>& values,
                               const std::vector<std::size_t>& positions = {})
    {
        return sized(positions.empty() || positions.size() == values.size(), [&](tvkFindings* findings) {
            return tvkSetNodeValues(handle(), key.c_str(), values.size(),
                                    positions.empty() ? nullptr : positions.data(), values.data(), findings);
        });
    }
    Answer<void> setElementValues(const std::string& key, const std::vector<double>& values,
                                  const std::vector<std::size_t>& positions = {})
    {
        return sized(positions.empty() || positions.size() == values.size(), [&](tvkFindings* findings) {
            return tvkSetElementValues(handle(), key.c_str(), values.size(),
                                       positions.empty() ? nullptr : positions.data(), values.data(),
                                       findings);
        });
    }
    /// Of all nodes; NaN where nothing is given.
    Answer<std::vector<double>> nodeValues(const std::string& key) const
    {
        return valuesAnswer(nodeCount(), [&](double* values, tvkFindings* findings) {
            return tvkGetNodeValues(handle(), key.c_str(), nodeCount(), nullptr, values, findings);
        });
    }
    Answer<std::vector<double>> elementValues(const std::string& key) const
    {
        return valuesAnswer(elementCount(), [&](double* values, tvkFindings* findings) {
            return tvkGetElementValues(handle(), key.c_str(), elementCount(), nullptr, values, findings);
        });
    }
    Answer<void> setCurve(std::size_t element, const std::vector<double>& volumeFlows,
                          const std::vector<double>& pressures)
    {
        return sized(volumeFlows.size() == pressures.size(), [&](tvkFindings* findings) {
            return tvkSetCurve(handle(), element, volumeFlows.size(), volumeFlows.data(), pressures.data(),
                               findings);
        });
    }

    /// A solve that did not converge has a Result too; the findings say why it did not.
    Answer<Result> solve(const std::string& options = "", const Progress& progress = {}) const;
    /// Solves the network once for each row of values, one number for each input; without inputs there is
    /// nothing to do. A study that was stopped has a value too.
    Answer<Study> solveMany(const std::vector<Input>& inputs, const std::vector<double>& values,
                            const std::vector<Output>& outputs, const std::string& options = "",
                            const Progress& progress = {}) const
    {
        const bool isSized = inputs.empty() ? values.empty() : values.size() % inputs.size() == 0;
        if (!isSized) return {Status::badInput, std::nullopt, Findings()};
        const std::size_t count = inputs.empty() ? 0 : values.size() / inputs.size();
        std::vector<tvkInput> given;
        for (const Input& input : inputs)
            given.push_back({input.part, input.key.c_str(), input.position});
        std::vector<tvkOutput> wanted;
        for (const Output& output : outputs)
            wanted.push_back({output.part, output.quantity.c_str(), output.position});
        Findings findings;
        Study study;
        study.results.resize(count * outputs.size());
        study.iterations.resize(count);
        study.texts.resize(count);
        std::vector<int> outcomes(count);
        std::vector<char*> texts(count);
        const auto status = static_cast<Status>(tvkSolveMany(
            handle(), options.c_str(), count, given.size(), given.data(), values.data(), wanted.size(),
            wanted.data(), study.results.data(), outcomes.data(), study.iterations.data(), texts.data(),
            detail::functionOf(progress), detail::userOf(progress), findings.handle()));
        for (std::size_t i = 0; i < count; ++i) {
            const detail::Text owner(texts[i]);
            if (owner) study.texts[i] = owner.get();
            study.outcomes.push_back(static_cast<Status>(outcomes[i]));
        }
        std::optional<Study> value;
        if (status == Status::ok || status == Status::cancelled) value = std::move(study);
        return {status, std::move(value), std::move(findings)};
    }
    /// What is to be said before a solve.
    Findings examine() const
    {
        Findings findings;
        tvkExamine(handle(), findings.handle());
        return findings;
    }
    Answer<FailingPart> smallestFailingPart(int mostSolves, const Progress& progress = {}) const
    {
        Findings findings;
        FailingPart part;
        part.elements.resize(elementCount());
        std::size_t count = 0;
        char* why = nullptr;
        const auto status = static_cast<Status>(tvkSmallestFailingPart(
            handle(), mostSolves, detail::functionOf(progress), detail::userOf(progress),
            part.elements.data(), part.elements.size(), &count, &why, findings.handle()));
        const detail::Text owner(why);
        part.elements.resize(count);
        if (why != nullptr) part.why = why;
        return {status, std::move(part), std::move(findings)};
    }
    /// A picture of the network without values, *.svg or *.png.
    Answer<void> writePicture(const std::string& path, const std::string& options = "") const
    {
        return detail::plainAnswer([&](tvkFindings* findings) {
            return tvkWritePicture(handle(), nullptr, path.c_str(), options.c_str(), findings);
        });
    }
    /// *.vtu, *.geojson or *.graphml without results.
    Answer<void> writeExport(const std::string& path) const
    {
        return detail::plainAnswer(
            [&](tvkFindings* findings) { return tvkWriteExport(handle(), nullptr, path.c_str(), findings); });
    }

    tvkNetwork* handle() const { return m_handle.get(); }

private:
    template <class Call> static Answer<Network> make(Call&& call)
    {
        Findings findings;
        tvkNetwork* network = nullptr;
        const auto status = static_cast<Status>(call(&network, findings.handle()));
        std::optional<Network> value;
        if (network != nullptr) value.emplace(network);
        return {status, std::move(value), std::move(findings)};
    }
    /// A call whose lists have sizes that fit together.
    template <class Call> static Answer<void> sized(bool isSized, Call&& call)
    {
        if (isSized) return detail::plainAnswer(std::forward<Call>(call));
        return {Status::badInput, Findings()};
    }
    template <class Call> static Answer<std::vector<double>> valuesAnswer(std::size_t size, Call&& call)
    {
        Findings findings;
        std::vector<double> values(size);
        const auto status = static_cast<Status>(call(values.data(), findings.handle()));
        std::optional<std::vector<double>> value;
        if (status == Status::ok) value = std::move(values);
        return {status, std::move(value), std::move(findings)};
    }
    static std::vector<std::string> namesOf(const char* const* names, std::size_t count)
    {
        if (names == nullptr) return {};
        return {names, names + count};
    }

    Handle m_handle;
};

/// Numbers by position of node or element that belong to a Result.
class Values
{
public:
    Values(const double* data, std::size_t size) : m_data(data), m_size(data == nullptr ? 0 : size) {}
    const double* begin() const { return m_data; }
    const double* end() const { return m_data + m_size; }
    std::size_t size() const { return m_size; }
    bool isEmpty() const { return m_size == 0; }
    double operator[](std::size_t position) const { return m_data[position]; }

private:
    const double* m_data;
    std::size_t m_size;
};

/// The outcome of a solve.
class Result
{
public:
    using Handle = std::unique_ptr<tvkResult, void (*)(tvkResult*)>;

    /// Takes a handle, which is then freed by this object.
    explicit Result(tvkResult* handle) : m_handle(handle, tvkFreeResult), m_network(networkOf(handle)) {}

    static Answer<Result> read(const std::string& path)
    {
        Findings findings;
        tvkResult* result = nullptr;
        const auto status = static_cast<Status>(tvkReadResult(path.c_str(), &result, findings.handle()));
        std::optional<Result> value;
        if (result != nullptr) value.emplace(result);
        return {status, std::move(value), std::move(findings)};
    }

    Status outcome() const { return static_cast<Status>(tvkResultOutcome(handle())); }
    /// The steps of the solve, as Progress counts them.
    int iterations() const { return tvkResultIterations(handle()); }
    bool hasValues() const { return tvkResultHasValues(handle()) != 0; }
    /// The network that was solved, with its scenario.
    const Network& network() const { return m_network; }

    /// By position, without a copy, as long as the result lives; empty for an unknown quantity and without
    /// values.
    Values nodeValues(const std::string& quantity) const
    {
        return {tvkNodeResults(handle(), quantity.c_str()), m_network.nodeCount()};
    }
    Values elementValues(const std::string& quantity) const
    {
        return {tvkElementResults(handle(), quantity.c_str()), m_network.elementCount()};
    }

    /// format: "text" or "json".
    Answer<std::string> certificate(const std::string& format = "text") const
    {
        return detail::textAnswer([&](char** text, tvkFindings* findings) {
            return tvkCertificate(handle(), format.c_str(), text, findings);
        });
    }
    bool isCertificateGood() const { return tvkCertificateIsGood(handle()) != 0; }

    Answer<std::string> tables(const std::string& format = "text", const std::string& units = "") const
    {
        return detail::textAnswer([&](char** text, tvkFindings* findings) {
            return tvkResultTables(handle(), format.c_str(), units.c_str(), text, findings);
        });
    }
    Answer<std::string> exchangeCsv() const
    {
        return detail::textAnswer([&](char** text, tvkFindings* findings) {
            return tvkResultExchangeCsv(handle(), text, findings);
        });
    }
    Answer<std::string> text() const
    {
        return detail::textAnswer(
            [&](char** text, tvkFindings* findings) { return tvkResultText(handle(), text, findings); });
    }
    Answer<void> write(const std::string& path) const
    {
        return detail::plainAnswer(
            [&](tvkFindings* findings) { return tvkWriteResult(handle(), path.c_str(), findings); });
    }
    /// progress: of the search for the smallest part that fails, when the solve did not converge.
    Answer<void> writeReport(const std::string& path, const std::string& options = "",
                             const Progress& progress = {}) const
    {
        return detail::plainAnswer([&](tvkFindings* findings) {
            return tvkWriteReport(handle(), path.c_str(), options.c_str(), detail::functionOf(progress),
                                  detail::userOf(progress), findings);
        });
    }
    Answer<void> writePicture(const std::string& path, const std::string& options = "") const
    {
        return detail::plainAnswer([&](tvkFindings* findings) {
            return tvkWritePicture(m_network.handle(), handle(), path.c_str(), options.c_str(), findings);
        });
    }
    Answer<void> writeExport(const std::string& path) const
    {
        return detail::plainAnswer([&](tvkFindings* findings) {
            return tvkWriteExport(m_network.handle(), handle(), path.c_str(), findings);
        });
    }

    /// What the outcome shows.
    Findings diagnose() const
    {
        Findings findings;
        tvkDiagnose(handle(), findings.handle());
        return findings;
    }
    Answer<void> verify() const
    {
        return detail::plainAnswer([&](tvkFindings* findings) { return tvkVerify(handle(), findings); });
    }

    tvkResult* handle() const { return m_handle.get(); }

private:
    static Network networkOf(const tvkResult* result)
    {
        tvkNetwork* network = nullptr;
        tvkResultNetwork(result, &network, nullptr);
        return Network(network);
    }

    Handle m_handle;
    Network m_network;
};

inline Answer<Result> Network::solve(const std::string& options, const Progress& progress) const
{
    Findings findings;
    tvkResult* result = nullptr;
    const auto status = static_cast<Status>(tvkSolve(handle(), options.c_str(), detail::functionOf(progress),
                                                     detail::userOf(progress), &result, findings.handle()));
    std::optional<Result> value;
    if (result != nullptr) value.emplace(result);
    return {status, std::move(value), std::move(findings)};
}

/// Properties of a liquid.
struct Fluid {
    double density = 0.0;       // [kg/m3]
    double viscosity = 0.0;     // [Pa s], dynamic
    double specificHeat = 0.0;  // [J/(kg K)]
    double conductivity = 0.0;  // [W/(m K)]
};

/// temperature [K]; concentration as a mass fraction, NaN for the usual one.
inline Answer<Fluid> fluid(const std::string& name, double temperature, double concentration)
{
    Findings findings;
    double values[4] = {};
    const auto status =
        static_cast<Status>(tvkFluid(name.c_str(), temperature, concentration, values, findings.handle()));
    std::optional<Fluid> value;
    if (status == Status::ok) value = Fluid{values[0], values[1], values[2], values[3]};
    return {status, value, std::move(findings)};
}

/// The table of known fluids, "text" or "json".
inline Answer<std::string> fluids(const std::string& format = "text", const std::string& units = "")
{
    return detail::textAnswer([&](char** text, tvkFindings* findings) {
        return tvkFluids(format.c_str(), units.c_str(), text, findings);
    });
}

/// "25 mm" of the quantity "length" as 0.025.
inline Answer<double> parseQuantity(const std::string& text, const std::string& quantity)
{
    Findings findings;
    double number = 0.0;
    const auto status =
        static_cast<Status>(tvkParseQuantity(text.c_str(), quantity.c_str(), &number, findings.handle()));
    std::optional<double> value;
    if (status == Status::ok) value = number;
    return {status, value, std::move(findings)};
}

/// Whether a text names units such as "metric" or "pressure=bar,length=ft".
inline Answer<void> checkUnits(const std::string& units)
{
    return detail::plainAnswer([&](tvkFindings* findings) { return tvkCheckUnits(units.c_str(), findings); });
}

/// Replaces a file as a whole.
inline Answer<void> writeFile(const std::string& path, std::string_view text)
{
    return detail::plainAnswer([&](tvkFindings* findings) {
        return tvkWriteFile(path.c_str(), text.data(), text.size(), findings);
    });
}

}  // namespace tavell

#endif
