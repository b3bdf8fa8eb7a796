#pragma once

#include "capture/StillCapture.h"
#include "visit/Visit.h"

#include <QObject>
#include <QPoint>

#include <optional>

class CaptureHistory;

/// The pictures that an open menu or question is about: one, or all that its grid shows. They are framed for as long,
/// and followed: a picture that a fill brings to another cell keeps its frame, and no other gets it.
class MeantPictures : public QObject
{
    Q_OBJECT

public:
    MeantPictures(CaptureHistory& history, StillCapture& stills);

    /// The picture in that cell of grid 1 or 2.
    void MeanOne(int gridNumber, int column, int row);
    /// The menu has closed; a question that it has led to keeps its pictures.
    void MenuIsClosed();
    /// Column and row of the one picture where it stands now; nothing when it is shown no more.
    std::optional<QPoint> Place();

    /// Asks about the picture that is meant. Nothing is meant any more when that is answered.
    bool Ask(const QString& question);
    /// Asks about all pictures of a grid.
    bool AskOfAll(int gridNumber, const QString& question);

private:
    void Mean(int gridNumber, const ShownPicture& picture);
    void Show();
    bool IsMeant(int gridNumber, int column, int row);

    CaptureHistory& m_history;
    StillCapture& m_stills;
    int m_gridNumber = 0; ///< 0 when none is meant.
    std::optional<Visit> m_visit;
    ShownPicture m_picture; ///< None for all.
    int m_questions = 0;
};
