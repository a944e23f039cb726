#pragma once

#include "app/FieldEditors.h"
#include "app/MainFrm.h"
#include "app/ProjectLookup.h"
#include "dialogs/Prompts.h"
#include "tests/DialogTesting.h"
#include "widgets/Ribbon.h"

#include <QImage>
#include <QToolButton>

#include <functional>
#include <memory>

namespace Corvadine::Testing {

// Gives prepared answers, and records the texts that were shown.
class TScriptedPrompts : public TPrompts {
public:
    void ShowError(const QString& text) override { Shown.append("error: " + text); }
    void Inform(const QString& text) override { Shown.append("info: " + text); }
    bool Confirm(const QString& text) override
    {
        Shown.append("confirm: " + text);
        return Answer();
    }
    std::optional<QString> ChooseProjectFile() override { return std::exchange(ProjectFile, std::nullopt); }
    std::optional<QString> ChooseImage(const QString& startFolder) override
    {
        StartFolder = startFolder;
        return std::exchange(Image, std::nullopt);
    }

    QStringList TakeShown() { return std::exchange(Shown, {}); }

    std::function<bool()> Answer = [] { return true; };
    std::optional<QString> ProjectFile;
    std::optional<QString> Image;
    QString StartFolder;
    QStringList Shown;
};

// The whole window. Tests use the window as a user would. There are three project files for the tests to add.
class TMainFormTest : public TFolderTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir().mkpath(Path("program")));
        for (const char* name : { "A", "B", "C" })
            PutFile(ProjectFile(name),
                "<Project><PropertyGroup><ProjectGuid>{1}</ProjectGuid><UWP_DelphiLogo44/>"
                "<UWP_DelphiLogo150>x</UWP_DelphiLogo150></PropertyGroup></Project>");
        QImage icon(60, 40, QImage::Format_ARGB32);
        icon.fill(qRgba(10, 20, 30, 255));
        ASSERT_TRUE(icon.save(Path("icon.png")));
        icon.fill(qRgb(200, 0, 0));
        ASSERT_TRUE(icon.save(Path("launch.png")));
    }

    QString ProjectFile(const QString& name) const { return Path(name + "/" + name + ".dproj"); }

    // Starts the program, or restarts it, and adds projects.
    void Start(const QStringList& projects = {})
    {
        FForm.reset();
        FForm = std::make_unique<TMainForm>(Path("program"), FPrompts);
        FForm->StartUp();
        FForm->show();
        LetIdle();
        for (const QString& name : projects)
            Add(name);
    }

    const TMainControls& Ui() const { return FForm->Controls(); }
    TProjectsTable& Table() const { return FForm->tblProjects(); }
    TProject Current() const { return Table().Current(); }
    // Chooses a project in the lookup.
    void Choose(qint64 id) const { Ui().cbProjects->SetValue(id); }

    // Makes the window active again, as after work with another program.
    void ComeBack() const
    {
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(FForm.get());
    }

    QToolButton* Button(const QString& caption) const
    {
        for (QToolButton* button : Ui().dxRibbon1->findChildren<QToolButton*>())
            if (button->defaultAction() != nullptr && button->defaultAction()->text().remove('&') == caption)
                return button;
        ADD_FAILURE() << "no button " << caption.toStdString();
        return nullptr;
    }

    void Click(const QString& caption) const
    {
        LetIdle();
        QTest::mouseClick(Button(caption), Qt::LeftButton);
        LetIdle();
    }

    bool IsEnabled(const QString& caption) const
    {
        LetIdle();
        return Button(caption)->isEnabled();
    }

    void Add(const QString& name)
    {
        FPrompts.ProjectFile = ProjectFile(name);
        Click("Add Project");
    }

    QString OutputFolder(const QString& name) const { return Path(name + "/" + name + "/Corvadine"); }

    TScriptedPrompts FPrompts;
    std::unique_ptr<TMainForm> FForm;
};

} // namespace Corvadine::Testing
