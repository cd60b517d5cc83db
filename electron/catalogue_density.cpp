// The catalogue's normalised densities over many points at once.
#include "electron/catalogue_density.h"

#include <array>
#include <memory>

#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
#include "electron/wide_rows.h"
#include "support/error.h"

namespace veltara {

cElectron& CatalogueElectron(int16_t orbital) {
    static const std::array<std::unique_ptr<cElectron>, kCatalogueSize> electrons = [] {
        std::array<std::unique_ptr<cElectron>, kCatalogueSize> all;
        for (int16_t i = 0; i < kCatalogueSize; ++i) all[i] = modOrbitals::CreateElectron(i);
        return all;
    }();
    return *electrons[static_cast<size_t>(orbital)];
}

void RealDensityRun(cElectron& electron, int16_t orbital, ViewMode view, const Coordinates& points,
                    size_t start, size_t n, double* out) {
    const WideTable* wide = WideKernels();
    if (wide != nullptr && points.xStride == 1 && points.yStride == 1 && points.zStride == 1) {
        // The kernel squares the coordinates itself; the points it leaves go one by one through
        // the electron's per-point form.
        const WideReal run = wide->real[static_cast<size_t>(orbital)][view == ViewMode::DRPDF];
        for (size_t done = 0; done < n; done += kWideRun) {
            const size_t m = n - done < kWideRun ? n - done : kWideRun;
            const size_t first = start + done;
            uint64_t redo[2];
            run(points.x + first, points.y + first, points.z + first, m, out + done, redo);
            ForEachRedo(redo, [&](size_t i) {
                COORDdoubleParams square;
                points.Squares(first + i, 1, &square);
                out[done + i] = view == ViewMode::DRPDF ? electron.GetRealDRPDF(square)
                                                        : electron.GetRealPDF(square);
            });
        }
        return;
    }
    COORDdoubleParams squares[kCoordinateRun];
    points.Squares(start, n, squares);
    electron.RealBatch(view, squares, out, n);
}

void RealDensityBatch(int16_t orbital, ViewMode view, const Coordinates& points, size_t count,
                      double* out) {
    if (!IsCatalogueIndex(orbital)) Raise(kErrObjectNotSet);
    cElectron& electron = CatalogueElectron(orbital);
    for (size_t start = 0; start < count; start += kCoordinateRun) {
        const size_t n = count - start < kCoordinateRun ? count - start : kCoordinateRun;
        RealDensityRun(electron, orbital, view, points, start, n, out + start);
    }
}

}  // namespace veltara
