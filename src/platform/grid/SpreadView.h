#pragma once

#include <QTableView>

#include <functional>

class SpreadModel;

/// The table under a grid. Turns mouse and keys into the grid's events; rows and columns count from 1 in its signals,
/// headings are 0.
class SpreadView final : public QTableView
{
    Q_OBJECT

public:
    SpreadView(SpreadModel& model, QWidget* parent);

    /// Column and row of a place in the viewport; one more than there are where no cell stands.
    QPoint CellAt(QPoint place) const;

    /// Scrolls until a line, from 0, is in view as a whole, and begins at one that `mayBegin` allows.
    void ScrollDownTo(int line, const std::function<bool(int line)>& mayBegin);

    /// A line, from 0, that shows pictures. The one below it belongs to it.
    bool HasPictures(int line) const;

    /// Gives the file behind a cell that the operator begins to drag; empty for none.
    void SetDragFile(std::function<QString(int column, int row)> file) { m_dragFile = std::move(file); }

Q_SIGNALS:
    void CellDoubleClicked(int column, int row);
    /// `place` is relative to the view's corner, in pixels.
    void CellRightClicked(int column, int row, QPoint place);
    void KeyPressed(int keyCode, int shift);
    void BoxToggled(int column, int row, bool ticked);
    void FilesDropped(const QStringList& paths);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void updateGeometries() override;

private:
    void ToggleBox(const QModelIndex& index);
    void DragFileOf(const QModelIndex& index);
    QPoint HeadingAt(QObject* heading, QPoint place) const;

    SpreadModel& m_model;
    QPersistentModelIndex m_pressedBox;
    std::function<QString(int column, int row)> m_dragFile;
    QPersistentModelIndex m_pressedPicture; ///< While it may still become a drag.
    QPoint m_pressedAt;
};
