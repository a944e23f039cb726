#include "tests/WidgetTesting.h"

#include "base/Platform.h"

#include <QApplication>

int main(int argc, char** argv)
{
    Corvadine::PrepareProcess();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ::testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
