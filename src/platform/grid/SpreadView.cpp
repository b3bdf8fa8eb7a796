#include "platform/grid/SpreadView.h"

#include "contracts/files.h"
#include "frame/guard.h"
#include "platform/grid/key_codes.h"
#include "platform/grid/SpreadModel.h"

#include <QAbstractButton>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>

namespace {
constexpr int WheelLinePixels = 18; // A notch of the wheel moves three of these.

/// Files of this machine that another program brings; what comes out of a grid isn't brought in again.
QStringList BroughtFiles(const QDropEvent& event)
{
    QStringList paths;
    if (event.source() != nullptr || !(event.possibleActions() & Qt::CopyAction))
        return paths;
    const QList<QUrl> urls = event.mimeData()->urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

void AnswerDrag(QDropEvent& event)
{
    if (BroughtFiles(event).isEmpty()) {
        event.ignore();
        return;
    }
    event.setDropAction(Qt::CopyAction);
    event.accept();
}
} // namespace

SpreadView::SpreadView(SpreadModel& model, QWidget* parent) : QTableView(parent), m_model(model)
{
    setModel(&model);
    setFrameShape(QFrame::NoFrame); // The grid's own measures count from its corner.
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::ContiguousSelection);
    setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    for (QScrollBar* bar : {verticalScrollBar(), horizontalScrollBar()}) {
        bar->setSingleStep(WheelLinePixels);
        // A right click means what the grid's owner makes of it, and nothing beside the cells.
        bar->setContextMenuPolicy(Qt::NoContextMenu);
    }
    setTabKeyNavigation(false);
    setWordWrap(false);
    setCornerButtonEnabled(false);

    for (QHeaderView* heading : {horizontalHeader(), verticalHeader()}) {
        heading->setMinimumSectionSize(1);
        heading->setSectionsClickable(false);
        heading->setHighlightSections(false);
        heading->viewport()->installEventFilter(this);
    }
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Interactive);
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultAlignment(Qt::AlignCenter);
    if (auto* corner = findChild<QAbstractButton*>())
        corner->installEventFilter(this);
}

void SpreadView::ScrollDownTo(int line, const std::function<bool(int line)>& mayBegin)
{
    executeDelayedItemsLayout();
    updateGeometries();
    const QHeaderView& lines = *verticalHeader();
    const int needed = lines.sectionPosition(line) + lines.sectionSize(line) - viewport()->height();
    if (verticalScrollBar()->value() >= needed)
        return;
    int first = 0;
    while (first < line && (lines.sectionPosition(first) < needed || !mayBegin(first)))
        ++first;
    verticalScrollBar()->setValue(lines.sectionPosition(first));
}

bool SpreadView::HasPictures(int line) const
{
    for (int column = 0; column < m_model.columnCount(); ++column) {
        if (m_model.Cells().TypeOf(line, column) == CellTypePicture)
            return true;
    }
    return false;
}

void SpreadView::updateGeometries()
{
    QScrollBar& bar = *verticalScrollBar();
    const int before = bar.value();
    QTableView::updateGeometries();
    // Also at the end of a grid that is full of pictures none is cut above: there is room below the last ones.
    const int last = m_model.rowCount() - 1;
    const int end = bar.maximum();
    if (end == 0 || last < 1 || !HasPictures(last - 1))
        return;
    const QHeaderView& lines = *verticalHeader();
    int first = 0;
    while (first < last && (lines.sectionPosition(first) < end || (first > 0 && HasPictures(first - 1))))
        ++first;
    bar.setMaximum(qMax(end, lines.sectionPosition(first)));
    if (before > end)
        bar.setValue(before);
}

QPoint SpreadView::CellAt(QPoint place) const
{
    const int column = columnAt(place.x());
    const int row = rowAt(place.y());
    return {column < 0 ? m_model.columnCount() + 1 : column + 1, row < 0 ? m_model.rowCount() + 1 : row + 1};
}

void SpreadView::mousePressEvent(QMouseEvent* event)
{
    m_pressedBox = QModelIndex();
    // A right click leaves the selection as it is.
    if (event->button() != Qt::LeftButton)
        return;
    const QModelIndex index = indexAt(event->position().toPoint());
    if (index.flags() & Qt::ItemIsUserCheckable && event->modifiers() == Qt::NoModifier)
        m_pressedBox = index;
    m_pressedAt = event->position().toPoint();
    m_pressedPicture = QModelIndex();
    if (m_dragFile && index.isValid() && m_model.Cells().TypeOf(index.row(), index.column()) == CellTypePicture)
        m_pressedPicture = index;
    QTableView::mousePressEvent(event);
}

void SpreadView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_pressedPicture.isValid() || !event->buttons().testFlag(Qt::LeftButton)) {
        QTableView::mouseMoveEvent(event);
        return;
    }
    const int way = (event->position().toPoint() - m_pressedAt).manhattanLength();
    if (way >= QApplication::startDragDistance())
        DragFileOf(std::exchange(m_pressedPicture, QPersistentModelIndex()));
}

void SpreadView::DragFileOf(const QModelIndex& index)
{
    const QString path = m_dragFile(index.column() + 1, index.row() + 1);
    if (path.isEmpty())
        return;
    auto* content = new QMimeData;
    content->setUrls({QUrl::fromLocalFile(NativePath(path))});
    auto* drag = new QDrag(this); // Goes by itself when the drag is over.
    drag->setMimeData(content);
    if (const SpreadCell* cell = m_model.Cells().Find(index.row(), index.column()); cell && cell->picture)
        drag->setPixmap(QPixmap::fromImage(cell->picture->image));
    // Serves events until the drag is over; a screen that is closed meanwhile must not go while its view is at work.
    Guarded([drag] { drag->exec(Qt::CopyAction); });
}

void SpreadView::dragEnterEvent(QDragEnterEvent* event)
{
    AnswerDrag(*event);
}

void SpreadView::dragMoveEvent(QDragMoveEvent* event)
{
    AnswerDrag(*event);
}

void SpreadView::dropEvent(QDropEvent* event)
{
    AnswerDrag(*event);
    if (event->isAccepted())
        Q_EMIT FilesDropped(BroughtFiles(*event));
}

void SpreadView::mouseReleaseEvent(QMouseEvent* event)
{
    const QPoint place = event->position().toPoint();
    if (event->button() == Qt::RightButton) {
        const QPoint cell = CellAt(place);
        Q_EMIT CellRightClicked(cell.x(), cell.y(), viewport()->mapTo(this, place));
        return;
    }
    m_pressedPicture = QModelIndex();
    QTableView::mouseReleaseEvent(event);
    const QModelIndex pressed = std::exchange(m_pressedBox, QPersistentModelIndex());
    if (event->button() == Qt::LeftButton && pressed.isValid() && pressed == indexAt(place))
        ToggleBox(pressed);
}

void SpreadView::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const QPoint place = event->position().toPoint();
    // Each click of a quick pair toggles a box.
    const QModelIndex index = indexAt(place);
    m_pressedBox = index.flags() & Qt::ItemIsUserCheckable ? index : QModelIndex();
    const QPoint cell = CellAt(place);
    Q_EMIT CellDoubleClicked(cell.x(), cell.y());
}

void SpreadView::keyPressEvent(QKeyEvent* event)
{
    if (const int keyCode = PlatformKeyCode(event->key()))
        Q_EMIT KeyPressed(keyCode, PlatformShiftState(event->modifiers()));
    // Asked for only now: whoever heard of the key may have changed the rows.
    const QModelIndex current = currentIndex();
    if (event->key() == Qt::Key_Space && event->modifiers() == Qt::NoModifier &&
        current.flags() & Qt::ItemIsUserCheckable) {
        ToggleBox(current);
        return;
    }
    QTableView::keyPressEvent(event);
}

void SpreadView::contextMenuEvent(QContextMenuEvent* event)
{
    // The mouse has its own way, at the release of the button.
    if (event->reason() == QContextMenuEvent::Keyboard && currentIndex().isValid()) {
        const QPoint centre = visualRect(currentIndex()).center();
        Q_EMIT CellRightClicked(currentIndex().column() + 1, currentIndex().row() + 1, viewport()->mapTo(this, centre));
    }
    event->accept();
}

void SpreadView::ToggleBox(const QModelIndex& index)
{
    bool ticked = false;
    m_model.Write(index.row(), index.column(), [&](SpreadCell& cell) { ticked = cell.ticked = !cell.ticked; });
    Q_EMIT BoxToggled(index.column() + 1, index.row() + 1, ticked);
}

QPoint SpreadView::HeadingAt(QObject* heading, QPoint place) const
{
    if (heading == horizontalHeader()->viewport())
        return {CellAt(place).x(), 0};
    if (heading == verticalHeader()->viewport())
        return {0, CellAt(place).y()};
    return {0, 0};
}

bool SpreadView::eventFilter(QObject* watched, QEvent* event)
{
    auto* widget = qobject_cast<QWidget*>(watched);
    if (widget == nullptr || widget == viewport())
        return QTableView::eventFilter(watched, event);
    if (event->type() == QEvent::MouseButtonDblClick || event->type() == QEvent::MouseButtonRelease) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        const QPoint place = mouse->position().toPoint();
        const QPoint heading = HeadingAt(watched, place);
        if (event->type() == QEvent::MouseButtonDblClick) {
            if (mouse->button() == Qt::LeftButton)
                Q_EMIT CellDoubleClicked(heading.x(), heading.y());
            // On the edge of a heading it would else change the column's width.
            return true;
        }
        if (mouse->button() == Qt::RightButton)
            Q_EMIT CellRightClicked(heading.x(), heading.y(), widget->mapTo(this, place));
    }
    return QTableView::eventFilter(watched, event);
}
