// What the tests of this folder share: the crafted library and what it tells, recorded boxes.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tests/cli/process.h"

namespace toolbelt::test {

using Strings = std::vector<std::string>;

// A file in the system's folder for temporary files.
std::wstring temporaryFile(const std::wstring& name);

// The crafted library; a copy of it in which these names are not exported.
std::wstring crafted();
std::wstring craftedWithout(std::initializer_list<std::string> names);

// Calls of the crafted library while one of these lives, "NAME(ARGUMENT)" each, the argument in decimal; functions
// answer 1 unless told otherwise. At its end the copies made of the library are deleted.
struct Calls
{
    Calls();
    ~Calls();
    Strings take() { return std::exchange(seen, {}); }
    std::uint32_t count(const std::string& name) const; // among those not taken

    Strings seen;
    std::map<std::string, std::intptr_t> answers;
    std::map<std::string, void (*)()> actions; // done within the library's function
};

struct Box
{
    std::uintptr_t window;
    std::string text, title;
    std::uint32_t flags;
    bool operator==(const Box&) const = default;
};

// While one lives, boxes are recorded in place of being shown.
struct Boxes
{
    Boxes();
    ~Boxes();
    std::vector<Box> take();
};

} // namespace toolbelt::test
