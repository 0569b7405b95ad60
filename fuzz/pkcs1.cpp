// PKCS #1 blocks against ten lines of obvious code.
#include "crypto/pka/pkcs1.h"

#include "fuzz/target.h"

namespace toolbelt::fuzz {
namespace {

// Where the data begin, 0 for a malformed block.
std::size_t dataOf(const Bytes& block, int type)
{
    if (block.size() < 3 || block[0] != 0 || block[1] != type) return 0;
    for (std::size_t i = 2; i < block.size(); ++i) {
        if (block[i] == 0) return i + 1;
        if (type == 1 && block[i] != 0xFF) return 0;
    }
    return 0;
}

void unpad(const Bytes& block)
{
    for (const Pkcs1Type type : {PKCS1_SIGNATURE, PKCS1_ENCRYPTION}) {
        const std::uint8_t* payload = nullptr;
        std::uint32_t length = 99;
        const std::size_t at = dataOf(block, type);
        require(pkcs1Unpad(&payload, &length, addressOf(block), sizeOf(block), type) == (at ? STATUS_OK : PKA_E_BLOCK),
                "a block's status");
        require(at ? payload == block.data() + at && length == block.size() - at : !payload && length == 99,
                "its data");
    }
}

const Target target("pkcs1", [](Input input) {
    const std::uint32_t k = 2 * input.byte() + (input.byte() & 1);
    const Bytes data = input.rest();
    unpad(data);
    Bytes block(k, 0xA5);
    for (const Pkcs1Type type : {PKCS1_SIGNATURE, PKCS1_ENCRYPTION}) {
        const bool fits = data.size() + 10 <= k;
        require(pkcs1Pad(block.data(), k, type, addressOf(data), sizeOf(data)) ==
                    (fits ? STATUS_OK : PKA_E_DATA_TOO_LONG),
                "what fits is padded");
        if (!fits) return require(block == Bytes(k, 0xA5), "and else nothing is written");
        const std::size_t at = dataOf(block, type);
        require(at == k - data.size() && Bytes(block.begin() + static_cast<std::ptrdiff_t>(at), block.end()) == data,
                "the data are at the end");
        unpad(block);
    }
});

} // namespace
} // namespace toolbelt::fuzz
