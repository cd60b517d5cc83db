// The renderer's life: creation, Setup in its fixed order, statistics and dot re-sampling.
#include "render/orbital_renderer.h"

#include <cmath>

#include "electron/modOrbitals.h"
#include "support/clock.h"
#include "support/convert.h"
#include "support/modRand.h"

namespace veltara {

OrbitalRenderer::OrbitalRenderer(ViewMode view) : mView(view) {}

OrbitalRenderer::~OrbitalRenderer() = default;

std::unique_ptr<cOrbital> CreateOrbitalRenderer(ViewMode view) {
    switch (view) {
        case ViewMode::PDF:
            return std::make_unique<cOrbitalPDF>();
        case ViewMode::DRPDF:
            return std::make_unique<cOrbitalDRPDF>();
    }
    return nullptr;
}

cElectron& OrbitalRenderer::LiveElectron() {
    // The catalogue hands out no object for an unknown index and raises nothing; the failure
    // shows at the first call that needs the electron, like any unset object reference.
    if (!mElectron) Raise(kErrObjectNotSet);
    return *mElectron;
}

void OrbitalRenderer::SetScaleFactor(double factor) {
    cElectron& e = LiveElectron();
    if (mView == ViewMode::PDF) {
        e.SetPDFScaleFactor(factor);
    } else {
        e.SetDRPDFScaleFactor(factor);
    }
}

void OrbitalRenderer::Setup(const OrbitalSetup& DrawCmds) {
    // The setup record and the electron of its orbital.
    mSetup = DrawCmds;
    mElectron = modOrbitals::CreateElectron(mSetup.OrbitalIndex);
    Prepare();
}

void OrbitalRenderer::SetupState(const Superposition& s, double t, const OrbitalSetup& DrawCmds) {
    mSetup = DrawCmds;
    auto electron = std::make_unique<StateElectron>(s, t);
    mStateElectron = electron.get();
    mWholeCube = !electron->MirrorSymmetric();
    mElectron = std::move(electron);
    Prepare();
}

void OrbitalRenderer::Prepare() {
    // Scale so that the largest density of the cube maps to byte 255; a maximum of 0
    // fails on the division.
    const double Max = FindMaxProbability();
    SetScaleFactor(Divide(255.0, Max));

    // Reseed the shared generator from the clock: the seed lies in 0..65536, and readings
    // below 32768 ms give 0, a stuck generator.
    const int32_t T = TimeGetTime();
    const double seed = Int(std::fabs(static_cast<double>(T) / 2147483647.0 * 65536.0));
    modRand::Randomize(ToInt32(seed));

    // The probability grid, timed.
    int32_t start = TimeGetTime();
    CalcProbabilities();
    int32_t CalcTime = ElapsedMs(TimeGetTime(), start);

    // The first dot cloud, timed.
    start = TimeGetTime();
    FillDotMatrix();
    const int32_t DotTime = ElapsedMs(TimeGetTime(), start);

    // The statistics of both.
    UpdateStats(CalcTime, DotTime);
}

OrbitalStats OrbitalRenderer::GetStats() { return mStats; }

int32_t OrbitalRenderer::ReFillDotMatrix(const int32_t& TargetNum, const uint8_t& ProbThreshHold) {
    // The target is checked before anything changes.
    mSetup.DotTarget = Narrow16(TargetNum);
    mSetup.DotThreshold = ProbThreshHold;

    const int32_t start = TimeGetTime();
    FillDotMatrix();
    const int32_t DotTime = ElapsedMs(TimeGetTime(), start);

    // The grid is not recomputed: its calculation time stays and the rate follows from it.
    int32_t CalcTime = mStats.CalcTime;
    UpdateStats(CalcTime, DotTime);
    return 0;
}

void OrbitalRenderer::UpdateStats(int32_t& CalcTime, int32_t DotTime) {
    // The fixed number of grid samples, whatever the orbital, radius or symmetry treatment;
    // the whole cube of a state without mirror symmetry has 255³.
    mStats.TotalSamples = ToInt32(std::pow(mWholeCube ? 255.0 : 128.0, 3.0));

    // A grid faster than the clock's resolution counts as 1 ms, in the caller's variable too.
    if (CalcTime == 0) CalcTime = 1;
    mStats.CalcRate =
        ToInt32(Divide(static_cast<double>(mStats.TotalSamples), static_cast<double>(CalcTime)));
    mStats.CalcTime = CalcTime;
    mStats.DotTime = DotTime;
    mStats.DotTarget = mSetup.DotTarget;

    if (mDots.empty()) Raise(kErrSubscript);  // the upper bound of a never-sized cloud
    mStats.DotTotal = Narrow32(static_cast<int64_t>(mDots.size()));

    // The most frequent level, the lowest on a tie. With every count 0 the old Mode is kept on
    // purpose: a host shows the previous value rather than a made-up level 0.
    int32_t best = 0;
    for (int32_t v = 0; v <= 255; ++v) {
        if (mStats.ProbFreqs[v] > best) {
            best = mStats.ProbFreqs[v];
            mStats.Mode = static_cast<uint8_t>(v);
        }
    }
}

}  // namespace veltara
