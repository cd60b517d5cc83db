// The exponential's table and constants, and its one sequence of operations written over a lane
// type, so that the scalar form and every vector form perform the same IEEE operations in the
// same order and round alike.
//
// exp(x) = 2^(k/128) exp(r), k the nearest whole number to x 128 / ln 2 and r = x - k ln 2 / 128
// (|r| <= ln 2 / 256): 2^(k/128) is 2^floor(k/128) times a table entry (its power of two put into
// the exponent bits), exp(r) - 1 a Taylor polynomial of degree 5 (the next term is below
// 0.003 ulp). Only +, -, x, bit moves and the table: no fused multiply-add, no division.
#pragma once

#include <cstdint>

namespace veltara::exact::table {

extern const uint64_t kScaleBits[128];
extern const double kTail[128];
extern const uint32_t kTwoOverPiBits[38];

inline constexpr double kInvLn2N = 0x1.71547652b82fep+7;  // 128 / ln 2
// ln 2 / 128 in two parts; the first has 34 significant bits, so k x kLn2HiN is exact for
// |k| < 2^19, far beyond the 2^17.1 that |x| <= 746 reaches.
inline constexpr double kLn2HiN = 0x1.62e42fef80000p-8;
inline constexpr double kLn2LoN = 0x1.1cf79abc9e3b4p-43;
inline constexpr double kShift = 0x1.8p52;  // adding it rounds to a whole number in the low bits
inline constexpr double kC2 = 0.5;
inline constexpr double kC3 = 0x1.5555555555555p-3;  // 1/6 rounded
inline constexpr double kC4 = 0x1.5555555555555p-5;  // 1/24 rounded
inline constexpr double kC5 = 0x1.1111111111111p-7;  // 1/120 rounded
/// The widest |x| the common sequence takes: 2^(k/128) then stays a normal double.
inline constexpr double kMainLimit = 704.0;

/// The common sequence for |x| <= kMainLimit, over a lane type V with static functions
/// Set(double), Add, Sub, Mul, Bits (double lanes to int64 lanes), FromBits, ShiftLeft45,
/// AddBits, LowIndex (k & 127 as lanes) and Gather(table, index) for both tables.
template <class V>
inline typename V::D ExpMain(typename V::D x) {
    using D = typename V::D;
    const D z = V::Mul(x, V::Set(kInvLn2N));
    D kd = V::Add(z, V::Set(kShift));
    const typename V::I ki = V::Bits(kd);
    kd = V::Sub(kd, V::Set(kShift));
    const D r = V::Sub(V::Sub(x, V::Mul(kd, V::Set(kLn2HiN))), V::Mul(kd, V::Set(kLn2LoN)));
    const typename V::I index = V::LowIndex(ki);
    const D tail = V::GatherTail(index);
    const D scale = V::FromBits(V::AddBits(V::GatherScale(index), V::ShiftLeft45(ki)));
    const D r2 = V::Mul(r, r);
    const D p23 = V::Add(V::Set(kC2), V::Mul(r, V::Set(kC3)));
    const D p45 = V::Add(V::Set(kC4), V::Mul(r, V::Set(kC5)));
    const D tmp = V::Add(V::Add(V::Add(tail, r), V::Mul(r2, p23)), V::Mul(V::Mul(r2, r2), p45));
    return V::Add(scale, V::Mul(scale, tmp));
}

}  // namespace veltara::exact::table
