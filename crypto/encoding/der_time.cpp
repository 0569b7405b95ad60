// Times of certificates (X.690 11.7 and 11.8, RFC 5280 4.1.2.5) and the validity period made of two of them.
//
// Both forms are read as certificates must carry them: in UTC, with seconds and without fractions. The fields are taken
// as they stand; whether a month has so many days is not asked, since times are only ever compared field by field.
#include "crypto/encoding/der.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>
#include <tuple>

namespace toolbelt {
namespace {

constexpr std::uint32_t UTC_TIME_LENGTH = 13;         // YYMMDDHHMMSSZ
constexpr std::uint32_t GENERALIZED_TIME_LENGTH = 15; // YYYYMMDDHHMMSSZ
constexpr std::uint32_t FIELD_DIGITS_MAX = 4;

// Reads the field that ends just before `end` and moves end to its first digit.
Status readFieldBackwards(std::int32_t& value, const std::uint8_t*& end, std::uint32_t digits)
{
    if (digits > FIELD_DIGITS_MAX) return DER_E_LIMIT;
    end -= digits;
    value = 0;
    for (std::uint32_t i = 0; i < digits; ++i) {
        if (end[i] < '0' || end[i] > '9') return DER_E_MALFORMED;
        value = value * 10 + (end[i] - '0');
    }
    return STATUS_OK;
}

// Seconds since 1970 as a date of the Gregorian calendar; a year that does not fit stays at the end of the range.
DerTime breakDown(std::int64_t when)
{
    constexpr std::int64_t daySeconds = 86400;
    constexpr std::int64_t eraDays = 146097; // 400 years
    std::int64_t days = when / daySeconds;
    std::int64_t seconds = when % daySeconds;
    if (seconds < 0) {
        seconds += daySeconds;
        --days;
    }
    // Years are counted from March, so that the leap day comes last and months follow a line of 153 days in five.
    days += 719468; // from 0000-03-01 to 1970-01-01
    const std::int64_t era = (days >= 0 ? days : days - eraDays + 1) / eraDays;
    const std::int64_t dayOfEra = days - era * eraDays; // 0 to 146096
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t marchMonth = (5 * dayOfYear + 2) / 153; // 0: March
    const std::int64_t month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
    const std::int64_t year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);

    DerTime time;
    time.year = static_cast<std::int32_t>(std::clamp<std::int64_t>(year, std::numeric_limits<std::int32_t>::min(),
                                                                   std::numeric_limits<std::int32_t>::max()));
    time.month = static_cast<std::int32_t>(month);
    time.day = static_cast<std::int32_t>(dayOfYear - (153 * marchMonth + 2) / 5 + 1);
    time.hour = static_cast<std::int32_t>(seconds / 3600);
    time.minute = static_cast<std::int32_t>(seconds / 60 % 60);
    time.second = static_cast<std::int32_t>(seconds % 60);
    return time;
}

std::int64_t now()
{
#if defined(_WIN32)
    return _time64(nullptr); // time_t itself has 32 bits there
#else
    return std::time(nullptr);
#endif
}

auto fields(const DerTime& time)
{
    return std::tie(time.year, time.month, time.day, time.hour, time.minute, time.second);
}

} // namespace

Status readTime(DerTime& time, const DerElement& element)
{
    const bool twoDigitYear = element.tag == DER_UTC_TIME;
    if (element.contentLength != (twoDigitYear ? UTC_TIME_LENGTH : GENERALIZED_TIME_LENGTH)) return DER_E_LENGTH;
    const std::uint8_t* end = element.content + element.contentLength - 1;
    if (*end != 'Z') return DER_E_MALFORMED;

    DerTime read;
    for (std::int32_t* field : {&read.second, &read.minute, &read.hour, &read.day, &read.month}) {
        const Status status = readFieldBackwards(*field, end, 2);
        if (status != STATUS_OK) return status;
    }
    const Status status = readFieldBackwards(read.year, end, twoDigitYear ? 2 : 4);
    if (status != STATUS_OK) return status;
    if (twoDigitYear) read.year += read.year < 50 ? 2000 : 1900;
    time = read;
    return STATUS_OK;
}

Status readValidity(DerValidity& validity, const std::uint8_t* data, std::uint32_t available, const std::uint8_t** rest,
                    std::uint32_t* restLength)
{
    DerElement outer;
    Status status = parseElement(outer, data, available, nullptr, nullptr, DER_SEQUENCE);
    if (status != STATUS_OK) return status;
    const std::uint8_t* next = outer.content;
    std::uint32_t remaining = outer.contentLength;
    DerValidity read;
    status = parseElement(read.notBeforeElement, next, remaining, &next, &remaining);
    if (status == STATUS_OK) status = readTime(read.notBefore, read.notBeforeElement);
    if (status == STATUS_OK) status = parseElement(read.notAfterElement, next, remaining, &next, &remaining);
    if (status == STATUS_OK) status = readTime(read.notAfter, read.notAfterElement);
    if (status != STATUS_OK) return status;
    if (remaining != 0) return DER_E_LENGTH;
    validity = read;
    if (rest) *rest = data + outer.totalLength;
    if (restLength) *restLength = available - outer.totalLength;
    return STATUS_OK;
}

bool isTimeValid(const DerValidity& validity, std::int64_t when)
{
    const DerTime moment = breakDown(when != 0 ? when : now());
    return fields(validity.notBefore) <= fields(moment) && fields(moment) <= fields(validity.notAfter);
}

} // namespace toolbelt
