#pragma once

#include <QPointer>
#include <QWidget>

/// Lets a picture of a form fill the screen that the form is on: by a double click on it, until a second one or Escape.
/// All go on as they are, and the picture stands at its place again afterwards. A strip lies over its lower edge and a
/// mark in its lower right corner, above the strip while that is shown, whatever size the picture has.
class FullPicture : public QWidget
{
    Q_OBJECT

public:
    FullPicture(QWidget& form, QWidget& picture, QWidget& strip, QWidget& mark);
    ~FullPicture() override;

    bool IsFull() const { return isVisible(); }
    /// The picture is where it belongs again.
    void Return();
    /// It belongs to that place of another window or widget for now; null for its own on the form. Strip and mark lie
    /// over the lower edge of `overlaid`, a part of the form; empty for the picture's own place. A picture that fills
    /// the screen goes there when it returns.
    void SetHome(QWidget* window, const QRect& place, const QRect& overlaid);
    /// The strip has come or gone.
    void PlaceOverlays();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Fill();
    void MoveTo(QWidget& window, const QRect& place);
    void GoHome();

    QWidget& m_form;
    const QPointer<QWidget> m_picture;
    const QPointer<QWidget> m_strip;
    const QPointer<QWidget> m_mark;
    const QRect m_picturePlace;
    QPointer<QWidget> m_home; ///< Null for the form.
    QRect m_homePlace;
    QRect m_overlaid;
};
