#include "support/help/HelpViewer.h"

#include <QDir>

#include <qt_windows.h>

namespace Corvadine {

namespace {

// The commands of HtmlHelpW. They are defined here because not every compiler has the header of HtmlHelpW.
// https://learn.microsoft.com/en-us/previous-versions/windows/desktop/htmlhelp/about-commands
enum THtmlHelpCommand : UINT {
    HH_DISPLAY_TOC = 0x1,
    HH_HELP_CONTEXT = 0xF,
    HH_CLOSE_ALL = 0x12,
};

using THtmlHelp = HWND(WINAPI*)(HWND owner, LPCWSTR file, UINT command, DWORD_PTR data);

// Loads HtmlHelpW at run time, because not every Windows has it. Returns null if HtmlHelpW is missing.
// Searches only the system's folder, so that no other library of the same name is loaded.
THtmlHelp LoadHtmlHelp()
{
    const HMODULE module = LoadLibraryExW(L"hhctrl.ocx", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module == nullptr)
        return nullptr;
    return reinterpret_cast<THtmlHelp>(reinterpret_cast<void*>(GetProcAddress(module, "HtmlHelpW")));
}

class THtmlHelpViewer : public THelpViewer {
public:
    THtmlHelpViewer() = default;

    ~THtmlHelpViewer() override
    {
        if (FHtmlHelp != nullptr)
            FHtmlHelp(nullptr, nullptr, HH_CLOSE_ALL, 0);
    }

    Q_DISABLE_COPY_MOVE(THtmlHelpViewer)

    void ShowTopic(const QString& file, quint32 topic) override { Call(file, HH_HELP_CONTEXT, topic); }
    void ShowContents(const QString& file) override { Call(file, HH_DISPLAY_TOC, 0); }

private:
    void Call(const QString& file, UINT command, DWORD_PTR data)
    {
        if (FHtmlHelp == nullptr)
            FHtmlHelp = LoadHtmlHelp();
        if (FHtmlHelp == nullptr)
            return;
        const std::wstring name = QDir::toNativeSeparators(file).toStdWString();
        FHtmlHelp(nullptr, name.c_str(), command, data);
    }

    THtmlHelp FHtmlHelp = nullptr;
};

} // namespace

std::unique_ptr<THelpViewer> MakeHelpViewer()
{
    return std::make_unique<THtmlHelpViewer>();
}

} // namespace Corvadine
