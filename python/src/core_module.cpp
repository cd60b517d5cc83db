// veltara._core: the engine, its orbitals and the catalogue's functions for Python, as numpy
// arrays, bound with pybind11. The Python layer (veltara/__init__.py) resolves names and
// keywords; this layer converts records and errors.
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "electron/modOrbitals.h"
#include "electron/orbital_facts.h"
#include "electron/wavefunction.h"
#include "engine/cVeltara.h"
#include "records/PublicTypes.h"
#include "records/names.h"
#include "support/cMemoryDCEx.h"
#include "support/clock.h"
#include "support/error.h"

namespace py = pybind11;
using namespace veltara;

namespace {

constexpr py::ssize_t kGrid = 128;
static_assert(sizeof(PointArray) == 8);

/// The engine's clock for the length of one call: a fixed reading or the system clock. The
/// clock belongs to the calling thread, so each call installs it afresh.
class ClockScope {
  public:
    explicit ClockScope(std::optional<int32_t> ms) {
        if (ms) {
            SetClock([v = *ms] { return v; });
        } else {
            SetClock({});
        }
    }
    ~ClockScope() { SetClock({}); }
    ClockScope(const ClockScope&) = delete;
    ClockScope& operator=(const ClockScope&) = delete;
};

/// Points given as an (N, 3) array of x, y, z in Bohr radii.
using Points = py::array_t<double, py::array::c_style | py::array::forcecast>;

const double* PointData(const Points& xyz, size_t& count) {
    if (xyz.ndim() != 2 || xyz.shape(1) != 3)
        throw py::value_error("points must be an (N, 3) array");
    count = static_cast<size_t>(xyz.shape(0));
    return xyz.data();
}

py::dict RequestToDict(const RenderRequest& r) {
    py::dict d;
    d["theta"] = r.Theta;
    d["phi"] = r.Phi;
    d["camera_pos"] = r.CameraPos;
    d["projection_plane"] = r.ProjectionPlane;
    d["transect_no"] = r.TransectNo;
    d["transector"] = r.Transector;
    d["transect_dir"] = static_cast<int32_t>(r.TransectDir);
    d["size"] = static_cast<int32_t>(r.Size);
    d["mode"] = static_cast<int32_t>(r.Mode);
    d["vol_quality"] = r.VolQuality;
    d["vol_final"] = r.VolFinal;
    d["show_prob_level_on_dots"] = r.ShowProbLevelOnDots;
    d["show_prob_level_on_trans"] = r.ShowProbLevelOnTrans;
    d["use_coloured_transector"] = r.UseColouredTransector;
    d["stereo_factor"] = r.StereoFactor;
    return d;
}

/// The request from a dict holding every field (the Python layer checks names and ranges).
RenderRequest RequestFromDict(const py::dict& d) {
    RenderRequest r;
    r.Theta = d["theta"].cast<double>();
    r.Phi = d["phi"].cast<double>();
    r.CameraPos = d["camera_pos"].cast<int16_t>();
    r.ProjectionPlane = d["projection_plane"].cast<int16_t>();
    r.TransectNo = d["transect_no"].cast<int16_t>();
    r.Transector = d["transector"].cast<int16_t>();
    r.TransectDir = static_cast<TransectDirection>(d["transect_dir"].cast<int32_t>());
    r.Size = static_cast<RenderSize>(d["size"].cast<int32_t>());
    r.Mode = static_cast<RenderMode>(d["mode"].cast<int32_t>());
    r.VolQuality = d["vol_quality"].cast<int16_t>();
    r.VolFinal = d["vol_final"].cast<int16_t>();
    r.ShowProbLevelOnDots = d["show_prob_level_on_dots"].cast<int16_t>();
    r.ShowProbLevelOnTrans = d["show_prob_level_on_trans"].cast<int16_t>();
    r.UseColouredTransector = d["use_coloured_transector"].cast<int16_t>();
    r.StereoFactor = d["stereo_factor"].cast<int16_t>();
    return r;
}

/// One engine: the main atom class with its collection, and the clock its calls run under.
class Engine {
  public:
    explicit Engine(std::optional<int32_t> clockMs) : mClock(clockMs) {}

    int16_t Add(int16_t orbital, int32_t view, int16_t radius, int16_t dots, uint8_t threshold) {
        ClockScope clock(mClock);
        OrbitalSetup s;
        s.AtomRadius = radius;
        s.DotTarget = dots;
        s.DotThreshold = threshold;
        s.OrbitalIndex = orbital;
        s.OrbitalViewMode = static_cast<ViewMode>(view);
        return mEngine.Orbitals()->Add(s);
    }

    /// The picture as rows top first, R, G, B.
    py::array_t<uint8_t> Render(int16_t slot, const py::dict& request) {
        const RenderRequest req = RequestFromDict(request);
        RenderDCinfo dc;
        {
            ClockScope clock(mClock);
            dc = mEngine.Orbitals()->GetRender(slot, req);
        }
        const cMemoryDCEx* s =
            SurfaceFromHandle(req.Size == RenderSize::Main ? dc.MainHDC : dc.NanoHDC);
        if (s == nullptr) Raise(kErrSubscript);
        const py::ssize_t w = std::max(s->Width(), 0), h = std::max(s->Height(), 0);
        py::array_t<uint8_t> out({h, w, py::ssize_t{3}});
        uint8_t* dst = out.mutable_data();
        // Row y from the top is scan line Height - y of the bottom-up bitmap.
        for (py::ssize_t y = 0; y < h; ++y) {
            const RGBA* line = s->ScanLine(static_cast<int32_t>(h - y));
            for (py::ssize_t x = 0; x < w; ++x, dst += 3) {
                const RGBA p = line != nullptr ? line[x] : RGBA{};
                dst[0] = p.R;
                dst[1] = p.G;
                dst[2] = p.B;
            }
        }
        return out;
    }

    /// The probability grid indexed [x, y, z]: x fastest in memory, as the engine keeps it.
    py::array_t<uint8_t, py::array::f_style> Grid(int16_t slot) {
        const std::span<const uint8_t> g = mEngine.Orbitals()->Orbital(slot).ProbMatrix();
        py::array_t<uint8_t, py::array::f_style> out({kGrid, kGrid, kGrid});
        if (g.empty()) {
            std::memset(out.mutable_data(), 0, static_cast<size_t>(out.size()));
        } else {
            std::memcpy(out.mutable_data(), g.data(), static_cast<size_t>(out.size()));
        }
        return out;
    }

    /// The dots as records x, y, z (int16) and p (uint8), 8 bytes each as the engine keeps them.
    py::array Dots(int16_t slot) {
        const std::span<const PointArray> held = mEngine.Orbitals()->Orbital(slot).Dots();
        py::list names, formats, offsets;
        for (const char* n : {"x", "y", "z", "p"}) names.append(n);
        for (const char* f : {"i2", "i2", "i2", "u1"}) formats.append(f);
        for (int o : {0, 2, 4, 6}) offsets.append(o);
        py::dict spec;
        spec["names"] = names;
        spec["formats"] = formats;
        spec["offsets"] = offsets;
        spec["itemsize"] = 8;
        const std::vector<py::ssize_t> shape{static_cast<py::ssize_t>(held.size())};
        py::array out(py::dtype::from_args(spec), shape);
        if (!held.empty()) std::memcpy(out.mutable_data(), held.data(), held.size_bytes());
        return out;
    }

    py::dict Stats(int16_t slot) {
        const OrbitalStats s = mEngine.Orbitals()->GetStats(slot);
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
        const OrbitalSetup& s = mEngine.Orbitals()->Orbital(slot).SetupRecord();
        py::dict d;
        d["radius"] = s.AtomRadius;
        d["dots"] = s.DotTarget;
        d["threshold"] = s.DotThreshold;
        d["orbital"] = s.OrbitalIndex;
        d["view"] = static_cast<int32_t>(s.OrbitalViewMode);
        return d;
    }

    int32_t Refill(int16_t slot, uint8_t threshold, int32_t target) {
        ClockScope clock(mClock);
        return mEngine.Orbitals()->ReFillDotMatrix(OrbitalIndexValue{slot}, threshold, target);
    }

    void Delete(int16_t slot) { mEngine.Orbitals()->Delete(slot); }

  private:
    cVeltara mEngine;
    std::optional<int32_t> mClock;
};

std::unique_ptr<cElectron> ElectronOf(int16_t orbital) {
    std::unique_ptr<cElectron> e = modOrbitals::CreateElectron(orbital);
    if (!e) Raise(kErrSubscript);
    return e;
}

py::array_t<double> Density(int16_t orbital, int32_t view, const Points& xyz) {
    size_t count = 0;
    const double* p = PointData(xyz, count);
    if (view != static_cast<int32_t>(ViewMode::PDF) &&
        view != static_cast<int32_t>(ViewMode::DRPDF)) {
        Raise(kErrInvalidCall);
    }
    const std::unique_ptr<cElectron> e = ElectronOf(orbital);
    py::array_t<double> out(static_cast<py::ssize_t>(count));
    double* o = out.mutable_data();
    for (size_t i = 0; i < count; ++i, p += 3) {
        // The electron takes the squares of the coordinates.
        const COORDdoubleParams c{p[0] * p[0], p[1] * p[1], p[2] * p[2]};
        o[i] = view == static_cast<int32_t>(ViewMode::PDF) ? e->GetRealPDF(c) : e->GetRealDRPDF(c);
    }
    return out;
}

py::array_t<double> Psi(int16_t orbital, const Points& xyz) {
    size_t count = 0;
    const double* p = PointData(xyz, count);
    py::array_t<double> out(static_cast<py::ssize_t>(count));
    WavefunctionBatch(orbital, p, count, out.mutable_data());
    return out;
}

py::array_t<double> Radial(
    int16_t orbital, const py::array_t<double, py::array::c_style | py::array::forcecast>& r) {
    py::array_t<double> out(r.size());
    RadialDistributionBatch(orbital, r.data(), static_cast<size_t>(r.size()), out.mutable_data());
    return out;
}

py::dict Facts(int16_t orbital) {
    const OrbitalFacts f = FactsOf(orbital);
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
    py::list out;
    for (const OrbInfo& i : cVeltara().EnumOrbitals()) {
        out.append(py::make_tuple(i.Name, i.n, i.l, i.M, i.OrbType == OrbitalType::AverageOrbs,
                                  i.DefaultPDFAtomRadius, i.DefaultDRPDFAtomRadius,
                                  i.DefaultPDFDotThreshold, i.DefaultDRPDFDotThreshold));
    }
    return out;
}

/// The engine's tables of mode, view and size names: {"mode": [(key, title, label, value)], ...}.
py::dict NameTables() {
    py::dict out;
    for (const auto& [kind, table] :
         {std::pair{"mode", NameTable::Mode}, std::pair{"view", NameTable::View},
          std::pair{"size", NameTable::Size}}) {
        py::list rows;
        for (const EnumName& n : Names(table)) {
            rows.append(py::make_tuple(n.key, n.title, n.label, n.value));
        }
        out[kind] = rows;
    }
    return out;
}

}  // namespace

PYBIND11_MODULE(_core, m) {
    m.doc() = "The Veltara engine bound for Python; use the veltara package, not this module.";

    // Engine errors become veltara.EngineError(number, message).
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const Error& e) {
            const py::object type = py::module_::import("veltara._errors").attr("EngineError");
            const py::object err = type(e.number(), ErrorText(e.number()));
            PyErr_SetObject(type.ptr(), err.ptr());
        }
    });

    py::class_<Engine>(m, "Engine")
        .def(py::init<std::optional<int32_t>>(), py::arg("clock_ms"))
        .def("add", &Engine::Add)
        .def("render", &Engine::Render)
        .def("grid", &Engine::Grid)
        .def("dots", &Engine::Dots)
        .def("stats", &Engine::Stats)
        .def("setup", &Engine::Setup)
        .def("refill", &Engine::Refill)
        .def("delete", &Engine::Delete);

    m.def("default_request", [] { return RequestToDict(DefaultRenderRequest()); });
    m.def("catalogue", &Catalogue);
    m.def("names", &NameTables);
    m.def("density", &Density);
    m.def("wavefunction", &Psi);
    m.def("radial_distribution", &Radial);
    m.def("facts", &Facts);
    m.def("error_text", [](int32_t n) { return std::string(ErrorText(n)); });
}
