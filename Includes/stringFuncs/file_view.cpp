#include "Includes/stringFuncs/file_view.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <algorithm>

#include "Includes/stringFuncs/long_name.h"

namespace toolbelt {
namespace {

// Rounded up to the granularity; what would not fit 32 bits any more stays at the largest multiple, far beyond any
// view.
std::uint32_t roundWindow(std::uint32_t windowSize)
{
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const std::uint64_t granularity = info.dwAllocationGranularity;
    const std::uint64_t rounded = (windowSize + granularity - 1) / granularity * granularity;
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(rounded, (std::uint64_t(1) << 32) - granularity));
}

} // namespace

cFileView::~cFileView()
{
    Close();
}

bool cFileView::Open(const wchar_t* path)
{
    cWCS copy; // first, as the path may be this object's own
    const bool copied = path && copy.Append(path) != 0;
    Close();
    if (path == nullptr) return fail(ERROR_INVALID_PARAMETER);
    path_.swap(copy);
    cLongName longName;
    const wchar_t* const name = longName.Convert(path_.text());
    if (!copied || name == nullptr) return fail(ERROR_NOT_ENOUGH_MEMORY);
    const HANDLE file = CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return fail(GetLastError());
    file_ = file;
    access_ = FILE_MAP_READ;
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file_, &size)) {
        const DWORD error = GetLastError();
        Close();
        return fail(error);
    }
    fileSize_ = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

void cFileView::Close()
{
    unmap();
    if (mapping_) CloseHandle(mapping_);
    if (file_) CloseHandle(file_);
    mapping_ = file_ = nullptr;
    cWCS().swap(path_);
    fileSize_ = offset_ = 0;
    windowSize_ = access_ = lastError_ = 0;
}

bool cFileView::Map(std::uint32_t windowSize)
{
    if (windowSize == 0 && windowSize_ == 0 && view_) return true;
    windowSize_ = windowSize != 0 ? roundWindow(windowSize) : 0;
    return mapAt(offset_, windowSize_);
}

bool cFileView::MoveOn()
{
    if (windowSize_ == 0 || fileSize_ - offset_ <= windowSize_) return fail(ERROR_HANDLE_EOF);
    return mapAt(offset_ + windowSize_, windowSize_);
}

bool cFileView::mapAt(std::uint64_t offset, std::uint32_t window)
{
    unmap(); // first, as address space may not hold both views
    if (file_ == nullptr) return fail(ERROR_INVALID_HANDLE);
    if (mapping_ == nullptr) {
        mapping_ = CreateFileMappingW(file_, nullptr, PAGE_READONLY, 0, 0, nullptr);
        if (mapping_ == nullptr) return fail(GetLastError());
    }
    const std::uint64_t rest = fileSize_ - offset;
    const std::uint64_t size = window != 0 ? std::min(rest, std::uint64_t(window) * 2) : rest;
    if (size > SIZE_MAX) return fail(ERROR_NOT_ENOUGH_MEMORY);
    view_ = MapViewOfFile(mapping_, access_, static_cast<DWORD>(offset >> 32), static_cast<DWORD>(offset),
                          static_cast<SIZE_T>(size));
    if (view_ == nullptr) return fail(GetLastError());
    viewSize_ = static_cast<std::size_t>(size);
    offset_ = offset;
    return true;
}

void cFileView::unmap()
{
    if (view_) UnmapViewOfFile(view_);
    view_ = nullptr;
    viewSize_ = 0;
}

bool cFileView::fail(std::uint32_t error)
{
    lastError_ = error;
    return false;
}

} // namespace toolbelt
