#pragma once

#include "contracts/fpSpread.h"
#include "frame/components.h"

#include <QStringList>

/// The three grids of the capture screen in their sizes there.
namespace station_grids {
using namespace Qt::StringLiterals;

inline std::unique_ptr<fpSpread> New(QSize size, int columns, int rows)
{
    auto grid = CreateObject<fpSpread>(u"FPSpreadADO.fpSpread"_s);
    grid->resize(size);
    grid->setMaxCols(columns);
    grid->setMaxRows(rows);
    return grid;
}

inline std::unique_ptr<fpSpread> VisitPictures()
{
    auto grid = New({560, 231}, 5, 20);
    grid->setHeadingsVisible(false, false);
    for (int column = 1; column <= 5; ++column) {
        grid->setColWidth(column, column == 1 ? 13.33 : 13.37);
        grid->setStoredCellType(column, 0, CellTypeStaticText);
    }
    for (int row = 1; row <= 20; ++row)
        grid->setRowHeight(row, row == 1 ? 53.5 : row % 2 == 1 ? 53.2 : 13.3);
    return grid;
}

inline std::unique_ptr<fpSpread> HistoryPictures()
{
    auto grid = New({450, 336}, 6, 50);
    grid->setHeadingsVisible(false, false);
    const double widths[] = {1.75, 15.9, 1.87, 15.87, 1.87, 15.87};
    for (int column = 1; column <= 6; ++column) {
        grid->setColWidth(column, widths[column - 1]);
        grid->setStoredCellType(column, 0, CellTypeStaticText);
        if (column % 2 == 1)
            grid->setStoredCellType(column, 1, CellTypeCheckBox);
    }
    for (int row = 1; row <= 50; ++row)
        grid->setRowHeight(row, row == 1 ? 62.0 : row % 2 == 1 ? 62.3 : 13.3);
    return grid;
}

inline std::unique_ptr<fpSpread> HistoryList()
{
    auto grid = New({450, 213}, 3, 2000);
    grid->setDefaultRowHeight(11.9);
    grid->setColWidth(1, 8.88);
    grid->setColWidth(2, 17.37);
    grid->setColWidth(3, 44.85);
    grid->setHeadings({u"캡쳐일자"_s, u"캡쳐종류"_s, u"참고사항"_s});
    grid->setHeadingsVisible(true, true);
    return grid;
}

inline void Put(fpSpread& grid, int column, int row, const QString& text)
{
    grid.setRow(row);
    grid.setCol(column);
    grid.setText(text);
}

inline QString Get(fpSpread& grid, int column, int row)
{
    grid.setRow(row);
    grid.setCol(column);
    return grid.Text();
}

inline void PutPicture(fpSpread& grid, int column, int row, const QImage& picture)
{
    grid.setRow(row);
    grid.setCol(column);
    grid.setCellType(CellTypePicture);
    grid.setTypePictCenter(true);
    grid.setTypePictStretch(true);
    grid.setTypePictPicture(picture);
}
} // namespace station_grids
