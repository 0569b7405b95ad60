// key generate: a pair of key files, with the search for primes made visible.
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/key_kinds.h"
#include "cli/library_output.h"
#include "cli/results.h"
#include "cli/text.h"
#include "crypto/encoding/key_write.h"

namespace toolbelt::cli {
namespace {

// What stops the work; not a status of the library.
constexpr Status STOPPED = 0x7FFFFFFF;

// Tells the phases, and on a terminal how fast candidates are tried; passes Ctrl+C on. The search calls it from its
// threads, one at a time.
class SearchProgress : public ProgressSink
{
public:
    Status report(const char* message, std::uint32_t, std::int32_t value) override
    {
        if (interruptRequested()) return STOPPED;
        if (message) {
            line_.clear();
            std::fprintf(stderr, "%.*s (%d bits)\n", static_cast<int>(std::strcspn(message, "\n")), message,
                         static_cast<int>(value));
            std::fflush(stderr);
            started_ = shown_ = GetTickCount();
            tried_ = 0;
            return STATUS_OK;
        }
        ++tried_;
        const std::uint32_t now = GetTickCount();
        if (now - shown_ >= 1000) {
            shown_ = now;
            const double seconds = (now - started_) / 1000.0;
            char text[80];
            std::snprintf(text, sizeof text, "  %u candidates tried, %.0f per second, %.0f s", tried_, tried_ / seconds,
                          seconds);
            line_.show(text);
        }
        return STATUS_OK;
    }

private:
    StatusLine line_;
    std::uint32_t started_ = 0, shown_ = 0, tried_ = 0;
};

struct Options
{
    GenerateOptions generate;
    std::string kind, name;
    bool force = false;
};

void refuseExisting(const std::string& path, bool force)
{
    if (!force && fileExists(path)) throw Failure(path, "exists already; --force replaces it", EXIT_USAGE);
}

ExitCode generateKey(const Options& options)
{
    const KeyKind* const kind = findKindByOption(options.kind);
    if (!kind) throw UsageError("unknown kind of key: " + options.kind + " (rsa, dsa or elgamal)");
    if (kind->algorithm != PKA_RSA && (options.generate.exponent != 0 || options.generate.safePrimes))
        throw UsageError("--exponent and --safe-primes go with rsa");
    const std::string privateFile = options.name + ".key", publicFile = options.name + ".pub";
    refuseExisting(privateFile, options.force);
    refuseExisting(publicFile, options.force);

    // A folder that takes no files is better found before a long search than behind it.
    static_cast<void>(OutputFile(privateFile, FileAccess::owner));

    const CleanupGuard guard;
    SearchProgress progress;
    std::unique_ptr<cPKA> secret, open;
    try {
        secret.reset(kind->generate(options.generate, progress));
    } catch (const Failure&) {
        checkInterrupt("key generate");
        throw;
    }
    cPKA* made = nullptr;
    check("key generate", secret->makePublic(&made));
    open.reset(made);

    const Bytes secretDer =
        outputOf(privateFile, [&](std::uint8_t* out, std::uint32_t* size) { return secret->exportDer(out, size); });
    const Bytes openDer = outputOf(publicFile, [&](std::uint8_t* out, std::uint32_t* size) {
        return exportSubjectPublicKeyInfo(*open, out, size);
    });
    OutputFile privateOutput(privateFile, FileAccess::owner), publicOutput(publicFile);
    const Bytes secretText = pemText(kind->privateLabel, secretDer), openText = pemText("PUBLIC KEY", openDer);
    privateOutput.write(secretText.data(), secretText.size());
    publicOutput.write(openText.data(), openText.size());
    checkInterrupt("key generate");     // here, and not between the two
    publicOutput.commit(options.force); // first: alone it gives nothing away
    privateOutput.commit(options.force);
    std::fprintf(stderr, "%s and %s written\n", privateFile.c_str(), publicFile.c_str());
    if (usesJson()) printResult({"private key", privateFile, {{"public key", publicFile}}});
    return EXIT_DONE;
}

} // namespace

Action prepareKeyGenerate(Parser& parser)
{
    const auto options = std::make_shared<Options>();
    parser.option("KIND", options->kind, "rsa, dsa or elgamal").required().value("");
    parser
        .option("--bits", options->generate.bits,
                "size of the modulus or prime: rsa and elgamal in steps of 8, dsa of 64")
        .required()
        .range(512, 16384)
        .value("N");
    parser.option("--exponent", options->generate.exponent, "rsa: the public exponent, odd and above 1; 65537")
        .check([](const std::string& text) {
            const std::optional<std::uint32_t> e = parseNumber(text);
            return e && *e % 2 == 1 && *e > 1 ? std::string() : "must be odd, above 1 and below 2^32: " + text;
        })
        .value("E");
    parser.flag("--safe-primes", options->generate.safePrimes,
                "rsa: primes p with (p - 1) / 2 prime; takes far longer");
    parser.option("--out", options->name, "writes NAME.key and NAME.pub").required().value("NAME");
    parser.flag("--force", options->force, "replace files that exist");
    parser.footer(
        "NAME.key is the private key, unencrypted PEM that only you may read where the system knows such rights;\n"
        "NAME.pub a PEM SubjectPublicKeyInfo. DSA keys have a q of 160 bits. ElGamal keys have a safe prime, which\n"
        "takes long to find: minutes for 2048 bits. Ctrl+C stops the search.\n\n"
        "Example: toolbelt key generate rsa --bits 3072 --out server");
    return [options]() {
        if (options->generate.bits % 8 != 0) throw UsageError("--bits must be a multiple of 8");
        if (options->kind == "dsa" && options->generate.bits % 64 != 0)
            throw UsageError("--bits of a DSA key must be a multiple of 64");
        return generateKey(*options);
    };
}

} // namespace toolbelt::cli
