#include "tests/pka/field_keys.h"

#include <map>

namespace toolbelt::test {

FieldNumbers fieldNumbers(const Record& record)
{
    return {record.bytes("p"), record.has("q") ? record.bytes("q") : Bytes(), record.bytes("g"), record.bytes("y"),
            record.bytes("x")};
}

const FieldNumbers& dsaNumbers(const std::string& name)
{
    static const std::map<std::string, FieldNumbers> keys = [] {
        std::map<std::string, FieldNumbers> read;
        for (const Record& record : readVectors("keys/dsa.txt"))
            if (record.has("p")) read[record.get("domain")] = fieldNumbers(record);
        return read;
    }();
    return keys.at(name);
}

const FieldNumbers& elgamalNumbers(std::uint32_t k)
{
    static const std::map<std::uint32_t, FieldNumbers> keys = [] {
        std::map<std::uint32_t, FieldNumbers> read;
        for (const Record& record : readVectors("keys/elgamal.txt"))
            read.emplace(record.bytes("p").size(), fieldNumbers(record));
        return read;
    }();
    return keys.at(k);
}

} // namespace toolbelt::test
