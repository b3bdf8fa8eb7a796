#pragma once

#include <QObject>

class CaptureHistory;
class FullPicture;
class LargePicture;
class Moments;
class NoticeStrip;

/// Pictures of the capture screen, large: over the live picture and the visit's grid, while section, note and history
/// stay seen and the live picture goes on in a corner. Under a still of this run stand the moments around its press.
class LargeLook : public QObject
{
    Q_OBJECT

public:
    LargeLook(QWidget& form, CaptureHistory& history, FullPicture& live, NoticeStrip& strip, Moments& moments);

    LargePicture& View() { return *m_view; }
    /// The operator has gone on to another section: what lies over its pictures goes.
    void LeaveSection();
    /// The screen closes: everything stands at its place.
    void End();

private:
    void Arrange();
    void OfferMoments(Moments& moments);

    FullPicture& m_live;
    const NoticeStrip& m_strip;
    LargePicture* const m_view; ///< The form's.
};
