// Memory that runs out, of what needs Windows: files, system texts, posts to the server beside this program, dialogs.
#include "Includes/cDlg/colored_dlg.h"
#include "Includes/stringFuncs/file_view.h"
#include "Includes/stringFuncs/text_file.h"
#include "Includes/system/mail_link.h"
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

Status failed(bool done)
{
    return done ? STATUS_OK : -1;
}

Operation quiet(std::string name, std::function<Status(TestHeap&)> run, std::vector<std::vector<Status>> failures,
                std::uint32_t plain = 0)
{
    return {std::move(name),
            [run = std::move(run)](TestHeap& heap) {
                const Recorder recorder;
                return run(heap);
            },
            std::move(failures), plain};
}

TEST(MemoryWindows, FilesAndTexts)
{
    wchar_t path[MAX_PATH], folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    ASSERT_NE(GetTempFileNameW(folder, L"tb", 0, path), 0u);
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file, "secret-secret", 13, &written, nullptr));
    CloseHandle(file);
    const Operation operations[] = {
        quiet("LoadTextFile",
              [&](TestHeap& heap) {
                  cWCS text;
                  return again(heap, [&] {
                      const std::int32_t code = LoadTextFile(text, path);
                      EXPECT_EQ(units(text), code == 0 ? u"secret-secret" : u"");
                      return code;
                  });
              },
              {{ERROR_NOT_ENOUGH_MEMORY}}),
        quiet("cFileView Open, Map",
              [&](TestHeap& heap) {
                  cFileView view;
                  return again(heap, [&] {
                      const bool done = view.Open(path) && view.Map(0);
                      EXPECT_EQ(view.view() != nullptr, done);
                      return done ? STATUS_OK : static_cast<Status>(view.lastError());
                  });
              },
              {{ERROR_NOT_ENOUGH_MEMORY}}),
        quiet("cWCS SystemErrorText",
              [](TestHeap& heap) {
                  cWCS text;
                  return again(heap, [&] {
                      const bool done = units(text.SystemErrorText(5)) != u"<NULL>";
                      EXPECT_EQ(text.text() != nullptr, done);
                      return failed(done);
                  });
              },
              {{-1}}),
        quiet("splitMailLink",
              [](TestHeap& heap) {
                  MailLink parts;
                  return again(heap,
                               [&] { return failed(splitMailLink(parts, L"mailto:a?subject=b&body=c&attach=d")); });
              },
              {{-1}}),
        quiet("formatPowerShellLine",
              [](TestHeap&) {
                  cWCS line;
                  return failed(formatPowerShellLine(line, L"a", L"b") != nullptr);
              },
              {{-1}}),
        quiet("PercentEncode",
              [](TestHeap& heap) {
                  cWCS text;
                  return again(heap, [&] {
                      EXPECT_TRUE(PercentEncode(L"secret secret", text)) << "always, by design";
                      return failed(units(text) == u"secret%20secret");
                  });
              },
              {{-1}}),
    };
    const Bytes secret = {'s', 0, 'e', 0, 'c', 0, 'r', 0, 'e', 0, 't', 0};
    for (const Operation& operation : operations) runWithoutMemory(operation, {secret});
    EXPECT_TRUE(DeleteFileW(path)) << "something was left open";
}

TEST(MemoryWindows, Posts)
{
    const char* const ports = std::getenv("TOOLBELT_TEST_PORTS");
    ASSERT_NE(ports, nullptr) << "to be run by with_server.py";
    const auto port = static_cast<std::uint32_t>(std::strtoul(ports, nullptr, 10));
    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/large/9";
    const std::wstring wideUrl(url.begin(), url.end());
    const auto posts = [](auto post) {
        return [post](TestHeap& heap) {
            cByteBuffer answer;
            return again(heap, [&] {
                const Status status = post(answer);
                EXPECT_EQ(answer.length(), status == STATUS_OK ? 9u : 0u);
                return status;
            });
        };
    };
    const Operation operations[] = {
        quiet("postJson", posts([=](cByteBuffer& b) { return postJson(b, "{}", L"127.0.0.1", L"large/9", port, 0); }),
              {{POST_E_ANSWER}}),
        quiet("postJsonToUrl", posts([=](cByteBuffer& b) { return postJsonToUrl(b, "{}", wideUrl.c_str()); }),
              {{POST_E_URL}, {POST_E_ANSWER}}),
        quiet(
            "tb_json_post",
            [&](TestHeap&) {
                tb_answer* answer = nullptr;
                const tb_status status = tb_json_post(url.c_str(), "{}", &answer);
                EXPECT_EQ(answer != nullptr, status == TB_OK);
                return tb_answer_close(answer), status;
            },
            {{TB_E_MEMORY}, {TB_E_URL}, {TB_E_ANSWER, TB_E_MEMORY}}, 1),
    };
    for (const Operation& operation : operations) runWithoutMemory(operation);
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
void runDialog(const char* name, std::uint32_t id)
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
    runWithoutMemory(quiet(std::string(name) + " Create", create, {{-1}}, 1)); // the template's copy
    runWithoutMemory(quiet(std::string(name) + " DoModal", show, {{-1}}, 1));
}

TEST(MemoryWindows, Dialogs)
{
    { // the fonts and icons that dialogs share are built by the first and stay
        cColoredDlg first;
        first.record.useCopy = 1;
        ASSERT_TRUE(first.Create(GetModuleHandleW(nullptr), DIALOG_HEADER, nullptr, nullptr));
        DestroyWindow(first.window);
    }
    runDialog<cDlg>("cDlg", DIALOG_CLASSIC);
    runDialog<cColoredDlg>("cColoredDlg", DIALOG_HEADER);
}

} // namespace
} // namespace toolbelt::test
