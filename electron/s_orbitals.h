// The S orbitals 1S to 4S: spherically symmetric densities, the square of a radial polynomial.
#pragma once

#include "electron/orbital_scheme.h"

namespace veltara {

/// Hydrogen 1s: e^(-2r), N = 1/pi.
class orb1S final : public SingleOrbital<orb1S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -2.0;
    static constexpr double kN = 0.318309886183791;
    template <class T>
    static T Density(const T& e, const Terms<T>&) {
        return e;
    }
    static constexpr int16_t kRow = CatalogueRowOf(1, 0, 0, false);
};

/// Hydrogen 2s: e^(-r) (r - 2)².
class orb2S final : public SingleOrbital<orb2S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00994718394324346;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 2.0;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 0, 0, false);
};

/// Hydrogen 3s: e^(-2r/3) (6 - 4r + 4r²/9)².
class orb3S final : public SingleOrbital<orb3S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 0.000327479306773447;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (6.0 - 4.0 * t.r) + t.r2 * 0.4444444444444444;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 0, 0, false);
};

/// Hydrogen 4s: e^(-r/2) (r³ - 24r² + 144r - 192)², the cubic in grouped form.
class orb4S final : public SingleOrbital<orb4S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.34917316938523e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 144.0) * t.r + (t.r2 + 8.0) * -24.0;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 0, 0, false);
};

}  // namespace veltara
