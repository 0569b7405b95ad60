#include "Includes/stringFuncs/file_name.h"

namespace toolbelt {
namespace {

constexpr wchar_t replacements[][2] = {{L'*', L'x'}, {L'@', L'a'}, {L'"', L'Q'}, {L'\'', L'Q'}, {L'\\', L'$'},
                                       {L'/', L'b'}, {L':', L'.'}, {L'<', L'{'}, {L'>', L'}'},  {L'?', L'$'}};

} // namespace

void MakeFileNameSafe(wchar_t* text) noexcept
{
    for (; text && *text; ++text)
        for (const auto& [bad, good] : replacements)
            if (*text == bad) {
                *text = good;
                break;
            }
}

} // namespace toolbelt
