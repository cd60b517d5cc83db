// What every request must satisfy before it is routed: addressed to this server, from this
// site when it changes anything, with a body the server will read.
#pragma once

#include <httplib.h>

#include <string>
#include <vector>

#include "api_json.h"

namespace vtserve {

/// The Host values the server answers: its address as the URL gives it ("127.0.0.1", "[::1]")
/// and the loopback names localhost, 127.0.0.1 and [::1], each with ":port" (and also without
/// it on port 80). Lower case.
std::vector<std::string> AllowedHosts(const std::string& boundHost, int port);

/// The address as a URL writes it: IPv6 addresses in brackets.
std::string UrlHost(const std::string& host);

/// The refusal of a request, or nothing (number 0):
/// - 421 (5) when Host is missing, repeated, or neither one of `hosts` nor the address the
///   request arrived at, with the port (a page of another site that reached the server through a
///   name of its own, as DNS rebinding does);
/// - 405 (5) for a method other than GET, HEAD, POST and DELETE;
/// - 416 (5) for more than one byte range (a single one is ignored: replies are whole);
/// - 400 (13) for a malformed or repeated Content-Length, a repeated Transfer-Encoding, both a
///   length and chunks, a transfer coding other than chunked, or a GET or HEAD with a body;
///   411 (5) for a POST with neither a length nor chunks;
/// - 413 (6) for a Content-Length above the body cap (CheckBodySize);
/// - 400 (5) for more than one Origin;
/// - for POST and DELETE: 403 (5) for an Origin other than this server's (requests without
///   Origin, as scripts send them, pass); 415 (13) for a body (every POST has one) that is not
///   declared Content-Type: application/json, which a page of another site cannot send without
///   the server's consent (and no such consent, no CORS, is given).
ApiError CheckRequest(const httplib::Request& req, const std::vector<std::string>& hosts);

}  // namespace vtserve
