#pragma once

#include <QDialog>
#include <QFutureWatcher>
#include <QImage>

class QAction;
class QLineEdit;
class QToolButton;

namespace Corvadine {

class TPicturePreview;
class TShellBreadCrumb;
class TShellListView;

// The dialog that asks for an image file: a path to walk along, a list of the folder's images, and a preview.
// It only returns a path. Run it with exec(): Accepted leaves a recognised image file in SelectedFile; closed
// in any other way it is Rejected.
class TImageDlgForm : public QDialog {
    Q_OBJECT
public:
    // Opens at `startFolder`, or at the user's home if that is no existing folder.
    TImageDlgForm(QWidget* owner, const QString& startFolder);

    // The full path, in the system's form, of the entry last selected or opened, folders included; empty at
    // first.
    QString SelectedFile;

    TShellBreadCrumb* const ShellBreadCrumb;
    TShellListView* const cxShellListView1;
    TPicturePreview* const cxImage1;
    QLineEdit* const edNewFilename; // never shown, see aAddImageUpdate
    QAction* const aAddImage;
    QAction* const aUpLevel;
    QToolButton* const btnAddImage;

protected:
    // Says that what was asked for cannot be done.
    virtual void Beep();

private:
    void cxShellListView1SelectItem(const QString& path);
    void cxShellListView1ExecuteItem(const QString& path);
    void aAddImageExecute();
    void aAddImageUpdate();
    void aUpLevelExecute();
    void aUpLevelUpdate();

    void SetHelpTopics();
    void MakeCommands();
    void LayOut();
    void Select(const QString& path);
    void SchedulePreview();
    void StartPreview();
    void PreviewDecoded();

    bool FSelectedIsImage = false; // SelectedFile is a recognised image file
    bool FPreviewIsDue = false;    // for the file selected by then
    QFutureWatcher<QImage> FPreview;
};

} // namespace Corvadine
