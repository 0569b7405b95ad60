// armour and dearmour: files as base64 or armoured text, and back.
#include "crypto/encoding/armour.h"
#include "cli/command.h"
#include "cli/files.h"

namespace toolbelt::cli {
namespace {

// The library codes in memory; in a 32-bit process a file and its text have room up to here.
constexpr std::uint32_t DATA_LIMIT = 256 << 20;
constexpr std::uint32_t TEXT_LIMIT = 400 << 20;

struct Options
{
    std::string in, out, beginLine, endLine, version;
    bool noChecksum = false, noBreaks = false;
    // Null stands for no line.
    const char* begin() const { return beginLine.empty() ? nullptr : beginLine.c_str(); }
    const char* end() const { return endLine.empty() ? nullptr : endLine.c_str(); }
};

std::shared_ptr<Options> addCommonOptions(Parser& parser)
{
    const auto options = std::make_shared<Options>();
    parser.option("IN", options->in, "the file to read, - for standard input").required().value("");
    parser.option("OUT", options->out, "the file to write, - for standard output").required().value("");
    parser.option("--begin", options->beginLine, "the line in front of the text").value("TEXT");
    parser.option("--end", options->endLine, "the line behind the text; goes with --begin").value("TEXT");
    return options;
}

void checkLines(const Options& options)
{
    if (!options.begin() != !options.end()) throw UsageError("--begin TEXT and --end TEXT come together");
}

Bytes encode(const Options& options, const Bytes& data)
{
    const std::uint32_t flags =
        (options.noChecksum ? BASE64_NO_CHECKSUM : 0u) | (options.noBreaks ? BASE64_NO_BREAKS : 0u);
    Bytes text;
    std::uint32_t size = 0;
    for (Status status = STATUS_BUFFER_TOO_SMALL; status == STATUS_BUFFER_TOO_SMALL; text.resize(size)) {
        status = base64Encode(reinterpret_cast<char*>(text.data()), &size, data.data(), size32(data), options.begin(),
                              options.end(), options.version.c_str(), nullptr, flags);
        if (status != STATUS_BUFFER_TOO_SMALL) check(options.in, status);
    }
    return text;
}

Bytes decode(const Options& options, const Bytes& text)
{
    const char* body = characters(text);
    std::uint32_t length = size32(text);
    if (options.begin())
        check(options.in, findArmourBody(&body, &length, body, length, options.begin(), options.end()));
    Bytes data;
    std::uint32_t size = 0;
    for (Status status = STATUS_BUFFER_TOO_SMALL; status == STATUS_BUFFER_TOO_SMALL; data.resize(size)) {
        status = base64Decode(data.data(), &size, body, length);
        if (status != STATUS_BUFFER_TOO_SMALL) check(options.in, status);
    }
    return data;
}

} // namespace

Action prepareArmour(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser);
    parser.option("--version", options->version, "a `Version:` line in front of the text").value("TEXT");
    parser.flag("--no-checksum", options->noChecksum, "no CRC-24 line behind the text");
    parser.flag("--no-breaks", options->noBreaks, "one long line; only without checksum, --begin and --version");
    parser.footer(
        "Files of up to 256 MB. Lines end in CR LF.\n\n"
        "Example: toolbelt armour --begin \"-----BEGIN DATA-----\" --end \"-----END DATA-----\" in.bin out.txt");
    return [options]() {
        checkLines(*options);
        writeWhole(options->out, encode(*options, readWhole(options->in, DATA_LIMIT)));
        return EXIT_DONE;
    };
}

Action prepareDearmour(Parser& parser)
{
    const std::shared_ptr<Options> options = addCommonOptions(parser);
    parser.footer(
        "With --begin and --end, what stands between these lines is decoded, header lines skipped; without them the\n"
        "whole text. A checksum line is checked. Characters that are no base64 digits are skipped. Texts of up to 400 "
        "MB.\n\n"
        "Example: toolbelt dearmour --begin \"-----BEGIN DATA-----\" --end \"-----END DATA-----\" out.txt in.bin");
    return [options]() {
        checkLines(*options);
        writeWhole(options->out, decode(*options, readWhole(options->in, TEXT_LIMIT)));
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
