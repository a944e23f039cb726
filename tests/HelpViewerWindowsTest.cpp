#include "support/help/HelpViewer.h"

#include <gtest/gtest.h>

#include <qt_windows.h>

using namespace Corvadine;

namespace {

// Returns the window of the help viewer of Windows. The window has this class, and has the title of the help
// file.
HWND ViewerWindow()
{
    return ::FindWindowW(L"HH Parent", L"Corvadine Help");
}

} // namespace

// This test does not check the page, because this process cannot see it. windows/run reads the name of the
// page from Wine's log.
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
