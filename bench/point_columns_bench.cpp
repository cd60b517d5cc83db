// The real density and the wavefunction of 3Dz² at points given as three plain columns, one
// thread, as the Python package's density and wavefunction reach them: a million random points
// (inputs and output 32 MB, beyond the caches) against 16,000 (within them), and the output
// written into a fresh array each call against one written again.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "electron/catalogue_density.h"
#include "electron/wavefunction.h"

namespace {

using veltara::Coordinates;
using veltara::ViewMode;

constexpr int16_t k3Dz2 = 9;

enum class Kind { kDensity, kPsi };

void Columns(benchmark::State& state, Kind kind, bool freshOutput) {
    const auto n = static_cast<size_t>(state.range(0));
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> u(-20.0, 20.0);
    std::vector<double> x(n), y(n), z(n), out(n);
    for (size_t i = 0; i < n; ++i) x[i] = u(random), y[i] = u(random), z[i] = u(random);
    const Coordinates points{x.data(), y.data(), z.data(), 1, 1, 1};
    for (auto _ : state) {
        // A fresh array's pages are new to the process each time, as numpy's are.
        std::unique_ptr<double[]> fresh;
        double* o = out.data();
        if (freshOutput) o = (fresh = std::make_unique_for_overwrite<double[]>(n)).get();
        if (kind == Kind::kDensity) {
            veltara::RealDensityBatch(k3Dz2, ViewMode::PDF, points, n, o);
        } else {
            veltara::WavefunctionBatch(k3Dz2, points, n, o);
        }
        benchmark::DoNotOptimize(o[n - 1]);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * state.range(0));
}

BENCHMARK_CAPTURE(Columns, density, Kind::kDensity, false)->Arg(16000)->Arg(1000000);
BENCHMARK_CAPTURE(Columns, density_fresh, Kind::kDensity, true)->Arg(1000000);
BENCHMARK_CAPTURE(Columns, psi, Kind::kPsi, false)->Arg(16000)->Arg(1000000);
BENCHMARK_CAPTURE(Columns, psi_fresh, Kind::kPsi, true)->Arg(1000000);

}  // namespace
