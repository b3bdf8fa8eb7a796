#pragma once

#include "contracts/VideoCap.h"
#include "screenparts/NoticeStrip.h"

#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>

#include <functional>

class LastStill;
class QLabel;

/// Lets the live picture of a form fill the screen that the form is on: by a double click on it, until a second one or
/// Escape. All go on as they are, and the picture stands at its place again afterwards. A strip lies over its lower
/// edge and a mark in its lower right corner, above the strip while that is shown, whatever size the picture has; on a
/// whole screen they are as much larger as the picture is, and stand in the black bars beside it where these have room.
/// While the strip covers the picture for longer than a moment, the picture makes room for it.
class FullPicture : public QWidget
{
    Q_OBJECT

public:
    struct Parts
    {
        VideoCap& picture;
        NoticeStrip& strip;
        QWidget& mark;
        /// What the upper edge of the screen says: whose pictures these are. Asked each time the picture fills it.
        std::function<QStringList()> captions;
    };

    FullPicture(QWidget& form, const Parts& parts);
    ~FullPicture() override;

    bool IsFull() const { return isVisible(); }
    /// The picture is where it belongs again.
    void Return();
    /// It belongs to that place of another window or widget for now; null for its own on the form. Strip and mark lie
    /// over the lower edge of `overlaid`, a part of the form; empty for the picture's own place. A picture that fills
    /// the screen goes there when it returns.
    void SetHome(QWidget* window, const QRect& place, const QRect& overlaid);
    /// The strip has come, gone, or says something else.
    void PlaceOverlays();
    /// A still has been encoded, or has got its number. Shown large in a corner for a moment while the picture fills
    /// the screen. `still` tells which one.
    void ShowStill(const void* still, const QByteArray& content);
    void ShowNumber(const void* still, int number);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Fill();
    void MoveTo(QWidget& window, const QRect& place);
    void GoHome();
    bool HasParts() const { return m_picture != nullptr && m_strip != nullptr && m_mark != nullptr; }
    /// The picture fills the screen.
    bool IsOnScreen() const { return m_picture->parentWidget() == this; }
    /// How many times as large as on the form the picture is on the screen.
    double Scale() const;
    /// Width of each black bar beside the picture.
    int BarWidth() const;
    void SetScale();
    void PlaceCaptions(int bar);
    /// Margins of the picture, for the strip that stands.
    void MakeRoom();

    QWidget& m_form;
    const QPointer<VideoCap> m_picture;
    const QPointer<NoticeStrip> m_strip;
    const QPointer<QWidget> m_mark;
    const std::function<QStringList()> m_captionTexts;
    const QRect m_picturePlace;
    QPointer<QWidget> m_home; ///< Null for the form.
    QRect m_homePlace;
    QRect m_overlaid;
    const int m_stripHeight;
    const QSize m_markSize;
    QLabel* m_captions;
    LastStill* m_lastStill;
    QStringList m_captionLines;
    QTimer m_shape;        ///< Looks, on a whole screen, whether the picture has another shape.
    QTimer m_standing;     ///< Runs from the coming of the strip.
    bool m_stands = false; ///< It has been there for longer than a short wait.
    int m_bar = 0;         ///< As the parts were placed for last.
    bool m_placing = false;
};
