// Digests of whole files, for the commands that print, sign or verify them.
#pragma once

#include <string>

#include "cli/files.h"
#include "crypto/hash/hash.h"

namespace toolbelt::cli {

// The digest that an id ("2", "0x80") or a name ("sha256") stands for; UsageError when there is none.
const HashRow& findHash(const std::string& idOrName);
Bytes digestOfFile(const HashRow& row, const std::string& file);

} // namespace toolbelt::cli
