// How a command ends when it cannot go on: exceptions that carry the one line to print and the exit code.
#pragma once

#include <stdexcept>
#include <string>

#include "crypto/base/status.h"

namespace toolbelt::cli {

enum ExitCode
{
    EXIT_DONE = 0,   // done, or the answer is yes
    EXIT_NO = 1,     // the answer is no
    EXIT_USAGE = 2,  // wrong options
    EXIT_INPUT = 3,  // input that cannot be read or is malformed
    EXIT_SYSTEM = 4, // the system refused
};

// The exit code of work that ended in part with one and in part with the other: a definite no outranks what could not
// be judged, and that outranks success.
ExitCode worse(ExitCode a, ExitCode b);

// A command line that says what cannot be done.
struct UsageError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// "FILE: what happened"; subject is the file, or the command where there is none.
struct Failure : std::runtime_error
{
    Failure(const std::string& subject, const std::string& what, ExitCode exitCode);
    ExitCode exitCode;
};

// A short text for each status of the library, and whether the status says that memory has run out.
const char* statusText(Status status);
bool isMemoryStatus(Status status);
// "malformed (status 12)"
std::string withStatus(const char* text, Status status);
// The failure that a status of the library stands for.
Failure libraryFailure(const std::string& subject, Status status);
// Throws it when the status is not 0.
void check(const std::string& subject, Status status);

// Prints "toolbelt: MESSAGE" on standard error.
void reportError(const char* message);

} // namespace toolbelt::cli
