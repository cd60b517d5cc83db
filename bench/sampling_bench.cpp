// Exact samples and boundary surfaces: points a second and the time of one surface.
#include <benchmark/benchmark.h>

#include <vector>

#include "electron/boundary_surface.h"
#include "electron/sampling.h"

using namespace veltara;

namespace {

Superposition One(int32_t n, int32_t l, int32_t m) {
    return MakeSuperposition(State{n, l, m, Basis::Real, 1, false});
}

// Sample(state (n, l, m), 100000 points, with the phase); arguments n, l, m, weight.
void BM_Sample(benchmark::State& st) {
    const auto s = One(static_cast<int32_t>(st.range(0)), static_cast<int32_t>(st.range(1)),
                       static_cast<int32_t>(st.range(2)));
    const auto w = static_cast<SampleWeight>(st.range(3));
    constexpr size_t kCount = 100000;
    std::vector<double> xyz(3 * kCount), phase(kCount);
    uint64_t seed = 1;
    for (auto _ : st) Sample(s, 0, seed++, kCount, w, xyz.data(), phase.data());
    st.SetItemsProcessed(static_cast<int64_t>(st.iterations() * kCount));
}
BENCHMARK(BM_Sample)
    ->Args({1, 0, 0, 0})
    ->Args({4, 2, 1, 0})
    ->Args({10, 3, -2, 0})
    ->Args({10, 9, 5, 0})
    ->Args({10, 3, -2, 1})
    ->Args({30, 12, 4, 0})
    ->Unit(benchmark::kMillisecond);

void BM_SampleSuperposition(benchmark::State& st) {
    const auto s = MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}});
    constexpr size_t kCount = 100000;
    std::vector<double> xyz(3 * kCount), phase(kCount);
    uint64_t seed = 1;
    for (auto _ : st)
        Sample(s, 1.5, seed++, kCount, SampleWeight::Density, xyz.data(), phase.data());
    st.SetItemsProcessed(static_cast<int64_t>(st.iterations() * kCount));
}
BENCHMARK(BM_SampleSuperposition)->Unit(benchmark::kMillisecond);

// BoundarySurface(state, 0.9, resolution); arguments n, l, m, resolution.
void BM_BoundarySurface(benchmark::State& st) {
    const auto s = One(static_cast<int32_t>(st.range(0)), static_cast<int32_t>(st.range(1)),
                       static_cast<int32_t>(st.range(2)));
    for (auto _ : st)
        benchmark::DoNotOptimize(BoundarySurface(s, 0, 0.9, static_cast<int32_t>(st.range(3))));
}
BENCHMARK(BM_BoundarySurface)
    ->Args({1, 0, 0, 64})
    ->Args({6, 3, 1, 64})
    ->Args({6, 5, -3, 96})
    ->Args({6, 2, 0, 128})
    ->Unit(benchmark::kMillisecond);

}  // namespace
