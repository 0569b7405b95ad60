#include "Includes/stringFuncs/long_name.h"

#include "Includes/stringFuncs/text_units.h"

namespace toolbelt {
namespace {

constexpr std::size_t CLASSIC_PATH_LIMIT = 260;

} // namespace

const wchar_t* cLongName::Convert(const wchar_t* path)
{
    if (path == nullptr || path[0] == 0 || path[1] != L':' || path[2] != L'\\') return path;
    if (lengthWithin(path, CLASSIC_PATH_LIMIT) < CLASSIC_PATH_LIMIT) return path;
    cWCS name; // the path may lie inside the text of the call before
    if (name.Append(L"\\\\?\\") == 0 || name.Append(path) == 0) return nullptr;
    text_.swap(name);
    return text_.text();
}

} // namespace toolbelt
