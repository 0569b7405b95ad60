// digest: digests of files, and the check of a list of them.
#include "cli/command.h"
#include "cli/file_digest.h"
#include "cli/results.h"
#include "cli/text.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t LIST_LIMIT = 64 << 20;

std::string hexDigest(const HashRow& row, const std::string& file)
{
    const Bytes digest = digestOfFile(row, file);
    return toHex(digest.data(), digest.size());
}

struct ListLine
{
    std::string digest, file;
};

// "hex  file", or "hex *file" as some programs write it.
std::vector<ListLine> readList(const HashRow& row, const std::string& path)
{
    const Bytes bytes = readWhole(path, LIST_LIMIT);
    std::string_view text(characters(bytes), bytes.size());
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::vector<ListLine> lines;
    for (std::size_t number = 1; !text.empty(); ++number) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (line.empty()) continue;
        const std::size_t digits = 2 * row.size;
        const bool separated =
            line.size() > digits + 2 && line[digits] == ' ' && (line[digits + 1] == ' ' || line[digits + 1] == '*');
        const std::string digest = toLower(line.substr(0, digits));
        if (!separated || digest.find_first_not_of("0123456789abcdef") != std::string::npos)
            throw Failure(path,
                          "line " + std::to_string(number) + " is not a digest of " + std::to_string(row.size) +
                              " bytes in hex, two spaces and a file",
                          EXIT_INPUT);
        lines.push_back({digest, std::string(line.substr(digits + 2))});
    }
    if (lines.empty()) throw Failure(path, "holds no digests", EXIT_INPUT);
    return lines;
}

ExitCode checkList(const HashRow& row, const std::string& path)
{
    return forEach(readList(row, path), [&](const ListLine& line) {
        const bool same = hexDigest(row, line.file) == line.digest;
        const std::string verdict = same ? "ok" : "FAILED";
        printResult(line.file + ": " + verdict, {"file", line.file, {{"verdict", verdict}}});
        return same ? EXIT_DONE : EXIT_NO;
    });
}

ExitCode listDigests()
{
    for (const std::int32_t id : offeredHashes)
        for (const HashRow& row : hashRows)
            if (row.id == id)
                printResult(idText(id) + "  " + row.name + "  " + std::to_string(row.size),
                            {"id", idText(id), {{"name", row.name}, numberFact("size", row.size)}});
    return EXIT_DONE;
}

} // namespace

Action prepareDigest(Parser& parser)
{
    struct Options
    {
        std::string algorithm, list;
        std::vector<std::string> files;
        bool showAll = false;
    };
    const auto options = std::make_shared<Options>();
    parser.option("-a,--algorithm", options->algorithm, "registry id (2, 0x80) or name (sha1)").value("ALG");
    parser.option("--check", options->list, "check the files of a list of lines `hex  file`").value("LIST");
    parser.flag("--list", options->showAll, "the digests on offer: id, name, size in bytes");
    parser.option("FILE", options->files, "files").value("");
    parser.footer(
        "Prints `hex  file` for each file. With --check: `FILE: ok` or `FILE: FAILED` for each line of LIST;\n"
        "exit code 1 when a file differs, else 3 when one cannot be read or LIST is malformed.\n\n"
        "Example: toolbelt digest -a sha256 a.bin b.bin > sums && toolbelt digest -a sha256 --check sums");
    return [options]() {
        if (options->showAll) return listDigests();
        if (options->algorithm.empty()) throw UsageError("-a ALG is required");
        const HashRow& row = findHash(options->algorithm);
        if (options->list.empty() == options->files.empty())
            throw UsageError("either FILE... or --check LIST is required");
        if (!options->list.empty()) return checkList(row, options->list);
        return forEach(options->files, [&](const std::string& file) {
            const std::string digest = hexDigest(row, file);
            printResult(digest + "  " + file, {"file", file, {{"algorithm", row.name}, {"digest", digest}}});
            return EXIT_DONE;
        });
    };
}

} // namespace toolbelt::cli
