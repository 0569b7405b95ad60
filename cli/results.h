// The results of a command: lines of text as they come, or with --json one document at the end.
//
// The document is an array with an object for each result. A fact with parts is an object whose first member is the
// fact itself, when it has a value; parts of one name are an array under that name. Control characters that JSON
// forbids in a string are replaced by their pictures (U+2400 and on), since the library's writer writes them as they
// are.
#pragma once

#include <string>

#include "cli/console.h"
#include "json/json_value.h"

namespace toolbelt::cli {

void useJson();
bool usesJson();

// A result whose text is "name: value" lines, or a line of its own.
void printResult(const Fact& fact);
void printResult(const std::string& line, const Fact& fact);
// Prints the document, when --json was given and there were results. Once, at the end of a command that did not break
// off.
void printCollected();

// The tree as the library writes it, and the end of the line.
void printJson(const JsonValue& value);

} // namespace toolbelt::cli
