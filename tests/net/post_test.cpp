// Posts over the real network stack to the server on loopback that with_server.py runs beside this program.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "net/wininet_calls.h"
#include "tests/support/test_heap.h"

#include <tlhelp32.h>
#include <wincrypt.h>
#include <winternl.h>

namespace toolbelt {
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
    const char* ports = std::getenv("TOOLBELT_TEST_PORTS");
    char* end = const_cast<char*>(ports ? ports : "");
    std::uint32_t port = 0;
    for (int i = PLAIN; i <= which; ++i) port = static_cast<std::uint32_t>(std::strtoul(end, &end, 10));
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

Posted post(const WinInetCalls& calls, const std::string& body, const wchar_t* path, Port port = PLAIN)
{
    cByteBuffer answer;
    EXPECT_TRUE(answer.append("before", 6));
    const Status status =
        postJsonThrough(calls, answer, body.c_str(), L"localhost", path, portNumber(port), port != PLAIN);
    return {status, textOf(answer)};
}
Posted post(const std::string& body, const wchar_t* path, Port port = PLAIN)
{
    return post(WinInetCalls(), body, path, port);
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
        for (const std::string digits = hex; der_.size() < digits.size() / 2;)
            der_.push_back(static_cast<BYTE>(std::stoul(digits.substr(der_.size() * 2, 2), nullptr, 16)));
        change([](HCERTSTORE store, PCCERT_CONTEXT authority) {
            EXPECT_TRUE(CertAddCertificateContextToStore(store, authority, CERT_STORE_ADD_REPLACE_EXISTING, nullptr));
        });
    }
    void TearDown() override
    {
        change([](HCERTSTORE store, PCCERT_CONTEXT authority) {
            EXPECT_TRUE(CertDeleteCertificateFromStore(
                CertFindCertificateInStore(store, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING, authority, nullptr)));
        });
    }

private:
    void change(void (*work)(HCERTSTORE store, PCCERT_CONTEXT authority))
    {
        const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
        const PCCERT_CONTEXT authority =
            CertCreateCertificateContext(X509_ASN_ENCODING, der_.data(), static_cast<DWORD>(der_.size()));
        work(store, authority);
        CertFreeCertificateContext(authority);
        EXPECT_TRUE(CertCloseStore(store, 0));
    }
    std::vector<BYTE> der_;
};
[[maybe_unused]] const testing::Environment* const known = testing::AddGlobalTestEnvironment(new KnownAuthority);

const Posted refused = {POST_E_ANSWER, "before"};
const Posted notSent = {POST_E_NOT_SENT, "before"};

TEST(Post, SendsTheRequestAsToldAndBringsTheAnswer)
{
    const std::string body = "{\"name\": \"\xC3\xA4\", \"list\": [1, 2]}\r\n\r\n";
    const struct
    {
        const wchar_t* path;
        const char* firstLine;
    } rows[] = {{nullptr, "POST / HTTP/1.1\r\n"},
                {L"echo", "POST /echo HTTP/1.1\r\n"},
                {L"api/items?a=b", "POST /api/items?a=b HTTP/1.1\r\n"}};
    for (const auto& row : rows) {
        const Posted posted = post(body, row.path);
        EXPECT_EQ(posted.status, STATUS_OK);
        EXPECT_EQ(posted.answer.find(row.firstLine), 0u) << posted.answer;
        for (const std::string line :
             {"Content-Type: application/json", "User-Agent: Post JSON Message", "Pragma: no-cache"})
            EXPECT_NE(posted.answer.find("\r\n" + line + "\r\n"), std::string::npos) << line << "\n" << posted.answer;
        EXPECT_NE(posted.answer.find("\r\nContent-Length: " + std::to_string(body.size()) + "\r\n"), std::string::npos);
        EXPECT_TRUE(posted.answer.ends_with("\r\n\r\n" + body)) << posted.answer;
    }
    cByteBuffer answer;
    const std::wstring url = L" http://127.0.0.1:" + std::to_wstring(portNumber(PLAIN)) + L"/echo";
    EXPECT_EQ(postJsonToUrl(answer, nullptr, url.c_str()), STATUS_OK);
    EXPECT_NE(textOf(answer).find("\r\nContent-Length: 0\r\n"), std::string::npos) << textOf(answer);
    EXPECT_EQ(postJsonToUrl(answer, "{}", L"ftp://localhost/"), POST_E_URL);
}

TEST(Post, JudgesAnswersByTheirLengthAlone)
{
    const std::string ok = "HTTP/1.1 200 OK\r\n", length = "Content-Length: ", end = "\r\n\r\n";
    const struct
    {
        std::string reply;
        Posted wanted;
    } rows[] = {
        {ok + length + "7" + end + "{\"a\":1}", {0, "{\"a\":1}"}},
        {ok + length + "2" + end + "{}more than was announced", {0, "{}"}},
        {"HTTP/1.1 404 Not Found\r\n" + length + "9" + end + "not found", {0, "not found"}},
        {"HTTP/1.1 500 Oops\r\n" + length + "4" + end + "oops", {0, "oops"}},
        {"HTTP/1.0 200 OK\r\n" + length + "3" + end + "old", {0, "old"}},
        {"HTTP/1.1 302 Found\r\nLocation: http://localhost:" + std::to_string(portNumber(PLAIN)) + "/large/5\r\n" +
             length + "5" + end + "moved",
         {0, std::string("\0\7\16\25\34", 5)}},
        {ok + "Transfer-Encoding: chunked" + end + "2\r\n{}\r\n0\r\n\r\n", refused},
        {ok + length + "0" + end, refused},
        {ok + "Content-Type: text/plain" + end + "until the end", refused},
        {ok + length + "8" + end + "{\"a\":1}", refused}, // cut short
        {ok + length + "268435457" + end + "one more", refused},
        {ok + length + "4294967295" + end + "x", refused},
        {ok + length + "4294967297" + end + "x", refused},
        {ok + length + "18446744073709551617" + end + "x", refused},
        {ok + length + "-1" + end + "x", refused},
        {ok + length + "many" + end + "x", refused},
        {ok + length + end + "x", refused},
    };
    for (const auto& row : rows) EXPECT_EQ(post(row.reply, L"reply"), row.wanted) << row.reply;
    // Closed at once, or nothing that is HTTP: systems differ in what they call sent.
    for (const std::string reply : {"", "HTTP/1.1", "rubbish", "\r\n\r\n"}) {
        const Posted posted = post(reply, L"reply");
        EXPECT_TRUE(posted == refused || posted == notSent) << reply << ": " << posted.status << posted.answer;
    }
}

TEST(Post, WaitsForSlowAnswersAndReadsLongOnesWhole)
{
    EXPECT_EQ(post("HTTP/1.1 200 OK\r\nContent-Length: 40\r\n\r\n" + std::string(40, 's'), L"slow"),
              (Posted{0, std::string(40, 's')}));
    std::string large(5'000'000, 0);
    for (std::size_t i = 0; i < large.size(); ++i) large[i] = static_cast<char>(i * 7 % 251);
    EXPECT_TRUE(post("{}", L"large/5000000") == (Posted{0, large}));
    const Posted echoed = post(std::string(1'000'000, 'b'), L"echo"); // and a long document
    EXPECT_EQ(echoed.status, 0);
    EXPECT_GT(echoed.answer.size(), 1'000'000u);
}

TEST(Post, FailsWhereNobodyListensAndAtImpossiblePlaces)
{
    cByteBuffer answer;
    const std::uint32_t port = portNumber(PLAIN);
    EXPECT_EQ(postJson(answer, "{}", L"127.0.0.1", L"echo", 1, 0), POST_E_NOT_SENT);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INTERNET_CANNOT_CONNECT}); // of the call that failed, not of the closing
    EXPECT_EQ(postJson(answer, "{}", L"127.0.0.1", L"echo", 65536 + port, 0), POST_E_ANSWER);
    EXPECT_EQ(postJson(answer, "{}", nullptr, L"echo", port, 0), POST_E_ANSWER);
    EXPECT_EQ(postJson(answer, "{}", L"", L"echo", port, 0), POST_E_ANSWER);
    EXPECT_EQ(answer.length(), 0u);
}

TEST(Post, IsStoppedByTheSwitchBeforeTheNetwork)
{
    const int before = std::stoi(post("{}", L"count").answer);
    EXPECT_FALSE(setPostsStopped(true)); // not stopped at first
    EXPECT_EQ(post("{}", L"echo"), notSent);
    EXPECT_EQ(post("{}", L"echo"), notSent); // and stays stopped
    EXPECT_TRUE(setPostsStopped(false));
    EXPECT_EQ(post("{}", L"count").answer, std::to_string(before + 1));
}

TEST(Post, EndsCleanlyWithoutMemory)
{
    const std::wstring url = L"http://localhost:" + std::to_wstring(portNumber(PLAIN)) + L"/large/9";
    EXPECT_GT(test::forEachFailingAllocation([&](test::TestHeap& heap) {
                  cByteBuffer answer;
                  const Status status = postJsonToUrl(answer, "{}", url.c_str());
                  EXPECT_EQ(answer.length(), status == 0 ? 9u : 0u);
                  EXPECT_EQ(status, !heap.failed() ? STATUS_OK : heap.allocations() == 1 ? POST_E_URL : POST_E_ANSWER);
              }),
              2u);
}

TEST(Post, SecureConnectionsNeedAKnownAuthorityButNeitherNameNorDate)
{
    const Posted wanted = {0, std::string("\0\7\16\25", 4)};
    for (const Port port : {TLS_GOOD, TLS_WRONG_NAME, TLS_EXPIRED})
        EXPECT_EQ(post("{}", L"large/4", port), wanted) << port;
    EXPECT_EQ(post("{}", L"large/4", TLS_UNKNOWN_AUTHORITY), notSent);
    EXPECT_GT(post("{}", L"large/1000000", TLS_GOOD).answer.size(), 999'999u);
}

// Calls that only write down their handle and what the network does not show. One that is to fail leaves a system
// error, and closing another.
namespace script {

std::string seen, failing;
DWORD announced, arriving;

bool step(const std::string& call, HINTERNET handle, DWORD value = 0)
{
    char line[64];
    std::snprintf(line, sizeof line, "%s %d %lX, ", call.c_str(), static_cast<int>(reinterpret_cast<INT_PTR>(handle)),
                  value);
    seen += line;
    if (call == failing) SetLastError(1234);
    return call != failing;
}
HINTERNET handle(bool opened, std::uintptr_t number)
{
    return reinterpret_cast<HINTERNET>(opened ? number : 0);
}
HINTERNET WINAPI open(LPCWSTR, DWORD access, LPCWSTR proxy, LPCWSTR bypass, DWORD flags)
{
    return handle(step("open", nullptr, access + flags + (proxy || bypass)), 1);
}
HINTERNET WINAPI connect(HINTERNET root, LPCWSTR, INTERNET_PORT, LPCWSTR, LPCWSTR, DWORD service, DWORD, DWORD_PTR)
{
    return handle(step("connect", root, service), 2);
}
HINTERNET WINAPI openRequest(HINTERNET connection, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR*, DWORD flags, DWORD_PTR)
{
    return handle(step("request", connection, flags), 3);
}
BOOL WINAPI send(HINTERNET request, LPCWSTR, DWORD headerLength, LPVOID, DWORD)
{
    return step("send", request, headerLength);
}
BOOL WINAPI query(HINTERNET request, DWORD what, LPVOID value, LPDWORD size, LPDWORD)
{
    std::memcpy(value, &announced, *size);
    return step("query", request, what);
}
BOOL WINAPI read(HINTERNET request, LPVOID to, DWORD size, LPDWORD read)
{
    if (size >= arriving) std::memset(to, 'a', *read = arriving);
    return step("read", request, size);
}
BOOL WINAPI close(HINTERNET handle)
{
    SetLastError(4321);
    return step("close", handle);
}
const WinInetCalls calls = {open, connect, openRequest, send, query, read, close};

} // namespace script

TEST(Post, MakesTheCallsAsToldAndClosesItsHandlesInOrderOnEveryPath)
{
    const std::string opened = "open 0 0, ", connected = opened + "connect 1 3, ";
    const std::string requested = connected + "request 2 8404F700, ", sent = requested + "send 3 FFFFFFFF, ";
    const std::string queried = sent + "query 3 20000005, ", read = queried + "read 3 5, ";
    const std::string closedOne = "close 1 0, ", closedTwo = "close 2 0, " + closedOne;
    const std::string closed = "close 3 0, " + closedTwo;
    const struct
    {
        const char* failing;
        DWORD announced, arriving;
        Posted wanted;
        std::string seen;
    } rows[] = {
        {"", 5, 5, {0, "aaaaa"}, read + closed},
        {"open", 5, 5, notSent, opened},
        {"connect", 5, 5, refused, connected + closedOne},
        {"request", 5, 5, refused, requested + closedTwo},
        {"send", 5, 5, notSent, sent + closed},
        {"query", 5, 5, refused, queried + closed},
        {"read", 5, 5, refused, read + closed},
        {"", 0, 0, refused, queried + closed},
        {"", 5, 4, refused, read + closed},
        {"", POST_ANSWER_LIMIT + 1, 0, refused, queried + closed},
    };
    for (const auto& row : rows) {
        script::seen.clear();
        script::failing = row.failing;
        script::announced = row.announced;
        script::arriving = row.arriving;
        SetLastError(1234);
        EXPECT_EQ(post(script::calls, "{}", L"a/b"), row.wanted) << row.failing << row.announced;
        EXPECT_EQ(script::seen, row.seen);
        EXPECT_EQ(GetLastError(), 1234u); // whatever the closing said
    }
    script::seen.clear();
    static_cast<void>(post(script::calls, "{}", nullptr, TLS_GOOD));
    EXPECT_EQ(script::seen.find("open 0 0, connect 1 3, request 2 8484F700, "), 0u) << script::seen;
}

TEST(Post, ManyThreadsPostAtOnce)
{
    std::vector<std::thread> threads;
    std::atomic<int> right = 0;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&right, i] {
            for (int n = 0; n < 5; ++n) {
                const std::string own = "{\"" + std::to_string(i * 5 + n) + "\"}";
                right += post(own, L"echo").answer.ends_with("\r\n\r\n" + own);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(right, 40);
}

// What the process holds: handles and threads by the system's own lists, blocks by walking the process's heap.
struct Held
{
    int handles = 0, threads = 0, blocks = 0;
};

Held held()
{
    Held found;
    std::vector<ULONG> list(1 << 18); // count, then entries of 16 bytes that begin with the process
    ULONG size = 0;
    NtQuerySystemInformation(static_cast<SYSTEM_INFORMATION_CLASS>(16), list.data(),
                             static_cast<ULONG>(list.size() * sizeof(ULONG)), &size);
    for (ULONG i = 0; i < list[0] && i * 4 + 4 < list.size(); ++i)
        found.handles += list[1 + i * 4] == GetCurrentProcessId();
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 thread = {};
    thread.dwSize = sizeof thread;
    for (BOOL more = Thread32First(snapshot, &thread); more; more = Thread32Next(snapshot, &thread))
        found.threads += thread.th32OwnerProcessID == GetCurrentProcessId();
    CloseHandle(snapshot);
    PROCESS_HEAP_ENTRY entry = {};
    while (HeapWalk(GetProcessHeap(), &entry)) found.blocks += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    return found;
}

DWORD WINAPI endAtOnce(void*)
{
    return 0;
}

TEST(Post, LeavesNoHandleThreadOrBlockBehind)
{
    Held before = held();
    const HANDLE event = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE thread = CreateThread(nullptr, 0, endAtOnce, nullptr, CREATE_SUSPENDED, nullptr);
    const HGLOBAL block = GlobalAlloc(GMEM_FIXED, 100);
    const Held planted = held(); // the counters see what is left behind
    EXPECT_EQ(planted.handles, before.handles + 2);
    EXPECT_EQ(planted.threads, before.threads + 1);
    EXPECT_GE(planted.blocks, before.blocks + 1);
    CloseHandle(event);
    ResumeThread(thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    GlobalFree(block);

    const auto plain = [] {
        static_cast<void>(post("{}", L"echo"));
        static_cast<void>(post("{}", L"close"));
        static_cast<void>(post("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nshort", L"reply"));
        static_cast<void>(post("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n", L"reply"));
    };
    const auto secure = [] {
        static_cast<void>(post("{}", L"large/70000", TLS_GOOD));
        static_cast<void>(post("{}", L"echo", TLS_UNKNOWN_AUTHORITY));
    };
    constexpr int ROUNDS = 10, SOME = ROUNDS / 2;  // a kind of post that leaves one thing leaves one a round
    for (int i = 0; i < 3; ++i) plain(), secure(); // what the system sets up once
    before = held();
    for (int i = 0; i < ROUNDS; ++i) plain();
    EXPECT_LT(held().blocks, before.blocks + SOME);
    // Under Wine each secure connection costs three blocks of the system's own, whoever makes the calls.
    for (int i = 0; i < ROUNDS; ++i) secure();
    EXPECT_LT(held().handles, before.handles + SOME);
    EXPECT_LT(held().threads, before.threads + SOME);
}

} // namespace
} // namespace toolbelt
