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
constexpr int kSmallestFast = 20;   // equations; smaller systems would gain less than 10 us a solve

/// Free neighbours of every free node, one entry per connecting element.
Graph graphOf(const std::vector<EquationPair>& pairs, int n)
{
    Graph graph;
    graph.rowStart.assign(static_cast<std::size_t>(n) + 2, 0);
    for (const EquationPair& pair : pairs) {
        ++graph.rowStart[static_cast<std::size_t>(pair.row)];
        ++graph.rowStart[static_cast<std::size_t>(pair.column)];
    }
    int next = 1;
    for (int& start : graph.rowStart) {
        const int count = start;
        start = next;
        next += count;
    }
    // rowStart[0] counted nothing, so row r starts at rowStart[r]; the last entry is the end
    graph.columns.assign(static_cast<std::size_t>(next), 0);
    std::vector<int> fill(graph.rowStart);
    for (const EquationPair& pair : pairs) {
        graph.columns[static_cast<std::size_t>(fill[static_cast<std::size_t>(pair.row)]++)] = pair.column;
        graph.columns[static_cast<std::size_t>(fill[static_cast<std::size_t>(pair.column)]++)] = pair.row;
    }
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
    if (size() < 1) lcnErrmsg(var, kNoInternalNodes, 0, 0, 0, 0);

    m_links.clear();
    m_pairs.clear();
    m_waysOut.clear();
    for (int e = 1; e <= var.ElemTotal; ++e) {
        const int r = equationOf(elements[e].LocalStartNode);
        const int c = equationOf(elements[e].LocalEndNode);
        if (r == c) continue;
        if (r == 0 || c == 0) {
            m_waysOut.push_back({r == 0 ? c : r, e});
            continue;
        }
        m_links.push_back(e);
        m_pairs.push_back({r, c});
    }
    m_isFactorPrepared = false;
    m_isMatrixLaidOut = false;
}

// kept: always symmetric. Each pair of nodes is assembled once, so the matrix holds one value per pair.
void PressureSystem::layOutMatrix()
{
    if (m_isMatrixLaidOut) return;
    m_matrix.setUp(graphOf(m_pairs, size()), true);
    m_slots.clear();
    for (const EquationPair& pair : m_pairs)
        m_slots.push_back(m_matrix.slot(pair.row, pair.column));
    m_isMatrixLaidOut = true;
}

const lcnSparseMat& PressureSystem::matrix()
{
    layOutMatrix();
    return m_matrix;
}

bool PressureSystem::solveFast(const NodeEquations& equations, std::vector<double>& corrections)
{
    if (!m_isFactorPrepared) {
        m_factor.usePortableKernels(m_first == Factorisation::kPortable);
        m_factor.prepare(size(), m_pairs);
        m_isFactorPrepared = true;
    }
    m_outside.assign(m_freeNodes.size(), 0.0);
    m_rhs.resize(m_freeNodes.size());
    m_conductance.resize(m_links.size());
    for (std::size_t r = 1; r < m_freeNodes.size(); ++r)
        m_rhs[r] = equations.rhs[static_cast<std::size_t>(m_freeNodes[r])];
    for (const WayOut& way : m_waysOut)
        m_outside[static_cast<std::size_t>(way.equation)] +=
            equations.coef[static_cast<std::size_t>(way.element)];
    for (const int node : equations.withoutConductance)
        m_outside[static_cast<std::size_t>(equationOf(node))] += kLargeConductance;
    for (std::size_t i = 0; i < m_links.size(); ++i)
        m_conductance[i] = equations.coef[static_cast<std::size_t>(m_links[i])];
    if (!m_factor.factorise(m_outside.data(), m_conductance.data())) return false;
    m_factor.solve(m_rhs.data());
    for (std::size_t r = 1; r < m_freeNodes.size(); ++r)
        corrections[static_cast<std::size_t>(m_freeNodes[r])] = m_rhs[r];
    return true;
}

void PressureSystem::fillMatrix(const NodeEquations& equations)
{
    m_matrix.clear();
    for (std::size_t r = 1; r < m_freeNodes.size(); ++r) {
        const auto node = static_cast<std::size_t>(m_freeNodes[r]);
        m_matrix.addToDiagonal(static_cast<int>(r), equations.diag[node]);
        m_matrix.rightHandSide(static_cast<int>(r)) = equations.rhs[node];
    }
    for (std::size_t i = 0; i < m_links.size(); ++i)
        m_matrix.addToSlot(m_slots[i], -equations.coef[static_cast<std::size_t>(m_links[i])]);
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
    for (const int e : m_links)
        conductance -= 2.0 * equations.coef[static_cast<std::size_t>(e)];
    return std::fabs(conductance) < kTiny ? 0.0 : balance / conductance;
}

int PressureSystem::solvePressures(lcnNET_var& var, const NodeEquations& equations,
                                   std::vector<double>& corrections)
{
    std::fill(corrections.begin(), corrections.end(), 0.0);
    const bool triesFast = m_first != Factorisation::kReference && size() >= kSmallestFast;
    if (triesFast && solveFast(equations, corrections)) return lcnSparseMat::kOk;

    if (!m_isMatrixLaidOut) {
        layOutMatrix();
        if (m_matrix.status() != lcnSparseMat::kOk) reportStatus(var, kAssemblyFailed);
    }
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
