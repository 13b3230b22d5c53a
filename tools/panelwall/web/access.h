// Who may ask the page's server for what.
//
// The address of the page holds a random token; who does not know it is told nothing. What else is
// refused would only matter if an address became known, as on a shared screen: requests under a
// host name that another site has pointed here, and requests that a browser makes for another
// site's page.
//
// Functions without state, callable from any thread.
#pragma once

#include <httplib.h>
#include <string>

namespace panelwall {

// 132 random bits from the kernel, in characters that a URL may hold. Throws std::system_error when
// there are none.
std::string makeToken();

struct Refusal {
    int status = 0; // HTTP status; 0: the request may pass
    const char *reason = "";
};

// Everything lies below "/TOKEN/". A path that does not is refused before anything else is looked
// at, and in a time that tells nothing about the token.
Refusal judge(const httplib::Request &request, const std::string &token);

} // namespace panelwall
