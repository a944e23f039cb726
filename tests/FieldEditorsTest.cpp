#include "app/FieldEditors.h"
#include "app/ColorBox.h"
#include "app/ColorList.h"
#include "app/FormAction.h"
#include "app/ProjectLookup.h"
#include "app/Ribbon.h"
#include "app/RibbonButton.h"
#include "store/ProjectStore.h"
#include "store/ProjectsTable.h"
#include "tests/WidgetTesting.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QPointer>
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

// A window with one editor of each kind over a table of three projects, the last two without any numbers.
class FieldEditorsTest : public TFolderTest {
protected:
    FieldEditorsTest()
    {
        FStore.Insert({ .ProjectFile = "/a/First.dproj",
                          .IncAndroid = true,
                          .TwoxSize = 400,
                          .PickColor = 0xFFFFFF,
                          .PixelFormat = 1,
                          .Compression = 6 },
            { TField::ProjectFile, TField::IncAndroid, TField::TwoxSize, TField::PickColor,
                TField::PixelFormat, TField::Compression });
        FStore.Insert({ .ProjectFile = "/b/Second.dproj" }, { TField::ProjectFile });
        FStore.Insert({ .ProjectFile = "/c/Third.dproj" }, { TField::ProjectFile });
        auto* layout = new QVBoxLayout(&FWindow);
        for (QWidget* widget : std::initializer_list<QWidget*> {
                 FRibbon, FLookup, FAndroid, FFormat, FColor, FCompression, FWidth })
            layout->addWidget(widget);
        FTable.Open(FStore);
        FWindow.show();
        FWindow.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&FWindow));
    }

    QSlider* Slider() const { return FCompression->findChild<QSlider*>(); }
    QTableView* OpenSwatches() const
    {
        QTest::mouseClick(FColor, Qt::LeftButton);
        return FColor->findChild<QTableView*>();
    }

    TProjectStore FStore { Path("Corvadine.db") };
    TProjectsTable FTable;
    QWidget FWindow;
    TRibbon* FRibbon = new TRibbon(&FWindow);
    TProjectLookup* FLookup = new TProjectLookup(FTable, &FWindow);
    TFieldCheckBox* FAndroid = new TFieldCheckBox("Android", FTable, TField::IncAndroid, &FWindow);
    TFieldComboBox* FFormat = new TFieldComboBox(
        { { 1, "256 Colors" }, { 2, "True Color" } }, FTable, TField::PixelFormat, &FWindow);
    TColorBox* FColor = new TColorBox(FTable, TField::PickColor, &FWindow);
    TFieldSlider* FCompression = new TFieldSlider(FTable, TField::Compression, &FWindow);
    TFieldNumberEdit* FWidth = new TFieldNumberEdit(FTable, TField::TwoxSize, &FWindow);
};

} // namespace

TEST_F(FieldEditorsTest, ChangesAreWrittenAtOnceButNotSavedAndCancelTakesThemBack)
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

    EXPECT_EQ(FTable.Rows().front().PixelFormat, 1);
    FTable.Cancel();
    EXPECT_TRUE(FAndroid->isChecked());
    EXPECT_EQ(FFormat->currentText(), "256 Colors");
    EXPECT_EQ(FWidth->text(), "400");
}

TEST_F(FieldEditorsTest, ChoosingWhatIsThereOrScrollingPastStartsNoEdit)
{
    FFormat->showPopup();
    QTest::keyClick(FFormat->view(), Qt::Key_Return);
    FWindow.setFocus();
    for (QWidget* widget : std::initializer_list<QWidget*> { FFormat, FLookup, Slider() }) {
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
    EXPECT_FALSE(FFormat->Value() || FColor->HasValue() || FCompression->Value() || FWidth->Value());
    QTest::keyClicks(FWidth, "8");
    EXPECT_EQ(FTable.Current().TwoxSize, 8);
    QTest::keyClick(FWidth, Qt::Key_Backspace);
    EXPECT_EQ(FTable.Current().TwoxSize, std::nullopt);
    FTable.Cancel();

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
    QSlider* slider = Slider();
    const auto moveByKey = [&] {
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        EXPECT_EQ(FCompression->Value(), 7);
        EXPECT_EQ(FTable.State(), TState::Browse) << "not on each move";
    };
    const auto expectWritten = [&](const char* how) {
        EXPECT_EQ(FTable.Current().Compression, FCompression->Value()) << how;
        EXPECT_EQ(FTable.State(), TState::Edit) << how;
        FTable.Cancel();
        EXPECT_EQ(FCompression->Value(), 6) << how;
    };
    moveByKey();
    QTest::keyClick(slider, Qt::Key_Tab);
    expectWritten("focus");
    moveByKey();
    QTest::keyPress(slider, Qt::Key_Control);
    expectWritten("the first key of a shortcut");

    slider->setSliderDown(true);
    slider->setValue(10);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(slider, &leave);
    EXPECT_EQ(FTable.State(), TState::Browse) << "a drag goes on outside";
    slider->setSliderDown(false);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(slider->width() - 1, -40));
    QCoreApplication::processEvents();
    EXPECT_EQ(FTable.Current().Compression, 10);
    expectWritten("a drag that ends outside");

    moveByKey();
    QApplication::sendEvent(slider, &leave);
    expectWritten("pointer");

    moveByKey();
    FTable.LocateByID(2);
    QTest::keyClick(slider, Qt::Key_Tab);
    EXPECT_EQ(FTable.State(), TState::Browse) << "a move on another project's slider is nobody's";
}

TEST_F(FieldEditorsTest, ColorBoxWritesNamedAndOtherColorsAndPreviewsWithout)
{
    QTableView* swatches = OpenSwatches();
    ASSERT_TRUE(swatches);
    EXPECT_TRUE(TFieldEditor::IsFieldEditor(swatches));
    const auto& colors = NamedColors();
    EXPECT_EQ(colors.size(), 138U);
    EXPECT_EQ(colors[29].Name, "black") << "the neutral ones fill three runs";
    const auto tomato = std::ranges::find(colors, QStringLiteral("tomato"), &TNamedColor::Name);
    ASSERT_NE(tomato, colors.end());
    const auto position = static_cast<int>(tomato - colors.begin());
    const QModelIndex cell = swatches->model()->index(position % NamedColorRun, position / NamedColorRun);
    QTest::mouseClick(swatches->viewport(), Qt::LeftButton, {}, swatches->visualRect(cell).center());
    EXPECT_EQ(FTable.Current().PickColor, 0x4763FF); // #FF6347
    EXPECT_EQ(FColor->Value(), 0x4763FF);

    OpenSwatches();
    QTest::mouseClick(FWindow.windowHandle(), Qt::LeftButton, {}, FColor->geometry().center());
    QCoreApplication::processEvents();
    EXPECT_FALSE(QApplication::activePopupWidget()) << "a click on the box closes its list";

    for (const auto& answer : { std::optional<QColor>(), std::optional(QColor(1, 2, 3)) }) {
        FColor->SetColorDialog([&](const QColor& current) {
            EXPECT_EQ(current, QColor("tomato"));
            return answer;
        });
        QTest::mouseClick(OpenSwatches()->parentWidget()->findChild<QPushButton*>(), Qt::LeftButton);
        EXPECT_EQ(FTable.Current().PickColor, answer ? 0x030201 : 0x4763FF);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    FTable.Post();
    FColor->ShowColor(-1);
    EXPECT_EQ(FColor->Value(), -1);
    EXPECT_EQ(FTable.State(), TState::Browse);
    FTable.SetField(TField::TwoxSize, 5);
    EXPECT_EQ(FColor->Value(), -1) << "an edit elsewhere leaves the preview";
    FTable.Cancel();
    EXPECT_EQ(FColor->Value(), 0x030201);
}

TEST_F(FieldEditorsTest, ErrorsOfTheTableReachTheHandlerAndTheOldValueIsShown)
{
    TFieldComboBox broken({ { 1, "x" } }, FTable, TField::TwoxSize);
    QString told;
    broken.SetErrorHandler([&](const QString& text) { told = text; });
    broken.setItemData(0, "no number");
    broken.setCurrentIndex(0);
    emit broken.activated(0);
    EXPECT_THAT(told.toStdString(), ::testing::HasSubstr("TwoxSize"));
    EXPECT_EQ(broken.Value(), std::nullopt);
}

TEST_F(FieldEditorsTest, RibbonLeavesTheFocusAndCommandsHeedTheirRules)
{
    QStringList log;
    bool isAllowed = true;
    TFormActions actions;
    TFormAction& save = actions.Add(
        "&Save Changes", {}, [&] { log << "save"; }, [&] { return isAllowed; });
    TFormAction& pick = actions.Add("Pick Color", {}, [&] { log << "pick"; });
    save.Action()->setShortcut(QKeySequence::Save);
    QPointer<QToolButton> saveButton = FRibbon->AddButton("Project", save);
    TRibbonButton* pickButton = FRibbon->AddButton("General", pick);
    pickButton->SetCheckable(true);
    QCoreApplication::processEvents();

    Slider()->setFocus();
    QTest::mouseClick(saveButton, Qt::LeftButton);
    EXPECT_TRUE(TFieldEditor::IsFieldEditor(QApplication::focusWidget()));
    EXPECT_FALSE(TFieldEditor::IsFieldEditor(FLookup) || TFieldEditor::IsFieldEditor(nullptr));
    QTest::keyClick(FWidth, Qt::Key_S, Qt::ControlModifier);
    QTest::keyClick(FWidth, Qt::Key_S, Qt::AltModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return log.size() == 3; })) << "the Alt key shows the button pressed";
    EXPECT_EQ(std::exchange(log, {}), QStringList({ "save", "save", "save" }));

    isAllowed = false; // before the event loop has been idle
    QTest::mouseClick(saveButton, Qt::LeftButton);
    save.Execute();
    EXPECT_FALSE(saveButton->isEnabled());
    isAllowed = true;
    actions.UpdateAll();
    EXPECT_TRUE(saveButton->isEnabled());
    FRibbon->setEnabled(false);
    QTest::keyClick(FWidth, Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(log, QStringList());
    pick.Execute();
    EXPECT_TRUE(pickButton->isChecked());
    pickButton->setChecked(false);
    EXPECT_FALSE(pick.IsChecked());
    EXPECT_EQ(log, QStringList("pick")) << "released, not clicked";
}

TEST_F(FieldEditorsTest, LookupFollowsTheUserAndSetValueButNotTheCurrentRow)
{
    QList<qint64> chosen;
    QObject::connect(FLookup, &TProjectLookup::ValueChosen, [&](qint64 id) {
        chosen << id;
        FTable.LocateByID(id);
    });
    EXPECT_EQ(FLookup->count(), 3);
    EXPECT_EQ(FLookup->Text(), "");
    FLookup->SetValue(2);
    FLookup->SetValue(2);
    EXPECT_EQ(std::exchange(chosen, {}), QList<qint64>({ 2 }));
    EXPECT_EQ(FLookup->Text(), "/b/Second.dproj");

    FLookup->showPopup();
    QTest::keyClick(FLookup->view(), Qt::Key_Down);
    QTest::keyClick(FLookup->view(), Qt::Key_Return);
    EXPECT_EQ(std::exchange(chosen, {}), QList<qint64>({ 3 }));
    EXPECT_EQ(FTable.Current().ID, 3);

    FTable.Delete();
    EXPECT_EQ(FTable.Current().ID, 2);
    EXPECT_EQ(FLookup->count(), 2);
    EXPECT_EQ(FLookup->Value(), 3);
    EXPECT_EQ(FLookup->Text(), "/c/Third.dproj") << "as it was";

    FTable.Append(); // the database gives the last row's ID again
    FTable.SetField(TField::ProjectFile, "/d/Fourth.dproj");
    FTable.Post();
    FLookup->SetValue(FTable.Current().ID);
    EXPECT_EQ(FLookup->Text(), "/d/Fourth.dproj");

    FLookup->SetValue(std::nullopt);
    EXPECT_EQ(FLookup->Text(), "");
    EXPECT_EQ(chosen, QList<qint64>());
}

TEST_F(FieldEditorsTest, LookupListIsAsWideAsItsPathsAndKeepsTheUsersSize)
{
    FTable.SetField(TField::ProjectFile, "/" + QString(120, 'x') + "/Long.dproj");
    FTable.Post();
    FLookup->SetValue(1);
    FLookup->showPopup();
    QWidget* list = FLookup->view()->window();
    EXPECT_GE(FLookup->view()->viewport()->width(), FLookup->view()->sizeHintForColumn(0));
    EXPECT_LT(FLookup->width(), list->width());

    QWidget* grip = list->childAt(list->width() - 4, list->height() - 4);
    ASSERT_TRUE(grip);
    const QSize wanted(500, 200);
    const QPoint way(wanted.width() - list->width(), wanted.height() - list->height());
    QTest::mousePress(grip, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseMove(grip, QPoint(5, 5) + way);
    QTest::mouseRelease(grip, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(list->size(), wanted);
    EXPECT_TRUE(list->isVisible());
    FLookup->hidePopup();
    FLookup->showPopup();
    EXPECT_EQ(list->size(), wanted);
}
