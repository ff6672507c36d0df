// Tavell.h: the system object, the root of everything a host builds.
#pragma once

#include <cstddef>

#include "Circuit.h"
#include "ObjectRegistry.h"
#include "OrderedObjects.h"
#include "tavell/ITavell.h"

namespace Velcor::Tavell
{

/// Owns its circuits, the oldest first.
class Tavell final : public ITavell
{
public:
    Tavell() = default;
    Tavell(const Tavell&) = delete;
    Tavell& operator=(const Tavell&) = delete;

    void Release() override;
    ICircuit* CreateCircuit() override;
    std::size_t GetNoCircuits() override;
    ICircuit* GetCircuit(std::size_t index) override;
    bool ReleaseCircuit(ICircuit* circuit) override;
    void ReleaseAllCircuits() override;
    void Solve(bool energy, bool validateFirst, bool (*cancel)() = nullptr) override;
    void MergeCircuits() override;  // in circuit_merge.cpp
    void ValidateCircuits() override;
    ICircuit* FindParentCircuitFromNode(INode* node) override;
    ICircuit* FindParentCircuitFromElement(IElement* element) override;
    /// Destroys the circuits, the oldest first.
    ~Tavell() override { m_circuits.clear(); }

private:
    ObjectRegistry m_registry;  // outlives the circuits
    OrderedObjects<Circuit> m_circuits;
};

}  // namespace Velcor::Tavell
