// Edits a JSON document, hides what is nobody's business, posts it and prints a member of the answer:
//   json_post URL FILE
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <toolbelt/toolbelt.h>

using namespace toolbelt;

int main(int argc, char** argv)
{
    if (argc != 3) return std::puts("usage: json_post URL FILE"), 2;
    std::ifstream file(argv[2], std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});

    char error[JSON_ERROR_SIZE];
    const JsonTree document(jsonParse(text.data(), static_cast<std::uint32_t>(text.size()), &error));
    if (!document) return std::printf("%s: %s\n", argv[2], error), 3;
    if (document->type != JSON_OBJECT) return std::puts("the document is no object"), 3;

    // A new member; and two that stay in the tree, but not in the text: one is left out, one loses its value.
    if (!jsonAddMember(*document, "sender", -1, jsonNewString("json_post"))) return 4;
    if (JsonValue* comment = jsonFindMember(*document, "comment")) comment->flags |= JSON_HIDDEN;
    if (JsonValue* password = jsonFindMember(*document, "password")) password->flags |= JSON_BLANK;

    cWCS wide;
    if (!jsonWrite(0, wide, document.get())) return 4;
    cMBStr body; // UTF-8
    body.AssignWide(wide.text(), wide.length());
    if (!body.text()) return 4;
    std::printf("%s\n", body.text());

    cByteBuffer answer;
    const cWCSFromMbs url(argv[1]);
    if (const Status status = postJsonToUrl(answer, body.text(), url.text()))
        return std::printf("not posted (status %d)\n", static_cast<int>(status)), 4;

    const JsonTree reply(jsonParse(reinterpret_cast<const char*>(answer.data()), answer.length(), &error));
    if (!reply) return std::printf("the answer is no JSON: %s\n", error), 1;
    const JsonValue* method = jsonFindMember(*reply, "method");
    if (!method || method->type != JSON_STRING) return std::puts("the answer has no method"), 1;
    std::printf("method: %.*s\n", static_cast<int>(method->string.length), method->string.characters);
    return 0;
}
