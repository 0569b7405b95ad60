// json format: a document through the library's parser and writer, with members hidden or blanked.
#include <charconv>
#include <memory>

#include "cli/command.h"
#include "cli/files.h"
#include "cli/results.h"
#include "cli/text.h"
#include "json/json_parse.h"

namespace toolbelt::cli {
namespace {

constexpr std::uint32_t JSON_FILE_LIMIT = 512u << 20;

// The reference tokens of a JSON Pointer (RFC 6901).
std::vector<std::string> splitPointer(const std::string& pointer)
{
    std::vector<std::string> tokens;
    if (!pointer.empty() && pointer[0] != '/') throw UsageError("not a JSON Pointer, which begins with /: " + pointer);
    for (std::size_t i = 0; i < pointer.size(); ++i) {
        if (pointer[i] == '/') {
            tokens.emplace_back();
        } else if (pointer[i] != '~') {
            tokens.back() += pointer[i];
        } else {
            const char code = ++i < pointer.size() ? pointer[i] : '\0';
            if (code != '0' && code != '1') throw UsageError("~ in a JSON Pointer is written ~0: " + pointer);
            tokens.back() += code == '0' ? '~' : '/';
        }
    }
    return tokens;
}

// Digits without a leading zero; "-", the element behind the last one, names nothing.
JsonValue* findElement(const JsonValue& array, const std::string& token)
{
    std::uint32_t index = 0;
    const char* end = token.data() + token.size();
    const auto [stop, error] = std::from_chars(token.data(), end, index);
    if (error != std::errc() || stop != end || (token.size() > 1 && token[0] == '0')) return nullptr;
    return index < array.array.count ? array.array.elements[index] : nullptr;
}

void setFlag(JsonValue& root, const std::string& file, const std::string& pointer, std::uint32_t flag)
{
    JsonValue* value = &root;
    for (const std::string& token : splitPointer(pointer)) {
        value = value->type == JSON_ARRAY
                    ? findElement(*value, token)
                    : jsonFindMember(*value, token.data(), static_cast<std::int32_t>(token.size()));
        if (!value) throw Failure(file, "nothing in it is named " + pointer, EXIT_INPUT);
    }
    value->flags |= flag;
}

JsonTree parseFile(const std::string& file)
{
    const Bytes bytes = readWhole(file, JSON_FILE_LIMIT);
    char error[JSON_ERROR_SIZE];
    JsonTree tree(jsonParse(characters(bytes), size32(bytes), &error));
    const std::string message = error;
    if (!tree)
        throw Failure(file,
                      readable(reinterpret_cast<const std::uint8_t*>(message.data()), message.size(), Charset::utf8),
                      message == "Memory allocation failure" ? EXIT_SYSTEM : EXIT_INPUT);
    return tree;
}

} // namespace

Action prepareJsonFormat(Parser& parser)
{
    struct Options
    {
        std::string file;
        std::vector<std::string> hidden, blank;
    };
    const auto options = std::make_shared<Options>();
    parser.option("--hide", options->hidden, "leave out what the JSON Pointer names").value("POINTER").repeated();
    parser.option("--blank", options->blank, "write it as an empty value of its type").value("POINTER").repeated();
    parser.option("FILE", options->file, "a JSON document in UTF-8").required().value("");
    parser.footer(
        "Writes the document as the library does: two blanks a level, CR LF, numbers in their fewest digits.\n"
        "Control characters in strings come out as they are; --json before the command changes nothing here.\n"
        "A blank integer leaves nothing behind its colon.\n"
        "A pointer that names nothing is exit code 3; of members with one name, the first is meant.\n\n"
        "Example: toolbelt json format --hide /user/password --blank /user/keys/0 settings.json");
    return [options]() {
        for (const auto* pointers : {&options->hidden, &options->blank})
            for (const std::string& pointer : *pointers) splitPointer(pointer); // wrong usage before anything is read
        const JsonTree tree = parseFile(options->file);
        for (const std::string& pointer : options->hidden) setFlag(*tree, options->file, pointer, JSON_HIDDEN);
        for (const std::string& pointer : options->blank) setFlag(*tree, options->file, pointer, JSON_BLANK);
        printJson(*tree);
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
