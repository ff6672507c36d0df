// The smallest part of a network that still fails: delta debugging (Zeller and Hildebrandt 2002) over its
// elements.

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_map>

#include <tavell/Constants.h>

#include "doctor.h"
#include "doctor_graph.h"
#include "doctor_support.h"
#include "element_kinds.h"

namespace kit
{

namespace
{

using namespace doctor;

using Positions = std::vector<std::size_t>;

constexpr int kMostSteps = 400;              // of one solve; an ordinary one takes about 30
constexpr double kHelperPressure = 1e5;      // [Pa], of the part that completes a network
constexpr double kHelperDrop = 100.0;        // [Pa]
constexpr double kHelperDiameter = 0.01;     // [m]
constexpr double kHelperLength = 10.0;       // [m]
constexpr double kDefaultCutPressure = 1e5;  // [Pa], where nothing tells a better one

/// The mean of the given pressures [Pa].
double meanGivenPressure(const Network& network)
{
    double sum = 0.0;
    std::size_t count = 0;
    for (const Node& node : network.nodes) {
        if (!node.boundary || !node.boundary->pressure) continue;
        sum += *node.boundary->pressure;
        ++count;
    }
    return count == 0 ? kDefaultCutPressure : sum / static_cast<double>(count);
}

/// Makes networks of some of the elements of a network.
class PartMaker
{
public:
    explicit PartMaker(const Network& network)
        : m_network(network), m_openCount(openElementCounts(network)),
          m_cutPressure(meanGivenPressure(network))
    {
        m_frame = network;
        m_frame.nodes.clear();
        m_frame.elements.clear();
        m_frame.scenarios.clear();
        m_frame.answer.reset();
    }

    /// The elements with their nodes and what is given there. Where elements were taken away the ends stay
    /// closed, but a connected piece that lost its pressure gets one at such an end.
    Network make(const Positions& elements) const
    {
        Network part = m_frame;
        std::unordered_map<std::size_t, std::size_t> newPosition;
        Positions oldPosition;
        const auto nodeOf = [&](std::size_t node) {
            const auto [place, isNew] = newPosition.emplace(node, part.nodes.size());
            if (isNew) {
                part.nodes.push_back(m_network.nodes[node]);
                oldPosition.push_back(node);
            }
            return place->second;
        };
        for (const std::size_t i : elements) {
            part.elements.push_back(m_network.elements[i]);
            part.elements.back().from = nodeOf(m_network.elements[i].from);
            part.elements.back().to = nodeOf(m_network.elements[i].to);
        }
        givePressures(part, oldPosition);
        complete(part);
        return part;
    }

private:
    void givePressures(Network& part, const Positions& oldPosition) const
    {
        const std::vector<std::size_t> openCount = openElementCounts(part);
        const Parts pieces = findParts(part, makeGraph(part, [](std::size_t) { return true; }));
        for (const auto& nodes : pieces.nodes) {
            const auto hasPressure = [&](std::size_t i) {
                return part.nodes[i].boundary && part.nodes[i].boundary->pressure;
            };
            if (std::any_of(nodes.begin(), nodes.end(), hasPressure)) continue;
            const auto cut = std::find_if(nodes.begin(), nodes.end(), [&](std::size_t i) {
                return !part.nodes[i].boundary && openCount[i] < m_openCount[oldPosition[i]];
            });
            if (cut == nodes.end()) continue;
            Boundary boundary;
            boundary.isInlet = true;
            boundary.pressure = m_cutPressure;
            part.nodes[*cut].boundary = boundary;
        }
    }

    /// A solve wants an inlet, an outlet, a given pressure and a node of unknown pressure: a part that lacks
    /// one of them gets a pair of pipes beside it that has them all and is sure to solve.
    static void complete(Network& part)
    {
        const auto isBoundary = [&part](bool isInlet) {
            return std::any_of(part.nodes.begin(), part.nodes.end(), [isInlet](const Node& node) {
                return node.boundary && node.boundary->isInlet == isInlet;
            });
        };
        const std::vector<std::size_t> openCount = openElementCounts(part);
        bool hasFreeNode = false;
        for (std::size_t i = 0; i < part.nodes.size(); ++i)
            hasFreeNode = hasFreeNode || (!part.nodes[i].boundary && openCount[i] > 1);
        const bool hasPressure = std::any_of(part.nodes.begin(), part.nodes.end(), [](const Node& node) {
            return node.boundary && node.boundary->pressure;
        });
        if (!isBoundary(true) || !isBoundary(false) || !hasPressure || !hasFreeNode) addHelper(part);
    }

    static void addHelper(Network& part)
    {
        const std::size_t first = part.nodes.size();
        for (int i = 0; i < 3; ++i) {
            Node node;
            node.name = "helper " + std::to_string(i);
            node.at = {i * kHelperLength, -kHelperLength, 0.0};
            if (!part.nodes.empty()) node.at[2] = part.nodes.front().at[2];
            if (i != 1) {
                node.boundary.emplace();
                node.boundary->isInlet = i == 0;
                node.boundary->pressure = i == 0 ? kHelperPressure : kHelperPressure - kHelperDrop;
            }
            part.nodes.push_back(node);
        }
        for (std::size_t i = 0; i < 2; ++i) {
            Element pipe;
            pipe.name = "helper " + std::to_string(i);
            pipe.kind = findElementKind("pipe");
            pipe.from = first + i;
            pipe.to = first + i + 1;
            constexpr double kPi = 3.14159265358979323846;
            pipe.section = Section{kHelperDiameter, 0.0, kPi / 4.0 * kHelperDiameter * kHelperDiameter};
            if (part.coordinates == Coordinates::schematic) pipe.length = kHelperLength;
            part.elements.push_back(pipe);
        }
    }

    const Network& m_network;
    const std::vector<std::size_t> m_openCount;
    const double m_cutPressure;
    Network m_frame;  // everything but nodes and elements
};

/// How a solve failed: the codes of its errors, and whether it went on for too long.
struct Failure {
    std::set<Code> errors;
    bool tookTooLong = false;
    std::string why;

    bool isAny() const { return tookTooLong || !errors.empty(); }

    bool isLike(const Failure& other) const
    {
        if (tookTooLong && other.tookTooLong) return true;
        return std::any_of(errors.begin(), errors.end(),
                           [&other](Code code) { return other.errors.count(code) > 0; });
    }
};

/// What the callback of one solve needs.
struct Watch {
    const Progress* progress = nullptr;
    bool isStopped = false;  // by the one who asked for the search
    bool tookTooLong = false;
};

bool isStopWanted(void* user, int step)
{
    Watch& watch = *static_cast<Watch*>(user);
    const Progress& progress = *watch.progress;
    if (progress.isStopWanted != nullptr && progress.isStopWanted(progress.user, step))
        watch.isStopped = true;
    else if (step >= kMostSteps)
        watch.tookTooLong = true;
    return watch.isStopped || watch.tookTooLong;
}

class Search
{
public:
    Search(const Network& network, int mostSolves, const Progress& progress)
        : m_network(network), m_maker(network), m_progress(progress), m_solvesLeft(mostSolves)
    {
    }

    std::optional<FailingPart> run()
    {
        if (m_solvesLeft <= 0) return std::nullopt;
        m_whole = solve(m_network);
        if (!m_whole.isAny()) return std::nullopt;
        m_best = openElements();
        m_bestFailure = m_whole;
        if (m_best.empty()) return std::nullopt;
        searchParts();
        searchElements();
        std::sort(m_best.begin(), m_best.end());
        return FailingPart{m_best, m_bestFailure.why, m_solves};
    }

private:
    Positions openElements() const
    {
        Positions open;
        for (std::size_t i = 0; i < m_network.elements.size(); ++i) {
            if (!m_network.elements[i].isClosed) open.push_back(i);
        }
        return open;
    }

    bool canGoOn() const { return !m_isStopped && m_solvesLeft > 0; }

    Failure solve(const Network& network)
    {
        --m_solvesLeft;
        ++m_solves;
        Watch watch;
        watch.progress = &m_progress;
        const Solution solution = solveNetwork(network, Progress{isStopWanted, &watch});
        m_isStopped = m_isStopped || watch.isStopped;
        Failure failure;
        if (watch.isStopped || solution.outcome == Outcome::converged) return failure;
        failure.tookTooLong = watch.tookTooLong;
        if (watch.tookTooLong)
            failure.why = "the solve did not end in " + std::to_string(kMostSteps) + " steps";
        for (const Finding& finding : solution.findings.list()) {
            if (finding.severity != Severity::error) continue;
            if (failure.why.empty()) failure.why = finding.message;
            failure.errors.insert(finding.code);
        }
        return failure;
    }

    /// Whether some elements fail on their own as the whole does; they are then the best part known.
    bool fails(const Positions& elements)
    {
        if (!canGoOn() || elements.empty()) return false;
        Failure failure = solve(m_maker.make(elements));
        if (!failure.isLike(m_whole)) return false;
        m_best = elements;
        m_bestFailure = std::move(failure);
        return true;
    }

    /// First whole connected parts, the smallest first. The elements of the best one are then put in the
    /// order in which they are met from one of its nodes, so that neighbours stay together.
    void searchParts()
    {
        const Graph graph =
            makeGraph(m_network, [this](std::size_t i) { return !m_network.elements[i].isClosed; });
        const Parts parts = findParts(m_network, graph);
        std::vector<Positions> byPart(parts.nodes.size());
        for (const std::size_t i : m_best)
            byPart[parts.partOf[m_network.elements[i].from]].push_back(i);
        byPart.erase(
            std::remove_if(byPart.begin(), byPart.end(), [](const Positions& part) { return part.empty(); }),
            byPart.end());
        std::stable_sort(byPart.begin(), byPart.end(),
                         [](const Positions& a, const Positions& b) { return a.size() < b.size(); });
        for (std::size_t i = 0; byPart.size() > 1 && i < byPart.size(); ++i) {
            if (m_solves > m_solvesLeft) break;  // half of the solves are for what follows
            if (fails(byPart[i])) break;
        }
        sortByNeighbourhood(graph);
    }

    void sortByNeighbourhood(const Graph& graph)
    {
        std::vector<bool> isWanted(m_network.elements.size(), false);
        for (const std::size_t i : m_best)
            isWanted[i] = true;
        std::vector<bool> isSeen(m_network.nodes.size(), false);
        Positions sorted;
        for (const std::size_t start : m_best) {
            Positions queue{m_network.elements[start].from};
            if (isSeen[queue.front()]) continue;
            isSeen[queue.front()] = true;
            for (std::size_t next = 0; next < queue.size(); ++next) {
                for (std::size_t k = graph.first[queue[next]]; k < graph.first[queue[next] + 1]; ++k) {
                    const std::size_t i = graph.elements[k];
                    if (isWanted[i]) sorted.push_back(i);
                    isWanted[i] = false;
                    const std::size_t other = otherEnd(m_network.elements[i], queue[next]);
                    if (!isSeen[other]) queue.push_back(other);
                    isSeen[other] = true;
                }
            }
        }
        for (const std::size_t i : m_best) {
            if (isWanted[i]) sorted.push_back(i);
        }
        m_best = std::move(sorted);
    }

    /// Shares of the elements alone, then everything but a share, then smaller shares.
    void searchElements()
    {
        std::size_t shares = 2;
        while (canGoOn() && m_best.size() > 1) {
            shares = std::min(shares, m_best.size());
            if (reduceTo(shares)) {
                shares = 2;
            } else if (reduceBy(shares)) {
                shares = std::max<std::size_t>(shares - 1, 2);
            } else {
                if (shares == m_best.size()) return;
                shares *= 2;
            }
        }
    }

    static Positions share(const Positions& all, std::size_t number, std::size_t shares)
    {
        const auto place = [&](std::size_t k) {
            return all.begin() + static_cast<std::ptrdiff_t>(all.size() * k / shares);
        };
        return {place(number), place(number + 1)};
    }

    bool reduceTo(std::size_t shares)
    {
        const Positions all = m_best;
        for (std::size_t k = 0; k < shares; ++k) {
            if (fails(share(all, k, shares))) return true;
        }
        return false;
    }

    bool reduceBy(std::size_t shares)
    {
        if (shares <= 2) return false;  // the rest of a half is the other half
        const Positions all = m_best;
        for (std::size_t k = 0; k < shares; ++k) {
            Positions rest(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(all.size() * k / shares));
            rest.insert(rest.end(), all.begin() + static_cast<std::ptrdiff_t>(all.size() * (k + 1) / shares),
                        all.end());
            if (fails(rest)) return true;
        }
        return false;
    }

    const Network& m_network;
    const PartMaker m_maker;
    const Progress m_progress;
    int m_solvesLeft;
    int m_solves = 0;
    bool m_isStopped = false;
    Failure m_whole;
    Positions m_best;
    Failure m_bestFailure;
};

}  // namespace

std::optional<FailingPart> smallestFailingPart(const Network& network, int mostSolves,
                                               const Progress& progress)
{
    return Search(network, mostSolves, progress).run();
}

}  // namespace kit
