#include "tools/panelwall/web/access.h"

#include <cerrno>
#include <regex>
#include <sys/random.h>
#include <system_error>

namespace panelwall {

std::string makeToken() {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    unsigned char random[22];
    if (getentropy(random, sizeof random) != 0)
        throw std::system_error(errno, std::generic_category(), "getentropy");
    std::string token;
    for (const unsigned char byte : random)
        token += digits[byte % 64];
    return token;
}

// Takes the same time wherever the first difference is, so timing reveals nothing about the token.
static bool startsWith(const std::string &path, const std::string &start) {
    if (path.size() < start.size())
        return false;
    int difference = 0;
    for (std::size_t i = 0; i < start.size(); ++i)
        difference |= path[i] ^ start[i];
    return difference == 0;
}

// An address or "localhost", with or without a port: names that no other site can point here.
static bool isAddress(const std::string &host) {
    static const std::regex address(
        R"((localhost|\d{1,3}(\.\d{1,3}){3}|\[[0-9A-Fa-f:]{2,39}\])(:\d{1,5})?)");
    return std::regex_match(host, address);
}

// The whole value of a header line; the library's own function truncates it at a zero byte.
static std::string valueOf(const httplib::Request &request, const char *name) {
    const auto found = request.headers.find(name);
    return found == request.headers.end() ? "" : found->second;
}

Rejection checkRequest(const httplib::Request &request, const std::string &token) {
    const std::string root = "/" + token + "/";
    if (!startsWith(request.path, root))
        return {404, "Open the whole address that panelwall has printed."};
    if (request.method != "GET")
        return {405, "The wall only answers GET: nothing can be changed from here."};
    const std::string host = valueOf(request, "Host");
    if (request.get_header_value_count("Host") != 1 || !isAddress(host))
        return {421, "Ask for the wall by its address, as panelwall printed it, not by a name."};
    const std::string origin = valueOf(request, "Origin");
    const std::string site = valueOf(request, "Sec-Fetch-Site");
    // Other sites may link to the page, but only the page itself may load its parts.
    const bool opensPage = request.path == root &&
                           valueOf(request, "Sec-Fetch-Mode") == "navigate" &&
                           valueOf(request, "Sec-Fetch-Dest") == "document";
    if ((!origin.empty() && origin != "http://" + host) ||
        (!site.empty() && site != "same-origin" && site != "none" && !opensPage))
        return {403, "The wall does not answer pages of other sites."};
    return {};
}

} // namespace panelwall
