// FeedbackCollection.cpp: the messages of a circuit's last solve.
#include "FeedbackCollection.h"

#include <utility>

namespace Velcor::Tavell
{

std::size_t FeedbackCollection::GetSize()
{
    return m_messages.size();
}

IFeedback* FeedbackCollection::GetFeedback(std::size_t index)
{
    return index < m_messages.size() ? m_messages[index].get() : nullptr;
}

void FeedbackCollection::append(int id, std::vector<double> values)
{
    m_messages.push_back(std::make_unique<Feedback>(id, std::move(values)));
}

void FeedbackCollection::clear()
{
    m_messages.clear();
}

}  // namespace Velcor::Tavell
