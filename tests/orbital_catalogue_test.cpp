// The orbital catalogue: index to class, every field of every catalogue entry, independence
// of the objects it makes.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <typeinfo>

#include "electron/averaged_shells.h"
#include "electron/d_orbitals.h"
#include "electron/f_orbitals.h"
#include "electron/modOrbitals.h"
#include "electron/p_orbitals.h"
#include "electron/s_orbitals.h"
#include "test_support.h"

namespace {

using veltara::OptFactor;
using veltara::OrbInfo;
using veltara::OrbitalType;
using veltara::modOrbitals::CreateElectron;

constexpr OrbitalType S = OrbitalType::SingleOrb;
constexpr OrbitalType A = OrbitalType::AverageOrbs;
constexpr OptFactor F8 = OptFactor::F8;
constexpr OptFactor F16xy = OptFactor::F16xy;
constexpr OptFactor F16yz = OptFactor::F16yz;
constexpr OptFactor F16xz = OptFactor::F16xz;
constexpr OptFactor F32 = OptFactor::F32;

struct Row {
    const char16_t* name;
    int16_t n, l, m;
    OrbitalType type;
    int16_t pdfRadius, drpdfRadius, pdfThreshold, drpdfThreshold;
    OptFactor pdfOpt, drpdfOpt;
    const std::type_info& cls;
};

// The catalogue as hosts know it, written out independently of the orbital classes.
const Row kCatalogue[40] = {
    {u"1S", 1, 0, 0, S, 2, 3, 30, 50, F32, F16xy, typeid(veltara::orb1S)},
    {u"2S", 2, 0, 0, S, 8, 10, 30, 50, F32, F16xy, typeid(veltara::orb2S)},
    {u"2Px", 2, 1, 1, S, 8, 10, 50, 50, F16yz, F8, typeid(veltara::orb2Px)},
    {u"2Py", 2, 1, -1, S, 8, 10, 50, 50, F16xz, F8, typeid(veltara::orb2Py)},
    {u"2Pz", 2, 1, 0, S, 8, 10, 50, 50, F16xy, F16xy, typeid(veltara::orb2Pz)},
    {u"3S", 3, 0, 0, S, 18, 20, 50, 50, F32, F16xy, typeid(veltara::orb3S)},
    {u"3Px", 3, 1, 1, S, 18, 20, 50, 50, F16yz, F8, typeid(veltara::orb3Px)},
    {u"3Py", 3, 1, -1, S, 18, 20, 50, 50, F16xz, F8, typeid(veltara::orb3Py)},
    {u"3Pz", 3, 1, 0, S, 18, 20, 50, 50, F16xy, F16xy, typeid(veltara::orb3Pz)},
    {u"3Dz\u00B2", 3, 2, 0, S, 18, 20, 30, 50, F16xy, F16xy, typeid(veltara::orb3Dz2)},
    {u"3Dx\u00B2-y\u00B2", 3, 2, 2, S, 18, 20, 50, 50, F8, F8, typeid(veltara::orb3Dx2_y2)},
    {u"3Dxy", 3, 2, -2, S, 18, 20, 50, 50, F16xy, F16xy, typeid(veltara::orb3Dxy)},
    {u"3Dxz", 3, 2, 1, S, 18, 20, 50, 50, F16xz, F8, typeid(veltara::orb3Dxz)},
    {u"3Dyz", 3, 2, -1, S, 18, 20, 50, 50, F16yz, F8, typeid(veltara::orb3Dyz)},
    {u"4S", 4, 0, 0, S, 28, 32, 50, 50, F32, F16xy, typeid(veltara::orb4S)},
    {u"4Px", 4, 1, 1, S, 28, 32, 50, 50, F16yz, F8, typeid(veltara::orb4Px)},
    {u"4Py", 4, 1, -1, S, 28, 32, 50, 50, F16xz, F8, typeid(veltara::orb4Py)},
    {u"4Pz", 4, 1, 0, S, 28, 32, 50, 50, F16xy, F16xy, typeid(veltara::orb4Pz)},
    {u"4Dz\u00B2", 4, 2, 0, S, 28, 32, 30, 50, F16xy, F16xy, typeid(veltara::orb4Dz2)},
    {u"4Dx\u00B2-y\u00B2", 4, 2, 2, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4Dx2_y2)},
    {u"4Dxy", 4, 2, -2, S, 28, 32, 50, 50, F16xy, F16xy, typeid(veltara::orb4Dxy)},
    {u"4Dxz", 4, 2, 1, S, 28, 32, 50, 50, F16xz, F8, typeid(veltara::orb4Dxz)},
    {u"4Dyz", 4, 2, -1, S, 28, 32, 50, 50, F16yz, F8, typeid(veltara::orb4Dyz)},
    {u"4Fz\u00B3", 4, 3, 0, S, 28, 32, 30, 50, F16xy, F16xy, typeid(veltara::orb4Fz3)},
    {u"4Fxz\u00B2", 4, 3, 1, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4Fxz2)},
    {u"4Fyz\u00B2", 4, 3, -1, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4Fyz2)},
    {u"4Fz(x\u00B2-y\u00B2)", 4, 3, 2, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4Fx2z_y2z)},
    {u"4Fxyz", 4, 3, -2, S, 28, 32, 50, 50, F32, F16xy, typeid(veltara::orb4Fxyz)},
    {u"4Fx(x\u00B2-3y\u00B2)", 4, 3, 3, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4Fx3_3xy2)},
    {u"4Fy(3x\u00B2-y\u00B2)", 4, 3, -3, S, 28, 32, 50, 50, F8, F8, typeid(veltara::orb4F3x2y_y3)},
    {u"1S", 1, 0, 0, A, 2, 3, 50, 50, F32, F32, typeid(veltara::orbAv1S)},
    {u"2S", 2, 0, 0, A, 8, 10, 30, 50, F32, F32, typeid(veltara::orbAv2S)},
    {u"2P", 2, 1, 0, A, 8, 10, 50, 50, F32, F32, typeid(veltara::orbAv2P)},
    {u"3S", 3, 0, 0, A, 18, 20, 50, 50, F32, F32, typeid(veltara::orbAv3S)},
    {u"3P", 3, 1, 0, A, 18, 20, 50, 50, F32, F32, typeid(veltara::orbAv3P)},
    {u"3D", 3, 2, 0, A, 18, 20, 50, 50, F32, F32, typeid(veltara::orbAv3D)},
    {u"4S", 4, 0, 0, A, 28, 32, 50, 50, F32, F32, typeid(veltara::orbAv4S)},
    {u"4P", 4, 1, 0, A, 28, 32, 50, 50, F32, F32, typeid(veltara::orbAv4P)},
    {u"4D", 4, 2, 0, A, 28, 32, 50, 50, F32, F32, typeid(veltara::orbAv4D)},
    {u"4F", 4, 3, 0, A, 28, 32, 50, 50, F32, F32, typeid(veltara::orbAv4F)},
};

TEST(modOrbitals, EveryIndexYieldsItsOwnClassWithItsCatalogueEntry) {
    for (int16_t i = 0; i < 40; ++i) {
        SCOPED_TRACE(i);
        const Row& row = kCatalogue[i];
        auto e = CreateElectron(i);
        ASSERT_NE(e, nullptr);
        EXPECT_TRUE(typeid(*e) == row.cls) << typeid(*e).name();
        const OrbInfo info = e->GetInfo();
        EXPECT_EQ(info.Name, std::u16string(row.name));
        EXPECT_EQ(info.n, row.n);
        EXPECT_EQ(info.l, row.l);
        EXPECT_EQ(info.M, row.m);
        EXPECT_EQ(info.OrbType, row.type);
        EXPECT_EQ(info.DefaultPDFAtomRadius, row.pdfRadius);
        EXPECT_EQ(info.DefaultDRPDFAtomRadius, row.drpdfRadius);
        EXPECT_EQ(info.DefaultPDFDotThreshold, row.pdfThreshold);
        EXPECT_EQ(info.DefaultDRPDFDotThreshold, row.drpdfThreshold);
        EXPECT_EQ(info.PDFOptFactor, row.pdfOpt);
        EXPECT_EQ(info.DRPDFOptFactor, row.drpdfOpt);
        EXPECT_EQ(e->GetInfo(), info) << "the description never changes";
    }
}

TEST(modOrbitals, ClassesAreAllDistinct) {
    for (int i = 0; i < 40; ++i) {
        for (int j = i + 1; j < 40; ++j) EXPECT_FALSE(kCatalogue[i].cls == kCatalogue[j].cls);
    }
}

TEST(modOrbitals, NamesCarryTheSuperscriptCharacters) {
    const std::u16string name = CreateElectron(26)->GetInfo().Name;
    ASSERT_EQ(name.size(), 10u);
    EXPECT_EQ(name[5], char16_t{0x00B2});
    EXPECT_EQ(name[8], char16_t{0x00B2});
    EXPECT_EQ(name[9], u')');
    EXPECT_EQ(CreateElectron(23)->GetInfo().Name[3], char16_t{0x00B3});
}

TEST(modOrbitals, IndexOutsideTheCatalogueGivesNoObjectAndNoError) {
    for (int16_t i : {int16_t{-1}, int16_t{40}, int16_t{41}, int16_t{-32768}, int16_t{32767}}) {
        EXPECT_EQ(CreateElectron(i), nullptr) << i;
    }
}

TEST(modOrbitals, TwoObjectsOfOneIndexAreIndependent) {
    const veltara::COORDdoubleParams nucleus{0, 0, 0};
    auto a = CreateElectron(0);
    auto b = CreateElectron(0);
    ASSERT_NE(a.get(), b.get());
    a->SetPDFScaleFactor(200.0);
    a->SetDRPDFScaleFactor(7.0);
    EXPECT_EQ(a->GetPDF(nucleus), 200);
    EXPECT_EQ(b->GetPDF(nucleus), 0);
    EXPECT_EQ(b->GetDRPDF({1, 0, 0}), 0);
    EXPECT_NE(a->GetDRPDF({1, 0, 0}), 0);
}

TEST(modOrbitals, AveragedShellsDifferFromSingleOrbitalsOnlyByTypeAndDefaults) {
    // Records 0 and 30 share a name; the type tells them apart.
    const OrbInfo single = CreateElectron(0)->GetInfo();
    const OrbInfo averaged = CreateElectron(30)->GetInfo();
    EXPECT_EQ(single.Name, averaged.Name);
    EXPECT_EQ(single.OrbType, OrbitalType::SingleOrb);
    EXPECT_EQ(averaged.OrbType, OrbitalType::AverageOrbs);
}

}  // namespace
