#pragma once

#include <QPointer>
#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

/// The CD writer's own small window: how it goes, and how it ended. Not modal; it can't be closed while the writer
/// works.
class BurnWindow : public QWidget
{
    Q_OBJECT

public:
    BurnWindow();

    /// The screen over which it stands; without one it is that which is seen.
    void setScreen(QWidget* screen);
    /// A line that stays, such as that the program waits for the end.
    void setRemark(const QString& text);
    /// A stage of the work begins.
    void ShowStage(const QString& text, bool canCancel);
    /// `share` from 0 to 1, negative when there is no measure.
    void ShowProgress(double share, const QString& detail);
    /// The work has ended. `canEmpty` offers to empty the staging folder.
    void ShowEnd(const QString& text, bool canEmpty);

Q_SIGNALS:
    void CancelPressed();
    void EmptyPressed();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void Bring();
    QWidget* StandOverScreen();
    void StayInSight();

    QPointer<QWidget> m_screen;
    QLabel* m_lblStage;
    QProgressBar* m_barBurn;
    QLabel* m_lblDetail;
    QLabel* m_lblRemark;
    QPushButton* m_cmdCancel;
    QPushButton* m_cmdEmpty;
    QPushButton* m_cmdClose;
    bool m_working = false;
};
