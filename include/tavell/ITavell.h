// ITavell.h: the system object, the root of everything a host builds.
#ifndef TAVELL_ITAVELL_H
#define TAVELL_ITAVELL_H

#include <cstddef>

namespace Velcor::Tavell
{

class ICircuit;
class IElement;
class INode;

/// An ordered list of circuits. Made by CreateTavell, given back with Release and never with delete.
///
/// Threads:
/// - Different system objects may be made, used and released on different threads at the same time. They
///   share nothing that changes, and no answer depends on what other threads do.
/// - One system object and everything in it, results and feedback included, is used by one thread at a time,
///   reading operations too. Arrays and texts that were handed out may be read by several threads until the
///   next operation on the system object.
/// - It belongs to no thread: built on one, it may be solved on a second, read and released on a third, when
///   the host orders these calls, by a lock or by joining a thread.
/// - The library starts no threads. A solve calls its cancellation callback on the thread that called Solve,
///   and the callback's answer concerns that solve alone. Solves on several threads may have the same
///   callback, which then has to be fit for that.
/// - The variables TAVELL_* (docs/building.md) are read by each call that heeds them. The environment may be
///   changed between calls, while no thread is in the library. Debug files of solves that run at the same
///   time overwrite each other; answers do not change.
/// - The locale of the process is never changed and has no influence on any number or text.
///
/// Floating point: a solve computes with rounding to nearest, with subnormal numbers and without traps,
/// whatever the settings of the calling thread are. Afterwards the settings and the exception flags are as
/// they were before. The cancellation callback runs in the settings of the solve and has to leave them so.
/// Other operations run in the settings of the caller.
///
/// Memory: an operation that gets none throws std::bad_alloc, nothing leaks, and everything stays usable. It
/// has changed nothing, with two exceptions: a solve has dropped the results of the one before, and
/// MergeCircuits may end between two circuits; the next call goes on.
class ITavell
{
public:
    /// Destroys the system object with every circuit in it; all pointers obtained from it become invalid.
    virtual void Release() = 0;

    /// Appends a new, empty circuit and returns it; owned by the system object. Never null.
    virtual ICircuit* CreateCircuit() = 0;

    /// Number of circuits.
    virtual std::size_t GetNoCircuits() = 0;

    /// The circuit at position index (0 is the oldest); null when index is not below GetNoCircuits().
    virtual ICircuit* GetCircuit(std::size_t index) = 0;

    /// Destroys one circuit. False when it is null or not (or no longer) in the list.
    virtual bool ReleaseCircuit(ICircuit* circuit) = 0;

    /// Destroys every circuit.
    virtual void ReleaseAllCircuits() = 0;

    /// Solves every circuit in list order; the outcome of each is in its own feedback and results.
    /// energy: solve temperatures too. validateFirst: tidy and check each circuit and skip those that are not
    /// suitable for analysis. cancel: as for ICircuit::Solve.
    virtual void Solve(bool energy, bool validateFirst, bool (*cancel)() = nullptr) = 0;

    /// Joins circuits that have a node at the same location; the older circuit absorbs the younger one.
    /// Locations are compared by a key, the exclusive-or of a hash of each coordinate, without any tolerance:
    /// nodes whose coordinates are the same in another order, or that have two equal coordinates each, can
    /// match as well.
    /// Elements move over with their properties and new ids. A node without a partner is copied once for each
    /// element end that uses it, so inner nodes of the absorbed circuit come apart. Elements without a
    /// diameter and an area (pumps and losses from curves) and duplicates cannot be moved and are lost.
    virtual void MergeCircuits() = 0;

    /// Calls ICircuit::Validate on every circuit; the answers are ignored.
    virtual void ValidateCircuits() = 0;

    /// The circuit that holds the node; null when none does.
    virtual ICircuit* FindParentCircuitFromNode(INode* node) = 0;

    /// The circuit that holds the element; null when none does.
    virtual ICircuit* FindParentCircuitFromElement(IElement* element) = 0;

    /// Hosts call Release instead.
    virtual ~ITavell() = default;
};

}  // namespace Velcor::Tavell

#endif
