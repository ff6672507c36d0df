// solver_network.h: small networks in the solver's own records.
#pragma once

#include <vector>

#include "lcn/connection.h"
#include "lcn/records.h"

namespace SolverTest
{

/// Area [m2] of the elements that SolverNetwork adds: the numbers of hand calculations stay short.
constexpr double kArea = 0.01;

/// Records numbered from 1. Node i has the host's number 10 i, element e the host's number 100 + e, so that a mix-up of the
/// two numberings shows. Density 1000 kg/m3, viscosity 0.001 Pa s, criterion 1e-6.
struct SolverNetwork {
    lcnNET_var var;
    lcn::NodeArray nodes;
    lcn::ElementArray elements;

    explicit SolverNetwork(int nodeCount)
    {
        nodes.resize(nodeCount + 1);
        for (int i = 1; i <= nodeCount; ++i)
            nodes[i].node_no = 10 * i;
        elements.resize(1);
        var.NodeTotal = nodeCount;
        var.numitermm = var.numiterpp = 2000;
        var.relaxpp = 0.5;
        var.Concrit = 1e-6;
        var.flowWeight = 1.0;
        var.Density = 1000.0;
        var.Viscosity = 0.001;
        var.Tav = 300.0;
        var.sizeWorkArrays();
    }

    /// Adds an element of 0.1 m diameter, 0.01 m2 area and 10 m length; returns its solver number.
    int add(int type, int start, int end)
    {
        const int e = ++var.ElemTotal;
        elements.resize(e + 1);
        lcnNET_elems& elem = elements[e];
        elem.elem_no = 100 + e;
        elem.StartNode = nodes[start].node_no;
        elem.EndNode = nodes[end].node_no;
        elem.LocalStartNode = start;
        elem.LocalEndNode = end;
        elem.type = type;
        elem.diam = 0.1;
        elem.Area = kArea;
        elem.length = 10.0;
        elem.density = elem.densityOld = 1000.0;
        return e;
    }

    void connect() { lcn::connect(nodes, elements, var); }

    void fixPressure(int node, double pressure)
    {
        nodes[node].flag = lcn::kPressureBoundary;
        nodes[node].Pressbound = nodes[node].Pressure = pressure;
    }

    void fixFlow(int e, double flow)
    {
        elements[e].fix = 1;
        elements[e].FixedFlow = elements[e].Massflow = flow;
    }

    lcnNET_elems& elem(int e) const { return elements[e]; }

    /// Ids of the messages recorded so far.
    std::vector<std::uint32_t> messageIds() const
    {
        std::vector<std::uint32_t> ids;
        for (const lcn::Message& message : var.Messages)
            ids.push_back(message.id);
        return ids;
    }
};

/// A curve with these points.
inline lcnNET_pumps makeCurve(std::vector<double> flows, std::vector<double> pressures,
                              double refDensity = 1000.0)
{
    lcnNET_pumps curve;
    curve.FlowRate.assign(std::move(flows));
    curve.PressurePoints.assign(std::move(pressures));
    curve.RefDensity = refDensity;
    return curve;
}

}  // namespace SolverTest
