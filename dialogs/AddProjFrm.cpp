#include "dialogs/AddProjFrm.h"

#include "base/PathRules.h"
#include "dialogs/CommandIcons.h"
#include "dialogs/HelpKey.h"
#include "dialogs/IdleUpdate.h"
#include "dialogs/NoteLabel.h"
#include "dialogs/ShellDropDown.h"
#include "project/ProjectPaths.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace Corvadine {

namespace {

constexpr QSize ClientSize(459, 303);
constexpr int HelpTopic = 2006; // see help/Corvadine.hhp
constexpr int Margin = 10;
constexpr int TreeWidth = 371;
constexpr double NoteFontScale = 1.3;

QPushButton* MakeLargeButton(const QString& caption, const QString& icon, QWidget* parent)
{
    auto* button = new QPushButton(CommandIcon(icon), caption, parent);
    button->setIconSize(QSize(32, 32));
    button->setMinimumSize(130, 44);
    button->setAccessibleName(caption);
    return button;
}

TNoteLabel* MakeNote(QWidget* parent)
{
    auto* note = new TNoteLabel(
        QStringLiteral("Please select the <b>.dproj</b> file you wish to use in the drop-down above (a "
                       "sub-folder called "
                       "Corvadine will be automatically created to hold the icons/launch images)<br><br>"
                       "Click on the <b>Add Project</b> button when done"),
        parent);
    note->setTextFormat(Qt::RichText);
    note->setAlignment(Qt::AlignCenter);
    QFont font = note->font();
    font.setPointSizeF(font.pointSizeF() * NoteFontScale);
    note->setFont(font);
    return note;
}

} // namespace

TAddProjForm::TAddProjForm(QWidget* owner, const QString& startFolder)
    : QDialog(owner)
    , cbWizProjectFile(new TShellDropDown({ QStringLiteral("*.dproj") }, this))
    , btnAddProject(MakeLargeButton(QStringLiteral("Add Project"), QStringLiteral("add-project"), this))
    , btnCancel(MakeLargeButton(QStringLiteral("Cancel"), QStringLiteral("delete-all"), this))
{
    setWindowTitle(QStringLiteral("Add Project"));
    setWindowFlag(Qt::MSWindowsFixedSizeDialogHint);
    setFixedSize(ClientSize);
    SetHelpTopic(*this, HelpTopic);
    cbWizProjectFile->setObjectName(QStringLiteral("cbWizProjectFile"));
    cbWizProjectFile->setAccessibleName(QStringLiteral("Project file"));
    cbWizProjectFile->SetPopupWidth(TreeWidth);
    cbWizProjectFile->SetStartFolder(startFolder);
    btnAddProject->setDefault(true);

    auto* bar = new QHBoxLayout;
    bar->addWidget(btnCancel);
    bar->addStretch();
    bar->addWidget(btnAddProject);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Margin, Margin, Margin, Margin);
    layout->setSpacing(Margin);
    layout->addWidget(cbWizProjectFile);
    layout->addWidget(MakeNote(this), 1);
    layout->addLayout(bar);
    setTabOrder(cbWizProjectFile, btnAddProject);
    setTabOrder(btnAddProject, btnCancel);

    connect(btnAddProject, &QPushButton::clicked, this, &TAddProjForm::AddProject);
    connect(btnCancel, &QPushButton::clicked, this, &QDialog::reject);
    new TIdleUpdate(this, [this] { UpdateCommands(); });
}

QString TAddProjForm::ProjectFile() const
{
    return cbWizProjectFile->currentText();
}

void TAddProjForm::UpdateCommands()
{
    btnAddProject->setEnabled(IsProjectFileName(ProjectFile()));
}

// What was picked has a full path; what was typed may be anything, and a file may be still to come.
void TAddProjForm::AddProject()
{
    const QString file = ProjectFile();
    if (!IsProjectFileName(file)) // keys can come faster than the dialog gets idle
        return;
    if (IsFullPath(file))
        accept();
    else
        emit Refused(QStringLiteral("Please enter the full path of the project file, or choose it."));
}

} // namespace Corvadine
