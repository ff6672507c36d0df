#include "connection.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "errors.h"

namespace lcn
{

namespace
{

/// The host's node numbers, sorted, each with the first record that carries it.
class NodeNumbers
{
public:
    NodeNumbers(const NodeArray& nodes, int count)
    {
        m_numbers.reserve(static_cast<std::size_t>(count));
        for (int i = 1; i <= count; ++i)
            m_numbers.push_back({nodes[i].node_no, i});
        // numbers from a circuit's counter arrive in order already
        const auto byNumberThenRecord = [](const Entry& l, const Entry& r) {
            return l.number != r.number ? l.number < r.number : l.record < r.record;
        };
        if (!std::is_sorted(m_numbers.begin(), m_numbers.end(), byNumberThenRecord))
            std::sort(m_numbers.begin(), m_numbers.end(), byNumberThenRecord);
    }

    /// First record with this number; 0 when there is none.
    int find(int number) const
    {
        // most circuits number their nodes 1, 2, 3, ...: look there before searching
        const auto guess = static_cast<std::size_t>(number) - 1;
        if (number >= 1 && guess < m_numbers.size() && m_numbers[guess].number == number &&
            (guess == 0 || m_numbers[guess - 1].number != number))
            return m_numbers[guess].record;
        const auto at =
            std::lower_bound(m_numbers.begin(), m_numbers.end(), number,
                             [](const Entry& entry, int wanted) { return entry.number < wanted; });
        return at != m_numbers.end() && at->number == number ? at->record : 0;
    }

private:
    struct Entry {
        int number;
        int record;
    };
    std::vector<Entry> m_numbers;
};

/// An element as the lists see it.
struct Link {
    int start, end;              // solver node numbers
    int startNumber, endNumber;  // the host's node numbers
    int number;                  // the host's number of the element
};

/// The host's numbers are any int; the least has no counterpart and stays as it is.
int negated(int number)
{
    return number == std::numeric_limits<int>::min() ? number : -number;
}

int findOrFail(const NodeNumbers& numbers, int number, lcnNET_var& var)
{
    const int record = numbers.find(number);
    if (record == 0) lcnErrmsg(var, kNodeMissing, 0, 0, 0, number);
    return record;
}

}  // namespace

// The records are wide, so each is visited once; what the lists are made of lies in arrays of its own
// meanwhile.
void connect(const NodeArray& nodes, const ElementArray& elements, lcnNET_var& var)
{
    const NodeNumbers numbers(nodes, var.NodeTotal);
    std::vector<int> branches(static_cast<std::size_t>(var.NodeTotal) + 1);  // by node
    std::vector<Link> links;
    links.reserve(static_cast<std::size_t>(var.ElemTotal));
    for (int e = 1; e <= var.ElemTotal; ++e) {
        lcnNET_elems& elem = elements[e];
        elem.LocalStartNode = findOrFail(numbers, elem.StartNode, var);
        elem.LocalEndNode = findOrFail(numbers, elem.EndNode, var);
        ++branches[static_cast<std::size_t>(elem.LocalStartNode)];
        ++branches[static_cast<std::size_t>(elem.LocalEndNode)];
        links.push_back({elem.LocalStartNode, elem.LocalEndNode, elem.StartNode, elem.EndNode, elem.elem_no});
    }

    // One storage for all lists of a kind; each node's list is a view into it that starts after the lists
    // before it.
    array<int> hostElements, neighbours, localElements;
    const int ends = 2 * var.ElemTotal + 1;
    hostElements.resize(ends);
    neighbours.resize(ends);
    localElements.resize(ends);

    std::vector<int>& next = branches;  // the slot before a node's next entry takes the place of its count
    int first = 0;
    for (int i = 1; i <= var.NodeTotal; ++i) {
        nodes[i].Elements = hostElements.shiftedBy(first);
        nodes[i].Neighbours = neighbours.shiftedBy(first);
        nodes[i].LocalElements = localElements.shiftedBy(first);
        const int count = branches[static_cast<std::size_t>(i)];
        nodes[i].no_branches = count;
        next[static_cast<std::size_t>(i)] = first;
        first += count;
    }
    const auto append = [&](int node, int entry, int hostEntry, int farNumber) {
        const int slot = ++next[static_cast<std::size_t>(node)];
        hostElements[slot] = hostEntry;
        neighbours[slot] = farNumber;
        localElements[slot] = entry;
    };
    int e = 0;
    for (const Link& link : links) {
        ++e;
        append(link.start, -e, negated(link.number), link.endNumber);
        append(link.end, e, link.number, link.startNumber);
    }
}

}  // namespace lcn
