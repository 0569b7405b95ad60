// ASN.1 DER: reading elements without copying, and writing them into a caller's buffer.
//
// A reader parses one element, then parses inside its content, then goes on with the rest. Lengths travel with pointers
// and are compared before they are added; nothing is read outside [data, data + available). Indefinite lengths (BER)
// are read, nested at most DER_MAX_INDEFINITE_DEPTH deep; the writer always writes definite ones. Identifiers are one
// octet.
#pragma once

#include <cstdint>

#include "crypto/base/export.h"
#include "crypto/base/heap.h"
#include "crypto/bignum/bignum.h"
#include "crypto/encoding/oid_table.h"
#include "crypto/encoding/status.h"

namespace toolbelt {

inline constexpr std::uint32_t DER_MAX_INDEFINITE_DEPTH = 64;

enum DerTag : std::int32_t
{
    DER_ANY = -1, // as an expected tag: accept any identifier
    DER_BOOLEAN = 1,
    DER_INTEGER = 2,
    DER_BIT_STRING = 3,
    DER_OCTET_STRING = 4,
    DER_NULL = 5,
    DER_OID = 6,
    DER_UTF8_STRING = 12,
    DER_SEQUENCE = 16,
    DER_SET = 17,
    DER_PRINTABLE_STRING = 19,
    DER_T61_STRING = 20,
    DER_VIDEOTEX_STRING = 21,
    DER_IA5_STRING = 22,
    DER_UTC_TIME = 23,
    DER_GENERALIZED_TIME = 24,
    DER_CONSTRUCTED_SEQUENCE = 0x30, // the identifier octets that a writer uses
    DER_CONSTRUCTED_SET = 0x31,
};

// One element; the pointers lie inside the caller's bytes.
struct DerElement
{
    std::uint32_t tag = 0;           // the identifier octet, whole
    std::uint32_t contentLength = 0; // octets
    const std::uint8_t* content = nullptr;
    const std::uint8_t* start = nullptr; // the identifier octet
    std::uint32_t totalLength = 0;       // identifier, length octets and content
    std::uint32_t indefinite = 0;        // 1: the length octet was 0x80; the end-of-contents octets count as content
};

// A BIT STRING, its content behind the octet that counts unused bits.
struct DerBitString
{
    DerElement element;
    std::uint32_t unusedBits = 0;
};

// An OBJECT IDENTIFIER with its dotted text, owned and zero-terminated.
struct TB_API OidRecord
{
    DerElement element;
    char* text = nullptr;

    OidRecord() noexcept = default;
    OidRecord(const OidRecord&) = delete;
    OidRecord& operator=(const OidRecord&) = delete;
    ~OidRecord();
};

struct DerTime
{
    std::int32_t year = 0; // with century
    std::int32_t month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

struct DerValidity
{
    DerElement notBeforeElement;
    DerTime notBefore;
    DerElement notAfterElement;
    DerTime notAfter;
};

struct AlgorithmIdentifier
{
    DerElement element;
    OidRecord oid;
    DerElement parameters; // content null when there are none; in an indefinite element its end may stand here
    const OidRow* row = nullptr;
};

// One attribute of a distinguished name.
struct NameAttribute : HeapObject
{
    NameAttribute* next = nullptr;
    char* oid = nullptr;   // dotted text, owned
    char* value = nullptr; // a zero-terminated copy of the value octets, owned; valueLength counts them
    std::uint32_t valueLength = 0;
    std::uint8_t tag = 0; // string type of the value

    NameAttribute() noexcept = default;
    NameAttribute(const NameAttribute&) = delete;
    NameAttribute& operator=(const NameAttribute&) = delete;
    ~NameAttribute(); // releases both texts, not the next node
};

// A distinguished name: its attributes in the reverse order of the encoding, the last one first.
struct TB_API NameList
{
    NameAttribute* head = nullptr;

    NameList() noexcept = default;
    NameList(const NameList&) = delete;
    NameList& operator=(const NameList&) = delete;
    ~NameList();
};

// ---- reading. rest and restLength (both optional) receive what follows the element; on failure they are left alone.
// A record that is read again first gives up what it held; after a failure it owns no more than a text of its own.

// Parses one element; nothing is allocated. expectedTag must equal the identifier octet whole or in its low five bits,
// else DER_E_TAG, with element, rest and restLength set all the same; DER_ANY accepts any. On other failures the
// element is cleared. DER_E_LENGTH: the data end too early. DER_E_MALFORMED: null data, a length of more than four
// octets, indefinite lengths nested too deep.
[[nodiscard]] TB_API Status parseElement(DerElement& element, const std::uint8_t* data, std::uint32_t available,
                                         const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr,
                                         std::int32_t expectedTag = DER_ANY);
// Bit 7 of the identifier is set (context-specific or private class).
TB_API bool isContextTag(const DerElement& element);
// The low four bits of such an identifier, -1 for any other.
TB_API std::int32_t contextTagNumber(const DerElement& element);
// A BIT STRING (by its whole identifier, else DER_E_MALFORMED); a first content octet of 8 or more stays in the content
// and counts as 0 unused bits, and so does content without an octet.
[[nodiscard]] TB_API Status readBitString(DerBitString& bits, const std::uint8_t* data, std::uint32_t available,
                                          const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);
// parseElement with DER_INTEGER expected.
[[nodiscard]] TB_API Status readInteger(DerElement& element, const std::uint8_t* data, std::uint32_t available,
                                        const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);
// The content as an unsigned big-endian number, 0 when empty; five octets or more give the first four and
// STATUS_BUFFER_TOO_SMALL.
[[nodiscard]] TB_API Status readSmallInteger(const DerElement& element, std::uint32_t* value);
// Reads an INTEGER at *data and loads its content octets, whatever their sign, as a natural number; *data and
// *available move on behind it, on success only. DER_E_MALFORMED: an INTEGER without content. BN_E_MEMORY: no room for
// the limbs.
[[nodiscard]] TB_API Status readBigNum(BigNum& number, const std::uint8_t** data, std::uint32_t* available);
// An OBJECT IDENTIFIER (by its whole identifier, else DER_E_MALFORMED) and its text, which replaces an earlier one.
// DER_E_LIMIT: it has no text, see formatOid.
[[nodiscard]] TB_API Status readOid(OidRecord& oid, const std::uint8_t* data, std::uint32_t available,
                                    const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);
inline constexpr std::uint32_t DER_OID_TEXT_SIZE = 256;
// Renders identifier octets as dotted, zero-terminated text. The first octet alone gives the first two arcs; the others
// are gathered in 32 bits, where longer ones wrap, and written as signed numbers. DER_E_LIMIT, with an empty text: no
// octets, an arc that does not end, or an arc behind 246 characters or more.
[[nodiscard]] TB_API Status formatOid(char (&text)[DER_OID_TEXT_SIZE], const std::uint8_t* octets,
                                      std::uint32_t length);
// A UTCTime (years 1950 to 2049) or, by any other identifier, a GeneralizedTime; both end in "Z" and have seconds.
// Fields are not checked against the calendar. DER_E_LENGTH: another length. DER_E_MALFORMED: no "Z", or not a digit.
[[nodiscard]] TB_API Status readTime(DerTime& time, const DerElement& element);
// A SEQUENCE of two times and nothing else (DER_E_LENGTH). On failure the validity is untouched.
[[nodiscard]] TB_API Status readValidity(DerValidity& validity, const std::uint8_t* data, std::uint32_t available,
                                         const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);
// Whether a moment (seconds since 1970 in UTC; 0 means now) lies within the validity, both ends included.
TB_API bool isTimeValid(const DerValidity& validity, std::int64_t when);
// A SEQUENCE of an identifier and at most one element more, the parameters; DER_E_LENGTH when there is more than that.
// DER_E_UNKNOWN_ALGORITHM: OidTable has no such row; oid then holds the text that was looked for. row is set on
// success.
[[nodiscard]] TB_API Status readAlgorithmIdentifier(AlgorithmIdentifier& algorithm, const std::uint8_t* data,
                                                    std::uint32_t available, const std::uint8_t** rest = nullptr,
                                                    std::uint32_t* restLength = nullptr);
// A distinguished name. Of each SET the first attribute counts; its value is one of the string types named above, else
// DER_E_TAG. On failure the list is empty.
[[nodiscard]] TB_API Status readName(NameList& name, const std::uint8_t* data, std::uint32_t available,
                                     const std::uint8_t** rest = nullptr, std::uint32_t* restLength = nullptr);

// ---- writing: prepare every element to know its size, then place them at a running offset and fill in their contents.

// Length of the header; writes it when output is given.
TB_API std::uint32_t headerLength(std::uint32_t contentLength, std::uint32_t tag, std::uint8_t* output = nullptr);
// Sets tag and lengths; returns the total length, 0 when it does not fit 32 bits.
TB_API std::uint32_t prepareElement(DerElement& element, std::uint32_t tag, std::uint32_t contentLength);
// Writes a prepared element's header and points the content behind it. With an offset: at *offset, which moves on by
// the whole total length. Without: at the start, and the total must equal the capacity. Returns the header's length, or
// 0 with nothing changed: it does not fit, or the element was not prepared.
TB_API std::uint32_t placeElement(DerElement& element, std::uint8_t* buffer, std::uint32_t capacity,
                                  std::uint32_t* offset);
// The same for a BIT STRING without unused bits; prepareBitString adds the octet that says so to the content length,
// and placeBitString writes it and moves the content behind it.
TB_API std::uint32_t prepareBitString(DerElement& element, std::uint32_t contentLength);
TB_API std::uint32_t placeBitString(DerElement& element, std::uint8_t* buffer, std::uint32_t capacity,
                                    std::uint32_t* offset);
// Copies the content into a placed element; another length than prepared, or an element not placed, gives DER_E_LIMIT.
// (A parsed element points into bytes that are not to be written: never give one.)
[[nodiscard]] TB_API Status setContent(DerElement& element, const std::uint8_t* bytes, std::uint32_t length);

// An INTEGER of up to 32 bits, written without a leading zero octet even when its first bit is set.
struct DerSmallInteger
{
    DerElement element;
    std::uint8_t octets[4] = {};
};
TB_API std::uint32_t prepareSmallInteger(DerSmallInteger& integer, std::uint32_t value);
[[nodiscard]] TB_API Status writeSmallInteger(DerSmallInteger& integer);

// An INTEGER from a BigNum: the magnitude big-endian in max(bnDerLength, minimumLength) octets. writeBigNum fills a
// placed element; DER_E_LIMIT when it is not placed or too small for the number.
TB_API std::uint32_t prepareBigNum(DerElement& element, const BigNum& number, std::uint32_t minimumLength = 0);
[[nodiscard]] TB_API Status writeBigNum(DerElement& element, const BigNum& number);

} // namespace toolbelt
