// cert show: what a certificate says, as text.
#include "cli/cert_text.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/key_facts.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

std::string algorithmText(const AlgorithmIdentifier& algorithm)
{
    return oidName(algorithm.oid.text);
}

// The octet that keeps a number from being negative is not shown.
std::string serialText(const DerElement& serial)
{
    const std::uint32_t skipped = serial.contentLength > 1 && serial.content[0] == 0 ? 1 : 0;
    return toHex(serial.content + skipped, serial.contentLength - skipped, SHOWN_OCTETS);
}

Fact certificateFact(const std::string& name, const CertificateInfo& certificate)
{
    // Read before: serial number, algorithm, issuer, validity, subject, behind an optional version.
    std::vector<DerElement> fields;
    if (!readElements(fields, certificate.tbs)) throw libraryFailure(name, DER_E_MALFORMED);
    const std::size_t first = isContextTag(fields.front()) ? 1 : 0;

    Fact fact{"certificate", name};
    auto& parts = fact.parts;
    parts.push_back(numberFact("version", static_cast<std::uint64_t>(certificate.version)));
    parts.push_back({"serial", serialText(certificate.serialNumber)});
    parts.push_back({"issuer", nameText(fields[first + 2])});
    parts.push_back({"subject", nameText(fields[first + 4])});
    parts.push_back({"not before", timeText(certificate.validity.notBefore)});
    parts.push_back({"not after", timeText(certificate.validity.notAfter)});
    parts.push_back(publicKeyFact(certificate.subjectPublicKeyInfo));
    if (certificate.issuerUniqueId.element.content)
        parts.push_back({"issuer unique id", octetsText(certificate.issuerUniqueId.element)});
    if (certificate.subjectUniqueId.element.content)
        parts.push_back({"subject unique id", octetsText(certificate.subjectUniqueId.element)});
    if (certificate.extensions.content) parts.push_back(extensionsFact(certificate));
    const std::string inner = algorithmText(certificate.signature),
                      outer = algorithmText(certificate.signatureAlgorithm);
    parts.push_back({"signature algorithm", outer + (inner == outer ? "" : " (the signed part says " + inner + ")")});
    parts.push_back({"signature", toHex(certificate.signatureValue.element.content,
                                        certificate.signatureValue.element.contentLength)});
    return fact;
}

} // namespace

Action prepareCertShow(Parser& parser)
{
    const auto files = std::make_shared<std::vector<std::string>>();
    parser.option("FILE", *files, "certificates, PEM or DER").required().value("");
    parser.footer(
        "Names are in the order of the certificate. What could play tricks on a terminal is shown as \\xNN or "
        "\\uNNNN.\n\n"
        "Example: toolbelt cert show server.pem");
    return [files]() {
        return forEach(*files, [](const std::string& file) {
            return forEach(readCertificates(file), [](const Document& document) {
                CertificateInfo certificate;
                check(document.name, readWholeCertificate(certificate, document));
                printResult(certificateFact(document.name, certificate));
                return EXIT_DONE;
            });
        });
    };
}

} // namespace toolbelt::cli
