// The answers of a class that offers nothing: every operation but the two lengths is "not offered".
#include "crypto/pka/pka.h"

namespace toolbelt {

std::int32_t cPKA::keyLength()
{
    return 0;
}

std::int32_t cPKA::maxInputLength()
{
    return keyLength();
}

Status cPKA::encryptPrefixed(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::rawToDer(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::verifyPrefixed(const std::uint8_t*, std::uint32_t, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::verifyDer(const std::uint8_t*, std::uint32_t, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::publicFromPrefixed(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::privateFromPrefixed(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::publicFromDer(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::privateFromDer(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::signPrefixed(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::signDer(std::uint8_t*, std::uint32_t*, const std::uint8_t*, std::uint32_t)
{
    return PKA_E_NOT_OFFERED;
}

// A plain store to a member of a dying object would be dropped by the compiler.
cPKA::~cPKA()
{
    wipe(&algorithm_, sizeof algorithm_);
}

Status cPKA::exportNumbers(std::uint8_t*, std::uint32_t*)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::exportDer(std::uint8_t*, std::uint32_t*)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::exportSsh(std::uint8_t*, std::uint32_t*)
{
    return PKA_E_NOT_OFFERED;
}

Status cPKA::makePublic(cPKA**)
{
    return PKA_E_NOT_OFFERED;
}

} // namespace toolbelt
