// Exact samples: inverse distributions for one term, rejection against the mixture for many.
#include "electron/sampling.h"

#include <cmath>

#include "electron/superposition_draw.h"
#include "support/error.h"
#include "support/sample_random.h"

namespace veltara {

void Sample(const Superposition& s, double t, uint64_t seed, size_t count, SampleWeight weight,
            double* xyz, double* phase) {
    if (count > 0 && xyz == nullptr) Raise(kErrInvalidCall, "the points' buffer must not be null");
    if (!std::isfinite(t)) Raise(kErrInvalidCall, "the time t must be a finite number");
    if (count == 0) return;
    const SuperpositionDraw draw(s, t, weight);
    SampleRandom random(seed);
    const bool single = draw.TermCount() == 1;
    const bool average = s.Terms().front().state.shellAverage;
    const double bound = static_cast<double>(draw.TermCount());
    double u[3];
    for (size_t i = 0; i < count; ++i) {
        double* p = xyz + 3 * i;
        for (;;) {
            // One term by its share, a point of it, and (several terms) the rejection step:
            // accept with |Psi|² / (K sum |c_k|² |psi_k|²), never above 1.
            const size_t k = single ? 0 : draw.PickTerm(random.NextUnit());
            for (double& v : u) v = random.NextUnit();
            draw.Term(k).Point(u, p);
            if (single) {
                if (phase != nullptr)
                    phase[i] =
                        average ? 0.0 : SuperpositionDraw::PhaseOf(draw.At(p[0], p[1], p[2]).psi);
                break;
            }
            const SuperpositionDraw::Value v = draw.At(p[0], p[1], p[2]);
            if (random.NextUnit() * bound * v.mixture < std::norm(v.psi)) {
                if (phase != nullptr) phase[i] = SuperpositionDraw::PhaseOf(v.psi);
                break;
            }
        }
    }
}

}  // namespace veltara
