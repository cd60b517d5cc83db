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

/// The picture's resolution and the view's basis: a pixel across, a pixel up and a sample along
/// the ray, each turned by the view angles.
struct VolumeLayout {
    uint8_t quality;  ///< samples per ray, 5..10
    int32_t res;      ///< pixels per side, odd
    int32_t half;     ///< res / 2: the offset of the centre pixel
    COORDdouble col, row, depth;
    double halfDepth;  ///< (quality - 1) / 2, as a single-precision value
};

/// Quality 0 asks for the least (5); others outside 5..10 raise 9, outside a byte 6. A finished
/// picture has the size's full resolution; a preview one adapted to the frame time.
VolumeLayout LayoutOf(const RenderRequest& req, int16_t atomRadius, float volFactor) {
    VolumeLayout v{};
    v.quality = ToByte(req.VolQuality);
    if (v.quality == 0) v.quality = 5;
    if (v.quality < 5 || v.quality > 10) Raise(kErrSubscript);

    const bool main = IsMainSize(req.Size);
    if (req.VolFinal == kTrue) {
        v.res = main ? 255 : 127;
    } else {
        const float product = static_cast<float>(v.quality) * volFactor;
        v.res = ToInt32(Int(product));
        const int32_t cap = main ? 255 : 127;
        if (v.res > cap) v.res = cap;
        if (v.res < 16) v.res = 16;
        if (modMaths::IsEven(v.res) != kFalse) v.res = v.res - 1;
    }
    v.half = v.res / 2;
    const int32_t steps = v.quality - 1;
    v.halfDepth = static_cast<float>(steps) / 2.0f;
    const auto pixelStep = static_cast<float>(static_cast<double>(atomRadius) / v.half);
    const double depthStep = static_cast<double>(Mul16(2, atomRadius)) / steps;
    v.col = modMaths::RotateCoord({pixelStep, 0, 0}, req.Theta, req.Phi);
    v.depth = modMaths::RotateCoord({0, depthStep, 0}, req.Theta, req.Phi);
    v.row = modMaths::RotateCoord({0, 0, pixelStep}, req.Theta, req.Phi);
    return v;
}

/// The ray values of every pixel, (column, row), and the largest of those cast.
struct RayImage {
    int32_t res = 0;
    std::vector<float> values;
    float max = 0.0f;

    float& operator()(int32_t c, int32_t r) { return values[static_cast<size_t>(r) * res + c]; }
};

/// Evaluates the view along rows of rays: the rays start at i * row + j * col - halfDepth * depth
/// for j = jFirst, jFirst + jStep, ... (count rays), `quality` samples each, the k-th sample of a
/// ray at start + k * depth. A catalogue electron is given the squares of the coordinates; a
/// state without mirror symmetry the signed point.
class RaySampler {
  public:
    RaySampler(cElectron& electron, const StateElectron* whole, ViewMode view,
               const VolumeLayout& v)
        : mElectron(electron),
          mWhole(whole),
          mView(view),
          mV(v),
          mXyz(static_cast<size_t>(3) * v.res * v.quality),
          mSquares(static_cast<size_t>(v.res) * v.quality),
          mDensity(mSquares.size()) {}

    /// The densities of the rays' samples, ray after ray.
    const double* Rays(double i, int32_t jFirst, int32_t jStep, int32_t count) {
        const int32_t samples = mV.quality;
        double* out = mXyz.data();
        for (int32_t r = 0; r < count; ++r) {
            const double j = jFirst + r * jStep;
            const double sx = i * mV.row.X + j * mV.col.X - mV.halfDepth * mV.depth.X;
            const double sy = i * mV.row.Y + j * mV.col.Y - mV.halfDepth * mV.depth.Y;
            const double sz = i * mV.row.Z + j * mV.col.Z - mV.halfDepth * mV.depth.Z;
            for (int32_t k = 0; k < samples; ++k) {
                *out++ = sx + k * mV.depth.X;
                *out++ = sy + k * mV.depth.Y;
                *out++ = sz + k * mV.depth.Z;
            }
        }
        const size_t n = static_cast<size_t>(count) * samples;
        if (mWhole != nullptr) {
            mWhole->SignedBatch(mView, mXyz.data(), mDensity.data(), n);
        } else {
            for (size_t p = 0; p < n; ++p) {
                const double* q = mXyz.data() + 3 * p;
                mSquares[p] = {q[0] * q[0], q[1] * q[1], q[2] * q[2]};
            }
            mElectron.NonScaledBatch(mView, mSquares.data(), mDensity.data(), n);
        }
        return mDensity.data();
    }

  private:
    cElectron& mElectron;
    const StateElectron* mWhole;
    ViewMode mView;
    const VolumeLayout& mV;
    std::vector<double> mXyz;
    std::vector<COORDdoubleParams> mSquares;
    std::vector<double> mDensity;
};

/// Casts the rays of the middle row and of every second row and column; the nearest sample
/// weighs 1, the k-th 1 / (k + 1).
RayImage CastRays(RaySampler& sampler, const VolumeLayout& v, bool inversionSymmetric) {
    const int32_t Res = v.res;
    const int32_t Half = v.half;
    const int32_t Quality = v.quality;
    const int32_t Steps = Quality - 1;
    RayImage image{Res, std::vector<float>(static_cast<size_t>(Res) * Res, 0.0f)};
    auto forward = [Steps](const double* d) {
        float F = 0.0f;
        for (int32_t k = 0; k <= Steps; ++k) F = F + static_cast<float>(d[k] / (k + 1));
        return F;
    };

    // Pass 1, the middle row: every pixel casts its own ray. The quotients stay double; the
    // running sum is single precision after every addition.
    const double* density = sampler.Rays(0.0, -Half, 1, Res);
    for (int32_t r = 0; r < Res; ++r) {
        const double* d = density + static_cast<size_t>(r) * Quality;
        float Acc = 0.0f;
        for (int32_t k = 0; k <= Steps; ++k) {
            Acc = static_cast<float>(static_cast<double>(Acc) + d[k] / (k + 1));
        }
        image(r, Half) = Acc;
        if (Acc > image.max) image.max = Acc;
    }

    // Pass 2, every second row and column. Every catalogue density is unchanged by inversion
    // through the nucleus, so the ray of pixel (j, i) read backwards is the ray of (-j, -i):
    // one ray gives two pixels. Intended; it halves the cost of the picture. A state without
    // that symmetry casts the mirrored ray itself.
    const int32_t rays = Half + 1;
    for (int32_t i = (Half % 2 == 0) ? 2 : 1; i <= Half; i += 2) {
        density = sampler.Rays(i, -Half, 2, rays);
        for (int32_t r = 0; r < rays; ++r) {
            const int32_t j = -Half + 2 * r;
            const double* d = density + static_cast<size_t>(r) * Quality;
            float B = 0.0f;
            for (int32_t k = 0; k <= Steps; ++k) B = B + static_cast<float>(d[k] / (Quality - k));
            const float F = forward(d);
            image(Half + j, Half + i) = F;
            if (inversionSymmetric) image(Half - j, Half - i) = B;
            if (F > image.max) image.max = F;
            if (inversionSymmetric && B > image.max) image.max = B;
        }
        if (inversionSymmetric) continue;
        density = sampler.Rays(-i, -Half, 2, rays);
        for (int32_t r = 0; r < rays; ++r) {
            const int32_t j = -Half + 2 * r;
            const float F = forward(density + static_cast<size_t>(r) * Quality);
            image(Half + j, Half - i) = F;
            if (F > image.max) image.max = F;
        }
    }
    return image;
}

/// Pass 3, the missing columns of the computed rows; pass 4, the missing rows, each the mean
/// of its two neighbours. Each may overwrite part of the middle row of pass 1, depending on the
/// parity of the half width; kept.
void FillBetweenRays(RayImage& image) {
    const int32_t Last = image.res - 1;
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
}

/// The grey level of each pixel, row by row: Scale x value as a byte, ties to even. Levels in
/// 0..255 round by adding and taking away 1.5 x 2^52 (the processor's nearest-even rounding,
/// as ToByte's); anything else takes ToByte itself and its error.
std::vector<uint8_t> GreyLevels(RayImage& image, float Scale) {
    constexpr double kRounder = 6755399441055744.0;
    std::vector<uint8_t> grey(image.values.size());
    for (size_t k = 0; k < grey.size(); ++k) {
        const double v = Scale * image.values[k];
        grey[k] =
            v >= 0.0 && v < 255.0 ? static_cast<uint8_t>((v + kRounder) - kRounder) : ToByte(v);
    }
    return grey;
}

/// The res x res grey picture stretched (nearest neighbour) onto the edge x edge square at
/// (at, at) from the surface's top left: pixel (x, y) of the square shows (x res / edge,
/// y res / edge).
void StretchGrey(const std::vector<uint8_t>& grey, int32_t res, cMemoryDCEx& surface, int32_t at,
                 int32_t edge) {
    std::vector<int32_t> source(static_cast<size_t>(edge));
    for (int32_t x = 0; x < edge; ++x) source[x] = x * res / edge;
    const int32_t height = surface.Height();
    for (int32_t y = 0; y < edge; ++y) {
        const uint8_t* from = grey.data() + static_cast<size_t>(source[y]) * res;
        RGBA* line = surface.ScanLine(height - (at + y)) + at;
        for (int32_t x = 0; x < edge; ++x) {
            const uint8_t g = from[source[x]];
            line[x] = RGBA{g, g, g, 0};
        }
    }
}

}  // namespace

void OrbitalRenderer::RenderVolume(const RenderRequest& req) {
    const int32_t StartTime = TimeGetTime();

    // The layout, then the rays and the pixels between them.
    const VolumeLayout layout = LayoutOf(req, mSetup.AtomRadius, mVolFactor);
    float Stored = mVolMax[layout.quality - 5];
    RaySampler sampler(LiveElectron(), mWholeCube ? mStateElectron : nullptr, mView, layout);
    RayImage image = CastRays(sampler, layout, !mWholeCube);
    FillBetweenRays(image);

    // Normalisation against the brightest frame so far at this quality level: successive
    // frames of one orbital stay comparable in brightness.
    float MaxValue = image.max;
    if (MaxValue < Stored) {
        MaxValue = Stored;
    } else {
        Stored = MaxValue;
    }
    if (MaxValue == 0.0f) MaxValue = 1.0f;
    const auto Scale = static_cast<float>(255.0 / MaxValue);
    const std::vector<uint8_t> grey = GreyLevels(image, Scale);

    // Onto the surface of the requested size, recreated for the picture: on Main a 255-pixel
    // square in the middle (the 60-pixel border stays black), on Nano the whole surface.
    if (IsPictureSize(req.Size)) {
        const bool kept = req.Transector == kTrue || req.VolFinal == kTrue;
        cMemoryDCEx& surface = mMemory.RecreatedSurface(req.Size, kept);
        if (IsMainSize(req.Size)) {
            StretchGrey(grey, layout.res, surface, 60, 255);
        } else {
            StretchGrey(grey, layout.res, surface, 0, 127);
        }

        // The picture stays in its surface as the frame, for the cache and to draw the
        // transector on.
        if (kept) {
            mMemory.AdoptSurface(req.Size);
            if (req.Transector != kFalse) DrawTransector(req, mMemory.Frame());
        }
        PublishSurface(req.Size, surface);
    }

    // Adapting the preview towards 50 ms a frame; averaging with the old factor damps it.
    // A VolFinal neither 0 nor -1 got a preview's resolution above yet adapts nothing here;
    // kept, as hosts only ever send the two truth values.
    if (req.VolFinal == kFalse) {
        int32_t Elapsed = ElapsedMs(TimeGetTime(), StartTime);
        if (Elapsed == 0) Elapsed = 50;
        const double Speed = CheckedSqrt(Divide(50.0, Elapsed));
        mVolFactor = static_cast<float>(CheckFinite(
            (layout.res * Speed / layout.quality + static_cast<double>(mVolFactor)) / 2.0));
    }

    mVolMax[layout.quality - 5] = Stored;
}

}  // namespace veltara
