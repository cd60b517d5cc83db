// The D orbitals of shells 3 and 4: quadratic angular factors, for n = 4 times (r - 12).
#pragma once

#include "electron/orbital_scheme.h"

namespace veltara {

/// Hydrogen 3d (z²): e^(-2r/3) (x² + y² - 2z²)².
class orb3Dz2 final : public SingleOrbital<orb3Dz2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 8.08590880922092e-6;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.rho2 - (t.Z + t.Z);
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, 0, false);
};

/// Hydrogen 3d (x² - y²): e^(-2r/3) (x² - y²)².
class orb3Dx2_y2 final : public SingleOrbital<orb3Dx2_y2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 2.42577264276628e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.X - t.Y;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, 2, false);
};

/// Hydrogen 3d (xy): e^(-2r/3) x² y².
class orb3Dxy final : public SingleOrbital<orb3Dxy> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.X * t.Y;
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, -2, false);
};

/// Hydrogen 3d (xz): e^(-2r/3) x² z².
class orb3Dxz final : public SingleOrbital<orb3Dxz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.X * t.Z;
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, 1, false);
};

/// Hydrogen 3d (yz): e^(-2r/3) y² z².
class orb3Dyz final : public SingleOrbital<orb3Dyz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 9.7030905710651e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.Y * t.Z;
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, -1, false);
};

/// Hydrogen 4d (z²): e^(-r/2) ((x² + y² - 2z²)(r - 12))².
class orb4Dz2 final : public SingleOrbital<orb4Dz2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 3.37293292346309e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.rho2 - (t.Z + t.Z)) * (t.r - 12.0);
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, 0, false);
};

/// Hydrogen 4d (x² - y²): e^(-r/2) ((x² - y²)(r - 12))².
class orb4Dx2_y2 final : public SingleOrbital<orb4Dx2_y2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.01187987703893e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.X - t.Y) * (t.r - 12.0);
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, 2, false);
};

/// Hydrogen 4d (xy): e^(-r/2) x² y² (r - 12)².
class orb4Dxy final : public SingleOrbital<orb4Dxy> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 4.0475195081557e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 12.0;
        return e * t.X * t.Y * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, -2, false);
};

/// Hydrogen 4d (xz): e^(-r/2) x² z² (r - 12)².
class orb4Dxz final : public SingleOrbital<orb4Dxz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 4.0475195081557e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 12.0;
        return e * t.X * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, 1, false);
};

/// Hydrogen 4d (yz): e^(-r/2) y² z² (r - 12)².
class orb4Dyz final : public SingleOrbital<orb4Dyz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 4.0475195081557e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 12.0;
        return e * t.Y * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, -1, false);
};

}  // namespace veltara
