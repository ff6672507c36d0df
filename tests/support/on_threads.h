// on_threads.h: the same work on several threads at a time.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace support
{

inline int processors()
{
    return std::max(2, static_cast<int>(std::thread::hardware_concurrency()));
}

/// Runs work(thread) on several threads at the same time and waits for all of them.
inline void onThreads(int count, const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
}

}  // namespace support
