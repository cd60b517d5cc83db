// Hybrids: each part is the function of its l that is symmetric about the hybrid's axis and
// positive along it (by the addition theorem its real-basis coefficients are Y_lm(axis)),
// signed so that its radial function's far tail, (-1)^(n-l-1), is positive too.
#include "electron/hybrids.h"

#include <array>
#include <cmath>
#include <string>

#include "electron/angular.h"
#include "support/error.h"

namespace veltara {

namespace {

struct Axis {
    double x, y, z;
};

/// One hybrid's recipe: its axis and the weight (squared coefficient) of s, p and d.
struct Recipe {
    Axis axis;
    std::array<double, 3> weight;
};

constexpr double kHalfRoot3 = 0.8660254037844386;  // sin 120 degrees
constexpr double kRoot3 = 1.7320508075688772;

Recipe RecipeOf(HybridKind kind, int32_t k) {
    constexpr Axis kPlane[3] = {{1, 0, 0}, {-0.5, kHalfRoot3, 0}, {-0.5, -kHalfRoot3, 0}};
    switch (kind) {
        case HybridKind::Sp:
            return {{0, 0, k == 0 ? 1.0 : -1.0}, {0.5, 0.5, 0}};
        case HybridKind::Sp2:
            return {kPlane[k], {1.0 / 3, 2.0 / 3, 0}};
        case HybridKind::Sp3: {
            constexpr Axis kCorner[4] = {{1, 1, 1}, {1, -1, -1}, {-1, 1, -1}, {-1, -1, 1}};
            const Axis a = kCorner[k];
            return {{a.x / kRoot3, a.y / kRoot3, a.z / kRoot3}, {0.25, 0.75, 0}};
        }
        case HybridKind::Sp3d:
            if (k < 2) return {{0, 0, k == 0 ? 1.0 : -1.0}, {0, 0.5, 0.5}};
            return {kPlane[k - 2], {1.0 / 3, 2.0 / 3, 0}};
        case HybridKind::Sp3d2: {
            constexpr Axis kAxes[6] = {{1, 0, 0},  {-1, 0, 0}, {0, 1, 0},
                                       {0, -1, 0}, {0, 0, 1},  {0, 0, -1}};
            return {kAxes[k], {1.0 / 6, 0.5, 1.0 / 3}};
        }
    }
    return {};
}

const char* NameOf(HybridKind kind) {
    constexpr const char* kNames[] = {"sp", "sp2", "sp3", "sp3d", "sp3d2"};
    return kNames[static_cast<int32_t>(kind)];
}

}  // namespace

int32_t HybridCount(HybridKind kind) {
    constexpr int32_t kCounts[] = {2, 3, 4, 5, 6};
    const auto i = static_cast<int32_t>(kind);
    if (i < 0 || i > 4)
        Raise(kErrInvalidCall, "the hybrid kind must be sp, sp2, sp3, sp3d or sp3d2");
    return kCounts[i];
}

Superposition Hybrid(HybridKind kind, int32_t k, int32_t n) {
    const int32_t count = HybridCount(kind);
    const std::string name = NameOf(kind);
    if (k < 0 || k >= count) {
        Raise(kErrInvalidCall, "the " + name + " hybrid index must be from 0 to " +
                                   std::to_string(count - 1) + " (got " + std::to_string(k) + ")");
    }
    const bool usesD = kind == HybridKind::Sp3d || kind == HybridKind::Sp3d2;
    const int32_t lowest = usesD ? 3 : 2;
    if (n == 0) n = lowest;
    if (n < lowest || n > kMaxStateN) {
        Raise(kErrInvalidCall, "the " + name + " hybrid's shell n must be from " +
                                   std::to_string(lowest) + " to " + std::to_string(kMaxStateN) +
                                   " (got " + std::to_string(n) + ")");
    }
    const Recipe recipe = RecipeOf(kind, k);
    const Axis& u = recipe.axis;
    std::vector<Term> terms;
    for (int32_t l = 0; l <= 2; ++l) {
        if (recipe.weight[l] == 0.0) continue;
        // The part along the axis: sum_m Y_lm(axis) |n l m>, normalised, then weighted.
        std::array<double, 5> coefficient{};
        double norm = 0.0;
        for (int32_t m = -l; m <= l; ++m) {
            const double y = AngularFunction(l, m, false)(u.x, u.y, u.z, 1.0).real();
            coefficient[m + l] = y;
            norm += y * y;
        }
        const double tailSign = (n - l - 1) % 2 == 0 ? 1.0 : -1.0;
        const double scale = tailSign * std::sqrt(recipe.weight[l] / norm);
        for (int32_t m = -l; m <= l; ++m) {
            if (coefficient[m + l] == 0.0) continue;
            terms.push_back(
                Term{coefficient[m + l] * scale, State{n, l, m, Basis::Real, 1, false}});
        }
    }
    return MakeSuperposition(terms);
}

}  // namespace veltara
