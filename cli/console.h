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
    // How JSON has it (results.h). The value of a number is a decimal integer, and the parts of a list need no names.
    enum class Form
    {
        text,
        number,
        list
    };
    Form form = Form::text;
};
inline Fact numberFact(std::string name, std::uint64_t number)
{
    return {std::move(name), std::to_string(number), {}, Fact::Form::number};
}
// "name: value", a line each, parts indented below.
void printFact(const Fact& fact, unsigned depth = 0);

// One line on standard error that is written over and over, and gone in the end; only on a terminal.
class StatusLine
{
public:
    StatusLine();
    ~StatusLine() { clear(); }
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;
    bool visible() const { return visible_; }
    void show(std::string_view text); // throws nothing
    void clear();

private:
    bool visible_;
    std::size_t width_ = 0; // of what stands there
};

// How far long work has come: a status line, from the first second on.
class Progress
{
public:
    Progress(std::string title, std::uint64_t total); // total 0: not known
    void show(std::uint64_t done);

private:
    std::string title_;
    std::uint64_t total_;
    StatusLine line_;
    std::uint32_t started_;
    std::uint32_t shown_ = 0;
};

// Ctrl+C ends the program at once (EXIT_SYSTEM) unless something would be left half done. While a guard lives it sets
// the flag that checkInterrupt turns into a Failure, and ends the program only when that has not happened within a
// second; while one for files lives, not even then.
class CleanupGuard
{
public:
    explicit CleanupGuard(bool forFiles = false);
    ~CleanupGuard();
    CleanupGuard(const CleanupGuard&) = delete;
    CleanupGuard& operator=(const CleanupGuard&) = delete;

private:
    const bool forFiles_;
};
bool interruptRequested();
void checkInterrupt(const std::string& subject);

} // namespace toolbelt::cli
