// Every (orbital, view) pair with the catalogue's defaults under a fixed clock: the hashes of
// its grid, its dots and its pictures in all five modes and both sizes, against
// tests/data/golden/pairs.txt, recorded with the C library's exp and sin/cos. Run under each
// VELTARA_SIMD path, this holds every path to the same bytes.
//
// Set VT_UPDATE_GOLDEN=1 to rewrite the file; review with git diff.
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "picture_test_support.h"

namespace {

using namespace veltara;

/// FNV-1a, 64-bit.
struct Fnv {
    uint64_t h = 1469598103934665603ull;
    void Mix(const void* data, size_t size) {
        for (size_t i = 0; i < size; ++i) {
            h ^= static_cast<const uint8_t*>(data)[i];
            h *= 1099511628211ull;
        }
    }
};

std::string PairLine(cOrbitalCol& col, int16_t orbital, ViewMode view) {
    const int16_t i = col.Add(vt_test::Defaults(orbital, view, 10000));
    std::ostringstream line;
    line << orbital << (view == ViewMode::PDF ? " pdf" : " drpdf") << std::hex;
    Fnv grid, dots;
    const auto g = col.Orbital(i).ProbMatrix();
    grid.Mix(g.data(), g.size());
    const auto d = col.Orbital(i).Dots();
    dots.Mix(d.data(), d.size_bytes());
    line << ' ' << grid.h << ' ' << dots.h;
    for (RenderMode mode : {RenderMode::Orthographic, RenderMode::Perspective, RenderMode::Anaglyph,
                            RenderMode::Volumetric, RenderMode::Transect}) {
        Fnv picture;
        for (RenderSize size : {RenderSize::Main, RenderSize::Nano}) {
            RenderRequest q = vt_test::Request(mode, size, 0.3 + 0.01 * orbital, 0.5);
            q.VolFinal = kTrue;
            const RenderDCinfo dc = col.GetRender(i, q);
            const std::vector<RGBA> px =
                vt_test::Pixels(size == RenderSize::Main ? dc.MainHDC : dc.NanoHDC);
            picture.Mix(px.data(), px.size() * sizeof(RGBA));
        }
        line << ' ' << picture.h;
    }
    col.Delete(i);
    return line.str();
}

TEST(PairFingerprints, EveryPairKeepsItsGridDotsAndPictures) {
    vt_test::FixedClock clock(40000);
    const std::string path = std::string(VT_TEST_DATA) + "/golden/pairs.txt";
    cOrbitalCol col;
    std::string all;
    for (int16_t orbital = 0; orbital < 40; ++orbital) {
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            all += PairLine(col, orbital, view) + '\n';
        }
    }
    if (std::getenv("VT_UPDATE_GOLDEN") != nullptr) {
        std::ofstream(path) << all;
        GTEST_SKIP() << "rewrote " << path;
    }
    std::ifstream in(path);
    std::string want, got;
    std::istringstream mine(all);
    while (std::getline(in, want)) {
        std::getline(mine, got);
        EXPECT_EQ(got, want);
    }
    EXPECT_FALSE(std::getline(mine, got)) << "pairs beyond the recorded ones";
}

}  // namespace
