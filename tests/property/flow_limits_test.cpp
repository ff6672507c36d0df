// Control valves and non-return elements: the state in which a solve leaves them.
#include <gtest/gtest.h>

#include <cmath>
#include <queue>

#include "support/networks.h"

using namespace support;

namespace
{

double limitOf(const ElementData& element)
{
    for (const auto& property : element.properties)
        if (static_cast<int>(property[0]) == TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW) return property[1];
    return 0.0;
}

/// A 4 x 4 grid with four control valves or non-return elements at random places, directions and limits;
/// every second one has a pressure outlet besides its demands.
Description limitedGrid(std::mt19937& random, bool withOutlet)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Description d = grid(4, 4, 1.0 + 4.0 * unit(random));
    for (int i = 0; i < 4; ++i) {
        ElementData& element = d.elements[random() % 24];
        if (element.type != TAVELL_PIPE) continue;
        if (unit(random) < 0.5) std::swap(element.start, element.end);
        element.type = unit(random) < 0.5 ? TAVELL_CONTROL_VALVE : TAVELL_NON_RETURN;
        if (element.type == TAVELL_CONTROL_VALVE)
            element.properties.push_back(
                {static_cast<double>(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW), 0.05 + 3.0 * unit(random)});
    }
    if (withOutlet) {
        NodeData outlet = d.nodes[12];
        outlet.at[2] -= 1.0;
        outlet.type = TAVELL_NODE_OUTLET;
        outlet.constraint = TAVELL_CONSTRAINT_PRESSURE;
        outlet.value = 4.9e5 + 0.2e5 * unit(random);
        d.nodes.push_back(outlet);
        ElementData pipe;
        pipe.start = 12;
        pipe.end = static_cast<int>(d.nodes.size()) - 1;
        d.elements.push_back(pipe);
    }
    return d;
}

/// Largest total flow [kg/s] that can reach the demands from the fixed pressures within every limit and
/// direction (Edmonds and Karp 1972).
double largestSupply(const Description& d)
{
    const std::size_t n = d.nodes.size();
    const std::size_t source = n, sink = n + 1;
    std::vector<std::vector<double>> capacity(n + 2, std::vector<double>(n + 2, 0.0));
    for (const ElementData& element : d.elements) {
        const auto start = static_cast<std::size_t>(element.start);
        const auto end = static_cast<std::size_t>(element.end);
        const double most = element.type == TAVELL_CONTROL_VALVE ? limitOf(element) : 1e6;
        capacity[start][end] += most;
        if (element.type != TAVELL_NON_RETURN) capacity[end][start] += most;
    }
    for (std::size_t i = 0; i < n; ++i) {
        if (d.nodes[i].type == TAVELL_NODE_INTERNAL) continue;
        if (d.nodes[i].constraint == TAVELL_CONSTRAINT_PRESSURE)
            capacity[source][i] = 1e6;
        else
            capacity[i][sink] = d.nodes[i].value;
    }
    double total = 0.0;
    for (;;) {
        std::vector<std::size_t> from(n + 2, n + 2);
        std::queue<std::size_t> queue;
        queue.push(source);
        from[source] = source;
        while (!queue.empty() && from[sink] == n + 2) {
            const std::size_t at = queue.front();
            queue.pop();
            for (std::size_t next = 0; next < n + 2; ++next)
                if (from[next] == n + 2 && capacity[at][next] > 1e-12) {
                    from[next] = at;
                    queue.push(next);
                }
        }
        if (from[sink] == n + 2) return total;
        double amount = 1e9;
        for (std::size_t at = sink; at != source; at = from[at])
            amount = std::min(amount, capacity[from[at]][at]);
        for (std::size_t at = sink; at != source; at = from[at]) {
            capacity[from[at]][at] -= amount;
            capacity[at][from[at]] += amount;
        }
        total += amount;
    }
}

double demandOf(const Description& d)
{
    double sum = 0.0;
    for (const NodeData& node : d.nodes)
        if (node.type == TAVELL_NODE_OUTLET && node.constraint == TAVELL_CONSTRAINT_MASS_FLOW)
            sum += node.value;
    return sum;
}

void expectValidState(const Description& d, const Built& built)
{
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    const std::vector<double> pressure = built.results(TAVELL_RESULT_PRESSURE);
    double total = 0.0;
    for (const double m : flow)
        total += std::fabs(m);
    const double average = total / static_cast<double>(flow.size());
    const auto height = [&](int i) { return d.nodes[static_cast<std::size_t>(i)].at[2]; };
    const double tolerance = 1e-8 * 6e5;  // [Pa]

    for (std::size_t e = 0; e < d.elements.size(); ++e) {
        const ElementData& element = d.elements[e];
        SCOPED_TRACE("element " + std::to_string(e));
        const double drop = pressure[static_cast<std::size_t>(element.start)] -
                            pressure[static_cast<std::size_t>(element.end)] +
                            d.density * 9.80665 * (height(element.start) - height(element.end));
        const double loss = lossOf(d, element, flow[e]);
        if (element.type == TAVELL_NON_RETURN) {
            EXPECT_GT(flow[e], -2e-6 * average) << "reverse flow";
            if (flow[e] == 0.0) {
                EXPECT_LT(drop, tolerance) << "shut against a forward pressure difference";
                continue;
            }
        } else if (element.type == TAVELL_CONTROL_VALVE) {
            const double limit = limitOf(element);
            EXPECT_LE(std::fabs(flow[e]), limit) << "flow above the limit";
            if (std::fabs(flow[e]) == limit) {
                EXPECT_GT(flow[e] > 0.0 ? drop : -drop, std::fabs(loss) - tolerance) << "could carry less";
                continue;
            }
        }
        EXPECT_NEAR(drop, loss, 1.0) << "head-loss law";
    }
}

}  // namespace

TEST(FlowLimits, random_grids_end_in_a_valid_state_or_cannot_supply_their_demand)
{
    std::mt19937 random(31);
    int solved = 0;
    for (int i = 0; i < 300; ++i) {
        SCOPED_TRACE(i);
        const Description d = limitedGrid(random, i % 2 == 1);
        const Built built(d);
        if (built.solve()) {
            ++solved;
            expectValidState(d, built);
        } else {
            EXPECT_LT(largestSupply(d), demandOf(d)) << built.feedback();
            EXPECT_FALSE(built.feedbackIds().empty());
        }
    }
    EXPECT_GT(solved, 270);
}

namespace
{

/// inlet -> a -> b -> outlet, all pipes 10 m of 0.1 m, and the middle element of a kind of its own.
Description threeInARow(double inlet, double outlet, const ElementData& middle)
{
    Description d;
    d.gravity = {0.0, 0.0, 0.0};
    for (int i = 0; i < 4; ++i) {
        NodeData node;
        node.at = {10.0 * i, 0.0, 0.0};
        d.nodes.push_back(node);
        if (i == 0) continue;
        ElementData element = i == 2 ? middle : ElementData{};
        element.start = i - 1;
        element.end = i;
        d.elements.push_back(element);
    }
    d.nodes[0].type = TAVELL_NODE_INLET;
    d.nodes[0].value = inlet;
    d.nodes[3].type = TAVELL_NODE_OUTLET;
    d.nodes[3].value = outlet;
    return d;
}

ElementData limiting(int type, double limit = 0.0)
{
    ElementData element;
    element.type = type;
    if (limit > 0.0)
        element.properties.push_back({static_cast<double>(TAVELL_ELEMENT_CONTROL_VALVE_MASS_FLOW), limit});
    return element;
}

double middleFlow(const Built& built)
{
    const std::vector<double> flows = built.results(TAVELL_RESULT_MASS_FLOW);
    return flows.size() < 2 ? std::nan("") : flows[1];
}

}  // namespace

TEST(FlowLimits, control_valve_holds_its_limit_where_pressure_would_drive_more)
{
    const Built built(threeInARow(3e5, 1e5, limiting(TAVELL_CONTROL_VALVE, 2.0)));
    // the last link between free nodes and a pressure on either side: both sides keep theirs
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_EQ(middleFlow(built), 2.0);
}

TEST(FlowLimits, control_valve_below_its_limit_is_a_pipe)
{
    const Description limited = threeInARow(1.1e5, 1e5, limiting(TAVELL_CONTROL_VALVE, 500.0));
    const Built built(limited);
    const Built open(threeInARow(1.1e5, 1e5, ElementData{}));
    ASSERT_TRUE(built.solve()) << built.feedback();
    ASSERT_TRUE(open.solve());
    EXPECT_NEAR(middleFlow(built), middleFlow(open), 1e-5 * middleFlow(open));
}

TEST(FlowLimits, control_valve_limits_flow_against_its_direction_too)
{
    const Built built(threeInARow(1e5, 3e5, limiting(TAVELL_CONTROL_VALVE, 2.0)));
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_EQ(middleFlow(built), -2.0);
}

TEST(FlowLimits, non_return_element_lets_forward_flow_pass_and_shuts_reverse_flow)
{
    const Built forward(threeInARow(2e5, 1e5, limiting(TAVELL_NON_RETURN)));
    const Built open(threeInARow(2e5, 1e5, ElementData{}));
    ASSERT_TRUE(forward.solve()) << forward.feedback();
    ASSERT_TRUE(open.solve());
    EXPECT_NEAR(middleFlow(forward), middleFlow(open), 1e-5 * middleFlow(open));

    const Built reverse(threeInARow(1e5, 2e5, limiting(TAVELL_NON_RETURN)));
    ASSERT_TRUE(reverse.solve()) << reverse.feedback();
    EXPECT_EQ(middleFlow(reverse), 0.0);
    EXPECT_TRUE(reverse.feedbackIds().empty()) << reverse.feedback();
}

TEST(FlowLimits, non_return_element_between_two_fixed_pressures_shuts)
{
    Description d = threeInARow(2e5, 1e5, ElementData{});
    ElementData direct = limiting(TAVELL_NON_RETURN);
    direct.start = 3;
    direct.end = 0;
    d.elements.push_back(direct);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    EXPECT_EQ(built.results(TAVELL_RESULT_MASS_FLOW)[3], 0.0);
}

TEST(FlowLimits, part_behind_a_shut_non_return_element_keeps_a_pressure_and_is_reported)
{
    // a dead end of two nodes behind a non-return element that points back to the network: nothing can flow
    // in
    Description d = threeInARow(2e5, 1e5, ElementData{});
    for (int i = 0; i < 3; ++i) {
        NodeData node;
        node.at = {10.0, 10.0 * (i + 1), 0.0};
        d.nodes.push_back(node);
    }
    d.nodes.back().type = TAVELL_NODE_OUTLET;
    d.nodes.back().constraint = TAVELL_CONSTRAINT_MASS_FLOW;
    d.nodes.back().value = 0.0;
    ElementData check = limiting(TAVELL_NON_RETURN);
    check.start = 4;
    check.end = 1;
    d.elements.push_back(check);
    ElementData pipe;
    pipe.start = 4;
    pipe.end = 5;
    d.elements.push_back(pipe);
    pipe.start = 5;
    pipe.end = 6;
    d.elements.push_back(pipe);
    const Built built(d);
    ASSERT_TRUE(built.solve()) << built.feedback();
    const std::vector<double> flow = built.results(TAVELL_RESULT_MASS_FLOW);
    for (std::size_t e = 3; e < 6; ++e)
        EXPECT_NEAR(flow[e], 0.0, 1e-6 * flow[0]);
}
