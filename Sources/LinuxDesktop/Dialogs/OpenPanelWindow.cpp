#include "LinuxDesktop/Dialogs/OpenPanelWindow.h"

#include "Foundation/PathText.h"
#include "LinuxDesktop/Dialogs/PanelPlaces.h"
#include "LinuxDesktop/Windows/DisplayText.h"

#include <QAbstractItemView>
#include <QAction>
#include <QDir>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QToolTip>
#include <QTreeView>

#include <filesystem>
#include <vector>

namespace stemvault::dialogs {

namespace {

constexpr int panelMargin = 16;

/// The folder, or the nearest one above it, that exists and whose path the toolkit can represent.
/// The home folder if there is none.
QString startFolder(const std::optional<FileURL>& asked)
{
    for (std::string path = asked ? asked->path() : "/"; path != "/";
         path = deletingLastPathComponent(path)) {
        QString name = QFile::decodeName(path.c_str());
        if (QFile::encodeName(name) == path.c_str() && QDir(name).exists())
            return name;
        if (!name.startsWith(u'/'))
            break;
    }
    return QDir::homePath();
}

QHeaderView& columns(const OpenPanelWindow& window)
{
    return *window.findChild<QTreeView*>(QStringLiteral("treeView"))->header();
}

} // namespace

OpenPanelWindow::OpenPanelWindow(const OpenPanel& panel)
{
    const bool onlyFolders = panel.canChooseDirectories && !panel.canChooseFiles;
    setOption(DontUseNativeDialog);
    setOption(ReadOnly, !panel.canCreateDirectories);
    setOption(ShowDirsOnly, onlyFolders);
    setFileMode(onlyFolders ? Directory : ExistingFile);
    setAcceptMode(AcceptOpen);
    watchReading();
    setDirectory(startFolder(panel.directoryURL));
    if (!panel.prompt.empty())
        setLabelText(Accept, windows::displayTitle(panel.prompt));
    setWindowTitle(panel.message.empty() ? windows::displayLine(panel.prompt)
                                         : windows::displayLine(panel.message));
    if (!panel.message.empty())
        showMessage(windows::displayLine(panel.message));
    keepFromDeleting();
    showPlainToolTips();
    layout()->setContentsMargins(panelMargin, panelMargin, panelMargin, panelMargin);
    for (auto* button : findChildren<QPushButton*>())
        button->setIcon(QIcon());
    usualColumns = columns(*this).saveState();
    if (onlyFolders)
        showOnlyFolders();
    if (panel.allowsMultipleSelection)
        allowSeveral();
    addPlaces();
    resize(720, 480);
}

// The toolkit reads folders on a thread, and destroying the panel blocks until that is done.
void OpenPanelWindow::watchReading()
{
    const auto* model = findChild<QFileSystemModel*>();
    if (!model)
        return;
    isReading = true;
    connect(model, &QFileSystemModel::rootPathChanged, this, [this] { isReading = true; });
    connect(model, &QFileSystemModel::directoryLoaded, this, [this, model](const QString& path) {
        isReading = isReading && QDir(path) != QDir(model->rootPath());
        if (!isReading && isLeft)
            deleteLater();
    });
}

void OpenPanelWindow::endWhenRead(std::unique_ptr<OpenPanelWindow> window)
{
    if (!window->isReading)
        return;
    window->isLeft = true;
    window.release()->hide();
}

OpenPanelWindow::~OpenPanelWindow()
{
    columns(*this).restoreState(usualColumns);
    setSidebarUrls(usualPlaces);
}

// Adds the user's bookmarks and drives, as file managers list them.
void OpenPanelWindow::addPlaces()
{
    usualPlaces = sidebarUrls();
    findPanelPlaces(this, [this](const QString& folder) {
        QList<QUrl> places = sidebarUrls();
        const QUrl place = QUrl::fromLocalFile(folder);
        if (!places.contains(place))
            setSidebarUrls(places << place);
    });
}

// Puts the message into a new first row and moves everything that the toolkit laid out down by one.
void OpenPanelWindow::showMessage(const QString& message)
{
    auto* grid = qobject_cast<QGridLayout*>(layout());
    if (!grid)
        return;
    struct Cell {
        QLayoutItem* item;
        int row, column, rows, columns;
    };
    std::vector<Cell> cells;
    const int columns = grid->columnCount();
    while (grid->count() > 0) {
        Cell cell {};
        grid->getItemPosition(0, &cell.row, &cell.column, &cell.rows, &cell.columns);
        cell.item = grid->takeAt(0);
        cells.push_back(cell);
    }
    for (const Cell& cell : cells)
        grid->addItem(cell.item, cell.row + 1, cell.column, cell.rows, cell.columns);
    auto* label = new QLabel(message, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setContentsMargins(2, 4, 2, 8);
    grid->addWidget(label, 0, 0, 1, columns);
}

// Hides sizes and kinds, which are meaningless for folders, and gives their space to the names.
void OpenPanelWindow::showOnlyFolders()
{
    constexpr int size = 1, kind = 2;
    QHeaderView& header = columns(*this);
    header.hideSection(size);
    header.hideSection(kind);
    header.setStretchLastSection(false);
    header.setSectionResizeMode(QHeaderView::ResizeToContents);
    header.setSectionResizeMode(0, QHeaderView::Stretch);
    for (const char* name : { "fileTypeLabel", "fileTypeCombo" })
        if (auto* widget = findChild<QWidget*>(QLatin1String(name)))
            widget->hide();
}

// Disables renaming and permanent deletion, which the toolkit's panel offers, also by the Delete
// key.
void OpenPanelWindow::keepFromDeleting()
{
    for (const char* name : { "qt_delete_action", "qt_rename_action" })
        if (auto* action = findChild<QAction*>(QLatin1String(name)))
            action->setVisible(false);
    for (auto* shortcut : findChildren<QShortcut*>())
        if (shortcut->key() == QKeySequence(QKeySequence::Delete))
            shortcut->setEnabled(false);
}

// The side bar's tool tips are paths that may contain a drive's label, which is untrusted text.
void OpenPanelWindow::showPlainToolTips()
{
    for (auto* view : findChildren<QAbstractItemView*>())
        view->viewport()->installEventFilter(this);
}

bool OpenPanelWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (const auto* view = qobject_cast<QAbstractItemView*>(watched->parent());
        view && event->type() == QEvent::ToolTip) {
        const auto& asked = *static_cast<QHelpEvent*>(event);
        const QString text = view->indexAt(asked.pos()).data(Qt::ToolTipRole).toString();
        QToolTip::showText(
            asked.globalPos(), windows::toolTipText(windows::displayLine(text.toStdString())));
        return true;
    }
    return QFileDialog::eventFilter(watched, event);
}

// The toolkit has no mode for several folders, but returns everything that its lists have selected.
void OpenPanelWindow::allowSeveral()
{
    for (const char* name : { "listView", "treeView" })
        if (auto* view = findChild<QAbstractItemView*>(QLatin1String(name)))
            view->setSelectionMode(QAbstractItemView::ExtendedSelection);
}

std::vector<FileURL> OpenPanelWindow::chosen() const
{
    std::vector<FileURL> found;
    for (const QString& file : selectedFiles()) {
        const std::string path = QFile::encodeName(file).toStdString();
        std::error_code failure;
        if (std::filesystem::exists(path, failure))
            found.emplace_back(std::string(withoutTrailingSlash(path)));
    }
    return found;
}

} // namespace stemvault::dialogs
