// Memory that runs out, of what needs Windows: files, system texts, mails, posts to the server beside this program,
// dialogs.
#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/countdown.h"
#include "Includes/stringFuncs/file_view.h"
#include "Includes/stringFuncs/text_file.h"
#include "Includes/system/mail_link.h"
#include "Includes/system/mapi_mail.h"
#include "Includes/system/message_box.h"
#include "Includes/system/percent_encode.h"
#include "Includes/system/powershell.h"
#include "include/toolbelt/toolbelt_c.h"
#include "net/post_json.h"
#include "tests/dialog/resources.h"
#include "tests/robust/operations.h"
#include "tests/stringFuncs/text_support.h"
#include "tests/support/vectors.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace toolbelt::test {
namespace {

class MemoryWindows : public testing::Test
{
    const Recorder quiet; // texts say on the debug channel what they lack
};

// In the place of a box that would wait for somebody.
int __stdcall unseen(void*, const char*, const char*, unsigned int)
{
    return IDOK;
}

TEST_F(MemoryWindows, FilesAndTexts)
{
    wchar_t path[MAX_PATH], folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    ASSERT_NE(GetTempFileNameW(folder, L"tb", 0, path), 0u);
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file, "secret-secret", 13, &written, nullptr));
    CloseHandle(file);
    const auto load = [&](TestHeap& heap) {
        cWCS text;
        return again(heap, [&] {
            const std::int32_t code = LoadTextFile(text, path);
            EXPECT_EQ(units(text), code == 0 ? u"secret-secret" : u"");
            return code;
        });
    };
    const auto view = [&](TestHeap& heap) {
        cFileView opened;
        return again(heap, [&] {
            const bool done = opened.Open(path) && opened.Map(0);
            EXPECT_EQ(opened.view() != nullptr, done);
            return done ? STATUS_OK : static_cast<Status>(opened.lastError());
        });
    };
    const auto errorText = [](cWCS& text) {
        const bool done = units(text.SystemErrorText(5)) != u"<NULL>";
        EXPECT_EQ(text.text() != nullptr, done);
        return done;
    };
    const auto split = [](MailLink& parts) { return splitMailLink(parts, L"mailto:a?subject=b&body=c&attach=d"); };
    const auto line = [](TestHeap&) {
        cWCS text;
        return failed(formatPowerShellLine(text, L"a", L"b") != nullptr);
    };
    const std::wstring plain = L"secret" + std::wstring(2100, L' ');
    std::u16string escaped = u">secret";
    for (int i = 0; i < 2100; ++i) escaped += u"%20";
    const auto encode = [&](cWCS& text) {
        EXPECT_TRUE(PercentEncode(plain.c_str(), text)) << "always, by design";
        EXPECT_TRUE(units(text) == u">" || units(text) == escaped) << "all or nothing";
        return units(text) == escaped;
    };
    // The stand-in for the mail library answers that it was sent.
    const std::string crafted = CRAFTED;
    const std::wstring library(crafted.begin(), crafted.end());
    const auto send = [&](TestHeap&) {
        const std::uint32_t sent = sendMailThrough(library.c_str(), nullptr, L"a@b.c", L"secret", L"secret", L"secret");
        return static_cast<Status>(sent);
    };
    EXPECT_EQ(setMessageBoxFunction(unseen), nullptr);
    // Without a command nothing is started: it answers whether the program is there, or that memory ran out.
    const auto powerShell = [](TestHeap&) {
        const std::uint32_t error = RunPowerShell(nullptr);
        return error == ERROR_FILE_NOT_FOUND ? STATUS_OK : static_cast<Status>(error);
    };
    const Failures memory = {{ERROR_NOT_ENOUGH_MEMORY}};
    runAll(
        {
            {"LoadTextFile", load, memory},
            {"cFileView Open, Map", view, memory},
            {"cWCS SystemErrorText", on<cWCS>(errorText)},
            {"splitMailLink", on<MailLink>(split)},
            {"formatPowerShellLine", line},
            {"PercentEncode", on<cWCS>(encode, [](cWCS& text) { return text.Append(L">") != 0; })},
            {"sendMailThrough", send, {{MAIL_NO_MEMORY}}},
            {"RunPowerShell", powerShell, memory},
        },
        {{'s', 0, 'e', 0, 'c', 0, 'r', 0, 'e', 0, 't', 0}});
    setMessageBoxFunction(nullptr);
    EXPECT_TRUE(DeleteFileW(path)) << "something was left open";
}

TEST_F(MemoryWindows, Posts)
{
    const char* const ports = std::getenv("TOOLBELT_TEST_PORTS");
    ASSERT_NE(ports, nullptr) << "to be run by with_server.py";
    const auto port = static_cast<std::uint32_t>(std::strtoul(ports, nullptr, 10));
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/large/9";
    const std::wstring wideUrl(url.begin(), url.end());
    const auto post = [&](TestHeap& heap) {
        cByteBuffer answer;
        return again(heap, [&] {
            const Status status = postJsonToUrl(answer, "{}", wideUrl.c_str());
            EXPECT_EQ(answer.length(), status == STATUS_OK ? 9u : 0u);
            return status;
        });
    };
    const auto flat = [&](TestHeap&) {
        tb_answer* answer = nullptr;
        const tb_status status = tb_json_post(url.c_str(), "{}", &answer);
        EXPECT_EQ(answer != nullptr, status == TB_OK);
        return tb_answer_close(answer), status;
    };
    runAll({
        {"postJsonToUrl", post, {{POST_E_URL}, {POST_E_ANSWER}}},
        {"tb_json_post", flat, {{TB_E_MEMORY}, {TB_E_URL}, {TB_E_ANSWER, TB_E_MEMORY}}, 1},
    });
}

template <typename Dialog>
struct Closing : Dialog
{
    MessageResult OnMessage(unsigned int message, WordParameter word, LongParameter parameter) override
    {
        if (message == WM_INITDIALOG) PostMessageW(this->window, WM_COMMAND, IDOK, 0);
        return Dialog::OnMessage(message, word, parameter);
    }
};

template <typename Dialog>
void runDialog(const std::string& name, std::uint32_t id)
{
    const InstanceHandle module = GetModuleHandleW(nullptr);
    const auto create = [=](TestHeap& heap) {
        Dialog dialog;
        dialog.record.useCopy = 1;
        return again(heap, [&] {
            const bool done = dialog.Create(module, id, nullptr, nullptr) != nullptr;
            if (done) DestroyWindow(dialog.window);
            return failed(done);
        });
    };
    const auto show = [=](TestHeap& heap) {
        Closing<Dialog> dialog;
        return again(heap, [&] {
            const std::int32_t result = dialog.DoModal(module, id, nullptr, nullptr);
            return result == IDOK ? STATUS_OK : result;
        });
    };
    // Plain: the template's copy.
    runAll({{name + " Create", create, {{-1}}, 1}, {name + " DoModal", show, {{-1}}, 1}});
}

struct Counting : cDlg, cCountdownButton
{
    using cCountdownButton::StartCountdown;
    using cCountdownButton::StopCountdown;
    MessageResult OnMessage(unsigned int message, WordParameter word, LongParameter) override
    {
        return OnCountdownMessage(message, word);
    }
};

TEST_F(MemoryWindows, Dialogs)
{
    { // the fonts and icons that dialogs share are built by the first and stay
        cColoredDlg first;
        first.record.useCopy = 1;
        ASSERT_TRUE(first.Create(GetModuleHandleW(nullptr), DIALOG_HEADER, nullptr, nullptr));
        DestroyWindow(first.window);
    }
    runDialog<cDlg>("cDlg", DIALOG_CLASSIC);
    runDialog<cColoredDlg>("cColoredDlg", DIALOG_HEADER);

    // A second for whose text there is no memory is not shown, and the countdown goes on.
    const auto count = [](TestHeap& heap) {
        Counting dialog;
        if (!dialog.Create(GetModuleHandleW(nullptr), DIALOG_CLASSIC, nullptr, nullptr)) return -1;
        wchar_t text[20] = L"";
        const bool done = dialog.StartCountdown(4, BUTTON_FIRST);
        const auto tick = [&] {
            SendMessageW(static_cast<HWND>(dialog.window), WM_TIMER, COUNTDOWN_TIMER, 0);
            GetDlgItemTextW(static_cast<HWND>(dialog.window), BUTTON_FIRST, text, 20);
            return units(text);
        };
        const std::u16string shown = done ? tick() : u"";
        EXPECT_TRUE(!done || shown == u"&First" || shown == u"&First (3)");
        heap.recover();
        EXPECT_EQ(tick(), done ? u"&First (2)" : u"&First");
        dialog.StopCountdown();
        DestroyWindow(static_cast<HWND>(dialog.window));
        return failed(shown == u"&First (3)");
    };
    runWithoutMemory({"cCountdownButton", count, {{-1}}, 1});
}

} // namespace
} // namespace toolbelt::test
