// Hybrids: their parts' weights, orthonormality within a kind, sign along their axes, and
// refusals.
#include "electron/hybrids.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <tuple>

#include "electron/state_wave.h"
#include "support/error.h"

using namespace veltara;

namespace {

struct Kind {
    HybridKind kind;
    int32_t count, defaultN;
};
constexpr Kind kKinds[] = {{HybridKind::Sp, 2, 2},
                           {HybridKind::Sp2, 3, 2},
                           {HybridKind::Sp3, 4, 2},
                           {HybridKind::Sp3d, 5, 3},
                           {HybridKind::Sp3d2, 6, 3}};

/// <a|b> from the coefficients: the real states are orthonormal.
double Overlap(const Superposition& a, const Superposition& b) {
    std::map<std::tuple<int32_t, int32_t, int32_t>, double> left;
    for (const Term& t : a.Terms()) left[{t.state.n, t.state.l, t.state.m}] = t.c.real();
    double sum = 0;
    for (const Term& t : b.Terms()) {
        auto it = left.find({t.state.n, t.state.l, t.state.m});
        if (it != left.end()) sum += it->second * t.c.real();
    }
    return sum;
}

/// The weight of each l, s, p, d.
std::array<double, 3> Weights(const Superposition& h) {
    std::array<double, 3> w{};
    for (const Term& t : h.Terms()) w[t.state.l] += std::norm(t.c);
    return w;
}

}  // namespace

TEST(Hybrid, EachKindIsAnOrthonormalSetOfRealStatesOfItsShell) {
    for (const Kind& k : kKinds) {
        EXPECT_EQ(HybridCount(k.kind), k.count);
        for (int32_t n : {0, 4}) {
            for (int32_t a = 0; a < k.count; ++a) {
                const Superposition ha = Hybrid(k.kind, a, n);
                EXPECT_TRUE(IsRealValued(ha));
                for (const Term& t : ha.Terms()) EXPECT_EQ(t.state.n, n == 0 ? k.defaultN : n);
                for (int32_t b = 0; b < k.count; ++b) {
                    EXPECT_NEAR(Overlap(ha, Hybrid(k.kind, b, n)), a == b ? 1.0 : 0.0, 1e-15)
                        << static_cast<int>(k.kind) << " " << a << " " << b;
                }
            }
        }
    }
}

// Weights (s, p, d) and axes as chemistry draws them; psi is positive far out along the
// axis, and for s and p alone negative far out on the opposite side (the small lobe).
TEST(Hybrid, WeightsAndAxesAreTheTextbookOnes) {
    const double r3 = 1 / std::sqrt(3.0), c = std::sqrt(3.0) / 2;
    struct Row {
        HybridKind kind;
        int32_t k;
        std::array<double, 3> weights, axis;
    };
    const Row rows[] = {
        {HybridKind::Sp, 0, {0.5, 0.5, 0}, {0, 0, 1}},
        {HybridKind::Sp, 1, {0.5, 0.5, 0}, {0, 0, -1}},
        {HybridKind::Sp2, 0, {1. / 3, 2. / 3, 0}, {1, 0, 0}},
        {HybridKind::Sp2, 1, {1. / 3, 2. / 3, 0}, {-0.5, c, 0}},
        {HybridKind::Sp2, 2, {1. / 3, 2. / 3, 0}, {-0.5, -c, 0}},
        {HybridKind::Sp3, 0, {0.25, 0.75, 0}, {r3, r3, r3}},
        {HybridKind::Sp3, 1, {0.25, 0.75, 0}, {r3, -r3, -r3}},
        {HybridKind::Sp3, 2, {0.25, 0.75, 0}, {-r3, r3, -r3}},
        {HybridKind::Sp3, 3, {0.25, 0.75, 0}, {-r3, -r3, r3}},
        {HybridKind::Sp3d, 0, {0, 0.5, 0.5}, {0, 0, 1}},
        {HybridKind::Sp3d, 1, {0, 0.5, 0.5}, {0, 0, -1}},
        {HybridKind::Sp3d, 3, {1. / 3, 2. / 3, 0}, {-0.5, c, 0}},
        {HybridKind::Sp3d2, 0, {1. / 6, 0.5, 1. / 3}, {1, 0, 0}},
        {HybridKind::Sp3d2, 3, {1. / 6, 0.5, 1. / 3}, {0, -1, 0}},
        {HybridKind::Sp3d2, 5, {1. / 6, 0.5, 1. / 3}, {0, 0, -1}},
    };
    for (const Row& row : rows) {
        for (int32_t n : {0, 5}) {
            SCOPED_TRACE(testing::Message()
                         << static_cast<int>(row.kind) << ":" << row.k << "@" << n);
            const Superposition h = Hybrid(row.kind, row.k, n);
            const auto w = Weights(h);
            for (int l = 0; l < 3; ++l) EXPECT_NEAR(w[l], row.weights[l], 1e-15);
            const double far = 30.0 * (n == 0 ? 3 : n);
            const auto& a = row.axis;
            EXPECT_GT(Psi(h, far * a[0], far * a[1], far * a[2], 0).real(), 0);
            if (row.weights[2] == 0) {
                EXPECT_LT(Psi(h, -far * a[0], -far * a[1], -far * a[2], 0).real(), 0);
            }
        }
    }
}

TEST(Hybrid, RefusesAnIndexOrShellOutOfRangeWithASentence) {
    const std::tuple<HybridKind, int32_t, int32_t> bad[] = {
        {HybridKind::Sp, 2, 0},  {HybridKind::Sp3, -1, 0}, {HybridKind::Sp3d2, 6, 0},
        {HybridKind::Sp2, 0, 1}, {HybridKind::Sp3d, 0, 2}, {HybridKind::Sp3, 0, 31}};
    for (const auto& [kind, k, n] : bad) {
        try {
            Hybrid(kind, k, n);
            ADD_FAILURE() << k << "@" << n;
        } catch (const Error& e) {
            EXPECT_EQ(e.number(), kErrInvalidCall);
            EXPECT_NE(e.detail().find("hybrid"), std::string::npos) << e.detail();
        }
    }
}
