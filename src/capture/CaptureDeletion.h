#pragma once

#include "visit/Visit.h"

#include <functional>
#include <optional>

class CaptureHistory;
class MeantPictures;
class StillCapture;
class VisitNote;
struct PictureRecord;
struct ShownPicture;

/// Deletes pictures of the current visit or of the history line on display, after a question.
class CaptureDeletion
{
public:
    /// Hears of a picture that has gone, or, without a number, of all of a visit.
    using Deleted = std::function<void(const Visit& visit, std::optional<int> number)>;

    CaptureDeletion(CaptureHistory& history, StillCapture& stills, VisitNote& note, MeantPictures& meant,
                    Deleted deleted)
        : m_history(history), m_stills(stills), m_note(note), m_meant(meant), m_deleted(std::move(deleted))
    {
    }

    /// Asks, and deletes the current visit's pictures of the section.
    void DeleteCurrentVisit();
    /// Asks, and deletes the one picture in that cell of grid 1 or 2.
    void DeletePictureAt(int gridNumber, int column, int row);
    /// Asks, and deletes all pictures of the visit that grid 1 or 2 shows.
    void DeleteShownVisit(int gridNumber);

private:
    void DeleteOnePicture(const Visit& visit, const ShownPicture& picture, int gridNumber);
    /// Its rows are undone when the database comes to it; nothing is waited for.
    void DeleteWaitingPicture(const PictureRecord& picture);
    void DeleteEmptyVisit(const Visit& visit);
    void DeleteVisitCaptures(const Visit& visit);

    CaptureHistory& m_history;
    StillCapture& m_stills;
    VisitNote& m_note;
    MeantPictures& m_meant;
    const Deleted m_deleted;
};
