// One long run of independent points shared among threads: each thread takes one contiguous
// part, so every value is computed exactly as a single pass would compute it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <thread>
#include <vector>

namespace veltara {

/// The threads a run of `total` points is shared among: at most `threads` (0: one per core),
/// and no more than leave each at least `minimumPart` points.
inline size_t RunThreads(size_t total, int32_t threads, size_t minimumPart) {
    size_t wanted =
        threads > 0 ? static_cast<size_t>(threads) : std::thread::hardware_concurrency();
    wanted = std::clamp<size_t>(wanted, 1, 64);
    return std::max<size_t>(1, std::min(wanted, total / std::max<size_t>(minimumPart, 1)));
}

/// Calls work(start, count) over [0, total) in contiguous parts, one per thread (RunThreads);
/// the calling thread takes the first. Every part runs to its end or its first error; then
/// the error of the earliest failing part is raised, the one a single pass from the start
/// would raise, after every value before its failing point is written.
template <class Work>
void SplitRuns(size_t total, int32_t threads, size_t minimumPart, Work&& work) {
    const size_t parts = RunThreads(total, threads, minimumPart);
    if (parts == 1) {
        work(size_t{0}, total);
        return;
    }
    std::vector<std::exception_ptr> failures(parts);
    const auto part = [&](size_t k) {
        const size_t begin = total * k / parts, end = total * (k + 1) / parts;
        try {
            work(begin, end - begin);
        } catch (...) {
            failures[k] = std::current_exception();
        }
    };
    std::vector<std::thread> helpers;
    helpers.reserve(parts - 1);
    try {
        for (size_t k = 1; k < parts; ++k) helpers.emplace_back(part, k);
    } catch (...) {
        // No thread to be had: the parts not started run here.
        for (size_t k = helpers.size() + 1; k < parts; ++k) part(k);
    }
    part(0);
    for (std::thread& t : helpers) t.join();
    for (const std::exception_ptr& f : failures) {
        if (f) std::rethrow_exception(f);
    }
}

}  // namespace veltara
