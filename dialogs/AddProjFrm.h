#pragma once

#include <QDialog>

class QPushButton;

namespace Corvadine {

class TShellDropDown;

// The dialog that asks for the project file to add. Run it with exec(). After Accepted, ProjectFile()
// returns a full path, exactly as displayed. The file need not exist. Every other way of closing the dialog
// gives Rejected.
class TAddProjForm : public QDialog {
    Q_OBJECT
public:
    // The drop-down opens at `startFolder`, or at the user's home folder if `startFolder` does not exist.
    TAddProjForm(QWidget* owner, const QString& startFolder);

    QString ProjectFile() const;

    TShellDropDown* const cbWizProjectFile;
    QPushButton* const btnAddProject;
    QPushButton* const btnCancel;

signals:
    // "Add Project" was pressed, but the text is not a full path. The dialog stays open. `reason` is the
    // sentence to show to the user.
    void Refused(const QString& reason);

private:
    void UpdateCommands();
    void AddProject();
};

} // namespace Corvadine
