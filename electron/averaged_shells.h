// The averaged subshells 1S to 4F: the mean density of all 2l + 1 orbitals of a subshell,
// spherically symmetric, the angular factors replaced by powers of r².
#pragma once

#include "electron/orbital_scheme.h"

namespace veltara {

/// Averaged 1s: the 1S density; its radial distribution weighs by r².
class orbAv1S final : public AveragedShell<orbAv1S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -2.0;
    static constexpr double kN = 0.318309886183791;
    template <class T>
    static T Density(const T& e, const Terms<T>&) {
        return e;
    }
    static constexpr int16_t kRow = CatalogueRowOf(1, 0, 0, true);
};

/// Averaged 2s: e^(-r) (r - 2)².
class orbAv2S final : public AveragedShell<orbAv2S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00994718394324346;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 2.0;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 0, 0, true);
};

/// Averaged 2p: e^(-r) r², N = N(2Pz) / 3.
class orbAv2P final : public AveragedShell<orbAv2P> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -1.0;
    static constexpr double kN = 0.00331572798108115;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(2, 1, 0, true);
};

/// Averaged 3s: e^(-2r/3) (6 - 4r + 4r²/9)².
class orbAv3S final : public AveragedShell<orbAv3S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 0.000327479306773447;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (6.0 - 4.0 * t.r) + t.r2 * 0.4444444444444444;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 0, 0, true);
};

/// Averaged 3p: e^(-2r/3) (r - 6)² r², N = N(3Pz) / 3.
class orbAv3P final : public AveragedShell<orbAv3P> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 3.23436352368837e-5;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 6.0;
        return e * (u * u) * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 1, 0, true);
};

/// Averaged 3d: e^(-2r/3) r⁴, N = N(3Dxy) / 15.
class orbAv3D final : public AveragedShell<orbAv3D> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.6666666666666666;
    static constexpr double kN = 6.46872704737673e-6;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.r2 * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(3, 2, 0, true);
};

/// Averaged 4s: e^(-r/2) (r³ - 24r² + 144r - 192)².
class orbAv4S final : public AveragedShell<orbAv4S> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 1.34917316938523e-7;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 144.0) * t.r + (t.r2 + 8.0) * -24.0;
        return e * (u * u);
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 0, 0, true);
};

/// Averaged 4p: e^(-r/2) (r² - 20r + 80)² r², N = N(4Pz) / 3.
class orbAv4P final : public AveragedShell<orbAv4P> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 8.09503901631141e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = (t.r2 + 80.0) - t.r * 20.0;
        return e * (u * u) * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 1, 0, true);
};

/// Averaged 4d: e^(-r/2) (r - 12)² r⁴, N = N(4Dxy) / 15.
class orbAv4D final : public AveragedShell<orbAv4D> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 2.69834633877047e-8;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        const T u = t.r - 12.0;
        return e * (u * u) * t.r2 * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 2, 0, true);
};

/// Averaged 4f: e^(-r/2) r⁶, N = N(4Fxyz) / 105.
class orbAv4F final : public AveragedShell<orbAv4F> {
    friend OrbitalScheme;
    static constexpr double kMinusK = -0.5;
    static constexpr double kN = 3.85478048395781e-9;
    template <class T>
    static T Density(const T& e, const Terms<T>& t) {
        return e * t.r2 * t.r2 * t.r2;
    }
    static constexpr int16_t kRow = CatalogueRowOf(4, 3, 0, true);
};

}  // namespace veltara
