// Starts toolbelt.exe, which lies beside the test program, in the folder of the test vectors, and tells how it ended.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace toolbelt::test {

using Arguments = std::vector<std::string>;
Arguments operator+(Arguments first, const Arguments& second);

struct Outcome
{
    int exitCode = -1;
    std::string out, err;
};

// Arguments in UTF-8.
Outcome run(const Arguments& arguments, const std::string& input = {});

// A folder of its own for each test, its name outside every code page; gone, with its files, afterwards.
class Scratch
{
public:
    Scratch();
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    std::string path(const std::string& name) const; // UTF-8
    std::wstring widePath(const std::string& name) const;
    std::string write(const std::string& name, const std::string& bytes) const; // returns the path
    std::string read(const std::string& name) const;
    // The names of the files in it, sorted.
    std::vector<std::string> list() const;

private:
    const std::filesystem::path folder_;
};

// The folder of the test program.
std::filesystem::path programFolder();
// As far as it can be read by now.
std::string readFile(const std::filesystem::path& path);
bool contains(const std::string& text, const std::string& part);
// The lines without their ends.
std::vector<std::string> lines(const std::string& text);

} // namespace toolbelt::test
