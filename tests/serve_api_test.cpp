// veltara serve over HTTP: its statuses for bad and hostile requests, records crossing, and
// clients that cannot see each other, against the built command on a free loopback port.
#include <gtest/gtest.h>
#include <httplib.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "electron/catalogue.h"

namespace {

using nlohmann::json;

/// One `veltara serve` process for the life of the object.
class Server {
  public:
    explicit Server(std::vector<std::string> args) {
        args.insert(args.begin(), {VT_CLI_PATH, "serve"});
        int out[2];
        if (pipe(out) != 0) return;
        mPid = fork();
        if (mPid == 0) {
            dup2(out[1], STDOUT_FILENO);
            close(out[0]);
            close(out[1]);
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
        if (const auto colon = line.rfind(':'); colon != std::string::npos) {
            mPort = std::atoi(line.c_str() + colon + 1);
        }
    }
    ~Server() { Stop(); }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    int port() const { return mPort; }
    /// Stops the server; its exit status.
    int Stop() {
        if (mPid > 0) {
            kill(mPid, SIGTERM);
            waitpid(mPid, &mStatus, 0);
            mPid = -1;
        }
        return WIFEXITED(mStatus) ? WEXITSTATUS(mStatus) : -1;
    }

  private:
    pid_t mPid = -1;
    int mPort = 0;
    int mStatus = 0;
};

/// A client that keeps the server's cookie, as browsers and curl's cookie jar do.
class Client {
  public:
    explicit Client(const Server& server) : mHttp("127.0.0.1", server.port()) {
        mHttp.set_read_timeout(30, 0);
    }
    httplib::Result Send(const std::string& method, const std::string& path,
                         const std::string& body = "") {
        httplib::Headers headers;
        if (!mCookie.empty()) headers.emplace("Cookie", mCookie);
        httplib::Result r = method == "POST" ? mHttp.Post(path, headers, body, "application/json")
                            : method == "DELETE"
                                ? mHttp.Delete(path, headers, "", "application/json")
                                : mHttp.Get(path, headers);
        if (r && r->has_header("Set-Cookie")) {
            const std::string set = r->get_header_value("Set-Cookie");
            mCookie = set.substr(0, set.find(';'));
        }
        return r;
    }
    json Json(const std::string& method, const std::string& path, const std::string& body = "") {
        const httplib::Result r = Send(method, path, body);
        return json::parse(r ? r->body : "", nullptr, false);
    }
    int Status(const std::string& method, const std::string& path, const std::string& body = "") {
        const httplib::Result r = Send(method, path, body);
        return r ? r->status : 0;
    }
    const std::string& cookie() const { return mCookie; }

  private:
    httplib::Client mHttp;
    std::string mCookie;
};

/// A connected loopback socket; -1 when the server is not there.
int Connect(int port) {
    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(sock, reinterpret_cast<sockaddr*>(&addr), sizeof addr) == 0) return sock;
    close(sock);
    return -1;
}

/// Everything the server writes back to `bytes` until it closes the connection, then
/// "<closed>"; or until 3 s of silence, then "<open>".
std::string Exchange(int port, const std::string& bytes) {
    const int sock = Connect(port);
    send(sock, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    const timeval wait{3, 0};
    setsockopt(sock, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    std::string out;
    char buffer[4096];
    ssize_t n = 0;
    while ((n = recv(sock, buffer, sizeof buffer, 0)) > 0) out.append(buffer, n);
    close(sock);
    return out + (n == 0 ? "<closed>" : "<open>");
}

/// The status of the reply to raw request bytes (head, then `repeat` copies of `more`); 0 when
/// the server answers nothing.
int RawStatus(int port, const std::string& head, const std::string& more = "", int repeat = 0) {
    const int sock = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_port = htons(static_cast<uint16_t>(port));
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(sock, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0) return 0;
    bool sent = send(sock, head.data(), head.size(), MSG_NOSIGNAL) > 0;
    for (int i = 0; sent && i < repeat; ++i) {
        sent = send(sock, more.data(), more.size(), MSG_NOSIGNAL) > 0;
    }
    char reply[13] = {};
    const ssize_t n = recv(sock, reply, 12, MSG_WAITALL);
    close(sock);
    return n == 12 ? std::atoi(reply + 9) : 0;
}

TEST(ServeApi, BadAndHostileRequestsGetTheirStatusAndTheServerStaysUp) {
    Server server({"--port", "0", "--clock", "40000"});
    ASSERT_GT(server.port(), 0);
    Client client(server);
    ASSERT_EQ(client.Status("POST", "/api/orbitals", R"({"OrbitalIndex": 9})"), 201);
    const std::string host = "Host: 127.0.0.1:" + std::to_string(server.port()) + "\r\n";
    const std::string typeJson = "Content-Type: application/json\r\n";
    std::string ranges = "0-0";
    for (int i = 1; i < 850; ++i) {
        ranges.append(",").append(std::to_string(i)).append("-").append(std::to_string(i));
    }
    const std::string chunk = "10000\r\n" + std::string(0x10000, 'x') + "\r\n";
    struct Case {
        const char* what;
        std::string head;
        int status;
        int chunks = 0;  // 64 KiB chunks sent after the head
    };
    const std::vector<Case> cases = {
        {"a path that is not UTF-8", "GET /%FF HTTP/1.1\r\n" + host + "\r\n", 404},
        {"another Host (DNS rebinding)", "GET /api/orbitals HTTP/1.1\r\nHost: evil.example\r\n\r\n",
         421},
        {"no Host", "GET /api/orbitals HTTP/1.1\r\n\r\n", 421},
        {"a text/plain POST from another site",
         "POST /api/orbitals HTTP/1.1\r\n" + host +
             "Origin: http://evil.example\r\nContent-Type: text/plain\r\nContent-Length: "
             "2\r\n\r\n{}",
         403},
        {"a form POST without Origin",
         "POST /api/orbitals HTTP/1.1\r\n" + host +
             "Content-Type: application/x-www-form-urlencoded\r\nContent-Length: 3\r\n\r\na=1",
         415},
        {"a DELETE from another site",
         "DELETE /api/orbitals/0 HTTP/1.1\r\n" + host + "Origin: http://127.0.0.1:1\r\n\r\n", 403},
        {"a DELETE not declared JSON", "DELETE /api/orbitals/0 HTTP/1.1\r\n" + host + "\r\n", 415},
        {"a 64 MiB chunked body",
         "POST /api/orbitals HTTP/1.1\r\n" + host + typeJson + "Transfer-Encoding: chunked\r\n\r\n",
         413, 1024},
        {"a 64 MiB chunked body to no route",
         "POST /nowhere HTTP/1.1\r\n" + host + typeJson + "Transfer-Encoding: chunked\r\n\r\n", 404,
         1024},
        {"850 ranges", "GET /viewer.js HTTP/1.1\r\n" + host + "Range: bytes=" + ranges + "\r\n\r\n",
         416},
        {"a Content-Length of 2^63-1",
         "POST /api/orbitals HTTP/1.1\r\n" + host + typeJson +
             "Content-Length: 9223372036854775807\r\n\r\n",
         413},
        {"a Content-Length that is no number",
         "POST /api/orbitals HTTP/1.1\r\n" + host + typeJson + "Content-Length: -1\r\n\r\n", 400},
        {"a POST without a length", "POST /api/orbitals HTTP/1.1\r\n" + host + typeJson + "\r\n",
         411},
        {"a method not served", "PUT /api/orbitals HTTP/1.1\r\n" + host + "\r\n", 405},
        {"CORS preflight", "OPTIONS /api/orbitals HTTP/1.1\r\n" + host + "\r\n", 405},
        {"a 2 MB request line", "GET /" + std::string(2000000, 'a'), 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(RawStatus(server.port(), c.head, chunk, c.chunks), c.status);
        EXPECT_EQ(client.Status("GET", "/api/orbitals"), 200) << "the server stopped answering";
    }
    EXPECT_EQ(client.Json("GET", "/api/orbitals").size(), 1u);

    // A second server on the same port does not start.
    Server second({"--port", std::to_string(server.port())});
    EXPECT_EQ(second.Stop(), 1);
}

TEST(ServeApi, BadBodiesGetA4xxJsonErrorNamingTheField) {
    Server server({"--port", "0", "--clock", "40000"});
    Client client(server);
    ASSERT_EQ(client.Status("POST", "/api/orbitals", R"({"OrbitalIndex": 9})"), 201);
    struct BadCase {
        const char* path;
        std::string body;
        int status;
        int number;
        const char* field;
    };
    const std::vector<BadCase> cases = {
        {"/api/orbitals/0/render", R"({"CameraPos": 32768})", 422, 6, "CameraPos"},
        {"/api/orbitals", R"({"OrbitalIndex": 3, "DotThreshold": 256})", 422, 6, "DotThreshold"},
        {"/api/orbitals", json{{"OrbitalIndex", veltara::kCatalogueSize}}.dump(), 422, 6,
         "OrbitalIndex"},
        {"/api/orbitals/0/refill", R"({"Threshold": 10, "Target": 32768})", 422, 6, "Target"},
        {"/api/orbitals/0/render", R"({"Theta": "north"})", 400, 13, "Theta"},
        {"/api/orbitals/0/render", R"({"Theta": )", 400, 13, ""},
        {"/api/orbitals/0/render", R"({"Tehta": 1})", 400, 5, "Tehta"},
        {"/api/orbitals/0/render", R"({"Mode": "Cubist"})", 422, 5, "Mode"},
        {"/api/orbitals", R"({"AtomRadius": 5})", 400, 5, "OrbitalIndex"},
        {"/api/orbitals/1/render", "{}", 404, 9, "handle"},
        {"/api/orbitals", R"({"State": "3,3,0"})", 422, 5, "State"},
        {"/api/orbitals", R"({"State": 7})", 400, 13, "State"},
        {"/api/orbitals", R"({"State": "1,0,0", "AtomRadius": -1})", 422, 6, "AtomRadius"},
        // The engine's own refusals come back with its numbers.
        {"/api/orbitals/0/render", R"({"Mode": "Anaglyph", "StereoFactor": 0})", 422, 11, ""},
    };
    for (const BadCase& c : cases) {
        SCOPED_TRACE(c.path + (" " + c.body));
        const httplib::Result r = client.Send("POST", c.path, c.body);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, c.status) << r->body;
        EXPECT_FALSE(r->has_header("Access-Control-Allow-Origin"));
        const json body = json::parse(r->body, nullptr, false);
        EXPECT_EQ(body.value("error", 0), c.number) << r->body;
        EXPECT_EQ(body.value("field", ""), c.field) << r->body;
    }
    // A state in the text form is added like a catalogue orbital and named by its text; one the
    // catalogue lists is that orbital.
    httplib::Result r =
        client.Send("POST", "/api/orbitals", R"({"State": "Z=2;3,1,1c", "DotTarget": 300})");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->status, 201) << r->body;
    EXPECT_EQ(json::parse(r->body).value("OrbType", ""), "State");
    EXPECT_EQ(json::parse(r->body).value("Name", ""), "Z=2;3,1,1c");
    r = client.Send("POST", "/api/orbitals", R"({"State": "3, 2, 0"})");
    ASSERT_TRUE(r);
    EXPECT_EQ(json::parse(r->body).value("commandName", ""), "3Dz\xC2\xB2") << r->body;
    // Pictures cross as raw B, G, R, A rows or as PNG.
    r = client.Send("POST", "/api/orbitals/0/render", R"({"Size": "Main"})");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->body.size(), 375u * 375u * 4u);
    r = client.Send("POST", "/api/orbitals/0/render", R"({"Size": "Nano", "format": "png"})");
    ASSERT_TRUE(r);
    EXPECT_EQ(r->body.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    EXPECT_EQ(r->get_header_value("X-Width") + "x" + r->get_header_value("X-Height"), "127x127");
}

TEST(ServeApi, ClientsNeverSeeEachOthersOrbitals) {
    Server server(
        {"--port", "0", "--clock", "40000", "--max-orbitals", "2", "--max-total-orbitals", "3"});
    Client a(server), b(server);
    const std::string add = R"({"OrbitalIndex": 9, "DotTarget": 3000})";
    ASSERT_EQ(a.Json("POST", "/api/orbitals", add).value("handle", -1), 0);
    // B's handle 0 is its own, and A's handle 0 is nothing to B.
    EXPECT_EQ(b.Json("GET", "/api/orbitals").size(), 0u);
    EXPECT_EQ(b.Status("GET", "/api/orbitals/0/stats"), 404);
    EXPECT_EQ(b.Status("DELETE", "/api/orbitals/0"), 404);
    ASSERT_EQ(b.Json("POST", "/api/orbitals", add).value("handle", -1), 0);
    // Each client draws from its own generator: the same steps give the same dots, interleaved.
    std::string pictures[2];
    for (Client* c : {&a, &b})
        c->Status("POST", "/api/orbitals/0/refill", R"({"Threshold": 30, "Target": 4000})");
    for (int i = 0; i < 2; ++i) {
        pictures[i] =
            (i == 0 ? a : b).Send("POST", "/api/orbitals/0/render", R"({"Theta": 0.3})")->body;
    }
    EXPECT_EQ(pictures[0].size(), 375u * 375u * 4u);
    EXPECT_TRUE(pictures[0] == pictures[1]);
    // Caps: two orbitals a client, three in all.
    EXPECT_EQ(a.Status("POST", "/api/orbitals", add), 201);
    EXPECT_EQ(a.Json("POST", "/api/orbitals", add).value("error", 0), 6);
    EXPECT_EQ(a.Status("POST", "/api/orbitals", add), 409);
    EXPECT_EQ(b.Status("POST", "/api/orbitals", add), 503);
    EXPECT_EQ(a.Status("DELETE", "/api/orbitals/1"), 200);
    EXPECT_EQ(b.Status("POST", "/api/orbitals", add), 201);
}

TEST(ServeApi, AnIdleClientIsReleasedWithItsOrbitalsAndToldSoOnce) {
    Server server({"--port", "0", "--clock", "40000", "--idle-seconds", "1"});
    Client idle(server);
    ASSERT_EQ(idle.Status("POST", "/api/orbitals", R"({"OrbitalIndex": 1, "DotTarget": 500})"),
              201);
    usleep(2500000);
    const json told = idle.Json("GET", "/api/orbitals");
    EXPECT_NE(told.value("message", "").find("released after 1 seconds"), std::string::npos)
        << told;
    EXPECT_EQ(idle.Status("GET", "/api/orbitals/0/stats"), 404);  // afresh: no orbital 0
    EXPECT_EQ(idle.Json("GET", "/api/orbitals"), json::array());
}

TEST(ServeApi, WhenTheTotalIsReachedOneRequestCollectionsGiveWayFirstThenTheIdlest) {
    Server server({"--port", "0", "--clock", "40000", "--max-total-orbitals", "2"});
    const std::string add = R"({"OrbitalIndex": 1, "DotTarget": 500})";
    Client steady(server), once(server), second(server), third(server), fourth(server);
    ASSERT_EQ(steady.Status("POST", "/api/orbitals", add), 201);
    ASSERT_EQ(steady.Status("GET", "/api/orbitals"), 200);  // two requests: it gives way last
    ASSERT_EQ(once.Status("POST", "/api/orbitals", add), 201);
    // The total is reached: the collection of one request goes for the newcomer...
    EXPECT_EQ(second.Status("POST", "/api/orbitals", add), 201);
    EXPECT_EQ(once.Status("GET", "/api/orbitals"), 410);
    EXPECT_EQ(steady.Json("GET", "/api/orbitals").size(), 1u);
    // ...and, with every collection steady, the idlest goes for a client without orbitals, but
    // not for one that holds some.
    EXPECT_EQ(second.Status("GET", "/api/orbitals"), 200);
    EXPECT_EQ(second.Status("POST", "/api/orbitals", add), 503);
    EXPECT_EQ(third.Status("POST", "/api/orbitals", add), 201);
    EXPECT_EQ(steady.Status("GET", "/api/orbitals"), 410);
    EXPECT_EQ(second.Json("GET", "/api/orbitals").size(), 1u);
    // A request in progress is never released: the fourth takes the third's place.
    EXPECT_EQ(fourth.Status("POST", "/api/orbitals", add), 201);
    EXPECT_EQ(third.Status("GET", "/api/orbitals"), 410);
}

TEST(ServeApi, AFloodOfCookielessAddsLocksNoClientOut) {
    // 500 adds, each from a new client without a cookie, against the default total of 64.
    Server server({"--port", "0", "--clock", "40000"});
    const std::string add = R"({"OrbitalIndex": 1, "DotTarget": 500})";
    Client script(server);
    ASSERT_EQ(script.Status("POST", "/api/orbitals", add), 201);
    ASSERT_EQ(script.Status("GET", "/api/orbitals/0/stats"), 200);
    std::atomic<int> added{0}, refused{0};
    std::vector<std::thread> flood;
    for (int t = 0; t < 4; ++t) {
        flood.emplace_back([&] {
            for (int i = 0; i < 125; ++i) {
                Client once(server);
                (once.Status("POST", "/api/orbitals", add) == 201 ? added : refused)++;
            }
        });
    }
    while (added < 100) usleep(10000);
    // The newcomer only adds, then asks for its picture: the 63 other collections of one
    // request are older, so each of them gives way before it does.
    Client newcomer(server);
    EXPECT_EQ(newcomer.Status("POST", "/api/orbitals", add), 201);
    const httplib::Result picture = newcomer.Send("POST", "/api/orbitals/0/render", "{}");
    EXPECT_EQ(picture ? picture->body.size() : 0u, 375u * 375u * 4u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(script.Status("POST", "/api/orbitals/0/render", R"({"Size": "Nano"})"), 200);
    }
    for (std::thread& t : flood) t.join();
    EXPECT_EQ(added + refused, 500);
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(script.Json("GET", "/api/orbitals").size(), 1u);
}

TEST(ServeApi, IdleKeptAliveConnectionsGiveWayToANewClient) {
    Server server({"--port", "0"});
    const std::string get =
        "GET /api/info HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) + "\r\n\r\n";
    // 32 connections, as many as are served at once, each kept alive after a request.
    std::vector<int> held;
    for (int i = 0; i < 32; ++i) {
        held.push_back(Connect(server.port()));
        send(held.back(), get.data(), get.size(), MSG_NOSIGNAL);
        char reply[12];
        ASSERT_EQ(recv(held.back(), reply, sizeof reply, MSG_WAITALL), 12);
        EXPECT_EQ(std::string(reply + 9, 3), "200");
    }
    Client newcomer(server);
    EXPECT_EQ(newcomer.Status("GET", "/api/info"), 200);
    EXPECT_EQ(newcomer.Status("GET", "/api/orbitals"), 200);
    for (int sock : held) close(sock);
}

TEST(ServeApi, SmuggledAndDoublyStatedRequestsAreRefusedAndEndTheConnection) {
    Server server({"--port", "0", "--clock", "40000"});
    Client client(server);
    ASSERT_EQ(client.Status("POST", "/api/orbitals", R"({"OrbitalIndex": 9, "DotTarget": 500})"),
              201);
    const std::string host = "Host: 127.0.0.1:" + std::to_string(server.port()) + "\r\n";
    const std::string own = "Origin: http://127.0.0.1:" + std::to_string(server.port()) + "\r\n";
    const std::string type = "Content-Type: application/json\r\n";
    const std::string del = "DELETE /api/orbitals/0 HTTP/1.1\r\n" + host + type +
                            "Cookie: " + client.cookie() + "\r\n\r\n";
    const std::string add = R"({"OrbitalIndex": 1})";
    const std::string post =
        "POST /api/orbitals HTTP/1.1\r\n" + host + type + "Cookie: " + client.cookie() + "\r\n";
    struct Case {
        const char* what;
        std::string bytes;
    };
    const std::vector<Case> cases = {
        {"a line that is no request, then a DELETE", "GARBAGE\r\n" + del},
        {"a GET whose body is a DELETE", "GET /api/info HTTP/1.1\r\n" + host + "Content-Length: " +
                                             std::to_string(del.size()) + "\r\n\r\n" + del},
        {"a GET with a chunked body",
         "GET /api/info HTTP/1.1\r\n" + host + "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n" + del},
        {"two Origins, this server's first",
         post + own + "Origin: http://evil.example\r\nContent-Length: 19\r\n\r\n" + add},
        {"two lengths", post + "Content-Length: 19\r\nContent-Length: 19\r\n\r\n" + add + del},
        {"two codings", post + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n" +
                            "13\r\n" + add + "\r\n0\r\n\r\n" + del},
        {"a body that is no JSON, then a DELETE", post + "Content-Length: 5\r\n\r\n{{{{{" + del},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const std::string reply = Exchange(server.port(), c.bytes);
        EXPECT_EQ(reply.substr(0, 12), "HTTP/1.1 400");
        EXPECT_EQ(reply.find("HTTP/1.1", 1), std::string::npos) << "a second reply: " << reply;
        EXPECT_NE(reply.find("Connection: close"), std::string::npos);
        EXPECT_EQ(reply.substr(reply.size() - 8), "<closed>");
    }
    EXPECT_EQ(client.Json("GET", "/api/orbitals").size(), 1u) << "a refused request changed";

    // Text from the request comes back cut to 200 bytes.
    const json echo =
        client.Json("POST", "/api/orbitals/0/render", "{\"" + std::string(60000, 'k') + "\": 1}");
    EXPECT_NE(echo.value("message", "").find("'" + std::string(200, 'k') + "...'"),
              std::string::npos);
    EXPECT_LT(echo.dump().size(), 1000u);
}

TEST(ServeApi, TheBodyCapAdmitsItsLengthAndRefusesOneByteMore) {
    Server server({"--port", "0"});
    const std::string head =
        "POST /api/orbitals/7/render HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port()) +
        "\r\nContent-Type: application/json\r\n";
    for (const size_t size : {size_t{65536}, size_t{65537}}) {
        // "{}" and spaces: read whole, the body is an empty request for a handle never given.
        const std::string body = "{}" + std::string(size - 2, ' ');
        const int status = size == 65536 ? 404 : 413;
        SCOPED_TRACE(size);
        EXPECT_EQ(RawStatus(server.port(),
                            head + "Content-Length: " + std::to_string(size) + "\r\n\r\n" + body),
                  status);
        char length[16];
        std::snprintf(length, sizeof length, "%zx\r\n", size);
        EXPECT_EQ(RawStatus(server.port(), head + "Transfer-Encoding: chunked\r\n\r\n" + length +
                                               body + "\r\n0\r\n\r\n"),
                  status);
    }
}

}  // namespace
