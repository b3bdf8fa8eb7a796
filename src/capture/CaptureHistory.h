#pragma once

#include <QObject>

#include <optional>

class fpSpread;
class QLabel;
class VisitGrid;
class VisitNote;
struct PictureSum;
struct Visit;
class VisitPictures;

/// The three grids of the capture screen, and what the mouse does on the two of the history.
class CaptureHistory : public QObject
{
    Q_OBJECT

public:
    struct Controls
    {
        VisitPictures& visitPictures;   ///< `sprCap(1)`
        VisitPictures& historyPictures; ///< `sprCap(2)`
        fpSpread& visits;               ///< `sprCap(3)`
        QLabel& lblHisYmd;
        QLabel& lblHisEtc;
    };

    CaptureHistory(const Controls& controls, VisitNote& note, VisitGrid& grid);

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

    /// Of `sprCap(1)` or `sprCap(2)`.
    VisitPictures& PicturesOf(int gridNumber) const;
    /// The history line's pictures are read anew, if it is still shown.
    void RefillHistory(const Visit& visit);
    /// Opens a picture of the line shown in the editor, and shows it anew when it was marked; any other cell does
    /// nothing.
    void EditHistoryPicture(int column, int row);

Q_SIGNALS:
    /// The editor has written a picture's file.
    void PictureIsReplaced(const Visit& visit, int number, const PictureSum& sum, const QByteArray& version);
    /// A picture has been marked up: its file is another one now.
    void PictureIsMarked(const Visit& visit, int number);

private:
    Controls m_controls;
    VisitNote& m_note;
    VisitGrid& m_grid;
    int m_lineShown = 0; ///< Rises with each line that is shown, so that an overtaken one knows.
};
