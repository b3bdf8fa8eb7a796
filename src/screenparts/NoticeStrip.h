#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <map>

class NoticeList;
class QBoxLayout;
class QLabel;
class QPushButton;

/// One line over the lower edge of a picture or a form that tells what the operator should know while he works on. It
/// shows the most urgent of its notices and how many more there are, and is there only while it has one. A click on it
/// lists them all.
class NoticeStrip : public QWidget
{
    Q_OBJECT

public:
    /// The most urgent first.
    enum Kind {
        Date,        ///< The visit's date can't be one, and nothing is filed under it. Shown as an alarm.
        Root,        ///< The capture root isn't the one that belongs to the clinic.
        Share,       ///< The share of the pictures doesn't answer.
        Movie,       ///< It doesn't take the movies.
        Outage,      ///< The database doesn't answer, and rows wait.
        Waiting,     ///< Work that goes on, such as a handler that waits. Before all others while it can be given up.
        Printer,     ///< Sheets that were printed stand still.
        Draft,       ///< A note that an earlier run didn't store can come back.
        Worklist,    ///< Several orders of the hospital fit, or its worklist doesn't answer.
        PacsRefused, ///< Pictures were refused by the clinic's server.
        Room,        ///< The disk of the pictures is nearly full.
        Pacs,        ///< Pictures wait for the clinic's server.
        Patient,     ///< The clinic doesn't know the chart.
    };
    /// What stands in the way of filing; it shows as a fault.
    static bool IsFault(Kind kind) { return kind <= Outage; }

    explicit NoticeStrip(QWidget* parent);
    ~NoticeStrip() override;

    /// What a notice offers: a button with that caption.
    struct Offer
    {
        QString caption;
        std::function<void()> run;
    };
    /// One of several things that the operator may choose from: the list has a line for each.
    struct Choice
    {
        QString text;
        Offer offer;
    };
    struct Notice
    {
        QString text;
        Offer offer;
        QList<Choice> choices;
    };

    /// An empty text takes the notice away.
    void setNotice(Kind kind, const QString& text, const Offer& offer = {});
    /// The same with what the operator may choose from: its button shows the list.
    void setChoices(Kind kind, const QString& text, const QList<Choice>& choices);
    /// All that stand, the most urgent first.
    QList<std::pair<Kind, Notice>> Notices() const;
    /// Shows what it says in reversed colours for a moment.
    void Flash();
    /// Offers a button beside the notice `Waiting` by which that is given up.
    void setMayCancel(bool mayCancel);
    bool MayCancel(Kind kind) const { return kind == Waiting && m_mayCancel; }
    /// Texts and buttons of so many times their usual size, one below the other where it is narrow.
    void setLook(double scale, bool isNarrow);

Q_SIGNALS:
    void Cancelled();
    /// It came, or went.
    void Shown(bool shown);
    /// It says something else.
    void Changed();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    void Present();
    void SetLook(const char* property, bool on);
    void ToggleList();

    std::map<Kind, Notice> m_notices;
    bool m_mayCancel = false;
    QTimer m_flash;
    QBoxLayout* m_row;
    QLabel* m_text;
    QLabel* m_further;
    QPushButton* m_offer;
    QPushButton* m_cancel;
    QPointer<NoticeList> m_list; ///< While it is open.
};

/// Shows the waits of `waiting` from here on: on the notice strips of the forms, and, on a form in front that has none,
/// on one of its own at its lower edge.
void ShowWaitsOnForms();
