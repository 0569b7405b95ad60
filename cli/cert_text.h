// Parts of a certificate as text, for cert show.
#pragma once

#include <string>
#include <vector>

#include "cli/console.h"
#include "crypto/encoding/x509.h"

namespace toolbelt::cli {

constexpr std::size_t SHOWN_OCTETS = 64; // of what may be long

// The elements that fill the content; false when something else is in it.
bool readElements(std::vector<DerElement>& elements, const DerElement& parent);
// A name in the order of the encoding, every attribute of it; "malformed" when it cannot be read.
std::string nameText(const DerElement& name);
// The leading octets of the content.
std::string octetsText(const DerElement& element);
// What each extension says, or its octets where nothing here can read it.
Fact extensionsFact(const CertificateInfo& certificate);

} // namespace toolbelt::cli
