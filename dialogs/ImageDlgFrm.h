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

// The content of the preview for the selected file.
struct TImagePreview {
    QImage Picture; // null if the file cannot be decoded
    QString Fault;  // why the file cannot be decoded, as a sentence; otherwise empty
};

// The dialog that asks for an image file: a breadcrumb bar, a list of the folder's images, and a preview. The
// dialog's only result is a path. Run it with exec(). After Accepted, SelectedFile is a recognized image file
// (IsRecognisedImageFile()). Every other way of closing the dialog gives Rejected.
class TImageDlgForm : public QDialog {
    Q_OBJECT
public:
    // Opens at `startFolder`, or at the user's home folder if `startFolder` does not exist.
    TImageDlgForm(QWidget* owner, const QString& startFolder);

    // The full path of the file or folder that was selected or opened last, in the system's own form. Empty
    // at first, and when the path has more than 260 characters.
    QString SelectedFile;

    TShellBreadCrumb* const ShellBreadCrumb;
    TShellListView* const cxShellListView1;
    TPicturePreview* const cxImage1;
    QLineEdit* const edNewFilename; // never shown; see aAddImageUpdate()
    QAction* const aAddImage;
    QAction* const aUpLevel;
    QToolButton* const btnAddImage;

protected:
    // Tells the user that the selected entry cannot be chosen.
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

    bool FSelectedIsImage = false; // SelectedFile is a recognized image file
    bool FPreviewIsDue = false;    // SelectedFile waits to be decoded
    QFutureWatcher<TImagePreview> FPreview;
};

} // namespace Corvadine
