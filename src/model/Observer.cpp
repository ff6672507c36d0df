// Observer.cpp: the list of a subject's observers.
#include "Observer.h"

#include <algorithm>

namespace Velcor::Patterns::Observer
{

bool Subject::Attach(Observer* observer)
{
    if (observer == nullptr || positionOf(observer) < count()) return false;
    if (m_first == nullptr) {
        m_first = observer;
        return true;
    }
    if (m_further == nullptr) m_further = std::make_unique<std::vector<Observer*>>();
    m_further->push_back(observer);
    return true;
}

bool Subject::Detach(Observer* observer)
{
    const std::size_t position = positionOf(observer);
    if (observer == nullptr || position == count()) return false;
    if (m_further == nullptr || m_further->empty()) {
        m_first = nullptr;
        return true;
    }
    if (position == 0) m_first = m_further->front();
    m_further->erase(m_further->begin() + static_cast<std::ptrdiff_t>(position == 0 ? 0 : position - 1));
    return true;
}

void Subject::Notify(int what)
{
    // By position: an observer may attach or detach during the call.
    for (std::size_t i = 0; i < count(); ++i)
        at(i)->Update(this, what);
}

std::size_t Subject::count() const
{
    if (m_first == nullptr) return 0;
    return m_further == nullptr ? 1 : 1 + m_further->size();
}

/// The observer at a position below count(), in order of attachment.
Observer* Subject::at(std::size_t position) const
{
    return position == 0 ? m_first : (*m_further)[position - 1];
}

/// Position of an observer; count() when it is not attached.
std::size_t Subject::positionOf(const Observer* observer) const
{
    std::size_t position = 0;
    while (position < count() && at(position) != observer)
        ++position;
    return position;
}

}  // namespace Velcor::Patterns::Observer
