#!/usr/bin/env python3
"""Prints the tables of support/exact_math_table.cpp, worked out with mpmath at 80 digits.

For i = 0..127: the double nearest 2^(i/128) as bits with i << 45 taken off (adding k << 45 for
k = 128 e + i then gives 2^e 2^(i/128)), and the relative tail (2^(i/128) - hi) / hi rounded.
Also the bits of 2/pi (38 words of 32) for the sine and cosine, and the split constants of
ln 2 / 128 used by the argument reduction.
"""
import struct
import mpmath

mpmath.mp.dps = 80


def bits(d):
    return struct.unpack('<Q', struct.pack('<d', d))[0]


def main():
    print('// 2^(i/128): bits of the nearest double less i << 45, and the relative tail.')
    sbits, tails = [], []
    for i in range(128):
        exact = mpmath.power(2, mpmath.mpf(i) / 128)
        hi = float(exact)
        tail = float((exact - mpmath.mpf(hi)) / mpmath.mpf(hi))
        sbits.append('0x%016xull' % ((bits(hi) - (i << 45)) & (2**64 - 1)))
        tails.append(tail.hex())
    print('sbits:', ', '.join(sbits))
    print('tails:', ', '.join(tails))
    ln2n = mpmath.log(2) / 128
    hi = float(ln2n)
    hi = struct.unpack('<d', struct.pack('<Q', bits(hi) & ~((1 << 19) - 1)))[0]  # 34 bits
    lo = float(ln2n - mpmath.mpf(hi))
    mpmath.mp.dps = 500
    v, words = 2 / mpmath.pi, []
    for _ in range(38):
        v *= 2**32
        w = int(mpmath.floor(v))
        v -= w
        words.append('0x%08x' % w)
    print('2/pi bits:', ', '.join(words))
    mpmath.mp.dps = 80
    print('ln2/128 hi', hi.hex(), 'lo', lo.hex(), '128/ln2', float(128 / mpmath.log(2)).hex())


if __name__ == '__main__':
    main()
