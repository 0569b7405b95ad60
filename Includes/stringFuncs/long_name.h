// cLongName: a path in the form that the system takes beyond its classic limit of 260 units.
#pragma once

#include "Includes/stringFuncs/wcs.h"

namespace toolbelt {

class TB_API cLongName
{
public:
    // The path itself, or "\\?\" and the path when that begins with a drive letter, ":\" and is 260 units long or
    // longer; the system then takes it as it stands, so it must be without "." and "..". What is returned lives as long
    // as this object and the path do, and until the next call. Null for a null path, and when memory runs out.
    const wchar_t* Convert(const wchar_t* path);

private:
    cWCS text_;
};

} // namespace toolbelt
