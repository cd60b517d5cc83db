// Renderer costs: adding each catalogue orbital in each view, re-sampling a large cloud, and the
// memory one orbital holds.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

#include "electron/hybrids.h"
#include "engine/cOrbitalCol.h"
#include "engine/cVeltara.h"
#include "support/clock.h"

namespace {

using namespace veltara;

// A clock reading well above 32768 ms, so every setup gets a working seed.
struct FixedSeedClock {
    FixedSeedClock() {
        SetClock([] { return int32_t{1000000000}; });
    }
    ~FixedSeedClock() { SetClock({}); }
};

OrbitalSetup DefaultSetup(const OrbInfo& info, int16_t index, ViewMode view) {
    const bool pdf = view == ViewMode::PDF;
    OrbitalSetup s;
    s.OrbitalIndex = index;
    s.OrbitalViewMode = view;
    s.AtomRadius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
    s.DotThreshold =
        static_cast<uint8_t>(pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold);
    s.DotTarget = 5000;
    return s;
}

const std::vector<OrbInfo>& Catalogue() {
    static const std::vector<OrbInfo> infos = cVeltara().EnumOrbitals();
    return infos;
}

// One Add of one (orbital, view) pair with its defaults.
void BM_Add(benchmark::State& state) {
    FixedSeedClock clock;
    const auto index = static_cast<int16_t>(state.range(0));
    const auto view = static_cast<ViewMode>(state.range(1));
    const OrbitalSetup s = DefaultSetup(Catalogue()[static_cast<size_t>(index)], index, view);
    for (auto _ : state) {
        cOrbitalCol col;
        benchmark::DoNotOptimize(col.Add(s));
    }
}
BENCHMARK(BM_Add)
    ->ArgsProduct({benchmark::CreateDenseRange(0, 39, 1), {0, 1}})
    ->Unit(benchmark::kMillisecond);

// Adding a state that is no catalogue row, with its defaults (5000 dots) in the density view:
// 0, a single n = 10 state (the octant); 1, a superposition of two n <= 10 states (the whole
// cube); 2, the sp3 hybrid's first member (the whole cube).
void BM_AddState(benchmark::State& state) {
    FixedSeedClock clock;
    const Superposition s = state.range(0) == 0 ? MakeSuperposition(State{10, 4, 3})
                            : state.range(0) == 1
                                ? MakeSuperposition({Term{{0.6, 0.0}, State{10, 4, 3}},
                                                     Term{{0.0, 0.8}, State{9, 2, 0}}})
                                : Hybrid(HybridKind::Sp3, 0);
    OrbitalSetup setup;
    setup.OrbitalViewMode = static_cast<ViewMode>(state.range(1));
    for (auto _ : state) {
        cOrbitalCol col;
        benchmark::DoNotOptimize(col.AddState(s, 0.0, setup));
    }
}
BENCHMARK(BM_AddState)->ArgsProduct({{0, 1, 2}, {0, 1}})->Unit(benchmark::kMillisecond);

// Milliseconds of processor time used by this thread: unlike the wall clock, not inflated
// when other processes share the cores.
double ThreadCpuMs() {
    timespec ts{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) * 1e-6;
}

// Every pair once per iteration; the median and worst single Add (its best of the
// iterations, in wall and in processor time) as counters.
void BM_AddAllPairs(benchmark::State& state) {
    FixedSeedClock clock;
    std::vector<double> wall(80, 1e300), cpu(80, 1e300);
    for (auto _ : state) {
        for (int16_t i = 0; i < 40; ++i) {
            for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
                const OrbitalSetup s = DefaultSetup(Catalogue()[static_cast<size_t>(i)], i, view);
                const size_t k = static_cast<size_t>(i) * 2 + static_cast<size_t>(view);
                cOrbitalCol col;
                const auto t0 = std::chrono::steady_clock::now();
                const double c0 = ThreadCpuMs();
                benchmark::DoNotOptimize(col.Add(s));
                cpu[k] = std::min(cpu[k], ThreadCpuMs() - c0);
                wall[k] = std::min(wall[k], std::chrono::duration<double, std::milli>(
                                                std::chrono::steady_clock::now() - t0)
                                                .count());
            }
        }
    }
    std::sort(wall.begin(), wall.end());
    std::sort(cpu.begin(), cpu.end());
    state.counters["median_ms"] = (wall[39] + wall[40]) / 2;
    state.counters["worst_ms"] = wall.back();
    state.counters["median_cpu_ms"] = (cpu[39] + cpu[40]) / 2;
    state.counters["worst_cpu_ms"] = cpu.back();
}
BENCHMARK(BM_AddAllPairs)->Unit(benchmark::kMillisecond)->Iterations(3);

// A new cloud of 20000 dots from an existing grid.
void BM_ReFill20000(benchmark::State& state) {
    FixedSeedClock clock;
    const auto index = static_cast<int16_t>(state.range(0));
    const auto view = static_cast<ViewMode>(state.range(1));
    const OrbitalSetup s = DefaultSetup(Catalogue()[static_cast<size_t>(index)], index, view);
    cOrbitalCol col;
    col.Add(s);
    int32_t dots = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(col.ReFillDotMatrix(int16_t{0}, s.DotThreshold, 20000));
        dots = col.GetStats(0).DotTotal;
    }
    state.counters["dots"] = dots;
}
BENCHMARK(BM_ReFill20000)
    ->Args({0, 0})   // 1S density
    ->Args({9, 0})   // 3Dz2 density
    ->Args({36, 1})  // averaged 4S radial distribution: most of the cube above the threshold
    ->Args({39, 0})  // averaged 4F density
    ->Unit(benchmark::kMillisecond);

// Resident memory, in pages of /proc/self/statm.
long ResidentPages() {
    long size = 0, resident = 0;
    if (FILE* f = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(f, "%ld %ld", &size, &resident) != 2) resident = 0;
        std::fclose(f);
    }
    return resident;
}

// The memory one added orbital holds: the resident size grown by adding 20 orbitals.
void BM_MemoryPerOrbital(benchmark::State& state) {
    FixedSeedClock clock;
    constexpr int kOrbitals = 20;
    const double pageMiB = static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
    double perOrbital = 0;
    for (auto _ : state) {
        auto col = std::make_unique<cOrbitalCol>();
        const long before = ResidentPages();
        for (int k = 0; k < kOrbitals; ++k) {
            const auto index = static_cast<int16_t>((k * 7) % 40);
            const ViewMode view = k % 2 == 0 ? ViewMode::PDF : ViewMode::DRPDF;
            col->Add(DefaultSetup(Catalogue()[static_cast<size_t>(index)], index, view));
        }
        const long after = ResidentPages();
        perOrbital = static_cast<double>(after - before) * pageMiB / kOrbitals;
    }
    state.counters["MiB_per_orbital"] = perOrbital;
}
BENCHMARK(BM_MemoryPerOrbital)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
