#pragma once

#include "screenparts/VisitPictures.h"

#include <QObject>

#include <optional>

class CaptureHistory;

/// The pictures that an open menu or question is about: one, or all that its grid shows. They are framed for as long,
/// and followed: a picture that a fill brings to another cell keeps its frame, and no other gets it.
class MeantPictures : public QObject
{
    Q_OBJECT

public:
    explicit MeantPictures(CaptureHistory& history);

    /// The picture in that cell of grid 1 or 2. False where there is none.
    bool MeanOne(int gridNumber, int column, int row);
    /// The menu has closed; a question that it has led to keeps its pictures.
    void MenuIsClosed();
    /// Whose grid it is, 1 or 2; 0 when none is meant.
    int GridNumber() const { return m_gridNumber; }
    /// The one picture as it is now; null when it is shown no more.
    const VisitPictures::Picture* One() const;

    /// Asks about the picture that is meant. Nothing is meant any more when that is answered.
    bool Ask(const QString& question);
    /// Asks about all pictures of a grid.
    bool AskOfAll(int gridNumber, const QString& question);

private:
    void Mean(int gridNumber, const ShownPicture& picture);
    void Show();

    CaptureHistory& m_history;
    int m_gridNumber = 0; ///< 0 when none is meant.
    std::optional<Visit> m_visit;
    ShownPicture m_picture; ///< None for all.
    int m_questions = 0;
};
