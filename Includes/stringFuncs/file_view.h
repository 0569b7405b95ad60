// cFileView: a file mapped for reading, whole or in windows. Files are opened so that others may go on writing,
// renaming and deleting them.
//
// Failures are false and leave the system's error code in lastError(). A medium that fails while a view is being read
// raises the system's exception for a page that cannot be brought in, as with every mapped file.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Includes/stringFuncs/wcs.h"

namespace toolbelt {

class TB_API cFileView
{
public:
    cFileView() noexcept = default;
    cFileView(const cFileView&) = delete;
    cFileView& operator=(const cFileView&) = delete;
    virtual ~cFileView();

    // Opens another file in place of the one before; its size is taken now. Nothing is mapped yet.
    bool Open(const wchar_t* path);
    void Close();

    // Maps a view at the current offset, which is 0 at first. It covers two windows or what remains of the file,
    // whichever is smaller; the window size is first rounded up to the system's allocation granularity (64 KiB). A
    // window size of 0 maps the rest of the file at once, and keeps a view that was mapped so. The view before is given
    // up first. Fails for an empty file, which the system cannot map.
    bool Map(std::uint32_t windowSize);
    // Adds one window to the offset and maps there, so that consecutive views overlap by one window and a record of at
    // most that size is whole in some view. Past the end, and when there are no windows, it fails and leaves the view;
    // when the system refuses, there is no view, and the offset stays.
    bool MoveOn();

    const wchar_t* path() const { return path_.text(); }
    std::uint64_t fileSize() const { return fileSize_; }
    // Null when nothing is mapped.
    const std::uint8_t* view() const { return static_cast<const std::uint8_t*>(view_); }
    std::size_t viewSize() const { return viewSize_; }
    std::uint64_t offset() const { return offset_; }
    std::uint32_t windowSize() const { return windowSize_; } // rounded up
    std::uint32_t lastError() const { return lastError_; }

private:
    bool mapAt(std::uint64_t offset, std::uint32_t window);
    void unmap();
    bool fail(std::uint32_t error);

    cWCS path_;
    void* file_ = nullptr;
    void* mapping_ = nullptr;
    const void* view_ = nullptr;
    std::uint64_t offset_ = 0;
    std::size_t viewSize_ = 0;
    std::uint64_t fileSize_ = 0;
    std::uint32_t windowSize_ = 0;
    std::uint32_t access_ = 0;
    std::uint32_t lastError_ = 0;
};

} // namespace toolbelt
