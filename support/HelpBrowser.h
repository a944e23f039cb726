#pragma once

#include <QImage>
#include <QTextBrowser>

#include <functional>

class QTextFragment;

namespace Corvadine {

class TChmArchive;

// Shows the pages of one help file. Whatever a page asks for, it gets from the archive or not at all: no
// file, no network. A link to another page is followed; one to the web or to a mail address goes to the
// system once it is clicked; any other does nothing.
class THelpBrowser : public QTextBrowser {
    Q_OBJECT

public:
    explicit THelpBrowser(QWidget* parent);

    // Forgets the pages seen. REQUIRES: `archive` outlives this, or the next call.
    void SetArchive(const TChmArchive* archive);

    // Shows a page by its path in the archive, perhaps with "#anchor"; false, and nothing changes, if there
    // is none.
    bool ShowPage(const QString& path);

    // The path of the page that is shown, without an anchor.
    QString Page() const { return source().path(); }

    // Selects the next `text`, starting over at the end (or the beginning, if backwards). False if the page
    // has none.
    bool FindNext(const QString& text, QTextDocument::FindFlags flags);

    // Where links out of the archive go; the system's browser at first.
    void SetLinkOpener(std::function<void(const QUrl&)> opener) { FOpenLink = std::move(opener); }

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
    std::function<void(const QUrl&)> FOpenLink;
};

} // namespace Corvadine
