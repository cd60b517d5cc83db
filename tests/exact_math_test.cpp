// The engine's own exp, log, sin and cos: within 1 ulp of mpmath's correctly rounded values
// (tests/data/exact_math_values.txt, made by scripts/exact_math_values.py), their edge values,
// every vector path bit for bit equal to the scalar form, and the choice of the path.
#include "support/exact_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "support/simd_dispatch.h"

namespace {

using namespace veltara;

constexpr double kInf = std::numeric_limits<double>::infinity();

/// Distance in units in the last place between two finite doubles of one sign (or zero).
double UlpsApart(double got, double want) {
    if (got == want) return 0;
    const double step = std::fabs(std::nextafter(want, got) - want);
    return std::fabs(got - want) / (step > 0 ? step : 4.9e-324);
}

TEST(ExactMath, WithinOneUlpOfTheCorrectlyRoundedValues) {
    std::ifstream in(std::string(VT_TEST_DATA) + "/exact_math_values.txt");
    std::string name, x, want;
    int rows = 0;
    while (in >> name >> x >> want) {
        const double a = std::strtod(x.c_str(), nullptr), w = std::strtod(want.c_str(), nullptr);
        const double got = name == "exp"   ? exact::Exp(a)
                           : name == "log" ? exact::Log(a)
                           : name == "sin" ? exact::Sin(a)
                                           : exact::Cos(a);
        EXPECT_LE(UlpsApart(got, w), 1.0) << name << '(' << x << ") = " << got << ", not " << want;
        ++rows;
    }
    EXPECT_EQ(rows, 1000);
}

TEST(ExactMath, EdgeValues) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        double (*fn)(double);
        double x, want;  // want NaN: the result must be NaN
    };
    const Case cases[] = {
        {exact::Exp, 0.0, 1.0},          {exact::Exp, -kInf, 0.0},  {exact::Exp, kInf, kInf},
        {exact::Exp, 710.0, kInf},       {exact::Exp, -746.0, 0.0}, {exact::Exp, nan, nan},
        {exact::Exp, -745.0, 0x1p-1074},  // e^-745 = 4.94e-324 rounds to the least subnormal
        {exact::Log, 1.0, 0.0},          {exact::Log, 0.0, -kInf},  {exact::Log, -1.0, nan},
        {exact::Log, kInf, kInf},        {exact::Log, nan, nan},    {exact::Sin, 0.0, 0.0},
        {exact::Cos, 0.0, 1.0},          {exact::Sin, kInf, nan},   {exact::Cos, nan, nan},
    };
    for (const Case& c : cases) {
        const double got = c.fn(c.x);
        if (std::isnan(c.want)) {
            EXPECT_TRUE(std::isnan(got)) << c.x;
        } else {
            EXPECT_EQ(got, c.want) << c.x;
        }
    }
}

TEST(ExactMath, EveryVectorPathGivesTheScalarDoubles) {
    // Random bit patterns (NaN, infinities, subnormals), the grid's exponents and the edges of
    // the common range, in runs whose lengths leave every kind of tail.
    std::mt19937_64 rng(20);
    std::vector<double> x;
    for (int i = 0; i < 200000; ++i) {
        double v;
        const uint64_t bits = rng();
        switch (i % 4) {
            case 0:
                std::memcpy(&v, &bits, sizeof v);
                break;
            case 1:
                v = -std::ldexp(static_cast<double>(bits >> 11), -53) * 90.0;
                break;
            case 2:
                v = std::ldexp(static_cast<double>(bits >> 11), -53) * 1500.0 - 750.0;
                break;
            default:
                v = (i & 8 ? 704.0 : -704.0) + std::ldexp(static_cast<double>(bits >> 11), -60);
        }
        x.push_back(v);
    }
    std::vector<double> scalar(x.size());
    for (size_t i = 0; i < x.size(); ++i) scalar[i] = exact::Exp(x[i]);
    for (SimdPath path : {SimdPath::Sse2, SimdPath::Avx2, SimdPath::Avx512, SimdPath::Simd128}) {
        if (!SimdPathAvailable(path)) continue;
        for (size_t length : {x.size(), size_t{13}, size_t{7}, size_t{1}}) {
            std::vector<double> out(length);
            exact::ExpArrayOn(path, x.data(), out.data(), length);
            EXPECT_EQ(std::memcmp(out.data(), scalar.data(), length * sizeof(double)), 0)
                << SimdPathName(path) << ", " << length << " arguments";
        }
    }
}

TEST(SimdDispatch, AskedPathOrTheWidestWithTheRefusalSaid) {
    const SimdPath widest = WidestSimdPath();
    EXPECT_TRUE(SimdPathAvailable(widest));
    struct Case {
        const char* request;
        SimdPath path;
        bool refused;
    };
    const Case cases[] = {{nullptr, widest, false},
                          {"", widest, false},
                          {"scalar", SimdPath::Scalar, false},
                          {"avx9", widest, true},
                          {"AVX2", widest, true}};
    for (const Case& c : cases) {
        const SimdChoice choice = ChooseSimd(c.request);
        EXPECT_EQ(choice.path, c.path) << (c.request ? c.request : "unset");
        EXPECT_EQ(choice.refused, c.refused) << (c.request ? c.request : "unset");
    }
    // Every named path is granted exactly when available, else refused for the widest.
    for (SimdPath p : {SimdPath::Sse2, SimdPath::Avx2, SimdPath::Avx512, SimdPath::Simd128}) {
        const SimdChoice choice = ChooseSimd(SimdPathName(p));
        EXPECT_EQ(choice.path, SimdPathAvailable(p) ? p : widest);
        EXPECT_EQ(choice.refused, !SimdPathAvailable(p));
    }
}

}  // namespace
