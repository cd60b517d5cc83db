// The checks every request passes before routing.
#include "request_rules.h"

#include <algorithm>
#include <cctype>

namespace vtserve {

namespace {

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// At most `limit` bytes of text from outside, for a message.
std::string Quote(const std::string& text, size_t limit = 200) {
    return "'" + (text.size() > limit ? text.substr(0, limit) + "..." : text) + "'";
}

bool Contains(const std::vector<std::string>& list, const std::string& value) {
    return std::find(list.begin(), list.end(), value) != list.end();
}

ApiError Refuse(int status, int32_t number, const std::string& message) {
    return {status, number, std::string(vt_error_text(number)) + ": " + message, ""};
}

/// The media type of a Content-Type value, without parameters, in lower case.
std::string MediaType(const std::string& value) {
    std::string type = Lower(value.substr(0, value.find(';')));
    type.erase(std::remove(type.begin(), type.end(), ' '), type.end());
    return type;
}

}  // namespace

std::string UrlHost(const std::string& host) {
    return host.find(':') != std::string::npos ? "[" + host + "]" : host;
}

std::vector<std::string> AllowedHosts(const std::string& boundHost, int port) {
    std::vector<std::string> hosts;
    for (const std::string& name : {Lower(UrlHost(boundHost)), std::string("localhost"),
                                    std::string("127.0.0.1"), std::string("[::1]")}) {
        hosts.push_back(name + ":" + std::to_string(port));
        if (port == 80) hosts.push_back(name);
    }
    return hosts;
}

ApiError CheckRequest(const httplib::Request& req, const std::vector<std::string>& hosts,
                      size_t maxBodyBytes) {
    // Addressed to this server: by a name it was given, or by the address the request arrived
    // at (a server listening on every interface is reached by its interfaces' addresses).
    std::vector<std::string> names = hosts;
    std::string local = req.local_addr;
    if (local.compare(0, 7, "::ffff:") == 0) local.erase(0, 7);  // IPv4 through IPv6
    if (!local.empty())
        names.push_back(Lower(UrlHost(local)) + ":" + std::to_string(req.local_port));
    const std::string host = req.get_header_value("Host");
    if (req.get_header_value_count("Host") != 1 || !Contains(names, Lower(host))) {
        return Refuse(421, 5,
                      "Host " + Quote(host) + " is not this server's address; use http://" +
                          hosts.front() + "/");
    }
    const std::string& m = req.method;
    if (m != "GET" && m != "HEAD" && m != "POST" && m != "DELETE") {
        return Refuse(405, 5, "the method " + Quote(m, 20) + " is not served");
    }

    // One part of a reply at most: many ranges of one picture would make a reply many times
    // its size.
    if (req.ranges.size() > 1) {
        return Refuse(416, 5, "a request may ask for one byte range at most");
    }

    // A body the server will read: of a stated length or in chunks, never both, never too long.
    const size_t lengths = req.get_header_value_count("Content-Length");
    const std::string coding = Lower(req.get_header_value("Transfer-Encoding"));
    const bool chunked = coding == "chunked";
    if (lengths > 1 || (lengths == 1 && req.has_header("Transfer-Encoding")) ||
        (req.has_header("Transfer-Encoding") && !chunked)) {
        return Refuse(400, 13, "the body's length is not stated plainly");
    }
    if (lengths == 1) {
        const std::string text = req.get_header_value("Content-Length");
        if (text.empty() || text.size() > 19 ||
            !std::all_of(text.begin(), text.end(),
                         [](unsigned char c) { return std::isdigit(c); })) {
            return Refuse(400, 13, "Content-Length " + Quote(text, 40) + " is not a length");
        }
        if (text.size() > 9 || std::stoull(text) > maxBodyBytes) {
            return Refuse(
                413, 6,
                "the request body is larger than " + std::to_string(maxBodyBytes) + " bytes");
        }
    }
    if (m == "POST" && lengths == 0 && !chunked) {
        return Refuse(411, 5, "a POST states its body's length (Content-Length) or sends chunks");
    }

    // Changes come from this site or from a script, never from another site's page.
    if (m == "POST" || m == "DELETE") {
        if (req.has_header("Origin")) {
            const std::string origin = Lower(req.get_header_value("Origin"));
            if (origin.compare(0, 7, "http://") != 0 || !Contains(names, origin.substr(7))) {
                return Refuse(403, 5,
                              "a page of " + Quote(req.get_header_value("Origin")) +
                                  " may not change this server's orbitals");
            }
        }
        // A type that a page of another site cannot send without the server's consent, on
        // every change, with a body or not.
        if (MediaType(req.get_header_value("Content-Type")) != "application/json") {
            return Refuse(415, 13, "a change must be sent as Content-Type: application/json");
        }
    }
    return {};
}

}  // namespace vtserve
