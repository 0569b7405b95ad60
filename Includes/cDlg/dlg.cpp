#include "Includes/cDlg/dlg.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cstring>

#include "Includes/cDlg/dialog_procedure.h"
#include "Includes/cDlg/dialog_template.h"
#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/wcs.h"
#include "Includes/system/message_box.h"
#include "Includes/system/resource_library.h"
#include "crypto/base/heap.h"

namespace toolbelt {
namespace {

static_assert(offsetof(DlgRecord, useCopy) == 16 && offsetof(DlgRecord, topmost) == 17);
static_assert(offsetof(DlgRecord, chainedProcedure) == 20 && offsetof(DlgRecord, sizeLimits) == 24);
static_assert(offsetof(DlgRecord, captionButton) == 44 && offsetof(DlgRecord, messageHook) == 48);

constexpr wchar_t FAILURE_TITLE[] = L"Errror in creating dialog!"; // so known to users and their search engines
constexpr int NOT_CREATED = -1;

// One byte more than the system may read of the template: what reads a final text may look behind it.
constexpr std::size_t SPARE = 1;
constexpr std::uint32_t LARGEST_IDENTIFIER = 0xFFFF;

} // namespace

cDlg::~cDlg()
{
    if (hasDialog()) SetWindowLongW(window, GWLP_USERDATA, 0);
    SafeFree(&record.ownedBuffer);
}

std::int32_t cDlg::DoModal(InstanceHandle module, std::uint32_t id, WindowHandle parent, WindowProcedure chained)
{
    if (!prepare(module, id, parent, chained, 0)) return NOT_CREATED;
    const auto self = reinterpret_cast<LPARAM>(this);
    SetLastError(ERROR_SUCCESS); // so that an error of earlier work is not taken for this one's
    std::intptr_t result = DialogBoxIndirectParamW(instance, static_cast<const DLGTEMPLATE*>(record.ownedBuffer),
                                                   parent, dialogProcedure, self);
    // A dialog that has run may well have ended with -1: it is not shown twice.
    const auto failed = [&] { return result == NOT_CREATED && window == nullptr; };
    if (!failed() || GetLastError() == ERROR_SUCCESS) return result;

    if (!onlyCopy_) {
        result = DialogBoxParamA(instance, MAKEINTRESOURCEA(id), parent, dialogProcedure, self);
        if (!failed()) return result;
    }
    const DWORD error = GetLastError();
    {
        cWCS text; // released before the error is set
        showMessage(parent, text.SystemErrorText(error), FAILURE_TITLE,
                    MESSAGE_ICON_STOP | (isRightToLeft() ? MESSAGE_RIGHT_TO_LEFT : 0));
    }
    SetLastError(error);
    return result;
}

WindowHandle cDlg::Create(InstanceHandle module, std::uint32_t id, WindowHandle parent, WindowProcedure chained)
{
    if (!prepare(module, id, parent, chained, 1)) return nullptr;
    const auto self = reinterpret_cast<LPARAM>(this);
    if (record.useCopy == 0 && !onlyCopy_)
        return CreateDialogParamA(instance, MAKEINTRESOURCEA(id), parent, dialogProcedure, self);
    return CreateDialogIndirectParamW(instance, static_cast<const DLGTEMPLATE*>(record.ownedBuffer), parent,
                                      dialogProcedure, self);
}

WindowHandle cDlg::Create(InstanceHandle module, std::uint32_t id, WindowHandle parent)
{
    return Create(module, id, parent, nullptr);
}

// Takes a parent that is no window for none.
bool cDlg::prepare(InstanceHandle module, std::uint32_t id, WindowHandle& parent, WindowProcedure chained,
                   std::uint32_t modeless) noexcept
{
    if (hasDialog() || id > LARGEST_IDENTIFIER) return false;
    instance = module;
    window = nullptr;
    record.templateId = id;
    record.chainedProcedure = chained;
    record.modeless = modeless;
    if (!IsWindow(parent)) parent = nullptr;
    InitCommonControls(); // templates may name the common controls' classes
    return copyTemplate();
}

bool cDlg::hasDialog() const noexcept
{
    const auto self = static_cast<LONG>(reinterpret_cast<std::intptr_t>(this));
    return window && IsWindow(window) && GetWindowLongW(window, GWLP_USERDATA) == self;
}

bool cDlg::copyTemplate() noexcept
{
    const HRSRC found = FindResourceW(instance, MAKEINTRESOURCEW(record.templateId), RT_DIALOG);
    const DWORD size = found ? SizeofResource(instance, found) : 0;
    const HGLOBAL loaded = size != 0 ? LoadResource(instance, found) : nullptr;
    const auto* const source = static_cast<const std::uint8_t*>(loaded ? LockResource(loaded) : nullptr);
    const std::size_t extent = templateExtent(source, size);
    const std::size_t needed = std::max<std::size_t>(extent, size) + SPARE;
    if (extent != 0 && bufferSize_ < needed) {
        SafeFree(&record.ownedBuffer);
        record.ownedBuffer = heap::allocate(needed);
        bufferSize_ = record.ownedBuffer ? needed : 0;
        if (!record.ownedBuffer) reportOutOfMemory();
    }
    auto* const copy = extent != 0 ? static_cast<std::uint8_t*>(record.ownedBuffer) : nullptr;
    if (copy) {
        std::memcpy(copy, source, size);
        std::memset(copy + size, 0, needed - size);
    }
    if (loaded) FreeResource(loaded);
    onlyCopy_ = extent > size;
    return copy && (!isRightToLeft() || setTemplateRightToLeft(copy, size));
}

wchar_t* cDlg::HelpFilePath(wchar_t* buffer, std::uint32_t size)
{
    constexpr wchar_t EXTENSION[] = L"CHM";
    constexpr std::uint32_t EXTENSION_UNITS = 3;
    const std::uint32_t length = GetModuleFileNameW(nullptr, buffer, size);
    if (length < EXTENSION_UNITS || length >= size) return nullptr;
    std::memcpy(buffer + length - EXTENSION_UNITS, EXTENSION, sizeof(EXTENSION));
    const DWORD attributes = GetFileAttributesW(buffer);
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY) ? buffer : nullptr;
}

void cDlg::OnCaptionButton(std::int32_t) {}

std::uint8_t cDlg::OnInitDialog()
{
    return 1;
}

MessageResult cDlg::DefaultHandler(unsigned int message, WordParameter word, LongParameter)
{
    if (message == WM_INITDIALOG) return OnInitDialog();
    if (message != WM_COMMAND) return 0;
    // The system only hides a modeless dialog that is ended.
    if (record.modeless != 0)
        DestroyWindow(window);
    else
        EndDialog(window, LOWORD(word));
    return 1;
}

MessageResult cDlg::OnMessage(unsigned int, WordParameter, LongParameter)
{
    return 0;
}

} // namespace toolbelt
