// digest: digests of files, and the check of a list of them.
#include <memory>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/text.h"
#include "crypto/hash/hash.h"

namespace toolbelt::cli {
namespace {

// Keccak-512 of the engine takes every update for a message of its own unless its length is a multiple of 72. Whole
// pieces of such a length, then the rest, give the digest of the file; the other digests do not mind.
constexpr std::uint32_t PIECE = 72 * 8192;
constexpr std::uint32_t LIST_LIMIT = 64 << 20;

using Hash = std::unique_ptr<cHashAlg, decltype(&destroyHash)>;

const HashRow& findHash(const std::string& idOrName)
{
    const std::optional<std::uint32_t> id = parseNumber(idOrName);
    for (const HashRow& row : hashRows)
        if (id ? static_cast<std::uint32_t>(row.id) == *id : plainName(row.name) == plainName(idOrName)) return row;
    throw UsageError("unknown digest: " + idOrName + " (see toolbelt digest --list)");
}

std::string digestOfFile(const HashRow& row, const std::string& file)
{
    cHashAlg* created = nullptr;
    check(file, createHash(&created, row.id));
    if (!created) throw std::bad_alloc();
    const Hash hash(created, destroyHash);
    InputFile input(file);
    Bytes piece(PIECE);
    Progress progress(file, input.size());
    std::uint64_t done = 0;
    for (std::uint32_t size = PIECE; size == PIECE;) {
        size = input.read(piece.data(), PIECE);
        if (size == 0 && done != 0) break; // an empty update belongs to an empty file alone
        check(file, hash->update(piece.data(), size));
        progress.show(done += size);
    }
    Bytes digest(hashSize(hash.get()));
    check(file, hash->final(digest.data()));
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
        const bool same = digestOfFile(row, line.file) == line.digest;
        printLine(line.file + (same ? ": ok" : ": FAILED"));
        return same ? EXIT_DONE : EXIT_NO;
    });
}

ExitCode listDigests()
{
    for (const std::int32_t id : offeredHashes)
        for (const HashRow& row : hashRows)
            if (row.id == id) printLine(idText(id) + "  " + row.name + "  " + std::to_string(row.size));
    return EXIT_DONE;
}

} // namespace

Action prepareDigest(CLI::App& app)
{
    struct Options
    {
        std::string algorithm, list;
        std::vector<std::string> files;
        bool showAll = false;
    };
    const auto options = std::make_shared<Options>();
    app.add_option("-a,--algorithm", options->algorithm, "registry id (2, 0x80) or name (sha1)")->type_name("ALG");
    app.add_option("--check", options->list, "check the files of a list of lines `hex  file`")->type_name("LIST");
    app.add_flag("--list", options->showAll, "the digests on offer: id, name, size in bytes");
    app.add_option("FILE", options->files, "files")->type_name("");
    app.footer("Prints `hex  file` for each file. With --check: `FILE: ok` or `FILE: FAILED` for each line of LIST;\n"
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
            printLine(digestOfFile(row, file) + "  " + file);
            return EXIT_DONE;
        });
    };
}

} // namespace toolbelt::cli
