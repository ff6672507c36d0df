#include "minimum_degree.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <new>

namespace lcn
{

namespace
{

std::size_t length(long long n)
{
    return static_cast<std::size_t>(n);
}

/// The quotient graph. An equation that has been eliminated (a pivot) stands for the clique of its neighbours
/// and is then called an element; the list of a variable holds its elements first, then its remaining
/// neighbours. Variables with the same neighbours are merged into one of them, which counts for all.
class QuotientGraph
{
public:
    explicit QuotientGraph(const Adjacency& graph)
        : m_n(graph.size()), m_list(graph.columns), m_start(graph.start), m_length(length(m_n)),
          m_elements(length(m_n), 0), m_weight(length(m_n), 1), m_degree(length(m_n)), m_mark(length(m_n), 1),
          m_absorber(length(m_n), -1), m_head(length(m_n) + 1, -1), m_next(length(m_n), -1),
          m_previous(length(m_n), -1), m_hashHead(length(m_n), -1), m_hash(length(m_n))
    {
        m_free = graph.start.back();
        m_list.resize(length(m_free + m_free / 5LL + m_n + 1LL));
        m_pivots.reserve(length(m_n));
    }

    std::vector<int> order()
    {
        start();
        while (m_eliminated < m_n) {
            const int pivot = takePivot();
            formElement(pivot);
            countOutside();
            updateDegrees(pivot);
            mergeIndistinguishable();
            finishElement(pivot);
        }
        return collectOrder();
    }

private:
    static constexpr int kElement = -1;  // in m_elements: has been a pivot
    static constexpr int kGone = -2;     // in m_elements: merged into another, or postponed

    void start()
    {
        const int dense = std::max(16, static_cast<int>(10.0 * std::sqrt(static_cast<double>(m_n))));
        for (int i = 0; i < m_n; ++i) {
            m_length[length(i)] = m_start[length(i) + 1] - m_start[length(i)];
            m_degree[length(i)] = m_length[length(i)];
        }
        for (int i = m_n - 1; i >= 0; --i) {
            if (m_degree[length(i)] > dense) {
                m_postponed.push_back(i);
                m_weight[length(i)] = 0;
                m_elements[length(i)] = kGone;
                ++m_eliminated;
            } else {
                link(i);
            }
        }
    }

    void link(int i)
    {
        int& head = m_head[length(m_degree[length(i)])];
        m_next[length(i)] = head;
        m_previous[length(i)] = -1;
        if (head >= 0) m_previous[length(head)] = i;
        head = i;
        m_smallest = std::min(m_smallest, m_degree[length(i)]);
    }

    void unlink(int i)
    {
        const int next = m_next[length(i)];
        const int previous = m_previous[length(i)];
        if (next >= 0) m_previous[length(next)] = previous;
        if (previous >= 0)
            m_next[length(previous)] = next;
        else
            m_head[length(m_degree[length(i)])] = next;
    }

    int takePivot()
    {
        while (m_head[length(m_smallest)] < 0)
            ++m_smallest;
        const int pivot = m_head[length(m_smallest)];
        unlink(pivot);
        m_pivots.push_back(pivot);
        m_pivotWeight = m_weight[length(pivot)];
        m_eliminated += m_pivotWeight;
        return pivot;
    }

    /// The new element: all variables adjacent to the pivot, directly or through its elements, which it
    /// absorbs. Their weights are negated meanwhile, which marks them as members.
    void formElement(int pivot)
    {
        const int elements = m_elements[length(pivot)];
        if (elements > 0) ensureRoom(pivot, elements);
        int* const list = m_list.data();
        int* const weight = m_weight.data();
        weight[pivot] = -m_pivotWeight;
        const int first = m_start[length(pivot)];
        const int end = first + m_length[length(pivot)];
        m_memberWeight = 0;
        m_memberBegin = elements > 0 ? m_free : first;
        int out = m_memberBegin;
        const auto gather = [&](int from, int to) {
            for (int at = from; at < to; ++at) {
                const int i = list[at];
                if (weight[i] <= 0) continue;
                m_memberWeight += weight[i];
                weight[i] = -weight[i];
                list[out++] = i;
                unlink(i);
            }
        };
        for (int at = first; at < first + elements; ++at) {
            const int e = list[at];
            gather(m_start[length(e)], m_start[length(e)] + m_length[length(e)]);
            m_absorber[length(e)] = pivot;
            m_mark[length(e)] = 0;
        }
        gather(first + elements, end);
        m_memberEnd = out;
        if (elements > 0) m_free = out;
        m_inPlace = elements == 0;
        m_elements[length(pivot)] = kElement;
        m_start[length(pivot)] = m_memberBegin;
        m_length[length(pivot)] = m_memberEnd - m_memberBegin;
        m_degree[length(pivot)] = m_memberWeight;
        m_largestElement = std::max(m_largestElement, m_memberWeight);
    }

    /// Room for the union of the pivot's elements and neighbours at the end of the lists.
    void ensureRoom(int pivot, int elements)
    {
        const int first = m_start[length(pivot)];
        long long needed = m_length[length(pivot)] - elements;
        for (int at = first; at < first + elements; ++at)
            needed += m_length[length(m_list[length(at)])];
        needed = std::min<long long>(needed, m_n);
        if (static_cast<std::size_t>(m_free + needed) <= m_list.size()) return;
        compress();
        const std::size_t wanted = length(m_free + needed);
        if (wanted > length(INT_MAX)) throw std::bad_alloc();
        if (wanted > m_list.size()) m_list.resize(wanted + wanted / 4);
    }

    /// Moves all lists in use to the front. The first entry of a list is kept in its start meanwhile, and its
    /// place in the lists tells the owner.
    void compress()
    {
        const auto inUse = [&](int i) {
            if (m_length[length(i)] == 0) return false;
            if (m_elements[length(i)] == kElement) return m_mark[length(i)] != 0;
            return m_elements[length(i)] != kGone;
        };
        for (int i = 0; i < m_n; ++i) {
            if (!inUse(i)) continue;
            int& entry = m_list[length(m_start[length(i)])];
            m_start[length(i)] = entry;
            entry = -i - 1;
        }
        int out = 0;
        for (int at = 0; at < m_free;) {
            const int entry = m_list[length(at++)];
            if (entry >= 0) continue;
            const int i = -entry - 1;
            m_list[length(out)] = m_start[length(i)];
            m_start[length(i)] = out++;
            for (int k = 1; k < m_length[length(i)]; ++k)
                m_list[length(out++)] = m_list[length(at++)];
        }
        m_free = out;
    }

    /// For every element next to the new one: the weight of its variables outside the new one, in its mark
    /// above m_stamp.
    void countOutside()
    {
        if (m_stamp > INT_MAX - 2 * m_n - 2) {
            for (int& mark : m_mark)
                mark = mark != 0 ? 1 : 0;
            m_stamp = 2;
        }
        int* const mark = m_mark.data();
        for (int at = m_memberBegin; at < m_memberEnd; ++at) {
            const int i = m_list[length(at)];
            const int elements = m_elements[length(i)];
            if (elements == 0) continue;
            const int* const list = m_list.data() + m_start[length(i)];
            const int weight = -m_weight[length(i)];
            for (int k = 0; k < elements; ++k) {
                const int e = list[k];
                if (mark[e] >= m_stamp)
                    mark[e] -= weight;
                else if (mark[e] != 0)
                    mark[e] = m_degree[length(e)] + m_stamp - weight;
            }
        }
    }

    /// New lists and degrees of the members. An element that lies within the new one is absorbed. A member
    /// with no other neighbour is eliminated together with the pivot.
    void updateDegrees(int pivot)
    {
        int* const lists = m_list.data();
        for (int at = m_memberBegin; at < m_memberEnd; ++at) {
            const int i = lists[at];
            int* const list = lists + m_start[length(i)];
            const int elements = m_elements[length(i)];
            int out = 0;
            int degree = 0;
            unsigned hash = 0;
            for (int k = 0; k < elements; ++k) {
                const int e = list[k];
                if (m_mark[length(e)] == 0) continue;
                const int outside = m_mark[length(e)] - m_stamp;
                if (outside > 0) {
                    degree += outside;
                    list[out++] = e;
                    hash += static_cast<unsigned>(e);
                } else {
                    m_absorber[length(e)] = pivot;
                    m_mark[length(e)] = 0;
                }
            }
            const int kept = out;
            for (int k = elements; k < m_length[length(i)]; ++k) {
                const int j = list[k];
                if (m_weight[length(j)] <= 0) continue;
                degree += m_weight[length(j)];
                list[out++] = j;
                hash += static_cast<unsigned>(j);
            }
            if (out == 0) {
                m_absorber[length(i)] = pivot;
                m_memberWeight += m_weight[length(i)];
                m_pivotWeight -= m_weight[length(i)];
                m_eliminated -= m_weight[length(i)];
                m_weight[length(i)] = 0;
                m_elements[length(i)] = kGone;
                continue;
            }
            m_degree[length(i)] = std::min(m_degree[length(i)], degree);
            // the new element comes first; the member has lost at least one entry, so that there is room
            list[out] = list[kept];
            list[kept] = list[0];
            list[0] = pivot;
            m_elements[length(i)] = kept + 1;
            m_length[length(i)] = out + 1;
            const int bucket = static_cast<int>(hash % static_cast<unsigned>(m_n));
            m_hash[length(i)] = bucket;
            m_next[length(i)] = m_hashHead[length(bucket)];
            m_hashHead[length(bucket)] = i;
        }
        m_stamp += m_largestElement + 1;
    }

    /// Members with the same list become one.
    void mergeIndistinguishable()
    {
        for (int at = m_memberBegin; at < m_memberEnd; ++at) {
            const int member = m_list[length(at)];
            if (m_weight[length(member)] >= 0) continue;
            int& head = m_hashHead[length(m_hash[length(member)])];
            int i = head;
            head = -1;
            for (; i >= 0 && m_next[length(i)] >= 0; i = m_next[length(i)], ++m_stamp)
                mergeInto(i);
        }
    }

    /// Merges into i what follows it in its hash chain and has the same list.
    void mergeInto(int i)
    {
        const int size = m_length[length(i)];
        const int* const list = m_list.data() + m_start[length(i)];
        for (int k = 1; k < size; ++k)
            m_mark[length(list[k])] = m_stamp;
        int last = i;
        for (int j = m_next[length(i)]; j >= 0; j = m_next[length(j)]) {
            if (!sameList(i, j)) {
                last = j;
                continue;
            }
            m_absorber[length(j)] = i;
            m_weight[length(i)] += m_weight[length(j)];
            m_weight[length(j)] = 0;
            m_elements[length(j)] = kGone;
            m_next[length(last)] = m_next[length(j)];
        }
    }

    bool sameList(int i, int j) const
    {
        if (m_length[length(j)] != m_length[length(i)] || m_elements[length(j)] != m_elements[length(i)])
            return false;
        const int* const list = m_list.data() + m_start[length(j)];
        for (int k = 1; k < m_length[length(j)]; ++k)
            if (m_mark[length(list[k])] != m_stamp) return false;
        return true;
    }

    /// Puts the members back among the variables, with their degrees, and shortens the element to them.
    void finishElement(int pivot)
    {
        int out = m_memberBegin;
        for (int at = m_memberBegin; at < m_memberEnd; ++at) {
            const int i = m_list[length(at)];
            const int weight = -m_weight[length(i)];
            if (weight <= 0) continue;
            m_weight[length(i)] = weight;
            const int degree = m_degree[length(i)] + m_memberWeight - weight;
            m_degree[length(i)] = std::max(0, std::min(degree, m_n - m_eliminated - weight));
            link(i);
            m_list[length(out++)] = i;
        }
        m_weight[length(pivot)] = m_pivotWeight;
        m_degree[length(pivot)] = m_memberWeight;
        m_length[length(pivot)] = out - m_memberBegin;
        if (out == m_memberBegin) m_mark[length(pivot)] = 0;
        if (!m_inPlace) m_free = out;
    }

    /// Every variable directly after the pivot that took it along.
    std::vector<int> collectOrder()
    {
        std::vector<int> place(length(m_n), -1);  // per pivot: its rank
        for (std::size_t k = 0; k < m_pivots.size(); ++k)
            place[length(m_pivots[k])] = static_cast<int>(k);
        std::vector<int> count(m_pivots.size() + 1, 0);
        std::vector<int> owner(length(m_n), -1);
        for (int i = 0; i < m_n; ++i) {
            if (isPostponed(i)) continue;
            int pivot = i;
            while (m_elements[length(pivot)] != kElement)
                pivot = m_absorber[length(pivot)];
            for (int j = i; m_elements[length(j)] != kElement;) {
                const int next = m_absorber[length(j)];
                m_absorber[length(j)] = pivot;
                j = next;
            }
            owner[length(i)] = place[length(pivot)];
            ++count[length(owner[length(i)]) + 1];
        }
        for (std::size_t k = 1; k < count.size(); ++k)
            count[k] += count[k - 1];
        std::vector<int> order(length(m_n));
        for (int i = 0; i < m_n; ++i)
            if (owner[length(i)] >= 0) order[length(count[length(owner[length(i)])]++)] = i;
        std::copy(m_postponed.rbegin(), m_postponed.rend(),
                  order.end() - static_cast<std::ptrdiff_t>(m_postponed.size()));
        return order;
    }

    bool isPostponed(int i) const { return m_elements[length(i)] == kGone && m_absorber[length(i)] < 0; }

    int m_n;
    std::vector<int> m_list;  // all lists
    int m_free = 0;           // end of what is in use of it
    std::vector<int> m_start, m_length;
    std::vector<int> m_elements;  // per variable: how many elements its list begins with
    std::vector<int> m_weight;  // equations that it stands for; 0 when gone, negative while in a new element
    std::vector<int> m_degree;  // approximate, of a variable; exact weight of an element's variables
    std::vector<int> m_mark;    // 0 for absorbed elements
    std::vector<int> m_absorber;
    std::vector<int> m_head, m_next, m_previous;  // variables by degree
    std::vector<int> m_hashHead, m_hash;
    std::vector<int> m_pivots, m_postponed;
    int m_stamp = 2;
    int m_largestElement = 0;
    int m_smallest = 0;
    int m_eliminated = 0;
    int m_pivotWeight = 0;
    int m_memberBegin = 0, m_memberEnd = 0, m_memberWeight = 0;
    bool m_inPlace = false;
};

}  // namespace

std::vector<int> minimumDegreeOrder(const Adjacency& graph)
{
    if (graph.size() == 0) return {};
    return QuotientGraph(graph).order();
}

}  // namespace lcn
