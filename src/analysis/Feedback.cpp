// Feedback.cpp: one message of a solve.
#include "Feedback.h"

#include <utility>

namespace Velcor::Tavell
{

Feedback::Feedback(int id, std::vector<double> values) : m_id(id), m_values(std::move(values)) {}

int Feedback::GetId()
{
    return m_id;
}

std::size_t Feedback::GetValueSize()
{
    return m_values.size();
}

const double* Feedback::GetValues()
{
    return m_values.empty() ? nullptr : m_values.data();
}

}  // namespace Velcor::Tavell
