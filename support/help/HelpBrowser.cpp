#include "support/help/HelpBrowser.h"

#include "base/Literals.h"
#include "support/help/ChmArchive.h"

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

// The scheme of every page's address. With this scheme, no address can name a file on the disk.
const QString Scheme = u"help"_s;

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

// Decodes a PNG, JPEG or GIF picture. Returns a null image for other or damaged data, and for a picture with
// more than MaxPicturePixels.
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

// Returns a picture to show in place of a missing picture. If loadResource() returned nothing, the text
// document would look for the picture on the disk.
QImage NoPicture()
{
    QImage pixel(1, 1, QImage::Format_ARGB32);
    pixel.fill(Qt::transparent);
    return pixel;
}

} // namespace

THelpBrowser::THelpBrowser(QWidget* parent) : QTextBrowser(parent)
{
    setOpenLinks(false);
    setUndoRedoEnabled(false);
    // The scroll bar is always shown. Otherwise FitPictures() could make it appear and disappear without end.
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    connect(this, &QTextBrowser::anchorClicked, this, &THelpBrowser::Follow);
}

void THelpBrowser::SetArchive(const TChmArchive* archive)
{
    FArchive = archive;
    clearHistory();
    if (HasPage(source()))
        reload(); // the page may be different in this archive
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

// Returns the best variant of a picture. A dark theme prefers dark variants. Double size is better than
// normal size. Returns a null image if the archive has no variant.
QImage THelpBrowser::Picture(const QString& path) const
{
    QStringList themes { QString() };
    if (IsDark(palette()))
        themes.prepend(u"-dark"_s);
    for (const QString& theme : themes)
        for (const int ratio : { 2, 1 }) {
            const QString scale = ratio == 2 ? u"@2x"_s : QString();
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

// A page gets its link colors and pictures when it is loaded, so it is loaded again after a change
// of the palette.
void THelpBrowser::changeEvent(QEvent* event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && HasPage(source()))
        reload();
}

// ShowPage(), the history and reload() all end up in this function.
void THelpBrowser::doSetSource(const QUrl& name, QTextDocument::ResourceType /*type*/)
{
    QTextBrowser::doSetSource(name, QTextDocument::HtmlResource); // pages are HTML, whatever their names
    FitPictures();
}

void THelpBrowser::resizeEvent(QResizeEvent* event)
{
    QTextBrowser::resizeEvent(event);
    FitPictures();
}

// Narrows pictures that are wider than the page. Scales every picture to the pixels of the screen, because a
// text document would scale it without smoothing.
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
    // Scaling a picture that has a palette would dither the picture.
    const QImage picture = loadResource(QTextDocument::ImageResource, address)
                               .value<QImage>()
                               .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage fitted = picture.scaledToWidth(qCeil(width * devicePixelRatioF()), Qt::SmoothTransformation);
    if (fitted.isNull()) // a narrow picture can become too tall for memory
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
    static const QStringList Outside { u"http"_s, u"https"_s, u"mailto"_s };
    const QUrl url = source().resolved(link);
    if (HasPage(url))
        setSource(url);
    else if (Outside.contains(url.scheme()))
        QDesktopServices::openUrl(url);
}

} // namespace Corvadine
