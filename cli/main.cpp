// toolbelt.exe: the engine from the command line. This file finds the command, has its options parsed, and turns the
// way it ends into an exit code and a message.
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

struct Command
{
    const char* name;      // one or two words
    const char* arguments; // for the usage line
    const char* summary;
    Action (*prepare)(Parser& parser);
};

constexpr Command commands[] = {
    {"digest", "-a ALG FILE... | -a ALG --check LIST | --list", "digests of files", prepareDigest},
    {"cipher encrypt", "-c ALG [-m MODE] --key HEX [--iv HEX] [--pad] IN OUT", "a file through a block cipher",
     prepareCipherEncrypt},
    {"cipher decrypt", "-c ALG [-m MODE] --key HEX [--iv HEX] [--pad] IN OUT", "and back", prepareCipherDecrypt},
    {"cipher", "--list", "the block ciphers there are", prepareCipher},
    {"bignum", "OP A [B [C]]", "arithmetic on large numbers", prepareBignum},
    {"armour", "[OPTIONS] IN OUT", "a file as base64 or armoured text", prepareArmour},
    {"dearmour", "[OPTIONS] IN OUT", "the file back from such a text", prepareDearmour},
    {"der dump", "FILE", "the elements of a DER file", prepareDerDump},
    {"key generate", "rsa|dsa|elgamal --bits N --out NAME", "a new pair of key files", prepareKeyGenerate},
    {"key show", "[--private] FILE", "a key's kind and numbers", prepareKeyShow},
    {"key ssh", "FILE", "an RSA key as ssh-rsa text", prepareKeySsh},
    {"sign", "--key KEY -a ALG [OPTIONS] FILE", "a signature over a file's digest", prepareSign},
    {"verify", "--key KEY -a ALG --signature SIG FILE", "whether such a signature is right", prepareVerify},
    {"encrypt", "--key KEY IN OUT", "a short message under a public key", prepareEncrypt},
    {"decrypt", "--key KEY IN OUT", "and back", prepareDecrypt},
    {"cert show", "FILE...", "what certificates say", prepareCertShow},
    {"cert verify", "[--issuer FILE] [--at YYYY-MM-DD] FILE...", "signatures and dates of certificates",
     prepareCertVerify},
    {"json format", "[--hide POINTER]... [--blank POINTER]... FILE", "a JSON document as the library writes it",
     prepareJsonFormat},
    {"text show", "FILE", "a text file as UTF-8", prepareTextShow},
    {"text find", "[--skip-key] FILE KEY", "the line that begins with KEY", prepareTextFind},
    {"post", "URL FILE", "a JSON document to a web server, and its answer", preparePost},
    {"dialog", "plain|coloured|countdown [--screenshot FILE.bmp]", "one of the library's dialogs, on the screen",
     prepareDialog},
    {"system", "", "what the program runs on, as the library sees it", prepareSystem},
    {"speed", "[JOB...] [--seconds S] [--tier NAME]", "how fast the library is here", prepareSpeed},
};

constexpr char GENERAL_USAGE[] = "toolbelt [--json] COMMAND [OPTIONS] ARGUMENTS...";

std::string usageOf(const Command& command)
{
    return std::string("toolbelt ") + command.name + " " + command.arguments;
}

// The list of commands, of one group ("cert") or all.
std::string listCommands(const std::string& group)
{
    std::string text;
    for (const Command& command : commands) {
        const std::string name = command.name;
        if (!group.empty() && !name.starts_with(group + " ")) continue;
        text += "  " + name + std::string(16 - name.size(), ' ') + command.summary + "\n";
    }
    return text;
}

void printHelp(const std::string& group)
{
    print(std::string("Usage: ") + GENERAL_USAGE + "\n\nCommands:\n" + listCommands(group) +
          "\n`toolbelt COMMAND --help` tells a command's options, with an example; `toolbelt --version` the version.\n"
          "`--json` before the command gives what it finds out as one JSON document, an array of results.\n"
          "`-` as a file is standard input or output. Exit codes: 0 done, or yes; 1 the answer is no; 2 wrong usage;\n"
          "3 input that cannot be read or is malformed; 4 the system refused.\n");
}

struct Found
{
    const Command* command = nullptr;
    std::size_t words = 0; // of its name
};

Found findCommand(const std::vector<std::string>& arguments)
{
    for (const Command& command : commands) {
        const std::string name = command.name;
        const std::size_t space = name.find(' ');
        if (arguments[0] != name.substr(0, space)) continue;
        if (space == std::string::npos) return {&command, 1};
        if (arguments.size() > 1 && arguments[1] == name.substr(space + 1)) return {&command, 2};
    }
    return {};
}

ExitCode runCommand(const Command& command, const std::vector<std::string>& arguments)
{
    const std::string usage = usageOf(command);
    try {
        Parser parser(command.summary, std::string("toolbelt ") + command.name, usage);
        const Action action = command.prepare(parser);
        return parser.parse(arguments) ? action() : EXIT_DONE;
    } catch (const UsageError& error) {
        throw UsageError(std::string(error.what()) + "\nusage: " + usage);
    }
}

ExitCode run(const std::vector<std::string>& arguments)
{
    if (arguments.empty()) throw UsageError(std::string("no command\nusage: ") + GENERAL_USAGE);
    const Found found = findCommand(arguments);
    if (found.command)
        return runCommand(*found.command,
                          {arguments.begin() + static_cast<std::ptrdiff_t>(found.words), arguments.end()});

    const std::string& first = arguments[0];
    const bool isGroup = !listCommands(first).empty();
    const std::string& wanted = isGroup && arguments.size() > 1 ? arguments[1] : first;
    if (wanted == "--help" || wanted == "-h") {
        printHelp(isGroup ? first : "");
        return EXIT_DONE;
    }
    if (first == "--version") {
        printLine("toolbelt " TOOLBELT_VERSION);
        return EXIT_DONE;
    }
    const std::string usage =
        std::string("\nusage: ") + GENERAL_USAGE + "\ncommands:\n" + listCommands(isGroup ? first : "");
    if (isGroup && arguments.size() == 1) throw UsageError(first + " needs to know what to do" + usage);
    throw UsageError("unknown command or option: " + (isGroup ? first + " " : "") + wanted + usage);
}

ExitCode runGuarded(const std::vector<std::string>& arguments)
{
    try {
        const bool json = !arguments.empty() && arguments[0] == "--json";
        if (json) useJson();
        const ExitCode code = run({arguments.begin() + json, arguments.end()});
        printCollected();
        flushOutput();
        return code;
    } catch (const UsageError& error) {
        reportError(error.what());
        return EXIT_USAGE;
    } catch (const Failure& failure) {
        reportError(failure.what());
        return failure.exitCode;
    } catch (const std::bad_alloc&) {
        reportError("no memory");
        return EXIT_SYSTEM;
    } catch (const std::exception& error) {
        reportError(error.what());
        return EXIT_SYSTEM;
    }
}

} // namespace
} // namespace toolbelt::cli

extern "C" int wmain(int count, wchar_t** wide)
{
    toolbelt::cli::openConsole();
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) arguments.push_back(toolbelt::cli::toUtf8(wide[i]));
    return toolbelt::cli::runGuarded(arguments);
}
