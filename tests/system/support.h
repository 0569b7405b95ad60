// What the tests of this folder share: the crafted library and what it tells, recorded boxes, handles, other programs.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

namespace toolbelt::test {

// The folder of the test program, with a backslash at the end.
std::wstring programFolder();
// A file in the system's folder for temporary files.
std::wstring temporaryFile(const std::wstring& name);

// The crafted library; a copy of it in which these names are not exported.
std::wstring crafted();
std::wstring craftedWithout(std::initializer_list<std::string> names);

// Calls of the crafted library while one of these lives, "NAME(ARGUMENT)" each, the argument in decimal; functions
// answer 1 unless told otherwise.
class Calls
{
public:
    Calls();
    ~Calls();
    std::vector<std::string> take();
    void answer(const std::string& name, std::intptr_t answer);
    // Called within the library's function of that name.
    void during(const std::string& name, void (*action)());
    std::uint32_t count(const std::string& name) const;
};

struct Box
{
    std::uintptr_t window;
    std::string text, title;
    std::uint32_t flags;
    bool operator==(const Box&) const = default;
};

// While one lives, boxes are recorded in place of being shown.
class Boxes
{
public:
    Boxes();
    ~Boxes();
    std::vector<Box> take();
};

// Handles that are open in this process, counted one by one.
int openHandles();

// A program's standard output, once it has ended.
std::string outputOf(const std::wstring& program);
// What the witness program writes, within some seconds; the file is named in the environment until then.
class Witness
{
public:
    Witness();
    std::wstring waitForLine();

private:
    std::wstring path_;
};

} // namespace toolbelt::test
