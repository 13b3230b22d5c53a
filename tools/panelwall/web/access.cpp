#include "tools/panelwall/web/access.h"

#include <algorithm>
#include <arpa/inet.h>
#include <netinet/in.h>

namespace panelwall {

static bool isPort(const std::string &text) {
    return !text.empty() && text.size() <= 5 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool namesAnAddress(const std::string &host) {
    std::string name = host;
    const auto bracket = host.find(']');
    const auto colon = host.find(':', bracket == std::string::npos ? 0 : bracket);
    if (colon != std::string::npos) {
        if (!isPort(host.substr(colon + 1)))
            return false;
        name = host.substr(0, colon);
    }
    in_addr four;
    in6_addr six;
    if (name.size() > 2 && name.front() == '[' && name.back() == ']')
        return inet_pton(AF_INET6, name.substr(1, name.size() - 2).c_str(), &six) == 1;
    return name == "localhost" || inet_pton(AF_INET, name.c_str(), &four) == 1;
}

Refusal judge(const RequestFacts &facts) {
    if (facts.method != "GET")
        return {405, "The wall only answers GET: nothing can be changed from here."};
    if (!namesAnAddress(facts.host))
        return {421, "Ask for the wall by its address, as panelwall printed it, not by a name."};
    if (!facts.origin.empty() && facts.origin != "http://" + facts.host)
        return {403, "The wall does not answer pages of other sites."};
    // Following a link to the page is fine; its parts are for the page itself.
    const bool opensPage =
        facts.path == "/" && facts.fetchMode == "navigate" && facts.fetchDestination == "document";
    if (!facts.fetchSite.empty() && facts.fetchSite != "same-origin" && facts.fetchSite != "none" &&
        !opensPage)
        return {403, "The wall does not answer pages of other sites."};
    return {};
}

} // namespace panelwall
