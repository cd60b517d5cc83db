// The radius holding a share of the probability, from the terms' tabulated radial distributions.
#include "electron/radius_holding.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "electron/term_draw.h"
#include "support/convert.h"
#include "support/error.h"

namespace veltara {

double RadiusHolding(const Superposition& s, double fraction) {
    if (!(fraction > 0 && fraction <= 1))
        Raise(kErrInvalidCall, "the fraction must be a number above 0 and at most 1");
    const std::vector<Term>& terms = s.Terms();
    if (terms.size() == 1) {
        return RadialTable(terms.front().state, SampleWeight::Density).Quantile(fraction);
    }
    std::vector<TabulatedDistribution> tables;
    double hi = 0;
    for (const Term& term : terms) {
        tables.push_back(RadialTable(term.state, SampleWeight::Density));
        hi = std::max(hi, tables.back().Upper());
    }
    // The bound on the probability outside R falls as R grows: bisect for where it meets
    // 1 - fraction.
    const auto outside = [&](double r) {
        double root = 0;
        for (size_t k = 0; k < terms.size(); ++k) {
            const double tail = 1 - tables[k].MassBelow(r) / tables[k].Total();
            root += std::abs(terms[k].c) * std::sqrt(std::max(0.0, tail));
        }
        return root * root;
    };
    double lo = 0;
    const double allowed = 1 - fraction;
    while (hi - lo > 1e-10 * hi) {
        const double mid = lo + (hi - lo) / 2;
        (outside(mid) <= allowed ? hi : lo) = mid;
    }
    return hi;
}

int16_t DefaultAtomRadius(const Superposition& s) {
    return ToInt16(std::max(1.0, std::ceil(RadiusHolding(s, 0.999))));
}

}  // namespace veltara
