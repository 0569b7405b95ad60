#include "Includes/stringFuncs/text_file.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "Includes/stringFuncs/file_view.h"

namespace toolbelt {

std::int32_t LoadTextFile(cWCS& text, const wchar_t* path, TextEncoding* encoding)
{
    cFileView file;
    if (!file.Open(path)) return static_cast<std::int32_t>(file.lastError());
    if (file.fileSize() >> 32 != 0) return TEXT_FILE_TOO_LARGE;
    // An empty file cannot be mapped; it is an empty text all the same.
    if (file.fileSize() != 0 && !file.Map(0)) return static_cast<std::int32_t>(file.lastError());
    return decodeText(text, file.view(), file.viewSize(), encoding) ? 0 : ERROR_NOT_ENOUGH_MEMORY;
}

} // namespace toolbelt
