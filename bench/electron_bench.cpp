// Density evaluations per second of every orbital class: the per-point interface against the
// batch path, in both views, unscaled (the maximum search) and as bytes (the grid sampling).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "electron/modOrbitals.h"

namespace {

using veltara::COORDdoubleParams;
using veltara::ViewMode;

/// Four planes of the renderer's sampling grid (128 x 128 points each) at the orbital's
/// default radius for the view, squares formed as the renderer forms them.
std::vector<COORDdoubleParams> SamplePoints(veltara::cElectron& e, ViewMode view) {
    const veltara::OrbInfo info = e.GetInfo();
    const double radius =
        view == ViewMode::PDF ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
    const double step = radius / 127.0;
    std::vector<COORDdoubleParams> points;
    for (int z : {5, 40, 80, 120}) {
        for (int y = 0; y < 128; ++y) {
            for (int x = 0; x < 128; ++x) {
                const double xs = (x * step) * (x * step);
                const double ys = (y * step) * (y * step);
                const double zs = (z * step) * (z * step);
                points.push_back({xs, ys, zs});
            }
        }
    }
    return points;
}

enum class Path { kPerPoint, kBatch };
enum class Output { kNonScaled, kByte };

void Run(benchmark::State& state, int16_t index, ViewMode view, Path path, Output output) {
    std::unique_ptr<veltara::cElectron> e = veltara::modOrbitals::CreateElectron(index);
    const std::vector<COORDdoubleParams> points = SamplePoints(*e, view);
    std::vector<double> values(points.size());
    std::vector<uint8_t> bytes(points.size());

    // Scale so that the largest value of the sample maps to 255, as a renderer does.
    e->NonScaledBatch(view, points.data(), values.data(), points.size());
    const double factor = 255.0 / *std::max_element(values.begin(), values.end());
    e->SetPDFScaleFactor(factor);
    e->SetDRPDFScaleFactor(factor);

    const bool pdf = view == ViewMode::PDF;
    for (auto _ : state) {
        if (path == Path::kBatch) {
            if (output == Output::kNonScaled) {
                e->NonScaledBatch(view, points.data(), values.data(), points.size());
            } else {
                e->ScaledBatch(view, points.data(), bytes.data(), points.size());
            }
        } else {
            for (size_t i = 0; i < points.size(); ++i) {
                if (output == Output::kNonScaled) {
                    values[i] =
                        pdf ? e->GetNonScaledPDF(points[i]) : e->GetNonScaledDRPDF(points[i]);
                } else {
                    bytes[i] = pdf ? e->GetPDF(points[i]) : e->GetDRPDF(points[i]);
                }
            }
        }
        benchmark::DoNotOptimize(values.data());
        benchmark::DoNotOptimize(bytes.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * points.size()));
}

/// A whole 128³ sampling grid in bytes through the batch path, one run of 128 points per
/// row, as a renderer samples its probability grid.
void FullGrid(benchmark::State& state, int16_t index, ViewMode view) {
    std::unique_ptr<veltara::cElectron> e = veltara::modOrbitals::CreateElectron(index);
    const veltara::OrbInfo info = e->GetInfo();
    const double radius =
        view == ViewMode::PDF ? info.DefaultPDFAtomRadius : info.DefaultDRPDFAtomRadius;
    const double step = radius / 127.0;
    std::vector<COORDdoubleParams> row(128);
    std::vector<uint8_t> bytes(128 * 128 * 128);
    // The grid maximum maps to 255, as a renderer's setup arranges.
    std::vector<double> values(128);
    double max = 0;
    for (int z = 0; z < 128; ++z) {
        for (int y = 0; y < 128; ++y) {
            for (int x = 0; x < 128; ++x) {
                row[x] = {(x * step) * (x * step), (y * step) * (y * step),
                          (z * step) * (z * step)};
            }
            e->NonScaledBatch(view, row.data(), values.data(), 128);
            max = std::max(max, *std::max_element(values.begin(), values.end()));
        }
    }
    e->SetPDFScaleFactor(255.0 / max);
    e->SetDRPDFScaleFactor(255.0 / max);
    for (auto _ : state) {
        for (int z = 0; z < 128; ++z) {
            for (int y = 0; y < 128; ++y) {
                for (int x = 0; x < 128; ++x) {
                    row[x] = {(x * step) * (x * step), (y * step) * (y * step),
                              (z * step) * (z * step)};
                }
                e->ScaledBatch(view, row.data(), bytes.data() + (z * 128 + y) * 128, 128);
            }
        }
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * 128 * 128 * 128);
}

const int kRegistered = [] {
    for (int16_t index : {int16_t{24}, int16_t{28}}) {
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            benchmark::RegisterBenchmark(
                ("FullGrid/" + std::to_string(index) + (view == ViewMode::PDF ? "/PDF" : "/DRPDF"))
                    .c_str(),
                [=](benchmark::State& s) { FullGrid(s, index, view); })
                ->Unit(benchmark::kMillisecond);
        }
    }
    for (int16_t index = 0; index < veltara::modOrbitals::kOrbitalCount; ++index) {
        const std::string name = std::to_string(index);
        for (ViewMode view : {ViewMode::PDF, ViewMode::DRPDF}) {
            const std::string viewName = view == ViewMode::PDF ? "PDF" : "DRPDF";
            for (Output output : {Output::kNonScaled, Output::kByte}) {
                const std::string outName = output == Output::kByte ? "Byte" : "NonScaled";
                for (Path path : {Path::kPerPoint, Path::kBatch}) {
                    const std::string pathName = path == Path::kBatch ? "Batch" : "PerPoint";
                    benchmark::RegisterBenchmark(
                        ("Density/" + name + "/" + viewName + "/" + outName + "/" + pathName)
                            .c_str(),
                        [=](benchmark::State& s) { Run(s, index, view, path, output); })
                        ->Unit(benchmark::kMicrosecond);
                }
            }
        }
    }
    return 0;
}();

}  // namespace
