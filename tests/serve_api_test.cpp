// veltara serve's JSON API against bad input, its limits and its dot clouds, through httplib's
// client against the built command on a free loopback port.
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace {

using nlohmann::json;

/// One `veltara serve --port 0` process for the life of the object.
class Server {
  public:
    explicit Server(const std::vector<std::string>& extra) {
        int out[2];
        if (pipe(out) != 0) return;
        mPid = fork();
        if (mPid == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
            std::vector<std::string> args = {VT_CLI_PATH, "serve", "--port", "0"};
            args.insert(args.end(), extra.begin(), extra.end());
            std::vector<char*> argv;
            for (auto& a : args) argv.push_back(a.data());
            argv.push_back(nullptr);
            execv(argv[0], argv.data());
            _exit(127);
        }
        close(out[1]);
        // The first line names the address: "Veltara viewer: http://127.0.0.1:PORT/".
        std::string line;
        char c = 0;
        while (read(out[0], &c, 1) == 1 && c != '\n') line += c;
        close(out[0]);
        const auto colon = line.rfind(':');
        if (colon != std::string::npos) mPort = std::atoi(line.c_str() + colon + 1);
    }
    ~Server() {
        if (mPid > 0) {
            kill(mPid, SIGTERM);
            int status = 0;
            waitpid(mPid, &status, 0);
        }
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return mPort; }
    httplib::Client Client() const {
        httplib::Client client("127.0.0.1", mPort);
        client.set_read_timeout(30, 0);
        return client;
    }

  private:
    pid_t mPid = -1;
    int mPort = 0;
};

json Body(const httplib::Result& r) { return json::parse(r->body, nullptr, false); }

/// The server still answers a good request.
void ExpectAlive(const Server& server) {
    auto client = server.Client();
    auto r = client.Get("/api/orbitals");
    ASSERT_TRUE(r) << "the server stopped answering";
    EXPECT_EQ(r->status, 200);
}

class ServeApi : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        sServer = new Server({"--clock", "40000", "--max-orbitals", "3"});
        ASSERT_GT(sServer->port(), 0);
        auto client = sServer->Client();
        auto r = client.Post("/api/orbitals", R"({"OrbitalIndex": 9})", "application/json");
        ASSERT_TRUE(r);
        ASSERT_EQ(r->status, 201) << r->body;
        sHandle = Body(r)["handle"].get<int>();
    }
    static void TearDownTestSuite() {
        delete sServer;
        sServer = nullptr;
    }
    static Server* sServer;
    static int sHandle;
};
Server* ServeApi::sServer = nullptr;
int ServeApi::sHandle = -1;

struct BadCase {
    const char* what;
    const char* method;
    std::string path;  // "{h}" stands for the live orbital's handle
    std::string body;
    int status;
    int number;
    const char* field;  // "" when the error names no field
};

TEST_F(ServeApi, BadInputGetsA4xxJsonErrorAndTheServerStaysUp) {
    const std::vector<BadCase> cases = {
        {"16-bit field given 70000", "POST", "/api/orbitals/{h}/render", R"({"CameraPos": 70000})",
         422, 6, "CameraPos"},
        {"16-bit field given -40000", "POST", "/api/orbitals/{h}/render",
         R"({"StereoFactor": -40000})", 422, 6, "StereoFactor"},
        {"32-bit enumeration given 2^40", "POST", "/api/orbitals/{h}/render",
         R"({"Mode": 1099511627776})", 422, 6, "Mode"},
        {"byte given 256", "POST", "/api/orbitals", R"({"OrbitalIndex": 3, "DotThreshold": 256})",
         422, 6, "DotThreshold"},
        {"16-bit dot target given 40000", "POST", "/api/orbitals/{h}/refill",
         R"({"Threshold": 10, "Target": 40000})", 422, 6, "Target"},
        {"angle given as text", "POST", "/api/orbitals/{h}/render", R"({"Theta": "north"})", 400,
         13, "Theta"},
        {"flag given as text", "POST", "/api/orbitals/{h}/render", R"({"VolFinal": "yes"})", 400,
         13, "VolFinal"},
        {"whole number given a fraction", "POST", "/api/orbitals/{h}/render",
         R"({"TransectNo": 2.5})", 400, 13, "TransectNo"},
        {"malformed JSON", "POST", "/api/orbitals/{h}/render", R"({"Theta": )", 400, 13, ""},
        {"JSON that is not an object", "POST", "/api/orbitals", "[9]", 400, 13, ""},
        {"misspelt field", "POST", "/api/orbitals/{h}/render", R"({"Tehta": 1})", 400, 5, "Tehta"},
        {"unknown mode name", "POST", "/api/orbitals/{h}/render", R"({"Mode": "Cubist"})", 422, 5,
         "Mode"},
        {"catalogue index 40", "POST", "/api/orbitals", R"({"OrbitalIndex": 40})", 422, 6,
         "OrbitalIndex"},
        {"setup without an index", "POST", "/api/orbitals", R"({"AtomRadius": 5})", 400, 5,
         "OrbitalIndex"},
        {"unknown orbital handle", "POST", "/api/orbitals/17/render", "{}", 404, 9, "handle"},
        {"handle beyond 16 bits", "GET", "/api/orbitals/99999999/stats", "", 404, 9, "handle"},
        {"delete of an unknown handle", "DELETE", "/api/orbitals/5", "", 404, 9, "handle"},
        // The engine's own refusals come back with its numbers.
        {"anaglyph with StereoFactor 0", "POST", "/api/orbitals/{h}/render",
         R"({"Mode": "Anaglyph", "StereoFactor": 0})", 422, 11, ""},
        {"volumetric quality 3", "POST", "/api/orbitals/{h}/render",
         R"({"Mode": "Volumetric", "VolQuality": 3})", 422, 9, ""},
        {"slice beyond the grid", "POST", "/api/orbitals/{h}/render",
         R"({"Mode": "Transect", "TransectNo": 128})", 422, 9, ""},
        {"unknown route", "GET", "/api/nothing-here", "", 404, 5, ""},
        {"wrong method on a route", "PUT", "/api/orbitals", "{}", 404, 5, ""},
    };
    auto client = sServer->Client();
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.what);
        std::string path = c.path;
        if (const auto at = path.find("{h}"); at != std::string::npos) {
            path.replace(at, 3, std::to_string(sHandle));
        }
        httplib::Result r =
            std::string(c.method) == "POST"     ? client.Post(path, c.body, "application/json")
            : std::string(c.method) == "PUT"    ? client.Put(path, c.body, "application/json")
            : std::string(c.method) == "DELETE" ? client.Delete(path)
                                                : client.Get(path);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, c.status) << r->body;
        EXPECT_EQ(r->get_header_value("Content-Type"), "application/json");
        const json body = Body(r);
        ASSERT_TRUE(body.is_object()) << r->body;
        EXPECT_EQ(body.value("error", 0), c.number) << r->body;
        EXPECT_FALSE(body.value("message", "").empty());
        EXPECT_EQ(body.value("field", ""), c.field) << r->body;
        ExpectAlive(*sServer);
    }
}

TEST_F(ServeApi, BodiesAbove64KiBAreRefusedWith413) {
    auto client = sServer->Client();
    const std::string huge(200 * 1024, ' ');
    auto r = client.Post("/api/orbitals/" + std::to_string(sHandle) + "/render", huge,
                         "application/json");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 413);
    EXPECT_EQ(Body(r).value("error", 0), 6) << r->body;
    ExpectAlive(*sServer);
    // Just below the limit is read (and refused for what it says, not for its size).
    const std::string big = "{\"Theta\": 0.5" + std::string(60 * 1024, ' ') + "}";
    r = client.Post("/api/orbitals/" + std::to_string(sHandle) + "/render", big,
                    "application/json");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 200);
}

TEST_F(ServeApi, FramesComeBackAsRawBgraOrPng) {
    auto client = sServer->Client();
    const std::string path = "/api/orbitals/" + std::to_string(sHandle) + "/render";
    auto r = client.Post(path, R"({"Mode": "Orthographic", "Size": "Main"})", "application/json");
    ASSERT_TRUE(r);
    ASSERT_EQ(r->status, 200) << r->body;
    EXPECT_EQ(r->body.size(), 375u * 375u * 4u);
    EXPECT_EQ(r->get_header_value("X-Width"), "375");
    // A small transect is 127 pixels square, built about its centre pixel.
    r = client.Post(path, R"({"Mode": "Transect", "Size": "Nano", "format": "png"})",
                    "application/json");
    ASSERT_TRUE(r);
    ASSERT_EQ(r->status, 200) << r->body;
    EXPECT_EQ(r->get_header_value("Content-Type"), "image/png");
    EXPECT_EQ(r->body.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    EXPECT_EQ(r->get_header_value("X-Width"), "127");
    EXPECT_EQ(r->get_header_value("X-Height"), "127");
}

TEST_F(ServeApi, LiveOrbitalsAreCappedAndDeletingMakesRoom) {
    auto client = sServer->Client();
    // The suite's server allows 3; one is live already.
    std::vector<int> added;
    for (int i = 0; i < 2; ++i) {
        auto r = client.Post("/api/orbitals", R"({"OrbitalIndex": 1, "DotTarget": 500})",
                             "application/json");
        ASSERT_TRUE(r);
        ASSERT_EQ(r->status, 201) << r->body;
        added.push_back(Body(r)["handle"].get<int>());
    }
    auto r = client.Post("/api/orbitals", R"({"OrbitalIndex": 1})", "application/json");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 409);
    EXPECT_EQ(Body(r).value("error", 0), 6) << r->body;
    EXPECT_EQ(Body(client.Get("/api/orbitals")).size(), 3u);

    r = client.Delete("/api/orbitals/" + std::to_string(added[0]));
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 200);
    // The freed slot is handed out again, lowest first.
    r = client.Post("/api/orbitals", R"({"OrbitalIndex": 1, "DotTarget": 500})",
                    "application/json");
    ASSERT_TRUE(r);
    ASSERT_EQ(r->status, 201) << r->body;
    EXPECT_EQ(Body(r)["handle"].get<int>(), added[0]);
    for (int h : added) client.Delete("/api/orbitals/" + std::to_string(h));
    EXPECT_EQ(Body(client.Get("/api/orbitals")).size(), 1u);
}

/// The Main orthographic picture of 3Dz² from a fresh server with the given clock.
std::string FirstPicture(const char* clock) {
    Server server({"--clock", clock});
    auto client = server.Client();
    auto r = client.Post("/api/orbitals", R"({"OrbitalIndex": 9, "DotTarget": 3000})",
                         "application/json");
    if (!r || r->status != 201) return "";
    // A refill draws from the generator that the add seeded, on the engine's thread.
    client.Post("/api/orbitals/0/refill", R"({"Threshold": 30, "Target": 4000})",
                "application/json");
    r = client.Post("/api/orbitals/0/render", R"({"Theta": 0.3, "Phi": 0.2})", "application/json");
    return r && r->status == 200 ? r->body : "";
}

TEST(ServeClock, AFixedClockRepeatsTheDotsAndAnotherClockChangesThem) {
    const std::string a = FirstPicture("40000");
    const std::string b = FirstPicture("40000");
    // The seed is the clock scaled from 2^31 ms to 65536: 40000 ms gives 1, 100000 ms gives 3.
    const std::string c = FirstPicture("100000");
    ASSERT_EQ(a.size(), 375u * 375u * 4u);
    EXPECT_TRUE(a == b) << "the same clock gave different dots";
    EXPECT_FALSE(a == c) << "another clock gave the same dots";
}

}  // namespace
