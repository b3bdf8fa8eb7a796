#pragma once

#include <QImage>
#include <QWidget>

class Moments;
class QButtonGroup;
class QHBoxLayout;
class QPushButton;

/// The moments around a still, small, from the oldest to the latest, in as many rows as they need: each with its time
/// to the press, the place of the press marked, and the sharpest. One that is clicked is shown large, by whoever shows
/// this, and can be filed as a still of its own.
class MomentsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit MomentsPanel(Moments& moments, QWidget* parent = nullptr);

    /// Shows those of that still.
    void ShowMoments(const QString& id);

Q_SIGNALS:
    /// The operator wants to see that moment.
    void Chosen(const QImage& image, const QString& caption);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    /// How many stand beside each other.
    int Columns() const;
    void Build();
    void Choose(int at);
    void FileChosen();

    Moments& m_moments;
    QString m_id;
    int m_chosen = -1;
    int m_columns = 0; ///< Of the row as it was built.
    QWidget* m_row = nullptr;
    QHBoxLayout* m_layout;
    QButtonGroup* m_buttons = nullptr;
    QPushButton* m_file;
};
