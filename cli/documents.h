// What a file of keys or certificates holds: the blocks of a PEM text, or DER as it is.
#pragma once

#include <string>
#include <vector>

#include "cli/files.h"
#include "crypto/base/status.h"

namespace toolbelt::cli {

inline constexpr std::uint32_t DOCUMENT_LIMIT = 16 << 20;

struct Document
{
    std::string name;  // for messages: the file, with "#2" for the second certificate of several
    std::string label; // of the PEM block, "CERTIFICATE"; empty for DER
    Bytes bytes;
    Status status = STATUS_OK; // of the decoding: the bytes count only when it is 0
    bool encrypted = false;
};

// At least one document. A text is a PEM text when it holds a begin line and nothing but text in front of it; anything
// else is one DER document. A block without its end line is the last document.
std::vector<Document> readDocuments(const std::string& path);

// Those that are certificates, or DER; one with a status that says so when there are none.
std::vector<Document> readCertificates(const std::string& path);

bool isCertificateLabel(const std::string& label);

} // namespace toolbelt::cli
