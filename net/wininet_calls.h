// The calls of WinINet that a post makes, as a table: a test puts its own in between, to see every handle closed in
// order and to make any call fail.
#pragma once

#include "net/post_json.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#include <wininet.h>

namespace toolbelt {

struct WinInetCalls
{
    decltype(&InternetOpenW) open = InternetOpenW;
    decltype(&InternetConnectW) connect = InternetConnectW;
    decltype(&HttpOpenRequestW) openRequest = HttpOpenRequestW;
    decltype(&HttpSendRequestW) sendRequest = HttpSendRequestW;
    decltype(&HttpQueryInfoW) queryInfo = HttpQueryInfoW;
    decltype(&InternetReadFile) readFile = InternetReadFile;
    decltype(&InternetCloseHandle) closeHandle = InternetCloseHandle;
};

// postJson through these calls.
Status postJsonThrough(const WinInetCalls& calls, cByteBuffer& answer, const char* body, const wchar_t* host,
                       const wchar_t* path, std::uint32_t port, std::uint8_t secure) noexcept;

} // namespace toolbelt
