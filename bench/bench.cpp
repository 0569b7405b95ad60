// Benchmarks of the engine: every job is timed in rounds that take turns, and the median round is printed.
// Usage: toolbelt_bench [--rounds N] [--ms N] [--only TEXT]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "crypto/bignum/modular.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/x509.h"
#include "crypto/hash/hash.h"
#include "crypto/pka/rsa.h"
#include "tests/support/vectors.h"

namespace toolbelt {
namespace {

using test::Bytes;

struct Job
{
    std::string name;
    double amount; // what one call does, in units
    const char* unit;
    std::function<void()> call;
    std::vector<double> rates = {};
};

[[noreturn]] void fail(const std::string& what)
{
    std::fprintf(stderr, "toolbelt_bench: %s\n", what.c_str());
    std::exit(3);
}

void check(bool good, const std::string& what)
{
    if (!good) fail(what);
}

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Calls per second over at least the given time.
double measure(const Job& job, double seconds)
{
    const double start = now();
    double elapsed = 0;
    std::size_t calls = 0;
    for (std::size_t batch = 1; elapsed < seconds; batch *= 2) {
        for (std::size_t i = 0; i < batch; ++i) job.call();
        calls += batch;
        elapsed = now() - start;
    }
    return static_cast<double>(calls) / elapsed;
}

void addDigests(std::vector<Job>& jobs)
{
    for (const std::int32_t id : offeredHashes) {
        const HashRow* row =
            std::find_if(std::begin(hashRows), std::end(hashRows), [id](const HashRow& r) { return r.id == id; });
        for (const std::uint32_t size : {64u, 16384u}) {
            cHashAlg* hash = row->create();
            check(hash != nullptr, "no memory");
            jobs.push_back({std::string("digest ") + row->name + " " + std::to_string(size), size / 1e6, "MB/s",
                            [hash, message = Bytes(size, 0x5A), digest = Bytes(64)]() mutable {
                                check(hashBuffer(hash, digest.data(), message.data(),
                                                 static_cast<std::uint32_t>(message.size())) == 0,
                                      "digest");
                            }});
        }
    }
}

void addKeys(std::vector<Job>& jobs)
{
    for (const test::Record& record : test::readVectors("keys/rsa-private.txt")) {
        if (!record.has("qinv")) continue;
        auto* key = newRsaPrivateKey();
        auto* publicKey = newRsaPublicKey();
        check(key && publicKey, "no memory");
        const auto load = [&](BigNum* number, const char* name) {
            const Bytes bytes = record.bytes(name);
            check(bnImport(*number, bytes.data(), static_cast<std::uint32_t>(bytes.size())) == 0, "no memory");
        };
        load(key->n, "n"), load(key->e, "e"), load(key->d, "d"), load(key->p, "p"), load(key->q, "q"),
            load(key->qinv, "qinv");
        check(completeRsaPrivate(*key) == 0, "a key cannot be completed");
        load(publicKey->n, "n"), load(publicKey->e, "e");
        publicKey->bits = key->bits;
        const std::uint32_t k = (key->bits + 7u) / 8u;
        const std::string size = std::to_string(key->bits);
        if (key->bits % 1024 != 0 ||
            std::any_of(jobs.begin(), jobs.end(), [&](const Job& j) { return j.name == "RSA private " + size; }))
            continue;
        Bytes input(k, 0x5A);
        input[0] = 0;
        jobs.push_back({"RSA private " + size, 1, "ops/s", [=, output = Bytes(k)]() mutable {
                            check(rsaPrivateOperation(*key, input.data(), output.data(), RSA_RAW) == 0,
                                  "private operation");
                        }});
        jobs.push_back({"RSA public " + size, 1, "ops/s", [=, output = Bytes(k)]() mutable {
                            check(rsaPublicOperation(*publicKey, input.data(), output.data(), RSA_RAW) == 0,
                                  "public operation");
                        }});
        jobs.push_back({"modexp " + size, 1, "ops/s", [=] {
                            BigNum result;
                            check(bnModExp(result, *key->d, *key->d, *key->n) == 0, "modexp");
                        }});
        jobs.push_back({"multiply " + size, 1, "ops/s", [=] {
                            BigNum result;
                            check(bnMultiply(result, *key->n, *key->d) == 0, "multiply");
                        }});
    }
}

void addEncodings(std::vector<Job>& jobs)
{
    const Bytes data(48 * 256, 0xA7);
    auto size = static_cast<std::uint32_t>(data.size() * 2);
    std::string text(size, 0);
    check(base64Encode(text.data(), &size, data.data(), static_cast<std::uint32_t>(data.size()), nullptr, nullptr,
                       nullptr, nullptr, BASE64_NO_CHECKSUM) == 0,
          "base64");
    text.resize(size);
    jobs.push_back({"base64 encode", data.size() / 1e6, "MB/s", [data, output = std::string(size, 0)]() mutable {
                        auto room = static_cast<std::uint32_t>(output.size());
                        check(base64Encode(output.data(), &room, data.data(), static_cast<std::uint32_t>(data.size()),
                                           nullptr, nullptr, nullptr, nullptr, BASE64_NO_CHECKSUM) == 0,
                              "base64");
                    }});
    jobs.push_back(
        {"base64 decode", data.size() / 1e6, "MB/s", [text, output = Bytes(data.size())]() mutable {
             auto room = static_cast<std::uint32_t>(output.size());
             check(base64Decode(output.data(), &room, text.data(), static_cast<std::uint32_t>(text.size())) == 0,
                   "base64");
         }});
    const Bytes der = test::readVectorFile("certificates/real-godaddy-class2.der");
    jobs.push_back({"certificate read", 1, "ops/s", [der] {
                        CertificateInfo certificate;
                        check(readCertificate(certificate, der.data(), static_cast<std::uint32_t>(der.size())) == 0,
                              "certificate");
                    }});
    jobs.push_back(
        {"certificate read and verify", 1, "ops/s", [der] {
             CertificateInfo certificate;
             check(readCertificate(certificate, der.data(), static_cast<std::uint32_t>(der.size())) == 0,
                   "certificate");
             check(verifyCertificateSignature(certificate, certificate.signatureAlgorithm.row->digest, nullptr) == 0,
                   "signature");
         }});
}

int run(int argc, char** argv)
{
    int rounds = 5;
    double seconds = 0.1;
    std::string only;
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        if (i + 1 < argc && option == "--rounds")
            rounds = std::max(1, std::atoi(argv[i + 1]));
        else if (i + 1 < argc && option == "--ms")
            seconds = std::max(1, std::atoi(argv[i + 1])) / 1e3;
        else if (i + 1 < argc && option == "--only")
            only = argv[i + 1];
        else {
            std::fputs("usage: toolbelt_bench [--rounds N] [--ms N] [--only TEXT]\n",
                       option == "--help" ? stdout : stderr);
            return option == "--help" ? 0 : 2;
        }
    }
    std::vector<Job> jobs;
    addDigests(jobs);
    addKeys(jobs);
    addEncodings(jobs);
    std::erase_if(jobs, [&](const Job& job) { return job.name.find(only) == std::string::npos; });
    if (jobs.empty()) fail("no job's name contains " + only);
    for (int round = 0; round < rounds; ++round)
        for (Job& job : jobs) job.rates.push_back(measure(job, seconds));
    for (Job& job : jobs) {
        std::nth_element(job.rates.begin(), job.rates.begin() + rounds / 2, job.rates.end());
        std::printf("%-32s %12.5g %s\n", job.name.c_str(), job.rates[static_cast<std::size_t>(rounds / 2)] * job.amount,
                    job.unit);
    }
    return 0;
}

} // namespace
} // namespace toolbelt

int main(int argc, char** argv)
{
    return toolbelt::run(argc, argv);
}
