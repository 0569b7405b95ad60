#include "tests/support/vectors.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace toolbelt::test {
namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    throw std::runtime_error(std::string("not a hexadecimal digit: ") + c);
}

} // namespace

Bytes fromHex(std::string_view hex)
{
    if (hex.size() % 2 != 0) throw std::runtime_error("an odd number of hexadecimal digits");
    Bytes bytes;
    bytes.reserve(hex.size() / 2);
    for (std::size_t i = 0; i < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(hexDigit(hex[i]) << 4 | hexDigit(hex[i + 1])));
    return bytes;
}

std::string toHex(const void* bytes, std::size_t size)
{
    std::string text;
    const auto* p = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < size; ++i) {
        text += "0123456789abcdef"[p[i] >> 4];
        text += "0123456789abcdef"[p[i] & 15];
    }
    return text;
}

Bytes messageOf(const std::string& text)
{
    if (text.starts_with("hex:")) return fromHex(std::string_view(text).substr(4));
    if (text.starts_with("repeat:")) {
        const std::size_t count = std::stoul(text.substr(text.rfind(':') + 1));
        return Bytes(count, fromHex(std::string_view(text).substr(7, 2))[0]);
    }
    if (text.starts_with("pattern:")) {
        Bytes bytes(std::stoul(text.substr(8)));
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i % 251);
        return bytes;
    }
    throw std::runtime_error("unknown message form: " + text);
}

bool Record::has(std::string_view name) const
{
    return std::ranges::any_of(entries_, [&](const auto& entry) { return entry.first == name; });
}

const std::string& Record::get(std::string_view name) const
{
    const std::string* value = nullptr;
    for (const auto& entry : entries_) {
        if (entry.first != name) continue;
        if (value) throw std::runtime_error(where + ": more than one " + std::string(name));
        value = &entry.second;
    }
    if (!value) throw std::runtime_error(where + ": no " + std::string(name));
    read_.insert(std::string(name));
    return *value;
}

std::vector<std::string> Record::list(std::string_view name) const
{
    read_.insert(std::string(name));
    std::vector<std::string> values;
    for (const auto& entry : entries_)
        if (entry.first == name) values.push_back(entry.second);
    return values;
}

std::uint32_t Record::number(std::string_view name) const
{
    const std::string& text = get(name);
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
        throw std::runtime_error(where + ": not a decimal number: " + text);
    return static_cast<std::uint32_t>(std::stoul(text));
}

std::vector<std::string> Record::unread(std::initializer_list<std::string_view> remarks) const
{
    std::set<std::string, std::less<>> known = {"note", "source", "oracle", "origin"};
    for (std::string_view remark : remarks) known.emplace(remark);
    std::vector<std::string> names;
    for (const auto& entry : entries_)
        if (!read_.contains(entry.first) && !known.contains(entry.first)) names.push_back(where + ": " + entry.first);
    return names;
}

Bytes readVectorFile(const std::string& name)
{
    const std::string path = TOOLBELT_VECTORS + name;
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (!file) throw std::runtime_error("cannot read " + path);
    Bytes bytes;
    std::uint8_t chunk[65536];
    for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file.get())) > 0;)
        bytes.insert(bytes.end(), chunk, chunk + n);
    return bytes;
}

std::vector<Record> readVectors(const std::string& name)
{
    const Bytes bytes = readVectorFile(name);
    const std::string text(bytes.begin(), bytes.end());
    std::vector<Record> records;
    Record record;
    const auto finish = [&] {
        if (!record.empty()) records.push_back(std::move(record));
        record = Record();
    };
    std::size_t lineNumber = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find('\n', at);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(at, end - at);
        at = end + 1;
        ++lineNumber;
        if (line.starts_with('#')) continue;
        if (line.empty()) {
            finish();
            continue;
        }
        std::size_t split = line.find(" = ");
        if (split == std::string::npos && line.ends_with(" =")) split = line.size() - 2;
        if (split == std::string::npos)
            throw std::runtime_error(name + ":" + std::to_string(lineNumber) + ": not a `name = value` line");
        if (record.empty()) record.where = name + ":" + std::to_string(lineNumber);
        record.add(line.substr(0, split), split + 3 <= line.size() ? line.substr(split + 3) : "");
    }
    finish();
    if (records.empty()) throw std::runtime_error(name + ": no records");
    return records;
}

} // namespace toolbelt::test
