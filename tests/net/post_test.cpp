// Posts over the real network stack to the server on loopback that with_server.py runs beside this program.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "net/wininet_calls.h"
#include "tests/cli/process.h"
#include "tests/support/vectors.h"

#include <wincrypt.h>

namespace toolbelt::test {
namespace {

enum Port // in the server's order
{
    PLAIN,
    TLS_GOOD,
    TLS_WRONG_NAME,
    TLS_EXPIRED,
    TLS_UNKNOWN_AUTHORITY,
};

std::uint32_t portNumber(Port which)
{
    char* end = std::getenv("TOOLBELT_TEST_PORTS");
    std::uint32_t port = 0;
    for (int i = PLAIN; end && i <= which; ++i) port = static_cast<std::uint32_t>(std::strtoul(end, &end, 10));
    return port;
}

std::string textOf(const cByteBuffer& buffer)
{
    return {reinterpret_cast<const char*>(buffer.data()), buffer.length()};
}

struct Posted
{
    Status status;
    std::string answer; // "before" is what the buffer held
    bool operator==(const Posted&) const = default;
};
void PrintTo(const Posted& posted, std::ostream* out)
{
    *out << posted.status << ", " << posted.answer.substr(0, 200);
}
const Posted refused = {POST_E_ANSWER, "before"};
const Posted notSent = {POST_E_NOT_SENT, "before"};

Posted post(const std::string& body, const wchar_t* path, Port port = PLAIN, const WinInetCalls& calls = {})
{
    cByteBuffer answer;
    EXPECT_TRUE(answer.append("before", 6));
    const Status status =
        postJsonThrough(calls, answer, body.c_str(), L"127.0.0.1", path, portNumber(port), port != PLAIN);
    return {status, textOf(answer)};
}

// Makes the authority of the server's certificates known to the system. The store has to be closed, and with that
// written, before the system checks its first certificate.
class KnownAuthority : public testing::Environment
{
public:
    void SetUp() override
    {
        const char* hex = std::getenv("TOOLBELT_TEST_AUTHORITY");
        ASSERT_NE(hex, nullptr) << "to be run by with_server.py";
        der_ = fromHex(hex);
        change([](HCERTSTORE store, PCCERT_CONTEXT authority) {
            return CertAddCertificateContextToStore(store, authority, CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
        });
        // The first post of a session under Wine starts a process of the desktop, which then belongs to no test.
        static_cast<void>(post("{}", L"echo"));
    }
    void TearDown() override
    {
        change([](HCERTSTORE store, PCCERT_CONTEXT authority) {
            return CertDeleteCertificateFromStore(
                CertFindCertificateInStore(store, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, authority, nullptr));
        });
    }

private:
    void change(BOOL (*work)(HCERTSTORE store, PCCERT_CONTEXT authority))
    {
        const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
        const PCCERT_CONTEXT authority = CertCreateCertificateContext(X509_ASN_ENCODING, der_.data(), sizeOf(der_));
        EXPECT_TRUE(work(store, authority));
        CertFreeCertificateContext(authority);
        EXPECT_TRUE(CertCloseStore(store, 0));
    }
    Bytes der_;
};
[[maybe_unused]] const testing::Environment* const known = testing::AddGlobalTestEnvironment(new KnownAuthority);

TEST(Post, SendsTheRequestAsToldAndBringsTheAnswer)
{
    const std::string body = "{\"name\": \"\xC3\xA4\", \"list\": [1, 2]}\r\n\r\n";
    const std::pair<const wchar_t*, const char*> rows[] = {{nullptr, "POST / HTTP/1.1\r\n"},
                                                           {L"a/b?c=d", "POST /a/b?c=d HTTP/1.1\r\n"}};
    for (const auto& [path, firstLine] : rows) {
        const Posted posted = post(body, path);
        EXPECT_TRUE(posted.answer.starts_with(firstLine)) << posted.answer;
        for (const std::string line : {"Content-Type: application/json", "User-Agent: Post JSON Message",
                                       "Pragma: no-cache", "Content-Length: 34"})
            EXPECT_TRUE(contains(posted.answer, "\r\n" + line + "\r\n")) << line << "\n" << posted.answer;
        EXPECT_TRUE(posted.answer.ends_with("\r\n\r\n" + body)) << posted.answer;
    }
    cByteBuffer answer;
    const std::wstring url = L" http://127.0.0.1:" + std::to_wstring(portNumber(PLAIN)) + L"/echo";
    EXPECT_EQ(postJsonToUrl(answer, nullptr, url.c_str()), STATUS_OK);
    EXPECT_TRUE(contains(textOf(answer), "\r\nContent-Length: 0\r\n")) << textOf(answer);
    std::string large(5'000'000, 0);
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7 % 251);
    EXPECT_TRUE(post("{}", L"large/5000000") == (Posted{0, large}));
    EXPECT_GT(post(std::string(1'000'000, 'b'), L"echo").answer.size(), 1'000'000u); // and a long document
}

TEST(Post, JudgesAnswersByTheirLengthAlone)
{
    const auto withLineEnds = [](std::string text) { // which the file writes as a bar
        for (std::size_t at; (at = text.find('|')) != std::string::npos;) text.replace(at, 1, "\r\n");
        return text;
    };
    for (const Record& record : readVectors("../net/replies.txt")) {
        const Posted wanted = record.has("answer") ? Posted{0, record.get("answer")} : refused;
        EXPECT_EQ(post(withLineEnds(record.get("reply")), L"reply"), wanted) << record.where;
        EXPECT_TRUE(record.unread().empty()) << record.where;
    }
    const std::string moved = "HTTP/1.1 302 Found|Location: http://127.0.0.1:" + std::to_string(portNumber(PLAIN)) +
                              "/large/5|Content-Length: 5||moved";
    EXPECT_EQ(post(withLineEnds(moved), L"reply"), (Posted{0, std::string("\0\7\16\25\34", 5)}));
    const std::string body(40, 's');
    EXPECT_EQ(post(withLineEnds("HTTP/1.1 200 OK|Content-Length: 40||" + body), L"slow"), (Posted{0, body}));
    // Closed at once, or nothing that is HTTP: systems differ in what they call sent.
    for (const std::string reply : {"", "HTTP/1.1", "rubbish"}) {
        const Posted posted = post(reply, L"reply");
        EXPECT_TRUE(posted == refused || posted == notSent) << reply << ": " << posted.status << posted.answer;
    }
}

TEST(Post, SecureConnectionsNeedAKnownAuthorityButNeitherNameNorDate)
{
    const Posted wanted = {0, std::string("\0\7\16\25", 4)};
    for (const Port port : {TLS_GOOD, TLS_WRONG_NAME, TLS_EXPIRED})
        EXPECT_EQ(post("{}", L"large/4", port), wanted) << port;
    EXPECT_EQ(post("{}", L"large/4", TLS_UNKNOWN_AUTHORITY), notSent);
}

// The real calls, one of which fails instead of being made, the numbers that they were given, and what they opened and
// closed.
int made, failing;
std::vector<DWORD> numbers;
std::vector<HINTERNET> opened, closed;

template <auto CALL, typename Result, typename... Arguments>
Result WINAPI noted(Arguments... arguments)
{
    const auto note = [](auto argument) {
        if constexpr (std::is_same_v<decltype(argument), DWORD>) numbers.push_back(argument);
    };
    (note(arguments), ...);
    if (++made == failing) {
        SetLastError(1234);
        return Result();
    }
    const Result result = (WinInetCalls().*CALL)(arguments...);
    if constexpr (std::is_pointer_v<Result>) opened.push_back(result);
    return result;
}

BOOL WINAPI close(HINTERNET handle)
{
    closed.push_back(handle);
    const BOOL done = InternetCloseHandle(handle);
    SetLastError(4321);
    return done;
}

TEST(Post, MakesTheCallsAsToldAndClosesItsHandlesInOrderOnEveryPath)
{
    const WinInetCalls calls = {noted<&WinInetCalls::open>,
                                noted<&WinInetCalls::connect>,
                                noted<&WinInetCalls::openRequest>,
                                noted<&WinInetCalls::sendRequest>,
                                noted<&WinInetCalls::queryInfo>,
                                noted<&WinInetCalls::readFile>,
                                close};
    const auto postFailing = [&](int call, Port port = PLAIN) {
        made = 0;
        failing = call;
        numbers.clear();
        opened.clear();
        closed.clear();
        return post("{}", L"large/3", port, calls);
    };
    const Posted wanted[] = {{0, std::string("\0\7\16", 3)}, notSent, refused, refused, notSent, refused, refused};
    for (int call = 0; call < 7; ++call) {
        EXPECT_EQ(postFailing(call), wanted[call]) << call;
        EXPECT_EQ(GetLastError() == 1234, call != 0); // whatever the closing said
        EXPECT_EQ(opened.size(), call == 0 ? 3u : std::min(3u, static_cast<unsigned>(call) - 1));
        std::reverse(opened.begin(), opened.end());
        EXPECT_EQ(closed, opened);
    }
    for (const Port port : {PLAIN, TLS_GOOD}) {
        EXPECT_EQ(postFailing(0, port), wanted[0]);
        const DWORD flags = port == PLAIN ? 0x8404F700 : 0x8484F700, headerLength = 0xFFFFFFFF;
        EXPECT_EQ(numbers, (std::vector<DWORD>{0, 0, 3, 0, 0, flags, 0, headerLength, 2, 0x20000005, 3}));
    }
    EXPECT_FALSE(setPostsStopped(true)); // not stopped at first
    EXPECT_EQ(postFailing(0), notSent);
    EXPECT_EQ(made, 0);
    EXPECT_TRUE(setPostsStopped(false));
    EXPECT_EQ(postFailing(0), wanted[0]);
}

TEST(Post, FailsWhereNobodyListensAndAtImpossiblePlaces)
{
    cByteBuffer answer;
    const std::uint32_t port = portNumber(PLAIN);
    EXPECT_EQ(postJson(answer, "{}", L"127.0.0.1", L"echo", 1, 0), POST_E_NOT_SENT);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INTERNET_CANNOT_CONNECT});
    EXPECT_EQ(postJson(answer, "{}", L"127.0.0.1", L"echo", 65536 + port, 0), POST_E_ANSWER);
    EXPECT_EQ(postJson(answer, "{}", nullptr, L"echo", port, 0), POST_E_ANSWER);
    EXPECT_EQ(postJsonToUrl(answer, "{}", L"ftp://127.0.0.1/"), POST_E_URL);
}

TEST(Post, ManyThreadsPostAtOnce)
{
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&right, i] {
            const std::string own = "{\"" + std::to_string(i) + "\"}";
            for (int n = 0; n < 5; ++n) right += post(own, L"echo").answer.ends_with("\r\n\r\n" + own);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 40);
}

// What it says of failures is among the calls of tests/cli.
TEST(PostTool, PrintsTheAnswer)
{
    const std::string url = "http://127.0.0.1:" + std::to_string(portNumber(PLAIN)) + "/json";
    const Outcome posted = run({"post", url, "-"}, "{\"name\": \"\xC3\xA4\"}");
    EXPECT_EQ(posted.exitCode, 0);
    EXPECT_EQ(posted.out, "{\"method\":\"POST\",\"path\":\"/json\",\"received\":{\"name\": \"\xC3\xA4\"}}");
    EXPECT_EQ(posted.err, "");
    EXPECT_TRUE(contains(run({"--json", "post", url, "-"}, "{}").out, "\"answer\":\"{\\\"method\\\":"));
}

} // namespace
} // namespace toolbelt::test
