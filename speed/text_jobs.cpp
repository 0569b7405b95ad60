// Base64, and certificates read and verified.
#include "crypto/encoding/base64.h"
#include "crypto/encoding/x509.h"
#include "speed/inputs.h"
#include "speed/job.h"

namespace toolbelt::speed {
namespace {

constexpr std::uint32_t SIZE = 1 << 20;

std::string encode(const Bytes& data)
{
    std::uint32_t length = size32(data) * 2;
    std::string text(length, '\0');
    check(base64Encode(text.data(), &length, data.data(), size32(data), nullptr, nullptr, nullptr, nullptr,
                       BASE64_NO_CHECKSUM),
          "base64 failed");
    text.resize(length);
    return text;
}

} // namespace

Call certificateCall(bool verify, std::uint32_t copies)
{
    Bytes der;
    const Bytes one = decode(CERTIFICATE);
    for (std::uint32_t i = 0; i < copies; ++i) der.insert(der.end(), one.begin(), one.end());
    return [der, verify] {
        const std::uint8_t* rest = der.data();
        for (std::uint32_t length = size32(der); length != 0;) {
            CertificateInfo certificate;
            check(readCertificate(certificate, rest, length, &rest, &length), "a certificate cannot be read");
            if (verify)
                check(verifyCertificateSignature(certificate, certificate.signatureAlgorithm.row->digest, nullptr),
                      "a certificate does not verify");
        }
    };
}

std::uint32_t certificateLength()
{
    return size32(decode(CERTIFICATE));
}

void addTextJobs(std::vector<Job>& jobs)
{
    jobs.push_back({"base64-enc/1M", SIZE / 1e6, "MB/s", [] {
                        return Call([data = pattern(SIZE), text = encode(pattern(SIZE))]() mutable {
                            auto length = static_cast<std::uint32_t>(text.size());
                            check(base64Encode(text.data(), &length, data.data(), size32(data), nullptr, nullptr,
                                               nullptr, nullptr, BASE64_NO_CHECKSUM),
                                  "base64 failed");
                        });
                    }});
    jobs.push_back(
        {"base64-dec/1M", SIZE / 1e6, "MB/s", [] {
             return Call([text = encode(pattern(SIZE)), data = Bytes(SIZE)]() mutable {
                 std::uint32_t length = size32(data);
                 check(base64Decode(data.data(), &length, text.data(), static_cast<std::uint32_t>(text.size())),
                       "base64 failed");
             });
         }});
    jobs.push_back({"x509-parse/RSA-2048", 1, "ops/s", [] { return certificateCall(false, 1); }});
    jobs.push_back({"x509-parse+verify/RSA-2048", 1, "ops/s", [] { return certificateCall(true, 1); }});
}

} // namespace toolbelt::speed
