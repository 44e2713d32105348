#pragma once

#include "platform/base/export.h"

// Socket errors. They share the calling thread's last error with everything else.

constexpr int WSAEINTR = 10004; ///< the waiting call was cancelled
constexpr int WSAEACCES = 10013;
constexpr int WSAEINVAL = 10022; ///< also: no such host name
constexpr int WSAEMFILE = 10024;
constexpr int WSAEWOULDBLOCK = 10035;
constexpr int WSAEINPROGRESS = 10036; ///< another call of the socket waits
constexpr int WSAEALREADY = 10037;
constexpr int WSAENOTSOCK = 10038;
constexpr int WSAESOCKTNOSUPPORT = 10044;
constexpr int WSAEAFNOSUPPORT = 10047;
constexpr int WSAEADDRINUSE = 10048;
constexpr int WSAEADDRNOTAVAIL = 10049;
constexpr int WSAENETDOWN = 10050;
constexpr int WSAENETUNREACH = 10051;
constexpr int WSAECONNABORTED = 10053;
constexpr int WSAECONNRESET = 10054;
constexpr int WSAENOBUFS = 10055;
constexpr int WSAEISCONN = 10056;
constexpr int WSAENOTCONN = 10057;
constexpr int WSAETIMEDOUT = 10060;
constexpr int WSAECONNREFUSED = 10061;
constexpr int WSAEHOSTUNREACH = 10065;
constexpr int WSASYSCALLFAILURE = 10107;

TARNEL_PLATFORM_API int WSAGetLastError();
