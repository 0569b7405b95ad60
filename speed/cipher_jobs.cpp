// Block ciphers under chaining, 16 KiB a call, and their key set-up.
#include "crypto/cipher/cipher.h"
#include "speed/inputs.h"
#include "speed/job.h"

namespace toolbelt::speed {
namespace {

constexpr std::uint32_t SIZE = 16384;

std::shared_ptr<cSymAlg> makeCipher(const CipherRow& row, const Bytes& key)
{
    std::shared_ptr<cSymAlg> cipher(row.create(key.data(), size32(key)));
    check(cipher != nullptr, "a cipher refused its key");
    return cipher;
}

struct Direction
{
    const char* group;
    std::uint32_t mode;
    cSymAlg::ModeFunction cSymAlg::*function;
};
constexpr Direction directions[] = {{"cbc-enc/", SYM_MODE_CBC, &cSymAlg::modeEncrypt},
                                    {"cbc-dec/", SYM_MODE_CBC, &cSymAlg::modeDecrypt},
                                    {"cfb-enc/", SYM_MODE_CFB, &cSymAlg::modeEncrypt},
                                    {"cfb-dec/", SYM_MODE_CFB, &cSymAlg::modeDecrypt}};

} // namespace

void addCipherJobs(std::vector<Job>& jobs)
{
    const auto forEachRow = [](auto add) {
        for (const std::int32_t id : offeredCiphers)
            for (std::uint32_t i = 0; i < CIPHER_ROW_COUNT; ++i)
                if (cipherRows[i].id == id && id != 0) add(cipherRows[i], std::string(cipherNames[i]));
    };
    for (const Direction& direction : directions)
        forEachRow([&](const CipherRow& row, const std::string& name) {
            jobs.push_back({direction.group + name, SIZE / 1e6, "MB/s", [&row, &direction] {
                                const auto cipher = makeCipher(row, pattern(row.keySize(nullptr)));
                                cipher->setMode(direction.mode);
                                return Call([&direction, cipher, iv = pattern(32), in = pattern(SIZE),
                                             out = Bytes(SIZE)]() mutable {
                                    check((cipher.get()->*direction.function)(cipher.get(), iv.data(), in.data(),
                                                                              out.data(), SIZE),
                                          "a cipher failed");
                                });
                            }});
        });
    forEachRow([&](const CipherRow& row, const std::string& name) {
        jobs.push_back({"keysetup/" + name, 1, "ops/s", [&row] {
                            return Call([&row, key = pattern(row.keySize(nullptr))] { makeCipher(row, key); });
                        }});
    });
}

} // namespace toolbelt::speed
