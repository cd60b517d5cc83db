// The density operations at their edges: exact nodes and values worked by hand, byte rounding
// without clamping, scale factors per object, and the errors of faulty points.
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "electron/modOrbitals.h"
#include "test_support.h"

namespace {

using namespace veltara;

TEST(cElectron, EdgeCasesAndErrors) {
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const COORDdoubleParams nucleus{0, 0, 0};
    auto make = [](int index) { return modOrbitals::CreateElectron(static_cast<int16_t>(index)); };
    auto scaled = [&](int index, double factor) {
        auto e = make(index);
        e->SetPDFScaleFactor(factor);
        return e;
    };
    // 1S is e^(-2r): scaled so that r = 1 gives 255, r = 0.999 gives
    // 255 e^0.002 = 255.51, which rounds to 256.
    const double toByte255AtR1 = 255 / std::exp(-2.0);
    auto first = make(0), second = make(0);
    first->SetPDFScaleFactor(200);
    vt_test::CheckEdges({
        VT_GIVES(0, make(0)->GetNonScaledDRPDF({0, 0, 4})),  // rho x r is 0 on the z axis
        VT_GIVES(std::exp(-2.0), make(30)->GetNonScaledDRPDF({0, 0, 1})),  // r² is not
        // Nodes are exact zeros.
        VT_GIVES(0, make(1)->GetNonScaledPDF({1, 1, 2})),     // 2S node at r = 2
        VT_GIVES(0, make(18)->GetNonScaledPDF({3, 5, 4})),    // 4Dz² where rho² = 2Z
        VT_GIVES(0, make(23)->GetNonScaledPDF({1, 2, 4.5})),  // 4Fz³ where 3 rho² = 2Z
        VT_GIVES(0, make(28)->GetNonScaledPDF({3, 1, 5})),    // 4Fx(x²-3y²) where X = 3Y
        VT_GIVES(0, make(5)->GetPDF({1, 2, 3})),              // scale factors are 0 until set
        VT_GIVES(200, first->GetPDF(nucleus)),
        VT_GIVES(0, second->GetPDF(nucleus)),             // each object has its own factors
        VT_GIVES(2, scaled(0, 2.5)->GetPDF(nucleus)),     // ties go to even
        VT_RAISES(6, scaled(0, 255.5)->GetPDF(nucleus)),  // 256: no clamping
        VT_RAISES(6, scaled(0, -0.51)->GetPDF(nucleus)),
        VT_GIVES(255, scaled(0, toByte255AtR1)->GetPDF({1, 0, 0})),
        VT_RAISES(6, scaled(0, toByte255AtR1)->GetPDF({0.999 * 0.999, 0, 0})),
        VT_RAISES(6, scaled(30, inf)->GetPDF(nucleus)),  // factors are stored unchecked
        VT_RAISES(5, scaled(30, nan)->GetPDF(nucleus)),
        VT_GIVES(std::exp(-2.0), make(0)->GetNonScaledPDF({-1, 2, 0})),  // r² = 1 is enough
        VT_RAISES(5, make(0)->GetNonScaledDRPDF({-2, 1, 5})),  // but rho² < 0 under the root
        VT_RAISES(5, make(12)->GetDRPDF({-2, 1, 0})),
        VT_RAISES(5, make(17)->GetNonScaledPDF({nan, 1, 1})),
        VT_RAISES(6, make(27)->GetNonScaledPDF({1e308, 1e308, 0})),  // r² overflows, e^-r = 0
        VT_RAISES(6, make(14)->GetNonScaledPDF({1e300, 0, 0})),      // the cubic overflows first
        VT_GIVES(0, scaled(21, 255)->GetPDF({1e6, 1e6, 1e6})),       // underflow is no error
    });
}

TEST(cElectron, BatchRaisesAtAFaultyPointAfterWritingThePointsBeforeIt) {
    std::vector<COORDdoubleParams> points(5, COORDdoubleParams{0.5, 0.25, 1});
    points[3] = {-2, 1, 0};  // r² < 0
    auto e = modOrbitals::CreateElectron(7);
    std::vector<double> values(5, -1);
    EXPECT_VT_ERROR(e->NonScaledBatch(ViewMode::DRPDF, points.data(), values.data(), 5), 5);
    const double v = e->GetNonScaledDRPDF(points[0]);
    EXPECT_EQ(values, (std::vector<double>{v, v, v, -1, -1}));
}

}  // namespace
