// Bad input: random request records of 48 bytes either render or raise a numbered error.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>

#include "engine/cOrbitalCol.h"
#include "test_support.h"

namespace {

using namespace veltara;

TEST(RenderRequestFuzz, RandomRecordsRenderOrRaiseANumberedError) {
    vt_test::FixedClock clock(100000);
    std::mt19937_64 rng(20240611);
    cOrbitalCol col;
    col.Add({9, 400, 30, 0, 0, ViewMode::PDF});  // 1S in a cube of radius 9, 400 dots
    std::map<int, int> outcomes;                 // 0: rendered, else the error number
    int volumetric = 0;

    constexpr int kRequests = 200000;
    for (int n = 0; n < kRequests; ++n) {
        // Every byte random; then, for a share of the requests, a few fields pulled towards
        // the values that reach deep into the renders (modes, the two sizes, qualities).
        unsigned char bytes[sizeof(RenderRequest)];
        for (unsigned char& b : bytes) b = static_cast<unsigned char>(rng());
        RenderRequest q;
        std::memcpy(&q, bytes, sizeof q);
        const uint64_t pick = rng();
        if (pick % 4 == 0) {
            q.Mode = static_cast<RenderMode>((pick >> 3) % 5);
            // Mostly Nano, in runs: a Main frame moves nine times the pixels, and each change of
            // size resizes the pixel array.
            q.Size = (n / 512) % 4 == 0 ? RenderSize::Main : RenderSize::Nano;
            if ((pick >> 7) % 2) q.Theta = static_cast<double>((pick >> 8) % 628) / 100.0;
            if ((pick >> 17) % 2) q.Phi = static_cast<double>((pick >> 18) % 628) / 100.0;
            if ((pick >> 27) % 2) q.VolQuality = static_cast<int16_t>((pick >> 28) % 12);
            if ((pick >> 32) % 2) q.VolFinal = (pick >> 33) % 2 ? kTrue : kFalse;
            if ((pick >> 34) % 2) q.TransectDir = static_cast<TransectDirection>((pick >> 35) % 4);
            if ((pick >> 37) % 2) q.TransectNo = static_cast<int16_t>((pick >> 38) % 300) - 150;
            if ((pick >> 47) % 2) q.CameraPos = static_cast<int16_t>(-((pick >> 48) % 1000));
            if ((pick >> 58) % 2) q.ProjectionPlane = 0;
            if ((pick >> 59) % 4 == 0) q.StereoFactor = 0;
        }
        if (q.Mode == RenderMode::Volumetric) {
            // Volumetric pictures cost a thousand dot frames: keep a few hundred.
            if (++volumetric > 250) q.Mode = RenderMode::Orthographic;
        }
        try {
            col.GetRender(0, q);
            ++outcomes[0];
        } catch (const Error& e) {
            const int number = e.number();
            ASSERT_TRUE(number == 5 || number == 6 || number == 9 || number == 11)
                << "error " << number;
            ++outcomes[number];
        }
    }
    // The biased share must reach real pictures and the usual failures.
    EXPECT_GT(outcomes[0], 10000);
    EXPECT_GT(outcomes[6], 100);
    EXPECT_GT(outcomes[9], 10);
    EXPECT_GT(outcomes[11], 10);
    EXPECT_EQ(col.GetStats(0).FramesRendered, kRequests);
}

}  // namespace
