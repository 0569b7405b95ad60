#include "cli/errors.h"

#include <cstdio>

#include "crypto/base/crypt_status.h"
#include "crypto/bignum/status.h"
#include "crypto/cipher/cipher.h"
#include "crypto/encoding/status.h"
#include "crypto/pka/status.h"

namespace toolbelt::cli {
namespace {

struct StatusRow
{
    Status status;
    const char* text;
};

// Some numbers serve two layers; their texts hold for both.
constexpr StatusRow statusRows[] = {
    {STATUS_BUFFER_TOO_SMALL, "a number is too large"},
    {BN_E_MEMORY, "no memory"},
    {BN_E_RANGE, "out of range"},
    {PKA_E_KEY, "malformed key"},
    {BN_E_NO_INVERSE, "no inverse, the numbers have a common factor"},
    {PKA_E_SHORT_INPUT, "a short input to a small exponent"},
    {DER_E_MEMORY, "no memory"},
    {DER_E_LIMIT, "beyond a limit, or against the rules of its structure"},
    {DER_E_LENGTH, "cut short, or with bytes left over"},
    {DER_E_TAG, "another kind of element than expected"},
    {DER_E_MALFORMED, "malformed"},
    {DER_E_UNKNOWN_ALGORITHM, "unknown algorithm identifier"},
    {DER_E_NULL_PARAMETERS, "no algorithm parameters"},
    {DER_E_NOT_FOUND, "not there"},
    {CRYPT_E_UNKNOWN_ALGORITHM, "unknown algorithm"},
    {CRYPT_E_NOT_IMPLEMENTED, "not offered"},
    {CRYPT_E_NO_MEMORY, "no memory"},
    {CRYPT_E_BAD_LENGTH, "not a number of whole blocks (see --pad)"},
    {PKA_E_LENGTH, "wrong length for the key"},
    {PKA_E_NOT_OFFERED, "not offered for this kind of key, or failed"},
    {PKA_E_OBJECT, "no memory"},
    {PKA_E_FAILED, "the operation failed"},
    {KEY_E_NO_READER, "a kind of key that is not supported"},
    {PKA_E_RANDOM, "not enough random bytes"},
    {PKA_E_BLOCK, "malformed block"},
    {TEXT_E_MALFORMED, "malformed text: begin or end line missing, or bad base64"},
    {TEXT_E_CONSISTENCY, "too large to encode"},
    {PKA_E_DATA_TOO_LONG, "too long for the key"},
    {TEXT_E_CHECKSUM, "the checksum line is cut short or does not match"},
};

} // namespace

ExitCode worse(ExitCode a, ExitCode b)
{
    if (a == EXIT_NO || b == EXIT_NO) return EXIT_NO;
    return a != EXIT_DONE ? a : b;
}

Failure::Failure(const std::string& subject, const std::string& what, ExitCode code)
    : std::runtime_error(subject + ": " + what), exitCode(code)
{}

const char* statusText(Status status)
{
    for (const StatusRow& row : statusRows)
        if (row.status == status) return row.text;
    return "failed";
}

bool isMemoryStatus(Status status)
{
    return status == BN_E_MEMORY || status == DER_E_MEMORY || status == PKA_E_OBJECT || status == CRYPT_E_NO_MEMORY;
}

std::string withStatus(const char* text, Status status)
{
    return std::string(text) + " (status " + std::to_string(status) + ")";
}

Failure libraryFailure(const std::string& subject, Status status)
{
    return Failure(subject, withStatus(statusText(status), status), isMemoryStatus(status) ? EXIT_SYSTEM : EXIT_INPUT);
}

void check(const std::string& subject, Status status)
{
    if (status != STATUS_OK) throw libraryFailure(subject, status);
}

void reportError(const char* message)
{
    std::fflush(stdout); // on a terminal, what came before stands before
    std::fprintf(stderr, "toolbelt: %s\n", message);
}

} // namespace toolbelt::cli
