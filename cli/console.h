// The program's three streams, its progress line, and Ctrl+C.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace toolbelt::cli {

// Binary streams, UTF-8 on consoles, and the Ctrl+C handler. Once, at the start.
void openConsole();

// To standard output. A write that fails ends the command (Failure, EXIT_SYSTEM).
void print(std::string_view text);
void printLine(std::string_view text);
// Writes out what print has collected.
void flushOutput();

// One thing that a command found out: a name, a value, and what belongs to it. Commands gather facts and leave the form
// of the output to the printer.
struct Fact
{
    std::string name;
    std::string value;
    std::vector<Fact> parts = {};
};
// "name: value", a line each, parts indented below.
void printFact(const Fact& fact, unsigned depth = 0);

// How far long work has come: a line on standard error, from the first second on and only on a terminal.
class Progress
{
public:
    Progress(std::string title, std::uint64_t total); // total 0: not known
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    void show(std::uint64_t done);

private:
    std::string title_;
    std::uint64_t total_;
    std::uint64_t started_;
    std::uint64_t shown_ = 0;
};

// Ctrl+C ends the program at once (EXIT_SYSTEM) unless something would be left half done: while such a guard lives, it
// only sets the flag that checkInterrupt turns into a Failure.
class CleanupGuard
{
public:
    CleanupGuard();
    ~CleanupGuard();
    CleanupGuard(const CleanupGuard&) = delete;
    CleanupGuard& operator=(const CleanupGuard&) = delete;
};
void checkInterrupt(const std::string& subject);

} // namespace toolbelt::cli
