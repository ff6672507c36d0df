#include "pressure_solve.h"

#include <algorithm>
#include <cmath>

#include "constants.h"
#include "errors.h"

namespace lcn
{

namespace
{

constexpr std::uint32_t kPressureSolutionFailed = 701200;
constexpr int kAssemblyFailed = 6;  // reason: an entry found no place in the matrix

/// Free neighbours of every free node, one entry per connecting element.
Graph freeGraph(const ElementArray& elements, int elementTotal, const std::vector<int>& equation, int n)
{
    Graph graph;
    graph.rowStart.assign(static_cast<std::size_t>(n) + 2, 0);
    const auto forEachLink = [&](auto&& visit) {
        for (int e = 1; e <= elementTotal; ++e) {
            const int r = equation[static_cast<std::size_t>(elements[e].LocalStartNode)];
            const int c = equation[static_cast<std::size_t>(elements[e].LocalEndNode)];
            if (r != 0 && c != 0 && r != c) visit(static_cast<std::size_t>(r), static_cast<std::size_t>(c));
        }
    };
    forEachLink([&](std::size_t r, std::size_t c) {
        ++graph.rowStart[r];
        ++graph.rowStart[c];
    });
    int next = 1;
    for (int& start : graph.rowStart) {
        const int count = start;
        start = next;
        next += count;
    }
    // rowStart[0] counted nothing, so row r starts at rowStart[r]; the last entry is the end
    graph.columns.assign(static_cast<std::size_t>(next), 0);
    std::vector<int> fill(graph.rowStart);
    forEachLink([&](std::size_t r, std::size_t c) {
        graph.columns[static_cast<std::size_t>(fill[r]++)] = static_cast<int>(c);
        graph.columns[static_cast<std::size_t>(fill[c]++)] = static_cast<int>(r);
    });
    return graph;
}

}  // namespace

void PressureSystem::prepare(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    m_equation.assign(static_cast<std::size_t>(var.NodeTotal) + 1, 0);
    m_freeNodes.assign(1, 0);
    for (int i = 1; i <= var.NodeTotal; ++i) {
        if (nodes[i].flag != kFreeNode) continue;
        m_equation[static_cast<std::size_t>(i)] = static_cast<int>(m_freeNodes.size());
        m_freeNodes.push_back(i);
    }
    const int n = static_cast<int>(m_freeNodes.size()) - 1;
    if (n < 1) lcnErrmsg(var, kNoInternalNodes, 0, 0, 0, 0);

    // kept: always symmetric. Each pair of nodes is assembled once, so the matrix holds one value per pair.
    m_matrix.setUp(freeGraph(elements, var.ElemTotal, m_equation, n), true);

    m_links.clear();
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const int r = m_equation[static_cast<std::size_t>(elements[e].LocalStartNode)];
        const int c = m_equation[static_cast<std::size_t>(elements[e].LocalEndNode)];
        if (r != 0 && c != 0 && r != c) m_links.push_back({e, m_matrix.slot(r, c)});
    }
    if (m_matrix.status() != lcnSparseMat::kOk) reportStatus(var, kAssemblyFailed);
}

void PressureSystem::fillMatrix(const NodeEquations& equations)
{
    m_matrix.clear();
    for (std::size_t r = 1; r < m_freeNodes.size(); ++r) {
        const auto node = static_cast<std::size_t>(m_freeNodes[r]);
        m_matrix.addToDiagonal(static_cast<int>(r), equations.diag[node]);
        m_matrix.rightHandSide(static_cast<int>(r)) = equations.rhs[node];
    }
    for (const Link& link : m_links)
        m_matrix.addToSlot(link.slot, -equations.coef[static_cast<std::size_t>(link.element)]);
}

void PressureSystem::reportStatus(lcnNET_var& var, int reason)
{
    if (m_reported.insert(reason).second) var.AddMessage(kPressureSolutionFailed, reason);
}

/// The sum of the free nodes' balances over the sum of their conductances toward nodes that are not free
/// [Pa]; 0.0 when there is no such conductance.
double PressureSystem::lumpedCorrection(const NodeEquations& equations) const
{
    double balance = 0.0;
    double conductance = 0.0;
    for (std::size_t r = 1; r < m_freeNodes.size(); ++r) {
        const auto node = static_cast<std::size_t>(m_freeNodes[r]);
        balance += equations.rhs[node];
        conductance += equations.diag[node];
    }
    for (const Link& link : m_links)
        conductance -= 2.0 * equations.coef[static_cast<std::size_t>(link.element)];
    return std::fabs(conductance) < kTiny ? 0.0 : balance / conductance;
}

int PressureSystem::solvePressures(lcnNET_var& var, const NodeEquations& equations,
                                   std::vector<double>& corrections)
{
    std::fill(corrections.begin(), corrections.end(), 0.0);
    fillMatrix(equations);
    const int status = m_matrix.solve();

    if (status == lcnSparseMat::kOk) {
        for (std::size_t r = 1; r < m_freeNodes.size(); ++r)
            corrections[static_cast<std::size_t>(m_freeNodes[r])] =
                m_matrix.rightHandSide(static_cast<int>(r));
        return status;
    }
    reportStatus(var, status);
    if (status == lcnSparseMat::kSingular)
        throw FatalException(
            "Error occurred while calculating pressures in the circuit; un-symmetric matrix is singular");
    if (status == lcnSparseMat::kNotPositiveDefinite) {
        const double common = lumpedCorrection(equations);
        for (std::size_t r = 1; r < m_freeNodes.size(); ++r)
            corrections[static_cast<std::size_t>(m_freeNodes[r])] = common;
    }
    return status;
}

}  // namespace lcn
