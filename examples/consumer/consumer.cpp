// A C++ consumer of the installed engine: lists the catalogue's size through cVeltara.
#include <veltara/engine/cVeltara.h>

#include <cstdio>

int main() {
    veltara::cVeltara engine;
    const double d = static_cast<double>(engine.EnumOrbitals().size()) + 0.25;
    int i = d;  // the consumer's own narrowing conversion: allowed by its own flags
    std::printf("C++ engine: %d orbitals, highest n %d\n", i, engine.HighestN());
    return i == 40 ? 0 : 1;
}
