// The veltara command end to end: outputs, JSON against schemas, pictures, exit codes and the
// messages of bad arguments.
#include <png.h>

#include <cstring>

#include "cli_support.h"

using vt_cli_test::Lines;
using vt_cli_test::LoadSchema;
using vt_cli_test::PngSize;
using vt_cli_test::RunVeltara;
using vt_cli_test::ScratchDir;

namespace {

/// Every test fixes the clock so seeds, and so the dots, repeat.
const std::string kClock = " --clock 1000000";

/// The RGB pixels of a PNG file (rows top first).
std::vector<uint8_t> ReadRgb(const std::filesystem::path& path, int& width, int& height) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    std::vector<uint8_t> rgb;
    if (png_image_begin_read_from_file(&image, path.c_str()) == 0) return rgb;
    image.format = PNG_FORMAT_RGB;
    rgb.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr) == 0) rgb.clear();
    width = static_cast<int>(image.width);
    height = static_cast<int>(image.height);
    return rgb;
}

}  // namespace

TEST(VeltaraList, TextHasOneRowPerOrbitalWithCommandNames) {
    const auto o = RunVeltara("list");
    ASSERT_EQ(o.exitCode, 0) << o.err;
    const auto lines = Lines(o.out);
    ASSERT_EQ(lines.size(), 41u);  // a header and 40 rows
    EXPECT_NE(lines[1 + 9].find("3Dz\xC2\xB2"), std::string::npos) << lines[10];
    EXPECT_NE(lines[1 + 30].find("av1S"), std::string::npos) << lines[31];
    EXPECT_NE(lines[1 + 30].find("average"), std::string::npos) << lines[31];
}

TEST(VeltaraList, JsonFollowsSchemaAndCatalogue) {
    const auto o = RunVeltara("list --json");
    ASSERT_EQ(o.exitCode, 0) << o.err;
    const nlohmann::json list = nlohmann::json::parse(o.out);
    const auto errors = LoadSchema("list.schema.json").Check(list);
    EXPECT_TRUE(errors.empty()) << errors.front();

    // Rows of the catalogue table, including its deliberate irregularities.
    struct Row {
        int index;
        const char* name;
        const char* type;
        int pdfRadius, drpdfRadius, pdfThreshold, drpdfThreshold;
        const char* pdfFactor;
        const char* drpdfFactor;
    };
    const Row rows[] = {
        {0, "1S", "single", 2, 3, 30, 50, "F32", "F16xy"},
        {9, "3Dz\xC2\xB2", "single", 18, 20, 30, 50, "F16xy", "F16xy"},
        {14, "4S", "single", 28, 32, 50, 50, "F32", "F16xy"},
        {27, "4Fxyz", "single", 28, 32, 50, 50, "F32", "F16xy"},
        {28, "4Fx(x\xC2\xB2-3y\xC2\xB2)", "single", 28, 32, 50, 50, "F8", "F8"},
        {30, "1S", "average", 2, 3, 50, 50, "F32", "F32"},
        {31, "2S", "average", 8, 10, 30, 50, "F32", "F32"},
    };
    for (const Row& r : rows) {
        const auto& e = list.at(static_cast<size_t>(r.index));
        EXPECT_EQ(e["index"], r.index);
        EXPECT_EQ(e["name"], r.name) << r.index;
        EXPECT_EQ(e["type"], r.type) << r.index;
        EXPECT_EQ(e["pdf"]["radius"], r.pdfRadius) << r.index;
        EXPECT_EQ(e["drpdf"]["radius"], r.drpdfRadius) << r.index;
        EXPECT_EQ(e["pdf"]["threshold"], r.pdfThreshold) << r.index;
        EXPECT_EQ(e["drpdf"]["threshold"], r.drpdfThreshold) << r.index;
        EXPECT_EQ(e["pdf"]["opt_factor"], r.pdfFactor) << r.index;
        EXPECT_EQ(e["drpdf"]["opt_factor"], r.drpdfFactor) << r.index;
    }
}

TEST(VeltaraList, SchemaCheckerRejectsBrokenDocuments) {
    // The checker itself must be able to fail: each broken copy gives at least one message.
    const auto o = RunVeltara("list --json");
    ASSERT_EQ(o.exitCode, 0);
    const nlohmann::json good = nlohmann::json::parse(o.out);
    const auto checker = LoadSchema("list.schema.json");
    std::vector<nlohmann::json> broken(5, good);
    broken[0][3].erase("name");
    broken[1][3]["type"] = "mixed";
    broken[2][3]["pdf"]["opt_factor"] = "F64";
    broken[3].erase(broken[3].begin());
    broken[4][0]["extra"] = 1;
    for (size_t i = 0; i < broken.size(); ++i) EXPECT_FALSE(checker.Check(broken[i]).empty()) << i;
}

TEST(VeltaraStats, JsonFollowsSchemaWithTheSetupGiven) {
    struct Case {
        std::string args;
        int index, radius, threshold, dots;
        const char* view;
    };
    const Case cases[] = {
        {"2Px --dots 5000", 2, 8, 50, 5000, "pdf"},
        {"3S --view drpdf --dots 300", 5, 20, 50, 300, "drpdf"},
        {"av2S --radius 12 --threshold 40 --dots 700", 31, 12, 40, 700, "pdf"},
    };
    const auto checker = LoadSchema("stats.schema.json");
    for (const Case& c : cases) {
        const auto o = RunVeltara("stats " + c.args + " --json" + kClock);
        ASSERT_EQ(o.exitCode, 0) << c.args << ": " << o.err;
        const nlohmann::json s = nlohmann::json::parse(o.out);
        const auto errors = checker.Check(s);
        EXPECT_TRUE(errors.empty()) << c.args << ": " << errors.front();
        EXPECT_EQ(s["orbital"]["index"], c.index) << c.args;
        EXPECT_EQ(s["orbital"]["AtomRadius"], c.radius) << c.args;
        EXPECT_EQ(s["orbital"]["DotThreshold"], c.threshold) << c.args;
        EXPECT_EQ(s["orbital"]["view"], c.view) << c.args;
        EXPECT_EQ(s["DotTarget"], c.dots) << c.args;
        EXPECT_EQ(s["TotalSamples"], 128 * 128 * 128) << c.args;
        EXPECT_EQ(s["FramesRendered"], 0) << c.args;
    }
}

TEST(VeltaraStats, TextNamesEveryStatistic) {
    const auto o = RunVeltara("stats 1S --dots 500" + kClock);
    ASSERT_EQ(o.exitCode, 0) << o.err;
    for (const char* label : {"frames rendered", "total samples    2097152", "mode", "calc time",
                              "dot target       500", "dot total", "dot time"}) {
        EXPECT_NE(o.out.find(label), std::string::npos) << label;
    }
}

TEST(VeltaraStats, PlotIsAChartOfTheDocumentedSize) {
    // 24 + 256 levels x 2 + 16 pixels wide, 16 + 256 + 24 high.
    for (const std::string scale : {"", " --log"}) {
        const auto file = ScratchDir() / "plot.png";
        std::filesystem::remove(file);
        const auto o = RunVeltara("stats 2Pz --dots 500 --plot " + file.string() + scale + kClock);
        ASSERT_EQ(o.exitCode, 0) << o.err;
        EXPECT_EQ(PngSize(file), std::make_pair(552, 296)) << scale;
    }
}

TEST(VeltaraRender, OrbitalNamesResolve) {
    struct Case {
        const char* spelling;
        int index;
    };
    const Case cases[] = {
        {"9", 9},
        {"3Dz2", 9},
        {"3dz\xC2\xB2", 9},
        {"3DZ2", 9},
        {"'4Fz(x2-y2)'", 26},
        {"'4fz(x\xC2\xB2-y\xC2\xB2)'", 26},
        {"3Dx2_y2", 10},
        {"2S", 1},
        {"av2S", 31},
        {"avg2s", 31},
        {"AV1S", 30},
        {"3D", 35},
        {"av4F", 39},
        {"4Fz3", 23},
    };
    for (const Case& c : cases) {
        const auto o =
            RunVeltara(std::string("stats ") + c.spelling + " --dots 50 --json" + kClock);
        ASSERT_EQ(o.exitCode, 0) << c.spelling << ": " << o.err;
        EXPECT_EQ(nlohmann::json::parse(o.out)["orbital"]["index"], c.index) << c.spelling;
    }
}

TEST(VeltaraRender, WritesPngOfTheRequestedSize) {
    struct Case {
        std::string args;
        int edge;
    };
    const Case cases[] = {
        {"2Px", 375},
        {"2Px --size nano", 127},
        {"2Px --size 128", 127},
        {"2Px --size 375 --mode perspective --view drpdf", 375},
        {"2Px --mode anaglyph --size nano --stereo 10", 127},
        {"2Px --mode volumetric --quality 5 --preview", 375},
        {"2Px --mode volumetric --transector --coloured-transector", 375},
        {"2Px --mode transect --transect-dir z --transect -10 --prob-dots --prob-trans", 375},
        {"av3D --prob-dots --theta 45 --phi -30 --camera 300 --plane 150", 375},
    };
    for (const Case& c : cases) {
        const auto file = ScratchDir() / "render.png";
        std::filesystem::remove(file);
        const auto o =
            RunVeltara("render " + c.args + " --dots 2000 --out " + file.string() + kClock);
        ASSERT_EQ(o.exitCode, 0) << c.args << ": " << o.err;
        EXPECT_EQ(PngSize(file), std::make_pair(c.edge, c.edge)) << c.args;
    }
}

TEST(VeltaraRender, LobesLieAlongTheirAxisWithoutRotation) {
    // With both angles 0 the screen column is x and the row is z: 2Pz's lobes fill the upper
    // and lower quarters of the picture, 2Px's the left and right ones.
    struct Case {
        const char* orbital;
        bool vertical;
    };
    for (const Case c : {Case{"2Pz", true}, Case{"2Px", false}}) {
        const auto file = ScratchDir() / "lobes.png";
        const auto o = RunVeltara(std::string("render ") + c.orbital + " --theta 0 --phi 0 --out " +
                                  file.string() + kClock);
        ASSERT_EQ(o.exitCode, 0) << o.err;
        int w = 0, h = 0;
        const auto rgb = ReadRgb(file, w, h);
        ASSERT_EQ(rgb.size(), 375u * 375u * 3u);
        long upDown = 0, leftRight = 0;
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const uint8_t* p = &rgb[(static_cast<size_t>(y) * w + x) * 3];
                if (p[0] + p[1] + p[2] == 0) continue;
                (std::abs(y - h / 2) > std::abs(x - w / 2) ? upDown : leftRight) += 1;
            }
        }
        if (c.vertical) {
            EXPECT_GT(upDown, 3 * leftRight) << c.orbital;
        } else {
            EXPECT_GT(leftRight, 3 * upDown) << c.orbital;
        }
    }
}

TEST(VeltaraRender, AllWritesFortyPicturesAndAContactSheet) {
    const auto dir = ScratchDir() / "gallery";
    std::filesystem::remove_all(dir);
    const auto o = RunVeltara("render --all --dots 500 --out-dir " + dir.string() + kClock);
    ASSERT_EQ(o.exitCode, 0) << o.err;
    int pictures = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir)) {
        if (entry.path().filename() == "contact-sheet.png") continue;
        EXPECT_EQ(PngSize(entry.path()), std::make_pair(375, 375)) << entry.path();
        ++pictures;
    }
    EXPECT_EQ(pictures, 40);
    EXPECT_TRUE(std::filesystem::exists(dir / "09-3Dz2.png"));
    EXPECT_TRUE(std::filesystem::exists(dir / "31-av2S.png"));
    // 8 columns and 5 rows of 128-pixel cells.
    EXPECT_EQ(PngSize(dir / "contact-sheet.png"), std::make_pair(8 * 128, 5 * 128));
}

TEST(VeltaraAbout, PrintsTheAboutBox) {
    const auto o = RunVeltara("about");
    ASSERT_EQ(o.exitCode, 0) << o.err;
    EXPECT_NE(o.out.find("About: Corvane"), std::string::npos);
    EXPECT_NE(o.out.find("Warning:"), std::string::npos);
    EXPECT_NE(o.out.find("Corvane Pro 2002 - Veltara core component. Have a nice day."),
              std::string::npos);
}

TEST(VeltaraHelp, RenderHelpExplainsTheAverageSpelling) {
    const auto o = RunVeltara("render --help");
    EXPECT_EQ(o.exitCode, 0);
    EXPECT_NE(o.out.find("av2S"), std::string::npos);
    EXPECT_NE(o.out.find("--transect-dir"), std::string::npos);
}

TEST(VeltaraErrors, BadArgumentsExit2WithOneLineNamingThem) {
    struct Case {
        std::string args;
        const char* mention;  // what the message must name
    };
    const Case cases[] = {
        {"render 1S --view foo", "--view"},
        {"render 1S --mode fisheye", "--mode"},
        {"render 1S --size 200", "--size"},
        {"render 1S --transect-dir w", "--transect-dir"},
        {"render 1S --quality 4", "--quality"},
        {"render 1S --quality 11", "--quality"},
        {"render 1S --transect 128", "--transect"},
        {"render 1S --stereo 0", "--stereo"},
        {"render 1S --camera 40000", "--camera"},
        {"render 1S --threshold 256", "--threshold"},
        {"render 1S --radius 0", "--radius"},
        {"render 1S --dots 40000", "--dots"},
        {"render 1S --clock 5", "--clock"},
        {"render 1S --theta abc", "--theta"},
        {"render 3Dz3", "3Dz\xC2\xB2"},  // an unknown name lists close matches
        {"render av5S", "av"},
        {"render 40", "0..39"},
        {"render", "ORBITAL"},
        {"render 1S --all", "ORBITAL"},
        {"stats", "ORBITAL"},
        {"export 1S", "--cube"},
        {"export 1S --cube x.cube --stride 0", "--stride"},
        {"render 1S --no-such-option", "--no-such-option"},
    };
    for (const Case& c : cases) {
        const auto o = RunVeltara(c.args + kClock);
        EXPECT_EQ(o.exitCode, 2) << c.args;
        const auto lines = Lines(o.err);
        ASSERT_EQ(lines.size(), 1u) << c.args << ": " << o.err;
        EXPECT_NE(lines[0].find(c.mention), std::string::npos) << c.args << ": " << lines[0];
        EXPECT_EQ(lines[0].rfind("veltara: ", 0), 0u) << lines[0];
    }
}

TEST(VeltaraErrors, EngineAndFileFailuresExit1WithContext) {
    // 1S is zero to double precision everywhere 3000 Bohr out: scaling divides by zero.
    const auto engine = RunVeltara("render 1S --radius 3000" + kClock);
    EXPECT_EQ(engine.exitCode, 1);
    EXPECT_EQ(engine.err.rfind("veltara: error 11: Division by zero (while adding 1S", 0), 0u)
        << engine.err;

    const auto file = RunVeltara("render 1S --out /nonexistent-folder/x.png" + kClock);
    EXPECT_EQ(file.exitCode, 1);
    EXPECT_NE(file.err.find("/nonexistent-folder/x.png"), std::string::npos) << file.err;
}
