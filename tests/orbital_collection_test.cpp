// The orbital collection's slots, indices and errors, and the main class, with real orbitals.
#include <algorithm>
#include <string>

#include "about/about_box.h"
#include "electron/catalogue.h"
#include "engine/cVeltara.h"
#include "picture_test_support.h"

namespace {

using namespace veltara;

// A small, fast orbital: 1S in a cube of radius 2.
OrbitalSetup Small(ViewMode view = ViewMode::PDF) { return {2, 500, 30, 0, 0, view}; }

// Which slots hold a renderer, as a string of '#' (taken) and '.' (empty).
std::string Occupancy(const cOrbitalCol& c) {
    std::string s;
    for (int16_t i = 0; i <= c.UBound(); ++i) {
        try {
            c.Orbital(i);
            s += '#';
        } catch (const Error& e) {
            s += e.number() == 91 ? '.' : '?';
        }
    }
    return s;
}

TEST(cOrbitalCol, SlotSequences) {
    vt_test::FixedClock clock(100000);
    // 'A' Add (the index expected), 'V' Add of an unknown view, 'O' Add of the first index past the catalogue (both
    // raise 91), 'D' Delete(index); then the slots afterwards.
    struct Step {
        char op;
        int16_t value;
        const char* slots;
    };
    const std::vector<std::vector<Step>> cases = {
        {{'A', 0, "#"}, {'A', 1, "##"}, {'D', 1, "#"}, {'A', 1, "##"}},
        {{'A', 0, "#"},
         {'A', 1, "##"},
         {'A', 2, "###"},
         {'D', 1, "#.#"},
         {'D', 2, "#."},
         {'A', 1, "##"}},
        {{'A', 0, "#"}, {'D', 0, "."}, {'D', 0, "."}, {'A', 0, "#"}, {'A', 1, "##"}},
        {{'A', 0, "#"},
         {'A', 1, "##"},
         {'A', 2, "###"},
         {'D', 2, "##"},
         {'D', 0, ".#"},
         {'A', 0, "##"}},
        {{'A', 0, "#"}, {'V', 1, "#."}, {'A', 1, "##"}},
        {{'O', 0, "#"}, {'A', 0, "#"}, {'A', 1, "##"}},  // the failed orbital's slot is reused
    };
    for (const auto& steps : cases) {
        cOrbitalCol col;
        EXPECT_EQ(Occupancy(col), ".");
        for (const Step& s : steps) {
            OrbitalSetup setup = Small();
            if (s.op == 'V') setup.OrbitalViewMode = static_cast<ViewMode>(2);
            if (s.op == 'O') setup.OrbitalIndex = kCatalogueSize;
            if (s.op == 'D') {
                col.Delete(s.value);
            } else if (s.op == 'A') {
                EXPECT_EQ(col.Add(setup), s.value);
            } else {
                EXPECT_VT_ERROR(col.Add(setup), 91);
            }
            EXPECT_EQ(Occupancy(col), s.slots) << s.op << s.value;
        }
    }
}

TEST(cOrbitalCol, IndexErrors) {
    vt_test::FixedClock clock(100000);
    cOrbitalCol col;
    const RenderRequest q = vt_test::Request(RenderMode::Orthographic, RenderSize::Nano);
    // A new collection: slot 0 exists but is empty.
    EXPECT_VT_ERROR(col.GetRender(0, q), 91);
    EXPECT_VT_ERROR(col.GetStats(0), 91);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(int16_t{0}, 10, 100), 91);
    for (const int16_t bad : {int16_t{1}, int16_t{-1}, int16_t{-32768}}) {
        EXPECT_VT_ERROR(col.GetRender(bad, q), 9);
        EXPECT_VT_ERROR(col.GetStats(bad), 9);
        EXPECT_VT_ERROR(col.ReFillDotMatrix(bad, 10, 100), 9);
        EXPECT_VT_ERROR(col.Delete(bad), 9);
        EXPECT_VT_ERROR(col.Orbital(bad), 9);
    }
    // The untyped index of ReFillDotMatrix rounds half to even; the conversion comes first.
    for (int i = 0; i < 4; ++i) col.Add(Small());
    struct Case {
        OrbitalIndexValue index;
        int32_t slotOrError;  // slot reached, or minus the error number
    };
    const Case cases[] = {{int16_t{2}, 2},
                          {int32_t{1}, 1},
                          {1.5, 2},
                          {2.5, 2},
                          {-0.5, 0},
                          {std::string(" 2.5 "), 2},
                          {std::string("+1e0"), 1},
                          {std::string("abc"), -13},
                          {std::string(""), -13},
                          {std::string("0x1"), -13},
                          {std::string("1 2"), -13},
                          {4.5, -9},
                          {3e9, -6},
                          {std::string("1e999"), -6}};
    for (const Case& c : cases) {
        const int16_t target = static_cast<int16_t>(600 + 10 * c.slotOrError);
        if (c.slotOrError < 0) {
            EXPECT_VT_ERROR(col.ReFillDotMatrix(c.index, 40, target), -c.slotOrError);
            continue;
        }
        // Threshold and target reach the renderer by meaning, whatever the argument order.
        EXPECT_EQ(col.ReFillDotMatrix(c.index, 40, target), 0);
        const OrbitalSetup& reached =
            col.Orbital(static_cast<int16_t>(c.slotOrError)).SetupRecord();
        EXPECT_EQ(std::pair(reached.DotTarget, reached.DotThreshold),
                  std::pair(target, uint8_t{40}));
    }
    col.Delete(1);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(std::string("one"), 30, 700), 13);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(1.0, 30, 700), 91);
}

TEST(cVeltara, OrbitalsCatalogueAndAbout) {
    vt_test::FixedClock clock(100000);
    cVeltara v;
    const std::shared_ptr<cOrbitalCol> first = v.Orbitals();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(v.Orbitals(), first);  // created on first use, then the same
    EXPECT_EQ(first->Add(Small()), 0);
    v.Orbitals(nullptr);  // a host may drop it: a fresh one on the next use
    EXPECT_NE(v.Orbitals(), first);
    EXPECT_EQ(Occupancy(*v.Orbitals()), ".");
    EXPECT_EQ(Occupancy(*first), "#");

    const std::vector<OrbInfo> a = v.EnumOrbitals();
    ASSERT_EQ(a.size(), size_t{kCatalogueSize});
    EXPECT_EQ(a[9].Name, u"3Dz\u00b2");
    EXPECT_EQ(a[30].OrbType, OrbitalType::AverageOrbs);
    int16_t highest = 0;
    for (const OrbInfo& info : a) highest = std::max(highest, info.n);
    EXPECT_EQ(v.HighestN(), highest);

    struct Presenter : AboutPresenter {
        void ShowModal(const AboutBox& box) override { calls += "show:" + box.Caption + ";"; }
        void SetTopMost(bool OnTop) override { calls += OnTop ? "topmost;" : "not;"; }
        std::string calls;
    };
    auto presenter = std::make_shared<Presenter>();
    const auto previous = SetAboutPresenter(presenter);
    v.About();
    EXPECT_EQ(presenter->calls, "show:About: Corvane;topmost;");
    SetAboutPresenter(previous);
}

}  // namespace
