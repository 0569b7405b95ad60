// Files by UTF-8 name, of any characters; "-" is standard input or output, in binary. Failures are thrown (errors.h).
#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "cli/console.h"
#include "crypto/base/heap.h"

namespace toolbelt::cli {

// Files may hold private keys: their bytes are wiped when they are let go.
template <typename T>
struct WipingAllocator
{
    using value_type = T;
    WipingAllocator() = default;
    template <typename U>
    WipingAllocator(const WipingAllocator<U>&)
    {}
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* block, std::size_t count)
    {
        wipe(block, count * sizeof(T));
        std::allocator<T>().deallocate(block, count);
    }
    bool operator==(const WipingAllocator&) const { return true; }
};
using Bytes = std::vector<std::uint8_t, WipingAllocator<std::uint8_t>>;

inline std::uint32_t size32(const Bytes& bytes)
{
    return static_cast<std::uint32_t>(bytes.size());
}
inline const char* characters(const Bytes& bytes)
{
    return reinterpret_cast<const char*>(bytes.data());
}

class InputFile
{
public:
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // Fills the block; less only where the file ends.
    std::uint32_t read(std::uint8_t* block, std::uint32_t size);
    // 0 when it is not known, as for a pipe.
    std::uint64_t size() const { return size_; }

private:
    std::string path_;
    void* handle_;
    bool owned_;
    std::uint64_t size_ = 0;
};

bool fileExists(const std::string& path);
// The whole file, of at most limit bytes (below 2 GB).
Bytes readWhole(const std::string& path, std::uint32_t limit);

enum class FileAccess
{
    usual, // what the folder passes on
    owner, // the user alone, where the file system knows such rights
};

// A file that appears whole or not at all: what is written goes to a temporary file beside the target, which commit
// renames to it. A file that was there before stays as it is until then. Standard output is written as it comes.
class OutputFile
{
public:
    explicit OutputFile(const std::string& path, FileAccess access = FileAccess::usual);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const std::uint8_t* bytes, std::size_t size);
    // With replace unset, a file that has appeared under the name stays, and that is a failure.
    void commit(bool replace = true);

private:
    void close();

    const CleanupGuard guard_{true}; // Ctrl+C must not leave the temporary file
    const FileAccess access_;
    std::string path_;
    std::wstring target_;
    std::wstring temporary_; // empty when there is none any more
    void* handle_;
};

void writeWhole(const std::string& path, const Bytes& bytes);

} // namespace toolbelt::cli
