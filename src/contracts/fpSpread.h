#pragma once

#include <QImage>
#include <QPoint>
#include <QWidget>

#include <functional>

/// Numbers of the grid's cell types.
enum SpreadCellType : int {
    CellTypeEdit = 1,
    CellTypeStaticText = 5,
    CellTypePicture = 9,
    CellTypeCheckBox = 10,
};

/// A selected block: first and last column and row, counted from 1.
struct SpreadBlock
{
    int Col = 0;
    int Row = 0;
    int Col2 = 0;
    int Row2 = 0;
};

/// `FPSpreadADO.fpSpread`: the grid. Rows and columns count from 1; row 0 is the heading row, column 0 the column of
/// row numbers. Cell properties act on the current cell, which `setRow` and `setCol` choose; a cell outside the grid
/// reads as empty and swallows what is written.
///
/// Widths are in units of 120 twips, heights in points of 20 twips.
class fpSpread : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    virtual int MaxRows() const = 0;
    /// Rows beyond the new number are gone with what they hold.
    virtual void setMaxRows(int rows) = 0;
    virtual int MaxCols() const = 0;
    virtual void setMaxCols(int columns) = 0;
    virtual void setColWidth(int column, double units) = 0;
    virtual double RowHeight(int row) const = 0;
    virtual void setRowHeight(int row, double points) = 0;
    /// Height of the rows that get none of their own.
    virtual void setDefaultRowHeight(double points) = 0;
    /// Cell type of a whole column for rows of one parity, before anything is loaded into them: 1 odd rows, 0 even
    /// rows, -1 all rows. Stands for rows that come later, too.
    virtual void setStoredCellType(int column, int rowParity, SpreadCellType type) = 0;
    virtual void setHeadings(const QStringList& headings) = 0;
    virtual void setHeadingsVisible(bool columnHeadings, bool rowNumbers) = 0;

    /// Number of the last row in which a cell holds data: a text that isn't empty, a picture, or a ticked box.
    virtual int DataRowCnt() const = 0;
    /// Empties the cells of a block; limits beyond the grid are cut. Unless `dataOnly`, a cell goes back to the type
    /// that its place has stored.
    virtual void ClearRange(int column, int row, int column2, int row2, bool dataOnly) = 0;
    /// Takes rows out; those below move up, and as many empty ones follow at the end: the grid keeps its length.
    virtual void DeleteRows(int row, int count) = 0;

    virtual int Row() const = 0;
    virtual void setRow(int row) = 0;
    virtual int Col() const = 0;
    virtual void setCol(int column) = 0;

    virtual SpreadCellType CellType() const = 0;
    virtual void setCellType(SpreadCellType type) = 0;
    virtual bool TypePictCenter() const = 0;
    virtual void setTypePictCenter(bool center) = 0;
    /// Stretched to the cell with its shape kept.
    virtual void setTypePictStretch(bool stretch) = 0;
    /// The grid keeps the picture at cell size. A null picture shows the "no picture" mark.
    virtual void setTypePictPicture(const QImage& picture) = 0;
    virtual QImage TypePictPicture() const = 0;
    /// A few words of warning over the lower edge of the cell's picture; empty for none. Goes with the picture.
    virtual void setTypePictMark(const QString& mark) = 0;
    virtual QString TypePictMark() const = 0;
    /// It is the picture that an open menu or question is about: framed unlike any other. Goes with the picture.
    virtual void setTypePictMeant(bool meant) = 0;
    virtual bool TypePictMeant() const = 0;
    virtual QString Text() const = 0;
    virtual void setText(const QString& text) = 0;
    /// `Text` of that cell, which becomes the current one.
    QString TextAt(int column, int row)
    {
        setRow(row);
        setCol(column);
        return Text();
    }
    /// "1" for a ticked box, "0" for one that isn't; of other cells the text.
    virtual QString Value() const = 0;
    virtual void setValue(const QString& value) = 0;

    virtual int ActiveRow() const = 0;
    virtual int ActiveCol() const = 0;
    /// Moves the active cell and brings it into view.
    virtual void SetActiveCell(int column, int row) = 0;

    virtual int SelectionCount() const = 0;
    /// Block `index`, counted from 0.
    virtual SpreadBlock GetSelection(int index) const = 0;
    virtual bool IsCellSelected(int column, int row) const = 0;
    virtual void setMultipleSelection(bool several) = 0;
    /// The operator selects whole rows, and each of them is a block of its own, from the top.
    virtual void setRowBlocks(bool on) = 0;

    /// Size in device pixels in which a picture of that cell is shown: what to decode for.
    virtual QSize CellPixels(int column, int row) const = 0;
    /// Place of a cell inside the widget, in pixels, whether in view or not; empty outside the grid.
    virtual QRect CellRect(int column, int row) const = 0;
    /// Frames a cell in the accent colour for a moment.
    virtual void FlashCell(int column, int row) = 0;

    /// Files can be dropped onto the grid, as copies, from outside the program; see `FilesDropped`.
    virtual void setFileDrop(bool on) = 0;
    /// The file behind a picture cell, as a path of the station; empty for none.
    using DragFile = std::function<QString(int column, int row)>;
    /// With one, the operator can drag a picture out of the grid: its file goes along, as a copy.
    virtual void setDragFile(DragFile file) = 0;
    /// With it, a lens stands in the lower right corner of the picture cell under the pointer, or, while the grid has
    /// the keyboard, of the active one, if there is a text in the cell below; see `LensClicked`. Any other button, and
    /// any other place, is the cell's as before.
    virtual void setLens(bool on) = 0;

    /// A number for the fill that begins; from then on the grid's earlier fills are no longer the current one.
    int BeginFill() { return ++m_fill; }
    bool IsCurrentFill(int fill) const { return fill == m_fill; }

Q_SIGNALS:
    /// Column and row are 0 on a heading, and beyond the last row for a click below the list.
    void DblClick(int column, int row);
    /// `clickType` is 0; x and y are twips from the grid's corner; `column` and `row` as for `DblClick`.
    void RightClick(int clickType, int column, int row, int x, int y);
    /// A key pressed in the grid, by the platform's key code (13 is Enter).
    void KeyDown(int keyCode, int shift);
    /// The operator ticked or unticked a box.
    void ButtonClicked(int column, int row, bool down);
    /// Cells were emptied or written; comes with the emptying, or once for all that was written when events are served
    /// next.
    void CellsChanged();
    /// Files of this machine were dropped onto the grid; their native paths. Arrives once the drop is over.
    void FilesDropped(const QStringList& paths);
    /// The lens over that picture was pressed; it has taken the keyboard from nobody.
    void LensClicked(int column, int row);

private:
    int m_fill = 0;
};
