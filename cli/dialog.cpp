// dialog: the library's dialogs, shown: a plain one, one with a coloured header, and one that a countdown closes.
#include <windows.h>

#include <commctrl.h>

#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/countdown.h"
#include "Includes/cDlg/dialog_drawing.h"
#include "Includes/stringFuncs/conversion.h"
#include "cli/command.h"
#include "cli/dialogs.h"
#include "cli/key_search.h"
#include "cli/results.h"
#include "cli/screenshot.h"
#include "cli/text.h"
#include "crypto/base/cpu.h"

namespace toolbelt::cli {
namespace {

struct Options
{
    std::string kind, screenshot;
    std::uint32_t seconds = 30, bits = 4096;
};

constexpr UINT_PTR PICTURE_TIMER = 1;
constexpr UINT PICTURE_DELAY = 1500; // milliseconds until all is drawn and the countdown shows a number
constexpr UINT_PTR FIGURES_TIMER = 2;
constexpr UINT FIGURES_PERIOD = 250;
constexpr UINT SEARCH_ENDED = WM_APP;

std::string systemName()
{
    const VersionRecord& version = systemVersion().record;
    const std::string pack(version.servicePack, std::find(version.servicePack, std::end(version.servicePack), u'\0'));
    return "Windows " + std::to_string(version.majorVersion) + "." + std::to_string(version.minorVersion) + ", build " +
           std::to_string(version.buildNumber) + (pack.empty() ? "" : ", " + pack);
}

// What the three have in common: the program's icon, in the caption and where the dialog wants it, and the picture.
template <typename Base>
class Shown : public Base
{
public:
    explicit Shown(const Options& options) : options_(options)
    {
        this->record.iconId = ICON_PROGRAM;
        this->record.useCopy = 1;
    }

    int show(std::uint32_t id)
    {
        const std::int32_t result = this->DoModal(GetModuleHandleW(nullptr), id, nullptr, nullptr);
        if (failure_) std::rethrow_exception(failure_);
        if (result < 0) throw Failure("dialog", "cannot be shown: is there a screen?", EXIT_SYSTEM);
        if (options_.screenshot.empty()) return result;
        if (picture_.empty()) throw Failure(options_.screenshot, "no picture could be taken", EXIT_SYSTEM);
        writeWhole(options_.screenshot, picture_);
        return result;
    }

    // Nothing is thrown through the system: a failure ends the dialog, and show throws it.
    MessageResult OnMessage(UINT message, WPARAM word, LPARAM parameter) final
    {
        return guarded([&] { return handle(message, word, parameter); });
    }
    std::uint8_t OnInitDialog() final
    {
        guarded([&] { return start(), 0; });
        return 1;
    }

protected:
    virtual void start() = 0;
    virtual MessageResult handle(UINT message, WPARAM word, LPARAM parameter)
    {
        if (const MessageResult answer = Base::OnMessage(message, word, parameter)) return answer;
        switch (message) {
        case WM_INITDIALOG:
            if (!options_.screenshot.empty()) SetTimer(this->window, PICTURE_TIMER, PICTURE_DELAY, nullptr);
            SetForegroundWindow(this->window);
            return 0;
        case WM_TIMER:
            if (word != PICTURE_TIMER) return 0;
            KillTimer(this->window, PICTURE_TIMER);
            takePicture();
            if (!closesItself()) PostMessageW(this->window, WM_CLOSE, 0, 0);
            return 1;
        case WM_COMMAND:
            if (LOWORD(word) != IDOK && LOWORD(word) != IDCANCEL) return 1; // a choice does not close the dialog
            takePicture();
            return 0;
        default:
            return 0;
        }
    }

    // The first call counts; the last one is when the dialog is about to close.
    void takePicture()
    {
        if (!options_.screenshot.empty() && picture_.empty()) picture_ = pictureOf(this->window);
    }
    // A text that is there already is not painted again.
    void setText(int id, const std::string& text)
    {
        const std::wstring wanted = toWide(text);
        std::wstring shown(wanted.size() + 2, L'\0');
        shown.resize(GetDlgItemTextW(this->window, id, shown.data(), static_cast<int>(shown.size())));
        if (shown != wanted) SetDlgItemTextW(this->window, id, wanted.c_str());
    }
    void paintIcon(HDC device)
    {
        const auto icon = reinterpret_cast<HICON>(SendMessageW(this->window, WM_GETICON, ICON_BIG, 0));
        PaintIcon(this->window, device, PLACE_OF_ICON, icon);
    }
    // The whole answer to WM_PAINT of a dialog whose background is the system's.
    MessageResult paintWithIcon()
    {
        PAINTSTRUCT paint;
        if (const HDC device = BeginPaint(this->window, &paint)) paintIcon(device);
        EndPaint(this->window, &paint);
        return 1;
    }
    // Whether the dialog closes itself in the end, picture or not.
    virtual bool closesItself() const { return false; }

    const Options& options_;

private:
    template <typename Action>
    MessageResult guarded(Action action)
    {
        try {
            return action();
        } catch (...) {
            failure_ = std::current_exception();
            EndDialog(this->window, IDCANCEL);
            return 1;
        }
    }

    Bytes picture_;
    std::exception_ptr failure_;
};

class PlainDialog : public Shown<cDlg>
{
public:
    using Shown::Shown;

    MessageResult handle(UINT message, WPARAM word, LPARAM parameter) override
    {
        if (message == WM_PAINT) return paintWithIcon();
        return Shown::handle(message, word, parameter);
    }
    void start() override
    {
        std::string features(cpu::nameFeaturesInUse(nullptr, 0) + 1, '\0');
        features.resize(cpu::nameFeaturesInUse(features.data(), features.size()));
        setText(TEXT_TITLE, "Toolbelt " TOOLBELT_VERSION);
        SendDlgItemMessageW(window, TEXT_TITLE, WM_SETFONT, reinterpret_cast<WPARAM>(sharedFonts().arial12), TRUE);
        setText(TEXT_LIBRARY, "toolbelt.dll, 32 bits");
        setText(TEXT_SYSTEM, systemName());
        setText(TEXT_PROCESSOR, features.empty() ? "no special instructions" : features);
    }
};

class ColouredDialog : public Shown<cColoredDlg>
{
public:
    explicit ColouredDialog(const Options& options) : Shown(options)
    {
        colours.headerHeight = suitableHeaderHeight(screenDpi(), 1, false);
        colours.gradientColour = RGB(150, 196, 240);
        colours.titleId = TEXT_TITLE;
        colours.textId = TEXT_SUBTITLE;
        colours.iconPlaceId = PLACE_OF_ICON;
        colours.titleText = L"Toolbelt";
    }

    MessageResult handle(UINT message, WPARAM word, LPARAM parameter) override
    {
        const MessageResult answer = Shown::handle(message, word, parameter);
        // The texts stand on the gradient itself, not on a plate of their own.
        if (message == WM_CTLCOLORSTATIC && answer != 0)
            return reinterpret_cast<MessageResult>(GetStockObject(NULL_BRUSH));
        if (message == WM_SIZE) follow({LOWORD(parameter), HIWORD(parameter)});
        return answer;
    }
    void OnBackgroundPainted(HDC device) override { paintIcon(device); }
    void start() override
    {
        CheckRadioButton(window, FORM_PEM, FORM_DER, FORM_PEM);
        RECT client;
        GetClientRect(window, &client);
        designed_ = {client.right, client.bottom};
        for (Follower& follower : followers_) {
            GetWindowRect(GetDlgItem(window, follower.id), &follower.designed);
            MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&follower.designed), 2);
        }
    }

private:
    struct Follower
    {
        int id;
        bool grows;
        RECT designed; // its place in the dialog as it was opened
    };

    // The group grows with the dialog, and the buttons stay in its corner. From where they were at first, so that a
    // move that failed is made up for by the next.
    void follow(SIZE size)
    {
        if (designed_.cx == 0 || size.cx == 0) return;
        const int dx = size.cx - designed_.cx, dy = size.cy - designed_.cy;
        for (const auto& [id, grows, place] : followers_)
            SetWindowPos(GetDlgItem(window, id), nullptr, place.left + (grows ? 0 : dx), place.top + (grows ? 0 : dy),
                         place.right - place.left + (grows ? dx : 0), place.bottom - place.top + (grows ? dy : 0),
                         SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOREDRAW);
        // A group paints its frame alone: what it uncovers or grows over is drawn anew.
        RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    }

    SIZE designed_ = {};
    Follower followers_[3] = {{GROUP_FORM, true, {}}, {IDOK, false, {}}, {IDCANCEL, false, {}}};
};

class CountdownDialog : public Shown<cDlg>, cCountdownButton
{
public:
    using Shown::Shown;

    MessageResult handle(UINT message, WPARAM word, LPARAM parameter) override
    {
        if (OnCountdownMessage(message, word)) return 1;
        if (message == WM_PAINT) return paintWithIcon();
        if (message == WM_TIMER && word == FIGURES_TIMER) return showFigures();
        if (message == SEARCH_ENDED) {
            search_->rethrowFailure();
            takePicture();
            EndDialog(window, IDOK);
            return 1;
        }
        return Shown::handle(message, word, parameter);
    }
    void start() override
    {
        setText(TEXT_TITLE, "An RSA key of " + std::to_string(options_.bits) + " bits, of two safe primes");
        SendDlgItemMessageW(window, BAR_SEARCH, PBM_SETMARQUEE, TRUE, 40);
        started_ = GetTickCount();
        showFigures();
        SetTimer(window, FIGURES_TIMER, FIGURES_PERIOD, nullptr);
        if (!StartCountdown(static_cast<std::int32_t>(options_.seconds), IDCANCEL))
            throw Failure("dialog", "the countdown cannot be started", EXIT_SYSTEM);
        search_ =
            std::make_unique<KeySearch>(options_.bits, [dialog = window] { PostMessageW(dialog, SEARCH_ENDED, 0, 0); });
    }

protected:
    bool closesItself() const override { return true; }

private:
    MessageResult showFigures()
    {
        static const char* const phases[] = {"Preparing\u2026", "Searching for the first prime\u2026",
                                             "Searching for the second prime\u2026"};
        const std::uint32_t seconds = (GetTickCount() - started_) / 1000, tried = search_ ? search_->tried() : 0;
        setText(TEXT_PHASE, phases[search_ ? std::min(search_->phase(), 2u) : 0]);
        setText(TEXT_FIGURES, std::to_string(seconds) + " s, " + std::to_string(tried) + " candidates tried");
        return 1;
    }

    std::unique_ptr<KeySearch> search_;
    std::uint32_t started_ = 0;
};

int show(const Options& options)
{
    if (options.kind == "plain") return PlainDialog(options).show(DIALOG_PLAIN);
    if (options.kind == "coloured") return ColouredDialog(options).show(DIALOG_COLOURED);
    return CountdownDialog(options).show(DIALOG_COUNTDOWN);
}

} // namespace

Action prepareDialog(Parser& parser)
{
    const auto options = std::make_shared<Options>();
    parser.option("KIND", options->kind, "plain, coloured or countdown")
        .required()
        .oneOf({"plain", "coloured", "countdown"})
        .value("");
    parser
        .option("--screenshot", options->screenshot,
                "writes a picture of the dialog; plain and coloured are then closed")
        .value("FILE.bmp");
    parser.option("--seconds", options->seconds, "countdown: the seconds until Cancel is pressed; 30")
        .range(1, 3600)
        .value("N");
    parser.option("--bits", options->bits, "countdown: size of the key that is searched for; 4096")
        .range(512, 16384)
        .value("N");
    parser.footer(
        "Prints the command that closed the dialog: ok or cancel. The countdown dialog searches for a key until\n"
        "one is found (ok), or Cancel is pressed or presses itself (cancel); the key is thrown away.\n\n"
        "Example: toolbelt dialog coloured --screenshot header.bmp");
    return [options]() {
        if (options->bits % 8 != 0) throw UsageError("--bits must be a multiple of 8");
        const int command = show(*options);
        const std::string name = command == IDOK ? "ok" : "cancel";
        printResult(name, {"command", name, {numberFact("identifier", static_cast<std::uint64_t>(command))}});
        return EXIT_DONE;
    };
}

} // namespace toolbelt::cli
