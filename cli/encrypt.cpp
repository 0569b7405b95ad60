// encrypt and decrypt: short messages under a public key, in a PKCS #1 block of type 2.
#include "cli/command.h"
#include "cli/der_bytes.h"
#include "cli/key_facts.h"
#include "cli/key_kinds.h"
#include "cli/library_output.h"
#include "cli/random.h"
#include "crypto/pka/pkcs1.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t INPUT_LIMIT = 1 << 16;
// Others demand eight bytes of padding (RFC 8017, section 7.2.1); the library would do with seven.
constexpr std::uint32_t PKCS1_OVERHEAD = 11;

struct Options
{
    std::string key, in, out;
};

// The library pads with the runtime's generator, which can be guessed; a guess at the message could then be tried. This
// program puts bytes of the system's generator in their place.
Bytes encryptionBlock(const std::string& subject, std::uint32_t k, const Bytes& message)
{
    if (message.size() + PKCS1_OVERHEAD > k) throw libraryFailure(subject, PKA_E_DATA_TOO_LONG);
    Bytes block(k);
    check(subject, pkcs1Pad(block.data(), k, PKCS1_ENCRYPTION, message.data(), size32(message)));
    const std::size_t end = k - message.size() - 1;
    for (std::size_t at = 2; at < end;)
        for (const std::uint8_t byte : systemRandom(end - at))
            if (byte != 0 && at < end) block[at++] = byte;
    return block;
}

ExitCode encryptFile(const Options& options)
{
    LoadedKey loaded = readKeyFile(options.key);
    usePublicHalf(loaded, options.key);
    const KeyKind& kind = *findKind(loaded.key->algorithm());
    if (kind.cipherText == CipherText::none)
        throw Failure(options.key, withStatus("a key that only signs", PKA_E_NOT_OFFERED), EXIT_INPUT);
    const Bytes message = readWhole(options.in, INPUT_LIMIT);
    const Bytes block = encryptionBlock(options.in, static_cast<std::uint32_t>(loaded.key->keyLength()), message);
    const FilledPool pool(kind.poolLength(*loaded.key));
    Bytes output = outputOf(options.in, [&](std::uint8_t* bytes, std::uint32_t* size) {
        return kind.cipherText == CipherText::block
                   ? loaded.key->rawToDer(bytes, size, block.data(), size32(block))
                   : loaded.key->encryptPrefixed(bytes, size, block.data(), size32(block));
    });
    if (kind.cipherText == CipherText::block) output = contentOfElement(output);
    writeWhole(options.out, output);
    return EXIT_DONE;
}

ExitCode decryptFile(const Options& options)
{
    const LoadedKey loaded = readKeyFile(options.key);
    if (!loaded.isPrivate) throw Failure(options.key, "not a private key", EXIT_INPUT);
    const KeyKind& kind = *findKind(loaded.key->algorithm());
    if (kind.cipherText == CipherText::none)
        throw Failure(options.key, withStatus("a key that only signs", PKA_E_NOT_OFFERED), EXIT_INPUT);
    Bytes input = readWhole(options.in, INPUT_LIMIT);
    if (kind.cipherText == CipherText::block) input = element(DER_OCTET_STRING, input);
    const Bytes block = outputOf(options.in, [&](std::uint8_t* bytes, std::uint32_t* size) {
        return kind.cipherText == CipherText::block
                   ? loaded.key->privateFromDer(bytes, size, input.data(), size32(input))
                   : loaded.key->privateFromPrefixed(bytes, size, input.data(), size32(input));
    });
    const std::uint8_t* message = nullptr;
    std::uint32_t length = 0;
    check(options.in, pkcs1Unpad(&message, &length, block.data(), size32(block), PKCS1_ENCRYPTION));
    writeWhole(options.out, Bytes(message, message + length));
    return EXIT_DONE;
}

std::shared_ptr<Options> addCommonOptions(Parser& parser, const char* key)
{
    const auto options = std::make_shared<Options>();
    parser.option("--key", options->key, key).required().value("KEY");
    parser.option("IN", options->in, "the file to read, - for standard input").required().value("");
    parser.option("OUT", options->out, "the file to write, - for standard output").required().value("");
    return options;
}

} // namespace

Action prepareEncrypt(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser, "a public key, or a certificate");
    parser.footer(
        "For short messages, such as the key of a cipher: at most the size of the key less 11 bytes. RSA gives as\n"
        "many bytes as the key has, which other programs read as PKCS #1 v1.5; ElGamal a pair of prefixed numbers.\n\n"
        "Example: toolbelt encrypt --key server.pub session.bin session.enc");
    return [options]() { return encryptFile(*options); };
}

Action prepareDecrypt(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser, "a private key");
    parser.footer(
        "Do not tell strangers whether a message of theirs could be decrypted: that alone gives messages away.\n\n"
        "Example: toolbelt decrypt --key server.key session.enc session.bin");
    return [options]() { return decryptFile(*options); };
}

} // namespace toolbelt::cli
