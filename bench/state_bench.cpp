// Psi of any state per point through the batch path, at points spread over the state's
// extent: shells up to 10 against shell 30, real and complex, and a superposition.
#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "electron/state_wave.h"

namespace {

using namespace veltara;

/// 4096 points in a cube of half-side 2n²/Z, a fixed lattice-like spread (no generator).
std::vector<double> Points(int32_t n, int32_t Z) {
    const double half = 2.0 * n * n / Z;
    std::vector<double> xyz;
    for (int i = 0; i < 4096; ++i) {
        xyz.push_back(half * std::fmod(i * 0.6180339887, 1.0) * 2 - half);
        xyz.push_back(half * std::fmod(i * 0.7548776662, 1.0) * 2 - half);
        xyz.push_back(half * std::fmod(i * 0.5698402910, 1.0) * 2 - half);
    }
    return xyz;
}

void RunPsi(benchmark::State& state, const Superposition& s) {
    const int32_t n = s.Terms()[0].state.n;
    const std::vector<double> xyz = Points(n, s.Terms()[0].state.Z);
    const size_t count = xyz.size() / 3;
    std::vector<std::complex<double>> out(count);
    for (auto _ : state) {
        PsiBatch(s, 0.5, xyz.data(), count, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
}

void RunDensity(benchmark::State& state, const Superposition& s) {
    const std::vector<double> xyz = Points(s.Terms()[0].state.n, 1);
    const size_t count = xyz.size() / 3;
    std::vector<double> out(count);
    for (auto _ : state) {
        DensityBatch(s, 0.0, xyz.data(), count, out.data());
        benchmark::DoNotOptimize(out.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * count));
}

Superposition One(int32_t n, int32_t l, int32_t m, Basis basis) {
    return MakeSuperposition(State{n, l, m, basis, 1, false});
}

void BM_Psi_2p_real(benchmark::State& st) { RunPsi(st, One(2, 1, 1, Basis::Real)); }
void BM_Psi_10_4_2_real(benchmark::State& st) { RunPsi(st, One(10, 4, 2, Basis::Real)); }
void BM_Psi_10_0_0_real(benchmark::State& st) { RunPsi(st, One(10, 0, 0, Basis::Real)); }
void BM_Psi_10_9_minus9_complex(benchmark::State& st) {
    RunPsi(st, One(10, 9, -9, Basis::Complex));
}
void BM_Psi_30_0_0_real(benchmark::State& st) { RunPsi(st, One(30, 0, 0, Basis::Real)); }
void BM_Psi_30_15_7_complex(benchmark::State& st) { RunPsi(st, One(30, 15, 7, Basis::Complex)); }
void BM_Psi_30_29_29_real(benchmark::State& st) { RunPsi(st, One(30, 29, 29, Basis::Real)); }
void BM_Psi_1s_plus_2p_superposition(benchmark::State& st) {
    RunPsi(st, MakeSuperposition({{1.0, State{1, 0, 0}}, {1.0, State{2, 1, 0}}}));
}
void BM_Density_7_3_minus2_real(benchmark::State& st) {
    RunDensity(st, One(7, 3, -2, Basis::Real));
}

BENCHMARK(BM_Psi_2p_real);
BENCHMARK(BM_Psi_10_4_2_real);
BENCHMARK(BM_Psi_10_0_0_real);
BENCHMARK(BM_Psi_10_9_minus9_complex);
BENCHMARK(BM_Psi_30_0_0_real);
BENCHMARK(BM_Psi_30_15_7_complex);
BENCHMARK(BM_Psi_30_29_29_real);
BENCHMARK(BM_Psi_1s_plus_2p_superposition);
BENCHMARK(BM_Density_7_3_minus2_real);

}  // namespace
