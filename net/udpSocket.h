// One datagram socket with a local and a remote address.
#pragma once

#include <cstdint>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>

// Used by one thread at a time; it has no lock. The text of an address alone decides its family: a
// text with a colon is IPv6, any other IPv4. Messages go to standard output.
class UdpSocket {
public:
    std::int32_t socketFd; // negative when opening failed
    std::string ipAddr;    // the address given to the two-argument constructor
    std::string spareIpAddr;
    std::int32_t port;      // the port given to the two-argument constructor
    std::int32_t sinFamily; // the family that the two-argument constructor chose
    bool connected;         // the descriptor was opened; every transfer requires it
    sockaddr_storage localAddr;
    sockaddr_storage remoteAddr; // the destination; receive() replaces it with the sender
    timeval timeout;

    // Opens an IPv4 socket. Prints "cannot open socket" when that fails; the object can then only
    // be destroyed, and transfers return -1.
    UdpSocket();

    // Opens a socket of the family of `ip` and binds it to `ip`:`port`. A failed bind leaves the
    // socket open and connected.
    UdpSocket(std::string ip, int port);

    // Closes the descriptor.
    ~UdpSocket();

    UdpSocket(const UdpSocket &) = delete;
    UdpSocket &operator=(const UdpSocket &) = delete;

    // AF_INET6 if `ip` contains a colon, else AF_INET.
    int getSinFamilyFromIp(std::string ip);

    // Binds to `ip`:`port` and allows broadcasts. 0 when bound, -1 when not ("cannot bind socket :
    // " and the reason are printed). The address length follows the family of remoteAddr.
    int bindTo(std::string ip, int port);

    // Sets the destination. 1 when the address was parsed, 0 when not. An IPv6 address gives the
    // socket a new descriptor; the earlier one stays open until the process ends.
    int setRemote(std::string ip, int port);

    // Sends one datagram to the destination. The bytes sent, or -1 ("socket not connected" is
    // printed when the descriptor never opened; other failures are silent).
    int send(char *buffer, int length);

    // Waits for one datagram, at most for the time set by setTimeout(). The bytes received, or -1.
    int receive(char *buffer, int length);

    // Sets the receive time-out. Always 0.
    int setTimeout(int milliseconds);

    // Fails on an open socket ("Socket is already connected, cannot make changes now", -1).
    // Otherwise makes the descriptor non-blocking: 0, or -1 with "Error while setting socket non
    // blocking".
    int enableNonBlockingMode();

    // A copy of ipAddr.
    std::string getIpAddr();

    // The port of localAddr in host byte order.
    int getPort();

    // The machine's first IPv4 address other than 127.0.0.1, or empty. Prints what it examines.
    std::string getLocalIp();

    // The machine's last IPv6 address, or empty. Prints the interfaces that it examines.
    std::string getLocalIpv6();
};
