// RenderVolume: the volumetric picture, each pixel a depth-weighted sum of the unscaled density
// along a ray through the cube, normalised against a running maximum per quality level.
#include <cmath>
#include <cstdint>
#include <vector>

#include "render/orbital_renderer.h"
#include "support/clock.h"
#include "support/convert.h"
#include "support/modMaths.h"

namespace veltara {

namespace {

/// Fills points with the squared coordinates of the samples of the rays starting at
/// rowPart + j * col - halfDepth * depth for j = jFirst, jFirst + jStep, ... (count rays),
/// `samples` points each: the k-th sample of a ray is start + k * depth.
void RaySamples(double i, const COORDdouble& row, const COORDdouble& col, const COORDdouble& depth,
                double halfDepth, int32_t jFirst, int32_t jStep, int32_t count, int32_t samples,
                COORDdoubleParams* points) {
    for (int32_t r = 0; r < count; ++r) {
        const double j = jFirst + r * jStep;
        const double sx = i * row.X + j * col.X - halfDepth * depth.X;
        const double sy = i * row.Y + j * col.Y - halfDepth * depth.Y;
        const double sz = i * row.Z + j * col.Z - halfDepth * depth.Z;
        COORDdoubleParams* out = points + static_cast<size_t>(r) * samples;
        for (int32_t k = 0; k < samples; ++k) {
            const double px = sx + k * depth.X;
            const double py = sy + k * depth.Y;
            const double pz = sz + k * depth.Z;
            out[k] = {px * px, py * py, pz * pz};
        }
    }
}

}  // namespace

void OrbitalRenderer::RenderVolume() {
    const int32_t StartTime = TimeGetTime();

    // Quality: samples per ray, 5 to 10; 0 asks for the least.
    uint8_t Quality = ToByte(mReq.VolQuality);
    if (Quality == 0) Quality = 5;
    if (Quality < 5 || Quality > 10) Raise(kErrSubscript);
    float Stored = mVolMax[Quality - 5];

    // Resolution: fixed for a finished picture, adapted to the frame time for a preview.
    const bool main = IsMainSize(mReq.Size);
    int32_t Res;
    if (mReq.VolFinal == kTrue) {
        Res = main ? 255 : 127;
    } else {
        const float product = static_cast<float>(Quality) * mVolFactor;
        Res = ToInt32(Int(product));
        const int32_t cap = main ? 255 : 127;
        if (Res > cap) Res = cap;
        if (Res < 16) Res = 16;
        if (modMaths::IsEven(Res) != kFalse) Res = Res - 1;
    }
    const int32_t Half = Res / 2;
    const int32_t Last = Res - 1;
    const int32_t Steps = Quality - 1;
    const float HalfDepth = static_cast<float>(Steps) / 2.0f;
    const auto PixelStep = static_cast<float>(static_cast<double>(mSetup.AtomRadius) / Half);
    const double DepthStep = static_cast<double>(Mul16(2, mSetup.AtomRadius)) / Steps;

    // Basis of the view: a pixel across, a pixel up and a sample along the ray.
    const COORDdouble ColVec = modMaths::RotateCoord({PixelStep, 0, 0}, mReq.Theta, mReq.Phi);
    const COORDdouble DepthVec = modMaths::RotateCoord({0, DepthStep, 0}, mReq.Theta, mReq.Phi);
    const COORDdouble RowVec = modMaths::RotateCoord({0, 0, PixelStep}, mReq.Theta, mReq.Phi);
    std::vector<float> Image(static_cast<size_t>(Res) * Res, 0.0f);
    auto image = [&](int32_t c, int32_t r) -> float& {
        return Image[static_cast<size_t>(r) * Res + c];
    };
    float MaxValue = 0.0f;

    // Sample buffers for one row of rays, evaluated by the electron in one batch.
    std::vector<COORDdoubleParams> points(static_cast<size_t>(Res) * Quality);
    std::vector<double> density(points.size());
    const double halfDepth = HalfDepth;

    // Pass 1, the middle row: every pixel casts its own ray. The quotients stay double; the
    // running sum is single precision after every addition.
    RaySamples(0.0, RowVec, ColVec, DepthVec, halfDepth, -Half, 1, Res, Quality, points.data());
    cElectron& electron = LiveElectron();
    electron.NonScaledBatch(mView, points.data(), density.data(),
                            static_cast<size_t>(Res) * Quality);
    for (int32_t r = 0; r < Res; ++r) {
        const double* d = density.data() + static_cast<size_t>(r) * Quality;
        float Acc = 0.0f;
        for (int32_t k = 0; k <= Steps; ++k) {
            Acc = static_cast<float>(static_cast<double>(Acc) + d[k] / (k + 1));
        }
        image(r, Half) = Acc;
        if (Acc > MaxValue) MaxValue = Acc;
    }

    // Pass 2, every second row and column. Every orbital density is unchanged by inversion
    // through the nucleus, so the ray of pixel (j, i) read backwards is the ray of (-j, -i):
    // one ray gives two pixels. Intended; it halves the cost of the picture.
    const int32_t rays = Half + 1;
    for (int32_t i = (Half % 2 == 0) ? 2 : 1; i <= Half; i += 2) {
        RaySamples(i, RowVec, ColVec, DepthVec, halfDepth, -Half, 2, rays, Quality, points.data());
        electron.NonScaledBatch(mView, points.data(), density.data(),
                                static_cast<size_t>(rays) * Quality);
        for (int32_t r = 0; r < rays; ++r) {
            const int32_t j = -Half + 2 * r;
            const double* d = density.data() + static_cast<size_t>(r) * Quality;
            float F = 0.0f;
            float B = 0.0f;
            for (int32_t k = 0; k <= Steps; ++k) {
                F = F + static_cast<float>(d[k] / (k + 1));
                B = B + static_cast<float>(d[k] / (Quality - k));
            }
            image(Half + j, Half + i) = F;
            image(Half - j, Half - i) = B;
            if (F > MaxValue) MaxValue = F;
            if (B > MaxValue) MaxValue = B;
        }
    }

    // Pass 3, the missing columns of the computed rows; pass 4, the missing rows. Each may
    // overwrite part of the middle row of pass 1, depending on the parity of Half; kept.
    for (int32_t r = 0; r <= Last; r += 2) {
        for (int32_t c = 1; c <= Last - 1; c += 2) {
            image(c, r) = (image(c - 1, r) + image(c + 1, r)) / 2.0f;
        }
    }
    for (int32_t r = 1; r <= Last - 1; r += 2) {
        for (int32_t c = 0; c <= Last; ++c) {
            image(c, r) = (image(c, r - 1) + image(c, r + 1)) / 2.0f;
        }
    }

    // Normalisation against the brightest frame so far at this quality level: successive
    // frames of one orbital stay comparable in brightness.
    cMemoryDCEx Work;
    Work.Create(Res, Res);
    if (MaxValue < Stored) {
        MaxValue = Stored;
    } else {
        Stored = MaxValue;
    }
    if (MaxValue == 0.0f) MaxValue = 1.0f;
    const auto Scale = static_cast<float>(255.0 / MaxValue);

    // The grey picture, row by row into the work surface.
    std::vector<RGBA> RowBuffer(static_cast<size_t>(Res));
    for (int32_t r = 0; r <= Last; ++r) {
        for (int32_t c = 0; c <= Last; ++c) {
            const float value = Scale * image(c, r);
            const uint8_t g = ToByte(value);
            RowBuffer[static_cast<size_t>(c)] = RGBA{g, g, g, 0};
        }
        Work.SetBits(RowBuffer, 0, r, 1);
    }

    // Onto the surface of the requested size, recreated for the picture.
    if (IsPictureSize(mReq.Size)) {
        cMemoryDCEx& surface = RecreatedSurface(mReq.Size);
        if (main) {
            // A 255-pixel square in the middle; the 60-pixel border stays black.
            StretchBlt(surface, 60, 60, 255, 255, Work, 0, 0, Res, Res);
        } else {
            StretchBlt(surface, 0, 0, 127, 127, Work, 0, 0, Res, Res);
        }

        // Keep the picture in mVolBits for the cache, and to draw the transector on.
        if (mReq.Transector == kTrue || mReq.VolFinal == kTrue) {
            mMemory.ClearFrame(mReq.Size);
            surface.GetAllBits(mMemory.mVolBits);
            if (mReq.Transector != kFalse) {
                DrawTransector();
                surface.SetAllBits(mMemory.mVolBits);
            }
        }
        PublishSurface(surface);
    }

    // Adapting the preview towards 50 ms a frame; averaging with the old factor damps it.
    // A VolFinal neither 0 nor -1 got a preview's resolution above yet adapts nothing here;
    // kept, as hosts only ever send the two truth values.
    if (mReq.VolFinal == kFalse) {
        int32_t Elapsed = ElapsedMs(TimeGetTime(), StartTime);
        if (Elapsed == 0) Elapsed = 50;
        const double Speed = CheckedSqrt(Divide(50.0, Elapsed));
        mVolFactor = static_cast<float>(
            CheckFinite((Res * Speed / Quality + static_cast<double>(mVolFactor)) / 2.0));
    }

    mVolMax[Quality - 5] = Stored;
    // Work is deleted here, at the end of its scope.
}

}  // namespace veltara
