#!/usr/bin/env python3
"""Writes arguments and correctly rounded values of exp, log, sin and cos, worked out with mpmath
at 60 digits, one "name argument value" a line in C99 hex floats: the reference the engine's own
elementary functions are tested against (tests/data/exact_math_values.txt).

usage: exact_math_values.py [count per function] [seed]
"""
import math
import random
import sys

import mpmath

mpmath.mp.dps = 400  # the sine of 2^1023 needs its 1023 bits of pi and more


def arguments(rng, name, count):
    out = []
    if name == 'exp':
        out += [0.0, -0.0, 1.0, -1.0, 709.78, -745.0, -708.5, 705.0, -704.0, 704.0, 1e-300, -1e-20]
        while len(out) < count:
            pick = rng.random()
            if pick < 0.5:
                out.append(-rng.uniform(0.0, 80.0))  # the grid's exponents: -k r
            elif pick < 0.8:
                out.append(rng.uniform(-745.0, 709.7))
            elif pick < 0.9:
                out.append(rng.uniform(-745.13, -704.0))  # subnormal and small results
            else:
                out.append(rng.uniform(-1.0, 1.0) * 2.0 ** -rng.randint(1, 60))
    elif name == 'log':
        out += [1.0, 2.0, 0.5, 5e-324, 2.2250738585072014e-308, 1.7976931348623157e308,
                math.nextafter(1.0, 2.0), math.nextafter(1.0, 0.0)]
        while len(out) < count:
            pick = rng.random()
            if pick < 0.4:
                out.append(rng.uniform(0.5, 2.0))
            elif pick < 0.5:
                out.append(1.0 + rng.uniform(-1.0, 1.0) * 2.0 ** -rng.randint(1, 50))
            else:
                out.append(rng.uniform(1.0, 2.0) * 2.0 ** rng.randint(-1074, 1023))
    else:
        out += [0.0, 1.0, -1.0, 0.5, 0.3, 0.7, 3.141592653589793, 1.5707963267948966,
                6.283185307179586, 1e-10, 355.0, 1.0e6, 103993.0, 1e22, 1.7976931348623157e308,
                -2.0 ** 1023, 1647100.0, 6381956970095103.0 * 2.0 ** 797]
        while len(out) < count:
            pick = rng.random()
            if pick < 0.5:
                out.append(rng.uniform(-7.0, 7.0))
            elif pick < 0.7:
                out.append(rng.uniform(-1.6e6, 1.6e6))
            elif pick < 0.8:  # beyond 2^20 pi/2, up to the largest doubles
                out.append(rng.choice([-1.0, 1.0]) * rng.uniform(1.0, 2.0) * 2.0 ** rng.randint(21, 1023))
            else:  # next to a multiple of pi/2
                k = rng.randint(-100000, 100000)
                out.append(float(k * mpmath.pi / 2) + rng.uniform(-1e-9, 1e-9))
    return out[:count]


def main():
    count = int(sys.argv[1]) if len(sys.argv) > 1 else 300
    rng = random.Random(int(sys.argv[2]) if len(sys.argv) > 2 else 20)
    fns = {'exp': mpmath.exp, 'log': mpmath.log, 'sin': mpmath.sin, 'cos': mpmath.cos}
    for name, fn in fns.items():
        for x in arguments(rng, name, count):
            y = fn(mpmath.mpf(x))
            value = float(y) if abs(y) > mpmath.mpf(2) ** -1080 else 0.0
            print(name, float(x).hex(), value.hex())


if __name__ == '__main__':
    main()
