#pragma once

#include <QToolButton>
#include <QWidget>

/// Two small arrows, one above the other.
class UpDownArrows : public QWidget
{
    Q_OBJECT

public:
    explicit UpDownArrows(QWidget* parent) : QWidget(parent)
    {
        m_up->setArrowType(Qt::UpArrow);
        m_up->setAccessibleName(QStringLiteral("위로"));
        m_down->setArrowType(Qt::DownArrow);
        m_down->setAccessibleName(QStringLiteral("아래로"));
        for (QToolButton* arrow : {m_up, m_down}) {
            arrow->setFocusPolicy(Qt::NoFocus);
            arrow->setStyleSheet(QStringLiteral("padding: 0px"));
        }
        connect(m_up, &QToolButton::clicked, this, &UpDownArrows::UpClick);
        connect(m_down, &QToolButton::clicked, this, &UpDownArrows::DownClick);
    }

Q_SIGNALS:
    void UpClick();
    void DownClick();

protected:
    void resizeEvent(QResizeEvent*) override
    {
        m_up->setGeometry(0, 0, width(), height() / 2);
        m_down->setGeometry(0, height() / 2, width(), height() - height() / 2);
    }

private:
    QToolButton* m_up = new QToolButton(this);
    QToolButton* m_down = new QToolButton(this);
};
