// The seven 4F orbitals: cubic angular factors, e^(-r/2).
#pragma once

#include "electron/orbital_scheme.h"

namespace veltara {

/// Hydrogen 4f (z³): e^(-r/2) z² (3(x² + y²) - 2z²)².
class orb4Fz3 final : public SingleOrbital<orb4Fz3> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 6.74586584692617e-9;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.rho2 * 3.0 - (t.Z + t.Z);
        return e * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, 0, false);
};

/// Hydrogen 4f (xz²): e^(-r/2) x² (x² + y² - 4z²)².
class orb4Fxz2 final : public SingleOrbital<orb4Fxz2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.01187987703893e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.rho2 - t.Z * 4.0;
        return e * t.X * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, 1, false);
};

/// Hydrogen 4f (yz²): e^(-r/2) y² (x² + y² - 4z²)².
class orb4Fyz2 final : public SingleOrbital<orb4Fyz2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.01187987703893e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.rho2 - t.Z * 4.0;
        return e * t.Y * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, -1, false);
};

/// Hydrogen 4f (z(x² - y²)): e^(-r/2) z² (x² - y²)².
class orb4Fx2z_y2z final : public SingleOrbital<orb4Fx2z_y2z> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.01187987703893e-7;
    // Intended: the real radial distribution is scaled by the 4Fz³ constant, not by kN.
    // Hosts have always seen these values; the radial-distribution view is not normalised.
    static constexpr double kNDR = 6.74586584692617e-9;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.X - t.Y;
        return e * t.Z * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, 2, false);
};

/// Hydrogen 4f (xyz): e^(-r/2) x² y² z².
class orb4Fxyz final : public SingleOrbital<orb4Fxyz> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 4.0475195081557e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.X * t.Y * t.Z;
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, -2, false);
};

/// Hydrogen 4f (x(x² - 3y²)): e^(-r/2) x² (x² - 3y²)².
class orb4Fx3_3xy2 final : public SingleOrbital<orb4Fx3_3xy2> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.68646646173154e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.X - t.Y * 3.0;
        return e * t.X * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, 3, false);
};

/// Hydrogen 4f (y(3x² - y²)): e^(-r/2) y² (y² - 3x²)².
class orb4F3x2y_y3 final : public SingleOrbital<orb4F3x2y_y3> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.68646646173154e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.Y - t.X * 3.0;
        return e * t.Y * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, -3, false);
};

}  // namespace veltara
