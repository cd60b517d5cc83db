// The catalogue's normalised densities over many points at once.
#include "electron/catalogue_density.h"

#include <array>
#include <memory>

#include "electron/catalogue.h"
#include "electron/modOrbitals.h"
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

void RealDensityBatch(int16_t orbital, ViewMode view, const Coordinates& points, size_t count,
                      double* out) {
    if (!IsCatalogueIndex(orbital)) Raise(kErrObjectNotSet);
    cElectron& electron = CatalogueElectron(orbital);
    COORDdoubleParams squares[kCoordinateRun];
    for (size_t start = 0; start < count; start += kCoordinateRun) {
        const size_t n = count - start < kCoordinateRun ? count - start : kCoordinateRun;
        points.Squares(start, n, squares);
        electron.RealBatch(view, squares, out + start, n);
    }
}

}  // namespace veltara
