// key show and key ssh.
#include "cli/command.h"
#include "cli/console.h"
#include "cli/key_facts.h"
#include "cli/library_output.h"
#include "cli/results.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/key_text.h"

namespace toolbelt::cli {

Action prepareKeyShow(Parser& parser)
{
    struct Options
    {
        std::string file;
        bool privateNumbers = false;
    };
    const auto options = std::make_shared<Options>();
    parser.option("FILE", options->file, "a PEM or DER key, or a certificate").required().value("");
    parser.flag("--private", options->privateNumbers, "the private numbers too");
    parser.footer(
        "Reads RSA, DSA and ElGamal (DH) keys: SubjectPublicKeyInfo, traditional private keys, RSAPublicKey, and an\n"
        "unencrypted PrivateKeyInfo of an RSA or DSA key.\n"
        "Another kind of key is refused with status 33. A file of several is read up to its first key.\n\n"
        "Example: toolbelt key show server.pem");
    return [options]() {
        printResult(keyFact(readKeyFile(options->file), options->privateNumbers));
        return EXIT_DONE;
    };
}

Action prepareKeySsh(Parser& parser)
{
    const auto file = std::make_shared<std::string>();
    parser.option("FILE", *file, "a PEM or DER key, or a certificate; of a private key, its public half")
        .required()
        .value("");
    parser.footer("Example: toolbelt key ssh server.pem >> authorized_keys");
    return [file]() {
        LoadedKey loaded = readKeyFile(*file);
        usePublicHalf(loaded, *file);
        const Bytes blob = outputOf(
            *file, [&](std::uint8_t* output, std::uint32_t* size) { return exportSshRsa(*loaded.key, output, size); });
        const std::uint32_t flags = BASE64_NO_CHECKSUM | BASE64_NO_BREAKS;
        const Bytes text = outputOf(*file, [&](std::uint8_t* output, std::uint32_t* size) {
            return base64Encode(reinterpret_cast<char*>(output), size, blob.data(), size32(blob), nullptr, nullptr,
                                nullptr, nullptr, flags);
        });
        const std::string line = "ssh-rsa " + std::string(characters(text), text.size());
        printResult(line, {"key", line});
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
