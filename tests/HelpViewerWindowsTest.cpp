#include "support/help/HelpViewer.h"

#include <gtest/gtest.h>

#include <qt_windows.h>

using namespace Corvadine;

namespace {

// The window of Windows' viewer, by its class and the title in the help file.
HWND ViewerWindow()
{
    return ::FindWindowW(L"HH Parent", L"Corvadine Help");
}

} // namespace

// The page is not checked here, since this process cannot see it: windows/run reads it from Wine's log.
TEST(HelpViewerWindowsTest, ShowsTopicsAndContentsInOneWindowAndClosesIt)
{
    const QString file = QStringLiteral(CORVADINE_HELP_FILE);
    {
        const auto viewer = MakeHelpViewer();
        viewer->ShowTopic(file, 90);
        const HWND window = ViewerWindow();
        ASSERT_NE(window, nullptr);
        viewer->ShowContents(file);
        EXPECT_EQ(ViewerWindow(), window);
    }
    EXPECT_EQ(ViewerWindow(), nullptr);
}
