// The engine's own exponential on each vector path against the C library's, over the exponents
// of one octant grid (2,097,152 points), and the Add of every pair measured side by side with
// the bare C-library loop in the same process.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

#include "engine/cOrbitalCol.h"
#include "engine/cVeltara.h"
#include "support/clock.h"
#include "support/exact_math.h"
#include "support/simd_dispatch.h"

namespace {

using namespace veltara;

/// The exponents -2 r of the 128^3 octant points of a 1S grid of radius 10.
const std::vector<double>& OctantExponents() {
    static const std::vector<double> x = [] {
        std::vector<double> v;
        v.reserve(128 * 128 * 128);
        const double step = 10.0 / 127.0;
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int i = 0; i < 128; ++i) {
                    const double a = i * step, b = y * step, c = z * step;
                    v.push_back(std::sqrt((b * b + a * a) + c * c) * -2.0);
                }
            }
        }
        return v;
    }();
    return x;
}

// The processor time of this thread, in milliseconds: on a shared, loaded machine the wall
// time mostly measures the other jobs, so the Add and the loop are compared by this.
double ThreadMs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) * 1e-6;
}

double LibcLoopMs(std::vector<double>& out) {
    const std::vector<double>& x = OctantExponents();
    const double t0 = ThreadMs();
    for (size_t i = 0; i < x.size(); ++i) out[i] = std::exp(x[i]);
    benchmark::DoNotOptimize(out.data());
    return ThreadMs() - t0;
}

void BM_LibcExpOctant(benchmark::State& state) {
    std::vector<double> out(OctantExponents().size());
    for (auto _ : state) LibcLoopMs(out);
}
BENCHMARK(BM_LibcExpOctant)->Unit(benchmark::kMillisecond);

void BM_ExactExpOctant(benchmark::State& state) {
    const auto path = static_cast<SimdPath>(state.range(0));
    if (!SimdPathAvailable(path)) {
        state.SkipWithError("path not available here");
        return;
    }
    state.SetLabel(SimdPathName(path));
    const std::vector<double>& x = OctantExponents();
    std::vector<double> out(x.size());
    for (auto _ : state) {
        exact::ExpArrayOn(path, x.data(), out.data(), x.size());
        benchmark::DoNotOptimize(out.data());
    }
}
BENCHMARK(BM_ExactExpOctant)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

// The long comparison with the C library: 10^8 arguments spread over the grid's exponents
// (-200..0, a fixed generator), the count of results that differ and the widest difference in
// units in the last place. The engine's values are checked against mpmath in the tests; this
// shows how rarely the C library's rounding and ours part.
void BM_CompareWithLibc(benchmark::State& state) {
    constexpr size_t kCount = 100000000, kBlock = 4096;
    std::vector<double> x(kBlock), mine(kBlock);
    for (auto _ : state) {
        uint64_t seed = 20, differ = 0;
        double widest = 0;
        for (size_t done = 0; done < kCount; done += kBlock) {
            for (double& v : x) {
                seed = seed * 6364136223846793005ull + 1442695040888963407ull;
                v = -200.0 * static_cast<double>(seed >> 11) * 0x1p-53;
            }
            exact::ExpArray(x.data(), mine.data(), kBlock);
            for (size_t i = 0; i < kBlock; ++i) {
                const double c = std::exp(x[i]);
                if (mine[i] != c) {
                    ++differ;
                    const double ulp = std::nextafter(c, 1e300) - c;
                    widest = std::max(widest, std::fabs(mine[i] - c) / ulp);
                }
            }
        }
        state.counters["arguments"] = static_cast<double>(kCount);
        state.counters["differ"] = static_cast<double>(differ);
        state.counters["widest_ulp"] = widest;
    }
}
BENCHMARK(BM_CompareWithLibc)->Unit(benchmark::kMillisecond)->Iterations(1);

// Every pair's Add (defaults, 5000 dots; best of the iterations) against the median of the bare
// C-library loop taken between them, both in this thread's processor time: the ratios are what the
// engine aims at (median Add at most 0.35 of the loop, worst at most 0.7).
void BM_AddAgainstLibcExp(benchmark::State& state) {
    SetClock([] { return int32_t{1000000000}; });
    const std::vector<OrbInfo> infos = cVeltara().EnumOrbitals();
    std::vector<double> add(80, 1e300), loop;
    std::vector<double> out(OctantExponents().size());
    for (auto _ : state) {
        for (int16_t i = 0; i < 40; ++i) {
            for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
                const OrbInfo& info = infos[static_cast<size_t>(i)];
                const bool pdf = view == ViewMode::PDF;
                OrbitalSetup s;
                s.OrbitalIndex = i;
                s.OrbitalViewMode = view;
                s.AtomRadius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
                s.DotThreshold = static_cast<uint8_t>(pdf ? info.DefaultPDFDotThreshold
                                                          : info.DefaultDRPDFDotThreshold);
                s.DotTarget = 5000;
                cOrbitalCol col;
                const double t0 = ThreadMs();
                benchmark::DoNotOptimize(col.Add(s));
                const size_t k = static_cast<size_t>(i) * 2 + (pdf ? 0 : 1);
                add[k] = std::min(add[k], ThreadMs() - t0);
            }
            if (i % 4 == 0) loop.push_back(LibcLoopMs(out));
        }
    }
    SetClock({});
    // The worst pair as 2 x orbital + view (0 density, 1 radial view).
    state.counters["worst_pair"] =
        static_cast<double>(std::max_element(add.begin(), add.end()) - add.begin());
    std::sort(add.begin(), add.end());
    std::sort(loop.begin(), loop.end());
    const double loopMedian = loop[loop.size() / 2];
    state.counters["loop_median_ms"] = loopMedian;
    state.counters["add_median_ms"] = (add[39] + add[40]) / 2;
    state.counters["add_worst_ms"] = add.back();
    state.counters["median_ratio"] = (add[39] + add[40]) / 2 / loopMedian;
    state.counters["worst_ratio"] = add.back() / loopMedian;
    state.SetLabel(SimdPathName(ActiveSimd().path));
}
BENCHMARK(BM_AddAgainstLibcExp)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
