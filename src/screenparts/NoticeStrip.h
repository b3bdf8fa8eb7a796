#pragma once

#include <QTimer>
#include <QWidget>

#include <functional>
#include <map>

class QLabel;
class QPushButton;

/// One line over the lower edge of a picture or a form that tells what the operator should know while he works on. It
/// shows the most urgent of its notices, and is there only while it has one.
class NoticeStrip : public QWidget
{
    Q_OBJECT

public:
    /// The most urgent first.
    enum Kind {
        Date,    ///< The visit's date can't be one, and nothing is filed under it. Shown as an alarm.
        Root,    ///< The capture root isn't the one that belongs to the clinic.
        Share,   ///< The share of the pictures doesn't answer.
        Movie,   ///< It doesn't take the movies.
        Outage,  ///< The database doesn't answer, and rows wait.
        Waiting, ///< A handler waits.
        Draft,   ///< A note that an earlier run didn't store can come back.
        Room,    ///< The disk of the pictures is nearly full.
        Pacs,    ///< Pictures wait for the clinic's server, or were refused by it.
        Patient, ///< The clinic doesn't know the chart.
    };

    explicit NoticeStrip(QWidget* parent);

    /// What a notice offers: a button with that caption.
    struct Offer
    {
        QString caption;
        std::function<void()> run;
    };

    /// An empty text takes the notice away.
    void setNotice(Kind kind, const QString& text, const Offer& offer = {});
    /// Shows what it says in reversed colours for a moment.
    void Flash();
    /// Offers a button by which the wait is given up.
    void setMayCancel(bool mayCancel);

Q_SIGNALS:
    void Cancelled();
    /// It came, or went.
    void Shown(bool shown);

private:
    struct Notice
    {
        QString text;
        Offer offer;
    };

    void SetLook(const char* property, bool on);

    std::map<Kind, Notice> m_notices;
    QTimer m_flash;
    QLabel* m_text;
    QPushButton* m_offer;
    QPushButton* m_cancel;
};

/// Shows the waits of `waiting` from here on: on the notice strips of the forms, and, on a form in front that has none,
/// on one of its own at its lower edge.
void ShowWaitsOnForms();
