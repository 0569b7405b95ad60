// sign and verify: signatures over the digest of a file.
#include <algorithm>
#include <cstdio>
#include <map>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/der_bytes.h"
#include "cli/file_digest.h"
#include "cli/key_facts.h"
#include "cli/key_kinds.h"
#include "cli/library_output.h"
#include "cli/random.h"
#include "cli/results.h"
#include "cli/text.h"
#include "crypto/pka/digest_info.h"
#include "crypto/pka/dsa_key.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t SIGNATURE_LIMIT = 1 << 16;

const std::map<std::string, SignatureFormat> formats = {
    {"raw", SignatureFormat::raw}, {"der", SignatureFormat::der}, {"prefixed", SignatureFormat::prefixed}};

struct Options
{
    std::string key, algorithm, format, file, signature, out = "-";
    bool bare = false;
};

constexpr std::int32_t SHA256_OWN_ID = 0x80; // the same digest as SHA256_ID
constexpr std::int32_t SHA256_ID = 8;

// Digests without an identifier in use can only be signed bare.
const DigestIdentifier& digestIdentifier(const HashRow& row)
{
    if (const auto* identifier = findDigestIdentifier(row.id == SHA256_OWN_ID ? SHA256_ID : row.id)) return *identifier;
    throw UsageError(std::string(row.name) + " has no identifier for a DigestInfo; --bare signs the digest alone");
}

SignatureFormat formatOf(const Options& options, const KeyKind& kind)
{
    const SignatureFormat format = options.format.empty() ? kind.format : formats.at(options.format);
    if (format == SignatureFormat::raw && kind.format != SignatureFormat::raw)
        throw UsageError(std::string("--format raw goes with RSA keys; ") + kind.name + " has der and prefixed");
    return format;
}

// DSA looks at as many leading bytes as its q has, and at no fewer than 20; the others take a digest whole.
Bytes cutDigest(Bytes digest, const KeyKind& kind, const LoadedKey& key)
{
    if (digest.size() > kind.digestLength(*key.key, key.isPrivate))
        digest.resize(kind.digestLength(*key.key, key.isPrivate));
    return digest;
}

// The library does not look at what follows a signature.
bool isOneElement(const Bytes& bytes)
{
    DerElement parsed;
    std::uint32_t left = 0;
    return parseElement(parsed, bytes.data(), size32(bytes), nullptr, &left) == STATUS_OK && left == 0;
}

ExitCode signFile(const Options& options)
{
    const HashRow& hash = findHash(options.algorithm);
    const LoadedKey loaded = readKeyFile(options.key);
    if (!loaded.isPrivate) throw Failure(options.key, "not a private key", EXIT_INPUT);
    const KeyKind& kind = *findKind(loaded.key->algorithm());
    const SignatureFormat format = formatOf(options, kind);
    if (options.bare && kind.format != SignatureFormat::raw) throw UsageError("--bare goes with RSA keys");
    const DigestIdentifier* identifier = kind.format == SignatureFormat::raw && !options.bare
                                             ? &digestIdentifier(hash)
                                             : nullptr; // refuses before a long file is read

    Bytes digest = cutDigest(digestOfFile(hash, options.file), kind, loaded);
    if (identifier) {
        Bytes around(digest.size() + DIGEST_INFO_OVERHEAD);
        around.resize(writeDigestInfo(around.data(), *identifier, digest.data(), size32(digest)));
        digest = around;
    }
    if (kind.digestLength(*loaded.key, true) > DSA_SECRET_LENGTH && kind.algorithm == PKA_DSA)
        std::fputs("toolbelt: warning: with a q of more than 160 bits, many signatures give the key away\n", stderr);
    const FilledPool pool(kind.poolLength(*loaded.key));
    Bytes signature = outputOf(options.key, [&](std::uint8_t* output, std::uint32_t* size) {
        return format == SignatureFormat::prefixed
                   ? loaded.key->signPrefixed(output, size, digest.data(), size32(digest))
                   : loaded.key->signDer(output, size, digest.data(), size32(digest));
    });
    if (format == SignatureFormat::raw) signature = contentOfElement(signature);
    writeWhole(options.out, signature);
    return EXIT_DONE;
}

ExitCode verifyFile(const Options& options)
{
    const HashRow& hash = findHash(options.algorithm);
    LoadedKey loaded = readKeyFile(options.key);
    usePublicHalf(loaded, options.key);
    const KeyKind& kind = *findKind(loaded.key->algorithm());
    const SignatureFormat format = formatOf(options, kind);
    Bytes signature = readWhole(options.signature, SIGNATURE_LIMIT);
    const Bytes digest = cutDigest(digestOfFile(hash, options.file), kind, loaded);

    if (format == SignatureFormat::raw) signature = element(DER_OCTET_STRING, signature);
    const Status status =
        format == SignatureFormat::der && !isOneElement(signature) ? PKA_E_FAILED
        : format == SignatureFormat::prefixed
            ? loaded.key->verifyPrefixed(signature.data(), size32(signature), digest.data(), size32(digest))
            : loaded.key->verifyDer(signature.data(), size32(signature), digest.data(), size32(digest));
    if (isMemoryStatus(status)) throw libraryFailure(options.signature, status);
    const std::string verdict = status == STATUS_OK ? "ok" : "bad signature";
    printResult(verdict, {"file", options.file, {{"verdict", verdict}}});
    return status == STATUS_OK ? EXIT_DONE : EXIT_NO;
}

std::shared_ptr<Options> addCommonOptions(Parser& parser, const char* key)
{
    const auto options = std::make_shared<Options>();
    parser.option("--key", options->key, key).required().value("KEY");
    parser.option("-a,--algorithm", options->algorithm, "the digest: registry id or name (toolbelt digest --list)")
        .required()
        .value("ALG");
    parser
        .option("--format", options->format,
                "raw: the bytes of an RSA signature; der: as an element; prefixed: prefixed numbers")
        .oneOf({"raw", "der", "prefixed"})
        .value("FORMAT");
    parser.option("FILE", options->file, "the file that is signed").required().value("");
    return options;
}

} // namespace

Action prepareSign(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser, "a private key");
    parser.flag("--bare", options->bare, "RSA: the digest alone, without a DigestInfo around it");
    parser.option("-o,--out", options->out, "where the signature goes; standard output").value("FILE");
    parser.footer("Without --format: raw for RSA and der for DSA, as other programs write them; prefixed for ElGamal.\n"
                  "DSA signs the leading bytes of the digest, 20 for the keys that key generate makes.\n\n"
                  "Example: toolbelt sign --key server.key -a sha256 -o letter.sig letter.txt");
    return [options]() { return signFile(*options); };
}

Action prepareVerify(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser, "a key, or a certificate");
    parser.option("--signature", options->signature, "the signature").required().value("SIG");
    parser.footer(
        "Prints `ok` (exit code 0) or `bad signature` (1). An RSA signature may hold the digest in a DigestInfo,\n"
        "whose algorithm is not judged, or bare. Without --format: as sign writes them.\n\n"
        "Example: toolbelt verify --key server.pub -a sha256 --signature letter.sig letter.txt");
    return [options]() { return verifyFile(*options); };
}

} // namespace toolbelt::cli
