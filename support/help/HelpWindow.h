#pragma once

#include <QDateTime>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QLineEdit;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;

namespace Corvadine {

class TChmArchive;
class THelpBrowser;

// A viewer of compiled help files, for systems that have no viewer. The table of contents is at the left, and
// a page is at the right. The tool bar has Back, Forward, Home and a search in the page. Escape closes the
// window. The window stores no settings and does not keep the program running.
class THelpWindow : public QWidget {
    Q_OBJECT

public:
    THelpWindow();
    ~THelpWindow() override;

    // Shows the window with the page of `file` for `topic`. The window does not open if `file` cannot be read
    // or does not have the topic. `file` is read again only if it has changed.
    void ShowTopic(const QString& file, quint32 topic);

    // Shows the window with the home page of `file` and focuses the contents. The window does not open if
    // `file` cannot be read or has no home page. `file` is read again only if it has changed.
    void ShowContents(const QString& file);

    THelpBrowser* const Browser;
    QTreeWidget* const ContentsTree;
    QLineEdit* const FindEdit;

private:
    QToolBar* MakeToolBar();
    void AddShortcut(const QKeySequence& keys, std::function<void()> execute);

    bool Open(const QString& file);
    void FillContents();
    void Present();
    void SourceChanged(const QUrl& source);
    void GoHome();
    void Find(bool backwards);

    QLabel* FFindResult;
    QString FFileName;
    QDateTime FFileTime;
    std::unique_ptr<TChmArchive> FArchive;
};

} // namespace Corvadine
