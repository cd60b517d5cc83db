// The P orbitals of shells 2 to 4: the square of one coordinate times a radial polynomial.
#pragma once

#include "electron/orbital_scheme.h"

namespace veltara {

/// Hydrogen 2p (x): e^(-r) x².
class orb2Px final : public SingleOrbital<orb2Px> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00994718394324346;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.X;
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 1, 1, false);
};

/// Hydrogen 2p (y): e^(-r) y².
class orb2Py final : public SingleOrbital<orb2Py> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00994718394324346;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.Y;
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 1, -1, false);
};

/// Hydrogen 2p (z): e^(-r) z².
class orb2Pz final : public SingleOrbital<orb2Pz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00994718394324346;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.Z;
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 1, 0, false);
};

/// Hydrogen 3p (x): e^(-2r/3) x² (r - 6)².
class orb3Px final : public SingleOrbital<orb3Px> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 6.0;
        return e * t.X * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 1, 1, false);
};

/// Hydrogen 3p (y): e^(-2r/3) y² (r - 6)².
class orb3Py final : public SingleOrbital<orb3Py> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 6.0;
        return e * t.Y * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 1, -1, false);
};

/// Hydrogen 3p (z): e^(-2r/3) z² (r - 6)².
class orb3Pz final : public SingleOrbital<orb3Pz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 6.0;
        return e * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 1, 0, false);
};

/// Hydrogen 4p (x): e^(-r/2) x² (r² - 20r + 80)².
class orb4Px final : public SingleOrbital<orb4Px> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 2.42851170489342e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 80.0) - t.r * 20.0;
        return e * t.X * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 1, 1, false);
};

/// Hydrogen 4p (y): e^(-r/2) y² (r² - 20r + 80)².
class orb4Py final : public SingleOrbital<orb4Py> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 2.42851170489342e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 80.0) - t.r * 20.0;
        return e * t.Y * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 1, -1, false);
};

/// Hydrogen 4p (z): e^(-r/2) z² (r² - 20r + 80)².
class orb4Pz final : public SingleOrbital<orb4Pz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 2.42851170489342e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 80.0) - t.r * 20.0;
        return e * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 1, 0, false);
};

}  // namespace veltara
