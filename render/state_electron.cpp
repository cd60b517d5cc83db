// StateElectron: a state's density through the wave evaluator, scaled like a catalogue orbital.
#include "render/state_electron.h"

#include <cmath>

#include "electron/radius_holding.h"
#include "support/convert.h"

namespace veltara {

namespace {

OrbInfo InfoOf(const Superposition& s) {
    const veltara::State& first = s.Terms()[0].state;
    OrbInfo info;
    info.Name = u"state";
    const int16_t radius = DefaultAtomRadius(s);
    info.DefaultPDFAtomRadius = radius;
    info.DefaultDRPDFAtomRadius = radius;
    info.n = static_cast<int16_t>(first.n);
    info.l = static_cast<int16_t>(first.l);
    info.M = static_cast<int16_t>(first.m);
    info.OrbType = first.shellAverage ? OrbitalType::AverageOrbs : OrbitalType::SingleOrb;
    return info;
}

}  // namespace

StateElectron::StateElectron(const Superposition& s, double t)
    : mState(s), mTime(t), mWave(s, t), mSymmetric(s.Terms().size() == 1), mInfo(InfoOf(s)) {}

double StateElectron::View(ViewMode view, double x, double y, double z) const {
    return view == ViewMode::PDF ? mWave.Density(x, y, z) : mWave.RadialView(x, y, z);
}

double StateElectron::GetNonScaledPDF(const COORDdoubleParams& p) {
    return mWave.Density(CheckedSqrt(p.Xs), CheckedSqrt(p.Ys), CheckedSqrt(p.Zs));
}

double StateElectron::GetNonScaledDRPDF(const COORDdoubleParams& p) {
    return mWave.RadialView(CheckedSqrt(p.Xs), CheckedSqrt(p.Ys), CheckedSqrt(p.Zs));
}

uint8_t StateElectron::GetPDF(const COORDdoubleParams& p) {
    return Level(GetNonScaledPDF(p), mPDFScale);
}

uint8_t StateElectron::GetDRPDF(const COORDdoubleParams& p) {
    return Level(GetNonScaledDRPDF(p), mDRPDFScale);
}

void StateElectron::NonScaledBatch(ViewMode view, const COORDdoubleParams* points, double* out,
                                   size_t count) {
    for (size_t i = 0; i < count; ++i) {
        const COORDdoubleParams& p = points[i];
        out[i] = View(view, CheckedSqrt(p.Xs), CheckedSqrt(p.Ys), CheckedSqrt(p.Zs));
    }
}

void StateElectron::ScaledBatch(ViewMode view, const COORDdoubleParams* points, uint8_t* out,
                                size_t count) {
    const double scale = Scale(view);
    for (size_t i = 0; i < count; ++i) {
        const COORDdoubleParams& p = points[i];
        const double v = View(view, CheckedSqrt(p.Xs), CheckedSqrt(p.Ys), CheckedSqrt(p.Zs));
        out[i] = Level(v, scale);
    }
}

void StateElectron::SignedBatch(ViewMode view, const double* xyz, double* out, size_t count) const {
    for (size_t i = 0; i < count; ++i)
        out[i] = View(view, xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]);
}

void StateElectron::ScaledSignedBatch(ViewMode view, const double* xyz, uint8_t* out,
                                      size_t count) const {
    const double scale = Scale(view);
    for (size_t i = 0; i < count; ++i) {
        const double v = View(view, xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]);
        out[i] = Level(v, scale);
    }
}

}  // namespace veltara
