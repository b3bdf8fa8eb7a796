#pragma once

#include "screenparts/LargeImages.h"
#include "screenparts/VisitPictures.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>

class PictureCanvas;
class QBoxLayout;
class QCheckBox;
class QLabel;
class QMenu;
class QScreen;
class QToolButton;

/// Pictures of visits, large: over a part of a form, or over another screen, which the user's settings remember. To
/// look at alone. It takes the keyboard by a click into it, never by being opened, and follows what becomes of its
/// pictures: one that is deleted gives way to the next, one that is replaced is read anew, a new one counts.
///
/// Two can stand beside each other; the one that was clicked last, which is framed, is the one that buttons and lenses
/// go to.
class LargePicture : public QWidget
{
    Q_OBJECT

public:
    /// Stands on the form, over that room of it, unless another screen was chosen and is there.
    LargePicture(QWidget& form, const QRect& room);
    ~LargePicture() override;

    void setRoom(const QRect& room);
    /// The grid gets lenses, which open its pictures here; these are paged through, and followed. `caption` is what the
    /// list of pictures to stand beside calls them.
    void AddPictures(VisitPictures& pictures, const QString& caption);
    /// What can be shown beside a picture, live; see `LivePlace`. `corner` is the room in the lower right corner that
    /// it gets at other times, while this stands on the form.
    void OfferLive(const QString& caption, QSize corner);
    using PathOf = std::function<LargeImages::Source(const Visit&, const ShownPicture&)>;
    /// Where a picture's file lies. Without it: a numbered one in the archive.
    void setPathOf(PathOf pathOf) { m_pathOf = std::move(pathOf); }

    /// Shows the picture. `others` are those to page through where no grid shows the visit.
    void Open(const Visit& visit, const ShownPicture& picture, const QList<ShownPicture>& others = {});
    void Close();
    bool IsOpen() const { return m_isOpen; }
    /// It lies over another screen, not over the form.
    bool IsElsewhere() const { return isWindow(); }

    /// What a screen adds under the picture: taken as a child, shown only while large; null for none. The one before is
    /// hidden, and may be deleted by whoever made it.
    void SetFoot(QWidget* foot);
    using FootFor = std::function<QWidget*(const Visit&, const ShownPicture&)>;
    /// Asked each time another picture is shown; null: no foot for this picture. With one there is a button that shows
    /// and hides it.
    void setFootFor(FootFor footFor);
    /// Shows a picture that isn't a stored one in the place of the one that was opened; the zoom is kept.
    void ShowImage(const QImage& image, const QString& caption);

    /// Where the live picture belongs while this is open: a place in this widget. Nothing where it stays at its own.
    std::optional<QRect> LivePlace() const;

Q_SIGNALS:
    void Opened();
    void Closed();
    /// A picture is shown: once for each between opening and closing.
    void PictureShown(const Visit& visit, int number);
    /// What `LivePlace` gives may be another place, or this stands elsewhere.
    void PlacesChanged();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Half
    {
        QWidget* column = nullptr; ///< Of the canvas and what is told of it.
        PictureCanvas* canvas = nullptr;
        QLabel* label = nullptr;
        std::optional<Visit> visit;
        ShownPicture picture;
        QList<ShownPicture> others;
        LargeImages::Source source;
        qsizetype at = 0;     ///< Its place among those to page through, when it was last known.
        bool isShown = false; ///< The canvas shows it, or why it can't.
        bool isLate = false;  ///< The canvas tells that it is being read.
        bool keepView = false;
        QString caption; ///< Of what the canvas shows.
        QString image;   ///< Caption of a picture that isn't a stored one and takes its place.
    };

    void BuildControls();
    void BuildHalves();
    QToolButton* AddButton(QBoxLayout& row, const QString& name, const QString& caption, void (LargePicture::*press)());
    /// On the form, or over the other screen that was chosen, if it is there.
    void Stand();
    /// Null for the form's own.
    QScreen* ChosenScreen() const;
    void ChangeScreen();
    void ToggleFoot();
    void NoteFocus(QWidget* before, QWidget* now);

    Half& Active() { return m_halves[m_active]; }
    void Activate(size_t half);
    void SetSecond(bool on, bool isLive);
    void FillBesideMenu();
    void OpenBeside(const VisitPictures& pictures);
    /// The half goes to that picture.
    void Go(Half& half, const ShownPicture& picture);
    void Request(Half& half, bool keepView);
    void Present(Half& half);
    void TellLate();
    void ReadAhead();
    void ShowFoot();
    void ShowState();
    /// The grid's list that shows the half's visit; null when none does.
    const VisitPictures* ListOf(const Half& half) const;
    QList<ShownPicture> PagesOf(const Half& half) const;
    QString CaptionOf(const Half& half) const;
    void Turn(int pages);
    void TurnBack() { Turn(-1); }
    void TurnOn() { Turn(1); }
    void ShowPixels();
    void Follow();
    void FollowHalf(Half& half);
    /// The half's picture is there no more.
    void GiveWay(Half& half, const QList<ShownPicture>& left);
    void Link(const Half& moved);

    QWidget& m_form;
    QRect m_room;
    QSize m_corner;
    QList<std::pair<QPointer<VisitPictures>, QString>> m_pictures;
    PathOf m_pathOf;
    FootFor m_footFor;
    LargeImages m_images;
    std::array<Half, 2> m_halves;
    size_t m_active = 0;
    bool m_isOpen = false;
    bool m_hasSecond = false;
    bool m_isLive = false; ///< The second half is the live picture.
    bool m_followsLater = false;
    QString m_live;
    QList<std::pair<Visit, int>> m_told;
    QTimer m_late;
    QTimer m_ahead;
    QPointer<QWidget> m_focusBefore;
    QPointer<QWidget> m_foot;

    QToolButton* m_back = nullptr;
    QToolButton* m_on = nullptr;
    QToolButton* m_beside = nullptr;
    QMenu* m_besideMenu = nullptr;
    QCheckBox* m_linked = nullptr;
    QToolButton* m_footButton = nullptr;
    QToolButton* m_elsewhere = nullptr;
    QBoxLayout* m_columns = nullptr;
    QBoxLayout* m_footRow = nullptr;
    QWidget* m_cornerRoom = nullptr;
};
