// post: a JSON document to a web server, and its answer.
#include "net/post_json.h"

#include <cstring>

#include <windows.h>

#include "cli/command.h"
#include "cli/files.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t POST_FILE_LIMIT = 256u << 20;

Failure postFailure(const std::string& url, Status status, std::uint32_t systemError)
{
    if (status == POST_E_URL)
        return Failure(url, withStatus("not a URL that begins with http:// or https://", status), EXIT_USAGE);
    const std::string what =
        status == POST_E_NOT_SENT
            ? "the document could not be sent, system error " + std::to_string(systemError)
            : "no connection, or no answer that tells its length and comes whole, of at most 256 MB";
    return Failure(url, withStatus(what.c_str(), status), EXIT_SYSTEM);
}

void post(const std::string& url, const std::string& file)
{
    Bytes document = readWhole(file, POST_FILE_LIMIT);
    document.push_back(0);
    if (std::strlen(characters(document)) + 1 != document.size())
        throw Failure(file, "a zero byte in it: not a JSON document in UTF-8", EXIT_INPUT);
    cByteBuffer answer;
    const Status status = postJsonToUrl(answer, characters(document), toWide(url).c_str());
    if (status != STATUS_OK) throw postFailure(url, status, GetLastError());
    const std::string_view text(reinterpret_cast<const char*>(answer.data()), answer.length());
    if (usesJson())
        printResult({"answer", toUtf8(toWide(text))});
    else
        print(text);
}

} // namespace

Action preparePost(Parser& parser)
{
    struct Options
    {
        std::string url, file;
    };
    const auto options = std::make_shared<Options>();
    parser.option("URL", options->url, "http:// or https://, host, :port, /path").required().value("");
    parser.option("FILE", options->file, "the JSON document, sent as it is").required().value("");
    parser.footer(
        "Prints the answer, whatever its HTTP status, byte for byte. An answer that does not tell its length, as a\n"
        "chunked one, is a failure. The first : behind the scheme stands before the port: no user names and no\n"
        "IPv6 addresses. A secure server's authority must be known; its name and dates are not checked.\n\n"
        "Example: toolbelt post https://localhost:8443/api/items item.json");
    return [options]() {
        post(options->url, options->file);
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
