// The HTTP post of a JSON document. One blocking call opens everything it needs and closes it again; calls on several
// threads share nothing but the stop switch. The answer is not interpreted, and its HTTP status is not looked at: a 404
// with a body is an answer like any other.
//
// The proxy is the system's preconfigured one, and redirects are followed. On secure connections the certificate's
// authority must be known, but neither its name nor its dates are checked, by design. The time limits are the system's.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/encoding/byte_buffer.h"
#include "net/status.h"

namespace toolbelt {

// The largest answer that is read. A larger length is a lie or an attack, for whose sake no memory is taken.
inline constexpr std::uint32_t POST_ANSWER_LIMIT = 256u << 20;

// postJson posts the zero-terminated 8-bit text (null: an empty one), the terminator left out, to "/path" of the host.
// A null path is the root, port 0 the service's own port; with a port above 65,535 it ends with POST_E_ANSWER. The
// answer replaces what the buffer held, and only when it came whole (0): it has the length that the server announced,
// so one that is chunked, empty or above POST_ANSWER_LIMIT (256 MiB) is POST_E_ANSWER. On failure the buffer is
// untouched, and the calling thread's last error is the one of the call that failed, if one did.
[[nodiscard]] TB_API Status postJson(cByteBuffer& answer, const char* body, const wchar_t* host, const wchar_t* path,
                                     std::uint32_t port, std::uint8_t secure) noexcept;
// The same to a URL (split_url.h); POST_E_URL when it cannot be split.
[[nodiscard]] TB_API Status postJsonToUrl(cByteBuffer& answer, const char* body, const wchar_t* url) noexcept;

// While posts are stopped, each ends with POST_E_NOT_SENT before it touches the network; those under way go on. The
// switch stays as it is set: at first posts are not stopped. Returns what was set before.
TB_API bool setPostsStopped(bool stopped) noexcept;

} // namespace toolbelt
