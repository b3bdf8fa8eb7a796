#pragma once

#include "contracts/fpSpread.h"

#include <QPersistentModelIndex>
#include <QTimer>

#include <optional>

class CellDelegate;
class LensButton;
class SpreadModel;
class SpreadView;

/// The grid as a table over its own cells.
///
/// Column 0 and row 0 have a width and a height of their own, for the headings. A click selects the cell; the active
/// cell alone counts as no selection, and `SetActiveCell` takes the selection away.
class SpreadGrid final : public fpSpread
{
    Q_OBJECT

public:
    explicit SpreadGrid(QWidget* parent = nullptr);

    int MaxRows() const override;
    void setMaxRows(int rows) override;
    int MaxCols() const override;
    void setMaxCols(int columns) override;
    void setColWidth(int column, double units) override;
    double RowHeight(int row) const override;
    void setRowHeight(int row, double points) override;
    void setDefaultRowHeight(double points) override;
    void setStoredCellType(int column, int rowParity, SpreadCellType type) override;
    void setHeadings(const QStringList& headings) override;
    void setHeadingsVisible(bool columnHeadings, bool rowNumbers) override;

    int DataRowCnt() const override;
    void ClearRange(int column, int row, int column2, int row2, bool dataOnly) override;
    void DeleteRows(int row, int count) override;

    int Row() const override { return m_row; }
    void setRow(int row) override { m_row = row; }
    int Col() const override { return m_column; }
    void setCol(int column) override { m_column = column; }

    SpreadCellType CellType() const override;
    void setCellType(SpreadCellType type) override;
    bool TypePictCenter() const override;
    void setTypePictCenter(bool center) override;
    void setTypePictStretch(bool stretch) override;
    void setTypePictPicture(const QImage& picture) override;
    QImage TypePictPicture() const override;
    void setTypePictMark(const QString& mark) override;
    QString TypePictMark() const override;
    void setTypePictMeant(bool meant) override;
    bool TypePictMeant() const override;
    QString Text() const override;
    void setText(const QString& text) override;
    QString Value() const override;
    void setValue(const QString& value) override;

    int ActiveRow() const override;
    int ActiveCol() const override;
    void SetActiveCell(int column, int row) override;

    int SelectionCount() const override;
    SpreadBlock GetSelection(int index) const override;
    bool IsCellSelected(int column, int row) const override;
    void setMultipleSelection(bool several) override;
    void setRowBlocks(bool on) override;

    QSize CellPixels(int column, int row) const override;
    QRect CellRect(int column, int row) const override;
    void FlashCell(int column, int row) override;

    void setFileDrop(bool on) override;
    void setDragFile(DragFile file) override;
    void setLens(bool on) override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void BringIntoView(int column, int row);
    void EndFlash();
    bool HasRowBlocks() const;
    QList<int> SelectedRows() const;
    /// A picture with a text below it.
    bool IsFilled(const QModelIndex& index) const;
    /// The picture that the pointer, or else the keyboard, is at.
    QModelIndex PictureAtHand() const;
    void PlaceLens();
    void ClickLens();

    SpreadModel* m_model;
    SpreadView* m_view;
    CellDelegate* m_delegate;
    QTimer m_flashTimer;
    LensButton* m_lens = nullptr;
    std::optional<QPoint> m_pointer; ///< In the view's viewport, while it is there or on the lens.
    QPersistentModelIndex m_lensCell;
    int m_row = 1;
    int m_column = 1;
};
