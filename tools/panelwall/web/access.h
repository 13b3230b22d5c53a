// Decides which requests the page's server answers.
//
// The page's address contains a random token; requests without it learn nothing. The other checks
// matter only if the address becomes known, as on a shared screen: they refuse requests under a
// host name that another site has pointed here, and requests that a browser makes for another
// site's page.
//
// Functions without state, callable from any thread.
#pragma once

#include <httplib.h>
#include <string>

namespace panelwall {

// 132 random bits from the kernel, in characters valid in a URL. Throws std::system_error when the
// kernel provides none.
std::string makeToken();

struct Rejection {
    int status = 0; // HTTP status; 0: the request may pass
    const char *reason = "";
};

// Everything is served below "/TOKEN/". Any other path is refused before anything else is checked,
// in a time that reveals nothing about the token.
Rejection checkRequest(const httplib::Request &request, const std::string &token);

} // namespace panelwall
