#pragma once

#include <QColor>
#include <QTimer>
#include <QVariantAnimation>
#include <QWidget>

/// Answers a press before the operator's eye: a soft edge of light around the live picture for a moment. When no
/// picture was taken it is amber, and the count of the pictures lights up with it. Lies over the picture, wherever that
/// goes; hidden, and without a timer, while nobody presses.
class PressAnswer : public QWidget
{
    Q_OBJECT

public:
    /// Stays as large as the picture, which owns it.
    PressAnswer(QWidget& picture, QWidget& count);

    void Show(bool taken);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void LightCount(bool on);

    QWidget& m_picture;
    QWidget& m_count;
    QVariantAnimation m_light; ///< From 1 to 0.
    QColor m_colour;
};
