#pragma once

#include "capture/StillCapture.h"

#include <QObject>

#include <optional>

class fpSpread;
class QLabel;
class VisitNote;

/// The three grids of the capture screen, and what the mouse does on the two of the history. What
/// they show stands in the grids; the history line that was chosen is a value beside its two labels.
class CaptureHistory : public QObject
{
    Q_OBJECT

public:
    struct Controls
    {
        fpSpread& visitPictures;   ///< `sprCap(1)`
        fpSpread& historyPictures; ///< `sprCap(2)`
        fpSpread& visits;          ///< `sprCap(3)`
        QLabel& lblHisYmd;
        QLabel& lblHisEtc;
    };

    CaptureHistory(const Controls& controls, VisitNote& note, StillCapture& stills);

    /// Columns, rows and measures of the three grids.
    void LayOutGrids();
    /// Empties the three grids, but for column 3 of the list; the labels and the note stay.
    void Clear();
    /// Ends the fills that are under way: the screen is closing, or all of it is read anew.
    void EndFills();

    /// Fills `sprCap(1)` and the note box for the visit and section as they stand now.
    void ShowVisit();
    /// Shows what a start that got no answer has left away; what was typed meanwhile stays.
    void ShowAgain();
    /// The section was changed by the operator: shows its pictures and note from the first cell on.
    void ShowSection();
    /// Reads the list of visits again.
    void ShowVisits();
    /// Shows the visit of a line of `sprCap(3)`; a line without a date only empties the selection.
    void ShowHistoryLine(int row);

    /// The visit that grid 1 or 2 shows: the current one, or the history line that was chosen, if one was.
    std::optional<Visit> ShownVisit(int gridNumber) const;
    /// `sprCap(1)` or `sprCap(2)`.
    fpSpread& Grid(int gridNumber);
    void FillPictures(const Visit& visit, int gridNumber, bool keepCursor);
    /// Text of the number cell under a picture cell, trimmed.
    QString NumberUnder(int gridNumber, int column, int row);
    /// The picture in a cell of grid 1 or 2; none for a cell without one.
    ShownPicture PictureAt(int gridNumber, int column, int row);
    /// Column and row of the picture's cell; one that waited for its number may have it now.
    std::optional<QPoint> PlaceOf(int gridNumber, const ShownPicture& picture);
    /// Path of the picture file that a cell of grid 1 or 2 shows; empty when there is none.
    QString FileBehind(int gridNumber, int column, int row);
    /// Opens a picture of the line shown in the editor, and shows it anew when it was marked; any other cell does
    /// nothing.
    void EditHistoryPicture(int column, int row);

    /// True for a picture cell of that grid: the cell under it holds a number.
    bool IsFilledPicture(int gridNumber, int column, int row);

Q_SIGNALS:
    /// A picture has been marked up: its file is another one now.
    void PictureIsMarked(const Visit& visit, int number);

private:
    Controls m_controls;
    VisitNote& m_note;
    StillCapture& m_stills;
    std::optional<Visit> m_chosen; ///< The history line on display; comes and goes with the two labels.
    int m_lineShown = 0;           ///< Rises with each line that is shown, so that an overtaken one knows.
};
