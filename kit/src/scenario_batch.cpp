#include "scenario_batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cmath>
#include <condition_variable>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include <tavell/Constants.h>

#include "boundary_checks.h"
#include "catalogue.h"
#include "element_kinds.h"
#include "kit_api.h"
#include "network_keys.h"
#include "network_writer.h"
#include "number_text.h"
#include "object_reader.h"

namespace kit
{

namespace
{

using nlohmann::json;
using Clock = std::chrono::steady_clock;
using Fold = OutputNumber::Fold;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
/// How often the thread of the call looks at the work of the others.
constexpr std::chrono::milliseconds kProgressInterval{20};

// ---- what a call is about

const std::pair<std::string_view, Fold> kFolds[] = {
    {"min:", Fold::smallest},        {"max:", Fold::largest},
    {"max_abs:", Fold::largestSize}, {"sum:", Fold::sum},
    {"mean:", Fold::mean},           {"argmin:", Fold::whereSmallest},
    {"argmax:", Fold::whereLargest}, {"argmax_abs:", Fold::whereLargestSize},
};

const std::string_view kNodeQuantities[] = {"pressure", "head", "temperature", "external_mass_flow",
                                            "mass_residual"};
const std::string_view kElementQuantities[] = {
    "mass_flow", "volume_flow", "velocity", "reynolds", "pressure_difference", "temperature", "friction",
    "minor",     "height",      "pump",     "other",    "law_mismatch"};

template <std::size_t N> bool contains(const std::string_view (&names)[N], std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

void requirePosition(std::size_t position, std::size_t size)
{
    if (position >= size)
        refuse("the position " + std::to_string(position) + " is out of range",
               "give positions below " + std::to_string(size));
}

OutputNumber outputNumber(const Network& network, const tvkOutput& output)
{
    const std::string_view given = &required(output.quantity, "quantity");
    OutputNumber number;
    if (output.part == TVK_NETWORK) {
        number.fold = given == "certificate" ? Fold::certificate : Fold::iterations;
        if (given != "certificate" && given != "iterations")
            refuse("the network has no quantity " + inQuotes(given),
                   "give \"certificate\" or \"iterations\"");
        return number;
    }
    if (output.part != TVK_NODE && output.part != TVK_ELEMENT)
        refuse("the part " + std::to_string(output.part) + " of an output is unknown", "give a tvkPart");
    number.isOfNodes = output.part == TVK_NODE;
    std::string_view name = given;
    for (const auto& [prefix, fold] : kFolds) {
        if (given.substr(0, prefix.size()) != prefix) continue;
        number.fold = fold;
        name = given.substr(prefix.size());
    }
    const bool isKnown =
        number.isOfNodes ? contains(kNodeQuantities, name) : contains(kElementQuantities, name);
    if (!isKnown)
        refuse(std::string(number.isOfNodes ? "nodes" : "elements") + " have no quantity " + inQuotes(given),
               "give one that tavellkit.h names");
    number.quantity = name;
    number.position = output.position;
    if (number.fold == Fold::at)
        requirePosition(output.position, number.isOfNodes ? network.nodes.size() : network.elements.size());
    return number;
}

/// Whether a key is one of tvkSetNodeValues or tvkSetElementValues.
bool isKey(const tvkNetwork& network, bool isOfNodes, const std::string& key)
{
    const auto call = isOfNodes ? tvkGetNodeValues : tvkGetElementValues;
    const tvkStatus status = call(&network, key.c_str(), 0, nullptr, nullptr, nullptr);
    if (status == TVK_INTERNAL) throw std::bad_alloc();
    return status == TVK_OK;
}

/// The first token of a JSON pointer and the rest, "/fluid/temperature" as "fluid" and "/temperature".
std::pair<std::string, std::string> firstToken(const std::string& pointer)
{
    const std::size_t end = std::min(pointer.find('/', 1), pointer.size());
    std::string token;
    for (std::size_t i = 1; i < end; ++i) {
        // RFC 6901: "~1" stands for "/", "~0" for "~"
        const bool isEscaped = pointer[i] == '~' && i + 1 < end;
        token += !isEscaped ? pointer[i] : pointer[i + 1] == '1' ? '/' : '~';
        if (isEscaped) ++i;
    }
    return {token, pointer.substr(end)};
}

/// Position of the node or element that a pointer names.
std::size_t positionOf(const NameIndex& names, const std::string& name, const char* kind,
                       const std::string& text)
{
    const auto found = names.positions.find(name);
    if (found == names.positions.end())
        refuse(std::string("there is no ") + kind + ' ' + inQuotes(name) + ", which " + inQuotes(text) +
                   " points to",
               "correct the name");
    return found->second;
}

// ---- checks of what a scenario changes

bool isInRange(const std::optional<double>& value, Range range)
{
    return !value || isInRange(*value, range);
}

/// Whether a node that was sound before its values were set surely is one that a reader accepts. One that may
/// not be is read.
bool isSurelySound(const Node& node)
{
    for (const double coordinate : node.at) {
        if (!std::isfinite(coordinate)) return false;
    }
    if (!node.boundary) return true;
    const Boundary& boundary = *node.boundary;
    const bool givesFlow = boundary.flowKind != Boundary::Flow::none;
    if (givesFlow && boundary.pressure && boundary.flowKind != Boundary::Flow::mass) return false;
    return (givesFlow || boundary.pressure) && isInRange(boundary.pressure, Range::any) &&
           isInRange(boundary.temperature, Range::positive) && isInRange(boundary.flow, Range::any);
}

/// The same for the cross-section of an element and what has to be smaller.
bool isSectionSurelySound(const Network& network, const Element& element)
{
    const Section& section = *element.section;
    const double diameter = section.hydraulicDiameter();
    if (!isInRange(section.area, Range::positive) || !isInRange(diameter, Range::positive)) return false;
    const double perimeter = section.diameter > 0.0 ? kPi * section.diameter : section.wettedPerimeter;
    if (!(section.area <= perimeter * perimeter / (4.0 * kPi))) {
        // The area that a diameter brings may be above that of its perimeter by a rounding.
        if (section.area != kPi * section.diameter * section.diameter / 4.0) return false;
    }
    if (element.kind->material == MaterialUse::roughness) {
        const auto roughness = roughnessOf(network, element);
        if (roughness && !(*roughness < diameter)) return false;
    }
    return element.property(TAVELL_ELEMENT_ORIFICE_BORE_DIAMETER).value_or(0.0) < diameter;
}

bool isSurelySound(const Network& network, const Element& element)
{
    const ElementKind& kind = *element.kind;
    if (!isInRange(element.length, Range::positive)) return false;
    if (element.hasCheckValve && !kind.canHaveCheckValve) return false;
    if (element.referenceDensity && !(kind.hasCurve && *element.referenceDensity > 0.0)) return false;
    for (const NumberKey& number : kind.numbers) {
        if (!isInRange(element.property(number.property), number.rule.range)) return false;
    }
    return kind.hasCurve ? !element.section : element.section && isSectionSurelySound(network, element);
}

/// A network that is there anyway, as a shared one.
std::shared_ptr<const Network> sharedView(const Network& network)
{
    return {std::shared_ptr<const Network>(), &network};
}

// ---- the numbers of a solution

double sizeOrValue(double value, Fold fold)
{
    const bool isSize = fold == Fold::largestSize || fold == Fold::whereLargestSize;
    return isSize ? std::fabs(value) : value;
}

double sumOf(const std::vector<double>& values, Fold fold)
{
    double sum = 0.0;
    std::size_t count = 0;
    for (const double value : values) {
        if (std::isnan(value)) continue;
        sum += value;
        ++count;
    }
    if (count == 0) return kNotANumber;
    return fold == Fold::mean ? sum / static_cast<double>(count) : sum;
}

double extremeOf(const std::vector<double>& values, Fold fold)
{
    const bool isSmallest = fold == Fold::smallest || fold == Fold::whereSmallest;
    double best = kNotANumber;
    std::size_t where = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double value = sizeOrValue(values[i], fold);
        if (std::isnan(value)) continue;
        if (!std::isnan(best) && !(isSmallest ? value < best : value > best)) continue;
        best = value;
        where = i;
    }
    const bool isPosition =
        fold == Fold::whereSmallest || fold == Fold::whereLargest || fold == Fold::whereLargestSize;
    return isPosition && !std::isnan(best) ? static_cast<double>(where) : best;
}

double numberOf(const tvkResult& result, const OutputNumber& wanted)
{
    if (wanted.fold == Fold::certificate) return result.certificate().isGood ? 1.0 : 0.0;
    if (wanted.fold == Fold::iterations) return result.solution->iterations;
    const auto* values =
        wanted.isOfNodes ? result.nodeValues(wanted.quantity) : result.elementValues(wanted.quantity);
    if (values == nullptr || values->empty()) return kNotANumber;
    if (wanted.fold == Fold::at) return (*values)[wanted.position];
    if (wanted.fold == Fold::sum || wanted.fold == Fold::mean) return sumOf(*values, wanted.fold);
    return extremeOf(*values, wanted.fold);
}

/// Stops a solve when its time is over or the call is to end.
struct Watch {
    const std::atomic<bool>& isStopWanted;
    Clock::time_point start;
    double limit;  // [s]
    bool isOver = false;

    Progress progress()
    {
        return {[](void* self, int) {
                    auto& watch = *static_cast<Watch*>(self);
                    const std::chrono::duration<double> spent = Clock::now() - watch.start;
                    watch.isOver = spent.count() >= watch.limit;
                    return watch.isOver || watch.isStopWanted.load(std::memory_order_relaxed);
                },
                this};
    }
};

/// What became of one scenario.
struct ScenarioOutcome {
    tvkStatus status = TVK_INTERNAL;
    int iterations = 0;
    Findings findings;
};

/// Solves scenarios one after the other, each from the base: one object for each thread.
class ScenarioSolver
{
public:
    ScenarioSolver(const ScenarioBatch& batch, const std::atomic<bool>& isStopWanted)
        : m_batch(batch), m_isStopWanted(isStopWanted), m_handle(std::make_shared<Network>(*batch.base), true)
    {
    }

    /// Writes the numbers of a scenario to its row.
    ScenarioOutcome solve(std::size_t scenario)
    {
        const double* values = m_batch.values + scenario * m_batch.inputCount;
        double* results = m_batch.results + scenario * m_batch.wanted.size();
        ScenarioOutcome outcome;
        if (isSet(values) && isSound())
            outcome = solveAsSet(results);
        else
            outcome.status = TVK_BAD_INPUT;
        m_found.list.append(outcome.findings);
        outcome.findings = std::move(m_found.list);
        m_found.list = {};
        restore();
        return outcome;
    }

private:
    /// Sets the values of a scenario; false, and findings, when one is refused.
    bool isSet(const double* values)
    {
        for (const KeyedInputs& inputs : m_batch.keyed) {
            if (!isSet(inputs, values)) return false;
        }
        if (m_batch.pointers.empty()) return true;
        for (const PointerInput& input : m_batch.pointers) {
            if (!std::isnan(values[input.column])) setAtPointer(input, values[input.column]);
        }
        return !m_found.list.hasErrors();
    }

    bool isSet(const KeyedInputs& inputs, const double* values)
    {
        m_positions.clear();
        m_values.clear();
        for (std::size_t i = 0; i < inputs.columns.size(); ++i) {
            const double value = values[inputs.columns[i]];
            if (std::isnan(value)) continue;
            m_positions.push_back(inputs.positions[i]);
            m_values.push_back(value);
        }
        if (m_positions.empty()) return true;
        auto& touched = inputs.isOfNodes ? m_touchedNodes : m_touchedElements;
        touched.insert(touched.end(), m_positions.begin(), m_positions.end());
        const auto call = inputs.isOfNodes ? tvkSetNodeValues : tvkSetElementValues;
        const tvkStatus status = call(&m_handle, inputs.key.c_str(), m_positions.size(), m_positions.data(),
                                      m_values.data(), &m_found);
        if (status == TVK_INTERNAL) throw std::bad_alloc();  // no refusal: the same values may do next time
        return status == TVK_OK;
    }

    void refusePointer(const PointerInput& input, std::string message)
    {
        m_found.list.add(Code::bad_option, Place{m_batch.base->file, 0, 0, input.text, ""},
                         std::move(message), "correct the pointer");
    }

    /// Sets a number in the file's value of a part, and reads that part again.
    void setAtPointer(const PointerInput& input, double number)
    {
        Network& network = m_handle.edit();
        const Reading reading{network.file, {}, m_found.list};
        PartReader parts(network, m_batch.nodePositions(), reading);
        json value = valueOf(network, input);
        try {
            value[input.place] = number;
        } catch (const json::exception&) {
            refusePointer(input, "the pointer leads nowhere");
            return;
        }
        readPart(network, input, value, parts);
    }

    static json valueOf(const Network& network, const PointerInput& input)
    {
        switch (input.of) {
        case PointerInput::Of::fluid:
            return fluidObject(network.fluid);
        case PointerInput::Of::settings:
            return settingsObject(network.settings);
        case PointerInput::Of::gravity:
            return gravityArray(network);
        case PointerInput::Of::node:
            return nodeObject(network.nodes[input.position]);
        case PointerInput::Of::element:
            break;
        }
        return elementObject(network, network.elements[input.position]);
    }

    void readPart(Network& network, const PointerInput& input, const json& value, PartReader& parts)
    {
        switch (input.of) {
        case PointerInput::Of::fluid:
            m_isCaseTouched = true;
            network.fluid = parts.readFluid(value, "/fluid");
            break;
        case PointerInput::Of::settings:
            m_isCaseTouched = true;
            network.settings = parts.readSettings(value, "/settings");
            break;
        case PointerInput::Of::gravity: {
            m_isCaseTouched = true;
            const NumberRule rule{Quantity::none, Range::any, "a component of the direction of gravity"};
            if (const auto vector = parts.readVector(value, rule, "/gravity", "")) network.gravity = *vector;
            break;
        }
        case PointerInput::Of::node:
            m_touchedNodes.push_back(input.position);
            readNode(network.nodes[input.position], value, input.position, parts);
            break;
        case PointerInput::Of::element:
            m_touchedElements.push_back(input.position);
            readElement(network.elements[input.position], value, input.position, parts);
            break;
        }
    }

    static void readNode(Node& node, const json& value, std::size_t position, PartReader& parts)
    {
        const std::size_t line = node.line;
        node = parts.readNode(value, "/nodes/" + std::to_string(position));
        node.line = line;
    }

    static void readElement(Element& element, const json& value, std::size_t position, PartReader& parts)
    {
        const std::size_t line = element.line;
        element = parts.readElement(value, "/elements/" + std::to_string(position));
        element.line = line;
    }

    /// Whether the network passes every check of a reader, of which only those on what has changed can fail;
    /// findings when it does not.
    bool isSound()
    {
        Network& network = m_handle.edit();
        const Reading reading{network.file, {}, m_found.list};
        const Positions none;
        for (const std::size_t i : m_touchedNodes) {
            Node& node = network.nodes[i];
            if (isSurelySound(node)) continue;
            PartReader parts(network, none, reading);
            readNode(node, nodeObject(node), i, parts);
        }
        for (const std::size_t i : m_touchedElements) {
            Element& element = network.elements[i];
            if (isSurelySound(network, element)) continue;
            PartReader parts(network, m_batch.nodePositions(), reading);
            readElement(element, elementObject(network, element), i, parts);
        }
        if (!m_found.list.hasErrors()) checkTogether(network, PointerOf::parts, "", m_found.list);
        return !m_found.list.hasErrors();
    }

    ScenarioOutcome solveAsSet(double* results)
    {
        const Network& network = m_handle.get();
        Watch watch{m_isStopWanted, Clock::now(), m_batch.timeLimit};
        Solution solved = solveNetwork(network, watch.progress());
        ScenarioOutcome outcome;
        outcome.status = statusOf(solved);
        outcome.iterations = solved.iterations;
        outcome.findings = watch.isOver ? atTimeLimit(solved) : std::move(solved.findings);
        if (!solved.hasResults()) return outcome;
        const tvkResult result(sharedView(network),
                               std::shared_ptr<const Solution>(std::shared_ptr<const Solution>(), &solved));
        for (std::size_t i = 0; i < m_batch.wanted.size(); ++i)
            results[i] = numberOf(result, m_batch.wanted[i]);
        return outcome;
    }

    /// A solve that did not begin was refused: one that failed says so.
    static tvkStatus statusOf(const Solution& solution)
    {
        if (solution.outcome == Outcome::converged) return TVK_OK;
        if (solution.outcome == Outcome::cancelled) return TVK_CANCELLED;
        const auto& list = solution.findings.list();
        const bool hasFailed = std::any_of(list.begin(), list.end(), [](const Finding& finding) {
            return finding.code == Code::not_converged;
        });
        return hasFailed || solution.hasResults() ? TVK_NOT_CONVERGED : TVK_BAD_INPUT;
    }

    /// The findings of a solve that its time limit stopped.
    Findings atTimeLimit(const Solution& solution) const
    {
        Findings findings;
        for (const Finding& finding : solution.findings.list()) {
            if (finding.code != Code::solve_cancelled) {
                findings.add(finding);
                continue;
            }
            Finding ownFinding = finding;
            ownFinding.message =
                "the solve was stopped at its time limit of " + shortNumber(m_batch.timeLimit) + " s after " +
                std::to_string(solution.iterations) + (solution.iterations == 1 ? " step" : " steps");
            ownFinding.remedy = "raise \"time_limit\", or look at this scenario by itself";
            findings.add(std::move(ownFinding));
        }
        return findings;
    }

    /// Puts back what the scenario changed.
    void restore()
    {
        Network& network = m_handle.edit();
        const Network& base = *m_batch.base;
        for (const std::size_t i : m_touchedNodes)
            network.nodes[i] = base.nodes[i];
        for (const std::size_t i : m_touchedElements)
            network.elements[i] = base.elements[i];
        m_touchedNodes.clear();
        m_touchedElements.clear();
        if (!m_isCaseTouched) return;
        network.fluid = base.fluid;
        network.settings = base.settings;
        network.gravity = base.gravity;
        m_isCaseTouched = false;
    }

    const ScenarioBatch& m_batch;
    const std::atomic<bool>& m_isStopWanted;
    tvkNetwork m_handle;  // the base, with the values of the scenario at hand
    tvkFindings m_found;
    std::vector<std::size_t> m_positions;
    std::vector<double> m_values;
    std::vector<std::size_t> m_touchedNodes;
    std::vector<std::size_t> m_touchedElements;
    bool m_isCaseTouched = false;
};

/// Shares the scenarios of a batch out to threads.
class BatchRun
{
public:
    explicit BatchRun(const ScenarioBatch& batch) : m_batch(batch) {}

    bool run(const Progress& progress)
    {
        clearRows();
        if (isStopAsked(progress)) return false;
        const std::size_t threads = std::min(m_batch.threads, m_batch.scenarios);
        if (threads < 2)
            work(&progress);
        else
            workOnThreads(threads, progress);
        if (m_isStopWanted.load()) return false;
        return true;
    }

private:
    void clearRows()
    {
        std::fill_n(m_batch.results, m_batch.scenarios * m_batch.wanted.size(), kNotANumber);
        for (std::size_t i = 0; i < m_batch.scenarios; ++i) {
            if (m_batch.outcomes != nullptr) m_batch.outcomes[i] = TVK_CANCELLED;
            if (m_batch.iterations != nullptr) m_batch.iterations[i] = 0;
        }
    }

    /// Tells how many scenarios are done; true when that is to be the end.
    bool isStopAsked(const Progress& progress)
    {
        if (progress.isStopWanted == nullptr) return false;
        const std::size_t done = std::min(m_done.load(), static_cast<std::size_t>(INT_MAX));
        if (progress.isStopWanted(progress.user, static_cast<int>(done))) m_isStopWanted.store(true);
        return m_isStopWanted.load();
    }

    /// Solves scenarios as long as there are any. progress is asked after each; null on a thread that is not
    /// that of the call.
    void work(const Progress* progress)
    {
        std::optional<ScenarioSolver> solver;
        while (!m_isStopWanted.load()) {
            const std::size_t scenario = m_next.fetch_add(1);
            if (scenario >= m_batch.scenarios) return;
            solve(scenario, solver);
            m_done.fetch_add(1);
            if (progress != nullptr && isStopAsked(*progress)) return;
        }
    }

    /// One scenario; what goes wrong costs its row only.
    void solve(std::size_t scenario, std::optional<ScenarioSolver>& solver) noexcept
    {
        try {
            if (!solver) solver.emplace(m_batch, m_isStopWanted);
            const ScenarioOutcome outcome = solver->solve(scenario);
            enter(scenario, outcome);
        } catch (const std::bad_alloc&) {
            solver.reset();
            enterFailure(scenario, Code::out_of_memory, "memory ran out");
        } catch (const std::exception& error) {
            solver.reset();
            enterFailure(scenario, Code::internal_error, error.what());
        } catch (...) {
            solver.reset();
            enterFailure(scenario, Code::internal_error, "an unknown exception");
        }
    }

    void enter(std::size_t scenario, const ScenarioOutcome& outcome)
    {
        if (m_batch.texts != nullptr && outcome.status != TVK_OK)
            m_batch.texts[scenario] = newText(outcome.findings.json());
        if (m_batch.outcomes != nullptr) m_batch.outcomes[scenario] = outcome.status;
        if (m_batch.iterations != nullptr) m_batch.iterations[scenario] = outcome.iterations;
    }

    void enterFailure(std::size_t scenario, Code code, const char* what) noexcept
    {
        const std::size_t width = m_batch.wanted.size();
        std::fill_n(m_batch.results + scenario * width, width, kNotANumber);
        if (m_batch.outcomes != nullptr) m_batch.outcomes[scenario] = TVK_INTERNAL;
        if (m_batch.texts == nullptr || m_batch.texts[scenario] != nullptr) return;
        try {
            Findings findings;
            findings.add(code, {}, what);
            m_batch.texts[scenario] = newText(findings.json());
        } catch (...) {  // the row has its outcome, and there is no memory for a text
            m_batch.texts[scenario] = nullptr;
        }
    }

    /// Joins its threads whatever happens.
    class Team
    {
    public:
        explicit Team(std::atomic<bool>& isStopWanted) : m_isStopWanted(isStopWanted) {}
        ~Team()
        {
            if (m_isLeftEarly) m_isStopWanted.store(true);
            for (std::thread& thread : m_threads)
                thread.join();
        }
        Team(const Team&) = delete;
        Team& operator=(const Team&) = delete;

        template <class Work> bool start(std::size_t count, Work work)
        {
            m_threads.reserve(count);
            try {
                while (m_threads.size() < count)
                    m_threads.emplace_back(work);
            } catch (const std::system_error&) {  // the system gives no more: those that run do the work
                return !m_threads.empty();
            }
            return true;
        }
        void isDone() { m_isLeftEarly = false; }

    private:
        std::atomic<bool>& m_isStopWanted;
        std::vector<std::thread> m_threads;
        bool m_isLeftEarly = true;
    };

    void workOnThreads(std::size_t threads, const Progress& progress)
    {
        std::mutex mutex;
        std::condition_variable isFinished;
        Team team(m_isStopWanted);
        const bool hasStarted = team.start(threads, [&] {
            work(nullptr);
            const std::lock_guard<std::mutex> lock(mutex);
            isFinished.notify_one();
        });
        if (!hasStarted) {
            work(&progress);
        } else {
            std::size_t told = 0;
            std::unique_lock<std::mutex> lock(mutex);
            while (m_done.load() < m_batch.scenarios && !m_isStopWanted.load()) {
                isFinished.wait_for(lock, kProgressInterval);
                if (m_done.load() == told) continue;
                told = m_done.load();
                lock.unlock();
                isStopAsked(progress);
                lock.lock();
            }
            if (told != m_batch.scenarios && !m_isStopWanted.load()) isStopAsked(progress);
        }
        team.isDone();
    }

    const ScenarioBatch& m_batch;
    std::atomic<std::size_t> m_next{0};
    std::atomic<std::size_t> m_done{0};
    std::atomic<bool> m_isStopWanted{false};
};

}  // namespace

ScenarioBatch::ScenarioBatch(std::shared_ptr<const Network> network, std::size_t inputs_,
                             const tvkInput* inputs, std::size_t outputCount, const tvkOutput* outputs)
    : base(std::move(network)), inputCount(inputs_), m_handle(base)
{
    if (inputCount > 0) required(inputs, "inputs");
    if (outputCount > 0) required(outputs, "outputs");
    for (std::size_t i = 0; i < inputCount; ++i)
        addInput(inputs[i], i);
    wanted.reserve(outputCount);
    for (std::size_t i = 0; i < outputCount; ++i)
        wanted.push_back(outputNumber(*base, outputs[i]));
}

void ScenarioBatch::addInput(const tvkInput& input, std::size_t column)
{
    const std::string key = &required(input.key, "key");
    if (input.part == TVK_NETWORK) {
        addPointer(key, column);
        return;
    }
    if (input.part != TVK_NODE && input.part != TVK_ELEMENT)
        refuse("the part " + std::to_string(input.part) + " of an input is unknown", "give a tvkPart");
    addKeyed(input.part == TVK_NODE, key, input.position, column);
}

void ScenarioBatch::addKeyed(bool isOfNodes, const std::string& key, std::size_t position, std::size_t column)
{
    requirePosition(position, isOfNodes ? base->nodes.size() : base->elements.size());
    auto found = std::find_if(keyed.begin(), keyed.end(), [&](const KeyedInputs& inputs) {
        return inputs.isOfNodes == isOfNodes && inputs.key == key;
    });
    if (found == keyed.end()) {
        if (!isKey(m_handle, isOfNodes, key))
            refuse(std::string(isOfNodes ? "nodes" : "elements") + " have no value " + inQuotes(key),
                   isOfNodes ? "give a key of tvkSetNodeValues, such as \"outlet/mass_flow\""
                             : "give a key of tvkSetElementValues, such as \"diameter\"");
        found = keyed.insert(keyed.end(), KeyedInputs{isOfNodes, key, {}, {}});
    }
    found->columns.push_back(column);
    found->positions.push_back(position);
}

void ScenarioBatch::addPointer(const std::string& text, std::size_t column)
{
    const char* const kRemedy =
        "point into an object in the form of a scenario: \"/fluid/temperature\", \"/nodes/NAME/at/2\"";
    const auto [first, rest] = firstToken(text);
    PointerInput input;
    input.text = text;
    input.column = column;
    std::string place = rest;
    if (text.empty() || text.front() != '/') refuse(inQuotes(text) + " is no JSON pointer", kRemedy);
    if (first == "nodes" || first == "elements") {
        const bool isOfNodes = first == "nodes";
        const auto [name, inside] = firstToken(rest);
        input.of = isOfNodes ? PointerInput::Of::node : PointerInput::Of::element;
        input.position = isOfNodes ? positionOf(m_handle.nodeNames(), name, "node", text)
                                   : positionOf(m_handle.elementNames(), name, "element", text);
        // What has a key of its own is set in that way.
        if (inside.size() > 1 && isKey(m_handle, isOfNodes, inside.substr(1))) {
            addKeyed(isOfNodes, inside.substr(1), input.position, column);
            return;
        }
        place = inside;
    } else if (first == "settings") {
        input.of = PointerInput::Of::settings;
    } else if (first == "gravity") {
        input.of = PointerInput::Of::gravity;
    } else if (first != "fluid") {
        refuse(inQuotes(text) + " points to nothing that a scenario can change", kRemedy);
    }
    if (place.size() < 2) refuse(inQuotes(text) + " points to no number", kRemedy);
    try {
        input.place = json::json_pointer(place);
    } catch (const json::exception&) {
        refuse(inQuotes(text) + " is no JSON pointer", kRemedy);
    }
    pointers.push_back(std::move(input));
}

const Positions& ScenarioBatch::nodePositions() const
{
    std::call_once(m_isIndexed, [this] { m_nodePositions = positionsOf(base->nodes); });
    return m_nodePositions;
}

bool solveBatch(const ScenarioBatch& batch, const Progress& progress)
{
    return BatchRun(batch).run(progress);
}

}  // namespace kit
