// The reader of tests/vectors: records of `name = value` lines, separated by blank lines; # starts a comment line.
// A test that reads a file fails when the file is missing or empty, or when a record lacks a name it asks for or has it
// twice. It asserts that unread() is empty, so that a name that no one asked for, and that is no remark, fails it too.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolbelt::test {

using Bytes = std::vector<std::uint8_t>;

inline std::uint32_t sizeOf(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(bytes.size());
}

// Lower- or upper-case hexadecimal, two digits a byte. Anything else throws.
Bytes fromHex(std::string_view hex);
std::string toHex(const void* bytes, std::size_t size);
inline std::string toHex(const Bytes& bytes)
{
    return toHex(bytes.data(), bytes.size());
}

// The message notation of the vectors: hex:<bytes>, repeat:<byte>:<count>, pattern:<length>.
Bytes messageOf(const std::string& text);

class Record
{
public:
    std::string where; // file and line, for messages

    // The name of the first line, which says what kind of record this is.
    const std::string& kind() const { return entries_.front().first; }
    bool has(std::string_view name) const;
    // The value of a name that must be there once; throws, with file and line, when it is not.
    const std::string& get(std::string_view name) const;
    // All values of a repeated name, in order; none is no failure.
    std::vector<std::string> list(std::string_view name) const;
    Bytes bytes(std::string_view name) const { return fromHex(get(name)); }
    std::uint32_t number(std::string_view name) const;
    Bytes message(std::string_view name) const { return messageOf(get(name)); }

    void add(std::string name, std::string value) { entries_.emplace_back(std::move(name), std::move(value)); }
    bool empty() const { return entries_.empty(); }
    // Names that were never asked for and are not remarks (note, source, oracle, origin and those given).
    std::vector<std::string> unread(std::initializer_list<std::string_view> remarks = {}) const;

private:
    std::vector<std::pair<std::string, std::string>> entries_;
    mutable std::set<std::string, std::less<>> read_;
};

// Reads a file of tests/vectors; throws when it cannot be read, holds no record, or a line has no " = ".
std::vector<Record> readVectors(const std::string& name);
// Reads any file of tests/vectors whole; throws when it cannot.
Bytes readVectorFile(const std::string& name);

} // namespace toolbelt::test
