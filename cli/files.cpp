#include "cli/files.h"

#include <windows.h>

#include <algorithm>
#include <optional>

#include "cli/console.h"
#include "cli/errors.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t PIECE = 1 << 20;

// "what happened: the system's text (system error N)"
Failure systemFailure(const std::string& path, const std::string& what, ExitCode exitCode)
{
    const DWORD error = GetLastError();
    wchar_t text[512];
    DWORD length =
        FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
                       nullptr, error, 0, text, 512, nullptr);
    while (length > 0 && (text[length - 1] == L' ' || text[length - 1] == L'.')) --length;
    const std::string reason = length > 0 ? ": " + toUtf8(std::wstring(text, length)) : "";
    return Failure(path, what + reason + " (system error " + std::to_string(error) + ")", exitCode);
}

// Rights that let the user of this process do all, and nobody else anything.
class OwnerRights
{
public:
    explicit OwnerRights(const std::string& path)
    {
        SetLastError(ERROR_SUCCESS);
        known_ = build();
        if (!known_ && GetLastError() != ERROR_CALL_NOT_IMPLEMENTED)
            throw systemFailure(path, "cannot be given to its owner alone", EXIT_SYSTEM);
    }
    // Null where the system does not know rights: then a file gets what its folder gives.
    SECURITY_ATTRIBUTES* attributes() { return known_ ? &attributes_ : nullptr; }

private:
    bool build()
    {
        HANDLE token = nullptr;
        if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
        DWORD size = 0;
        const bool found = GetTokenInformation(token, TokenUser, user_, sizeof user_, &size) != FALSE;
        CloseHandle(token);
        if (!found || !InitializeAcl(list(), sizeof list_, ACL_REVISION)) return false;
        const PSID sid = reinterpret_cast<const TOKEN_USER*>(user_)->User.Sid;
        if (!AddAccessAllowedAce(list(), ACL_REVISION, FILE_ALL_ACCESS, sid)) return false;
        if (!InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION)) return false;
        if (!SetSecurityDescriptorDacl(&descriptor_, TRUE, list(), FALSE)) return false;
        // Nothing of the folder is added. Set by hand, since the function that does it is missing before Windows 2000.
        descriptor_.Control = static_cast<SECURITY_DESCRIPTOR_CONTROL>(descriptor_.Control | SE_DACL_PROTECTED);
        attributes_ = {sizeof attributes_, &descriptor_, FALSE};
        return true;
    }
    ACL* list() { return reinterpret_cast<ACL*>(list_); }

    alignas(8) BYTE user_[256];
    alignas(8) BYTE list_[256];
    SECURITY_DESCRIPTOR descriptor_;
    SECURITY_ATTRIBUTES attributes_;
    bool known_;
};

} // namespace

bool fileExists(const std::string& path)
{
    return GetFileAttributesW(toWide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

InputFile::InputFile(const std::string& path)
    : path_(path), handle_(GetStdHandle(STD_INPUT_HANDLE)), owned_(path != "-")
{
    if (owned_)
        handle_ =
            CreateFileW(toWide(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE || handle_ == nullptr)
        throw systemFailure(path_, "cannot be opened", EXIT_INPUT);
    LARGE_INTEGER size;
    if (owned_ && GetFileSizeEx(handle_, &size) && size.QuadPart > 0) size_ = static_cast<std::uint64_t>(size.QuadPart);
}

InputFile::~InputFile()
{
    if (owned_) CloseHandle(handle_);
}

std::uint32_t InputFile::read(std::uint8_t* block, std::uint32_t size)
{
    std::uint32_t filled = 0;
    while (filled < size) {
        DWORD got = 0;
        if (!ReadFile(handle_, block + filled, std::min(size - filled, PIECE), &got, nullptr)) {
            if (GetLastError() == ERROR_BROKEN_PIPE) break; // how a pipe ends
            throw systemFailure(path_, "cannot be read", EXIT_INPUT);
        }
        if (got == 0) break;
        filled += got;
    }
    return filled;
}

Bytes readWhole(const std::string& path, std::uint32_t limit)
{
    const auto tooLarge = [&] { return Failure(path, "larger than " + std::to_string(limit) + " bytes", EXIT_INPUT); };
    InputFile file(path);
    if (file.size() > limit) throw tooLarge();
    Bytes bytes;
    // One byte more than the file holds shows its end without another block; a file may also grow meanwhile.
    std::uint64_t room = file.size() != 0 ? file.size() + 1 : PIECE;
    for (;;) {
        room = std::min<std::uint64_t>(room, std::uint64_t(limit) + 1);
        const std::uint32_t had = size32(bytes);
        bytes.resize(static_cast<std::size_t>(room));
        const std::uint32_t got = file.read(bytes.data() + had, static_cast<std::uint32_t>(room) - had);
        if (had + got <= limit && had + got < room) {
            bytes.resize(had + got);
            return bytes;
        }
        if (had + got > limit) throw tooLarge();
        room *= 2;
    }
}

OutputFile::OutputFile(const std::string& path, FileAccess access)
    : access_(access), path_(path), target_(toWide(path)), handle_(INVALID_HANDLE_VALUE)
{
    checkInterrupt(path_);
    if (path_ == "-") {
        flushOutput();
        handle_ = GetStdHandle(STD_OUTPUT_HANDLE);
        return;
    }
    std::optional<OwnerRights> rights;
    if (access == FileAccess::owner) rights.emplace(path_);
    SECURITY_ATTRIBUTES* const attributes = rights ? rights->attributes() : nullptr;
    for (unsigned attempt = 0; attempt < 100; ++attempt) {
        temporary_ = target_ + L".tmp-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(attempt);
        handle_ =
            CreateFileW(temporary_.c_str(), GENERIC_WRITE, 0, attributes, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle_ != INVALID_HANDLE_VALUE) return;
        if (GetLastError() != ERROR_FILE_EXISTS) break;
    }
    temporary_.clear(); // it is not ours to delete
    throw systemFailure(path_, "cannot be created", EXIT_SYSTEM);
}

OutputFile::~OutputFile()
{
    if (temporary_.empty()) return;
    close();
    DeleteFileW(temporary_.c_str());
}

void OutputFile::close()
{
    if (handle_ != INVALID_HANDLE_VALUE) CloseHandle(handle_);
    handle_ = INVALID_HANDLE_VALUE;
}

void OutputFile::write(const std::uint8_t* bytes, std::size_t size)
{
    for (std::size_t at = 0; at < size;) {
        checkInterrupt(path_);
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size - at, PIECE));
        DWORD written = 0;
        if (!WriteFile(handle_, bytes + at, wanted, &written, nullptr) || written == 0)
            throw systemFailure(path_, "cannot be written", EXIT_SYSTEM);
        at += written;
    }
}

void OutputFile::commit(bool replace)
{
    if (temporary_.empty()) return;
    // A key that is lost with the power is lost for good.
    if (access_ == FileAccess::owner) FlushFileBuffers(handle_);
    close();
    if (!MoveFileExW(temporary_.c_str(), target_.c_str(), replace ? MOVEFILE_REPLACE_EXISTING : 0))
        throw systemFailure(path_, "cannot be written", EXIT_SYSTEM);
    temporary_.clear();
}

void writeWhole(const std::string& path, const Bytes& bytes)
{
    OutputFile file(path);
    file.write(bytes.data(), bytes.size());
    checkInterrupt(path);
    file.commit();
}

} // namespace toolbelt::cli
