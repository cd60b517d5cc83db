// veltara._core: the engine for Python through its C interface, as numpy arrays, bound with
// pybind11. Results are written straight into the arrays handed back, and the interpreter's
// lock is released while the engine works, so threads run side by side. The Python layer
// (veltara/__init__.py) resolves names and keywords; this layer converts records and errors.
#include <pybind11/complex.h>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/veltara.h"

namespace py = pybind11;

namespace {

constexpr py::ssize_t kGrid = 128;

/// A failing vt_ call: its number and the engine's sentence about it.
struct CallFailed {
    int32_t number;
    std::string detail;
};

void Check(int32_t rc) {
    if (rc != VT_OK) throw CallFailed{rc, vt_last_error_detail()};
}

/// Runs a vt_ call with the interpreter's lock released, then raises its failure.
template <class Call>
void Engine(Call&& call) {
    int32_t rc;
    {
        py::gil_scoped_release release;
        rc = call();
    }
    Check(rc);
}

/// The engine's clock for the length of one call: a fixed reading or the system clock. The
/// clock belongs to the calling thread, so each call installs it afresh.
class ClockScope {
  public:
    explicit ClockScope(const std::optional<int32_t>& ms) : mMs(ms.value_or(0)) {
        if (ms) {
            vt_set_clock([](void* ctx) { return *static_cast<int32_t*>(ctx); }, &mMs);
        } else {
            vt_set_clock(nullptr, nullptr);
        }
    }
    ~ClockScope() { vt_set_clock(nullptr, nullptr); }
    ClockScope(const ClockScope&) = delete;
    ClockScope& operator=(const ClockScope&) = delete;

  private:
    int32_t mMs;
};

using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// The request's fields by their Python names, in one table for both directions.
template <class Visit>
void RequestFields(vt_RenderRequest& r, Visit&& visit) {
    visit("theta", r.Theta);
    visit("phi", r.Phi);
    visit("camera_pos", r.CameraPos);
    visit("projection_plane", r.ProjectionPlane);
    visit("transect_no", r.TransectNo);
    visit("transector", r.Transector);
    visit("transect_dir", r.TransectDir);
    visit("size", r.Size);
    visit("mode", r.Mode);
    visit("vol_quality", r.VolQuality);
    visit("vol_final", r.VolFinal);
    visit("show_prob_level_on_dots", r.ShowProbLevelOnDots);
    visit("show_prob_level_on_trans", r.ShowProbLevelOnTrans);
    visit("use_coloured_transector", r.UseColouredTransector);
    visit("stereo_factor", r.StereoFactor);
}

py::dict DefaultRequest() {
    vt_RenderRequest r;
    Check(vt_render_request_init(&r));
    py::dict d;
    RequestFields(r, [&](const char* name, auto& field) { d[name] = field; });
    return d;
}

/// A superposition owned by Python.
class State {
  public:
    explicit State(vt_superposition* s) : mS(s, vt_superposition_free) {}
    const vt_superposition* get() const { return mS.get(); }

    /// The normalised terms as (re, im, n, l, m, basis, Z, shell_average) tuples.
    py::list Terms() const {
        int32_t count = 0;
        vt_superposition_terms(get(), nullptr, 0, &count);  // the count alone
        std::vector<vt_term> terms(static_cast<size_t>(count));
        Check(vt_superposition_terms(get(), terms.data(), count, &count));
        py::list out;
        for (const vt_term& t : terms)
            out.append(py::make_tuple(t.re, t.im, t.state.n, t.state.l, t.state.m, t.state.basis,
                                      t.state.Z, t.state.shell_average != 0));
        return out;
    }

    /// The catalogue orbital this state is, or -1.
    int16_t CatalogueIndex() const {
        int16_t index = -1;
        Check(vt_state_catalogue_index(get(), &index));
        return index;
    }

    std::string Text() const {
        size_t length = 0;
        vt_format_state(get(), nullptr, 0, &length);
        std::string text(length + 1, '\0');
        Check(vt_format_state(get(), text.data(), text.size(), &length));
        text.resize(length);
        return text;
    }

  private:
    std::shared_ptr<vt_superposition> mS;
};

/// The superposition a vt_ call makes into `out`, owned by Python.
template <class Call>
State Made(Call&& call) {
    vt_superposition* s = nullptr;
    Check(call(&s));
    return State(s);
}

State Parse(const std::string& text) {
    return Made([&](vt_superposition** s) { return vt_parse_state(text.c_str(), s); });
}

State FromTerms(const std::vector<std::tuple<double, double, int32_t, int32_t, int32_t, int32_t,
                                             int32_t, bool>>& terms) {
    std::vector<vt_term> list;
    for (const auto& [re, im, n, l, m, basis, Z, avg] : terms)
        list.push_back(vt_term{re, im, vt_state{n, l, m, basis, Z, avg ? 1 : 0}});
    return Made([&](vt_superposition** s) {
        return vt_superposition_new(list.data(), static_cast<int32_t>(list.size()), s);
    });
}

State Hybrid(int32_t kind, int32_t k, int32_t n) {
    return Made([&](vt_superposition** s) { return vt_hybrid(kind, k, n, s); });
}

py::array_t<double> StateRadial(const State& s, double t, const Doubles& r) {
    py::array_t<double> out(r.size());
    const double* in = r.data();
    double* o = out.mutable_data();
    const size_t count = static_cast<size_t>(r.size());
    Engine([&] { return vt_state_radial_distribution(s.get(), t, in, count, o); });
    return out;
}

py::dict StateFacts(const State& s) {
    vt_state_facts f;
    Check(vt_state_facts_of(s.get(), &f));
    std::vector<double> nodes(static_cast<size_t>(f.node_count));
    int32_t count = 0;
    Check(vt_state_node_radii(s.get(), nodes.data(), f.node_count, &count));
    std::vector<vt_beat> beats(static_cast<size_t>(f.beat_count));
    Check(vt_state_beats(s.get(), beats.data(), f.beat_count, &count));
    py::list beatList;
    for (const vt_beat& b : beats)
        beatList.append(py::make_tuple(b.delta_hartree, b.period_fs, b.wavelength_nm));
    py::dict d;
    d["n"] = f.n;
    d["l"] = f.l;
    d["m"] = f.m;
    d["Z"] = f.Z;
    d["energy_hartree"] = f.energy_hartree;
    d["energy_ev"] = f.energy_ev;
    d["radial_nodes"] = f.radial_nodes;
    d["angular_nodes"] = f.angular_nodes;
    d["node_radii"] = nodes;
    d["mean_radius"] = f.mean_radius;
    d["most_probable_radius"] = f.most_probable_radius;
    d["beats"] = beatList;
    return d;
}

py::tuple Sample(const State& s, double t, uint64_t seed, int32_t weight, py::ssize_t count) {
    if (count < 0) throw py::value_error("count must be 0 or more");
    py::array_t<double> points({count, py::ssize_t{3}});
    py::array_t<double> phase(count);
    double* xyz = points.mutable_data();
    double* ph = phase.mutable_data();
    Engine(
        [&] { return vt_sample(s.get(), t, seed, weight, static_cast<size_t>(count), xyz, ph); });
    return py::make_tuple(points, phase);
}

double RadiusHolding(const State& s, double fraction) {
    double r = 0;
    Check(vt_radius_holding(s.get(), fraction, &r));
    return r;
}

py::tuple Surface(const State& s, double t, double fraction, int32_t resolution) {
    vt_surface* raw = nullptr;
    Engine([&] { return vt_surface_new(s.get(), t, fraction, resolution, &raw); });
    const std::unique_ptr<vt_surface, void (*)(vt_surface*)> m(raw, vt_surface_free);
    double level = 0;
    int32_t vertices = 0, triangles = 0;
    Check(vt_surface_counts(m.get(), &level, &vertices, &triangles));
    py::array_t<float> xyz({py::ssize_t{vertices}, py::ssize_t{3}});
    py::array_t<float> phase(vertices);
    py::array_t<uint32_t> faces({py::ssize_t{triangles}, py::ssize_t{3}});
    Check(vt_surface_copy(m.get(), xyz.mutable_data(), phase.mutable_data(), faces.mutable_data()));
    return py::make_tuple(level, xyz, phase, faces);
}

/// One engine: the main atom class with its collection, and the clock its calls run under.
class Atom {
  public:
    explicit Atom(std::optional<int32_t> clockMs) : mClock(clockMs) {
        vt_engine* e = nullptr;
        Check(vt_engine_new(&e));
        mEngine.reset(e);
    }

    int16_t Add(int16_t orbital, int32_t view, int16_t radius, int16_t dots, uint8_t threshold) {
        const vt_OrbitalSetup s{radius, dots, threshold, 0, orbital, view};
        int16_t slot = 0;
        Engine([&] {
            ClockScope clock(mClock);
            return vt_add(mEngine.get(), &s, &slot);
        });
        return slot;
    }

    int16_t AddState(const State& state, double t, int32_t view, int16_t radius, int16_t dots,
                     uint8_t threshold) {
        const vt_OrbitalSetup s{radius, dots, threshold, 0, 0, view};
        int16_t slot = 0;
        Engine([&] {
            ClockScope clock(mClock);
            return vt_add_state(mEngine.get(), state.get(), t, &s, &slot);
        });
        return slot;
    }

    /// The picture as rows top first, B, G, R, A, written by the engine into the array itself.
    py::array_t<uint8_t> Render(int16_t slot, const py::dict& request) {
        vt_RenderRequest req;
        RequestFields(req, [&](const char* name, auto& field) {
            field = request[name].cast<std::remove_reference_t<decltype(field)>>();
        });
        const py::ssize_t edge = VT_PICTURE_EDGE(req.Size);
        py::array_t<uint8_t> bgra({edge, edge, py::ssize_t{4}});
        uint8_t* data = bgra.mutable_data();
        int32_t w = 0, h = 0;
        Engine([&] {
            ClockScope clock(mClock);
            return vt_render_to_buffer(mEngine.get(), slot, &req, data,
                                       static_cast<size_t>(bgra.size()), &w, &h);
        });
        return bgra;
    }

    /// The probability grid indexed [x, y, z]: x fastest in memory, as the engine keeps it.
    py::array_t<uint8_t, py::array::f_style> Grid(int16_t slot) {
        int32_t edge = 0;
        Check(vt_grid_edge(mEngine.get(), slot, &edge));
        const py::ssize_t n = edge;
        py::array_t<uint8_t, py::array::f_style> out({n, n, n});
        Check(
            vt_get_grid(mEngine.get(), slot, out.mutable_data(), static_cast<size_t>(out.size())));
        return out;
    }

    /// The dots as records x, y, z (int16) and p (uint8), 8 bytes each as the engine keeps them.
    py::array Dots(int16_t slot) {
        int32_t count = 0;
        vt_get_dots(mEngine.get(), slot, nullptr, 0, &count);  // the count alone
        py::list names, formats, offsets;
        for (const char* n : {"x", "y", "z", "p"}) names.append(n);
        for (const char* f : {"i2", "i2", "i2", "u1"}) formats.append(f);
        for (int o : {0, 2, 4, 6}) offsets.append(o);
        py::dict spec;
        spec["names"] = names;
        spec["formats"] = formats;
        spec["offsets"] = offsets;
        spec["itemsize"] = 8;
        py::array out(py::dtype::from_args(spec), std::vector<py::ssize_t>{count});
        Check(vt_get_dots(mEngine.get(), slot, static_cast<vt_PointArray*>(out.mutable_data()),
                          count, &count));
        return out;
    }

    py::dict Stats(int16_t slot) {
        vt_OrbitalStats s;
        Check(vt_get_stats(mEngine.get(), slot, &s));
        py::array_t<int32_t> freqs(256);
        std::memcpy(freqs.mutable_data(), s.ProbFreqs, sizeof s.ProbFreqs);
        py::dict d;
        d["frames_rendered"] = s.FramesRendered;
        d["prob_freqs"] = freqs;
        d["total_samples"] = s.TotalSamples;
        d["mode"] = s.Mode;
        d["calc_time"] = s.CalcTime;
        d["calc_rate"] = s.CalcRate;
        d["dot_target"] = s.DotTarget;
        d["dot_total"] = s.DotTotal;
        d["dot_time"] = s.DotTime;
        return d;
    }

    py::dict Setup(int16_t slot) {
        vt_OrbitalSetup s;
        Check(vt_get_setup(mEngine.get(), slot, &s));
        py::dict d;
        d["radius"] = s.AtomRadius;
        d["dots"] = s.DotTarget;
        d["threshold"] = s.DotThreshold;
        d["orbital"] = s.OrbitalIndex;
        d["view"] = s.OrbitalViewMode;
        return d;
    }

    int32_t Refill(int16_t slot, uint8_t threshold, int32_t target) {
        vt_Variant index;
        index.kind = VT_VARIANT_INT16;
        index.value.i16 = slot;
        int32_t result = 0;
        Engine([&] {
            ClockScope clock(mClock);
            return vt_refill_dot_matrix(mEngine.get(), &index, threshold, target, &result);
        });
        return result;
    }

    void Delete(int16_t slot) { Check(vt_delete(mEngine.get(), slot)); }

  private:
    std::unique_ptr<vt_engine, void (*)(vt_engine*)> mEngine{nullptr, vt_engine_free};
    std::optional<int32_t> mClock;
};

/// Coordinates as numpy hands them over after broadcasting: three arrays of one shape, each
/// with its own strides (0 along a broadcast axis), read in place. Axes along which all three
/// step evenly are merged, so that the usual cases (whole arrays, broadcast scalars) are one
/// run of points; the engine is called once per innermost run, writing the values in C order.
class PointArrays {
  public:
    using Input = py::array_t<double, py::array::forcecast>;

    PointArrays(const Input& x, const Input& y, const Input& z) : mArrays{x, y, z} {
        for (Input& a : mArrays) {
            if (a.ndim() != x.ndim() || !std::equal(a.shape(), a.shape() + a.ndim(), x.shape()))
                throw py::value_error("x, y and z must have one shape after broadcasting");
            // A stride that is no whole number of doubles (an unaligned view) is read from a copy.
            for (py::ssize_t k = 0; k < a.ndim(); ++k) {
                if (a.strides(k) % static_cast<py::ssize_t>(sizeof(double)) != 0) {
                    a = Input(py::module_::import("numpy").attr("ascontiguousarray")(a));
                    break;
                }
            }
        }
        mShape.assign(x.shape(), x.shape() + x.ndim());
        for (py::ssize_t k = 0; k < x.ndim(); ++k) {
            if (x.shape(k) == 1) continue;
            Axis axis{x.shape(k), {}};
            for (size_t a = 0; a < 3; ++a)
                axis.stride[a] = mArrays[a].strides(k) / static_cast<py::ssize_t>(sizeof(double));
            if (!mAxes.empty() && Merges(mAxes.back(), axis)) {
                mAxes.back() = Axis{mAxes.back().size * axis.size, axis.stride};
            } else {
                mAxes.push_back(axis);
            }
        }
    }

    const std::vector<py::ssize_t>& Shape() const { return mShape; }

    /// Calls call(points, count, offset) for each innermost run; offset: its first value's
    /// place in C order. Runs without the interpreter's lock.
    template <class Call>
    void Each(Call&& call) const {
        if (mArrays[0].size() == 0) {
            // No point, but the call still checks its other arguments.
            const vt_points none{mArrays[0].data(), mArrays[1].data(), mArrays[2].data(), 0, 0, 0};
            call(none, 0, 0);
            return;
        }
        const size_t outer = mAxes.size() > 1 ? mAxes.size() - 1 : 0;
        const py::ssize_t run = mAxes.empty() ? 1 : mAxes.back().size;
        std::vector<py::ssize_t> index(outer, 0);
        size_t offset = 0;
        while (true) {
            const double* p[3];
            for (size_t a = 0; a < 3; ++a) {
                p[a] = mArrays[a].data();
                for (size_t k = 0; k < outer; ++k) p[a] += index[k] * mAxes[k].stride[a];
            }
            const std::array<py::ssize_t, 3> step =
                mAxes.empty() ? std::array<py::ssize_t, 3>{} : mAxes.back().stride;
            const vt_points points{p[0], p[1], p[2], step[0], step[1], step[2]};
            call(points, static_cast<size_t>(run), offset);
            offset += static_cast<size_t>(run);
            size_t k = outer;
            while (k > 0 && ++index[k - 1] == mAxes[k - 1].size) index[--k] = 0;
            if (k == 0) return;
        }
    }

  private:
    struct Axis {
        py::ssize_t size;
        std::array<py::ssize_t, 3> stride;  // in doubles
    };

    /// True when stepping `outer` once is stepping `inner` its size times, in all three arrays.
    static bool Merges(const Axis& outer, const Axis& inner) {
        for (size_t a = 0; a < 3; ++a) {
            if (outer.stride[a] != inner.stride[a] * inner.size) return false;
        }
        return true;
    }

    std::array<Input, 3> mArrays;
    std::vector<py::ssize_t> mShape;
    std::vector<Axis> mAxes;  // outermost first; the last is the innermost run
};

/// Evaluates at every point of x, y, z (broadcast, read where they lie) into a new array of T,
/// `call(points, count, out)` filling `count` values from `out`, with the lock released.
template <class T, class Call>
py::array_t<T> AtPoints(const PointArrays::Input& x, const PointArrays::Input& y,
                        const PointArrays::Input& z, Call&& call) {
    const PointArrays points(x, y, z);
    py::array_t<T> out(points.Shape());
    T* o = out.mutable_data();
    Engine([&] {
        int32_t rc = VT_OK;
        points.Each([&](const vt_points& p, size_t count, size_t offset) {
            if (rc == VT_OK) rc = call(p, count, o + offset);
        });
        return rc;
    });
    return out;
}

py::array_t<double> Density(int16_t orbital, int32_t view, const PointArrays::Input& x,
                            const PointArrays::Input& y, const PointArrays::Input& z,
                            int32_t threads) {
    return AtPoints<double>(x, y, z, [&](const vt_points& p, size_t count, double* out) {
        return vt_real_density_at(orbital, view, &p, count, threads, out);
    });
}

py::array_t<double> Psi(int16_t orbital, const PointArrays::Input& x, const PointArrays::Input& y,
                        const PointArrays::Input& z, int32_t threads) {
    return AtPoints<double>(x, y, z, [&](const vt_points& p, size_t count, double* out) {
        return vt_wavefunction_at(orbital, &p, count, threads, out);
    });
}

py::array_t<std::complex<double>> StatePsi(const State& s, double t, const PointArrays::Input& x,
                                           const PointArrays::Input& y, const PointArrays::Input& z,
                                           int32_t threads) {
    // std::complex<double> is laid out as two doubles, real then imaginary.
    return AtPoints<std::complex<double>>(
        x, y, z, [&](const vt_points& p, size_t count, std::complex<double>* out) {
            return vt_state_psi_at(s.get(), t, &p, count, threads, reinterpret_cast<double*>(out));
        });
}

py::array_t<double> StateDensity(const State& s, double t, int32_t view,
                                 const PointArrays::Input& x, const PointArrays::Input& y,
                                 const PointArrays::Input& z, int32_t threads) {
    return AtPoints<double>(x, y, z, [&](const vt_points& p, size_t count, double* out) {
        return vt_state_density_at(s.get(), t, view, &p, count, threads, out);
    });
}

py::array_t<double> Radial(int16_t orbital, const Doubles& r) {
    py::array_t<double> out(r.size());
    const double* in = r.data();
    double* o = out.mutable_data();
    const size_t count = static_cast<size_t>(r.size());
    Engine([&] { return vt_radial_distribution(orbital, in, count, o); });
    return out;
}

py::dict Facts(int16_t orbital) {
    vt_OrbitalFacts f;
    Check(vt_orbital_facts(orbital, &f));
    py::dict d;
    d["n"] = f.n;
    d["l"] = f.l;
    d["m"] = f.m;
    d["radial_nodes"] = f.radialNodes;
    d["angular_nodes"] = f.angularNodes;
    d["energy_hartree"] = f.energyHartree;
    d["mean_radius"] = f.meanRadius;
    d["most_probable_radius"] = f.mostProbableRadius;
    return d;
}

py::list Catalogue() {
    vt_engine* raw = nullptr;
    Check(vt_engine_new(&raw));
    const std::unique_ptr<vt_engine, void (*)(vt_engine*)> e(raw, vt_engine_free);
    int32_t count = 0;
    vt_enum_orbitals_into(e.get(), nullptr, 0, &count);
    std::vector<vt_OrbInfo> rows(static_cast<size_t>(count));
    Check(vt_enum_orbitals_into(e.get(), rows.data(), count, &count));
    py::list out;
    for (const vt_OrbInfo& i : rows) {
        out.append(py::make_tuple(py::str(i.Name), i.n, i.l, i.M, i.OrbType == VT_AVERAGE_ORBS,
                                  i.DefaultPDFAtomRadius, i.DefaultDRPDFAtomRadius,
                                  i.DefaultPDFDotThreshold, i.DefaultDRPDFDotThreshold));
    }
    return out;
}

/// The engine's tables of mode, view and size names: {"mode": [(key, title, label, value)], ...}.
py::dict NameTables() {
    py::dict out;
    for (const auto& [kind, table] :
         {std::pair{"mode", VT_NAMES_MODE}, std::pair{"view", VT_NAMES_VIEW},
          std::pair{"size", VT_NAMES_SIZE}}) {
        py::list rows;
        int32_t count = 0;
        Check(vt_name_count(table, &count));
        for (int32_t i = 0; i < count; ++i) {
            vt_Name n;
            Check(vt_name(table, i, &n));
            rows.append(py::make_tuple(n.Key, n.Title, n.Label, n.Value));
        }
        out[kind] = rows;
    }
    return out;
}

}  // namespace

PYBIND11_MODULE(_core, m) {
    m.doc() = "The Veltara engine bound for Python; use the veltara package, not this module.";

    // Failing calls become veltara.EngineError(number, the engine's sentence).
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const CallFailed& e) {
            const py::object type = py::module_::import("veltara._errors").attr("EngineError");
            const py::object err = type(e.number, e.detail);
            PyErr_SetObject(type.ptr(), err.ptr());
        }
    });

    py::class_<Atom>(m, "Engine")
        .def(py::init<std::optional<int32_t>>(), py::arg("clock_ms"))
        .def("add", &Atom::Add)
        .def("add_state", &Atom::AddState)
        .def("render", &Atom::Render)
        .def("grid", &Atom::Grid)
        .def("dots", &Atom::Dots)
        .def("stats", &Atom::Stats)
        .def("setup", &Atom::Setup)
        .def("refill", &Atom::Refill)
        .def("delete", &Atom::Delete);

    py::class_<State>(m, "State")
        .def("terms", &State::Terms)
        .def("text", &State::Text)
        .def("catalogue_index", &State::CatalogueIndex);
    m.def("parse", &Parse);
    m.def("superposition", &FromTerms);
    m.def("hybrid", &Hybrid);
    m.def("state_psi", &StatePsi);
    m.def("state_density", &StateDensity);
    m.def("state_radial", &StateRadial);
    m.def("state_facts", &StateFacts);
    m.def("sample", &Sample);
    m.def("radius_holding", &RadiusHolding);
    m.def("surface", &Surface);

    m.def("default_request", &DefaultRequest);
    m.def("catalogue", &Catalogue);
    m.def("names", &NameTables);
    m.def("density", &Density);
    m.def("wavefunction", &Psi);
    m.def("radial_distribution", &Radial);
    m.def("facts", &Facts);
    m.def("error_text", [](int32_t n) { return std::string(vt_error_text(n)); });
    m.def("version", [] { return std::string(vt_version()); });
    m.def("simd", [] {
        int32_t refused = 0;
        const std::string path = vt_simd(&refused);
        return py::make_tuple(path, refused != 0);
    });
}
