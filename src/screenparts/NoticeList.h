#pragma once

#include "screenparts/NoticeStrip.h"

class QScrollArea;

/// All notices of a strip, each whole and with its own buttons, above the strip. It takes no focus, and closes by a
/// click elsewhere, by Escape, and with the last notice.
class NoticeList : public QWidget
{
    Q_OBJECT

public:
    explicit NoticeList(NoticeStrip& strip);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void Fill();
    void Place();
    QWidget* RowOf(NoticeStrip::Kind kind, const NoticeStrip::Notice& notice);
    /// The line of one thing that the operator may choose.
    QWidget* RowOf(const NoticeStrip::Choice& choice);
    /// A line with its text, and its button where it offers something.
    QWidget* NewRow(const QString& text, const NoticeStrip::Offer& offer);

    NoticeStrip& m_strip;
    QScrollArea* m_area;
};
