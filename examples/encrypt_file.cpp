// Encrypts a file into armoured text, and back: encrypt_file KEY IN OUT, encrypt_file -d KEY IN OUT.
// KEY is a file of 32 bytes. The message is the IV and the AES-256 CFB ciphertext in base64 between two lines, with a
// checksum against damage. Encryption alone does not keep others from changing a message: sign what matters.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include <toolbelt/toolbelt.h>

using namespace toolbelt;
using Bytes = std::vector<char>;

constexpr std::int32_t AES_256 = 9;
constexpr std::uint32_t BLOCK = 16;
constexpr char BEGIN_LINE[] = "-----BEGIN EXAMPLE MESSAGE-----";
constexpr char END_LINE[] = "-----END EXAMPLE MESSAGE-----";

bool read(Bytes& bytes, const char* path)
{
    std::ifstream file(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), {});
    return !file.fail();
}

bool write(const char* path, const cByteBuffer& buffer)
{
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(buffer.data()), static_cast<std::streamsize>(buffer.length()));
    return static_cast<bool>(file.flush());
}

// The IV, then as many bytes as the text has.
bool encrypt(cByteBuffer& out, cSymAlg& cipher, const Bytes& text)
{
    cByteBuffer message;
    if (!message.allocate(BLOCK) || !message.append(text.data(), static_cast<std::uint32_t>(text.size()))) return false;
    std::random_device random; // the system's generator
    for (std::uint32_t i = 0; i < BLOCK; ++i) message.data()[i] = static_cast<std::uint8_t>(random());
    std::uint8_t* const body = message.data() + BLOCK;
    if (cipher.modeEncrypt(&cipher, message.data(), body, body, static_cast<std::int32_t>(text.size())) != CRYPT_OK)
        return false;
    return encodeToBuffer(out, message.data(), message.length(), BEGIN_LINE, END_LINE, nullptr, nullptr, 0);
}

bool decrypt(cByteBuffer& out, cSymAlg& cipher, const Bytes& text)
{
    cByteBuffer message;
    if (!decodeArmoured(message, text.data(), static_cast<std::uint32_t>(text.size()), BEGIN_LINE, END_LINE) ||
        message.length() < BLOCK)
        return false;
    const std::uint32_t length = message.length() - BLOCK;
    return out.allocate(length) && cipher.modeDecrypt(&cipher, message.data(), message.data() + BLOCK, out.data(),
                                                      static_cast<std::int32_t>(length)) == CRYPT_OK;
}

int main(int argc, char** argv)
{
    const bool back = argc == 5 && std::strcmp(argv[1], "-d") == 0;
    if (argc != 4 && !back) return std::puts("usage: encrypt_file [-d] KEY IN OUT"), 2;
    Bytes key, text;
    if (!read(key, argv[argc - 3]) || !read(text, argv[argc - 2])) return std::puts("a file cannot be read"), 3;
    const CipherRow* row = nullptr;
    if (key.size() != 32 || findCipher(&row, AES_256) != CRYPT_OK) return std::puts("the key has not 32 bytes"), 3;
    const std::unique_ptr<cSymAlg> cipher(row->create(reinterpret_cast<const std::uint8_t*>(key.data()), 32));
    wipe(key.data(), key.size());
    if (!cipher) return std::puts("memory ran out"), 4;
    cipher->setMode(SYM_MODE_CFB);
    cByteBuffer out;
    if (!(back ? decrypt(out, *cipher, text) : encrypt(out, *cipher, text))) return std::puts("not a whole message"), 3;
    return write(argv[argc - 1], out) ? 0 : 4;
}
