#pragma once

#include "filing/PictureDeletion.h"
#include "visit/Visit.h"

#include <QHash>

#include <functional>
#include <optional>

class CaptureHistory;
class MeantPictures;
class StillFiling;
class VisitGrid;
class VisitNote;
struct PictureRecord;
struct ShownPicture;

/// Deletes pictures of the current visit or of the history line on display, after a question.
class CaptureDeletion : public QObject
{
    Q_OBJECT

public:
    CaptureDeletion(CaptureHistory& history, VisitGrid& grid, StillFiling& filing, VisitNote& note,
                    MeantPictures& meant);

    /// Asks, and deletes the current visit's pictures of the section.
    void DeleteCurrentVisit();
    /// Asks, and deletes the one picture that is meant.
    void DeleteMeantPicture();
    /// Asks, and deletes all pictures of the visit whose grid is meant.
    void DeleteMeantVisit();

    /// The screen closes; what is left of a deletion is for the next start.
    void End();

Q_SIGNALS:
    /// These numbers of the visit stand for no picture any more.
    void AreGone(const Visit& visit, const QList<int>& numbers);

private:
    /// Shows what is left.
    using Shown = std::function<void(const PictureDeletion::Result& result)>;
    struct Running
    {
        Shown show;
        std::optional<PictureDeletion::Result> result;
        bool isBehind = false; ///< Nobody waits for it any more.
    };

    void DeleteOnePicture(const Visit& visit, const ShownPicture& picture, int gridNumber);
    bool IsShown(int gridNumber, const std::optional<Visit>& visit) const;
    /// It goes to the deleted pictures when the share has it; nothing is waited for.
    void DeleteUnnumbered(const PictureRecord& picture);
    /// Out of the visit's grid.
    void TakeOut(const ShownPicture& picture, const Visit& visit, bool mayBeLast);
    void DeleteVisitCaptures(const Visit& visit);
    /// Waits for the end of the job, or lets it go on behind the screen.
    void Run(const DeletionJob& job, const Shown& show);
    void OnEnded(const QString& id, const PictureDeletion::Result& result);
    static void Show(const PictureDeletion::Result& result, const Shown& show);

    CaptureHistory& m_history;
    VisitGrid& m_grid;
    StillFiling& m_filing;
    VisitNote& m_note;
    MeantPictures& m_meant;
    QHash<QString, Running> m_running;
    PictureDeletion m_jobs;
};
