#include "screenparts/VisitPictures.h"

#include "frame/services.h"
#include "screenparts/picture_grid.h"
#include "text/text_routines.h"

#include <algorithm>
#include <utility>

namespace {
/// Stands in the place of the number of a picture that waits for one.
const QString AwaitedNumber = QStringLiteral("대기");
constexpr int LastSheetColumn = 3;
} // namespace

VisitPictures::VisitPictures(fpSpread& grid, int layout) : m_grid(&grid), m_layout(layout) {}

void VisitPictures::Show(const Visit& visit)
{
    if (m_shown == visit)
        return;
    Clear();
    m_shown = visit;
    Q_EMIT Changed();
}

void VisitPictures::Clear()
{
    m_grid->BeginFill();
    ClearGrid();
    m_identities.clear();
    m_shown.reset();
    Q_EMIT Changed();
}

void VisitPictures::BeginAnew(const Visit& visit)
{
    m_identities.clear();
    if (m_shown == visit) {
        for (const Picture& picture : std::as_const(m_pictures)) {
            if (picture.number > 0 && !picture.id.isEmpty())
                m_identities.insert(picture.number, picture.id);
        }
    }
    ClearGrid();
    m_shown = visit;
    Q_EMIT Changed();
}

void VisitPictures::ClearGrid()
{
    m_pictures.clear();
    if (m_layout == 1) {
        m_grid->ClearRange(1, 1, 5, m_grid->DataRowCnt(), false);
        return;
    }
    for (int column = 1; column <= 6; ++column)
        m_grid->ClearRange(column, 1, column, m_grid->DataRowCnt(), column % 2 == 1);
}

QPoint VisitPictures::Add(Picture picture)
{
    if (picture.id.isEmpty())
        picture.id = m_identities.value(picture.number);
    m_pictures.append(picture);
    Paint(m_pictures.size() - 1);
    Q_EMIT Changed();
    return CellOf(m_pictures.size() - 1);
}

void VisitPictures::Remove(qsizetype at)
{
    QList<Picture> left = m_pictures;
    left.removeAt(at);
    ClearGrid();
    for (const Picture& picture : std::as_const(left))
        Add(picture);
    Q_EMIT Changed();
}

void VisitPictures::Update(qsizetype at, const Change& change)
{
    change(m_pictures[at]);
    Paint(at);
    Q_EMIT Changed();
}

void VisitPictures::Paint(qsizetype at)
{
    const Picture& picture = m_pictures[at];
    const QPoint cell = CellOf(at);
    const int row = cell.y();
    if (row + 1 > m_grid->MaxRows()) {
        m_grid->setMaxRows(row + 1);
        // A pair beyond the laid out ones looks like the pair above it.
        if (row > 2) {
            m_grid->setRowHeight(row, m_grid->RowHeight(row - 2));
            m_grid->setRowHeight(row + 1, m_grid->RowHeight(row - 1));
        }
    }
    ShowPicture(*m_grid, row, cell.x(), picture.thumbnail);
    m_grid->setTypePictMark(picture.mark);
    m_grid->setRow(row + 1);
    m_grid->setCellType(CellTypeStaticText);
    m_grid->setText(picture.number > 0 ? NumberText(picture.number) : AwaitedNumber);
}

QPoint VisitPictures::CellOf(qsizetype at) const
{
    const QList<int> columns = PictureColumns(m_layout);
    return {columns[at % columns.size()], static_cast<int>(2 * (at / columns.size()) + 1)};
}

qsizetype VisitPictures::IndexAt(int column, int row) const
{
    const QList<int> columns = PictureColumns(m_layout);
    const qsizetype across = columns.indexOf(column);
    if (across < 0 || row % 2 == 0)
        return -1;
    const qsizetype at = row / 2 * columns.size() + across;
    return at < m_pictures.size() ? at : -1;
}

qsizetype VisitPictures::Find(const ShownPicture& picture) const
{
    const auto find = [this](auto&& isSame) {
        const auto found = std::ranges::find_if(m_pictures, isSame);
        return found != m_pictures.end() ? found - m_pictures.begin() : -1;
    };
    const qsizetype byIdentity =
        picture.id.isEmpty() ? -1 : find([&](const Picture& shown) { return shown.id == picture.id; });
    if (byIdentity >= 0 || picture.number == 0)
        return byIdentity;
    return find([&](const Picture& shown) { return shown.number == picture.number; });
}

const VisitPictures::Picture* VisitPictures::At(int column, int row) const
{
    const qsizetype at = IndexAt(column, row);
    return at >= 0 ? &m_pictures[at] : nullptr;
}

std::optional<QPoint> VisitPictures::PlaceOf(const ShownPicture& picture) const
{
    const qsizetype at = Find(picture);
    return at >= 0 ? std::optional(CellOf(at)) : std::nullopt;
}

QString VisitPictures::FileAt(int column, int row) const
{
    const Picture* picture = At(column, row);
    if (picture == nullptr || picture->number == 0 || !m_shown)
        return {};
    const QString path = m_shown->PicturePath(picture->number);
    return PictureExists(path) ? path : QString();
}

bool VisitPictures::IsTicked(QPoint cell) const
{
    m_grid->setRow(cell.y());
    m_grid->setCol(cell.x() - 1);
    return WholeNumber(m_grid->Value()) == 1;
}

QList<std::pair<int, QString>> VisitPictures::Chosen() const
{
    QList<std::pair<int, QString>> chosen;
    for (qsizetype at = 0; at < m_pictures.size(); ++at) {
        const QPoint cell = CellOf(at);
        if (m_layout == 1 ? cell.x() > LastSheetColumn : !IsTicked(cell))
            continue;
        if (const QString path = FileAt(cell.x(), cell.y()); !path.isEmpty())
            chosen.append({m_pictures[at].number, path});
    }
    return chosen;
}
