#include "app/FieldEditors.h"
#include "app/ColorBox.h"
#include "app/ProjectLookup.h"
#include "store/ProjectStore.h"
#include "store/ProjectsTable.h"
#include "tests/DialogTesting.h"
#include "widgets/ColorList.h"
#include "widgets/DropDownFrame.h"

#include <QColorDialog>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>

using namespace Corvadine;
using namespace Corvadine::Testing;
using TState = TProjectsTable::TState;

namespace {

// A window with one editor of each kind. The table has three projects, and the last two have no numbers.
class FieldEditorsTest : public TFolderTest {
protected:
    FieldEditorsTest()
    {
        FTable.Open(FStore);
        FTable.Append();
        FTable.SetField(TField::ProjectFile, "/a/First.dproj");
        FTable.Post();
        FTable.Close();
        for (const char* name : { "/b/Second.dproj", "/c/Third.dproj" })
            FStore.Insert({ .ProjectFile = name }, { TField::ProjectFile });
        auto* layout = new QVBoxLayout(&FWindow);
        for (QWidget* widget :
            std::initializer_list<QWidget*> { FLookup, FAndroid, FFormat, FColor, FCompression, FWidth })
            layout->addWidget(widget);
        FTable.Open(FStore);
        FWindow.show();
        FWindow.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&FWindow));
    }

    QTableView* OpenSwatches() const
    {
        QTest::mouseClick(FColor, Qt::LeftButton);
        return FColor->findChild<QTableView*>();
    }

    TProjectStore FStore { Path("Corvadine.db") };
    TProjectsTable FTable;
    QWidget FWindow;
    TProjectLookup* FLookup = new TProjectLookup(FTable, &FWindow);
    TFieldCheckBox* FAndroid = new TFieldCheckBox("Android", FTable, TField::IncAndroid, &FWindow);
    TFieldComboBox* FFormat = new TFieldComboBox(
        { { 1, "256 Colors" }, { 2, "True Color" } }, FTable, TField::PixelFormat, &FWindow);
    TColorBox* FColor = new TColorBox(FTable, TField::PickColor, &FWindow);
    TFieldSlider* FCompression = new TFieldSlider(FTable, TField::Compression, &FWindow);
    QSlider* FSlider = FCompression->findChild<QSlider*>();
    TFieldNumberEdit* FWidth = new TFieldNumberEdit(FTable, TField::TwoxSize, &FWindow);
};

} // namespace

TEST_F(FieldEditorsTest, ChangesAreWrittenAtOnceAndCancelOrAnErrorTakesThemBack)
{
    QTest::mouseClick(FAndroid, Qt::LeftButton, {}, QPoint(8, FAndroid->height() / 2));
    EXPECT_EQ(FTable.State(), TState::Edit);
    EXPECT_FALSE(FTable.Current().IncAndroid);

    QTest::keyClick(FFormat, Qt::Key_Down);
    EXPECT_EQ(FTable.Current().PixelFormat, 2);

    FWidth->setFocus();
    FWidth->selectAll();
    QTest::keyClicks(FWidth, "0x75-0");
    EXPECT_EQ(FTable.Current().TwoxSize, 750);
    EXPECT_EQ(FWidth->text(), "0750") << "what is being typed stays as it is";

    FTable.Cancel();
    EXPECT_TRUE(FAndroid->isChecked());
    EXPECT_EQ(FFormat->currentText(), "256 Colors");
    EXPECT_EQ(FWidth->text(), "400");

    QString told;
    FFormat->SetErrorHandler([&](const QString& text) { told = text; });
    FFormat->setItemData(1, "no number");
    QTest::keyClick(FFormat, Qt::Key_Down);
    EXPECT_THAT(told.toStdString(), ::testing::HasSubstr("PixelFormat"));
    EXPECT_EQ(FFormat->currentText(), "256 Colors");
}

TEST_F(FieldEditorsTest, ChoosingWhatIsThereOrScrollingPastStartsNoEdit)
{
    FFormat->showPopup();
    QTest::keyClick(FFormat->view(), Qt::Key_Return);
    FWindow.setFocus();
    for (QWidget* widget : std::initializer_list<QWidget*> { FFormat, FLookup, FSlider }) {
        QWheelEvent wheel({ 5, 5 }, widget->mapToGlobal(QPointF(5, 5)), {}, { 0, -120 }, Qt::NoButton,
            Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &wheel);
        EXPECT_NE(QApplication::focusWidget(), widget);
    }
    QTest::mouseMove(FWidth);
    EXPECT_EQ(FTable.State(), TState::Browse);
    EXPECT_EQ(FCompression->Value(), 6);
    EXPECT_EQ(FTable.Current().ID, 1);
}

TEST_F(FieldEditorsTest, AbsentNumbersAndNoProjectAreShownAsNothing)
{
    FTable.LocateByID(2);
    EXPECT_TRUE(FColor->isEnabled());
    EXPECT_EQ(FFormat->currentIndex(), -1);
    EXPECT_FALSE(FColor->HasValue() || FCompression->Value() || FWidth->Value());
    QTest::keyClicks(FWidth, "8");
    EXPECT_EQ(FTable.Current().TwoxSize, 8);
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    EXPECT_EQ(FTable.Current().TwoxSize, std::nullopt);
    FTable.Cancel();

    FTable.LocateByID(1);
    FWidth->setFocus();
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    EXPECT_EQ(FTable.Current().TwoxSize, 4);
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    EXPECT_EQ(FWidth->text(), "") << "room for another number";
    EXPECT_EQ(FTable.Current().TwoxSize, 400) << "what a shortcut would save";
    QTest::keyClicks(FWidth, "5");
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    QTest::keyClick(FWidth, Qt::Key_Tab);
    EXPECT_EQ(FWidth->text(), "400");

    while (FTable.Delete()) { }
    for (QWidget* widget :
        std::initializer_list<QWidget*> { FAndroid, FFormat, FColor, FCompression, FWidth })
        EXPECT_FALSE(widget->isEnabled());
    FTable.Append();
    EXPECT_TRUE(FCompression->isEnabled());
    EXPECT_EQ(FCompression->Value(), 6);
    FTable.Close();
    EXPECT_FALSE(FCompression->isEnabled() || FCompression->Value());
}

TEST_F(FieldEditorsTest, SliderWritesOnlyWhenItIsLeft)
{
    const auto moveByKey = [&] {
        FSlider->setFocus();
        QTest::keyClick(FSlider, Qt::Key_Right);
        EXPECT_EQ(FCompression->Value(), 7);
        EXPECT_EQ(FTable.State(), TState::Browse) << "not on each move";
    };
    const auto expectWritten = [&](int value, const char* how) {
        EXPECT_EQ(FTable.Current().Compression, value) << how;
        FTable.Cancel();
        EXPECT_EQ(FCompression->Value(), 6) << how;
    };
    moveByKey();
    QTest::keyClick(FSlider, Qt::Key_Tab);
    expectWritten(7, "focus");
    moveByKey();
    QTest::keyPress(FSlider, Qt::Key_Control);
    expectWritten(7, "the first key of a shortcut");

    FSlider->setSliderDown(true);
    FSlider->setValue(10);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(FSlider, &leave);
    EXPECT_EQ(FTable.State(), TState::Browse) << "a drag goes on outside";
    FSlider->setSliderDown(false);
    QTest::mouseRelease(FSlider, Qt::LeftButton, {}, QPoint(FSlider->width() - 1, -40));
    QCoreApplication::processEvents();
    expectWritten(10, "a drag that ends outside");

    moveByKey();
    QApplication::sendEvent(FSlider, &leave);
    expectWritten(7, "pointer");

    moveByKey();
    FTable.LocateByID(2);
    QTest::keyClick(FSlider, Qt::Key_Tab);
    EXPECT_EQ(FTable.State(), TState::Browse) << "the move belonged to the other project";
}

TEST_F(FieldEditorsTest, ColorBoxWritesNamedAndOtherColorsAndPreviewsWithout)
{
    QTableView* swatches = OpenSwatches();
    EXPECT_TRUE(TFieldEditor::IsFieldEditor(swatches));
    const auto& colors = NamedColors();
    EXPECT_EQ(colors.size(), 138U);
    EXPECT_EQ(colors[29].Name, "black") << "the neutral ones fill three runs";
    const auto tomato = std::ranges::find(colors, u"tomato"_s, &TNamedColor::Name);
    const auto position = static_cast<int>(tomato - colors.begin());
    const QModelIndex cell = swatches->model()->index(position % NamedColorRun, position / NamedColorRun);
    QTest::mouseClick(swatches->viewport(), Qt::LeftButton, {}, swatches->visualRect(cell).center());
    EXPECT_EQ(FTable.Current().PickColor, 0x4763FF); // #FF6347

    OpenSwatches();
    QTest::mouseClick(FWindow.windowHandle(), Qt::LeftButton, {}, FColor->geometry().center());
    QCoreApplication::processEvents();
    EXPECT_FALSE(QApplication::activePopupWidget()) << "a click on the box closes its list";

    for (const bool accepts : { false, true }) {
        InDialog<QColorDialog>([accepts](QColorDialog& dialog) {
            EXPECT_EQ(dialog.currentColor(), QColor("tomato"));
            dialog.setCurrentColor(QColor(1, 2, 3));
            accepts ? dialog.accept() : dialog.reject();
        });
        QTest::mouseClick(OpenSwatches()->parentWidget()->findChild<QPushButton*>(), Qt::LeftButton);
        EXPECT_EQ(FTable.Current().PickColor, accepts ? 0x030201 : 0x4763FF);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    FTable.Post();
    FColor->ShowColor(-1);
    FTable.SetField(TField::TwoxSize, 5);
    EXPECT_EQ(FColor->Value(), -1) << "an edit elsewhere leaves the preview";
    FTable.Cancel();
    EXPECT_EQ(FColor->Value(), 0x030201);
}

TEST_F(FieldEditorsTest, LookupFollowsTheUserAndSetValueButNotTheCurrentRow)
{
    QList<qint64> chosen;
    QObject::connect(FLookup, &TProjectLookup::ValueChosen, [&](qint64 id) {
        chosen << id;
        FTable.LocateByID(id);
    });
    EXPECT_EQ(FLookup->Text(), "");
    FLookup->SetValue(2);
    FLookup->SetValue(2);
    EXPECT_EQ(std::exchange(chosen, {}), QList<qint64>({ 2 }));
    EXPECT_EQ(FLookup->Text(), "/b/Second.dproj");

    FLookup->showPopup();
    QTest::keyClick(FLookup->view(), Qt::Key_Down);
    QTest::keyClick(FLookup->view(), Qt::Key_Return);
    EXPECT_EQ(std::exchange(chosen, {}), QList<qint64>({ 3 }));

    FTable.Delete();
    EXPECT_EQ(FLookup->count(), 2);
    EXPECT_EQ(FLookup->Text(), "/c/Third.dproj") << "as it was";

    FTable.Append(); // gets the ID of the deleted row
    FTable.SetField(TField::ProjectFile, "/d/Fourth.dproj");
    FTable.Post();
    EXPECT_EQ(FLookup->Text(), "/c/Third.dproj") << "another project with that ID is another value";
    FLookup->SetValue(FTable.Current().ID);
    EXPECT_EQ(FLookup->Text(), "/d/Fourth.dproj");

    FLookup->SetValue(std::nullopt);
    EXPECT_EQ(FLookup->Text(), "");
    EXPECT_EQ(std::exchange(chosen, {}), QList<qint64>({ 3 }));
}

TEST_F(FieldEditorsTest, DropDownsFitTheirContentAndTheScreenAndKeepTheUsersSize)
{
    FTable.SetField(TField::ProjectFile, "/" + QString(120, 'x') + "/Long.dproj");
    FTable.Post();
    FLookup->SetValue(1);
    FLookup->showPopup();
    QWidget* list = FLookup->view()->window();
    EXPECT_GE(FLookup->view()->viewport()->width(), FLookup->view()->sizeHintForColumn(0));
    EXPECT_LT(FLookup->width(), list->width());

    QWidget* grip = list->childAt(list->width() - 4, list->height() - 4);
    const QSize wanted = list->size() + QSize(-90, 100);
    QTest::mousePress(grip, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseMove(grip, QPoint(5 - 90, 5 + 100));
    QTest::mouseRelease(grip, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(list->size(), wanted);
    EXPECT_TRUE(list->isVisible());
    FLookup->hidePopup();
    FLookup->showPopup();
    EXPECT_EQ(list->size(), wanted);

    const QRect screen = FWindow.screen()->availableGeometry();
    QWidget box;
    box.setGeometry(100, 100, 80, 20);
    EXPECT_EQ(DropDownPlace(box, { 200, 50 }), QRect(100, 120, 200, 50));
    EXPECT_EQ(DropDownPlace(box, screen.size() * 2), screen);
    box.move(screen.right() - 79, screen.bottom() - 29);
    EXPECT_EQ(DropDownPlace(box, { 200, 10 }), QRect(screen.right() - 199, screen.bottom() - 9, 200, 10));
    EXPECT_EQ(DropDownPlace(box, { 80, 11 }), QRect(box.x(), box.y() - 11, 80, 11));
}
