// The creators that the registry's rows point to, each defined in its cipher's own file. A creator returns a new object
// in CBC mode, or null when the key is refused or memory has run out; nothing of the key stays behind then.
#pragma once

#include <cstdint>

#include "crypto/cipher/cipher.h"

namespace toolbelt {

using CipherCreator = cSymAlg*(const std::uint8_t* key, std::uint32_t keyLength);

CipherCreator createDummy;
CipherCreator createIdea;
CipherCreator create3des;
CipherCreator createCast;
CipherCreator createBfish;
CipherCreator createTFish;
CipherCreator createGOST;
CipherCreator createRIJN;
CipherCreator createSerpent;
CipherCreator createDes;
CipherCreator createRC2_40;
CipherCreator createRC2_128;
CipherCreator createCamellia128;
CipherCreator createCamellia192;
CipherCreator createCamellia;
CipherCreator createARIA128;
CipherCreator createARIA192;
CipherCreator createARIA;
CipherCreator createRC6;

} // namespace toolbelt
