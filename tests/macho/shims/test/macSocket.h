// The library's socket class as a Mac program sees it: its layout, and its functions in the dylib.
#pragma once

#include "tests/macho/library/libraryOverFakes.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace macho {

// The members with their macOS layout.
struct MacSocket {
    std::int32_t fd;
    std::string ip;
    std::string spareIp;
    std::int32_t port;
    std::int32_t family;
    bool connected;
    alignas(8) std::uint8_t local[128];
    alignas(8) std::uint8_t remote[128];
    std::int64_t timeoutSeconds;
    std::int32_t timeoutMicroseconds;
};

class SocketTest : public LibraryOverFakes {
protected:
    // Constructed and destroyed by the library.
    class Socket {
    public:
        explicit Socket(SocketTest &test) : test(test) {
            test.find<void(void *)>("_ZN9UdpSocketC1Ev")(room);
        }
        Socket(SocketTest &test, const std::string &ip, int port) : test(test) {
            test.find<void(void *, std::string, int)>(
                "_ZN9UdpSocketC1ENSt3__112basic_stringIcNS0_"
                "11char_traitsIcEENS0_9allocatorIcEEEEi")(room, ip, port);
        }
        ~Socket() { test.find<void(void *)>("_ZN9UdpSocketD1Ev")(room); }
        Socket(const Socket &) = delete;
        Socket &operator=(const Socket &) = delete;

        MacSocket *operator->() { return reinterpret_cast<MacSocket *>(room); }
        int setRemote(const std::string &ip, int port) {
            return test.find<int(void *, std::string, int)>(
                "_ZN9UdpSocket9setRemoteENSt3__112basic_stringIcNS0_11char_traitsIcEENS0_"
                "9allocatorIcEEEEi")(room, ip, port);
        }
        int bindTo(const std::string &ip, int port) {
            return test.find<int(void *, std::string, int)>(
                "_ZN9UdpSocket6bindToENSt3__112basic_stringIcNS0_11char_traitsIcEENS0_"
                "9allocatorIcEEEEi")(room, ip, port);
        }
        int send(std::string bytes) {
            return test.find<int(void *, char *, int)>("_ZN9UdpSocket4sendEPci")(
                room, bytes.data(), static_cast<int>(bytes.size()));
        }
        // The bytes received, or "-1" on failure.
        std::string receive() {
            char bytes[64];
            const int got = test.find<int(void *, char *, int)>("_ZN9UdpSocket7receiveEPci")(
                room, bytes, sizeof bytes);
            return got < 0 ? "-1" : std::string(bytes, static_cast<std::size_t>(got));
        }
        int setTimeout(int milliseconds) {
            return test.find<int(void *, int)>("_ZN9UdpSocket10setTimeoutEi")(room, milliseconds);
        }
        int enableNonBlockingMode() {
            return test.find<int(void *)>("_ZN9UdpSocket21enableNonBlockingModeEv")(room);
        }
        int getPort() { return test.find<int(void *)>("_ZN9UdpSocket7getPortEv")(room); }
        std::string getLocalIp() {
            return test.find<std::string(void *)>("_ZN9UdpSocket10getLocalIpEv")(room);
        }
        std::string getLocalIpv6() {
            return test.find<std::string(void *)>("_ZN9UdpSocket12getLocalIpv6Ev")(room);
        }

    private:
        SocketTest &test;
        alignas(8) char room[sizeof(MacSocket)];
    };
};

} // namespace macho
