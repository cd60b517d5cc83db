// The sign of each single orbital's wavefunction: a number computed from the signed coordinates
// whose sign is psi's, in any of the engine's number types.
#pragma once

#include <cstdint>

#include "electron/density_arithmetic.h"

namespace veltara {

/// A number whose sign is the sign of single orbital `orbital`'s wavefunction at (x, y, z): the
/// product of its odd coordinate factors and its polynomial. Each polynomial is computed from
/// the squares in the same operations as the catalogue's density, so it is zero exactly where
/// the density's factor is; a leading minus turns the catalogue's orientation into the usual
/// one. T is a double or a vector of doubles with the operators of density::Pair and a Sqrt
/// found beside it; every type performs the same IEEE operations in the same order, so the sign
/// is the same. Inlined with a constant orbital in the batch paths, where the switch and any
/// unused quantity fall away.
template <class T>
[[gnu::always_inline]] inline T SignFactor(int16_t orbital, T x, T y, T z) {
    using density::Sqrt;
    const T X = x * x, Y = y * y, Z = z * z;
    const T rho2 = Y + X, r2 = rho2 + Z;
    const auto r = [r2] { return Sqrt(r2); };
    switch (orbital) {
        case 0:  // 1S: positive everywhere; a square is never negative (x is never NaN here,
                 // the density of a NaN coordinate having raised first)
            return X;
        case 1:  // 2S: 2 - r()
            return -(r() - 2.0);
        case 2:
            return x;
        case 3:
            return y;
        case 4:
            return z;
        case 5:  // 3S: 6 - 4r + 4r²/9
            return (6.0 - 4.0 * r()) + r2 * 0.4444444444444444;
        case 6:  // 3P: 6 - r()
            return x * -(r() - 6.0);
        case 7:
            return y * -(r() - 6.0);
        case 8:
            return z * -(r() - 6.0);
        case 9:  // 3Dz²: 3z² - r²
            return -(rho2 - (Z + Z));
        case 10:
            return X - Y;
        case 11:
            return x * y;
        case 12:
            return x * z;
        case 13:
            return y * z;
        case 14:  // 4S: 192 - 144r + 24r² - r³
            return -((r2 + 144.0) * r() + (r2 + 8.0) * -24.0);
        case 15:  // 4P: r² - 20r + 80
            return x * ((r2 + 80.0) - r() * 20.0);
        case 16:
            return y * ((r2 + 80.0) - r() * 20.0);
        case 17:
            return z * ((r2 + 80.0) - r() * 20.0);
        case 18:  // 4D: (3z² - r²)(12 - r()), both factors turned
            return (rho2 - (Z + Z)) * (r() - 12.0);
        case 19:
            return (X - Y) * -(r() - 12.0);
        case 20:
            return x * y * -(r() - 12.0);
        case 21:
            return x * z * -(r() - 12.0);
        case 22:
            return y * z * -(r() - 12.0);
        case 23:  // 4Fz³: z(2z² - 3rho²) = z(5z² - 3r²)
            return z * -(rho2 * 3.0 - (Z + Z));
        case 24:  // 4Fxz²: x(4z² - rho²) = x(5z² - r²)
            return x * -(rho2 - Z * 4.0);
        case 25:
            return y * -(rho2 - Z * 4.0);
        case 26:
            return z * (X - Y);
        case 27:
            return x * y * z;
        case 28:
            return x * (X - Y * 3.0);
        default:  // 29, 4Fy(3x² - y²)
            return y * -(Y - X * 3.0);
    }
}

}  // namespace veltara
