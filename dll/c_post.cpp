// The flat surface: the HTTP post. A tb_answer is the buffer of the answer.
#include <memory>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/heap.h"
#include "crypto/encoding/byte_buffer.h"
#include "include/toolbelt/toolbelt_c.h"
#include "net/post_json.h"

using namespace toolbelt;

namespace {

cByteBuffer* objectOf(tb_answer* answer)
{
    return reinterpret_cast<cByteBuffer*>(answer);
}

} // namespace

tb_status tb_json_post(const char* url, const char* body, tb_answer** answer) noexcept
{
    if (url == nullptr || body == nullptr || answer == nullptr) return TB_E_ARGUMENT;
    cWCS wideUrl;
    wideUrl.AssignMultibyte(url, -1, codePageUtf8);
    cByteBuffer received;
    if (wideUrl.text() == nullptr) return TB_E_MEMORY;
    switch (postJsonToUrl(received, body, wideUrl.text())) {
    case STATUS_OK:
        break;
    case POST_E_URL:
        return TB_E_URL;
    case POST_E_NOT_SENT:
        return TB_E_NOT_SENT;
    default:
        return TB_E_ANSWER;
    }
    void* const block = heap::allocate(sizeof(cByteBuffer));
    if (block == nullptr) return TB_E_MEMORY;
    cByteBuffer* const made = new (block) cByteBuffer;
    made->swap(received);
    *answer = reinterpret_cast<tb_answer*>(made);
    return TB_OK;
}

const uint8_t* tb_answer_bytes(const tb_answer* answer, uint32_t* length) noexcept
{
    const auto* bytes = reinterpret_cast<const cByteBuffer*>(answer);
    if (length != nullptr) *length = bytes ? bytes->length() : 0;
    return bytes ? bytes->data() : nullptr;
}

void tb_answer_close(tb_answer* answer) noexcept
{
    if (answer == nullptr) return;
    std::destroy_at(objectOf(answer));
    heap::release(answer);
}
