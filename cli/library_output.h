// Outputs of the library: asked for their size first, then written.
#pragma once

#include <string>

#include "cli/errors.h"
#include "cli/files.h"

namespace toolbelt::cli {

// What call(output, &size) writes. Any status but 0 is thrown as the failure of the subject.
template <typename Call>
Bytes outputOf(const std::string& subject, Call call)
{
    Bytes bytes;
    std::uint32_t size = 0;
    for (Status status = STATUS_BUFFER_TOO_SMALL; status == STATUS_BUFFER_TOO_SMALL; bytes.resize(size)) {
        status = call(bytes.data(), &size);
        if (status != STATUS_BUFFER_TOO_SMALL) check(subject, status);
    }
    return bytes;
}

} // namespace toolbelt::cli
