// Observer_test.cpp: attaching, detaching and notifying.
#include "model/Observer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using Velcor::Patterns::Observer::Observer;
using Velcor::Patterns::Observer::Subject;

namespace
{

/// Writes its letter into a common log.
class Logger final : public Observer
{
public:
    Logger(char letter, std::string& log) : m_letter(letter), m_log(log) {}
    void Update(Subject* subject, int what) override
    {
        m_log += m_letter;
        lastSubject = subject;
        lastWhat = what;
    }
    Subject* lastSubject = nullptr;
    int lastWhat = -1;

private:
    char m_letter;
    std::string& m_log;
};

}  // namespace

TEST(Subject, notifies_in_order_of_attachment)
{
    std::string log;
    Logger a('a', log);
    Logger b('b', log);
    Subject subject;
    EXPECT_TRUE(subject.Attach(&b));
    EXPECT_TRUE(subject.Attach(&a));
    subject.Notify(7);
    EXPECT_EQ(log, "ba");
    EXPECT_EQ(a.lastSubject, &subject);
    EXPECT_EQ(a.lastWhat, 7);
}

TEST(Subject, attaches_an_observer_once_and_never_null)
{
    std::string log;
    Logger a('a', log);
    Subject subject;
    EXPECT_TRUE(subject.Attach(&a));
    EXPECT_FALSE(subject.Attach(&a));
    EXPECT_FALSE(subject.Attach(nullptr));
    subject.Notify(0);
    EXPECT_EQ(log, "a");
}

TEST(Subject, detaching_keeps_the_order_of_the_others)
{
    std::string log;
    Logger a('a', log);
    Logger b('b', log);
    Logger c('c', log);
    Subject subject;
    subject.Attach(&a);
    subject.Attach(&b);
    subject.Attach(&c);
    EXPECT_TRUE(subject.Detach(&b));
    EXPECT_FALSE(subject.Detach(&b));
    EXPECT_FALSE(subject.Detach(nullptr));
    subject.Notify(0);
    EXPECT_EQ(log, "ac");
}

TEST(Subject, its_end_tells_no_one)
{
    std::string log;
    Logger a('a', log);
    {
        Subject subject;
        subject.Attach(&a);
    }
    EXPECT_EQ(log, "");
}

TEST(Subject, the_second_observer_follows_when_the_first_goes)
{
    std::string log;
    Logger a('a', log);
    Logger b('b', log);
    Logger c('c', log);
    Subject subject;
    subject.Attach(&a);
    subject.Attach(&b);
    subject.Attach(&c);
    EXPECT_TRUE(subject.Detach(&a));
    subject.Notify(0);
    EXPECT_EQ(log, "bc");
    EXPECT_TRUE(subject.Attach(&a));
    subject.Notify(0);
    EXPECT_EQ(log, "bcbca");
    EXPECT_TRUE(subject.Detach(&b));
    EXPECT_TRUE(subject.Detach(&c));
    EXPECT_TRUE(subject.Detach(&a));
    EXPECT_FALSE(subject.Detach(&a));
    subject.Notify(0);
    EXPECT_EQ(log, "bcbca");
}
