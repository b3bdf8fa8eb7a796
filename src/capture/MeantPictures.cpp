#include "capture/MeantPictures.h"

#include "capture/CaptureHistory.h"
#include "capture/StillCapture.h"
#include "contracts/fpSpread.h"
#include "frame/services.h"
#include "screenparts/picture_grid.h"

#include <QScopeGuard>

MeantPictures::MeantPictures(CaptureHistory& history, StillCapture& stills) : m_history(history), m_stills(stills)
{
    for (const int gridNumber : {1, 2})
        connect(&m_history.Grid(gridNumber), &fpSpread::CellsChanged, this, [this] {
            if (m_gridNumber != 0)
                Show();
        });
}

void MeantPictures::MeanOne(int gridNumber, int column, int row)
{
    if (const ShownPicture picture = m_history.PictureAt(gridNumber, column, row); !picture.IsNone())
        Mean(gridNumber, picture);
}

void MeantPictures::Mean(int gridNumber, const ShownPicture& picture)
{
    m_gridNumber = gridNumber;
    m_visit = gridNumber == 0 ? std::nullopt : m_history.ShownVisit(gridNumber);
    m_picture = picture;
    Show();
}

void MeantPictures::MenuIsClosed()
{
    if (m_questions == 0)
        Mean(0, {});
}

std::optional<QPoint> MeantPictures::Place()
{
    if (m_gridNumber == 0 || m_picture.IsNone() || m_history.ShownVisit(m_gridNumber) != m_visit)
        return std::nullopt;
    return m_history.PlaceOf(m_gridNumber, m_picture);
}

bool MeantPictures::Ask(const QString& question)
{
    ++m_questions;
    const auto answered = qScopeGuard([this] {
        --m_questions;
        Mean(0, {});
    });
    return AskYesNo(question);
}

bool MeantPictures::AskOfAll(int gridNumber, const QString& question)
{
    Mean(gridNumber, {});
    return Ask(question);
}

bool MeantPictures::IsMeant(int gridNumber, int column, int row)
{
    if (gridNumber != m_gridNumber || m_history.ShownVisit(gridNumber) != m_visit)
        return false;
    const ShownPicture picture = m_history.PictureAt(gridNumber, column, row);
    if (picture.IsNone() || m_picture.IsNone())
        return !picture.IsNone();
    return picture.number > 0 ? picture.number == m_stills.NumberOf(m_picture) : picture.id == m_picture.id;
}

void MeantPictures::Show()
{
    for (const int gridNumber : {1, 2}) {
        fpSpread& grid = m_history.Grid(gridNumber);
        const int before[] = {grid.Col(), grid.Row()};
        for (int row = 1; row <= grid.DataRowCnt(); row += 2) {
            for (const int column : PictureColumns(gridNumber)) {
                const bool isMeant = IsMeant(gridNumber, column, row);
                grid.setCol(column);
                grid.setRow(row);
                if (grid.TypePictMeant() != isMeant)
                    grid.setTypePictMeant(isMeant);
            }
        }
        grid.setCol(before[0]);
        grid.setRow(before[1]);
    }
}
