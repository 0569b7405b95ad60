// text show and text find: text files of any encoding, as UTF-8.
#include "Includes/stringFuncs/text_file.h"

#include <algorithm>
#include <cstdio>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/string_buffer.h"
#include "cli/command.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t STREAM_LIMIT = 400 << 20; // standard input, which cannot be mapped
constexpr std::int32_t OUT_OF_MEMORY = 8;         // the system's code, and the library's for files

// What the system says of the code, without the full stop and the number behind it.
std::string systemText(std::int32_t code)
{
    cWCS wide;
    std::string text = toUtf8(wide.SystemErrorText(static_cast<std::uint32_t>(code)));
    if (const std::size_t number = text.rfind(" (0x"); number != std::string::npos) text.resize(number);
    while (text.ends_with('.') || text.ends_with(' ')) text.pop_back();
    return text;
}

Failure loadFailure(const std::string& file, std::int32_t code)
{
    const std::string what = code == TEXT_FILE_TOO_LARGE ? "4 GB or larger" : "cannot be read: " + systemText(code);
    return Failure(file, withStatus(what.c_str(), code), code == OUT_OF_MEMORY ? EXIT_SYSTEM : EXIT_INPUT);
}

TextEncoding load(cWCS& text, const std::string& file)
{
    TextEncoding encoding{};
    std::int32_t code = 0;
    if (file == "-") {
        const Bytes bytes = readWhole(file, STREAM_LIMIT);
        code = decodeText(text, bytes.data(), bytes.size(), &encoding) ? 0 : OUT_OF_MEMORY;
    } else {
        code = LoadTextFile(text, toWide(file).c_str(), &encoding);
    }
    if (code != 0) throw loadFailure(file, code);
    return encoding;
}

const char* encodingName(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::utf16le:
        return "UTF-16, little-endian";
    case TextEncoding::utf16be:
        return "UTF-16, big-endian";
    case TextEncoding::utf8:
        return "UTF-8, with a mark";
    case TextEncoding::multibyte:
        break;
    }
    return DefaultCodePage() == codePageUtf8 ? "UTF-8" : "the system's code page";
}

std::size_t size(const cWCS& text)
{
    return static_cast<std::size_t>(text.length());
}

// In pieces, so that a large text needs no second large block; a surrogate pair stays together.
void printText(const cWCS& text)
{
    constexpr std::size_t PIECE = 1 << 20;
    std::wstring_view rest(text.text(), size(text));
    while (!rest.empty()) {
        std::size_t piece = std::min(rest.size(), PIECE);
        if (piece < rest.size() && (rest[piece - 1] & 0xFC00) == 0xD800) --piece;
        print(toUtf8(rest.substr(0, piece)));
        rest.remove_prefix(piece);
    }
}

void addFile(Parser& parser, std::string& file)
{
    parser.option("FILE", file, "a text file, - for standard input").required().value("");
}

constexpr char FORMS[] =
    "UTF-16 is known by its mark or by a zero among the first two bytes; everything else is UTF-8, where bytes\n"
    "that are not are shown as U+FFFD. Files of 4 GB and more are refused.\n\n";

} // namespace

Action prepareTextShow(Parser& parser)
{
    const auto file = std::make_shared<std::string>();
    addFile(parser, *file);
    parser.footer(
        std::string("The text goes to standard output as UTF-8 without a mark, its encoding to standard error.\n") +
        FORMS + "Example: toolbelt text show notes.txt");
    return [file]() {
        cWCS text;
        const TextEncoding encoding = load(text, *file);
        std::fprintf(stderr, "encoding: %s\n", encodingName(encoding));
        if (usesJson())
            printResult({"encoding", encodingName(encoding), {{"text", toUtf8({text.text(), size(text)})}}});
        else
            printText(text);
        return EXIT_DONE;
    };
}

Action prepareTextFind(Parser& parser)
{
    struct Options
    {
        std::string file, key;
        bool skipKey = false;
    };
    const auto options = std::make_shared<Options>();
    addFile(parser, options->file);
    parser.option("KEY", options->key, "how the line begins; case counts").required().value("");
    parser.flag("--skip-key", options->skipKey, "print only what follows the key");
    parser.footer(std::string("Prints the first line that begins with KEY; exit code 1 when none does.\n") + FORMS +
                  "Example: toolbelt text find --skip-key settings.ini Language=");
    return [options]() {
        cWCS text, line;
        load(text, options->file);
        // With room for any line beforehand, a no below means that there is none.
        if (line.SetLength(text.length() + 1) == 0) throw loadFailure(options->file, OUT_OF_MEMORY);
        cStringBuffer buffer;
        buffer.Swap(text);
        if (!buffer.FindValue(line, toWide(options->key).c_str(), options->skipKey)) return EXIT_NO;
        const std::string found = toUtf8({line.text(), size(line)});
        printResult(found, {"line", found});
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
