// small_files.h: a disk that fills up: files of this process may only grow to some size.
#pragma once

#include <csignal>

#include <sys/resource.h>

namespace faults
{

/// Files that the process writes end after so many bytes while it lives.
class SmallFiles
{
public:
    explicit SmallFiles(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN))
    {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SmallFiles()
    {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    SmallFiles(const SmallFiles&) = delete;
    SmallFiles& operator=(const SmallFiles&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int);
};

}  // namespace faults
