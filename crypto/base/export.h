// TB_API marks what toolbelt.dll exports. Whoever links the library's objects instead of the DLL defines
// TOOLBELT_STATIC.
#pragma once

#if !defined(_WIN32)
#define TB_API __attribute__((visibility("default")))
#elif defined(TOOLBELT_BUILDING)
#define TB_API __declspec(dllexport)
#elif defined(TOOLBELT_STATIC)
#define TB_API
#else
#define TB_API __declspec(dllimport)
#endif
