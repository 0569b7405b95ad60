// Mail through the system's simple mail interface ("mapi32.dll"), which hands it to the user's mail program.
#pragma once

#include <cstdint>

#include "Includes/stringFuncs/mbstr.h"
#include "Includes/stringFuncs/wcs.h"
#include "crypto/base/export.h"

namespace toolbelt {

inline constexpr std::uint32_t MAIL_SENT = 0;
inline constexpr std::uint32_t MAIL_CANCELLED = 1; // by the user
inline constexpr std::uint32_t MAIL_FAILURE = 2;   // also: no mail interface
inline constexpr std::uint32_t MAIL_LOGON_FAILURE = 3;
inline constexpr std::uint32_t MAIL_NO_MEMORY = 5;
inline constexpr std::uint32_t MAIL_NO_ATTACHMENT = 11; // also: a path that the ANSI code page cannot express
inline constexpr std::uint32_t MAIL_BAD_RECIPIENT = 25; // also: an address too long, or not in the ANSI code page

// Sends a mail; null texts are empty, and no file goes with it when the attachment is null or empty. Where nobody is
// logged on, the mail interface shows its dialogs. Returns its result; but for success and the user's own cancelling, a
// box on the window tells the error.
TB_API std::uint32_t SendMapiMail(void* window, const wchar_t* recipient, const wchar_t* subject, const wchar_t* body,
                                  const wchar_t* attachment) noexcept;
// The same through another library than "mapi32.dll".
std::uint32_t sendMailThrough(const wchar_t* library, void* window, const wchar_t* recipient, const wchar_t* subject,
                              const wchar_t* body, const wchar_t* attachment) noexcept;

// The records that the mail interface takes; texts in the ANSI code page.
struct MapiRecipient
{
    std::uint32_t reserved;
    std::uint32_t recipientClass; // 1: to
    const char* name;
    const char* address; // "SMTP:" and the address
    std::uint32_t entrySize;
    void* entry;
};
struct MapiFile
{
    std::uint32_t reserved;
    std::uint32_t flags;
    std::uint32_t position; // 0xFFFFFFFF: not within the text
    const char* path;
    const char* name; // null: as in the path
    void* type;
};
struct MapiMessage
{
    std::uint32_t reserved;
    const char* subject;
    const char* text;
    const char* type;
    const char* received;
    const char* conversation;
    std::uint32_t flags;
    MapiRecipient* originator;
    std::uint32_t recipientCount;
    MapiRecipient* recipients;
    std::uint32_t fileCount;
    MapiFile* files;
};

// One mail as such records, which point into the object.
class MapiMail
{
public:
    MapiMail() noexcept = default;
    MapiMail(const MapiMail&) = delete;
    MapiMail& operator=(const MapiMail&) = delete;

    // MAIL_SENT, MAIL_NO_MEMORY, or MAIL_BAD_RECIPIENT when "SMTP:" and the address, terminator included, take more
    // than 1,024 bytes: an address that was cut might be somebody else's. The same goes for one with characters that
    // the ANSI code page lacks, and for such a path (MAIL_NO_ATTACHMENT); in subject and body, which are for people,
    // the system chooses what stands for them.
    std::uint32_t build(const wchar_t* recipient, const wchar_t* subject, const wchar_t* body,
                        const wchar_t* attachment) noexcept;
    const MapiMessage& message() const noexcept { return message_; }

private:
    cMBStr address_, name_, subject_, body_, attachment_;
    MapiRecipient recipient_ = {};
    MapiFile file_ = {};
    MapiMessage message_ = {};
};

// The box's text for a result: "E-mail cannot be send (error DISK_FULL)"
const wchar_t* formatMailError(cWCS& text, std::uint32_t result) noexcept;

} // namespace toolbelt
