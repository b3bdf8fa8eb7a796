#pragma once

#include <QPointer>
#include <QWidget>

/// Lets a picture of a form fill the screen that the form is on: by a double click on it, until a second one or Escape.
/// A strip stays over its lower edge. Both go on as they are, and stand at their places again afterwards.
class FullPicture : public QWidget
{
    Q_OBJECT

public:
    FullPicture(QWidget& form, QWidget& picture, QWidget& strip);
    ~FullPicture() override;

    bool IsFull() const { return isVisible(); }
    /// The picture is where it belongs again.
    void Return();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Fill();
    void PlaceStrip();

    QWidget& m_form;
    const QPointer<QWidget> m_picture;
    const QPointer<QWidget> m_strip;
    const QRect m_picturePlace;
    const QRect m_stripPlace;
};
