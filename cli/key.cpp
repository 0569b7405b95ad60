// key show and key ssh.
#include "cli/command.h"
#include "cli/console.h"
#include "cli/key_facts.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/key_text.h"

namespace toolbelt::cli {

Action prepareKeyShow(CLI::App& app)
{
    struct Options
    {
        std::string file;
        bool privateNumbers = false;
    };
    const auto options = std::make_shared<Options>();
    app.add_option("FILE", options->file, "a PEM or DER key, or a certificate")->required()->type_name("");
    app.add_flag("--private", options->privateNumbers, "the private numbers too");
    app.footer("Reads RSA keys: SubjectPublicKeyInfo, RSAPublicKey, RSAPrivateKey and unencrypted PrivateKeyInfo.\n"
               "Another kind of key is refused with status 33. A file of several is read up to its first key.\n\n"
               "Example: toolbelt key show server.pem");
    return [options]() {
        printFact(keyFact(readKeyFile(options->file), options->privateNumbers));
        return EXIT_DONE;
    };
}

Action prepareKeySsh(CLI::App& app)
{
    const auto file = std::make_shared<std::string>();
    app.add_option("FILE", *file, "a PEM or DER key, or a certificate; of a private key, its public half")
        ->required()
        ->type_name("");
    app.footer("Example: toolbelt key ssh server.pem >> authorized_keys");
    return [file]() {
        LoadedKey loaded = readKeyFile(*file);
        if (loaded.isPrivate) {
            cPKA* made = nullptr;
            check(*file, loaded.key->makePublic(&made));
            loaded.key.reset(made);
        }
        std::uint32_t size = 0;
        const Status asked = exportSshRsa(*loaded.key, nullptr, &size);
        if (asked != STATUS_BUFFER_TOO_SMALL) check(*file, asked);
        Bytes blob(size);
        check(*file, exportSshRsa(*loaded.key, blob.data(), &size));

        const std::uint32_t flags = BASE64_NO_CHECKSUM | BASE64_NO_BREAKS;
        std::string text((std::size_t(size) + 2) / 3 * 4, '\0');
        std::uint32_t length = static_cast<std::uint32_t>(text.size());
        check(*file, base64Encode(text.data(), &length, blob.data(), size, nullptr, nullptr, nullptr, nullptr, flags));
        printLine("ssh-rsa " + text);
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
