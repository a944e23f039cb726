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

// The viewer of compiled help files for systems that have none: the contents at the left, a page at the
// right, and above them back, forward, home and a search in the page. Escape closes it. It remembers nothing
// from one run of the program to the next, and does not keep the program running.
class THelpWindow : public QWidget {
    Q_OBJECT

public:
    THelpWindow();
    ~THelpWindow() override;

    // Show the window with a page of `file`. Nothing happens for a file that cannot be read or does not have
    // the topic. The file is read again only after it has changed.
    void ShowTopic(const QString& file, quint32 topic);
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
