// cipher: files through a block cipher in a chaining mode, piece by piece, in bounded memory.
#include <algorithm>
#include <memory>
#include <optional>

#include "cli/command.h"
#include "cli/console.h"
#include "cli/files.h"
#include "cli/results.h"
#include "cli/text.h"
#include "crypto/cipher/cipher.h"

namespace toolbelt::cli {
namespace {

// A multiple of every block size: no mode carries state from one call to the next but the last ciphertext block.
constexpr std::uint32_t PIECE = 1 << 20;

struct Options
{
    std::string algorithm, mode = "cbc", key, iv, in, out;
    bool pad = false;
    bool decrypt = false;
};

using Cipher = std::unique_ptr<cSymAlg>;

std::size_t findRow(const std::string& idOrName)
{
    const std::optional<std::uint32_t> id = parseNumber(idOrName);
    for (std::size_t i = 0; i < CIPHER_ROW_COUNT; ++i)
        if (id ? static_cast<std::uint32_t>(cipherRows[i].id) == *id : plainName(cipherNames[i]) == plainName(idOrName))
            return i;
    throw UsageError("unknown cipher: " + idOrName + " (see toolbelt cipher --list)");
}

// Key and IV on the command line: two digits a byte.
Bytes hexOption(const std::string& text, const char* option)
{
    const std::string_view digits =
        std::string_view(text).substr(text.starts_with("0x") || text.starts_with("0X") ? 2 : 0);
    const std::optional<std::vector<std::uint8_t>> bytes = parseHex(text);
    if (!digits.empty() && (!bytes || digits.size() % 2 != 0))
        throw UsageError(std::string(option) + " takes hexadecimal digits, two a byte");
    return digits.empty() ? Bytes() : Bytes(bytes->begin(), bytes->end());
}

// One file's way through the cipher. Pieces are transformed in place.
class Transform
{
public:
    Transform(const Options& options, const CipherRow& row)
        : decrypt_(options.decrypt), ecb_(options.mode == "ecb"), blockSize_(row.blockSize())
    {
        const Bytes key = hexOption(options.key, "--key");
        if (key.empty() && row.id != 0) throw UsageError("--key is empty"); // a variable that was not set, as a rule
        cipher_.reset(row.create(key.data(), size32(key)));
        if (!cipher_) throw UsageError("the cipher takes no key of " + std::to_string(key.size()) + " bytes");
        const bool cfb = options.mode == "cfb";
        cipher_->setMode(cfb ? SYM_MODE_CFB : options.mode == "cbc-wordswap" ? SYM_MODE_CBC_WORDSWAP : SYM_MODE_CBC);
        if (options.pad && (cfb || blockSize_ == 0))
            throw UsageError("--pad is for whole blocks: ecb, cbc, cbc-wordswap");
        chain_ = hexOption(options.iv, "--iv");
        if (ecb_ && !chain_.empty()) throw UsageError("ecb takes no --iv");
        if (chain_.empty()) chain_.assign(blockSize_, 0);
        if (chain_.size() != blockSize_)
            throw UsageError("--iv must have " + std::to_string(blockSize_) + " bytes for this cipher");
    }

    std::uint32_t blockSize() const { return blockSize_; }

    // All pieces but the last are whole numbers of blocks.
    Status run(std::uint8_t* piece, std::uint32_t size)
    {
        const auto length = static_cast<std::int32_t>(size);
        if (ecb_)
            return decrypt_ ? cipher_->decryptBlocks(piece, piece, length)
                            : cipher_->encryptBlocks(piece, piece, length);
        const Bytes iv = chain_;
        if (decrypt_) keepLastBlock(piece, size); // it is ciphertext only until it is decrypted in place
        const auto mode = decrypt_ ? cipher_->modeDecrypt : cipher_->modeEncrypt;
        const Status status = mode(cipher_.get(), iv.empty() ? nullptr : iv.data(), piece, piece, length);
        if (!decrypt_) keepLastBlock(piece, size);
        return status;
    }

private:
    void keepLastBlock(const std::uint8_t* piece, std::uint32_t size)
    {
        if (size >= blockSize_) std::copy(piece + size - blockSize_, piece + size, chain_.begin());
    }

    bool decrypt_, ecb_;
    std::uint32_t blockSize_;
    Cipher cipher_;
    Bytes chain_; // the IV, then the last ciphertext block
};

// PKCS #7 (RFC 5652, section 6.3): 1 to blockSize octets, each their own count.
std::uint32_t pad(std::uint8_t* piece, std::uint32_t size, std::uint32_t blockSize)
{
    const std::uint32_t count = blockSize - size % blockSize;
    std::fill_n(piece + size, count, static_cast<std::uint8_t>(count));
    return size + count;
}

std::uint32_t unpad(const Options& options, const Bytes& piece, std::uint32_t size, std::uint32_t blockSize)
{
    const std::uint32_t count = size > 0 ? piece[size - 1] : 0;
    const bool right =
        count >= 1 && count <= blockSize && count <= size &&
        std::all_of(piece.begin() + (size - count), piece.begin() + size, [&](std::uint8_t b) { return b == count; });
    if (!right) throw Failure(options.in, "its padding is wrong: another key, IV or mode, or not padded", EXIT_INPUT);
    return size - count;
}

ExitCode transformFile(const Options& options)
{
    if (options.algorithm.empty()) throw UsageError("-c ALG is required");
    Transform transform(options, cipherRows[findRow(options.algorithm)]);
    const std::uint32_t blockSize = transform.blockSize();

    std::optional<InputFile> input(std::in_place, options.in);
    OutputFile output(options.out);
    Progress progress(options.in, input->size());
    // One piece is read ahead, so that the last one is known when it comes: padding belongs to it.
    Bytes piece(PIECE + blockSize), next(PIECE + blockSize);
    std::uint32_t size = input->read(piece.data(), PIECE);
    for (std::uint64_t done = 0;;) {
        const std::uint32_t following = size == PIECE ? input->read(next.data(), PIECE) : 0;
        const bool last = following == 0;
        if (last && options.pad && !options.decrypt) size = pad(piece.data(), size, blockSize);
        check(options.in, transform.run(piece.data(), size));
        if (last && options.pad && options.decrypt) size = unpad(options, piece, size, blockSize);
        output.write(piece.data(), size);
        progress.show(done += size);
        if (last) break;
        std::swap(piece, next);
        size = following;
    }
    input.reset(); // the two may be the same file
    checkInterrupt(options.out);
    output.commit();
    return EXIT_DONE;
}

ExitCode listCiphers()
{
    if (!usesJson()) printLine("id    name              key  largest  block  offered");
    for (std::size_t i = 0; i < CIPHER_ROW_COUNT; ++i) {
        const CipherRow& row = cipherRows[i];
        std::uint32_t largest = 0;
        const std::uint32_t key = row.keySize(&largest);
        const bool offered = std::count(std::begin(offeredCiphers), std::end(offeredCiphers), row.id) != 0;
        char line[96];
        std::snprintf(line, sizeof line, "%-5s %-16s %4u %8u %6u  %s", idText(row.id).c_str(), cipherNames[i], key,
                      largest, row.blockSize(), offered ? "yes" : "no");
        printResult(line, {"id",
                           idText(row.id),
                           {{"name", cipherNames[i]},
                            numberFact("key", key),
                            numberFact("largest", largest),
                            numberFact("block", row.blockSize()),
                            {"offered", offered ? "yes" : "no"}}});
    }
    return EXIT_DONE;
}

Action prepareTransform(Parser& parser, bool decrypt)
{
    const auto options = std::make_shared<Options>();
    options->decrypt = decrypt;
    parser.option("-c,--cipher", options->algorithm, "registry id (9, 0x88) or name (toolbelt cipher --list)")
        .value("ALG");
    parser.option("-m,--mode", options->mode, "ecb, cbc (the default), cbc-wordswap or cfb")
        .value("MODE")
        .oneOf({"ecb", "cbc", "cbc-wordswap", "cfb"});
    parser.option("--key", options->key, "the key, two digits a byte").required().value("HEX");
    parser.option("--iv", options->iv, "one block; zeros when it is not given").value("HEX");
    parser.flag("--pad", options->pad, "fill up to whole blocks as PKCS #7 tells, or take that off");
    parser.option("IN", options->in, "the file to read, - for standard input").required().value("");
    parser.option("OUT", options->out, "the file to write, - for standard output").required().value("");
    const std::string verb = decrypt ? "decrypt" : "encrypt";
    parser.footer(
        "Without --pad the bytes are taken as they are: ecb, cbc and cbc-wordswap want whole blocks, cfb takes any\n"
        "length. Nothing in the output proves that the key was right. Others can see a key on the command line.\n\n"
        "Example: toolbelt cipher " +
        verb + " -c aes-256 -m cfb --key 00112233... --iv 0102... in.bin out.bin");
    return [options]() { return transformFile(*options); };
}

} // namespace

Action prepareCipherEncrypt(Parser& parser)
{
    return prepareTransform(parser, false);
}

Action prepareCipherDecrypt(Parser& parser)
{
    return prepareTransform(parser, true);
}

Action prepareCipher(Parser& parser)
{
    const auto list = std::make_shared<bool>(false);
    parser.flag("--list", *list, "all ciphers: id, name, default and largest key size in bytes, block size, offered");
    parser.footer("`toolbelt cipher encrypt --help` and `toolbelt cipher decrypt --help` tell the rest.\n\n"
                  "Example: toolbelt cipher --list");
    return [list]() {
        if (!*list) throw UsageError("cipher needs encrypt, decrypt or --list");
        return listCiphers();
    };
}

} // namespace toolbelt::cli
