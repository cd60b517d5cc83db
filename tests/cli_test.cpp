// The veltara command end to end: its outputs and files read back by readers written here, exit
// codes, messages, and what a failed write leaves at the path.
#include <png.h>

#include <cmath>
#include <cstring>
#include <nlohmann/json.hpp>
#include <numbers>

#include "cli_support.h"
#include "electron/catalogue.h"

using vt_cli_test::Lines;
using vt_cli_test::ReadFile;
using vt_cli_test::RunVeltara;
using vt_cli_test::ScratchDir;
namespace fs = std::filesystem;
using veltara::kCatalogueLastIndex;
using veltara::kCatalogueSize;

namespace {

/// Every run that adds an orbital fixes the clock, so seeds, and so the dots, repeat.
const std::string kClock = " --clock 1000000";

std::string At(const std::string& name) { return (ScratchDir() / name).string(); }

/// The RGB pixels of a PNG file, rows top first; empty when it is not one.
std::vector<uint8_t> ReadRgb(const fs::path& path, int& width, int& height) {
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

/// Numbers of a text line.
std::vector<double> Numbers(const std::string& line) {
    std::istringstream in(line);
    std::vector<double> v;
    for (double x; in >> x;) v.push_back(x);
    return v;
}

}  // namespace

TEST(VeltaraCommand, ListsVersionHelpAndAbout) {
    const auto text = RunVeltara("list");
    EXPECT_EQ(Lines(text.out).size(), kCatalogueSize + 1u);  // a header and a row per entry
    const auto json = RunVeltara("list --json");
    ASSERT_EQ(json.exitCode, 0) << json.err;
    const nlohmann::json list = nlohmann::json::parse(json.out);
    ASSERT_EQ(list.size(), size_t{kCatalogueSize});
    EXPECT_EQ(list[9]["name"], "3Dz\xC2\xB2");
    EXPECT_EQ(list[9]["key"], "3Dz\xC2\xB2");
    EXPECT_EQ(list[30]["key"], "av1S");
    EXPECT_EQ(list[30]["type"], "average");
    // The vector path as asked; a path unknown (or one the processor lacks) falls back to the
    // widest, with a warning on standard error, never a crash.
    EXPECT_EQ(RunVeltara("--version", "VELTARA_SIMD=scalar ").out,
              "veltara 1.2.0 (vector path scalar)\n");
    const auto unknown = RunVeltara("--version", "VELTARA_SIMD=avx9 ");
    EXPECT_EQ(unknown.exitCode, 0);
    EXPECT_EQ(unknown.out, RunVeltara("--version", "VELTARA_SIMD= ").out);
    EXPECT_NE(unknown.err.find("VELTARA_SIMD=avx9 names no vector path"), std::string::npos);
    const auto help = RunVeltara("render --help");
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("a dot needs a level above it"), std::string::npos) << help.out;
    EXPECT_NE(RunVeltara("about").out.find("About: Corvane"), std::string::npos);
}

TEST(VeltaraCommand, FailedStandardOutputExits1) {
    for (const std::string& args :
         std::vector<std::string>{"list --json", "stats 1S --dots 50 --json" + kClock, "--help",
                                  "--version", "export 1S --stride 64 --cube -"}) {
        const auto o = RunVeltara(args + " >/dev/full");
        EXPECT_EQ(o.exitCode, 1) << args;
        EXPECT_NE(o.err.find("cannot write standard output: No space left on device"),
                  std::string::npos)
            << args << ": " << o.err;
    }
}

TEST(VeltaraCommand, BadArgumentsExit2NamingTheArgument) {
    struct Case {
        std::string args;
        std::string mention;  // what the one line must name
    };
    const Case bad[] = {
        {"render 1S --radius 0", "--radius"},
        {"render 1S --radius 32768", "--radius"},
        {"render 1S --dots -1", "--dots"},
        {"render 1S --dots 32768", "--dots"},
        {"render 1S --threshold -1", "--threshold"},
        {"render 1S --threshold 256", "--threshold"},
        {"render 1S --transect -128", "--transect"},
        {"render 1S --transect 128", "--transect"},
        {"render 1S --quality 4", "--quality"},
        {"render 1S --quality 11", "--quality"},
        {"render 1S --stereo 0", "--stereo"},
        {"render 1S --camera 32768", "--camera"},
        {"render 1S --plane -32769", "--plane"},
        {"render 1S --clock 32767", "--clock"},
        {"render 1S --theta abc", "--theta"},
        {"render 1S --view foo", "--view"},
        {"render 1S --mode fisheye", "--mode"},
        {"render 1S --size 200", "--size"},
        {"render 3Dz3", "3Dz\xC2\xB2"},
        {"render " + std::to_string(kCatalogueSize), "0.." + std::to_string(kCatalogueLastIndex)},
        {"render", "ORBITAL"},
        {"export 1S", "--cube"},
        {"export 1S --cube x --stride 0", "--stride"},
        {"export 1S --cube x --stride 128", "--stride"},
        {"export 1S --cube x --points 1", "--points"},
        {"export 1S --cube x --points 1001", "--points"},
        {"export 1S --cube x --points 9 --stride 2", "--points"},
        {"export 1S --ply x --ply-format text", "--ply-format"},
        {"stats 1S --no-such-option", "--no-such-option"},
        {"--bogus", "--bogus"},
        {"bogus", "bogus"},
        {"", "subcommand"},
        {"render 1S --out ''", "--out"},
        {"render --all --out-dir ''", "--out-dir"},
        {"stats 1S --plot ''", "--plot"},
        {"export 1S --cube ''", "--cube"},
        {"export 1S --cube " + At("one") + " --ply " + At("one"), "--ply"},
        {"export 1S --cube - --ply -", "--ply"},
    };
    for (const Case& c : bad) {
        const auto o = RunVeltara(c.args);
        EXPECT_EQ(o.exitCode, 2) << c.args;
        const auto lines = Lines(o.err);
        ASSERT_EQ(lines.size(), 1u) << c.args << ": " << o.err;
        EXPECT_EQ(lines[0].rfind("veltara: ", 0), 0u) << lines[0];
        EXPECT_NE(lines[0].find(c.mention), std::string::npos) << c.args << ": " << lines[0];
    }
    // The other side of each boundary is accepted.
    const std::string picture = " --size nano --dots 50 --out " + At("ok.png");
    for (const std::string& args : std::vector<std::string>{
             "render 1S --radius 1 --threshold 0" + picture + kClock,
             "render 2Pz --mode transect --transect -127" + picture + kClock,
             "render 2Pz --mode transect --transect 127" + picture + kClock,
             "render 2Pz --mode volumetric --quality 5" + picture + kClock,
             "render 2Pz --mode volumetric --quality 0" + picture + kClock,
             "render 2Pz --mode perspective --camera 32767 --plane -32768" + picture + kClock,
             "render 2Pz --clock 32768" + picture, "export 1S --cube - --points 2",
             "export 1S --cube - --stride 127"}) {
        const auto o = RunVeltara(args);
        EXPECT_EQ(o.exitCode, 0) << args << ": " << o.err;
    }
}

TEST(VeltaraCommand, FailedWritesLeaveThePathAsItWasAndSayWhy) {
    const std::string writers[] = {"render 2Pz --dots 100 --out ", "stats 2Pz --dots 100 --plot ",
                                   "export 2Pz --stride 16 --cube ",
                                   "export 2Pz --dots 100 --ply "};
    const fs::path dir = ScratchDir() / "paths";
    struct Target {
        std::string path, prefix, reason;
    };
    const Target targets[] = {
        {(dir / "missing" / "x").string(), "", "No such file or directory"},
        {(dir / "folder").string(), "", "Is a directory"},
        {(dir / "keep").string(), "ulimit -f 1; ", "File too large"},
        {(dir / "link").string(), "ulimit -f 1; ", "File too large"},
        {"/dev/full", "", "No space left on device"},
    };
    for (const std::string& writer : writers) {
        fs::remove_all(dir);
        fs::create_directories(dir / "folder");
        std::ofstream(dir / "keep") << "the old keep";
        std::ofstream(dir / "target") << "the link's target";
        fs::create_symlink("target", dir / "link");
        for (const Target& t : targets) {
            const auto o = RunVeltara(writer + t.path + kClock, t.prefix);
            EXPECT_EQ(o.exitCode, 1) << writer << t.path;
            EXPECT_EQ(o.err, "veltara: cannot write " + t.path + ": " + t.reason + "\n") << writer;
        }
        EXPECT_EQ(ReadFile(dir / "keep"), "the old keep") << writer;
        EXPECT_EQ(ReadFile(dir / "target"), "the link's target") << writer;
        EXPECT_TRUE(fs::is_symlink(dir / "link") && fs::is_directory(dir / "folder"));
        EXPECT_TRUE(fs::is_character_file("/dev/full"));
        EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 4)
            << writer << ": a temporary file was left behind";
    }
}

TEST(VeltaraCommand, ExportReplacesBothFilesOrNeither) {
    const fs::path dir = ScratchDir() / "pair";
    fs::remove_all(dir);
    fs::create_directories(dir);
    const std::string keep = (dir / "keep").string(), target = (dir / "target").string();
    std::ofstream(keep) << "the old keep";
    std::ofstream(target) << "the link's target";
    fs::create_symlink("target", dir / "link");
    struct Case {
        std::string cube, ply;
        int exitCode;
    };
    const Case cases[] = {
        {keep, "/dev/full", 1},
        {"/dev/full", keep, 1},
        {keep, (dir / "missing" / "x").string(), 1},
        {(dir / "new").string(), "/dev/full", 1},
        {keep, keep, 2},
        {target, (dir / "link").string(), 2},
        {(dir / "." / "twice").string(), (dir / "twice").string(), 2},
    };
    for (const Case& c : cases) {
        const auto o = RunVeltara("export 2Pz --stride 16 --dots 100 --cube " + c.cube + " --ply " +
                                  c.ply + kClock);
        EXPECT_EQ(o.exitCode, c.exitCode) << c.cube << " " << c.ply << ": " << o.err;
        EXPECT_TRUE(ReadFile(keep) == "the old keep") << c.cube << " " << c.ply;
        EXPECT_TRUE(ReadFile(target) == "the link's target") << c.cube << " " << c.ply;
        EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 3)
            << c.cube << " " << c.ply << ": a file was left behind";
    }
    const auto both = RunVeltara("export 2Pz --stride 16 --dots 100 --cube " + keep + " --ply " +
                                 (dir / "link").string() + kClock);
    ASSERT_EQ(both.exitCode, 0) << both.err;
    EXPECT_EQ(ReadFile(keep).rfind("normalised probability density", 0), 0u);
    EXPECT_EQ(ReadFile(target).rfind("ply\n", 0), 0u);
}

TEST(VeltaraCommand, EngineRefusalsInPlainWords) {
    const auto top = RunVeltara("render 1S --threshold 255 --out " + At("x.png") + kClock);
    EXPECT_EQ(top.exitCode, 1);
    EXPECT_EQ(top.err,
              "veltara: no grid point lies above level 255, so no dot can be drawn (engine "
              "error 9)\n");
    const auto nucleus = RunVeltara("render 1S --threshold 250 --out " + At("x.png") + kClock);
    EXPECT_EQ(nucleus.exitCode, 1);
    EXPECT_NE(nucleus.err.find("lies at the nucleus"), std::string::npos) << nucleus.err;
    EXPECT_NE(nucleus.err.find("(engine error 11)\n"), std::string::npos) << nucleus.err;
    const auto none = RunVeltara("render 1S --dots 0 --out " + At("x.png") + kClock);
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_NE(none.err.find("--dots 0"), std::string::npos) << none.err;
}

TEST(VeltaraCommand, PictureRowsAndPlyDotsAgree) {
    // With both angles 0 dot (X, Y, Z) lights column 187 + X of row 187 - Z from the top (Z
    // upwards); a random cloud of 60 dots is not symmetric top to bottom, so flipped rows fail.
    const std::string setup = "2Pz --radius 8 --threshold 60 --dots 60" + kClock;
    ASSERT_EQ(RunVeltara("render " + setup + " --out " + At("dots.png")).exitCode, 0);
    ASSERT_EQ(RunVeltara("export " + setup + " --ply " + At("dots.ply")).exitCode, 0);
    ASSERT_EQ(
        RunVeltara("export " + setup + " --ply-format binary --ply " + At("dots.bin")).exitCode, 0);
    int w = 0, h = 0;
    const auto rgb = ReadRgb(At("dots.png"), w, h);
    ASSERT_EQ(rgb.size(), 375u * 375u * 3u);
    const std::string ascii = ReadFile(At("dots.ply"));
    const size_t body = ascii.find("end_header\n") + 11;
    EXPECT_NE(ascii.find("property uchar level\n"), std::string::npos);
    const auto lines = Lines(ascii.substr(body));
    ASSERT_GT(lines.size(), 5u);
    for (const std::string& line : lines) {
        const auto v = Numbers(line);  // x y z red green blue level
        ASSERT_EQ(v.size(), 7u) << line;
        const int X = static_cast<int>(std::lround(v[0] * 127 / 8)),
                  Z = static_cast<int>(std::lround(v[2] * 127 / 8));
        const uint8_t* p = &rgb[(static_cast<size_t>(187 - Z) * 375 + 187 + X) * 3];
        EXPECT_GT(p[0] + p[1] + p[2], 0) << line;
        EXPECT_GT(v[6], 60) << "a dot needs a level above the threshold: " << line;
    }
    // The binary form: the same header with 16 bytes a dot (3 floats, 4 bytes), same values.
    const std::string binary = ReadFile(At("dots.bin"));
    const size_t binBody = binary.find("end_header\n") + 11;
    ASSERT_EQ(binary.size() - binBody, 16 * lines.size());
    EXPECT_NE(binary.find("format binary_little_endian 1.0\n"), std::string::npos);
    float first[3];
    std::memcpy(first, binary.data() + binBody, sizeof first);
    EXPECT_NEAR(first[2], Numbers(lines[0])[2], 1e-5);
    EXPECT_EQ(static_cast<uint8_t>(binary[binBody + 15]), Numbers(lines[0])[6]);
}

TEST(VeltaraCommand, CubesReadBackAtAnyMagnitude) {
    // Closed forms (atomic units): 2pz density z^2 e^-r / (32 pi); its radial view weighs it by
    // the distance from the z axis times r.
    struct Case {
        std::string args;
        int points;
        double radius;
        bool radial;
        const char* says;
    };
    const Case cases[] = {
        {"--radius 1100 --points 5 --cube " + At("far.cube"), 5, 1100, false, "bohr^-3"},
        {"--radius 4 --view drpdf --stride 127 --cube -", 3, 4, true, "not a density"},
    };
    for (const Case& c : cases) {
        const auto o = RunVeltara("export 2Pz " + c.args);
        ASSERT_EQ(o.exitCode, 0) << c.args << ": " << o.err;
        const auto lines = Lines(c.args.ends_with("-") ? o.out : ReadFile(At("far.cube")));
        ASSERT_GT(lines.size(), 7u);
        EXPECT_NE(lines[0].find(c.says), std::string::npos) << lines[0];
        const auto origin = Numbers(lines[2]), x = Numbers(lines[3]), atom = Numbers(lines[6]);
        ASSERT_EQ(origin.size(), 4u) << "fields run together: " << lines[2];
        ASSERT_EQ(x.size(), 4u) << lines[3];
        ASSERT_EQ(atom.size(), 5u) << lines[6];
        EXPECT_EQ(x[0], c.points);
        EXPECT_NEAR(origin[1] + (c.points - 1) * x[1], c.radius, 1e-9) << c.args;
        std::vector<double> values;
        for (size_t i = 7; i < lines.size(); ++i) {
            for (double v : Numbers(lines[i])) values.push_back(v);
        }
        ASSERT_EQ(values.size(), static_cast<size_t>(c.points * c.points * c.points));
        for (size_t k = 0; k < values.size(); ++k) {
            const double px = origin[1] + static_cast<double>(k / (c.points * c.points)) * x[1];
            const double py = origin[2] + static_cast<double>(k / c.points % c.points) * x[1];
            const double pz = origin[3] + static_cast<double>(k % c.points) * x[1];
            const double r = std::sqrt(px * px + py * py + pz * pz);
            double expected = pz * pz * std::exp(-r) / (32 * std::numbers::pi);
            if (c.radial) expected *= std::sqrt(px * px + py * py) * r;
            EXPECT_NEAR(values[k], expected, 1e-5 * expected + 1e-300) << c.args << " " << k;
        }
    }
}

TEST(VeltaraCommand, GalleryHasFortyLabelledPictures) {
    const fs::path dir = ScratchDir() / "gallery";
    const auto o = RunVeltara("render --all --dots 300 --out-dir " + dir.string() + kClock);
    ASSERT_EQ(o.exitCode, 0) << o.err;
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()),
              kCatalogueSize + 1);
    EXPECT_TRUE(fs::exists(dir / "09-3Dz2.png") && fs::exists(dir / "31-av2S.png"));
    int w = 0, h = 0;
    const auto sheet = ReadRgb(dir / "contact-sheet.png", w, h);
    ASSERT_EQ(std::make_pair(w, h), std::make_pair(8 * 128, (kCatalogueSize + 7) / 8 * 128));
    // Each 128-pixel cell carries its name in white in its bottom left corner.
    for (int cell = 0; cell < kCatalogueSize; ++cell) {
        int white = 0;
        for (int y = cell / 8 * 128 + 115; y < cell / 8 * 128 + 126; ++y) {
            for (int x = cell % 8 * 128; x < cell % 8 * 128 + 40; ++x) {
                white += sheet[(static_cast<size_t>(y) * w + x) * 3] == 255;
            }
        }
        EXPECT_GT(white, 10) << "cell " << cell;
    }
}
