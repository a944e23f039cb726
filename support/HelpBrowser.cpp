#include "support/HelpBrowser.h"

#include "support/ChmArchive.h"

#include <QBuffer>
#include <QDesktopServices>
#include <QEvent>
#include <QImageReader>
#include <QTextBlock>
#include <QtMath>

#include <algorithm>
#include <vector>

namespace Corvadine {

namespace {

// Pages have addresses of their own, so that no address of theirs can mean a file of the system.
const QString Scheme = QStringLiteral("help");

constexpr qint64 MaxPicturePixels = 16 << 20;

QUrl AddressOf(const QString& path)
{
    QUrl url(path, QUrl::TolerantMode);
    url.setScheme(Scheme);
    return url;
}

bool IsDark(const QPalette& palette)
{
    return palette.color(QPalette::Text).lightness() > palette.color(QPalette::Base).lightness();
}

// Decodes a picture in a format of the web, unless it would be huge.
QImage Decoded(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    const QByteArray format = reader.format();
    const QSize size = reader.size();
    if ((format != "png" && format != "jpeg" && format != "gif") || size.isEmpty()
        || qint64(size.width()) * size.height() > MaxPicturePixels)
        return {};
    return reader.read();
}

// "/main.png" becomes "/main-dark@2x.png".
QString WithSuffix(const QString& path, const QString& suffix)
{
    const qsizetype dot = path.lastIndexOf(u'.');
    return dot < 0 ? path : path.left(dot) + suffix + path.mid(dot);
}

// What a page without a picture shows in its place. Not nothing: the text document would then look for a
// file of that name on the disk.
QImage NoPicture()
{
    QImage pixel(1, 1, QImage::Format_ARGB32);
    pixel.fill(Qt::transparent);
    return pixel;
}

} // namespace

THelpBrowser::THelpBrowser(QWidget* parent)
    : QTextBrowser(parent), FOpenLink([](const QUrl& link) { QDesktopServices::openUrl(link); })
{
    setOpenLinks(false);
    setUndoRedoEnabled(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // or fitting pictures could make it come and go
    connect(this, &QTextBrowser::anchorClicked, this, &THelpBrowser::Follow);
}

void THelpBrowser::SetArchive(const TChmArchive* archive)
{
    FArchive = archive;
    clearHistory();
    if (HasPage(source()))
        reload(); // it may have changed
}

bool THelpBrowser::ShowPage(const QString& path)
{
    const QUrl url = AddressOf(path);
    if (!HasPage(url))
        return false;
    setSource(url);
    return true;
}

bool THelpBrowser::FindNext(const QString& text, QTextDocument::FindFlags flags)
{
    if (text.isEmpty() || find(text, flags))
        return true;
    const QTextCursor before = textCursor();
    moveCursor(flags.testFlag(QTextDocument::FindBackward) ? QTextCursor::End : QTextCursor::Start);
    if (find(text, flags))
        return true;
    setTextCursor(before);
    return false;
}

QVariant THelpBrowser::loadResource(int type, const QUrl& url)
{
    const bool isOurs = FArchive != nullptr && url.scheme() == Scheme && url.host().isEmpty();
    if (type == QTextDocument::ImageResource) {
        const QImage picture = isOurs ? Picture(url.path()) : QImage();
        return picture.isNull() ? NoPicture() : picture;
    }
    if (isOurs)
        if (const auto bytes = FArchive->Read(url.path()))
            return *bytes;
    return QByteArray();
}

// The variants that help files of this program bring: for a dark theme, and twice as large.
QImage THelpBrowser::Picture(const QString& path) const
{
    QStringList themes { QString() };
    if (IsDark(palette()))
        themes.prepend(QStringLiteral("-dark"));
    for (const QString& theme : themes)
        for (const int ratio : { 2, 1 }) {
            const QString scale = ratio == 2 ? QStringLiteral("@2x") : QString();
            const auto bytes = FArchive->Read(WithSuffix(path, theme + scale));
            QImage picture = bytes ? Decoded(*bytes) : QImage();
            if (picture.isNull())
                continue;
            picture.setDevicePixelRatio(ratio);
            return picture;
        }
    return {};
}

bool THelpBrowser::HasPage(const QUrl& url) const
{
    return FArchive != nullptr && url.scheme() == Scheme && FArchive->Read(url.path()).has_value();
}

// Colours of links and the choice of pictures are taken when a page is read.
void THelpBrowser::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && HasPage(source()))
        reload();
}

// Every way to another page ends here: ShowPage(), history, reloading.
void THelpBrowser::doSetSource(const QUrl& name, QTextDocument::ResourceType /*type*/)
{
    QTextBrowser::doSetSource(name, QTextDocument::HtmlResource); // the name's ending decides nothing
    FitPictures();
}

void THelpBrowser::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    FitPictures();
}

// Pictures that are wider than the page are narrowed, and all are brought to the pixels of the screen here: a
// text document would only pick some of theirs.
void THelpBrowser::FitPictures()
{
    const int room = viewport()->width() - qCeil(2 * document()->documentMargin());
    std::vector<QTextFragment> pictures;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        for (auto i = block.begin(); !i.atEnd(); ++i)
            if (i.fragment().charFormat().isImageFormat())
                pictures.push_back(i.fragment());
    for (const QTextFragment& fragment : pictures)
        FitPicture(fragment, room);
}

void THelpBrowser::FitPicture(const QTextFragment& fragment, int room)
{
    constexpr int AskedWidth = QTextFormat::UserProperty;
    QTextImageFormat format = fragment.charFormat().toImageFormat();
    const QUrl address = document()->baseUrl().resolved(QUrl(format.name()));
    const int asked =
        format.hasProperty(AskedWidth) ? format.intProperty(AskedWidth) : qRound(format.width());
    const int width = std::min(asked, room);
    if (width <= 0 || (format.hasProperty(AskedWidth) && width == qRound(format.width())))
        return;
    const QImage picture =
        loadResource(QTextDocument::ImageResource, address)
            .value<QImage>()
            .convertToFormat(QImage::Format_ARGB32_Premultiplied); // a palette would dither
    QImage fitted = picture.scaledToWidth(qCeil(width * devicePixelRatioF()), Qt::SmoothTransformation);
    if (fitted.isNull()) // so narrow that it would become too tall for the memory
        fitted = NoPicture();
    fitted.setDevicePixelRatio(devicePixelRatioF());
    document()->addResource(QTextDocument::ImageResource, address, fitted);
    format.setProperty(AskedWidth, asked);
    format.setWidth(width);
    QTextCursor cursor(document());
    cursor.setPosition(fragment.position());
    cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
    cursor.setCharFormat(format);
}

void THelpBrowser::Follow(const QUrl& link)
{
    static const QStringList Outside { QStringLiteral("http"), QStringLiteral("https"),
        QStringLiteral("mailto") };
    const QUrl url = source().resolved(link);
    if (HasPage(url))
        setSource(url);
    else if (Outside.contains(url.scheme()))
        FOpenLink(url);
}

} // namespace Corvadine
