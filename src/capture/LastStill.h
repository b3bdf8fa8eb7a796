#pragma once

#include <QImage>
#include <QTimer>
#include <QWidget>

#include <memory>

class PictureBatch;

/// The still that was taken last, large, with its number, for two seconds. Hidden else.
class LastStill : public QWidget
{
    Q_OBJECT

public:
    explicit LastStill(QWidget* parent);
    ~LastStill() override;

    /// A still in JPEG; decoded while the caller goes on. `still` tells which one.
    void Take(const void* still, const QByteArray& content);
    /// Its number, 0 for one that waits for it.
    void TakeNumber(const void* still, int number);
    /// Nothing is shown any more.
    void Drop();

Q_SIGNALS:
    /// It has come, and wants its place.
    void Came();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void Show();

    const void* m_still = nullptr; ///< Never looked into.
    QString m_number;
    QImage m_image;
    std::shared_ptr<PictureBatch> m_decoding;
    QTimer m_end;
};
