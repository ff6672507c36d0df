// Observer.h: subjects that tell observers about their changes.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace Velcor::Patterns::Observer
{

class Subject;

class Observer
{
public:
    Observer() = default;
    virtual ~Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;

    /// Called by a subject that changed; what is the argument of Subject::Notify.
    virtual void Update(Subject* subject, int what) = 0;
};

/// Keeps its observers in order of attachment and does not own them.
class Subject
{
public:
    Subject() = default;
    /// Observers are not told.
    virtual ~Subject() = default;
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    /// False for null or an observer that is attached already.
    virtual bool Attach(Observer* observer);
    /// False for null or an observer that is not attached.
    virtual bool Detach(Observer* observer);
    /// Calls Update on every observer in order of attachment.
    virtual void Notify(int what);

private:
    std::size_t count() const;
    Observer* at(std::size_t position) const;
    std::size_t positionOf(const Observer* observer) const;

    // Nearly every subject has one observer, and there are millions: the list is made for the second.
    Observer* m_first = nullptr;                        // the oldest; null when there is none
    std::unique_ptr<std::vector<Observer*>> m_further;  // those after it
};

}  // namespace Velcor::Patterns::Observer
