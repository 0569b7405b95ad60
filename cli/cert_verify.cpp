// cert verify: a verdict for each certificate, and their count.
#include <chrono>
#include <map>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/key_facts.h"
#include "cli/results.h"
#include "crypto/hash/hash.h"

namespace toolbelt::cli {
namespace {

// In the order in which the totals name them.
enum class Verdict
{
    ok,
    badSignature,
    expired,
    notYetValid,
    unsupportedKey,
    unsupportedDigest,
    malformed
};
constexpr const char* verdictTexts[] = {
    "ok", "bad signature", "expired", "not yet valid", "unsupported key", "unsupported digest", "malformed"};

struct Judgement
{
    Verdict verdict;
    Status status = STATUS_OK; // named with the last three
};

using Key = std::unique_ptr<cPKA>;

struct Issuer
{
    Key key;
    Status status = STATUS_OK; // why there is no key
};

bool isUnsupportedKey(Status status)
{
    return status == KEY_E_NO_READER || status == DER_E_UNKNOWN_ALGORITHM;
}

// A status that is no judgement of the certificate ends the command.
void checkMemory(const std::string& name, Status status)
{
    if (isMemoryStatus(status)) throw libraryFailure(name, status);
}

Judgement judgeUnread(const CertificateInfo& certificate, Status status)
{
    if (status != DER_E_UNKNOWN_ALGORITHM) return {Verdict::malformed, status};
    // Read in this order: the signature's algorithm, the key's, the signature's again.
    const bool isKey = certificate.signature.row && !certificate.subjectPublicKeyInfo.algorithm.row;
    return {isKey ? Verdict::unsupportedKey : Verdict::unsupportedDigest, status};
}

Status verifyByIssuer(const CertificateInfo& certificate, std::int32_t digestId, cPKA& key)
{
    cHashAlg* hash = nullptr;
    if (const Status status = createHash(&hash, digestId); status != STATUS_OK) return status;
    if (!hash) return DER_E_MEMORY;
    const std::unique_ptr<cHashAlg, decltype(&destroyHash)> owner(hash, destroyHash);
    Bytes digest(hashSize(hash));
    if (const Status status = hashBuffer(hash, digest.data(), certificate.tbs.start, certificate.tbs.totalLength);
        status != STATUS_OK)
        return status;
    const DerElement& signature = certificate.signatureValue.element;
    return key.verifyDer(signature.start, signature.totalLength, digest.data(), size32(digest));
}

// Certificates are judged in the order of the verdicts' severity: what cannot be read, what cannot be checked, a
// signature that is wrong, and only then the dates, which mean nothing unless the signature holds.
Judgement judge(const Document& document, const Issuer* issuer, std::int64_t when)
{
    CertificateInfo certificate;
    Status status = readWholeCertificate(certificate, document);
    checkMemory(document.name, status);
    if (status != STATUS_OK) return judgeUnread(certificate, status);

    Key ownKey;
    if (issuer) {
        status = issuer->status;
    } else {
        cPKA* key = nullptr;
        status = readPublicKeyFromInfo(&key, certificate.subjectPublicKeyInfo);
        ownKey.reset(key);
    }
    checkMemory(document.name, status);
    if (status != STATUS_OK) return {isUnsupportedKey(status) ? Verdict::unsupportedKey : Verdict::malformed, status};

    const std::int32_t digestId = certificate.signatureAlgorithm.row->digest;
    status = issuer ? verifyByIssuer(certificate, digestId, *issuer->key)
                    : verifyCertificateSignature(certificate, digestId, nullptr);
    checkMemory(document.name, status);
    if (status == CRYPT_E_UNKNOWN_ALGORITHM) return {Verdict::unsupportedDigest, status};
    if (status != STATUS_OK) return {Verdict::badSignature};

    if (isTimeValid(certificate.validity, when)) return {Verdict::ok};
    DerValidity endless = certificate.validity;
    endless.notAfter = {9999, 12, 31, 23, 59, 59};
    return {isTimeValid(endless, when) ? Verdict::expired : Verdict::notYetValid};
}

Issuer readIssuer(const std::string& path)
{
    const std::vector<Document> documents = readCertificates(path);
    CertificateInfo certificate;
    check(path, readWholeCertificate(certificate, documents.front()));
    Issuer issuer;
    cPKA* key = nullptr;
    issuer.status = readPublicKeyFromInfo(&key, certificate.subjectPublicKeyInfo);
    issuer.key.reset(key);
    if (!isUnsupportedKey(issuer.status)) check(path, issuer.status);
    return issuer;
}

ExitCode exitCodeOf(Verdict verdict)
{
    return verdict == Verdict::ok ? EXIT_DONE : verdict == Verdict::malformed ? EXIT_INPUT : EXIT_NO;
}

// Midnight (UTC) at the start of the day, in seconds since 1970.
std::int64_t parseDate(const std::string& text)
{
    bool shaped = text.size() == 10;
    for (std::size_t i = 0; shaped && i < 10; ++i)
        shaped = i == 4 || i == 7 ? text[i] == '-' : text[i] >= '0' && text[i] <= '9';
    const auto number = [&](std::size_t at, std::size_t length) {
        return shaped ? std::stoi(text.substr(at, length)) : 0;
    };
    const std::chrono::year_month_day date{std::chrono::year(number(0, 4)),
                                           std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                           std::chrono::day(static_cast<unsigned>(number(8, 2)))};
    if (!date.ok()) throw UsageError("not a date of the form YYYY-MM-DD: " + text);
    const std::int64_t when = std::chrono::sys_days(date).time_since_epoch().count() * std::int64_t(86400);
    return when == 0 ? 1 : when; // 0 would mean now
}

// Counts of the verdicts; those that did not occur are not named.
void printTotals(const std::map<Verdict, unsigned>& counts, unsigned unreadable)
{
    unsigned total = unreadable;
    Fact totals = numberFact("total", 0);
    for (const auto& [verdict, count] : counts) {
        total += count;
        totals.parts.push_back(numberFact(verdictTexts[static_cast<int>(verdict)], count));
    }
    if (unreadable != 0) totals.parts.push_back(numberFact("unreadable", unreadable));
    std::string text;
    for (const Fact& part : totals.parts) text += (text.empty() ? "" : ", ") + part.value + " " + part.name;
    totals.value = std::to_string(total);
    printResult(totals.value + " in total: " + text, totals);
}

} // namespace

Action prepareCertVerify(Parser& parser)
{
    struct Options
    {
        std::string issuer, date;
        std::vector<std::string> files;
    };
    const auto options = std::make_shared<Options>();
    parser.option("--issuer", options->issuer, "check with the key of this certificate (the first of the file)")
        .value("FILE");
    parser.option("--at", options->date, "judge the dates at the start of this day, UTC, instead of now")
        .value("YYYY-MM-DD");
    parser.option("FILE", options->files, "certificates, PEM or DER").required().value("");
    parser.footer(
        "Prints `FILE: ` and a verdict for each certificate (FILE#1, FILE#2 ... where a file holds several), then a\n"
        "line of totals. Without --issuer a certificate is checked with its own key, so only self-signed ones are ok.\n"
        "The verdict is the first of these that applies: malformed (bytes left over behind a certificate included),\n"
        "unsupported key, unsupported digest, bad signature, not yet valid, expired, ok. The digest is the one of the\n"
        "outer signature algorithm. Names, CA flags and path lengths are not judged: an ok is no chain of trust.\n"
        "Exit code 0 when all are ok; 1 when any is judged and not ok; 3 when the rest is malformed or unreadable.\n\n"
        "Example: toolbelt cert verify --issuer ca.pem --at 2024-01-01 server.pem client.pem");
    return [options]() {
        const std::int64_t when = options->date.empty() ? 0 : parseDate(options->date);
        Issuer issuer;
        if (!options->issuer.empty()) issuer = readIssuer(options->issuer);
        std::map<Verdict, unsigned> counts{{Verdict::ok, 0}};
        unsigned unreadable = 0;
        const ExitCode code = forEach(options->files, [&](const std::string& file) {
            ++unreadable; // until its reading has succeeded
            const std::vector<Document> documents = readCertificates(file);
            --unreadable;
            return forEach(documents, [&](const Document& document) {
                const Judgement judgement = judge(document, options->issuer.empty() ? nullptr : &issuer, when);
                const char* text = verdictTexts[static_cast<int>(judgement.verdict)];
                Fact fact{"certificate", document.name, {{"verdict", text}}};
                if (judgement.status != STATUS_OK)
                    fact.parts.push_back(numberFact("status", static_cast<std::uint64_t>(judgement.status)));
                printResult(document.name + ": " +
                                (judgement.status == STATUS_OK ? text : withStatus(text, judgement.status)),
                            fact);
                ++counts[judgement.verdict];
                return exitCodeOf(judgement.verdict);
            });
        });
        printTotals(counts, unreadable);
        return code;
    };
}

} // namespace toolbelt::cli
