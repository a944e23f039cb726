#pragma once

#include <QDialog>

class QPushButton;

namespace Corvadine {

class TShellDropDown;

// The dialog that asks for the project file to add. Run it with exec(): Accepted leaves a full path, exactly
// as displayed, in ProjectFile(), whose file may be still to come; closed in any other way it is Rejected.
class TAddProjForm : public QDialog {
    Q_OBJECT
public:
    // The drop-down opens at `startFolder`, or at the user's home if that is no existing folder.
    TAddProjForm(QWidget* owner, const QString& startFolder);

    QString ProjectFile() const;

    TShellDropDown* const cbWizProjectFile;
    QPushButton* const btnAddProject;
    QPushButton* const btnCancel;

signals:
    // "Add Project" was pressed over a text that is no such path; the dialog stays open.
    void Refused(const QString& reason);

private:
    void UpdateCommands();
    void AddProject();
};

} // namespace Corvadine
