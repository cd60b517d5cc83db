// Golden pictures: real orbitals in both views, every mode, both sizes, a few angles and flags,
// compared by a hash of their pixels against tests/data/golden/hashes.txt.
//
// Set VT_UPDATE_GOLDEN=1 to rewrite the hashes and the PNGs beside them; review with git diff
// and by looking at the PNGs.
#include <gtest/gtest.h>
#include <png.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "electron/modOrbitals.h"
#include "render/orbital_renderer.h"
#include "support/cMemoryDCEx.h"
#include "test_support.h"

namespace {

using namespace veltara;

const std::string kDir = std::string(VT_TEST_DATA) + "/golden";

/// Writes the visible picture of a surface as an 8-bit RGB PNG. Returns false on failure.
bool WritePng(const std::string& path, const cMemoryDCEx& s) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!png || !info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        std::fclose(f);
        return false;
    }
    png_init_io(png, f);
    png_set_IHDR(png, info, static_cast<png_uint_32>(s.Width()),
                 static_cast<png_uint_32>(s.Height()), 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    std::vector<png_byte> line(static_cast<size_t>(s.Width()) * 3);
    for (int32_t row = 0; row < s.Height(); ++row) {
        const std::vector<RGBA> px = s.GetBits(row);
        for (size_t c = 0; c < px.size(); ++c) {
            line[3 * c] = px[c].R;
            line[3 * c + 1] = px[c].G;
            line[3 * c + 2] = px[c].B;
        }
        png_write_row(png, line.data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(f);
    return true;
}

/// FNV-1a over the visible rows (B, G, R, A of every pixel, top row first) and the size.
std::string PixelHash(const cMemoryDCEx& s) {
    uint64_t h = 1469598103934665603ull;
    auto mix = [&h](uint8_t b) {
        h ^= b;
        h *= 1099511628211ull;
    };
    for (int32_t v : {s.Width(), s.Height()}) {
        for (int k = 0; k < 4; ++k) mix(static_cast<uint8_t>(v >> (8 * k)));
    }
    for (int32_t row = 0; row < s.Height(); ++row) {
        for (const RGBA& p : s.GetBits(row)) {
            mix(p.B);
            mix(p.G);
            mix(p.R);
            mix(p.A);
        }
    }
    char text[17];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
    return text;
}

std::map<std::string, std::string> ReadHashes() {
    std::map<std::string, std::string> out;
    std::ifstream in(kDir + "/hashes.txt");
    std::string name, hash;
    while (in >> name >> hash) out[name] = hash;
    return out;
}

struct Shot {
    const char* name;
    RenderRequest request;
};

RenderRequest Q(RenderMode mode, RenderSize size, double theta, double phi) {
    RenderRequest q;
    q.Mode = mode;
    q.Size = size;
    q.Theta = theta;
    q.Phi = phi;
    q.CameraPos = -450;
    q.ProjectionPlane = 0;
    q.StereoFactor = 30;
    q.TransectDir = TransectDirection::Alongy;
    q.VolQuality = 10;
    return q;
}

RenderRequest With(RenderRequest q, void (*edit)(RenderRequest&)) {
    edit(q);
    return q;
}

/// The pictures of one orbital, rendered in this order on one renderer (the order matters:
/// transect colours follow the companion request, previews adapt).
struct Series {
    const char* orbital;
    int16_t index;
    ViewMode view;
    std::vector<Shot> shots;
};

std::vector<Series> AllSeries() {
    using M = RenderMode;
    using S = RenderSize;
    const auto levels = [](RenderRequest& q) {
        q.ShowProbLevelOnDots = kTrue;
        q.ShowProbLevelOnTrans = kTrue;
    };
    const auto transector = [](RenderRequest& q) {
        q.Transector = kTrue;
        q.TransectNo = 30;
    };
    const auto finalPicture = [](RenderRequest& q) { q.VolFinal = kTrue; };
    const auto finalWithTransector = [](RenderRequest& q) {
        q.VolFinal = kTrue;
        q.Transector = kTrue;
        q.TransectDir = TransectDirection::Alongz;
        q.TransectNo = -20;
    };
    const auto alongX = [](RenderRequest& q) {
        q.TransectDir = TransectDirection::AlongX;
        q.TransectNo = 12;
    };
    const auto stereo35 = [](RenderRequest& q) { q.StereoFactor = 35; };
    const auto alongZ = [](RenderRequest& q) {
        q.TransectDir = TransectDirection::Alongz;
        q.TransectNo = 9;
    };
    return {
        {"3dz2_pdf",
         9,
         ViewMode::PDF,
         {
             {"ortho_main", Q(M::Orthographic, S::Main, 0.0, 0.0)},
             {"ortho_main_levels", With(Q(M::Orthographic, S::Main, 0.5, 0.3), levels)},
             {"ortho_nano", Q(M::Orthographic, S::Nano, 0.5, 0.3)},
             {"persp_main_transector", With(Q(M::Perspective, S::Main, 1.0, 0.4), transector)},
             {"persp_nano", Q(M::Perspective, S::Nano, 1.0, 0.4)},
             {"anaglyph_main", With(Q(M::Anaglyph, S::Main, 0.3, 0.0), transector)},
             {"anaglyph_nano", Q(M::Anaglyph, S::Nano, 0.3, 0.0)},
             {"volume_main_final", With(Q(M::Volumetric, S::Main, 0.0, 0.0), finalPicture)},
             {"volume_main_final_transector",
              With(Q(M::Volumetric, S::Main, 0.8, 0.3), finalWithTransector)},
             {"volume_nano_final", With(Q(M::Volumetric, S::Nano, 0.8, 0.3), finalPicture)},
             {"volume_main_preview", Q(M::Volumetric, S::Main, 0.8, 0.3)},
             {"transect_main", Q(M::Transect, S::Main, 0.0, 0.0)},
             {"ortho_main_levels_again", With(Q(M::Orthographic, S::Main, 0.5, 0.3), levels)},
             {"transect_nano_levels", With(Q(M::Transect, S::Nano, 0.0, 0.0), levels)},
         }},
        {"2pz_drpdf",
         4,
         ViewMode::DRPDF,
         {
             {"ortho_main", Q(M::Orthographic, S::Main, 0.2, 0.9)},
             {"volume_main_final", With(Q(M::Volumetric, S::Main, 0.2, 0.9), finalPicture)},
             {"volume_nano_preview", Q(M::Volumetric, S::Nano, 0.2, 0.9)},
             {"transect_main_alongx", With(Q(M::Transect, S::Main, 0.0, 0.0), alongX)},
             {"anaglyph_nano", Q(M::Anaglyph, S::Nano, 0.2, 0.9)},
         }},
        {"4fxyz_pdf",
         27,
         ViewMode::PDF,
         {
             {"ortho_nano_levels", With(Q(M::Orthographic, S::Nano, 0.6, 0.6), levels)},
             {"volume_nano_final", With(Q(M::Volumetric, S::Nano, 0.6, 0.6), finalPicture)},
             {"persp_main", Q(M::Perspective, S::Main, 0.6, 0.6)},
         }},
        {"av3d_pdf",
         35,
         ViewMode::PDF,
         {
             {"volume_main_final", With(Q(M::Volumetric, S::Main, 0.0, 0.0), finalPicture)},
             {"transect_nano", Q(M::Transect, S::Nano, 0.0, 0.0)},
         }},
        // One series for each symmetry class and view not yet shown above.
        {"3dx2y2_pdf",  // F8
         10,
         ViewMode::PDF,
         {
             {"ortho_main_levels", With(Q(M::Orthographic, S::Main, 0.4, 0.7), levels)},
             {"transect_nano_levels", With(With(Q(M::Transect, S::Nano, 0, 0), levels), alongZ)},
             {"persp_nano", Q(M::Perspective, S::Nano, 0.4, 0.7)},
             {"anaglyph_main_transector",  // eyes 12.86 apart: 13 for the dots, 12 for the outline
              With(With(With(Q(M::Anaglyph, S::Main, 0.9, 0.2), transector), alongX), stereo35)},
             {"volume_nano_final", With(Q(M::Volumetric, S::Nano, 0.4, 0.7), finalPicture)},
             {"unknown_mode_main_transector",
              With(Q(static_cast<M>(7), S::Main, 0.4, 0.7), transector)},
         }},
        {"3dxz_drpdf",  // F8 in the radial view
         12,
         ViewMode::DRPDF,
         {
             {"ortho_nano", Q(M::Orthographic, S::Nano, 1.1, 0.5)},
             {"persp_main_transector", With(Q(M::Perspective, S::Main, 1.1, 0.5), transector)},
             {"volume_main_preview", Q(M::Volumetric, S::Main, 1.1, 0.5)},
             {"transect_nano_alongx", With(Q(M::Transect, S::Nano, 0, 0), alongX)},
         }},
        {"3px_pdf",  // F16yz
         6,
         ViewMode::PDF,
         {
             {"ortho_main", Q(M::Orthographic, S::Main, 0.3, 1.2)},
             {"anaglyph_nano", Q(M::Anaglyph, S::Nano, 0.3, 1.2)},
             {"volume_main_final", With(Q(M::Volumetric, S::Main, 0.3, 1.2), finalPicture)},
             {"transect_main_alongx", With(Q(M::Transect, S::Main, 0, 0), alongX)},
             {"transect_nano", Q(M::Transect, S::Nano, 0, 0)},
         }},
        {"4dxz_pdf",  // F16xz
         21,
         ViewMode::PDF,
         {
             {"ortho_main_levels", With(Q(M::Orthographic, S::Main, 0.6, 0.1), levels)},
             {"persp_nano", Q(M::Perspective, S::Nano, 0.6, 0.1)},
             {"volume_nano_preview", Q(M::Volumetric, S::Nano, 0.6, 0.1)},
             {"transect_main_alongz", With(Q(M::Transect, S::Main, 0, 0), alongZ)},
             {"transect_nano_alongx", With(Q(M::Transect, S::Nano, 0, 0), alongX)},
         }},
        {"av2p_drpdf",  // F32 in the radial view
         32,
         ViewMode::DRPDF,
         {
             {"ortho_main", Q(M::Orthographic, S::Main, 0.8, 0.8)},
             {"anaglyph_main", Q(M::Anaglyph, S::Main, 0.8, 0.8)},
             {"volume_nano_final", With(Q(M::Volumetric, S::Nano, 0.8, 0.8), finalPicture)},
             {"transect_nano", Q(M::Transect, S::Nano, 0, 0)},
         }},
    };
}

TEST(GoldenImages, PicturesMatchTheCheckedInHashes) {
    vt_test::FixedClock clock(100000);
    const bool update = std::getenv("VT_UPDATE_GOLDEN") != nullptr;
    const std::map<std::string, std::string> golden = ReadHashes();
    std::ostringstream written;
    int compared = 0;

    for (const Series& series : AllSeries()) {
        std::unique_ptr<OrbitalRenderer> r;
        if (series.view == ViewMode::PDF) {
            r = std::make_unique<cOrbitalPDF>();
        } else {
            r = std::make_unique<cOrbitalDRPDF>();
        }
        const OrbInfo info = modOrbitals::CreateElectron(series.index)->GetInfo();
        OrbitalSetup setup;
        setup.OrbitalIndex = series.index;
        setup.OrbitalViewMode = series.view;
        const bool pdf = series.view == ViewMode::PDF;
        setup.AtomRadius = pdf ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
        setup.DotThreshold =
            static_cast<uint8_t>(pdf ? info.DefaultPDFDotThreshold : info.DefaultDRPDFDotThreshold);
        setup.DotTarget = 20000;
        r->Setup(setup);

        for (const Shot& shot : series.shots) {
            const std::string name = std::string(series.orbital) + "_" + shot.name;
            const RenderDCinfo dc = r->GetRender(shot.request);
            const bool main = shot.request.Size == RenderSize::Main;
            const cMemoryDCEx* s = SurfaceFromHandle(main ? dc.MainHDC : dc.NanoHDC);
            ASSERT_NE(s, nullptr) << name;
            const std::string hash = PixelHash(*s);
            written << name << " " << hash << "\n";
            if (update) {
                EXPECT_TRUE(WritePng(kDir + "/" + name + ".png", *s)) << name;
                continue;
            }
            const auto it = golden.find(name);
            ASSERT_NE(it, golden.end()) << "no golden hash for " << name;
            if (it->second != hash) {
                // Leave the new picture beside the build for a look.
                WritePng(name + ".actual.png", *s);
                ADD_FAILURE() << name << ": pixels changed (hash " << hash << ", golden "
                              << it->second << "); wrote " << name << ".actual.png";
            }
            ++compared;
        }
    }
    if (update) {
        std::ofstream(kDir + "/hashes.txt") << written.str();
        GTEST_SKIP() << "golden hashes and PNGs rewritten in " << kDir;
    }
    EXPECT_EQ(compared, static_cast<int>(golden.size()));
}

}  // namespace
