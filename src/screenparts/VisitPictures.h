#pragma once

#include "contracts/fpSpread.h"
#include "visit/Visit.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QPoint>
#include <QPointer>

#include <functional>
#include <optional>

/// A picture that a screen shows: by its identity, while it has one, or by its number.
struct ShownPicture
{
    QString id; ///< Of one that wasn't safe when it came to the screen.
    int number = 0;

    bool IsNone() const { return id.isEmpty() && number == 0; }
};

/// The pictures of one visit in the order in which a grid shows them. The grid paints it, in pairs of rows: the picture
/// above, its number as text below; what a cell stands for is asked here. Layout 1, of the current visit and of the
/// viewer, has pictures in columns 1 to 5; layout 2, of a history line, has them in columns 2, 4 and 6 with a tick box
/// before each.
class VisitPictures : public QObject
{
    Q_OBJECT

public:
    struct Picture : ShownPicture
    {
        QImage thumbnail; ///< Null for a file that is no picture.
        QString mark;     ///< Words of warning over it.
    };

    VisitPictures(fpSpread& grid, int layout);

    fpSpread& Grid() const { return *m_grid; }
    int Layout() const { return m_layout; }
    /// Whose they are; nothing when no visit is shown.
    const std::optional<Visit>& Shown() const { return m_shown; }
    const QList<Picture>& All() const { return m_pictures; }

    /// From here on that visit is shown: another one's pictures go.
    void Show(const Visit& visit);
    /// No visit is shown; a fill that is under way ends. Boxes before the pictures stay, unticked.
    void Clear();
    /// The visit's pictures come anew, one after the other. One of the same number is the same picture.
    void BeginAnew(const Visit& visit);
    /// Behind the others. The grid grows where it has no room. Gives its cell.
    QPoint Add(Picture picture);
    /// Those behind it move up.
    void Remove(qsizetype at);
    using Change = std::function<void(Picture&)>;
    void Update(qsizetype at, const Change& change);

    /// By its identity, else by its number; -1 when it isn't shown.
    qsizetype Find(const ShownPicture& picture) const;
    /// The picture in that cell; null for any other cell.
    const Picture* At(int column, int row) const;
    /// Column and row of the cell that shows it; nothing when none does.
    std::optional<QPoint> PlaceOf(const ShownPicture& picture) const;
    /// Path of the file that a cell shows; empty when there is none.
    QString FileAt(int column, int row) const;
    /// Paths and numbers, in reading order, of those that go to a sheet or a report, as far as they have a number and
    /// their files exist: in layout 1 columns 1 to 3, whatever is ticked, in layout 2 the ticked ones.
    QList<std::pair<int, QString>> Chosen() const;

Q_SIGNALS:
    /// Other pictures, or other ones of them, are shown; comes several times while they are filled.
    void Changed();

private:
    /// The cell of the picture at that place of the list.
    QPoint CellOf(qsizetype at) const;
    qsizetype IndexAt(int column, int row) const;
    bool IsTicked(QPoint cell) const;
    void Paint(qsizetype at);
    void ClearGrid();

    const QPointer<fpSpread> m_grid;
    const int m_layout;
    std::optional<Visit> m_shown;
    QList<Picture> m_pictures;
    QHash<int, QString> m_identities; ///< Of pictures that were shown before this fill, by number.
};
