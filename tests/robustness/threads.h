#pragma once

// Work that several threads begin at the same moment.

#include <barrier>
#include <thread>
#include <vector>

namespace Quillmark::test {

/// Runs `work(i)` in thread `i` of `count`, all from one moment on, and waits for their ends.
template <class Work>
void run_at_once(int count, Work&& work) {
    std::barrier start(count);
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            work(i);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace Quillmark::test
