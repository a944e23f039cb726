#pragma once

#include <QImage>
#include <QTextBrowser>

class QTextFragment;

namespace Corvadine {

class TChmArchive;

// Shows the pages of one help file. Pages and pictures come from the archive alone, never from the disk or
// the network. A click on a link to a page of the archive shows that page. A click on a link to the web or to
// a mail address opens the link in the system's program. A click on any other link does nothing.
class THelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit THelpBrowser(QWidget* parent);

    // Shows pages of `archive` from now on, and clears the history. `archive` may be null. If the page that
    // is shown also exists in `archive`, loads the page from there. REQUIRES: `archive` lives until the next
    // call of SetArchive() or the end of this object.
    void SetArchive(const TChmArchive* archive);

    // Shows the page `path` of the archive. `path` may end in "#anchor". Returns false, and changes nothing,
    // if there is no such page.
    bool ShowPage(const QString& path);

    // Returns the path of the page that is shown, without an anchor.
    QString Page() const { return source().path(); }

    // Selects the next occurrence of `text` on the page, or the previous occurrence if `flags` has
    // FindBackward. At the end of the page the search continues from the other end. Returns false if the page
    // does not contain `text`. Returns true for an empty text.
    bool FindNext(const QString& text, QTextDocument::FindFlags flags);

    QVariant loadResource(int type, const QUrl& url) override;

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void doSetSource(const QUrl& name, QTextDocument::ResourceType type) override;

private:
    void Follow(const QUrl& link);
    void FitPictures();
    void FitPicture(const QTextFragment& fragment, int room);
    QImage Picture(const QString& path) const;
    bool HasPage(const QUrl& url) const;

    const TChmArchive* FArchive = nullptr;
};

} // namespace Corvadine
