#include "support/help/HelpWindow.h"

#include "base/Error.h"
#include "support/help/ChmArchive.h"
#include "support/help/HelpBrowser.h"
#include "support/help/HelpContents.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QToolBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace Corvadine {

namespace {

constexpr QSize DesignedSize(960, 700);
constexpr int ContentsWidth = 240;
constexpr int FindWidth = 180;
constexpr int RowPadding = 8;
constexpr int PageRole = Qt::UserRole;

QString PageOf(const QTreeWidgetItem& item)
{
    return item.data(0, PageRole).toString();
}

QString WithoutAnchor(const QString& page)
{
    return page.section(u'#', 0, 0);
}

// Makes the Tab key reach every button.
void MakeButtonsFocusable(const QToolBar& bar)
{
    for (QToolButton* button : bar.findChildren<QToolButton*>())
        button->setFocusPolicy(Qt::TabFocus);
}

} // namespace

THelpWindow::THelpWindow()
    : Browser(new THelpBrowser(this))
    , ContentsTree(new QTreeWidget(this))
    , FindEdit(new QLineEdit(this))
    , FFindResult(new QLabel(this))
{
    setAttribute(Qt::WA_QuitOnClose, false); // the program ends with the main window
    ContentsTree->setHeaderHidden(true);
    ContentsTree->setAccessibleName(u"Contents"_s);
    Browser->setAccessibleName(u"Page"_s);
    Browser->document()->setDocumentMargin(16);

    auto* splitter = new QSplitter(this);
    splitter->addWidget(ContentsTree);
    splitter->addWidget(Browser);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({ ContentsWidth, DesignedSize.width() - ContentsWidth });
    splitter->setChildrenCollapsible(false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(MakeToolBar());
    layout->addWidget(splitter, 1);
    resize(DesignedSize.boundedTo(screen()->availableSize()));

    AddShortcut(Qt::Key_Escape, [this] { close(); });
    const auto showItem = [this](const QTreeWidgetItem* item) {
        if (item != nullptr)
            Browser->ShowPage(PageOf(*item));
    };
    connect(ContentsTree, &QTreeWidget::currentItemChanged, this, showItem);
    // A click on the current item scrolls back to the start of its page.
    connect(ContentsTree, &QTreeWidget::itemClicked, this, showItem);
    connect(Browser, &QTextBrowser::sourceChanged, this, &THelpWindow::SourceChanged);
}

THelpWindow::~THelpWindow()
{
    Browser->SetArchive(nullptr);
}

QToolBar* THelpWindow::MakeToolBar()
{
    auto* bar = new QToolBar(this);
    bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    QAction* back = bar->addAction(u"Back"_s, Browser, &QTextBrowser::backward);
    back->setShortcuts({ QKeySequence(Qt::ALT | Qt::Key_Left), QKeySequence(Qt::Key_Back) });
    QAction* forward = bar->addAction(u"Forward"_s, Browser, &QTextBrowser::forward);
    forward->setShortcuts({ QKeySequence(Qt::ALT | Qt::Key_Right), QKeySequence(Qt::Key_Forward) });
    QAction* home = bar->addAction(u"Home"_s, this, &THelpWindow::GoHome);
    home->setShortcut(Qt::ALT | Qt::Key_Home);
    for (QAction* action : { back, forward, home })
        action->setToolTip(
            u"%1 (%2)"_s.arg(action->text(), action->shortcut().toString(QKeySequence::NativeText)));
    back->setEnabled(false);
    forward->setEnabled(false);
    connect(Browser, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
    connect(Browser, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);

    auto* gap = new QWidget(bar);
    gap->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    bar->addWidget(gap);
    bar->addWidget(FFindResult);
    FindEdit->setPlaceholderText(u"Find in page"_s);
    FindEdit->setAccessibleName(FindEdit->placeholderText());
    FindEdit->setClearButtonEnabled(true);
    FindEdit->setFixedWidth(FindWidth);
    bar->addWidget(FindEdit);
    connect(FindEdit, &QLineEdit::returnPressed, this, [this] { Find(false); });
    connect(FindEdit, &QLineEdit::textChanged, FFindResult, &QLabel::clear);
    AddShortcut(QKeySequence::Find, [this] {
        FindEdit->setFocus();
        FindEdit->selectAll();
    });
    AddShortcut(Qt::Key_F3, [this] { Find(false); });
    AddShortcut(Qt::SHIFT | Qt::Key_F3, [this] { Find(true); });
    MakeButtonsFocusable(*bar);
    return bar;
}

void THelpWindow::AddShortcut(const QKeySequence& keys, std::function<void()> execute)
{
    connect(new QShortcut(keys, this), &QShortcut::activated, this, std::move(execute));
}

void THelpWindow::ShowTopic(const QString& file, quint32 topic)
{
    if (Open(file) && Browser->ShowPage(FArchive->TopicPage(topic)))
        Present();
}

void THelpWindow::ShowContents(const QString& file)
{
    if (!Open(file) || !Browser->ShowPage(FArchive->HomePage()))
        return;
    ContentsTree->setFocus();
    Present();
}

// Opens `file` if it is not open yet or has changed. If `file` cannot be read, returns false and keeps
// the current archive.
bool THelpWindow::Open(const QString& file)
{
    const QDateTime time = QFileInfo(file).lastModified();
    if (FArchive && file == FFileName && time == FFileTime)
        return true;
    try {
        auto archive = std::make_unique<TChmArchive>(file);
        Browser->SetArchive(archive.get());
        FArchive = std::move(archive);
    } catch (const TError&) {
        return false; // no message: the program works without its help
    }
    FFileName = file;
    FFileTime = time;
    setWindowTitle(FArchive->Title());
    FillContents();
    return true;
}

void THelpWindow::FillContents()
{
    const QSignalBlocker blocker(ContentsTree);
    ContentsTree->clear();
    // The root, followed by the last item of each level.
    std::vector<QTreeWidgetItem*> parents { ContentsTree->invisibleRootItem() };
    const QByteArray file = FArchive->Read(FArchive->ContentsFile()).value_or(QByteArray());
    for (const THelpEntry& entry : ParseHelpContents(file)) {
        const auto level = static_cast<std::size_t>(entry.Level);
        parents.resize(level + 1);
        auto* item = new QTreeWidgetItem(parents.back(), { entry.Name });
        item->setData(0, PageRole, entry.Page);
        item->setSizeHint(0, { 0, fontMetrics().height() + RowPadding });
        parents.push_back(item);
    }
    ContentsTree->expandAll();
}

void THelpWindow::GoHome()
{
    if (FArchive)
        Browser->ShowPage(FArchive->HomePage());
}

void THelpWindow::Present()
{
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

// Selects the line of the page `source` in the contents. Blocks signals, because the selection would
// otherwise open a page.
void THelpWindow::SourceChanged(const QUrl& source)
{
    const QString page = source.path(); // Browser->source() is not yet changed
    const QSignalBlocker blocker(ContentsTree);
    FFindResult->clear();
    const QTreeWidgetItem* current = ContentsTree->currentItem();
    if (current != nullptr && WithoutAnchor(PageOf(*current)) == page)
        return;
    ContentsTree->setCurrentItem(nullptr);
    for (QTreeWidgetItemIterator item(ContentsTree); *item != nullptr; ++item)
        if (WithoutAnchor(PageOf(**item)) == page) {
            ContentsTree->setCurrentItem(*item);
            return;
        }
}

void THelpWindow::Find(bool backwards)
{
    const auto flags = backwards ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    const bool found = Browser->FindNext(FindEdit->text(), flags);
    FFindResult->setText(found ? QString() : u"Not found  "_s);
}

} // namespace Corvadine
