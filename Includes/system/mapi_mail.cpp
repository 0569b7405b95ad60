#include "Includes/system/mapi_mail.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <mapi.h>

#include <cstddef>

#include "Includes/stringFuncs/conversion.h"
#include "Includes/system/dll.h"
#include "Includes/system/message_box.h"

namespace toolbelt {
namespace {

static_assert(sizeof(MapiRecipient) == sizeof(MapiRecipDesc) && sizeof(MapiFile) == sizeof(MapiFileDesc));
static_assert(offsetof(MapiRecipient, address) == offsetof(MapiRecipDesc, lpszAddress));
static_assert(offsetof(MapiFile, path) == offsetof(MapiFileDesc, lpszPathName));
static_assert(sizeof(MapiMessage) == sizeof(::MapiMessage) &&
              offsetof(MapiMessage, text) == offsetof(::MapiMessage, lpszNoteText));
static_assert(offsetof(MapiMessage, recipients) == offsetof(::MapiMessage, lpRecips));
static_assert(offsetof(MapiMessage, files) == offsetof(::MapiMessage, lpFiles));
static_assert(MAIL_CANCELLED == MAPI_USER_ABORT && MAIL_FAILURE == MAPI_E_FAILURE);
static_assert(MAIL_LOGON_FAILURE == MAPI_E_LOGON_FAILURE && MAIL_NO_MEMORY == MAPI_E_INSUFFICIENT_MEMORY);
static_assert(MAIL_BAD_RECIPIENT == MAPI_E_INVALID_RECIPS && MAIL_NO_ATTACHMENT == MAPI_E_ATTACHMENT_NOT_FOUND);

constexpr std::int32_t ADDRESS_BYTES = 1024;
constexpr std::uint32_t WITHOUT_DIALOGS = 0;
constexpr std::uint32_t WITH_DIALOGS = MAPI_LOGON_UI | MAPI_DIALOG;
static_assert(WITH_DIALOGS == 9);

using SendMail = ULONG(WINAPI*)(std::uintptr_t session, std::uintptr_t window, const MapiMessage* message, ULONG flags,
                                ULONG reserved);

bool toAnsi(cMBStr& target, const wchar_t* text)
{
    target.AssignWide(text ? text : L"", -1, codePageAnsi);
    return target.text() != nullptr;
}

// Whether the text came through the conversion unchanged: MAIL_SENT, MAIL_NO_MEMORY or the given result.
std::uint32_t demandExact(const cMBStr& ansi, const wchar_t* text, std::uint32_t otherwise)
{
    if (ansi.length() == 0) return !text || *text == 0 ? MAIL_SENT : otherwise;
    cWCS back;
    back.AssignMultibyte(ansi.text(), -1, codePageAnsi);
    const wchar_t* same = back.text();
    if (!same) return MAIL_NO_MEMORY;
    while (*same && *same == *text) ++same, ++text;
    return *same == *text ? MAIL_SENT : otherwise;
}

std::uint32_t buildAndSend(const wchar_t* library, void* window, const wchar_t* recipient, const wchar_t* subject,
                           const wchar_t* body, const wchar_t* attachment)
{
    CDll dll(library, "MAPISendMail");
    const auto send = asFunction<SendMail>(dll.getProc());
    if (!send) return MAIL_FAILURE;
    MapiMail mail;
    std::uint32_t result = mail.build(recipient, subject, body, attachment);
    if (result != MAIL_SENT) return result;
    const auto parent = reinterpret_cast<std::uintptr_t>(window);
    result = send(0, parent, &mail.message(), WITHOUT_DIALOGS, 0);
    return result == MAIL_LOGON_FAILURE ? send(0, parent, &mail.message(), WITH_DIALOGS, 0) : result;
}

} // namespace

std::uint32_t MapiMail::build(const wchar_t* recipient, const wchar_t* subject, const wchar_t* body,
                              const wchar_t* attachment) noexcept
{
    if (!toAnsi(name_, recipient) || !toAnsi(subject_, subject) || !toAnsi(body_, body) ||
        !toAnsi(attachment_, attachment) || !address_.Assign("SMTP:") || !address_.Append(name_.text()))
        return MAIL_NO_MEMORY;
    if (address_.length() >= ADDRESS_BYTES) return MAIL_BAD_RECIPIENT;
    std::uint32_t result = demandExact(name_, recipient, MAIL_BAD_RECIPIENT);
    if (result == MAIL_SENT) result = demandExact(attachment_, attachment, MAIL_NO_ATTACHMENT);
    if (result != MAIL_SENT) return result;
    recipient_ = {};
    recipient_.recipientClass = MAPI_TO;
    recipient_.name = name_.text();
    recipient_.address = address_.text();
    file_ = {};
    file_.position = 0xFFFFFFFF;
    file_.path = attachment_.text();
    message_ = {};
    message_.subject = subject_.text();
    message_.text = body_.text();
    message_.recipientCount = 1;
    message_.recipients = &recipient_;
    message_.fileCount = attachment_.length() > 0;
    message_.files = message_.fileCount ? &file_ : nullptr;
    return MAIL_SENT;
}

const wchar_t* formatMailError(cWCS& text, std::uint32_t result) noexcept
{
    struct Name
    {
        std::uint32_t result;
        const wchar_t* name;
    };
    static constexpr Name names[] = {
        {MAIL_FAILURE, L"E_FALURE"},
        {MAIL_LOGON_FAILURE, L"LOGON_FAILURE"},
        {MAPI_E_DISK_FULL, L"DISK_FULL"},
        {MAIL_NO_ATTACHMENT, L"ATTACHMENT_NOT_FOUND"},
    };
    cWCS number;
    const wchar_t* shown = nullptr;
    for (const Name& known : names)
        if (known.result == result) shown = known.name;
    if (!shown) shown = number.Format(L"number: 0x%X", result);
    return text.Format(L"E-mail cannot be send (error %s)", shown);
}

std::uint32_t SendMapiMail(void* window, const wchar_t* recipient, const wchar_t* subject, const wchar_t* body,
                           const wchar_t* attachment) noexcept
{
    return sendMailThrough(L"mapi32.dll", window, recipient, subject, body, attachment);
}

std::uint32_t sendMailThrough(const wchar_t* library, void* window, const wchar_t* recipient, const wchar_t* subject,
                              const wchar_t* body, const wchar_t* attachment) noexcept
{
    const std::uint32_t result = buildAndSend(library, window, recipient, subject, body, attachment);
    if (result != MAIL_SENT && result != MAIL_CANCELLED) {
        cWCS text;
        showMessage(window, formatMailError(text, result), L"Send e-Mail", MESSAGE_SYSTEM_MODAL | MESSAGE_ICON_STOP);
    }
    return result;
}

} // namespace toolbelt
