#include "Includes/system/mail_link.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <shellapi.h>

#include "Includes/system/mapi_mail.h"
#include "Includes/system/missing_function.h"
#include "Includes/system/percent_encode.h"
#include "Includes/system/shell32_dll.h"

namespace toolbelt {
namespace {

constexpr wchar_t ATTACH[] = L"&attach=";

std::int32_t lengthOf(const wchar_t* text)
{
    std::int32_t length = 0;
    while (text[length]) ++length;
    return length;
}

// Where the word begins, or null.
const wchar_t* find(const wchar_t* text, const wchar_t* word)
{
    for (; *text; ++text) {
        std::int32_t same = 0;
        while (word[same] && text[same] == word[same]) ++same;
        if (!word[same]) return text;
    }
    return nullptr;
}

// What lies between the key and the first of the ends that comes behind it, or the end of the text.
bool takePart(cWCS& part, const wchar_t* link, const wchar_t* key, const wchar_t* end,
              const wchar_t* otherEnd = nullptr)
{
    const wchar_t* const at = find(link, key);
    if (!at) return part.Assign(L"") != 0;
    const wchar_t* const start = at + lengthOf(key);
    std::int32_t length = lengthOf(start);
    for (const wchar_t* const word : {end, otherEnd})
        if (const wchar_t* const stop = word ? find(start, word) : nullptr)
            if (stop - start < length) length = static_cast<std::int32_t>(stop - start);
    return part.Assign(start, length) != 0;
}

std::int32_t openThroughShell(void* window, const wchar_t* link)
{
    cShell32Dll& shell = cShell32Dll::getStatic();
    void* execute = nullptr;
    shell.GetProcAddress("ShellExecuteW", 0, &execute);
    if (!requireFunction(shell, execute, L"OpenMailLink")) return SE_ERR_FNF;
    const HINSTANCE result = asFunction<decltype(&::ShellExecuteW)>(execute)(static_cast<HWND>(window), L"open", link,
                                                                             nullptr, nullptr, SW_SHOW);
    return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(result));
}

static_assert(SW_SHOW == 5);

} // namespace

bool hasAttachment(const wchar_t* link) noexcept
{
    return find(link, ATTACH) != nullptr;
}

bool splitMailLink(MailLink& parts, const wchar_t* link) noexcept
{
    if (!takePart(parts.recipient, link, L"mailto:", L"?", ATTACH) ||
        !takePart(parts.subject, link, L"?subject=", L"&") || !takePart(parts.body, link, L"&body=", L"&") ||
        !takePart(parts.attachment, link, ATTACH, nullptr))
        return false;
    percentDecode(parts.subject);
    percentDecode(parts.body);
    return true;
}

std::int32_t OpenMailLink(void* window, const wchar_t* link) noexcept
{
    if (!link) return SE_ERR_FNF;
    if (!hasAttachment(link)) return openThroughShell(window, link);
    MailLink parts;
    if (!splitMailLink(parts, link)) return SE_ERR_OOM;
    const std::uint32_t result =
        SendMapiMail(window, parts.recipient.text(), parts.subject.text(), parts.body.text(), parts.attachment.text());
    return result == MAIL_SENT ? SHELL_DONE : static_cast<std::int32_t>(result);
}

} // namespace toolbelt
