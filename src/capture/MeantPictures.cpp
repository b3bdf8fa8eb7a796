#include "capture/MeantPictures.h"

#include "capture/CaptureHistory.h"
#include "contracts/fpSpread.h"
#include "frame/services.h"
#include "screenparts/picture_grid.h"

#include <QScopeGuard>

MeantPictures::MeantPictures(CaptureHistory& history) : m_history(history)
{
    for (const int gridNumber : {1, 2})
        connect(&m_history.PicturesOf(gridNumber).Grid(), &fpSpread::CellsChanged, this, [this] {
            if (m_gridNumber != 0)
                Show();
        });
}

bool MeantPictures::MeanOne(int gridNumber, int column, int row)
{
    const VisitPictures::Picture* picture = m_history.PicturesOf(gridNumber).At(column, row);
    if (picture == nullptr)
        return false;
    Mean(gridNumber, *picture);
    return true;
}

void MeantPictures::Mean(int gridNumber, const ShownPicture& picture)
{
    m_gridNumber = gridNumber;
    m_visit = gridNumber == 0 ? std::nullopt : m_history.PicturesOf(gridNumber).Shown();
    m_picture = picture;
    Show();
}

void MeantPictures::MenuIsClosed()
{
    if (m_questions == 0)
        Mean(0, {});
}

const VisitPictures::Picture* MeantPictures::One() const
{
    if (m_gridNumber == 0 || m_picture.IsNone())
        return nullptr;
    const VisitPictures& pictures = m_history.PicturesOf(m_gridNumber);
    const qsizetype at = pictures.Shown() == m_visit ? pictures.Find(m_picture) : -1;
    return at >= 0 ? &pictures.All()[at] : nullptr;
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

void MeantPictures::Show()
{
    const VisitPictures::Picture* one = One();
    for (const int gridNumber : {1, 2}) {
        const VisitPictures& pictures = m_history.PicturesOf(gridNumber);
        fpSpread& grid = pictures.Grid();
        const int before[] = {grid.Col(), grid.Row()};
        const bool isMeantGrid = gridNumber == m_gridNumber && pictures.Shown() == m_visit;
        for (int row = 1; row <= grid.DataRowCnt(); row += 2) {
            for (const int column : PictureColumns(gridNumber)) {
                const VisitPictures::Picture* picture = pictures.At(column, row);
                const bool isMeant = isMeantGrid && picture != nullptr && (m_picture.IsNone() || picture == one);
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
