// The orbital collection's slots and errors, the untyped index, and the main class.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "about/about_box.h"
#include "engine/cOrbitalCol.h"
#include "engine/cVeltara.h"
#include "render/orbital_renderer.h"
#include "renderer_test_access.h"
#include "test_support.h"

namespace veltara {

// White-box access to the collection's slots.
struct OrbitalColTestAccess {
    static std::vector<std::unique_ptr<cOrbital>>& Slots(cOrbitalCol& c) { return c.mOrbitals; }
    static int16_t& NextOrbIndex(cOrbitalCol& c) { return c.mNextOrbIndex; }
};

namespace {

using CA = OrbitalColTestAccess;

// A small, fast orbital: 1S in a cube of radius 2.
OrbitalSetup Small(ViewMode view = ViewMode::PDF) { return {2, 500, 30, 0, 0, view}; }

// Which slots hold a renderer, as a string of '#' (taken) and '.' (empty).
std::string Occupancy(const cOrbitalCol& c) {
    std::string s;
    for (int16_t i = 0; i <= c.UBound(); ++i) {
        try {
            c.Orbital(i);
            s += '#';
        } catch (const veltara::Error&) {
            s += '.';
        }
    }
    return s;
}

// A renderer that does nothing, to fill slots cheaply.
class IdleRenderer : public cOrbital {
  public:
    void Setup(const OrbitalSetup&) override {}
    OrbitalStats GetStats() override { return {}; }
    int32_t ReFillDotMatrix(const int32_t&, const uint8_t&) override { return 0; }
    RenderDCinfo GetRender(const RenderRequest&) override { return {}; }
    const OrbitalSetup& SetupRecord() const override { return mSetup; }
    std::span<const PointArray> Dots() const override { return {}; }
    std::span<const uint8_t> ProbMatrix() const override { return {}; }

  private:
    OrbitalSetup mSetup{};
};

TEST(cOrbitalCol, SlotSequences) {
    vt_test::FixedClock clock(1000000000);
    // Each step: 'A' = Add (expected result), 'D' = Delete(index); then the slots afterwards.
    struct Step {
        char op;
        int16_t value;
        const char* slots;
    };
    struct Case {
        const char* name;
        std::vector<Step> steps;
    };
    const std::vector<Case> cases = {
        {"adds grow one slot at a time", {{'A', 0, "#"}, {'A', 1, "##"}, {'A', 2, "###"}}},
        {"delete inside keeps the bounds, the hole is reused",
         {{'A', 0, "#"}, {'A', 1, "##"}, {'A', 2, "###"}, {'D', 1, "#.#"}, {'A', 1, "###"}}},
        {"delete of the last slot shrinks",
         {{'A', 0, "#"}, {'A', 1, "##"}, {'A', 2, "###"}, {'D', 2, "##"}, {'A', 2, "###"}}},
        {"a trailing empty slot stays",
         {{'A', 0, "#"},
          {'A', 1, "##"},
          {'A', 2, "###"},
          {'D', 1, "#.#"},
          {'D', 2, "#."},
          {'A', 1, "##"},
          {'A', 2, "###"}}},
        {"slot 0 is never removed", {{'A', 0, "#"}, {'D', 0, "."}, {'D', 0, "."}, {'A', 0, "#"}}},
        {"lowest hole first",
         {{'A', 0, "#"},
          {'A', 1, "##"},
          {'A', 2, "###"},
          {'A', 3, "####"},
          {'D', 2, "##.#"},
          {'D', 0, ".#.#"},
          {'A', 0, "##.#"},
          {'A', 2, "####"},
          {'A', 4, "#####"}}},
    };
    for (const Case& c : cases) {
        cOrbitalCol col;
        EXPECT_EQ(Occupancy(col), ".");
        for (const Step& s : c.steps) {
            if (s.op == 'A') {
                EXPECT_EQ(col.Add(Small()), s.value) << c.name;
            } else {
                col.Delete(s.value);
            }
            EXPECT_EQ(Occupancy(col), s.slots) << c.name << " after " << s.op << s.value;
        }
    }
}

TEST(cOrbitalCol, IndexErrors) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalCol col;
    RenderRequest req;
    // A new collection: slot 0 exists but is empty, slot 1 is out of bounds.
    EXPECT_VT_ERROR(col.GetRender(0, req), 91);
    EXPECT_VT_ERROR(col.GetStats(0), 91);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(int16_t{0}, 10, 100), 91);
    for (int16_t bad : {int16_t{1}, int16_t{-1}, int16_t{32767}, int16_t{-32768}}) {
        EXPECT_VT_ERROR(col.GetRender(bad, req), 9);
        EXPECT_VT_ERROR(col.GetStats(bad), 9);
        EXPECT_VT_ERROR(col.ReFillDotMatrix(bad, 10, 100), 9);
        EXPECT_VT_ERROR(col.Delete(bad), 9);
        EXPECT_VT_ERROR(col.Orbital(bad), 9);
    }
    EXPECT_VT_ERROR(col.ReFillDotMatrix(int32_t{70000}, 10, 100), 9);
    EXPECT_EQ(Occupancy(col), ".");
    // After a Delete an index within bounds reaches an empty slot.
    EXPECT_EQ(col.Add(Small()), 0);
    EXPECT_EQ(col.Add(Small()), 1);
    col.Delete(0);
    EXPECT_VT_ERROR(col.GetStats(0), 91);
    EXPECT_NO_THROW(col.GetStats(1));
    EXPECT_EQ(Occupancy(col), ".#");
}

TEST(cOrbitalCol, AddWithAnUnknownViewGrowsButCreatesNothing) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalCol col;
    EXPECT_EQ(col.Add(Small()), 0);
    OrbitalSetup bad = Small();
    bad.OrbitalViewMode = static_cast<ViewMode>(2);
    EXPECT_VT_ERROR(col.Add(bad), 91);
    EXPECT_EQ(col.UBound(), 1);
    EXPECT_EQ(Occupancy(col), "#.");
    EXPECT_EQ(col.NextOrbIndex(), 1);
    EXPECT_EQ(col.Add(Small(ViewMode::DRPDF)), 1);
}

TEST(cOrbitalCol, SetupErrorLeavesTheRendererInItsSlot) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalCol col;
    OrbitalSetup bad = Small();
    bad.OrbitalIndex = 40;  // no such orbital: 91 from the setup
    EXPECT_VT_ERROR(col.Add(bad), 91);
    EXPECT_EQ(Occupancy(col), "#");
    EXPECT_EQ(col.NextOrbIndex(), 0);  // not recomputed
    // The next Add takes the same slot again.
    EXPECT_EQ(col.Add(Small()), 0);
    EXPECT_EQ(col.NextOrbIndex(), 1);
}

TEST(cOrbitalCol, NoIndexLeftAfterSlot32767Raises6WithTheOrbitalInPlace) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalCol col;
    auto& slots = CA::Slots(col);
    slots.clear();
    for (int i = 0; i < 32767; ++i) slots.push_back(std::make_unique<IdleRenderer>());
    CA::NextOrbIndex(col) = 32767;
    EXPECT_VT_ERROR(col.Add(Small()), 6);
    EXPECT_EQ(col.UBound(), 32767);
    EXPECT_GT(col.Orbital(32767).Dots().size(), 100u);  // set up in full
    EXPECT_EQ(col.NextOrbIndex(), 32767);
    // Deleting the last orbital frees an index again.
    col.Delete(32767);
    EXPECT_EQ(col.NextOrbIndex(), 32767);
    EXPECT_EQ(col.UBound(), 32766);
}

TEST(cOrbitalCol, GetStatsReturnsTheRenderersRecord) {
    vt_test::FixedClock clock(1000000000);
    cOrbitalCol col;
    col.Add(Small());
    col.Add(Small(ViewMode::DRPDF));
    const OrbitalStats a = col.GetStats(0);
    const OrbitalStats b = col.GetStats(1);
    EXPECT_EQ(a.TotalSamples, 2097152);
    EXPECT_EQ(a.DotTotal, static_cast<int32_t>(col.Orbital(0).Dots().size()));
    EXPECT_EQ(b.DotTotal, static_cast<int32_t>(col.Orbital(1).Dots().size()));
    EXPECT_EQ(a.DotTarget, 500);
    EXPECT_EQ(a.FramesRendered, 0);
    // Whatever the renderer counted comes back as it stands.
    auto& renderer =
        const_cast<OrbitalRenderer&>(dynamic_cast<const OrbitalRenderer&>(col.Orbital(0)));
    RendererTestAccess::Stats(renderer).FramesRendered = 2147483647;
    RendererTestAccess::Stats(renderer).Mode = 201;
    EXPECT_EQ(col.GetStats(0).FramesRendered, 2147483647);
    EXPECT_EQ(col.GetStats(0).Mode, 201);
    // The two views of 1S differ in their histograms.
    EXPECT_FALSE(
        std::equal(std::begin(a.ProbFreqs), std::end(a.ProbFreqs), std::begin(b.ProbFreqs)));
}

TEST(cOrbitalCol, ReFillDotMatrixIndexConvertsToTheNearestEvenInteger) {
    vt_test::FixedClock clock(1000000000);
    struct Case {
        OrbitalIndexValue index;
        int32_t slot;  // the slot reached, -1 for an error
        int32_t error;
    };
    const std::vector<Case> cases = {
        {int16_t{2}, 2, 0},
        {int32_t{1}, 1, 0},
        {1.5, 2, 0},
        {2.5, 2, 0},
        {0.5, 0, 0},
        {-0.5, 0, 0},
        {2.49999, 2, 0},
        {std::string("3"), 3, 0},
        {std::string(" 2.5 "), 2, 0},
        {std::string("+1.5"), 2, 0},
        {std::string("1e0"), 1, 0},
        {std::string("abc"), -1, 13},
        {std::string(""), -1, 13},
        {std::string("   "), -1, 13},
        {std::string("2x"), -1, 13},
        {std::string("0x1"), -1, 13},
        {std::string("1 2"), -1, 13},
        {std::string("nan"), -1, 13},
        {4.5, -1, 9},  // 4 is beyond the last slot
        {-1.0, -1, 9},
        {3e9, -1, 6},  // beyond 32 bits
        {std::string("1e300"), -1, 6},
        {std::string("1e999"), -1, 6},
    };
    cOrbitalCol col;
    for (int i = 0; i < 4; ++i) col.Add(Small());
    for (const Case& c : cases) {
        const int16_t target = static_cast<int16_t>(600 + 10 * c.slot);
        if (c.error != 0) {
            EXPECT_VT_ERROR(col.ReFillDotMatrix(c.index, 40, target), c.error);
            continue;
        }
        // Threshold and target reach the renderer by meaning, whatever the argument order.
        EXPECT_EQ(col.ReFillDotMatrix(c.index, 40, target), 0);
        EXPECT_EQ(col.Orbital(static_cast<int16_t>(c.slot)).SetupRecord().DotTarget, target);
        EXPECT_EQ(col.Orbital(static_cast<int16_t>(c.slot)).SetupRecord().DotThreshold, 40);
    }
    // The conversion happens before anything else: an empty slot is not even looked at.
    col.Delete(1);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(std::string("one"), 30, 700), 13);
    EXPECT_VT_ERROR(col.ReFillDotMatrix(1.0, 30, 700), 91);
}

TEST(cVeltara, OrbitalsCreatedOnFirstUseAndReplaceable) {
    vt_test::FixedClock clock(1000000000);
    cVeltara v;
    const std::shared_ptr<cOrbitalCol> first = v.Orbitals();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(v.Orbitals(), first);
    EXPECT_EQ(first->Add(Small()), 0);
    auto other = std::make_shared<cOrbitalCol>();
    v.Orbitals(other);
    EXPECT_EQ(v.Orbitals(), other);
    EXPECT_EQ(v.Orbitals()->Add(Small()), 0);
    v.Orbitals(nullptr);
    const std::shared_ptr<cOrbitalCol> fresh = v.Orbitals();
    ASSERT_NE(fresh, nullptr);
    EXPECT_NE(fresh, other);
    EXPECT_EQ(Occupancy(*fresh), ".");
    EXPECT_EQ(Occupancy(*first), "#");  // a host's own reference keeps it alive
}

TEST(cVeltara, EnumOrbitalsListsTheCatalogue) {
    cVeltara v;
    const std::vector<OrbInfo> a = v.EnumOrbitals();
    ASSERT_EQ(a.size(), 40u);
    EXPECT_EQ(a[0].Name, u"1S");
    EXPECT_EQ(a[0].OrbType, OrbitalType::SingleOrb);
    EXPECT_EQ(a[30].Name, u"1S");
    EXPECT_EQ(a[30].OrbType, OrbitalType::AverageOrbs);
    EXPECT_EQ(a[9].Name, u"3Dz\u00b2");
    EXPECT_EQ(v.HighestN(), 4);
    EXPECT_EQ(v.EnumOrbitals(), a);  // built afresh, the same again
}

class RecordingPresenter : public AboutPresenter {
  public:
    void ShowModal(const AboutBox& box) override {
        calls.push_back("show");
        shown = box;
    }
    void SetTopMost(bool OnTop) override { calls.push_back(OnTop ? "topmost" : "not topmost"); }
    std::vector<std::string> calls;
    AboutBox shown;
};

TEST(cVeltara, AboutShowsModallyThenMakesTopMost) {
    auto presenter = std::make_shared<RecordingPresenter>();
    const auto previous = SetAboutPresenter(presenter);
    cVeltara v;
    v.About();
    EXPECT_EQ(presenter->calls, (std::vector<std::string>{"show", "topmost"}));
    EXPECT_EQ(presenter->shown.Caption, "About: Corvane");
    EXPECT_EQ(presenter->shown.FrameCaption, "Warning:");
    EXPECT_EQ(presenter->shown.Label,
              "Corvane Pro 2002 - Veltara core component. Have a nice day.");
    EXPECT_FALSE(presenter->shown.YearsLabel.empty());
    // Without a presenter nothing is shown and nothing fails.
    SetAboutPresenter(nullptr);
    EXPECT_NO_THROW(v.About());
    EXPECT_EQ(presenter->calls.size(), 2u);
    SetAboutPresenter(previous);
}

}  // namespace
}  // namespace veltara
