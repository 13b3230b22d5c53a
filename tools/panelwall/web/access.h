// Who may ask the page's server for what.
//
// The server has no password. Three things stand between a stranger and the wall: the server
// listens on this machine only unless told otherwise; a request must name the server by an address,
// so that a foreign page cannot reach it under a name of its own that it points here; and a request
// that a browser sends on behalf of another site's page is refused.
//
// Pure functions, callable from any thread.
#pragma once

#include <string>

namespace panelwall {

// What a request says of itself; empty where it says nothing.
struct RequestFacts {
    std::string method;
    std::string path;
    std::string host;
    std::string origin;
    std::string fetchSite;        // Sec-Fetch-Site
    std::string fetchMode;        // Sec-Fetch-Mode
    std::string fetchDestination; // Sec-Fetch-Dest
};

struct Refusal {
    int status = 0; // HTTP status; 0: the request may pass
    std::string reason;
};

Refusal judge(const RequestFacts &facts);

// Whether a Host header's value is an address of either family or "localhost", with or without a
// port.
bool namesAnAddress(const std::string &host);

} // namespace panelwall
