#include "net/post_json.h"

#include <atomic>
#include <cstring>

#include "net/split_url.h"
#include "net/wininet_calls.h"

namespace toolbelt {
namespace {

std::atomic<bool> postsStopped = false;

constexpr DWORD PLAIN_FLAGS = INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE | INTERNET_FLAG_NO_AUTH |
                              INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTP | INTERNET_FLAG_IGNORE_REDIRECT_TO_HTTPS |
                              INTERNET_FLAG_IGNORE_CERT_DATE_INVALID | INTERNET_FLAG_IGNORE_CERT_CN_INVALID |
                              INTERNET_FLAG_HYPERLINK | INTERNET_FLAG_NO_UI | INTERNET_FLAG_PRAGMA_NOCACHE;
constexpr DWORD SECURE_FLAGS = PLAIN_FLAGS | INTERNET_FLAG_SECURE;
static_assert(PLAIN_FLAGS == 0x8404F700 && SECURE_FLAGS == 0x8484F700);

constexpr DWORD CONTENT_LENGTH_NUMBER = HTTP_QUERY_FLAG_NUMBER | HTTP_QUERY_CONTENT_LENGTH;
static_assert(CONTENT_LENGTH_NUMBER == 0x20000005);

// Closes a handle at the end of its scope, so that the last one opened is closed first. The system error that ended the
// work survives the closing.
class InternetHandle
{
public:
    InternetHandle(const WinInetCalls& calls, HINTERNET handle) : calls_(calls), handle_(handle) {}
    ~InternetHandle()
    {
        if (handle_ == nullptr) return;
        const DWORD error = GetLastError();
        calls_.closeHandle(handle_);
        SetLastError(error);
    }
    InternetHandle(const InternetHandle&) = delete;
    InternetHandle& operator=(const InternetHandle&) = delete;

    explicit operator bool() const { return handle_ != nullptr; }
    HINTERNET get() const { return handle_; }

private:
    const WinInetCalls& calls_;
    HINTERNET handle_;
};

// The announced length counts, and nothing but the whole of it is an answer.
Status readAnswer(const WinInetCalls& calls, cByteBuffer& answer, HINTERNET request)
{
    DWORD length = 0, size = sizeof length, read = 0;
    if (!calls.queryInfo(request, CONTENT_LENGTH_NUMBER, &length, &size, nullptr)) return POST_E_ANSWER;
    if (length == 0 || length > POST_ANSWER_LIMIT) return POST_E_ANSWER;
    cByteBuffer whole;
    if (!whole.allocate(length)) return POST_E_ANSWER;
    if (!calls.readFile(request, whole.data(), length, &read) || read != length) return POST_E_ANSWER;
    answer.swap(whole);
    return STATUS_OK;
}

} // namespace

Status postJsonThrough(const WinInetCalls& calls, cByteBuffer& answer, const char* body, const wchar_t* host,
                       const wchar_t* path, std::uint32_t port, std::uint8_t secure) noexcept
{
    if (postsStopped) return POST_E_NOT_SENT;
    const InternetHandle root(calls,
                              calls.open(L"Post JSON Message", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (!root) return POST_E_NOT_SENT;

    if (port > UINT16_MAX) return POST_E_ANSWER; // cut to 16 bits it would be another server's
    const InternetHandle connection(calls, calls.connect(root.get(), host, static_cast<INTERNET_PORT>(port), nullptr,
                                                         nullptr, INTERNET_SERVICE_HTTP, 0, 0));
    if (!connection) return POST_E_ANSWER;
    const InternetHandle request(calls, calls.openRequest(connection.get(), L"POST", path, L"HTTP/1.1", nullptr,
                                                          nullptr, secure ? SECURE_FLAGS : PLAIN_FLAGS, 0));
    if (!request) return POST_E_ANSWER;

    const DWORD length = body ? static_cast<DWORD>(std::strlen(body)) : 0;
    if (!calls.sendRequest(request.get(), L"Content-Type: application/json", static_cast<DWORD>(-1),
                           const_cast<char*>(body), length))
        return POST_E_NOT_SENT;
    return readAnswer(calls, answer, request.get());
}

Status postJson(cByteBuffer& answer, const char* body, const wchar_t* host, const wchar_t* path, std::uint32_t port,
                std::uint8_t secure) noexcept
{
    return postJsonThrough(WinInetCalls(), answer, body, host, path, port, secure);
}

Status postJsonToUrl(cByteBuffer& answer, const char* body, const wchar_t* url) noexcept
{
    UrlParts parts;
    if (!splitUrl(parts, url)) return POST_E_URL;
    return postJson(answer, body, parts.host, parts.path, parts.port, parts.secure);
}

bool setPostsStopped(bool stopped) noexcept
{
    return postsStopped.exchange(stopped);
}

} // namespace toolbelt
