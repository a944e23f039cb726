#include "app/MainControls.h"

#include "app/ColorBox.h"
#include "app/FieldEditors.h"
#include "app/ProjectLookup.h"
#include "base/Literals.h"
#include "generate/pixels/RenderOptions.h"
#include "widgets/CaptionGroup.h"
#include "widgets/ImageView.h"
#include "widgets/NoteArea.h"
#include "widgets/Ribbon.h"
#include "widgets/ThumbnailView.h"

#include <QGridLayout>
#include <QLabel>
#include <QMainWindow>
#include <QProgressBar>
#include <QToolButton>

namespace Corvadine {

namespace {

constexpr int Gap = 6;
constexpr int ViewSide = 230;
constexpr int PanelWidth = 250;
constexpr int ColumnWidth = 2 * PanelWidth + Gap;

// One line for each step. The misspelled "Piick" is kept, because older releases have the same text.
const QString Instructions =
    u"1. Click on the Add Project button.\n"
    "2. Add an Icon Image (1024 x 1024) recommended.\n"
    "3. Add the launch image if it is to be different to the Icon image.\n"
    "4. Tick the platforms you want images to be generated for.\n"
    "5. Set the background color. This can be done by using the Piick Color button once an image is "
    "assigned.\n"
    "6. Save any changes.\n"
    "7. Click on the generate button.\n"
    "8. Click on the Update Project button. A backup of the project file will be automatically made."_s;

class TMainLayout {
public:
    TMainLayout(
        QMainWindow& window, TProjectsTable& table, const std::function<void(const QString&)>& showError)
        : FWindow(window), FTable(table), FShowError(showError)
    {
    }

    TMainControls Make()
    {
        auto* central = new QWidget(&FWindow);
        auto* rows = new QVBoxLayout(central);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(0);
        FControls.dxRibbon1 = new TRibbon(central);
        rows->addWidget(FControls.dxRibbon1);
        auto* columns = new QHBoxLayout;
        columns->setContentsMargins(Gap, Gap, Gap, Gap);
        columns->setSpacing(Gap);
        columns->addWidget(LeftColumn());
        columns->addWidget(Thumbnails(), 1);
        rows->addLayout(columns, 1);
        FWindow.setCentralWidget(central);
        return FControls;
    }

private:
    QWidget* LeftColumn()
    {
        auto* column = new QWidget;
        column->setFixedWidth(ColumnWidth);
        auto* rows = new QVBoxLayout(column);
        rows->setContentsMargins(0, 0, 0, 0);
        rows->setSpacing(Gap);
        rows->addWidget(CurrentProject());
        rows->addLayout(SideBySide(ImagePanel("Icon Image", "Remove the icon image",
                                       FControls.ImageEnViewIcon, FControls.btnRemoveIcon),
            ImagePanel("Launch Image", "Remove the launch image", FControls.ImageEnViewSplash,
                FControls.btnRemoveSplash)));
        rows->addLayout(SideBySide(Platforms(), Filter()));
        rows->addWidget(ImageOptions());
        rows->addWidget(Progress());
        rows->addWidget(new TNoteArea(Instructions, ColumnWidth));
        rows->addStretch(1);
        return column;
    }

    static QLayout* SideBySide(QWidget* left, QWidget* right)
    {
        auto* row = new QHBoxLayout;
        row->setSpacing(Gap);
        row->addWidget(left, 1);
        row->addWidget(right);
        return row;
    }

    QWidget* CurrentProject()
    {
        FControls.layGroupCurrentProject = new TCaptionGroup(u"Current Project"_s);
        FControls.cbProjects = new TProjectLookup(FTable);
        FControls.cbProjects->setAccessibleName(u"Current Project"_s);
        FControls.layGroupCurrentProject->SetContent(FControls.cbProjects);
        return FControls.layGroupCurrentProject;
    }

    static QWidget* ImagePanel(
        const char* caption, const char* remove, TImageView*& view, QToolButton*& close)
    {
        auto* panel = new TCaptionGroup(QString::fromLatin1(caption));
        panel->setFixedWidth(PanelWidth);
        view = new TImageView(panel);
        view->setFixedSize(ViewSide, ViewSide);
        view->setAccessibleName(QString::fromLatin1(caption));
        panel->SetContent(view);
        close = panel->AddCloseButton(QString::fromLatin1(remove));
        return panel;
    }

    QWidget* Platforms()
    {
        auto* boxes = new QWidget;
        auto* grid = new QGridLayout(boxes);
        grid->setContentsMargins(0, 0, 0, 0);
        const std::pair<const char*, TField> platforms[] { { "Android", TField::IncAndroid },
            { "iPhone", TField::IncIPhone }, { "iPad", TField::IncIPad }, { "Windows", TField::IncWindows } };
        int column = 0;
        for (const auto& [caption, field] : platforms)
            grid->addWidget(
                Reporting(new TFieldCheckBox(QString::fromLatin1(caption), FTable, field)), 0, column++);
        FControls.layGroupPlatforms = new TCaptionGroup(u"Platforms"_s);
        FControls.layGroupPlatforms->SetContent(boxes);
        return FControls.layGroupPlatforms;
    }

    QWidget* Filter()
    {
        std::vector<TFieldComboBox::TChoice> choices;
        for (const TFilterInfo& info : FilterInfos())
            choices.push_back({ static_cast<int>(info.Filter), QString::fromLatin1(info.Caption) });
        auto* filter = Reporting(new TFieldComboBox(choices, FTable, TField::ResampleFilter));
        filter->setAccessibleName(u"Sampling Filter"_s);
        FControls.layGroupFilter = new TCaptionGroup(u"Sampling Filter"_s);
        FControls.layGroupFilter->setFixedWidth(200);
        FControls.layGroupFilter->SetContent(filter);
        return FControls.layGroupFilter;
    }

    QWidget* ImageOptions()
    {
        FControls.cbBackground = Reporting(new TColorBox(FTable, TField::PickColor));
        auto* format = Reporting(
            new TFieldComboBox({ { static_cast<int>(TOutputFormat::Colors256), u"256 Colors"_s },
                                   { static_cast<int>(TOutputFormat::TrueColor), u"True Color"_s } },
                FTable, TField::PixelFormat));
        FControls.cbCompression = Reporting(new TFieldSlider(FTable, TField::Compression));
        FControls.cb2xWidth = Reporting(new TFieldNumberEdit(FTable, TField::TwoxSize));
        auto* options = new QWidget;
        auto* grid = new QGridLayout(options);
        grid->setContentsMargins(0, 0, 0, 0);
        grid->setHorizontalSpacing(Gap * 2);
        grid->setVerticalSpacing(2);
        AddCaptioned(*grid, 0, "Background", FControls.cbBackground, 121);
        AddCaptioned(*grid, 1, "Output Format", format, 110);
        AddCaptioned(*grid, 2, "Compression", FControls.cbCompression, 0);
        AddCaptioned(*grid, 3, "2x Width", FControls.cb2xWidth, 70);
        grid->setColumnStretch(2, 1);
        FControls.layGroupProjectOptions = new TCaptionGroup(u"Image Options"_s);
        FControls.layGroupProjectOptions->SetContent(options);
        return FControls.layGroupProjectOptions;
    }

    static void AddCaptioned(QGridLayout& grid, int column, const char* caption, QWidget* editor, int width)
    {
        auto* label = new QLabel(QString::fromLatin1(caption));
        label->setBuddy(editor);
        editor->setAccessibleName(label->text());
        if (width > 0)
            editor->setFixedWidth(width);
        grid.addWidget(label, 0, column);
        grid.addWidget(editor, 1, column);
    }

    QWidget* Progress()
    {
        FControls.PB = new QProgressBar;
        FControls.PB->setRange(0, 1);
        FControls.PB->setValue(0);
        FControls.PB->setTextVisible(false);
        FControls.PB->setFixedHeight(14);
        FControls.PB->setAccessibleName(u"Progress"_s);
        return FControls.PB;
    }

    QWidget* Thumbnails()
    {
        auto* group = new TCaptionGroup(u"Icon/Launch Images"_s);
        FControls.MView = new TThumbnailView(group);
        FControls.MView->setAccessibleName(u"Generated images"_s);
        group->SetContent(FControls.MView);
        return group;
    }

    template <typename TEditor> TEditor* Reporting(TEditor* editor)
    {
        editor->SetErrorHandler(FShowError);
        return editor;
    }

    QMainWindow& FWindow;
    TProjectsTable& FTable;
    const std::function<void(const QString&)>& FShowError;
    TMainControls FControls {};
};

} // namespace

TMainControls MakeMainControls(
    QMainWindow& window, TProjectsTable& table, const std::function<void(const QString&)>& showError)
{
    return TMainLayout(window, table, showError).Make();
}

} // namespace Corvadine
