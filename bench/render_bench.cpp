// Picture renders: a full dot frame, a transect, finished volumetric pictures of both sizes,
// and how far the preview resolution grows when frames take their real time.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>

#include "electron/modOrbitals.h"
#include "render/orbital_renderer.h"
#include "support/clock.h"

namespace {

using namespace veltara;

/// A 3Dz2 renderer in the density view with its catalogue radius and a full dot cloud.
std::unique_ptr<cOrbitalPDF> Renderer3Dz2() {
    // A fixed clock reading above 32768 ms gives a working generator seed.
    SetClock([] { return 1000000; });
    const OrbInfo info = modOrbitals::CreateElectron(9)->GetInfo();
    OrbitalSetup setup;
    setup.AtomRadius = info.DefaultPDFAtomRadius;
    setup.DotTarget = 32767;
    setup.DotThreshold = static_cast<uint8_t>(info.DefaultPDFDotThreshold);
    setup.OrbitalIndex = 9;
    setup.OrbitalViewMode = ViewMode::PDF;
    auto r = std::make_unique<cOrbitalPDF>();
    r->Setup(setup);
    SetClock({});
    return r;
}

RenderRequest Request(RenderMode mode, RenderSize size) {
    RenderRequest q;
    q.Mode = mode;
    q.Size = size;
    q.Theta = 0.6;
    q.Phi = 0.4;
    q.CameraPos = -400;
    q.ProjectionPlane = 0;
    q.StereoFactor = 40;
    q.TransectDir = TransectDirection::Alongy;
    q.ShowProbLevelOnDots = kTrue;
    q.ShowProbLevelOnTrans = kTrue;
    return q;
}

void BM_DotFrameMain(benchmark::State& state) {
    auto r = Renderer3Dz2();
    RenderRequest q = Request(static_cast<RenderMode>(state.range(0)), RenderSize::Main);
    q.Transector = kTrue;
    for (auto _ : state) {
        q.Theta += 1e-3;
        benchmark::DoNotOptimize(r->GetRender(q));
    }
    state.counters["dots"] = r->GetStats().DotTotal;
}
BENCHMARK(BM_DotFrameMain)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMicrosecond);

void BM_Transect(benchmark::State& state) {
    auto r = Renderer3Dz2();
    const RenderRequest q = Request(RenderMode::Transect, static_cast<RenderSize>(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(r->GetRender(q));
}
BENCHMARK(BM_Transect)->Arg(375)->Arg(128)->Unit(benchmark::kMicrosecond);

void BM_FinalVolume(benchmark::State& state) {
    auto r = Renderer3Dz2();
    RenderRequest q = Request(RenderMode::Volumetric, static_cast<RenderSize>(state.range(0)));
    q.VolQuality = 10;
    q.VolFinal = kTrue;
    for (auto _ : state) {
        q.Theta += 1e-3;  // a new view each time, so the cache never serves
        benchmark::DoNotOptimize(r->GetRender(q));
    }
}
BENCHMARK(BM_FinalVolume)->Arg(375)->Arg(128)->Unit(benchmark::kMillisecond);

/// Successive previews with the real clock: the factor settles where a frame takes ~50 ms.
/// Reports the factor reached and the preview resolution it gives at quality 10.
void BM_PreviewAdaptation(benchmark::State& state) {
    auto r = Renderer3Dz2();
    RenderRequest q = Request(RenderMode::Volumetric, static_cast<RenderSize>(state.range(0)));
    q.VolQuality = 10;
    q.VolFinal = kFalse;
    for (auto _ : state) {
        q.Theta += 1e-2;
        r->GetRender(q);
    }
    const float factor = r->VolFactor();
    int res = static_cast<int>(10.0f * factor);
    const int cap = state.range(0) == 375 ? 255 : 127;
    if (res > cap) res = cap;
    if (res < 16) res = 16;
    if (res % 2 == 0) --res;
    state.counters["VolFactor"] = factor;
    state.counters["Res"] = res;
}
BENCHMARK(BM_PreviewAdaptation)->Arg(375)->Arg(128)->Iterations(60)->Unit(benchmark::kMillisecond);

}  // namespace
