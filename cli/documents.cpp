#include "cli/documents.h"

#include <string_view>

#include "crypto/encoding/armour.h"

namespace toolbelt::cli {
namespace {

constexpr std::string_view BEGIN = "-----BEGIN ";
constexpr std::string_view DASHES = "-----";
constexpr std::size_t MAX_LABEL = 64;

// The next begin line from `from` on: where it starts, and its label. npos when there is none.
std::size_t findBeginLine(std::string_view text, std::size_t from, std::string& label)
{
    for (std::size_t at = text.find(BEGIN, from); at != std::string_view::npos; at = text.find(BEGIN, at + 1)) {
        if (at != 0 && text[at - 1] != '\n' && text[at - 1] != '\r') continue;
        const std::string_view rest = text.substr(at + BEGIN.size(), MAX_LABEL + DASHES.size());
        const std::size_t end = rest.find(DASHES);
        if (end == std::string_view::npos || rest.substr(0, end).find_first_of("\r\n") != std::string_view::npos)
            continue;
        label = rest.substr(0, end);
        return at;
    }
    return std::string_view::npos;
}

bool isText(std::string_view bytes)
{
    for (const char c : bytes)
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f') return false;
    return true;
}

Status decodeBody(Bytes& bytes, const char* body, std::uint32_t length)
{
    std::uint32_t size = 0;
    const Status asked = base64Decode(nullptr, &size, body, length, BASE64_STANDARD_ALPHABET);
    if (asked != STATUS_BUFFER_TOO_SMALL) return asked;
    bytes.resize(size);
    const Status status = base64Decode(bytes.data(), &size, body, length, BASE64_STANDARD_ALPHABET);
    bytes.resize(status == STATUS_OK ? size : 0);
    return status;
}

} // namespace

std::vector<Document> readDocuments(const std::string& path)
{
    Bytes file = readWhole(path, DOCUMENT_LIMIT);
    const std::string_view text(characters(file), file.size());
    std::vector<Document> documents;
    std::string label;
    std::size_t at = findBeginLine(text, 0, label);
    if (at == std::string_view::npos || !isText(text.substr(0, at))) {
        documents.push_back({path, "", std::move(file)});
        return documents;
    }
    while (at != std::string_view::npos) {
        Document& document = documents.emplace_back();
        document.name = path;
        document.label = label;
        const std::string beginLine = "-----BEGIN " + label + "-----", endLine = "-----END " + label + "-----";
        const char* body = nullptr;
        const char* header = nullptr;
        const char* rest = nullptr;
        std::uint32_t bodyLength = 0, restLength = 0;
        document.status =
            findArmourBody(&body, &bodyLength, text.data() + at, static_cast<std::uint32_t>(text.size() - at),
                           beginLine.c_str(), endLine.c_str(), &header, &rest, &restLength);
        if (document.status != STATUS_OK) break;
        const std::string_view headers =
            header && header < body ? std::string_view(header, static_cast<std::size_t>(body - header)) : "";
        document.encrypted = headers.find("ENCRYPTED") != std::string_view::npos;
        document.status = decodeBody(document.bytes, body, bodyLength);
        at = findBeginLine(text, text.size() - restLength, label);
    }
    return documents;
}

std::vector<Document> readCertificates(const std::string& path)
{
    std::vector<Document> documents = readDocuments(path);
    std::erase_if(documents, [](const Document& d) { return !d.label.empty() && !isCertificateLabel(d.label); });
    if (documents.empty()) documents.push_back({path, "", {}, TEXT_E_MALFORMED});
    for (std::size_t i = 0; documents.size() > 1 && i < documents.size(); ++i)
        documents[i].name += "#" + std::to_string(i + 1);
    return documents;
}

bool isCertificateLabel(const std::string& label)
{
    return label == "CERTIFICATE" || label == "X509 CERTIFICATE";
}

} // namespace toolbelt::cli
