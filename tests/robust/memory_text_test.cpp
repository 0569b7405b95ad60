// Memory that runs out, of strings, arrays and JSON. Without it an operation says so once on the debug channel and
// leaves its object as it was, unless its comment says otherwise; every block that held text comes back wiped.
#include "Includes/stringFuncs/long_name.h"
#include "Includes/stringFuncs/mbstr.h"
#include "Includes/stringFuncs/string_array.h"
#include "Includes/stringFuncs/string_buffer.h"
#include "Includes/stringFuncs/text_decode.h"
#include "net/split_url.h"
#include "tests/json/trees.h"
#include "tests/robust/operations.h"
#include "tests/stringFuncs/text_support.h"
#include "json/json_write.h"
#if defined(TOOLBELT_JSON_PARSER)
#include "json/json_parse.h"
#endif

namespace toolbelt::test {
namespace {

constexpr std::string_view SECRET = "secret-secret"; // in every block of text, as bytes and as units

Secrets secrets()
{
    const std::u16string wideSecret(SECRET.begin(), SECRET.end());
    const auto* units = reinterpret_cast<const std::uint8_t*>(wideSecret.data());
    return {{SECRET.begin(), SECRET.end()}, {units, units + 2 * wideSecret.size()}};
}

// The operations, on the debug channel's record: a line a failure.
void runSaying(std::vector<Operation> operations)
{
    for (Operation& operation : operations)
        operation.run = [run = operation.run](TestHeap& heap) {
            const Recorder recorder;
            const Status status = run(heap);
            EXPECT_EQ(Recorder::lines, outOfMemory(status == STATUS_OK ? 0 : 1));
            return status;
        };
    runAll(operations, secrets());
}

bool holdSecret(cWCS& text)
{
    return text.Append(L"secret-secret") != 0;
}

// On a text that stays as it was, or is `otherwise`, when the call fails. Behind its end all is zero.
Run onText(std::function<bool(cWCStr&)> call, const std::u16string& otherwise = u"secret-secret")
{
    return [call, otherwise](TestHeap& heap) {
        cWCStr text(L"secret-secret");
        if (text.text() == nullptr) return -1;
        return again(heap, [&] {
            const bool done = call(text);
            EXPECT_TRUE(done || units(text) == otherwise);
            for (std::int32_t i = text.length(); i < text.capacity(); ++i) EXPECT_EQ(text.text()[i], 0) << i;
            return failed(done);
        });
    };
}

TEST(MemoryText, Strings)
{
    const std::string many(9000, 'a');
    const std::u16string null = u"<NULL>", told = u"cWCStr::SetLength( 4096 ) returns <NULL>";
    const auto multibyte = [](cMBStr& text) {
        const bool done = text.SetLength(9000) != 0;
        EXPECT_EQ(std::string(text.text(), 13), SECRET);
        return done;
    };
    const auto fromWide = [](cMBStr& text) { return text.AssignWide(L"secret-secret"), text.text() != nullptr; };
    const auto decode = [](cWCS& text) {
        const std::uint8_t bytes[] = {0xFF, 0xFE, 'a', 0};
        TextEncoding found{-1};
        const bool done = decodeText(text, bytes, 4, &found);
        EXPECT_EQ(found, done ? TextEncoding::utf16le : TextEncoding{-1});
        EXPECT_EQ(units(text), done ? u"a" : u"secret-secret");
        return done;
    };
    const auto decodeBytes = [](TestHeap&) {
        cWCS text;
        return failed(decodeText(text, reinterpret_cast<const std::uint8_t*>("secret-secret"), 13));
    };
    const auto construct = [](TestHeap&) {
        const cWCSF first(L"secret-secret");
        return failed(first.text() && cWCSFromMbs("secret-secret").text());
    };
    const auto findValue = [](cStringBuffer& buffer) {
        cWCS result;
        const bool found = buffer.FindValue(result, L"key=", true);
        EXPECT_EQ(units(result), found ? u"secret-secret" : u"");
        return found;
    };
    const std::u16string path = u"C:\\secret-secret" + std::u16string(3000, u'x');
    const auto longName = [&](cLongName& name) { return name.Convert(wide(path)) != nullptr; };
    // The one that has let go of the old text.
    const auto assignMultibyte = [&](cWCS& text) { return text.AssignMultibyte(many.c_str()), text.text() != nullptr; };
    runSaying({
        {"cWCS Append", onText([](cWCS& text) { return text.Append(nullptr, 3000) != 0; })},
        {"cWCS SetLength", onText([](cWCS& text) { return text.SetLength(3000) != 0; })},
        {"cWCS Assign", onText([](cWCS& text) { return text.Assign(nullptr, 9000) != 0; })},
        {"cWCS Format", onText([&](cWCS& text) { return units(text.Format(L"%s", L"new")) != null; })},
        {"cWCS AppendFormat", onText([&](cWCS& text) { return units(text.AppendFormat(L"%3000d", 1)) != null; })},
        {"cWCStr FormatV", onText([&](cWCStr& text) { return units(formatV(text, L"x")) != told; })},
        {"cWCS AssignMultibyte", onText(assignMultibyte, u"")},
        {"cWCSF, cWCSFromMbs", construct},
        {"cMBStr", on<cMBStr>(multibyte, [](cMBStr& text) { return text.Append("secret-secret") != 0; })},
        {"cMBStr AssignWide", on<cMBStr>(fromWide)},
        {"decodeText", on<cWCS>(decode, holdSecret)},
        {"decodeText, multibyte", decodeBytes},
        {"cStringBuffer",
         on<cStringBuffer>(findValue, [](cStringBuffer& b) { return b.Assign(L"x\nkey=secret-secret") != 0; })},
        {"cLongName", on<cLongName>(longName)},
    });
    const Recorder recorder;
    cWCStr text(L"old");
    EXPECT_EQ(text.Append(nullptr, 0x7FFFFFFF), 0); // more than 31 bits hold
    EXPECT_EQ(units(text), u"old");
    EXPECT_EQ(Recorder::lines, outOfMemory(1));
}

// An array that could not copy is emptied, one that could not grow stays.
TEST(MemoryText, StringArrays)
{
    using Array = cStringArrayT;
    const auto onArray = [](std::string name, bool (*add)(Array&), bool copies = true) -> Operation {
        const auto run = [=](TestHeap& heap) {
            Array array;
            if (!array.Add(L"first")) return -1;
            const std::uint32_t before = heap.allocations();
            const bool done = add(array);
            const bool grows = heap.allocations() - before == 2; // the text is the first of both allocations
            EXPECT_EQ(array.count(), done ? 2 : grows || !copies);
            EXPECT_EQ(units(array.item(0)), array.count() != 0 ? u"first" : u"");
            return failed(done);
        };
        return {std::move(name), run, {{-1}}, 3}; // plain: the arrays of pointers, and a text without one
    };
    const auto owned = [](Array& array) {
        wchar_t* const text = Array::AllocateText(5);
        if (!text) return false;
        if (array.AddOwned(text) == 2) return true;
        return Array::ReleaseText(text), false; // still the caller's
    };
    runSaying({
        onArray("cStringArrayT Add", [](Array& array) { return array.Add(L"secret-secret") == 2; }),
        onArray("cStringArrayT AddCopy", [](Array& array) { return array.AddCopy(L"secret-secrets", 13) == 2; }),
        onArray("cStringArrayT AddUnique", [](Array& array) { return array.AddUnique(L"secret-secret") == 2; }),
        onArray("cStringArrayT AddOwned", owned, false),
    });
}

TEST(MemoryText, UrlsAndJson)
{
    const auto keeps = [](std::function<bool(cWCS&)> append) {
        const auto call = [append](cWCS& out) {
            const bool done = append(out);
            EXPECT_TRUE(done || units(out) == u"secret-secret");
            return done;
        };
        return on<cWCS>(call, holdSecret);
    };
    const auto split = [](UrlParts& parts) {
        const bool done = splitUrl(parts, L"https://secret-secret/token");
        EXPECT_EQ(units(parts.host), done ? u"secret-secret" : u"");
        return done;
    };
    const auto build = [](TestHeap&) {
        const JsonTree tree(jsonNew(JSON_OBJECT));
        bool done = tree != nullptr;
        for (const char* name : {"a", "b", "secret-secret", "d", "e"})
            done = done && jsonAddMember(*tree, name, -1, jsonNewString(name));
        JsonTree inner(jsonNew(JSON_ARRAY));
        done =
            done && inner && jsonAddElement(*inner, jsonNewDouble(1)) && jsonAddMember(*tree, "f", 1, inner.release());
        cWCS out;
        return failed(done && out.Append(L"kept") && jsonWrite(0, out, tree.get()) && units(out) != u"kept");
    };
    const std::u16string big(5000, u'"');
    const auto escape = [&](TestHeap&) {
        cWCS scratch;
        return failed(jsonEscape(scratch, wide(big)) != nullptr);
    };
    std::vector<Operation> operations = {
        {"splitUrl", on<UrlParts>(split)},
        {"jsonAddMember, jsonAddElement, jsonWrite", build},
        {"jsonAppendText", keeps([&](cWCS& out) { return jsonAppendText(wide(big), out, true, true); })},
        {"jsonEscape", escape},
        {"jsonNewLine", keeps([](cWCS& out) { return jsonNewLine(3000, out); })},
    };
#if defined(TOOLBELT_JSON_PARSER)
    // Roots of each kind: json-parser frees from the root when its second pass gets no memory. The string is larger
    // than what is left of a chunk then.
    const std::string longText = "secret-secret" + std::string(70000, 'x');
    for (const std::string& document :
         {"[\"" + longText + "\",{\"a\":[1,2,3],\"b\":\"c\"},[]]", "{\"" + longText + "\":[true,\"x\"],\"d\":{}}",
          '"' + longText + '"', std::string(60, '[') + std::string(60, ']'), "[0" + std::string(40000, ' ') + ",1]"}) {
        const auto parse = [document](TestHeap&) {
            char error[JSON_ERROR_SIZE] = "";
            const JsonTree tree(jsonParse(document.data(), static_cast<std::uint32_t>(document.size()), &error));
            EXPECT_STREQ(error, tree ? "" : "Memory allocation failure");
            return failed(tree != nullptr);
        };
        operations.push_back({"jsonParse " + document.substr(0, 4), parse});
    }
#endif
    const Recorder quiet; // the strings among them say so on the debug channel
    runAll(operations, secrets());
}

} // namespace
} // namespace toolbelt::test
