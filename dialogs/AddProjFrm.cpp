#include "dialogs/AddProjFrm.h"

#include "base/PathRules.h"
#include "project/ProjectPaths.h"
#include "widgets/HelpKey.h"
#include "widgets/Icons.h"
#include "widgets/IdleUpdate.h"
#include "widgets/NoteLabel.h"
#include "widgets/ShellDropDown.h"

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

QPushButton* MakeLargeButton(const QString& caption, QLatin1String icon, QWidget* parent)
{
    auto* button = new QPushButton(CommandIcon(icon), caption, parent);
    button->setIconSize(QSize(32, 32));
    button->setMinimumSize(130, 44);
    button->setAccessibleName(caption);
    return button;
}

TNoteLabel* MakeNote(QWidget* parent)
{
    auto* note =
        new TNoteLabel(u"Please select the <b>.dproj</b> file you wish to use in the drop-down above (a "
                       "sub-folder called "
                       "Corvadine will be automatically created to hold the icons/launch images)<br><br>"
                       "Click on the <b>Add Project</b> button when done"_s,
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
    , cbWizProjectFile(new TShellDropDown({ u"*.dproj"_s }, this))
    , btnAddProject(MakeLargeButton(u"Add Project"_s, "add-project"_L1, this))
    , btnCancel(MakeLargeButton(u"Cancel"_s, "delete-all"_L1, this))
{
    setWindowTitle(u"Add Project"_s);
    setWindowFlag(Qt::MSWindowsFixedSizeDialogHint);
    setFixedSize(ClientSize);
    SetHelpTopic(*this, HelpTopic);
    cbWizProjectFile->setObjectName(u"cbWizProjectFile"_s);
    cbWizProjectFile->setAccessibleName(u"Project file"_s);
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

// Refuses a typed text that is not a full path. A path from the tree is always a full path. The file need
// not exist.
void TAddProjForm::AddProject()
{
    const QString file = ProjectFile();
    if (!IsProjectFileName(file)) // Enter can be pressed before the button is disabled
        return;
    if (IsFullPath(file))
        accept();
    else
        emit Refused(u"Please enter the full path of the project file, or choose it."_s);
}

} // namespace Corvadine
