#include "platform/grid/SpreadGrid.h"

#include "frame/components.h"
#include "frame/LensButton.h"
#include "frame/twips.h"
#include "platform/grid/CellDelegate.h"
#include "platform/grid/register_grid.h"
#include "platform/grid/SpreadModel.h"
#include "platform/grid/SpreadView.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QScrollBar>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {
constexpr int FlashMs = 700;
constexpr double HeadingHeightPoints = 12.75; // 255 twips.
constexpr double RowNumberWidthUnits = 5.12;

int PixelsFromUnits(double units)
{
    return qMax(0, qRound(units * 120 / TwipsPerPixel));
}

int PixelsFromPoints(double points)
{
    return qMax(0, qRound(points * 20 / TwipsPerPixel));
}

/// The picture as large as the cell shows it, and no larger.
QImage AtCellSize(const QImage& picture, QSize room, const CellPicture& how)
{
    if (picture.width() <= room.width() && picture.height() <= room.height())
        return picture;
    if (how.stretch)
        return picture.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    QRect part(QPoint(), picture.size().boundedTo(room));
    if (how.center)
        part.moveCenter(picture.rect().center());
    return picture.copy(part);
}
} // namespace

SpreadGrid::SpreadGrid(QWidget* parent)
    : fpSpread(parent), m_model(new SpreadModel(this)), m_view(new SpreadView(*m_model, this)),
      m_delegate(new CellDelegate(this))
{
    m_view->setObjectName(u"cells"_s);
    m_view->setItemDelegate(m_delegate);
    setFocusProxy(m_view);
    setColWidth(0, RowNumberWidthUnits);
    setRowHeight(0, HeadingHeightPoints);
    setDefaultRowHeight(HeadingHeightPoints);

    m_flashTimer.setSingleShot(true);
    m_flashTimer.setInterval(FlashMs);
    connect(&m_flashTimer, &QTimer::timeout, this, &SpreadGrid::EndFlash);
    connect(m_model, &SpreadModel::dataChanged, this, &SpreadGrid::CellsChanged);
    connect(m_view, &SpreadView::CellDoubleClicked, this, &SpreadGrid::DblClick);
    connect(m_view, &SpreadView::KeyPressed, this, &SpreadGrid::KeyDown);
    connect(m_view, &SpreadView::BoxToggled, this, &SpreadGrid::ButtonClicked);
    // The other program waits until the drop has been answered.
    connect(m_view, &SpreadView::FilesDropped, this, &SpreadGrid::FilesDropped, Qt::QueuedConnection);
    connect(m_view, &SpreadView::CellRightClicked, this, [this](int column, int row, QPoint place) {
        Q_EMIT RightClick(0, column, row, TwipsFromPixels(place.x()), TwipsFromPixels(place.y()));
    });
}

int SpreadGrid::MaxRows() const
{
    return m_model->rowCount();
}

void SpreadGrid::setMaxRows(int rows)
{
    m_model->SetRows(qMax(0, rows));
}

int SpreadGrid::MaxCols() const
{
    return m_model->columnCount();
}

void SpreadGrid::setMaxCols(int columns)
{
    m_model->SetColumns(qMax(0, columns));
}

void SpreadGrid::setColWidth(int column, double units)
{
    if (column == 0)
        m_view->verticalHeader()->setFixedWidth(PixelsFromUnits(units));
    else if (column > 0 && column <= MaxCols())
        m_view->horizontalHeader()->resizeSection(column - 1, PixelsFromUnits(units));
}

double SpreadGrid::RowHeight(int row) const
{
    const QHeaderView* rows = m_view->verticalHeader();
    const int pixels = row == 0 ? m_view->horizontalHeader()->height() : rows->sectionSize(row - 1);
    return TwipsFromPixels(pixels) / 20.0;
}

void SpreadGrid::setRowHeight(int row, double points)
{
    if (row == 0)
        m_view->horizontalHeader()->setFixedHeight(PixelsFromPoints(points));
    else if (row > 0 && row <= MaxRows())
        m_view->verticalHeader()->resizeSection(row - 1, PixelsFromPoints(points));
}

void SpreadGrid::setDefaultRowHeight(double points)
{
    m_view->verticalHeader()->setDefaultSectionSize(PixelsFromPoints(points));
}

void SpreadGrid::setStoredCellType(int column, int rowParity, SpreadCellType type)
{
    for (const bool odd : {false, true}) {
        if (rowParity < 0 || odd == (rowParity == 1))
            m_model->SetStoredType(column - 1, odd, type);
    }
}

void SpreadGrid::setHeadings(const QStringList& headings)
{
    m_model->SetHeadings(headings);
}

void SpreadGrid::setHeadingsVisible(bool columnHeadings, bool rowNumbers)
{
    m_view->horizontalHeader()->setVisible(columnHeadings);
    m_view->verticalHeader()->setVisible(rowNumbers);
}

int SpreadGrid::DataRowCnt() const
{
    return m_model->Cells().DataRows();
}

void SpreadGrid::ClearRange(int column, int row, int column2, int row2, bool dataOnly)
{
    column = qMax(column, 1);
    row = qMax(row, 1);
    column2 = qMin(column2, MaxCols());
    row2 = qMin(row2, MaxRows());
    if (column <= column2 && row <= row2)
        m_model->Clear(row - 1, column - 1, row2 - 1, column2 - 1, dataOnly);
}

void SpreadGrid::DeleteRows(int row, int count)
{
    if (row < 1 || row > MaxRows() || count < 1)
        return;
    const int rows = MaxRows();
    m_model->RemoveRows(row - 1, qMin(count, rows - row + 1));
    m_model->SetRows(rows);
}

SpreadCellType SpreadGrid::CellType() const
{
    return m_model->Cells().TypeOf(m_row - 1, m_column - 1);
}

void SpreadGrid::setCellType(SpreadCellType type)
{
    m_model->Write(m_row - 1, m_column - 1, [type](SpreadCell& cell) {
        cell.type = type;
        if (type != CellTypePicture)
            cell.picture.reset();
        if (type != CellTypeCheckBox)
            cell.ticked = false;
    });
}

bool SpreadGrid::TypePictCenter() const
{
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr && cell->picture != nullptr && cell->picture->center;
}

void SpreadGrid::setTypePictCenter(bool center)
{
    m_model->Write(m_row - 1, m_column - 1, [center](SpreadCell& cell) { cell.Picture().center = center; });
}

void SpreadGrid::setTypePictStretch(bool stretch)
{
    m_model->Write(m_row - 1, m_column - 1, [stretch](SpreadCell& cell) { cell.Picture().stretch = stretch; });
}

void SpreadGrid::setTypePictPicture(const QImage& picture)
{
    const QSize room = CellPixels(m_column, m_row);
    m_model->Write(m_row - 1, m_column - 1, [&](SpreadCell& cell) {
        cell.Picture().given = true;
        cell.Picture().meant = false;
        cell.Picture().image = AtCellSize(picture, room, cell.Picture());
    });
}

QImage SpreadGrid::TypePictPicture() const
{
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr && cell->picture != nullptr ? cell->picture->image : QImage();
}

void SpreadGrid::setTypePictMark(const QString& mark)
{
    m_model->Write(m_row - 1, m_column - 1, [&mark](SpreadCell& cell) { cell.Picture().mark = mark; });
}

QString SpreadGrid::TypePictMark() const
{
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr && cell->picture != nullptr ? cell->picture->mark : QString();
}

void SpreadGrid::setTypePictMeant(bool meant)
{
    m_model->Write(m_row - 1, m_column - 1, [meant](SpreadCell& cell) { cell.Picture().meant = meant; });
}

bool SpreadGrid::TypePictMeant() const
{
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr && cell->picture != nullptr && cell->picture->meant;
}

QString SpreadGrid::Text() const
{
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr ? cell->text : QString();
}

void SpreadGrid::setText(const QString& text)
{
    m_model->Write(m_row - 1, m_column - 1, [&text](SpreadCell& cell) { cell.text = text; });
}

QString SpreadGrid::Value() const
{
    if (CellType() != CellTypeCheckBox)
        return Text();
    const SpreadCell* cell = m_model->Cells().Find(m_row - 1, m_column - 1);
    return cell != nullptr && cell->ticked ? u"1"_s : u"0"_s;
}

void SpreadGrid::setValue(const QString& value)
{
    if (CellType() != CellTypeCheckBox) {
        setText(value);
        return;
    }
    m_model->Write(m_row - 1, m_column - 1, [&value](SpreadCell& cell) { cell.ticked = value.trimmed() == u"1"; });
}

int SpreadGrid::ActiveRow() const
{
    return m_view->currentIndex().isValid() ? m_view->currentIndex().row() + 1 : 1;
}

int SpreadGrid::ActiveCol() const
{
    return m_view->currentIndex().isValid() ? m_view->currentIndex().column() + 1 : 1;
}

void SpreadGrid::SetActiveCell(int column, int row)
{
    if (!m_model->Cells().Contains(row - 1, column - 1))
        return;
    m_view->selectionModel()->setCurrentIndex(m_model->index(row - 1, column - 1), QItemSelectionModel::Clear);
    BringIntoView(column, row);
}

void SpreadGrid::BringIntoView(int column, int row)
{
    const auto hasPictures = [this](int line) { return m_view->HasPictures(line); };
    // With pictures comes the line below them, where their numbers stand.
    const int last = hasPictures(row - 1) && row < MaxRows() ? row : row - 1;
    // On the way down whole rows go, so that none is cut above.
    m_view->ScrollDownTo(last, [&](int line) { return line == row - 1 || line == 0 || !hasPictures(line - 1); });
    m_view->scrollTo(m_model->index(row - 1, column - 1));
}

bool SpreadGrid::HasRowBlocks() const
{
    return m_view->selectionBehavior() == QAbstractItemView::SelectRows;
}

QList<int> SpreadGrid::SelectedRows() const
{
    QList<int> rows;
    const QModelIndexList selected = m_view->selectionModel()->selectedRows();
    for (const QModelIndex& index : selected)
        rows << index.row() + 1;
    std::sort(rows.begin(), rows.end());
    return rows;
}

int SpreadGrid::SelectionCount() const
{
    if (HasRowBlocks())
        return static_cast<int>(SelectedRows().size());
    return static_cast<int>(m_view->selectionModel()->selection().size());
}

SpreadBlock SpreadGrid::GetSelection(int index) const
{
    if (HasRowBlocks()) {
        const int row = SelectedRows().value(index, 0);
        return row == 0 ? SpreadBlock{} : SpreadBlock{1, row, MaxCols(), row};
    }
    const QItemSelection selection = m_view->selectionModel()->selection();
    if (index < 0 || index >= selection.size())
        return {};
    const QItemSelectionRange& block = selection.at(index);
    return {block.left() + 1, block.top() + 1, block.right() + 1, block.bottom() + 1};
}

bool SpreadGrid::IsCellSelected(int column, int row) const
{
    return m_view->selectionModel()->isSelected(m_model->index(row - 1, column - 1));
}

void SpreadGrid::setMultipleSelection(bool several)
{
    m_view->setSelectionMode(several ? QAbstractItemView::ExtendedSelection : QAbstractItemView::ContiguousSelection);
}

void SpreadGrid::setRowBlocks(bool on)
{
    m_view->setSelectionBehavior(on ? QAbstractItemView::SelectRows : QAbstractItemView::SelectItems);
}

QSize SpreadGrid::CellPixels(int column, int row) const
{
    const QRect cell = CellRect(column, row);
    if (cell.isEmpty())
        return {};
    const int line = m_view->showGrid() ? 1 : 0;
    const QRect room = CellDelegate::PictureRoom(cell.adjusted(0, 0, -line, -line));
    return (QSizeF(room.size()) * devicePixelRatioF()).toSize().expandedTo({1, 1});
}

QRect SpreadGrid::CellRect(int column, int row) const
{
    if (!m_model->Cells().Contains(row - 1, column - 1))
        return {};
    // From the headings' own measures: the view lays itself out only once it shows.
    const QHeaderView* columns = m_view->horizontalHeader();
    const QHeaderView* rows = m_view->verticalHeader();
    const int left = rows->isHidden() ? 0 : rows->maximumWidth();
    const int top = columns->isHidden() ? 0 : columns->maximumHeight();
    return {left + columns->sectionViewportPosition(column - 1), top + rows->sectionViewportPosition(row - 1),
            columns->sectionSize(column - 1), rows->sectionSize(row - 1)};
}

void SpreadGrid::FlashCell(int column, int row)
{
    EndFlash();
    if (!m_model->Cells().Contains(row - 1, column - 1))
        return;
    m_delegate->SetFlashing(m_model->index(row - 1, column - 1));
    m_view->update(m_delegate->Flashing());
    m_flashTimer.start();
}

void SpreadGrid::setFileDrop(bool on)
{
    m_view->viewport()->setAcceptDrops(on);
}

void SpreadGrid::setDragFile(DragFile file)
{
    m_view->SetDragFile(std::move(file));
}

void SpreadGrid::setLens(bool on)
{
    if (on == (m_lens != nullptr))
        return;
    m_view->viewport()->setMouseTracking(on);
    if (!on) {
        delete std::exchange(m_lens, nullptr);
        return;
    }
    m_lens = new LensButton(this, *m_view->viewport());
    for (QWidget* widget : {m_view->viewport(), static_cast<QWidget*>(m_view), static_cast<QWidget*>(m_lens)})
        widget->installEventFilter(this);
    connect(m_lens, &LensButton::clicked, this, &SpreadGrid::ClickLens);
    connect(m_model, &SpreadModel::dataChanged, m_lens, [this] { PlaceLens(); });
    connect(m_model, &SpreadModel::layoutChanged, m_lens, [this] { PlaceLens(); });
    connect(m_view->selectionModel(), &QItemSelectionModel::currentChanged, m_lens, [this] { PlaceLens(); });
    for (QScrollBar* bar : {m_view->verticalScrollBar(), m_view->horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, m_lens, [this] { PlaceLens(); });
}

bool SpreadGrid::IsFilled(const QModelIndex& index) const
{
    const SpreadCells& cells = m_model->Cells();
    if (!index.isValid() || cells.TypeOf(index.row(), index.column()) != CellTypePicture)
        return false;
    const SpreadCell* cell = cells.Find(index.row(), index.column());
    const SpreadCell* below = cells.Find(index.row() + 1, index.column());
    return cell != nullptr && cell->picture != nullptr && cell->picture->given && below != nullptr &&
           !below->text.isEmpty();
}

QModelIndex SpreadGrid::PictureAtHand() const
{
    if (m_pointer) {
        const QModelIndex index = m_view->indexAt(*m_pointer);
        return IsFilled(index) ? index : QModelIndex();
    }
    return IsFilled(m_view->currentIndex()) ? m_view->currentIndex() : QModelIndex();
}

void SpreadGrid::PlaceLens()
{
    const bool isAtHand = m_pointer || m_view->hasFocus();
    m_lensCell = isAtHand ? PictureAtHand() : QModelIndex();
    if (!m_lensCell.isValid()) {
        m_lens->hide();
        return;
    }
    QWidget* room = m_view->viewport();
    QRect cell = CellDelegate::PictureRoom(m_view->visualRect(m_lensCell));
    // The words over the picture's lower edge can be read.
    if (const SpreadCell* shown = m_model->Cells().Find(m_lensCell.row(), m_lensCell.column());
        !shown->picture->mark.isEmpty())
        cell.setBottom(cell.bottom() - m_view->fontMetrics().height() - 1);
    m_lens->PlaceIn((cell & room->rect()).translated(room->mapTo(this, QPoint())));
}

void SpreadGrid::ClickLens()
{
    // An accessibility tool presses it while it isn't seen, for the cell that it stands at.
    const QModelIndex cell = m_lensCell.isValid() ? QModelIndex(m_lensCell) : PictureAtHand();
    if (cell.isValid())
        Q_EMIT LensClicked(cell.column() + 1, cell.row() + 1);
}

bool SpreadGrid::eventFilter(QObject* watched, QEvent* event)
{
    if (m_lens == nullptr)
        return fpSpread::eventFilter(watched, event);
    const bool isView = watched == m_view->viewport();
    switch (event->type()) {
    case QEvent::MouseMove:
        if (isView)
            m_pointer = static_cast<QMouseEvent*>(event)->position().toPoint();
        break;
    case QEvent::Enter:
        if (isView)
            m_pointer = static_cast<QEnterEvent*>(event)->position().toPoint();
        break;
    case QEvent::Leave:
        if (isView && m_lens->isVisible() && m_lens->rect().contains(m_lens->mapFromGlobal(QCursor::pos())))
            return fpSpread::eventFilter(watched, event);
        if (isView || watched == m_lens)
            m_pointer.reset();
        break;
    case QEvent::FocusIn:
    case QEvent::FocusOut:
    case QEvent::Resize:
        break;
    default:
        return fpSpread::eventFilter(watched, event);
    }
    // The lens has moved itself.
    if (watched != m_lens || event->type() == QEvent::Leave)
        PlaceLens();
    return fpSpread::eventFilter(watched, event);
}

void SpreadGrid::EndFlash()
{
    m_flashTimer.stop();
    const QModelIndex flashed = m_delegate->Flashing();
    m_delegate->SetFlashing(QModelIndex());
    if (flashed.isValid())
        m_view->update(flashed);
}

void SpreadGrid::resizeEvent(QResizeEvent* event)
{
    fpSpread::resizeEvent(event);
    m_view->setGeometry(rect());
}

void SpreadGrid::showEvent(QShowEvent* event)
{
    fpSpread::showEvent(event);
    m_view->setAccessibleName(accessibleName());
    m_view->setAccessibleDescription(accessibleDescription());
    if (m_view->currentIndex().isValid())
        BringIntoView(ActiveCol(), ActiveRow());
}

void RegisterGrid()
{
    RegisterComponent<fpSpread>(u"FPSpreadADO.fpSpread"_s, [] { return std::make_unique<SpreadGrid>(); });
}
