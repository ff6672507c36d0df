// Observer.cpp: the list of a subject's observers.
#include "Observer.h"

#include <algorithm>
#include <cstddef>

namespace Velcor::Patterns::Observer
{

bool Subject::Attach(Observer* observer)
{
    if (observer == nullptr) return false;
    if (std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end()) return false;
    m_observers.push_back(observer);
    return true;
}

bool Subject::Detach(Observer* observer)
{
    const auto place = std::find(m_observers.begin(), m_observers.end(), observer);
    if (place == m_observers.end()) return false;
    m_observers.erase(place);
    return true;
}

void Subject::Notify(int what)
{
    // By position: an observer may attach or detach during the call.
    for (std::size_t i = 0; i < m_observers.size(); ++i)
        m_observers[i]->Update(this, what);
}

}  // namespace Velcor::Patterns::Observer
